#include "editor/editview.h"

#include "editor/editstate.h"
#include "foundation/qreport.h"
#include "geometry/dgeode.h"
#include "geometry/dintersect.h"
#include "geometry/dpicktree.h"
#include "scene/worldgeodenode.h"
#include "scene/worldnodes.h"
#include "track/rtrackvrml.h"
#include "ui/qkeys.h"

#include <algorithm>
#include <cmath>
#include <glm/gtc/matrix_transform.hpp>

namespace {

constexpr float DEGREES = 57.29578f;
constexpr float MAX_PICK = 999999.0f;
constexpr float PICK_DEPTH = 0.1f;
constexpr float MIN_ORBIT_FACTOR = 0.01f;
// The pointer's way is measured on a picture of this size.
constexpr float REFERENCE_WIDTH = 720;
constexpr float REFERENCE_HEIGHT = 576;

// Modes in which picking does more than find a point.
constexpr int KEYFRAME_MODE = 2;
constexpr int MODEL_MODE = 3;
constexpr int MARSHAL_MODE = 9;

int BitOf(int button)
{
  return 1 << std::clamp(button - 1, 0, 30);
}

constexpr int LEFT = 1;
constexpr int RIGHT = 4;

float StepSize(int modifiers)
{
  return modifiers & QMOD_CTRL ? 5.0f : modifiers & QMOD_ALT ? 0.02f : 1.0f;
}

bool HitModel(const RTrackNode& node, const DVector3& origin, const DVector3& direction, GeodeHit& hit)
{
  return IntersectRaySphere(origin, direction, node.center, node.radius) &&
         PickGeode(*node.Geode(), origin, direction, hit) && hit.t > 0;
}

// Where the node is drawn: the ray goes to the model's space, and the hit comes back.
bool HitNode(const RTrackNode& node, const DVector3& origin, const DVector3& direction, GeodeHit& hit)
{
  if (!node.transformNode || node.transformNode->Matrix() == DMatrix4(1.0f))
    return HitModel(node, origin, direction, hit);
  const DMatrix4& matrix = node.transformNode->Matrix();
  const DMatrix4 inverse = glm::inverse(matrix);
  const DVector3 there(inverse * DVector4(direction, 0));
  // A sphere is met by a direction of length 1, and t counts in lengths of the direction.
  const float length = glm::length(there);
  if (!(length > 0) || !HitModel(node, DVector3(inverse * DVector4(origin, 1)), there / length, hit))
    return false;
  hit.t /= length;
  const auto back = [&](DVector3& point) { point = DVector3(matrix * DVector4(point, 1)); };
  back(hit.point);
  for (DVector3& corner : hit.corner)
    back(corner);
  return true;
}

} // namespace

void EditView::SetMatrices(const DMatrix4& view, const DMatrix4& proj)
{
  modelView = glm::dmat4(view);
  projection = glm::dmat4(proj);
}

void EditView::SetShellSize(int wid, int hgt)
{
  shellWidth = std::max(wid, 1);
  shellHeight = std::max(hgt, 1);
}

void EditView::MouseToView(int& x, int& y) const
{
  const QRect& v = state.viewRect;
  const auto scaled = [](int at, int frame, int view) {
    return view == 0
               ? 0
               : static_cast<int>(static_cast<float>(at) / (static_cast<float>(frame) / static_cast<float>(view)));
  };
  x = scaled(x, state.frameWidth, v.wid) + v.x;
  y = scaled(y, state.frameHeight, v.hgt) + v.y;
}

bool EditView::Unproject(const DVector3& window, DVector3& world) const
{
  const QRect& v = state.viewRect;
  const glm::dvec4 viewport(v.x, shellHeight - v.y - v.hgt, v.wid, v.hgt);
  const glm::dmat4 both = projection * modelView;
  world = DVector3(0.0f);
  const double determinant = glm::determinant(both);
  if (determinant == 0 || !std::isfinite(determinant) || v.wid <= 0 || v.hgt <= 0) {
    qerr(QFileNameOf(__FILE__), "Unproject", __LINE__, "Unproject failed");
    return false;
  }
  const glm::dvec3 point = glm::unProject(glm::dvec3(window), modelView, projection, viewport);
  const glm::dvec4 clip = both * glm::dvec4(point, 1.0);
  if (clip.w == 0 || !std::isfinite(clip.w))
    qerr(QFileNameOf(__FILE__), "Unproject", __LINE__, "Project failed");
  world = DVector3(point);
  return true;
}

void EditView::PickRay(int x, int y, const EditTransform& from, DVector3& out)
{
  DVector3 ahead;
  Unproject({static_cast<float>(x), static_cast<float>(y), PICK_DEPTH}, ahead);
  const DVector3 origin = from.pos;
  const DVector3 direction = DNormalized(ahead - origin);
  float best = MAX_PICK;
  int remembered = -1;
  int i = -1;
  for (const auto& entry : state.curTrack->nodes) {
    ++i;
    const RTrackNode& node = *entry;
    GeodeHit hit;
    if ((node.flags & RTrackNode::SKY) || !node.Geode() || !HitNode(node, origin, direction, hit) || hit.t >= best)
      continue;
    best = hit.t;
    out = state.paintVertices || state.curMode == KEYFRAME_MODE ? hit.NearestCorner() : hit.point;
    remembered = i;
  }
  if (remembered >= 0)
    RememberNode(remembered);
}

void EditView::RememberNode(int index)
{
  if (state.curMode != MODEL_MODE && state.curMode != MARSHAL_MODE)
    return;
  if (state.curMode == MARSHAL_MODE)
    ClearSelectedNodes();
  AddSelectedNode(index);
}

void EditView::AddSelectedNode(int index)
{
  const auto has = [index](const SelectedNode& selected) { return selected.index == index; };
  if (std::any_of(state.SelectedNodes.begin(), state.SelectedNodes.end(), has))
    return;
  state.SelectedNodes.push_back({index, state.curTrack->nodes.At(index)->get()});
  state.blinkStart = state.now;
}

void EditView::ShowSelectedNodes()
{
  for (const SelectedNode& selected : state.SelectedNodes)
    if (selected.node && selected.node->sceneNode)
      selected.node->sceneNode->flags |= WorldNode::VISIBLE;
}

void EditView::ClearSelectedNodes()
{
  ShowSelectedNodes();
  state.SelectedNodes.clear();
}

void EditView::GotoPickStart()
{
  state.camera.SetCameraPos(state.pickStart + DVector3(0, 4, 0));
}

void EditView::StartObjectMode()
{
  state.objectMode = true;
  state.orbitDistance = 20;
  state.orbitPivot = state.camera.transform.pos;
  FocusSelection();
  OrbitApply(0, 0);
}

void EditView::FocusSelection()
{
  state.orbitFactor = 2.0f;
  if (state.SelectedNodes.empty() || (state.curMode != MODEL_MODE && state.curMode != MARSHAL_MODE))
    return;
  float distance = 0;
  DVector3 centers(0.0f);
  int count = 0;
  for (const SelectedNode& selected : state.SelectedNodes) {
    DGeode* geode = selected.node->Geode();
    if (!geode || geode->GetNoofGeobs() == 0)
      continue; // it is nowhere
    const DBox box = geode->GetBoundingBox();
    distance = std::max(distance, box.Radius() * state.orbitFactor);
    centers += box.Center();
    ++count;
  }
  if (count == 0)
    return;
  state.orbitDistance = distance;
  state.orbitPivot = centers / static_cast<float>(count);
}

void EditView::OrbitApply(float dYaw, float dPitch)
{
  EditTransform& t = state.camera.transform;
  t.yaw = std::fmod(t.yaw + dYaw, 360.0f);
  t.pitch = std::fmod(t.pitch + dPitch, 360.0f);
  t.roll = 0;
  // The camera's own rotation: the view axis points backwards, so that the pivot stays in the middle of the picture.
  const EditRotation rotation(t.yaw, t.pitch, 0);
  t.pos = state.orbitPivot + rotation.Column(2) * (state.orbitFactor * state.orbitDistance);
}

void EditView::PickTo(int x, int y, DVector3& out)
{
  MouseToView(x, y);
  PickRay(x, shellHeight - y, state.camera.transform, out);
}

void EditView::MousePress(int button, int x, int y, int modifiers)
{
  state.mouseButtons |= BitOf(button);
  state.mouseX = x;
  state.mouseY = y;
  state.pressModifiers = modifiers;
  if (button != 1 || !(modifiers & QMOD_SHIFT))
    return;
  ClearSelectedNodes();
  PickTo(x, y, state.pickStart);
  state.pickEnd = state.pickStart;
}

void EditView::MouseRelease(int button)
{
  state.mouseButtons &= ~BitOf(button);
}

void EditView::MouseMotion(int x, int y, int modifiers)
{
  const int dx = x - state.mouseX;
  const int dy = y - state.mouseY;
  const float ax = static_cast<float>(dx) * 200 / REFERENCE_WIDTH;
  const float ay = static_cast<float>(dy) * 200 / REFERENCE_HEIGHT;
  const float step = StepSize(modifiers);
  const int buttons = state.mouseButtons & (LEFT | RIGHT);
  if (buttons == (LEFT | RIGHT))
    MotionBoth(dy, step, modifiers);
  else if (buttons == RIGHT && state.objectMode)
    OrbitApply(modifiers & QMOD_CTRL ? ax / 25 : ax, modifiers & QMOD_CTRL ? ay / 25 : ay);
  else if (buttons == RIGHT)
    MotionRight(dx, dy, modifiers);
  else if (buttons == LEFT && (state.pressModifiers & QMOD_SHIFT))
    PickTo(x, y, state.pickEnd);
  else if (buttons == LEFT)
    Pan(ax, ay, step, modifiers);
  state.mouseX = x;
  state.mouseY = y;
}

void EditView::MotionBoth(int dy, float step, int modifiers)
{
  if (!state.objectMode) {
    state.camera.transform.pos.y -= static_cast<float>(dy) * 100 * step / REFERENCE_HEIGHT;
    return;
  }
  const float distance = state.orbitDistance == 0 ? 1 : state.orbitDistance;
  const float slow = modifiers & QMOD_CTRL ? 0.1f : 1.0f;
  state.orbitPivot.y -= static_cast<float>(dy) * 400 / REFERENCE_HEIGHT / (30 / distance) * slow;
  OrbitApply(0, 0);
}

void EditView::MotionRight(int dx, int dy, int modifiers)
{
  const float k = modifiers & QMOD_CTRL ? 2.0f : modifiers & QMOD_ALT ? 0.1f : 1.0f;
  state.camera.transform.pitch += static_cast<float>(dy) * 200 * k / REFERENCE_HEIGHT;
  if (!state.camera.IsMoving())
    state.camera.transform.yaw += static_cast<float>(dx) * 300 * k / REFERENCE_WIDTH;
}

void EditView::Pan(float ax, float ay, float step, int modifiers)
{
  const EditRotation rotation(state.camera.transform.yaw, state.camera.transform.pitch, 0);
  const DVector3 right = rotation.Column(0);
  const DVector3 ground = DNormalized({-right.z, 0, right.x});
  DVector3 offset = -(ay * ground) - (ax * right);
  if (!state.objectMode) {
    state.camera.transform.pos += offset * step;
    return;
  }
  if (state.orbitDistance != 0)
    offset *= 0.05f * state.orbitDistance;
  state.orbitPivot += modifiers & QMOD_CTRL ? offset * 0.1f : offset;
  OrbitApply(0, 0);
}

void EditView::Wheel(int delta, int modifiers)
{
  if (!state.objectMode)
    return;
  const float slow = modifiers & QMOD_CTRL ? 0.1f : 1.0f;
  const float step = static_cast<float>(delta) / 5000 * std::sqrt(state.orbitDistance) * slow;
  state.orbitFactor = std::max(state.orbitFactor - step, MIN_ORBIT_FACTOR);
  OrbitApply(0, 0);
}
