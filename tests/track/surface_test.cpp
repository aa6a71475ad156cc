#include "geometry/daabbtreehd.h"
#include "track/rsurfacetree.h"
#include "track/scenerymodel.h"
#include "track/smalltrack.h"

#include <cmath>
#include <gtest/gtest.h>
#include <random>

namespace {

constexpr DVector3 DOWN(0, -1, 0);
constexpr auto ROAD = RSurfaceInfo::HIT | RSurfaceInfo::ON_SPLINE;
constexpr auto SCENERY = RSurfaceInfo::HIT | RSurfaceInfo::ON_MESH;

class SurfaceTest : public testing::Test
{
protected:
  SurfaceTest()
  {
    track.SetName("small");
    for (const char* name : {"first", "grass"}) {
      auto surface = std::make_unique<RSurfaceType>();
      surface->name = name;
      static_cast<void>(track.surfaces.Add(std::move(surface)));
    }
  }
  RSurfaceType& Surface(int i) { return **track.surfaces.At(i); }
  void Add(const std::vector<DVector3>& vertices, const RSurfaceType* surface)
  {
    auto node = SceneryNode(vertices, &shader);
    node->Geode()->material[0]->surface = surface;
    track.AddNode(std::move(node));
  }
  // A straight road along z, 8 m wide around x = 0, lines 10 m apart, at height 0.
  void AddRoad(uint32_t flags = 0)
  {
    track.splines.flags = flags;
    track.splines.lateralDivisions = 2;
    track.splines.trisPerLine = 4;
    for (int i = 0; i < 5; ++i) {
      const float z = 10 * static_cast<float>(i);
      track.splines.AddLine({.left = {-4, 0, z}, .right = {4, 0, z}, .longGrip = 1 + 0.1f * static_cast<float>(i)});
    }
    Finish();
  }
  void Finish()
  {
    track.splines.BuildTriangles();
    track.splines.BuildSpline();
  }
  RSurfaceInfo Below(const DVector3& position)
  {
    RSurfaceInfo result;
    result.surface = &Surface(1); // of a query before
    result.grip = 0.5f;
    track.GetSurfaceInfo(position, DOWN, result);
    return result;
  }

  SmallTrack small;
  DShader shader;
  RTrackVRML track;
};

} // namespace

TEST_F(SurfaceTest, TheRoadGivesThePlaceOnItAndTheGrip)
{
  AddRoad();
  track.BuildTrees();
  std::mt19937 random(2);
  std::uniform_real_distribution<float> across(-3.99f, 3.99f);
  std::uniform_real_distribution<float> along(10.01f, 29.99f); // the curve ends otherwise than it runs
  for (int i = 0; i < 300; ++i) {
    const float x = across(random);
    const float z = along(random);
    SCOPED_TRACE(testing::PrintToString(x) + " " + testing::PrintToString(z));
    const RSurfaceInfo result = Below({x, 0.5f, z});
    ASSERT_EQ(ROAD, result.flags);
    EXPECT_EQ(static_cast<int>(z / 10), result.line);
    EXPECT_NEAR((x + 4) / 8, result.s, 1e-4f);
    EXPECT_NEAR(z / 10 - std::floor(z / 10), result.along, 1e-4f);
    EXPECT_NEAR(1 + z / 100, result.grip, 1e-4f);
    EXPECT_NEAR(0, glm::distance(DVector3(x, 0, z), result.position), 1e-3f);
    EXPECT_NEAR(1, std::abs(result.normal.y), 1e-4f);
    EXPECT_NEAR(1, DNormalized(result.tangent).z, 1e-4f);
    EXPECT_FLOAT_EQ(0.5f, result.u);
    EXPECT_EQ(&Surface(0), result.surface);
    EXPECT_EQ(nullptr, result.material);
  }
}

TEST_F(SurfaceTest, ABentRoadIsSmootherThanItsTriangles)
{
  for (int i = 0; i < 7; ++i) {
    const float angle = 0.2f * static_cast<float>(i);
    const DVector3 outward(std::cos(angle), 0, std::sin(angle));
    track.splines.AddLine({.left = outward * 60.0f, .right = outward * 50.0f});
  }
  Finish();
  track.BuildTrees();
  for (int i = 0; i < 20; ++i) {
    const float angle = 0.25f + 0.04f * static_cast<float>(i);
    const DVector3 place = DVector3(std::cos(angle), 0, std::sin(angle)) * 56.0f;
    const RSurfaceInfo result = Below(place + DVector3(0, 0.5f, 0));
    ASSERT_EQ(ROAD, result.flags) << i;
    EXPECT_NEAR(0, glm::distance(place, result.position), 0.05f) << i;
    EXPECT_NEAR(0.4f, result.s, 0.01f) << i; // on the triangles it is up to 0.46
    EXPECT_NEAR(angle / 0.2f, static_cast<float>(result.line) + result.along, 0.05f) << i;
  }
}

TEST_F(SurfaceTest, TheSceneryGivesTheMaterialAndTheRoadTheHeight)
{
  AddRoad();
  Add(Square(0, 0.05f, 20, 15), &Surface(1));
  Add(Square(0, 0.02f, 20, 3), nullptr); // a material without a surface
  track.BuildTrees();
  RSurfaceInfo result = Below({3.5f, 0.5f, 15});
  EXPECT_EQ(ROAD | SCENERY, result.flags);
  EXPECT_NEAR(0, result.position.y, 1e-4f);
  EXPECT_EQ(&Surface(1), result.surface);
  EXPECT_EQ("ground", result.material->name);
  EXPECT_NEAR(1.15f, result.grip, 1e-4f);
  result = Below({10, 0.5f, 15}); // beside the road
  EXPECT_EQ(SCENERY, result.flags);
  EXPECT_FLOAT_EQ(0.05f, result.position.y);
  EXPECT_EQ(DVector3(0, 1, 0), result.normal);
  EXPECT_EQ(1, result.grip);
  const int polygon = result.polygon;
  ASSERT_GE(polygon, 0);
  result = Below({100, 0.5f, 15}); // beside everything
  EXPECT_EQ(0u, result.flags);
  EXPECT_EQ(DVector3(100, -0.5f, 15), result.position);
  EXPECT_EQ(&Surface(0), result.surface);
  EXPECT_EQ(1, result.grip);
  result.polygon = 1 << 30; // of a track that was longer
  track.GetSurfaceInfo({10, 0.5f, 15}, DOWN, result);
  EXPECT_EQ(SCENERY, result.flags);
  EXPECT_EQ(polygon, result.polygon);
  // Far above there is nothing: the search reaches as far as the ray.
  EXPECT_EQ(0u, Below({10, 1.2f, 15}).flags);
}

TEST_F(SurfaceTest, TheSceneryGivesTheHeightWhenTold)
{
  AddRoad(RSplineRep::USE_MESH_HITS);
  Add(Square(0, 0.25f, 20, 15), &Surface(1));
  track.BuildTrees();
  const RSurfaceInfo result = Below({2, 0.5f, 13});
  EXPECT_TRUE(result.flags & RSurfaceInfo::HIT);
  if (result.flags & RSurfaceInfo::ON_MESH) {
    EXPECT_FLOAT_EQ(0.25f, result.position.y);
    EXPECT_EQ(&Surface(1), result.surface);
  }
}

TEST_F(SurfaceTest, TheCrownAndTheNoiseOfTheRoad)
{
  AddRoad();
  for (RSplineLine& line : track.splines.lines)
    line.elevation = 0.2f;
  Surface(1).type = 5; // a kerb
  Surface(1).roadNoise = 0.01f;
  Add(Square(20, 0.1f, 20, 5), &Surface(1));
  track.BuildTrees();
  EXPECT_NEAR(0, Below({0, 0.5f, 15}).position.y, 1e-4f);
  EXPECT_NEAR(-0.2f * 0.25f, Below({2, 0.5f, 15}).position.y, 1e-3f);
  EXPECT_NEAR(-0.2f * 0.25f, Below({-2, 0.5f, 15}).position.y, 1e-3f);
  const RSurfaceInfo kerb = Below({21, 0.5f, 18});
  const float noise = (std::sin(std::fmod(18.0f, 6.2831855f)) + std::sin(std::fmod(21.0f, 6.2831855f))) * 0.01f;
  EXPECT_NEAR(noise, kerb.roadNoise, 1e-6f);
  EXPECT_NEAR(0.1f + noise, kerb.position.y, 1e-5f);
}

TEST_F(SurfaceTest, WaterAndTheScannedGroundComeFirst)
{
  Surface(1).type = RSurfaceType::WATER;
  Add(Square(0, 0.3f, 0, 5), &Surface(1));
  Add(Square(0, 0.4f, 0, 5), &Surface(0));
  track.BuildTrees();
  track.flags = RTrack::WATER_TRACK;
  EXPECT_FLOAT_EQ(0.3f, Below({1, 0.9f, 2}).position.y);
  EXPECT_EQ(0u, Below({1, 0.9f, 2}).flags);
  track.flags = 0;
  const std::vector<DVector3> points{{-5, 0.1f, -5}, {-5, 0.1f, 9}, {9, 0.1f, -5}};
  const std::vector<uint32_t> triangle{0, 1, 2};
  DAabbTreeHd lidar(points, triangle);
  lidar.Build();
  track.lidarTree = &lidar;
  const RSurfaceInfo result = Below({1, 0.9f, 2});
  EXPECT_EQ(SCENERY | RSurfaceInfo::ON_LIDAR, result.flags);
  EXPECT_FLOAT_EQ(0.1f, result.position.y);
  EXPECT_EQ(1, result.grip);
}

TEST_F(SurfaceTest, OutlivesChangesOfTheRoadAndItsModels)
{
  AddRoad();
  Add(Square(20, 0.1f, 20, 5), &Surface(1));
  track.BuildTrees();
  ASSERT_TRUE(track.RemoveNode(0));
  const RSurfaceInfo ground = Below({21, 0.5f, 18});
  EXPECT_EQ(SCENERY, ground.flags);
  EXPECT_EQ(nullptr, ground.material);
  EXPECT_EQ(&Surface(1), ground.surface);
  track.splines.lines.resize(2);
  EXPECT_EQ(ROAD, Below({1, 0.5f, 5}).flags);
  EXPECT_EQ(0u, Below({1, 0.5f, 35}).flags); // a line that is no more
  track.splines.lines.clear();
  track.splines.tris.clear();
  EXPECT_EQ(0u, Below({1, 0.5f, 5}).flags);
}
