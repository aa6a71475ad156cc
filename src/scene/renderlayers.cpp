#include "scene/renderlayers.h"

#include "foundation/qreport.h"
#include "geometry/dgeob.h"
#include "geometry/dglobal.h"
#include "geometry/dshader.h"
#include "geometry/dtexture.h"

#include <epoxy/gl.h>

#include <algorithm>

namespace {

constexpr GLenum GENERATORS[] = {GL_OBJECT_LINEAR, GL_EYE_LINEAR, GL_SPHERE_MAP, GL_REFLECTION_MAP, GL_NORMAL_MAP};
constexpr GLenum COORDINATES[] = {GL_S, GL_T, GL_R, GL_Q};
constexpr GLenum TARGETS[] = {GL_TEXTURE_2D, GL_TEXTURE_3D, GL_TEXTURE_CUBE_MAP};

bool Multiplies(const DShaderLayer& layer)
{
  return layer.texture && layer.flags & DShaderLayer::BLENDING && !(layer.flags & DShaderLayer::ALPHA_TEST) &&
         ((layer.blendSrc == GL_ZERO && layer.blendDst == GL_SRC_COLOR) ||
          (layer.blendSrc == GL_DST_COLOR && layer.blendDst == GL_ZERO));
}

bool HasContext()
{
  return DGlobals().hasContext;
}

} // namespace

void RenderLayers::Begin(DPipe& statePipe)
{
  pipe = &statePipe;
  units = 1;
  if (!HasContext())
    return;
  glGetIntegerv(GL_MAX_TEXTURE_UNITS, &units);
  units = std::clamp(units, 1, DPipe::MAX_UNITS);
  for (int i = 0; i < units; ++i) {
    pipe->SelectUnit(i);
    pipe->MatrixMode(GL_TEXTURE);
    glLoadIdentity();
    scaled[static_cast<size_t>(i)] = generates[static_cast<size_t>(i)] = false;
  }
  used = units;
  UseUnits(0);
  pipe->MatrixMode(GL_MODELVIEW);
}

int RenderLayers::GroupOf(const DShaderLayer* layers, int count) const
{
  int group = 1;
  while (group < std::min(count, units) && Multiplies(layers[group]))
    ++group;
  return group;
}

void RenderLayers::SetupGenerators(const DShaderLayer& layer)
{
  for (size_t i = 0; i < layer.texGen.size(); ++i) {
    const GLenum flag = GL_TEXTURE_GEN_S + static_cast<GLenum>(i);
    if (layer.texGen[i] == 0) {
      pipe->DisableTexture(flag);
      continue;
    }
    pipe->EnableTexture(flag);
    if (HasContext())
      glTexGeni(COORDINATES[i], GL_TEXTURE_GEN_MODE, static_cast<GLint>(layer.texGen[i]));
  }
}

void RenderLayers::SetupScale(int unit, const DShaderLayer& layer)
{
  const auto& s = layer.texScale;
  const bool scales = s[0] != 1 || s[1] != 1 || s[2] != 1;
  bool& stands = scaled[static_cast<size_t>(unit)];
  if (!scales && !stands)
    return;
  stands = scales;
  pipe->MatrixMode(GL_TEXTURE);
  if (HasContext()) {
    glLoadIdentity();
    glScalef(s[0], s[1], s[2]);
  }
  pipe->MatrixMode(GL_MODELVIEW);
}

bool RenderLayers::Setup(int unit, const DShaderLayer& layer)
{
  for (size_t i = 0; i < layer.texGen.size(); ++i)
    if (layer.texGen[i] != 0 && std::ranges::find(GENERATORS, layer.texGen[i]) == std::end(GENERATORS)) {
      QWARN("WorldRenderer:SetupLayer(); texGen[%d]=%d unknown", static_cast<int>(i),
            static_cast<int>(layer.texGen[i]));
      return false;
    }
  pipe->SelectUnit(unit);
  const GLenum target = layer.texture ? layer.texture->target : 0;
  for (const GLenum t : TARGETS)
    t == target ? pipe->EnableTexture(t) : pipe->DisableTexture(t);
  if (!layer.texture)
    return true;
  if (HasContext())
    layer.texture->Select();
  // A picture that replaced the colour would be without light.
  const bool lit = unit > 0 || layer.texEnv == GL_REPLACE;
  pipe->TexEnv(lit ? static_cast<uint32_t>(GL_MODULATE) : layer.texEnv);
  SetupScale(unit, layer);
  bool& generating = generates[static_cast<size_t>(unit)];
  const bool wanted = std::ranges::any_of(layer.texGen, [](uint32_t mode) { return mode != 0; });
  if (wanted || generating)
    SetupGenerators(layer);
  generating = wanted;
  return true;
}

void RenderLayers::UseUnits(int count)
{
  for (int i = count; i < std::max(used, 1); ++i) {
    pipe->SelectUnit(i);
    for (const GLenum t : TARGETS)
      pipe->DisableTexture(t);
    pipe->DisableTexCoordArray();
  }
  used = count;
  pipe->SelectUnit(0);
}

void RenderLayers::SetCoordinates(const DGeob& geob)
{
  for (int i = 0; i < std::max(used, 1); ++i) {
    const size_t channel = i > 0 && geob.texCoord[1].size() >= geob.vertex.size() ? 1 : 0;
    const auto& array = geob.texCoord[channel];
    pipe->SelectUnit(i);
    if (array.size() < geob.vertex.size()) {
      pipe->DisableTexCoordArray();
      continue;
    }
    pipe->EnableTexCoordArray();
    if (!HasContext())
      continue;
    const uint32_t buffer = geob.texCoordBuffer[channel];
    pipe->BindArrayBuffer(buffer);
    glTexCoordPointer(2, GL_FLOAT, 0, buffer ? nullptr : array.data());
  }
  pipe->SelectUnit(0);
}

void RenderLayers::End()
{
  for (int i = 0; i < units; ++i)
    if (scaled[static_cast<size_t>(i)] || generates[static_cast<size_t>(i)]) {
      pipe->SelectUnit(i);
      SetupScale(i, DShaderLayer());
      SetupGenerators(DShaderLayer());
      generates[static_cast<size_t>(i)] = false;
    }
  UseUnits(0);
}
