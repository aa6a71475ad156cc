#include "geometry/dworld.h"

#include "foundation/qbitmap.h"
#include "foundation/qinfo.h"
#include "foundation/qreport.h"
#include "geometry/dgeode.h"
#include "geometry/dglobal.h"
#include "geometry/dshader.h"
#include "geometry/dshaderloader.h"
#include "geometry/dtexture.h"

#include <algorithm>

DWorld::DWorld() = default;

DWorld::~DWorld()
{
  if (DGlobals().world == this)
    DGlobals().world = nullptr;
}

namespace {

// A surface is never without a picture, unless a shader cares for it.
void GiveTexture(DMaterial& m, int geobIndex, const DGeode& geode)
{
  if (m.shader || !m.texture.empty())
    return;
  QWARN("No texture for geob %d (geode %s)", geobIndex, geode.name.c_str());
  m.AddGeneratedTexture();
}

} // namespace

DWorldObject* DWorld::Add(DGeode* geode)
{
  if (!geode)
    return nullptr;
  if (!geode->lod[0])
    geode->lod[0] = geode;
  const int first = objects.Count();
  for (int i = 0; i < geode->GetNoofGeobs(); ++i) {
    DGeob& geob = *geode->geob[static_cast<size_t>(i)];
    if (geob.burst.empty())
      QWARN("DWorld:Add(geode %s); no bursts for geob %d", geode->name.c_str(), i);
    DWorldObject object{&geob, geode};
    for (const DBurst& b : geob.burst)
      if (DMaterial* m = geob.GetMaterial(b.mtlID))
        GiveTexture(*m, i, *geode);
    const DMaterial* m = geob.GetMaterial(geob.burst.empty() ? 0 : geob.burst.front().mtlID);
    if (!m)
      QWARN("No material for geob %d (geode %p)", i, static_cast<const void*>(geode));
    if (m && m->shader) {
      const auto known =
          std::find_if(shaders.begin(), shaders.end(), [&](const auto& s) { return s.get() == m->shader; });
      object.shader = known == shaders.end() ? -1 : static_cast<int>(known - shaders.begin());
      object.sortKey = m->shader->sortKey;
    } else {
      object.sortKey = m && m->IsTransparent() ? 600 : 300;
    }
    if (!objects.Add(object)) {
      QWARN("DShaderRender:Add(geode) overflow");
      break;
    }
  }
  return objects.At(first);
}

void DWorld::Remove(const DGeode* geode)
{
  DTable<DWorldObject, MAX_OBJECTS> kept;
  for (const DWorldObject& object : objects)
    if (object.geode != geode)
      static_cast<void>(kept.Add(object));
  objects = std::move(kept);
}

void DWorld::ClearObjects()
{
  objects.Clear();
  shadowVolumes.Clear();
}

bool DWorld::AddShadowVolume(DGeob* shadowVolume)
{
  if (shadowVolumes.Add(shadowVolume))
    return true;
  QWARN("DWorld:Add(shadowVolume) overflow, max=%d", MAX_SHADOW_VOLUMES);
  return false;
}

void DWorld::Clear()
{
  ClearObjects();
  byKey.clear();
  shaders.clear();
}

std::string DShaderKeyPath(std::string_view fileName)
{
  std::string directory(fileName.substr(0, fileName.find_last_of("/\\") + 1)); // npos + 1 is 0
  for (char& c : directory)
    if (c >= 'A' && c <= 'Z')
      c = static_cast<char>(c - 'A' + 'a');
  if (directory.empty())
    return directory;
  const size_t last = directory.find_last_of("/\\", directory.size() - 2) + 1;
  if (directory.compare(last, 4, "skin") == 0)
    directory.erase(last);
  return directory;
}

bool DWorld::LoadShaders(const std::string& fileName, std::string_view prefix)
{
  DGlobals().poolOn = true;
  const QInfo info(fileName);
  if (!info.IsRead() || info.IsUnreadable())
    return false;
  const std::string keyPath = DShaderKeyPath(searchPrefix + std::string(prefix) + fileName);
  std::vector<std::string> trees;
  for (const QInfoNode* node = info.Root()->FirstChild(); node; node = node->Next())
    if (node->type == QInfoNode::TREE && node->Name().starts_with("shader_"))
      trees.emplace_back(node->Name());
  int done = 0;
  for (const std::string& tree : trees) {
    QDBG("Shader '%s'\n", tree.c_str());
    std::string key = "skin" + std::to_string(DGlobals().skinNumber) + "/" + keyPath;
    for (const char c : tree.substr(7))
      key += c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    DShader* shader = FindShader(key);
    if (shader)
      shader->Reset();
    else
      shader = AddShader(key);
    if (shader)
      DShaderLoader::Parse(info, tree, *shader, keyPath);
    ++done;
    if (DGlobals().shaderProgress)
      DGlobals().shaderProgress(done, static_cast<int>(trees.size()),
                                "Shader " + std::to_string(done) + " of " + std::to_string(trees.size()) + " [" + tree +
                                    "]");
  }
  return true;
}

DShader* DWorld::FindShader(std::string_view key) const
{
  const auto found = byKey.find(std::string(key));
  return found == byKey.end() ? nullptr : found->second;
}

DShader* DWorld::GetShader(int i) const
{
  return i >= 0 && i < ShaderCount() ? shaders[static_cast<size_t>(i)].get() : nullptr;
}

DShader* DWorld::AddShader(const std::string& key)
{
  if (ShaderCount() >= MAX_SHADERS) {
    QWARN("DShaderRender:Add(shader) overflow");
    return nullptr;
  }
  DShader* shader = shaders.emplace_back(std::make_unique<DShader>()).get();
  shader->name = key;
  byKey[key] = shader;
  return shader;
}

DShader* DWorld::GetDefaultShader()
{
  if (!defaultShader)
    CreateDefaultShader();
  return defaultShader.get();
}

bool DWorld::CreateDefaultShader()
{
  if (defaultShader) {
    QWARN("defaultShader was already created");
    return false;
  }
  defaultShader = std::make_unique<DShader>();
  defaultShader->name = "DWorldDefaultShader";
  defaultShader->vertexFile = std::string(SHADER_DIRECTORY) + "/dyn_standard_v.cg";
  defaultShader->fragmentFile = std::string(SHADER_DIRECTORY) + "/standard_f.cg";
  DShaderLayer& layer = defaultShader->layer.emplace_back();
  layer.texture = std::make_unique<DBitMapTexture>(d3MakeStubImage(0));
  layer.texEnv = 0x2100; // GL_MODULATE
  defaultShader->sortKey = 300;
  defaultShader->LoadPrograms();
  return true;
}
