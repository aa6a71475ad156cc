#include "scene/worldshaders.h"

#include "geometry/dmaterial.h"
#include "geometry/dshader.h"
#include "geometry/dtexture.h"

#include <epoxy/gl.h>

#include <algorithm>

namespace {

constexpr int SORT_SKY = 200;
constexpr int SORT_OPAQUE = 300;
constexpr int SORT_CUT_OUT = 500;
constexpr int SORT_TRANSPARENT = 600;

// Leaves and fences: pixels below this share of cover aren't painted. Low enough that small pictures of a thing far
// away, where cover is averaged, don't thin out.
constexpr float CUT_OUT_COVER = 0.3f;

void Describe(DShader& shader, const DMaterial& material)
{
  DShaderLayer& layer = shader.layer.front();
  layer.ambient = layer.diffuse = material.diffuse;
  layer.specular = material.specular;
  layer.emission = material.emission;
  layer.shininess = static_cast<int>(std::clamp(material.shininess, 0.0f, 128.0f));
  if (material.TextureCount() > 0) {
    layer.texture = material.texture.front();
    // The picture has the colours; a dark or coloured material would dye it.
    layer.ambient = layer.diffuse = DVector4(1.0f, 1.0f, 1.0f, material.diffuse.a);
  }
  if (material.flags & DMaterial::FLAT_COLOR) {
    const QColor& c = material.color;
    layer.ambient = layer.diffuse = DVector4(c.GetR(), c.GetG(), c.GetB(), c.GetA()) / 255.0f;
    layer.texture = nullptr;
  }
}

void SetBlending(DShader& shader, const DMaterial& material)
{
  DShaderLayer& layer = shader.layer.front();
  shader.sortKey = SORT_OPAQUE;
  const bool cutOut = layer.texture && layer.texture->HasTransparency();
  if (!cutOut && !material.IsTransparent() && material.blendMode != 1)
    return;
  layer.flags |= DShaderLayer::BLENDING;
  layer.blendSrc = GL_SRC_ALPHA;
  layer.blendDst = GL_ONE_MINUS_SRC_ALPHA;
  shader.sortKey = SORT_TRANSPARENT;
  // Both sides of a leaf show.
  shader.shaderFlags &= ~static_cast<uint32_t>(DShader::CULL_BACK);
  if (!cutOut) {
    layer.flags &= ~static_cast<uint32_t>(DShaderLayer::DEPTH_WRITE);
    return;
  }
  // What is left of the picture hides what lies behind, in whichever order blocks come.
  layer.flags |= DShaderLayer::ALPHA_TEST;
  layer.alphaFunc = GL_GEQUAL;
  layer.alphaRef = CUT_OUT_COVER;
  shader.sortKey = SORT_CUT_OUT;
}

bool LooksLike(const DShader& a, const DShader& b)
{
  const DShaderLayer& la = a.layer.front();
  const DShaderLayer& lb = b.layer.front();
  return la.texture == lb.texture && a.sortKey == b.sortKey && la.flags == lb.flags && la.diffuse == lb.diffuse &&
         la.specular == lb.specular && la.emission == lb.emission && la.shininess == lb.shininess;
}

} // namespace

std::shared_ptr<DShader> WorldShaders::Find(const DMaterial* material, bool sky)
{
  auto shader = std::make_shared<DShader>();
  shader->layer.emplace_back();
  DShaderLayer& layer = shader->layer.front();
  layer.texEnv = GL_MODULATE;
  layer.diffuse = layer.ambient = DVector4(0.7f, 0.7f, 0.7f, 1.0f);
  layer.specular = DVector4(0.0f, 0.0f, 0.0f, 1.0f);
  layer.flags = DShaderLayer::MIPMAP | DShaderLayer::DEPTH_WRITE;
  shader->sortKey = SORT_OPAQUE;
  if (material) {
    shader->name = material->name;
    Describe(*shader, *material);
    SetBlending(*shader, *material);
  }
  if (sky) {
    shader->shaderFlags = (shader->shaderFlags | DShader::SKY) & ~static_cast<uint32_t>(DShader::CULL_BACK);
    shader->sortKey = SORT_SKY;
  }
  std::erase_if(made, [](const auto& old) { return old.expired(); });
  for (const auto& old : made)
    if (auto same = old.lock(); same && LooksLike(*same, *shader))
      return same;
  made.push_back(shader);
  return shader;
}
