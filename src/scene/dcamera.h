#pragma once

#include "geometry/dvector.h"

#include <cstdint>
#include <string>
#include <string_view>

class QInfo;

// A view of the scene: where from, where to, and how wide. Angles in degrees. The view looks along -z of its own
// space; yaw turns about y, pitch about x, roll about z, applied in that order to the world.
class DCamera
{
public:
  enum Flag : uint32_t
  {
    STEREO_SHIFT = 0x01,
    ORTHO = 0x02,
    MIRROR_Y = 0x10, // the picture upside down
    CUSTOM_PROJECTION = 0x20,
  };
  enum Method
  {
    METHOD_LOOKAT = 0, // from, to and up
    METHOD_ORBIT = 1,  // distance behind a turn by the stored matrix
    METHOD_MATRIX = 2, // yaw, pitch and roll at from, behind the stored matrix
    METHOD_EULER = 3,  // as 2, with the pitch within -89 to 89
  };
  DCamera();
  virtual ~DCamera() = default;
  virtual const char* GetClassName() const { return "camera"; }
  virtual void Update() {}
  virtual void Activate() {} // a director took the camera
  virtual bool IsGoodShot() { return true; }
  virtual void Reset() {}

  DVector3 GetFrom() const; // reports and gives 0 with the orbit method
  DVector3 GetTo() const;   // reports and gives 0 with the orbit method
  void SetFrom(const DVector3& v) { from = v; }
  void SetTo(const DVector3& v) { to = v; }
  void SetUp(const DVector3& v) { up = v; }
  void SetAngles(float newYaw, float newPitch, float newRoll);
  void SetMethod(int newMethod) { method = newMethod; }
  void SetStoredMatrix(const DMatrix4& m) { stored = m; }
  void SetDistance(float d) { distance = d; }
  void SetOrigin(const DVector3& v) { origin = v; } // subtracted from all world positions
  void SetShear(float x, float y);                  // tangents, of method 2
  void SetFOV(float degrees) { fov = degrees; }     // from bottom to top
  void SetAspect(float widthToHeight) { aspect = widthToHeight; }
  void SetClip(float nearPlane, float farPlane);
  void SetOrtho(float l, float r, float b, float t, float nearPlane, float farPlane);
  void SetProjection(const DMatrix4& m); // in place of the computed one
  // One eye's view: it stands this far to the right (negative: left) of the middle, and what lies at the focus distance
  // is seen by both in one place. Metres; 0 gives the view of the middle.
  void SetStereoShift(float eyeOffset, float focusDistance);
  // Position, offset in view space, angles and method in one.
  void Go(const DVector3& position, const DVector3& offset, float newYaw, float newPitch, float newRoll,
          int newMethod = METHOD_MATRIX);

  // Computes the model-view matrix. An unknown method is reported and leaves it.
  void CalcModelViewMatrix(const DMatrix4& pre = DMatrix4(1.0f));
  const DMatrix4& GetModelView() const { return modelView; } // of the last CalcModelViewMatrix
  // farPlane 0: the camera's own. The field of view is held within 0.01 to 179.
  DMatrix4 GetProjection(float farPlane = 0) const;
  // In world space, from the last model-view matrix.
  DVector3 GetEye() const;
  // "<key>.sm_profile", "<key>.focus"; what is missing stays as it is.
  void LoadSettings(const QInfo& info, std::string_view key);

  int GetMethod() const { return method; }
  float GetFOV() const { return fov; }
  float GetAspect() const { return aspect; }
  float GetNear() const { return nearPlane; }
  float GetFar() const { return farPlane; }
  float GetYaw() const { return yaw; }
  float GetPitch() const { return pitch; }
  float GetRoll() const { return roll; }
  float GetFocus() const { return focus; }
  int GetShadowMapProfile() const { return smProfile; }

  uint32_t flags = 0;

private:
  void LookAt();
  DMatrix4 Turn() const;

  int method = METHOD_LOOKAT;
  DMatrix4 modelView{1.0f};
  DMatrix4 stored{1.0f};
  DMatrix4 projection{1.0f};
  DVector2 shear{0.0f};
  float stereoOffset = 0;
  float stereoFocus = 0;
  float left = -1, right = 1, bottom = -1, top = 1;
  float nearPlane = 0.2f, farPlane = 10000.0f;
  float fov = 50.0f, aspect = 4.0f / 3.0f;
  DVector3 from{0.0f}, to{0.0f}, up{0.0f, 1.0f, 0.0f};
  float yaw = 0, pitch = 0, roll = 0;
  float distance = 0;
  DVector3 origin{0.0f};
  float focus = 0;
  int smProfile = 0;
};

// A camera that something else moves.
class DCameraAnimated : public DCamera
{
public:
  DCameraAnimated() { SetMethod(METHOD_MATRIX); }
  const char* GetClassName() const override { return "animated"; }
};
