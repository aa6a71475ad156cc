#include "editor/modelsmodereport.h"

#include "geometry/dgeode.h"
#include "geometry/dshader.h"
#include "geometry/dtexture.h"
#include "scene/worldgeodenode.h"
#include "track/rtracknode.h"

#include <algorithm>
#include <array>
#include <cstdarg>
#include <cstdio>

namespace {

constexpr int MAX_TEXCOORDS = 999999;
constexpr int SUB_INDENT = 3;

class Report
{
public:
  [[gnu::format(printf, 2, 3)]] void Add(const char* format, ...)
  {
    std::array<char, 256> buffer;
    va_list args, again;
    va_start(args, format);
    va_copy(again, args);
    const int length = std::vsnprintf(buffer.data(), buffer.size(), format, args);
    va_end(args);
    if (length < static_cast<int>(buffer.size())) {
      text.append(buffer.data(), static_cast<size_t>(std::max(length, 0)));
    } else { // a name out of a file
      const size_t old = text.size();
      text.resize(old + static_cast<size_t>(length) + 1);
      std::vsnprintf(text.data() + old, static_cast<size_t>(length) + 1, format, again);
      text.pop_back();
    }
    va_end(again);
  }
  void AddVector(const char* label, const DVector3& v)
  {
    Add("%s: X %9.3f, Y %9.3f, Z %9.3f\n", label, double(v.x), double(v.y), double(v.z));
  }
  void AddColor(int indent, const char* label, const DVector4& c)
  {
    Add("%*s  %s%.2f,%.2f,%.2f , %.2f\n", indent, " ", label, double(c.x), double(c.y), double(c.z), double(c.w));
  }
  std::string text;
};

const char* YesNo(bool yes)
{
  return yes ? "YES" : "NO";
}

void AddTexCoords(Report& out, const DGeob& geob)
{
  const auto& coords = geob.texCoord[0];
  // An index for each corner of a triangle, so there can be fewer or more of them than vertices.
  const int count = std::min(geob.VertexCount(), geob.IndexCount());
  for (int i = 0; i < std::min(count, MAX_TEXCOORDS); ++i) {
    const size_t at = geob.index[static_cast<size_t>(i)];
    if (at < coords.size())
      out.Add("  - Texcoord0 %d: %.2f %.2f\n", i, double(coords[at].x), double(coords[at].y));
  }
  if (count > MAX_TEXCOORDS)
    out.Add("... <not all texcoords printed>\n");
}

void AddGeob(Report& out, int i, const DGeob& geob, bool texCoords)
{
  int triangles = 0;
  for (const DBurst& burst : geob.burst)
    triangles += burst.count / 9;
  out.Add("\nGeob %d (%d triangles):\n\n", i, triangles);
  out.Add("  Vertices             : %4d, indices: %d\n", geob.VertexCount(), geob.IndexCount());
  out.Add("  Normals present      : %s\n", YesNo(!geob.normal.empty()));
  out.Add("  Vertex colors present: %s\n", YesNo(!geob.vertexColor.empty()));
  out.Add("  Texcoord0 present    : %s\n", YesNo(!geob.texCoord[0].empty()));
  out.Add("  Texcoord1 present    : %s\n", YesNo(!geob.texCoord[1].empty()));
  out.Add("  Bursts: %d, materialref %d\n", geob.Bursts(), geob.materialRef);
  for (int n = 0; n < geob.Bursts(); ++n) {
    const DBurst& burst = geob.burst[static_cast<size_t>(n)];
    out.Add("    burst %d: count %d, mtlid %d (%d triangles)\n", n, burst.count, burst.mtlID, burst.count / 9);
  }
  if (texCoords)
    AddTexCoords(out, geob);
}

// Of the first layer: the material's own, or its shader's, which keeps the material from loading one.
const DTexture* FirstTexture(const DMaterial& m)
{
  if (!m.layer.empty() && m.layer[0].texture)
    return m.layer[0].texture.get();
  if (!m.texture.empty())
    return m.texture[0].get();
  return m.shader && !m.shader->layer.empty() ? m.shader->layer[0].texture.get() : nullptr;
}

void AddMaterial(Report& out, int i, const DMaterial& m, int depth)
{
  const int indent = depth * SUB_INDENT;
  const DTexture* first = FirstTexture(m);
  const char* texture = first ? first->GetName() : nullptr;
  out.Add("%*s%s %d ('%s')\n", indent, " ", depth == 0 ? "Material" : "Submaterial", i, m.name.c_str());
  out.Add("%*s  texture       %s\n", indent, " ", texture ? texture : "<none>");
  out.AddColor(indent, "ambient       ", m.ambient);
  out.AddColor(indent, "diffuse       ", m.diffuse);
  out.AddColor(indent, "specular      ", m.specular);
  out.AddColor(indent, "emission      ", m.emission);
  const struct
  {
    const char* label;
    float value;
  } numbers[] = {
      {"shininess     ", m.shininess}, {"transparency  ", m.transparency}, {"uvw U offset  ", m.uOffset},
      {"uvw V offset  ", m.vOffset},   {"uvw U tiling  ", m.uTiling},      {"uvw V tiling  ", m.vTiling},
  };
  for (const auto& number : numbers)
    out.Add("%*s  %s%.2f\n", indent, " ", number.label, double(number.value));
  out.Add("%*s  submaterials: %d, layers %d\n\n", indent, " ", m.SubCount(), m.LayerCount());
  if (depth > 0)
    return;
  for (int n = 0; n < m.SubCount(); ++n)
    AddMaterial(out, n, *m.sub[static_cast<size_t>(n)], depth + 1);
}

void AddLevel(Report& out, int number, DGeode& geode, bool texCoords)
{
  const std::string line(74, '=');
  int polygons = 0;
  for (const auto& geob : geode.geob)
    polygons += geob->FaceCount();
  const DBox box = geode.GetBoundingBox();
  out.Add("%s\nLevel of Detail model %d: %s\n%s\n\n", line.c_str(), number, geode.name.c_str(), line.c_str());
  out.Add("Number of triangles/polygons: %d\n", polygons);
  out.AddVector("Size              ", box.max - box.min);
  out.AddVector("Minimum           ", box.min);
  out.AddVector("Maximum           ", box.max);
  out.Add("\n========== %d geobs =============\n", geode.GetNoofGeobs());
  for (int i = 0; i < geode.GetNoofGeobs(); ++i)
    AddGeob(out, i, *geode.GetGeob(i), texCoords);
  out.Add("\n========== %d materials =============\n\n", geode.GetNoofMaterials());
  for (int i = 0; i < geode.GetNoofMaterials(); ++i)
    AddMaterial(out, i, *geode.GetMaterial(i), 0);
  out.Add("\n");
}

} // namespace

std::string NodeReport(const RTrackNode& node, bool texCoords)
{
  Report out;
  if (!node.Geode())
    out.Add("No model loaded.\n");
  for (int level = 0; node.sceneNode && level < RTrackNode::LODS; ++level) {
    DGeode* geode = node.sceneNode->GetGeode(level);
    if (!geode)
      break;
    AddLevel(out, level + 1, *geode, texCoords);
  }
  return out.text;
}
