#pragma once

#include "geometry/dvector.h"
#include "scene/ddirector.h"

#include <array>
#include <vector>

class DCamera;
class RCar;
class WorldScene;

// Takes the place and speed at which sound is heard.
struct RListener
{
  DVector3 position{0.0f};
  DVector3 velocity{0.0f};
};

// The scene as the program uses it: which director the view follows, and the frame. Directors, rails and cars are
// visited.
class RScene
{
public:
  static constexpr int MAX_CARS = 50;
  enum CamMode
  {
    CAM_MODE_CAR = 0,
    CAM_MODE_TRACK = 1,
    CAM_MODE_FREE = 2,
    CAM_MODE_HELI = 3,
    CAM_MODE_NONE = 4, // has no director of its own
    CAM_MODE_KEEP = 5, // leaves the director alone
    CAM_MODE_COUNT
  };
  explicit RScene(WorldScene& shownWorld) : world(shownWorld) {}

  // What the view follows. Out of range is reported and gives the car.
  void SetCamMode(int mode, int previous = -1);
  int GetCamMode() const { return camMode; }
  // The director of modes 0 to 3.
  void SetDirector(int mode, DDirector* director);
  // Shows a director in the window's rectangle, which starts at the offset.
  void SetView(DDirector* director, int width, int height, int x = 0, int y = 0);
  // The position around which numbers are kept small. False, and nothing written, in a mode without one (reported).
  bool GetCameraOrigin(float* out) const;
  void ClearScreen();
  void Paint();
  void AddCar(RCar* car); // reports at MAX_CARS
  void RemoveCar(RCar* car);
  bool HasCar(const RCar* car) const;
  int GetNoofCars() const { return static_cast<int>(cars.size()); }
  RCar* GetFollowedCar() const { return followedCar; } // null: none
  WorldScene& GetWorld() { return world; }

  RListener listener;

private:
  DDirector* DirectorOf(int mode) const;

  WorldScene& world;
  int camMode = CAM_MODE_CAR;
  std::array<DDirector*, CAM_MODE_COUNT> directors{};
  std::array<DCamera*, CAM_MODE_COUNT> lastCameras{}; // of each mode, when it was left
  std::vector<RCar*> cars;
  RCar* followedCar = nullptr;
};
