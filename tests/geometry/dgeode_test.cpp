#include "geometry/dgeode.h"
#include "geometry/dgeodebuilder.h"
#include "geometry/dgeodemanager.h"
#include "geometry/dglobal.h"
#include "geometry/dquaternion.h"
#include "geometry/dtexture.h"
#include "support/reportcapture.h"
#include "support/tempdir.h"

#include <cmath>
#include <gtest/gtest.h>

namespace {

// A triangle at a height, as a file.
void WriteModel(const TempDir& dir, const char* name, float height)
{
  DGeode geode;
  DGeob& g = *geode.AddGeob();
  g.vertex = {{0, height, 0}, {2, height, 0}, {0, height, 2}};
  g.texCoord[0].assign(3, DVector2(0.0f));
  g.index = {0, 2, 1};
  g.AddBurst({0, 9, 0, 3});
  ASSERT_TRUE(geode.ExportDOF(dir.Path(name)));
}

TEST(Geode, BoxWithoutGeobsKeepsItsStart)
{
  DGeode geode;
  EXPECT_EQ(DVector3(99999), geode.GetBoundingBox().min);
  EXPECT_EQ(DVector3(-99999), geode.GetBoundingBox().max);
  EXPECT_EQ(DVector3(0), geode.center);
}

TEST(Geode, MaterialsByName)
{
  DGeode geode;
  for (const char* name : {"a", "b", "b"})
    geode.AddMaterial()->name = name;
  EXPECT_EQ(geode.material[1].get(), geode.FindMaterial("b"));
  EXPECT_EQ(nullptr, geode.FindMaterial("B"));
  EXPECT_EQ(1, geode.FindMaterialIndex("b"));
  EXPECT_EQ(0, geode.FindMaterialIndex("none"));
}

TEST(Geode, ChainIsMovedAndScaledAsOne)
{
  DGeode coarse;
  DGeode fine;
  fine.geodeFlags |= DGeode::LODS_NOT_OWNED;
  fine.lod[2] = &coarse; // behind an empty slot
  for (DGeode* g : {&fine, &coarse})
    g->AddGeob()->vertex = {{1, 1, 1}};
  fine.ScaleVertices(2, 2, 2);
  EXPECT_EQ(DVector3(2), coarse.geob[0]->vertex[0]);
  fine.Translate(1, 0, 0);
  EXPECT_EQ(DVector3(3, 2, 2), fine.geob[0]->vertex[0]);
  EXPECT_EQ(DVector3(2), coarse.geob[0]->vertex[0]); // moving stops at the gap
}

TEST(GeodeLoadLOD, LoadsTheChainAroundOnePoint)
{
  const TempDir dir;
  WriteModel(dir, "tree.dof", 4);
  WriteModel(dir, "tree_lod1.dof", 2);
  WriteModel(dir, "tree_lod3.dof", 0); // behind a gap
  DGlobals().lodFactor = 2;
  std::vector<std::unique_ptr<DGeode>> models;
  const float distances[] = {0, 100};
  ASSERT_TRUE(d3GeodeLoadLOD(dir.Path("tree.dof"), distances, 99999, models, true));
  DResetGlobals();
  ASSERT_EQ(2u, models.size());
  EXPECT_EQ(models[1].get(), models[0]->lod[1]);
  EXPECT_EQ(nullptr, models[0]->lod[2]);
  EXPECT_EQ(200, models[0]->lodFar);
  EXPECT_EQ(200, models[1]->lodNear);
  EXPECT_EQ(2 * 99999.0f, models[1]->lodFar);
  EXPECT_EQ(1, models[1]->lodIndex);
  EXPECT_EQ(DVector3(1, 4, 1), models[1]->center);
  ASSERT_TRUE(d3GeodeLoadLOD(dir.Path("tree.dof"), {}, 99999, models, false));
  EXPECT_EQ(1u, models.size());
}

TEST(GeodeLoadLOD, WithoutTheFirstThereIsNone)
{
  ReportCapture reports;
  std::vector<std::unique_ptr<DGeode>> models;
  EXPECT_FALSE(d3GeodeLoadLOD("/nonexistent/a.dof", {}, 99999, models, true));
  EXPECT_TRUE(models.empty());
  EXPECT_TRUE(reports.Contains("Can't import DOF '/nonexistent/a.dof'"));
  EXPECT_TRUE(reports.Contains("Highest LOD failed to load; skipping model (/nonexistent/a.dof)"));
}

TEST(GeodeManager, LoadsAModelOnce)
{
  const TempDir dir;
  WriteModel(dir, "a.dof", 1);
  ReportCapture reports;
  DGeodeManager manager;
  const int ref = manager.Load("a", dir.Path("a.dof"));
  EXPECT_EQ(1, ref);
  EXPECT_EQ(ref, manager.Load("a", "/nonexistent.dof"));
  EXPECT_EQ(0, manager.Load("b", "/nonexistent.dof"));
  EXPECT_EQ(1, manager.GetGeode(ref)->GetNoofGeobs());
  EXPECT_EQ(nullptr, manager.GetGeode(0));
  EXPECT_TRUE(reports.Contains("DGeodeManager:GetGeode(ref 0) out of range"));
  manager.Release(ref);
  EXPECT_NE(nullptr, manager.GetGeode(ref)); // still held once
  manager.Release(ref);
  EXPECT_EQ(nullptr, manager.GetGeode(ref));
  EXPECT_TRUE(reports.Contains("DGeodeManager:GetGeode(ref 1) gives 0-pointer"));
}

TEST(GeodeBuilder, BuildsWhatWasAdded)
{
  ReportCapture reports;
  DGlobals().texturesOn = false;
  DGeodeBuilder builder;
  DGeodeBuilder::Geob* g = builder.MakeGeob();
  g->AddTriangle({0, 0, 0}, {1, 0, 0}, {0, 0, 1});
  g->AddTriangle({0, 1, 0}, {1, 1, 0}, {0, 1, 1});
  for (int i = 1; i < 100; ++i)
    EXPECT_NE(nullptr, builder.MakeGeob());
  EXPECT_EQ(nullptr, builder.MakeGeob());
  EXPECT_TRUE(reports.Contains("DGeodeBuilder::MakeGeob() out of geobs (max=100)"));
  const auto geode = builder.Build("stub.dof", "images/stub.tga");
  DResetGlobals();
  EXPECT_EQ("stub.dof", geode->name);
  EXPECT_STREQ("stub.tga", geode->material[0]->texture[0]->GetName());
  const DGeob& first = *geode->geob[0];
  EXPECT_EQ((DArray<uint16_t>{0, 1, 2, 3, 4, 5}), first.index);
  EXPECT_EQ(DVector3(0, 1, 0), first.normal[5]);
  EXPECT_EQ(18, first.burst[0].count);
}

TEST(GeodeBuilder, CutsWhatNoIndexCanName)
{
  ReportCapture reports;
  DGlobals().texturesOn = false;
  DGeodeBuilder builder;
  DGeodeBuilder::Geob* g = builder.MakeGeob();
  int added = 0;
  while (added < 100000 && g->AddTriangle({0, 0, 0}, {1, 0, 0}, {0, 0, 1}))
    ++added;
  EXPECT_EQ(66666, added); // 200000 vertices hold no more
  const auto geode = builder.Build("big.dof", "big.tga");
  DResetGlobals();
  EXPECT_EQ(65535, geode->geob[0]->VertexCount());
  EXPECT_EQ(65534, geode->geob[0]->index[65534]);
  EXPECT_EQ(1, reports.Count("DGeodeBuilder:Build(big.dof); 199998 vertices are more than indices can name"));
}

TEST(MaterialNameFilter, MeetsShaderNames)
{
  const struct
  {
    const char* name;
    const char* filtered;
  } cases[] = {{"Wall Top.01", "wall_top"}, {"a-B_c9", "ab_c9"}, {".x", ""}, {"\xC4ra/s", "ras"}};
  for (const auto& c : cases)
    EXPECT_EQ(c.filtered, DMaterialNameFilter(c.name));
}

TEST(Material, TablesEndWithAReport)
{
  ReportCapture reports;
  DGlobals().texturesOn = false;
  DMaterial m;
  for (int i = 1; i < 10; ++i)
    EXPECT_TRUE(m.AddLayer({}));
  EXPECT_FALSE(m.AddLayer({}));
  EXPECT_TRUE(reports.Contains("DMaterial::AddLayer(); max (10) reached"));
  m.SetTransparent();
  for (int i = 0; i < 10; ++i)
    EXPECT_TRUE(m.AddGeneratedTexture());
  EXPECT_FALSE(m.AddGeneratedTexture());
  EXPECT_FALSE(m.AddBitMap("a.tga"));
  EXPECT_FALSE(m.IsTransparent());
  EXPECT_STREQ("q_generated", m.GetTexture(9)->GetName());
  m.name = "m";
  EXPECT_EQ(nullptr, m.GetTexture(10));
  EXPECT_TRUE(reports.Contains("DMaterial:GetTexture(10) out of range (material m, shader <none>)"));
  DResetGlobals();
}

TEST(Quaternion, FromAnglesTurnsAboutYThenXThenZ)
{
  const DQuaternion q = DQuaternionFromAngles(0.3f, -0.7f, 1.1f);
  const DQuaternion expected = DQuaternionFromAxis({0, 0, 1}, 1.1f) * DQuaternionFromAxis({5, 0, 0}, -0.7f) *
                               DQuaternionFromAxis({0, 1, 0}, 0.3f);
  EXPECT_NEAR(1, glm::dot(expected, q), 1e-6f);
  const DVector4 turned = DMatrixOf(DQuaternionFromAxis({0, 1, 0}, std::acos(0.0f))) * DVector4(0, 0, 1, 1);
  EXPECT_NEAR(1, turned.x, 1e-6f);
}

TEST(Quaternion, TooShortOnesTurnNothing)
{
  EXPECT_EQ(DQuaternion(1, 0, 0, 0), DNormalized(DQuaternion(0, 0.001f, 0, 0)));
  EXPECT_EQ(0, DQuaternionFromAxis({0, 0, 0.000001f}, 1).z);
}

TEST(Object, MatrixMovesTurnsAndScales)
{
  DObject o;
  o.transformation = {{1, 2, 3}, {0, 90, 0}, {2, 2, 2}};
  const DVector4 p = o.Matrix() * DVector4(0, 0, 1, 1);
  EXPECT_NEAR(3, p.x, 1e-6f);
  EXPECT_NEAR(2, p.y, 1e-6f);
  EXPECT_NEAR(3, p.z, 1e-6f);
}

} // namespace
