#pragma once

#include "foundation/qbitmap.h"
#include "foundation/qbmp.h"
#include "foundation/qjpg.h"
#include "foundation/qmip.h"
#include "foundation/qpsd.h"
#include "foundation/qrgb.h"
#include "foundation/qtga.h"
#include "fuzzing/check.h"

#include <algorithm>
#include <string>
#include <string_view>

// Any bytes as a picture of each format; what could be read without loss is written, and reads back the same.

// Above this nearly all the time goes into memory.
constexpr int64_t FUZZ_MAX_PIXELS = 65536;

// A number of two or four bytes, 0 behind the end.
inline int64_t FuzzNumber(std::string_view input, size_t at, size_t size, bool bigEndian)
{
  int64_t value = 0;
  for (size_t i = 0; i < size && at + size <= input.size(); ++i) {
    const auto byte = static_cast<uint8_t>(input[at + (bigEndian ? i : size - 1 - i)]);
    value = value << 8 | byte;
  }
  return value;
}

inline bool FuzzFits(int64_t wid, int64_t hgt)
{
  return wid == 0 || hgt <= FUZZ_MAX_PIXELS / wid;
}

inline std::span<const std::byte> FuzzBytes(std::string_view input)
{
  return std::as_bytes(std::span(input.data(), input.size()));
}

inline bool FuzzSamePixels(const QBitMap& a, const QBitMap& b)
{
  return std::equal(a.GetBuffer(), a.GetBuffer() + a.GetMemSize(), b.GetBuffer(), b.GetBuffer() + b.GetMemSize());
}

inline void FuzzTga(std::string_view input)
{
  if (!FuzzFits(FuzzNumber(input, 12, 2, false), FuzzNumber(input, 14, 2, false)) && input.size() > 1000)
    return;
  const QuietReports quiet;
  QBitMap picture, again;
  const bool good = QReadTGA(FuzzBytes(input), picture, "fuzz");
  FUZZ_CHECK(good == (picture.GetMemSize() > 0));
  if (!good || picture.GetWidth() > 8192)
    return;
  const std::string file = QWriteTGA(picture, QBitMap::TGA);
  FUZZ_CHECK(QReadTGA(FuzzBytes(file), again, "again") && FuzzSamePixels(picture, again));
}

inline void FuzzRgb(std::string_view input)
{
  const bool big = !input.empty() && input[0] == 1;
  if (!FuzzFits(FuzzNumber(input, 6, 2, big), FuzzNumber(input, 8, 2, big)))
    return;
  const QuietReports quiet;
  QBitMap picture, again;
  if (!QReadRGB(FuzzBytes(input), picture, "fuzz") || picture.GetWidth() > 8192)
    return;
  const std::string file = QWriteRGB(picture, "fuzz");
  FUZZ_CHECK(QReadRGB(FuzzBytes(file), again, "again") && FuzzSamePixels(picture, again));
}

inline void FuzzBmp(std::string_view input)
{
  const auto hgt = static_cast<int32_t>(FuzzNumber(input, 22, 4, false));
  if (!FuzzFits(FuzzNumber(input, 18, 4, false), hgt < 0 ? -int64_t{hgt} : hgt))
    return;
  const QuietReports quiet;
  QBitMap picture;
  const bool good = QReadBMP(FuzzBytes(input), picture, "fuzz");
  FUZZ_CHECK(good == (picture.GetMemSize() > 0));
}

inline void FuzzMip(std::string_view input)
{
  const QuietReports quiet;
  QBitMap picture; // its pixels are in the file, two a byte
  const bool good = QReadMIP(FuzzBytes(input), picture, "fuzz");
  FUZZ_CHECK(good == (picture.GetMemSize() > 0));
}

inline void FuzzPsd(std::string_view input)
{
  if (!FuzzFits(FuzzNumber(input, 18, 4, true), FuzzNumber(input, 14, 4, true)))
    return;
  const QuietReports quiet;
  QPSD psd;
  QBitMap picture;
  if (psd.Load(FuzzBytes(input)) && picture.Alloc(32, psd.GetWidth(), psd.GetHeight()))
    psd.Render(picture);
}

// The size stands in the first frame header, FF C0 to FF CF.
inline void FuzzJpg(std::string_view input)
{
  for (size_t at = 0; at + 9 < input.size(); ++at)
    if (static_cast<uint8_t>(input[at]) == 0xFF && (static_cast<uint8_t>(input[at + 1]) & 0xF0) == 0xC0 &&
        !FuzzFits(FuzzNumber(input, at + 7, 2, true), FuzzNumber(input, at + 5, 2, true)))
      return;
  const QuietReports quiet;
  QBitMap picture;
  const bool good = QReadJPG(FuzzBytes(input), picture, "fuzz");
  FUZZ_CHECK(good == (picture.GetMemSize() > 0));
  if (good)
    FUZZ_CHECK(!QWriteJPG(picture, 50, "again").empty());
}
