#pragma once

#include "foundation/qbitmap.h"
#include "foundation/qtga.h"
#include "fuzzing/check.h"

#include <algorithm>
#include <string_view>

// Any bytes as a Targa picture; what could be read is written, and reads back the same.
inline void FuzzTga(std::string_view input)
{
  constexpr int64_t MAX_PIXELS = 65536; // above that nearly all the time goes into memory
  const auto number = [&](size_t at) {
    return input.size() > at + 1 ? static_cast<uint8_t>(input[at]) | static_cast<uint8_t>(input[at + 1]) << 8 : 0;
  };
  if (int64_t{number(12)} * number(14) > MAX_PIXELS && input.size() > 1000)
    return;
  const QuietReports quiet;
  QBitMap picture;
  const bool good = QReadTGA(std::as_bytes(std::span(input)), picture, "fuzz");
  FUZZ_CHECK(good == (picture.GetMemSize() > 0));
  if (!good || picture.GetWidth() > 8192)
    return;
  const std::string file = QWriteTGA(picture, QBitMap::TGA);
  QBitMap again;
  FUZZ_CHECK(QReadTGA(std::as_bytes(std::span(file)), again, "again"));
  FUZZ_CHECK(std::equal(again.GetBuffer(), again.GetBuffer() + again.GetMemSize(), picture.GetBuffer(),
                        picture.GetBuffer() + picture.GetMemSize()));
}
