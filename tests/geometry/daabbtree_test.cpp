#include "geometry/daabbtree.h"
#include "geometry/dgeode.h"
#include "support/reportcapture.h"

#include <gtest/gtest.h>
#include <memory>
#include <random>

namespace {

// The tree as linked lists make it, a record at a time: what the fast one must answer, in the same order.
struct PlainNode
{
  DAABB box;
  std::unique_ptr<PlainNode> left, right;
  std::vector<const DAABBPolyInfo*> list; // the head first

  void Push(const DAABBPolyInfo* record) { list.insert(list.begin(), record); }
  void Measure()
  {
    box = DAABB::Nothing();
    for (const auto* record : list)
      for (const DVector3& corner : record->corner)
        box.Include(corner);
  }
  void Split()
  {
    Measure();
    if (list.size() < 2)
      return;
    left = std::make_unique<PlainNode>();
    right = std::make_unique<PlainNode>();
    const DVector3 side = box.max - box.min;
    const int axis = side.x > side.y && side.x > side.z ? 0 : side.y > side.z ? 1 : 2;
    const float middle = (box.min[axis] + box.max[axis]) * 0.5f;
    for (const auto* record : list) {
      const DVector3 center = (record->corner[0] + record->corner[1] + record->corner[2]) * 0.3333333f;
      (center[axis] < middle ? *left : *right).Push(record);
    }
    list.clear();
    for (auto [full, empty] : {std::pair(left.get(), right.get()), std::pair(right.get(), left.get())})
      if (empty->list.empty() && !full->list.empty()) {
        const auto rest = full->list.begin() + static_cast<std::ptrdiff_t>((full->list.size() - 1) / 2 + 1);
        empty->list.assign(rest, full->list.end());
        full->list.erase(rest, full->list.end());
      }
    left->Split();
    right->Split();
  }
  void Query(const DBox& with, std::vector<int>& met) const
  {
    for (const auto* record : list)
      met.push_back(record->user);
    for (const auto* child : {left.get(), right.get()})
      if (child && child->box.Intersects(with))
        child->Query(with, met);
  }
};

using Polys = std::vector<DAABBPolyInfo>;

DVector3 Random(std::mt19937& random, float reach)
{
  std::uniform_real_distribution<float> spread(-reach, reach);
  const float x = spread(random);
  const float y = spread(random);
  return {x, y, spread(random)};
}

// Triangles of about the given size, the last of them on the same places as the first.
Polys Scattered(int count, float reach, float size)
{
  std::mt19937 random(static_cast<unsigned>(count));
  Polys polys;
  for (int i = 0; i < count; ++i) {
    const DVector3 a = Random(random, reach);
    polys.push_back({{a, a + Random(random, size), a + Random(random, size)}, i});
    if (i > count * 9 / 10)
      polys.back().corner = polys[static_cast<size_t>(i - count * 9 / 10)].corner;
  }
  return polys;
}

std::vector<int> Met(const DAABBTree& tree, const DBox& box)
{
  std::vector<int> met;
  EXPECT_TRUE(tree.Query(box, [&](const DAABBPolyInfo& record) {
    met.push_back(record.user);
    return true;
  }));
  return met;
}

DAABBTree TreeOf(const Polys& polys)
{
  DAABBTree tree;
  for (const DAABBPolyInfo& record : polys)
    tree.AddPoly(record);
  tree.Finish();
  return tree;
}

TEST(DAABBTree, MeetsWhatLinkedListsMeetInTheirOrder)
{
  const float nan = std::numeric_limits<float>::quiet_NaN();
  Polys same(37, {{DVector3(0, 0, 0), DVector3(1, 0, 0), DVector3(0, 0, 1)}, 0});
  for (size_t i = 0; i < same.size(); ++i)
    same[i].user = static_cast<int>(i);
  Polys odd = Scattered(40, 10, 1);
  odd[3].corner[1].x = nan;
  odd[7].corner = {DVector3(nan), DVector3(nan), DVector3(nan)};
  odd[9].corner[2].y = std::numeric_limits<float>::infinity();
  odd[11].corner = {DVector3(2e5f), DVector3(3e5f), DVector3(4e5f)};
  const Polys cases[] = {{},
                         Scattered(1, 10, 1),
                         Scattered(2, 10, 1),
                         Scattered(3, 10, 1),
                         Scattered(2000, 100, 4),
                         Scattered(300, 5, 20),
                         same,
                         odd};
  for (const Polys& polys : cases) {
    SCOPED_TRACE(polys.size());
    const DAABBTree tree = TreeOf(polys);
    PlainNode plain;
    for (const DAABBPolyInfo& record : polys)
      plain.Push(&record);
    plain.Split();
    std::mt19937 random(1);
    for (int i = 0; i < 200; ++i) {
      DAABB box = DAABB::FromSegment(Random(random, i % 2 ? 100.0f : 10.0f), Random(random, 1), 8);
      if (i < 20) // whole subtrees lie in it, but not a triangle that is nowhere
        box.Expand(i == 0 ? 1e6f : 3.0f * static_cast<float>(i * i));
      std::vector<int> expected;
      plain.Query(box, expected);
      ASSERT_EQ(expected, Met(tree, box)) << i;
    }
  }
}

TEST(DAABBTree, AFalseAnswerEndsTheSearch)
{
  const DAABBTree tree = TreeOf(Scattered(100, 1, 1));
  int calls = 0;
  EXPECT_FALSE(tree.Query(DBox{DVector3(-9), DVector3(9)}, [&](const DAABBPolyInfo&) { return ++calls < 42; }));
  EXPECT_EQ(42, calls);
}

TEST(DAABBTree, DescendsFurtherThanAnyBalancedTree)
{
  // Each cut takes one triangle off: the places double, on two axes by turns.
  Polys polys;
  for (int i = 0; i < 16; ++i)
    for (int axis = 0; axis < 3; ++axis) {
      DVector3 at(0.0f);
      at[axis] = std::ldexp(1.0f, i) * (1 + 0.01f * static_cast<float>(axis));
      polys.push_back({{at, at, at}, static_cast<int>(polys.size())});
    }
  for (int i = -140; i < 0; ++i) // one a level, below the others
    polys.push_back({{DVector3(std::ldexp(1.0f, i), 0, 0), DVector3(std::ldexp(1.0f, i), 0, 0),
                      DVector3(std::ldexp(1.0f, i), 0, 0)},
                     static_cast<int>(polys.size())});
  const DAABBTree tree = TreeOf(polys);
  EXPECT_EQ(polys.size(), Met(tree, {DVector3(-1), DVector3(1e5f)}).size());
  EXPECT_EQ(2 * static_cast<int>(polys.size()) - 1, tree.NodeCount());
}

TEST(DAABBTree, TakesTheTrianglesOfModelsByValue)
{
  DAABBTree tree;
  {
    DGeode geode;
    for (const float x : {0.0f, 10.0f}) {
      DGeob& g = *geode.AddGeob();
      g.vertex = {{x, 0, 0}, {x + 1, 0, 0}, {x, 0, 1}};
      g.index = {0, 1, 2, 0, 1, 77, 2, 1}; // a broken triangle, and a part of one
    }
    tree.AddGeode(geode);
  }
  tree.Finish();
  EXPECT_EQ(2, tree.PolyCount());
  EXPECT_EQ(DVector3(11, 0, 1), tree.Box().max);
  DVector3 corner(0.0f);
  EXPECT_TRUE(tree.Query(DBox{{10, 0, 0}, {10.5f, 0, 0.5f}}, [&](const DAABBPolyInfo& record) {
    corner = record.corner[1];
    return record.user == DAABBPolyInfo::NO_USER;
  }));
  EXPECT_EQ(DVector3(11, 0, 0), corner);
  ReportCapture reports;
  tree.DbgPrint();
  EXPECT_TRUE(reports.Contains("root: (0.00,0.00,0.00)-(11.00,0.00,1.00)"));
  EXPECT_TRUE(reports.Contains("leaf: (10.00,0.00,0.00)-(11.00,0.00,1.00)"));
  EXPECT_TRUE(reports.Contains("Total #nodes: 3, total #polys: 2"));
}

TEST(DAABB, MeetsWithinTheMarginAndIsMadeOfSegmentsAndTurnedBoxes)
{
  const DAABB box{{DVector3(0), DVector3(1)}};
  EXPECT_TRUE(box.Intersects({DVector3(1), DVector3(2)}));
  EXPECT_TRUE(box.Intersects({{1.000009f, 0, 0}, {2, 1, 1}}));
  for (int axis = 0; axis < 3; ++axis) {
    DBox apart{DVector3(0.5f), DVector3(2)};
    apart.min[axis] = 1.0001f;
    EXPECT_FALSE(box.Intersects(apart)) << axis;
    apart = {DVector3(-1), DVector3(0.5f)};
    apart.max[axis] = -0.0001f;
    EXPECT_FALSE(box.Intersects(apart)) << axis;
  }
  const DAABB segment = DAABB::FromSegment({1, 2, 3}, {2, -1, 0}, 3);
  EXPECT_EQ(DVector3(1, -1, 3), segment.min);
  EXPECT_EQ(DVector3(7, 2, 3), segment.max);
  // A quarter turn round y, then 5 along x.
  const DMatrix4 turned(DVector4(0, 0, -1, 0), DVector4(0, 1, 0, 0), DVector4(1, 0, 0, 0), DVector4(5, 0, 0, 1));
  DAABB around = DAABB::FromOBB({0, 1, 0}, turned, {3, 2, 1});
  EXPECT_EQ(DVector3(4, -1, -3), around.min);
  around.Expand(0.5f);
  EXPECT_EQ(DVector3(6.5f, 3.5f, 3.5f), around.max);
}

} // namespace
