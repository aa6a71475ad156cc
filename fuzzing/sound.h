#pragma once

#include "fuzzing/check.h"
#include "platform/qsoundfile.h"

#include <span>
#include <string>
#include <string_view>

// Any bytes as a sound file: samples of a rate that can be played, or a reason.
inline void FuzzSound(std::string_view input)
{
  QSoundData data;
  std::string reason;
  const bool good = QDecodeSound(std::as_bytes(std::span(input.data(), input.size())), data, reason);
  FUZZ_CHECK(!good || !data.samples.empty());
  FUZZ_CHECK(good == reason.empty());
  FUZZ_CHECK(!good || (data.frequency >= 1000 && data.frequency <= 192000));
  FUZZ_CHECK(data.samples.size() <= QSoundData::MAX_SAMPLES);
}
