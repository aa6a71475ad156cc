#include "geometry/dglobal.h"

DGlobal& DGlobals()
{
  static DGlobal global;
  return global;
}

void DResetGlobals()
{
  DGlobals() = DGlobal();
}
