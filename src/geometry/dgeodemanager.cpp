#include "geometry/dgeodemanager.h"

#include "foundation/qreport.h"

#include <algorithm>

int DGeodeManager::Load(const std::string& name, const std::string& fileName)
{
  const auto named = std::find_if(slots.begin(), slots.end(), [&](const Slot& s) { return s.geode && s.name == name; });
  if (named != slots.end()) {
    ++named->references;
    return static_cast<int>(named - slots.begin()) + 1;
  }
  auto geode = std::make_unique<DGeode>(fileName);
  if (!geode->ImportDOF(fileName)) {
    QWARN("Can't import DOF '%s'", fileName.c_str());
    return 0;
  }
  auto free = std::find_if(slots.begin(), slots.end(), [](const Slot& s) { return !s.geode; });
  if (free == slots.end()) {
    if (slots.size() >= MAX_GEODES) {
      QWARN("DGeodeManager:Load(%s); max (%d) reached", name.c_str(), MAX_GEODES);
      return 0;
    }
    free = slots.emplace(slots.end());
  }
  *free = {name, std::move(geode), 1};
  return static_cast<int>(free - slots.begin()) + 1;
}

void DGeodeManager::Release(int ref)
{
  if (!GetGeode(ref))
    return;
  Slot& slot = slots[static_cast<size_t>(ref - 1)];
  if (--slot.references == 0)
    slot.geode.reset();
}

DGeode* DGeodeManager::GetGeode(int ref) const
{
  if (ref < 1 || ref > static_cast<int>(slots.size())) {
    QWARN("DGeodeManager:GetGeode(ref %d) out of range", ref);
    return nullptr;
  }
  DGeode* geode = slots[static_cast<size_t>(ref - 1)].geode.get();
  if (!geode)
    QWARN("DGeodeManager:GetGeode(ref %d) gives 0-pointer", ref);
  return geode;
}
