#include "editor/trafficmode.h"

#include "editor/editstate.h"
#include "editor/fakehost.h"
#include "support/recordingoverlay.h"
#include "track/rtrackvrml.h"
#include "ui/qkeys.h"

#include <gtest/gtest.h>

namespace {

class TrafficModeTest : public testing::Test
{
protected:
  TrafficModeTest()
  {
    state.curTrack = &track;
    mode.ModeSetup();
  }
  // A chain, each way point linked forward to the next.
  void MakeChain(int count)
  {
    for (int i = 0; i < count; ++i) {
      RTrafficWayPoint* w = grid.Add();
      ASSERT_TRUE(w);
      w->links[0] = i + 1 < count ? i + 1 : -1;
    }
  }
  void Select(int index)
  {
    host.answers = {std::to_string(index)};
    mode.ModeKey(QMOD_CTRL | 'S');
    ASSERT_EQ(index, mode.Selected());
  }
  const std::array<int, 3>& LinksOf(int index) const { return grid.wayPoints.At(index)->links; }

  RTrackVRML track;
  RTrafficGrid& grid = track.trafficGrid;
  EditState state;
  FakeHost host;
  TrafficMode mode{state, host};
};

enum Op
{
  VELOCITY,
  START_LINE,
  ADD_FORWARD,
  ADD_LEFT,
  ADD_RIGHT,
  MOVE,
  REMOVE,
  SELECT,
  LINK_FORWARD,
  LINK_LEFT,
  LINK_RIGHT,
  DEFAULT_VELOCITY
};

constexpr std::array<int, 3> UNLINKED = {-1, -1, -1};
constexpr const char* NONE_SELECTED = "Error: No waypoint selected [OK]";

TEST_F(TrafficModeTest, ButtonsAreTheOperationsAndKeysAreTheButtons)
{
  const std::vector<std::string> labels = {"Velocity (^V)",
                                           "Start new line w/ selection (^N)",
                                           "Add forward waypoint (^A)",
                                           "Add leftward waypoint",
                                           "Add rightward waypoint",
                                           "Move selected waypoint (^M)",
                                           "Remove selected waypoint (^R)",
                                           "Select waypoint (^S)",
                                           "Set forward waypoint",
                                           "Set leftward waypoint",
                                           "Set rightward waypoint",
                                           "Set default velocity"};
  EXPECT_EQ(labels, host.buttons);
  const struct
  {
    int key;
    Op op;
  } keys[] = {{'V', VELOCITY}, {'N', START_LINE}, {'A', ADD_FORWARD}, {'M', MOVE}, {'R', REMOVE}, {'S', SELECT}};
  for (const auto& k : keys) {
    SCOPED_TRACE(labels[k.op]);
    const auto effect = [&](auto run) {
      host.prompts.clear();
      host.messages.clear();
      grid.wayPoints.Clear();
      mode.ModeSetup();
      run();
      return std::tuple(host.prompts, host.messages, grid.wayPoints.Count());
    };
    const auto byKey = effect([&] { EXPECT_TRUE(mode.ModeKey(QMOD_CTRL | k.key)) << "consumed"; });
    EXPECT_EQ(byKey, effect([&] { mode.ModeOp(k.op); }));
    EXPECT_NE(byKey, effect([] {})) << "it does something";
  }
  EXPECT_FALSE(mode.ModeKey('A'));
  EXPECT_FALSE(mode.ModeKey(QMOD_CTRL | 'G'));
}

TEST_F(TrafficModeTest, ALineGrowsFromTheSelectedWayPoint)
{
  state.pickStart = {1, 2, 3};
  mode.ModeKey(QMOD_CTRL | 'A'); // nothing to link from
  ASSERT_EQ(1, grid.wayPoints.Count());
  EXPECT_EQ(UNLINKED, LinksOf(0));
  EXPECT_EQ(state.pickStart, grid.wayPoints.At(0)->pos);
  EXPECT_EQ(10, grid.wayPoints.At(0)->velocity);
  EXPECT_EQ(0, grid.wayPoints.At(0)->flags);
  mode.ModeKey(QMOD_CTRL | 'A');
  mode.ModeOp(ADD_LEFT);
  Select(1);
  mode.ModeOp(ADD_RIGHT);
  Select(0);
  mode.ModeOp(ADD_FORWARD);
  EXPECT_EQ(4, mode.Selected());
  EXPECT_EQ((std::array<int, 3>{4, -1, -1}), LinksOf(0)) << "the old link is overwritten";
  EXPECT_EQ((std::array<int, 3>{-1, 2, 3}), LinksOf(1));
  EXPECT_EQ(UNLINKED, LinksOf(4));
  mode.ModeKey(QMOD_CTRL | 'N');
  EXPECT_EQ(5, mode.Selected());
  EXPECT_EQ(UNLINKED, LinksOf(4)) << "a new line";
}

TEST_F(TrafficModeTest, AFullTableIsTold)
{
  MakeChain(RTrafficGrid::MAX_ADDED);
  Select(3);
  for (const int op : {START_LINE, ADD_FORWARD, ADD_LEFT, ADD_RIGHT}) {
    SCOPED_TRACE(op);
    host.messages.clear();
    mode.ModeOp(op);
    EXPECT_EQ(std::vector<std::string>{"Error: Too many waypoints [OK]"}, host.messages);
  }
  EXPECT_EQ(4999, grid.wayPoints.Count());
  EXPECT_EQ((std::array<int, 3>{4, -1, -1}), LinksOf(3));
  EXPECT_EQ(3, mode.Selected());
}

TEST_F(TrafficModeTest, RemovingRenumbersAndTheSelectionStaysANumber)
{
  MakeChain(10);
  grid.wayPoints.At(9)->links = {3, 4, 0};
  Select(3);
  grid.wayPoints.At(4)->flags = 44;
  mode.ModeKey(QMOD_CTRL | 'R');
  EXPECT_EQ(3, mode.Selected());
  EXPECT_EQ(44, grid.wayPoints.At(3)->flags);
  EXPECT_EQ(-1, LinksOf(2)[0]);
  EXPECT_EQ((std::array<int, 3>{-1, 3, 0}), LinksOf(8));
}

TEST_F(TrafficModeTest, ASelectionPastTheEndIsShownButNeverUsed)
{
  MakeChain(3);
  Select(2);
  mode.ModeKey(QMOD_CTRL | 'R');
  mode.ModeHud();
  EXPECT_EQ((std::vector<std::string>{"Waypoints: 2", "Selected waypoint: 2"}), host.hud);
  RecordingOverlay overlay;
  mode.ModePaint(overlay);
  mode.ModeKey(QMOD_CTRL | 'R');
  mode.ModeKey(QMOD_CTRL | 'M');
  mode.ModeKey(QMOD_CTRL | 'V');
  EXPECT_EQ((std::vector<std::string>{"Error: Failed to remove waypoint.", NONE_SELECTED, NONE_SELECTED}),
            host.messages);
  mode.ModeKey(QMOD_CTRL | 'A');
  EXPECT_EQ(2, mode.Selected());
  EXPECT_EQ(UNLINKED, LinksOf(2)) << "no link from the number to itself";
  mode.ModeKey(QMOD_CTRL | 'R');
  mode.ModeKey(QKEY_PGDN);
  EXPECT_EQ(0, mode.Selected());
}

TEST_F(TrafficModeTest, PagingFollowsTheForwardLinks)
{
  mode.ModeKey(QKEY_PGDN);
  EXPECT_EQ(-1, mode.Selected()) << "an empty grid";
  mode.ModeKey(QKEY_PGUP);
  EXPECT_EQ(-1, mode.Selected());
  MakeChain(3);
  grid.wayPoints.At(0)->links[0] = 2;
  for (const int expected : {0, 2, -1, 0}) {
    EXPECT_TRUE(mode.ModeKey(QKEY_PGDN));
    EXPECT_EQ(expected, mode.Selected());
  }
  Select(2);
  for (const int expected : {0, 2}) { // 1 and 2 lead nowhere, so 0 is reached from 2 by its link alone
    EXPECT_TRUE(mode.ModeKey(QKEY_PGUP));
    EXPECT_EQ(expected, mode.Selected()) << "before the first comes the last";
  }
  Select(1);
  mode.ModeKey(QKEY_PGUP);
  EXPECT_EQ(0, mode.Selected()) << "nothing leads here, so the number before";
  mode.ModeSetup();
  mode.ModeHud();
  EXPECT_EQ("Selected waypoint: none", host.hud.back());
}

TEST_F(TrafficModeTest, MovesOnlyWhatIsSelected)
{
  MakeChain(2);
  mode.ModeKey(QMOD_CTRL | 'M');
  mode.ModeKey(QMOD_CTRL | 'R');
  mode.ModeKey(QMOD_CTRL | 'V');
  EXPECT_EQ((std::vector<std::string>{NONE_SELECTED, NONE_SELECTED, NONE_SELECTED}), host.messages);
  state.pickStart = {5, 6, 7};
  Select(1);
  mode.ModeKey(QMOD_CTRL | 'M');
  EXPECT_EQ(DVector3(0.0f), grid.wayPoints.At(0)->pos);
  EXPECT_EQ(state.pickStart, grid.wayPoints.At(1)->pos);
  EXPECT_EQ(2, grid.wayPoints.Count());
}

TEST_F(TrafficModeTest, OnlyNumbersOfWayPointsAreTaken)
{
  MakeChain(3);
  for (const char* answer : {"", "3", "-1", "-2", "two", "1.0", "1+1", " 1", "99999999999999999999"}) {
    SCOPED_TRACE(answer);
    host.messages.clear();
    host.answers = {answer};
    mode.ModeKey(QMOD_CTRL | 'S');
    EXPECT_EQ(std::vector<std::string>{"Error: Invalid index [OK]"}, host.messages);
    EXPECT_EQ(-1, mode.Selected());
  }
  host.messages.clear();
  mode.ModeKey(QMOD_CTRL | 'S'); // Cancel
  EXPECT_TRUE(host.messages.empty());
  EXPECT_EQ("Input index: ", host.prompts.back());
  mode.ModeOp(LINK_LEFT);
  EXPECT_EQ("Input index (-1 to remove link): ", host.prompts.back());
  EXPECT_EQ("", host.filled.back());
  EXPECT_EQ((QRect{10, 10, 200, 150}), host.area);
}

TEST_F(TrafficModeTest, LinksAreSetCutAndNeverDoubled)
{
  MakeChain(4);
  Select(0);
  host.answers = {"2"};
  mode.ModeOp(LINK_LEFT);
  EXPECT_EQ(2, mode.Selected()) << "a chain is laid by linking on";
  EXPECT_EQ((std::array<int, 3>{1, 2, -1}), LinksOf(0));
  host.answers = {"2"};
  mode.ModeOp(LINK_RIGHT);
  EXPECT_EQ((std::array<int, 3>{3, -1, 2}), LinksOf(2)) << "a link to itself is allowed";
  for (const int op : {LINK_FORWARD, LINK_LEFT, LINK_RIGHT}) {
    host.messages.clear();
    host.answers = {"3"};
    mode.ModeOp(op);
    EXPECT_EQ(std::vector<std::string>{"Error: Already linked to this waypoint. [OK]"}, host.messages);
  }
  host.answers = {"-1"};
  mode.ModeOp(LINK_FORWARD);
  EXPECT_EQ((std::array<int, 3>{-1, -1, 2}), LinksOf(2));
  EXPECT_EQ(2, mode.Selected());
  host.answers = {"4"};
  mode.ModeOp(LINK_FORWARD);
  EXPECT_EQ("Error: Invalid index [OK]", host.messages.back());
  EXPECT_EQ((std::array<int, 3>{-1, -1, 2}), LinksOf(2));
}

TEST_F(TrafficModeTest, LinkingWithoutASelectionStartsALine)
{
  MakeChain(2);
  mode.ModeOp(LINK_FORWARD); // Cancel
  EXPECT_EQ(2, grid.wayPoints.Count());
  host.answers = {"1"};
  mode.ModeOp(LINK_FORWARD);
  EXPECT_EQ(3, grid.wayPoints.Count());
  EXPECT_EQ(2, mode.Selected());
  EXPECT_EQ(UNLINKED, LinksOf(2));
}

TEST_F(TrafficModeTest, VelocitiesAreNumbersWithoutAMinus)
{
  MakeChain(1);
  Select(0);
  for (const char* answer : {"-5", "-0", "", "fast", "1.2.3", "5 m/s", "inf", "nan", "1e99"}) {
    SCOPED_TRACE(answer);
    for (const int op : {VELOCITY, DEFAULT_VELOCITY}) {
      host.messages.clear();
      host.answers = {answer};
      mode.ModeOp(op);
      EXPECT_EQ(std::vector<std::string>{"Error: Invalid value [OK]"}, host.messages);
    }
  }
  EXPECT_EQ("Input velocity: Current: 10.000000m/s", host.prompts.back());
  EXPECT_EQ("10.000000", host.filled.back());
  EXPECT_EQ((QRect{10, 10, 250, 150}), host.area);
  host.answers = {"0", "12.5"};
  mode.ModeOp(VELOCITY);
  mode.ModeOp(DEFAULT_VELOCITY);
  EXPECT_EQ(0, grid.wayPoints.At(0)->velocity);
  mode.ModeOp(ADD_FORWARD);
  EXPECT_EQ(12.5f, grid.wayPoints.At(1)->velocity);
  EXPECT_EQ(0, grid.wayPoints.At(0)->velocity) << "those that stand keep theirs";
}

TEST_F(TrafficModeTest, PaintsTheSelectionAsSuch)
{
  MakeChain(2);
  Select(1);
  RecordingOverlay overlay;
  mode.ModePaint(overlay);
  EXPECT_EQ(1, grid.selected);
  EXPECT_FALSE(overlay.items.empty());
}

} // namespace
