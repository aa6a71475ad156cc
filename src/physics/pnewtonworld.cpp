#include "physics/pnewtonworld.h"

#include "foundation/qreport.h"
#include "physics/pinside.h"
#include "physics/pnewtonbody.h"

#include <algorithm>

namespace {

int& WorldCount()
{
  static int count = 0;
  return count;
}

// The nearest hit, with the face that was met.
struct NearestHit : btCollisionWorld::ClosestRayResultCallback
{
  using ClosestRayResultCallback::ClosestRayResultCallback;
  btScalar addSingleResult(btCollisionWorld::LocalRayResult& result, bool isWorldNormal) override
  {
    material = result.m_localShapeInfo ? result.m_localShapeInfo->m_triangleIndex : -1;
    return ClosestRayResultCallback::addSingleResult(result, isWorldNormal);
  }
  int material = -1;
};

} // namespace

PNewtonWorld::PNewtonWorld()
{
  if (WorldCount() > 0)
    qfatal("Can't create more than 1 PNewtonWorld");
  ++WorldCount();
  inside = std::make_unique<PNewtonInside>();
  inside->world.setGravity({0, -9.81f, 0});
  const int version = btGetVersion();
  QDBG("Newton (v3) platform %d: Bullet %d.%d\n", 0, version / 100, version % 100);
}

PNewtonWorld::~PNewtonWorld()
{
  --WorldCount();
}

void PNewtonWorld::Update(float dt)
{
  if (!(dt > 0)) {
    QWARN("Update with dt<=0");
    return;
  }
  inside->world.stepSimulation(dt, 0); // the caller's step, not one of the library's
  ++stepCount;
  for (PRigidBody* body : rigidBodies)
    body->Update();
}

void PNewtonWorld::AddRigidBody(PRigidBody* body)
{
  if (RigidBodyCount() >= MAX_RIGID_BODIES)
    qfatal("No more space for rigid bodies");
  rigidBodies.push_back(body);
}

void PNewtonWorld::RemoveRigidBody(PRigidBody* body)
{
  const auto found = std::find(rigidBodies.begin(), rigidBodies.end(), body);
  if (found == rigidBodies.end())
    QERR("Remove of body '%s' - not found in PNewtonWorld manager", body->name.c_str());
  else
    rigidBodies.erase(found);
}

bool PNewtonWorld::CastRay(const DVector3& from, const DVector3& to, PRayHit& hit) const
{
  NearestHit nearest(PTo(from), PTo(to));
  inside->world.rayTest(PTo(from), PTo(to), nearest);
  if (!nearest.hasHit())
    return false;
  hit = {static_cast<const PNewtonBody*>(nearest.m_collisionObject->getUserPointer()), PFrom(nearest.m_hitPointWorld),
         PFrom(nearest.m_hitNormalWorld), nearest.material};
  return true;
}
