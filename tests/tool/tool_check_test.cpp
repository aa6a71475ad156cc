#include "app/demo/demo.h"
#include "support/tempdir.h"
#include "tool/toolrun.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

namespace {

// One thing in one file of the track is spoilt.
struct Fault
{
  const char* file;
  const char* from; // its first occurrence goes; empty: to goes to the end; null: the file goes
  const char* to;
  const char* finding; // a line of the result begins with this
  bool fails;          // the track isn't fit for use
};

const Fault FAULTS[] = {
    {"road000.dof", nullptr, nullptr, "warning: geometry.ini: RTrack: can't load data/tracks/lakeside/road000.dof",
     true},
    {"asphalt.tga", nullptr, nullptr, "warning: track.shd: Image 'asphalt.tga' not found for shader", false},
    {"crowd.wav", nullptr, nullptr, "error: special.ini: sound 0: there is no file", true},
    {"track.ini", nullptr, nullptr, "error: track.ini: Can't find track.ini", true},
    {"spline.ini", nullptr, nullptr, "warning: special.ini: No splines found for track 'lakeside'", true},
    {"track.ini", "id=lakeside", "id=lake side", "warning: track.ini: ID 'lake side' contains invalid chars", false},
    {"track.ini", "creator=", "creater=", "warning: track.ini: track.creater isn't a key that is read", false},
    {"geometry.ini", "file=road001.dof", "file=road 001.dof", "warning: geometry.ini: Geometry.ini", false},
    {"geometry.ini", "file=road002.dof", "fil=road002.dof", "warning: geometry.ini: objects.road002.fil isn't", false},
    {"geometry.ini", "road003\n", "road004\n", "warning: geometry.ini: two objects are named 'road004'", false},
    {"special.ini", "radius=", "radios=", "warning: special.ini: ", false},
    {"special.ini", "count=20", "count=19", "warning: special.ini: grid.pos19.from.x isn't a key that is read", false},
    {"special.ini", "grid\n{\n  count=20", "grid\n{\n  count=0", "error: special.ini: no grid positions", true},
    {"special.ini", "type=road", "type=tarmac", "warning: special.ini: RTrack:LoadSurfaceTypes(); type 'tarmac'", true},
    {"special.ini", "spline_to=", "spline_to=9999", "error: special.ini: marshal post 0 guards lines", true},
    {"traffic.ini", "forward=1\n", "forward=4000\n", "error: traffic.ini: way point 0 leads forward to 4000", true},
    {"traffic.ini", "forward=2\n", "forward=3\n", "warning: traffic.ini: no way leads to way point 2", false},
    {"traffic.ini", "forward=5\n", "forward=-1\n", "warning: traffic.ini: way point 4 leads nowhere", false},
    {"traffic.ini", "velocity=", "speed=", "warning: traffic.ini: waypoints.waypoint0.speed isn't a key", false},
    {"track.shd", "map=asphalt.tga", "map=asfalt.tga", "warning: track.shd: Image", false},
    {"track.shd", "blendfunc=", "blendfunc=foo ", "warning: track.shd: DShaderLoader: blendfunc 'foo' unknown", false},
};

} // namespace

TEST(TrackCheck, FindsEachOfManyFaultsAndNothingElse)
{
  TempDir root;
  const std::string track = root.Path() + "/data/tracks/lakeside/";
  ASSERT_EQ(0, DemoMain({"--root", root.Path()}));
  const ToolRun clean = RunTool(root.Path(), {"track", "check", "lakeside"});
  EXPECT_EQ("", clean.out);
  EXPECT_EQ(0, clean.status);
  for (const Fault& fault : FAULTS) {
    SCOPED_TRACE(fault.finding);
    const std::string path = track + fault.file;
    const std::string before = FileText(path);
    if (fault.from) {
      std::string text = before;
      const size_t at = *fault.from ? text.find(fault.from) : text.size();
      ASSERT_NE(text.npos, at);
      std::ofstream(path) << text.replace(at, std::string(fault.from).size(), fault.to);
    } else {
      std::filesystem::remove(path);
    }
    const ToolRun run = RunTool(root.Path(), {"track", "check", "lakeside"});
    EXPECT_EQ(fault.fails ? 1 : 0, run.status);
    EXPECT_THAT("\n" + run.out, testing::HasSubstr(std::string("\n") + fault.finding));
    EXPECT_EQ(0, run.ErrLines()) << run.err;
    std::ofstream(path, std::ios::binary) << before;
  }
}
