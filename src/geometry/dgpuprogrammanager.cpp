#include "geometry/dgpuprogrammanager.h"

#include "foundation/qreport.h"

bool DGPUProgram::Link()
{
  QERR("DGPUProgram:Link() only supported in GLSL mode");
  return false;
}

int DGPUProgramManager::MakeObject(const std::string& name)
{
  QERR("DGPUProgramManager:MakeObject(%s) called in non-GLSL version - will not work", name.c_str());
  return 0;
}
