#include "geometry/dpicktree.h"

#include "geometry/dgeode.h"
#include "geometry/dintersect.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

namespace {

// Hills, a soup, walls on one another: in several geobs, with triangles that come again later.
class PickTest : public testing::Test
{
protected:
  static constexpr int SIDE = 40;
  static constexpr float EXTENT = 100;

  PickTest()
  {
    AddHills();
    AddSoup();
    AddHills(); // each a tie
    DGeob& walls = *geode.AddGeob();
    for (int i = 0; i < 20; ++i) {
      const auto first = static_cast<uint16_t>(walls.vertex.size());
      const auto z = static_cast<float>(i / 2 * 5); // two in one place
      for (const DVector3& corner : {DVector3(0, 0, z), DVector3(EXTENT, 0, z), DVector3(0, 40, z)})
        walls.vertex.push_back(corner);
      for (const int k : {0, 1, 2})
        walls.index.push_back(static_cast<uint16_t>(first + k));
    }
  }
  float Number(float from, float to) { return std::uniform_real_distribution<float>(from, to)(random); }
  DVector3 Point() { return {Number(0, EXTENT), Number(-5, 30), Number(0, EXTENT)}; }
  // On a corner, an edge or anywhere.
  DVector3 Target(int kind)
  {
    const DGeob& g = *geode.geob[std::uniform_int_distribution<size_t>(0, geode.geob.size() - 1)(random)];
    const size_t i = std::uniform_int_distribution<size_t>(0, g.index.size() / 3 - 1)(random) * 3;
    const DVector3& a = g.vertex[g.index[i]];
    const DVector3& b = g.vertex[g.index[i + 1]];
    return kind == 0 ? a : kind == 1 ? (a + b) * 0.5f : Point();
  }
  void AddHills()
  {
    DGeob& g = *geode.AddGeob();
    const float step = EXTENT / SIDE;
    for (int z = 0; z <= SIDE; ++z)
      for (int x = 0; x <= SIDE; ++x) {
        const float fx = static_cast<float>(x) * step;
        const float fz = static_cast<float>(z) * step;
        g.vertex.push_back({fx, 4 * std::sin(fx * 0.3f) * std::cos(fz * 0.2f), fz});
      }
    for (int z = 0; z < SIDE; ++z)
      for (int x = 0; x < SIDE; ++x) {
        const int at = z * (SIDE + 1) + x;
        for (const int corner : {at, at + SIDE + 1, at + 1, at + 1, at + SIDE + 1, at + SIDE + 2})
          g.index.push_back(static_cast<uint16_t>(corner));
      }
  }
  void AddSoup()
  {
    DGeob& g = *geode.AddGeob();
    for (int i = 0; i < 1000; ++i) {
      const DVector3 middle = Point();
      const float size = std::exp(Number(-5, 3)); // specks and large ones
      for (int k = 0; k < 3; ++k) {
        g.vertex.push_back(middle + DVector3(Number(-size, size), Number(-size, size), Number(-size, size)));
        g.index.push_back(static_cast<uint16_t>(g.vertex.size() - 1));
      }
    }
  }
  void ExpectAsScanned(const DVector3& origin, const DVector3& direction)
  {
    GeodeHit scanned;
    GeodeHit picked;
    const bool isHit = IntersectRayGeode(geode, origin, direction, scanned);
    ASSERT_EQ(isHit, PickGeode(geode, origin, direction, picked));
    hits += isHit;
    ASSERT_EQ(scanned.geob, picked.geob);
    ASSERT_EQ(scanned.triangle, picked.triangle);
    ASSERT_EQ(scanned.t, picked.t);
    ASSERT_EQ(scanned.point, picked.point);
    for (int k = 0; k < 3 && isHit; ++k)
      ASSERT_EQ(scanned.corner[k], picked.corner[k]);
  }
  void ExpectRaysAsScanned(int count)
  {
    const DVector3 axes[] = {{1, 0, 0}, {0, -1, 0}, {0, 0, 1}, {-1, 0, 0}, {0, 1, 0}, {0, 0, -1}};
    for (int i = 0; i < count && !HasFatalFailure(); ++i) {
      SCOPED_TRACE(i);
      const DVector3 target = Target(i % 3);
      DVector3 origin = Point() * Number(0.5f, 4) + DVector3(0, Number(0, 40), 0);
      if (i % 5 == 0)
        origin = target - axes[static_cast<size_t>(i) / 5 % 6] * Number(0, 150);
      else if (i % 5 == 1)
        origin.y = target.y; // along the ground
      ExpectAsScanned(origin, DNormalized(target - origin));
    }
  }

  std::mt19937 random{7};
  DGeode geode;
  int hits = 0;
};

TEST_F(PickTest, FindsWhatAScanFinds)
{
  ExpectRaysAsScanned(12000);
  EXPECT_GT(hits, 6000);
  // From a corner, from inside a plane, of other lengths.
  const DVector3 corner = geode.geob[0]->vertex[5];
  for (const DVector3& direction : {DVector3(0, -1, 0), DVector3(1, 0, 0), DVector3(3, -8, 2), DVector3(0, -1e-4f, 0),
                                    DVector3(0, 0, 0), DVector3(std::numeric_limits<float>::quiet_NaN(), 0, 1)}) {
    ExpectAsScanned(corner, direction);
    ExpectAsScanned({50, 20, 10}, direction);
    ExpectAsScanned({50, 1e9f, 10}, direction);
  }
}

TEST_F(PickTest, CornersThatFitNoBoxAreNoHindrance)
{
  const float inf = std::numeric_limits<float>::infinity();
  const float nan = std::numeric_limits<float>::quiet_NaN();
  DGeob& soup = *geode.geob[1];
  soup.vertex[0].x = nan;
  soup.vertex[4].y = inf;
  soup.vertex[8].z = -inf;
  soup.vertex[9] = {1e8f, 10, 1e8f}; // still to be hit
  soup.vertex[10] = {-1e8f, 10, 1e8f};
  soup.vertex[11] = {50, 10, -1e8f};
  soup.index[60] = 65535;
  soup.index.push_back(3); // of no triangle
  ExpectRaysAsScanned(2000);
  GeodeHit hit;
  ASSERT_TRUE(PickGeode(geode, {50, 60, 50}, {0, -1, 0}, hit));
}

TEST_F(PickTest, SeesEachChangeOfTheModel)
{
  GeodeHit hit;
  ASSERT_TRUE(PickGeode(geode, {50, 90, 50}, {0, -1, 0}, hit));
  const DPickTree* const first = geode.pickTree.get();
  ExpectRaysAsScanned(50);
  EXPECT_EQ(first, geode.pickTree.get()) << "built once";
  geode.geob[0]->Translate(0, 1, 0);
  ExpectRaysAsScanned(200);
  geode.ScaleVertices(2, 2, 2);
  ExpectRaysAsScanned(200);
  geode.geob[3]->vertex[0].y = 3;
  geode.geob[3]->RefreshVBO();
  ExpectRaysAsScanned(200);
  geode.geob.erase(geode.geob.begin() + 1);
  ExpectRaysAsScanned(200);
  geode.Clear();
  EXPECT_FALSE(PickGeode(geode, {50, 90, 50}, {0, -1, 0}, hit));
  AddHills();
  ExpectRaysAsScanned(200);
}

} // namespace
