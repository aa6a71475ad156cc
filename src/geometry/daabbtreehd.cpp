#include "geometry/daabbtreehd.h"

#include "foundation/qreport.h"
#include "foundation/qtimer.h"
#include "geometry/dintersect.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <emmintrin.h>
#include <limits>

namespace {

constexpr float NOWHERE = std::numeric_limits<float>::max();
constexpr size_t PADDING = 4; // of the leaves' data, which are read four at a time
constexpr int NO_CHILD = std::numeric_limits<int>::min();

// A triangle as the build moves it about: its box and the middle of its corners in x and z, in two vectors. The upper
// corner is negated, so that one minimum of each vector gathers a box.
struct alignas(16) Item
{
  DVector3 min;
  float centerX;
  DVector3 negMax;
  float centerZ;
};

struct Gathered
{
  __m128 min = _mm_set1_ps(NOWHERE);
  __m128 negMax = _mm_set1_ps(NOWHERE);

  void Add(__m128 otherMin, __m128 otherNegMax)
  {
    min = _mm_min_ps(otherMin, min); // the second operand stays where the first is no number
    negMax = _mm_min_ps(otherNegMax, negMax);
  }
  DBox Box() const
  {
    alignas(16) float lower[4];
    alignas(16) float upper[4];
    _mm_store_ps(lower, min);
    _mm_store_ps(upper, negMax);
    return {{lower[0], lower[1], lower[2]}, {-upper[0], -upper[1], -upper[2]}};
  }
};

// A node's list: items side by side in one of two buffers, from the head upward, or downward for a step of -1.
struct List
{
  size_t begin;
  size_t count;
  int buffer;
  bool reversed;
};

// Where a triangle lies in x and z, in cells of its leaf: 250 along the longer side of the leaf's box, with one more
// all round. A ray straight down that passes a triangle by a whole cell can't be taken for a hit by the rounding of
// RayTriangle, provided the triangle is no sliver when seen from above: then u and v are off by less than a cell.
class Grid
{
public:
  static constexpr uint32_t EVERYWHERE = 0;  // a sliver, which any ray may hit by rounding
  static constexpr float SLIVER = 1 / 64.0f; // of the area to the square of an edge

  Grid(float fromX, float fromZ, float side) :
      x(fromX), z(fromZ), scale(side > SMALLEST && side < LARGEST ? CELLS / side : 0)
  {}
  uint32_t Of(const Item& item) const
  {
    const __m128 min = _mm_load_ps(&item.min.x);
    const __m128 max = _mm_sub_ps(_mm_setzero_ps(), _mm_load_ps(&item.negMax.x));
    const __m128 ofX = _mm_unpacklo_ps(min, max);
    const __m128 ofZ = _mm_unpackhi_ps(min, max);
    return Bytes(_mm_add_epi32(Cells(_mm_movelh_ps(ofX, ofZ)), _mm_setr_epi32(-1, 1, -1, 1)));
  }
  // A ray's cell is in a triangle's cells when none of the triangle's bytes is above the ray's.
  uint32_t OfRay(float atX, float atZ) const { return Bytes(Cells(_mm_setr_ps(atX, atX, atZ, atZ))); }

private:
  static constexpr float CELLS = 250;
  static constexpr float SMALLEST = 1e-20f;
  static constexpr float LARGEST = 1e20f;
  // Of two places in x and two in z: 1 to 255, and not 1 or 255 for what lies in the leaf's box.
  __m128i Cells(__m128 places) const
  {
    const __m128 cells = _mm_mul_ps(_mm_sub_ps(places, _mm_setr_ps(x, x, z, z)), _mm_set1_ps(scale));
    const __m128 held = _mm_max_ps(_mm_min_ps(cells, _mm_set1_ps(CELLS + 2)), _mm_set1_ps(-2));
    return _mm_cvttps_epi32(_mm_add_ps(held, _mm_set1_ps(3)));
  }
  // Lower cells, and upper ones taken from 255.
  static uint32_t Bytes(__m128i cells)
  {
    const __m128i words = _mm_packs_epi32(cells, cells);
    return static_cast<uint32_t>(_mm_cvtsi128_si32(_mm_packus_epi16(words, words))) ^ 0xFF00FF00U;
  }
  float x, z;
  float scale;
};

bool IsSliver(const DVector3& a, const DVector3& b, const DVector3& c)
{
  const DVector2 e1(b.x - a.x, b.z - a.z);
  const DVector2 e2(c.x - a.x, c.z - a.z);
  const float edge = std::max(glm::dot(e1, e1), glm::dot(e2, e2));
  return !(std::abs(e1.x * e2.y - e1.y * e2.x) >= Grid::SLIVER * edge && edge < 1e30f);
}

} // namespace

// Splits lists as linked ones would be split: a triangle goes to the head of its quadrant's list, so each split
// reverses the order, and one that is undone restores it. Quadrants are laid down upward and read backward.
class DAabbTreeHd::Builder
{
public:
  explicit Builder(DAabbTreeHd& owner) : tree(owner) {}

  void Build()
  {
    const auto count = static_cast<size_t>(tree.FaceCount());
    for (int i = 0; i < 2; ++i) {
      item[i].resize(count);
      number[i].resize(count);
    }
    quadrant.resize(count);
    tree.leafData.resize(2 * count + PADDING);
    Gathered box;
    for (size_t i = 0; i < count; ++i) {
      bool isSliver = false;
      item[0][i] = ItemOf(i, isSliver);
      number[0][i] = static_cast<int>(static_cast<unsigned>(i) | (isSliver ? SLIVER_BIT : 0));
      box.Add(_mm_load_ps(&item[0][i].min.x), _mm_load_ps(&item[0][i].negMax.x));
    }
    tree.rootBox = box.Box();
    tree.nodeCount = 1;
    tree.root = Split({0, count, 0, false}, tree.rootBox, 0);
  }

private:
  static constexpr unsigned SLIVER_BIT = 1U << 31;

  Item ItemOf(size_t triangle, bool& isSliver) const
  {
    const uint32_t* const corner = &tree.index[3 * triangle];
    const DVector3& a = tree.vertex[corner[0]];
    const DVector3& b = tree.vertex[corner[1]];
    const DVector3& c = tree.vertex[corner[2]];
    isSliver = IsSliver(a, b, c);
    Item made{DVector3(NOWHERE), (a.x + b.x + c.x) / 3, DVector3(NOWHERE), (a.z + b.z + c.z) / 3};
    for (const DVector3* v : {&a, &b, &c})
      for (int axis = 0; axis < 3; ++axis) {
        made.min[axis] = std::min(made.min[axis], (*v)[axis]);
        made.negMax[axis] = std::min(made.negMax[axis], -(*v)[axis]);
      }
    return made;
  }

  // The list, from its head on, becomes a run of the leaves' triangles.
  Child MakeLeaf(const List& list, const DBox& box)
  {
    const Grid grid(box.min.x, box.min.z, Longer(box.max.x - box.min.x, box.max.z - box.min.z));
    const Item* items = &item[list.buffer][list.begin];
    const int* numbers = &number[list.buffer][list.begin];
    int* cells = &tree.leafData[2 * list.begin];
    int* triangles = cells + list.count;
    for (size_t i = 0; i < list.count; ++i) {
      const size_t at = list.reversed ? list.count - 1 - i : i;
      const auto marked = static_cast<unsigned>(numbers[at]);
      cells[i] = static_cast<int>(marked & SLIVER_BIT ? Grid::EVERYWHERE : grid.Of(items[at]));
      triangles[i] = static_cast<int>(marked & ~SLIVER_BIT);
    }
    return {~static_cast<int>(list.begin), static_cast<int>(list.count)};
  }

  // Marks the quadrant of each triangle: bit 0 when not below the cut in x, bit 1 in z.
  void Mark(const List& list, float cutX, float cutZ, std::array<size_t, 4>& count)
  {
    const Item* const items = &item[list.buffer][list.begin];
    uint8_t* const mark = &quadrant[list.begin];
    // Two sets of counters, so that one quadrant's run doesn't wait for itself.
    std::array<size_t, 8> counted{};
    for (size_t i = 0; i < list.count; ++i) {
      mark[i] = static_cast<uint8_t>(static_cast<int>(!(items[i].centerX < cutX)) |
                                     static_cast<int>(!(items[i].centerZ < cutZ)) << 1);
      ++counted[mark[i] + 4 * (i & 1)];
    }
    for (size_t q = 0; q < 4; ++q)
      count[q] = counted[q] + counted[q + 4];
  }

  void MeanOfCorners(const List& list, float& x, float& z) const
  {
    double sumX = 0;
    double sumZ = 0;
    for (size_t i = 0; i < list.count; ++i) {
      const Item& one = item[list.buffer][list.begin + i];
      sumX += static_cast<double>(one.centerX);
      sumZ += static_cast<double>(one.centerZ);
    }
    x = static_cast<float>(sumX / static_cast<double>(list.count));
    z = static_cast<float>(sumZ / static_cast<double>(list.count));
  }

  // False: all lie in one quadrant of both cuts.
  bool Quarter(const List& list, const DBox& box, std::array<size_t, 4>& count)
  {
    const auto isOneFull = [&] { return std::find(count.begin(), count.end(), list.count) != count.end(); };
    Mark(list, (box.min.x + box.max.x) * 0.5f, (box.min.z + box.max.z) * 0.5f, count);
    if (!isOneFull())
      return true;
    float x = 0;
    float z = 0;
    MeanOfCorners(list, x, z);
    Mark(list, x, z, count);
    return !isOneFull();
  }

  // To the other buffer, each quadrant in the order of the list.
  template <int STEP>
  void Move(const List& list, std::array<size_t, 4> to, std::array<Gathered, 4>& box)
  {
    const size_t last = STEP > 0 ? 0 : list.count - 1;
    const Item* from = &item[list.buffer][list.begin + last];
    const int* fromNumber = &number[list.buffer][list.begin + last];
    const uint8_t* mark = &quadrant[list.begin + last];
    Item* const toItem = item[1 - list.buffer].data();
    int* const toNumber = number[1 - list.buffer].data();
    std::array<Gathered, 8> gathered; // every second triangle goes to boxes of its own: no wait for the last one's
    for (size_t i = 0; i < list.count; ++i, from += STEP, fromNumber += STEP, mark += STEP) {
      const size_t q = *mark;
      const __m128 min = _mm_load_ps(&from->min.x);
      const __m128 negMax = _mm_load_ps(&from->negMax.x);
      const size_t at = to[q]++;
      _mm_store_ps(&toItem[at].min.x, min);
      _mm_store_ps(&toItem[at].negMax.x, negMax);
      toNumber[at] = *fromNumber;
      gathered[q + 4 * (i & 1)].Add(min, negMax);
    }
    for (size_t q = 0; q < 4; ++q) {
      box[q] = gathered[q];
      box[q].Add(gathered[q + 4].min, gathered[q + 4].negMax);
    }
  }

  static void SetChild(Node& node, size_t q, const DBox& box, const Child& child)
  {
    node.minX[q] = box.min.x;
    node.minY[q] = box.min.y;
    node.minZ[q] = box.min.z;
    node.maxX[q] = box.max.x;
    node.maxY[q] = box.max.y;
    node.maxZ[q] = box.max.z;
    node.link[q] = child.link;
    node.count[q] = child.count;
  }

  Child Split(const List& list, const DBox& box, int level)
  {
    tree.depth = std::max(tree.depth, level);
    std::array<size_t, 4> count{};
    if (list.count <= static_cast<size_t>(tree.maxTrianglesPerNode) || !Quarter(list, box, count))
      return MakeLeaf(list, box);
    std::array<size_t, 4> begin{};
    for (size_t q = 0, at = list.begin; q < 4; at += count[q], ++q)
      begin[q] = at;
    std::array<Gathered, 4> gathered;
    if (list.reversed)
      Move<-1>(list, begin, gathered);
    else
      Move<1>(list, begin, gathered);
    const size_t at = tree.nodes.size();
    tree.nodes.emplace_back();
    for (size_t q = 0; q < 4; ++q) {
      const DBox childBox = gathered[q].Box(); // of nothing it is inside out
      Child child{NO_CHILD, 0};
      if (count[q] > 0) {
        ++tree.nodeCount;
        child = Split({begin[q], count[q], 1 - list.buffer, true}, childBox, level + 1);
      }
      SetChild(tree.nodes[at], q, childBox, child);
    }
    return {static_cast<int>(at), 0};
  }

  DAabbTreeHd& tree;
  DArray<Item> item[2];
  DArray<int> number[2];
  DArray<uint8_t> quadrant;
};

DAabbTreeHd::DAabbTreeHd(std::span<const DVector3> vertices, std::span<const uint32_t> indices) :
    vertex(vertices), index(indices)
{}

void DAabbTreeHd::SetMaxTrianglesPerNode(int n)
{
  if (built) {
    QWARN("DAabbTreeHd:SetMaxTrianglesPerNode(%d); tree was already built with max=%d", n, maxTrianglesPerNode);
    return;
  }
  maxTrianglesPerNode = std::max(1, n);
}

void DAabbTreeHd::Build()
{
  if (built || vertex.empty() || index.size() < 3)
    return;
  QDBG("DAabbTreeHd:Build()\n");
  QDBG("%d vertices, %d faces\n", VertexCount(), FaceCount());
  const size_t corners = static_cast<size_t>(FaceCount()) * 3;
  if (const uint32_t most = *std::max_element(index.begin(), index.begin() + static_cast<std::ptrdiff_t>(corners));
      most >= vertex.size()) {
    QWARN("DAabbTreeHd:Build(); index %u out of range (%d vertices)", most, VertexCount());
    return;
  }
  QTimer timer;
  timer.Start();
  QDBG("Building 'next' array\n");
  QDBG("Build root\n");
  Builder(*this).Build();
  built = true;
  QDBG("Tree built in %d ms; %d nodes, depth %d\n", static_cast<int>(timer.GetMilliSeconds()), nodeCount, depth);
  QDBG("Actual triangle count in tree: %d\n", FaceCount());
  QDBG("Poolnodes allocated: %d, actually used: %d\n", static_cast<int>(nodes.capacity()),
       static_cast<int>(nodes.size()));
}

std::array<DVector3, 3> DAabbTreeHd::Corners(int triangle) const
{
  const uint32_t* const corner = &index[3 * static_cast<size_t>(triangle)];
  return {vertex[corner[0]], vertex[corner[1]], vertex[corner[2]]};
}

// What all nodes on a query's way are held against: the sides of its box, moved apart by the margin, four times each.
struct DAabbTreeHd::Ray
{
  explicit Ray(const DAabbTreeHdQuery& query) :
      minX(_mm_set1_ps(query.box.min.x - DAABB::MARGIN)), maxX(_mm_set1_ps(query.box.max.x + DAABB::MARGIN)),
      minY(_mm_set1_ps(query.box.min.y - DAABB::MARGIN)), maxY(_mm_set1_ps(query.box.max.y + DAABB::MARGIN)),
      minZ(_mm_set1_ps(query.box.min.z - DAABB::MARGIN)), maxZ(_mm_set1_ps(query.box.max.z + DAABB::MARGIN)),
      isUpright(query.direction.x == 0 && query.direction.z == 0)
  {}
  __m128 minX, maxX;
  __m128 minY, maxY;
  __m128 minZ, maxZ;
  bool isUpright;
};

// A bit for each child.
unsigned DAabbTreeHd::Overlap(const Node& node, const Ray& ray)
{
  const auto meet = [](const float* from, const float* to, __m128 min, __m128 max) {
    return _mm_and_ps(_mm_cmple_ps(_mm_load_ps(from), max), _mm_cmpge_ps(_mm_load_ps(to), min));
  };
  const __m128 x = meet(node.minX, node.maxX, ray.minX, ray.maxX);
  const __m128 y = meet(node.minY, node.maxY, ray.minY, ray.maxY);
  const __m128 z = meet(node.minZ, node.maxZ, ray.minZ, ray.maxZ);
  return static_cast<unsigned>(_mm_movemask_ps(_mm_and_ps(_mm_and_ps(x, y), z)));
}

namespace {

// Four vectors, a coordinate at a time.
struct Four
{
  __m128 x, y, z;
};

Four operator-(const Four& a, const Four& b)
{
  return {_mm_sub_ps(a.x, b.x), _mm_sub_ps(a.y, b.y), _mm_sub_ps(a.z, b.z)};
}

Four Cross(const Four& a, const Four& b)
{
  const auto part = [](__m128 p, __m128 q, __m128 r, __m128 s) {
    return _mm_sub_ps(_mm_mul_ps(p, q), _mm_mul_ps(r, s));
  };
  return {part(a.y, b.z, b.y, a.z), part(a.z, b.x, b.z, a.x), part(a.x, b.y, b.x, a.y)};
}

__m128 Dot(const Four& a, const Four& b)
{
  return _mm_add_ps(_mm_add_ps(_mm_mul_ps(a.x, b.x), _mm_mul_ps(a.y, b.y)), _mm_mul_ps(a.z, b.z));
}

Four Repeat(const DVector3& v)
{
  return {_mm_set1_ps(v.x), _mm_set1_ps(v.y), _mm_set1_ps(v.z)};
}

// Twelve bytes of each, no more: the last vertex may end a page.
__m128 Load(const DVector3& v)
{
  double xy = 0;
  std::memcpy(&xy, &v.x, sizeof(xy));
  return _mm_movelh_ps(_mm_castpd_ps(_mm_set_sd(xy)), _mm_load_ss(&v.z));
}

Four Transposed(const DVector3& a, const DVector3& b, const DVector3& c, const DVector3& d)
{
  __m128 x = Load(a);
  __m128 y = Load(b);
  __m128 z = Load(c);
  __m128 w = Load(d);
  _MM_TRANSPOSE4_PS(x, y, z, w);
  return {x, y, z};
}

} // namespace

// Of four triangles that RayTriangle is asked about, by the same steps with the same roundings.
struct DAabbTreeHd::FourHits
{
  unsigned bits; // set for those that are hit
  alignas(16) float t[4];
  alignas(16) float normal[3][4]; // not normalised, an axis at a time
};

DAabbTreeHd::FourHits DAabbTreeHd::TestFour(const DAabbTreeHdQuery& query, const int* four) const
{
  const auto corners = [&](size_t corner) {
    const auto at = [&](int i) -> const DVector3& { return vertex[index[3 * static_cast<size_t>(four[i]) + corner]]; };
    return Transposed(at(0), at(1), at(2), at(3));
  };
  const __m128 zero = _mm_setzero_ps();
  const __m128 one = _mm_set1_ps(1);
  const Four direction = Repeat(query.direction);
  const Four a = corners(0);
  const Four e1 = corners(1) - a;
  const Four e2 = corners(2) - a;
  const Four p = Cross(direction, e2);
  const __m128 det = Dot(e1, p);
  const __m128 isAlong =
      _mm_and_ps(_mm_cmpgt_ps(det, _mm_set1_ps(-RAY_EPSILON)), _mm_cmplt_ps(det, _mm_set1_ps(RAY_EPSILON)));
  const Four s = Repeat(query.from) - a;
  const __m128 u = _mm_div_ps(Dot(s, p), det);
  const Four q = Cross(s, e1);
  const __m128 v = _mm_div_ps(Dot(direction, q), det);
  const __m128 t = _mm_div_ps(Dot(e2, q), det);
  const __m128 isInside = _mm_and_ps(_mm_and_ps(_mm_cmpge_ps(u, zero), _mm_cmple_ps(u, one)),
                                     _mm_and_ps(_mm_cmpge_ps(v, zero), _mm_cmple_ps(_mm_add_ps(u, v), one)));
  const __m128 isAhead = _mm_and_ps(_mm_cmpge_ps(t, zero), _mm_cmplt_ps(t, _mm_set1_ps(query.length)));
  FourHits hits;
  hits.bits = static_cast<unsigned>(_mm_movemask_ps(_mm_andnot_ps(isAlong, _mm_and_ps(isInside, isAhead))));
  const Four normal = Cross(e1, e2);
  _mm_store_ps(hits.t, t);
  _mm_store_ps(hits.normal[0], normal.x);
  _mm_store_ps(hits.normal[1], normal.y);
  _mm_store_ps(hits.normal[2], normal.z);
  return hits;
}

// Of these triangles, in their order, the first that the ray hits.
bool DAabbTreeHd::Test(DAabbTreeHdQuery& query, std::span<const int> triangles, int leaf) const
{
  const size_t last = triangles.size() - 1; // is repeated where fewer than four are left
  for (size_t i = 0; i <= last; i += 4) {
    const int four[4] = {triangles[i], triangles[std::min(i + 1, last)], triangles[std::min(i + 2, last)],
                         triangles[std::min(i + 3, last)]};
    const FourHits hits = TestFour(query, four);
    if (hits.bits == 0)
      continue;
    const int first = __builtin_ctz(hits.bits);
    query.hitPosition = query.from + query.direction * hits.t[first];
    query.hitNormal = DNormalized({hits.normal[0][first], hits.normal[1][first], hits.normal[2][first]});
    if (query.hitNormal.y < 0)
      query.hitNormal = -query.hitNormal;
    query.cachedNode = leaf;
    return true;
  }
  return false;
}

bool DAabbTreeHd::SearchLeaf(DAabbTreeHdQuery& query, const Ray& ray, const Leaf& leaf) const
{
  const int* const triangles = TrianglesOf(leaf);
  const std::span all(triangles, static_cast<size_t>(leaf.count));
  if (!ray.isUpright)
    return Test(query, all, leaf.number);
  const __m128i at =
      _mm_set1_epi32(static_cast<int>(Grid(leaf.x, leaf.z, leaf.side).OfRay(query.from.x, query.from.z)));
  constexpr int CHUNK = 32;
  std::array<int, CHUNK> near; // not looked at before it is set
  const int* const cells = CellsOf(leaf);
  for (int from = 0; from < leaf.count; from += CHUNK) {
    const int chunk = std::min(leaf.count - from, CHUNK);
    // All marks first, then one loop over the few that are set: its length is guessed better than that of one a vector.
    unsigned bits = 0;
    for (int i = 0; i < chunk; i += 4) {
      const __m128i four = _mm_loadu_si128(reinterpret_cast<const __m128i*>(cells + from + i));
      const __m128i isNear = _mm_cmpeq_epi32(_mm_max_epu8(four, at), at);
      bits |= static_cast<unsigned>(_mm_movemask_ps(_mm_castsi128_ps(isNear))) << i;
    }
    bits &= ~0U >> (CHUNK - chunk);
    size_t count = 0;
    for (; bits != 0; bits &= bits - 1)
      near[count++] = triangles[from + __builtin_ctz(bits)];
    if (count > 0 && Test(query, std::span(near).first(count), leaf.number))
      return true;
  }
  return false;
}

DAabbTreeHd::Leaf DAabbTreeHd::LeafAt(const Node& node, size_t q) const
{
  return {static_cast<int>(4 * (&node - nodes.data())) + static_cast<int>(q),
          ~node.link[q],
          node.count[q],
          node.minX[q],
          node.minZ[q],
          Longer(node.maxX[q] - node.minX[q], node.maxZ[q] - node.minZ[q])};
}

DAabbTreeHd::Leaf DAabbTreeHd::RootLeaf() const
{
  const DBox& b = rootBox;
  return {0, ~root.link, root.count, b.min.x, b.min.z, Longer(b.max.x - b.min.x, b.max.z - b.min.z)};
}

// Asks for what a child's turn will read, while its elder siblings have theirs.
void DAabbTreeHd::Prefetch(const Node& node, size_t q) const
{
  constexpr int LINE = 64;
  const int link = node.link[q];
  const char* const from = link < 0 ? reinterpret_cast<const char*>(&leafData[2 * static_cast<size_t>(~link)])
                                    : reinterpret_cast<const char*>(&nodes[static_cast<size_t>(link)]);
  __builtin_prefetch(from);
  __builtin_prefetch(from + LINE);
}

bool DAabbTreeHd::Search(DAabbTreeHdQuery& query, const Ray& ray, int at) const
{
  const Node& node = nodes[static_cast<size_t>(at)];
  const unsigned all = Overlap(node, ray);
  for (unsigned met = all; met != 0; met &= met - 1)
    Prefetch(node, static_cast<size_t>(__builtin_ctz(met)));
  for (unsigned met = all; met != 0; met &= met - 1) {
    const auto q = static_cast<size_t>(__builtin_ctz(met));
    if (node.link[q] < 0 ? SearchLeaf(query, ray, LeafAt(node, q)) : Search(query, ray, node.link[q]))
      return true;
  }
  return false;
}

// What another tree left there is no more than a wrong guess.
bool DAabbTreeHd::SearchCached(DAabbTreeHdQuery& query, const Ray& ray) const
{
  const auto number = static_cast<size_t>(query.cachedNode);
  if (query.cachedNode < 0 || number / 4 >= nodes.size())
    return false;
  const Node& node = nodes[number / 4];
  const size_t q = number % 4;
  return node.link[q] < 0 && node.link[q] != NO_CHILD && SearchLeaf(query, ray, LeafAt(node, q));
}

bool DAabbTreeHd::SearchOne(DAabbTreeHdQuery& query) const
{
  query.box = DAABB::FromSegment(query.from, query.direction, query.length);
  const Ray ray(query);
  if (SearchCached(query, ray))
    return true;
  query.cachedNode = -1;
  return root.link < 0 ? SearchLeaf(query, ray, RootLeaf()) : Search(query, ray, root.link);
}

bool DAabbTreeHd::SearchSamples(DAabbTreeHdQuery& query) const
{
  glm::dvec3 position(0.0);
  glm::dvec3 normal(0.0);
  int hits = 0;
  bool isHit = false;
  const size_t samples = std::min(static_cast<size_t>(query.sampleCount), query.samples.size());
  for (size_t i = 0; i < samples; ++i) {
    query.from = query.samples[i];
    isHit = SearchOne(query);
    if (!isHit)
      continue;
    position += glm::dvec3(query.hitPosition);
    normal += glm::dvec3(query.hitNormal);
    ++hits;
  }
  if (hits == 0)
    return false;
  query.hitPosition = DVector3(position / static_cast<double>(hits));
  query.hitNormal = DNormalized(DVector3(normal));
  return isHit;
}

bool DAabbTreeHd::Query(DAabbTreeHdQuery& query) const
{
  if (!built)
    return false;
  return query.sampleCount > 1 ? SearchSamples(query) : SearchOne(query);
}

void DAabbTreeHd::WalkNode(Child child, const DBox& box, int level, int maxDepth, const Visitor& visit) const
{
  if (child.link < 0) {
    const auto count = static_cast<size_t>(child.count);
    visit(box, level, std::span(leafData).subspan(2 * static_cast<size_t>(~child.link) + count, count));
    return;
  }
  visit(box, level, {});
  if (level >= maxDepth)
    return;
  const Node& node = nodes[static_cast<size_t>(child.link)];
  for (size_t q = 0; q < 4; ++q)
    if (node.link[q] != NO_CHILD)
      WalkNode({node.link[q], node.count[q]},
               {{node.minX[q], node.minY[q], node.minZ[q]}, {node.maxX[q], node.maxY[q], node.maxZ[q]}}, level + 1,
               maxDepth, visit);
}

void DAabbTreeHd::Walk(int maxDepth, const Visitor& visit) const
{
  if (built)
    WalkNode(root, rootBox, 0, maxDepth, visit);
}
