#include "runtime/raudio.h"

#include "foundation/qinfo.h"
#include "support/recordingsound.h"
#include "support/reportcapture.h"

#include <gtest/gtest.h>

namespace {

using Calls = std::vector<std::string>;

// Starts the system from the keys below "audio", one a line.
void Create(const char* keys)
{
  QInfo info("test", QInfo::NO_READ | QInfo::NO_OPEN_WARNING);
  info.ReadFromText(std::string("audio\n{\n") + keys + "\n}\n");
  QSampleCreateSystem(info, "audio");
}

TEST(AudioSetup, GoesStepByStepAndNamesTheDrivers)
{
  RecordedSound sound;
  ReportCapture reports;
  Create("driver=1\nvoices=12\nfrequency=48000\nbuffersize=512\nbuffers=3\nspeakermode=quad");
  EXPECT_EQ((Calls{"SetDriver 1", "SetDSPBufferSize 512 3", "SetSoftwareFormat 48000", "SetSpeakerMode 2", "Init 12"}),
            sound.calls);
  EXPECT_EQ("LOG: FMOD: 2 drivers found\nLOG: Driver 0: 'Speakers'\nLOG: Driver 1: 'Headset'\n", reports.All());
  EXPECT_NE(nullptr, QSampleSystem());
  Create("");
  EXPECT_EQ(1, sound.Calls("Init 12")) << "the system of the process stays";
  QSampleCloseSystem();
  EXPECT_EQ("Close", sound.calls.back());
}

TEST(AudioSetup, NumbersThatNoDeviceTakesAreCapped)
{
  RecordedSound sound;
  Create("driver=7\nvoices=-1\nfrequency=1\nbuffersize=0\nbuffers=9999999");
  EXPECT_EQ((Calls{"SetDriver 0", "SetDSPBufferSize 64 16", "SetSoftwareFormat 8000", "SetSpeakerMode 1", "Init 1"}),
            sound.calls);
}

TEST(AudioSetup, ASlowDriverGetsManyBuffers)
{
  RecordedSound sound;
  sound.accelerated = false;
  ReportCapture reports;
  Create("buffersize=512");
  EXPECT_EQ(1, sound.Calls("SetDSPBufferSize 1024 10"));
  EXPECT_TRUE(reports.Contains("FMOD: audio hardware acceleration is OFF. This is really bad for latency; adjusting "
                               "audio buffers."));
}

TEST(AudioSetup, TypesOfOutput)
{
  const struct
  {
    const char* keys;
    bool sounds;
    const char* report;
  } cases[] = {
      {"", true, "LOG: FMOD: 2"},
      {"type=wasapi", true, "LOG: FMOD: 2"},
      {"type=nosound", false, ""},
      {"enable=0", false, ""},
      {"type=brass", true, "LOG: Audio output 'brass' not recognized"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.keys);
    RecordedSound sound;
    ReportCapture reports;
    Create(c.keys);
    EXPECT_EQ(c.sounds, QSampleSystem() != nullptr);
    EXPECT_TRUE(reports.All().starts_with(c.report)) << reports.All();
  }
  for (const uint32_t version : {QSoundSystem::NEEDED_VERSION, 0u}) {
    RecordedSound sound;
    sound.version = version;
    EXPECT_EXIT(
        {
          QReports().fatalExits = true;
          QReports().exitStatus = 1;
          Create(version ? "type=wav" : "");
        },
        testing::ExitedWithCode(1),
        version ? "FMOD outputtype WAVWRITER is NYI due to setSoftwareFormat\\(\\) problem" : "is of version 00000000");
  }
}

TEST(AudioSetup, AFailingStartIsTriedOnceMoreInStereo)
{
  for (const int failures : {1, 2}) {
    SCOPED_TRACE(failures);
    RecordedSound sound;
    sound.failingInits = failures;
    ReportCapture reports;
    Create("speakermode=7.1\nvoices=5");
    EXPECT_EQ(2, sound.Calls("Init 5"));
    EXPECT_EQ("SetSpeakerMode 1", *(std::find(sound.calls.begin(), sound.calls.end(), "Init 5") + 1));
    EXPECT_TRUE(reports.Contains("FMOD init() error; failed to create output buffer - trying stereo"));
    EXPECT_EQ(failures == 2, reports.Contains("Can't init FMOD (audio system)"));
    EXPECT_EQ(failures == 1, QSampleSystem() != nullptr);
  }
}

TEST(AudioSetup, WithoutADeviceOneReportAndAllGoesOn)
{
  RecordedSound sound;
  sound.noDevice = true;
  ReportCapture reports;
  RAudio audio(QInfo("test", QInfo::NO_READ | QInfo::NO_OPEN_WARNING));
  const auto producer = audio.MakeProducer("nowhere/lark.wav");
  producer->Start(true, 1);
  producer->SetPosition({1, 2, 3});
  producer->SetPitch(2);
  audio.SetListener({1, 2, 3}, 1);
  QSample sample;
  EXPECT_TRUE(sample.Load("nowhere/lark.wav"));
  EXPECT_EQ("ERR: Can't create FMOD system\n", reports.All());
}

TEST(AudioSample, IsSetUpBeforeItIsHeard)
{
  RecordedSound sound;
  RAudio audio(QInfo("test", QInfo::NO_READ | QInfo::NO_OPEN_WARNING));
  const auto producer = audio.MakeProducer("birds/lark.wav");
  EXPECT_EQ("lark.wav", producer->GetName());
  sound.calls.clear();
  producer->SetPosition({1, 2, 3});
  producer->Start(true, 0.25f);
  EXPECT_EQ((Calls{"PlaySound paused", "SetMode 3", "SetVolume", "SetPaused not"}), sound.calls);
  ASSERT_NE(nullptr, sound.LastOf("birds/lark.wav"));
  const SoundRecord::Channel& channel = *sound.LastOf("birds/lark.wav");
  EXPECT_EQ(0.25f, channel.volume);
  EXPECT_EQ(DVector3(1, 2, 3), channel.position);
  producer->SetPitch(0.5f);
  EXPECT_EQ(11025, channel.frequency);
  producer->Start(false, 1);
  EXPECT_EQ(1, sound.Calls("Stop")) << "one source is heard once";
  EXPECT_EQ(uint32_t{QSoundSystem::POSITIONED}, sound.LastOf("birds/lark.wav")->mode);
}

TEST(AudioSample, OneCopyOfAFileServesAllWhoPlayIt)
{
  RecordedSound sound;
  RAudio audio(QInfo("test", QInfo::NO_READ | QInfo::NO_OPEN_WARNING));
  auto one = audio.MakeProducer("lark.wav");
  auto two = audio.MakeProducer("lark.wav");
  EXPECT_EQ(1, sound.Calls("CreateSound lark.wav"));
  one->Start(true, 1);
  two->Start(true, 1);
  one.reset();
  EXPECT_EQ(1, sound.Calls("Stop"));
  EXPECT_EQ(0, sound.Calls("ReleaseSound lark.wav"));
  two.reset();
  EXPECT_EQ(1, sound.Calls("ReleaseSound lark.wav"));
  one = audio.MakeProducer("lark.wav");
  EXPECT_EQ(2, sound.Calls("CreateSound lark.wav")) << "the file may be another by now";
  QSampleCloseSystem(); // ahead of what plays
  one->SetVolume(1);
}

TEST(AudioSample, FailuresAreReportedAndSilent)
{
  RecordedSound sound;
  sound.badFiles = {"bad.wav"};
  ReportCapture reports;
  RAudio audio(QInfo("test", QInfo::NO_READ | QInfo::NO_OPEN_WARNING));
  reports.Clear();
  const auto bad = audio.MakeProducer("bad.wav");
  const auto again = audio.MakeProducer("bad.wav");
  bad->Start(true, 1);
  EXPECT_EQ("WARN: QSample:Load(); can't load 'bad.wav': no such sound\n", reports.All());
  sound.playFails = true;
  audio.MakeProducer("good.wav")->Start(true, 1);
  EXPECT_TRUE(reports.Contains("QSample:Play(good.wav); can't play sound [fmod_err 77]"));
  EXPECT_TRUE(sound.channels.empty());
}

TEST(AudioListener, StandsAtTheCameraAndFacesAlongZ)
{
  RecordedSound sound;
  RAudio audio(QInfo("test", QInfo::NO_READ | QInfo::NO_OPEN_WARNING));
  audio.SetListener({4, 5, 6}, 0.5f);
  EXPECT_EQ(DVector3(4, 5, 6), sound.listener);
  EXPECT_EQ(DVector3(0, 0, 1), sound.forward);
  EXPECT_EQ(DVector3(0, 1, 0), sound.up);
  EXPECT_EQ(1, sound.doppler);
  EXPECT_EQ(1, sound.distanceFactor);
  EXPECT_EQ(0.5f, sound.rolloff);
  EXPECT_EQ(1, sound.updates);
}

} // namespace
