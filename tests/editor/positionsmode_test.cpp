#include "editor/positionsmode.h"

#include "editor/editstate.h"
#include "editor/editview.h"
#include "editor/fakehost.h"
#include "support/recordingoverlay.h"
#include "track/rtrackvrml.h"
#include "ui/qkeys.h"

#include <gtest/gtest.h>

namespace {

class PositionsModeTest : public testing::Test
{
protected:
  PositionsModeTest()
  {
    state.curTrack = &track;
    state.pickStart = {1, 2, 3};
    state.pickEnd = {4, 5, 6};
  }
  RTrackVRML track;
  EditState state;
  FakeHost host;
  EditView view{state};
  PositionsMode mode{state, host, view};
};

TEST_F(PositionsModeTest, EmptyAnswerAppendsAndANumberOverwrites)
{
  track.gridCount = 2;
  track.gridPos[1].from = {9, 9, 9};
  host.answers = {"", "1"};
  mode.ModeKey(QMOD_CTRL | 'G');
  EXPECT_EQ(3, track.gridCount);
  EXPECT_EQ(state.pickStart, track.gridPos[2].from);
  EXPECT_EQ(state.pickEnd, track.gridPos[2].to);
  EXPECT_EQ("Enter an index: Select grid position index (0..1) (empty=new)", host.prompts[0]);
  state.pickStart = {7, 7, 7};
  mode.ModeOp(2);
  EXPECT_EQ(3, track.gridCount);
  EXPECT_EQ(DVector3(7, 7, 7), track.gridPos[1].from);
}

TEST_F(PositionsModeTest, FirstRecordsAreAskedForWithoutARange)
{
  host.answers = {""};
  mode.ModeKey(QMOD_CTRL | 'P');
  EXPECT_EQ("Enter an index: Select pit position index (none existing yet)", host.prompts[0]);
  EXPECT_EQ(1, track.pitCount);
}

TEST_F(PositionsModeTest, TheFiftiethPositionIsReachedByTheEmptyAnswerAlone)
{
  track.gridCount = 50;
  host.answers = {"49", ""};
  host.choices = {1};
  mode.ModeKey(QMOD_CTRL | 'G');
  EXPECT_EQ("Error: Value out of range.", host.messages.at(0));
  EXPECT_EQ("Enter an index: Select grid position index (0..48) (empty=new)", host.prompts[0]);
  EXPECT_EQ(50, track.gridCount);
  EXPECT_EQ(state.pickStart, track.gridPos[49].from);
}

TEST_F(PositionsModeTest, CancelChangesNothing)
{
  track.gridCount = 1;
  for (const int key : {QMOD_CTRL | 'G', QMOD_CTRL | 'P', QMOD_CTRL | 'T', QMOD_CTRL | 'R', int('G')}) {
    SCOPED_TRACE(key);
    mode.ModeKey(key);
  }
  for (const char* answer : {"5", "-1", "first", "-", " "}) { // no index, and no wish to go on
    SCOPED_TRACE(answer);
    host.messages.clear();
    host.answers = {answer};
    mode.ModeKey(QMOD_CTRL | 'G');
    EXPECT_EQ(1u, host.messages.size());
  }
  EXPECT_EQ(1, track.gridCount);
  EXPECT_EQ(DVector3(0.0f), track.gridPos[0].from);
  EXPECT_EQ(0, track.pitCount + track.timeLines.Count() + track.triggerLines.Count());
  EXPECT_EQ(DVector3(0.0f), state.camera.transform.pos);
}

TEST_F(PositionsModeTest, TimelinesGetTheirPlane)
{
  host.answers = {"", "0"};
  mode.ModeKey(QMOD_CTRL | 'T');
  ASSERT_EQ(1, track.timeLines.Count());
  EXPECT_FLOAT_EQ(27, (*track.timeLines.At(0))->lengthSq);
  state.pickEnd = state.pickStart;
  mode.ModeKey(QMOD_CTRL | 'T');
  EXPECT_EQ(1, track.timeLines.Count());
  EXPECT_FLOAT_EQ(0, (*track.timeLines.At(0))->lengthSq) << "an empty pick line is stored as it is";
}

TEST_F(PositionsModeTest, TriggerlinesNeedACommandAndGetTheCountAsIndex)
{
  host.answers = {"", "first", "", "second", "0", "", "0", "changed"};
  mode.ModeKey(QMOD_CTRL | 'R');
  mode.ModeKey(QMOD_CTRL | 'R');
  ASSERT_EQ(2, track.triggerLines.Count());
  EXPECT_EQ(1, (*track.triggerLines.At(0))->index);
  EXPECT_EQ(2, (*track.triggerLines.At(1))->index);
  mode.ModeKey(QMOD_CTRL | 'R'); // an empty command keeps the old line
  EXPECT_EQ("Error: Empty trigger not allowed [OK]", host.messages.at(0));
  EXPECT_EQ("first", (*track.triggerLines.At(0))->command);
  mode.ModeKey(QMOD_CTRL | 'R');
  EXPECT_EQ("first", host.filled.back());
  EXPECT_EQ("changed", (*track.triggerLines.At(0))->command);
  EXPECT_EQ(2, (*track.triggerLines.At(0))->index) << "a replaced line gets the count, not its place";
}

TEST_F(PositionsModeTest, NinetyNineTriggerlinesAreEnough)
{
  while (track.triggerLines.Count() < 99)
    ASSERT_TRUE(track.triggerLines.Add(std::make_unique<RTriggerLine>()));
  mode.ModeKey(QMOD_CTRL | 'R');
  EXPECT_EQ("Error: Too many triggers available [OK]", host.messages.at(0));
  EXPECT_TRUE(host.prompts.empty());
}

TEST_F(PositionsModeTest, PitLinesTakeThePointsAndKeepTheirPlane)
{
  track.pitInOutLines[3].SetPoints({0, 0, 0}, {2, 0, 0});
  mode.ModeOp(8);
  EXPECT_EQ(state.pickStart, track.pitInOutLines[3].from);
  EXPECT_EQ(state.pickEnd, track.pitInOutLines[3].to);
  EXPECT_FLOAT_EQ(4, track.pitInOutLines[3].lengthSq);
}

TEST_F(PositionsModeTest, GridJumpMovesTheCameraAndKeepsItsAngles)
{
  state.camera.transform.yaw = 30;
  track.gridCount = 1;
  track.gridPos[0].from = {10, 20, 30};
  track.gridPos[1].from = {5, 5, 5}; // behind the last
  host.answers = {"0", ""};
  EXPECT_FALSE(mode.ModeKey('G')) << "the global key runs too";
  EXPECT_EQ(DVector3(10, 21, 30), state.camera.transform.pos);
  mode.ModeOp(1);
  EXPECT_EQ(DVector3(5, 6, 5), state.camera.transform.pos);
  mode.ModeKey(QKEY_HOME);
  EXPECT_EQ(DVector3(1, 6, 3), state.camera.transform.pos);
  EXPECT_EQ(30, state.camera.transform.yaw);
}

TEST_F(PositionsModeTest, PaintsAFenceForEachRecordInOrder)
{
  track.gridCount = 1;
  track.pitCount = 1;
  host.answers = {""};
  mode.ModeKey(QMOD_CTRL | 'T');
  RecordingOverlay overlay;
  mode.ModePaint(overlay);
  std::vector<uint32_t> colors;
  std::vector<float> widths;
  for (const auto& item : overlay.items)
    if (colors.empty() || colors.back() != item.style.color.GetRGBA() || widths.back() != item.style.width) {
      colors.push_back(item.style.color.GetRGBA());
      widths.push_back(item.style.width);
    }
  const std::vector<uint32_t> expected = {0xFFFF00FF, 0x00FF00FF, 0xFFFF00FF, 0x8080FFFF,
                                          0xFF0000FF, 0x00FF00FF, 0xFF00FFFF};
  EXPECT_EQ(expected, colors) << "timeline, four pit lines, grid, pit";
  EXPECT_EQ((std::vector<float>{1, 5, 2.5, 2, 4, 1, 1}), widths);
  EXPECT_EQ(DVector3(1, 2, 3), overlay.items[0].points[0]);
}

TEST_F(PositionsModeTest, HudCounts)
{
  track.gridCount = 7;
  mode.ModeHud();
  EXPECT_EQ(
      (std::vector<std::string>{"Grid positions: 7", "Pit positions : 0", "Timelines     : 0", "Triggerlines  : 0"}),
      host.hud);
}

TEST_F(PositionsModeTest, EachButtonDoesWhatItsKeyDoes)
{
  const struct
  {
    const char* label;
    int key;
    const char* prompt; // of the first question
  } rows[] = {
      {"Goto line start (Home)", QKEY_HOME, nullptr},
      {"Goto (G)rid pos", 'G', "Enter an index: Select grid position index (none existing yet)"},
      {"Declare grid pos (Ctrl-G)", QMOD_CTRL | 'G', "Enter an index: Select grid position index (none existing yet)"},
      {"Declare pits pos (Ctrl-P)", QMOD_CTRL | 'P', "Enter an index: Select pit position index (none existing yet)"},
      {"Declare timeline (Ctrl-T)", QMOD_CTRL | 'T', "Enter an index: Select timeline index (none existing yet)"},
      {"Declare pit in", 0, nullptr},
      {"Declare pit in speedlimit", 0, nullptr},
      {"Declare pit out speedlimit", 0, nullptr},
      {"Declare pit out", 0, nullptr},
      {"Declare triggerline (Ctrl-R)", QMOD_CTRL | 'R', "Enter an index: Select triggerline index (none existing yet)"},
  };
  mode.ModeSetup();
  ASSERT_EQ(std::size(rows), host.buttons.size());
  int lines = 0; // of the pits, that were set
  for (int i = 0; i < static_cast<int>(std::size(rows)); ++i) {
    const auto& row = rows[i];
    SCOPED_TRACE(row.label);
    EXPECT_EQ(row.label, host.buttons[static_cast<size_t>(i)]);
    for (const bool byKey : {false, true}) {
      if (byKey && !row.key)
        continue;
      host.prompts.clear();
      state.camera.transform.pos = {};
      if (byKey)
        EXPECT_FALSE(mode.ModeKey(row.key));
      else
        mode.ModeOp(i);
      EXPECT_EQ(row.prompt ? std::vector<std::string>{row.prompt} : std::vector<std::string>(), host.prompts);
      EXPECT_EQ(i == 0 ? DVector3(1, 6, 3) : DVector3(0.0f), state.camera.transform.pos);
    }
    if (!row.key) {
      EXPECT_EQ(state.pickEnd, track.pitInOutLines[static_cast<size_t>(lines++)].to);
    }
  }
}

} // namespace
