#include "geometry/dtexturemanager.h"

#include "foundation/qbitmap.h"
#include "foundation/qreport.h"
#include "geometry/dtexture.h"

#include <algorithm>

DTextureManager::~DTextureManager()
{
  DbgPrint();
}

DTexturePtr DTextureManager::MakeObject(const std::string& name) const
{
  bool found = false;
  auto picture = d3LoadTextureMap(name, &found, true);
  if (!found) {
    QWARN("DTextureManager:MakeObject(%s) couldn't find image", name.c_str());
    return nullptr;
  }
  auto texture = std::make_unique<DBitMapTexture>(std::move(picture));
  texture->SetName(name.c_str());
  return texture;
}

int DTextureManager::Load(const std::string& name)
{
  if (const auto known = byName.find(name); known != byName.end()) {
    ++slots[static_cast<size_t>(known->second) - 1].references;
    return known->second;
  }
  auto texture = MakeObject(name);
  if (!texture)
    return 0;
  auto slot = std::ranges::find_if(slots, [](const Slot& s) { return !s.texture; });
  if (slot == slots.end())
    slot = slots.emplace(slots.end());
  *slot = {name, std::move(texture), 1};
  return byName[name] = static_cast<int>(slot - slots.begin()) + 1;
}

void DTextureManager::Release(int ref)
{
  if (!GetTexture(ref))
    return;
  Slot& slot = slots[static_cast<size_t>(ref) - 1];
  if (--slot.references > 0)
    return;
  byName.erase(slot.name);
  slot = {};
}

DTexture* DTextureManager::GetTexture(int ref) const
{
  if (ref < 1 || ref > static_cast<int>(slots.size())) {
    QERR("DTextureManager:GetTexture(ref %d) out of range", ref);
    return nullptr;
  }
  return slots[static_cast<size_t>(ref) - 1].texture.get();
}

void DTextureManager::DbgPrint() const
{
  const auto held = std::ranges::count_if(slots, [](const Slot& s) { return s.texture != nullptr; });
  if (held > 0)
    QWARN("DTextureManager:DbgPrint(); %d textures NOT RELEASED\n", static_cast<int>(held));
  else
    QDBG("DTextureManager:DbgPrint(); all textures released\n");
}
