#include "physics/pnewtonbody.h"

#include "physics/pcollision.h"
#include "physics/pnewtongeom.h"
#include "physics/pnewtonworld.h"

#include <algorithm>
#include <cmath>

struct PBodyInside
{
  std::shared_ptr<PCollision> collision;
  btEmptyShape nothing; // for a geom without a collision
  std::unique_ptr<btRigidBody> body;
  bool isFrozen = false;
};

PNewtonBody::PNewtonBody(PNewtonWorld& owner, const PNewtonGeom& geom, const DMatrix4& matrix) :
    world(owner), inside(std::make_unique<PBodyInside>())
{
  inside->collision = geom.Collision();
  btCollisionShape* const shape = inside->collision ? inside->collision->shape.get() : &inside->nothing;
  btRigidBody::btRigidBodyConstructionInfo info(0, nullptr, shape);
  // The library multiplies what two bodies bring.
  info.m_friction = std::sqrt(PNewtonWorld::KINETIC_FRICTION);
  info.m_restitution = std::sqrt(PNewtonWorld::ELASTICITY);
  inside->body = std::make_unique<btRigidBody>(info);
  inside->body->setUserPointer(this);
  SetMatrix(matrix);
  world.inside->world.addRigidBody(inside->body.get());
}

PNewtonBody::~PNewtonBody()
{
  world.inside->world.removeRigidBody(inside->body.get());
}

void PNewtonBody::SetMatrix(const DMatrix4& matrix)
{
  btTransform place;
  place.setFromOpenGLMatrix(&matrix[0][0]);
  inside->body->setWorldTransform(place);
  if (inside->body->isInWorld())
    world.inside->world.updateSingleAabb(inside->body.get());
}

DMatrix4 PNewtonBody::GetMatrix() const
{
  DMatrix4 matrix(1.0f);
  inside->body->getWorldTransform().getOpenGLMatrix(&matrix[0][0]);
  return matrix;
}

void PNewtonBody::SetMass(float kilograms)
{
  btRigidBody& body = *inside->body;
  const float mass = body.getCollisionShape()->isConcave() ? 0 : std::max(0.0f, kilograms);
  btVector3 inertia(0, 0, 0);
  if (mass > 0)
    body.getCollisionShape()->calculateLocalInertia(mass, inertia);
  // The group that a body belongs to goes by its mass.
  world.inside->world.removeRigidBody(&body);
  body.setMassProps(mass, inertia);
  body.updateInertiaTensor();
  world.inside->world.addRigidBody(&body);
  SetFreeze(inside->isFrozen);
}

float PNewtonBody::GetMass() const
{
  return inside->body->getMass();
}

void PNewtonBody::SetVelocity(const DVector3& metresPerSecond)
{
  inside->body->setLinearVelocity(PTo(metresPerSecond));
  inside->body->activate();
}

DVector3 PNewtonBody::GetVelocity() const
{
  return PFrom(inside->body->getLinearVelocity());
}

void PNewtonBody::SetFreeze(bool on)
{
  inside->isFrozen = on;
  inside->body->setLinearFactor(on ? btVector3(0, 0, 0) : btVector3(1, 1, 1));
  inside->body->setAngularFactor(on ? btVector3(0, 0, 0) : btVector3(1, 1, 1));
}

bool PNewtonBody::IsFrozen() const
{
  return inside->isFrozen;
}

void PNewtonBody::SetAutoSleep(bool on)
{
  inside->body->forceActivationState(on ? ACTIVE_TAG : DISABLE_DEACTIVATION);
}

bool PNewtonBody::IsSleeping() const
{
  return inside->body->getActivationState() == ISLAND_SLEEPING;
}
