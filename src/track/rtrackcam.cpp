#include "track/rtrackcam.h"

#include "foundation/qreport.h"
#include "track/rinfokeys.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr const char* CUBE_NAMES[RTrackCam::CUBE_COUNT] = {"edge", "close", "far"};
constexpr float CORRECTED = 10;

float DistanceSq(const DVector3& a, const DVector3& b)
{
  return glm::dot(a - b, a - b);
}

float Divided(float a, float b)
{
  return b == 0 ? 0 : a / b;
}

float LoadZoom(const QInfo& info, const std::string& key)
{
  const float zoom = info.GetFloat(key);
  if (zoom != 0)
    return zoom;
  QWARN("%s may not be 0; correcting to 10", key.c_str());
  return CORRECTED;
}

} // namespace

void RTrackCam::Load(const QInfo& info, std::string_view key)
{
  const std::string base(key);
  pos = GetVectorKeys(info, base + ".pos");
  pos2 = GetVectorKeys(info, base + ".pos2");
  posDolly = GetVectorKeys(info, base + ".posdolly");
  rot = GetVectorKeys(info, base + ".rot");
  rot2 = GetVectorKeys(info, base + ".rot2");
  const std::string radiusKey = base + ".radius";
  radius = info.GetFloat(radiusKey, CORRECTED);
  if (radius == 0) {
    QWARN("%s is 0; your camera MUST have a radius; correcting to 10\n", radiusKey.c_str());
    radius = CORRECTED;
  }
  group = info.GetInt(base + ".group");
  zoomEdge = LoadZoom(info, base + ".zoom_edge");
  zoomClose = LoadZoom(info, base + ".zoom_close");
  zoomFar = LoadZoom(info, base + ".zoom_far");
  flags = static_cast<uint32_t>(info.GetInt(base + ".flags")) & ~uint32_t(SELECTED);
  src.Load(info, base + ".src");
  dst.Load(info, base + ".dst");
  for (size_t i = 0; i < cubes.size(); ++i)
    cubes[i] = GetVector(info, base + ".cube." + CUBE_NAMES[i]);
  keyframes.Load(info, base + ".keyframes");
  camera.LoadSettings(info, key);
}

void RTrackCam::Save(QInfo& info, std::string_view key) const
{
  const std::string base(key);
  SetVectorKeys(info, base + ".pos", pos);
  SetVectorKeys(info, base + ".pos2", pos2);
  SetVectorKeys(info, base + ".posdolly", posDolly);
  SetVectorKeys(info, base + ".rot", rot);
  SetVectorKeys(info, base + ".rot2", rot2);
  info.SetFloat(base + ".radius", radius);
  info.SetInt(base + ".group", group);
  info.SetFloat(base + ".zoom_edge", zoomEdge);
  info.SetFloat(base + ".zoom_close", zoomClose);
  info.SetFloat(base + ".zoom_far", zoomFar);
  info.SetInt(base + ".flags", static_cast<int>(flags));
  src.Save(info, base + ".src");
  dst.Save(info, base + ".dst");
  for (size_t i = 0; i < cubes.size(); ++i)
    SetVector(info, base + ".cube." + CUBE_NAMES[i], cubes[i]);
  keyframes.Save(info, base + ".keyframes");
}

void RTrackCam::Aim(const DVector3& car)
{
  const float distance = glm::dot(car - pos, DNormalized(pos2 - pos));
  along = std::clamp(Divided(distance, radius), -1.0f, 1.0f);
  zoomNow = Zoom(car, distance);
  posNow = flags & DOLLY ? pos + (posDolly - pos) * ((along + 1) * 0.5f) : pos;
}

// distance: of the car, along the camera line; negative before the camera.
float RTrackCam::Zoom(const DVector3& car, float distance) const
{
  constexpr float FULL_ANGLE = 90; // degrees at which an object is as wide as it is far
  constexpr float NEAREST = 0.15f; // metres
  if (flags & ZOOM_FIXED)
    return zoomClose;
  if (flags & ZOOM_ALONG) {
    const float nearSize = zoomClose / FULL_ANGLE / NEAREST;
    const float farSize = radius * (along < 0 ? zoomEdge : zoomFar) / FULL_ANGLE;
    if (along < 0)
      distance = -distance;
    const float size = nearSize + (farSize - nearSize) * std::min(Divided(distance, radius), 1.0f);
    return std::min(size * FULL_ANGLE / (distance + NEAREST), zoomClose);
  }
  const float zoom = zoomClose + DistanceSq(car, pos) * Divided(zoomEdge - zoomClose, radius * radius);
  return std::clamp(zoom, std::min(zoomClose, zoomEdge), std::max(zoomClose, zoomEdge));
}

void RTrackCam::Follow(const DVector3& car, const DVector3& carVelocity, float dt)
{
  Aim(car);
  src.SetTarget(posNow, carVelocity);
  dst.SetTarget(car, carVelocity);
  src.Step(dt);
  dst.Step(dt);
}

void RTrackCam::Rest(const DVector3& car, const DVector3& goal)
{
  Aim(car);
  for (RSMD* spring : {&src, &dst})
    spring->velocity = DVector3(0.0f);
  src.position = posNow;
  dst.position = goal;
}

void RTrackCam::AimAt(const DVector3& car, const DVector3& goal, int milliseconds)
{
  constexpr float STEP = 0.001f; // seconds
  Aim(car);
  src.SetTarget(posNow, DVector3(0.0f));
  dst.SetTarget(goal, DVector3(0.0f));
  for (int i = 0; i < milliseconds; ++i) {
    src.Step(STEP);
    dst.Step(STEP);
  }
}

bool RTrackCam::IsCandidate(const DVector3& car) const
{
  return DistanceSq(car, pos) <= radius * radius;
}

bool RTrackCam::HasLost(const DVector3& car) const
{
  constexpr float KEPT_SQ = 100; // a car this near is never lost
  const float distanceSq = DistanceSq(car, pos);
  return distanceSq > 2 * radius * radius && distanceSq > KEPT_SQ;
}
