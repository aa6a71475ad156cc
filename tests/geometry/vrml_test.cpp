#include "geometry/dgeode.h"
#include "geometry/dglobal.h"
#include "geometry/dshader.h"
#include "geometry/dtexture.h"
#include "geometry/dvrml.h"
#include "support/reportcapture.h"
#include "support/tempdir.h"

#include <gtest/gtest.h>

#include <limits>

namespace {

class Vrml : public testing::Test
{
protected:
  void SetUp() override
  {
    DResetGlobals();
    DGlobals().texturesOn = false;
  }
  void TearDown() override { DResetGlobals(); }
  bool Read(const std::string& text) { return geode.ImportVRMLText(text); }
  // A square of four coordinates with these index lists behind.
  bool ReadShape(const std::string& rest)
  {
    return Read(
        "Shape { appearance A { material M { } } geometry I { coord C { point [ 0 0 0, 1 0 0, 1 1 0, 0 1 0, ] } " +
        rest + " } }");
  }
  DGeob& Geob() { return *geode.geob.front(); }
  ReportCapture reports;
  DGeode geode;
};
using VrmlRead = Vrml;
using VrmlWrite = Vrml;

} // namespace

TEST_F(VrmlRead, PolygonsBecomeFans)
{
  EXPECT_EQ((std::vector<uint16_t>{0, 1, 2, 5, 6, 7, 5, 7, 8, 5, 8, 9}),
            DGV_TriangulateArray(std::vector<uint16_t>{0, 1, 2, 65535, 3, 4, 65535, 5, 6, 7, 8, 9}));
  EXPECT_TRUE(reports.Contains("DGeobImportVRML; non-3/4/6/8/16-sided polygon found (2 sides)"));
}

TEST_F(VrmlRead, EachCornerIsAVertexAndListsMayDoWithoutCommas)
{
  for (const char* indices : {"coordIndex [ 0, 1, 2, 3, -1, ]", "coordIndex [0 1 2 3 -1]", "coordIndex [\n0,1,2,3]"}) {
    SCOPED_TRACE(indices);
    ASSERT_TRUE(ReadShape(indices));
    const DGeob& g = Geob();
    EXPECT_EQ((DArray<uint16_t>{0, 1, 2, 3, 4, 5}), g.index);
    EXPECT_EQ((DArray<DVector3>{{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 0, 0}, {1, 1, 0}, {0, 1, 0}}), g.vertex);
    EXPECT_EQ(DArray<DVector3>(6, DVector3(0.0f)), g.normal);
    EXPECT_EQ(DArray<DVector2>(6, DVector2(0.0f)), g.texCoord[0]);
    ASSERT_EQ(1, g.Bursts());
    EXPECT_EQ(18, g.burst[0].count);
    EXPECT_EQ(0, g.burst[0].mtlID);
    EXPECT_STREQ("stub.tga", geode.material[0]->texture.at(0)->GetName());
  }
}

TEST_F(VrmlRead, NormalsAndTextureCoordinatesGoByTheirOwnIndices)
{
  ASSERT_TRUE(ReadShape("normal N { vector [ 0 0 1, 0 1 0 ] } texCoord T { point [ 0 0, 0.5 1 ] } "
                        "coordIndex [ 0, 1, 9, -1 ] normalIndex [ 1, 0, 1, -1, 1, 1, 1, -1 ] "
                        "texCoordIndex [ 1, 1, 0, -1 ]"));
  EXPECT_EQ((DArray<DVector3>{{0, 0, 0}, {1, 0, 0}, {0, 0, 0}}), Geob().vertex);
  EXPECT_EQ((DArray<DVector3>{{0, 1, 0}, {0, 0, 1}, {0, 1, 0}}), Geob().normal);
  EXPECT_EQ((DArray<DVector2>{{0.5f, 1}, {0.5f, 1}, {0, 0}}), Geob().texCoord[0]);
  EXPECT_FALSE(ReadShape("coordIndex [ 0, 1, 2, -1 ] texCoordIndex [ 0, 1, 2, 3, -1 ]"));
  EXPECT_TRUE(reports.Contains("DGeob:ImportVRML; #texcoords (6)!= #indices (3)"));
}

TEST_F(VrmlRead, MaterialsAndShapesAreCountedAndCoupled)
{
  ASSERT_TRUE(Read("material DEF x Material { diffuseColor 1 0.5 0 ambientIntensity 0.25 specularColor 0 0 1 "
                   "shininess 0.5 transparency 0.25 } texture T { url \"a road.tga\" }\n"
                   "geometry DEF a DEF b coord [ 1 2 3 ] Shape { material M geometry G"));
  ASSERT_EQ(2, geode.GetNoofMaterials());
  const DMaterial& m = *geode.material[0];
  EXPECT_EQ(DVector4(1, 0.5f, 0, 0.25f), m.diffuse);
  EXPECT_EQ(DVector4(0.25f, 0.25f, 0.25f, 1), m.emission);
  EXPECT_EQ(DVector4(0, 0, 1, 1), m.specular);
  EXPECT_EQ(64, m.shininess);
  EXPECT_EQ(0.25f, m.transparency);
  EXPECT_STREQ("a road.tga", m.texture.at(0)->GetName());
  ASSERT_EQ(2, geode.GetNoofGeobs());
  EXPECT_EQ(0, geode.geob[0]->materialRef);
  EXPECT_EQ(1, geode.geob[1]->materialRef);
  std::string many;
  for (int i = 0; i < 201; ++i)
    many += "geometry g Shape ";
  EXPECT_TRUE(Read(many));
  EXPECT_EQ(200, geode.GetNoofGeobs());
  EXPECT_TRUE(reports.Contains("Too many shapes in VRML, max=200"));
  EXPECT_FALSE(geode.ImportVRML("not-there.wrl"));
}

TEST_F(VrmlWrite, HoldsTheTextToTheLetter)
{
  DMaterial& m = *geode.AddMaterial();
  m.shininess = 64;
  DGeob& g = *geode.AddGeob();
  g.vertex = {{0, 0, 0}, {1, 0, 0}, {0, 1.0006f, -2}, {4, 4, 4}};
  g.normal = {{0, 0, 0}, {0, 0, 1}, {std::numeric_limits<float>::quiet_NaN(), 0, 0}, {1, 0, 0}};
  g.texCoord[0] = {{0, 0}, {1, 0}, {0, 1}};
  g.index = {0, 1, 2, 2, 1, 3};
  const TempDir dir;
  const std::string path = dir.Path("out.wrl");
  ASSERT_TRUE(geode.ExportVRML("some/House.dof", path, 0));
  const std::string shape =
      "DEF House_01 Transform {\n  children [\n    Shape {\n      appearance Appearance {\n        material Material "
      "{\n"
      "        diffuseColor 0.800 0.800 0.800\n        ambientIntensity 0.000\n"
      "        specularColor 0.000 0.000 0.000\n        shininess 0.500\n        transparency 0.000\n        }\n"
      "        texture ImageTexture {\n          url \"texture_not_found.jpg\"\n        }\n      }\n"
      "      geometry DEF House_01 IndexedFaceSet {\n         ccw TRUE\n         solid TRUE\n"
      "        coord DEF House_01-COORD Coordinate { point [\n"
      "         0.000 0.000 0.000, 1.000 0.000 0.000, 0.000 1.001 -2.000,\n         4.000 4.000 4.000         ] }\n"
      "        normal Normal { vector [\n"
      "         0.000 1.000 0.000, 0.000 0.000 1.000, 0.000 1.000 0.000,\n         1.000 0.000 0.000         ] }\n"
      "         normalPerVertex TRUE\n"
      "        texCoord DEF House_01-TEXCOORD TextureCoordinate { point [\n"
      "         0.000 0.000, 1.000 0.000, 0.000 1.000\n        ] }\n"
      "        coordIndex [\n         0, 1, 2, -1, 2, 1, 3, -1        ]\n"
      "        texCoordIndex [\n         0, 1, 2, -1, 2, 1, 3, -1        ]\n"
      "        normalIndex [\n         0, 1, 2, -1, 2, 1, 3, -1        ]\n"
      "       }\n     }\n   ]\n}\n";
  const std::string head = "#VRML V2.0 utf8\n\n# Produced by Tessel's VRML export, version 2\n\n";
  EXPECT_EQ(head + shape, FileText(path));
  EXPECT_TRUE(reports.Contains("Weird normal (0.000 0.000 0.000) detected."));
  EXPECT_TRUE(reports.Contains("NaN's found in normals"));
  ASSERT_TRUE(geode.ExportVRML("House.dof", path, VRML_APPEND));
  EXPECT_EQ(head + shape + shape, FileText(path));
  ASSERT_TRUE(geode.ExportVRML("House.dof", path, VRML_COMPATIBLE));
  const std::string compatible = FileText(path);
  EXPECT_NE(compatible.npos,
            compatible.find("# In VRL2VRML compatibility mode (hopefully).\r\n\r\nDEF MASTER Transform "
                            "{\r\n children [\r\n DEF VRL_House_vrl Transform {\r\n  children [\r\nDEF "
                            "MESH_House Transform {\r\n  children [\r\n"));
  EXPECT_TRUE(compatible.ends_with("   ]\r\n}\r\n ] }\r\n ] }\r\n"));
}

TEST_F(VrmlWrite, AFailureLeavesTheFileAsItWas)
{
  const TempDir dir;
  const std::string path = dir.Write("out.wrl", "before");
  geode.AddGeob();
  for (const int mode : {0, int{VRML_APPEND}})
    EXPECT_FALSE(geode.ExportVRML("a.dof", path, mode)) << mode;
  EXPECT_TRUE(reports.Contains("No material to export.\n"));
  geode.AddMaterial();
  EXPECT_FALSE(geode.ExportVRML("a.dof", dir.Path("none/out.wrl"), 0));
  EXPECT_TRUE(reports.Contains("DGeodeExportVRML(); can't open file"));
  EXPECT_EQ("before", FileText(path));
}

TEST_F(VrmlWrite, WhatIsWrittenReadsAgain)
{
  DGeob& g = *geode.AddGeob();
  geode.AddMaterial()->AddBitMap("wall.tga");
  for (int i = 0; i < 40; ++i) {
    const auto f = static_cast<float>(i);
    g.vertex.push_back({f, 0.5f * f, -f});
    g.normal.push_back({0, 1, 0});
    g.texCoord[0].push_back({f / 8, 0});
  }
  for (int i = 0; i + 2 < 40; ++i)
    for (int k = 0; k < 3; ++k)
      g.index.push_back(static_cast<uint16_t>(i + k));
  const TempDir dir;
  for (const int mode : {0, int{VRML_COMPATIBLE}}) {
    ASSERT_TRUE(geode.ExportVRML("a", dir.Path("a.wrl"), mode));
    DGeode again;
    ASSERT_TRUE(again.ImportVRML(dir.Path("a.wrl")));
    ASSERT_EQ(1, again.GetNoofGeobs());
    EXPECT_STREQ("wall.tga", again.material.at(0)->texture.at(0)->GetName());
    const DGeob& r = *again.geob[0];
    ASSERT_EQ(g.index.size(), r.vertex.size());
    for (size_t i = 0; i < r.vertex.size(); ++i) {
      EXPECT_EQ(g.vertex[g.index[i]], r.vertex[i]);
      EXPECT_EQ(g.normal[g.index[i]], r.normal[i]);
      EXPECT_EQ(g.texCoord[0][g.index[i]], r.texCoord[0][i]);
    }
  }
}
