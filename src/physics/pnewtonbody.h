#pragma once

#include "geometry/dvector.h"

#include <memory>

class PNewtonGeom;
class PNewtonWorld;
struct PBodyInside;

// A body in the world, in it from its making to its end. The world must outlive it.
class PNewtonBody
{
public:
  // Keeps the geom's collision; the geom itself may go. Static until it gets a mass.
  PNewtonBody(PNewtonWorld& owner, const PNewtonGeom& geom, const DMatrix4& matrix = DMatrix4(1.0f));
  ~PNewtonBody();
  PNewtonBody(const PNewtonBody&) = delete;
  PNewtonBody& operator=(const PNewtonBody&) = delete;

  // Rotation and translation; no scale.
  void SetMatrix(const DMatrix4& matrix);
  DMatrix4 GetMatrix() const;
  // In kilograms; 0 makes it static. A tree of faces stays static.
  void SetMass(float kilograms);
  float GetMass() const;
  void SetVelocity(const DVector3& metresPerSecond);
  DVector3 GetVelocity() const;
  void SetFreeze(bool on); // nothing moves it
  bool IsFrozen() const;
  void SetAutoSleep(bool on); // may rest until something touches it
  bool IsSleeping() const;

private:
  PNewtonWorld& world;
  std::unique_ptr<PBodyInside> inside;
};
