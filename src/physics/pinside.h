#pragma once

// What this folder alone may see: the physics library.

#include "geometry/dvector.h"

#include <btBulletDynamicsCommon.h>

#include <vector>

inline btVector3 PTo(const DVector3& v)
{
  return {v.x, v.y, v.z};
}

inline DVector3 PFrom(const btVector3& v)
{
  return {v.x(), v.y(), v.z()};
}

struct PNewtonInside
{
  btDefaultCollisionConfiguration configuration;
  btCollisionDispatcher dispatcher{&configuration};
  btDbvtBroadphase broadphase;
  btSequentialImpulseConstraintSolver solver;
  btDiscreteDynamicsWorld world{&dispatcher, &broadphase, &solver, &configuration};
};
