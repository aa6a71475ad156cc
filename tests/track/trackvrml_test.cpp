#include "geometry/dgeode.h"
#include "scene/worldgeodenode.h"
#include "scene/worldscene.h"
#include "support/recordingoverlay.h"
#include "support/reportcapture.h"
#include "track/smalltrack.h"

#include <gtest/gtest.h>

namespace {

// "name:flags" for each node.
std::string NodeList(const RTrackVRML& track)
{
  std::string list;
  for (const auto& node : track.nodes)
    list += (list.empty() ? "" : " ") + node->name + ":" + std::to_string(node->flags);
  return list;
}

std::unique_ptr<RTrackNode> Node(const char* name, const char* file = "a.dof")
{
  auto node = std::make_unique<RTrackNode>();
  node->name = name;
  node->file = file;
  return node;
}

} // namespace

TEST(GeometryLoad, ReadsTheEntriesThatCanBe)
{
  SmallTrack small;
  small.WriteModel("box.dof");
  small.Write("geometry.ini", "objects\n{\n"
                              "  plain\n  {\n    file= \tBox.DOF \n  }\n"
                              "  blank\n  {\n    file=my box.dof\n  }\n"
                              "  empty\n  {\n  }\n"
                              "  none\n  {\n    file=box.dof\n    flags=0\n  }\n"
                              "  gone\n  {\n    file=gone.dof\n  }\n"
                              "  out\n  {\n    file=../../../../box.dof\n  }\n"
                              "  cone\n  {\n    file=box.dof\n    flags=7\n    movable=1\n    mass=3\n  }\n"
                              "  lit\n  {\n    file=box.dof\n    lightmap\n    {\n      enable=1\n    }\n  }\n"
                              "}\n");
  ReportCapture reports;
  const auto track = small.Load();
  ASSERT_TRUE(track);
  EXPECT_EQ("plain:6 none:0 cone:1025 lit:38", NodeList(*track));
  EXPECT_EQ("box.dof", (*track->nodes.At(0))->file);
  EXPECT_TRUE(reports.Contains(
      "Geometry.ini objects.blank.file (my box.dof) contains a space, not allowed! Object may not be visible."));
  EXPECT_TRUE(reports.Contains("RTrack: can't load data/tracks/small/gone.dof into scene graph"));
  EXPECT_TRUE(reports.Contains("Geometry.ini objects.out.file"));
}

TEST(GeometryLoad, MarksTheModelAndMeasuresIt)
{
  SmallTrack small;
  small.WriteModel("box.dof");
  small.Write("geometry.ini", "objects\n{\n  box\n  {\n    file=box.dof\n    flags=782\n  }\n}\n");
  WorldScene scene;
  {
    RTrackVRML track({.scene = &scene});
    track.SetName("small");
    ASSERT_TRUE(track.Load());
    ASSERT_EQ(1, track.nodes.Count());
    const RTrackNode& node = **track.nodes.At(0);
    const DGeob& geob = *node.Geode()->GetGeob(0);
    EXPECT_EQ(782u, geob.userFlags);
    EXPECT_EQ(12u, geob.burst[0].flags);
    EXPECT_EQ(DVector3(0, 1, 0), node.center);
    EXPECT_NEAR(std::sqrt(3.0), node.radius, 0.0001);
    EXPECT_EQ(node.transformNode.get(), scene.FindNode("tf_track")); // 8: hangs below a node that moves it
    EXPECT_EQ(node.transformNode.get(), node.sceneNode->GetParent());
    EXPECT_EQ(&node, track.FindNode(node.Geode()->name));
    EXPECT_EQ(nullptr, track.FindNode("nobody"));
  }
  EXPECT_EQ(0, scene.CountNodes());
}

TEST(GeometryLoad, TellsItsProgressAndStopsWhenTold)
{
  SmallTrack small;
  small.WriteModel("box.dof");
  small.Write("geometry.ini", "objects\n{\n  a\n  {\n    file=box.dof\n  }\n  b\n  {\n    file=box.dof\n  }\n"
                              "  c\n  {\n    file=box.dof\n  }\n}\nshadows\n{\n  s\n  {\n    file=box.dof\n  }\n}\n");
  const auto track = small.New();
  std::vector<std::string> told;
  track->progressCallback = [&](int current, int total, const char* text) {
    told.push_back(std::to_string(current) + "/" + std::to_string(total) + " " + text);
    return told.size() < 2;
  };
  EXPECT_TRUE(track->Load());
  EXPECT_EQ((std::vector<std::string>{"5/8 Object 1 out of 4 [a]", "6/8 Object 2 out of 4 [b]"}), told);
  EXPECT_EQ(2, track->nodes.Count());

  const auto before = small.SavedFiles();
  ReportCapture reports;
  EXPECT_FALSE(track->Save()) << "the third object would be lost";
  EXPECT_EQ(1, reports.Problems());
  EXPECT_EQ(before, small.SavedFiles());
  EXPECT_EQ(0, small.StrayFiles());
}

TEST(GeometryLoad, StoppedAtItsEndLosesNothing)
{
  SmallTrack small;
  small.WriteModel("box.dof");
  small.Write("geometry.ini", "objects\n{\n  a\n  {\n    file=box.dof\n  }\n  b\n  {\n    file=box.dof\n  }\n}\n");
  const auto track = small.New();
  track->progressCallback = [](int current, int total, const char*) { return current < total; };
  EXPECT_TRUE(track->Load());
  EXPECT_TRUE(track->Save());
  EXPECT_EQ("a:6 b:6", NodeList(*small.Load()));
}

TEST(GeometryLoad, TakesTenThousandNodes)
{
  SmallTrack small;
  small.WriteModel("box.dof");
  std::string text = "objects\n{\n";
  for (int i = 0; i < RTrackVRML::MAX_NODES + 2; ++i)
    text += "  n" + std::to_string(i) + "\n  {\n    file=box.dof\n  }\n";
  small.Write("geometry.ini", text + "}\n");
  ReportCapture reports;
  const auto track = small.Load();
  ASSERT_TRUE(track);
  EXPECT_EQ(RTrackVRML::MAX_NODES, track->nodes.Count());
  EXPECT_EQ("n9999", track->nodes.At(RTrackVRML::MAX_NODES - 1)->get()->name);
  EXPECT_EQ(1, reports.Count("RTrackVRML:AddNodes(); out of nodes"));
}

TEST(GeometryLoad, RunsNoCodeOfATrack)
{
  SmallTrack small;
  small.WriteModel("box.dof");
  small.Write("special.ini", "scripts\n{\n  load=race.kf\n}\n");
  small.Write("geometry.ini",
              "objects\n{\n  mill\n  {\n    file=box.dof\n    motion=spin\n  }\n  gone\n  {\n    file=gone.dof\n"
              "    movable=1\n  }\n}\n");
  ReportCapture reports;
  const auto track = small.Load();
  EXPECT_EQ("mill:6", NodeList(*track)) << "loaded without its plugin";
  for (const char* text : {"Motion plugin for mill: spin", "Track object mill: can't load motion plugin 'spin'",
                           "Add track script 'data/tracks/small/race.kf' (Klefisol)",
                           "Can't load data/tracks/small/gone.dof into scene graph"})
    EXPECT_TRUE(reports.Contains(text)) << text;
}

TEST(GeometryLoad, HidesByTimeOfDay)
{
  const struct
  {
    uint32_t flags;
    bool day, night;
  } cases[] = {{6, true, true},
               {RTrackNode::HIDE_WHEN_DARK, true, false},
               {RTrackNode::HIDE_WHEN_LIGHT, false, true},
               {RTrackNode::HIDE_WHEN_LIGHT | RTrackNode::INVISIBLE, false, false}};
  for (const auto& c : cases) {
    SmallTrack small;
    small.WriteModel("box.dof");
    small.Write("geometry.ini",
                "objects\n{\n  box\n  {\n    file=box.dof\n    flags=" + std::to_string(c.flags) + "\n  }\n}\n");
    for (bool night : {false, true}) {
      small.Write("special.ini", night ? "gfx\n{\n  night=1\n}\n" : "");
      const auto track = small.Load();
      ASSERT_EQ(1, track->nodes.Count());
      EXPECT_EQ(night ? c.night : c.day, (*track->nodes.At(0))->sceneNode->IsVisible()) << c.flags << " " << night;
    }
  }
}

TEST(GeometrySave, NamesEntriesAndLevels)
{
  SmallTrack small;
  const auto track = small.Load();
  for (const char* name :
       {"tree", "tree_lod1", "tree_lod2", "wall", "wall", "wall0", "wall", "x_lod", "far_lod9", "far"})
    ASSERT_TRUE(track->AddNode(Node(name)));
  ReportCapture reports;
  ASSERT_TRUE(track->Save());
  const std::string entry = "\n  {\n    file=a.dof\n    flags=6\n  }\n";
  EXPECT_EQ(
      "objects\n{\n  tree\n  {\n    file=a.dof\n    flags=6\n    lod0_z=250\n    lod1_z=500\n    lod2_z=750\n  }\n"
      "  wall" +
          entry + "  wall0" + entry + "  wall00" + entry + "  wall1" + entry +
          "  far\n  {\n    lod9_z=2500\n  }\n  far0" + entry + "}\n",
      small.Text("geometry.ini"));
  EXPECT_TRUE(reports.Contains("Failed to save lod x_lod"));
}

TEST(GeometrySave, KeepsWhatAMovableBrings)
{
  SmallTrack small;
  small.WriteModel("box.dof");
  small.Write("geometry.ini", "objects\n{\n  lod0_z=99\n  cone\n  {\n    file=box.dof\n    movable=1\n    mass=3.5\n"
                              "    lightmap\n    {\n      resolution=128\n    }\n"
                              "    joint\n    {\n      parentid=4\n    }\n  }\n  box\n  {\n    file=box.dof\n"
                              "    mass=7\n    lod0_z=0\n  }\n}\n");
  small.Write("geometry_backupold.ini", "left by a crash");
  const auto track = small.Load();
  ASSERT_TRUE(track->Save());
  EXPECT_EQ("objects\n{\n  cone\n  {\n    file=box.dof\n    flags=1024\n    lod0_z=99\n    mass=3.5\n    joint\n    {\n"
            "      parentid=4\n    }\n  }\n  box\n  {\n    file=box.dof\n    flags=6\n  }\n}\n",
            small.Text("geometry.ini"));
  EXPECT_FALSE(std::filesystem::exists(small.Path("geometry_backupold.ini")));
}

TEST(TrackNodes, AreNamedAndRemovedInOrder)
{
  RTrackVRML track;
  for (const char* name : {"a", "b", "c"})
    ASSERT_TRUE(track.AddNode(Node(name)));
  EXPECT_FALSE(track.RemoveNode(3));
  EXPECT_FALSE(track.RemoveNode(-1));
  EXPECT_TRUE(track.RemoveNode(1));
  EXPECT_EQ("a:6 c:6", NodeList(track));
  EXPECT_STREQ("Hide when dark", RTrackNode::FlagName(2048));
  EXPECT_STREQ("F_???", RTrackNode::FlagName(64));
  ReportCapture reports;
  while (track.nodes.Count() < RTrackVRML::MAX_NODES)
    ASSERT_TRUE(track.AddNode(Node("n")));
  EXPECT_FALSE(track.AddNode(Node("n")));
  EXPECT_TRUE(reports.Contains("RTrackVRML:AddNodes(); out of nodes"));
  EXPECT_FALSE(track.CollisionOBB());
  EXPECT_TRUE(reports.Contains("RTrackVRML:CollisionOBB() is OBSOLETE; use AABBTree"));
}

TEST(TrackPaint, DrawsLinesAsFencesInTheirColours)
{
  RTrackVRML track;
  ASSERT_TRUE(track.timeLines.Add(std::make_unique<RTimeLine>(DVector3(1, 0, 0), DVector3(2, 0, 0))));
  ASSERT_TRUE(track.triggerLines.Add(std::make_unique<RTriggerLine>()));
  track.gridCount = track.pitCount = 1;
  RecordingOverlay overlay;
  track.PaintLines(overlay);
  const struct
  {
    QColor color;
    float width;
  } expected[] = {{{255, 255, 0}, 1},   {{255, 0, 0}, 1}, {{0, 255, 0}, 5}, {{255, 255, 0}, 2.5f},
                  {{128, 128, 255}, 2}, {{255, 0, 0}, 4}, {{0, 255, 0}, 1}, {{255, 0, 255}, 1}};
  ASSERT_EQ(std::size(expected), overlay.items.size());
  for (size_t i = 0; i < std::size(expected); ++i) {
    EXPECT_EQ(expected[i].color.GetRGBA(), overlay.items[i].style.color.GetRGBA()) << i;
    EXPECT_EQ(expected[i].width, overlay.items[i].style.width) << i;
    EXPECT_EQ("lines", overlay.items[i].kind);
  }
  EXPECT_EQ((std::vector<DVector3>{{1, 0, 0}, {1, 1, 0}, {2, 0, 0}, {2, 1, 0}, {1, 1, 0}, {2, 1, 0}}),
            overlay.items[0].points);
}

TEST(TrackPaint, DrawsCamerasSoundsAndWayPoints)
{
  RTrackVRML track;
  auto cam = std::make_unique<RTrackCam>();
  cam->flags = RTrackCam::SELECTED | RTrackCam::DOLLY;
  cam->radius = 7;
  cam->pos = {1, 2, 3};
  track.AddTrackCam(std::move(cam));
  track.AddTrackAudio(std::make_unique<RTrackAudio>());
  track.AddWayPoint(std::make_unique<RWayPoint>());
  RecordingOverlay overlay;
  track.PaintCameras(overlay);
  track.PaintAudio(overlay);
  track.PaintWayPoints(overlay);
  const struct
  {
    const char* kind;
    QColor color;
  } expected[] = {{"lines", {255, 180, 180}}, {"loop", {255, 180, 180}}, {"lines", {180, 255, 180}},
                  {"loop", {255, 0, 0}},      {"lines", {255, 0, 0}},    {"lines", {255, 0, 0}}};
  ASSERT_EQ(std::size(expected), overlay.items.size());
  for (size_t i = 0; i < std::size(expected); ++i) {
    EXPECT_EQ(expected[i].kind, overlay.items[i].kind) << i;
    EXPECT_EQ(expected[i].color.GetRGBA(), overlay.items[i].style.color.GetRGBA()) << i;
  }
  const auto& circle = overlay.items[1].points;
  ASSERT_EQ(31u, circle.size());
  for (size_t i = 0; i < circle.size(); ++i) {
    EXPECT_NEAR(7, glm::distance(circle[i], {1, 2, 3}), 0.0001);
    EXPECT_EQ(2, circle[i].y);
  }
  EXPECT_NEAR(0, glm::distance(circle.front(), circle.back()), 0.0001);
}
