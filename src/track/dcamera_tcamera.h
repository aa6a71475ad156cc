#pragma once

#include "geometry/dvector.h"
#include "scene/dcamera.h"
#include "scene/ddirector.h"

class RTrackCam;

// The view through a camera of the track.
class DCamera_TCamera : public DCamera
{
public:
  explicit DCamera_TCamera(RTrackCam& owner) : trackCam(owner) {}
  const char* GetClassName() const override { return "tcamera"; }
  RTrackCam& GetTrackCam() const { return trackCam; }

  // The car to be shown, as of now.
  void SetCar(const DVector3& position, const DVector3& velocity);
  // Lets the track's camera follow the car, and looks as it does. Without a car the view stays.
  void Update() override;
  // The view on a body where no car is followed: place and zoom are as for a car there, and the body is looked at. What
  // the track's camera itself turns to is the goal. milliseconds since the last one.
  void Preview(const DVector3& body, const DVector3& goal, int milliseconds);
  bool IsGoodShot() override; // until the car is lost
  bool IsCandidate() const;   // sees the car well enough to be taken

private:
  RTrackCam& trackCam; // owns this
  bool hasCar = false;
  DVector3 carPosition{0.0f};
  DVector3 carVelocity{0.0f};
};

// Directs the cameras of a track, which are all that stands on its rail: it stays with one as long as that sees its
// car, then takes the next that does.
class DDirector_Track : public DDirector
{
public:
  const char* GetClassName() const override { return "track"; }
  void Step(float seconds) override;
};
