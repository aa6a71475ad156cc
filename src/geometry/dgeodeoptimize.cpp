#include "geometry/dgeodeoptimize.h"

#include "foundation/qreport.h"
#include "geometry/dgeode.h"

#include <algorithm>
#include <new>

namespace {

// A later burst takes the id of the first one of its material, since several ids can lead to one.
void UnifyMaterialIds(DGeob& geob)
{
  for (size_t i = 0; i < geob.burst.size(); ++i)
    for (size_t j = i + 1; j < geob.burst.size(); ++j)
      if (geob.GetMaterial(geob.burst[i].mtlID) == geob.GetMaterial(geob.burst[j].mtlID))
        geob.burst[j].mtlID = geob.burst[i].mtlID;
}

// The joined bursts; their indices go to index, as far as it reaches.
std::vector<DBurst> JoinedBursts(DGeob& geob, DArray<uint16_t>& index)
{
  std::vector<DBurst> joined;
  size_t end = 0;
  for (size_t i = 0; i < geob.burst.size(); ++i) {
    bool opened = false;
    for (size_t j = i; j < geob.burst.size(); ++j) {
      const int32_t id = geob.burst[j].mtlID;
      if (id == -1 || id != geob.burst[i].mtlID)
        continue;
      if (!opened) {
        QDBG("New burst (%d) for b%d and b%d (mtlID %d)\n", static_cast<int>(joined.size()), static_cast<int>(i),
             static_cast<int>(j), id);
        joined.push_back({3 * static_cast<int32_t>(end), 0, id});
        opened = true;
      }
      auto indices = geob.BurstIndices(static_cast<int>(j));
      indices = indices.first(std::min(indices.size(), index.size() - end)); // bursts may overlap in a bad file
      QDBG("  adding %d indices\n", static_cast<int>(indices.size()));
      std::copy(indices.begin(), indices.end(), index.data() + end);
      end += indices.size();
      joined.back().count += 3 * static_cast<int32_t>(indices.size());
      if (j != i)
        geob.burst[j].mtlID = -1;
    }
  }
  QDBG("  at end: newStart=%d\n", static_cast<int>(end));
  return joined;
}

template <typename Step>
auto OverGeobs(DGeode& geode, Step step)
{
  decltype(step(*geode.geob[0])) sum = 0;
  for (const auto& g : geode.geob)
    sum += step(*g);
  return sum;
}

} // namespace

int DGeobOptimizeBursts(DGeob& geob)
{
  if (geob.index.empty() || geob.burst.size() < 2)
    return 0;
  DArray<uint16_t> index;
  try {
    index.resize(geob.index.size(), 0); // what no burst names ends up as triangles without area
  } catch (const std::bad_alloc&) {
    QWARN("DGeobOptimizeBursts: out of memory");
    return 0;
  }
  UnifyMaterialIds(geob);
  QDBG("Indices=%d\n", geob.IndexCount());
  const std::vector<DBurst> joined = JoinedBursts(geob, index);
  geob.index = std::move(index);
  const auto removed = static_cast<int>(geob.burst.size() - joined.size());
  geob.burst.resize(joined.size());
  for (size_t i = 0; i < joined.size(); ++i) { // vperP stays where it stands
    geob.burst[i].start = joined[i].start;
    geob.burst[i].count = joined[i].count;
    geob.burst[i].mtlID = joined[i].mtlID;
  }
  return removed;
}

int DGeobTriangulate(DGeob&)
{
  QERR("DGeobTriangulate() NYI");
  return 0;
}

int DGeodeOptimizeBursts(DGeode& geode)
{
  return OverGeobs(geode, DGeobOptimizeBursts);
}

int DGeodePackIndices(DGeode& geode)
{
  return OverGeobs(geode, DGeobPackIndices);
}

int DGeodeSortVertices(DGeode& geode)
{
  return OverGeobs(geode, DGeobSortVertices);
}

int64_t DGeodeOptimize(DGeode& geode)
{
  int64_t removed = DGeodeOptimizeBursts(geode);
  removed += DGeodeMergeVertices(geode);
  removed += DGeodePackIndices(geode);
  removed += DGeodeSortVertices(geode);
  return removed + DGeodeRemoveUnusedMaterials(geode);
}

void DGeodeSetLitMaterials(DGeode& geode)
{
  for (const auto& m : geode.material) {
    m->SetDiffuse(1, 1, 1, 1);
    m->emission.x = 0.8f;
  }
}

void DGeodeAddLighting(DGeode& geode)
{
  geode.RethinkNormals();
  DGeodeSetLitMaterials(geode);
}
