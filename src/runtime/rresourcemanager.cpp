#include "runtime/rresourcemanager.h"

#include "foundation/qreport.h"

const RResourceManager::Component* RResourceManager::At(int ref) const
{
  return ref >= 1 && ref <= static_cast<int>(components.size()) ? &components[static_cast<size_t>(ref - 1)] : nullptr;
}

int RResourceManager::Add(std::string_view key, Type type, void* component)
{
  if (const int ref = Find(key)) {
    Attach(ref);
    return ref;
  }
  components.push_back({std::string(key), type, component, 1});
  const int ref = static_cast<int>(components.size());
  byKey[std::string(key)] = ref;
  return ref;
}

int RResourceManager::Find(std::string_view key) const
{
  const auto found = byKey.find(std::string(key));
  return found == byKey.end() ? 0 : found->second;
}

void RResourceManager::Attach(int ref)
{
  if (At(ref))
    ++components[static_cast<size_t>(ref - 1)].refCount;
}

void RResourceManager::Detach(int ref)
{
  if (!At(ref))
    return;
  Component& c = components[static_cast<size_t>(ref - 1)];
  if (c.refCount <= 0) {
    QWARN("Detach(ref %d [%s]) called but refCount was already<=0 (%d)", ref, c.key.c_str(), c.refCount);
    return;
  }
  if (--c.refCount > 0)
    return;
  byKey.erase(c.key);
  c.component = nullptr; // the number isn't given out again: old references must not show another component
}

int RResourceManager::GetRefCount(int ref) const
{
  const Component* c = At(ref);
  return c ? c->refCount : 0;
}

RResourceManager::Type RResourceManager::GetType(int ref) const
{
  const Component* c = At(ref);
  return c ? c->type : TYPE_NONE;
}

DShader* RResourceManager::GetMaterial(int ref) const
{
  if (GetType(ref) != TYPE_MATERIAL) {
    QWARN("%s called expecting TYPE_MATERIAL but ref %d is of type %d", "GetMaterial", ref, GetType(ref));
    return nullptr;
  }
  return static_cast<DShader*>(At(ref)->component);
}
