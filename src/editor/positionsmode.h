#pragma once

#include "editor/editmode.h"

#include <array>

class EditHost;
class EditView;
struct EditState;

// Mode 0: the pick line's two ends become a grid position, a pit position, a timeline, a triggerline or a pit line.
class PositionsMode : public EditMode
{
public:
  PositionsMode(EditState& owner, EditHost& asks, EditView& theView);
  void ModeSetup() override;
  bool ModeKey(int code) override;
  void ModeOp(int n) override;
  void ModePaint(DOverlay& overlay) const override;
  void ModeHud() const override;

private:
  struct Command;
  static const std::array<Command, 10> commands;

  void GotoGridPos();
  void DeclareGridPos();
  void DeclarePitPos();
  void DeclareTimeline();
  void DeclareTriggerline();
  // k is 0 pit in, 1 pit in speed limit, 2 pit out speed limit, 3 pit out.
  void DeclarePitline(int k);

  EditState& state;
  EditHost& host;
  EditView& view;
};
