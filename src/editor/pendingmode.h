#pragma once

#include "editor/editmode.h"

#include <string>

class EditHost;

// The slot of a mode that this version doesn't have: no buttons, and the HUD tells.
class PendingMode : public EditMode
{
public:
  PendingMode(EditHost& asks, std::string modeName) : host(asks), name(std::move(modeName)) {}
  void ModeSetup() override;
  bool ModeKey(int) override { return false; }
  void ModeOp(int) override {}
  void ModePaint(DOverlay&) const override {}
  void ModeHud() const override;

private:
  EditHost& host;
  std::string name;
};
