#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <string>
#include <string_view>
#include <vector>

// Little-endian values from bytes it doesn't own. A read past the end gives 0 and Failed, for good.
class QByteReader
{
public:
  explicit QByteReader(std::span<const std::byte> bytes) : rest(bytes) {}
  bool Failed() const { return failed; }
  size_t Left() const { return rest.size(); }
  // By division: count * size could wrap.
  bool Fits(size_t count, size_t size) const { return count <= rest.size() / size; }
  uint8_t GetU8() { return static_cast<uint8_t>(GetUnsigned(1)); }
  uint16_t GetU16() { return static_cast<uint16_t>(GetUnsigned(2)); }
  int16_t GetS16() { return static_cast<int16_t>(GetU16()); }
  uint32_t GetU32() { return static_cast<uint32_t>(GetUnsigned(4)); }
  int32_t GetS32() { return static_cast<int32_t>(GetU32()); }
  float GetFloat() { return std::bit_cast<float>(GetU32()); }
  // The next bytes; fewer than asked only together with Failed, and then none.
  std::span<const std::byte> Take(size_t count)
  {
    failed = failed || count > rest.size();
    const auto taken = rest.first(failed ? 0 : count);
    rest = rest.subspan(failed ? rest.size() : count);
    return taken;
  }
  // As much of the count as there is; never fails.
  std::span<const std::byte> TakeUpTo(size_t count) { return Take(count < rest.size() ? count : rest.size()); }
  std::string_view GetText(size_t count)
  {
    const auto bytes = Take(count);
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
  }
  void Skip(size_t count) { static_cast<void>(TakeUpTo(count)); }
  // A reader of the next bytes alone: one chunk can't read into its neighbour.
  QByteReader Chunk(size_t length) { return QByteReader(Take(length)); }

private:
  uint64_t GetUnsigned(size_t size)
  {
    uint64_t value = 0;
    const auto bytes = Take(size);
    for (size_t i = 0; i < bytes.size(); ++i)
      value |= std::to_integer<uint64_t>(bytes[i]) << 8 * i;
    return value;
  }
  std::span<const std::byte> rest;
  bool failed = false;
};

// Little-endian values into bytes that it owns.
class QByteWriter
{
public:
  void PutU8(uint8_t v) { PutUnsigned(v, 1); }
  void PutU16(uint16_t v) { PutUnsigned(v, 2); }
  void PutU32(uint32_t v) { PutUnsigned(v, 4); }
  void PutS32(int32_t v) { PutU32(static_cast<uint32_t>(v)); }
  void PutFloat(float v) { PutU32(std::bit_cast<uint32_t>(v)); }
  void PutText(std::string_view text) { PutBytes(std::as_bytes(std::span(text.data(), text.size()))); }
  void PutBytes(std::span<const std::byte> more) { bytes.insert(bytes.end(), more.begin(), more.end()); }
  size_t Size() const { return bytes.size(); }
  // Overwrites four bytes written before; for lengths that are known at the end of a chunk.
  void PatchU32(size_t at, uint32_t v)
  {
    for (size_t i = 0; i < 4; ++i)
      bytes[at + i] = static_cast<std::byte>(v >> 8 * i);
  }
  std::span<const std::byte> Bytes() const { return bytes; }
  std::vector<std::byte> TakeBytes() { return std::move(bytes); }
  void Reserve(size_t size) { bytes.reserve(size); }

private:
  void PutUnsigned(uint64_t v, size_t size)
  {
    for (size_t i = 0; i < size; ++i)
      bytes.push_back(static_cast<std::byte>(v >> 8 * i));
  }
  std::vector<std::byte> bytes;
};
