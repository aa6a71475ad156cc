#pragma once

#include <set>
#include <string>
#include <string_view>

// The table of physical materials that shaders name. No file fills it, so each name is unknown to it.
class RPhysMatMgr
{
public:
  // 0 for an empty name, and for an unknown one, which is reported the first time.
  int GetMaterialID(std::string_view name);

private:
  std::set<std::string, std::less<>> reported;
};
