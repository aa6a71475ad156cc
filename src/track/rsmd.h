#pragma once

#include "geometry/dvector.h"

#include <string_view>

class QInfo;

// Spring, mass and damper: a position that follows a moving target smoothly.
// Without a spring (k 0) or without room (maxDist 0) it follows at once.
class RSMD
{
public:
  float k = 0;
  float mass = 1;
  float damping = 10;
  float maxDist = 10;
  DVector3 position{0.0f};
  DVector3 velocity{0.0f};
  DVector3 force{0.0f};
  struct Target
  {
    DVector3 position{0.0f};
    DVector3 velocity{0.0f};
  } target;

  // The keys "<key>.k", ".mass", ".damping", ".maxdist". A mass of about 0 is reported and becomes 1.
  void Load(const QInfo& info, std::string_view key);
  void Save(QInfo& info, std::string_view key) const;
  void SetTarget(const DVector3& newPosition, const DVector3& newVelocity);
  // dt in seconds.
  void Step(float dt);

private:
  bool IsRigid() const { return k == 0 || maxDist == 0; }
  void KeepNear();
};
