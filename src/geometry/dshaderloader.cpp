#include "geometry/dshaderloader.h"

#include "foundation/qinfo.h"
#include "foundation/qreport.h"
#include "geometry/dglobal.h"
#include "geometry/dshader.h"
#include "geometry/dshadermaps.h"
#include "geometry/dtexture.h"

#include <algorithm>
#include <charconv>
#include <epoxy/gl.h>
#include <optional>
#include <vector>

namespace {

struct Word
{
  const char* name;
  uint32_t value;
};

template <size_t N>
std::optional<uint32_t> Lookup(const Word (&words)[N], std::string_view name)
{
  for (const Word& w : words)
    if (name == w.name)
      return w.value;
  return std::nullopt;
}

constexpr Word WRAPS[] = {{"repeat", GL_REPEAT}, {"clamp", GL_CLAMP_TO_EDGE}, {"clamp_to_edge", GL_CLAMP_TO_EDGE}};
constexpr Word FILTERS[] = {{"nearest", GL_NEAREST},
                            {"linear", GL_LINEAR},
                            {"nearest_mipmap_nearest", GL_NEAREST_MIPMAP_NEAREST},
                            {"nearest_mipmap_linear", GL_NEAREST_MIPMAP_LINEAR},
                            {"linear_mipmap_linear", GL_LINEAR_MIPMAP_LINEAR}};
constexpr Word TEXENVS[] = {
    {"modulate", GL_MODULATE}, {"replace", GL_REPLACE}, {"blend", GL_BLEND}, {"decal", GL_DECAL}};
constexpr Word TEXGENS[] = {{"object_linear", GL_OBJECT_LINEAR},
                            {"eye_linear", GL_EYE_LINEAR},
                            {"sphere_map", GL_SPHERE_MAP},
                            {"reflection_map", GL_REFLECTION_MAP},
                            {"normal_map", GL_NORMAL_MAP}};
constexpr Word COMPARES[] = {{"never", GL_NEVER},   {"less", GL_LESS},         {"lequal", GL_LEQUAL},
                             {"equal", GL_EQUAL},   {"gequal", GL_GEQUAL},     {"greater", GL_GREATER},
                             {"always", GL_ALWAYS}, {"notequal", GL_NOTEQUAL}, {"none", GL_ALWAYS}};
constexpr Word BLENDS[] = {{"zero", GL_ZERO},
                           {"one", GL_ONE},
                           {"src_color", GL_SRC_COLOR},
                           {"one_minus_src_color", GL_ONE_MINUS_SRC_COLOR},
                           {"src_alpha", GL_SRC_ALPHA},
                           {"one_minus_src_alpha", GL_ONE_MINUS_SRC_ALPHA},
                           {"dst_alpha", GL_DST_ALPHA},
                           {"one_minus_dst_alpha", GL_ONE_MINUS_DST_ALPHA},
                           {"dst_color", GL_DST_COLOR},
                           {"one_minus_dst_color", GL_ONE_MINUS_DST_COLOR},
                           {"src_alpha_saturate", GL_SRC_ALPHA_SATURATE}};

std::vector<std::string> WordsOf(std::string_view text)
{
  std::vector<std::string> words;
  for (size_t at = text.find_first_not_of(" \t"); at != text.npos; at = text.find_first_not_of(" \t", at)) {
    const size_t end = std::min(text.find_first_of(" \t", at), text.size());
    words.emplace_back(text.substr(at, end - at));
    at = end;
  }
  return words;
}

uint32_t CompareFunction(const std::string& name)
{
  const auto found = Lookup(COMPARES, name);
  if (!found)
    QWARN("DShaderLoader: depth or alphafunc arg '%s' unknown", name.c_str());
  return found.value_or(GL_LEQUAL);
}

uint32_t Filter(const std::string& name)
{
  const auto found = Lookup(FILTERS, name);
  if (!found)
    QWARN("DShaderLoader: filter arg '%s' unknown", name.c_str());
  return found.value_or(GL_NEAREST);
}

void SetFlag(uint32_t& flags, uint32_t flag, bool on)
{
  flags = on ? flags | flag : flags & ~flag;
}

// One tree being read: its keys under their own names.
class Keys
{
public:
  Keys(const QInfo& i, std::string p) : info(i), path(std::move(p)) {}
  const std::string& Path() const { return path; }
  bool Has(std::string_view key) const { return info.PathExists(Full(key)); }
  int Int(std::string_view key, int otherwise) const { return info.GetInt(Full(key), otherwise); }
  bool Bool(std::string_view key, bool otherwise) const { return info.GetBool(Full(key), otherwise); }
  float Float(std::string_view key, float otherwise) const { return info.GetFloat(Full(key), otherwise); }
  std::string Text(std::string_view key, const char* otherwise = "") const
  {
    std::string text;
    info.GetString(Full(key), text, otherwise);
    return text;
  }
  // Unchanged when the key doesn't exist; three numbers leave the fourth at 1.
  void Color(std::string_view key, DVector4& color) const
  {
    if (!Has(key))
      return;
    const float otherwise[] = {0, 0, 0, 1};
    info.GetFloats(Full(key), 4, &color.x, otherwise);
  }

private:
  std::string Full(std::string_view key) const { return path + "." + std::string(key); }
  const QInfo& info;
  std::string path;
};

void ReadCull(const Keys& keys, DShader& shader)
{
  const std::string cull = keys.Text("cull", "back");
  uint32_t culled = DShader::CULL_BACK;
  if (cull == "front")
    culled = DShader::CULL_FRONT;
  else if (cull == "none" || cull == "disable")
    culled = 0;
  else if (!cull.empty() && cull != "back")
    QWARN("DShaderLoader: cull arg '%s' unknown", cull.c_str());
  SetFlag(shader.shaderFlags, DShader::CULL_BACK | DShader::CULL_FRONT, false);
  shader.shaderFlags |= culled;
}

void ReadShaderKeys(const Keys& keys, DShader& shader)
{
  shader.sortOffset = keys.Int("sort_offset", 0);
  if (const std::string material = keys.Text("material"); !material.empty() && DGlobals().physicsMaterial)
    shader.materialId = DGlobals().physicsMaterial(material);
  shader.fresnelBias = keys.Float("fresnel.bias", shader.fresnelBias);
  shader.fresnelScale = keys.Float("fresnel.scale", shader.fresnelScale);
  shader.fresnelPower = keys.Float("fresnel.power", shader.fresnelPower);
  shader.bounceAmount = keys.Float("bounce_amount", shader.bounceAmount);
  shader.bounceAlpha = keys.Float("bounce_alpha", shader.bounceAlpha);
  ReadCull(keys, shader);
  SetFlag(shader.shaderFlags, DShader::FOG, keys.Int("fog", 1) != 0);
  SetFlag(shader.shaderFlags, DShader::NO_ATLAS, keys.Int("atlas", 1) == 0);
  SetFlag(shader.shaderFlags, DShader::TANGENTS, keys.Int("tangents", 0) != 0);
  SetFlag(shader.shaderFlags, DShader::MOTION_BLUR, keys.Bool("motion_blur", true));
  SetFlag(shader.shaderFlags, DShader::SKY, keys.Int("sky", 0) != 0);
  SetFlag(shader.shaderFlags, DShader::WATER, keys.Int("water", 0) != 0);
  SetFlag(shader.shaderFlags, DShader::CAST_SHADOW, keys.Bool("cast_shadow", false));
  shader.scale = keys.Float("scale", 1.0f);
  shader.vertexFile = keys.Text("vertex_shader.file", "dyn_standard_v.cg");
  shader.fragmentFile = keys.Text("fragment_shader.file", "standard_f.cg");
  shader.geometryFile = keys.Text("geometry_shader.file");
  shader.vertexProjFile = keys.Text("vertex_shader_proj.file", "projected_texture_v.cg");
  shader.fragmentProjFile = keys.Text("fragment_shader_proj.file", "projected_texture_f.cg");
}

void ReadColors(const Keys& keys, DShaderLayer& layer)
{
  layer.shininess = keys.Int("shininess", layer.shininess);
  layer.reflect = keys.Float("reflect", layer.reflect);
  keys.Color("diffuse", layer.diffuse);
  keys.Color("ambient", layer.ambient);
  keys.Color("specular", layer.specular);
  keys.Color("emission", layer.emission);
}

// What the shader says for all of its layers.
DShaderLayer LayerDefaults(const Keys& keys)
{
  DShaderLayer layer;
  keys.Color("diffuse", layer.ambient);
  ReadColors(keys, layer);
  layer.mipmapBias = keys.Float("mipmap_bias", 0);
  return layer;
}

void ReadFilters(const Keys& keys, bool compress, DShaderLayer& layer)
{
  const bool mipmap = keys.Int("mipmap", 1) != 0;
  SetFlag(layer.flags, DShaderLayer::MIPMAP, mipmap);
  if (mipmap) {
    layer.minLod = keys.Float("mipmap_minlod", 0);
    layer.maxLod = keys.Float("mipmap_maxlod", 1000);
    layer.lodBias = keys.Float("mipmap_lod_bias", 0);
    layer.mipmapBias = keys.Float("mipmap_bias", layer.mipmapBias);
  }
  layer.magFilter = Filter(keys.Text("mag_filter", "linear"));
  layer.minFilter = Filter(keys.Text("min_filter", mipmap ? "linear_mipmap_linear" : "nearest"));
  SetFlag(layer.flags, DShaderLayer::COMPRESSION, compress && keys.Bool("compression", true));
  SetFlag(layer.flags, DShaderLayer::CACHEABLE, keys.Bool("cache", true));
}

void ReadWraps(const Keys& keys, DShaderLayer& layer)
{
  const struct
  {
    const char* key;
    uint32_t DShaderLayer::*wrap;
  } wraps[] = {{"wrap_s", &DShaderLayer::wrapS},
               {"wrap_t", &DShaderLayer::wrapT},
               {"wrap_r", &DShaderLayer::wrapR},
               {"wrap_q", &DShaderLayer::wrapQ}};
  for (const auto& w : wraps) {
    const std::string name = keys.Text(w.key, "repeat");
    const auto found = Lookup(WRAPS, name);
    if (!found)
      QWARN("DShaderLoader: wrap '%s' unknown (must be repeat, clamp or clamp_to_edge)", name.c_str());
    layer.*w.wrap = found.value_or(GL_REPEAT);
  }
}

uint32_t BlendFactor(const std::string& name)
{
  const auto found = Lookup(BLENDS, name);
  if (!found)
    QWARN("DShaderLoader: blendfunc '%s' unknown", name.c_str());
  return found.value_or(GL_ONE);
}

void ReadBlending(const Keys& keys, const DShader& shader, const DShaderLayer* before, DShaderLayer& layer)
{
  const auto blend = [&](uint32_t source, uint32_t destination) {
    layer.flags |= DShaderLayer::BLENDING;
    layer.blendSrc = source;
    layer.blendDst = destination;
  };
  if (!keys.Has("blendfunc")) {
    if (!before)
      return;
    if (shader.vertexProgram && shader.fragmentProgram) {
      SetFlag(layer.flags, DShaderLayer::BLENDING, before->flags & DShaderLayer::BLENDING);
      layer.blendSrc = before->blendSrc;
      layer.blendDst = before->blendDst;
      return;
    }
    QWARN("DShaderLoader: %s has no blendfunc for layer %d; implicitly added", shader.name.c_str(),
          shader.LayerCount());
    blend(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
    return;
  }
  const std::string text = keys.Text("blendfunc");
  const auto words = WordsOf(text);
  if (words.size() == 1 && words[0] == "filter") {
    blend(GL_ZERO, GL_SRC_COLOR);
  } else if (words.size() == 1 && words[0] == "blend") {
    blend(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
  } else if (words.size() < 2) {
    QWARN("Bad blendfunc; need source & dest parameter (%s=%s)", (keys.Path() + ".blendfunc").c_str(), text.c_str());
    blend(GL_ONE, GL_ZERO);
  } else {
    const uint32_t source = BlendFactor(words[0]);
    blend(source, BlendFactor(words[1]));
  }
}

void ReadAlphaTest(const Keys& keys, const DShaderLayer* before, DShaderLayer& layer)
{
  if (!keys.Has("alphafunc")) {
    if (before) {
      layer.alphaFunc = before->alphaFunc;
      layer.alphaRef = before->alphaRef;
      SetFlag(layer.flags, DShaderLayer::ALPHA_TEST, before->flags & DShaderLayer::ALPHA_TEST);
    }
    return;
  }
  const std::string text = keys.Text("alphafunc");
  const auto words = WordsOf(text);
  layer.alphaFunc = CompareFunction(words.empty() ? "" : words[0]);
  layer.alphaRef = 0;
  const bool noTest = layer.alphaFunc == GL_ALWAYS || layer.alphaFunc == GL_NEVER;
  if (words.size() < 2) {
    if (!noTest)
      QWARN("Alpha func syntax error (%s)", text.c_str());
    return;
  }
  float reference = 0;
  const auto end = std::from_chars(words[1].data(), words[1].data() + words[1].size(), reference);
  if (end.ec == std::errc::invalid_argument) {
    QWARN("Alpha func syntax error (%s)", text.c_str());
    return;
  }
  if (end.ec != std::errc() || !(reference >= 0 && reference <= 255)) {
    QWARN("Alpha reference value (%s) out of range 0..255", words[1].c_str());
    return;
  }
  layer.alphaRef = reference / 255;
  SetFlag(layer.flags, DShaderLayer::ALPHA_TEST, !noTest);
}

void ReadDepth(const Keys& keys, const DShaderLayer* before, DShaderLayer& layer)
{
  layer.depthFunc = keys.Has("depthfunc") ? CompareFunction(keys.Text("depthfunc"))
                    : before              ? before->depthFunc
                                          : static_cast<uint32_t>(GL_LEQUAL);
  SetFlag(layer.flags, DShaderLayer::NO_DEPTH_TEST, layer.depthFunc == GL_ALWAYS);
  SetFlag(layer.flags, DShaderLayer::DEPTH_WRITE, keys.Int("depthwrite", 1) != 0);
  SetFlag(layer.flags, DShaderLayer::ALPHA_TO_COVERAGE, keys.Int("alpha_to_coverage", 0) != 0);
}

void ReadTexturing(const Keys& keys, const DShader& shader, DShaderLayer& layer)
{
  const std::string env = keys.Text("texenv", "modulate");
  const auto mode = Lookup(TEXENVS, env);
  if (!mode)
    QWARN("DShaderLoader: texenv arg '%s' unknown", env.c_str());
  layer.texEnv = mode.value_or(GL_MODULATE);
  if (keys.Has("texscale"))
    layer.texScale[0] = layer.texScale[1] = layer.texScale[2] = keys.Float("texscale", 1);
  constexpr const char* AXES[] = {"s", "t", "r", "q"};
  for (size_t i = 0; i < 4; ++i) {
    layer.texScale[i] = keys.Float(std::string("texscale_") + AXES[i], layer.texScale[i]);
    const std::string name = keys.Text(std::string("texgen_") + AXES[i]);
    layer.texGen[i] = Lookup(TEXGENS, name).value_or(0);
    if (layer.texGen[i] == GL_SPHERE_MAP && i > 1) {
      QWARN("Shader %s: sphere_map only allowed for texgen_s and _t", shader.name.c_str());
      layer.texGen[i] = 0;
    }
  }
}

void ReadMode(const Keys& keys, const DShader& shader, DShaderLayer& layer)
{
  layer.mode = keys.Text("mode", "srgb");
  if (layer.mode == "srgb" || layer.mode == "linear")
    return;
  QWARN("%s: %s unrecognized ('%s'; use srgb or linear)", shader.name.c_str(), (keys.Path() + ".mode").c_str(),
        layer.mode.c_str());
  layer.mode = "srgb";
}

int SortKey(const DShader& shader)
{
  const int base = DGlobals().shaderSortBase;
  if (shader.IsSky())
    return base + shader.sortOffset + 200;
  if (shader.shaderFlags & DShader::WATER)
    return base + 350;
  if (shader.layer.empty())
    return base + 300;
  const DShaderLayer& first = shader.layer.front();
  if (first.blendSrc == GL_ONE)
    return base + shader.sortOffset + 300;
  return base + shader.sortOffset + (first.flags & DShaderLayer::ALPHA_TEST ? 500 : 600);
}

void CheckPrograms(const DShader& shader)
{
  const bool on = DGlobals().programsOn;
  const bool vertex = on ? shader.vertexProgram == 0 : shader.vertexFile.empty();
  const bool fragment = on ? shader.fragmentProgram == 0 : shader.fragmentFile.empty();
  if (DGlobals().requirePrograms && (vertex || fragment))
    QWARN("Shader '%s' doesn't have a %s shader", shader.name.c_str(),
          vertex && fragment ? "vertex and fragment"
          : vertex           ? "vertex"
                             : "fragment");
}

} // namespace

bool DShaderLoader::Parse(const QInfo& info, const std::string& treeName, DShader& shader, std::string_view path,
                          bool loadMaps)
{
  if (!treeName.starts_with("shader_")) {
    QWARN("DShaderLoader:Parse(); shader path doesn't start with 'shader_'");
    QWARN("  shader %s%s ignored", std::string(path).c_str(), treeName.c_str());
    return false;
  }
  shader.shaderFlags |= DShader::FROM_FILE;
  shader.sortKey = 300;
  const Keys keys(info, treeName);
  ReadShaderKeys(keys, shader);
  shader.LoadPrograms();
  const DShaderLayer defaults = LayerDefaults(keys);
  const bool compress = keys.Bool("compression", true);
  int trees = 0;
  while (trees < DShader::MAX_LAYERS && info.FindNode(treeName + ".layer" + std::to_string(trees)))
    ++trees;
  if (trees == 0)
    QERR("%s: shader '%s' has no layer0; we need at least one layer", info.FileName().c_str(), shader.name.c_str());
  shader.layer.reserve(static_cast<size_t>(trees)); // before, below, points into it
  for (int i = 0; i < trees; ++i) {
    const Keys layerKeys(info, treeName + ".layer" + std::to_string(i));
    DShaderLayer layer = defaults;
    layer.mapName = layerKeys.Text("map");
    if (layer.mapName.empty()) {
      if (i == 0)
        QWARN("Shader %s: no layers defined (need layer0.map)", shader.name.c_str());
      break;
    }
    const DShaderLayer* before = shader.layer.empty() ? nullptr : &shader.layer.back();
    ReadFilters(layerKeys, compress, layer);
    ReadWraps(layerKeys, layer);
    ReadMode(layerKeys, shader, layer);
    ReadBlending(layerKeys, shader, before, layer);
    ReadDepth(layerKeys, before, layer);
    ReadAlphaTest(layerKeys, before, layer);
    ReadTexturing(layerKeys, shader, layer);
    ReadColors(layerKeys, layer);
    if (loadMaps)
      layer.texture = DLoadShaderMap(shader, layer, path, info.FileName());
    if (layer.texture && layerKeys.Has("pbo"))
      layerKeys.Bool("pbo", false) ? static_cast<void>(layer.texture->EnablePbo()) : layer.texture->DisablePbo();
    shader.layer.push_back(std::move(layer));
  }
  shader.sortKey = SortKey(shader);
  CheckPrograms(shader);
  return true;
}

bool DShaderLoader::Parse(std::string_view)
{
  QWARN("Parse(txt) NYI");
  return false;
}
