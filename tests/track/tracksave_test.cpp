#include "foundation/qinfo.h"
#include "support/reportcapture.h"
#include "track/smalltrack.h"

#include <filesystem>
#include <gtest/gtest.h>

namespace fs = std::filesystem;

namespace {

bool Holds(const std::string& text, std::string_view part)
{
  return text.find(part) != std::string::npos;
}

} // namespace

TEST(TrackSave, ChangesItsOwnKeysAndNothingElse)
{
  SmallTrack small;
  small.WriteAll();
  auto track = small.Load();
  ASSERT_TRUE(track);
  track->gridPos[1] = {{10, 20, 30}, {11, 20, 30}};
  track->gridCount = 2;
  (*track->timeLines.At(1))->SetPoints({-5, 0, 30}, {5, 0, 30});
  track->GetTrackCam(0)->src.maxDist = 3;
  ASSERT_TRUE(track->Save());
  EXPECT_EQ(0, small.StrayFiles());
  const std::string special = small.Text("special.ini");
  for (const char* part : {"; special data of a small track\n", "secret=42 ; not ours\n", "note=pole position\n",
                           "pos7\n  {\n    from\n    {\n      x=7\n    }\n  }\n", "; the start\n", "name=split\n",
                           "name=greeting\n", "command=say hello\n", "sm_profile=3\n", "user_id=12\n", "mode=1\n",
                           "sample=birds/lark.wav\n", "maxdist=3.000000\n", "k=5.000000\n", "fov=35.000000\n"})
    EXPECT_TRUE(Holds(special, part)) << part << special;
  EXPECT_TRUE(Holds(small.Text("traffic.ini"), "car=van"));
  EXPECT_TRUE(Holds(small.Text("spline.ini"), "; the road"));
  EXPECT_EQ(2, track->Special()->GetInt("grid.count")); // what is read later sees what was written

  track = small.Load();
  ASSERT_EQ(2, track->gridCount);
  EXPECT_EQ(DVector3(10, 20, 30), track->gridPos[1].from);
  EXPECT_EQ(DVector3(1.5f, 0.25f, -3), track->gridPos[0].from);
  EXPECT_EQ("split", track->GetTimeLine(1)->name);
  EXPECT_EQ(-20, track->GetTimeLine(0)->from.x); // put on the road by the load
  EXPECT_EQ(3, track->GetTrackCam(0)->src.maxDist);
  EXPECT_EQ(5, track->GetTrackCam(0)->src.k);
  EXPECT_EQ(1, track->GetTrackCam(0)->keyframes.GetCount());
  EXPECT_EQ(2, track->nodes.Count());
}

TEST(TrackSave, WritesTheSameAgain)
{
  SmallTrack small;
  small.WriteAll();
  ASSERT_TRUE(small.Load()->Save());
  const auto first = small.SavedFiles();
  ASSERT_TRUE(small.Load()->Save());
  EXPECT_EQ(first, small.SavedFiles());
}

TEST(TrackSave, OrdersTheKeysOfANewFile)
{
  SmallTrack small;
  auto track = small.Load();
  ASSERT_TRUE(track);
  ASSERT_TRUE(track->triggerLines.Add(std::make_unique<RTriggerLine>()));
  ASSERT_TRUE(track->AddWayPoint(std::make_unique<RWayPoint>()));
  ASSERT_TRUE(track->AddTrackAudio(std::make_unique<RTrackAudio>()));
  track->flags = RTrack::NIGHT;
  ASSERT_TRUE(track->Save());
  const QInfo saved(small.Path("special.ini"));
  std::string names;
  for (const QInfoNode* section = saved.Root()->FirstChild(); section; section = section->Next()) {
    names += std::string(section->Name()) + ":";
    for (const QInfoNode* key = section->FirstChild(); key; key = key->Next())
      names += " " + std::string(key->Name());
    names += "\n";
  }
  EXPECT_EQ("endless: min max\ngrid: count\n"
            "pit: count side inout_line0 inout_line1 inout_line2 inout_line3\n"
            "timeline: count point_to_point auto_return\ntriggerline: count line0\n"
            "tcam: count cam0\nwaypoint: count wp0\naudio: count source0\ngfx: sky night\nmarshal_posts: count\n",
            names);
  names.clear();
  const QInfoNode* cam = saved.FindNode("tcam.cam0");
  for (const QInfoNode* key = cam->FirstChild(); key; key = key->Next())
    names += std::string(key->Name()) + " ";
  EXPECT_EQ("pos pos2 posdolly rot rot2 radius group zoom_edge zoom_close zoom_far flags src dst cube keyframes ",
            names);
  EXPECT_EQ("0.000000 0.000000 0.000000 0.000000", std::string(saved.GetStringDirect("gfx.sky")));
  EXPECT_EQ(1, saved.GetInt("gfx.night"));
}

TEST(TrackSave, RefusesToReplaceWhatCantBeRead)
{
  for (const char* leaf : {"special.ini", "spline.ini", "traffic.ini", "geometry.ini"}) {
    for (const bool whileLoading : {true, false}) {
      SCOPED_TRACE(std::string(leaf) + (whileLoading ? " at the load" : " at the save"));
      SmallTrack small;
      small.WriteAll();
      // A directory in the file's place can't be read by anyone.
      const std::string aside = small.Path(leaf) + ".aside.ini";
      const auto hide = [&] {
        fs::rename(small.Path(leaf), aside);
        fs::create_directory(small.Path(leaf));
      };
      const auto show = [&] {
        fs::remove(small.Path(leaf));
        fs::rename(aside, small.Path(leaf));
      };
      const auto before = small.SavedFiles();
      if (whileLoading)
        hide();
      const auto track = small.Load();
      ASSERT_TRUE(track);
      if (whileLoading)
        show(); // the fault has passed, but the track in memory lacks what stands in the file
      else
        hide();
      track->gridCount = 2;
      track->splines.paintEnd = 3;
      static_cast<void>(track->trafficGrid.Add());
      ReportCapture reports;
      EXPECT_FALSE(track->Save());
      EXPECT_TRUE(reports.Contains(leaf)) << reports.All();
      if (!whileLoading)
        show();
      EXPECT_TRUE(before == small.SavedFiles());
      EXPECT_EQ(0, small.StrayFiles());
    }
  }
}

TEST(TrackSave, FollowsLinksAndLetterCase)
{
  SmallTrack small;
  small.WriteAll();
  fs::rename(small.Path("special.ini"), small.root.Path("elsewhere.ini"));
  fs::create_symlink(small.root.Path("elsewhere.ini"), small.Path("special.ini"));
  fs::rename(small.Path("spline.ini"), small.Path("Spline.INI"));
  const auto track = small.Load();
  ASSERT_TRUE(track);
  EXPECT_EQ(10, track->splines.LineCount());
  track->gridCount = 3;
  track->splines.RemoveLast();
  ASSERT_TRUE(track->Save());
  EXPECT_TRUE(fs::is_symlink(small.Path("special.ini")));
  EXPECT_TRUE(Holds(FileText(small.root.Path("elsewhere.ini")), "count=3"));
  EXPECT_TRUE(Holds(small.Text("Spline.INI"), "count=9"));
  EXPECT_FALSE(fs::exists(small.Path("spline.ini")));
}
