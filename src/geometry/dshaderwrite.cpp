// A shader as text of a shader file.
#include "foundation/qfile.h"
#include "foundation/qfilename.h"
#include "foundation/qnumber.h"
#include "geometry/dshader.h"
#include "geometry/dtexture.h"

#include <epoxy/gl.h>

#include <algorithm>
#include <cmath>
#include <iterator>

namespace {

struct Word
{
  uint32_t value;
  const char* name;
};

constexpr Word COMPARES[] = {{GL_NEVER, "never"},   {GL_LESS, "less"},        {GL_LEQUAL, "lequal"},
                             {GL_EQUAL, "equal"},   {GL_GEQUAL, "gequal"},    {GL_GREATER, "greater"},
                             {GL_ALWAYS, "always"}, {GL_NOTEQUAL, "notequal"}};
constexpr Word FACTORS[] = {{GL_ZERO, "zero"},
                            {GL_ONE, "one"},
                            {GL_SRC_COLOR, "src_color"},
                            {GL_ONE_MINUS_SRC_COLOR, "one_minus_src_color"},
                            {GL_SRC_ALPHA, "src_alpha"},
                            {GL_ONE_MINUS_SRC_ALPHA, "one_minus_src_alpha"},
                            {GL_DST_ALPHA, "dst_alpha"},
                            {GL_ONE_MINUS_DST_ALPHA, "one_minus_dst_alpha"},
                            {GL_DST_COLOR, "dst_color"},
                            {GL_ONE_MINUS_DST_COLOR, "one_minus_dst_color"},
                            {GL_SRC_ALPHA_SATURATE, "src_alpha_saturate"}};

template <size_t N>
const char* NameOf(const Word (&words)[N], uint32_t value)
{
  const auto found = std::ranges::find(words, value, &Word::value);
  return found == std::end(words) ? words[0].name : found->name;
}

// Lines "  key=value" of one tree.
class Lines
{
public:
  Lines(std::string& out, const char* space) : text(out), indent(space) {}
  void Add(const char* key, const std::string& value) { text += indent + std::string(key) + "=" + value + "\n"; }
  void Add(const char* key, bool on) { Add(key, std::string(on ? "1" : "0")); }
  void Add(const char* key, int value) { Add(key, std::to_string(value)); }
  void Add(const char* key, float value) { Add(key, QFormatFloat(value)); }
  void Add(const char* key, const DVector4& color)
  {
    Add(key, QFormatFloat(color.r) + " " + QFormatFloat(color.g) + " " + QFormatFloat(color.b));
  }
  void Add(const char* key, const char* value) { Add(key, std::string(value)); }

private:
  std::string& text;
  const char* indent;
};

std::string AlphaTest(const DShaderLayer& layer)
{
  const std::string function = NameOf(COMPARES, layer.alphaFunc);
  if (layer.alphaFunc == GL_ALWAYS || layer.alphaFunc == GL_NEVER)
    return function;
  return function + " " + std::to_string(std::lround(layer.alphaRef * 255));
}

const char* WrapName(uint32_t wrap)
{
  return wrap == GL_REPEAT ? "repeat" : "clamp";
}

void WriteLayer(const DShaderLayer& layer, std::string& text)
{
  Lines lines(text, "    ");
  lines.Add("map", !layer.mapName.empty() || !layer.texture || !layer.texture->GetName() ? layer.mapName
                                                                                         : layer.texture->GetName());
  if (layer.mode != "srgb")
    lines.Add("mode", layer.mode);
  lines.Add("compression", (layer.flags & DShaderLayer::COMPRESSION) != 0);
  lines.Add("alpha_to_coverage", (layer.flags & DShaderLayer::ALPHA_TO_COVERAGE) != 0);
  lines.Add("alphafunc", AlphaTest(layer));
  lines.Add("depthfunc", NameOf(COMPARES, layer.depthFunc));
  lines.Add("depthwrite", (layer.flags & DShaderLayer::DEPTH_WRITE) != 0);
  lines.Add("blendfunc", std::string(NameOf(FACTORS, layer.blendSrc)) + " " + NameOf(FACTORS, layer.blendDst));
  lines.Add("wrap_s", WrapName(layer.wrapS));
  lines.Add("wrap_t", WrapName(layer.wrapT));
  lines.Add("wrap_r", WrapName(layer.wrapR));
  lines.Add("wrap_q", WrapName(layer.wrapQ));
  lines.Add("diffuse", layer.diffuse);
  lines.Add("ambient", layer.ambient);
  lines.Add("specular", layer.specular);
  lines.Add("emission", layer.emission);
  lines.Add("shininess", layer.shininess);
  lines.Add("reflect", layer.reflect);
}

void WriteProgram(const char* key, const std::string& file, std::string& text)
{
  if (!file.empty())
    text += std::string("  ") + key + "\n  {\n    file=" + file + "\n  }\n";
}

} // namespace

std::string DShader::Text(bool bodyOnly) const
{
  std::string text;
  if (!bodyOnly)
    text = std::string("shader_") + QFileBase(name.c_str()) + "\n{\n";
  WriteProgram("vertex_shader", vertexFile, text);
  WriteProgram("fragment_shader", fragmentFile, text);
  Lines lines(text, "  ");
  if (IsSky())
    lines.Add("sky", true);
  lines.Add("scale", scale);
  lines.Add("bounce_amount", bounceAmount);
  lines.Add("bounce_alpha", bounceAlpha);
  lines.Add("cull", shaderFlags & CULL_BACK ? "back" : shaderFlags & CULL_FRONT ? "front" : "none");
  lines.Add("cast_shadow", (shaderFlags & CAST_SHADOW) != 0);
  lines.Add("tangents", NeedsTangents());
  lines.Add("atlas", (shaderFlags & NO_ATLAS) == 0);
  for (size_t i = 0; i < layer.size(); ++i) {
    text += "  layer" + std::to_string(i) + "\n  {\n";
    WriteLayer(layer[i], text);
    text += "  }\n";
  }
  return bodyOnly ? text : text + "}\n";
}

bool DShader::Write(QFile& file, int flags) const
{
  const std::string text = Text(flags & 1);
  return file.Write(text.data(), text.size()) == text.size();
}
