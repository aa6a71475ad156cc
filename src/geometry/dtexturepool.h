#pragma once

#include "geometry/dtextureptr.h"

#include <functional>
#include <list>
#include <string>
#include <string_view>
#include <unordered_map>

// Textures by name, so that a picture is loaded once. It holds no reference: a texture leaves with its last user.
class DTexturePool
{
public:
  static constexpr int MAX_TEXTURES = 3000;
  // A name that is there is left alone; reports at MAX_TEXTURES.
  void Add(std::string_view name, DTexture* texture);
  DTexturePtr Find(std::string_view name) const;                                           // exact; null when absent
  void Remove(const DTexture* texture);                                                    // under all its names
  void Empty();                                                                            // the list, not the textures
  void FindAll(const char* pattern, const std::function<void(DTexture&)>& callback) const; // by QMatch
  int Count() const { return static_cast<int>(entries.size()); }

private:
  struct Entry
  {
    std::string name;
    DTexture* texture;
  };
  using Entries = std::list<Entry>; // in the order of Add
  Entries entries;
  std::unordered_map<std::string_view, Entries::iterator> byName; // names are those of the entries
  std::unordered_multimap<const DTexture*, Entries::iterator> byTexture;
};
