#include "geometry/dofbytes.h"

#include "geometry/dglobal.h"
#include "geometry/dshader.h"
#include "geometry/dtexture.h"
#include "geometry/dworld.h"
#include "support/reportcapture.h"
#include "support/tempdir.h"

#include <gtest/gtest.h>

namespace {

class DofTest : public testing::Test
{
protected:
  void SetUp() override
  {
    DResetGlobals();
    DGlobals().texturesOn = false;
  }
  void TearDown() override { DResetGlobals(); }
  ReportCapture reports;
};
using DofRead = DofTest;
using DofWrite = DofTest;

// A model that has everything a file can hold.
void FillModel(DGeode& geode)
{
  DMaterial& m = *geode.AddMaterial();
  m.name = "wall_top";
  m.className = "Standard";
  m.SetAmbient(0.1f, 0.2f, 0.3f, 0.4f);
  m.SetShininess(12);
  m.uOffset = 0.5f;
  m.blurOffset = 7;
  m.transparency = 0.25f;
  m.blendMode = 1;
  m.creationFlags = 0x80000001;
  m.AddBitMap("somewhere/wall.tga");
  m.AddBitMap("top.tga");
  DMaterial& sub = *m.AddSubMaterial();
  sub.name = "inner";
  sub.AddSubMaterial()->name = "innermost";
  DGeob& g = *geode.AddGeob();
  g.flags = 0xFF;
  g.paintFlags = 5;
  g.materialRef = 0;
  for (int i = 0; i < 4; ++i) {
    const auto f = static_cast<float>(i);
    g.vertex.push_back({f, f * f, -f});
    g.normal.push_back({0, 0, 1});
    g.texCoord[0].push_back({f, 0});
    g.texCoord[1].push_back({0, f});
    g.vertexColor.push_back({f / 4, 0, 1});
    g.baseVertex.push_back({f, 0, 0});
  }
  g.index = {0, 1, 2, 2, 1, 3};
  g.AddBurst({0, 9, 0, 3});
  g.AddBurst({9, 9, 1, 3});
}

TEST_F(DofWrite, StoredBytes)
{
  DGeode geode;
  DMaterial& m = *geode.AddMaterial();
  m.name = "w";
  m.SetSpecular(1, 2, 3, 4);
  DGeob& g = *geode.AddGeob();
  g.paintFlags = 7;
  g.materialRef = -1;
  g.vertex = {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}};
  g.texCoord[0] = {{0, 0}, {1, 0}, {0, 1}};
  g.index = {0, 1, 2};
  g.AddBurst({0, 9, 0, 3});
  const Bytes material =
      Chunk("MHDR", Text("w") + Text("")) +
      Chunk("MCOL", Floats({0.2f, 0.2f, 0.2f, 0.2f, 0.8f, 0.8f, 0.8f, 1, 1, 2, 3, 4, 0, 0, 0, 1, 0})) +
      Chunk("MUVW", Floats({0, 0, 1, 1, 0, 0, 0})) + Chunk("MTRA", Floats({0}) + U32(0)) + Chunk("MCFL", U32(0)) +
      Chunk("MTEX", U32(0)) + Chunk("MSUB", U32(0));
  const Bytes expected = Dof(Materials({material}) +
                             Geobs({Chunk("GHDR", U32(0) + U32(7) + U32(0xFFFFFFFF)) + INDI + VERT + TVER + BRST}));
  const auto written = geode.ExportDOFBytes();
  EXPECT_EQ(expected, Bytes(reinterpret_cast<const char*>(written.data()), written.size()));
}

TEST_F(DofWrite, WhatIsWrittenReadsBack)
{
  DGeode out("a.dof");
  FillModel(out);
  const TempDir dir;
  ASSERT_TRUE(out.ExportDOF(dir.Path("a.dof")));
  DGeode in("b.dof");
  ASSERT_TRUE(in.ImportDOF(dir.Path("a.dof")));

  const DMaterial& m = *in.GetMaterial(0);
  EXPECT_EQ("wall_top", m.name);
  EXPECT_EQ(DVector4(0.1f, 0.2f, 0.3f, 0.4f), m.ambient);
  EXPECT_EQ(7, m.blurOffset);
  EXPECT_EQ(0x80000001, m.creationFlags);
  EXPECT_TRUE(m.IsTransparent());
  ASSERT_EQ(2, m.TextureCount());
  EXPECT_STREQ("wall.tga", m.texture[0]->GetName());
  ASSERT_EQ(1, m.SubCount());
  EXPECT_EQ("multisub", m.sub[0]->name); // submaterials and no texture
  EXPECT_EQ("innermost", m.sub[0]->sub[0]->name);
  EXPECT_EQ(0u, in.geob[0]->flags & ~DGeob::BOX_VALID);
  EXPECT_EQ(out.geob[0]->index, in.geob[0]->index);

  // All else in one comparison: only the flags and the renamed submaterial differ.
  out.geob[0]->flags = in.geob[0]->flags;
  out.material[0]->sub[0]->name = "multisub";
  EXPECT_EQ(out.ExportDOFBytes(), in.ExportDOFBytes());
}

TEST_F(DofWrite, AnUnwritableTargetIsSaid)
{
  EXPECT_FALSE(DGeode("a").ExportDOF("/nonexistent/a.dof"));
  EXPECT_TRUE(reports.Contains("/nonexistent/a.dof"));
}

TEST_F(DofRead, ChunksInAnyOrderAndWithUnknownOnes)
{
  const Bytes odd = Chunk("XXXX", "abc");
  const Bytes geob = odd + VERT + BRST + Chunk("TVR5", U32(1) + Floats({1, 2})) + INDI + TVER +
                     Chunk("GHDR", U32(0xFFFF) + U32(3) + U32(0)) + odd;
  const Bytes material =
      Chunk("MTEX", U32(1) + Text("Grass.TGA")) + odd + Chunk("MHDR", Text("Wall Top.01") + Text("S"));
  const Bytes file = Dof(odd + Geobs({geob, geob}) + Materials({material, material}) + odd);
  DGeode geode("odd");
  ASSERT_TRUE(geode.ImportDOF(AsBytes(file)));
  ASSERT_EQ(2, geode.GetNoofGeobs());
  ASSERT_EQ(2, geode.GetNoofMaterials());
  EXPECT_EQ(3u, geode.geob[1]->paintFlags);
  EXPECT_EQ(9, geode.geob[1]->burst[0].count);
  EXPECT_EQ("wall_top", geode.material[1]->name);
  EXPECT_STREQ("grass.tga", geode.material[1]->texture[0]->GetName());
  EXPECT_EQ(2, reports.Count("Skipping unknown geode chunk 'XXXX' of length 0x3 (in odd)\n"));
  EXPECT_EQ(4, reports.Count("Skipping unknown geob chunk 'XXXX' of length 0x3 (geode odd)\n"));
  EXPECT_EQ(2, reports.Count("Skipping unknown geob chunk 'TVR5'"));
  EXPECT_EQ(2, reports.Count("Unknown chunk 'XXXX'\n"));
}

TEST_F(DofRead, WhatIsMissingIsMade)
{
  DGeode geode("plain");
  ASSERT_TRUE(geode.ImportDOF(AsBytes(Dof(Geobs({INDI + VERT + BRST})))));
  const DGeob& g = *geode.geob[0];
  EXPECT_EQ(DVector3(0, 0, 1), g.normal[2]);
  EXPECT_EQ(3u, g.texCoord[0].size());
  EXPECT_TRUE(reports.Contains("Geode plain has geobs without texcoords; generating fake values"));
}

TEST_F(DofRead, CountsThatDisagree)
{
  const Bytes one = U32(1) + Floats({0, 1, 0});
  const Bytes four = U32(4) + Floats({1, 0, 0, 2, 0, 0, 3, 0, 0, 4, 0, 0});
  const Bytes longCoords = Chunk("TVER", U32(4) + Floats({0, 0, 1, 0, 0, 1, 9, 9}));
  DGeode geode("odd");
  ASSERT_TRUE(geode.ImportDOF(AsBytes(Dof(Geobs({
      VERT + Chunk("NORM", one) + Chunk("VCOL", one) + longCoords + INDI,
      VERT + Chunk("NORM", four) + TVER + INDI,
      VERT + TVER + INDI + Chunk("OVRT", U32(2) + Floats({0, 0, 0, 1, 1, 1})),
  })))));
  const DGeob& shortOnes = *geode.geob[0];
  EXPECT_EQ((DArray<DVector3>{{0, 1, 0}, {0, 0, 0}, {0, 0, 0}}), shortOnes.normal);
  EXPECT_EQ((DArray<DVector3>{{0, 1, 0}, {0, 0, 0}, {0, 0, 0}}), shortOnes.vertexColor);
  EXPECT_EQ(3u, shortOnes.texCoord[0].size());
  EXPECT_EQ(3, shortOnes.IndexCount()); // found behind the longer texture coordinates
  EXPECT_TRUE(reports.Contains("Geode odd doesn't have enough normals (1, need 3)"));
  EXPECT_TRUE(reports.Contains("Geode odd doesn't have enough vertex colors (1, need 3)"));
  EXPECT_TRUE(reports.Contains("tvertices=4, while vertices=3; unexpected and corrected to be equal"));
  EXPECT_EQ(DVector3(4, 0, 0), geode.geob[1]->normal.at(3));
  const DGeob& base = *geode.geob[2];
  EXPECT_EQ(2, base.VertexCount());
  EXPECT_EQ((DArray<uint16_t>{0, 1, 0}), base.index);
  EXPECT_TRUE(reports.Contains("Geode odd has bad indices in geob (index[2]=2>2 vertices."));
}

TEST_F(DofRead, EmptyPartsAreSaid)
{
  const struct
  {
    Bytes file;
    const char* report; // null: none
    int reports = 1;
  } cases[] = {
      {Dof(""), nullptr, 0},
      {Dof(Geobs({})), "Geode e does not contain any geobs (no geometry)"},
      {Dof(Geobs({Chunk("INDI", U32(0)) + VERT + TVER})), "Geode e has empty index geob; better to remove it."},
      // And each of the three indices, and the texture coordinates.
      {Dof(Geobs({Chunk("VERT", U32(0)) + INDI})), "Geode e has empty vertex (VERT) chunk; better to remove it.", 5},
      {Dof(Chunk(std::string_view("\0\0\0\0", 4), "") + Geobs({VERT})),
       "Empty chunk id in geode 'e'; probably an old ZModeler buggy export; use dof_fix to correct.\n"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.report ? c.report : "no report");
    reports.Clear();
    DGeode geode("e");
    EXPECT_TRUE(geode.ImportDOF(AsBytes(c.file)));
    EXPECT_EQ(c.reports, reports.Problems()) << reports.All();
    EXPECT_TRUE(!c.report || reports.Contains(c.report));
  }
}

TEST_F(DofRead, InvisibleColoursAreMadeVisibleAndSaidOnce)
{
  const Bytes colors = Chunk("MCOL", Floats({0, 0, 0, 0.5f, 1, 1, 1, 0, 0, 0, 0, 0.25f, 0, 0, 0, 1, 30}));
  for (int i = 0; i < 2; ++i) {
    DGeode geode("a" + std::to_string(i));
    ASSERT_TRUE(geode.ImportDOF(AsBytes(Dof(Materials({colors, colors})))));
    const DMaterial& m = *geode.material[1];
    EXPECT_EQ(DVector4(1), DVector4(m.ambient.a, m.diffuse.a, m.specular.a, m.emission.a));
    EXPECT_EQ(30, m.shininess);
  }
  EXPECT_EQ(1, reports.Count("DOF 'a0' contains alpha=0"));
  EXPECT_EQ(1, reports.Count("contains alpha=0"));
  EXPECT_EQ(1, reports.Count("This warning will only be issued once."));
}

TEST_F(DofRead, AMaterialFindsItsShader)
{
  const TempDir dir;
  const InDirectory here(dir.Path());
  dir.Write("data/tracks/Lake.1/track.shd", "shader_wall_top\n{\n  layer0\n  {\n    map=a.tga\n  }\n}\n");
  DWorld world;
  ASSERT_TRUE(world.LoadShaders("data/tracks/Lake.1/track.shd"));
  DGlobals().world = &world;
  DShader other;
  const Bytes file = Dof(Materials({Chunk("MHDR", Text("Wall Top.01") + Text("")) +
                                    Chunk("MTEX", U32(2) + Text("Old.tga") + Text("b.tga"))}) +
                         Geobs({INDI + VERT + TVER + BRST}));
  DGeode geode("data/tracks/Lake.1/road.dof");
  ASSERT_TRUE(geode.ImportDOF(AsBytes(file)));
  ASSERT_NE(nullptr, geode.material[0]->shader);
  EXPECT_EQ("skin0/data/tracks/lake.1/wall_top", geode.material[0]->shader->name);
  EXPECT_EQ("old.tga", geode.material[0]->firstTextureName);
  EXPECT_EQ(0, geode.material[0]->TextureCount());

  DGlobals().findResource = [&](std::string_view key, DShader*& shader) {
    EXPECT_EQ("data/tracks/Lake.1/road/wall_top", key);
    shader = &other;
    return true;
  };
  ASSERT_TRUE(geode.ImportDOF(AsBytes(file)));
  EXPECT_EQ(&other, geode.material[0]->shader);

  DGlobals().findResource = [](std::string_view, DShader*&) { return true; };
  DGlobals().world = nullptr;
  ASSERT_TRUE(geode.ImportDOF(AsBytes(file)));
  EXPECT_EQ(nullptr, geode.material[0]->shader);
  EXPECT_TRUE(reports.Contains("Material reference 'data/tracks/Lake.1/road/wall_top' is not a material"));
  EXPECT_TRUE(reports.Contains(
      "No shader found for material 'wall_top' in 'data/tracks/Lake.1/road.dof' (default 'old.tga')\n"));
}

TEST_F(DofRead, ShadersThatNeedTangentsGetThem)
{
  DShader shader;
  shader.shaderFlags |= DShader::TANGENTS;
  DGlobals().defaultShader = &shader;
  DGeode geode("t");
  ASSERT_TRUE(geode.ImportDOF(
      AsBytes(Dof(Materials({Chunk("MHDR", Text("a") + Text(""))}) + Geobs({INDI + VERT + TVER + BRST})))));
  ASSERT_EQ(3u, geode.geob[0]->tangent.size());
  EXPECT_EQ(DVector4(1, 0, 0, 1), geode.geob[0]->tangent[0]);
}

TEST_F(DofRead, AFormerFormatAndOtherFilesAreRefusedSilently)
{
  const Bytes cases[] = {"", "DOF", "DOF2....EDOF", "GOB1"};
  for (const Bytes& c : cases) {
    SCOPED_TRACE(c);
    EXPECT_FALSE(DGeode().ImportDOF(AsBytes(c)));
  }
  DGeode former;
  EXPECT_FALSE(former.ImportDOF(
      AsBytes(Dof(Chunk("GEOB", U32(2) + Chunk("GOB1", VERT + TVER + INDI + "GEND") + Chunk("GOB0", "abcd"))))));
  EXPECT_EQ(1, former.GetNoofGeobs()); // filled as far as it went
  EXPECT_EQ(0, reports.Problems()) << reports.All();
}

} // namespace
