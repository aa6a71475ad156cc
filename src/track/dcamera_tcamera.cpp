#include "track/dcamera_tcamera.h"

#include "track/rtrackcam.h"

void DCamera_TCamera::SetCar(const DVector3& position, const DVector3& velocity)
{
  hasCar = true;
  carPosition = position;
  carVelocity = velocity;
}

void DCamera_TCamera::Update()
{
  if (!hasCar)
    return;
  trackCam.Follow(carPosition, carVelocity);
  SetMethod(METHOD_LOOKAT);
  SetFrom(trackCam.src.position);
  SetTo(trackCam.dst.position);
  SetFOV(trackCam.zoomNow);
}

void DCamera_TCamera::Preview(const DVector3& body, const DVector3& goal, int milliseconds)
{
  trackCam.AimAt(body, goal, milliseconds);
  SetMethod(METHOD_LOOKAT);
  SetFrom(trackCam.src.position);
  SetTo(body);
  SetFOV(trackCam.zoomNow);
}

bool DCamera_TCamera::IsGoodShot()
{
  return !hasCar || !trackCam.HasLost(carPosition);
}

bool DCamera_TCamera::IsCandidate() const
{
  return hasCar && trackCam.IsCandidate(carPosition);
}

void DDirector_Track::Step(float)
{
  const DRail* rail = GetRail(GetCurrentRail());
  DCamera* current = GetCurrentCamera();
  if (!rail || !current || current->IsGoodShot())
    return;
  const int count = rail->GetNoofCameras();
  for (int i = 1; i < count; ++i) {
    const int next = (GetCurrentIndex() + i) % count;
    if (static_cast<DCamera_TCamera*>(rail->GetCamera(next))->IsCandidate()) {
      SetRail(GetCurrentRail(), next);
      return;
    }
  }
}
