#include "foundation/qinfo.h"
#include "scene/dcamera.h"
#include "support/reportcapture.h"

#include <glm/gtc/matrix_transform.hpp>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

// How the editor turns a view, written out: columns right, up and back.
glm::mat3 ViewAxes(float yaw, float pitch, float roll)
{
  const float cy = std::cos(glm::radians(yaw)), sy = std::sin(glm::radians(yaw));
  const float cp = std::cos(glm::radians(pitch)), sp = std::sin(glm::radians(pitch));
  const float cr = std::cos(glm::radians(roll)), sr = std::sin(glm::radians(roll));
  return glm::mat3(DVector3(cy * cr - sp * sr * sy, -cp * sr, sp * sr * cy + sy * cr),
                   DVector3(sp * cr * sy + sr * cy, cp * cr, sy * sr - sp * cr * cy), DVector3(-cp * sy, sp, cp * cy));
}

// In the window, -1 to 1 each.
DVector3 Projected(const DCamera& camera, const DVector3& point)
{
  const DVector4 p = camera.GetProjection() * camera.GetModelView() * DVector4(point, 1.0f);
  return DVector3(p) / p.w;
}

bool IsFinite(const DMatrix4& m)
{
  for (int i = 0; i < 16; ++i)
    if (!std::isfinite(m[i / 4][i % 4]))
      return false;
  return true;
}

} // namespace

TEST(Camera, LooksWhereTheViewAxesPoint)
{
  const DVector3 from(120.0f, 8.0f, -340.0f);
  for (const int method : {DCamera::METHOD_MATRIX, DCamera::METHOD_EULER})
    for (const float yaw : {0.0f, 30.0f, 135.0f, -100.0f, 400.0f})
      for (const float pitch : {0.0f, 25.0f, -60.0f})
        for (const float roll : {0.0f, 20.0f, -75.0f}) {
          SCOPED_TRACE(testing::Message() << "method " << method << " at " << yaw << ", " << pitch << ", " << roll);
          DCamera camera;
          camera.Go(from, DVector3(0.0f), yaw, pitch, roll, method);
          camera.CalcModelViewMatrix();
          const glm::mat3 axes = ViewAxes(yaw, pitch, roll);
          const DVector3 ahead = from - axes[2] * 50.0f;
          EXPECT_NEAR(0, glm::length(DVector2(Projected(camera, ahead))), 1e-3);
          const DVector3 right = Projected(camera, ahead + axes[0] * 5.0f);
          EXPECT_GT(right.x, 0.05f);
          EXPECT_NEAR(0, right.y, 1e-3);
          const DVector3 up = Projected(camera, ahead + axes[1] * 5.0f);
          EXPECT_GT(up.y, 0.05f);
          EXPECT_NEAR(0, up.x, 1e-3);
          EXPECT_NEAR(0, glm::length(camera.GetEye() - from), 1e-2);
        }
}

TEST(Camera, LookAtFindsTheAnglesOfItsView)
{
  DCamera camera;
  camera.SetFrom({3, 4, 5});
  camera.SetTo({-20, 9, -60});
  camera.CalcModelViewMatrix();
  const DMatrix4 lookedAt = camera.GetModelView();
  camera.Go({3, 4, 5}, DVector3(0.0f), camera.GetYaw(), camera.GetPitch(), camera.GetRoll());
  camera.CalcModelViewMatrix();
  for (int i = 0; i < 16; ++i)
    EXPECT_NEAR(lookedAt[i / 4][i % 4], camera.GetModelView()[i / 4][i % 4], 1e-4) << i;
}

TEST(Camera, OddSettingsGiveAValidView)
{
  const float nan = std::numeric_limits<float>::quiet_NaN();
  DCamera same;
  same.SetFrom({1, 2, 3});
  same.SetTo({1, 2, 3});
  same.CalcModelViewMatrix();
  EXPECT_EQ(DVector3(1, 2, 4), same.GetTo());
  EXPECT_TRUE(IsFinite(same.GetModelView()));

  DCamera down;
  down.SetFrom({0, 100, 0});
  down.SetTo({0, 0, 0});
  down.CalcModelViewMatrix();
  EXPECT_TRUE(IsFinite(down.GetModelView()));

  for (const float fov : {0.0f, -5.0f, 180.0f, 1e30f, nan}) {
    DCamera camera;
    camera.SetFOV(fov);
    camera.SetAspect(fov == 0 ? 0.0f : 1.5f);
    EXPECT_TRUE(IsFinite(camera.GetProjection())) << fov;
  }
}

TEST(Camera, MethodsDifferAsTold)
{
  DCamera orbit;
  orbit.SetMethod(DCamera::METHOD_ORBIT);
  orbit.SetDistance(10);
  orbit.SetStoredMatrix(glm::rotate(DMatrix4(1.0f), glm::radians(90.0f), DVector3(0, 1, 0)));
  orbit.CalcModelViewMatrix();
  EXPECT_NEAR(0, glm::length(orbit.GetEye() - DVector3(-10, 0, 0)), 1e-4);

  DCamera euler;
  euler.Go(DVector3(0.0f), DVector3(0.0f), 0, 120, 0, DCamera::METHOD_EULER);
  euler.CalcModelViewMatrix();
  EXPECT_EQ(89.0f, euler.GetPitch());

  DCamera moved; // an origin keeps numbers small: points come with it already taken off
  moved.SetOrigin({1000, 0, 0});
  moved.Go({1000, 0, 5}, DVector3(0.0f), 0, 0, 0);
  moved.CalcModelViewMatrix();
  EXPECT_EQ(DVector3(0, 0, 5), moved.GetEye());

  DCamera mirrored;
  mirrored.flags = DCamera::MIRROR_Y;
  mirrored.Go(DVector3(0.0f), DVector3(0.0f), 0, 0, 0);
  mirrored.CalcModelViewMatrix();
  EXPECT_LT(Projected(mirrored, {0, 1, -10}).y, 0);

  ReportCapture reports;
  orbit.SetMethod(7);
  orbit.CalcModelViewMatrix();
  EXPECT_TRUE(reports.Contains("DCamera:InstallState(); unknown method 7"));
  orbit.SetMethod(DCamera::METHOD_ORBIT);
  EXPECT_EQ(DVector3(0.0f), orbit.GetTo());
  EXPECT_TRUE(reports.Contains("DCamera:GetTo: METHOD_MATRIX NYI"));
  EXPECT_EQ(DVector3(0.0f), orbit.GetFrom());
  EXPECT_TRUE(reports.Contains("DCamera:GetFrom(); unsupported method 1"));
}

TEST(Camera, ProjectionsOfTheirOwn)
{
  DCamera plan;
  plan.SetOrtho(-20, 20, -10, 10, 1, 100);
  plan.Go({0, 0, 50}, DVector3(0.0f), 0, 0, 0);
  plan.CalcModelViewMatrix();
  for (const float depth : {-40.0f, 0.0f, 40.0f}) // no nearer, no larger
    EXPECT_NEAR(0, glm::length(DVector2(Projected(plan, {10, 5, depth})) - DVector2(0.5f, 0.5f)), 1e-6);

  DCamera custom;
  const DMatrix4 given = glm::ortho(0.0f, 1.0f, 0.0f, 1.0f, 0.0f, 1.0f);
  custom.SetOrtho(-20, 20, -10, 10, 1, 100);
  custom.SetProjection(given);
  EXPECT_EQ(given, custom.GetProjection(500));
}

TEST(Camera, EyesMeetAtTheFocus)
{
  DCamera middle, left, right;
  left.SetStereoShift(-0.03f, 10);
  right.SetStereoShift(0.03f, 10);
  for (DCamera* camera : {&middle, &left, &right}) {
    camera->Go({5, 1, 0}, DVector3(0.0f), 90, 0, 0); // looks along x
    camera->CalcModelViewMatrix();
  }
  EXPECT_NEAR(0, glm::length(right.GetEye() - DVector3(5, 1, 0.03f)), 1e-5);
  const DVector3 atFocus(15, 2, 1), behind(105, 2, 1);
  EXPECT_NEAR(Projected(left, atFocus).x, Projected(right, atFocus).x, 1e-5);
  EXPECT_NEAR(Projected(middle, atFocus).x, Projected(right, atFocus).x, 1e-5);
  EXPECT_LT(Projected(left, behind).x, Projected(right, behind).x);
  right.SetStereoShift(0, 10);
  right.CalcModelViewMatrix();
  EXPECT_EQ(middle.GetModelView(), right.GetModelView());
  EXPECT_EQ(middle.GetProjection(), right.GetProjection());
}
