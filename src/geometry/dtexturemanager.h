#pragma once

#include "geometry/dtextureptr.h"

#include <string>
#include <unordered_map>
#include <vector>

// Pictures that aren't tied to a material, loaded once for all who name them.
class DTextureManager
{
public:
  ~DTextureManager(); // what wasn't released is reported
  // A reference from 1 on; 0, reported, when the picture can't be loaded. Each is to be released.
  int Load(const std::string& name);
  // The last release of a reference unloads the texture; the number is given out again.
  void Release(int ref);
  DTexture* GetTexture(int ref) const; // null, reported, out of range; null for a released one
  void DbgPrint() const;

private:
  struct Slot
  {
    std::string name;
    DTexturePtr texture;
    int references = 0;
  };
  DTexturePtr MakeObject(const std::string& name) const;
  std::vector<Slot> slots;
  std::unordered_map<std::string, int> byName;
};
