// The modes Traffic, Lidar and Marshal posts in the whole editor without a window.

#include "session/editsession.h"

#include "foundation/qfilename.h"
#include "track/rlidar.h"
#include "track/rtrackvrml.h"

#include <fstream>
#include <gtest/gtest.h>

namespace {

class PostsSession : public testing::Test
{
protected:
  void StartIn(int modeKey)
  {
    session.Start();
    ASSERT_TRUE(session.LoadTrack("oval"));
    session.Key(modeKey);
  }
  void Save()
  {
    session.Answer("");
    session.Key(QMOD_SHIFT | 'S');
    ASSERT_EQ("Save track: Track saved succesfully.", session.LastDialog());
  }
  void Reload()
  {
    session.Answer("");
    session.Key(QMOD_SHIFT | 'L');
    ASSERT_TRUE(session.State().trackReady);
  }
  RTrackVRML& Track() { return *session.State().curTrack; }
  EditSession session;
};

TEST_F(PostsSession, TwentyWayPointsAreLaidLinkedAndThreeRemoved)
{
  session.WriteTrack("oval");
  StartIn(QKEY_F1 + 7);
  RTrafficGrid* grid = &Track().trafficGrid;
  for (int i = 0; i < 20; ++i) {
    session.LookDownOn({0, 20, static_cast<float>(i * 5)});
    session.ShiftDrag(640, 400, 640, 400);
    session.Key(QMOD_CTRL | 'A');
  }
  session.Answer("0"); // the ring is closed
  session.ClickOn("QButton", "Set forward waypoint");
  EXPECT_TRUE(session.HudHas("Waypoints: 20"));
  EXPECT_TRUE(session.HudHas("Selected waypoint: 0"));
  session.Answer("17.5");
  session.Key(QMOD_CTRL | 'V');
  EXPECT_TRUE(session.HudHas("Waypoints")) << "Ctrl-V is the mode's own here";
  session.Answer("10");
  session.ClickOn("QButton", "Set leftward waypoint");
  for (int i = 0; i < 3; ++i)
    session.ClickOn("QButton", "Remove selected waypoint (^R)"); // what were 10, 11, 12
  ASSERT_EQ(17, grid->wayPoints.Count());
  EXPECT_EQ((std::array<int, 3>{1, -1, -1}), grid->wayPoints.At(0)->links);
  EXPECT_EQ((std::array<int, 3>{-1, -1, -1}), grid->wayPoints.At(9)->links);
  EXPECT_EQ((std::array<int, 3>{0, -1, -1}), grid->wayPoints.At(16)->links);

  const auto before = std::vector(grid->wayPoints.begin(), grid->wayPoints.end());
  Save();
  Reload();
  grid = &Track().trafficGrid;
  ASSERT_EQ(17, grid->wayPoints.Count());
  for (int i = 0; i < 17; ++i) {
    SCOPED_TRACE(i);
    const RTrafficWayPoint& a = before[static_cast<size_t>(i)];
    const RTrafficWayPoint& b = *grid->wayPoints.At(i);
    EXPECT_LT(glm::distance(a.pos, b.pos), 1e-5f);
    EXPECT_EQ(a.links, b.links);
    EXPECT_EQ(std::floor(a.velocity), b.velocity) << "the file holds whole numbers";
  }
  EXPECT_NEAR(5, grid->wayPoints.At(1)->pos.z - grid->wayPoints.At(0)->pos.z, 0.1);
}

TEST_F(PostsSession, PostsAreWalkedEditedAndTemplated)
{
  session.WriteTrack("oval");
  const std::string special = session.TrackFile("oval", "special.ini");
  std::ofstream(special, std::ios::app) << "marshal_posts\n{\n  count=2\n  post0\n  {\n    user_id=4\n  }\n"
                                           "  post1\n  {\n    actors=1\n    actor0\n    {\n      type=1\n"
                                           "      state_red=road\n    }\n    note=kept\n  }\n}\n";
  StartIn(QKEY_F1 + 9);
  EXPECT_TRUE(session.HudHas("No marshal post selected (use PageUp/PageDown)"));
  session.Answer(""); // no post selected
  session.ClickOn("QButton", "Edit spline range");
  session.Key(QKEY_PGDN);
  session.Key(QKEY_PGDN);
  EXPECT_TRUE(session.HudHas("Marshal post 1 selected"));
  EXPECT_TRUE(session.HudHas("Object: road.dof (1 out of 1)"));
  session.Answer("1");
  session.Answer("3");
  session.ClickOn("QButton", "Edit spline range");
  session.Answer("31");
  session.ClickOn("QButton", "Edit user ID for selected post");
  EXPECT_TRUE(session.HudHas("Spline range: 1 - 3"));

  std::vector<std::string> opened;
  QFileHooks().openDocument = [&](const std::string& what, const std::string&) {
    opened.push_back(FileText(what));
    return true;
  };
  session.ClickOn("QButton", "Analyze user ID");
  session.ClickOn("QButton", "Make template for special.ini");
  QFileHooks().openDocument = nullptr;
  ASSERT_EQ(2u, opened.size());
  EXPECT_NE(std::string::npos, opened[0].find("- post index 1 has user id 31\n"));
  EXPECT_NE(std::string::npos, opened[1].find("  count=0\n}\n")) << "no file follows the convention";

  Save();
  Reload();
  EXPECT_TRUE(session.HudHas("No marshal post selected"));
  ASSERT_EQ(2, Track().marshalPosts.Count());
  const RMarshalPost& post = Track().marshalPosts.posts[1];
  EXPECT_EQ(31, post.userID);
  EXPECT_EQ(1, post.splineFrom);
  EXPECT_EQ(3, post.splineTo);
  EXPECT_EQ(&post, Track().splines.lines[2].post);
  EXPECT_EQ("road", post.actors.at(0).stateNames[6]);
  EXPECT_NE(std::string::npos, FileText(special).find("note=kept"));
}

TEST_F(PostsSession, ACloudIsShownAndReportedAndChangesNothing)
{
  session.WriteTrack("oval");
  const std::string path = session.TrackFile("oval", "track.rld");
  {
    RLidar cloud;
    cloud.points = {{0, 0, 1}, {4, 0, 1}, {0, 4, 1}};
    cloud.triangles = {0, 1, 2};
    cloud.blocks = {{0, 3}};
    ASSERT_TRUE(cloud.SaveRLD(path));
  }
  const std::string before = FileText(path);
  StartIn(QKEY_F1 + 8);
  EXPECT_TRUE(session.HudHas("Flags: <none>"));
  EXPECT_TRUE(session.HudHas("Points: 3"));
  EXPECT_TRUE(session.HudHas("Triangles: 1"));
  session.ClickOn("QButton", "Paint vertices");
  session.ClickOn("QButton", "Paint AABB (partial)");
  session.ClickOn("QButton", "Paint triangles (partial)");
  EXPECT_TRUE(session.HudHas("Flags: PaintVertices, PaintTriangles, PaintAABB"));
  session.ClickOn("QButton", "Paint triangles (partial)");
  session.Key(QKEY_F1);
  session.Key(QKEY_F1 + 8);
  EXPECT_TRUE(session.HudHas("Flags: PaintVertices, PaintAABB")) << "another mode in between doesn't matter";
  Save();
  EXPECT_EQ(before, FileText(path));
  std::filesystem::remove(path);
  Reload();
  EXPECT_TRUE(session.HudHas("No Lidar data found."));
  EXPECT_FALSE(session.HudHas("Flags:"));
  session.ClickOn("QButton", "Paint vertices");
  EXPECT_EQ(RLidar::PAINT_VERTICES, Track().lidar->flags) << "which paints nothing";
}

} // namespace
