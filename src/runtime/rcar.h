#pragma once

#include "geometry/dvector.h"
#include "scene/dcamera.h"
#include "scene/ddirector.h"
#include "scene/worldnodes.h"

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

class QSystemNode;
class RCar;

// What moves of a car. Metres, and metres a second.
struct RBody
{
  DVector3 position{0.0f};
  DVector3 velocity{0.0f};
  DVector4 rotation{0.0f, 0.0f, 0.0f, 1.0f}; // quaternion x, y, z, w
};

// A view that belongs to a car.
class RCamera : public DCamera
{
public:
  explicit RCamera(RCar& owner) : car(owner) {}
  const char* GetClassName() const override { return "rcamera"; }
  RCar& GetCar() const { return car; }

private:
  RCar& car;
};

// The preview car: it isn't driven, loaded or painted. Its body has the position for which a track camera is asked.
class RCar
{
public:
  static constexpr uint32_t CREATED = 0x4000000;
  static constexpr int CAMERAS = 10;
  RCar(std::string_view carName, uint32_t creationFlags);
  ~RCar();
  RCar(const RCar&) = delete;
  RCar& operator=(const RCar&) = delete;

  RBody* GetBody() { return &body; }
  const DDirector& GetDirector() const { return director; }
  // "car<index>" in the application's tree; null when there was no application.
  const QSystemNode* GetSystem() const { return system; }
  const std::string& GetName() const { return name; }
  // "data/cars/<name>", or the car's that a reference.ini in it names.
  const std::string& GetDir() const { return dir; }
  uint32_t GetFlags() const { return flags; }
  int GetSkin() const { return skin; }
  int GetIndex() const { return index; }
  float GetRadius() const { return radius; } // of what is around it, metres; 0 until a scene takes the car
  void SetRadius(float metres) { radius = metres; }

private:
  void Init(uint32_t creationFlags);
  void Publish();
  void ReadReference();
  void CreateCameras();

  int index = 0;
  std::string name;
  std::string dir;
  uint32_t flags = 0;
  int skin = 0;
  float radius = 0;
  RBody body;
  QSystemNode* system = nullptr;         // the application's
  std::unique_ptr<WorldGroupNode> group; // stays empty: nothing of the car is painted
  std::array<std::unique_ptr<RCamera>, CAMERAS> cameras;
  DRail cameraSet;
  DDirector director;
};
