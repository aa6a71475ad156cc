#include "geometry/dgeode.h"
#include "geometry/dglobal.h"
#include "geometry/dtexture.h"
#include "geometry/plainase.h"
#include "support/reportcapture.h"
#include "support/tempdir.h"

#include <gtest/gtest.h>

#include <random>

namespace {

class AseRead : public testing::Test
{
protected:
  void SetUp() override
  {
    DResetGlobals();
    DGlobals().texturesOn = false;
  }
  void TearDown() override { DResetGlobals(); }
  bool Read(const std::string& text) { return geode.ImportASE(faces, text, "test.ase"); }
  // An object of one triangle; mesh stands behind its face, material in front of the object.
  bool ReadMesh(const std::string& mesh, const std::string& material = "*MATERIAL_COUNT 1\n")
  {
    return Read(material +
                "*GEOMOBJECT { *NODE_NAME \"hut\" *MESH { *MESH_NUMVERTEX 3 *MESH_NUMFACES 1 "
                "*MESH_VERTEX 0 1 2 3 *MESH_VERTEX 1 0 0 0 *MESH_VERTEX 2 0 1 0 " +
                Face(0, 0) + mesh + " } }\n");
  }
  static std::string Face(int f, int id, const std::string& corners = "A: 0 B: 1 C: 2")
  {
    return "*MESH_FACE " + std::to_string(f) + ": " + corners + " AB: 1 BC: 1 CA: 0 *MESH_SMOOTHING 2 *MESH_MTLID " +
           std::to_string(id) + "\n";
  }
  DGeob& Geob() { return *geode.geob.front(); }
  ReportCapture reports;
  DArray<int32_t> faces;
  DGeode geode;
};

std::string Number(std::mt19937& random)
{
  static const char* const odd[] = {"0",
                                    "-0",
                                    "-0.0000",
                                    "1e3",
                                    "-2.5e-2",
                                    "+7",
                                    ".5",
                                    "5.",
                                    "0x10",
                                    "0.1234567890123456789",
                                    "123456789012345678",
                                    "16777217.000001",
                                    "\"3\"",
                                    "4x"};
  if (random() % 8 == 0)
    return odd[random() % std::size(odd)];
  return std::to_string((static_cast<double>(random() % 2000000) - 1e6) / (random() % 2 ? 1e3 : 977.0));
}

std::string Lines(std::mt19937& random, const char* keyword, int count, bool numbered = true)
{
  std::string text;
  for (int i = 0; i < count; ++i) {
    text += std::string("\t") + keyword + (numbered ? " " + std::to_string(i) : "");
    for (int n = 0; n < 3; ++n)
      text += (random() % 2 ? "\t" : "  ") + Number(random);
    text += random() % 2 ? "\r\n" : "\n";
  }
  return text;
}

std::string FaceLines(std::mt19937& random, const char* keyword, int count, int entries)
{
  std::string text;
  for (int i = 0; i < count; ++i) {
    text += std::string(keyword) + " " + std::to_string(i);
    for (int n = 0; n < 3; ++n)
      text += " " + std::to_string(random() % static_cast<unsigned>(entries));
    text += "\n";
  }
  return text;
}

std::string RandomAse(unsigned seed)
{
  std::mt19937 random(seed);
  std::string text;
  for (unsigned object = random() % 4; object-- > 0;) {
    const int points = 1 + static_cast<int>(random() % 9);
    const int count = 1 + static_cast<int>(random() % (seed % 50 ? 20 : 300));
    text += "*GEOMOBJECT {\n *NODE_NAME \"a } b\"\n*MESH { *MESH_NUMVERTEX " + std::to_string(points) +
            " *MESH_NUMFACES " + std::to_string(count) + "\n" + Lines(random, "*MESH_VERTEX", points);
    for (int f = 0; f < count; ++f) {
      text += "*MESH_FACE " + std::to_string(f) + ":";
      for (const char* corner : {" A: ", " B:\t", " C: "})
        text += corner + std::to_string(random() % static_cast<unsigned>(points));
      text += " AB: 1 BC: 1 CA: 0 *MESH_SMOOTHING 1,2 more *MESH_MTLID " + std::to_string(random() % 3) + "\n";
    }
    if (random() % 2)
      text += "*MESH_NUMTVERTEX 5 " + Lines(random, "*MESH_TVERT", 5) + FaceLines(random, "*MESH_TFACE", count, 5);
    if (random() % 2)
      text += "*MESH_MAPPINGCHANNEL 2 { *MESH_FACEMAPLIST { " + Lines(random, "*MESH_FACEMAPVERT", 3 * count, false) +
              "} }\n";
    if (random() % 2)
      text += "*MESH_NUMCVERTEX 4 " + Lines(random, "*MESH_VERTCOL", 4) + FaceLines(random, "*MESH_CFACE", count, 4);
    if (random() % 2)
      text += Lines(random, "*MESH_VERTEXNORMAL", 3 * count);
    if (random() % 2)
      text += "*MESH_ANIMATION { { a}b \"}\"{ x{ } *MESH_NUMFACES 0 { \" } \" } }\n";
    text += "} *MATERIAL_REF " + std::to_string(random() % 5) + " }\n";
  }
  return text;
}

// To the bit; a plain array that nothing was put into is shorter.
template <typename T>
void ExpectSame(std::vector<float> plain, const DArray<T>& fast, const char* what)
{
  constexpr size_t N = sizeof(T) / sizeof(float);
  plain.resize(N * fast.size());
  EXPECT_EQ(0, fast.empty() ? 0 : std::memcmp(plain.data(), fast.data(), plain.size() * sizeof(float))) << what;
}

} // namespace

TEST_F(AseRead, IsThePlainReadingToTheBit)
{
  for (unsigned seed = 0; seed < 400; ++seed) {
    SCOPED_TRACE(seed);
    const std::string text = RandomAse(seed);
    const PlainAse plain(text);
    ASSERT_TRUE(Read(text));
    ASSERT_EQ(plain.objects.size(), geode.geob.size());
    for (size_t i = 0; i < geode.geob.size(); ++i) {
      const PlainObject& p = plain.objects[i];
      const DGeob& g = *geode.geob[i];
      EXPECT_EQ(p.index, std::vector<int>(g.index.begin(), g.index.end()));
      ExpectSame(p.vertex, g.vertex, "vertex");
      ExpectSame(p.normal, g.normal, "normal");
      ExpectSame(p.color, g.vertexColor, "color");
      ExpectSame(p.uv[0], g.texCoord[0], "uv 0");
      ExpectSame(p.uv[1], g.texCoord[1], "uv 1");
      std::vector<int> bursts;
      for (const DBurst& b : g.burst)
        bursts.insert(bursts.end(), {b.start, b.count, b.mtlID});
      EXPECT_EQ(p.bursts, bursts);
      EXPECT_EQ(p.materialRef, g.materialRef);
    }
    if (!plain.objects.empty()) {
      EXPECT_EQ(plain.objects.back().faces, std::vector<int>(faces.begin(), faces.end()));
    }
    reports.Clear();
  }
}

TEST_F(AseRead, AFaceHasItsOwnVerticesWithYUp)
{
  ASSERT_TRUE(ReadMesh("*MESH_VERTEXNORMAL 0 0 0 5 *MESH_VERTEXNORMAL 9 0 0 0"));
  EXPECT_EQ((DArray<DVector3>{{1, 3, -2}, {0, 0, 0}, {0, 0, -1}}), Geob().vertex);
  EXPECT_EQ((DArray<DVector3>{{0, 1, 0}, {0, 0, -1}, {0, 0, 0}}), Geob().normal);
  EXPECT_EQ((DArray<int32_t>{0, 1, 2}), faces);
  EXPECT_TRUE(reports.Contains("DGeobImportASE: file test.ase has no texture coordinates"));
  ASSERT_TRUE(ReadMesh("*TM_ROW0 0 1 0 *TM_ROW1 -2 0 0 *MESH_VERTEXNORMAL 0 1 0 0 *MESH_VERTEXNORMAL 0 0 1 0"));
  EXPECT_EQ((DArray<DVector3>{{0, 0, -1}, {-1, 0, 0}, {0, 0, 0}}), Geob().normal);
}

TEST_F(AseRead, TextureCoordinatesAreTiledAndFaceMapsSwap)
{
  const std::string regular = "*MESH_NUMTVERTEX 1 *MESH_TVERT 0 0.25 0.75 0 *MESH_TFACE 0 0 0 0 ";
  const std::string tiled = "*MATERIAL_COUNT 1 *MATERIAL 0 { *UVW_U_TILING 2 *UVW_V_OFFSET 0.5 }\n";
  const struct
  {
    std::string mesh, material;
    DVector2 first, second;
  } cases[] = {
      {regular, "*MATERIAL_COUNT 1\n", {0.25f, 0.75f}, {}},
      {"*MESH_FACEMAPLIST { *MESH_FACEMAPVERT 0.25 0.75 0 }", "*MATERIAL_COUNT 1\n", {0.75f, 0.25f}, {}},
      {regular, tiled, {0, 0.25f}, {}},
      {regular + "*MESH_MAPPINGCHANNEL 2 { " + regular + "}", tiled, {0.25f, 0.75f}, {0, 0.25f}},
      {regular + "*MESH_MAPPINGCHANNEL 3 { *MESH_NUMTVERTEX 1 *MESH_TVERT 0 9 9 9 *MESH_TFACE 0 0 0 0 }",
       tiled,
       {0.25f, 0.75f},
       {}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.mesh);
    ASSERT_TRUE(ReadMesh(c.mesh, c.material));
    EXPECT_EQ(c.first, Geob().texCoord[0].at(0));
    if (!Geob().texCoord[1].empty()) {
      EXPECT_EQ(c.second, Geob().texCoord[1].at(0));
    }
  }
  EXPECT_TRUE(reports.Contains("ASE file 'test.ase' contains node 'hut' with uvChannel 2; only 2 supported"));
}

TEST_F(AseRead, MaterialsKeepWhatStandsInTheirOwnBlock)
{
  ASSERT_TRUE(
      Read("*MATERIAL_COUNT 2 *MATERIAL 0 { *MATERIAL_NAME \"Road Top\" *MATERIAL_CLASS \"Multi\" *NUMSUBMTLS 2\n"
           "*SUBMATERIAL 0 { *MATERIAL_NAME \"in\" *MATERIAL_DIFFUSE 1 0.5 0 *MATERIAL_SHINE 0.5\n"
           "*MATERIAL_TRANSPARENCY 0.25 }\n"
           "*SUBMATERIAL 1 { *MATERIAL_DIFFUSE 9 9 9 { \"} \" *MATERIAL_SHINE 9 } } *UVW_ANGLE 0.5 }\n"
           "*MATERIAL 7 { *MATERIAL_NAME \"last\" *BITMAP \"c:\\maps\\Wall.tga\" }"));
  const DMaterial& m = *geode.material.at(0);
  EXPECT_EQ("Road Top", m.name);
  EXPECT_EQ("Multi", m.className);
  EXPECT_EQ(DVector4(1, 0.5f, 0, 0.75f), m.diffuse);
  EXPECT_EQ(64, m.shininess);
  EXPECT_EQ(0.25f, m.transparency);
  EXPECT_EQ(0.5f, m.angle);
  const DMaterial& last = *geode.material.at(1);
  EXPECT_EQ("last", last.name);
  EXPECT_EQ("c:\\maps\\Wall.tga", last.bitmapName);
  EXPECT_STREQ("Wall.tga", last.texture.at(0)->GetName());
  for (const char* text : {"2 submaterials but multi/sub materials are flattened\n", "material 7 out of range (0..1)",
                           "submaterial #0 read in material itself", "submaterial #1 skipped", "  try 'Wall.tga'\n"})
    EXPECT_TRUE(reports.Contains(text)) << text;
  ASSERT_TRUE(Read("*SUBMATERIAL 1 { } *MATERIAL_COUNT 6001"));
  EXPECT_EQ(6000, geode.GetNoofMaterials());
  EXPECT_TRUE(reports.Contains("ASE import; max #materials exceeded (6001, max 6000)"));
  EXPECT_TRUE(reports.Contains("ASE import: no current material, but SUBMATERIAL seen."));
}

TEST_F(AseRead, PicturesAreLookedForBesideTheFile)
{
  const TempDir dir;
  const std::string text = "*MATERIAL_COUNT 3 *MATERIAL 0 { *BITMAP \"x/a.tga\" } *MATERIAL 1 { *BITMAP \"x\\b.tga\" } "
                           "*MATERIAL 2 { *BITMAP \"c.tga\" }";
  dir.Write("in/a.tga", "");
  dir.Write("b.tga", "");
  ASSERT_TRUE(geode.ImportASE(faces, dir.Write("in/scene.ase", text)));
  for (const char* t : {"  try '", "/in/a.tga'", "  try2 '", "/in/../b.tga'", "/in/../c.tga'"})
    EXPECT_TRUE(reports.Contains(t)) << t;
  EXPECT_EQ(0, reports.Count("in/../a.tga"));
  EXPECT_FALSE(geode.ImportASE(faces, dir.Path("none.ase")));
  EXPECT_TRUE(reports.Contains("Can't open ASE file '"));
}

TEST_F(AseRead, IndicesBeyondTheLimitWrapAndAreToldOnce)
{
  int boxes = 0;
  QReports().messageBox = [&](std::string_view title, std::string_view text) {
    ++boxes;
    EXPECT_EQ("Index limit exceeded", title);
    EXPECT_TRUE(text.ends_with("This will clip a number of triangles. hut"));
  };
  EXPECT_TRUE(Read("*GEOMOBJECT { *NODE_NAME hut *MESH_NUMVERTEX 3 *MESH_NUMFACES 21847 " + Face(21844, 0) +
                   Face(21845, 0) + Face(21846, 0) + "}"));
  QReports().messageBox = nullptr;
  EXPECT_EQ(1, boxes);
  EXPECT_EQ(1, reports.Count("indices overflow (n=21845 giving index 65537; limit is 65536)"));
  EXPECT_EQ(65535, Geob().index[65535]);
  EXPECT_EQ(1, Geob().index[65537]);
}

TEST_F(AseRead, WhatIsOutOfRangeIsDroppedOrClipped)
{
  EXPECT_TRUE(ReadMesh(Face(0, 0, "A: 7 B: -1 C: 2") + Face(9, 0) + Face(-1, 0) + Face(1000000000, 3) +
                       "*MESH_VERTEX 3 9 9 9 *MESH_VERTEX -1 9 9 9 *MESH_NUMTVERTEX 1 *MESH_TVERT 5 1 2 3 "
                       "*MESH_TFACE 0 0 1 -1 *MESH_TFACE 2000000000 0 0 0 *MESH_NUMCVERTEX 1 *MESH_VERTCOL 1 1 1 1 "
                       "*MESH_CFACE 5 0 0 0 *MESH_VERTEXNORMAL 0 0 0 1 *MESH_VERTEXNORMAL 0 0 0 1 "
                       "*MESH_VERTEXNORMAL 0 0 0 1 *MESH_VERTEXNORMAL 0 0 0 1"));
  EXPECT_EQ((DArray<DVector3>{{1, 3, -2}, {1, 3, -2}, {0, 0, -1}}), Geob().vertex);
  EXPECT_EQ((DArray<DVector2>{{1, 2}, {0, 0}, {0, 0}}), Geob().texCoord[0]);
  EXPECT_EQ(3u, Geob().vertexColor.size());
  for (const char* text :
       {"MESH_FACE v1 (7) out of range (0..2)", "MESH_FACE v2 (-1) out of range (0..2)",
        "ASE: MESH_TVERT 5 out of range 0..0", "Too many normals (defining normal 3 with only 3 vertices)"})
    EXPECT_TRUE(reports.Contains(text)) << text;
  EXPECT_TRUE(Read("*GEOMOBJECT { *MESH_NUMVERTEX 2000000000 *MESH_NUMFACES 2000000000 *MESH_NUMTVERTEX 2000000000 }"));
  EXPECT_TRUE(Geob().vertex.empty() && Geob().texCoord[0].empty());
  for (const char* text : {"?tempVertex", "?vertex", "?normal", "(index)", "?tempTVertex[uvChannel]"})
    EXPECT_TRUE(reports.Contains(text)) << text;
}

TEST_F(AseRead, EndsWhereTheFileOrTheTableDoes)
{
  EXPECT_FALSE(Read("*GEOMOBJECT { *MESH_NUMFACES 0 }"));
  EXPECT_FALSE(Read("*GEOMOBJECT { *MESH_NUMVERTEX 3 *MESH_NUMFACES 1 *MESH_FACE 0: A: 0 B: 0"));
  EXPECT_TRUE(reports.Contains("DGeodImportASE: unexpected EOF"));
  std::string many;
  for (int i = 0; i < 201; ++i)
    many += "*GEOMOBJECT { }\n";
  EXPECT_TRUE(Read(many));
  EXPECT_EQ(200, geode.GetNoofGeobs());
  EXPECT_TRUE(reports.Contains("Too many geomobjects in ASE, max=200"));
  std::string bursts;
  for (int i = 0; i < 105; ++i)
    bursts += Face(0, i);
  ASSERT_TRUE(ReadMesh(bursts));
  EXPECT_EQ(100, Geob().Bursts());
  EXPECT_TRUE(reports.Contains("max face burst (100) maxed out"));
}
