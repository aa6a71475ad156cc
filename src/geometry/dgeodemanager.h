#pragma once

#include "geometry/dgeode.h"

#include <memory>
#include <string>
#include <vector>

// Models that are loaded once for all who name them, and counted.
class DGeodeManager
{
public:
  static constexpr int MAX_GEODES = 10000;
  // A reference from 1 on; 0 when the model can't be loaded or the table is full (reported).
  int Load(const std::string& name, const std::string& fileName);
  // The last release of a reference unloads the model; the number is given out again.
  void Release(int ref);
  DGeode* GetGeode(int ref) const; // null with a report out of range, or for a released one

private:
  struct Slot
  {
    std::string name;
    std::unique_ptr<DGeode> geode;
    int references = 0;
  };
  std::vector<Slot> slots;
};
