#include "platform/qsoundfile.h"

#include "foundation/qbytes.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <memory>
#include <sndfile.h>
#include <string_view>

namespace {

constexpr int MIN_FREQUENCY = 1000;
constexpr int MAX_FREQUENCY = 192000;
constexpr size_t BLOCK = 65536; // samples of all channels that are decoded at a time

// The content as the library reads it.
struct Content
{
  std::span<const std::byte> bytes;
  sf_count_t at = 0;

  sf_count_t Size() const { return static_cast<sf_count_t>(bytes.size()); }
};

sf_count_t Length(void* user)
{
  return static_cast<Content*>(user)->Size();
}

sf_count_t Seek(sf_count_t offset, int whence, void* user)
{
  Content& content = *static_cast<Content*>(user);
  const sf_count_t base = whence == SEEK_SET ? 0 : whence == SEEK_CUR ? content.at : content.Size();
  // What lies outside is refused; the sum can't wrap, since base is never below 0 and never above the size.
  if (offset < -base || offset > content.Size() - base)
    return -1;
  content.at = base + offset;
  return content.at;
}

sf_count_t Read(void* to, sf_count_t count, void* user)
{
  Content& content = *static_cast<Content*>(user);
  const sf_count_t n = std::clamp<sf_count_t>(count, 0, content.Size() - content.at);
  std::copy_n(content.bytes.begin() + content.at, n, static_cast<std::byte*>(to));
  content.at += n;
  return n;
}

sf_count_t Write(const void*, sf_count_t, void*)
{
  return 0;
}

sf_count_t Tell(void* user)
{
  return static_cast<Content*>(user)->at;
}

bool BeginsWith(std::span<const std::byte> bytes, std::string_view text)
{
  return QByteReader(bytes).GetText(text.size()) == text;
}

// The library shortens what a cut header promises, and says nothing.
bool WavIsCut(std::span<const std::byte> file)
{
  QByteReader reader(file);
  reader.Skip(12);
  while (reader.Left() >= 8) {
    const bool isData = reader.GetText(4) == "data";
    const uint32_t size = reader.GetU32();
    if (size > reader.Left())
      return true;
    if (isData)
      return false;
    reader.Skip(size_t{size} + (size & 1)); // chunks begin at even places
  }
  return true;
}

// Pages follow each other to one that is marked as the last.
bool OggIsCut(std::span<const std::byte> file)
{
  constexpr uint8_t LAST_PAGE = 4;
  QByteReader reader(file);
  bool ended = false;
  while (reader.Left() > 0) {
    if (reader.GetText(4) != "OggS")
      return !ended; // something hangs behind, such as a tag
    reader.Skip(1);
    ended = reader.GetU8() & LAST_PAGE;
    reader.Skip(20);
    size_t size = 0;
    const auto lengths = reader.Take(reader.GetU8());
    for (const std::byte length : lengths)
      size += std::to_integer<size_t>(length);
    if (reader.Failed() || size > reader.Left())
      return true;
    reader.Skip(size);
  }
  return !ended;
}

int16_t Sample(float value)
{
  if (!(value > -1)) // not a number too
    return -32767;
  return static_cast<int16_t>(std::lround(std::min(value, 1.0f) * 32767));
}

// False when there are more than MAX_SAMPLES.
bool Mix(SNDFILE* sound, size_t channels, std::vector<int16_t>& samples)
{
  const size_t frames = std::max<size_t>(BLOCK / channels, 1);
  std::vector<float> block(frames * channels);
  const float scale = 1 / static_cast<float>(channels);
  while (true) {
    const sf_count_t got = sf_readf_float(sound, block.data(), static_cast<sf_count_t>(frames));
    if (got <= 0)
      return true;
    if (samples.size() + static_cast<size_t>(got) > QSoundData::MAX_SAMPLES)
      return false;
    for (size_t i = 0; i < static_cast<size_t>(got); ++i) {
      float sum = 0;
      for (size_t k = 0; k < channels; ++k)
        sum += block[i * channels + k];
      samples.push_back(Sample(sum * scale));
    }
  }
}

} // namespace

bool QDecodeSound(std::span<const std::byte> file, QSoundData& out, std::string& reason)
{
  out = {};
  const bool isWav = BeginsWith(file, "RIFF") && file.size() >= 12 && BeginsWith(file.subspan(8), "WAVE");
  if (!isWav && !BeginsWith(file, "OggS")) {
    reason = "neither a WAV nor an OGG file";
    return false;
  }
  SF_VIRTUAL_IO calls = {Length, Seek, Read, Write, Tell};
  Content content{file};
  SF_INFO info = {};
  const std::unique_ptr<SNDFILE, int (*)(SNDFILE*)> sound(sf_open_virtual(&calls, SFM_READ, &info, &content), sf_close);
  if (!sound) {
    reason = sf_strerror(nullptr);
    return false;
  }
  if (info.channels < 1 || info.samplerate < MIN_FREQUENCY || info.samplerate > MAX_FREQUENCY) {
    reason = "a rate of " + std::to_string(info.samplerate) + " samples a second";
    return false;
  }
  out.frequency = info.samplerate;
  if (!Mix(sound.get(), static_cast<size_t>(info.channels), out.samples)) {
    reason = "more than " + std::to_string(QSoundData::MAX_SAMPLES) + " samples";
    return false;
  }
  if (out.samples.empty()) {
    reason = "no samples";
    return false;
  }
  out.cut = isWav ? WavIsCut(file) : OggIsCut(file);
  return true;
}
