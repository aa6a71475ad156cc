#include "track/rmarshalposts.h"

#include "foundation/qinfo.h"
#include "scene/worldgeodenode.h"
#include "support/reportcapture.h"
#include "track/rmarshaltemplate.h"
#include "track/smalltrack.h"

#include <gtest/gtest.h>

namespace {

constexpr const char* TWO_POSTS = R"(marshal_posts
{
  count=2
  post0
  {
    actors=2
    actor0
    {
      type=0
      state_yellow=lamp
      state_yellowdouble=lamp
    }
    actor1
    {
      type=1
      state_red=flag
      state_green=nowhere
    }
    spline_from=1
    spline_to=4
    note=mine
  }
  post1
  {
    actors=1
    actor0
    {
      type=3
      state_red=cloth
    }
    spline_from=3
    spline_to=99
    user_id=7
  }
}
)";

class MarshalPostsTest : public testing::Test
{
protected:
  void Load(const char* special = TWO_POSTS)
  {
    small.Write("special.ini", special);
    small.Write("geometry.ini", "objects\n{\n  a\n  {\n    file=lamp.dof\n  }\n  b\n  {\n    file=flag.dof\n  }\n}\n");
    small.WriteModel("lamp.dof");
    small.WriteModel("flag.dof");
    small.WriteRoad(6);
    track = small.Load();
    ASSERT_TRUE(track);
  }
  bool IsVisible(int node) const { return (*track->nodes.At(node))->sceneNode->flags & WorldNode::VISIBLE; }
  RMarshalPosts& Posts() { return track->marshalPosts; }

  SmallTrack small;
  ReportCapture reports;
  std::unique_ptr<RTrackVRML> track;
};

TEST_F(MarshalPostsTest, FindsItsSceneryAndCoversItsLines)
{
  Load();
  RTrackNode* lamp = track->nodes.At(0)->get();
  const RMarshalPost& post = Posts().posts[0];
  EXPECT_EQ(lamp, post.actors[0].nodes[1]);
  EXPECT_EQ(lamp, post.actors[0].nodes[5]);
  EXPECT_EQ(nullptr, post.actors[1].nodes[2]);
  EXPECT_EQ(&post, post.actors[1].post);
  EXPECT_TRUE(reports.Contains("Node 'data/tracks/small/nowhere.dof' of a post was not found in the track"));
  EXPECT_FALSE(reports.Contains("cloth")) << "a skinned actor's nodes aren't looked up";
  std::vector<const RMarshalPost*> covered;
  for (const RSplineLine& line : track->splines.lines)
    covered.push_back(line.post);
  const RMarshalPost* first = &Posts().posts[0];
  const RMarshalPost* second = &Posts().posts[1];
  EXPECT_EQ((std::vector<const RMarshalPost*>{nullptr, first, first, second, second, second}), covered);
  Posts().posts[0].splineFrom = Posts().posts[0].splineTo = 5;
  Posts().posts[1].splineFrom = -2147483647;
  Posts().posts[1].splineTo = 1;
  Posts().LinkLines(track->splines);
  EXPECT_EQ(second, track->splines.lines[0].post);
  EXPECT_EQ(nullptr, track->splines.lines[5].post) << "from 5 to 5 covers nothing";
}

TEST_F(MarshalPostsTest, ShowsWhatThePostsStateAsksFor)
{
  Load();
  const struct
  {
    int state, time;
    bool lamp, flag;
  } cases[] = {
      {0, 600, false, false},  {1, 500, false, false}, {1, 501, true, false}, {1, 1999, true, false},
      {1, 2000, false, false}, {5, 700, true, false},  {6, 0, false, true},   {2, 700, false, false},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::Message() << c.state << " at " << c.time);
    Posts().SetState(0, c.state);
    Posts().Update(c.time);
    EXPECT_EQ(c.lamp, IsVisible(0));
    EXPECT_EQ(c.flag, IsVisible(1));
  }
  ASSERT_TRUE(track->RemoveNode(0));
  Posts().SetState(0, 1);
  Posts().Update(700); // must not reach for what is gone
  EXPECT_EQ(nullptr, Posts().posts[0].actors[0].nodes[1]);
}

TEST_F(MarshalPostsTest, StatesAreSetByIndexAndById)
{
  Load();
  Posts().SetState(0, 6);
  EXPECT_EQ(6, Posts().posts[0].state);
  Posts().SetState(0, 16);
  EXPECT_EQ(0, Posts().posts[0].state);
  EXPECT_TRUE(reports.Contains("Value 16 out of range"));
  Posts().SetState(2, 1);
  EXPECT_TRUE(reports.Contains("Value n (2) out of range 0..1"));
  EXPECT_EQ(1, Posts().FindByUserID(7));
  EXPECT_EQ(0, Posts().FindByUserID(0));
  EXPECT_EQ(-1, Posts().FindByUserID(1));
  EXPECT_TRUE(Posts().SetStateByUserID(7, 15));
  EXPECT_EQ(15, Posts().posts[1].state);
  EXPECT_FALSE(Posts().SetStateByUserID(8, 15));
}

TEST_F(MarshalPostsTest, ASlowZoneMayLeadOverTheLastPost)
{
  RMarshalPosts posts;
  posts.Reserve(5);
  posts.CreateSlowZone(2, 3, 0);
  std::vector<int> states;
  for (const RMarshalPost& post : posts.posts)
    states.push_back(post.state);
  EXPECT_EQ((std::vector<int>{5, 0, 13, 5, 5}), states);
  posts.CreateSlowZone(5, 1, 1);
  posts.CreateSlowZone(0, 1, 5);
  EXPECT_TRUE(reports.Contains("postNextSlow (5) >= posts (5)"));
  EXPECT_TRUE(reports.Contains("postSlowEnd (5) >= posts (5)"));
  EXPECT_EQ(0, posts.posts[1].state);
}

TEST_F(MarshalPostsTest, AnEditedPostIsSavedAndTheRestOfItsSectionStays)
{
  Load();
  Posts().posts[0].splineTo = 3;
  Posts().posts[1].userID = -4;
  ASSERT_TRUE(track->Save());
  EXPECT_NE(std::string::npos, small.Text("special.ini").find("note=mine"));
  const QInfo info(small.Path("special.ini"));
  EXPECT_EQ(2, info.GetInt("marshal_posts.count"));
  EXPECT_EQ(3, info.GetInt("marshal_posts.post0.spline_to"));
  EXPECT_STREQ("lamp", info.GetStringDirect("marshal_posts.post0.actor0.state_yellow"));
  EXPECT_TRUE(info.PathExists("marshal_posts.post0.actor0.state_fixed_yellow")) << "empty ones too";
  EXPECT_EQ(3, info.GetInt("marshal_posts.post1.actor0.type"));
  EXPECT_EQ(0, info.GetInt("marshal_posts.post0.user_id", 99));
  track = small.Load();
  EXPECT_EQ(-4, Posts().posts[1].userID);
  EXPECT_EQ("cloth", Posts().posts[1].actors[0].stateNames[6]);
}

TEST_F(MarshalPostsTest, ANegativeCountGivesOnePost)
{
  Load("marshal_posts\n{\n  count=-3\n}\n");
  EXPECT_TRUE(reports.Contains("Must reserve at least 1 item (n=-3) - correcting to n=1"));
  EXPECT_EQ(1, Posts().Count());
  EXPECT_STREQ("<unknown_actor_type>", RMarshalPosts::ActorTypeName(4));
  EXPECT_STREQ("<unknown_racing_flag_color>", RMarshalPosts::StateWord(-1));
}

TEST(MarshalName, FollowsTheConvention)
{
  constexpr const char* TYPE_ERROR = "type in";
  constexpr const char* STATE_ERROR = "state in";
  const struct
  {
    const char* file;
    bool isPost;
    int post, type, state;
    const char* error;
  } cases[] = {
      {"cloth_mpost_3_light_red.dof", true, 3, 0, 6, ""},
      {"posts/a_mpost_0_flag_sc.dof", true, 0, 1, 8, ""},
      {"_mpost_12_sign_next_slow.dof", true, 12, 2, 13, ""},
      {"a_mpost_1_skin_yellowdouble.x.dof", true, 1, 3, 5, ""},
      {"a_mpost_1_lamp_red.dof", true, 1, 0, 6, TYPE_ERROR},
      {"a_mpost_1_flag_none.dof", true, 1, 1, -1, STATE_ERROR},
      {"a_mpost_1_flag_Red.dof", true, 1, 1, -1, STATE_ERROR},
      {"a_mpost_1_flag_red", true, 1, 1, -1, ""},
      {"a_mpost_1_flag_.dof", false, 1, 1, -1, ""},
      {"a_mpost_1_flag.dof", false, 1, 0, -1, ""},
      {"a_mpost_1", false, 0, 0, -1, ""},
      {"a_mpost_", false, 0, 0, -1, ""},
      {"a_mpost_x_flag_red.dof", false, 0, 0, -1, ""},
      {"a_mpost_2000000000_flag_red.dof", false, 2000000000, 0, -1, ""},
      {"flag_red.dof", false, 0, 0, -1, ""},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.file);
    std::string errors;
    const RMarshalName name = ParseMarshalName(c.file, errors);
    EXPECT_EQ(c.isPost, name.isPost);
    EXPECT_EQ(c.post, name.post);
    EXPECT_EQ(c.type, name.type);
    EXPECT_EQ(c.state, name.state);
    EXPECT_EQ(*c.error == 0, errors.empty());
    EXPECT_NE(std::string::npos, errors.find(c.error));
  }
}

class MarshalTemplateTest : public testing::Test
{
protected:
  // Without the head, which is checked once.
  std::string Template(std::initializer_list<const char*> files, const char* special = "")
  {
    std::vector<std::unique_ptr<RTrackNode>> nodes;
    for (const char* file : files) {
      nodes.push_back(std::make_unique<RTrackNode>());
      nodes.back()->file = file;
    }
    const TempDir dir;
    const QInfo info(dir.Write("special.ini", special));
    const std::string text = MakeMarshalTemplate(nodes, info);
    const size_t head = text.rfind("existing special.ini.\n;\n");
    EXPECT_TRUE(text.starts_with(";\n; Template generated"));
    return head == std::string::npos ? text : text.substr(head + 24);
  }
  ReportCapture reports;
};

TEST_F(MarshalTemplateTest, PutsEachModelInTheFirstFittingActor)
{
  EXPECT_EQ("marshal_posts\n{\n  count=0\n}\n", Template({"road.dof"}));
  EXPECT_EQ("marshal_posts\n{\n  count=2\n"
            "  post0\n  {\n    spline_from=0\n    spline_to=0\n    user_id=0\n    actors=0\n  }\n"
            "  post1\n  {\n    spline_from=4\n    spline_to=9\n    user_id=31\n    actors=3\n"
            "    actor0\n    {\n      type=0\n      state_green=p/c_mpost_1_light_green\n"
            "      state_red=a_mpost_1_light_red\n    }\n"
            "    actor1\n    {\n      type=0\n      state_red=b_mpost_1_light_red\n    }\n"
            "    actor2\n    {\n      type=1\n      state_safetycar=d_mpost_1_flag_sc\n    }\n  }\n}\n",
            Template({"a_mpost_1_light_red.dof", "b_mpost_1_light_red.dof", "p/c_mpost_1_light_green.dof",
                      "d_mpost_1_flag_sc.dof", "e_mpost_1_skin_red.dof"},
                     "marshal_posts\n{\n  post1\n  {\n    spline_from=4\n    spline_to=9\n    user_id=31\n  }\n}\n"));
}

TEST_F(MarshalTemplateTest, TellsErrorsOnTopAndInEachPost)
{
  const std::string type =
      "; ** ERROR: type in 'a_mpost_0_lamp_red.dof' must be flag/light/sign/skin - 'lamp' detected\n";
  const std::string state =
      "; ** ERROR: state in 'a_mpost_1_flag_pink.dof' must be blue/yellow/sc etc - 'pink' detected\n";
  EXPECT_EQ(
      type + state + "marshal_posts\n{\n  count=2\n  post0\n  {\n    spline_from=0\n    spline_to=0\n    user_id=0\n" +
          type + state + "    actors=1\n    actor0\n    {\n      type=0\n      state_red=a_mpost_0_lamp_red\n    }\n" +
          "  }\n  post1\n  {\n    spline_from=0\n    spline_to=0\n    user_id=1\n" + type + state +
          "    actors=0\n  }\n}\n",
      Template({"a_mpost_0_lamp_red.dof", "a_mpost_1_flag_pink.dof"}));
}

TEST_F(MarshalTemplateTest, ASeventhActorIsTold)
{
  const std::string text =
      Template({"1_mpost_0_flag_red.dof", "2_mpost_0_flag_red.dof", "3_mpost_0_flag_red.dof", "4_mpost_0_flag_red.dof",
                "5_mpost_0_flag_red.dof", "6_mpost_0_flag_red.dof", "7_mpost_0_flag_red.dof"});
  EXPECT_NE(std::string::npos,
            text.find("user_id=0\n**** Could not place '7_mpost_0_flag_red.dof' in any actor    actors=6\n"));
  EXPECT_TRUE(reports.Contains("Could not place '7_mpost_0_flag_red.dof' in any actor"));
}

TEST(MarshalIds, AreAnalysed)
{
  constexpr const char* HEAD = "Marshall post analysis\n\nUser ID analysis:\n\n";
  const struct
  {
    std::vector<int> ids;
    const char* text;
  } cases[] = {
      {{0, 2, 2},
       "Defined indices (3 total, max user id found is 2):\n- post index 0 has user id 0\n- post index 1 has user id "
       "2\n"
       "- post index 2 has user id 2\n\nAnomalies in user indices:\n- User id 1 is never used\n"
       "- User id 2 is used 2 times\n    - Post index 1 uses it\n    - Post index 2 uses it\n"},
      {{1, 0},
       "Defined indices (2 total, max user id found is 1):\n- post index 0 has user id 1\n- post index 1 has user id "
       "0\n"
       "\nAnomalies in user indices:\n- No anomalies found; seems a 1:1 relationship (index==user ID)\n"},
      {{-1},
       "Defined indices (1 total, max user id found is 0):\n- post index 0 has user id -1\n"
       "\nAnomalies in user indices:\n- User id 0 is never used\n"},
      {{2147483647},
       "Defined indices (1 total, max user id found is 2147483647):\n- post index 0 has user id 2147483647\n"
       "\nAnomalies in user indices:\n- User ids 0 to 2147483646 are never used\n"},
  };
  for (const auto& c : cases) {
    RMarshalPosts posts;
    posts.Reserve(static_cast<int>(c.ids.size()));
    for (size_t i = 0; i < c.ids.size(); ++i)
      posts.posts[i].userID = c.ids[i];
    EXPECT_EQ(std::string(HEAD) + c.text, AnalyzeMarshalIds(posts));
  }
}

} // namespace
