#include "editor/marshalmode.h"

#include "editor/editstate.h"
#include "editor/editview.h"
#include "editor/fakehost.h"
#include "foundation/qfilename.h"
#include "geometry/dgeode.h"
#include "scene/worldgeodenode.h"
#include "support/recordingoverlay.h"
#include "support/reportcapture.h"
#include "support/tempdir.h"
#include "track/rmarshaltemplate.h"
#include "track/rtrackvrml.h"
#include "ui/qkeys.h"

#include <gtest/gtest.h>

namespace {

class MarshalModeTest : public testing::Test
{
protected:
  MarshalModeTest()
  {
    track.SetName("small");
    state.curTrack = &track;
    state.curMode = 9;
    track.marshalPosts.Reserve(3);
    for (int i = 0; i < 3; ++i)
      Post(i).userID = 10 + i;
    QFileHooks().openDocument = [this](const std::string& what, const std::string&) {
      opened.push_back(what);
      return true;
    };
  }
  ~MarshalModeTest() override { QFileHooks().openDocument = nullptr; }
  RMarshalPost& Post(int i) { return track.marshalPosts.posts[static_cast<size_t>(i)]; }
  RTrackNode* AddNode(const std::string& file)
  {
    auto node = std::make_unique<RTrackNode>();
    node->file = file;
    RTrackNode* added = node.get();
    EXPECT_TRUE(track.AddNode(std::move(node)));
    return added;
  }
  void AddLines(int count)
  {
    for (int i = 0; i < count; ++i) {
      RSplineLine line;
      line.left = {-1, 0, float(i)};
      line.right = {1, 0, float(i)};
      track.splines.AddLine(line);
    }
  }
  std::vector<std::string> Hud()
  {
    host.hud.clear();
    mode.ModeHud();
    return host.hud;
  }
  ReportCapture reports;
  TempDir root;
  InDirectory inside{root.Path()};
  RTrackVRML track;
  EditState state;
  FakeHost host;
  EditView view{state};
  MarshalMode mode{state, host, view};
  std::vector<std::string> opened;
};

TEST_F(MarshalModeTest, PagesThroughThePostsAndStopsAtTheEnds)
{
  mode.ModeSetup();
  EXPECT_EQ((std::vector<std::string>{"Edit spline range", "Edit user ID for selected post",
                                      "Make template for special.ini", "Analyze user ID"}),
            host.buttons);
  Post(2).state = 6;
  const struct
  {
    int key, selected;
  } steps[] = {{QKEY_PGUP, -1}, {QKEY_PGDN, 0}, {QKEY_PGUP, 0}, {QKEY_PGDN, 1},
               {QKEY_PGDN, 2},  {QKEY_PGDN, 2}, {QKEY_PGUP, 1}};
  for (const auto& s : steps) {
    EXPECT_TRUE(mode.ModeKey(s.key));
    EXPECT_EQ(s.selected, mode.Selected());
  }
  EXPECT_FALSE(mode.ModeKey('A'));
  EXPECT_FALSE(mode.ModeKey(QMOD_CTRL | 'V'));
  EXPECT_EQ(0, Post(2).state) << "a walk ends all flags";
  mode.TrackLoaded();
  EXPECT_EQ(-1, mode.Selected());
}

TEST_F(MarshalModeTest, SelectsTheSceneryOfAPostByItsActorsNumber)
{
  RTrackNode* flag = AddNode("flag.dof");
  RTrackNode* lamp = AddNode("lamp.dof");
  Post(0).actors.resize(2);
  Post(0).actors[0].stateNames[1] = Post(0).actors[0].stateNames[5] = "lamp";
  Post(0).actors[1].type = 1;
  Post(0).actors[1].stateNames[6] = "flag";
  Post(0).actors[1].stateNames[7] = "nowhere";
  track.marshalPosts.PostLoad("data/tracks/small", {track.nodes.begin(), track.nodes.end()}, track.splines);
  state.SelectedNodes = {{0, flag}};
  mode.ModeKey(QKEY_PGDN);
  ASSERT_EQ(3u, state.SelectedNodes.size()) << "the same model twice";
  EXPECT_EQ(lamp, state.SelectedNodes[0].node);
  EXPECT_EQ(lamp, state.SelectedNodes[1].node);
  EXPECT_EQ(flag, state.SelectedNodes[2].node);
  EXPECT_EQ(1, state.SelectedNodes[2].index);
  const auto hud = Hud();
  ASSERT_EQ(37u, hud.size());
  EXPECT_EQ(
      (std::vector<std::string>{"Object: lamp.dof (1 out of 2)", "3 marshall posts present.", "Marshal post 0 selected",
                                "Spline range: 0 - 0", "User id: 10", "Actor 0 - type 0 (light)",
                                "- Model for state 'yellow': lamp", "- Model for state 'green': <none defined>"}),
      std::vector<std::string>(hud.begin(), hud.begin() + 8));
  EXPECT_EQ("- Model for state 'fixed_yellow': <none defined>", hud[20]);
  EXPECT_EQ("Actor 1 - type 1 (flags)", hud[21]);
  Post(0).actors[1].type = 3;
  EXPECT_EQ("Actor 1 - type 3 (skinned)", Hud().back()) << "no models follow";
  mode.ModeKey(QKEY_PGDN);
  EXPECT_TRUE(state.SelectedNodes.empty());
  mode.TrackLoaded();
  EXPECT_EQ((std::vector<std::string>{"3 marshall posts present.", "No marshal post selected (use PageUp/PageDown)"}),
            Hud());
}

TEST_F(MarshalModeTest, EditsRangeAndIdOfTheSelectedPost)
{
  AddLines(5);
  mode.ModeOp(0);
  mode.ModeOp(1);
  EXPECT_EQ(2u, host.messages.size());
  EXPECT_EQ("Error: No post selected.\nUse PageUp/PageDown to select one.", host.messages[1]);
  EXPECT_TRUE(host.prompts.empty());
  mode.ModeKey(QKEY_PGDN);
  host.answers = {"1", "3", "77"};
  mode.ModeOp(0);
  mode.ModeOp(1);
  EXPECT_EQ(
      (std::vector<std::string>{"Edit spline range: Enter the index of the start spline",
                                "Edit spline range: Enter the index of the last spline",
                                "Edit user id: Enter the user id for this post\n(used with 'mpost' console command)"}),
      host.prompts);
  EXPECT_EQ((std::vector<std::string>{"0", "0", "10"}), host.filled);
  EXPECT_EQ(1, Post(0).splineFrom);
  EXPECT_EQ(3, Post(0).splineTo);
  EXPECT_EQ(77, Post(0).userID);
  EXPECT_EQ(&Post(0), track.splines.lines[2].post) << "the lines know at once";
  host.answers = {FakeHost::CANCEL, FakeHost::CANCEL};
  mode.ModeOp(0);
  EXPECT_EQ(1, Post(0).splineFrom);
  host.answers = {"2", FakeHost::CANCEL};
  mode.ModeOp(0);
  EXPECT_EQ(2, Post(0).splineFrom) << "the first answer counts";
  EXPECT_EQ(3, Post(0).splineTo);
}

TEST_F(MarshalModeTest, PaintsTheRangeOfTheSelectedPost)
{
  AddLines(4);
  const auto painted = [&] {
    RecordingOverlay overlay;
    mode.ModePaint(overlay);
    return overlay.items;
  };
  const size_t without = painted().size();
  mode.ModeKey(QKEY_PGDN);
  Post(0).splineFrom = 2;
  Post(0).splineTo = 99;
  const auto items = painted();
  ASSERT_EQ(without + 1, items.size());
  EXPECT_EQ(0xFF0000FF, items.back().style.color.GetRGBA());
  EXPECT_EQ((std::vector<DVector3>{
                {-1, 0, 2}, {1, 0, 2}, {-1, 0, 2}, {-1, 0, 3}, {1, 0, 2}, {1, 0, 3}, {-1, 0, 3}, {1, 0, 3}}),
            items.back().points);
  for (const auto& [from, to] : {std::pair(-5, -1), {7, 9}, {3, 1}, {2147483647, -2147483647}}) {
    Post(0).splineFrom = from;
    Post(0).splineTo = to;
    EXPECT_TRUE(painted().back().points.empty());
  }
  EXPECT_EQ("3 [maxV 0.00, postState 0]", items[items.size() - 2].text);
  EXPECT_EQ(DVector3(1, 0, 3), items[items.size() - 2].points[0]) << "odd lines are labelled at the right";
}

TEST_F(MarshalModeTest, TextsAreWrittenAndShown)
{
  root.Write("data/tracks/small/special.ini", "marshal_posts\n{\n  post0\n  {\n    user_id=5\n  }\n}\n");
  AddNode("a_mpost_0_flag_red.dof");
  mode.ModeOp(2);
  EXPECT_EQ(std::vector<std::string>{MARSHAL_TEXT_FILE}, opened);
  EXPECT_NE(std::string::npos, FileText(MARSHAL_TEXT_FILE).find("    user_id=5\n    actors=1\n"));
  mode.ModeOp(3);
  EXPECT_TRUE(FileText(MARSHAL_TEXT_FILE).starts_with("Marshall post analysis\n"));
  std::filesystem::remove(MARSHAL_TEXT_FILE);
  std::filesystem::create_directory(MARSHAL_TEXT_FILE);
  mode.ModeOp(2);
  EXPECT_EQ(std::vector<std::string>{"Error: Can't open TEMP_PAVEX_MARSHAL_POSTS.txt"}, host.messages);
  EXPECT_EQ(2u, opened.size());
}

} // namespace
