#pragma once

#include <string>
#include <string_view>
#include <unordered_map>

class WorldNode;

// The nodes that hang below others, by their names. The nodes are visited; of one name they are chained by their age.
class WorldNameIndex
{
public:
  void Add(WorldNode& node); // as the newest of its name
  void Remove(WorldNode& node);
  // The newest node of the name that hangs, over whichever others, below the root; null when there is none.
  WorldNode* Find(std::string_view name, const WorldNode& root) const;
  // Forgets all nodes, and each forgets its scene.
  void Clear();

private:
  struct Hash : std::hash<std::string_view>
  {
    using is_transparent = void;
  };
  std::unordered_map<std::string, WorldNode*, Hash, std::equal_to<>> newest;
};
