#include "foundation/qpsd.h"

#include "foundation/qbitmap.h"
#include "foundation/qreport.h"

#include <algorithm>
#include <bit>
#include <cstdlib>
#include <string_view>

namespace {

constexpr size_t MASK_SIZE = 20;
constexpr size_t PIXELS_A_BYTE = 64; // of a packed picture, at most

// Big-endian values from bytes it doesn't own; past the end they are 0, and it has failed.
class Reader
{
public:
  explicit Reader(std::span<const std::byte> bytes) : rest(bytes) {}
  bool Failed() const { return failed; }
  size_t Left() const { return rest.size(); }
  std::span<const std::byte> Take(size_t count)
  {
    failed = failed || count > rest.size();
    const auto taken = rest.first(failed ? 0 : count);
    rest = rest.subspan(failed ? rest.size() : count);
    return taken;
  }
  uint32_t Get(size_t size)
  {
    uint32_t value = 0;
    for (const std::byte b : Take(size))
      value = value << 8 | std::to_integer<uint32_t>(b);
    return value;
  }
  int GetS16() { return static_cast<int16_t>(Get(2)); }
  int GetS32() { return static_cast<int32_t>(Get(4)); }
  std::string GetText(size_t count)
  {
    const auto bytes = Take(count);
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
  }
  Reader Chunk(size_t length) { return Reader(Take(length)); }

private:
  std::span<const std::byte> rest;
  bool failed = false;
};

bool Fail(const char* text)
{
  QERR("%s", text);
  return false;
}

bool ReadHeader(Reader& in, int& wid, int& hgt)
{
  if (in.GetText(4) != "8BPS")
    return Fail("Not a PSD file");
  if (in.Get(2) != 1)
    return Fail("PSD version not 1");
  in.Take(6 + 2);
  hgt = in.GetS32();
  wid = in.GetS32();
  if (in.Get(2) != 8)
    return Fail("PSD has no 8-bit/channel (depth)");
  if (in.Get(2) != 3)
    return Fail("PSD not RGB");
  return true;
}

bool ReadExtraData(Reader in, QPSD::Layer& layer)
{
  const uint32_t maskSize = in.Get(4);
  if (maskSize != 0 && maskSize != MASK_SIZE) {
    QERR("Unsupported layer mask size (%u)", maskSize);
    return false;
  }
  in.Take(maskSize);
  in.Take(in.Get(4)); // blending ranges
  layer.name = in.GetText(in.Get(1));
  return !in.Failed();
}

// The record of a layer; lengths gets those of its channels, whose data stands behind all records.
bool ReadLayer(Reader& in, QPSD::Layer& layer, std::vector<uint32_t>& lengths)
{
  layer.top = in.GetS32();
  layer.left = in.GetS32();
  layer.bottom = in.GetS32();
  layer.right = in.GetS32();
  const uint32_t count = in.Get(2);
  if (count > in.Left() / 6)
    return Fail("PSD layer is cut off");
  for (uint32_t i = 0; i < count; ++i) {
    layer.channels.push_back({.id = in.GetS16(), .packed = false, .data = {}});
    lengths.push_back(in.Get(4));
  }
  in.Take(4); // signature
  layer.blendMode = in.GetText(4);
  layer.opacity = static_cast<int>(in.Get(1));
  layer.clipping = static_cast<int>(in.Get(1));
  layer.flags = static_cast<uint8_t>(in.Get(1));
  in.Take(1);
  return ReadExtraData(in.Chunk(in.Get(4)), layer) && !in.Failed();
}

// The pixels of one row after another of a channel.
class RowDecoder
{
public:
  RowDecoder(const QPSD::Layer& layer, const QPSD::Channel& decoded) :
      channel(decoded), wid(static_cast<size_t>(layer.Width())), lengths(decoded.data), rows(decoded.data)
  {
    if (channel.packed)
      rows.Take(2 * static_cast<size_t>(layer.Height()));
  }
  // False when the row isn't whole. With null it is only checked.
  bool Next(uint8_t* to)
  {
    if (channel.packed)
      return Unpack(rows.Chunk(lengths.Get(2)), to);
    const auto row = rows.Take(wid);
    if (to && !rows.Failed())
      std::transform(row.begin(), row.end(), to, [](std::byte b) { return std::to_integer<uint8_t>(b); });
    return !rows.Failed();
  }

private:
  // A byte n below 128: n + 1 bytes as they are; above it: the next byte 257 - n times; 128 is nothing.
  bool Unpack(Reader in, uint8_t* to) const
  {
    size_t x = 0;
    while (x < wid && !in.Failed() && in.Left() > 0) {
      const uint32_t n = in.Get(1);
      if (n == 128)
        continue;
      const bool run = n > 128;
      const size_t count = run ? 257 - n : n + 1;
      const auto bytes = in.Take(run ? 1 : count);
      const size_t fits = std::min(count, wid - x);
      for (size_t i = 0; to && i < fits && !in.Failed(); ++i)
        to[x + i] = std::to_integer<uint8_t>(bytes[run ? 0 : i]);
      x += fits;
    }
    return x == wid && !in.Failed();
  }

  const QPSD::Channel& channel;
  size_t wid;
  Reader lengths;
  Reader rows;
};

bool IsPainted(const QPSD::Channel& channel)
{
  return channel.id >= -1 && channel.id <= 2;
}

// Every row of what is painted is whole, so that a file's size bounds the work that it asks for.
bool IsWhole(const QPSD::Layer& layer)
{
  for (const QPSD::Channel& channel : layer.channels) {
    if (!IsPainted(channel))
      continue;
    RowDecoder rows(layer, channel);
    for (int64_t y = 0; y < layer.Height(); ++y)
      if (!rows.Next(nullptr))
        return false;
  }
  return true;
}

bool ReadChannels(Reader& in, QPSD::Layer& layer, const uint32_t* lengths)
{
  for (QPSD::Channel& channel : layer.channels) {
    Reader data = in.Chunk(*lengths++);
    const uint32_t compression = data.Left() > 0 ? data.Get(2) : 0;
    if (compression > 1) {
      QERR("PSD channel compression %u isn't supported", compression);
      return false;
    }
    channel.packed = compression == 1;
    channel.data = data.Take(data.Left());
  }
  return !in.Failed() && layer.Width() >= 0 && layer.Height() >= 0 && (layer.Width() == 0 || IsWhole(layer));
}

} // namespace

bool QPSD::Load(std::span<const std::byte> file)
{
  layers.clear();
  if (LoadSections(file))
    return true;
  wid = hgt = 0;
  layers.clear();
  return false;
}

bool QPSD::LoadSections(std::span<const std::byte> file)
{
  Reader in(file);
  if (!ReadHeader(in, wid, hgt))
    return false;
  // Behind the layers a whole file has them merged into one picture: a file that is too small for that lies.
  if (wid <= 0 || hgt <= 0 || wid > MAX_SIZE || hgt > MAX_SIZE ||
      static_cast<size_t>(wid) * static_cast<size_t>(hgt) / PIXELS_A_BYTE > file.size()) {
    QERR("PSD of %dx%d pixels doesn't fit in %zu bytes", wid, hgt, file.size());
    return false;
  }
  in.Take(in.Get(4)); // colour mode
  in.Take(in.Get(4)); // resources
  Reader section = in.Chunk(in.Get(4));
  if (in.Failed())
    return Fail("PSD is cut off");
  Reader info = section.Chunk(section.Get(4));
  const int count = std::abs(info.GetS16());
  std::vector<uint32_t> lengths;
  for (int i = 0; i < count; ++i)
    if (!ReadLayer(info, layers.emplace_back(), lengths))
      return Fail("PSD layer is cut off");
  size_t first = 0;
  for (Layer& layer : layers) {
    if (!ReadChannels(info, layer, lengths.data() + first))
      return Fail("PSD channel is cut off");
    first += layer.channels.size();
  }
  return true;
}

void QPSD::RenderLayer(const Layer& layer, QBitMap& picture) const
{
  std::vector<RowDecoder> rows;
  std::vector<int> ids;
  const auto decode = [&](const Channel& channel) {
    rows.emplace_back(layer, channel);
    ids.push_back(channel.id);
  };
  for (const Channel& channel : layer.channels)
    if (channel.id == -1) // it is to be known before the colours are, wherever it stands
      decode(channel);
  for (const Channel& channel : layer.channels)
    if (IsPainted(channel) && channel.id != -1)
      decode(channel);
  if (rows.empty())
    return; // nothing bounds its size then
  const int from = std::max(layer.left, 0);
  const int to = std::min(layer.right, wid);
  std::vector<std::vector<uint8_t>> values(rows.size(), std::vector<uint8_t>(static_cast<size_t>(layer.Width())));
  for (int64_t y = layer.top; y < std::min<int64_t>(layer.bottom, hgt); ++y) {
    for (size_t i = 0; i < rows.size(); ++i)
      rows[i].Next(values[i].data());
    for (int x = from; y >= 0 && x < to; ++x) {
      uint8_t* pixel = picture.GetPixelAddress(x, hgt - static_cast<int>(y) - 1);
      int a = 255;
      for (size_t i = 0; i < ids.size(); ++i) {
        const int value = values[i][static_cast<size_t>(x - layer.left)];
        if (ids[i] < 0) {
          a = value;
          pixel[3] = static_cast<uint8_t>((pixel[3] * (255 - a) + a * a) >> 8);
        } else {
          uint8_t& old = pixel[ids[i]];
          old = static_cast<uint8_t>((value * a + old * (255 - a)) >> 8);
        }
      }
    }
  }
}

void QPSD::Render(QBitMap& picture) const
{
  picture.Clear();
  for (const Layer& layer : layers)
    if (layer.IsVisible() && layer.Width() > 0 && layer.Height() > 0)
      RenderLayer(layer, picture);
}
