#include "geometry/dpicktree.h"

#include "geometry/dgeode.h"
#include "geometry/dintersect.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <emmintrin.h>
#include <limits>
#include <span>

namespace {

constexpr size_t PACKET = 4;
constexpr size_t MIN_TRIANGLES = 32; // fewer are scanned
constexpr uint32_t NO_TRIANGLE = std::numeric_limits<uint32_t>::max();
// Squares and products of such coordinates are far from overflow.
constexpr float MAX_COORDINATE = 1e6f;
// Cuts in the middle, then in halves of equal count, so that hostile geometry makes no deeper tree.
constexpr int MAX_MIDDLE_CUTS = 64;
constexpr size_t MAX_WAITING = 3 * 160;

// How far beside a triangle, in parts of the distance, rounding lets a ray hit it that isn't edge-on: u and v are
// quotients of sums whose errors are some 32 last places of a product of distance and edge, and the divisor is the
// sine of the angle times both edges. Taken for the sine 1/32. Along the ray the error is larger by the same again.
constexpr float REACH = 1.0f / (1 << 14);
constexpr float REACH_AHEAD = 32 * REACH;

bool IsFit(const DVector3& v)
{
  return std::fabs(v.x) <= MAX_COORDINATE && std::fabs(v.y) <= MAX_COORDINATE && std::fabs(v.z) <= MAX_COORDINATE;
}

struct Corners
{
  DVector3 a, b, c;
};

// Three times an index that exists.
bool CornersOf(const DGeob& geob, size_t triangle, Corners& corners)
{
  const uint16_t* const at = &geob.index[3 * triangle];
  if (std::max({at[0], at[1], at[2]}) >= geob.vertex.size())
    return false;
  corners = {geob.vertex[at[0]], geob.vertex[at[1]], geob.vertex[at[2]]};
  return true;
}

struct Item
{
  DVector3 min;
  uint32_t geob;
  DVector3 max;
  uint32_t triangle;

  float Center(int axis) const { return min[axis] + max[axis]; } // twice the centre
};

__m128 Cross(__m128 p, __m128 q, __m128 r, __m128 s)
{
  return _mm_sub_ps(_mm_mul_ps(p, q), _mm_mul_ps(r, s));
}

// Four vectors, a coordinate at a time.
struct Four
{
  __m128 x, y, z;

  static Four Load(const float (*rows)[4])
  {
    return {_mm_load_ps(rows[0]), _mm_load_ps(rows[1]), _mm_load_ps(rows[2])};
  }
  static Four Repeat(const DVector3& v) { return {_mm_set1_ps(v.x), _mm_set1_ps(v.y), _mm_set1_ps(v.z)}; }
};

Four Cross(const Four& a, const Four& b)
{
  return {Cross(a.y, b.z, b.y, a.z), Cross(a.z, b.x, b.z, a.x), Cross(a.x, b.y, b.x, a.y)};
}

__m128 Dot(const Four& a, const Four& b)
{
  return _mm_add_ps(_mm_add_ps(_mm_mul_ps(a.x, b.x), _mm_mul_ps(a.y, b.y)), _mm_mul_ps(a.z, b.z));
}

} // namespace

// --- build

class DPickTree::Builder
{
public:
  Builder(DPickTree& owner, const DGeode& model) : tree(owner), geode(model)
  {
    size_t triangles = 0;
    for (const auto& geob : model.geob)
      triangles += geob->index.size() / 3;
    items.reserve(triangles);
    tree.nodes.reserve(triangles / 9);
    tree.packets.reserve(triangles * 2 / 5);
  }

  void Collect()
  {
    uint32_t number = 0;
    for (size_t g = 0; g < geode.geob.size(); ++g) {
      tree.stamps.push_back(Stamp::Of(geode, g, number));
      const size_t count = geode.geob[g]->index.size() / 3;
      for (size_t i = 0; i < count; ++i)
        Add(static_cast<uint32_t>(g), static_cast<uint32_t>(i));
      number += static_cast<uint32_t>(count);
    }
  }

  void Build()
  {
    if (items.empty())
      return;
    const Item box = BoxOf(items);
    tree.min = box.min;
    tree.max = box.max;
    tree.root = Split(items, 0);
  }

private:
  using Range = std::span<Item>;

  void Add(uint32_t geob, uint32_t triangle)
  {
    Corners corners{};
    if (!CornersOf(*geode.geob[geob], triangle, corners))
      return;
    const auto& [a, b, c] = corners;
    if (IsFit(a) && IsFit(b) && IsFit(c))
      items.push_back({glm::min(glm::min(a, b), c), geob, glm::max(glm::max(a, b), c), triangle});
    else
      tree.odd.push_back(tree.stamps[geob].first + triangle);
  }

  static Item BoxOf(Range range)
  {
    __m128 min = _mm_loadu_ps(&range[0].min.x);
    __m128 max = _mm_loadu_ps(&range[0].max.x);
    for (const Item& item : range) {
      min = _mm_min_ps(_mm_loadu_ps(&item.min.x), min);
      max = _mm_max_ps(_mm_loadu_ps(&item.max.x), max);
    }
    std::array<float, 4> from{};
    std::array<float, 4> to{};
    _mm_storeu_ps(from.data(), min);
    _mm_storeu_ps(to.data(), max);
    return {{from[0], from[1], from[2]}, 0, {to[0], to[1], to[2]}, 0};
  }

  // How many of the range go to its first half, which is moved to the front. Few are cut by their count, into full
  // packets.
  static size_t Cut(Range range, int level)
  {
    __m128 low = _mm_set1_ps(std::numeric_limits<float>::max());
    __m128 high = _mm_sub_ps(_mm_setzero_ps(), low);
    for (const Item& item : range) {
      const __m128 center = _mm_add_ps(_mm_loadu_ps(&item.min.x), _mm_loadu_ps(&item.max.x));
      low = _mm_min_ps(center, low);
      high = _mm_max_ps(center, high);
    }
    std::array<float, 4> from{};
    std::array<float, 4> side{};
    _mm_storeu_ps(from.data(), low);
    _mm_storeu_ps(side.data(), _mm_sub_ps(high, low));
    const int axis = side[0] >= side[1] && side[0] >= side[2] ? 0 : side[1] >= side[2] ? 1 : 2;
    const auto at = static_cast<size_t>(axis);
    if (range.size() > 4 * PACKET && level < MAX_MIDDLE_CUTS) {
      const float middle = from[at] + side[at] * 0.5f;
      const auto end =
          std::partition(range.begin(), range.end(), [&](const Item& item) { return item.Center(axis) < middle; });
      const auto count = static_cast<size_t>(end - range.begin());
      if (count > 0 && count < range.size())
        return count;
    }
    const size_t half = std::max(range.size() / 2 / PACKET * PACKET, PACKET);
    std::nth_element(range.begin(), range.begin() + static_cast<std::ptrdiff_t>(half), range.end(),
                     [&](const Item& a, const Item& b) { return a.Center(axis) < b.Center(axis); });
    return half;
  }

  int Leaf(Range range)
  {
    const auto at = static_cast<int>(tree.packets.size());
    tree.packets.emplace_back();
    Packet& packet = tree.packets.back();
    for (size_t lane = 0; lane < PACKET; ++lane) {
      const Item& item = range[std::min(lane, range.size() - 1)];
      Corners corners{};
      CornersOf(*geode.geob[item.geob], item.triangle, corners);
      const DVector3 edges[2] = {corners.b - corners.a, corners.c - corners.a};
      for (int axis = 0; axis < 3; ++axis) {
        packet.corner[axis][lane] = corners.a[axis];
        packet.edge[0][axis][lane] = edges[0][axis];
        packet.edge[1][axis][lane] = edges[1][axis];
      }
      packet.number[lane] = tree.stamps[item.geob].first + item.triangle;
    }
    return ~at;
  }

  int Split(Range all, int level)
  {
    if (all.size() <= PACKET)
      return Leaf(all);
    std::array<Range, 4> part{all};
    size_t parts = 1;
    for (; parts < part.size(); ++parts) {
      const auto largest = std::max_element(part.begin(), part.begin() + static_cast<std::ptrdiff_t>(parts),
                                            [](Range a, Range b) { return a.size() < b.size(); });
      if (largest->size() <= PACKET)
        break;
      const size_t count = Cut(*largest, level);
      part[parts] = largest->subspan(count);
      *largest = largest->first(count);
    }
    const size_t at = tree.nodes.size();
    tree.nodes.emplace_back();
    for (size_t i = 0; i < part.size(); ++i) {
      const bool isThere = i < parts;
      const int link = isThere ? Split(part[i], level + 1) : 0;
      const float far = std::numeric_limits<float>::infinity();
      const Item box = isThere ? BoxOf(part[i]) : Item{DVector3(far), 0, DVector3(-far), 0};
      Node& node = tree.nodes[at];
      for (int axis = 0; axis < 3; ++axis) {
        node.plane[0][axis][i] = box.min[axis];
        node.plane[1][axis][i] = box.max[axis];
      }
      node.link[i] = link;
    }
    return static_cast<int>(at);
  }

  DPickTree& tree;
  const DGeode& geode;
  DArray<Item> items;
};

DPickTree::Stamp DPickTree::Stamp::Of(const DGeode& geode, size_t geob, uint32_t first)
{
  const DGeob& g = *geode.geob[geob];
  return {g.ShapeVersion(), g.vertex.data(), g.index.data(), g.vertex.size(), g.index.size(), first};
}

DPickTree::DPickTree(const DGeode& geode)
{
  Builder builder(*this, geode);
  builder.Collect();
  builder.Build();
}

bool DPickTree::IsOf(const DGeode& geode) const
{
  if (stamps.size() != geode.geob.size())
    return false;
  for (size_t i = 0; i < stamps.size(); ++i)
    if (Stamp::Of(geode, i, stamps[i].first) != stamps[i])
      return false;
  return true;
}

// --- query

// Against boxes that are larger by the reach: the planes are compared with a start that is moved the other way.
struct DPickTree::Ray
{
  DVector3 origin;
  DVector3 direction;
  int isDown[3]; // per axis: whether the upper plane is met first
  __m128 enterFrom[3];
  __m128 leaveFrom[3];
  __m128 inverse[3];
  float ahead; // in directions

  Ray(const DVector3& from, const DVector3& to, float distance, float length) : origin(from), direction(to)
  {
    const float reach = distance * REACH + std::numeric_limits<float>::min();
    for (int axis = 0; axis < 3; ++axis) {
      // Never 0, which would make no number of a plane through the origin.
      const float part = std::fabs(to[axis]) < 1e-18f ? std::copysign(1e-18f, to[axis]) : to[axis];
      isDown[axis] = part < 0;
      inverse[axis] = _mm_set1_ps(1 / part);
      enterFrom[axis] = _mm_set1_ps(part < 0 ? from[axis] - reach : from[axis] + reach);
      leaveFrom[axis] = _mm_set1_ps(part < 0 ? from[axis] + reach : from[axis] - reach);
    }
    ahead = distance * REACH_AHEAD / length;
  }
};

// A bit for each box that is met before farthest, and where each is entered.
unsigned DPickTree::Meet(const Node& node, const Ray& ray, float farthest, float* enter)
{
  __m128 from = _mm_set1_ps(-ray.ahead);
  __m128 to = _mm_set1_ps(farthest + ray.ahead);
  for (int axis = 0; axis < 3; ++axis) {
    const __m128 first = _mm_load_ps(node.plane[ray.isDown[axis]][axis]);
    const __m128 second = _mm_load_ps(node.plane[1 - ray.isDown[axis]][axis]);
    from = _mm_max_ps(_mm_mul_ps(_mm_sub_ps(first, ray.enterFrom[axis]), ray.inverse[axis]), from);
    to = _mm_min_ps(_mm_mul_ps(_mm_sub_ps(second, ray.leaveFrom[axis]), ray.inverse[axis]), to);
  }
  _mm_store_ps(enter, from);
  return static_cast<unsigned>(_mm_movemask_ps(_mm_cmple_ps(from, to)));
}

// By the steps of IntersectRayTriangle, with the same roundings.
void DPickTree::Test(const Packet& packet, const DVector3& origin, const DVector3& direction, Best& best)
{
  const __m128 zero = _mm_setzero_ps();
  const __m128 one = _mm_set1_ps(1);
  const Four d = Four::Repeat(direction);
  const Four o = Four::Repeat(origin);
  const Four a = Four::Load(packet.corner);
  const Four e1 = Four::Load(packet.edge[0]);
  const Four e2 = Four::Load(packet.edge[1]);
  const Four p = Cross(d, e2);
  const __m128 det = Dot(e1, p);
  const __m128 isAlong =
      _mm_and_ps(_mm_cmpgt_ps(det, _mm_set1_ps(-PICK_EPSILON)), _mm_cmplt_ps(det, _mm_set1_ps(PICK_EPSILON)));
  const Four s{_mm_sub_ps(o.x, a.x), _mm_sub_ps(o.y, a.y), _mm_sub_ps(o.z, a.z)};
  const __m128 u = _mm_div_ps(Dot(s, p), det);
  const Four q = Cross(s, e1);
  const __m128 v = _mm_div_ps(Dot(d, q), det);
  const __m128 t = _mm_div_ps(Dot(e2, q), det);
  const __m128 isInside = _mm_and_ps(_mm_and_ps(_mm_cmpge_ps(u, zero), _mm_cmple_ps(u, one)),
                                     _mm_and_ps(_mm_cmpge_ps(v, zero), _mm_cmple_ps(_mm_add_ps(u, v), one)));
  const __m128 isAhead = _mm_and_ps(_mm_cmpgt_ps(t, zero), _mm_cmple_ps(t, _mm_set1_ps(best.t)));
  auto hits = static_cast<unsigned>(_mm_movemask_ps(_mm_andnot_ps(isAlong, _mm_and_ps(isInside, isAhead))));
  if (hits == 0)
    return;
  alignas(16) float ts[4];
  _mm_store_ps(ts, t);
  for (; hits != 0; hits &= hits - 1) {
    const int lane = __builtin_ctz(hits);
    if (ts[lane] < best.t || (ts[lane] == best.t && packet.number[lane] < best.number))
      best = {ts[lane], packet.number[lane]};
  }
}

void DPickTree::Prefetch(int link) const
{
  const char* const at = link < 0 ? reinterpret_cast<const char*>(&packets[static_cast<size_t>(~link)])
                                  : reinterpret_cast<const char*>(&nodes[static_cast<size_t>(link)]);
  __builtin_prefetch(at);
  __builtin_prefetch(at + 64);
  __builtin_prefetch(at + 128);
}

// The nearest box first.
void DPickTree::Descend(const Ray& ray, Best& best) const
{
  struct Waiting
  {
    float enter;
    int link;
  };
  std::array<Waiting, MAX_WAITING> waiting;
  size_t count = 0;
  Waiting at{-ray.ahead, root};
  for (;;) {
    if (at.enter <= best.t + ray.ahead) {
      if (at.link < 0) {
        Test(packets[static_cast<size_t>(~at.link)], ray.origin, ray.direction, best);
      } else {
        const Node& node = nodes[static_cast<size_t>(at.link)];
        alignas(16) float enter[4];
        const size_t bottom = count;
        for (unsigned met = Meet(node, ray, best.t, enter); met != 0; met &= met - 1) {
          const int i = __builtin_ctz(met);
          size_t to = count++;
          for (; to > bottom && waiting[to - 1].enter < enter[i]; --to)
            waiting[to] = waiting[to - 1];
          waiting[to] = {enter[i], node.link[i]};
          Prefetch(node.link[i]);
        }
      }
    }
    if (count == 0)
      return;
    at = waiting[--count];
  }
}

void DPickTree::Answer(const DGeode& geode, const DVector3& origin, const DVector3& direction, const Best& best,
                       GeodeHit& hit) const
{
  const auto after = std::upper_bound(stamps.begin(), stamps.end(), best.number,
                                      [](uint32_t number, const Stamp& stamp) { return number < stamp.first; });
  const auto g = static_cast<size_t>(after - stamps.begin() - 1);
  const uint32_t triangle = best.number - stamps[g].first;
  Corners corners{};
  CornersOf(*geode.geob[g], triangle, corners);
  hit = {geode.geob[g].get(),
         static_cast<int>(triangle),
         best.t,
         origin + direction * best.t,
         {corners.a, corners.b, corners.c}};
}

bool DPickTree::Intersect(const DGeode& geode, const DVector3& origin, const DVector3& direction, GeodeHit& hit) const
{
  const float length = glm::length(direction);
  if (!IsFit(origin) || !(length > 1e-3f && length < 1e3f))
    return IntersectRayGeode(geode, origin, direction, hit);
  Best best{DGeode::FAR, NO_TRIANGLE};
  if (!nodes.empty() || !packets.empty()) {
    // To the box's farthest corner, and an edge more.
    const float distance =
        glm::length(glm::max(glm::abs(min - origin), glm::abs(max - origin))) + glm::distance(min, max);
    Descend(Ray(origin, direction, distance, length), best);
  }
  if (best.t == DGeode::FAR)
    best.number = NO_TRIANGLE; // a hit must be nearer
  for (const uint32_t number : odd) {
    GeodeHit one;
    Answer(geode, origin, direction, {0, number}, one);
    float t = 0;
    if (IntersectRayTriangle(origin, direction, one.corner[0], one.corner[1], one.corner[2], t) && t > 0 &&
        (t < best.t || (t == best.t && number < best.number && best.number != NO_TRIANGLE)))
      best = {t, number};
  }
  if (best.number == NO_TRIANGLE)
    return false;
  Answer(geode, origin, direction, best, hit);
  return true;
}

bool PickGeode(const DGeode& geode, const DVector3& origin, const DVector3& direction, GeodeHit& hit)
{
  if (!geode.pickTree || !geode.pickTree->IsOf(geode)) {
    geode.pickTree.reset();
    size_t triangles = 0;
    for (const auto& geob : geode.geob)
      triangles += geob->index.size() / 3;
    if (triangles < MIN_TRIANGLES)
      return IntersectRayGeode(geode, origin, direction, hit);
    geode.pickTree = std::make_unique<DPickTree>(geode);
  }
  return geode.pickTree->Intersect(geode, origin, direction, hit);
}
