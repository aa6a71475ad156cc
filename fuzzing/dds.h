#pragma once

#include "fuzzing/check.h"
#include "geometry/ddds.h"
#include "geometry/dtexture.h"

#include <string_view>

// Any bytes as a DDS picture: its levels lie in the file, and become a texture.
inline void FuzzDds(std::string_view input)
{
  const QuietReports quiet;
  DDDS dds;
  const bool good = dds.Load(std::as_bytes(std::span(input.data(), input.size())), "fuzz");
  size_t size = 0;
  for (const DDDS::Level& level : dds.Levels())
    size += level.pixels.size();
  FUZZ_CHECK(size + 128 <= input.size() || size == 0);
  FUZZ_CHECK(good == (size > 0));
  if (good)
    FUZZ_CHECK(dds.CreateTexture()->width > 0);
}
