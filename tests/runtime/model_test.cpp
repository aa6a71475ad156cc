#include "foundation/qinfo.h"
#include "geometry/dgeode.h"
#include "runtime/rminimap.h"
#include "runtime/rmodel.h"
#include "runtime/rresourcemanager.h"
#include "scene/worldnodes.h"
#include "scene/worldscene.h"
#include "support/reportcapture.h"
#include "support/tempdir.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace {

// A data root with one model file, found in the directory that a test puts it.
class Models : public testing::Test
{
protected:
  Models() : inside(root.Path())
  {
    for (const char* dir : {"data/models", "data/tracks/t/dofs", "data/cars/c"})
      std::filesystem::create_directories(dir);
  }
  void Put(const std::string& path)
  {
    auto box = WorldMakeStub();
    ASSERT_TRUE(box->ExportDOF(path.c_str()));
  }
  bool Load(RModel& model, const char* text)
  {
    QInfo info("m.ini", QInfo::NO_READ);
    info.ReadFromText(text);
    return model.Load(info, "movables", "door");
  }
  TempDir root;
  InDirectory inside;
  ReportCapture reports;
  WorldScene scene;
};

// Which names the file that it came from.
std::string GeobName(WorldGeodeNode& node)
{
  return node.GetChild() ? std::string(node.GetChild()->GetName()) : "";
}

} // namespace

TEST_F(Models, AreLookedForInOrder)
{
  for (const char* path : {"box.dof", "data/tracks/t/dofs/box.dof", "data/models/box.dof", "data/tracks/t/box.dof"}) {
    Put(path);
    RModel model(scene, "door", {{}, "data/tracks/t"});
    ASSERT_TRUE(Load(model, "movables\n{\ndoor\n{\nfile=box.dof\n}\n}")) << path;
    EXPECT_EQ(path + std::string("/geob0"), GeobName(*model.GetNode()));
    EXPECT_EQ(nullptr, model.GetTransform());
  }
  RModel ofCar(scene, "door", {"data/cars/c", "data/tracks/t"});
  EXPECT_FALSE(Load(ofCar, "movables\n{\ndoor\n{\nfile=box.dof\n}\n}"));
  EXPECT_TRUE(reports.Contains("RModel:Load(); can't load 'box.dof'"));
}

TEST_F(Models, StandWhereTheirKeysSay)
{
  Put("data/models/box.dof");
  RModel model(scene, "door", {{}, "data/tracks/t"});
  EXPECT_FALSE(Load(model, "movables\n{\ndoor\n{\nfile=\n}\n}"));
  EXPECT_EQ(0, reports.Problems());
  QInfo saved("s.ini", QInfo::NO_READ);
  model.Save(saved, "movables", "door");
  EXPECT_TRUE(reports.Contains("RModel:Save() called without Load() first"));
  ASSERT_TRUE(
      Load(model, "movables\n{\ndoor\n{\nfile=box.dof\noffset\n{\ny=5\n}\nscale\n{\nx=2\nz=0\n}\nfrom=1\n}\n}"));
  EXPECT_TRUE(reports.Contains("movables.door.scale.z is 0; scaling with zero means making the object invisible."));
  EXPECT_TRUE(reports.Contains("RModel: 'from' specified without car present"));
  ASSERT_NE(nullptr, model.GetTransform());
  EXPECT_EQ("tform", model.GetTransform()->GetName());
  EXPECT_EQ(DVector4(2, 5, 0, 1), model.GetTransform()->Matrix() * DVector4(1, 0, 1, 1));
  model.Save(saved, "movables", "door");
  EXPECT_EQ(5.0f, saved.GetFloat("movables.door.offset.y"));
  // What a file of a track names stays below the data root.
  EXPECT_FALSE(Load(model, "movables\n{\ndoor\n{\nfile=../../etc/passwd\n}\n}"));
}

TEST(Resources, AreCountedByTheirUsers)
{
  ReportCapture reports;
  RResourceManager table;
  int thing = 0;
  const int ref = table.Add("data/a/wall", RResourceManager::TYPE_TEXTURE, &thing);
  EXPECT_EQ(ref, table.Add("data/a/wall", RResourceManager::TYPE_TEXTURE, &thing));
  EXPECT_EQ(2, table.GetRefCount(ref));
  EXPECT_EQ(nullptr, table.GetMaterial(ref));
  EXPECT_TRUE(reports.Contains("GetMaterial called expecting TYPE_MATERIAL but ref 1 is of type 2"));
  table.Detach(ref);
  EXPECT_EQ(ref, table.Find("data/a/wall"));
  table.Detach(ref);
  EXPECT_EQ(0, table.Find("data/a/wall"));
  table.Detach(ref);
  EXPECT_TRUE(reports.Contains("Detach(ref 1 [data/a/wall]) called but refCount was already<=0 (0)"));
  EXPECT_EQ(0, table.GetRefCount(99));
}

TEST(MiniMap, FitsTheRoadIntoItsRectangle)
{
  ReportCapture reports;
  RMiniMap map;
  map.Bake({}, true, 0, 0, {0, 0, 100, 100});
  EXPECT_TRUE(reports.Contains("No splines found; minimap is disabled."));
  const std::vector<RMiniMap::Edge> road = {
      {{-100, 0, 0}, {-90, 0, 0}}, {{0, 0, -50}, {0, 0, -40}}, {{100, 0, 0}, {90, 0, 0}}, {{0, 0, 50}, {0, 0, 40}}};
  map.Bake(road, true, 0, 9, {0, 0, 100, 100});
  EXPECT_TRUE(reports.Contains("spline paintEnd > lines (9>4); not painting road"));
  EXPECT_TRUE(map.IsEmpty());
  map.Bake(road, true, 0, 4, {10, 20, 100, 100});
  ASSERT_EQ(16u, map.GetLines().size()); // two edges between each two lines, around
  EXPECT_EQ(DVector2(10, 70), map.GetLines()[0]);
  EXPECT_EQ(DVector2(60, 70), map.ToMap({0, 3, 0}));
  map.Bake(road, true, 1, 3, {10, 20, 100, 100});
  EXPECT_EQ(4u, map.GetLines().size());
}
