#pragma once

#include "editor/editmode.h"

class EditHost;
struct EditState;

// Mode 8: shows the track's scanned surface over the scenery, and tells of it. It changes nothing.
class LidarMode : public EditMode
{
public:
  LidarMode(EditState& owner, EditHost& asks);
  void ModeSetup() override;
  bool ModeKey(int) override { return false; }
  void ModeOp(int n) override;
  void ModePaint(DOverlay& overlay) const override;
  void ModeHud() const override;

private:
  EditState& state;
  EditHost& host;
};
