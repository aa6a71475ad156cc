#include "foundation/qtga.h"

#include "foundation/qbytes.h"
#include "foundation/qreport.h"

#include <algorithm>
#include <climits>
#include <cstring>

namespace {

constexpr int MAX_READ_WIDTH = 16384;
constexpr int MAX_WRITE_WIDTH = 8192;
constexpr size_t HEADER_SIZE = 18;
constexpr int TRUE_COLOR = 2;
constexpr int GREY = 3;
constexpr int RUN_LENGTH = 10;
constexpr int TOP_FIRST = 32; // in the descriptor
constexpr uint8_t RUN_BIT = 0x80;

struct Header
{
  int idLength;
  int colorMapType;
  int type;
  int wid;
  int hgt;
  int pixDepth;
  int descriptor;

  size_t Pixels() const { return static_cast<size_t>(wid) * static_cast<size_t>(hgt); }
  size_t PixelSize() const { return static_cast<size_t>(pixDepth) / 8; }
};

Header ReadHeader(QByteReader& in)
{
  Header h{};
  h.idLength = in.GetU8();
  h.colorMapType = in.GetU8();
  h.type = in.GetU8();
  in.Skip(5 + 2 + 2); // colour map, origin
  h.wid = in.GetU16();
  h.hgt = in.GetU16();
  h.pixDepth = in.GetU8();
  h.descriptor = in.GetU8();
  return h;
}

bool CheckHeader(const Header& h, const char* name)
{
  const bool color = h.pixDepth == 24 || h.pixDepth == 32;
  if (h.colorMapType != 0)
    QERR("QImage:ReadTGA(%s); colormap is not supported", name);
  else if (h.wid > MAX_READ_WIDTH)
    QERR("QImage:ReadTGA(%s); too wide (max width=%d)", name, MAX_READ_WIDTH);
  else if (!(color && (h.type == TRUE_COLOR || h.type == RUN_LENGTH)) && !(h.type == GREY && h.pixDepth == 8))
    QERR("QImage:ReadTGA(); no image loader for type %d, pixDepth %d", h.type, h.pixDepth);
  else if (h.Pixels() == 0)
    QERR("QImage:ReadTGA(%s); no pixels (%dx%d)", name, h.wid, h.hgt);
  else if (h.Pixels() > INT_MAX / 4)
    QERR("QImage:ReadTGA(); out of memory");
  else
    return true;
  return false;
}

// Do the bytes hold a whole picture? Run-length data is walked from packet to packet, nothing is decoded.
bool FillsPicture(const Header& h, QByteReader in)
{
  if (h.type != RUN_LENGTH)
    return in.Fits(h.Pixels(), h.PixelSize());
  for (size_t have = 0; have < h.Pixels() && !in.Failed();) {
    const uint8_t packet = in.GetU8();
    const size_t count = (packet & ~RUN_BIT) + 1u;
    have += count;
    in.Take((packet & RUN_BIT ? 1 : std::min(count, h.Pixels() + count - have)) * h.PixelSize());
  }
  return !in.Failed();
}

// Blue, green, red and perhaps alpha become red, green, blue, alpha.
template <int SIZE>
void ConvertPixels(const uint8_t* from, uint8_t* to, size_t count)
{
  for (size_t i = 0; i < count; ++i, from += SIZE, to += 4) {
    const uint8_t blue = from[0];
    to[0] = from[SIZE == 1 ? 0 : 2];
    to[1] = from[SIZE == 1 ? 0 : 1];
    to[2] = blue;
    to[3] = SIZE == 4 ? from[3] : SIZE == 3 ? uint8_t{255} : blue;
  }
}

void Convert(const Header& h, const uint8_t* from, uint8_t* to, size_t count)
{
  if (h.pixDepth == 32)
    ConvertPixels<4>(from, to, count);
  else if (h.pixDepth == 24)
    ConvertPixels<3>(from, to, count);
  else
    ConvertPixels<1>(from, to, count);
}

const uint8_t* Take(QByteReader& in, size_t count)
{
  return reinterpret_cast<const uint8_t*>(in.Take(count).data());
}

uint8_t* FileRow(const Header& h, const QBitMap& picture, int row)
{
  return picture.GetPixelAddress(0, h.descriptor & TOP_FIRST ? h.hgt - 1 - row : row);
}

void ReadPlain(const Header& h, QByteReader& in, const QBitMap& picture)
{
  for (int row = 0; row < h.hgt; ++row)
    Convert(h, Take(in, static_cast<size_t>(h.wid) * h.PixelSize()), FileRow(h, picture, row),
            static_cast<size_t>(h.wid));
}

// Packets are expected to end with their row. One that doesn't goes on in the next row, and the last is cut at the
// picture's end.
void ReadRuns(const Header& h, QByteReader& in, const QBitMap& picture)
{
  const auto wid = static_cast<size_t>(h.wid);
  size_t left = 0; // of the packet
  bool run = false;
  uint8_t pixel[4] = {};
  for (int row = 0; row < h.hgt; ++row) {
    uint8_t* to = FileRow(h, picture, row);
    for (size_t x = 0; x < wid;) {
      if (left == 0) {
        const uint8_t packet = in.GetU8();
        run = packet & RUN_BIT;
        left = (packet & ~RUN_BIT) + 1u;
        if (run)
          Convert(h, Take(in, h.PixelSize()), pixel, 1);
      }
      const size_t count = std::min(left, wid - x);
      if (!run)
        Convert(h, Take(in, count * h.PixelSize()), to + 4 * x, count);
      else
        for (size_t i = 0; i < count; ++i)
          std::memcpy(to + 4 * (x + i), pixel, 4);
      x += count;
      left -= count;
    }
  }
}

} // namespace

bool QReadTGA(std::span<const std::byte> file, QBitMap& picture, const char* name)
{
  QByteReader in(file);
  const Header h = ReadHeader(in);
  in.Skip(static_cast<size_t>(h.idLength));
  if (file.size() < HEADER_SIZE) {
    QERR("QImage:ReadTGA(%s); no header", name);
    return false;
  }
  if (!CheckHeader(h, name))
    return false;
  if (!FillsPicture(h, in)) {
    QERR("QImage:ReadTGA(%s); %dx%d pixels don't fit in %zu bytes", name, h.wid, h.hgt, in.Left());
    return false;
  }
  if (!picture.AllocUnset(32, h.wid, h.hgt)) {
    QERR("QImage:ReadTGA(); out of memory");
    return false;
  }
  if (h.type == RUN_LENGTH)
    ReadRuns(h, in, picture);
  else
    ReadPlain(h, in, picture);
  return true;
}

std::string QWriteTGA(const QBitMap& picture, int format)
{
  const int wid = picture.GetWidth();
  const int hgt = picture.GetHeight();
  if (wid > MAX_WRITE_WIDTH || hgt > UINT16_MAX) {
    QWARN("QBitMap:WriteTGA(); image too %s", wid > MAX_WRITE_WIDTH ? "wide" : "high");
    return {};
  }
  const bool grey = format == QBitMap::TGA_GREY;
  if ((!grey && format != QBitMap::TGA) || picture.GetDepth() != 32) {
    QLOG("QBitMap::WriteTGA() unsupported format %d", format);
    return {};
  }
  const size_t pixels = static_cast<size_t>(wid) * static_cast<size_t>(hgt);
  std::string file(HEADER_SIZE + pixels * (grey ? 1 : 4), '\0');
  const auto put = [&](size_t at, int value) { file[at] = static_cast<char>(value); };
  put(2, grey ? GREY : TRUE_COLOR);
  put(12, wid & 255);
  put(13, wid >> 8);
  put(14, hgt & 255);
  put(15, hgt >> 8);
  put(16, grey ? 8 : 32);
  put(17, 8);
  auto* to = reinterpret_cast<uint8_t*>(file.data()) + HEADER_SIZE;
  const uint8_t* from = picture.GetBuffer();
  if (!grey)
    ConvertPixels<4>(from, to, pixels); // its own inverse
  else
    for (size_t i = 0; i < pixels; ++i)
      to[i] = from[4 * i];
  return file;
}
