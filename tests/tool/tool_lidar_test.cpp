#include "tool/toolrun.h"
#include "track/rlidar.h"
#include "track/smalltrack.h"

#include <filesystem>
#include <gtest/gtest.h>

namespace {

TEST(LidarVerbs, InfoTellsTheFileBeforeAnyChangeOfAxes)
{
  const TempDir dir;
  RLidar cloud;
  cloud.points = {{1, -2, 3}, {0.1f, 5, -6}};
  cloud.triangles = {0, 1, 1};
  cloud.blocks = {{0, 1}, {1, 1}};
  ASSERT_TRUE(cloud.SaveRLD(dir.Path("track.rld")));
  const ToolRun run = RunTool(dir.Path(), {"--quiet", "lidar", "info", "track.rld"});
  EXPECT_EQ(0, run.status) << run.err;
  EXPECT_EQ(R"({"points":2,"triangles":1,"blocks":[[0,1],[1,1]],"min":[0.1,-2.0,-6.0],"max":[1.0,5.0,3.0]})"
            "\n",
            run.out);
  std::filesystem::resize_file(dir.Path("track.rld"), 40);
  for (const char* file : {"track.rld", "absent.rld", "."}) {
    SCOPED_TRACE(file);
    const ToolRun bad = RunTool(dir.Path(), {"--quiet", "lidar", "info", file});
    EXPECT_EQ(1, bad.status);
    EXPECT_EQ("", bad.out);
    EXPECT_NE(std::string::npos, bad.err.find(std::string("can't read ") + file + " as a point cloud"));
  }
}

TEST(LidarVerbs, MarshalTemplateIsWrittenBesideTheData)
{
  SmallTrack small;
  small.WriteAll();
  small.WriteModel("cloth_mpost_1_flag_sc.dof");
  small.Write("geometry.ini", "objects\n{\n  a\n  {\n    file=cloth_mpost_1_flag_sc.dof\n  }\n}\n");
  const auto before = small.SavedFiles();
  const ToolRun run = RunTool(small.root.Path(), {"--quiet", "track", "marshal-template", "small"});
  EXPECT_EQ(0, run.status) << run.err;
  EXPECT_EQ("", run.out);
  const std::string text = FileText(small.root.Path("TEMP_PAVEX_MARSHAL_POSTS.txt"));
  EXPECT_NE(std::string::npos,
            text.find("  count=2\n  post0\n  {\n    spline_from=0\n    spline_to=0\n    user_id=12\n"));
  EXPECT_NE(std::string::npos, text.find("      type=1\n      state_safetycar=cloth_mpost_1_flag_sc\n"));
  EXPECT_EQ(before, small.SavedFiles());
  EXPECT_EQ(1, RunTool(small.root.Path(), {"track", "marshal-template", "nowhere"}).status);
}

} // namespace
