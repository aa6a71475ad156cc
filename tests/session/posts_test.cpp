// The modes Traffic, Lidar and Marshal posts in the whole editor without a window.

#include "session/editsession.h"

#include "foundation/qinfo.h"
#include "track/rtrackvrml.h"

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

} // namespace
