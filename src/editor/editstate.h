#pragma once

#include "editor/editcamera.h"
#include "foundation/qrect.h"
#include "geometry/dvector.h"

#include <array>
#include <cstdint>
#include <string>
#include <vector>

class QInfo;
class RCar;
class RTrackVRML;
class RTrackNode;

struct SelectedNode
{
  int index = -1;
  RTrackNode* node = nullptr; // the track's; the list is emptied before the track goes
};

// What exists once in the editor and is shared by shell, view and modes. Only the frame's thread touches it.
struct EditState
{
  QInfo* settings = nullptr;      // pavex.ini; owned by the entry, null in tests that need none
  RTrackVRML* curTrack = nullptr; // owned by the manager
  bool trackReady = false;        // a load has ended well: scene and overlay are painted
  int curMode = 0;                // 0..9; another number when the settings say so, and then no mode runs
  std::array<uint8_t, 256> keyDown{};

  int mouseButtons = 0; // bit n - 1 for button n
  int mouseX = 0;
  int mouseY = 0;
  int pressModifiers = 0; // held at the last press

  bool hudVisible = true;
  bool paintVertices = false;
  DVector3 pickStart{0.0f};
  DVector3 pickEnd{0.0f};
  std::vector<SelectedNode> SelectedNodes;
  int64_t now = 0;                  // of the frame being painted, milliseconds
  int64_t blinkStart = 0;           // when a node was last selected
  std::vector<int> SelectedIndices; // spline lines
  RCar* previewCar = nullptr;       // its body stands for the car that a track camera follows; owned by the shell
  int trackCam = -1;                // the current one: an index of the track's table, its count or -1 for none
  int keyFrame = 0;                 // selected one of the current track camera, or -1
  int selectedSpline = -1;          // line of the road that a keyframe belongs to, or -1
  std::string importFilter;         // of the last import of models; empty: none yet
  int audioIndex = -1;              // the current ambient source; -1: none

  QRect viewRect{15, 32, 512, 512};
  int frameWidth = 640; // resolution.width and .height
  int frameHeight = 480;
  EditCamera camera;

  bool objectMode = false;
  DVector3 orbitPivot{0.0f};
  float orbitDistance = 0;
  float orbitFactor = 2.0f;
};
