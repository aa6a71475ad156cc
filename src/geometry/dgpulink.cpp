#include "geometry/dgpulink.h"

#include "foundation/qreport.h"
#include "geometry/dglobal.h"
#include "geometry/dgpushader.h"

#include <algorithm>
#include <cstring>
#include <epoxy/gl.h>
#include <glm/gtc/type_ptr.hpp>
#include <string>

namespace {

constexpr int MAX_UNITS = 16;

bool Link(GLuint program, std::span<const DGPUShader* const> stages)
{
  std::string names;
  for (const DGPUShader* shader : stages) {
    if (!shader)
      continue;
    names += (names.empty() ? "" : ", ") + shader->file;
    glAttachShader(program, shader->GetObject());
    for (const DProgramAttribute& a : shader->GetProgram().attributes)
      glBindAttribLocation(program, static_cast<GLuint>(a.location), a.name.c_str());
  }
  glLinkProgram(program);
  GLint good = 0;
  glGetProgramiv(program, GL_LINK_STATUS, &good);
  if (good)
    return true;
  char log[2048] = "";
  glGetProgramInfoLog(program, sizeof log, nullptr, log);
  QWARN("DGPUShaderManager: can't link %s: %s", names.c_str(), log);
  return false;
}

} // namespace

DGPULink::~DGPULink()
{
  if (DGlobals().hasContext)
    glDeleteProgram(program);
}

std::unique_ptr<DGPULink> DGPULink::Create(std::span<const DGPUShader* const> stages)
{
  std::unique_ptr<DGPULink> link(new DGPULink(glCreateProgram()));
  if (!Link(link->program, stages))
    return nullptr;
  glUseProgram(link->program);
  uint32_t taken = 0;
  for (const DGPUShader* shader : stages)
    if (shader)
      link->LookUp(*shader);
  for (const DGPUShader* shader : stages)
    if (shader)
      link->AssignSamplers(*shader, taken);
  return link;
}

DGPULink::Handle DGPULink::FindHandle(const std::string& uniform) const
{
  Handle handle;
  handle.location = glGetUniformLocation(program, uniform.c_str());
  if (handle.location < 0)
    return handle;
  GLint count = 0;
  glGetProgramiv(program, GL_ACTIVE_UNIFORMS, &count);
  for (GLint i = 0; i < count; ++i) {
    char name[256] = "";
    GLint size = 0;
    GLenum type = 0;
    glGetActiveUniform(program, static_cast<GLuint>(i), sizeof name, nullptr, &size, &type, name);
    if (uniform == name || uniform + "[0]" == name)
      handle.type = type;
  }
  return handle;
}

void DGPULink::LookUp(const DGPUShader& shader)
{
  for (const DProgramParameter& p : shader.GetProgram().parameters) {
    if (p.isSampler)
      continue;
    const Handle handle = FindHandle(p.uniform);
    if (handle.location < 0)
      continue;
    if (!p.initial.empty())
      SetHandle(handle, p.initial);
    const auto found = std::ranges::find(DGPU_PARAMETER_NAMES, p.name);
    if (found != DGPU_PARAMETER_NAMES.end())
      handles[static_cast<size_t>(found - DGPU_PARAMETER_NAMES.begin())].push_back(handle);
  }
}

// Those that ask for a unit get it; the others take the free ones in the order in which they are declared.
void DGPULink::AssignSamplers(const DGPUShader& shader, uint32_t& taken) const
{
  const auto& parameters = shader.GetProgram().parameters;
  for (const DProgramParameter& p : parameters)
    if (p.isSampler && p.unit >= 0 && p.unit < MAX_UNITS)
      taken |= 1u << p.unit;
  for (const DProgramParameter& p : parameters) {
    if (!p.isSampler)
      continue;
    int unit = p.unit;
    if (unit < 0 || unit >= MAX_UNITS) {
      unit = 0;
      while (unit + 1 < MAX_UNITS && taken & 1u << unit)
        ++unit;
      taken |= 1u << unit;
    }
    const int location = glGetUniformLocation(program, p.uniform.c_str());
    if (location >= 0)
      glUniform1i(location, unit);
  }
}

bool DGPULink::Has(DGPUParameter parameter) const
{
  return !handles[static_cast<size_t>(parameter)].empty();
}

void DGPULink::SetHandle(const Handle& handle, std::span<const float> numbers)
{
  std::array<float, 16> n{};
  std::copy_n(numbers.begin(), std::min(numbers.size(), n.size()), n.begin());
  switch (handle.type) {
  case GL_FLOAT:
    glUniform1fv(handle.location, 1, n.data());
    break;
  case GL_FLOAT_VEC2:
    glUniform2fv(handle.location, 1, n.data());
    break;
  case GL_FLOAT_VEC3:
    glUniform3fv(handle.location, 1, n.data());
    break;
  case GL_FLOAT_VEC4:
    glUniform4fv(handle.location, 1, n.data());
    break;
  case GL_INT:
  case GL_BOOL:
    glUniform1i(handle.location, static_cast<GLint>(n[0]));
    break;
  // In the source the numbers of a matrix stand row by row, and so they are kept.
  case GL_FLOAT_MAT3:
    glUniformMatrix3fv(handle.location, 1, GL_FALSE, n.data());
    break;
  case GL_FLOAT_MAT4:
    glUniformMatrix4fv(handle.location, 1, GL_FALSE, n.data());
    break;
  default:
    break;
  }
}

void DGPULink::Set(DGPUParameter parameter, std::span<const float> numbers) const
{
  for (const Handle& handle : handles[static_cast<size_t>(parameter)])
    SetHandle(handle, numbers);
}

void DGPULink::Set(DGPUParameter parameter, const DMatrix4& m) const
{
  for (const Handle& handle : handles[static_cast<size_t>(parameter)]) {
    if (handle.type == GL_FLOAT_MAT3) {
      const glm::mat3 turn(m);
      glUniformMatrix3fv(handle.location, 1, GL_TRUE, glm::value_ptr(turn));
    } else if (handle.type == GL_FLOAT_MAT4) {
      glUniformMatrix4fv(handle.location, 1, GL_TRUE, glm::value_ptr(m));
    }
  }
}
