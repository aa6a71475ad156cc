#include "foundation/qrgb.h"

#include "foundation/qbytes.h"
#include "foundation/qreport.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <vector>

namespace {

constexpr uint16_t MAGIC = 0x01DA;
constexpr int MAX_READ_SIZE = 16384;
constexpr int MAX_WRITE_WIDTH = 8192;
constexpr size_t HEADER_SIZE = 108;
constexpr size_t DATA_OFFSET = 512;
constexpr size_t NAME_OFFSET = 24;
constexpr size_t MAX_NAME = 79;
constexpr int CHANNELS = 4;

uint16_t Swapped(uint16_t v)
{
  return static_cast<uint16_t>(v >> 8 | v << 8);
}

uint32_t Swapped(uint32_t v)
{
  return uint32_t{Swapped(static_cast<uint16_t>(v))} << 16 | Swapped(static_cast<uint16_t>(v >> 16));
}

struct Header
{
  bool swapped; // the numbers are big-endian
  uint16_t type;
  int wid;
  int hgt;
  int channels;

  bool IsRunLength() const { return type >> 8 == 1; }
  bool HasWideChannels() const { return (type & 255) == 2; }
  size_t Rows() const { return static_cast<size_t>(hgt) * static_cast<size_t>(channels); }
};

// False: it isn't such a file.
bool ReadHeader(std::span<const std::byte> file, Header& h)
{
  if (file.size() < HEADER_SIZE)
    return false;
  QByteReader in(file);
  const uint16_t magic = in.GetU16();
  h.swapped = magic == Swapped(MAGIC);
  if (magic != MAGIC && !h.swapped)
    return false;
  const auto next = [&] { return h.swapped ? Swapped(in.GetU16()) : in.GetU16(); };
  h.type = next();
  const int dimension = next();
  h.wid = next();
  h.hgt = next();
  h.channels = next();
  if (dimension == 1)
    h.hgt = 1;
  if (dimension <= 2)
    h.channels = 1;
  return true;
}

uint8_t* ChannelOfRow(const QBitMap& picture, size_t row, int channel)
{
  return picture.GetPixelAddress(0, static_cast<int>(row)) + channel;
}

void ReadPlain(const Header& h, std::span<const std::byte> planes, const QBitMap& picture)
{
  const auto* from = reinterpret_cast<const uint8_t*>(planes.data());
  for (int channel = 0; channel < std::min(h.channels, CHANNELS); ++channel)
    for (size_t row = 0; row < static_cast<size_t>(h.hgt); ++row) {
      uint8_t* to = ChannelOfRow(picture, row, channel);
      for (int x = 0; x < h.wid; ++x, to += 4)
        *to = *from++;
    }
}

// A count byte whose low seven bits are 0 ends the row; with its high bit that many bytes follow, else one that is
// repeated. What goes beyond the row is dropped.
void ExpandRow(QByteReader in, uint8_t* to, int wid)
{
  for (int x = 0; x < wid && in.Left() > 0;) {
    const uint8_t packet = in.GetU8();
    const int count = packet & 0x7F;
    if (count == 0)
      return;
    const bool literal = packet & 0x80;
    const uint8_t repeated = literal ? uint8_t{0} : in.GetU8();
    for (int i = 0; i < count; ++i) {
      const uint8_t value = literal ? in.GetU8() : repeated;
      if (x < wid)
        to[4 * x++] = value;
    }
  }
}

// Where each row of each channel lies in the file, and how long it is. False when that is outside.
bool ReadTables(const Header& h, std::span<const std::byte> file, std::vector<std::span<const std::byte>>& rows)
{
  QByteReader in(file);
  in.Skip(DATA_OFFSET);
  if (!in.Fits(2 * h.Rows(), 4))
    return false;
  QByteReader lengths(file.subspan(DATA_OFFSET + 4 * h.Rows()));
  for (size_t i = 0; i < h.Rows(); ++i) {
    const uint32_t offset = h.swapped ? Swapped(in.GetU32()) : in.GetU32();
    const uint32_t length = h.swapped ? Swapped(lengths.GetU32()) : lengths.GetU32();
    if (offset > file.size() || length > file.size() - offset)
      return false;
    rows.push_back(file.subspan(offset, length));
  }
  return true;
}

bool ReadRuns(const Header& h, std::span<const std::byte> file, QBitMap& picture)
{
  std::vector<std::span<const std::byte>> rows;
  if (!ReadTables(h, file, rows)) {
    QERR("QImage::Read: can't read rle chunk\n");
    return false;
  }
  if (!picture.Alloc(32, h.wid, h.hgt))
    return false;
  for (int channel = 0; channel < std::min(h.channels, CHANNELS); ++channel)
    for (size_t row = 0; row < static_cast<size_t>(h.hgt); ++row)
      ExpandRow(QByteReader(rows[static_cast<size_t>(channel) * static_cast<size_t>(h.hgt) + row]),
                ChannelOfRow(picture, row, channel), h.wid);
  return true;
}

} // namespace

bool QReadRGB(std::span<const std::byte> file, QBitMap& picture, const char* name)
{
  Header h{};
  if (!ReadHeader(file, h) || h.HasWideChannels()) {
    QERR("QImage:ReadRGB(%s); no header of a picture with one byte a channel", name);
    return false;
  }
  if (h.wid > MAX_READ_SIZE || h.hgt > MAX_READ_SIZE || h.wid == 0 || h.hgt == 0 || h.channels == 0) {
    QERR("%s width %d out of bounds", name, h.wid);
    return false;
  }
  const auto data = file.subspan(std::min(DATA_OFFSET, file.size()));
  if (h.IsRunLength()) {
    if (!ReadRuns(h, file, picture))
      return false;
  } else if (!QByteReader(data).Fits(h.Rows(), static_cast<size_t>(h.wid))) {
    QERR("QImage:ReadRGB(%s); %dx%d pixels don't fit in %zu bytes", name, h.wid, h.hgt, data.size());
    return false;
  } else if (!picture.Alloc(32, h.wid, h.hgt)) {
    return false;
  } else {
    ReadPlain(h, data, picture);
  }
  for (int channel = h.channels; channel < CHANNELS; ++channel)
    for (int i = channel; i < picture.GetMemSize(); i += 4)
      picture.GetBuffer()[i] = 255;
  return true;
}

std::string QWriteRGB(const QBitMap& picture, const std::string& name)
{
  const int wid = picture.GetWidth();
  const int hgt = picture.GetHeight();
  if (wid > MAX_WRITE_WIDTH || hgt > UINT16_MAX || picture.GetDepth() != 32) {
    QWARN("QBitMap:Write; image too %s", wid > MAX_WRITE_WIDTH ? "wide" : hgt > UINT16_MAX ? "high" : "shallow");
    return {};
  }
  QByteWriter header;
  for (const int value : {int{MAGIC}, 1, 3, wid, hgt, CHANNELS})
    header.PutU16(static_cast<uint16_t>(value));
  header.PutU32(0);
  header.PutU32(255);
  const size_t pixels = static_cast<size_t>(wid) * static_cast<size_t>(hgt);
  std::string file(DATA_OFFSET + pixels * CHANNELS, '\0');
  std::memcpy(file.data(), header.Bytes().data(), header.Size());
  std::memcpy(file.data() + NAME_OFFSET, name.data(), std::min(name.size(), MAX_NAME));
  char* to = file.data() + DATA_OFFSET;
  for (size_t channel = 0; channel < CHANNELS; ++channel)
    for (size_t i = 0; i < pixels; ++i)
      *to++ = static_cast<char>(picture.GetBuffer()[4 * i + channel]);
  return file;
}
