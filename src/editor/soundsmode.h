#pragma once

#include "editor/editmode.h"

#include <array>

class EditHost;
struct EditState;
struct RTrackAudio;

// Mode 5: sounds that stand beside the road. One source is the current one; its index is in the state, since it ends
// with the track.
class SoundsMode : public EditMode
{
public:
  SoundsMode(EditState& owner, EditHost& asks) : state(owner), host(asks) {}
  void ModeSetup() override;
  bool ModeKey(int code) override;
  void ModeOp(int n) override;
  void ModePaint(DOverlay& overlay) const override;
  void ModeHud() const override;

private:
  struct Command;
  static const std::array<Command, 6> commands;
  enum Where
  {
    AT_CAMERA = 0,
    AT_SELECTION = 1
  };

  RTrackAudio* Current() const; // null: none
  void AddSource(Where where);
  void MoveAudioTo(RTrackAudio& source, Where where);
  void EditRadius();
  void GotoSource();
  void SelectSample();
  void NextSource();
  void PreviousSource();
  void UpdateMarks();

  EditState& state;
  EditHost& host;
};
