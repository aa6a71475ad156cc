#pragma once

#include "geometry/dvector.h"

#include <functional>
#include <glm/mat3x3.hpp>

// Rows and columns of the view's rotation: column 0 is the camera's right axis, column 2 its view axis, which points
// backwards. Angles in degrees.
struct EditRotation
{
  float m[3][3];

  EditRotation(float yaw, float pitch, float roll);
  DVector3 Column(int i) const { return {m[0][i], m[1][i], m[2][i]}; }
};

// Position and angles of the view camera, as settings.transform keeps them. Angles in degrees.
struct EditTransform
{
  DVector3 pos{0.0f};
  float pitch = 0;
  float yaw = 0;
  float roll = 0;
};

// What MoveCamera needs to know of keys and pointer.
struct EditCameraInput
{
  bool forward = false;  // Up or W is held
  bool backward = false; // Down or S is held
  bool anyModifier = false;
  float mouseX = 0; // pointer in the shell, pixels
  float mouseY = 0;
  float width = 1; // of the shell
  float height = 1;
};

// The editor's one view camera: it flies by keys, is turned by the pointer while it moves, and is placed by the modes.
class EditCamera
{
public:
  static constexpr float MAX_SPEED = 0.03f;      // metres a millisecond
  static constexpr float ACCELERATION = 0.0001f; // metres a millisecond, each millisecond

  EditTransform transform;
  float fov = 50; // degrees
  int mode = 1;   // 0 "Drag", 1 "Fly", 2 "Spline"; shown, never changed here

  // One step of the camera's own motion; now in milliseconds, a step of more than 100 counts as 100.
  void MoveCamera(int now, const EditCameraInput& input);
  void ZeroSpeeds() { speed = DVector3(0.0f); }
  bool IsMoving() const { return glm::length(speed) > 0; }
  void SetCameraPos(const DVector3& p) { transform.pos = p; }
  const char* ModeName() const;

private:
  void Steer(float dt, const EditCameraInput& input);
  void Advance(float dt);
  DVector3 speed{0.0f}; // x along the right axis, z along the view axis: negative goes forward
  int lastTime = 0;
};
