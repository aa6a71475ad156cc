#pragma once

#include "geometry/daabb.h"
#include "geometry/dblock.h"

#include <array>
#include <cstdint>
#include <emmintrin.h>
#include <vector>

class DGeob;
class DGeode;

// A triangle in a tree, by value: the arrays that it came from may move while the tree lives.
struct DAABBPolyInfo
{
  static constexpr int NO_USER = -1;
  std::array<DVector3, 3> corner;
  int user = NO_USER; // the tree's user's own number for it
};

// Which triangles lie in a box: a binary tree over triangles of any number of models, one in each leaf.
// Filled, finished once, then only read; many threads may query at once.
class DAABBTree
{
public:
  // More aren't taken (reported by Finish).
  static constexpr size_t MAX_POLYS = size_t(1) << 30;

  void Reserve(size_t polys) { poly.reserve(polys); }
  // Of no effect after Finish.
  void AddPoly(const DAABBPolyInfo& record)
  {
    if (!finished)
      poly.push_back(record);
  }
  // In place of what was added; of no effect after Finish.
  void TakePolys(DArray<DAABBPolyInfo> records)
  {
    if (!finished)
      poly = std::move(records);
  }
  // A record for each triangle, without a user's number. Triangles with an index out of range are left out.
  void AddGeob(const DGeob& geob);
  void AddGeode(const DGeode& geode);
  // Builds the tree. A second call does nothing.
  void Finish();

  // Before Finish the records in the order they were added in, afterwards in the order in which a query meets them.
  const DArray<DAABBPolyInfo>& Polys() const { return poly; }
  int PolyCount() const { return static_cast<int>(poly.size()); }
  int NodeCount() const { return poly.empty() || !finished ? 1 : 2 * PolyCount() - 1; }
  // Of all triangles; DAABB::Nothing() before Finish and without triangles.
  const DAABB& Box() const { return root; }
  void DbgPrint() const;

  // Calls callback(const DAABBPolyInfo&) -> bool for the triangle of each leaf whose box meets the box, and for a
  // tree's only triangle in any case. False when a callback gave false, which ends the search.
  template <typename Callback>
  bool Query(const DBox& box, Callback&& callback) const;

private:
  class Builder;
  // The tree as it is told of has two children a node and one triangle a leaf. Leaves are numbered in the order in
  // which a query meets them, so a subtree is a run of the triangles; and a leaf's box lies in its parents', so a query
  // may look at any of these on its way. Hence four children side by side, grandchildren of the binary tree, and short
  // runs of triangles that are looked at one by one.
  struct alignas(64) Node
  {
    float minX[4], maxX[4];
    float minY[4], maxY[4];
    float minZ[4], maxZ[4];
    int link[4]; // to a node; below 0: a run
    int end[4];  // of the child's triangles; they begin where the child before it ends
  };
  static constexpr int SHORT_RUN = -1;   // triangles to look at
  static constexpr int WITHIN = -2;      // triangles that all lie in the box
  static constexpr size_t RUN_SIZE = 16; // triangles a short run, at most; fewer would make more nodes to wait for
  static constexpr int CACHE_LINE = 64;
  struct Range
  {
    int link;
    int first;
    int end;
  };
  // A box's sides, moved apart by the margin.
  struct Sides
  {
    explicit Sides(const DBox& box) : min(box.min - DAABB::MARGIN), max(box.max + DAABB::MARGIN) {}
    DVector3 min;
    DVector3 max;
  };
  class Waiting;
  struct Children
  {
    unsigned met;
    unsigned within;
  };
  static Children Overlap(const Node& node, const Sides& sides);
  static bool Meets(const DAABBPolyInfo& record, const Sides& sides);
  unsigned Meeting(const Range& run, const Sides& sides) const;
  void Prefetch(const Range& range) const;
  Range Descend(const Range& range, const Sides& sides, Waiting& waiting) const;
  void DbgPrintRun(size_t begin, size_t count, int level) const;

  DArray<DAABBPolyInfo> poly;
  DArray<Node> nodes; // the root first; none when all triangles are one short run
  DAABB root = DAABB::Nothing();
  int depth = 0;         // of the nodes
  bool isOrderly = true; // no triangle's box is inside out
  bool finished = false;
};

// Ranges that a query comes back to, the next one last. On the way down at most three wait at a level.
class DAABBTree::Waiting
{
public:
  explicit Waiting(int depth) :
      deep(3 * static_cast<size_t>(depth) > shallow.size() ? 3 * static_cast<size_t>(depth) : 0),
      range(deep.empty() ? shallow.data() : deep.data())
  {}
  bool IsEmpty() const { return count == 0; }
  void Push(const Range& r) { range[count++] = r; }
  Range Pop() { return range[--count]; }

private:
  std::array<Range, 96> shallow;
  std::vector<Range> deep;
  Range* range;
  int count = 0;
};

inline DAABBTree::Children DAABBTree::Overlap(const Node& node, const Sides& sides)
{
  __m128 met = _mm_castsi128_ps(_mm_set1_epi32(-1));
  __m128 within = met;
  const auto axis = [&](const float* from, const float* to, float low, float high) {
    const __m128 min = _mm_load_ps(from);
    const __m128 max = _mm_load_ps(to);
    const __m128 lower = _mm_set1_ps(low);
    const __m128 upper = _mm_set1_ps(high);
    met = _mm_and_ps(met, _mm_and_ps(_mm_cmple_ps(min, upper), _mm_cmpge_ps(max, lower)));
    within = _mm_and_ps(within, _mm_and_ps(_mm_cmpge_ps(min, lower), _mm_cmple_ps(max, upper)));
  };
  axis(node.minX, node.maxX, sides.min.x, sides.max.x);
  axis(node.minY, node.maxY, sides.min.y, sides.max.y);
  axis(node.minZ, node.maxZ, sides.min.z, sides.max.z);
  return {static_cast<unsigned>(_mm_movemask_ps(met)), static_cast<unsigned>(_mm_movemask_ps(within))};
}

// Against the box of a leaf, which isn't kept: its corners are at hand.
inline bool DAABBTree::Meets(const DAABBPolyInfo& record, const Sides& sides)
{
  const DVector3* const corner = record.corner.data();
  __m128 min = _mm_set1_ps(DAABB::FAR);
  __m128 max = _mm_set1_ps(-DAABB::FAR);
  for (int i = 0; i < 3; ++i) {
    const __m128 at = _mm_loadu_ps(&corner[i].x); // reaches into what follows, at last into the user's number
    min = _mm_min_ps(at, min);                    // the second operand stays where the first is no number
    max = _mm_max_ps(at, max);
  }
  const __m128 lower = _mm_setr_ps(sides.min.x, sides.min.y, sides.min.z, 0);
  const __m128 upper = _mm_setr_ps(sides.max.x, sides.max.y, sides.max.z, 0);
  return (_mm_movemask_ps(_mm_and_ps(_mm_cmple_ps(min, upper), _mm_cmpge_ps(max, lower))) & 7) == 7;
}

// A bit for each record of a short run; without a branch on the answers, which nothing foretells.
inline unsigned DAABBTree::Meeting(const Range& run, const Sides& sides) const
{
  unsigned met = 0;
  const DAABBPolyInfo* const record = &poly[static_cast<size_t>(run.first)];
  for (int i = 0; i < run.end - run.first; ++i)
    met |= static_cast<unsigned>(Meets(record[i], sides)) << i;
  return met;
}

// Asks for what a range's turn will read, so that the ranges of a node come from memory together.
inline void DAABBTree::Prefetch(const Range& range) const
{
  if (range.link >= 0) {
    const char* const node = reinterpret_cast<const char*>(&nodes[static_cast<size_t>(range.link)]);
    __builtin_prefetch(node);
    __builtin_prefetch(node + CACHE_LINE);
    return;
  }
  const char* const from = reinterpret_cast<const char*>(&poly[static_cast<size_t>(range.first)]);
  for (int line = 0; line < 4; ++line) // of an average run; beyond the last record of all it does no harm
    __builtin_prefetch(from + line * CACHE_LINE);
  __builtin_prefetch(reinterpret_cast<const char*>(poly.data() + range.end) - 1);
}

// Into the first child that meets the box; the others wait. Without one: a range of nothing.
inline DAABBTree::Range DAABBTree::Descend(const Range& range, const Sides& sides, Waiting& waiting) const
{
  const Node& node = nodes[static_cast<size_t>(range.link)];
  const Children children = Overlap(node, sides);
  const unsigned within = isOrderly ? children.within : 0;
  Range next{WITHIN, 0, 0};
  for (unsigned met = children.met; met != 0;) {
    const int q = 31 - __builtin_clz(met);
    met ^= 1U << q;
    next = {within >> q & 1 ? WITHIN : node.link[q], q > 0 ? node.end[q - 1] : range.first, node.end[q]};
    Prefetch(next);
    if (met != 0)
      waiting.Push(next);
  }
  return next;
}

template <typename Callback>
bool DAABBTree::Query(const DBox& box, Callback&& callback) const
{
  if (!finished || poly.empty())
    return true;
  if (poly.size() == 1)
    return callback(poly.front());
  const Sides sides(box);
  Waiting waiting(depth);
  Range range{nodes.empty() ? SHORT_RUN : 0, 0, PolyCount()};
  for (;;) {
    if (range.link >= 0) {
      range = Descend(range, sides, waiting);
      if (range.link >= 0)
        continue;
    }
    if (range.link == SHORT_RUN) {
      for (unsigned met = Meeting(range, sides); met != 0; met &= met - 1)
        if (!callback(poly[static_cast<size_t>(range.first + __builtin_ctz(met))]))
          return false;
    } else {
      for (int i = range.first; i < range.end; ++i)
        if (!callback(poly[static_cast<size_t>(i)]))
          return false;
    }
    if (waiting.IsEmpty())
      return true;
    range = waiting.Pop();
  }
}
