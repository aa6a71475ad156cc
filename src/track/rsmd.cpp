#include "track/rsmd.h"

#include "foundation/qinfo.h"
#include "foundation/qreport.h"

#include <string>

void RSMD::Load(const QInfo& info, std::string_view key)
{
  constexpr float SMALLEST_MASS = 0.00001f;
  const std::string base(key);
  k = info.GetFloat(base + ".k", 0.0f);
  mass = info.GetFloat(base + ".mass", 1.0f);
  if (!(mass >= SMALLEST_MASS)) {
    QWARN("RSMD: mass can't be close to 0; boosted to 1 kg (%s)", base.c_str());
    mass = 1;
  }
  damping = info.GetFloat(base + ".damping", 10.0f);
  maxDist = info.GetFloat(base + ".maxdist", 10.0f);
}

void RSMD::Save(QInfo& info, std::string_view key) const
{
  const std::string base(key);
  info.SetFloat(base + ".k", k);
  info.SetFloat(base + ".mass", mass);
  info.SetFloat(base + ".damping", damping);
  info.SetFloat(base + ".maxdist", maxDist);
}

void RSMD::SetTarget(const DVector3& newPosition, const DVector3& newVelocity)
{
  target = {newPosition, newVelocity};
  if (IsRigid()) {
    position = newPosition;
    force = DVector3(0.0f);
  }
}

void RSMD::Step(float dt)
{
  if (IsRigid())
    return;
  target.position += dt * target.velocity;
  force = (target.position - position) * k;
  const DVector3 acceleration = (force - damping * (velocity - target.velocity)) / mass;
  position += velocity * dt + acceleration * (0.5f * dt * dt);
  velocity += acceleration * dt;
  KeepNear();
}

void RSMD::KeepNear()
{
  constexpr float JUMP_FACTOR = 10.5f;
  constexpr float SMALLEST_EXCESS = 0.01f;
  const DVector3 way = target.position - position;
  const float distanceSq = glm::dot(way, way);
  if (distanceSq > JUMP_FACTOR * maxDist * maxDist) {
    position = target.position;
  } else if (distanceSq > maxDist * maxDist) {
    const float distance = glm::length(way);
    const float excess = distance - maxDist;
    if (excess > SMALLEST_EXCESS)
      position += way / distance * excess;
  }
}
