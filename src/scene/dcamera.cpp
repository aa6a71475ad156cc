#include "scene/dcamera.h"

#include "foundation/qinfo.h"
#include "foundation/qreport.h"

#include <glm/gtc/matrix_transform.hpp>

#include <algorithm>
#include <cmath>

namespace {

constexpr float DEGREES = 57.29578f;

DMatrix4 Translation(const DVector3& v)
{
  return glm::translate(DMatrix4(1.0f), v);
}

DMatrix4 Rotation(float degrees, const DVector3& axis)
{
  return glm::rotate(DMatrix4(1.0f), degrees / DEGREES, axis);
}

} // namespace

DCamera::DCamera() = default;

DVector3 DCamera::GetFrom() const
{
  if (method == METHOD_LOOKAT || method == METHOD_MATRIX || method == METHOD_EULER)
    return from;
  QWARN("DCamera:GetFrom(); unsupported method %d", method);
  return DVector3(0.0f);
}

DVector3 DCamera::GetTo() const
{
  if (method == METHOD_ORBIT) {
    QWARN("DCamera:GetTo: METHOD_MATRIX NYI\n");
    return DVector3(0.0f);
  }
  return to;
}

void DCamera::SetAngles(float newYaw, float newPitch, float newRoll)
{
  yaw = newYaw;
  pitch = newPitch;
  roll = newRoll;
}

void DCamera::SetShear(float x, float y)
{
  shear = {x, y};
}

void DCamera::SetClip(float newNear, float newFar)
{
  nearPlane = newNear;
  farPlane = newFar;
}

void DCamera::SetOrtho(float l, float r, float b, float t, float newNear, float newFar)
{
  left = l;
  right = r;
  bottom = b;
  top = t;
  SetClip(newNear, newFar);
  flags |= ORTHO;
}

void DCamera::SetProjection(const DMatrix4& m)
{
  projection = m;
  flags |= CUSTOM_PROJECTION;
}

void DCamera::SetStereoShift(float eyeOffset, float focusDistance)
{
  stereoOffset = eyeOffset;
  stereoFocus = focusDistance;
  flags = eyeOffset != 0 ? flags | STEREO_SHIFT : flags & ~static_cast<uint32_t>(STEREO_SHIFT);
}

void DCamera::Go(const DVector3& position, const DVector3& offset, float newYaw, float newPitch, float newRoll,
                 int newMethod)
{
  from = position;
  to = offset;
  SetAngles(newYaw, newPitch, newRoll);
  method = newMethod;
}

DMatrix4 DCamera::Turn() const
{
  return Rotation(roll, {0, 0, 1}) * Rotation(pitch, {1, 0, 0}) * Rotation(yaw, {0, 1, 0});
}

void DCamera::LookAt()
{
  if (from == to)
    to.z += 1.0f;
  DVector3 upward = up;
  if (glm::length(glm::cross(to - from, upward)) < 1e-6f * glm::length(to - from))
    upward = DVector3(0.0f, 0.0f, 1.0f); // straight up or down
  modelView = glm::lookAt(from, to, upward);
  // Rows of the turn: right, up, back.
  const glm::mat3 rows = glm::transpose(glm::mat3(modelView));
  const float toDegrees = DEGREES;
  pitch = std::asin(std::clamp(rows[2].y, -1.0f, 1.0f)) * toDegrees;
  yaw = std::atan2(-rows[2].x, rows[2].z) * toDegrees;
  roll = std::atan2(-rows[0].y, rows[1].y) * toDegrees;
}

void DCamera::CalcModelViewMatrix(const DMatrix4& pre)
{
  switch (method) {
  case METHOD_LOOKAT:
    LookAt();
    break;
  case METHOD_ORBIT:
    modelView = Translation({0, 0, -distance}) * Translation(to) * stored * Translation(from) * Translation(origin);
    break;
  case METHOD_MATRIX: {
    DMatrix4 sheared(1.0f);
    sheared[2][0] = shear.x;
    sheared[2][1] = shear.y;
    modelView = stored * sheared * Translation(to) * Turn() * Translation(origin - from);
    break;
  }
  case METHOD_EULER:
    pitch = std::clamp(pitch, -89.0f, 89.0f);
    modelView = Translation(to) * Turn() * Translation(-from);
    break;
  default:
    QWARN("DCamera:InstallState(); unknown method %d", method);
    return;
  }
  modelView = pre * modelView;
  if (flags & STEREO_SHIFT)
    modelView = Translation({-stereoOffset, 0, 0}) * modelView;
  if (flags & MIRROR_Y)
    for (int column = 0; column < 4; ++column)
      modelView[column][1] = -modelView[column][1];
}

DMatrix4 DCamera::GetProjection(float otherFar) const
{
  if (flags & CUSTOM_PROJECTION)
    return projection;
  const float end = otherFar > 0 ? otherFar : farPlane;
  if (flags & ORTHO)
    return glm::ortho(left, right, bottom, top, nearPlane, end);
  // Not a number fails the comparison too.
  const float degrees = fov >= 0.01f ? std::min(fov, 179.0f) : 0.01f;
  const float shape = aspect > 0.0001f ? aspect : 1.0f;
  DMatrix4 m = glm::perspective(degrees / DEGREES, shape, nearPlane, end);
  if (flags & STEREO_SHIFT && stereoFocus > 0)
    m[2][0] = -m[0][0] * stereoOffset / stereoFocus;
  return m;
}

DVector3 DCamera::GetEye() const
{
  return DVector3(glm::inverse(modelView)[3]);
}

void DCamera::LoadSettings(const QInfo& info, std::string_view key)
{
  smProfile = info.GetInt(std::string(key) + ".sm_profile", smProfile);
  focus = info.GetFloat(std::string(key) + ".focus", focus);
}
