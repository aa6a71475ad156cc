// Models as VRML 2.0, one shape for each geob.

#include "foundation/qfile.h"
#include "foundation/qfilename.h"
#include "foundation/qreport.h"
#include "foundation/qsafewrite.h"
#include "geometry/dgeode.h"
#include "geometry/dshader.h"
#include "geometry/dtexture.h"

#include <glm/geometric.hpp>

#include <cmath>
#include <cstdarg>
#include <cstdio>

namespace {

[[gnu::format(printf, 2, 3)]] void Print(std::string& out, const char* format, ...)
{
  char line[1024];
  va_list args;
  va_start(args, format);
  const int length = std::vsnprintf(line, sizeof line, format, args);
  va_end(args);
  if (length > 0)
    out.append(line, std::min(static_cast<size_t>(length), sizeof line - 1));
}

std::string TextureName(const DMaterial& m)
{
  const DTexture* texture = m.GetTexture(0);
  if (!texture && m.shader && m.shader->LayerCount() > 0)
    texture = m.shader->layer.front().texture.get();
  if (texture && texture->GetName())
    return texture->GetName();
  return "texture_not_found.jpg";
}

bool ExportMaterial(std::string& out, const DMaterial* m)
{
  if (!m) {
    QWARN("No material to export.\n");
    return false;
  }
  constexpr double SHININESS = 128;
  const auto print = [&](const char* name, const DVector4& c) {
    Print(out, "        %s %.3f %.3f %.3f\n", name, double{c.r}, double{c.g}, double{c.b});
  };
  out += "      appearance Appearance {\n"
         "        material Material {\n";
  print("diffuseColor", m->diffuse);
  Print(out, "        ambientIntensity %.3f\n", double{m->emission.r});
  print("specularColor", m->specular);
  Print(out, "        shininess %.3f\n", double{m->shininess} / SHININESS);
  Print(out, "        transparency %.3f\n", double{m->transparency});
  out += "        }\n"
         "        texture ImageTexture {\n"
         "          url \"" +
         TextureName(*m) +
         "\"\n"
         "        }\n"
         "      }\n";
  return true;
}

// Three entries a line. What stands behind the last one is a blank, unless it fills its line.
template <typename V, typename Value>
void PrintList(std::string& out, const DArray<V>& list, Value value)
{
  constexpr size_t A_LINE = 3;
  for (size_t i = 0; i < list.size(); ++i) {
    if (i % A_LINE == 0)
      out += "         ";
    const V v = value(list[i]);
    if constexpr (V::length() == 3)
      Print(out, "%.3f %.3f %.3f", double{v.x}, double{v.y}, double{v.z});
    else
      Print(out, "%.3f %.3f", double{v.x}, double{v.y});
    if (i + 1 < list.size())
      out += ',';
    out += i % A_LINE == A_LINE - 1 ? '\n' : ' ';
  }
}

DVector3 CheckedNormal(const DVector3& n)
{
  constexpr DVector3 UP(0.0f, 1.0f, 0.0f);
  if (!std::isfinite(n.x) || !std::isfinite(n.y) || !std::isfinite(n.z)) {
    QWARN("NaN's found in normals");
    return UP;
  }
  if (const float length = glm::length(n); length < 0.5f || length > 1.5f) {
    QWARN("Weird normal (%.3f %.3f %.3f) detected.", double{n.x}, double{n.y}, double{n.z});
    return UP;
  }
  return n;
}

void PrintIndices(std::string& out, const DArray<uint16_t>& index)
{
  constexpr size_t A_LINE = 12;
  for (size_t i = 0; i < index.size(); ++i) {
    if (i % A_LINE == 0)
      out += "         ";
    Print(out, "%d, ", int{index[i]});
    if (i % 3 == 2)
      out += i + 1 < index.size() ? "-1, " : "-1";
    if (i % A_LINE == A_LINE - 1)
      out += '\n';
  }
}

std::string WithCarriageReturns(const std::string& text)
{
  std::string out;
  for (const char c : text) {
    if (c == '\n')
      out += '\r';
    out += c;
  }
  return out;
}

bool Append(const std::string& path, const std::string& text)
{
  std::FILE* file = qfopen(path.c_str(), "ab");
  if (!file)
    return false;
  const bool written = std::fwrite(text.data(), 1, text.size(), file) == text.size();
  return qfclose(file) && written;
}

} // namespace

bool DGeob::ExportVRML(std::string& out, const std::string& modelName, int number, int mode) const
{
  const bool compatible = mode & VRML_COMPATIBLE;
  std::string name = modelName;
  if (!compatible)
    Print(name, "_%02d", number + 1);
  if (compatible)
    out += "DEF MASTER Transform {\n children [\n DEF VRL_" + name + "_vrl Transform {\n  children [\nDEF MESH_" +
           name + " Transform {\n";
  else
    out += "DEF " + name + " Transform {\n";
  out += "  children [\n    Shape {\n";
  if (!ExportMaterial(out, GetMaterial(0)))
    return false;
  out += "      geometry DEF " + name + " IndexedFaceSet {\n         ccw TRUE\n         solid TRUE\n";
  out += "        coord DEF " + name + "-COORD Coordinate { point [\n";
  PrintList(out, vertex, [](const DVector3& v) { return v; });
  out += "        ] }\n";
  if (!normal.empty()) {
    out += "        normal Normal { vector [\n";
    PrintList(out, normal, CheckedNormal);
    out += "        ] }\n         normalPerVertex TRUE\n";
  }
  out += "        texCoord DEF " + name + "-TEXCOORD TextureCoordinate { point [\n";
  PrintList(out, texCoord[0], [](const DVector2& v) { return v; });
  out += "        ] }\n";
  for (const char* list : {"coordIndex", "texCoordIndex", "normalIndex"}) {
    if (normal.empty() && list[0] == 'n')
      continue;
    out += std::string("        ") + list + " [\n";
    PrintIndices(out, index);
    out += "        ]\n";
  }
  out += "       }\n     }\n   ]\n}\n";
  if (compatible)
    out += " ] }\n ] }\n";
  return true;
}

bool DGeode::ExportVRML(const std::string& modelName, const std::string& fileName, int mode) const
{
  const bool compatible = mode & VRML_COMPATIBLE;
  std::string base = QFileBase(modelName.c_str());
  base.resize(std::min(base.find_last_of('.'), base.size()));
  std::string out;
  if (!(mode & VRML_APPEND)) {
    out += "#VRML V2.0 utf8\n\n# Produced by Tessel's VRML export, version 2\n";
    if (compatible)
      out += "# In VRL2VRML compatibility mode (hopefully).\n";
    out += "\n";
  }
  for (int i = 0; i < GetNoofGeobs(); ++i)
    if (!geob[static_cast<size_t>(i)]->ExportVRML(out, base, i, mode))
      return false;
  if (compatible)
    out = WithCarriageReturns(out);
  if (mode & VRML_APPEND ? Append(fileName, out) : QWriteFile(fileName, out))
    return true;
  QWARN("DGeodeExportVRML(); can't open file '%s' for writing", fileName.c_str());
  return false;
}
