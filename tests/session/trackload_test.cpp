// Loads of a track that don't go as they should, and what the editor is worth afterwards.

#include "session/editsession.h"
#include "support/reportcapture.h"
#include "track/rtrackvrml.h"

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>

namespace {

class TrackLoad : public testing::Test
{
protected:
  TrackLoad() { session.WriteTrack("oval"); }
  void WriteFile(const char* leaf, const std::string& text) { std::ofstream(session.TrackFile("oval", leaf)) << text; }
  void WriteRoads(int count)
  {
    std::string text = "objects\n{\n";
    for (int i = 0; i < count; ++i)
      text += "  road" + std::to_string(i) + "\n  {\n    file=road.dof\n  }\n";
    WriteFile("geometry.ini", text + "}\n");
  }
  int Nodes() { return session.State().curTrack->nodes.Count(); }
  EditSession session;
};

TEST_F(TrackLoad, ACancelledLoadShowsWhatItHasAndIsNotSaved)
{
  WriteRoads(5);
  const std::string before = FileText(session.TrackFile("oval", "geometry.ini"));
  session.Start();
  session.Answer("\x1b");
  ASSERT_TRUE(session.LoadTrack("oval"));
  ASSERT_EQ(1u, session.Dialogs().size());
  EXPECT_EQ(0u, session.LastDialog().find("Loading: "));
  EXPECT_GT(Nodes(), 0);
  EXPECT_LT(Nodes(), 5);
  session.Answer("");
  session.Key(QMOD_SHIFT | 'S');
  EXPECT_EQ("Error: Can't save track!", session.LastDialog());
  EXPECT_EQ(before, FileText(session.TrackFile("oval", "geometry.ini")));

  session.Answer("");
  session.Key(QMOD_SHIFT | 'L');
  EXPECT_EQ(5, Nodes());
  session.Answer("");
  session.Key(QMOD_SHIFT | 'S');
  EXPECT_EQ("Save track: Track saved succesfully.", session.LastDialog());
}

TEST_F(TrackLoad, ATrackThatVanishesCanNeitherBeSavedNorHarmTheEditor)
{
  session.WriteTrack("second");
  session.Start();
  ASSERT_TRUE(session.LoadTrack("oval"));
  std::filesystem::remove_all(session.TrackFile("oval", ""));
  session.Answer("");
  session.Key(QMOD_SHIFT | 'S');
  EXPECT_EQ("Error: Can't save track!", session.LastDialog());
  EXPECT_TRUE(session.HudHas("Grid positions: 2"));
  session.Answer("second");
  session.Key(QMOD_SHIFT | 'T');
  EXPECT_TRUE(session.State().trackReady);
  EXPECT_EQ("second", session.State().curTrack->trackName);
}

TEST_F(TrackLoad, PhysicalMaterialsAreReportedOnceEach)
{
  WriteFile("track.shd", "shader_a\n{\n  material=gravel\n  layer0\n  {\n    map=a.tga\n  }\n}\n"
                         "shader_b\n{\n  material=gravel\n  layer0\n  {\n    map=a.tga\n  }\n}\n"
                         "shader_c\n{\n  layer0\n  {\n    map=a.tga\n  }\n}\n");
  session.Start();
  ReportCapture reports;
  ASSERT_TRUE(session.LoadTrack("oval"));
  EXPECT_EQ(1, reports.Count("Material 'gravel' does not exist."));
  EXPECT_EQ(1, reports.Count("does not exist."));
}

} // namespace
