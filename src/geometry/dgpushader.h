#pragma once

#include "geometry/dprogramcompiler.h"

#include <cstdint>
#include <string>
#include <vector>

// A program of one stage: a Cg file, compiled. Without a context it is compiled and not given to the driver.
class DGPUShader
{
public:
  explicit DGPUShader(DProgramStage programStage) : stage(programStage) {}
  ~DGPUShader();
  DGPUShader(const DGPUShader&) = delete;
  DGPUShader& operator=(const DGPUShader&) = delete;

  // Compiles the file's "main". False, reported with the compiler's listing, when that fails: what was loaded before
  // stays then.
  bool LoadAndCreateFromFile(const std::string& path, const DProgramCompiler& compiler,
                             const std::vector<std::string>& options);
  bool IsLoaded() const { return loaded; }
  uint32_t GetObject() const { return object; } // OpenGL's name; 0: none
  const DCompiledProgram& GetProgram() const { return program; }
  // Counts the loads, for those who keep what they worked out from one.
  int GetGeneration() const { return generation; }
  int SamplerCount() const;
  // From the annotations of the parameter "Annotations".
  bool WantsAdjacency() const { return Annotation("adjacency") != 0; }
  int VertexOut() const; // of a geometry program

  const DProgramStage stage;
  std::string file;

private:
  int Annotation(const char* name) const;

  DCompiledProgram program;
  uint32_t object = 0;
  bool loaded = false;
  int generation = 0;
};
