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

// A node as it lies in memory. Two children lie side by side, the left one first.
struct alignas(16) DAABBNode
{
  DVector3 min;
  int link; // to the pair of children; below 0: ~number of the one triangle
  DVector3 max;
  int unused = 0;

  bool IsLeaf() const { return link < 0; }
  int Poly() const { return ~link; }
  DBox Box() const { return {min, max}; }
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
  struct Pair
  {
    DAABBNode child[2];
  };
  // Both children against the box, moved apart by the margin: bit 0 for the left one, bit 1 for the right one.
  static unsigned Overlap(const Pair& pair, __m128 min, __m128 max)
  {
    const auto apart = [&](const DAABBNode& node) {
      const __m128 from = _mm_load_ps(&node.min.x);
      const __m128 to = _mm_load_ps(&node.max.x);
      return _mm_movemask_ps(_mm_and_ps(_mm_cmple_ps(from, max), _mm_cmpge_ps(to, min))) & 7;
    };
    return static_cast<unsigned>(apart(pair.child[0]) == 7) | static_cast<unsigned>(apart(pair.child[1]) == 7) << 1;
  }
  void DbgPrintPair(int link, int depth) const;

  DArray<DAABBPolyInfo> poly;
  DArray<Pair> pairs; // the root's children first
  DAABB root = DAABB::Nothing();
  int depth = 0;
  bool finished = false;
};

template <typename Callback>
bool DAABBTree::Query(const DBox& box, Callback&& callback) const
{
  if (!finished || poly.empty())
    return true;
  if (pairs.empty())
    return callback(poly.front());
  const __m128 min = _mm_setr_ps(box.min.x - DAABB::MARGIN, box.min.y - DAABB::MARGIN, box.min.z - DAABB::MARGIN, 0);
  const __m128 max = _mm_setr_ps(box.max.x + DAABB::MARGIN, box.max.y + DAABB::MARGIN, box.max.z + DAABB::MARGIN, 0);
  // On the way down at most one right child a level waits.
  std::array<int, 128> shallow;
  std::vector<int> deep(static_cast<size_t>(depth) > shallow.size() ? static_cast<size_t>(depth) : 0);
  int* const waiting = deep.empty() ? shallow.data() : deep.data();
  int count = 0;
  int link = 0;
  for (;;) {
    if (link < 0) {
      if (!callback(poly[static_cast<size_t>(~link)]))
        return false;
    } else {
      const Pair& pair = pairs[static_cast<size_t>(link)];
      const unsigned met = Overlap(pair, min, max);
      if (met == 3)
        waiting[count++] = pair.child[1].link;
      if (met != 0) {
        link = pair.child[met == 2].link;
        continue;
      }
    }
    if (count == 0)
      return true;
    link = waiting[--count];
  }
}
