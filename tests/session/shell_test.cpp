// The shell's own keys, buttons and states.

#include "session/editsession.h"

#include "foundation/qinfo.h"
#include "runtime/rmanager.h"
#include "scene/worldrenderer.h"
#include "scene/worldscene.h"
#include "support/reportcapture.h"
#include "track/rtrackvrml.h"
#include "ui/qradio.h"

#include <fstream>
#include <functional>
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

TEST_F(ShellTest, EachCommandButtonAsksItsOwnAndSoDoesItsKey)
{
  constexpr int NO_KEY = 0;
  const struct
  {
    const char* label;
    int key;
    const char* title; // of the first dialog
    bool needsTrack;
  } rows[] = {
      {"Select track (Shift-T)", QMOD_SHIFT | 'T', "Select track: Enter the track name", false},
      {"Reload track (Shift-L)", QMOD_SHIFT | 'L', "Reload track: Are you sure you want to reload the track?", false},
      {"Save track (Shift-S)", QMOD_SHIFT | 'S', "Save track: Track saved succesfully.", true},
      {"Convert SCGT wrl's", NO_KEY, "Convert all SCGT WRL to DOF", true},
      {"(I)mport DOF models", 'I', "Import DOF files: Enter filter expression:", true},
      {"Add lighting", NO_KEY, "Add lighting to all DOFs", true},
      {"ASE->DOF batch", NO_KEY, "Convert all ASE files in <trackdir>/ase", true},
      {"Splitter (Ctrl-Shift-S)", QMOD_CTRL | QMOD_SHIFT | 'S', "Split track: Enter cellsize in meters", true},
      {"Cut ASE apart", NO_KEY, "Cut ASE apart", false},
      {"Cut Multisub ASE", NO_KEY, "Cut ASE-MultiSub apart", false},
      {"Make track_template.shd", QMOD_CTRL | QMOD_SHIFT | 'T', "Info: Shader templates written in data/tracks/oval/",
       true},
      {"Auto - Ase To Dof", NO_KEY, "Auto ASE to DOF: This will create DOF files in the current track. Are you sure?",
       false},
      {"Optimize DOFs", NO_KEY, "Optimize all DOFs (trackdir/*.dof)", true},
  };
  StartWithTrack();
  const QWindowManager& manager = *session.App().GetWindowManager();
  int i = 0;
  for (const auto& row : rows) {
    SCOPED_TRACE(row.label);
    const QWindow* button = manager.FindVisible("QButton", row.label);
    ASSERT_NE(nullptr, button);
    EXPECT_EQ((QRect{13 + i % 7 * 136, 682 + i / 7 * 40, 126, 35}), button->rect);
    ++i;
    session.Answer("\x1b");
    session.ClickOn("QButton", row.label);
    EXPECT_TRUE(session.LastDialog().starts_with(row.title)) << session.LastDialog();
    const size_t asked = session.Dialogs().size();
    if (!row.key)
      continue;
    session.Answer("\x1b");
    session.Key(row.key);
    ASSERT_EQ(asked + 1, session.Dialogs().size());
    EXPECT_TRUE(session.LastDialog().starts_with(row.title)) << session.LastDialog();
  }
  EXPECT_EQ((QRect{13 + 6 * 136, 722, 126, 35}), manager.FindVisible("QCheck", "Object mode (camera)")->rect);

  std::filesystem::remove(session.TrackFile("oval", "track.ini"));
  session.Answer("");
  session.Answer("");
  session.Key(QMOD_SHIFT | 'L');
  ASSERT_EQ(nullptr, session.State().curTrack);
  for (const auto& row : rows) {
    SCOPED_TRACE(row.label);
    const size_t before = session.Dialogs().size();
    if (!row.needsTrack)
      session.Answer("\x1b");
    session.ClickOn("QButton", row.label);
    EXPECT_EQ(before + (row.needsTrack ? 0 : 1), session.Dialogs().size());
  }
}

TEST_F(ShellTest, TheHudTellsOfCameraAndPickLine)
{
  StartWithTrack();
  EditState& state = session.State();
  state.camera.transform = {{1.005f, -2, 3.5f}, 4, 5, 6};
  state.camera.fov = 47.25f;
  state.camera.mode = 0;
  state.pickStart = {1, 2, 3};
  state.pickEnd = {4, 2, 7};
  session.Frames(1);
  const auto& hud = session.Shell().HudLines();
  ASSERT_EQ(11u, hud.size());
  EXPECT_TRUE(hud[0].starts_with("FPS: "));
  const std::vector<std::string> lines = {
      "Camera pos: 1.00 -2.00 3.50",
      "Camera angle: pitch 4.00 yaw 5.00 roll 6.00",
      "Camera FOV: 47.2",
      "Camera mode: Drag",
      "Pick line: (1.00, 2.00, 3.00) - delta (3.00, 0.00, 4.00) - Length: 5.00",
      "",
      "Grid positions: 2",
  };
  EXPECT_EQ(lines, std::vector<std::string>(hud.begin() + 1, hud.begin() + 8));
}

TEST_F(ShellTest, EachModeHasItsButtonItsKeyAndItsPlace)
{
  const struct
  {
    const char* label;
    const char* operation; // the first; empty: it has none yet
    const char* seventh;
  } rows[] = {
      {"Positions (F1)", "Goto line start (Home)", "Declare pit in speedlimit"},
      {"Track cameras (F2)", "Goto line start (Home)", "Place close cube (Shift-C)"},
      {"Track keyframe cameras (F3)", "", ""},
      {"Model properties (F4)", "Goto line start", "Toggle flag: Receive Shadow"},
      {"Road splines (F5)", "", ""},
      {"Ambient sounds (F6)", "Create source at camera", ""},
      {"Animated objects (F7)", "", ""},
      {"Traffic (F8)", "Velocity (^V)", "Remove selected waypoint (^R)"},
      {"Lidar (F9)", "Paint vertices", ""},
      {"Marshal posts (F10)", "Edit spline range", ""},
  };
  StartWithTrack();
  session.State().paintVertices = true;
  const QWindowManager& manager = *session.App().GetWindowManager();
  for (int i = 0; i < 10; ++i) {
    const auto& row = rows[i];
    SCOPED_TRACE(row.label);
    const auto* radio = dynamic_cast<const QRadio*>(manager.FindVisible("QRadio", row.label));
    ASSERT_NE(nullptr, radio);
    EXPECT_EQ(905, radio->rect.x);
    EXPECT_EQ(34 + 20 * i, radio->rect.y);
    for (const bool byKey : {false, true}) {
      session.Key(i == 1 ? QKEY_F1 : QKEY_F1 + 1);
      if (byKey)
        session.Key(QKEY_F1 + i);
      else
        session.ClickOn("QRadio", row.label);
      EXPECT_EQ(i, session.State().curMode);
      EXPECT_TRUE(radio->GetState());
      EXPECT_FALSE(session.State().paintVertices);
      if (*row.operation) {
        EXPECT_EQ((QRect{905, 259, 165, 30}), manager.FindVisible("QButton", row.operation)->rect);
      }
      if (*row.seventh) {
        EXPECT_EQ((QRect{1075, 259, 165, 30}), manager.FindVisible("QButton", row.seventh)->rect);
      }
      EXPECT_FALSE(session.Sees("QButton", "--op--"));
    }
  }
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

TEST_F(ShellTest, AutoLoadOfATrackThatIsGoneAsksForAnother)
{
  session.WriteSettings("settings\n{\n  auto_load=1\n}\ntrack\n{\n  lasttrack=gone\n}\n");
  session.Answer(""); // not found
  session.Answer("\x1b");
  session.Start();
  EXPECT_EQ((std::vector<std::string>{"Error: Track not found", "Select track: Enter the track name"}),
            session.Dialogs());
  EXPECT_NE(nullptr, session.State().curTrack);
  EXPECT_EQ("gone", session.State().curTrack->trackName) << "what the prompt offered";
}

TEST_F(ShellTest, SurroundViewsAreForGamesOnly)
{
  std::ofstream("torvik.ini") << "renderer\n{\n  surround\n  {\n    method=2\n  }\n}\n";
  ReportCapture reports;
  session.Start();
  EXPECT_EQ(1, reports.Count("surround.method must be 0 for Pavex - enforcing for this run"));
  EXPECT_EQ(0, RMGR()->GetWorld()->GetRenderer()->GetSurroundMethod());
}

TEST_F(ShellTest, RendererKeysToggleTheirPicture)
{
  StartWithTrack();
  const auto flags = [] { return RMGR()->GetWorld()->GetRenderer()->GetFlags(); };
  const uint32_t before = flags();
  session.Key('N');
  EXPECT_EQ(before ^ 4, flags());
  session.Key('Z');
  EXPECT_EQ(before ^ 12, flags());
  session.Key('N');
  session.Key('Z');
  EXPECT_EQ(before, flags());
}

// What the system asks at its end, unlike a closed window, isn't a Cancel of what happens to be open.
TEST_F(ShellTest, TheSystemEndsTheProgramThroughAllThatIsOpen)
{
  const auto end = [](EditSession& s) { s.Display().Then([&s] { s.Display().wantsEnd = true; }); };
  const struct
  {
    const char* what;
    std::function<void(EditSession& s)> act;
  } cases[] = {
      {"nothing open", [&](EditSession& s) { s.Display().wantsEnd = true; }},
      {"a prompt, and then its message",
       [&](EditSession& s) {
         s.Answer("nowhere");
         end(s);
         s.Key(QMOD_SHIFT | 'T');
       }},
      {"the list beside the running editor",
       [&](EditSession& s) {
         s.Key(QKEY_F4);
         s.Key('H');
         s.Display().wantsEnd = true;
       }},
      {"a load at work",
       [&](EditSession& s) {
         s.Answer("");
         end(s);
         s.Key(QMOD_SHIFT | 'L');
       }},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    EditSession s;
    s.WriteTrack("oval");
    s.Start();
    ASSERT_TRUE(s.LoadTrack("oval"));
    s.State().curMode = 0;
    s.State().camera.fov = 33;
    c.act(s);
    for (int i = 0; i < 10 && !s.HasEnded(); ++i)
      s.App().Run1();
    EXPECT_TRUE(s.HasEnded());
    EXPECT_FALSE(s.Display().ranDry);
    EXPECT_NE(std::string::npos, FileText("bin/pavex.ini").find(" 33.000000")) << "the settings are kept";
  }
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
