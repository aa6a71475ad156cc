#include "geometry/dtexturepool.h"

#include "foundation/qmatch.h"
#include "foundation/qreport.h"
#include "geometry/dtexture.h"

#include <algorithm>

void DTexturePool::Add(std::string_view name, const std::shared_ptr<DTexture>& texture)
{
  const std::string key(name);
  if (const auto known = byName.find(key); known != byName.end()) {
    // One whose last user is gone makes room for the new one.
    if (auto& entry = entries[known->second]; entry.texture.expired())
      entry.texture = texture;
    return;
  }
  if (entries.size() >= MAX_TEXTURES)
    DropUnused();
  if (entries.size() >= MAX_TEXTURES) {
    QWARN("DTexturePool:Add(); max reached (%d)", MAX_TEXTURES);
    return;
  }
  byName[key] = entries.size();
  entries.push_back({key, texture});
}

std::shared_ptr<DTexture> DTexturePool::Find(std::string_view name) const
{
  const auto known = byName.find(std::string(name));
  return known == byName.end() ? nullptr : entries[known->second].texture.lock();
}

void DTexturePool::Remove(const DTexture* texture)
{
  if (!texture) {
    QWARN("DTexturePool:Remove() null arg\n");
    return;
  }
  Erase([&](const Entry& e) { return e.texture.lock().get() == texture; });
}

void DTexturePool::Empty()
{
  entries.clear();
  byName.clear();
}

void DTexturePool::FindAll(const char* pattern, const std::function<void(DTexture&)>& callback) const
{
  QDBG("DTexturePool:FindAll(%s)\n", pattern);
  for (const Entry& e : entries)
    if (const auto texture = e.texture.lock(); texture && QMatch(pattern, e.name.c_str()))
      callback(*texture);
}

void DTexturePool::DropUnused()
{
  Erase([](const Entry& e) { return e.texture.expired(); });
}

void DTexturePool::Erase(const std::function<bool(const Entry&)>& which)
{
  std::erase_if(entries, which);
  byName.clear();
  for (size_t i = 0; i < entries.size(); ++i)
    byName[entries[i].name] = i;
}
