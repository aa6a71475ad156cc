// Finds equal vertices by a hash over their bits. In number order, so that the lowest of them is the one that stays.

#include "foundation/qreport.h"
#include "geometry/dgeode.h"
#include "geometry/dgeodeoptimize.h"

#include <algorithm>
#include <array>
#include <bit>
#include <emmintrin.h>
#include <limits>
#include <new>

namespace {

// What makes two vertices equal, in three lanes: position, normal, both pairs of texture coordinates.
struct Key
{
  __m128 position;
  __m128 normal;
  __m128 texCoord;

  bool HasNaN() const
  {
    return _mm_movemask_ps(_mm_or_ps(_mm_cmpunord_ps(position, normal), _mm_cmpunord_ps(texCoord, texCoord))) != 0;
  }
  bool Equals(const Key& k) const
  {
    const __m128 same = _mm_and_ps(_mm_cmpeq_ps(position, k.position), _mm_cmpeq_ps(normal, k.normal));
    return _mm_movemask_ps(_mm_and_ps(same, _mm_cmpeq_ps(texCoord, k.texCoord))) == 0xf;
  }
  // Two chains side by side, since each step waits for a multiplication.
  uint32_t Hash() const
  {
    const __m128i p = Folded(position);
    const __m128i n = Folded(normal);
    const __m128i t = Folded(texCoord);
    const uint64_t a = Mixed(Mixed(Low(p)) ^ Low(n));
    const uint64_t b = Mixed(Mixed(Mixed(Low(_mm_unpackhi_epi32(p, n))) ^ Low(t)) ^ Low(_mm_unpackhi_epi64(t, t)));
    return static_cast<uint32_t>(Mixed(a + std::rotl(b, 23)));
  }

private:
  // -0 becomes 0: equal vertices have equal bits then.
  static __m128i Folded(__m128 lane) { return _mm_castps_si128(_mm_add_ps(lane, _mm_setzero_ps())); }
  static uint64_t Low(__m128i lane) { return static_cast<uint64_t>(_mm_cvtsi128_si64(lane)); }
  static uint64_t Mixed(uint64_t h)
  {
    h *= 0x9e3779b97f4a7c15u;
    return h ^ (h >> 32);
  }
};

// The keys of a geob's vertices. An array that doesn't exist, or ends early, counts as zeroes.
class Keys
{
public:
  explicit Keys(const DGeob& g) : position(g.vertex.data())
  {
    const size_t count = g.vertex.size();
    normal = Whole(g.normal, count, fullNormal);
    texCoord[0] = Whole(g.texCoord[0], count, fullTexCoord[0]);
    texCoord[1] = Whole(g.texCoord[1], count, fullTexCoord[1]);
  }
  Key At(size_t i) const
  {
    return {Three(position[i]), normal ? Three(normal[i]) : _mm_setzero_ps(),
            _mm_movelh_ps(Two(texCoord[0], i), Two(texCoord[1], i))};
  }

private:
  template <typename T>
  static const T* Whole(const DArray<T>& array, size_t count, DArray<T>& full)
  {
    if (array.empty() || array.size() >= count)
      return array.empty() ? nullptr : array.data();
    full = array;
    full.resize(count, T(0.0f));
    return full.data();
  }
  static __m128 Three(const DVector3& v)
  {
    return _mm_movelh_ps(_mm_castsi128_ps(_mm_loadu_si64(&v)), _mm_load_ss(&v.z));
  }
  static __m128 Two(const DVector2* v, size_t i)
  {
    return v ? _mm_castsi128_ps(_mm_loadu_si64(v + i)) : _mm_setzero_ps();
  }

  const DVector3* position;
  const DVector3* normal;
  std::array<const DVector2*, 2> texCoord;
  DArray<DVector3> fullNormal;
  std::array<DArray<DVector2>, 2> fullTexCoord;
};

// Kept from geob to geob. Number is 16 bits wide where that is enough, which keeps the table in the cache.
template <typename Number>
struct Tables
{
  static constexpr Number EMPTY = std::numeric_limits<Number>::max();
  DArray<Number> slot;    // open addressing: the lowest vertex of each class
  DArray<Number> lowest;  // of each vertex's class
  DArray<uint32_t> hash;  // of each class, at its lowest vertex
  DArray<uint32_t> above; // and how many came behind that

  void Prepare(size_t count)
  {
    const size_t slots = std::bit_ceil(2 * count + 2);
    slot.resize(slots);
    std::fill(slot.begin(), slot.end(), EMPTY);
    hash.resize(count);
    lowest.resize(count);
    above.resize(count);
  }
};

// The hashes of a run of vertices, ahead of their look-up: a wrong guess of whether a vertex is new then costs no hash.
class HashRun
{
public:
  static constexpr size_t LENGTH = 256;
  template <typename Number>
  HashRun(const Keys& keys, size_t first, size_t end, const DArray<Number>& slot)
  {
    for (size_t i = first; i < end; ++i) {
      const Key key = keys.At(i);
      hash[i - first] = key.Hash();
      isNaN[i - first] = key.HasNaN();
      _mm_prefetch(reinterpret_cast<const char*>(&slot[hash[i - first] & (slot.size() - 1)]), _MM_HINT_T0);
    }
  }
  std::array<uint32_t, LENGTH> hash;
  std::array<bool, LENGTH> isNaN;
};

// Gives the number of equal pairs, and fills lowest.
template <typename Number>
int64_t FindEqual(const Keys& keys, size_t count, Tables<Number>& t)
{
  const size_t mask = t.slot.size() - 1;
  int64_t pairs = 0;
  for (size_t first = 0; first < count; first += HashRun::LENGTH) {
    const size_t end = std::min(count, first + HashRun::LENGTH);
    const HashRun run(keys, first, end, t.slot);
    for (size_t i = first; i < end; ++i) {
      t.lowest[i] = static_cast<Number>(i);
      if (run.isNaN[i - first])
        continue;
      const uint32_t hash = run.hash[i - first];
      size_t at = hash & mask;
      Number other = t.slot[at];
      while (other != Tables<Number>::EMPTY && !(t.hash[other] == hash && keys.At(other).Equals(keys.At(i)))) {
        at = (at + 1) & mask;
        other = t.slot[at];
      }
      if (other == Tables<Number>::EMPTY) {
        t.slot[at] = static_cast<Number>(i); // the greatest number reads as empty, but then it is the last vertex
        t.hash[i] = hash;
        t.above[i] = 0;
      } else {
        t.lowest[i] = other;
        pairs += ++t.above[other];
      }
    }
  }
  return pairs;
}

template <typename Number>
int64_t Merge(DGeob& geob, Tables<Number>& tables)
{
  const size_t count = geob.vertex.size();
  tables.Prepare(count);
  const int64_t pairs = FindEqual(Keys(geob), count, tables);
  if (pairs > 0)
    for (uint16_t& i : geob.index)
      if (i < count)
        i = static_cast<uint16_t>(tables.lowest[i]);
  return pairs;
}

struct AllTables
{
  Tables<uint16_t> small;
  Tables<uint32_t> big;
};

int64_t Merge(DGeob& geob, AllTables& tables)
{
  try {
    return geob.vertex.size() <= DGeob::MAX_VERTICES ? Merge(geob, tables.small) : Merge(geob, tables.big);
  } catch (const std::bad_alloc&) {
    QERR("DGeobMergeVertices: out of memory");
    return 0;
  }
}

} // namespace

int64_t DGeobMergeVertices(DGeob& geob)
{
  AllTables tables;
  return Merge(geob, tables);
}

int64_t DGeodeMergeVertices(DGeode& geode)
{
  AllTables tables;
  int64_t merged = 0;
  for (const auto& g : geode.geob)
    merged += Merge(*g, tables);
  return merged;
}
