#include "geometry/dtexturepool.h"

#include "foundation/qmatch.h"
#include "foundation/qreport.h"

void DTexturePool::Add(std::string_view name, DTexture* texture)
{
  if (byName.contains(name))
    return;
  if (entries.size() >= MAX_TEXTURES) {
    QWARN("DTexturePool:Add(); max reached (%d)", MAX_TEXTURES);
    return;
  }
  const auto entry = entries.insert(entries.end(), {std::string(name), texture});
  byName[entry->name] = entry;
  byTexture.emplace(texture, entry);
}

DTexturePtr DTexturePool::Find(std::string_view name) const
{
  const auto known = byName.find(name);
  return known == byName.end() ? nullptr : DTexturePtr(known->second->texture);
}

void DTexturePool::Remove(const DTexture* texture)
{
  if (!texture) {
    QWARN("DTexturePool:Remove() null arg\n");
    return;
  }
  const auto [first, last] = byTexture.equal_range(texture);
  for (auto at = first; at != last; ++at) {
    byName.erase(at->second->name);
    entries.erase(at->second);
  }
  byTexture.erase(first, last);
}

void DTexturePool::Empty()
{
  byTexture.clear();
  byName.clear();
  entries.clear();
}

void DTexturePool::FindAll(const char* pattern, const std::function<void(DTexture&)>& callback) const
{
  QDBG("DTexturePool:FindAll(%s)\n", pattern);
  for (const Entry& e : entries)
    if (QMatch(pattern, e.name.c_str()))
      callback(*e.texture);
}
