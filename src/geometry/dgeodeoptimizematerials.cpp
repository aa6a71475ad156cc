#include "foundation/qreport.h"
#include "geometry/dgeode.h"
#include "geometry/dgeodeoptimize.h"

#include <algorithm>
#include <unordered_set>

namespace {

void FlattenTo(DGeode& geode, size_t slot, size_t survivor)
{
  auto& m = geode.material[slot];
  m = std::unique_ptr<DMaterial>(std::move(m->sub[survivor]));
  for (const auto& g : geode.geob)
    if (g->materialRef == static_cast<int32_t>(slot))
      for (DBurst& b : g->burst)
        b.mtlID = 0;
}

} // namespace

int DGeodeFlattenMaterials(DGeode& geode)
{
  std::unordered_set<const DMaterial*> used;
  for (const auto& g : geode.geob)
    for (const DBurst& b : g->burst)
      used.insert(g->GetMaterial(b.mtlID));
  int removed = 0;
  for (size_t i = 0; i < geode.material.size(); ++i) {
    const DMaterial& m = *geode.material[i];
    if (used.contains(&m))
      continue;
    QDBG("Mat %d is unused - subs used? (%s)\n", static_cast<int>(i), m.name.c_str());
    const auto isUsed = [&](const auto& s) { return used.contains(s.get()); };
    if (std::count_if(m.sub.begin(), m.sub.end(), isUsed) != 1)
      continue;
    QDBG("Just 1 submat! Flatten submats into main\n");
    removed += m.SubCount() - 1;
    FlattenTo(geode, i, static_cast<size_t>(std::find_if(m.sub.begin(), m.sub.end(), isUsed) - m.sub.begin()));
  }
  return removed;
}

int DGeodeRemoveUnusedMaterials(DGeode& geode)
{
  const int flattened = DGeodeFlattenMaterials(geode);
  const int last = geode.GetNoofMaterials() - 1;
  if (last < 0)
    return flattened;
  // A number out of range leads to the nearest material, and goes on doing so.
  const auto slotOf = [last](const DGeob& g) { return static_cast<size_t>(std::clamp(g.materialRef, 0, last)); };
  std::vector<int32_t> number(geode.material.size(), -1);
  for (const auto& g : geode.geob)
    number[slotOf(*g)] = 0;
  std::vector<std::unique_ptr<DMaterial>> kept;
  for (size_t i = 0; i < number.size(); ++i) {
    if (number[i] < 0)
      continue;
    number[i] = static_cast<int32_t>(kept.size());
    kept.push_back(std::move(geode.material[i]));
  }
  const auto removed = static_cast<int>(number.size() - kept.size());
  geode.material = std::move(kept);
  for (const auto& g : geode.geob)
    g->materialRef = number[slotOf(*g)];
  return removed + flattened;
}
