#include "platform/qcgsemantics.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <vector>

namespace {

struct Spelling
{
  std::string_view from, to;
};

constexpr Spelling SPELLINGS[] = {
    {"HPOS", "POSITION"},   {"POSITION0", "POSITION"}, {"ATTR0", "POSITION"},    {"ATTR1", "BLENDWEIGHT"},
    {"NORMAL0", "NORMAL"},  {"ATTR2", "NORMAL"},       {"DIFFUSE", "COLOR0"},    {"ATTR3", "COLOR0"},
    {"COLOR", "COLOR0"},    {"SPECULAR", "COLOR1"},    {"ATTR4", "COLOR1"},      {"FOGCOORD", "FOG"},
    {"FOGC", "FOG"},        {"FOG0", "FOG"},           {"ATTR5", "FOG"},         {"ATTR7", "BLENDINDICES"},
    {"PSIZ", "PSIZE"},      {"PSIZE0", "PSIZE"},       {"DEPR", "DEPTH"},        {"DEPTH0", "DEPTH"},
    {"VPOS", "WPOS"},       {"TANGENT0", "TANGENT"},   {"ATTR14", "TANGENT"},    {"BINORMAL0", "BINORMAL"},
    {"ATTR15", "BINORMAL"}, {"VFACE", "FACE"},         {"TEXCOORD", "TEXCOORD0"}};

struct Family
{
  std::string_view from, to;
  int less; // taken from the number
};

constexpr Family FAMILIES[] = {{"TEX", "TEXCOORD", 0}, {"COL", "COLOR", 0}, {"ATTR", "TEXCOORD", 8}};

// The number at the end, -1 for none; the stem is what stands in front of it.
int Number(std::string_view text, std::string_view& stem)
{
  size_t start = text.size();
  while (start > 0 && std::isdigit(static_cast<unsigned char>(text[start - 1])))
    --start;
  stem = text.substr(0, start);
  if (start == text.size() || text.size() - start > 3)
    return -1;
  return std::stoi(std::string(text.substr(start)));
}

std::vector<std::string> PathWords(std::string_view path)
{
  std::vector<std::string> words(1);
  for (const char c : path) {
    if (c == '.' || c == '[')
      words.emplace_back();
    else if (c != ']')
      words.back() += c;
  }
  return words;
}

bool IsNumber(const std::string& word)
{
  return !word.empty() && word.size() < 3 &&
         std::all_of(word.begin(), word.end(), [](unsigned char c) { return std::isdigit(c); });
}

std::string MatrixState(const std::vector<std::string>& words)
{
  std::string base, number, suffix = "Transpose";
  for (const std::string& word : words) {
    if (word == "modelview")
      base = "gl_ModelViewMatrix";
    else if (word == "projection")
      base = "gl_ProjectionMatrix";
    else if (word == "mvp")
      base = "gl_ModelViewProjectionMatrix";
    else if (word == "texture")
      base = "gl_TextureMatrix";
    else if (word == "inverse")
      suffix = "InverseTranspose";
    else if (word == "transpose")
      suffix = "";
    else if (word == "invtrans")
      suffix = "Inverse";
    else if (IsNumber(word))
      number = word;
    else
      return {};
  }
  if (base.empty())
    return {};
  const bool isTexture = base == "gl_TextureMatrix";
  return base + suffix + (isTexture ? "[" + (number.empty() ? "0" : number) + "]" : "");
}

std::string Member(const std::string& object, const std::string& word, std::initializer_list<std::string_view> known)
{
  return std::find(known.begin(), known.end(), word) != known.end() ? object + "." + word : "";
}

} // namespace

std::string QCgSemantic(std::string_view text)
{
  std::string upper(text);
  std::transform(upper.begin(), upper.end(), upper.begin(),
                 [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
  for (const Spelling& s : SPELLINGS)
    if (upper == s.from)
      return std::string(s.to);
  std::string_view stem;
  const int number = Number(upper, stem);
  for (const Family& f : FAMILIES)
    if (stem == f.from && number >= f.less)
      return std::string(f.to) + std::to_string(number - f.less);
  return upper;
}

std::string QCgSemanticBehind(const std::string& semantic, int steps)
{
  std::string_view stem;
  const int number = Number(semantic, stem);
  return steps == 0 ? semantic : std::string(stem) + std::to_string(std::max(number, 0) + steps);
}

std::string QCgInput(DProgramStage stage, const std::string& semantic)
{
  std::string_view stem;
  const int number = Number(semantic, stem);
  const bool vertex = stage == DProgramStage::VERTEX;
  if (stem == "TEXCOORD" && number >= 0 && number < 8)
    return vertex ? "gl_MultiTexCoord" + std::to_string(number) : "gl_TexCoord[" + std::to_string(number) + "]";
  if (semantic == "COLOR0")
    return "gl_Color";
  if (semantic == "COLOR1")
    return "gl_SecondaryColor";
  if (semantic == "FOG")
    return vertex ? "vec4(gl_FogCoord)" : "vec4(gl_FogFragCoord)";
  if (vertex && semantic == "POSITION")
    return "gl_Vertex";
  if (vertex && semantic == "NORMAL")
    return "vec4(gl_Normal, 0.0)";
  if (!vertex && (semantic == "POSITION" || semantic == "WPOS"))
    return "gl_FragCoord";
  if (!vertex && semantic == "FACE")
    return "vec4(gl_FrontFacing ? 1.0 : -1.0)";
  return (vertex ? "cga_" : "cgv_") + semantic;
}

std::string QCgVertexOutput(const std::string& semantic)
{
  std::string_view stem;
  const int number = Number(semantic, stem);
  if (stem == "TEXCOORD" && number >= 0 && number < 8)
    return "gl_TexCoord[" + std::to_string(number) + "]";
  if (semantic == "COLOR0")
    return "gl_FrontColor";
  if (semantic == "COLOR1")
    return "gl_FrontSecondaryColor";
  if (semantic == "FOG")
    return "gl_FogFragCoord";
  if (semantic == "PSIZE")
    return "gl_PointSize";
  return "cgv_" + semantic;
}

bool QCgIsScalar(const std::string& semantic)
{
  return semantic == "FOG" || semantic == "PSIZE" || semantic == "DEPTH";
}

int QCgAttributeLocation(const std::string& semantic)
{
  if (semantic == "BLENDWEIGHT")
    return 1;
  if (semantic == "BLENDINDICES")
    return 7;
  if (semantic == "TANGENT")
    return 14;
  if (semantic == "BINORMAL")
    return 15;
  return -1;
}

std::string QCgState(std::string_view path)
{
  std::vector<std::string> words = PathWords(path);
  if (words.size() < 3 || (words[0] != "state" && words[0] != "glstate"))
    return {};
  const std::string kind = words[1];
  words.erase(words.begin(), words.begin() + 2);
  const std::string& last = words.back();
  if (kind == "matrix")
    return MatrixState(words);
  if (kind == "material" && last == "shininess")
    return "vec4(gl_FrontMaterial.shininess)";
  if (kind == "material")
    return Member("gl_FrontMaterial", last, {"ambient", "diffuse", "specular", "emission"});
  if (kind == "light" && words.size() == 2 && IsNumber(words[0]) && words[0].size() == 1 && words[0] < "8")
    return Member("gl_LightSource[" + words[0] + "]", last, {"ambient", "diffuse", "specular", "position"});
  if (kind == "lightmodel")
    return Member("gl_LightModel", last, {"ambient"});
  if (kind == "fog" && last == "params")
    return "vec4(gl_Fog.density, gl_Fog.start, gl_Fog.end, gl_Fog.scale)";
  if (kind == "fog")
    return Member("gl_Fog", last, {"color"});
  return {};
}
