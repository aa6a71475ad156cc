#include "foundation/qfilename.h"
#include "foundation/qreport.h"
#include "foundation/qstring.h"
#include "geometry/dgeode.h"
#include "geometry/dglobal.h"
#include "geometry/dof.h"
#include "geometry/dshader.h"
#include "geometry/dtexture.h"
#include "geometry/dworld.h"

#include <algorithm>

// MAT0 chunks of a model file: a material, with its submaterials inside.

namespace {

DVector4 GetColor(DofReader& in)
{
  DVector4 c;
  for (int i = 0; i < 4; ++i)
    c[i] = in.GetFloat();
  return c;
}

void PutColor(DofWriter& out, const DVector4& c)
{
  for (int i = 0; i < 4; ++i)
    out.PutFloat(c[i]);
}

std::string LowerCase(std::string_view text)
{
  qstring lower{text};
  lower.ToLower();
  return lower.Str();
}

std::string TextureFile(const std::string& name, const DGeode* owner)
{
  const std::string inside = d3InsideName(name);
  if (!DGlobals().texturesOn)
    return inside; // nothing is opened, so nothing is looked for
  if (!owner)
    return "images/" + inside;
  qstring full;
  if (DGlobals().mapPath.Find(inside.c_str(), full))
    return full.Str();
  return owner->FindMapFile(inside);
}

} // namespace

void DMaterial::ImportDOF(DofReader& in, const DGeode* owner, int depth)
{
  in.GetId(); // MAT0
  in.GetU32();
  creationFlags = 0;
  for (std::string_view id = in.GetId(); id != "MEND" && !in.Ended(); id = in.GetId()) {
    const size_t end = DofChunkEnd(in);
    if (in.Ended())
      break;
    if (id == "MCOL") {
      ImportColors(in);
    } else if (id == "MHDR") {
      name = DMaterialNameFilter(in.GetString());
      className = in.GetString();
      FindShader(in.fileName);
    } else if (id == "MTRA") {
      transparency = in.GetFloat();
      blendMode = in.GetS32();
      if (blendMode != 0)
        SetTransparent();
    } else if (id == "MCFL") {
      creationFlags = in.GetU32();
    } else if (id == "MUVW") {
      for (float* f : {&uOffset, &vOffset, &uTiling, &vTiling, &angle, &blur, &blurOffset})
        *f = in.GetFloat();
    } else if (id == "MTEX") {
      ImportTextures(in, owner);
    } else if (id == "MSUB") {
      ImportSubMaterials(in, owner, depth);
    } else {
      QWARN("Unknown chunk '%.4s'\n", id.data());
    }
    in.SkipTo(end);
  }
  if (shader)
    return;
  const char* first = texture.empty() ? "<no texture>" : texture.front()->GetName();
  QDBG("No shader found for material '%s' in '%s' (default '%s')\n", name.c_str(), in.fileName.c_str(),
       first ? first : "");
  if (texture.empty() && !sub.empty())
    name = "multisub";
}

void DMaterial::ImportColors(DofReader& in)
{
  for (DVector4* c : {&ambient, &diffuse, &specular, &emission})
    *c = GetColor(in);
  shininess = in.GetFloat();
  if (ambient.a != 0 && diffuse.a != 0 && specular.a != 0 && emission.a != 0)
    return;
  if (!DGlobals().alphaWarned) {
    DGlobals().alphaWarned = true;
    QWARN("DOF '%s' contains alpha=0 for certain colors, which may make objects transparent!", in.fileName.c_str());
    QWARN("This warning will only be issued once.");
  }
  for (DVector4* c : {&ambient, &diffuse, &specular, &emission})
    c->a = 1;
}

void DMaterial::FindShader(const std::string& fileName)
{
  const DGlobal& global = DGlobals();
  shader = nullptr;
  if (!global.shadersOn)
    return;
  if (global.findResource) {
    qstring key{fileName};
    key.CutExtension();
    if (global.findResource(key.Str() + "/" + name, shader)) {
      if (!shader)
        QWARN("Material reference '%s' is not a material", (key.Str() + "/" + name).c_str());
    }
  }
  if (!shader && global.world) {
    const size_t base = fileName.find_last_of("/\\") + 1; // npos + 1 is 0
    const std::string path = global.shaderPrefix + fileName.substr(0, base) + name;
    shader = global.world->FindShader("skin" + std::to_string(global.skinNumber) + "/" + LowerCase(path));
  }
  if (!shader && global.defaultShader) {
    shader = global.defaultShader;
    if (global.verbose)
      QDBG("Material '%s' falls back on default shader (in '%s')\n", name.c_str(), fileName.c_str());
  }
}

void DMaterial::ImportTextures(DofReader& in, const DGeode* owner)
{
  const uint32_t count = in.GetCount();
  texture.clear();
  if (count > MAX_TEXTURES)
    QWARN("Material '%s' contains %u textures but max=%d", name.c_str(), count, MAX_TEXTURES);
  for (uint32_t i = 0; i < count && i < MAX_TEXTURES && in.HasMore(); ++i) {
    const std::string file = LowerCase(in.GetString());
    if (shader) {
      if (i == 0)
        firstTextureName = file;
      continue;
    }
    if (!in.Afford(sizeof(DBitMapTexture))) {
      QWARN("Material '%s' has more textures than its file's size can hold", name.c_str());
      return;
    }
    AddBitMap(TextureFile(file, owner), false, owner);
  }
}

void DMaterial::ImportSubMaterials(DofReader& in, const DGeode* owner, int depth)
{
  const uint32_t count = in.GetCount();
  if (depth + 1 >= DofReader::MAX_DEPTH) {
    if (count > 0)
      QWARN("Material '%s' is nested too deeply (max=%d)", name.c_str(), DofReader::MAX_DEPTH);
    return;
  }
  if (count > MAX_SUBMATERIALS)
    QWARN("Material '%s' contains %u submaterials but max=%d", name.c_str(), count, MAX_SUBMATERIALS);
  for (uint32_t i = 0; i < count && i < MAX_SUBMATERIALS && in.HasMore(); ++i) {
    if (!in.Afford(sizeof(DMaterial))) {
      QWARN("Material '%s' has more submaterials than its file's size can hold", name.c_str());
      return;
    }
    DMaterial* m = AddSubMaterial();
    if (!m)
      return;
    m->ImportDOF(in, owner, depth + 1);
  }
}

void DMaterial::ExportDOF(DofWriter& out) const
{
  const DofChunk whole(out, "MAT0");
  {
    const DofChunk chunk(out, "MHDR");
    out.PutString(name);
    out.PutString(className);
  }
  {
    const DofChunk chunk(out, "MCOL");
    for (const DVector4* c : {&ambient, &diffuse, &specular, &emission})
      PutColor(out, *c);
    out.PutFloat(shininess);
  }
  {
    const DofChunk chunk(out, "MUVW");
    for (const float f : {uOffset, vOffset, uTiling, vTiling, angle, blur, blurOffset})
      out.PutFloat(f);
  }
  {
    const DofChunk chunk(out, "MTRA");
    out.PutFloat(transparency);
    out.PutS32(blendMode);
  }
  {
    const DofChunk chunk(out, "MCFL");
    out.PutU32(creationFlags);
  }
  {
    const DofChunk chunk(out, "MTEX");
    out.PutU32(static_cast<uint32_t>(texture.size()));
    for (const auto& t : texture)
      out.PutString(t->GetName() ? t->GetName() : "");
  }
  {
    const DofChunk chunk(out, "MSUB");
    out.PutU32(static_cast<uint32_t>(sub.size()));
    for (const auto& m : sub)
      m->ExportDOF(out);
  }
  out.PutText("MEND");
}
