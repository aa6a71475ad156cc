#include "editor/lidarmode.h"

#include "editor/editstate.h"
#include "editor/fakehost.h"
#include "support/recordingoverlay.h"
#include "track/rlidar.h"
#include "track/rtrackvrml.h"

#include <gtest/gtest.h>

namespace {

TEST(LidarMode, TogglesAndTells)
{
  RTrackVRML track;
  EditState state;
  state.curTrack = &track;
  FakeHost host;
  LidarMode mode(state, host);
  mode.ModeSetup();
  EXPECT_EQ((std::vector<std::string>{"Paint vertices", "Paint triangles (partial)", "Paint AABB (partial)"}),
            host.buttons);
  mode.ModeOp(0); // without a cloud nothing happens
  mode.ModeHud();
  track.lidar = std::make_unique<RLidar>();
  RLidar& lidar = *track.lidar;
  const uint32_t flags[] = {2, 3, 7, 7, 5};
  const int ops[] = {0, 1, 2, 3, 0};
  RecordingOverlay overlay;
  for (size_t i = 0; i < std::size(ops); ++i) {
    mode.ModeOp(ops[i]);
    EXPECT_EQ(flags[i], lidar.flags);
    mode.ModePaint(overlay);
  }
  EXPECT_TRUE(overlay.items.empty());
  EXPECT_FALSE(mode.ModeKey('A'));
  mode.ModeHud();
  EXPECT_EQ((std::vector<std::string>{"No Lidar data found.", "No Lidar data found."}), host.hud);

  host.hud.clear();
  lidar.flags = RLidar::PAINT_VERTICES;
  lidar.points.assign(1234, DVector3(0.0f));
  mode.ModeHud();
  EXPECT_EQ((std::vector<std::string>{"Flags: PaintVertices", "Points: 1,234"}), host.hud);
  lidar.triangles.assign(3000, 0);
  lidar.BuildTree();
  host.hud.clear();
  mode.ModeHud();
  EXPECT_EQ((std::vector<std::string>{"Flags: PaintVertices", "Points: 1,234", "Triangles: 1,000", "Tree max depth: 0",
                                      "Tree max triangles/node: 20"}),
            host.hud);
  mode.ModePaint(overlay);
  EXPECT_FALSE(overlay.items.empty());
}

} // namespace
