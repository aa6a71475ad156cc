#include "platform/qsoundfile.h"

#include "foundation/qfile.h"
#include "fuzzing/sound.h"
#include "platform/soundbytes.h"
#include "support/tempdir.h"

#include <filesystem>
#include <gtest/gtest.h>

namespace {

void PutU32(SoundBytes& bytes, size_t at, uint32_t value)
{
  for (size_t i = 0; i < 4; ++i)
    bytes[at + i] = static_cast<std::byte>(value >> 8 * i);
}

SoundBytes OggBytes()
{
  TempDir dir;
  WriteOgg(dir.Path("tone.ogg"), 6000, 440);
  SoundBytes bytes;
  EXPECT_TRUE(QReadFile(dir.Path("tone.ogg"), bytes));
  return bytes;
}

TEST(SoundFile, ChannelsAreMixedToOne)
{
  QSoundData data;
  std::string reason;
  ASSERT_TRUE(QDecodeSound(WavBytes({8000, 2000}, 100, 32000), data, reason)) << reason;
  EXPECT_EQ(32000, data.frequency);
  ASSERT_EQ(100u, data.samples.size());
  EXPECT_NEAR(5000, data.samples[50], 1);
  EXPECT_FALSE(data.cut);
}

TEST(SoundFile, OggIsRead)
{
  QSoundData data;
  std::string reason;
  ASSERT_TRUE(QDecodeSound(OggBytes(), data, reason)) << reason;
  EXPECT_EQ(22050, data.frequency);
  EXPECT_EQ(6000u, data.samples.size());
  EXPECT_FALSE(data.cut);
  int64_t square = 0;
  for (const int16_t s : data.samples)
    square += s * s;
  EXPECT_NEAR(0.5 * std::sqrt(0.5) * 32767, std::sqrt(double(square) / 6000), 300);
}

TEST(SoundFile, EveryShortenedFileIsToldAndEndsCleanly)
{
  for (const SoundBytes& whole : {WavBytes({1000, -1000}, 40), OggBytes()}) {
    for (size_t length = 0; length < whole.size(); ++length) {
      SCOPED_TRACE(length);
      // A block of just this size, so that the address sanitizer sees one byte too many.
      const SoundBytes part(whole.begin(), whole.begin() + std::ptrdiff_t(length));
      QSoundData data;
      std::string reason;
      if (QDecodeSound(part, data, reason))
        EXPECT_TRUE(data.cut);
      else
        EXPECT_NE("", reason);
    }
  }
}

TEST(SoundFile, HeadersThatLie)
{
  const struct
  {
    const char* what;
    size_t at;
    uint32_t value;
    bool plays; // what is there
  } cases[] = {
      {"data of 4 GB", 40, 0xFFFFFFF0, true},
      {"no data", 40, 0, false},
      {"a header of 2 GB", 16, 0x7FFFFFFF, false},
      {"65,535 channels", 20, 0xFFFF0001, false},
      {"no channels", 20, 1, false},
      {"a rate of 0", 24, 0, false},
      {"a rate of 2 GHz", 24, 0x7FFFFFFF, false},
      {"an unknown coding", 20, 0x0001EEEE, false},
      {"samples of 255 bits", 32, 0x00FF0002, false},
      {"not RIFF", 0, 0x12345678, false},
      {"not WAVE", 8, 0x12345678, false},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    SoundBytes bytes = WavBytes({1000}, 50);
    PutU32(bytes, c.at, c.value);
    QSoundData data;
    std::string reason;
    EXPECT_EQ(c.plays, QDecodeSound(bytes, data, reason));
    EXPECT_EQ(c.plays, data.cut);
    EXPECT_EQ(c.plays, reason.empty()) << reason;
    EXPECT_LE(data.samples.size(), 50u);
  }
}

TEST(SoundFile, FuzzCorpus)
{
  int count = 0;
  for (const auto& entry : std::filesystem::directory_iterator(PAVEX_SOURCE_DIR "/fuzzing/corpus/sound")) {
    SCOPED_TRACE(entry.path().string());
    std::string bytes;
    ASSERT_TRUE(QReadFile(entry.path().string(), bytes));
    FuzzSound(bytes);
    ++count;
  }
  EXPECT_GT(count, 0);
}

} // namespace
