#pragma once

#include "scene/danimatedcamera.h"
#include "track/dcamera_tcamera.h"
#include "track/rsmd.h"

#include <array>
#include <cstdint>
#include <string_view>

class QInfo;

// A television camera beside the road: it follows a car that comes within its radius.
class RTrackCam
{
public:
  static constexpr int MAX_KEYFRAMES = 10;
  enum Flag : uint32_t
  {
    ZOOM_ALONG = 1, // zoom by the car's place along the camera line
    ZOOM_FIXED = 2,
    SELECTED = 4, // in the editor; never loaded
    DOLLY = 8
  };
  enum Cube
  {
    CUBE_EDGE,
    CUBE_CLOSE,
    CUBE_FAR,
    CUBE_COUNT
  };
  RTrackCam() = default;
  RTrackCam(const RTrackCam&) = delete;
  RTrackCam& operator=(const RTrackCam&) = delete;

  uint32_t flags = ZOOM_ALONG;
  DVector3 pos{0.0f};
  DVector3 pos2{0.0f}; // with pos: the line along which the car is measured
  DVector3 posDolly{0.0f};
  DVector3 rot{0.0f};
  DVector3 rot2{0.0f};
  int group = 0;
  float radius = 0;   // metres
  float zoomEdge = 0; // all three: field of view in degrees
  float zoomClose = 0;
  float zoomFar = 0;
  std::array<DVector3, CUBE_COUNT> cubes{};
  DAnimatedCamera keyframes{MAX_KEYFRAMES};
  RSMD src; // smooths the camera's own position
  RSMD dst; // and what it looks at
  DCamera_TCamera camera{*this};
  // While a car is followed.
  float along = 0; // -1 to 1
  float zoomNow = 0;
  DVector3 posNow{0.0f};

  // Reads the keys below "tcam.cam<n>", given as key. A radius or zoom of 0 is reported and becomes 10.
  void Load(const QInfo& info, std::string_view key);
  void Save(QInfo& info, std::string_view key) const;

  // Where the camera stands and how far it zooms for a car at this position: along, zoomNow, posNow.
  void Aim(const DVector3& car);
  // Aims, and moves the smoothed camera (src) and target (dst) by a step of dt seconds.
  void Follow(const DVector3& car, const DVector3& carVelocity, float dt = 0.001f);
  // Aims, and puts the springs at rest on the camera's place and on the goal.
  void Rest(const DVector3& car, const DVector3& goal);
  // Aims, and lets the springs pull for some milliseconds to the camera's place and to the goal, which stands still.
  void AimAt(const DVector3& car, const DVector3& goal, int milliseconds);
  // The car is near enough to be taken up.
  bool IsCandidate(const DVector3& car) const;
  bool HasLost(const DVector3& car) const;

private:
  float Zoom(const DVector3& car, float distance) const;
};
