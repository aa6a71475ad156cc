#include "foundation/qreport.h"
#include "physics/pnewtonbody.h"
#include "physics/pnewtongeom.h"
#include "physics/pnewtonworld.h"
#include "support/reportcapture.h"

#include <gtest/gtest.h>

namespace {

class CountingBody : public PRigidBody
{
public:
  using PRigidBody::PRigidBody;
  void Update() override { ++updates; }
  int updates = 0;
};

} // namespace

TEST(NewtonWorld, StepsItsBodiesAndCounts)
{
  PNewtonWorld world;
  CountingBody cone("cone");
  world.AddRigidBody(&cone);
  ReportCapture reports;
  world.Update(0.01f);
  world.Update(0);
  world.Update(-1);
  EXPECT_EQ(1, world.StepCount());
  EXPECT_EQ(1, cone.updates);
  EXPECT_EQ(2, reports.Count("Update with dt<=0"));
  world.RemoveRigidBody(&cone);
  world.RemoveRigidBody(&cone);
  EXPECT_EQ(1, reports.Count("Remove of body 'cone' - not found in PNewtonWorld manager"));
}

TEST(NewtonWorldDeathTest, ASecondWorldAndTheBodyAfterTheLastAreFatal)
{
  PNewtonWorld world;
  CountingBody body("b");
  for (int i = 0; i < 1000; ++i)
    world.AddRigidBody(&body);
  EXPECT_DEATH(world.AddRigidBody(&body), "No more space for rigid bodies");
  EXPECT_DEATH(PNewtonWorld(), "Can't create more than 1 PNewtonWorld");
}

TEST(NewtonBody, ABoxFallsOntoTheFacesAndStaysThere)
{
  PNewtonWorld world;
  PNewtonGeom floor(&world);
  floor.BeginTree();
  const float corners[] = {-50, 0, -50, -50, 0, 50, 50, 0, 50, 50, 0, -50};
  floor.AddFace(4, corners, 12, 1);
  floor.EndTreeBuild(true);
  PNewtonBody ground(world, floor);
  ground.SetMass(1000);
  EXPECT_EQ(0, ground.GetMass());
  PNewtonGeom cube(&world);
  cube.CreateBox({1, 1, 1});
  DMatrix4 place(1.0f);
  place[3] = {3, 1, 5, 1};
  PNewtonBody box(world, cube, place);
  PNewtonBody frozen(world, cube, DMatrix4(1.0f));
  box.SetMass(10);
  box.SetAutoSleep(false);
  frozen.SetMass(10);
  frozen.SetFreeze(true);
  world.Update(0.01f);
  EXPECT_LT(box.GetVelocity().y, -0.05f);
  for (int i = 0; i < 500; ++i)
    world.Update(0.01f);
  EXPECT_NEAR(0.5f, box.GetMatrix()[3].y, 0.1f);
  const float x = box.GetMatrix()[3].x; // it slides a little: the ground is nearly without friction
  const float z = box.GetMatrix()[3].z;
  EXPECT_EQ(DVector4(0, 0, 0, 1), frozen.GetMatrix()[3]);
  PRayHit hit;
  ASSERT_TRUE(world.CastRay({x, 10, z}, {x, -10, z}, hit));
  EXPECT_EQ(&box, hit.body);
  ASSERT_TRUE(world.CastRay({40, 10, 5}, {40, -10, 5}, hit));
  EXPECT_EQ(&ground, hit.body);
  EXPECT_EQ(1, hit.material);
  EXPECT_NEAR(0, hit.position.y, 0.001f);
  EXPECT_FALSE(world.CastRay({200, 10, 5}, {200, -10, 5}, hit));
}

TEST(NewtonGeom, HullsNeedAVolume)
{
  PNewtonGeom geom(nullptr);
  ReportCapture reports;
  const DVector3 flat[] = {{0, 0, 0}, {1, 0, 0}, {0, 0, 1}, {1, 0.0001f, 1}, {2, 0, 2}};
  const DVector3 line[] = {{0, 0, 0}, {1, 0, 0}, {2, 0, 0}, {3, 0, 0}};
  const DVector3 point[] = {{1, 1, 1}, {1, 1, 1}, {1, 1, 1}, {1, 1, 1}};
  EXPECT_FALSE(geom.CreateConvexHull({}));
  EXPECT_FALSE(geom.CreateConvexHull(flat));
  EXPECT_FALSE(geom.CreateConvexHull(line));
  EXPECT_FALSE(geom.CreateConvexHull(point));
  EXPECT_EQ(4, reports.Count("PNewtonGeom:CreateConvexHull() failed to create geom"));
  geom.CreateSphere(1);
  EXPECT_TRUE(reports.Contains("NewtonCreateSphere NYI in Newton3"));
  EXPECT_FALSE(geom.HasCollision());

  const DVector3 solid[] = {{0, 0, 0}, {1, 0, 0}, {0, 0, 1}, {0, 1, 0}};
  ASSERT_TRUE(geom.CreateConvexHull(solid));
  PNewtonWorld world;
  PNewtonBody body(world, geom);
  PRayHit hit;
  EXPECT_TRUE(world.CastRay({0.1f, 5, 0.1f}, {0.1f, -5, 0.1f}, hit));
  EXPECT_FALSE(world.CastRay({0.9f, 5, 0.9f}, {0.9f, -5, 0.9f}, hit));
}
