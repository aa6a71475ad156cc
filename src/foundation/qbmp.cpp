#include "foundation/qbmp.h"

#include "foundation/qbytes.h"
#include "foundation/qreport.h"

namespace {

constexpr size_t HEADER_SIZE = 14 + 40;
constexpr int MAX_SIZE = 16384;
// A kind that isn't read leaves a black picture behind: not a huge one for a few bytes.
constexpr size_t BLANK_PIXELS_A_BYTE = 1024;

struct Header
{
  size_t offset; // of the pixels
  int wid;
  int hgt;
  bool topFirst;
  int bits;
  int compression;

  bool IsKnown() const { return (bits == 24 || bits == 8) && compression == 0; }
  size_t Pixels() const { return static_cast<size_t>(wid) * static_cast<size_t>(hgt); }
  size_t RowSize() const { return static_cast<size_t>(wid) * static_cast<size_t>(bits) / 8; }
};

Header ReadHeader(std::span<const std::byte> file)
{
  QByteReader in(file);
  Header h{};
  in.Skip(10);
  h.offset = in.GetU32();
  in.Skip(4);
  h.wid = in.GetS32();
  const int64_t hgt = in.GetS32();
  h.topFirst = hgt < 0; // as its standard has it
  h.hgt = static_cast<int>(std::min<int64_t>(hgt < 0 ? -hgt : hgt, INT32_MAX));
  in.Skip(2);
  h.bits = in.GetU16();
  h.compression = in.GetS32();
  return h;
}

void ReadRows(const Header& h, const uint8_t* from, size_t stride, const QBitMap& picture)
{
  for (int row = 0; row < h.hgt; ++row, from += stride) {
    uint8_t* to = picture.GetPixelAddress(0, h.topFirst ? h.hgt - 1 - row : row);
    for (size_t x = 0; x < static_cast<size_t>(h.wid); ++x, to += 4) {
      const uint8_t* p = h.bits == 24 ? from + 3 * x : from + x;
      to[0] = p[h.bits == 24 ? 2 : 0];
      to[1] = p[h.bits == 24 ? 1 : 0];
      to[2] = p[0];
      to[3] = 255;
    }
  }
}

} // namespace

bool QIsReadableBMP(std::span<const std::byte> file)
{
  return file.size() >= HEADER_SIZE && ReadHeader(file).IsKnown();
}

bool QReadBMP(std::span<const std::byte> file, QBitMap& picture, const char* name)
{
  const Header h = ReadHeader(file);
  if (file.size() < HEADER_SIZE || h.wid <= 0 || h.hgt <= 0 || h.wid > MAX_SIZE || h.hgt > MAX_SIZE) {
    QERR("QImage:ReadBMP(%s); no header, or no picture of 1 to %d pixels each way", name, MAX_SIZE);
    return false;
  }
  if (!h.IsKnown()) {
    QERR("QImage:ReadBMP(%s); unsupported #bits (%d) or compression (%d)", name, h.bits, h.compression);
    return h.Pixels() / BLANK_PIXELS_A_BYTE <= file.size() && picture.Alloc(32, h.wid, h.hgt);
  }
  const size_t left = file.size() - std::min(h.offset, file.size());
  const size_t padded = (h.RowSize() + 3) & ~size_t{3};
  const size_t rows = static_cast<size_t>(h.hgt);
  const size_t stride = left >= padded * rows ? padded : h.RowSize();
  if (left < stride * rows) {
    QERR("QImage:ReadBMP(%s); %dx%d pixels don't fit in %zu bytes", name, h.wid, h.hgt, left);
    return false;
  }
  if (!picture.AllocUnset(32, h.wid, h.hgt)) {
    QERR("QImage:ReadBMP(); (%s) out of memory", name);
    return false;
  }
  ReadRows(h, reinterpret_cast<const uint8_t*>(file.data()) + h.offset, stride, picture);
  return true;
}
