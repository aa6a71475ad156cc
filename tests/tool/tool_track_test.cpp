#include "tool/toolrun.h"
#include "track/smalltrack.h"

#include <algorithm>
#include <filesystem>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace fs = std::filesystem;
using Json = nlohmann::ordered_json;

namespace {

// Each file below the data root, with its content.
std::map<std::string, std::string> Everything(const SmallTrack& small)
{
  std::map<std::string, std::string> files;
  for (const auto& entry : fs::recursive_directory_iterator(small.root.Path()))
    files[entry.path()] = entry.is_regular_file() ? FileText(entry.path()) : "";
  return files;
}

std::string Keys(const Json& object)
{
  std::string keys;
  for (const auto& [key, value] : object.items())
    keys += (keys.empty() ? "" : " ") + key;
  return keys;
}

} // namespace

TEST(TrackVerbs, CountWhatATrackHoldsAndWriteNothing)
{
  SmallTrack small;
  small.WriteAll();
  const auto before = Everything(small);
  const ToolRun run = RunTool(small.root.Path(), {"--quiet", "track", "info", "small"});
  EXPECT_EQ(0, run.status) << run.err;
  EXPECT_EQ(R"({"name":"Small","creator":"","length":"","type":"vrml","id":"small","version":"049f",)"
            R"("trackLength":180.0,"nodes":2,"triangles":24,"gridPositions":1,"pitPositions":0,"timeLines":2,)"
            R"("triggerLines":1,"trackCams":1,"wayPoints":1,"audioSources":1,"splineLines":10,)"
            R"("trafficWayPoints":2,"marshalPosts":1,"surfaces":1})"
            "\n",
            run.out);
  EXPECT_EQ(0, RunTool(small.root.Path(), {"track", "dump", "small"}).status);
  EXPECT_TRUE(before == Everything(small));
}

TEST(TrackVerbs, DumpAllRecordsByTheirNames)
{
  SmallTrack small;
  small.WriteAll();
  const ToolRun run = RunTool(small.root.Path(), {"track", "dump", "small"});
  const Json dump = Json::parse(run.out, nullptr, false);
  ASSERT_TRUE(dump.is_object()) << run.err;
  const struct
  {
    const char* record; // a pointer into the dump
    const char* keys;
  } cases[] = {
      {"", "identity flags trackLength pitSide gridPos pitPos timeLines triggerLines pitInOutLines trackCams wayPoints "
           "audio splines traffic marshalPosts nodes surfaces"},
      {"/identity", "name creator length type file trackName id preview racingClass skin version"},
      {"/gridPos/0", "from to"},
      {"/timeLines/1", "from to name normal distance lengthSq"},
      {"/triggerLines/0", "from to index command name"},
      {"/pitInOutLines/3", "from to"},
      {"/trackCams/0",
       "flags pos pos2 posDolly rot rot2 group radius zoomEdge zoomClose zoomFar cubes src dst keyframes"},
      {"/trackCams/0/src", "k mass damping maxDist"},
      {"/trackCams/0/keyframes/0", "t x y z yaw pitch roll fov"},
      {"/wayPoints/0", "pos posDir left right lon"},
      {"/audio/0", "name pos radius"},
      {"/splines", "flags lateralDivisions paintStart paintEnd lines"},
      {"/splines/lines/9", "flags left right elevation longGrip distance length"},
      {"/traffic/1", "pos velocity forward left right flags"},
      {"/marshalPosts/0", "splineFrom splineTo userID actors"},
      {"/nodes/1", "name file flags lod center radius"},
      {"/surfaces/0", "name type subtype flags gripFactor rollingResistanceFactor"},
  };
  for (const auto& c : cases)
    EXPECT_EQ(c.keys, Keys(dump.at(Json::json_pointer(c.record)))) << c.record;
  EXPECT_EQ(Json({1.5, 0.25, -3.0}), dump["gridPos"][0]["from"]);
  EXPECT_EQ(Json(1), dump["traffic"][0]["forward"]);
  EXPECT_EQ("lark.wav", dump["audio"][0]["name"]);
  EXPECT_EQ(3u, dump["trackCams"][0]["cubes"].size());
  EXPECT_EQ(10u, dump["nodes"][0]["lod"].size());
}

TEST(TrackVerbs, SaveTheSameAgain)
{
  SmallTrack small;
  small.WriteAll();
  EXPECT_EQ(0, RunTool(small.root.Path(), {"track", "save", "small"}).status);
  const auto first = small.SavedFiles();
  EXPECT_NE(std::string::npos, first.at("special.ini").find("secret=42 ; not ours"));
  EXPECT_EQ(0, RunTool(small.root.Path(), {"track", "save", "small"}).status);
  EXPECT_TRUE(first == small.SavedFiles());
}

TEST(TrackVerbs, FailForWhatIsNoTrack)
{
  SmallTrack small;
  for (const char* name : {"nowhere", "../tracks/small", "..", ""}) {
    const ToolRun run = RunTool(small.root.Path(), {"track", "info", name});
    EXPECT_EQ(1, run.status) << name;
    EXPECT_EQ("", run.out);
    EXPECT_NE(std::string::npos, run.err.find("pavex-tool: ")) << run.err;
  }
  small.WriteAll();
  fs::remove(small.Path("special.ini"));
  fs::create_directory(small.Path("special.ini")); // can't be read, so it isn't to be replaced
  const auto before = Everything(small);
  EXPECT_EQ(1, RunTool(small.root.Path(), {"track", "save", "small"}).status);
  EXPECT_TRUE(before == Everything(small));
}

TEST(TrackVerbs, SplitIntoADirectoryThatExists)
{
  SmallTrack small;
  small.WriteAll();
  const auto before = Everything(small);
  EXPECT_EQ(2, RunTool(small.root.Path(), {"track", "split", "small"}).status);
  for (const char* size : {"wide", "0", "-5", "nan", "5m"})
    EXPECT_EQ(1, RunTool(small.root.Path(), {"track", "split", "small", "--cell", size}).status) << size;
  const ToolRun missing = RunTool(small.root.Path(), {"--quiet", "track", "split", "small", "--cell", "50"});
  EXPECT_EQ(1, missing.status);
  EXPECT_NE(std::string::npos, missing.err.find("data/tracks/small_split")) << missing.err;
  EXPECT_TRUE(before == Everything(small));
  fs::create_directory(small.root.Path("data/tracks/small_split"));
  for (int i = 0; i < 2; ++i) { // over its own files as well
    const ToolRun run = RunTool(small.root.Path(), {"--quiet", "track", "split", "small", "--cell", "50"});
    EXPECT_EQ(0, run.status) << run.err;
    EXPECT_EQ("", run.out);
  }
  small.root.Write("data/tracks/small_split/track.ini", small.Text("track.ini"));
  const Json info = Json::parse(RunTool(small.root.Path(), {"track", "info", "small_split"}).out, nullptr, false);
  ASSERT_TRUE(info.is_object());
  EXPECT_EQ(24, info["triangles"]);
  EXPECT_EQ(2, info["nodes"]) << "of one material and cell, with different flags";
}

TEST(TrackVerbs, WriteAShaderTemplateForEachMaterial)
{
  SmallTrack small;
  small.WriteAll(); // of a material without a texture
  ASSERT_EQ(0, RunTool(small.root.Path(), {"track", "shader-template", "small"}).status);
  const std::string text = small.Text("track_template.shd");
  EXPECT_EQ(0u,
            text.find(";\n; Template shader file (generated by RTrackVRML)\n;\n\n;\n; Vertex/fragment templates\n"));
  constexpr std::string_view END = "\n;\n; Torvik shaders\n;\n"
                                   ";shader_wall (has no texture)\n;shader_wall (has no texture)\n";
  EXPECT_TRUE(text.ends_with(END)) << text;
}
