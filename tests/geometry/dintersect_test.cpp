#include "geometry/dgeode.h"
#include "geometry/dintersect.h"

#include <gtest/gtest.h>
#include <limits>

namespace {

TEST(IntersectRaySphere, FromOutsideAndInside)
{
  const DVector3 centre(0, 0, -10);
  const struct
  {
    DVector3 origin, direction;
    bool hit;
    DVector3 out;
  } cases[] = {
      {{0, 0, 0}, {0, 0, -1}, true, {0, 0, -8}},  {{0, 0, -10}, {0, 0, -1}, true, {0, 0, -12}},
      {{0, 0, -11}, {0, 0, 1}, true, {0, 0, -8}}, {{0, 0, 0}, {0, 0, 1}, false, {}},
      {{0, 2.01f, 0}, {0, 0, -1}, false, {}},     {{0, 2, 0}, {0, 0, -1}, true, {0, 2, -10}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.origin.z);
    DVector3 out(0.0f);
    EXPECT_EQ(c.hit, IntersectRaySphere(c.origin, c.direction, centre, 2));
    EXPECT_EQ(c.hit, IntersectRaySphere(c.origin, c.direction, centre, 2, &out));
    if (c.hit) {
      EXPECT_NEAR(0, glm::distance(c.out, out), 1e-5f);
    }
  }
}

TEST(RayTriangle, EdgesParallelsAndReach)
{
  const DVector3 a(0, 0, 0);
  const DVector3 b(2, 0, 0);
  const DVector3 c(0, 2, 0);
  const float nan = std::numeric_limits<float>::quiet_NaN();
  const struct
  {
    DVector3 from, direction;
    float maxT;
    bool hit;
    float t;
  } cases[] = {
      {{0.5f, 0.5f, 3}, {0, 0, -1}, 10, true, 3},    {{0.5f, 0.5f, 3}, {0, 0, -1}, 3, false, 0},
      {{0.5f, 0.5f, -3}, {0, 0, 2}, 10, true, 1.5f}, // from behind
      {{0.5f, 0.5f, 0}, {0, 0, -1}, 10, true, 0},    {{0.5f, 0.5f, -3}, {0, 0, -1}, 10, false, 0},
      {{1, 1, 3}, {0, 0, -1}, 10, true, 3},          {{1.01f, 1, 3}, {0, 0, -1}, 10, false, 0},
      {{0, 0, 3}, {0, 0, -1}, 10, true, 3},          {{0, 0, 3}, {1, 0, 0}, 10, false, 0},
      {{nan, 0, 3}, {0, 0, -1}, 10, false, 0},
  };
  for (const auto& k : cases) {
    SCOPED_TRACE(testing::PrintToString(k.from.x) + " " + testing::PrintToString(k.from.z));
    float t = -1;
    EXPECT_EQ(k.hit, RayTriangle(k.from, k.direction, a, b, c, t, k.maxT));
    if (k.hit) {
      EXPECT_FLOAT_EQ(k.t, t);
    }
  }
  float t = 0;
  EXPECT_TRUE(IntersectRayTriangle({0.5f, 0.5f, -3}, {0, 0, -1}, a, b, c, t)); // behind counts here
  EXPECT_FLOAT_EQ(-3, t);
}

TEST(IntersectRayGeode, TheNearestInFrontWins)
{
  DGeode geode;
  for (const float z : {1.0f, 5.0f, 3.0f, 3.0f}) {
    DGeob& g = *geode.AddGeob();
    g.vertex = {{0, 0, z}, {2, 0, z}, {0, 2, z}};
    g.index = {0, 1, 2, 0, 2, 1, 0, 1, 77}; // the last one is broken
  }
  GeodeHit hit;
  ASSERT_TRUE(IntersectRayGeode(geode, {0.9f, 0.2f, 4}, {0, 0, -1}, hit));
  EXPECT_EQ(geode.geob[2].get(), hit.geob); // not the one behind, and of two the first
  EXPECT_EQ(0, hit.triangle);
  EXPECT_FLOAT_EQ(1, hit.t);
  EXPECT_EQ(DVector3(0.9f, 0.2f, 3), hit.point);
  EXPECT_EQ(DVector3(0, 0, 3), hit.NearestCorner());
  const GeodeHit before = hit;
  EXPECT_FALSE(IntersectRayGeode(geode, {5, 5, 4}, {0, 0, -1}, hit));
  EXPECT_EQ(before.point, hit.point);
}

} // namespace
