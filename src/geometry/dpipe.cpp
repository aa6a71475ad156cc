#include "geometry/dpipe.h"

#include "foundation/qreport.h"
#include "geometry/dglobal.h"
#include "geometry/dpipenames.h"

#include <algorithm>
#include <bit>
#include <epoxy/gl.h>
#include <iterator>

namespace {

int64_t Pair(uint32_t high, uint32_t low)
{
  return static_cast<int64_t>(high & 0x7FFFFFFF) << 32 | low;
}

bool HasContext()
{
  return DGlobals().hasContext;
}

template <typename Names>
int IndexOf(const Names& names, GLenum name)
{
  const auto at = std::ranges::find(names, name, &DPipeName::name);
  return at == std::end(names) ? -1 : static_cast<int>(at - std::begin(names));
}

} // namespace

DPipe& DThePipe()
{
  static DPipe pipe;
  return pipe;
}

DPipe::DPipe()
{
  static_assert(std::size(PIPE_CAPS) == CAPS && std::size(PIPE_UNIT_CAPS) == UNIT_CAPS &&
                std::size(PIPE_ARRAYS) == TANGENT_ARRAY);
  Invalidate();
}

void DPipe::Invalidate()
{
  caps.fill(UNKNOWN);
  arrays.fill(UNKNOWN);
  for (TextureUnit& u : units) {
    u.enabled.fill(UNKNOWN);
    u.texture.fill(UNKNOWN);
    u.env = UNKNOWN;
    u.coordArray = UNKNOWN;
  }
  blendFunc = depthFunc = depthMask = alphaFunc = cullFace = polygonOffset = matrixMode = program = UNKNOWN;
  arrayBuffer = indexBuffer = activeUnit = clientUnit = UNKNOWN;
  unit = 0;
  changes = 0;
}

// True when OpenGL is to be told.
bool DPipe::Change(int64_t& known, int64_t wanted)
{
  if (known == wanted)
    return false;
  known = wanted;
  ++changes;
  return HasContext();
}

bool DPipe::Change(int8_t& known, bool wanted)
{
  if (known == static_cast<int8_t>(wanted))
    return false;
  known = static_cast<int8_t>(wanted);
  ++changes;
  return HasContext();
}

void DPipe::SetCap(uint32_t cap, bool on, const char* report)
{
  const int i = IndexOf(PIPE_CAPS, cap);
  if (i < 0) {
    QWARN("DPipe:%s(%d) unknown", report, static_cast<int>(cap));
    return;
  }
  if (Change(caps[static_cast<size_t>(i)], on))
    on ? glEnable(cap) : glDisable(cap);
}

void DPipe::Enable(uint32_t cap)
{
  SetCap(cap, true, "Enable");
}

void DPipe::Disable(uint32_t cap)
{
  SetCap(cap, false, "Disable");
}

void DPipe::BlendFunc(uint32_t source, uint32_t destination)
{
  if (Change(blendFunc, Pair(source, destination)))
    glBlendFunc(source, destination);
}

void DPipe::DepthFunc(uint32_t function)
{
  if (Change(depthFunc, function))
    glDepthFunc(function);
}

void DPipe::DepthMask(bool on)
{
  if (Change(depthMask, on))
    glDepthMask(on);
}

void DPipe::AlphaFunc(uint32_t function, float reference)
{
  if (Change(alphaFunc, Pair(function, std::bit_cast<uint32_t>(reference))))
    glAlphaFunc(function, reference);
}

void DPipe::CullFace(uint32_t face)
{
  if (Change(cullFace, face))
    glCullFace(face);
}

void DPipe::PolygonOffset(float factor, float offset)
{
  if (Change(polygonOffset, Pair(std::bit_cast<uint32_t>(factor) >> 1, std::bit_cast<uint32_t>(offset))))
    glPolygonOffset(factor, offset);
}

void DPipe::MatrixMode(uint32_t mode)
{
  if (Change(matrixMode, mode))
    glMatrixMode(mode);
}

void DPipe::UseProgram(uint32_t name)
{
  if (Change(program, name))
    glUseProgram(name);
}

void DPipe::BindArrayBuffer(uint32_t name)
{
  if (Change(arrayBuffer, name))
    glBindBuffer(GL_ARRAY_BUFFER, name);
}

void DPipe::BindIndexBuffer(uint32_t name)
{
  if (Change(indexBuffer, name))
    glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, name);
}

void DPipe::SetArray(Array a, bool on)
{
  if (!Change(arrays[a], on))
    return;
  if (a == TANGENT_ARRAY)
    on ? glEnableVertexAttribArray(TANGENT_ATTRIBUTE) : glDisableVertexAttribArray(TANGENT_ATTRIBUTE);
  else
    on ? glEnableClientState(PIPE_ARRAYS[a].name) : glDisableClientState(PIPE_ARRAYS[a].name);
}

void DPipe::EnableArray(Array a)
{
  SetArray(a, true);
}

void DPipe::DisableArray(Array a)
{
  SetArray(a, false);
}

void DPipe::SelectUnit(int n)
{
  unit = std::clamp(n, 0, MAX_UNITS - 1);
  if (Change(activeUnit, unit))
    glActiveTexture(GL_TEXTURE0 + static_cast<GLenum>(unit));
}

void DPipe::SetUnitCap(uint32_t cap, bool on, const char* report)
{
  const int i = IndexOf(PIPE_UNIT_CAPS, cap);
  if (i < 0) {
    QWARN("DPipe:TexUnit:%s(%d) unknown", report, static_cast<int>(cap));
    return;
  }
  SelectUnit(unit);
  if (Change(units[static_cast<size_t>(unit)].enabled[static_cast<size_t>(i)], on))
    on ? glEnable(cap) : glDisable(cap);
}

void DPipe::EnableTexture(uint32_t target)
{
  SetUnitCap(target, true, "Enable");
}

void DPipe::DisableTexture(uint32_t target)
{
  SetUnitCap(target, false, "Disable");
}

void DPipe::SelectTexture(uint32_t target, uint32_t name)
{
  const int i = IndexOf(PIPE_UNIT_CAPS, target);
  if (i < 0 || i > 2) {
    QWARN("DPipe:SelectTexture(); only supports 2D, 3D or Cubemap; texTarget is 0x%x", target);
    return;
  }
  SelectUnit(unit);
  if (Change(units[static_cast<size_t>(unit)].texture[static_cast<size_t>(i)], name))
    glBindTexture(target, name);
}

void DPipe::TexEnv(uint32_t mode)
{
  SelectUnit(unit);
  if (Change(units[static_cast<size_t>(unit)].env, mode))
    glTexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, static_cast<GLint>(mode));
}

void DPipe::SetCoordArray(bool on)
{
  // The pointer call that follows means this unit too, so it is selected in each case.
  if (Change(clientUnit, unit))
    glClientActiveTexture(GL_TEXTURE0 + static_cast<GLenum>(unit));
  if (Change(units[static_cast<size_t>(unit)].coordArray, on))
    on ? glEnableClientState(GL_TEXTURE_COORD_ARRAY) : glDisableClientState(GL_TEXTURE_COORD_ARRAY);
}

void DPipe::EnableTexCoordArray()
{
  SetCoordArray(true);
}

void DPipe::DisableTexCoordArray()
{
  SetCoordArray(false);
}

void DPipe::ForgetTexture(uint32_t name)
{
  for (TextureUnit& u : units)
    for (int64_t& texture : u.texture)
      if (texture == name)
        texture = UNKNOWN;
}

void DPipe::ForgetBuffer(uint32_t name)
{
  if (name == 0 || arrayBuffer == name)
    arrayBuffer = UNKNOWN;
  if (name == 0 || indexBuffer == name)
    indexBuffer = UNKNOWN;
}
