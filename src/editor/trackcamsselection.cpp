#include "editor/trackcamsselection.h"

#include "editor/edithost.h"
#include "editor/editstate.h"
#include "track/rtrackvrml.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <numbers>

namespace {

constexpr float DEGREES = 180 / std::numbers::pi_v<float>; // in a radian

// What a camera is declared with.
constexpr float RADIUS = 20; // metres
constexpr float ZOOM_EDGE = 20;
constexpr float ZOOM_CLOSE = 30;
constexpr float ZOOM_FAR = 20;

// The cameras are walked from the current one, or begun.
void Walk(EditState& state, EditHost& host, int step)
{
  const int count = state.curTrack ? state.curTrack->trackCams.Count() : 0;
  const bool hasCurrent = CurrentTrackCam(state) != nullptr;
  const int next = hasCurrent ? state.trackCam + step : 0;
  if (next >= 0 && next < count) {
    state.trackCam = next;
    state.keyFrame = 0;
  }
  GotoKeyFrame(state, host);
  MarkTrackCam(state);
}

} // namespace

RTrackCam* CurrentTrackCam(const EditState& state)
{
  const auto* place = state.curTrack ? state.curTrack->trackCams.At(state.trackCam) : nullptr;
  return place ? place->get() : nullptr;
}

void MarkTrackCam(EditState& state)
{
  if (!state.curTrack)
    return;
  for (const auto& cam : state.curTrack->trackCams)
    cam->flags &= ~uint32_t(RTrackCam::SELECTED);
  if (RTrackCam* cam = CurrentTrackCam(state))
    cam->flags |= RTrackCam::SELECTED;
}

void DeclareTrackCam(EditState& state, int n)
{
  RTrackVRML& track = *state.curTrack;
  if (n >= track.trackCams.Count())
    track.AddTrackCam(std::make_unique<RTrackCam>());
  state.trackCam = n;
  if (RTrackCam* cam = CurrentTrackCam(state)) {
    cam->pos = state.camera.transform.pos;
    cam->pos2 = state.pickStart;
    cam->radius = RADIUS;
    cam->zoomEdge = ZOOM_EDGE;
    cam->zoomClose = ZOOM_CLOSE;
    cam->zoomFar = ZOOM_FAR;
  }
  MarkTrackCam(state);
}

void NextTrackCam(EditState& state, EditHost& host)
{
  Walk(state, host, 1);
}

void PreviousTrackCam(EditState& state, EditHost& host)
{
  Walk(state, host, -1);
}

void GotoKeyFrame(EditState& state, EditHost& host)
{
  const RTrackCam* cam = CurrentTrackCam(state);
  if (!cam)
    return;
  if (state.keyFrame == -1) {
    host.Message("Error", "No keyframe spline selected");
    return;
  }
  const DCameraKeyFrame* key = cam->keyframes.GetKeyFrame(state.keyFrame);
  if (!key)
    return;
  state.camera.transform = {{key->x, key->y, key->z}, key->pitch, key->yaw, key->roll};
  state.camera.fov = key->fov;
  state.selectedSpline = LineOfKey(state.curTrack->splines, key->t);
}

int LineOfKey(const RSplineRep& road, float distance)
{
  const auto at = std::find_if(road.lines.rbegin(), road.lines.rend(),
                               [=](const RSplineLine& line) { return line.distance <= distance; });
  return static_cast<int>(road.lines.rend() - at) - 1;
}

void LookAt(EditState& state, const DVector3& target)
{
  EditTransform& t = state.camera.transform;
  const DVector3 way = target - t.pos;
  const float flat = std::hypot(way.x, way.z);
  if (flat == 0 && way.y == 0)
    return;
  t.pitch = std::atan2(-way.y, flat) * DEGREES; // positive looks down
  if (flat > 0)
    t.yaw = std::atan2(way.x, -way.z) * DEGREES;
}
