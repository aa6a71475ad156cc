#pragma once

#include <string>

// The form in which the stages of a program are files of GLSL that are linked by name. Programs are Cg here
// (DGPUShaderManager), so this says that it can't and does nothing.
class DGPUProgram
{
public:
  bool Link();
};

class DGPUProgramManager
{
public:
  // 0: none.
  int MakeObject(const std::string& name);
};
