#include "editor/editcamera.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr float DEGREES = 57.29578f; // in a radian
constexpr float HEIGHT_RATE = 0.4f;  // flying climbs slower than it goes ahead

// -1 at the left or top edge of the shell, 1 at the other.
float Steering(float mouse, float size)
{
  const float half = size / 2;
  return mouse < half ? mouse / half - 1 : (mouse - half) / half;
}

} // namespace

EditRotation::EditRotation(float yaw, float pitch, float roll)
{
  const float cy = std::cos(yaw / DEGREES), sy = std::sin(yaw / DEGREES);
  const float cp = std::cos(pitch / DEGREES), sp = std::sin(pitch / DEGREES);
  const float cr = std::cos(roll / DEGREES), sr = std::sin(roll / DEGREES);
  m[0][0] = cy * cr - sp * sr * sy;
  m[0][1] = sp * cr * sy + sr * cy;
  m[0][2] = -cp * sy;
  m[1][0] = -cp * sr;
  m[1][1] = cp * cr;
  m[1][2] = sp;
  m[2][0] = sp * sr * cy + sy * cr;
  m[2][1] = sy * sr - sp * cr * cy;
  m[2][2] = cp * cy;
}

void EditCamera::MoveCamera(int now, const EditCameraInput& input)
{
  const float dt = static_cast<float>(std::clamp(now - lastTime, 0, 100));
  lastTime = now;
  const float acc = dt * ACCELERATION;
  const float dec = acc * 0.5f;
  if (input.forward && !input.anyModifier)
    speed.z = std::max(speed.z - acc, -MAX_SPEED);
  else if (speed.z < 0)
    speed.z = std::min(speed.z + dec, 0.0f);
  if (input.backward && !input.anyModifier)
    speed.z = std::min(speed.z + acc, MAX_SPEED);
  else if (speed.z > 0)
    speed.z = std::max(speed.z - dec, 0.0f);
  if (IsMoving())
    Steer(dt, input);
  Advance(dt);
}

void EditCamera::Steer(float dt, const EditCameraInput& input)
{
  transform.yaw += dt * Steering(input.mouseX, input.width) * 0.1f;
  transform.pitch += dt * Steering(input.mouseY, input.height) * 0.05f;
}

void EditCamera::Advance(float dt)
{
  const EditRotation rotation(transform.yaw, transform.pitch, 0);
  const DVector3 ahead = DNormalized(rotation.Column(2)) * DVector3(1, HEIGHT_RATE, 1);
  transform.pos += ahead * (dt * speed.z) + rotation.Column(0) * (dt * speed.x);
}

const char* EditCamera::ModeName() const
{
  static constexpr const char* names[] = {"Drag", "Fly", "Spline"};
  return mode >= 0 && mode <= 2 ? names[mode] : "";
}
