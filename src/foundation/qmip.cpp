#include "foundation/qmip.h"

#include "foundation/qbytes.h"
#include "foundation/qreport.h"

#include <array>
#include <cstring>

namespace {

constexpr uint32_t MAX_SIZE = 16384;
constexpr uint32_t COLOR_MAP_SIZE = 64;
constexpr int INDEXED = 3; // types below this are

using ColorMap = std::array<std::array<uint8_t, 4>, 16>; // red, green, blue, alpha

bool ReadColorMap(QByteReader& in, ColorMap& colors)
{
  in.Skip(8);
  if (in.GetU32() != COLOR_MAP_SIZE || in.Left() < COLOR_MAP_SIZE) {
    QERR("MIP with CMAP size!=64; unexpected");
    return false;
  }
  for (auto& color : colors) {
    const auto bytes = in.Take(4);
    for (size_t i = 0; i < 4; ++i)
      color[i < 3 ? 2 - i : 3] = std::to_integer<uint8_t>(bytes[i]);
  }
  return true;
}

struct Header
{
  uint8_t type;
  uint32_t wid;
  uint32_t hgt;
  uint32_t rowSize;
};

// The blocks in front of the pixels.
bool ReadBlocks(QByteReader& in, Header& h, ColorMap& colors)
{
  if (in.Left() < 12 || in.GetText(4) != "PIM ") {
    QERR("MIP image doesn't have correct header");
    return false;
  }
  in.Skip(8 + 12);
  const uint8_t outerType = in.GetU8();
  in.Skip(4 + 4 + 4 + 1 + 4 + 2);
  if (outerType < 2 && !ReadColorMap(in, colors))
    return false;
  in.Skip(12 + 12);
  h.type = in.GetU8();
  h.wid = in.GetU32();
  h.hgt = in.GetU32();
  h.rowSize = in.GetU32();
  in.Skip(3);
  return h.type != 2 || ReadColorMap(in, colors);
}

} // namespace

bool QReadMIP(std::span<const std::byte> file, QBitMap& picture, const char* name)
{
  QByteReader in(file);
  Header h{};
  ColorMap colors{};
  if (!ReadBlocks(in, h, colors))
    return false;
  if (h.type >= INDEXED) {
    QERR("MIP type %d not yet supported", h.type);
    return false;
  }
  in.Skip(12);
  if (h.wid == 0 || h.hgt == 0 || h.wid > MAX_SIZE || h.hgt > MAX_SIZE || h.rowSize < (h.wid + 1) / 2 ||
      !in.Fits(h.hgt, h.rowSize)) {
    QERR("QImage:ReadMIP(%s); %ux%u pixels don't fit in %zu bytes", name, h.wid, h.hgt, in.Left());
    return false;
  }
  if (!picture.AllocUnset(32, static_cast<int>(h.wid), static_cast<int>(h.hgt))) {
    QERR("QImage:ReadMIP(%s) out of memory", name);
    return false;
  }
  for (int row = static_cast<int>(h.hgt) - 1; row >= 0; --row) {
    const auto bytes = in.Take(h.rowSize);
    uint8_t* to = picture.GetPixelAddress(0, row);
    for (size_t x = 0; x < h.wid; ++x, to += 4) {
      const auto pair = std::to_integer<size_t>(bytes[x / 2]);
      std::memcpy(to, colors[x % 2 == 0 ? pair >> 4 : pair & 15].data(), 4);
    }
  }
  return true;
}
