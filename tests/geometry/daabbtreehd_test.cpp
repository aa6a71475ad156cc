#include "geometry/daabbtreehd.h"
#include "geometry/dintersect.h"
#include "support/reportcapture.h"

#include <gtest/gtest.h>
#include <memory>
#include <random>

namespace {

struct Mesh
{
  std::vector<DVector3> vertex;
  std::vector<uint32_t> index;

  void Add(const DVector3& a, const DVector3& b, const DVector3& c)
  {
    for (const DVector3& v : {a, b, c}) {
      index.push_back(static_cast<uint32_t>(vertex.size()));
      vertex.push_back(v);
    }
  }
  std::array<DVector3, 3> Corners(int i) const
  {
    const auto at = static_cast<size_t>(3 * i);
    return {vertex[index[at]], vertex[index[at + 1]], vertex[index[at + 2]]};
  }
};

// Layers of a rough ground, its triangles in no order.
Mesh Ground(int count)
{
  std::mt19937 random(7);
  std::uniform_real_distribution<float> spread(0, 40);
  std::uniform_real_distribution<float> size(-3, 3);
  Mesh mesh;
  for (int i = 0; i < count; ++i) {
    const DVector3 a(spread(random), size(random), spread(random));
    const float bx = size(random);
    const float cx = size(random);
    mesh.Add(a, a + DVector3(bx, 0.1f, size(random)), a + DVector3(cx, -0.1f, size(random)));
  }
  return mesh;
}

// The tree as its links make it, a triangle at a time; gives the leaf and the triangle that a query ends on.
struct PlainNode
{
  DAABB box;
  std::vector<int> list; // the head first
  std::unique_ptr<PlainNode> child[4];

  void Split(const Mesh& mesh, size_t most)
  {
    box = {{DVector3(1e30f), DVector3(-1e30f)}};
    for (int i : list)
      for (const DVector3& corner : mesh.Corners(i))
        box.Include(corner);
    if (list.size() <= most)
      return;
    glm::dvec2 mean(0.0);
    for (int i : list)
      mean += glm::dvec2(Middle(mesh, i));
    mean /= static_cast<double>(list.size());
    const DVector2 cuts[] = {{(box.min.x + box.max.x) * 0.5f, (box.min.z + box.max.z) * 0.5f}, DVector2(mean)};
    for (const DVector2& cut : cuts) {
      int made = 0;
      for (int i : list) {
        auto& to = child[(Middle(mesh, i).x < cut.x ? 0 : 1) + (Middle(mesh, i).y < cut.y ? 0 : 2)];
        if (!to) {
          to = std::make_unique<PlainNode>();
          ++made;
        }
        to->list.insert(to->list.begin(), i);
      }
      if (made > 1) {
        list.clear();
        for (auto& c : child)
          if (c)
            c->Split(mesh, most);
        return;
      }
      for (auto& c : child)
        c.reset();
    }
  }
  static DVector2 Middle(const Mesh& mesh, int i)
  {
    const auto [a, b, c] = mesh.Corners(i);
    return {(a.x + b.x + c.x) / 3, (a.z + b.z + c.z) / 3};
  }
  int Search(const Mesh& mesh, const DAABB& with, const DVector3& from, const DVector3& direction, float length) const
  {
    for (int i : list) {
      const auto [a, b, c] = mesh.Corners(i);
      if (float t = 0; RayTriangle(from, direction, a, b, c, t, length))
        return i;
    }
    for (const auto& c : child)
      if (c && c->box.Intersects(with))
        if (const int hit = c->Search(mesh, with, from, direction, length); hit >= 0)
          return hit;
    return -1;
  }
};

DVector3 PointOn(const Mesh& mesh, int i, const DVector3& from, const DVector3& direction, float length)
{
  const auto [a, b, c] = mesh.Corners(i);
  float t = 0;
  EXPECT_TRUE(RayTriangle(from, direction, a, b, c, t, length));
  return from + direction * t;
}

TEST(DAabbTreeHd, HitsTheTriangleThatLinksHitFirst)
{
  Mesh mesh = Ground(3000);
  for (int i = 0; i < 30; ++i) // more than a leaf holds, round one centre
    mesh.Add({50, 1, 50}, {51, 1, 50}, {50, 1, 51});
  for (int most : {20, 1}) {
    SCOPED_TRACE(most);
    DAabbTreeHd tree(mesh.vertex, mesh.index);
    tree.SetMaxTrianglesPerNode(most);
    tree.Build();
    PlainNode plain;
    for (int i = 0; i < tree.FaceCount(); ++i)
      plain.list.push_back(i);
    plain.Split(mesh, static_cast<size_t>(most));
    std::mt19937 random(3);
    std::uniform_real_distribution<float> spread(-1, 51);
    std::uniform_real_distribution<float> slant(-0.3f, 0.3f);
    int hits = 0;
    for (int i = 0; i < 3000; ++i) {
      DAabbTreeHdQuery query;
      const float x = i == 0 ? 50.2f : spread(random);
      query.from = {x, 5, i == 0 ? 50.2f : spread(random)};
      query.direction = {i % 3 ? 0 : slant(random), -1, 0};
      query.length = i % 2 ? 20 : 5;
      const DAABB box = DAABB::FromSegment(query.from, query.direction, query.length);
      const int expected = plain.Search(mesh, box, query.from, query.direction, query.length);
      ASSERT_EQ(expected >= 0, tree.Query(query)) << i;
      if (expected < 0)
        continue;
      ++hits;
      ASSERT_EQ(PointOn(mesh, expected, query.from, query.direction, query.length), query.hitPosition) << i;
    }
    EXPECT_GT(hits, 1000);
  }
}

// Triangles that stand nearly upright: seen from above their area is lost in roundings, and they are hit from where
// they aren't.
Mesh Fence(int count, float reach, float lean)
{
  std::mt19937 random(5);
  std::uniform_real_distribution<float> spread(0, reach);
  std::uniform_real_distribution<float> size(-2, 2);
  std::uniform_real_distribution<float> tilt(-lean, lean);
  Mesh mesh;
  for (int i = 0; i < count; ++i) {
    const DVector3 a(spread(random), size(random), spread(random));
    const DVector3 along(size(random), size(random), size(random));
    const float part = tilt(random) + 0.5f;
    mesh.Add(a, a + along, a + along * part + DVector3(tilt(random), 1, tilt(random)));
  }
  return mesh;
}

TEST(DAabbTreeHd, RaysStraightDownHitWhatRoundingsHit)
{
  int beside = 0;
  for (const DVector2 reachAndLean : {DVector2(40, 3e-5f), DVector2(4, 3e-7f)}) {
    SCOPED_TRACE(reachAndLean.x);
    const Mesh mesh = Fence(4000, reachAndLean.x, reachAndLean.y);
    DAabbTreeHd tree(mesh.vertex, mesh.index);
    tree.Build();
    PlainNode plain;
    for (int i = 0; i < tree.FaceCount(); ++i)
      plain.list.push_back(i);
    plain.Split(mesh, 20);
    std::mt19937 random(4);
    std::uniform_int_distribution<int> any(0, tree.FaceCount() - 1);
    std::uniform_real_distribution<float> part(-0.1f, 1.1f);
    int hits = 0;
    for (int i = 0; i < 20000; ++i) {
      const auto [a, b, c] = mesh.Corners(any(random));
      DAabbTreeHdQuery query;
      query.from = a + (b - a) * part(random) + DVector3(0, 40, 0); // on an edge, or next to it
      query.length = 100;
      const DAABB box = DAABB::FromSegment(query.from, query.direction, query.length);
      const int expected = plain.Search(mesh, box, query.from, query.direction, query.length);
      ASSERT_EQ(expected >= 0, tree.Query(query)) << i;
      if (expected < 0)
        continue;
      ++hits;
      ASSERT_EQ(PointOn(mesh, expected, query.from, query.direction, query.length), query.hitPosition) << i;
      DAABB around = DAABB::Nothing();
      for (const DVector3& corner : mesh.Corners(expected))
        around.Include(corner);
      beside += !around.Intersects(box);
    }
    EXPECT_GT(hits, 1000);
  }
  EXPECT_GT(beside, 20);
}

TEST(DAabbTreeHd, OneCentreStaysOneLeaf)
{
  Mesh mesh;
  for (int i = 0; i < 50; ++i)
    mesh.Add({0, 0, 0}, {3, 0, 0}, {0, 0, 3});
  DAabbTreeHd tree(mesh.vertex, mesh.index);
  tree.Build();
  EXPECT_EQ(1, tree.NodeCount());
  EXPECT_EQ(0, tree.Depth());
  std::vector<int> chain;
  tree.Walk(7, [&](const DBox& box, int depth, std::span<const int> triangles) {
    EXPECT_EQ(DVector3(3, 0, 3), box.max);
    EXPECT_EQ(0, depth);
    chain.assign(triangles.begin(), triangles.end());
  });
  ASSERT_EQ(50u, chain.size());
  EXPECT_TRUE(std::is_sorted(chain.begin(), chain.end())); // the failed splits left the order as it was
}

TEST(DAabbTreeHd, TheLastLeafIsAskedFirst)
{
  // Two floors in leaves of their own: the root finds the one whose leaf comes first.
  Mesh mesh;
  for (const float x : {0.0f, 1.0f})
    for (int i = 0; i < 2; ++i)
      mesh.Add({x, 1 + x, 0}, {x + 20, 1 + x, 0}, {x, 1 + x, 20});
  DAabbTreeHd tree(mesh.vertex, mesh.index);
  tree.SetMaxTrianglesPerNode(2);
  tree.Build();
  ASSERT_GT(tree.NodeCount(), 1);
  DAabbTreeHdQuery query;
  query.from = {2, 5, 2};
  query.length = 10;
  ASSERT_TRUE(tree.Query(query));
  EXPECT_EQ(1, query.hitPosition.y);
  query.from = {20.5f, 5, 0.1f}; // only the second floor lies here
  ASSERT_TRUE(tree.Query(query));
  EXPECT_EQ(2, query.hitPosition.y);
  query.from = {2, 5, 2};
  ASSERT_TRUE(tree.Query(query));
  EXPECT_EQ(2, query.hitPosition.y);
  query.from = {100, 5, 2};
  EXPECT_FALSE(tree.Query(query));
  EXPECT_EQ(-1, query.cachedNode);
  for (const int node : {0, 1, 2, 3, 4, 1 << 30, -7}) { // of another tree
    query.cachedNode = node;
    EXPECT_FALSE(tree.Query(query));
  }
}

TEST(DAabbTreeHd, NormalsPointUpAndSamplesAreAveraged)
{
  Mesh mesh;
  mesh.Add({0, 1, 0}, {10, 1, 0}, {0, 1, 10}); // its corners run so that the plain normal points down
  mesh.Add({20, 3, 0}, {20, 3, 10}, {30, 3, 0});
  DAabbTreeHd tree(mesh.vertex, mesh.index);
  tree.Build();
  DAabbTreeHdQuery query;
  query.from = {1, 2, 1};
  query.length = 2;
  ASSERT_TRUE(tree.Query(query));
  EXPECT_EQ(DVector3(0, 1, 0), query.hitNormal);
  query.length = 1; // just as far as the triangle
  EXPECT_FALSE(tree.Query(query));
  query.from.y = 1;
  EXPECT_TRUE(tree.Query(query));

  query.length = 10;
  query.samples = {{1, 5, 1}, {90, 5, 1}, {21, 5, 1}};
  query.sampleCount = 3;
  ASSERT_TRUE(tree.Query(query));
  EXPECT_EQ(DVector3(11, 2, 1), query.hitPosition);
  EXPECT_EQ(DVector3(0, 1, 0), query.hitNormal);
  std::swap(query.samples[1], query.samples[2]);
  EXPECT_FALSE(tree.Query(query)); // the last sample's answer
  query.sampleCount = 1000;        // more than there are
  EXPECT_FALSE(tree.Query(query));
}

TEST(DAabbTreeHd, RefusesWhatCannotBeATree)
{
  Mesh mesh = Ground(3);
  mesh.index[4] = 9;
  DAabbTreeHd bad(mesh.vertex, mesh.index);
  DAabbTreeHd empty({}, {});
  ReportCapture reports;
  DAabbTreeHdQuery query;
  query.cachedNode = 0;
  for (DAabbTreeHd* tree : {&bad, &empty}) {
    tree->Build();
    EXPECT_FALSE(tree->Query(query));
  }
  EXPECT_EQ(1, reports.Count("index 9 out of range (9 vertices)"));
  mesh.index[4] = 4;
  DAabbTreeHd good(mesh.vertex, mesh.index);
  good.Build();
  good.SetMaxTrianglesPerNode(3);
  EXPECT_TRUE(reports.Contains("DAabbTreeHd:SetMaxTrianglesPerNode(3); tree was already built with max=20"));
  EXPECT_TRUE(reports.Contains("3 faces"));
}

} // namespace
