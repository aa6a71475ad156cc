// The whole editor without a window: the events that a person would cause, and what a person would read afterwards.

#include "session/editsession.h"

#include "foundation/qinfo.h"

#include <gtest/gtest.h>

namespace {

TEST(MainRoad, OpensDeclaresAndSaves)
{
  EditSession session;
  session.WriteTrack("oval");
  session.Start();
  ASSERT_TRUE(session.LoadTrack("oval"));
  EXPECT_EQ("Torvik Pavex v7.8.1 - 64 bits - oval", session.TitleBar());
  EXPECT_TRUE(session.HudHas("Grid positions: 2"));

  session.LookDownOn({3, 20, 2});
  session.ShiftDrag(640, 400, 660, 380);
  const EditState& state = session.State();
  EXPECT_NEAR(0, state.pickStart.y, 0.01f) << "the road lies at height 0";
  EXPECT_LT(glm::distance(state.pickStart, DVector3(3, 0, 2)), 0.2f) << "the middle of the window is below the camera";
  EXPECT_GT(glm::distance(state.pickStart, state.pickEnd), 0.1f);

  session.Answer(""); // a new one
  session.Key(QMOD_CTRL | 'G');
  EXPECT_TRUE(session.HudHas("Grid positions: 3"));
  session.Answer(""); // closes the message
  session.Key(QMOD_SHIFT | 'S');
  EXPECT_EQ("Save track: Track saved succesfully.", session.LastDialog());

  const std::string path = session.TrackFile("oval", "special.ini");
  QInfo special(path);
  EXPECT_EQ(3, special.GetInt("grid.count"));
  EXPECT_NEAR(state.pickStart.x, special.GetFloat("grid.pos2.from.x"), 1e-5);
  EXPECT_NEAR(state.pickEnd.z, special.GetFloat("grid.pos2.to.z"), 1e-5);
  EXPECT_STREQ("kept", special.GetStringDirect("author.note"));
  EXPECT_NE(std::string::npos, FileText(path).find("; an author's comment"));
}

TEST(MainRoad, ASaveThatFailsTellsAndKeepsTheFiles)
{
  EditSession session;
  session.WriteTrack("oval");
  session.Start();
  ASSERT_TRUE(session.LoadTrack("oval"));
  // A directory in the file's place can't be replaced by a file.
  const std::string spline = session.TrackFile("oval", "spline.ini");
  const std::string before = FileText(session.TrackFile("oval", "special.ini"));
  std::filesystem::remove(spline);
  std::filesystem::create_directory(spline);
  session.Answer("");
  session.Key(QMOD_SHIFT | 'S');
  EXPECT_EQ("Error: Can't save track!", session.LastDialog());
  EXPECT_EQ(before, FileText(session.TrackFile("oval", "special.ini")));
}

TEST(MainRoad, AFileThatSomebodyElseChangedIsOverwrittenOnlyWhenTheUserSaysSo)
{
  EditSession session;
  session.WriteTrack("oval");
  session.Start();
  session.WriteSettings("settings\n{\n  note=somebody else's\n}\n");
  session.Answer("\x1b");
  ASSERT_TRUE(session.LoadTrack("oval")) << "the track opens all the same";
  ASSERT_EQ(1u, session.Dialogs().size());
  EXPECT_NE(std::string::npos, session.LastDialog().find("was modified - it will be overwritten"));
  EXPECT_STREQ("somebody else's", QInfo("bin/pavex.ini").GetStringDirect("settings.note"));
}

TEST(MainRoad, SkyIsNoTarget)
{
  EditSession session;
  session.WriteTrack("oval");
  session.Start();
  ASSERT_TRUE(session.LoadTrack("oval"));
  session.State().pickStart = {1, 2, 3};
  session.LookDownOn({0, 20, 0});
  session.State().camera.transform.pitch = -60; // away from the road
  session.Frames(1);
  session.ShiftDrag(640, 400, 640, 400);
  EXPECT_EQ(DVector3(1, 2, 3), session.State().pickStart);
  EXPECT_EQ(DVector3(1, 2, 3), session.State().pickEnd);
}

TEST(MainRoad, SettingsComeBack)
{
  EditSession session;
  session.WriteTrack("oval");
  session.Start();
  ASSERT_TRUE(session.LoadTrack("oval"));
  session.Key(QKEY_F1 + 4);
  session.State().camera.transform = {{1, 2, 3}, 4, 5, 6};
  session.State().camera.fov = 40;
  session.Key(QMOD_SHIFT | 'Q');
  EXPECT_TRUE(session.HasEnded());
  QInfo settings("bin/pavex.ini");
  EXPECT_EQ(4, settings.GetInt("settings.mode"));
  EXPECT_STREQ("1.000000 2.000000 3.000000 4.000000 5.000000 6.000000 40.000000",
               settings.GetStringDirect("settings.transform"));
  EXPECT_STREQ("oval", settings.GetStringDirect("track.lasttrack"));
}

} // namespace
