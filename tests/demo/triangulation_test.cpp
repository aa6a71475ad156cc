#include "app/demo/triangulation.h"

#include <gtest/gtest.h>

namespace {

double Area(const DemoTriangulation& net)
{
  double area = 0;
  for (const auto& t : net.Triangles()) {
    const DemoPlan a = net.Point(t[0]), b = net.Point(t[1]) - a, c = net.Point(t[2]) - a;
    const double twice = b.x * c.y - b.y * c.x;
    EXPECT_GT(twice, 0) << "a triangle without area, or turned round";
    area += twice / 2;
  }
  return area;
}

} // namespace

TEST(DemoTriangulation, CoversTheSquareOnceWhateverTheOrderAndThePlacesOfPoints)
{
  // Points of a lattice lie on circles by fours and on edges by many: the hard case.
  for (const double snap : {0.0, 10.0, 50.0}) {
    SCOPED_TRACE(snap);
    DemoTriangulation net({0, 0}, {500, 500});
    for (int i = 0; i <= 10; ++i)
      for (const double side : {0.0, 500.0}) {
        net.Add({50.0 * i, side});
        net.Add({side, 50.0 * i});
      }
    for (int i = 0; i < 3000; ++i) {
      const DemoPlan p(DemoRandom(i, 0) * 500, DemoRandom(i, 1) * 500);
      net.Add(snap > 0 ? glm::round(p / snap) * snap : p);
    }
    // Off the lattice the rim has slivers that belong to the box's corners.
    EXPECT_NEAR(500.0 * 500.0, Area(net), snap > 0 ? 1e-6 : 400);
  }
}

TEST(DemoTriangulation, AWantedEdgeIsThereAndStaysWhenPointsCome)
{
  DemoTriangulation net({0, 0}, {100, 100});
  std::vector<int> top, bottom;
  for (int i = 0; i <= 20; ++i) {
    top.push_back(net.Add({5.0 * i, 51}));
    bottom.push_back(net.Add({5.0 * i, 49})); // nearer to the other line than to the next of its own
  }
  const int far = net.Add({3, 97}), away = net.Add({97, 90});
  EXPECT_TRUE(net.AddEdge(far, away));
  for (size_t i = 0; i < 20; ++i)
    EXPECT_TRUE(net.AddEdge(top[i], top[i + 1]) && net.AddEdge(bottom[i], bottom[i + 1]));
  EXPECT_FALSE(net.AddEdge(bottom[3], far)) << "crosses the upper line";
  EXPECT_FALSE(net.AddEdge(top[0], top[5])) << "runs through points";
  for (int i = 0; i < 500; ++i)
    net.Add({DemoRandom(i, 5) * 100, DemoRandom(i, 6) * 100});
  EXPECT_TRUE(net.HasEdge(far, away));
  for (size_t i = 0; i < 20; ++i)
    EXPECT_TRUE(net.HasEdge(top[i], top[i + 1]) && net.HasEdge(bottom[i], bottom[i + 1])) << i;
  Area(net);
}
