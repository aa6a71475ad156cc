#include "support/reportcapture.h"
#include "track/rfindfile.h"
#include "track/smalltrack.h"

#include <cstdlib>
#include <gtest/gtest.h>

TEST(TrackIdentity, TakesDefaultsForWhatTheFileLeavesOut)
{
  SmallTrack small;
  small.Write("track.ini", "track\n{\n  name=A Name\n}\n");
  ReportCapture reports;
  const auto track = small.Load();
  ASSERT_TRUE(track);
  EXPECT_EQ("A Name", track->name);
  EXPECT_EQ("vrml", track->type);
  EXPECT_EQ("049f", track->version);
  EXPECT_EQ("unknown_track", track->id);
  EXPECT_EQ("data/tracks/small", track->Directory());
  EXPECT_FALSE(reports.Contains("is invalid")) << reports.All();
  EXPECT_TRUE(reports.Contains("Loading track 'small'"));
}

TEST(TrackIdentity, RefusesBadIDsAndLoadsOn)
{
  const std::string longest(32, 'x');
  const struct
  {
    std::string id;
    const char* kept; // null: refused
    const char* report;
  } cases[] = {
      {"Spa_2004", "Spa_2004", nullptr},
      {longest, longest.c_str(), nullptr},
      {longest + "x", nullptr, "is too long. Max is 32 chars"},
      {"two words", nullptr, "ID 'two words' contains invalid chars; only use AZaz09_"},
      {"", nullptr, "ID '' invalid; empty"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.id);
    SmallTrack small;
    small.Write("track.ini", "track\n{\n  id=" + c.id + "\n}\n");
    ReportCapture reports;
    const auto track = small.Load();
    ASSERT_TRUE(track);
    EXPECT_EQ(c.kept ? c.kept : "unknown_track", track->id);
    EXPECT_EQ(c.report != nullptr, reports.Contains("RTrack: id '" + c.id + "' is invalid"));
    if (c.report) {
      EXPECT_TRUE(reports.Contains(c.report)) << reports.All();
    }
  }
}

TEST(TrackIdentity, IsNoTrackWithoutItsFile)
{
  SmallTrack small;
  ReportCapture reports;
  RTrackVRML track;
  track.SetName("nowhere");
  EXPECT_FALSE(track.Load());
  EXPECT_TRUE(reports.Contains("Can't find track.ini for track nowhere"));
  EXPECT_TRUE(reports.Contains("RTrack:Load() failed\n"));
}

TEST(FindFile, TakesTheFirstPlaceThatHasTheFile)
{
  SmallTrack small;
  const TempDir elsewhere;
  elsewhere.Write("dir/e", "");
  elsewhere.Write("back/f", "");
  for (const char* path : {"a", "dir/a", "dir/b", "back/b", "back/c"})
    small.root.Write(path, "");
  std::filesystem::create_directory(small.root.Path("d"));
  ::setenv("TORVIK", elsewhere.Path().c_str(), 1);
  const struct
  {
    const char* file;
    std::string found;
  } cases[] = {
      {"a", "a"},
      {"b", "dir/b"},
      {"c", "back/c"},
      {"d", "dir/d"}, // a directory is no file
      {"e", elsewhere.Path("dir/e")},
      {"f", elsewhere.Path("back/f")},
      {"nowhere", "dir/nowhere"},
  };
  for (const auto& c : cases)
    EXPECT_EQ(c.found, RFindFile(c.file, "dir", "back"));
  ::unsetenv("TORVIK");
  EXPECT_STREQ("dir/c", RFindFile("c", "dir", nullptr));
  EXPECT_STREQ("dir/e", RFindFile("e", "dir", "back"));
}

TEST(FindFile, LetsNoPathLeadOutside)
{
  for (const char* good : {"", "a.dof", "dofs/a.dof", "a/../b", "./a", "..a/b..", "a\\..\\b"})
    EXPECT_TRUE(RStaysInside(good)) << good;
  for (const char* bad : {"/etc/passwd", "..", "../a", "a/../../b", "a\\..\\..\\b", "\\a"})
    EXPECT_FALSE(RStaysInside(bad)) << bad;
}

TEST(TrackLines, AreReachedWithinTheTable)
{
  RTrack track;
  EXPECT_EQ(0, track.GetLastTimeLine());
  track.flags = RTrack::POINT_TO_POINT;
  EXPECT_EQ(-1, track.GetLastTimeLine());
  ASSERT_TRUE(track.timeLines.Add(std::make_unique<RTimeLine>()));
  ASSERT_TRUE(track.timeLines.Add(std::make_unique<RTimeLine>()));
  EXPECT_EQ(1, track.GetLastTimeLine());
  ReportCapture reports;
  EXPECT_EQ(track.timeLines.At(1)->get(), track.GetTimeLine(1));
  EXPECT_EQ(nullptr, track.GetTimeLine(2));
  EXPECT_EQ(nullptr, track.GetTimeLine(-1));
  EXPECT_TRUE(reports.Contains("RTrack:GetTimeLine(2) out of bounds"));
}

TEST(TrackTables, RefuseTheEntryBehindTheLast)
{
  RTrack track;
  for (int i = 0; i < 200; ++i)
    ASSERT_TRUE(track.AddTrackCam(std::make_unique<RTrackCam>()));
  for (int i = 0; i < 400; ++i)
    ASSERT_TRUE(track.AddWayPoint(std::make_unique<RWayPoint>()));
  for (int i = 0; i < 100; ++i)
    ASSERT_TRUE(track.AddTrackAudio(std::make_unique<RTrackAudio>()));
  ReportCapture reports;
  EXPECT_FALSE(track.AddTrackCam(std::make_unique<RTrackCam>()));
  EXPECT_FALSE(track.AddWayPoint(std::make_unique<RWayPoint>()));
  EXPECT_FALSE(track.AddTrackAudio(std::make_unique<RTrackAudio>()));
  EXPECT_EQ("ERR: RTrack:AddTrackCam(); max (200) exceeded\n"
            "WARN: RTrack:AddWayPoint(); max (400) exceeded\n"
            "WARN: RTrack:AddTrackAudio(); max (100) exceeded\n",
            reports.All());
}

TEST(PaceNotes, AreCappedAndKeptByASave)
{
  SmallTrack small;
  small.Write("pacenotes.ini", "pacenotes\n{\n  count=201\n  pacenote1\n  {\n    start=10.5\n    end=20\n"
                               "    image=3.9\n  }\n  author=me\n}\n");
  ReportCapture reports;
  auto track = small.Load();
  ASSERT_TRUE(track && track->paceNotes);
  EXPECT_TRUE(reports.Contains("Pacenotes: file indicates 201 notes, max=200"));
  ASSERT_EQ(200, track->paceNotes->notes.Count());
  EXPECT_EQ(3, track->paceNotes->notes.At(1)->image);
  track->paceNotes->notes.At(0)->end = 7;
  EXPECT_TRUE(track->SavePaceNotes());
  EXPECT_NE(std::string::npos, small.Text("pacenotes.ini").find("author=me"));
  track = small.Load();
  ASSERT_EQ(200, track->paceNotes->notes.Count());
  EXPECT_EQ(7, track->paceNotes->notes.At(0)->end);
  EXPECT_EQ(10.5f, track->paceNotes->notes.At(1)->start);
}

TEST(BestLaps, AreWrittenOnlyWhenMarked)
{
  SmallTrack small;
  auto track = small.Load();
  ASSERT_TRUE(track);
  track->results.best[9] = {83'123, 20260101, "Car", "car_1", 2};
  EXPECT_TRUE(track->SaveBestLaps());
  EXPECT_EQ("", small.Text("bestlaps.ini"));
  track->results.dirty = true;
  EXPECT_TRUE(track->SaveBestLaps());
  EXPECT_FALSE(track->results.dirty);
  track = small.Load();
  EXPECT_EQ(83'123, track->results.best[9].lapTime);
  EXPECT_EQ("car_1", track->results.best[9].carID);
  EXPECT_EQ(0, track->results.best[0].lapTime);
}
