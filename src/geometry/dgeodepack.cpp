// Removes unused vertices and orders the rest. Both keep every array of a vertex in step.

#include "foundation/qreport.h"
#include "geometry/dgeode.h"
#include "geometry/dgeodeoptimize.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <new>
#include <type_traits>

namespace {

// One entry for each value that an index can have. On the stack: a fresh block's first touch costs more than the work.
using NumberTable = std::array<uint16_t, DGeob::MAX_VERTICES>;

// For each value, whether an index has it: 1 or 0.
using Marks = std::array<uint8_t, DGeob::MAX_VERTICES>;

size_t CountMarks(const Marks& marks)
{
  size_t count = 0;
  for (size_t i = 0; i < marks.size(); i += sizeof(uint64_t)) {
    uint64_t eight;
    std::memcpy(&eight, &marks[i], sizeof eight);
    count += eight * 0x0101010101010101u >> 56; // the sum of its bytes
  }
  return count;
}

template <typename Work>
void ForEachVertexArray(DGeob& geob, Work work)
{
  work(geob.vertex);
  for (auto* array : {&geob.normal, &geob.vertexColor, &geob.baseVertex})
    if (!array->empty())
      work(*array);
  for (auto& channel : geob.texCoord)
    if (!channel.empty())
      work(channel);
  if (!geob.tangent.empty())
    work(geob.tangent);
}

// No vertex array that exists ends before count.
void FillUp(DGeob& geob, size_t count)
{
  ForEachVertexArray(geob, [count](auto& array) {
    if (array.size() < count)
      array.resize(count, typename std::decay_t<decltype(array)>::value_type(0.0f));
  });
}

} // namespace

int DGeobPackIndices(DGeob& geob)
{
  if (geob.index.empty())
    return 0;
  Marks used{};
  for (const uint16_t i : geob.index)
    used[i] = 1;
  const size_t count = CountMarks(used);
  size_t top = used.size() - 1;
  while (!used[top])
    --top;
  const size_t unused = top + 1 - count;
  try {
    FillUp(geob, top + 1);
  } catch (const std::bad_alloc&) {
    QERR("DGeobPackIndices() out of memory");
    return 0;
  }
  NumberTable number;
  for (size_t i = 0; i < number.size(); ++i)
    number[i] = static_cast<uint16_t>(i);
  for (size_t hole = 0; hole < count; ++hole) {
    if (used[hole])
      continue;
    while (!used[top])
      --top;
    number[top] = static_cast<uint16_t>(hole);
    ForEachVertexArray(geob, [hole, top](auto& array) { array[hole] = array[top]; });
    --top;
  }
  if (unused > 0)
    for (uint16_t& i : geob.index)
      i = number[i];
  ForEachVertexArray(geob, [count](auto& array) { array.resize(count); });
  geob.flags &= ~static_cast<uint32_t>(DGeob::BOX_VALID);
  return static_cast<int>(unused);
}

int DGeobSortVertices(DGeob& geob)
{
  const size_t count = std::min<size_t>(geob.vertex.size(), DGeob::MAX_VERTICES);
  DArray<DVector4> before; // room for an array of any kind
  try {
    FillUp(geob, count);
    before.resize(count);
  } catch (const std::bad_alloc&) {
    QERR("DGeobSortVertices() out of memory");
    return 0;
  }
  NumberTable place;  // where a vertex stands by now
  NumberTable vertex; // and which one stands at a place
  for (size_t i = 0; i < count; ++i)
    place[i] = vertex[i] = static_cast<uint16_t>(i);
  size_t next = 0;
  for (uint16_t& v : geob.index) {
    if (v >= count)
      continue;
    const uint16_t from = place[v];
    if (from >= next) {
      std::swap(vertex[from], vertex[next]);
      place[vertex[from]] = from;
      place[v] = static_cast<uint16_t>(next++);
    }
    v = place[v]; // a place below next is never given to another
  }
  ForEachVertexArray(geob, [&](auto& array) {
    using Entry = typename std::decay_t<decltype(array)>::value_type;
    static_assert(sizeof(Entry) <= sizeof(DVector4) && std::is_trivially_copyable_v<Entry>);
    auto* old = reinterpret_cast<Entry*>(before.data());
    std::copy_n(array.data(), count, old);
    for (size_t i = 0; i < count; ++i)
      array[i] = old[vertex[i]];
  });
  return 0;
}
