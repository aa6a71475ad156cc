#include "foundation/qinfo.h"
#include "geometry/dgeode.h"
#include "geometry/dshader.h"
#include "geometry/dtexture.h"
#include "support/reportcapture.h"
#include "support/unattendedui.h"
#include "tools/rtracksplitter.h"
#include "track/scenerymodel.h"
#include "track/smalltrack.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <limits>
#include <random>
#include <set>

namespace {

namespace fs = std::filesystem;

// Cells as nested scans find them.
std::vector<RSplitTriangle> PlainCells(const std::vector<const DGeob*>& geobs, const DBox& box, float size)
{
  const auto nx = static_cast<int>((box.max.x - box.min.x) / size + 1);
  const auto nz = static_cast<int>((box.max.z - box.min.z) / size + 1);
  std::vector<RSplitTriangle> all;
  for (int cx = 0; cx < nx; ++cx)
    for (int cz = 0; cz < nz; ++cz) {
      const float x0 = static_cast<float>(cx) * size + box.min.x;
      const float z0 = static_cast<float>(cz) * size + box.min.z;
      for (size_t g = 0; g < geobs.size(); ++g)
        for (size_t i = 0; i + 2 < geobs[g]->index.size(); i += 3) {
          const auto corner = [&](size_t k) { return geobs[g]->vertex[geobs[g]->index[i + k]]; };
          const DVector3 mean = (corner(0) + corner(1) + corner(2)) / 3.0f;
          if (x0 <= mean.x && mean.x < x0 + size && z0 <= mean.z && mean.z < z0 + size)
            all.push_back({static_cast<uint32_t>(cx), static_cast<uint32_t>(cz), static_cast<uint32_t>(g),
                           static_cast<uint32_t>(i)});
        }
    }
  return all;
}

} // namespace

TEST(SplitCells, AreThoseOfThePlainScan)
{
  for (unsigned seed = 0; seed < 300; ++seed) {
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    const float reach = std::vector{20.0f, 300.0f, 90000.0f}[seed % 3];
    const float size = std::vector{2.0f, 7.3f, 50.0f, 0.1f * reach}[seed % 4] * (seed % 3 == 2 ? 500.0f : 1.0f);
    std::uniform_real_distribution<float> place(-reach, reach);
    DGeob geobs[2];
    DBox box{DVector3(99999), DVector3(-99999)};
    for (DGeob& g : geobs) {
      for (int i = 0; i < 3 * 40; ++i) {
        DVector3 v(place(random), 0, place(random));
        if (i / 3 % 2 == 0) // all corners on a bound
          v = DVector3(std::floor(v.x / size) * size, 0, std::floor(v.z / size) * size);
        g.vertex.push_back(i % 3 == 0 || i / 3 % 2 == 1 ? v : g.vertex.back());
        g.index.push_back(static_cast<uint16_t>(i));
      }
      g.vertex[60].x = std::numeric_limits<float>::quiet_NaN();
      box.Merge(g.GetBoundingBox());
    }
    const std::vector<const DGeob*> list = {&geobs[0], &geobs[1]};
    const auto expected = PlainCells(list, box, size);
    EXPECT_GT(expected.size(), 70u);
    EXPECT_TRUE(expected == RSplitIntoCells(list, box, size, false));
    EXPECT_EQ(80u, RSplitIntoCells(list, box, size, true).size());
  }
}

TEST(SplitCells, OfAnImpossibleBoxAreBounded)
{
  const float infinity = std::numeric_limits<float>::infinity();
  DGeob g;
  g.vertex = {{1e30f, 0, 1e30f}, {1e30f, 0, 1e30f}, {1e30f, 0, 1e30f}, {1, 0, 1}};
  g.index = {0, 1, 2, 3, 3, 3, 3, 3, 9};
  const std::vector<const DGeob*> list = {&g};
  EXPECT_EQ(1u, RSplitIntoCells(list, {DVector3(0), DVector3(1e30f)}, 2, false).size());
  EXPECT_EQ(1u, RSplitIntoCells(list, {DVector3(0), DVector3(infinity)}, 2, false).size());
  EXPECT_EQ(0u, RSplitIntoCells(list, {DVector3(-infinity), DVector3(infinity)}, 2, false).size());
  EXPECT_EQ(2u, RSplitIntoCells(list, {DVector3(0), DVector3(1)}, 2, true).size()) << "without the bad index";
}

namespace {

class TrackSplitter : public testing::Test
{
protected:
  TrackSplitter()
  {
    small.Write("track.ini", "track\n{\n  name=Small\n}\n");
    track = small.New();
    fs::create_directories(Out());
  }
  std::string Out(const std::string& leaf = {}) const { return small.root.Path("data/tracks/small_split/" + leaf); }
  // Its model is known under the file's path, as a loaded one is.
  DGeode& Add(const std::string& file, const std::vector<DVector3>& vertices, const char* material, uint32_t flags = 6,
              DShader* shader = nullptr)
  {
    auto node = SceneryNode(vertices, shader, flags);
    DGeode& geode = *node->Geode();
    geode.name = "data/tracks/small/" + file;
    geode.material[0]->name = material;
    EXPECT_TRUE(track->AddNode(std::move(node)));
    return geode;
  }
  bool Split(float metres, int cancelAt = -1)
  {
    UnattendedUi ui(cancelAt);
    RTrackSplitter splitter(*track, ui);
    splitter.cellSize = metres;
    const bool done = splitter.Split();
    unwritten = splitter.Unwritten();
    texts = ui.texts;
    return done;
  }
  std::set<std::string> Files() const
  {
    std::set<std::string> names;
    for (const auto& entry : fs::directory_iterator(Out()))
      names.insert(entry.path().filename());
    return names;
  }
  int Faces(const std::string& leaf) const
  {
    DGeode geode;
    EXPECT_TRUE(geode.ImportDOF(Out(leaf))) << leaf;
    int faces = 0;
    for (const auto& g : geode.geob)
      faces += g->FaceCount();
    return faces;
  }
  ReportCapture reports;
  SmallTrack small;
  std::unique_ptr<RTrackVRML> track;
  std::vector<std::string> unwritten;
  std::vector<std::string> texts;
};

} // namespace

TEST_F(TrackSplitter, GroupsByMaterialFlagsAndCell)
{
  Add("a.dof", Square(1, 0, 1, 1), "road", 6);
  Add("b.dof", Square(151, 0, 1, 1), "road", 6);
  Add("c.dof", Square(1, 0, 1, 1), "road", 2 + 256);
  Add("d.dof", Square(2, 0, 2, 1), "grass", 4);
  EXPECT_TRUE(Split(100));
  EXPECT_TRUE(unwritten.empty());
  EXPECT_EQ((std::vector<std::string>{"road", "grass"}), texts);
  EXPECT_EQ((std::set<std::string>{"geometry.ini", "road__cell_0_0_pass0_a.dof", "road__cell_1_0_pass0_a.dof",
                                   "road__cell_0_0_pass1_a.dof", "grass__cell_0_0_pass0_a.dof"}),
            Files());
  const QInfo info(Out("geometry.ini"));
  std::string file;
  EXPECT_TRUE(info.GetString("objects.road_cell_1_0_pass0_a_p0.file", file));
  EXPECT_EQ("road__cell_1_0_pass0_a.dof", file);
  EXPECT_EQ(6, info.GetInt("objects.road_cell_1_0_pass0_a_p0.flags"));
  EXPECT_EQ(2, info.GetInt("objects.road_cell_0_0_pass1_a_p1.flags"));
  EXPECT_EQ(4, info.CountChildren("objects"));
  DGeode geode;
  ASSERT_TRUE(geode.ImportDOF(Out("road__cell_1_0_pass0_a.dof")));
  EXPECT_EQ(4, geode.geob[0]->VertexCount()) << "welded";
  EXPECT_EQ(2, Faces("road__cell_1_0_pass0_a.dof"));
  ASSERT_EQ(1, geode.GetNoofMaterials());
  EXPECT_STREQ("stub.tga", geode.material[0]->texture.at(0)->GetName());
  EXPECT_TRUE(geode.geob[0]->vertexColor.empty());
}

TEST_F(TrackSplitter, JoinsSkyAndClonesLights)
{
  DShader sky;
  sky.shaderFlags |= DShader::SKY;
  sky.layer.resize(1);
  Add("sky.dof", Square(0, 0, 0, 400), "sky", 1, &sky);
  Add("sky2.dof", Square(3000, 0, 0, 1), "sky", 1);
  Add("Lamp.v2.dof", Square(0, 0, 0, 1), "lamp", 2 + 1024);
  track->lights[1] = "Lamp.v2";
  EXPECT_TRUE(Split(50));
  EXPECT_EQ((std::set<std::string>{"geometry.ini", "sky__cell_0_0_pass0_a.dof", "Lamp.v2.dof"}), Files());
  EXPECT_EQ(4, Faces("sky__cell_0_0_pass0_a.dof"));
  EXPECT_EQ(2, Faces("Lamp.v2.dof"));
  EXPECT_TRUE(reports.Contains("Shader '<shader>' has no layer0 texture"));
}

TEST_F(TrackSplitter, BigCellsAreCutInPartsAndEndAtTheLimit)
{
  for (int i = 0; i < 4; ++i) { // 84,000 triangles in one cell
    std::vector<DVector3> vertices(63000);
    for (size_t v = 0; v < vertices.size(); ++v)
      vertices[v] = {static_cast<float>(v % 977) * 0.01f, static_cast<float>(i), static_cast<float>(v % 1009) * 0.01f};
    Add("a" + std::to_string(i) + ".dof", vertices, "road");
    if (i != 1 && i != 3)
      continue;
    EXPECT_TRUE(Split(100));
    EXPECT_EQ(i == 1 ? 3u : 5u, Files().size());
    EXPECT_EQ(21000, Faces("road__cell_0_0_pass0_b.dof"));
    EXPECT_EQ(i == 3, reports.Contains("RTrackSplitter:SplitGeob(); out of vertices (max=250000)"));
  }
  EXPECT_EQ((250000 - 3 * 63000) / 3, Faces("road__cell_0_0_pass0_d.dof"));
}

TEST_F(TrackSplitter, TooManyFlagsOrMaterialsAreReportedAndLeftOut)
{
  for (uint32_t i = 0; i < 22; ++i)
    Add("a.dof", Square(0, 0, 0, 1), "road", i << 12);
  for (int i = 0; i < 1000; ++i)
    (*track->nodes.begin())->Geode()->AddMaterial()->name = "m" + std::to_string(i);
  EXPECT_TRUE(Split(100));
  EXPECT_EQ(20u + 1, Files().size());
  EXPECT_EQ(2, reports.Count("More unique geometry flags found than is possible (MAX_PASS=20)"));
  EXPECT_EQ(1, reports.Count("more than 1000 materials"));
  EXPECT_EQ(1000u, texts.size());
}

TEST_F(TrackSplitter, CancelLeavesWhatIsDone)
{
  Add("a.dof", Square(1, 0, 1, 1), "road");
  Add("b.dof", Square(1, 0, 1, 1), "grass");
  EXPECT_FALSE(Split(100, 0));
  EXPECT_EQ((std::set<std::string>{"geometry.ini", "road__cell_0_0_pass0_a.dof"}), Files());
}

TEST_F(TrackSplitter, ASubmaterialIsWhatIsShownAndTheTrackKeepsIt)
{
  DGeode& geode = Add("a.dof", Square(1, 0, 1, 1), "house");
  geode.material[0]->AddSubMaterial()->name = "house";
  geode.material[0]->AddSubMaterial()->name = "roof";
  EXPECT_TRUE(Split(0));
  EXPECT_EQ(2, geode.material[0]->SubCount());
  DGeode split;
  ASSERT_TRUE(split.ImportDOF(Out("house__cell_0_0_pass0_a.dof")));
  EXPECT_EQ(0, split.material[0]->SubCount());
}

TEST_F(TrackSplitter, WithoutTheDirectoryNothingAppearsAndEachFileIsNamed)
{
  Add("a.dof", Square(1, 0, 1, 1), "road");
  fs::remove(Out());
  EXPECT_TRUE(Split(100));
  EXPECT_EQ(2u, unwritten.size());
  EXPECT_FALSE(fs::exists(Out()));
}
