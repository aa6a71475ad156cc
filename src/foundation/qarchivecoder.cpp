#include "foundation/qarchivecoder.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <utility>

#include <emmintrin.h>

namespace {

constexpr uint8_t STORED = 0x80;
constexpr uint8_t CODED = 0x40;
constexpr size_t ITEMS_A_WORD = 16;
constexpr size_t MIN_MATCH = 3;
constexpr size_t MAX_MATCH = 18;
constexpr size_t MIN_RUN = 16;
constexpr size_t MAX_RUN = 4095;
constexpr uint32_t WINDOW = 4096;

uint64_t Load64(const uint8_t* p)
{
  uint64_t value;
  std::memcpy(&value, p, sizeof value);
  return value;
}

uint32_t Load32(const uint8_t* p)
{
  static_assert(std::endian::native == std::endian::little);
  uint32_t value;
  std::memcpy(&value, p, sizeof value);
  return value;
}

// Equal bytes at the start of both, of the first 16.
size_t EqualOf16(const uint8_t* a, const uint8_t* b)
{
  const __m128i equal = _mm_cmpeq_epi8(_mm_loadu_si128(reinterpret_cast<const __m128i*>(a)),
                                       _mm_loadu_si128(reinterpret_cast<const __m128i*>(b)));
  return static_cast<size_t>(std::countr_one(static_cast<uint32_t>(_mm_movemask_epi8(equal))));
}

size_t MatchLength(const uint8_t* a, const uint8_t* b)
{
  const size_t equal = EqualOf16(a, b);
  if (equal < 16 || a[16] != b[16])
    return equal;
  return a[17] == b[17] ? MAX_MATCH : MAX_MATCH - 1;
}

// Whether 16 equal bytes or more begin here.
bool RunBegins(const uint8_t* p)
{
  return Load64(p) == Load64(p + 1) && Load64(p + 7) == Load64(p + 8);
}

size_t RunLength(const uint8_t* p, size_t limit)
{
  size_t n = MIN_RUN;
  while (n < limit && p[n] == p[0])
    ++n;
  return n;
}

// Writes items behind their control words. A bit above the items tells when sixteen of them are there.
class ItemWriter
{
public:
  explicit ItemWriter(uint8_t* buffer) : start(buffer), word(buffer + 1), at(buffer + 3) { *buffer = CODED; }
  void Literal(uint8_t byte)
  {
    Count(0);
    *at++ = byte;
  }
  void Reference(uint32_t code)
  {
    Count(1);
    *at++ = static_cast<uint8_t>(code >> 8);
    *at++ = static_cast<uint8_t>(code);
  }
  void Run(size_t length, uint8_t byte)
  {
    Count(1);
    *at++ = 0;
    *at++ = static_cast<uint8_t>((length - MIN_RUN) >> 8);
    *at++ = static_cast<uint8_t>(length - MIN_RUN);
    *at++ = byte;
  }
  size_t Finish()
  {
    while (control < FULL)
      control <<= 1;
    StoreControl();
    return static_cast<size_t>(at - start);
  }

private:
  static constexpr uint32_t FULL = 1u << ITEMS_A_WORD;
  void Count(uint32_t bit)
  {
    if (control >= FULL) {
      StoreControl();
      word = at;
      at += 2;
      control = 1;
    }
    control = control << 1 | bit;
  }
  void StoreControl()
  {
    word[0] = static_cast<uint8_t>(control >> 8);
    word[1] = static_cast<uint8_t>(control);
  }
  uint8_t* start;
  uint8_t* word;
  uint8_t* at;
  uint32_t control = 1;
};

// The hash of the three bytes at p, of each of p to p + 7: bits 4 to 15 of
// ((b0 * 16 ^ b1) * 16 ^ b2) * 40543, for which 16 bits are enough.
__m128i HashesOf8(const uint8_t* p)
{
  const auto bytes = [p](int at) { return _mm_loadl_epi64(reinterpret_cast<const __m128i*>(p + at)); };
  const __m128i zero = _mm_setzero_si128();
  const __m128i b0 = _mm_unpacklo_epi8(zero, bytes(0)); // times 256
  const __m128i b1 = _mm_slli_epi16(_mm_unpacklo_epi8(bytes(1), zero), 4);
  const __m128i mixed = _mm_xor_si128(_mm_xor_si128(b0, b1), _mm_unpacklo_epi8(bytes(2), zero));
  return _mm_srli_epi16(_mm_mullo_epi16(mixed, _mm_set1_epi16(static_cast<int16_t>(40543))), 4);
}

// Bits of a byte in the other order.
constexpr std::array<uint8_t, 256> REVERSED = [] {
  std::array<uint8_t, 256> reversed{};
  for (size_t byte = 0; byte < reversed.size(); ++byte)
    for (size_t bit = 0; bit < 8; ++bit)
      if (byte >> bit & 1)
        reversed[byte] |= static_cast<uint8_t>(0x80 >> bit);
  return reversed;
}();

} // namespace

void QArchiveEncoder::Begin(std::span<const uint8_t> block)
{
  std::copy(block.begin(), block.end(), in.begin());
  table.fill(0);
  for (size_t i = 0; i < block.size(); i += 8)
    _mm_storeu_si128(reinterpret_cast<__m128i*>(hashes.data() + i), HashesOf8(in.data() + i));
}

// The distance to the earlier place that the table holds for the three bytes at p, if they are the same, else WINDOW or
// more; p takes that place's slot. The hash and the 12 bits of the entry above its position tell three bytes apart, so
// that nothing needs to be compared; an empty entry is as far away as another three bytes.
uint32_t QArchiveEncoder::TakeSlot(const uint8_t* p)
{
  const auto position = static_cast<uint32_t>(p - in.data());
  uint32_t& slot = table[hashes[position]];
  const uint32_t entry = (Load32(p) & 0xFFF00) << 8 | (position + QARCHIVE_BLOCK);
  return entry - std::exchange(slot, entry);
}

std::span<const uint8_t> QArchiveEncoder::Encode(std::span<const uint8_t> block)
{
  if (block.empty())
    return {};
  Begin(block);
  const uint8_t* const end = in.data() + block.size();
  ItemWriter writer(out.data());
  for (const uint8_t* p = in.data(); p < end;) {
    const auto left = static_cast<size_t>(end - p);
    if (RunBegins(p) && left >= MIN_RUN) {
      const size_t run = RunLength(p, std::min(left, MAX_RUN));
      writer.Run(run, p[0]);
      p += run;
      continue;
    }
    // Fewer bytes find no match, and leave nothing that a later one could find.
    const uint32_t distance = left >= MIN_MATCH ? TakeSlot(p) : WINDOW;
    if (distance < WINDOW) {
      const size_t length = std::min(MatchLength(p - distance, p), left);
      writer.Reference(distance * 16 + static_cast<uint32_t>(length - MIN_MATCH));
      p += length;
    } else {
      writer.Literal(*p++);
    }
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

// Each step may write 24 bytes past what it yields, and read as many past the end: the buffers have that slack, and
// that of a word's items.
QArchiveDecoder::Result QArchiveDecoder::DecodeItems(const uint8_t* at, const uint8_t* end)
{
  uint8_t* const begin = out.data();
  uint8_t* to = begin;
  const uint8_t* const limit = begin + QARCHIVE_MAX_CHUNK;
  while (at < end) {
    // The first item lowest, where its bit is counted fastest, and a last bit that stops the count of literals.
    uint32_t control = REVERSED[at[0]] | static_cast<uint32_t>(REVERSED[at[1]]) << 8 | 1u << ITEMS_A_WORD;
    at += 2;
    while (at < end) {
      const auto literals = static_cast<size_t>(std::countr_zero(control));
      std::memcpy(to, at, ITEMS_A_WORD);
      const size_t taken = std::min(literals, static_cast<size_t>(end - at));
      at += taken;
      to += taken;
      control = control >> literals >> 1;
      if (control == 0 || at == end)
        break;
      const uint32_t code = static_cast<uint32_t>(at[0]) << 8 | at[1];
      const size_t distance = code >> 4;
      if (distance == 0) {
        const size_t run = (static_cast<size_t>(at[1]) << 8 | at[2]) + MIN_RUN;
        std::memset(to, at[3], run);
        at += 4;
        to += run;
        if (to > limit)
          return Result::OVERFLOW;
        continue;
      }
      if (distance > static_cast<size_t>(to - begin))
        return Result::DAMAGED;
      const size_t length = (code & 15) + MIN_MATCH;
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
  }
  if (at != end)
    return Result::DAMAGED;
  size = static_cast<size_t>(to - begin);
  return Result::GOOD;
}
