#include "app/tool/tool.h"
#include "app/tool/tooljson.h"

#include "foundation/qfile.h"
#include "foundation/qreport.h"
#include "foundation/qstring.h"
#include "geometry/dgeode.h"
#include "geometry/dgeodeoptimize.h"
#include "geometry/dglobal.h"
#include "geometry/dtexture.h"

#include <memory>

namespace {

std::string Extension(const std::string& path)
{
  const size_t dot = path.find_last_of("./");
  qstring extension{dot == path.npos || path[dot] != '.' ? std::string() : path.substr(dot)};
  extension.ToLower();
  return extension.Str();
}

bool Import(DGeode& geode, const std::string& extension, const std::string& path)
{
  if (extension == ".ase") {
    DArray<int32_t> faces;
    return geode.ImportASE(faces, path);
  }
  return extension == ".wrl" ? geode.ImportVRML(path) : geode.ImportDOF(path);
}

// The model of a file, with no picture opened; null, said on stderr, when it can't be read.
std::unique_ptr<DGeode> LoadModel(const ToolArgs& args, size_t i)
{
  const std::string extension = Extension(args.Text(i));
  if (extension != ".dof" && extension != ".ase" && extension != ".wrl") {
    ToolFail("%s isn't a model that can be read (.dof, .ase, .wrl)", args.Text(i).c_str());
    return nullptr;
  }
  DGlobals().texturesOn = false;
  auto geode = std::make_unique<DGeode>(args.Text(i));
  if (Import(*geode, extension, args.Path(i)))
    return geode;
  ToolFail("can't read %s as a model", args.Text(i).c_str());
  return nullptr;
}

template <typename T>
ToolJson Flat(const DArray<T>& array)
{
  return ToolJson::Floats(std::span(reinterpret_cast<const float*>(array.data()), array.size() * (sizeof(T) / 4)));
}

template <typename T>
ToolJson FlatOrNull(const DArray<T>& array)
{
  return array.empty() ? ToolJson() : Flat(array);
}

ToolJson Color(const DVector4& c)
{
  return ToolJson::Floats(std::span(&c.x, 4));
}

ToolJson Box(const DBox& b)
{
  const float values[] = {b.min.x, b.min.y, b.min.z, b.max.x, b.max.y, b.max.z};
  return ToolJson::Floats(values);
}

ToolJson MaterialJson(const DMaterial& m)
{
  const float uvw[] = {m.uOffset, m.vOffset, m.uTiling, m.vTiling, m.angle, m.blur, m.blurOffset};
  ToolJson textures = ToolJson::Array();
  for (const auto& t : m.texture)
    textures.Add(t->GetName() ? t->GetName() : "");
  ToolJson sub = ToolJson::Array();
  for (const auto& s : m.sub)
    sub.Add(MaterialJson(*s));
  ToolJson json = ToolJson::Object();
  json.Add("name", m.name)
      .Add("className", m.className)
      .Add("ambient", Color(m.ambient))
      .Add("diffuse", Color(m.diffuse))
      .Add("specular", Color(m.specular))
      .Add("emission", Color(m.emission))
      .Add("shininess", m.shininess)
      .Add("transparency", m.transparency)
      .Add("blendMode", m.blendMode)
      .Add("creationFlags", m.creationFlags)
      .Add("uvw", ToolJson::Floats(uvw))
      .Add("textures", std::move(textures))
      .Add("sub", std::move(sub));
  return json;
}

void AddArrays(ToolJson& json, const DGeob& g)
{
  ToolJson channels = ToolJson::Array();
  for (int i = 0; i < g.GetTexCoordChannels(); ++i)
    channels.Add(Flat(g.texCoord[static_cast<size_t>(i)]));
  json.Add("index", ToolJson::Ints(std::span<const uint16_t>(g.index)))
      .Add("vertex", Flat(g.vertex))
      .Add("normal", FlatOrNull(g.normal))
      .Add("texCoord", std::move(channels))
      .Add("color", FlatOrNull(g.vertexColor))
      .Add("baseVertex", FlatOrNull(g.baseVertex));
}

ToolJson GeobJson(DGeob& g, bool arrays)
{
  ToolJson bursts = ToolJson::Array();
  for (const DBurst& b : g.burst) {
    const int values[] = {b.start, b.count, b.mtlID, b.vperP};
    bursts.Add(ToolJson::Ints(values));
  }
  ToolJson json = ToolJson::Object();
  json.Add("flags", g.flags & ~static_cast<uint32_t>(DGeob::BOX_VALID)) // which only says that the box is known
      .Add("paintFlags", g.paintFlags)
      .Add("materialRef", g.materialRef)
      .Add("vertexCount", g.VertexCount())
      .Add("indexCount", g.IndexCount())
      .Add("bursts", std::move(bursts))
      .Add("channels", g.GetTexCoordChannels())
      .Add("hasNormals", !g.normal.empty())
      .Add("hasColors", !g.vertexColor.empty())
      .Add("boundingBox", Box(g.GetBoundingBox()));
  if (arrays)
    AddArrays(json, g);
  return json;
}

int RunDump(const ToolArgs& args)
{
  const auto geode = LoadModel(args, 0);
  if (!geode)
    return TOOL_FAILED;
  ToolJson materials = ToolJson::Array();
  for (const auto& m : geode->material)
    materials.Add(MaterialJson(*m));
  ToolJson geobs = ToolJson::Array();
  for (const auto& g : geode->geob)
    geobs.Add(GeobJson(*g, args.Option("--arrays")));
  ToolJson json = ToolJson::Object();
  json.Add("name", geode->name)
      .Add("materials", std::move(materials))
      .Add("geobs", std::move(geobs))
      .Add("boundingBox", Box(geode->GetBoundingBox()));
  json.Print();
  return TOOL_DONE;
}

int RunConvert(const ToolArgs& args)
{
  const std::string extension = Extension(args.Text(1));
  if (extension != ".dof" && extension != ".wrl")
    return ToolFail("%s isn't a model that can be written (.dof, .wrl)", args.Text(1).c_str());
  const auto geode = LoadModel(args, 0);
  if (!geode)
    return TOOL_FAILED;
  if (args.Option("--optimize")) {
    DGeodeMergeVertices(*geode);
    DGeodePackIndices(*geode);
    DGeodeOptimizeBursts(*geode);
  }
  const std::string path = args.Path(1);
  if (extension == ".wrl" ? !geode->ExportVRML(args.Text(0), path, 0) : !geode->ExportDOF(path))
    return ToolFail("can't write %s", args.Text(1).c_str());
  return TOOL_DONE;
}

// Each model goes back into its file; what fails with one is said, and the next one follows.
int Rewrite(const ToolArgs& args, void (*change)(DGeode& geode))
{
  int status = TOOL_DONE;
  for (size_t i = 0; i < args.Count(); ++i) {
    if (Extension(args.Text(i)) != ".dof") {
      status = ToolFail("%s isn't a .dof model", args.Text(i).c_str());
      continue;
    }
    const auto geode = LoadModel(args, i);
    if (!geode) {
      status = TOOL_FAILED;
      continue;
    }
    change(*geode);
    if (!geode->ExportDOF(args.Path(i)))
      status = ToolFail("can't write %s", args.Text(i).c_str());
  }
  return status;
}

int RunOptimize(const ToolArgs& args)
{
  return Rewrite(args, [](DGeode& geode) { DGeodeOptimize(geode); });
}

int RunLight(const ToolArgs& args)
{
  return Rewrite(args, [](DGeode& geode) {
    DGeodeAddLighting(geode);
    DGeodeMergeVertices(geode);
    DGeodePackIndices(geode);
    DGeodeOptimizeBursts(geode);
  });
}

// Gathers what loading and checking report while it lives.
class Problems
{
public:
  Problems() : before(std::move(QReports().tap))
  {
    QReports().tap = [this](std::string_view severity, std::string_view text, std::string_view) {
      if (severity == "WARN" || severity == "ERR")
        lines.emplace_back(text.substr(0, text.find_last_not_of('\n') + 1));
      return true;
    };
  }
  ~Problems() { QReports().tap = std::move(before); }
  Problems(const Problems&) = delete;
  Problems& operator=(const Problems&) = delete;
  std::vector<std::string> lines;

private:
  decltype(QReportSettings::tap) before;
};

// A file that was cut off reads without a word, as far as it goes.
bool HasEnd(const std::string& path)
{
  std::string content;
  return QReadFile(path, content, true) && content.find("EDOF") != content.npos;
}

int RunValidate(const ToolArgs& args)
{
  int status = TOOL_DONE;
  for (size_t i = 0; i < args.Count(); ++i) {
    std::vector<std::string> lines;
    {
      Problems problems;
      const auto geode = LoadModel(args, i);
      if (geode)
        geode->Validate();
      else
        status = TOOL_FAILED;
      lines = std::move(problems.lines);
      if (geode && Extension(args.Text(i)) == ".dof" && !HasEnd(args.Path(i)))
        lines.emplace_back("the file ends before the model does");
    }
    for (const std::string& line : lines)
      ToolPrint(args.Text(i) + ": " + line + "\n");
    if (!lines.empty())
      status = TOOL_FAILED;
  }
  return status;
}

} // namespace

std::vector<ToolVerb> ToolModelVerbs()
{
  return {
      {"model", "dump", "a model as JSON", {{"FILE"}}, RunDump, {{"--arrays", "with vertices, indices and the like"}}},
      {"model",
       "convert",
       "reads a model and writes it again",
       {{"IN"}, {"OUT"}},
       RunConvert,
       {{"--optimize", "joins equal vertices, drops unused ones and joins bursts"}}},
      {"model", "optimize", "make models small and fast, in place", {{"FILE", ToolParameter::MANY}}, RunOptimize},
      {"model", "light", "give models normals and lit materials, in place", {{"FILE", ToolParameter::MANY}}, RunLight},
      {"model", "validate", "a line for each problem", {{"FILE", ToolParameter::MANY}}, RunValidate},
  };
}
