#pragma once

#include "geometry/dblock.h"

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <string>
#include <string_view>

static_assert(std::endian::native == std::endian::little, "model files are copied as they lie in memory");

// The bytes of a model file and how far they are read. A read past the end gives 0 and Ended, for good.
class DofReader
{
public:
  static constexpr int MAX_DEPTH = 16; // of materials in materials
  DofReader(std::span<const std::byte> content, std::string_view file) : fileName(file), bytes(content) {}

  const std::string fileName; // for messages, and to find shaders by
  bool Ended() const { return ended; }
  bool HasMore() const { return !ended && at < bytes.size(); }
  size_t Left() const { return bytes.size() - at; }
  size_t Position() const { return at; }
  uint32_t GetU32() { return Get<uint32_t>(); }
  int32_t GetS32() { return Get<int32_t>(); }
  float GetFloat() { return Get<float>(); }
  // A negative count is 0.
  uint32_t GetCount()
  {
    const int32_t n = GetS32();
    return n > 0 ? static_cast<uint32_t>(n) : 0;
  }
  // Four bytes; all zero past the end.
  std::string_view GetId();
  // A 16-bit length and as many bytes. Empty for a negative length, short at the end of the file.
  std::string GetString();
  // As many whole elements as there are, up to count; fewer also end the file.
  template <typename T>
  size_t GetArray(T* out, size_t count)
  {
    const size_t there = Left() / sizeof(T) < count ? Left() / sizeof(T) : count;
    if (there > 0)
      std::memcpy(static_cast<void*>(out), bytes.data() + at, there * sizeof(T));
    at += there * sizeof(T);
    if (there < count)
      End();
    return there;
  }
  // Forward alone: a chunk may have read beyond the end that it stated.
  void SkipTo(size_t position);
  void End()
  {
    at = bytes.size();
    ended = true;
  }
  // Objects cost memory that no count proves. False once they'd take too many times the file's size.
  bool Afford(size_t objectSize);

private:
  template <typename T>
  T Get()
  {
    T value{};
    GetArray(&value, 1);
    return value;
  }
  std::span<const std::byte> bytes;
  size_t at = 0;
  size_t spent = 0;
  bool ended = false;
};

// The end that a chunk stated, from the position behind its length; a length past the file's end ends with the file.
inline size_t DofChunkEnd(DofReader& in)
{
  const uint32_t length = in.GetU32();
  return in.Position() + (length < in.Left() ? length : in.Left());
}

// The bytes of a model file as they are written.
class DofWriter
{
public:
  void PutU16(uint16_t v) { Put(v); }
  void PutU32(uint32_t v) { Put(v); }
  void PutS32(int32_t v) { Put(v); }
  void PutFloat(float v) { Put(v); }
  void PutBytes(std::span<const std::byte> more) { bytes.insert(bytes.end(), more.begin(), more.end()); }
  void PutZeroes(size_t count) { bytes.resize(bytes.size() + count, std::byte{0}); }
  void PutText(std::string_view text) { PutBytes(std::as_bytes(std::span(text.data(), text.size()))); }
  void PutString(std::string_view text); // behind its 16-bit length; cut at what that can say
  size_t Size() const { return bytes.size(); }
  void PatchU32(size_t at, uint32_t v) { std::memcpy(&bytes[at], &v, sizeof(v)); }
  void Reserve(size_t size) { bytes.reserve(size); }
  DArray<std::byte> TakeBytes() { return std::move(bytes); }

private:
  template <typename T>
  void Put(T value)
  {
    PutBytes(std::as_bytes(std::span(&value, 1)));
  }
  DArray<std::byte> bytes;
};

// A chunk being written, whose length is known when it ends.
class DofChunk
{
public:
  DofChunk(DofWriter& writer, const char* id) : out(writer)
  {
    out.PutText(id);
    lengthAt = out.Size();
    out.PutU32(0);
  }
  ~DofChunk() { out.PatchU32(lengthAt, static_cast<uint32_t>(out.Size() - lengthAt - 4)); }
  DofChunk(const DofChunk&) = delete;
  DofChunk& operator=(const DofChunk&) = delete;

private:
  DofWriter& out;
  size_t lengthAt;
};
