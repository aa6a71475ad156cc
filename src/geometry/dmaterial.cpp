#include "geometry/dmaterial.h"

#include "foundation/qbitmap.h"
#include "foundation/qfilename.h"
#include "foundation/qreport.h"
#include "geometry/dgeode.h"
#include "geometry/dglobal.h"
#include "geometry/dpipe.h"
#include "geometry/dshader.h"
#include "geometry/dtexture.h"

#include <epoxy/gl.h>
#include <glm/gtc/type_ptr.hpp>

std::string DMaterialNameFilter(std::string_view name)
{
  std::string filtered;
  for (const char c : name.substr(0, name.find('.'))) {
    if (c >= 'A' && c <= 'Z')
      filtered += static_cast<char>(c - 'A' + 'a');
    else if ((c >= 'a' && c <= 'z') || (c >= '0' && c <= '9'))
      filtered += c;
    else if (c == ' ' || c == '_')
      filtered += '_';
  }
  return filtered;
}

DMaterial::DMaterial() : layer(1)
{}

DMaterial::~DMaterial() = default;

DMaterial* DMaterial::AddSubMaterial()
{
  if (SubCount() >= MAX_SUBMATERIALS) {
    QWARN("DMaterial:AddSubMaterial(); max (%d) reached", MAX_SUBMATERIALS);
    return nullptr;
  }
  return sub.emplace_back(std::make_unique<DMaterial>()).get();
}

bool DMaterial::AddLayer(DMaterialLayer l)
{
  if (LayerCount() >= MAX_LAYERS) {
    QWARN("DMaterial::AddLayer(); max (%d) reached", MAX_LAYERS);
    return false;
  }
  layer.push_back(std::move(l));
  return true;
}

bool DMaterial::AddGeneratedTexture()
{
  if (TextureCount() >= MAX_TEXTURES)
    return false;
  auto bitmap = std::make_unique<QBitMap>(32, 2, 2);
  bitmap->SetColorAt(0, 0, QColor(255, 0, 0));
  bitmap->SetColorAt(1, 1, QColor(255, 0, 0));
  auto generated = std::make_unique<DBitMapTexture>(std::move(bitmap));
  generated->SetName("q_generated");
  texture.push_back(std::move(generated));
  ClearTransparent();
  return true;
}

DTexture* DMaterial::GetTexture(int i) const
{
  if (i < 0 || i >= TextureCount()) {
    QWARN("DMaterial:GetTexture(%d) out of range (material %s, shader %s)", i, name.c_str(),
          shader ? shader->name.c_str() : "<none>");
    return nullptr;
  }
  return texture[static_cast<size_t>(i)].get();
}

bool DMaterial::IsEnvironmentMapped() const
{
  return LayerCount() == 2 && layer[1].mode == DMaterialLayer::SPHERE_MAPPED;
}

const DTexture* DMaterial::FirstTexture() const
{
  if (!texture.empty())
    return texture.front().get();
  return shader && !shader->layer.empty() ? shader->layer.front().texture.get() : nullptr;
}

std::string DMaterial::ShaderEntry(const DGeode* owner) const
{
  const DTexture* first = FirstTexture();
  if (!first)
    return ";shader_" + name + " (has no texture)\n";
  std::string map = firstTextureName;
  bool transparent = first->HasTransparency();
  if (first->GetName()) {
    map = first->GetName();
  } else if (owner && !map.empty()) { // what is shown stands for that picture
    transparent = DBitMapTexture(owner->FindMapFile(d3InsideName(map))).HasTransparency();
  }
  std::string text = "shader_" + name + (transparent ? "~vf_standard_transparent" : "~vf_standard") +
                     "\n{\n  layer0\n  {\n    map=" + map + "\n";
  if (transparent)
    text += "    ; Map has transparency so enable blending\n    alpha_to_coverage=1\n    alphafunc=gequal 128\n"
            "    ; Real blending\n    ;blendfunc=blend\n    ;depthwrite=0\n";
  return text + "  }\n}\n";
}

namespace {

void SphereMapping(bool on)
{
  DPipe& pipe = DThePipe();
  for (const GLenum cap : {GLenum{GL_TEXTURE_GEN_S}, GLenum{GL_TEXTURE_GEN_T}})
    on ? pipe.EnableTexture(cap) : pipe.DisableTexture(cap);
  if (on) {
    glTexGeni(GL_S, GL_TEXTURE_GEN_MODE, GL_SPHERE_MAP);
    glTexGeni(GL_T, GL_TEXTURE_GEN_MODE, GL_SPHERE_MAP);
  }
}

// The environment's picture on unit 1, so that one pass paints both layers.
void EnvironmentUnit(bool on, bool transparent)
{
  DPipe& pipe = DThePipe();
  const DGlobal& global = DGlobals();
  pipe.SelectUnit(1);
  if (on) {
    pipe.EnableTexture(GL_TEXTURE_2D);
    global.environmentMap->Select();
    pipe.TexEnv(transparent ? GL_DECAL : GL_ADD);
  } else {
    pipe.DisableTexture(GL_TEXTURE_2D);
  }
  SphereMapping(on);
  pipe.MatrixMode(GL_TEXTURE);
  glLoadIdentity();
  if (on) {
    glTranslatef(0.5f, 0, 0.5f);
    glRotatef(global.environmentAngle, 0, 1, 0);
  }
  pipe.MatrixMode(GL_MODELVIEW);
  pipe.SelectUnit(0);
}

} // namespace

bool DMaterial::PrepareToPaint(int n)
{
  if (!DGlobals().hasContext || n < 0 || n >= LayerCount())
    return false;
  DPipe& pipe = DThePipe();
  pipe.SelectUnit(0);
  if (flags & FLAT_COLOR) {
    pipe.DisableTexture(GL_TEXTURE_2D);
    glColor4ub(static_cast<GLubyte>(color.GetR()), static_cast<GLubyte>(color.GetG()),
               static_cast<GLubyte>(color.GetB()), static_cast<GLubyte>(color.GetA()));
    return n == 0;
  }
  const bool environment = IsEnvironmentMapped() && DGlobals().environmentMap;
  if (n > 0) {
    const DMaterialLayer& l = layer[static_cast<size_t>(n)];
    if (environment || !l.texture)
      return false;
    pipe.EnableTexture(GL_TEXTURE_2D);
    l.texture->Select();
    if (l.mode == DMaterialLayer::SPHERE_MAPPED)
      SphereMapping(true);
    pipe.BlendFunc(GL_CONSTANT_COLOR, GL_ONE_MINUS_CONSTANT_COLOR);
    glBlendColor(l.blend, l.blend, l.blend, l.blend);
    pipe.Enable(GL_BLEND);
    pipe.TexEnv(GL_ADD);
    return true;
  }
  if (environment)
    EnvironmentUnit(true, IsTransparent());
  if (!(flags & KEEP_TEXTURE_ENABLE)) {
    if (texture.empty()) {
      pipe.DisableTexture(GL_TEXTURE_2D);
    } else {
      pipe.EnableTexture(GL_TEXTURE_2D);
      texture.front()->Select();
    }
  }
  if (!(flags & KEEP_MATERIAL)) {
    glMaterialfv(GL_FRONT_AND_BACK, GL_AMBIENT, glm::value_ptr(ambient));
    glMaterialfv(GL_FRONT_AND_BACK, GL_DIFFUSE, glm::value_ptr(diffuse));
    glMaterialfv(GL_FRONT_AND_BACK, GL_SPECULAR, glm::value_ptr(specular));
    glMaterialfv(GL_FRONT_AND_BACK, GL_EMISSION, glm::value_ptr(emission));
    glMaterialf(GL_FRONT_AND_BACK, GL_SHININESS, glm::clamp(shininess, 0.0f, 128.0f));
  }
  if (!(flags & KEEP_BLENDING)) {
    pipe.Set(GL_BLEND, blendMode == 1);
    if (blendMode == 1) {
      pipe.BlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
      pipe.DepthMask(false);
    } else if (blendMode != 0) {
      QWARN("DMaterial:PrepareToPaint; unsupported blend mode %d", blendMode);
    }
  }
  return true;
}

void DMaterial::FinishPaint(int n)
{
  if (!DGlobals().hasContext)
    return;
  DPipe& pipe = DThePipe();
  if (n == 0 && IsEnvironmentMapped() && DGlobals().environmentMap && !(flags & FLAT_COLOR))
    EnvironmentUnit(false, false);
  pipe.SelectUnit(0);
  if (!texture.empty() || n > 0)
    SphereMapping(false);
  if (blendMode == 1 || n > 0)
    pipe.TexEnv(GL_MODULATE);
}
