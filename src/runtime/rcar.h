#pragma once

#include "geometry/dvector.h"
#include "scene/worldnodes.h"

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

// What moves of a car.
struct RBody
{
  DVector3 position{0.0f};
  DVector3 velocity{0.0f};
  DVector4 rotation{0.0f, 0.0f, 0.0f, 1.0f}; // quaternion x, y, z, w
};

// The preview car: it isn't driven, loaded or painted. Its body has the position for which a track camera is asked.
class RCar
{
public:
  static constexpr uint32_t CREATED = 0x4000000;
  RCar(std::string_view carName, uint32_t creationFlags);
  ~RCar();
  RCar(const RCar&) = delete;
  RCar& operator=(const RCar&) = delete;

  RBody* GetBody() { return &body; }
  const std::string& GetName() const { return name; }
  // "data/cars/<name>", or the car's that a reference.ini in it names.
  const std::string& GetDir() const { return dir; }
  uint32_t GetFlags() const { return flags; }
  int GetSkin() const { return skin; }
  int GetIndex() const { return index; }

private:
  void Init(uint32_t creationFlags);
  void ReadReference();

  int index = 0;
  std::string name;
  std::string dir;
  uint32_t flags = 0;
  int skin = 0;
  RBody body;
  std::unique_ptr<WorldGroupNode> group;
};
