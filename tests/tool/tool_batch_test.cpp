#include "support/tempdir.h"
#include "tool/toolrun.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <set>

namespace fs = std::filesystem;

namespace {

std::string Object(const std::string& name, int material)
{
  return "*GEOMOBJECT {\n\t*NODE_NAME \"" + name +
         "\"\n\t*MESH {\n\t\t*MESH_NUMVERTEX 3\n\t\t*MESH_NUMFACES 1\n\t\t*MESH_VERTEX 0 0 0 0\n\t\t*MESH_VERTEX 1 1 0 "
         "0\n\t\t*MESH_VERTEX 2 0 1 0\n\t\t*MESH_FACE 0: A: 0 B: 1 C: 2 AB: 1 BC: 1 CA: 1 *MESH_SMOOTHING 1 "
         "*MESH_MTLID 0\n\t}\n\t*MATERIAL_REF " +
         std::to_string(material) + "\n}\n";
}

// A data root with a track "small", and a scene of two objects.
class BatchVerbs : public testing::Test
{
protected:
  BatchVerbs()
  {
    Write("track.ini", "track\n{\n  name=Small\n}\n");
    Write("geometry.ini", "objects\n{\n}\n");
    root.Write("scene.ase",
               "*SCENE {\n}\n*MATERIAL_LIST {\n\t*MATERIAL_COUNT 2\n\t*MATERIAL 0 {\n\t\t*MATERIAL_NAME \"grey\"\n"
               "\t\t*NUMSUBMTLS 1\n\t\t*SUBMATERIAL 0 {\n\t\t\t*MATERIAL_NAME \"Tar\"\n\t\t}\n\t}\n"
               "\t*MATERIAL 1 {\n\t\t*MATERIAL_NAME \"red\"\n\t}\n}\n" +
                   Object("Road", 0) + Object("Kerb", 1));
  }
  void Write(const std::string& leaf, std::string_view content) { root.Write("data/tracks/small/" + leaf, content); }
  ToolRun Run(std::vector<std::string> args) const
  {
    args.insert(args.begin(), "--quiet");
    return RunTool(root.Path(), args);
  }
  std::set<std::string> Files(const std::string& directory) const
  {
    std::set<std::string> files;
    for (const auto& entry : fs::directory_iterator(root.Path(directory)))
      if (entry.is_regular_file())
        files.insert(entry.path().filename());
    return files;
  }
  using Names = std::set<std::string>;
  TempDir root;
};

} // namespace

TEST_F(BatchVerbs, TakeASceneFromItsExportIntoTheTrack)
{
  EXPECT_EQ(0, Run({"ase", "cut", "scene.ase"}).status);
  EXPECT_EQ((Names{"Road.ase", "Kerb.ase"}), Files("output"));
  EXPECT_EQ(0, Run({"ase", "cut-multisub", "scene.ase", "parts"}).status);
  EXPECT_EQ((Names{"tar_0_road.ase", "_0_kerb.ase"}), Files("parts"));
  EXPECT_EQ(1, Run({"ase", "cut", "none.ase"}).status);

  EXPECT_EQ(0, Run({"batch", "ase", "small", "--source", "output"}).status);
  for (const char* verb : {"light", "optimize"})
    EXPECT_EQ(0, Run({"batch", verb, "small"}).status) << verb;
  EXPECT_EQ((Names{"geometry.ini", "kerb.dof", "road.dof", "track.ini"}), Files("data/tracks/small"));
  EXPECT_EQ(0, Run({"track", "import-dofs", "small", "--filter", "k*"}).status);
  EXPECT_NE(std::string::npos, Run({"track", "info", "small"}).out.find(R"("nodes":1,"triangles":1,)"));
  EXPECT_EQ(0, Run({"track", "import-dofs", "small"}).status); // what the track has already once more
  EXPECT_NE(std::string::npos, Run({"track", "info", "small"}).out.find(R"("nodes":3,"triangles":3,)"));

  EXPECT_EQ(0, Run({"batch", "export-wrl", "small"}).status);
  EXPECT_EQ(Names{"objects_group_0.wrl"}, Files("data/tracks/small/wrl"));
  fs::create_directories(root.Path("data/tracks/small/SCGT"));
  fs::rename(root.Path("data/tracks/small/wrl"), root.Path("data/tracks/small/SCGT/wrl"));
  EXPECT_EQ(0, Run({"batch", "wrl", "small"}).status);
  EXPECT_TRUE(Files("data/tracks/small").contains("objects_group_0.dof"));
}

TEST_F(BatchVerbs, ReportBadFilesInTheirOrderAndGoOn)
{
  const std::string good = FileText(root.Path("scene.ase"));
  for (const char* leaf : {"b.ase", "D.ase", "f.ase"})
    Write(std::string("ase/") + leaf, good);
  for (const char* leaf : {"a.ase", "C.ase", "e.ase"})
    Write(std::string("ase/") + leaf, "*GEOMOBJECT { *MESH_NUMFACES 0 }");
  const ToolRun run = RunTool(root.Path(), {"batch", "ase", "small"});
  EXPECT_EQ(1, run.status);
  EXPECT_NE(std::string::npos, run.err.find("3 of 6 conversions failed")) << run.err;
  size_t last = 0;
  for (const char* leaf : {"a.ase", "b.ase", "C.ase", "D.ase", "e.ase", "f.ase"}) {
    const size_t at = run.err.find(std::string("ase/") + leaf, last);
    EXPECT_NE(std::string::npos, at) << leaf << " in " << run.err;
    last = std::min(at, run.err.size());
  }
  EXPECT_EQ((Names{"b.dof", "d.dof", "f.dof", "geometry.ini", "track.ini"}), Files("data/tracks/small"));
  for (const char* verb : {"ase", "wrl", "light", "optimize", "export-wrl"})
    EXPECT_EQ(1, Run({"batch", verb, "nowhere"}).status) << verb;
  EXPECT_EQ(1, Run({"batch", "ase", "small", "--source", "nowhere"}).status);
}
