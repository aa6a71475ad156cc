#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

// The archive's compressor: blocks of at most 16,384 bytes, each coded by itself as literals, back references and runs,
// or stored when that is shorter.
//
// A coded block is 0x40 and items. Sixteen items share a control word, high byte first, that stands where the first of
// them begins: from its highest bit down, 0 is a literal and 1 a code. A code is a back reference (12 bits of distance,
// 4 bits of length - 3) or, with distance 0, a run: 12 bits of length - 16, and the byte. A stored block is 0x80 and
// the bytes.
constexpr size_t QARCHIVE_BLOCK = 16384;
constexpr size_t QARCHIVE_MAX_CHUNK = 20000; // of coded or decoded bytes

class QArchiveEncoder
{
public:
  // The chunk of one block, good until the next call. An empty block gives an empty chunk.
  std::span<const uint8_t> Encode(std::span<const uint8_t> block);

private:
  void Begin(std::span<const uint8_t> block);
  uint32_t TakeSlot(const uint8_t* p);
  std::array<uint32_t, 4096> table;
  std::array<uint16_t, QARCHIVE_BLOCK> hashes;
  // The block, with room for looking past its end.
  std::array<uint8_t, QARCHIVE_BLOCK + 64> in{};
  std::array<uint8_t, QARCHIVE_MAX_CHUNK + 64> out;
};

class QArchiveDecoder
{
public:
  enum class Result
  {
    GOOD,
    DAMAGED,  // it ends in the middle of an item, or refers to what lies before the block
    OVERFLOW, // more than QARCHIVE_MAX_CHUNK bytes
  };
  // Decodes a chunk of at most QARCHIVE_MAX_CHUNK bytes; the bytes are good until the next call.
  Result Decode(std::span<const uint8_t> chunk);
  std::span<const uint8_t> Bytes() const { return std::span(out).first(size); }

private:
  Result DecodeItems(const uint8_t* in, const uint8_t* end);
  // Behind the limit lies room for what is written before it is counted: the references of a word, and the longest run.
  static constexpr size_t PAST_LIMIT = 16 * 18 + 4095 + 16;
  std::array<uint8_t, QARCHIVE_MAX_CHUNK + PAST_LIMIT + 64> out;
  // Items are read without looking for the end each time.
  std::array<uint8_t, QARCHIVE_MAX_CHUNK + 64> in;
  size_t size = 0;
};
