#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

// One channel of 16-bit samples.
struct QSoundData
{
  static constexpr size_t MAX_SAMPLES = 32u << 20; // 12 minutes at 44,100 a second
  int frequency = 0;                               // samples a second
  std::vector<int16_t> samples;
  bool cut = false; // the file ends before its own header says: what is there was taken
};

// Decodes the content of a WAV or OGG file, its channels mixed to one. False, with the reason, when it is neither,
// holds no samples, or more than MAX_SAMPLES.
[[nodiscard]] bool QDecodeSound(std::span<const std::byte> file, QSoundData& out, std::string& reason);
