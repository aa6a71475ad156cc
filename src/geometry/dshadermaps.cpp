#include "geometry/dshadermaps.h"

#include "foundation/qbitmap.h"
#include "foundation/qfile.h"
#include "foundation/qfilename.h"
#include "foundation/qreport.h"
#include "foundation/qstring.h"
#include "geometry/dcubemap.h"
#include "geometry/ddds.h"
#include "geometry/dglobal.h"
#include "geometry/dshader.h"
#include "geometry/dtexture.h"
#include "geometry/dtexture3d.h"

#include <algorithm>
#include <epoxy/gl.h>
#include <utility>

namespace {

DTexturePtr PlainTexture(int r, int g, int b)
{
  auto bitmap = std::make_unique<QBitMap>(32, 1, 1);
  bitmap->SetColorAt(0, 0, QColor(r, g, b));
  return std::make_unique<DBitMapTexture>(std::move(bitmap));
}

DTexturePtr SceneTexture(const std::string& mapName, const DShader& shader)
{
  if (DGlobals().sceneTexture)
    if (auto texture = DGlobals().sceneTexture(mapName))
      return texture;
  QWARN("DShaderLoader: could not resolve %s (for %s)", mapName.c_str(), shader.name.c_str());
  if (mapName != "$mirror" && mapName != "$water_reflection")
    return nullptr;
  qinfo("No '%s' texture was created (shader '%s')", mapName.c_str(), shader.name.c_str());
  return PlainTexture(150, 50, 50);
}

// As it is named, beside the shader's key, beside the file; each through the map path.
std::string MapFile(const std::string& mapName, std::string_view keyPath, const std::string& infoFile)
{
  const std::string name = d3InsideName(mapName);
  const std::string directory = infoFile.substr(0, std::min(infoFile.find_last_of("/\\"), infoFile.size()));
  for (const std::string& candidate : {name, std::string(keyPath) + name, directory + "/" + name})
    if (const std::string path = d3FindMap(candidate); QFileExists(path))
      return path;
  return name;
}

std::string Upper(std::string_view text)
{
  qstring upper(text);
  upper.ToUpper();
  return upper.Str();
}

DTexturePtr LoadDDS(const std::string& path, const DShader& shader)
{
  DDDS dds;
  if (DGlobals().ddsOn && dds.Load(path))
    return dds.CreateTexture();
  if (DGlobals().ddsOn || !QFileExists(path))
    QWARN("Image '%s' loading failed (not found?) for shader %s", path.c_str(), shader.name.c_str());
  return std::make_unique<DBitMapTexture>(d3MakeStubImage(0));
}

// A table of the sky's colours, 256 x 64 pixels of three floats each.
class TableTexture : public DTexture
{
public:
  static constexpr size_t SIZE = 0x30000;
  explicit TableTexture(const std::string& path)
  {
    EnableMipmap(false);
    minFilter = magFilter = GL_LINEAR;
    SetWrap(GL_CLAMP_TO_EDGE, GL_CLAMP_TO_EDGE, wrapR, wrapQ);
    internalFormat = GL_RGB32F;
    if (!QReadFile(path, pending, true) || pending.size() < SIZE) {
      QERR("Can't open %s\n", path.c_str());
      pending.clear();
      return;
    }
    SetSize(256, 64);
  }

protected:
  void Upload() override
  {
    if (!pending.empty())
      glTexImage2D(target, 0, static_cast<GLint>(internalFormat), width, height, 0, GL_RGB, GL_FLOAT, pending.data());
    pending = {};
  }

private:
  std::vector<std::byte> pending;
};

DTexturePtr LoadFloats(const std::string& path, const std::string& upper)
{
  QDBG("Hardcoded F32 file '%s'\n", path.c_str());
  if (upper.find("INSCATTER.") != std::string::npos)
    return std::make_unique<DTexture3D>(path);
  if (upper.find("TRANSMITTANCE.") != std::string::npos)
    return std::make_unique<TableTexture>(path);
  QERR("Unknown hardcoded F32 file");
  return PlainTexture(150, 50, 50);
}

// path is that of the left picture.
DTexturePtr LoadCube(const std::string& mapName, const std::string& path)
{
  QDBG("CubeMap '%s'\n", mapName.c_str());
  auto cube = std::make_unique<DCubeMap>();
  const size_t left = path.rfind(DCubeMap::SIDE_NAMES[1]);
  cube->LoadImages(path.substr(0, std::min(left, path.size())));
  return cube;
}

DTexturePtr LoadPicture(const std::string& path, const DShader& shader, const DShaderLayer& layer)
{
  bool found = false;
  auto picture = d3LoadTextureMap(path, &found, true);
  if (!found)
    QWARN("Image '%s' not found for shader %s", path.c_str(), shader.name.c_str());
  d3KeyTransparency(*picture, path);
  auto texture = std::make_unique<DBitMapTexture>(std::move(picture));
  texture->EnableMipmap(layer.flags & DShaderLayer::MIPMAP);
  texture->SetMinFilter(layer.minFilter);
  texture->SetMagFilter(layer.magFilter);
  if (layer.flags & DShaderLayer::COMPRESSION)
    texture->EnableCompression();
  return texture;
}

} // namespace

DTexturePtr DLoadShaderMap(const DShader& shader, const DShaderLayer& layer, std::string_view keyPath,
                           const std::string& infoFile)
{
  std::string mapName = layer.mapName;
  if (mapName.starts_with('$'))
    return SceneTexture(mapName, shader);
  const size_t star = mapName.find('*');
  if (star != mapName.npos)
    mapName.replace(star, 1, DCubeMap::SIDE_NAMES[1]);
  DGlobal& global = DGlobals();
  const std::string path = MapFile(mapName, keyPath, infoFile);
  if (global.poolOn)
    if (auto shared = global.texturePool.Find(path)) {
      shared->SetWrap(GL_REPEAT, GL_REPEAT, GL_REPEAT, GL_REPEAT);
      return shared;
    }
  const std::string upper = Upper(mapName);
  const bool linearBefore = std::exchange(global.linear, layer.mode != "srgb");
  DTexturePtr texture;
  if (!global.texturesOn)
    texture = std::make_unique<DBitMapTexture>(d3MakeStubImage(1));
  else if (upper.find(".DDS") != std::string::npos)
    texture = LoadDDS(path, shader);
  else if (upper.find(".F32") != std::string::npos)
    texture = LoadFloats(path, upper);
  else if (star != layer.mapName.npos)
    texture = LoadCube(layer.mapName, path);
  else
    texture = LoadPicture(path, shader, layer);
  global.linear = linearBefore;
  texture->SetName(QFileBase(path.c_str()));
  texture->SetLodRange(layer.minLod, layer.maxLod, layer.lodBias + layer.mipmapBias);
  if (texture->target == GL_TEXTURE_2D && upper.find(".F32") == std::string::npos)
    texture->SetWrap(layer.wrapS, layer.wrapT, layer.wrapR, layer.wrapQ);
  if (global.poolOn && layer.flags & DShaderLayer::CACHEABLE)
    global.texturePool.Add(path, texture.get());
  return texture;
}
