#include "geometry/daabbtree.h"

#include "foundation/qreport.h"
#include "geometry/dgeode.h"

#include <algorithm>
#include <cmath>

namespace {

// What the build moves about for a triangle: its box, its centre and its number, in two vectors and a tail. The upper
// corner is negated, so that one minimum of each vector gathers a box; the centre's parts in them are gathered along.
struct Item
{
  DVector3 min;
  float centerX;
  DVector3 negMax;
  float centerY;
  float centerZ;
  int number;

  float Center(int axis) const { return axis == 0 ? centerX : axis == 1 ? centerY : centerZ; }
};

// A box in the form of an item's.
struct Gathered
{
  __m128 min;
  __m128 negMax;
};

__m128 Lower(const Item& item)
{
  return _mm_loadu_ps(&item.min.x);
}

__m128 Upper(const Item& item)
{
  return _mm_loadu_ps(&item.negMax.x);
}

Gathered GatheredNothing()
{
  return {_mm_set1_ps(DAABB::FAR), _mm_set1_ps(DAABB::FAR)};
}

// The second operand stays where the first is no number.
void Gather(Gathered& box, const Item& item)
{
  box.min = _mm_min_ps(Lower(item), box.min);
  box.negMax = _mm_min_ps(Upper(item), box.negMax);
}

DAABB BoxOf(const Gathered& gathered)
{
  alignas(16) float min[4];
  alignas(16) float negMax[4];
  _mm_store_ps(min, gathered.min);
  _mm_store_ps(negMax, gathered.negMax);
  return {{{min[0], min[1], min[2]}, {-negMax[0], -negMax[1], -negMax[2]}}};
}

struct Cut
{
  int axis;
  float middle;
};

Cut CutOf(const DAABB& box)
{
  const DVector3 side = box.max - box.min;
  const int axis = side.x > side.y && side.x > side.z ? 0 : side.y > side.z ? 1 : 2;
  return {axis, (box.min[axis] + box.max[axis]) * 0.5f};
}

Item ItemOf(const DAABBPolyInfo& record, int number)
{
  DAABB box = DAABB::Nothing();
  for (const DVector3& corner : record.corner)
    box.Include(corner);
  const DVector3 center = (record.corner[0] + record.corner[1] + record.corner[2]) * 0.3333333f;
  return {box.min, center.x, -box.max, center.y, center.z, number};
}

// A node's list: items that lie side by side in one of two buffers. The head is the first, or for reversed the last.
struct List
{
  size_t begin;
  size_t count;
  int buffer;
  bool reversed;
};

struct Halves
{
  List list[2];
  Gathered box[2];
};

} // namespace

// Splits lists as linked ones would be split: a record goes to the head of its side's list. On the left side they are
// laid down upward, so that the list is read backward, on the right side downward from the end.
class DAABBTree::Builder
{
public:
  explicit Builder(DAABBTree& owner) : tree(owner)
  {
    const size_t count = tree.poly.size();
    buffer[0].resize(count);
    buffer[1].resize(count);
    order.resize(count);
  }
  void Build()
  {
    const size_t count = tree.poly.size();
    Gathered box = GatheredNothing();
    for (size_t i = 0; i < count; ++i) {
      const Item& item = buffer[0][i] = ItemOf(tree.poly[i], static_cast<int>(i));
      Gather(box, item);
      for (int axis = 0; axis < 3; ++axis)
        tree.isOrderly = tree.isOrderly && item.min[axis] <= -item.negMax[axis];
    }
    tree.root = BoxOf(box);
    const List all{0, count, 0, true}; // the last record that was pushed is the head
    if (count > RUN_SIZE)
      SplitNode(all, box, 1);
    else
      SplitRun(all, box);
    MovePolys();
  }

private:
  static Halves Ends(const List& list, size_t lefts)
  {
    const int to = 1 - list.buffer;
    return {{{list.begin, lefts, to, true}, {list.begin + lefts, list.count - lefts, to, false}}, {}};
  }

  // Without a branch on the side, which nothing foretells.
  template <int STEP>
  Halves Divide(const List& list, const Cut& cut)
  {
    const Item* from = &buffer[list.buffer][STEP > 0 ? list.begin : list.begin + list.count - 1];
    const size_t offset = cut.axis == 0 ? 3 : cut.axis == 1 ? 7 : 8;
    Item* left = &buffer[1 - list.buffer][list.begin];
    Item* const start = left;
    Item* right = left + list.count;
    Gathered lefts = GatheredNothing();
    Gathered rights = lefts;
    const __m128 nothing = lefts.min;
    const __m128 middle = _mm_set1_ps(cut.middle);
    for (size_t i = 0; i < list.count; ++i, from += STEP) {
      const __m128 below = _mm_cmplt_ps(_mm_load1_ps(&from->min.x + offset), middle);
      const __m128 lower = Lower(*from);
      const __m128 upper = Upper(*from);
      const auto isLeft = static_cast<size_t>(_mm_movemask_ps(below) & 1);
      Item* const to = isLeft ? left : right - 1;
      left += isLeft;
      right -= 1 - isLeft;
      *to = *from;
      const __m128 far = _mm_and_ps(below, nothing);
      const __m128 farLeft = _mm_andnot_ps(below, nothing);
      lefts.min = _mm_min_ps(_mm_or_ps(_mm_and_ps(below, lower), farLeft), lefts.min);
      lefts.negMax = _mm_min_ps(_mm_or_ps(_mm_and_ps(below, upper), farLeft), lefts.negMax);
      rights.min = _mm_min_ps(_mm_or_ps(_mm_andnot_ps(below, lower), far), rights.min);
      rights.negMax = _mm_min_ps(_mm_or_ps(_mm_andnot_ps(below, upper), far), rights.negMax);
    }
    Halves halves = Ends(list, static_cast<size_t>(left - start));
    halves.box[0] = lefts;
    halves.box[1] = rights;
    return halves;
  }

  Gathered BoxOfList(const List& list) const
  {
    Gathered box = GatheredNothing();
    for (size_t i = 0; i < list.count; ++i)
      Gather(box, buffer[list.buffer][list.begin + i]);
    return box;
  }

  // All on one side: the first half of that list stays there, the rest moves over.
  void Share(Halves& halves) const
  {
    const int full = halves.list[0].count > 0 ? 0 : 1;
    const List all = halves.list[full];
    const size_t stay = (all.count - 1) / 2 + 1;
    List& staying = halves.list[full];
    List& moving = halves.list[1 - full];
    staying = moving = all;
    staying.count = stay;
    moving.count = all.count - stay;
    (all.reversed ? staying.begin : moving.begin) += all.reversed ? moving.count : staying.count;
    for (int side = 0; side < 2; ++side)
      halves.box[side] = BoxOfList(halves.list[side]);
  }

  Halves Halve(const List& list, const Gathered& box)
  {
    const Cut cut = CutOf(BoxOf(box));
    Halves halves = list.reversed ? Divide<-1>(list, cut) : Divide<1>(list, cut);
    if (halves.list[0].count == 0 || halves.list[1].count == 0)
      Share(halves);
    return halves;
  }

  // Leaves get their numbers in the order in which a query meets them.
  void Leaf(const Item& item) { order[leaves++] = item.number; }

  // The commonest list: by hand.
  void SplitTwo(const List& list, const Gathered& box)
  {
    const Item* const items = &buffer[list.buffer][list.begin];
    const Item& first = items[list.reversed ? 1 : 0];
    const Item& second = items[list.reversed ? 0 : 1];
    const Cut cut = CutOf(BoxOf(box));
    const bool firstLeft = first.Center(cut.axis) < cut.middle;
    const bool secondLeft = second.Center(cut.axis) < cut.middle;
    // Together on the right the later one is the head and stays; together on the left too.
    const bool isFirstLeft = firstLeft != secondLeft ? firstLeft : !firstLeft;
    Leaf(isFirstLeft ? first : second);
    Leaf(isFirstLeft ? second : first);
  }

  // Only the order is kept.
  void SplitRun(const List& list, const Gathered& box)
  {
    if (list.count == 2)
      return SplitTwo(list, box);
    if (list.count == 1)
      return Leaf(buffer[list.buffer][list.begin]);
    const Halves halves = Halve(list, box);
    for (int side = 0; side < 2; ++side)
      SplitRun(halves.list[side], halves.box[side]);
  }

  static void SetChild(Node& node, size_t q, const Gathered& gathered, int link, int end)
  {
    alignas(16) float min[4];
    alignas(16) float negMax[4];
    _mm_store_ps(min, gathered.min);
    _mm_store_ps(negMax, gathered.negMax);
    node.minX[q] = min[0];
    node.minY[q] = min[1];
    node.minZ[q] = min[2];
    node.maxX[q] = -negMax[0];
    node.maxY[q] = -negMax[1];
    node.maxZ[q] = -negMax[2];
    node.link[q] = link;
    node.end[q] = end;
  }

  int SplitNode(const List& list, const Gathered& box, int level)
  {
    tree.depth = std::max(tree.depth, level);
    const size_t at = tree.nodes.size();
    tree.nodes.emplace_back();
    std::array<List, 4> part;
    std::array<Gathered, 4> partBox;
    size_t parts = 0;
    const auto add = [&](const Halves& halves, int side) {
      part[parts] = halves.list[side];
      partBox[parts++] = halves.box[side];
    };
    const Halves halves = Halve(list, box);
    for (int side = 0; side < 2; ++side) {
      if (halves.list[side].count <= RUN_SIZE) {
        add(halves, side);
        continue;
      }
      const Halves quarters = Halve(halves.list[side], halves.box[side]);
      add(quarters, 0);
      add(quarters, 1);
    }
    for (size_t q = 0; q < parts; ++q) {
      int link = SHORT_RUN;
      if (part[q].count > RUN_SIZE)
        link = SplitNode(part[q], partBox[q], level + 1);
      else
        SplitRun(part[q], partBox[q]);
      SetChild(tree.nodes[at], q, partBox[q], link, static_cast<int>(leaves));
    }
    for (size_t q = parts; q < 4; ++q) // no number: meets nothing
      SetChild(tree.nodes[at], q, {_mm_set1_ps(NAN), _mm_set1_ps(NAN)}, SHORT_RUN, static_cast<int>(leaves));
    return static_cast<int>(at);
  }

  // The records take the memory of one of the buffers, which was touched before.
  void MovePolys()
  {
    constexpr size_t AHEAD = 8;
    buffer[0] = {};
    DArray<DAABBPolyInfo> ordered(order.size());
    for (size_t i = 0; i < order.size(); ++i) {
      if (i + AHEAD < order.size())
        __builtin_prefetch(&tree.poly[static_cast<size_t>(order[i + AHEAD])]);
      ordered[i] = tree.poly[static_cast<size_t>(order[i])];
    }
    tree.poly.swap(ordered);
  }

  DAABBTree& tree;
  DArray<int> order; // the records, leaf by leaf
  DArray<Item> buffer[2];
  size_t leaves = 0;
};

void DAABBTree::AddGeob(const DGeob& geob)
{
  for (size_t i = 0; i + 2 < geob.index.size(); i += 3) {
    const uint16_t* corner = &geob.index[i];
    if (*std::max_element(corner, corner + 3) < geob.vertex.size())
      AddPoly({{geob.vertex[corner[0]], geob.vertex[corner[1]], geob.vertex[corner[2]]}});
  }
}

void DAABBTree::AddGeode(const DGeode& geode)
{
  for (const auto& geob : geode.geob)
    AddGeob(*geob);
}

void DAABBTree::Finish()
{
  if (finished)
    return;
  finished = true;
  if (poly.size() > MAX_POLYS) {
    QERR("DAABBTree:Finish(); %zu polys, but a tree holds at most %zu", poly.size(), MAX_POLYS);
    poly.resize(MAX_POLYS);
  }
  if (!poly.empty())
    Builder(*this).Build();
}

// Both children of a node with these triangles, by the rule that put them into their order.
void DAABBTree::DbgPrintRun(size_t begin, size_t count, int level) const
{
  const auto boxOf = [this](size_t from, size_t n) {
    DAABB box = DAABB::Nothing();
    for (size_t i = from; i < from + n; ++i)
      for (const DVector3& corner : poly[i].corner)
        box.Include(corner);
    return box;
  };
  const Cut cut = CutOf(boxOf(begin, count));
  size_t lefts = 0;
  while (lefts < count && ItemOf(poly[begin + lefts], 0).Center(cut.axis) < cut.middle)
    ++lefts;
  const size_t stay = (count - 1) / 2 + 1;
  if (lefts == count)
    lefts = stay;
  else if (lefts == 0)
    lefts = count - stay;
  for (const auto& [from, n] : {std::pair(begin, lefts), std::pair(begin + lefts, count - lefts)}) {
    boxOf(from, n).DbgPrint((std::string(static_cast<size_t>(level), ' ') + (n == 1 ? "leaf" : "node")).c_str());
    if (n > 1)
      DbgPrintRun(from, n, level + 1);
  }
}

void DAABBTree::DbgPrint() const
{
  root.DbgPrint("root");
  if (finished && poly.size() > 1)
    DbgPrintRun(0, poly.size(), 1);
  QDBG("Total #nodes: %d, total #polys: %d\n", NodeCount(), PolyCount());
}
