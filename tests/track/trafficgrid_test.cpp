#include "support/recordingoverlay.h"
#include "support/reportcapture.h"
#include "support/tempdir.h"
#include "track/rtrafficgrid.h"

#include <gtest/gtest.h>

namespace {

constexpr const char* TEXT = R"(; cars drive here
waypoints
{
  count=10
  waypoint0
  {
    pos=1 2 3
    velocity=0
    forward=2 1 1
    flags=5
  }
  waypoint1
  {
    pos=4 5 6
    velocity=13
    left=2
    note=mine
  }
  waypoint2
  {
    pos=7 8 9
  }
}
cars
{
  car0
  {
    car=van
    waypoint=2
  }
  car2
  {
    car=bus
  }
}
)";

} // namespace

TEST(TrafficGrid, ReadsUpToTheFirstGap)
{
  const TempDir dir;
  RTrafficGrid grid;
  ASSERT_TRUE(grid.Load(dir.Write("traffic.ini", TEXT)));
  ASSERT_EQ(3, grid.wayPoints.Count());
  EXPECT_EQ(20, grid.wayPoints.At(0)->velocity);
  EXPECT_EQ((std::array<int, 3>{2, 0, 0}), grid.wayPoints.At(0)->links); // a missing link is way point 0
  EXPECT_EQ(13, grid.wayPoints.At(1)->velocity);
  ASSERT_EQ(1, grid.cars.Count());
  EXPECT_EQ("van", grid.cars.At(0)->car);
  EXPECT_FALSE(grid.Load(dir.Path("absent.ini")));
  EXPECT_EQ(3, grid.wayPoints.Count());
}

TEST(TrafficGrid, SavesWayPointsAndLeavesTheRest)
{
  const TempDir dir;
  const std::string path = dir.Write("traffic.ini", TEXT);
  RTrafficGrid grid;
  ASSERT_TRUE(grid.Load(path));
  grid.wayPoints.At(1)->velocity = 9.99f;
  ASSERT_TRUE(grid.Remove(2));
  ASSERT_TRUE(grid.Save(path));
  EXPECT_EQ("; cars drive here\nwaypoints\n{\n  count=2\n"
            "  waypoint0\n  {\n    pos=1.000000 2.000000 3.000000\n    velocity=20\n    forward=-1\n    flags=5\n"
            "    left=0\n    right=0\n  }\n"
            "  waypoint1\n  {\n    pos=4.000000 5.000000 6.000000\n    velocity=9\n    left=-1\n    note=mine\n"
            "    forward=0\n    right=0\n    flags=0\n  }\n"
            "  waypoint2\n  {\n    pos=7 8 9\n  }\n}\n"
            "cars\n{\n  car0\n  {\n    car=van\n    waypoint=2\n  }\n  car2\n  {\n    car=bus\n  }\n}\n",
            FileText(path));
}

TEST(TrafficGrid, RenumbersLinksWhenAWayPointGoes)
{
  RTrafficGrid grid;
  for (int i = 0; i < 5; ++i)
    ASSERT_TRUE(grid.Add());
  grid.wayPoints.At(0)->links = {1, 2, 3};
  grid.wayPoints.At(4)->links = {4, -1, 2};
  EXPECT_FALSE(grid.Remove(5));
  EXPECT_FALSE(grid.Remove(-1));
  ASSERT_TRUE(grid.Remove(2));
  EXPECT_EQ(4, grid.wayPoints.Count());
  EXPECT_EQ((std::array<int, 3>{1, -1, 2}), grid.wayPoints.At(0)->links);
  EXPECT_EQ((std::array<int, 3>{3, -1, -1}), grid.wayPoints.At(3)->links);
}

TEST(TrafficGrid, TakesOneLessByHandThanFromAFile)
{
  RTrafficGrid grid;
  int added = 0;
  while (added < 6000 && grid.Add())
    ++added;
  EXPECT_EQ(4999, added);
}

TEST(TrafficGrid, WarpsACarToAWayPointThatLeadsOn)
{
  RTrafficGrid grid;
  for (int i = 0; i < 3; ++i)
    ASSERT_TRUE(grid.Add());
  grid.wayPoints.At(0)->links = {99, 1, -1};
  grid.wayPoints.At(1)->pos = {10, 0, 0};
  static_cast<void>(grid.cars.Add({"van", 0}));
  DVector3 at(9.0f), behind(9.0f);
  ReportCapture reports;
  EXPECT_TRUE(grid.WarpCar(0, 0, at, behind));
  EXPECT_EQ(DVector3(0, 0, 0), at);
  EXPECT_EQ(DVector3(-1, 0, 0), behind);
  EXPECT_FALSE(grid.WarpCar(1, 0, at, behind));
  EXPECT_FALSE(grid.WarpCar(0, 3, at, behind));
  EXPECT_FALSE(grid.WarpCar(0, 2, at, behind));
  EXPECT_EQ("WARN: Car #1 not found\nWARN: Waypoint 3 out of range 0..2\n"
            "WARN: RTrafficGrid::WarpCarToWayPoint() Need waypoint to warp to\n",
            reports.All());
}

TEST(TrafficGrid, PaintsLabelsAndTheLinksThatExist)
{
  RTrafficGrid grid;
  ASSERT_TRUE(grid.Add() && grid.Add());
  grid.wayPoints.At(1)->pos = {5, 0, 0};
  grid.wayPoints.At(1)->velocity = 12.34f;
  grid.wayPoints.At(0)->links = {77, 1, -5};
  grid.wayPoints.At(1)->links = {0, 0, 1};
  grid.selected = 1;
  RecordingOverlay overlay;
  grid.Paint(overlay);
  struct Painted
  {
    std::string kind, text;
    uint32_t color;
    float width;
    std::vector<DVector3> points;
  };
  const DVector3 a(0, 0, 0), b(5, 0, 0), middle(2.5f, 0, 0);
  const Painted expected[] = {
      {"points", "", 0xFF0000FF, 10, {a}},
      {"points", "", 0xFFCCCCFF, 10, {b}},
      {"text", "WP 0, 20.0 m/s", 0xFFFFFFFF, 1, {a}},
      {"text", "WP 1, 12.3 m/s", 0xFF6464FF, 1, {b}},
      {"lines", "", 0x00FF00FF, 1, {a, b, b, a, b, a, b, b}},
      {"text", "F", 0x00FF00FF, 1, {middle}},
      {"text", "L", 0x00FF00FF, 1, {middle}},
      {"text", "R", 0x00FF00FF, 1, {b}},
  };
  ASSERT_EQ(std::size(expected), overlay.items.size());
  for (size_t i = 0; i < std::size(expected); ++i) {
    SCOPED_TRACE(i);
    EXPECT_EQ(expected[i].kind, overlay.items[i].kind);
    EXPECT_EQ(expected[i].text, overlay.items[i].text);
    EXPECT_EQ(expected[i].color, overlay.items[i].style.color.GetRGBA());
    EXPECT_EQ(expected[i].width, overlay.items[i].style.width);
    EXPECT_EQ(expected[i].points, overlay.items[i].points);
  }
}
