#include "editor/soundsmode.h"

#include "editor/editstate.h"
#include "editor/fakehost.h"
#include "support/recordingoverlay.h"
#include "support/reportcapture.h"
#include "track/rtrackvrml.h"
#include "ui/qkeys.h"

#include <gtest/gtest.h>

namespace {

class SoundsModeTest : public testing::Test
{
protected:
  SoundsModeTest()
  {
    track.trackDir = "data/tracks/none";
    state.curTrack = &track;
    state.pickStart = {1, 2, 3};
    state.camera.transform = {{7, 8, 9}, 10, 20, 30};
  }
  RTrackAudio& Source(int i) { return **track.audio.At(i); }
  void Add(const char* sample, float radius = 5)
  {
    auto source = track.MakeTrackAudio(sample);
    source->radius = radius;
    ASSERT_TRUE(track.AddTrackAudio(std::move(source)));
  }
  // Which sources are marked, a digit each.
  std::string Marks()
  {
    std::string marks;
    for (const auto& source : track.audio)
      marks += source->flags & RTrackAudio::SELECTED ? '1' : '0';
    return marks;
  }
  std::string Hud()
  {
    host.hud.clear();
    mode.ModeHud();
    return host.hud.size() == 1 ? host.hud[0] : "(not one line)";
  }
  RTrackVRML track;
  EditState state;
  FakeHost host;
  SoundsMode mode{state, host};
};

TEST_F(SoundsModeTest, ButtonsStandInTheirOrder)
{
  mode.ModeSetup();
  EXPECT_EQ((std::vector<std::string>{"Create source at camera", "Create source at selection",
                                      "Move audio to selection", "Edit radius", "Goto source", "Select sample"}),
            host.buttons);
}

TEST_F(SoundsModeTest, CreatesAtCameraAndAtSelection)
{
  EXPECT_EQ("Current audio: <none selected>", Hud());
  host.answers = {"birds/lark.wav", "", "frog.wav", ""};
  mode.ModeOp(0);
  mode.ModeOp(1);
  EXPECT_EQ((std::vector<std::string>{
                "Add audio source: Enter filename of sample", "Enter an index: Select audio index (none existing yet)",
                "Add audio source: Enter filename of sample", "Enter an index: Select audio index (0..0) (empty=new)"}),
            host.prompts);
  EXPECT_EQ((std::vector<std::string>{"ambient.wav", "", "ambient.wav", ""}), host.filled);
  ASSERT_EQ(2, track.audio.Count());
  EXPECT_EQ(DVector3(7, 8, 9), Source(0).pos);
  EXPECT_EQ(DVector3(1, 2, 3), Source(1).pos);
  EXPECT_EQ(30, Source(0).radius);
  EXPECT_EQ("birds/lark.wav", Source(0).sample);
  EXPECT_EQ("01", Marks());
  EXPECT_EQ("Current audio: #1 (frog.wav)", Hud());
}

TEST_F(SoundsModeTest, AnExistingIndexMovesThatSourceAndKeepsItsSample)
{
  Add("lark.wav", 80);
  Add("frog.wav", 80);
  host.answers = {"ignored.wav", "0"};
  mode.ModeOp(1);
  ASSERT_EQ(2, track.audio.Count());
  EXPECT_EQ("lark.wav", Source(0).sample);
  EXPECT_EQ(DVector3(1, 2, 3), Source(0).pos);
  EXPECT_EQ(30, Source(0).radius);
  EXPECT_EQ("10", Marks());
}

TEST_F(SoundsModeTest, CancelLeavesAllAsItWas)
{
  Add("lark.wav", 80.5f);
  state.audioIndex = 0;
  const std::deque<std::string> answers[] = {{FakeHost::CANCEL}, {"x.wav", FakeHost::CANCEL}, {"x.wav", "9"}};
  for (const auto& given : answers)
    for (const int op : {0, 1, 3, 5}) {
      SCOPED_TRACE(testing::Message() << given.size() << " " << op);
      host.answers = op > 1 ? std::deque<std::string>() : given;
      mode.ModeOp(op);
      EXPECT_EQ(1, track.audio.Count());
      EXPECT_EQ("lark.wav", Source(0).sample);
      EXPECT_EQ(80.5f, Source(0).radius);
      EXPECT_EQ(DVector3(0.0f), Source(0).pos);
      EXPECT_EQ(0, state.audioIndex);
    }
}

TEST_F(SoundsModeTest, WithoutACurrentSourceNothingIsAsked)
{
  Add("lark.wav");
  for (const int op : {2, 3, 4, 5, 6, -1, 100}) {
    SCOPED_TRACE(op);
    mode.ModeOp(op);
  }
  EXPECT_TRUE(host.prompts.empty());
  EXPECT_EQ(DVector3(0.0f), Source(0).pos);
  EXPECT_EQ(DVector3(7, 8, 9), state.camera.transform.pos);
}

TEST_F(SoundsModeTest, MovesEditsAndGoesToTheCurrentSource)
{
  Add("lark.wav", 44.9f);
  state.audioIndex = 0;
  mode.ModeOp(2);
  EXPECT_EQ(DVector3(1, 2, 3), Source(0).pos);
  host.answers = {"12.7"};
  mode.ModeOp(3);
  EXPECT_EQ("Edit radius: Enter audio radius", host.prompts.back());
  EXPECT_EQ("44", host.filled.back());
  EXPECT_EQ(12, Source(0).radius) << "a fraction is lost";
  mode.ModeOp(4);
  EXPECT_EQ(DVector3(1, 2, 3), state.camera.transform.pos);
  EXPECT_EQ(20, state.camera.transform.yaw);
  for (const float radius : {1e30f, -1e30f, NAN}) {
    Source(0).radius = radius;
    mode.ModeOp(3);
  }
  EXPECT_EQ("0", host.filled.back());
}

TEST_F(SoundsModeTest, ANewSampleTakesTheOldOnesPlace)
{
  Add("birds/lark.wav");
  Add("frog.wav", 77);
  Source(1).pos = {4, 5, 6};
  state.audioIndex = 1;
  host.answers = {"toad.ogg"};
  mode.ModeOp(5);
  EXPECT_EQ("Add audio source: Enter filename of sample", host.prompts.back());
  EXPECT_EQ("frog.wav", host.filled.back());
  ASSERT_EQ(2, track.audio.Count());
  EXPECT_EQ("toad.ogg", Source(1).sample);
  EXPECT_EQ(DVector3(4, 5, 6), Source(1).pos);
  EXPECT_EQ(77, Source(1).radius);
  EXPECT_EQ("01", Marks());
  EXPECT_EQ("Current audio: #1 (toad.ogg)", Hud());
  state.audioIndex = 0;
  host.answers = {"lark.wav"}; // as it stood in the field
  mode.ModeOp(5);
  EXPECT_EQ("birds/lark.wav", Source(0).sample);
}

TEST_F(SoundsModeTest, PageKeysStopAtBothEnds)
{
  EXPECT_FALSE(mode.ModeKey(QKEY_PGDN));
  EXPECT_FALSE(mode.ModeKey(QKEY_PGUP));
  EXPECT_EQ(-1, state.audioIndex) << "there is none";
  for (const char* sample : {"a.wav", "b.wav", "c.wav"})
    Add(sample);
  const struct
  {
    int key;
    const char* marks;
  } steps[] = {{QKEY_PGUP, "100"}, {QKEY_PGUP, "100"}, {QKEY_PGDN, "010"},
               {QKEY_PGDN, "001"}, {QKEY_PGDN, "001"}, {QKEY_PGUP, "010"}};
  for (const auto& step : steps) {
    EXPECT_FALSE(mode.ModeKey(step.key)) << "the global key runs too";
    EXPECT_EQ(step.marks, Marks());
  }
}

TEST_F(SoundsModeTest, TheHundredAndFirstIsRefused)
{
  for (int i = 0; i < 100; ++i)
    Add("a.wav");
  state.audioIndex = 3;
  host.answers = {"b.wav", ""};
  ReportCapture reports;
  mode.ModeOp(0);
  EXPECT_EQ("WARN: RTrack:AddTrackAudio(); max (100) exceeded\n", reports.All());
  EXPECT_EQ(100, track.audio.Count());
  EXPECT_EQ(3, state.audioIndex);
  EXPECT_EQ(DVector3(0.0f), Source(3).pos);
}

TEST_F(SoundsModeTest, PaintsTheReachOfEachSource)
{
  Add("a.wav", 4);
  Add("b.wav", 9);
  mode.ModeKey(QKEY_PGDN);
  RecordingOverlay overlay;
  mode.ModePaint(overlay);
  ASSERT_EQ(2u, overlay.items.size());
  EXPECT_EQ(0xFFB4B4FF, overlay.items[0].style.color.GetRGBA());
  EXPECT_EQ(0xFF0000FF, overlay.items[1].style.color.GetRGBA());
  for (const DVector3& point : overlay.items[1].points) {
    EXPECT_NEAR(9, glm::length(point), 1e-4f);
    EXPECT_EQ(0, point.y);
  }
}

} // namespace
