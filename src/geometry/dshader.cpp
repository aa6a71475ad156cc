#include "geometry/dshader.h"

#include "foundation/qreport.h"
#include "geometry/dglobal.h"
#include "geometry/dmaterial.h"
#include "geometry/dtexture.h"

#include <epoxy/gl.h>

bool DShader::IsStandard() const
{
  const std::string_view file = fragmentFile;
  return file.substr(file.find_last_of('/') + 1) == "standard_f.cg";
}

void DShader::Reset()
{
  std::string kept = std::move(name);
  *this = DShader();
  name = std::move(kept);
}

void DShader::CreateFromMaterial(const DMaterial& material)
{
  layer.clear();
  if (material.texture.empty()) {
    QWARN("DShader:CreateFromMaterial(); need a texture");
    return;
  }
  DShaderLayer& l = layer.emplace_back();
  l.texture = material.texture.front();
  l.ambient = material.ambient;
  l.diffuse = material.diffuse;
  l.specular = material.specular;
  l.emission = material.emission;
  l.shininess = static_cast<int>(glm::clamp(material.shininess, 0.0f, 128.0f));
  l.texEnv = GL_MODULATE;
  l.minFilter = GL_LINEAR_MIPMAP_LINEAR;
  l.magFilter = GL_LINEAR;
  if (material.IsTransparent()) {
    l.flags |= DShaderLayer::BLENDING;
    l.flags &= ~static_cast<uint32_t>(DShaderLayer::DEPTH_WRITE);
    l.blendSrc = GL_SRC_ALPHA;
    l.blendDst = GL_ONE_MINUS_SRC_ALPHA;
  }
  if (material.creationFlags & 1 && DGlobals().environmentMap) {
    DShaderLayer environment;
    environment.texture = DGlobals().environmentMap;
    environment.texEnv = GL_MODULATE;
    environment.texGen[0] = environment.texGen[1] = GL_SPHERE_MAP;
    environment.flags |= DShaderLayer::BLENDING;
    environment.blendSrc = GL_SRC_ALPHA;
    environment.blendDst = GL_ONE_MINUS_SRC_ALPHA;
    layer.push_back(std::move(environment));
  }
  sortKey = material.IsTransparent() ? 600 : 300;
}
