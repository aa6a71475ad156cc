#include "geometry/dglobal.h"
#include "geometry/dgpushadermanager.h"
#include "geometry/dshader.h"
#include "geometry/dworld.h"

#include <string>

namespace {

// In the directories for programs, else where the program's own stand.
std::string Find(const std::string& file)
{
  qstring full;
  if (DGlobals().programPath.Find(file.c_str(), full))
    return full.Str();
  return file.find('/') == file.npos ? std::string(DWorld::SHADER_DIRECTORY) + "/" + file : file;
}

int Load(DProgramStage stage, const std::string& file)
{
  return file.empty() ? 0 : DTheGPUShaders().MakeObject(stage, Find(file));
}

} // namespace

void DShader::LoadPrograms()
{
  if (!DGlobals().programsOn)
    return;
  vertexProgram = Load(DProgramStage::VERTEX, vertexFile);
  fragmentProgram = Load(DProgramStage::FRAGMENT, fragmentFile);
  geometryProgram = Load(DProgramStage::GEOMETRY, geometryFile);
  // Nothing is projected yet where these aren't there.
  vertexProjProgram = Load(DProgramStage::VERTEX, vertexProjFile);
  fragmentProjProgram = Load(DProgramStage::FRAGMENT, fragmentProjFile);
  for (const int ref : {vertexProgram, fragmentProgram, geometryProgram})
    if (ref && DTheGPUShaders().GetGPUShader(ref)->WantsAdjacency())
      shaderFlags |= HAS_ADJACENCY;
}
