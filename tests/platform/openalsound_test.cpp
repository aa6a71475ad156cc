// The sound system plays into memory: what is heard there is measured.

#include "platform/qopenalsound.h"

#include "foundation/qinfo.h"
#include "platform/soundbytes.h"
#include "runtime/raudio.h"
#include "support/reportcapture.h"
#include "support/tempdir.h"

#include <gtest/gtest.h>

#include <utility>

namespace {

class OpenALSoundTest : public testing::Test
{
protected:
  OpenALSoundTest()
  {
    auto made = QOpenALSound::OpenMemory();
    sound = made.get();
    QTheSoundHooks().createSystem = [&made] { return std::move(made); };
    audio = std::make_unique<RAudio>(QInfo("test", QInfo::NO_READ | QInfo::NO_OPEN_WARNING));
    QTheSoundHooks().createSystem = nullptr;
    // An even hum is heard whole wherever the listener begins, and its peak is its loudness.
    const SoundBytes wav = WavBytes({16000}, 4410);
    path = dir.Write("hum.wav", {reinterpret_cast<const char*>(wav.data()), wav.size()});
  }
  ~OpenALSoundTest() override { QSampleCloseSystem(); }

  // Loudness left and right, after a moment that lets changes settle.
  std::pair<float, float> Heard(int frames = 8192)
  {
    std::vector<float> stereo(static_cast<size_t>(frames) * 2);
    sound->Render(stereo);
    const size_t from = stereo.size() / 2;
    float left = 0, right = 0;
    for (size_t i = from; i < stereo.size(); i += 2) {
      left = std::max(left, std::abs(stereo[i]));
      right = std::max(right, std::abs(stereo[i + 1]));
    }
    return {left, right};
  }

  TempDir dir;
  std::string path;
  QOpenALSound* sound = nullptr; // the process'
  std::unique_ptr<RAudio> audio;
};

TEST_F(OpenALSoundTest, FadesByTheInverseOfTheDistance)
{
  const auto producer = audio->MakeProducer(path);
  for (const float rolloff : {1.0f, 0.5f, 0.0f}) {
    float near = 0;
    producer->SetPosition({0, 0, 1});
    producer->Start(true, 1);
    for (const float d : {1.0f, 0.25f, 2.0f, 5.0f, 40.0f}) {
      SCOPED_TRACE(testing::Message() << "rolloff " << rolloff << ", distance " << d);
      producer->SetPosition({0, 0, d});
      audio->SetListener({0, 0, 0}, rolloff);
      const float heard = Heard().first;
      if (d == 1)
        near = heard;
      ASSERT_GT(near, 0.1f);
      EXPECT_NEAR(1 / (1 + rolloff * (std::max(d, 1.0f) - 1)), heard / near, 0.002f);
    }
  }
}

TEST_F(OpenALSoundTest, VolumeIsKeptBetweenNoneAndFull)
{
  const auto producer = audio->MakeProducer(path);
  producer->SetPosition({0, 0, 5});
  producer->Start(true, 1);
  audio->SetListener({0, 0, 0}, 0);
  const float full = Heard().first;
  const struct
  {
    float volume, part;
  } cases[] = {{0.5f, 0.5f}, {0, 0}, {7, 1}, {-1, 0}, {NAN, 0}, {0.25f, 0.25f}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.volume);
    producer->SetVolume(c.volume);
    EXPECT_NEAR(c.part, Heard().first / full, 0.002f);
  }
}

TEST_F(OpenALSoundTest, LeftAndRightFollowTheListenersTurn)
{
  const auto producer = audio->MakeProducer(path);
  producer->Start(true, 1);
  const struct
  {
    DVector3 source, forward;
    int side; // where it is louder
  } cases[] = {
      {{10, 0, 0}, {0, 0, 1}, 1},  {{10, 0, 0}, {0, 0, -1}, -1}, {{10, 0, 0}, {1, 0, 0}, 0},
      {{10, 0, 0}, {-1, 0, 0}, 0}, {{0, 0, 10}, {1, 0, 0}, -1},  {{0, 0, 10}, {-1, 0, 0}, 1},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::Message() << c.source.x << ", forward " << c.forward.x << " " << c.forward.z);
    producer->SetPosition(c.source);
    sound->Set3DListenerAttributes({0, 0, 0}, {0, 0, 0}, c.forward, {0, 1, 0});
    const auto [left, right] = Heard();
    if (c.side > 0)
      EXPECT_GT(right, left * 4);
    else if (c.side < 0)
      EXPECT_GT(left, right * 4);
    else
      EXPECT_NEAR(left, right, 0.01f);
  }
}

TEST_F(OpenALSoundTest, ALoopGoesOnAndASingleSoundEnds)
{
  for (const bool loop : {true, false}) {
    SCOPED_TRACE(loop);
    const auto producer = audio->MakeProducer(path);
    producer->Start(loop, 1);
    audio->SetListener({0, 0, 0}, 0);
    Heard(44100); // ten times its length
    audio->SetListener({0, 0, 0}, 0);
    EXPECT_EQ(loop ? 1 : 0, sound->GetChannelCount());
    EXPECT_EQ(loop, Heard().first > 0.1f);
    producer->SetVolume(1); // of one that has ended: ignored
    producer->Stop();
    EXPECT_LT(Heard().first, 0.001f);
  }
}

TEST_F(OpenALSoundTest, PitchChangesTheTone)
{
  WriteOgg(dir.Path("tone.ogg"), 22050, 300);
  const auto producer = audio->MakeProducer(dir.Path("tone.ogg"));
  producer->SetPosition({0, 0, 1});
  producer->Start(true, 1);
  audio->SetListener({0, 0, 0}, 0);
  for (const float pitch : {1.0f, 2.0f}) {
    producer->SetPitch(pitch);
    Heard();
    std::vector<float> stereo(2 * 44100 / 2);
    sound->Render(stereo);
    int crossings = 0;
    for (size_t i = 2; i < stereo.size(); i += 2)
      crossings += (stereo[i - 2] < 0) != (stereo[i] < 0);
    EXPECT_NEAR(300 * pitch, crossings, 12) << "half a second holds as many crossings as the tone has hertz";
  }
}

TEST_F(OpenALSoundTest, OneVoiceTooManyIsRefused)
{
  auto made = QOpenALSound::OpenMemory();
  ASSERT_TRUE(made->Init(2));
  std::string reason;
  const int number = made->CreateSound(path, reason);
  ASSERT_NE(0, number) << reason;
  int error = 0;
  const int first = made->PlaySound(number, true, error);
  EXPECT_NE(0, made->PlaySound(number, true, error));
  EXPECT_EQ(0, made->PlaySound(number, true, error));
  EXPECT_NE(0, error);
  made->Stop(first);
  EXPECT_NE(0, made->PlaySound(number, true, error));
  made->ReleaseSound(number);
  EXPECT_EQ(0, made->GetChannelCount());
  EXPECT_EQ(0, made->PlaySound(number, true, error));
}

TEST_F(OpenALSoundTest, FilesThatCantBePlayedAreReported)
{
  const SoundBytes wav = WavBytes({16000}, 4410);
  const std::string text(reinterpret_cast<const char*>(wav.data()), wav.size());
  const struct
  {
    const char* leaf;
    std::string content;
    const char* report;
    bool plays;
  } cases[] = {
      {"text.wav", "a text that is no sound", "neither a WAV nor an OGG file", false},
      {"empty.wav", "", "neither a WAV nor an OGG file", false},
      {"head.wav", text.substr(0, 44), "no samples", false},
      {"cut.wav", text.substr(0, 3000), "was cut short; what is there will be played", true},
      {"page.ogg", "OggS" + std::string(300, '\xFF'), "can't load", false},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.leaf);
    ReportCapture reports;
    QSample sample;
    EXPECT_EQ(c.plays, sample.Load(dir.Write(c.leaf, c.content)));
    EXPECT_TRUE(reports.Contains(c.report)) << reports.All();
    EXPECT_EQ(1, reports.Problems());
  }
  ReportCapture reports;
  QSample sample;
  EXPECT_FALSE(sample.Load("data/none.wav"));
  EXPECT_EQ("WARN: QSample:Load(); can't load 'data/none.wav': No such file or directory\n", reports.All());
}

} // namespace
