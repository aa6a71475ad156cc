#pragma once

#include "editor/editmode.h"
#include "geometry/dvector.h"

#include <array>

class EditHost;
class EditView;
class RTrackCam;
struct EditState;

// Mode 1: the track's television cameras. The view's place becomes a camera, the pick line's start its second point and
// its cubes.
class TrackCamsMode : public EditMode
{
public:
  TrackCamsMode(EditState& owner, EditHost& asks, EditView& theView);
  void ModeSetup() override;
  bool ModeKey(int code) override;
  void ModeOp(int n) override;
  void ModePaint(DOverlay& overlay) const override;
  void ModeHud() const override;

private:
  struct Command;
  static const std::array<Command, 12> commands;
  struct KeyCommand;
  static const std::array<KeyCommand, 2> keyCommands;

  void DeclareCamera();
  void SelectCamera();
  void EditRadius();
  void EditGroup();
  void EditCamAngles();
  void DefineDolly();
  void DefineCube(int n); // RTrackCam::Cube
  void GotoCamera();
  void PreviewCubes();
  void ShowThrough(RTrackCam& cam, int milliseconds);

  EditState& state;
  EditHost& host;
  EditView& view;
  bool previewing = false;
  DVector3 previewPos{0.0f};
};
