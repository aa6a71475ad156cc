#pragma once

#include <functional>
#include <span>
#include <string>
#include <utility>
#include <vector>

// What turns the source of a shader program into a form that the driver takes. The compiler itself stands above the
// geometry library and is handed down in DGlobal.
enum class DProgramStage
{
  VERTEX,
  FRAGMENT,
  GEOMETRY
};
constexpr int DPROGRAM_STAGES = 3;
const char* DStageName(DProgramStage stage); // "vertex", "fragment" or "geometry"

// A parameter that the source declares.
struct DProgramParameter
{
  std::string name;    // in the source
  std::string uniform; // in the compiled form
  bool isSampler = false;
  int unit = -1;              // the texture unit that the source asks for; -1: any
  std::vector<float> initial; // what it is until somebody sets it; empty: zero
};

// An attribute of a vertex that isn't one of the fixed pipeline's.
struct DProgramAttribute
{
  std::string name;
  int location = 0;
};

struct DCompiledProgram
{
  std::string code;    // GLSL; empty: the source can't be compiled
  std::string listing; // what the compiler said, with file and line
  std::vector<DProgramParameter> parameters;
  std::vector<DProgramAttribute> attributes;
  std::vector<std::pair<std::string, int>> annotations; // of the parameter "Annotations"
};

struct DProgramCompiler
{
  // The name of what a stage is compiled to; empty: that stage can't be.
  std::function<std::string(DProgramStage stage)> profile;
  // The function "main" of a file. Options as of a compiler's command line: "-DNAME", "-DNAME=VALUE"; others are hints.
  std::function<DCompiledProgram(DProgramStage stage, const std::string& file, std::span<const std::string> options)>
      compile;
};
