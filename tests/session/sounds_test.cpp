// Ambient sounds in the whole editor, heard by a sound system that records.

#include "session/editsession.h"

#include "foundation/qinfo.h"
#include "support/recordingsound.h"
#include "support/reportcapture.h"
#include "track/rtrackvrml.h"

#include <fstream>
#include <gtest/gtest.h>

namespace {

TEST(Sounds, ArePlacedHeardSavedAndFoundAgain)
{
  RecordedSound sound;
  EditSession session;
  session.WriteTrack("oval");
  session.Start();
  ASSERT_TRUE(session.LoadTrack("oval"));
  session.Key(QKEY_F1 + 5);
  EXPECT_TRUE(session.HudHas("Current audio: <none selected>"));
  session.LookDownOn({3, 20, 2});
  session.ShiftDrag(640, 400, 660, 380);
  const EditState& state = session.State();

  session.Answer("lark.wav");
  session.Answer("");
  session.ClickOn("QButton", "Create source at camera");
  EXPECT_TRUE(session.HudHas("Current audio: #0 (lark.wav)"));
  session.Answer("frog.ogg");
  session.Answer("");
  session.ClickOn("QButton", "Create source at selection");
  session.Answer("55");
  session.ClickOn("QButton", "Edit radius");
  ASSERT_EQ(2, state.curTrack->audio.Count());

  const SoundRecord::Channel* lark = sound.LastOf("data/tracks/oval/lark.wav");
  const SoundRecord::Channel* frog = sound.LastOf("data/tracks/oval/frog.ogg");
  ASSERT_TRUE(lark && frog);
  EXPECT_EQ(DVector3(3, 20, 2), sound.listener);
  EXPECT_EQ(DVector3(0, 0, 1), sound.forward);
  EXPECT_EQ(0, sound.rolloff);
  EXPECT_FLOAT_EQ(1, lark->volume);
  EXPECT_NEAR(1 - 20.0f * 20 / (55 * 55), frog->volume, 0.001f);
  EXPECT_EQ(state.pickStart, frog->position);
  session.State().camera.transform.pos = {3, 200, 2};
  session.Frames(1);
  EXPECT_EQ(0, lark->volume + frog->volume) << "both are out of reach";
  EXPECT_FALSE(lark->ended || frog->ended);

  session.Key(QKEY_PGUP);
  EXPECT_TRUE(session.HudHas("Current audio: #0 (lark.wav)"));
  session.ClickOn("QButton", "Goto source");
  EXPECT_EQ(DVector3(3, 20, 2), state.camera.transform.pos);
  EXPECT_EQ(90, state.camera.transform.pitch) << "angles stay";
  session.Answer("wren.wav");
  session.ClickOn("QButton", "Select sample");
  EXPECT_TRUE(lark->ended);
  session.Frames(1);
  EXPECT_NE(nullptr, sound.LastOf("data/tracks/oval/wren.wav"));
  session.ClickOn("QButton", "Move audio to selection");
  EXPECT_EQ(state.pickStart, (*state.curTrack->audio.At(0))->pos);

  session.Answer(""); // closes the message
  session.Key(QMOD_SHIFT | 'S');
  QInfo special(session.TrackFile("oval", "special.ini"));
  EXPECT_EQ(2, special.GetInt("audio.count"));
  EXPECT_STREQ("wren.wav", special.GetStringDirect("audio.source0.sample"));
  EXPECT_EQ(30, special.GetFloat("audio.source0.radius"));
  EXPECT_STREQ("frog.ogg", special.GetStringDirect("audio.source1.sample"));
  EXPECT_EQ(55, special.GetFloat("audio.source1.radius"));

  ASSERT_TRUE(session.LoadTrack("oval"));
  EXPECT_TRUE(frog->ended) << "the old track's sounds went with it";
  EXPECT_TRUE(session.HudHas("Current audio: <none selected>"));
  ASSERT_EQ(2, state.curTrack->audio.Count());
  EXPECT_LT(glm::distance(state.pickStart, (*state.curTrack->audio.At(1))->pos), 1e-5f);
  session.Key(QKEY_PGDN);
  EXPECT_TRUE(session.HudHas("Current audio: #0 (wren.wav)"));
  session.Stop();
  EXPECT_EQ("Close", sound.calls.back()) << "all sounds are given back before";
  for (const auto& [number, channel] : sound.channels)
    EXPECT_TRUE(channel.ended);
}

TEST(Sounds, RolloffIsReadFromTheProgramsSettings)
{
  RecordedSound sound;
  EditSession session;
  session.WriteTrack("oval");
  std::ofstream("torvik.ini") << "audio\n{\n  rolloff_factor=0.4\n  voices=9\n}\n";
  session.Start();
  ASSERT_TRUE(session.LoadTrack("oval"));
  session.Frames(1);
  EXPECT_FLOAT_EQ(0.4f, sound.rolloff);
  EXPECT_EQ(1, sound.Calls("Init 9"));
  EXPECT_EQ(1, sound.doppler);
}

TEST(Sounds, AMachineWithoutADeviceIsToldOnceAndTheEditorWorks)
{
  RecordedSound sound;
  sound.noDevice = true;
  ReportCapture reports;
  EditSession session;
  session.WriteTrack("oval");
  session.Start();
  ASSERT_TRUE(session.LoadTrack("oval"));
  session.Key(QKEY_F1 + 5);
  session.Answer("nowhere.wav");
  session.Answer("");
  session.ClickOn("QButton", "Create source at camera");
  session.Frames(3);
  EXPECT_TRUE(session.HudHas("Current audio: #0 (nowhere.wav)"));
  EXPECT_EQ(1, reports.Count("FMOD"));
  EXPECT_FALSE(reports.Contains("nowhere.wav"));
}

TEST(Sounds, ASampleThatCantBePlayedIsReportedOnceAndStaysARecord)
{
  RecordedSound sound;
  sound.badFiles = {"data/tracks/oval/bad.wav"};
  EditSession session;
  session.WriteTrack("oval");
  session.Start();
  ASSERT_TRUE(session.LoadTrack("oval"));
  session.Key(QKEY_F1 + 5);
  ReportCapture reports;
  session.Answer("bad.wav");
  session.Answer("");
  session.ClickOn("QButton", "Create source at camera");
  session.Frames(5);
  EXPECT_EQ(1, reports.Count("QSample:Load(); can't load 'data/tracks/oval/bad.wav': no such sound"));
  EXPECT_EQ(1, reports.Problems());
  EXPECT_EQ(1, session.State().curTrack->audio.Count());
  EXPECT_TRUE(sound.channels.empty());
}

} // namespace
