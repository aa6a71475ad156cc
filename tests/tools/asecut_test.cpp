#include "support/reportcapture.h"
#include "support/tempdir.h"
#include "support/unattendedui.h"
#include "tools/asecut.h"
#include "tools/asecutmultisub.h"
#include "tools/plaincut.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <random>

namespace {

namespace fs = std::filesystem;

plain::Files FilesIn(const std::string& directory)
{
  plain::Files files;
  std::error_code none;
  for (const auto& entry : fs::directory_iterator(directory, none))
    files[entry.path().filename()] = FileText(entry.path());
  return files;
}

// Scenes that look like exported ones, with all that an exporter, an editor or bad luck can do to their lines.
class SceneMaker
{
public:
  explicit SceneMaker(unsigned seed) : random(seed), feed(Chance(3) ? "\r\n" : "\n"), odd(Chance(2)) {}
  std::string Make()
  {
    Line("*3DSMAX_ASCIIEXPORT\t200");
    Line("*SCENE {");
    Line("}");
    if (!odd || !Chance(6)) {
      Line("*MATERIAL_LIST {");
      Line("\t*MATERIAL_COUNT 3");
    }
    for (const int number : {0, 1, 10, 2})
      if (!odd || !Chance(6))
        Material(number);
    Line("}");
    for (int i = Number(5) - (odd ? 1 : 0); i >= 0; --i)
      Object();
    if (Chance(4) && !text.empty())
      text.resize(text.size() - std::min<size_t>(text.size(), static_cast<size_t>(Number(300))));
    return text;
  }

private:
  bool Chance(int n) { return Number(n) == 0; }
  int Number(int n) { return static_cast<int>(random() % static_cast<unsigned>(n)); }
  std::string Text(int n) { return std::to_string(n); }
  void Line(const std::string& line)
  {
    if (odd && Chance(60))
      text += std::string(static_cast<size_t>(1000 + Number(1100)), 'x'); // a keyword can be torn at 1023 bytes
    if (odd && Chance(60))
      return;
    if (odd && Chance(80))
      text += Chance(2) ? "}" + feed : "a comment on *MATERIAL 1 and *GEOMOBJECT" + feed;
    text += line + feed;
  }
  std::string Name()
  {
    static const char* const names[] = {"Road", "road", "Fence 7", "", "a\"b", "Kerb.x"};
    if (odd && Chance(25))
      return "up/down";
    return names[Number(6)];
  }
  void Material(int number)
  {
    Line("\t*MATERIAL " + Text(number) + " {");
    Line("\t\t*MATERIAL_NAME \"Mat" + Text(number) + "\"");
    const int subs = Number(4);
    if (subs > 0 || Chance(2))
      Line("\t\t*NUMSUBMTLS " + Text(subs));
    for (int s = 0; s < subs; ++s) {
      const int at = s == 1 && Chance(3) ? 12 : s; // holds the text of 1
      Line("\t\t*SUBMATERIAL " + Text(at) + " {");
      if (!Chance(5))
        Line("\t\t\t*MATERIAL_NAME \"" + Name() + "\"");
      if (Chance(4))
        Line("\t\t\t*NUMSUBMTLS 9");
      Line("\t\t}");
    }
    Line("\t}");
  }
  void Faces(int faces)
  {
    Line("\t\t*MESH_NUMFACES " + Text(faces));
    for (int i = 0; i < faces; ++i)
      Line("\t\t\t*MESH_FACE    " + Text(i) + ":    A:    0 B:    1 C:    2\t *MESH_SMOOTHING 1 \t*MESH_MTLID " +
           Text(Chance(5) ? 12 : Number(4)));
    for (const std::string kind : {"T", "C"}) {
      if (Chance(3))
        continue;
      Line("\t\t*MESH_NUM" + kind + "VFACES " + Text(faces));
      for (int i = 0; i < faces; ++i)
        Line("\t\t\t*MESH_" + kind + "FACE " + Text(odd && Chance(10) ? 200000 - Number(3) * 100000 : i) + "\t7\t8\t9");
    }
    if (Chance(3))
      return;
    for (int i = 0; i < faces; ++i) {
      Line("\t\t\t*MESH_FACENORMAL " + Text(i) + "\t0.0\t0.0\t1.0");
      for (int v = odd && Chance(8) ? 1 : 0; v < 3; ++v)
        Line("\t\t\t\t*MESH_VERTEXNORMAL " + Text(v) + "\t0.0\t1.0\t0.0");
    }
  }
  void Object()
  {
    Line("*GEOMOBJECT {");
    Line("\t*NODE_NAME \"" + Name() + "\"");
    Line("\t*NODE_TM {");
    Line("\t}");
    Line("\t*MESH {");
    Line("\t\t\t*MESH_VERTEX    0\t1.0\t2.0\t3.0");
    Faces(Number(7));
    Line("\t}");
    static const int refs[] = {0, 1, 2, 7, 10, -1};
    if (!odd || !Chance(8))
      Line("\t*MATERIAL_REF " + Text(refs[Number(odd ? 6 : 3)]));
    Line("}");
  }

  std::mt19937 random;
  std::string feed;
  bool odd;
  std::string text;
};

struct Outcome
{
  bool result;
  plain::Files files;
};

Outcome CutFast(const std::string& scene)
{
  const TempDir dir;
  const InDirectory inside(dir.Path());
  UnattendedUi ui;
  const bool result = ASECut(dir.Write("scene.ase", scene), ui);
  return {result, FilesIn(dir.Path("output"))};
}

Outcome MultiSubFast(const std::string& scene)
{
  const TempDir dir;
  UnattendedUi ui;
  const bool result = ASECutMultiSub(dir.Write("scene.ase", scene), dir.Path("parts"), false, ui);
  return {result, FilesIn(dir.Path("parts"))};
}

// A scene of two objects with two submaterials; nothing about it is odd.
constexpr const char* SCENE = "*SCENE {\n}\n*MATERIAL_LIST {\n\t*MATERIAL_COUNT 1\n\t*MATERIAL 0 {\n"
                              "\t\t*NUMSUBMTLS 2\n\t\t*SUBMATERIAL 0 {\n\t\t\t*MATERIAL_NAME \"Tar\"\n\t\t}\n"
                              "\t\t*SUBMATERIAL 1 {\n\t\t\t*MATERIAL_NAME \"Grass\"\n\t\t}\n\t}\n}\n"
                              "*GEOMOBJECT {\n\t*NODE_NAME \"Road01\"\n\t\t*MESH_NUMFACES 2\n"
                              "\t\t\t*MESH_FACE    0:    A:    0 B:    1 C:    2\t*MESH_MTLID 0\n"
                              "\t\t\t*MESH_FACE    1:    A:    2 B:    1 C:    0\t*MESH_MTLID 1\n"
                              "\t*MATERIAL_REF 0\n}\n"
                              "*GEOMOBJECT {\n\t*NODE_NAME \"Road01\"\n\t\t*MESH_NUMFACES 2\n"
                              "\t\t\t*MESH_FACE    0:    A:    0 B:    1 C:    2\t*MESH_MTLID 1\n"
                              "\t\t\t*MESH_FACE    1:    A:    2 B:    1 C:    0\t*MESH_MTLID 3\n"
                              "\t*MATERIAL_REF 0\n}\n";

// On a thousand scenes.
template <typename Plain>
void ExpectTheSameFiles(Plain plainCut, Outcome (*cut)(const std::string& scene))
{
  const ReportCapture reports;
  size_t files = 0;
  for (unsigned seed = 0; seed < 1000; ++seed) {
    SCOPED_TRACE(seed);
    const std::string scene = SceneMaker(seed).Make();
    plain::Files expected;
    const bool good = plainCut(scene, expected);
    const Outcome run = cut(scene);
    ASSERT_EQ(good, run.result);
    ASSERT_EQ(expected, run.files) << scene;
    files += expected.size();
  }
  EXPECT_GT(files, 1000u);
}

} // namespace

TEST(AseCut, LeavesWhatThePlainProcedureLeaves)
{
  ExpectTheSameFiles(plain::Cut, CutFast);
}

TEST(AseCutMultiSub, LeavesWhatThePlainProcedureLeaves)
{
  ExpectTheSameFiles([](const std::string& scene, plain::Files& files) { return plain::MultiSub(scene, files).Run(); },
                     MultiSubFast);
}

// The plain procedure is told in the same words as the fast one: this file was written by hand.
TEST(AseCutMultiSub, WritesThePartWithItsFacesNumberedAnew)
{
  const ReportCapture reports;
  const Outcome run = MultiSubFast(SCENE);
  ASSERT_TRUE(run.result);
  ASSERT_EQ(3u, run.files.size());
  EXPECT_TRUE(run.files.contains("tar_0_road01.ase"));
  EXPECT_TRUE(run.files.contains("grass_1_road01_occ2.ase"));
  EXPECT_EQ("*SCENE {\n}\n*MATERIAL_LIST {\n\t*MATERIAL_COUNT 1\n\t*MATERIAL 0 {\n\t\t\t*MATERIAL_NAME \"Grass\"\n"
            "\t\t}\n\t}\n}\n}\n*GEOMOBJECT {\n\t\t*MESH_NUMFACES 1\n"
            "\t\t\t*MESH_FACE    0:     A:    2 B:    1 C:    0\t*MESH_MTLID 0\n\t*MATERIAL_REF 0\n}\n",
            run.files.at("grass_1_road01.ase"));
  EXPECT_EQ(1, reports.Count("GEOM_OBJECT 'Road01' contains faces with MTLID 3 while there are only 2 submaterials "
                             "defined in material #0"));
}

TEST(AseCutMultiSub, RefusesTooManyMaterialsAndEndsOnCancel)
{
  const ReportCapture reports;
  const TempDir dir;
  const struct
  {
    const char* line;
    const char* told;
  } cases[] = {{"*MATERIAL 6000 {\n", "Too many materials; max=6000, material index read: 6000\n"},
               {"*SUBMATERIAL 1000 {\n", "ASE submaterial 1000 out of range 0..999"}};
  for (const auto& c : cases) {
    UnattendedUi ui;
    EXPECT_FALSE(ASECutMultiSub(dir.Write("bad.ase", std::string(c.line) + SCENE), dir.Path("bad"), true, ui));
    EXPECT_EQ(std::string("Error - aborting operation: ") + c.told, ui.told);
  }
  EXPECT_TRUE(FilesIn(dir.Path("bad")).empty());
  UnattendedUi cancels(1);
  EXPECT_FALSE(ASECutMultiSub(dir.Write("scene.ase", SCENE), dir.Path("parts"), true, cancels));
  EXPECT_EQ("", cancels.told);
  const plain::Files left = FilesIn(dir.Path("parts"));
  ASSERT_EQ(1u, left.size()); // the first part, whole
  EXPECT_TRUE(left.contains("tar_0_road01.ase"));
}

TEST(AseCut, SaysWhyItDidNothing)
{
  ReportCapture reports;
  const TempDir dir;
  const InDirectory inside(dir.Path());
  UnattendedUi ui;
  EXPECT_FALSE(ASECut(dir.Path("none.ase"), ui));
  EXPECT_TRUE(reports.Contains("ASECut: can't open"));
  EXPECT_FALSE(ASECutMultiSub(dir.Path("none.ase"), dir.Path("parts"), true, ui));
  EXPECT_TRUE(reports.Contains("ASECutMS: can't open"));
  const std::string empty = dir.Write("empty.ase", "*SCENE {\n}\n");
  EXPECT_FALSE(ASECut(empty, ui));
  EXPECT_FALSE(ASECutMultiSub(empty, dir.Path("parts"), true, ui));
  EXPECT_EQ(2, reports.Count("no GEOMOBJECT found"));
  EXPECT_EQ("", ui.told);
  // An output that can't be opened ends the run, and that is still success.
  EXPECT_TRUE(ASECut(dir.Write("slash.ase", "*GEOMOBJECT\n*NODE_NAME \"a/b\"\n*MATERIAL_REF 0\n"), ui));
  EXPECT_TRUE(reports.Contains("ASECut; can't open output 'output/a/b.ase'"));
  EXPECT_TRUE(FilesIn("output").empty());
}
