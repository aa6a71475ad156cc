#include "foundation/qarchivecoder.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace {

constexpr uint8_t STORED = 0x80;
constexpr uint8_t CODED = 0x40;
constexpr size_t ITEMS_A_WORD = 16;
constexpr size_t MIN_MATCH = 3;
constexpr size_t MAX_MATCH = 18;
constexpr size_t MIN_RUN = 16;
constexpr size_t MAX_RUN = 4095;
constexpr size_t WINDOW = 4096;

uint64_t Load64(const uint8_t* p)
{
  uint64_t value;
  std::memcpy(&value, p, sizeof value);
  return value;
}

// Equal bytes at the start of both, limit at most. Compares eight at a time; the first difference is the lowest byte
// that isn't zero, on a little-endian machine.
size_t EqualBytes(const uint8_t* a, const uint8_t* b, size_t limit)
{
  static_assert(std::endian::native == std::endian::little);
  size_t n = 0;
  for (; n + 8 <= limit; n += 8)
    if (const uint64_t difference = Load64(a + n) ^ Load64(b + n))
      return n + static_cast<size_t>(std::countr_zero(difference)) / 8;
  while (n < limit && a[n] == b[n])
    ++n;
  return n;
}

// Writes items behind their control words.
class ItemWriter
{
public:
  explicit ItemWriter(uint8_t* buffer) : start(buffer), word(buffer + 1), at(buffer + 3) { *buffer = CODED; }
  void Literal(uint8_t byte)
  {
    Count(0);
    *at++ = byte;
  }
  void Code(uint8_t high, uint8_t low)
  {
    Count(1);
    *at++ = high;
    *at++ = low;
  }
  void Byte(uint8_t byte) { *at++ = byte; }
  size_t Finish()
  {
    control <<= ITEMS_A_WORD - items;
    StoreControl();
    return static_cast<size_t>(at - start);
  }

private:
  void Count(uint32_t bit)
  {
    if (items == ITEMS_A_WORD) {
      StoreControl();
      word = at;
      at += 2;
      control = 0;
      items = 0;
    }
    control = control << 1 | bit;
    ++items;
  }
  void StoreControl()
  {
    word[0] = static_cast<uint8_t>(control >> 8);
    word[1] = static_cast<uint8_t>(control);
  }
  uint8_t* start;
  uint8_t* word;
  uint8_t* at;
  uint32_t control = 0;
  size_t items = 0;
};

uint32_t HashOf(const uint8_t* p)
{
  const uint32_t mixed = (static_cast<uint32_t>(p[0]) << 4 ^ p[1]) << 4 ^ p[2];
  return mixed * 40543u >> 4 & 0xFFF;
}

} // namespace

std::span<const uint8_t> QArchiveEncoder::Encode(std::span<const uint8_t> block)
{
  if (block.empty())
    return {};
  if (stamp == UINT16_MAX) { // once in a gigabyte
    table.fill(0);
    stamp = 0;
  }
  ++stamp;
  const uint8_t* begin = block.data();
  const uint8_t* end = begin + block.size();
  ItemWriter writer(out.data());
  for (const uint8_t* p = begin; p < end;) {
    const auto left = static_cast<size_t>(end - p);
    if (left >= MIN_RUN && p[0] == p[1]) {
      const size_t run = 1 + EqualBytes(p, p + 1, std::min(left, MAX_RUN) - 1);
      if (run >= MIN_RUN) {
        writer.Code(0, static_cast<uint8_t>((run - MIN_RUN) >> 8));
        writer.Byte(static_cast<uint8_t>(run - MIN_RUN));
        writer.Byte(p[0]);
        p += run;
        continue;
      }
    }
    if (left >= MIN_MATCH) { // fewer bytes find no match, and leave nothing that a later one could find
      uint32_t& slot = table[HashOf(p)];
      const uint32_t found = slot;
      slot = stamp << 16 | static_cast<uint32_t>(p - begin);
      const uint8_t* candidate = begin + (found & 0xFFFF);
      if (found >> 16 == stamp && static_cast<size_t>(p - candidate) < WINDOW) {
        const size_t length = EqualBytes(candidate, p, std::min(left, MAX_MATCH));
        if (length >= MIN_MATCH) {
          const auto code = static_cast<uint32_t>(static_cast<size_t>(p - candidate) * 16 + length - MIN_MATCH);
          writer.Code(static_cast<uint8_t>(code >> 8), static_cast<uint8_t>(code));
          p += length;
          continue;
        }
      }
    }
    writer.Literal(*p++);
  }
  const size_t coded = writer.Finish();
  if (coded <= block.size())
    return std::span(out).first(coded);
  out[0] = STORED;
  std::copy(block.begin(), block.end(), out.begin() + 1);
  return std::span(out).first(block.size() + 1);
}

QArchiveDecoder::Result QArchiveDecoder::Decode(std::span<const uint8_t> chunk)
{
  size = 0;
  if (chunk.empty() || chunk.size() > QARCHIVE_MAX_CHUNK)
    return Result::DAMAGED;
  if (chunk[0] == STORED) {
    size = chunk.size() - 1;
    std::copy(chunk.begin() + 1, chunk.end(), out.begin());
    return Result::GOOD;
  }
  if (chunk[0] != CODED)
    return Result::DAMAGED;
  std::copy(chunk.begin(), chunk.end(), in.begin());
  return DecodeItems(in.data() + 1, in.data() + chunk.size());
}

// Each step may write 64 bytes past what it yields, and read as many past the end: the buffers have that slack.
QArchiveDecoder::Result QArchiveDecoder::DecodeItems(const uint8_t* at, const uint8_t* end)
{
  uint8_t* const begin = out.data();
  uint8_t* to = begin;
  const uint8_t* const limit = begin + QARCHIVE_MAX_CHUNK;
  while (at < end) {
    // The bits of the word, and a last one behind them that stops the count of literals.
    uint32_t control = static_cast<uint32_t>(at[0]) << 24 | static_cast<uint32_t>(at[1]) << 16 | 0x8000;
    at += 2;
    for (size_t items = ITEMS_A_WORD; at < end;) {
      const auto literals = static_cast<size_t>(std::countl_zero(control));
      std::memcpy(to, at, ITEMS_A_WORD);
      const size_t taken = std::min(literals, static_cast<size_t>(end - at));
      at += taken;
      to += taken;
      items -= literals;
      if (items == 0 || at == end)
        break;
      control <<= literals + 1;
      --items;
      const size_t distance = static_cast<size_t>(at[0]) << 4 | at[1] >> 4;
      if (distance == 0) {
        const size_t run = (static_cast<size_t>(at[1]) << 8 | at[2]) + MIN_RUN;
        std::memset(to, at[3], run);
        at += 4;
        to += run;
      } else {
        if (distance > static_cast<size_t>(to - begin))
          return Result::DAMAGED;
        const size_t length = (at[1] & 15u) + MIN_MATCH;
        const uint8_t* from = to - distance;
        if (distance >= 8) {
          for (size_t i = 0; i < 24; i += 8)
            std::memcpy(to + i, from + i, 8);
        } else {
          for (size_t i = 0; i < length; ++i)
            to[i] = from[i];
        }
        at += 2;
        to += length;
      }
      if (to > limit)
        return Result::OVERFLOW;
      if (items == 0)
        break;
    }
    if (to > limit)
      return Result::OVERFLOW;
  }
  if (at != end)
    return Result::DAMAGED;
  size = static_cast<size_t>(to - begin);
  return Result::GOOD;
}
