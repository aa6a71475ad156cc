#pragma once

#include "geometry/dbox.h"
#include "physics/prayhit.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

class PNewtonBody;
struct PNewtonInside;

// A body that lives on in the world: it takes over its place after each step.
class PRigidBody
{
public:
  explicit PRigidBody(std::string newName) : name(std::move(newName)) {}
  virtual ~PRigidBody() = default;
  virtual void Update() = 0;
  std::string name;
};

// The physics library's world. One a process: a second one is fatal. Main thread only.
class PNewtonWorld
{
public:
  static constexpr int MAX_RIGID_BODIES = 1000;
  // Of the pair of materials that all bodies are made of.
  static constexpr float KINETIC_FRICTION = 0.05f;
  static constexpr float STATIC_FRICTION = 0.1f;
  static constexpr float SOFTNESS = 1.0f;
  static constexpr float ELASTICITY = 0.5f;

  PNewtonWorld();
  ~PNewtonWorld(); // after its bodies
  PNewtonWorld(const PNewtonWorld&) = delete;
  PNewtonWorld& operator=(const PNewtonWorld&) = delete;

  void SetSize(const DBox& box) { size = box; }
  const DBox& Size() const { return size; }
  // By dt seconds; one at or below 0 is reported, and nothing happens.
  void Update(float dt);
  int64_t StepCount() const { return stepCount; }
  // Not owned. Fatal at MAX_RIGID_BODIES.
  void AddRigidBody(PRigidBody* body);
  // One that isn't listed is reported.
  void RemoveRigidBody(PRigidBody* body);
  int RigidBodyCount() const { return static_cast<int>(rigidBodies.size()); }
  // The nearest body between two points. False: none, and hit is as it was.
  bool CastRay(const DVector3& from, const DVector3& to, PRayHit& hit) const;

private:
  friend class PNewtonBody;
  std::unique_ptr<PNewtonInside> inside;
  DBox size{DVector3(-100000, -10000, -100000), DVector3(100000, 10000, 100000)};
  int64_t stepCount = 0;
  std::vector<PRigidBody*> rigidBodies;
};
