#pragma once

#include "editor/editmode.h"

#include <array>

class EditHost;
struct EditState;
struct RTrafficWayPoint;

// Mode 7: the way points on which traffic drives, and the links between them. New ones land on the pick line's start.
class TrafficMode : public EditMode
{
public:
  TrafficMode(EditState& owner, EditHost& asks);
  void ModeSetup() override;
  bool ModeKey(int code) override;
  void ModeOp(int n) override;
  void ModePaint(DOverlay& overlay) const override;
  void ModeHud() const override;

  int Selected() const { return selected; } // may be past the end, once the last way point is gone

private:
  struct Command;
  static const std::array<Command, 12> commands;

  RTrafficWayPoint* SelectedWayPoint() const; // null for none, or past the end
  bool NewWayPoint(int& index);               // false, told to the user, when there are too many
  // A way point's number, or -1 where that removes the link. False on Cancel, or told to the user.
  bool AskIndex(bool removes, int& index);
  // False on Cancel, or told to the user.
  bool AskVelocity(const char* prompt, const char* text, float& velocity);

  void AddUnlinked();
  void AddLinked(int direction);
  void MoveSelected();
  void RemoveSelected();
  void SelectNext();
  void SelectPrevious();
  void SelectByIndex();
  void SetLink(int direction);
  void SetVelocity();
  void SetDefaultVelocity();

  EditState& state;
  EditHost& host;
  int selected = -1;
  float defaultVelocity = 10; // m/s
};
