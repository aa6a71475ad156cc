#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

class DTexture;

// Textures by name, so that a picture is loaded once. It holds none alive: a texture goes with its last user.
class DTexturePool
{
public:
  static constexpr int MAX_TEXTURES = 3000;
  // A name that is there is left alone; reports at MAX_TEXTURES.
  void Add(std::string_view name, const std::shared_ptr<DTexture>& texture);
  std::shared_ptr<DTexture> Find(std::string_view name) const; // exact; null when absent
  void Remove(const DTexture* texture);
  void Empty();                                                                            // the list, not the textures
  void FindAll(const char* pattern, const std::function<void(DTexture&)>& callback) const; // by QMatch
  int Count() const { return static_cast<int>(entries.size()); }

private:
  struct Entry
  {
    std::string name;
    std::weak_ptr<DTexture> texture;
  };
  void DropUnused();
  void Erase(const std::function<bool(const Entry&)>& which);

  std::vector<Entry> entries; // in the order of Add
  std::unordered_map<std::string, size_t> byName;
};
