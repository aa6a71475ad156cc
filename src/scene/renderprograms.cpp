#include "scene/renderprograms.h"

#include "geometry/dgeob.h"
#include "geometry/dglobal.h"
#include "geometry/dgpushadermanager.h"
#include "geometry/dpipe.h"
#include "geometry/dshader.h"
#include "geometry/dtexture.h"
#include "scene/renderpainter.h"

#include <epoxy/gl.h>
#include <glm/gtc/matrix_inverse.hpp>
#include <glm/gtc/matrix_transform.hpp>

#include <algorithm>
#include <cmath>
#include <string_view>

namespace {

using P = DGPUParameter;

constexpr GLuint TANGENT_ATTRIBUTE = 14; // where programs find what they call TANGENT

// The standard program shows one plain picture. What else the fixed pipeline knows stays with it: coordinates that it
// generates, cube maps, other environments than light.
bool StandardTakes(const DShaderLayer& layer)
{
  const bool generates = std::ranges::any_of(layer.texGen, [](uint32_t mode) { return mode != 0; });
  const bool plain = layer.texEnv == GL_MODULATE || layer.texEnv == GL_REPLACE;
  return !generates && plain && layer.texture && layer.texture->target == GL_TEXTURE_2D;
}

DMatrix4 TextureMatrix(const DShaderLayer& layer)
{
  return glm::scale(DMatrix4(1.0f), DVector3(layer.texScale[0], layer.texScale[1], layer.texScale[2]));
}

} // namespace

void RenderPrograms::Begin(DPipe& statePipe, const RenderView& frameView)
{
  pipe = &statePipe;
  view = &frameView;
  ++frame;
  DTheGPUShaders().Release(); // others may have bound theirs
  link = nullptr;
}

int RenderPrograms::Use(const DShader* shader, const DShaderLayer* layers, int count)
{
  const bool has = shader && (shader->vertexProgram || shader->fragmentProgram);
  if (!DGlobals().programsOn || !has) {
    Release();
    return 0;
  }
  if (shader->IsStandard() && !StandardTakes(layers[0])) {
    Release();
    return 0;
  }
  const std::pair wanted(shader->vertexProgram, shader->fragmentProgram);
  if (!link || wanted != used)
    Bind(wanted);
  return link ? std::clamp(layersTaken, 1, count) : 0;
}

void RenderPrograms::Bind(std::pair<int, int> wanted)
{
  DGPUShaderManager& programs = DTheGPUShaders();
  programs.Release();
  layersTaken = 1;
  if (wanted.first)
    programs.Bind(wanted.first);
  if (wanted.second) {
    programs.Bind(wanted.second);
    layersTaken = programs.GetGPUShader(wanted.second)->SamplerCount();
  }
  link = programs.GetLink();
  used = wanted;
  if (!link) {
    Release();
    return;
  }
  pipe->UseProgram(link->GetProgram());
  if (link->frame != frame)
    SetFrame();
}

void RenderPrograms::Release()
{
  if (tangents)
    glDisableVertexAttribArray(TANGENT_ATTRIBUTE);
  tangents = false;
  link = nullptr;
  pipe->UseProgram(0);
}

// What holds for all that a frame paints.
void RenderPrograms::SetFrame()
{
  link->frame = frame;
  const glm::mat3 turn(view->modelView);
  const DVector3 eye = view->atOrigin ? DVector3(view->origin) : DVector3(glm::inverse(view->modelView)[3]);
  const DMatrix4& projection = view->projection;
  link->Set(P::eyePosW, eye);
  link->Set(P::forward, -glm::transpose(turn)[2]);
  link->Set(P::billBoardMatrix, DMatrix4(glm::transpose(turn)));
  link->Set(P::time, view->seconds);
  link->Set(P::serverTime, view->seconds);
  link->Set(P::aspect, projection[0][0] != 0 ? projection[1][1] / projection[0][0] : 1.0f);
  link->Set(P::fovV, projection[1][1] != 0 ? 2.0f * std::atan(1.0f / projection[1][1]) : 0.0f);
  link->Set(P::frustumNear, projection[3][2] / (projection[2][2] - 1.0f));
  link->Set(P::frustumFar, projection[3][2] / (projection[2][2] + 1.0f));
  const DVector2 size(std::max(view->viewport.wid, 1), std::max(view->viewport.hgt, 1));
  link->Set(P::resolution, size);
  link->Set(P::texelSize, DVector2(1.0f) / size);
  link->Set(P::exposure, 1.0f);
  link->Set(P::fogColor, view->fog.color);
  // Towards the sun, in the camera's space.
  link->Set(P::lightDirection, turn * DNormalized(view->sun.position));
  link->Set(P::sunIntensity, glm::length(view->sun.diffuse));
}

void RenderPrograms::SetShader(const DShader& shader, const DShaderLayer& layer, float density)
{
  if (!link)
    return;
  link->Set(P::fogDensity, density);
  link->Set(P::scale, shader.scale);
  link->Set(P::alpha, layer.diffuse.a);
  link->Set(P::shininess, static_cast<float>(layer.shininess));
  link->Set(P::mipmap, layer.mipmapBias);
  link->Set(P::fresnelBias, shader.fresnelBias);
  link->Set(P::fresnelPower, shader.fresnelPower);
  link->Set(P::fresnelScale, shader.fresnelScale);
  link->Set(P::textureMatrix, TextureMatrix(layer));
  for (int i = 0; i < std::min(shader.LayerCount(), 6); ++i)
    link->Set(static_cast<P>(static_cast<int>(P::textureMatrix0) + i),
              TextureMatrix(shader.layer[static_cast<size_t>(i)]));
}

void RenderPrograms::SetMatrices(const DMatrix4& model, const DMatrix4& projection)
{
  if (!link)
    return;
  const DMatrix4 both = view->modelView * model;
  link->Set(P::modelMatrix, model);
  if (link->Has(P::modelMatrixInv))
    link->Set(P::modelMatrixInv, glm::inverse(model));
  link->Set(P::modelView, both);
  if (link->Has(P::modelViewIT))
    link->Set(P::modelViewIT, glm::inverseTranspose(both));
  link->Set(P::modelViewProj, projection * both);
  link->Set(P::prevModelViewProj, projection * both);
}

void RenderPrograms::SetLight(bool on, const DVector3& ambient, const DVector3& sun)
{
  if (!link)
    return;
  link->Set(P::activeLights, on ? 1.0f : 0.0f);
  link->Set(P::lightAmbient, ambient);
  link->Set(P::lightColor, sun);
}

void RenderPrograms::SetTangents(const DGeob& geob)
{
  const bool wanted = link && geob.tangent.size() >= geob.vertex.size() && !geob.tangent.empty();
  if (wanted) {
    pipe->BindArrayBuffer(geob.tangentBuffer);
    glVertexAttribPointer(TANGENT_ATTRIBUTE, 4, GL_FLOAT, GL_FALSE, 0,
                          geob.tangentBuffer ? nullptr : geob.tangent.data());
  }
  if (wanted == tangents)
    return;
  tangents = wanted;
  wanted ? glEnableVertexAttribArray(TANGENT_ATTRIBUTE) : glDisableVertexAttribArray(TANGENT_ATTRIBUTE);
}
