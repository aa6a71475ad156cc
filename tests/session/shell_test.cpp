// The shell's own keys, buttons and states.

#include "session/editsession.h"

#include "foundation/qinfo.h"
#include "support/reportcapture.h"

#include <gtest/gtest.h>

namespace {

class ShellTest : public testing::Test
{
protected:
  void StartWithTrack()
  {
    session.WriteTrack("oval");
    session.Start();
    ASSERT_TRUE(session.LoadTrack("oval"));
  }
  EditSession session;
};

TEST_F(ShellTest, AFirstRunShowsAnEmptyTrackInModeZero)
{
  session.WriteSettings("");
  session.Start();
  session.Frames(2);
  EXPECT_EQ(640, session.State().frameWidth);
  EXPECT_EQ(480, session.State().frameHeight);
  EXPECT_EQ(0, session.State().curMode);
  EXPECT_NE(nullptr, session.State().curTrack);
  EXPECT_FALSE(session.State().trackReady);
  EXPECT_EQ(0, session.State().camera.fov) << "nothing was stored yet";
  EXPECT_EQ("Torvik Pavex v7.8.1 - 64 bits", session.TitleBar());
  EXPECT_TRUE(session.Sees("QButton", "Declare grid pos (Ctrl-G)"));
}

TEST_F(ShellTest, ModesAreReachedByKeyButtonAndCycle)
{
  StartWithTrack();
  session.Key(QKEY_F1 + 8);
  EXPECT_EQ(8, session.State().curMode);
  EXPECT_TRUE(session.HudHas("Lidar"));
  EXPECT_FALSE(session.Sees("QButton", "Declare grid pos (Ctrl-G)"));
  session.Key('M');
  EXPECT_EQ(8, session.State().curMode) << "Lidar and Marshal posts are out of the cycle";
  session.Key(QKEY_F1 + 7);
  session.Key('M');
  EXPECT_EQ(0, session.State().curMode);
  EXPECT_TRUE(session.Sees("QButton", "Declare grid pos (Ctrl-G)"));
  session.ClickOn("QRadio", "Road splines (F5)");
  EXPECT_EQ(4, session.State().curMode);
}

TEST_F(ShellTest, AModeOutsideTheTableRunsNone)
{
  session.WriteSettings("settings\n{\n  mode=12\n}\n");
  session.WriteTrack("oval");
  session.Start();
  ASSERT_TRUE(session.LoadTrack("oval"));
  EXPECT_EQ(12, session.State().curMode);
  session.Key(QMOD_CTRL | 'G');
  EXPECT_TRUE(session.HudHas("Pick line"));
  EXPECT_TRUE(session.Dialogs().empty());
}

TEST_F(ShellTest, TheWheelAndTheKeypadZoomInEveryState)
{
  session.Start();
  session.State().camera.fov = 50;
  session.Display().Wheel(120 * 60);
  session.App().RunPoll();
  EXPECT_FLOAT_EQ(-10, session.State().camera.fov) << "nothing stops at 0";
  session.Key(QKEY_KP_ADD);
  EXPECT_FLOAT_EQ(-9, session.State().camera.fov);
  session.Key(QKEY_KP_0 + 9);
  EXPECT_FLOAT_EQ(1, session.State().camera.transform.roll);
}

TEST_F(ShellTest, TheHudHidesByKeyAndWhileCtrlAndShiftAreHeld)
{
  StartWithTrack();
  session.Key(QMOD_CTRL | 'V');
  EXPECT_FALSE(session.HudHas("Camera pos"));
  session.Key(QMOD_CTRL | 'V');
  EXPECT_TRUE(session.HudHas("Camera pos"));
}

TEST_F(ShellTest, AKeyOfModeAndShellRunsBoth)
{
  StartWithTrack();
  session.State().pickStart = {3, 0, 3};
  session.Answer("0");
  session.Key('G');
  EXPECT_EQ(1u, session.Dialogs().size());
  EXPECT_EQ(DVector3(3, 4, 3), session.State().camera.transform.pos) << "the pick line's start comes last";
}

TEST_F(ShellTest, SelectingAsksUntilATrackIsFound)
{
  StartWithTrack();
  session.State().camera.transform.yaw = 30;
  session.Answer("nowhere");
  session.Answer(""); // Track not found
  session.Answer("../tracks/oval");
  session.Answer("");
  session.Answer("oval");
  session.Key(QMOD_SHIFT | 'T');
  ASSERT_EQ(5u, session.Dialogs().size());
  EXPECT_EQ("Select track: Enter the track name", session.Dialogs()[0]);
  EXPECT_EQ("Error: Track not found", session.Dialogs()[1]);
  EXPECT_EQ("Error: Track not found", session.Dialogs()[3]);
  EXPECT_TRUE(session.State().trackReady);
  EXPECT_EQ(0, session.State().camera.transform.yaw);
}

TEST_F(ShellTest, AFailedLoadLeavesNoTrackAndAnotherCanBeSelected)
{
  StartWithTrack();
  std::filesystem::remove(session.TrackFile("oval", "track.ini"));
  session.Answer(""); // yes, reload
  session.Answer(""); // can't load
  session.Key(QMOD_SHIFT | 'L');
  EXPECT_EQ("Error: Can't load track!", session.LastDialog());
  EXPECT_EQ(nullptr, session.State().curTrack);
  const size_t before = session.Dialogs().size();
  session.ClickOn("QButton", "Save track (Shift-S)");
  session.ClickOn("QButton", "Declare grid pos (Ctrl-G)");
  session.Key(QMOD_SHIFT | 'T');
  EXPECT_EQ(before, session.Dialogs().size()) << "keys are dead, and there is nothing to save";
  session.WriteTrack("second");
  session.Answer("second");
  session.ClickOn("QButton", "Select track (Shift-T)");
  EXPECT_TRUE(session.State().trackReady);
}

TEST_F(ShellTest, AutoLoadOpensTheLastTrackWithTheStoredView)
{
  session.WriteSettings("settings\n{\n  auto_load=1\n  transform=1 2 3 4 5 6 45\n}\ntrack\n{\n  lasttrack=oval\n}\n");
  session.WriteTrack("oval");
  session.Start();
  EXPECT_TRUE(session.State().trackReady);
  EXPECT_EQ(DVector3(1, 2, 3), session.State().camera.transform.pos);
  EXPECT_FLOAT_EQ(45, session.State().camera.fov);
}

TEST_F(ShellTest, ObjectModeFollowsItsKeyAndItsCheck)
{
  StartWithTrack();
  session.State().camera.transform = {{0, 10, 0}, 0, 0, 0};
  session.Key('O');
  EXPECT_TRUE(session.State().objectMode);
  EXPECT_FLOAT_EQ(40, session.State().camera.transform.pos.z);
  session.Key(QKEY_KP_ADD);
  EXPECT_FLOAT_EQ(38, session.State().camera.transform.pos.z);
  session.ClickOn("QCheck", "Object mode (camera)");
  EXPECT_FALSE(session.State().objectMode);
}

TEST_F(ShellTest, ClosingTheWindowLeavesWithoutAskingOrSaving)
{
  StartWithTrack();
  const std::string before = FileText(session.TrackFile("oval", "special.ini"));
  session.Answer("");
  session.Key(QMOD_CTRL | 'G');
  session.Display().CloseWindow();
  session.App().RunPoll();
  EXPECT_TRUE(session.HasEnded());
  EXPECT_EQ(before, FileText(session.TrackFile("oval", "special.ini")));
}

} // namespace
