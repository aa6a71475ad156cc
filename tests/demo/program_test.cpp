#include "app/demo/demo.h"
#include "app/demo/writer.h"
#include "foundation/qimage.h"
#include "foundation/qinfo.h"
#include "geometry/dgeode.h"
#include "support/reportcapture.h"
#include "support/tempdir.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <set>

namespace {

namespace fs = std::filesystem;

} // namespace

TEST(DemoProgram, MakesTheSameBytesEveryTime)
{
  const auto make = [] {
    const DemoCourse course = DemoMakeCourse("lakeside", DemoLakesideLine());
    return DemoTrackFiles(course, DemoBuildScenery(course));
  };
  const auto first = make(), second = make();
  ASSERT_EQ(first.size(), second.size());
  for (size_t i = 0; i < first.size(); ++i)
    EXPECT_TRUE(first[i].name == second[i].name && first[i].content == second[i].content) << first[i].name;
}

TEST(DemoProgram, RefusesBadArgumentsAndLeavesNothingBehind)
{
  const TempDir root;
  const std::string csv = root.Write("in/line.csv", "0,0,6,6\n10,0,6,6\n"), missing = root.Path("in/none.csv");
  const struct
  {
    std::vector<std::string> arguments;
    const char* report;
  } cases[] = {
      {{"--centreline", csv, "--name", "a"}, "fewer than 8 points"},
      {{"--centreline", missing, "--name", "a"}, "Can't read"},
      {{"--centreline", root.Path("in"), "--name", "a"}, "Can't read"},
      {{"--centreline", csv, "--name", "../a"}, "is no track name"},
      {{"--centreline", csv, "--name", ""}, "incomplete argument"},
      {{"--centreline", csv}, "go together"},
      {{"--name", "a"}, "go together"},
      {{"--colour", "red"}, "Unknown or incomplete argument '--colour'"},
      {{"--root"}, "incomplete argument '--root'"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.report);
    ReportCapture reports;
    std::vector<std::string> arguments = c.arguments;
    if (arguments.back() != "--root")
      arguments.insert(arguments.begin(), {"--root", root.Path("out")});
    EXPECT_EQ(1, DemoMain(arguments));
    EXPECT_TRUE(reports.Contains(c.report)) << reports.All();
    EXPECT_FALSE(fs::exists(root.Path("out")));
  }
}

TEST(DemoProgram, EachNodeHasItsModelsAndEachMaterialItsShader)
{
  const TempDir root;
  ASSERT_EQ(0, DemoMain({"--root", root.Path()}));
  const std::string track = root.Path("data/tracks/lakeside");
  const std::string geometry = FileText(track + "/geometry.ini"), shaders = FileText(track + "/track.shd");
  std::set<std::string> named;
  for (size_t at = geometry.find("file="); at != std::string::npos; at = geometry.find("file=", at + 1))
    named.insert(geometry.substr(at + 5, geometry.find('\n', at) - at - 5));
  EXPECT_GT(named.size(), 300u);
  size_t models = 0;
  for (const auto& entry : fs::directory_iterator(track)) {
    const std::string name = entry.path().filename().string();
    if (entry.path().extension() != ".dof")
      continue;
    ++models;
    const size_t lod = name.find("_lod");
    EXPECT_TRUE(named.count(lod == std::string::npos ? name : name.substr(0, lod) + ".dof")) << name;
    if (models % 10 != 0)
      continue;
    ReportCapture reports;
    DGeode geode("model");
    EXPECT_TRUE(geode.ImportDOF(entry.path().string())) << name;
    EXPECT_GT(geode.GetNoofGeobs(), 0) << name;
    for (const auto& material : geode.material)
      EXPECT_NE(std::string::npos, shaders.find("shader_" + material->name + "~")) << material->name;
  }
  EXPECT_GT(models, named.size()) << "levels of detail";
  for (const std::string& file : named)
    EXPECT_TRUE(fs::exists(track + "/" + file)) << file;
}

TEST(DemoProgram, TheFontHasEachCharacterInsideItsPicture)
{
  const TempDir root;
  ReportCapture reports;
  EXPECT_EQ(1, DemoMain({"--root", root.Path(), "--font", root.Write("a.ttf", "no font")}));
  EXPECT_TRUE(reports.Contains("is no font"));
  EXPECT_FALSE(fs::exists(root.Path("data")));
  // The font that ships, since a machine may have none to make one of.
  const QInfo font(PAVEX_SOURCE_DIR "/data/fonts/eurostile11.dtf");
  QImage picture(PAVEX_SOURCE_DIR "/data/fonts/eurostile11.tga");
  ASSERT_TRUE(font.IsRead() && picture.GetWidth() > 0);
  EXPECT_EQ(95 + 96, font.CountChildren("chars"));
  int inked = 0;
  for (int code = 32; code <= 255; ++code) {
    if (code >= 127 && code < 160)
      continue;
    const std::string key = "chars.char" + std::to_string(code);
    SCOPED_TRACE(key);
    const int x = font.GetInt(key + ".x", -1), y = font.GetInt(key + ".y"), wid = font.GetInt(key + ".wid");
    const int hgt = font.GetInt(key + ".hgt");
    EXPECT_GT(font.GetFloat(key + ".advance"), 0);
    EXPECT_LE(hgt, 16) << "the lines of the screen are 16 apart";
    ASSERT_TRUE(x >= 0 && y >= 0 && x + wid <= picture.GetWidth() && y + hgt <= picture.GetHeight());
    bool ink = false;
    for (int row = y; row < y + hgt; ++row)
      for (int column = x; column < x + wid; ++column) {
        QColor color;
        picture.GetColorAt(column, row, color);
        ink = ink || color.GetA() > 128;
      }
    inked += ink;
  }
  EXPECT_GE(inked, 95 + 96 - 3) << "all but the blanks and the soft hyphen";
}
