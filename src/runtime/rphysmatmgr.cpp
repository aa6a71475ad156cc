#include "runtime/rphysmatmgr.h"

#include "foundation/qreport.h"

int RPhysMatMgr::GetMaterialID(std::string_view name)
{
  if (!name.empty() && reported.emplace(name).second)
    QWARN("Material '%s' does not exist.", std::string(name).c_str());
  return 0;
}
