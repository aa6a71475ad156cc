#include "foundation/qbitmap.h"
#include "foundation/qreport.h"
#include "foundation/qtga.h"

#include <cstdint>
#include <cstdlib>

// Decodes any bytes as a Targa picture; what was decoded is written and read again, and has to be the same.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
  QReports().tap = [](auto, auto, auto) { return true; };
  constexpr int MAX_PIXELS = 65536; // above that nearly all the time goes into memory
  const auto number = [&](size_t at) { return size > at + 1 ? data[at] | data[at + 1] << 8 : 0; };
  if (int64_t{number(12)} * number(14) > MAX_PIXELS && size > 1000)
    return 0;
  QBitMap picture;
  const bool good = QReadTGA({reinterpret_cast<const std::byte*>(data), size}, picture, "fuzz");
  if (good != (picture.GetMemSize() > 0))
    std::abort();
  if (!good || picture.GetWidth() > 8192)
    return 0;
  const std::string file = QWriteTGA(picture, QBitMap::TGA);
  QBitMap again;
  if (!QReadTGA(std::as_bytes(std::span(file.data(), file.size())), again, "again") ||
      again.GetMemSize() != picture.GetMemSize() ||
      !std::equal(again.GetBuffer(), again.GetBuffer() + again.GetMemSize(), picture.GetBuffer()))
    std::abort();
  return 0;
}
