#include "geometry/dgeode.h"
#include "geometry/dgeodeoptimize.h"
#include "support/reportcapture.h"

#include <cstring>
#include <gtest/gtest.h>
#include <limits>
#include <random>

namespace {

constexpr float NAN_VALUE = std::numeric_limits<float>::quiet_NaN();

// The steps in their plain form: scans within scans. What the fast ones do must be the same to the bit.
namespace plain {

bool EqualVertices(const DGeob& g, size_t i, size_t j)
{
  const auto equal = [i, j](const auto& array) {
    if (array.empty())
      return true;
    for (int k = 0; k < array[0].length(); ++k)
      if (!(array[i][k] == array[j][k]))
        return false;
    return true;
  };
  return equal(g.vertex) && equal(g.texCoord[0]) && equal(g.texCoord[1]) && equal(g.normal);
}

void Renumber(DGeob& g, size_t from, size_t to)
{
  for (uint16_t& v : g.index)
    if (v == from)
      v = static_cast<uint16_t>(to);
}

int64_t Merge(DGeob& g)
{
  int64_t count = 0;
  for (size_t i = 0; i < g.vertex.size(); ++i)
    for (size_t j = i + 1; j < g.vertex.size(); ++j)
      if (EqualVertices(g, i, j)) {
        Renumber(g, j, i);
        ++count;
      }
  return count;
}

bool Names(const DGeob& g, int i)
{
  return std::find(g.index.begin(), g.index.end(), i) != g.index.end();
}

template <typename Array>
void Gather(Array& array, const std::vector<size_t>& source)
{
  const Array old = array;
  array.clear();
  for (const size_t s : source)
    if (!old.empty())
      array.push_back(old[s]);
}

int Pack(DGeob& g)
{
  int highest = -1;
  for (const uint16_t v : g.index)
    highest = std::max<int>(highest, v);
  int unused = 0;
  for (int i = 0; i < highest; ++i)
    unused += Names(g, i) ? 0 : 1;
  if (highest + 1 - unused == 0)
    return 0;
  std::vector<size_t> source;
  for (int i = 0; i < highest + 1 - unused; ++i) {
    int from = i;
    if (!Names(g, i)) {
      for (const uint16_t v : g.index)
        from = std::max<int>(from, v);
      Renumber(g, static_cast<size_t>(from), static_cast<size_t>(i));
    }
    source.push_back(static_cast<size_t>(from));
  }
  Gather(g.vertex, source);
  Gather(g.normal, source);
  Gather(g.vertexColor, source);
  for (auto& channel : g.texCoord)
    Gather(channel, source);
  return unused;
}

void Sort(DGeob& g)
{
  const auto exchange = [](auto& array, size_t a, size_t b) {
    if (!array.empty())
      std::swap(array[a], array[b]);
  };
  size_t next = 0;
  for (size_t i = 0; i < g.index.size(); ++i) {
    const size_t v = g.index[i];
    if (v > next) {
      exchange(g.vertex, v, next);
      exchange(g.normal, v, next);
      exchange(g.vertexColor, v, next);
      for (auto& channel : g.texCoord)
        exchange(channel, v, next);
      for (uint16_t& k : g.index)
        k = static_cast<uint16_t>(k == v ? next : k == next ? v : k);
    }
    next += v >= next ? 1 : 0;
  }
}

int Bursts(DGeob& g)
{
  if (g.index.empty() || g.burst.size() == 1)
    return 0;
  auto& b = g.burst;
  for (size_t i = 0; i < b.size(); ++i)
    for (size_t j = i + 1; j < b.size(); ++j)
      if (g.GetMaterial(b[i].mtlID) == g.GetMaterial(b[j].mtlID))
        b[j].mtlID = b[i].mtlID;
  std::vector<uint16_t> index;
  std::vector<DBurst> joined;
  for (size_t i = 0; i < b.size(); ++i) {
    bool opened = false;
    for (size_t j = i; j < b.size(); ++j) {
      if (b[j].mtlID == -1 || b[j].mtlID != b[i].mtlID)
        continue;
      if (!opened)
        joined.push_back({3 * static_cast<int32_t>(index.size()), 0, b[i].mtlID, b[joined.size()].vperP});
      opened = true;
      const auto start = g.index.begin() + b[j].start / 3;
      index.insert(index.end(), start, start + b[j].count / 3);
      joined.back().count += b[j].count;
      if (j != i)
        b[j].mtlID = -1;
    }
  }
  index.resize(g.index.size());
  g.index.assign(index.begin(), index.end());
  const size_t removed = b.size() - joined.size();
  b = joined;
  return static_cast<int>(removed);
}

} // namespace plain

// Small sets of values, so that vertices often agree in part or whole.
class Maker
{
public:
  explicit Maker(unsigned seed) : random(seed) {}
  int Below(int n) { return static_cast<int>(random() % static_cast<unsigned>(n)); }
  float Value()
  {
    const float values[] = {0.0f, -0.0f, 1, 1, 0, 0, 2, 1e-40f, -1, NAN_VALUE};
    return values[Below(Below(8) == 0 ? 10 : values_used)];
  }
  void Fill(DGeob& g)
  {
    const int vertices = 1 + Below(60);
    values_used = 2 + Below(6);
    const auto add3 = [&](auto& array) {
      for (int i = 0; i < vertices; ++i)
        array.push_back({Value(), Value(), Value()});
    };
    add3(g.vertex);
    if (Below(4) != 0)
      add3(g.normal);
    if (Below(2) != 0)
      add3(g.vertexColor);
    for (int channel = 0, channels = Below(3); channel < channels; ++channel)
      for (int i = 0; i < vertices; ++i)
        g.texCoord[static_cast<size_t>(channel)].push_back({Value(), Value()});
    const int named = 1 + Below(vertices); // the rest stays unused
    for (int i = 3 * Below(30); i > 0; --i)
      g.index.push_back(static_cast<uint16_t>(Below(named)));
    FillBursts(g);
  }

private:
  void FillBursts(DGeob& g)
  {
    int left = g.FaceCount();
    int start = 0;
    for (int bursts = 1 + Below(6); bursts > 0; --bursts) {
      const int triangles = bursts == 1 ? left : Below(left + 1);
      g.AddBurst({9 * start, 9 * triangles, Below(6) - 1, Below(5) == 0 ? 4 : 3});
      start += triangles;
      left -= triangles;
    }
    g.materialRef = Below(3);
  }
  std::mt19937 random;
  int values_used = 4;
};

template <typename Array>
bool SameBits(const Array& a, const Array& b)
{
  return a.size() == b.size() && (a.empty() || std::memcmp(a.data(), b.data(), a.size() * sizeof(a[0])) == 0);
}

testing::AssertionResult Same(const DGeob& a, const DGeob& b)
{
  if (!SameBits(a.index, b.index))
    return testing::AssertionFailure() << "indices";
  if (!SameBits(a.vertex, b.vertex) || !SameBits(a.normal, b.normal) || !SameBits(a.vertexColor, b.vertexColor))
    return testing::AssertionFailure() << "vertices, normals or colours";
  if (!SameBits(a.texCoord[0], b.texCoord[0]) || !SameBits(a.texCoord[1], b.texCoord[1]))
    return testing::AssertionFailure() << "texture coordinates";
  if (!SameBits(a.burst, b.burst))
    return testing::AssertionFailure() << "bursts";
  return testing::AssertionSuccess();
}

// A table with submaterials in one of its three materials.
void AddMaterials(DGeode& geode)
{
  for (const char* name : {"road", "grass", "house"})
    geode.AddMaterial()->name = name;
  for (const char* name : {"wall", "roof", "door"})
    geode.material[2]->AddSubMaterial()->name = name;
}

class Optimize : public testing::Test
{
protected:
  Optimize() { AddMaterials(geode); }
  // Corners without a shared vertex, all in one place unless moved.
  DGeob& Triangles(int count, int materialRef = 0)
  {
    DGeob& g = *geode.AddGeob();
    g.materialRef = materialRef;
    for (int i = 0; i < 3 * count; ++i) {
      g.index.push_back(static_cast<uint16_t>(i));
      g.vertex.push_back({1, 2, 3});
    }
    return g;
  }
  ReportCapture reports;
  DGeode geode{"g"};
};

TEST_F(Optimize, EachStepDoesWhatPlainScansDo)
{
  for (unsigned seed = 0; seed < 6000; ++seed) {
    SCOPED_TRACE(seed);
    DGeode fastGeode;
    DGeode plainGeode;
    AddMaterials(fastGeode);
    AddMaterials(plainGeode);
    DGeob& fast = *fastGeode.AddGeob();
    DGeob& slow = *plainGeode.AddGeob();
    Maker(seed).Fill(fast);
    Maker(seed).Fill(slow);
    Maker order(seed);
    for (int step = 0; step < 6; ++step)
      switch (order.Below(4)) {
      case 0:
        ASSERT_EQ(plain::Merge(slow), DGeobMergeVertices(fast));
        break;
      case 1:
        ASSERT_EQ(plain::Pack(slow), DGeobPackIndices(fast));
        break;
      case 2:
        plain::Sort(slow);
        ASSERT_EQ(0, DGeobSortVertices(fast));
        break;
      default:
        ASSERT_EQ(plain::Bursts(slow), DGeobOptimizeBursts(fast));
      }
    ASSERT_TRUE(Same(fast, slow));
    reports.Clear();
  }
}

TEST_F(Optimize, AModelsGeobsAreMergedAsEachAlone)
{
  DGeode alone;
  for (unsigned seed = 0; seed < 150; ++seed) {
    Maker(seed).Fill(*geode.AddGeob());
    Maker(seed).Fill(*alone.AddGeob());
  }
  int64_t sum = 0;
  for (const auto& g : alone.geob)
    sum += DGeobMergeVertices(*g);
  EXPECT_EQ(sum, DGeodeMergeVertices(geode));
  for (size_t i = 0; i < alone.geob.size(); ++i)
    EXPECT_TRUE(Same(*geode.geob[i], *alone.geob[i])) << i;
}

TEST_F(Optimize, VerticesAtAndBeyondTheReachOfAnIndexCount)
{
  for (const size_t count : {65535u, 65536u, 65537u, 70000u}) {
    SCOPED_TRACE(count);
    DGeob g;
    for (size_t i = 0; i < count; ++i)
      g.vertex.push_back({static_cast<float>(i), 0, 0});
    const std::vector<size_t> twins = {7, count - 3, count - 1}; // of vertex 5
    for (const size_t twin : twins)
      g.vertex[twin] = {5, -0.0f, 0};
    const std::vector<uint16_t> before = {5, 7, 65530, 65531, 65532, 65533, 65534, 65535};
    g.index.assign(before.begin(), before.end());
    EXPECT_EQ(6, DGeobMergeVertices(g));
    for (size_t i = 0; i < before.size(); ++i) {
      const bool isTwin = std::find(twins.begin(), twins.end(), before[i]) != twins.end();
      EXPECT_EQ(isTwin ? 5 : before[i], g.index[i]);
    }
    DGeobSortVertices(g);
    DGeobPackIndices(g);
    EXPECT_LE(g.vertex.size(), 65536u);
  }
}

TEST_F(Optimize, ArraysThatEndEarlyAndIndicesWithoutVertexDoNoHarm)
{
  DGeob& g = Triangles(2);
  g.normal.resize(2, DVector3(0, 1, 0));
  g.texCoord[1].resize(1, DVector2(1, 1));
  g.tangent.resize(6, DVector4(1, 0, 0, 1));
  g.baseVertex = g.vertex;
  g.index[4] = 60000;
  EXPECT_EQ(6, DGeobMergeVertices(g)); // 2 to 5 have neither normal nor coordinates
  DGeobSortVertices(g);
  EXPECT_EQ(60000, g.index[4]);
  DGeobPackIndices(g);
  EXPECT_EQ(4, g.VertexCount());
  for (const size_t size : {g.normal.size(), g.texCoord[1].size(), g.tangent.size(), g.baseVertex.size()})
    EXPECT_EQ(g.vertex.size(), size);
  EXPECT_LT(*std::max_element(g.index.begin(), g.index.end()), g.vertex.size());
}

TEST_F(Optimize, TheLowerNumbersColourSurvives)
{
  DGeob& g = Triangles(1);
  g.vertexColor = {{0.1f, 0, 0}, {0.2f, 0, 0}, {0.3f, 0, 0}};
  EXPECT_EQ(3, DGeobMergeVertices(g));
  EXPECT_EQ(0, DGeobPackIndices(g)); // 0 is the highest index by now: nothing below it is unused
  ASSERT_EQ(1, g.VertexCount());
  EXPECT_EQ(0.1f, g.vertexColor[0].x);
}

TEST_F(Optimize, BurstsOfABadFileStayWithinTheIndices)
{
  DGeob& g = Triangles(2, 2);
  g.burst = {{0, 18, 0}, {0, 18, 1}, {-9, 900, 0}, {1800, 9, 2}};
  EXPECT_EQ(1, DGeobOptimizeBursts(g));
  EXPECT_EQ(6, g.IndexCount());
  for (const DBurst& b : g.burst)
    EXPECT_LE(b.start + b.count, 18);
}

TEST_F(Optimize, AMaterialOfOneUsedSubmaterialBecomesThatOne)
{
  const struct
  {
    std::vector<int> used;
    int removed;
    const char* name;
    int id;
  } cases[] = {{{1, 1}, 2, "roof", 0}, {{0, 2}, 0, "house", 0}, {{}, 0, "house", -7}, {{5}, 2, "door", 0}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    geode.Clear();
    AddMaterials(geode);
    DGeob& g = Triangles(1, 2);
    for (const int id : c.used)
      g.AddBurst({0, 9, id});
    EXPECT_EQ(c.removed, DGeodeFlattenMaterials(geode));
    EXPECT_EQ(c.name, geode.material[2]->name);
    EXPECT_EQ(c.removed > 0 ? 0 : 3, geode.material[2]->SubCount());
    EXPECT_EQ(c.id, g.burst.empty() ? -7 : g.burst[0].mtlID);
  }
}

TEST_F(Optimize, MaterialsThatNoGeobNamesGoAndTheRestClosesUp)
{
  geode.Clear();
  for (const char* name : {"a", "b", "c", "d", "e", "f"})
    geode.AddMaterial()->name = name;
  DGeob& last = Triangles(1, 5);
  DGeob& middle = Triangles(1, 2);
  DGeob& beyond = Triangles(1, 99); // is drawn with the last one
  EXPECT_EQ(4, DGeodeRemoveUnusedMaterials(geode));
  EXPECT_EQ(1, last.materialRef);
  EXPECT_EQ(0, middle.materialRef);
  EXPECT_EQ(1, beyond.materialRef);
  ASSERT_EQ(2, geode.GetNoofMaterials());
  EXPECT_EQ("c", geode.material[0]->name);
  EXPECT_EQ("f", geode.material[1]->name);
  geode.geob.clear();
  EXPECT_EQ(2, DGeodeRemoveUnusedMaterials(geode));
  EXPECT_EQ(0, DGeodeRemoveUnusedMaterials(geode));
}

TEST_F(Optimize, LightingMakesNormalsAndSetsTheTableAlone)
{
  DGeob& g = Triangles(1);
  g.vertex = {{0, 0, 0}, {0, 0, 1}, {1, 0, 0}};
  g.AddBurst({0, 9, 0});
  DGeodeAddLighting(geode);
  EXPECT_EQ(DVector3(0, 1, 0), g.normal.at(2));
  EXPECT_EQ(DVector4(1, 1, 1, 1), geode.material[2]->diffuse);
  EXPECT_EQ(DVector4(0.8f, 0, 0, 1), geode.material[2]->emission);
  EXPECT_EQ(DVector4(0.2f), geode.material[2]->ambient);
  EXPECT_EQ(DVector4(0, 0, 0, 1), geode.material[2]->sub[0]->emission);
}

} // namespace
