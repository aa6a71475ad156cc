#include "foundation/qtga.h"

#include "foundation/qbytes.h"
#include "foundation/qpastcache.h"
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

// Four pixels, as wide as the registers of any processor that this runs on.
using FourPixels [[gnu::vector_size(16)]] = uint32_t;

FourPixels Load(const uint8_t* from)
{
  FourPixels pixels;
  std::memcpy(&pixels, from, sizeof pixels);
  return pixels;
}

void Store(FourPixels pixels, uint8_t* to)
{
  std::memcpy(to, &pixels, sizeof pixels);
}

FourPixels SwapRedBlue(FourPixels p)
{
  return (p & 0xFF00FF00) | (p & 0xFF) << 16 | (p >> 16 & 0xFF);
}

// Blue, green, red and perhaps alpha become red, green, blue, alpha.
template <int SIZE>
void ConvertPixels(const uint8_t* from, uint8_t* to, size_t count)
{
  if constexpr (SIZE == 4)
    for (; count >= 4; count -= 4, from += 16, to += 16)
      Store(SwapRedBlue(Load(from)), to);
  for (size_t i = 0; i < count; ++i, from += SIZE, to += 4) {
    const uint8_t blue = from[0];
    to[0] = from[SIZE == 1 ? 0 : 2];
    to[1] = from[SIZE == 1 ? 0 : 1];
    to[2] = blue;
    to[3] = SIZE == 4 ? from[3] : SIZE == 3 ? uint8_t{255} : blue;
  }
}

void SwapPastCache(const uint8_t* from, uint8_t* to, size_t count)
{
  for (; count >= 4 && reinterpret_cast<uintptr_t>(to) % 16 == 0; count -= 4, from += 16, to += 16)
    QStorePastCache(reinterpret_cast<QSixteenBytes>(SwapRedBlue(Load(from))), to);
  ConvertPixels<4>(from, to, count);
}

void Convert(const Header& h, const uint8_t* from, uint8_t* to, size_t count)
{
  if (h.pixDepth == 32 && h.Pixels() * 4 >= QBEYOND_CACHE)
    SwapPastCache(from, to, count);
  else if (h.pixDepth == 32)
    ConvertPixels<4>(from, to, count);
  else if (h.pixDepth == 24)
    ConvertPixels<3>(from, to, count);
  else
    ConvertPixels<1>(from, to, count);
}

uint8_t* FileRow(const Header& h, const QBitMap& picture, size_t row)
{
  return picture.GetPixelAddress(0,
                                 h.descriptor & TOP_FIRST ? h.hgt - 1 - static_cast<int>(row) : static_cast<int>(row));
}

bool ReadPlain(const Header& h, QPieceReader& file, const QBitMap& picture)
{
  const auto wid = static_cast<size_t>(h.wid);
  const auto hgt = static_cast<size_t>(h.hgt);
  const size_t rowSize = wid * h.PixelSize();
  const size_t rows = std::max<size_t>(QPieceReader::PIECE / rowSize, 1);
  for (size_t row = 0; row < hgt; row += rows) {
    const size_t count = std::min(rows, hgt - row);
    const auto piece = file.Take(count * rowSize);
    if (piece.empty())
      return false;
    const auto* from = reinterpret_cast<const uint8_t*>(piece.data());
    for (size_t i = 0; i < count; ++i)
      Convert(h, from + i * rowSize, FileRow(h, picture, row + i), wid);
  }
  QFinishStores();
  return true;
}

// The packets of run-length data. Those of 32 bits are mostly short and alternate without a pattern: sixteen pixels
// are put at a time, a run's and others by the same steps, so that the processor has little to guess.
template <int SIZE>
class RunDecoder
{
public:
  explicit RunDecoder(QPieceReader& packets) : file(packets) {}

  // Packets are expected to end with their row. One that doesn't goes on in the next row. What lies between the row
  // and the limit may be overwritten. False when the data ends first.
  bool ReadRow(uint8_t* to, size_t wid, const uint8_t* limit)
  {
    uint8_t* const rowEnd = to + wid * 4;
    while (to < rowEnd) {
      if (left == 0) {
        if constexpr (SIZE == 4)
          to = PutWholePackets(to, rowEnd, limit);
        if (to == rowEnd)
          break;
        if (!StartPacket())
          return false;
      }
      const size_t count = std::min(left, static_cast<size_t>(rowEnd - to) / 4);
      if (!PutPart(to, count))
        return false;
      to += count * 4;
      left -= count;
    }
    return true;
  }

private:
  static constexpr size_t STEP = 16; // pixels
  static constexpr size_t LONGEST = 1 + 4 * RUN_BIT;

  size_t Rest() const { return static_cast<size_t>(end - from); }

  // A whole packet at least, if there is one.
  void GetMore()
  {
    file.Take(static_cast<size_t>(from - start));
    const auto piece = file.Look(LONGEST);
    start = from = reinterpret_cast<const uint8_t*>(piece.data());
    end = from + piece.size();
  }

  // As many as end within the row and leave room for whole steps, both here and in the data.
  uint8_t* PutWholePackets(uint8_t* to, uint8_t* rowEnd, const uint8_t* limit)
  {
    while (to < rowEnd && Rest() >= LONGEST) {
      const uint32_t packet = *from;
      const size_t count = (packet & ~uint32_t{RUN_BIT}) + 1;
      const size_t steps = (count + STEP - 1) / STEP;
      if (count * 4 > static_cast<size_t>(rowEnd - to) || steps * STEP * 4 > static_cast<size_t>(limit - to))
        break;
      const uint32_t all = 0 - (packet >> 7); // bits, for a run
      const FourPixels isRun = {all, all, all, all};
      const uint8_t* pixels = from + 1;
      const FourPixels four = SwapRedBlue(Load(pixels));
      const FourPixels first = {four[0], four[0], four[0], four[0]};
      const auto put = [&](size_t at) { Store((first & isRun) | (SwapRedBlue(Load(pixels + at)) & ~isRun), to + at); };
      for (size_t at = 0; at < steps * STEP * 4; at += STEP * 4) {
        put(at);
        put(at + 16);
        put(at + 32);
        put(at + 48);
      }
      to += count * 4;
      from += 1 + 4 * (packet & RUN_BIT ? 1 : count);
    }
    return to;
  }

  bool StartPacket()
  {
    if (Rest() < LONGEST)
      GetMore();
    if (Rest() == 0)
      return false;
    run = *from & RUN_BIT;
    left = (*from++ & ~RUN_BIT) + 1u;
    if (!run)
      return true;
    if (Rest() < SIZE)
      return false;
    ConvertPixels<SIZE>(from, pixel, 1);
    from += SIZE;
    return true;
  }

  bool PutPart(uint8_t* to, size_t count)
  {
    if (run) {
      for (size_t i = 0; i < count; ++i)
        std::memcpy(to + 4 * i, pixel, sizeof pixel);
      return true;
    }
    if (Rest() < count * SIZE)
      return false;
    ConvertPixels<SIZE>(from, to, count);
    from += count * SIZE;
    return true;
  }

  QPieceReader& file;
  const uint8_t* start = nullptr; // of the piece
  const uint8_t* from = nullptr;
  const uint8_t* end = nullptr;
  size_t left = 0; // pixels of a packet that goes on in the next row
  bool run = false;
  uint8_t pixel[4] = {}; // of a run
};

template <int SIZE>
bool ReadRuns(const Header& h, QPieceReader& file, const QBitMap& picture)
{
  RunDecoder<SIZE> decoder(file);
  const auto wid = static_cast<size_t>(h.wid);
  for (size_t row = 0; row < static_cast<size_t>(h.hgt); ++row) {
    uint8_t* to = FileRow(h, picture, row);
    const uint8_t* limit = h.descriptor & TOP_FIRST ? to + wid * 4 : picture.GetBuffer() + picture.GetMemSize();
    if (!decoder.ReadRow(to, wid, limit))
      return false;
  }
  return true;
}

bool ReadPixels(const Header& h, QPieceReader& file, const QBitMap& picture)
{
  if (h.type != RUN_LENGTH)
    return ReadPlain(h, file, picture);
  return h.pixDepth == 32 ? ReadRuns<4>(h, file, picture) : ReadRuns<3>(h, file, picture);
}

// The least bytes that such a picture can take; what has fewer isn't allocated.
size_t LeastBytes(const Header& h)
{
  if (h.type != RUN_LENGTH)
    return h.Pixels() * h.PixelSize();
  const size_t packets = (h.Pixels() + RUN_BIT - 1) / RUN_BIT;
  return packets * (1 + h.PixelSize());
}

} // namespace

bool QReadTGA(QPieceReader& file, QBitMap& picture, const char* name)
{
  if (file.Left() < HEADER_SIZE) {
    QERR("QImage:ReadTGA(%s); no header", name);
    return false;
  }
  QByteReader in(file.Take(HEADER_SIZE));
  const Header h = ReadHeader(in);
  if (!CheckHeader(h, name))
    return false;
  file.Take(std::min(static_cast<size_t>(h.idLength), file.Left()));
  const size_t bytes = file.Left();
  const bool canFit = LeastBytes(h) <= bytes;
  if (canFit && !picture.AllocUnset(32, h.wid, h.hgt)) {
    QERR("QImage:ReadTGA(); out of memory");
    return false;
  }
  if (canFit && ReadPixels(h, file, picture))
    return true;
  if (canFit)
    picture.Free();
  QERR("QImage:ReadTGA(%s); %dx%d pixels don't fit in %zu bytes", name, h.wid, h.hgt, bytes);
  return false;
}

bool QReadTGA(std::span<const std::byte> bytes, QBitMap& picture, const char* name)
{
  QPieceReader file(bytes);
  return QReadTGA(file, picture, name);
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
