#pragma once

#include "foundation/qbytes.h"

#include <cmath>
#include <functional>
#include <numbers>
#include <sndfile.h>
#include <string>
#include <vector>

using SoundBytes = std::vector<std::byte>;

// A WAV file, 16 bits: the same value in each frame of a channel, -32768 to 32767.
inline SoundBytes WavBytes(const std::vector<int16_t>& channels, uint32_t frames, uint32_t rate = 44100)
{
  const auto count = static_cast<uint32_t>(channels.size());
  QByteWriter out;
  out.PutText("RIFF");
  out.PutU32(36 + frames * count * 2);
  out.PutText("WAVEfmt ");
  out.PutU32(16);
  out.PutU16(1);
  out.PutU16(static_cast<uint16_t>(count));
  out.PutU32(rate);
  out.PutU32(rate * count * 2);
  out.PutU16(static_cast<uint16_t>(count * 2));
  out.PutU16(16);
  out.PutText("data");
  out.PutU32(frames * count * 2);
  for (uint32_t i = 0; i < frames; ++i)
    for (const int16_t value : channels)
      out.PutU16(static_cast<uint16_t>(value));
  return {out.Bytes().begin(), out.Bytes().end()};
}

// An OGG file of a tone, at 22,050 a second, one channel.
inline void WriteOgg(const std::string& path, int frames, double hertz)
{
  SF_INFO info = {};
  info.samplerate = 22050;
  info.channels = 1;
  info.format = SF_FORMAT_OGG | SF_FORMAT_VORBIS;
  SNDFILE* file = sf_open(path.c_str(), SFM_WRITE, &info);
  std::vector<float> tone(static_cast<size_t>(frames));
  for (size_t i = 0; i < tone.size(); ++i)
    tone[i] = static_cast<float>(0.5 * std::sin(static_cast<double>(i) * hertz * 2 * std::numbers::pi / 22050));
  sf_writef_float(file, tone.data(), frames);
  sf_close(file);
}
