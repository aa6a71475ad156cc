#include "geometry/dgpushader.h"

#include "foundation/qreport.h"
#include "geometry/dglobal.h"

#include <algorithm>
#include <epoxy/gl.h>
#include <sstream>

namespace {

GLenum Type(DProgramStage stage)
{
  return stage == DProgramStage::VERTEX     ? GL_VERTEX_SHADER
         : stage == DProgramStage::FRAGMENT ? GL_FRAGMENT_SHADER
                                            : GL_GEOMETRY_SHADER;
}

// 0, with what the driver says added to the listing, when it refuses the code.
uint32_t CreateObject(DProgramStage stage, const std::string& code, std::string& listing)
{
  const GLuint object = glCreateShader(Type(stage));
  const char* text = code.c_str();
  glShaderSource(object, 1, &text, nullptr);
  glCompileShader(object);
  GLint good = 0;
  glGetShaderiv(object, GL_COMPILE_STATUS, &good);
  if (good)
    return object;
  char log[2048] = "";
  glGetShaderInfoLog(object, sizeof log, nullptr, log);
  glDeleteShader(object);
  listing += log;
  return 0;
}

void ReportListing(const std::string& listing)
{
  std::istringstream lines(listing);
  for (std::string line; std::getline(lines, line);)
    if (!line.empty())
      QWARN("%s", line.c_str());
}

// Who writes a program waits for this answer.
void TellOldStays(const std::string& path, const std::string& listing)
{
  QWARN("Could not load new shader (%s). Torvik will continue with the last working shader.", path.c_str());
  if (QReports().messageBox)
    QReports().messageBox(path, listing);
}

} // namespace

const char* DStageName(DProgramStage stage)
{
  return stage == DProgramStage::VERTEX ? "vertex" : stage == DProgramStage::FRAGMENT ? "fragment" : "geometry";
}

DGPUShader::~DGPUShader()
{
  if (object && DGlobals().hasContext)
    glDeleteShader(object);
}

bool DGPUShader::LoadAndCreateFromFile(const std::string& path, const DProgramCompiler& compiler,
                                       const std::vector<std::string>& options)
{
  file = path;
  DCompiledProgram compiled;
  if (compiler.compile)
    compiled = compiler.compile(stage, path, options);
  bool good = !compiled.code.empty();
  uint32_t created = 0;
  if (good && DGlobals().hasContext) {
    created = CreateObject(stage, compiled.code, compiled.listing);
    good = created != 0;
  }
  if (!good) {
    QWARN("DGPUShaderManager:MakeObject(%s): can't create CG %s shader program", path.c_str(), DStageName(stage));
    ReportListing(compiled.listing);
    if (loaded)
      TellOldStays(path, compiled.listing);
    return false;
  }
  if (object)
    glDeleteShader(object);
  object = created;
  program = std::move(compiled);
  loaded = true;
  ++generation;
  return true;
}

int DGPUShader::SamplerCount() const
{
  return static_cast<int>(
      std::ranges::count_if(program.parameters, [](const DProgramParameter& p) { return p.isSampler; }));
}

int DGPUShader::Annotation(const char* name) const
{
  for (const auto& [key, value] : program.annotations)
    if (key == name)
      return value;
  return 0;
}

int DGPUShader::VertexOut() const
{
  const int count = Annotation("vertOut");
  return count > 0 ? count : 3;
}
