#include "app/demo/demo.h"
#include "app/demo/exports.h"
#include "app/demo/writer.h"
#include "support/tempdir.h"

#include <cstring>
#include <filesystem>
#include <gtest/gtest.h>
#include <set>
#include <sstream>

namespace {

// What a reader that knows a few keywords finds in an ASE file.
struct AseObject
{
  std::string name;
  int material = -1;
  size_t vertices = 0, faces = 0, normals = 0, textureFaces = 0, colorFaces = 0;
  std::vector<DVector3> positions; // y up again
  std::set<int> ids;               // of submaterials
  size_t badCorners = 0;
};

struct AseScene
{
  explicit AseScene(const std::string& text)
  {
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);)
      Take(line);
  }
  void Take(const std::string& line)
  {
    std::istringstream words(line);
    std::string keyword, skipped;
    words >> keyword;
    depth += static_cast<int>(std::count(line.begin(), line.end(), '{') - std::count(line.begin(), line.end(), '}'));
    if (keyword == "*GEOMOBJECT")
      objects.emplace_back();
    if (keyword == "*MATERIAL_NAME")
      materials.push_back(line.substr(line.find('"')));
    if (objects.empty())
      return;
    AseObject& o = objects.back();
    int a = 0, b = 0, c = 0, id = 0;
    DVector3 v(0.0f);
    if (keyword == "*NODE_NAME")
      o.name = line.substr(line.find('"') + 1, line.rfind('"') - line.find('"') - 1);
    else if (keyword == "*MATERIAL_REF")
      words >> o.material;
    else if (keyword == "*MESH_NUMVERTEX")
      words >> o.vertices;
    else if (keyword == "*MESH_NUMFACES")
      words >> o.faces;
    else if (keyword == "*MESH_VERTEX" && words >> skipped >> v.x >> v.y >> v.z)
      o.positions.push_back({v.x, v.z, -v.y});
    else if (keyword == "*MESH_FACE" && words >> skipped >> skipped >> a >> skipped >> b >> skipped >> c) {
      std::istringstream(line.substr(line.find("*MESH_MTLID ") + std::strlen("*MESH_MTLID "))) >> id;
      o.ids.insert(id);
      o.badCorners += static_cast<size_t>(std::max({a, b, c})) >= o.vertices || std::min({a, b, c}) < 0;
    }
    o.normals += keyword == "*MESH_VERTEXNORMAL";
    o.textureFaces += keyword == "*MESH_TFACE";
    o.colorFaces += keyword == "*MESH_CFACE";
  }
  std::vector<AseObject> objects;
  std::vector<std::string> materials;
  int depth = 0;
};

const DemoScenery& Scenery()
{
  static const DemoScenery scenery = DemoBuildScenery(DemoMakeCourse("lakeside", DemoLakesideLine()));
  return scenery;
}

} // namespace

TEST(DemoExports, AseHoldsEachTriangleOnceInItsOwnAxes)
{
  constexpr size_t MOST_FACES = 65536 / 3; // that a model made of an object can number
  for (const DemoAseKind kind : {DemoAseKind::PLAIN, DemoAseKind::MULTI_SUB}) {
    const bool multi = kind == DemoAseKind::MULTI_SUB;
    SCOPED_TRACE(multi);
    const AseScene scene(DemoAse(Scenery(), kind));
    EXPECT_EQ(0, scene.depth);
    size_t faces = 0;
    std::set<std::string> names;
    for (const AseObject& o : scene.objects) {
      SCOPED_TRACE(o.name);
      faces += o.faces;
      EXPECT_TRUE(names.insert(o.name).second) << "two objects of one name";
      EXPECT_EQ(0u, o.badCorners);
      EXPECT_LE(o.faces, MOST_FACES);
      EXPECT_EQ(o.vertices, o.positions.size());
      EXPECT_EQ(3 * o.faces, o.normals);
      EXPECT_EQ(o.faces, o.textureFaces);
      EXPECT_EQ(o.faces, o.colorFaces);
      const int most = static_cast<int>(scene.materials.size());
      EXPECT_LT(o.material, multi ? 1 : most);
      EXPECT_LT(*o.ids.rbegin(), multi ? most - 1 : 1);
    }
    EXPECT_EQ(Scenery().Triangles(), static_cast<int>(faces));
    EXPECT_EQ(multi ? Scenery().nodes.size() : names.size(), scene.objects.size());
    EXPECT_EQ(multi ? 16u : 15u, scene.materials.size());
    const DemoVertex& first = Scenery().nodes.back().levels.front().meshes.front().vertices.front();
    const AseObject& last = scene.objects.back();
    EXPECT_EQ(Scenery().nodes.back().name, last.name);
    EXPECT_LT(glm::distance(first.position, last.positions.front()), 0.001f);
  }
}

TEST(DemoExports, StandBesideTheTrackWhenAskedFor)
{
  const TempDir root;
  ASSERT_EQ(0, DemoMain({"--root", root.Path(), "--exports"}));
  const std::string track = root.Path("data/tracks/lakeside/");
  for (const DemoFile& file : DemoExportFiles(Scenery()))
    EXPECT_TRUE(FileText(track + file.name) == file.content) << file.name;
  int faces = 0;
  for (const DemoNode& node : Scenery().nodes) {
    const std::string text = FileText(track + "SCGT/wrl/" + node.name + ".wrl");
    for (size_t at = text.find("coordIndex ["); at != std::string::npos; at = text.find("coordIndex [", at + 1))
      for (size_t i = at; i < text.find(']', at); ++i)
        faces += text.compare(i, 4, ", -1") == 0;
  }
  EXPECT_EQ(Scenery().Triangles(), faces);
}
