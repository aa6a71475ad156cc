#include "geometry/daabbtreehd.h"

#include "foundation/qreport.h"
#include "foundation/qtimer.h"
#include "geometry/dintersect.h"

#include <algorithm>
#include <cstring>
#include <emmintrin.h>
#include <limits>

namespace {

constexpr float NOWHERE = std::numeric_limits<float>::max();
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
    Gathered box;
    for (size_t i = 0; i < count; ++i) {
      item[0][i] = ItemOf(i);
      number[0][i] = static_cast<int>(i);
      box.Add(_mm_load_ps(&item[0][i].min.x), _mm_load_ps(&item[0][i].negMax.x));
    }
    tree.rootBox = box.Box();
    tree.nodeCount = 1;
    tree.root = Split({0, count, 0, false}, tree.rootBox, 0);
  }

private:
  Item ItemOf(size_t triangle) const
  {
    const uint32_t* const corner = &tree.index[3 * triangle];
    const DVector3& a = tree.vertex[corner[0]];
    const DVector3& b = tree.vertex[corner[1]];
    const DVector3& c = tree.vertex[corner[2]];
    Item made{DVector3(NOWHERE), (a.x + b.x + c.x) / 3, DVector3(NOWHERE), (a.z + b.z + c.z) / 3};
    for (const DVector3* v : {&a, &b, &c})
      for (int axis = 0; axis < 3; ++axis) {
        made.min[axis] = std::min(made.min[axis], (*v)[axis]);
        made.negMax[axis] = std::min(made.negMax[axis], -(*v)[axis]);
      }
    return made;
  }

  // The list, from its head on, becomes a run of the order.
  Child Leaf(const List& list)
  {
    const int* const numbers = &number[list.buffer][list.begin];
    int* const to = &tree.order[list.begin];
    if (list.reversed)
      std::reverse_copy(numbers, numbers + list.count, to);
    else
      std::copy_n(numbers, list.count, to);
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
    for (size_t i = 0; i < list.count; ++i, from += STEP, fromNumber += STEP, mark += STEP) {
      const size_t q = *mark;
      const __m128 min = _mm_load_ps(&from->min.x);
      const __m128 negMax = _mm_load_ps(&from->negMax.x);
      const size_t at = to[q]++;
      _mm_store_ps(&toItem[at].min.x, min);
      _mm_store_ps(&toItem[at].negMax.x, negMax);
      toNumber[at] = *fromNumber;
      box[q].Add(min, negMax);
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
      return Leaf(list);
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
  order.resize(corners / 3);
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

// A bit for each child.
unsigned DAabbTreeHd::Overlap(const Node& node, const DAABB& box)
{
  const auto meet = [](const float* from, const float* to, float min, float max) {
    return _mm_and_ps(_mm_cmple_ps(_mm_load_ps(from), _mm_set1_ps(max + DAABB::MARGIN)),
                      _mm_cmpge_ps(_mm_load_ps(to), _mm_set1_ps(min - DAABB::MARGIN)));
  };
  const __m128 x = meet(node.minX, node.maxX, box.min.x, box.max.x);
  const __m128 y = meet(node.minY, node.maxY, box.min.y, box.max.y);
  const __m128 z = meet(node.minZ, node.maxZ, box.min.z, box.max.z);
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

// A bit for each of the triangles that RayTriangle says the query hits, by the same steps with the same roundings.
unsigned DAabbTreeHd::HitsOfFour(const DAabbTreeHdQuery& query, const int* four) const
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
  return static_cast<unsigned>(_mm_movemask_ps(_mm_andnot_ps(isAlong, _mm_and_ps(isInside, isAhead))));
}

bool DAabbTreeHd::SearchLeaf(DAabbTreeHdQuery& query, int first, int count) const
{
  const int* const triangles = &order[static_cast<size_t>(first)];
  for (int i = 0; i < count; i += 4) {
    const int last = count - 1;
    const int four[4] = {triangles[i], triangles[std::min(i + 1, last)], triangles[std::min(i + 2, last)],
                         triangles[std::min(i + 3, last)]};
    const unsigned hits = HitsOfFour(query, four);
    if (hits == 0)
      continue;
    const auto [a, b, c] = Corners(four[__builtin_ctz(hits)]);
    float t = 0;
    static_cast<void>(RayTriangle(query.from, query.direction, a, b, c, t, query.length));
    query.hitPosition = query.from + query.direction * t;
    query.hitNormal = DNormalized(glm::cross(b - a, c - a));
    if (query.hitNormal.y < 0)
      query.hitNormal = -query.hitNormal;
    query.cachedNode = first;
    query.cachedCount = count;
    return true;
  }
  return false;
}

// Asks for the memory that a leaf's test will read, all at once: one after the other it would be waited for.
void DAabbTreeHd::Prefetch(int first, int count) const
{
  constexpr int MOST = 64; // more would push out what they bring
  const int* const triangles = &order[static_cast<size_t>(first)];
  const int last = std::min(count, MOST);
  for (int i = 0; i < last; ++i)
    __builtin_prefetch(&index[3 * static_cast<size_t>(triangles[i])]);
  for (int i = 0; i < last; ++i)
    for (size_t corner = 0; corner < 3; ++corner)
      __builtin_prefetch(&vertex[index[3 * static_cast<size_t>(triangles[i]) + corner]]);
}

bool DAabbTreeHd::Search(DAabbTreeHdQuery& query, Child child) const
{
  if (child.link < 0) {
    Prefetch(~child.link, child.count);
    return SearchLeaf(query, ~child.link, child.count);
  }
  const Node& node = nodes[static_cast<size_t>(child.link)];
  for (unsigned met = Overlap(node, query.box); met != 0; met &= met - 1) {
    const int q = __builtin_ctz(met);
    if (Search(query, {node.link[q], node.count[q]}))
      return true;
  }
  return false;
}

bool DAabbTreeHd::SearchOne(DAabbTreeHdQuery& query) const
{
  query.box = DAABB::FromSegment(query.from, query.direction, query.length);
  // What another tree left there is no more than a wrong guess.
  if (query.cachedNode >= 0 && query.cachedCount >= 0 && query.cachedNode < FaceCount() &&
      query.cachedCount <= FaceCount() - query.cachedNode && SearchLeaf(query, query.cachedNode, query.cachedCount))
    return true;
  query.cachedNode = -1;
  return Search(query, root);
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
    visit(box, level, std::span(order).subspan(static_cast<size_t>(~child.link), static_cast<size_t>(child.count)));
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
