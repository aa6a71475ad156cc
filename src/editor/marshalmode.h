#pragma once

#include "editor/editmode.h"

#include <array>
#include <string>

class EditHost;
class EditView;
struct EditState;
struct RMarshalPost;

// Mode 9: walks through the marshal posts, changes their stretch of road and their id, and writes two texts on them.
class MarshalMode : public EditMode
{
public:
  MarshalMode(EditState& owner, EditHost& asks, EditView& theView);
  void ModeSetup() override;
  bool ModeKey(int code) override;
  void ModeOp(int n) override;
  void ModeUpdate() override;
  void ModePaint(DOverlay& overlay) const override;
  void ModeHud() const override;
  void TrackLoaded() override;

  int Selected() const { return selected; } // -1 for none

private:
  struct Command;
  static const std::array<Command, 4> commands;

  RMarshalPost* SelectedPost() const; // null for none
  RMarshalPost* NeedPost();           // the same, and the user is told
  void SelectPost(int n);             // -1 for none
  void EditSplineRange();
  void EditUserId();
  void MakeTemplate();
  void AnalyzeUserIds();
  void WriteAndShow(const std::string& text);
  void PaintRange(const RMarshalPost& post, DOverlay& overlay) const;
  void PostHud(const RMarshalPost& post) const;

  EditState& state;
  EditHost& host;
  EditView& view;
  int selected = -1;
};
