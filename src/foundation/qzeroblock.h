#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <utility>

// One block of zeroed memory, for pictures and whole files. Big ones lie on pages of 2 MB: the first touch of small
// pages takes longer than reading the file that goes there.
class QZeroBlock
{
public:
  QZeroBlock() = default;
  ~QZeroBlock() { Free(); }
  QZeroBlock(QZeroBlock&& other) noexcept { *this = std::move(other); }
  QZeroBlock& operator=(QZeroBlock&& other) noexcept
  {
    std::swap(data, other.data);
    std::swap(size, other.size);
    std::swap(allocated, other.allocated);
    return *this;
  }
  // False, with nothing held, when there isn't that much.
  [[nodiscard]] bool Alloc(size_t bytes);
  void Free();
  void Shrink(size_t bytes);               // what lies behind isn't part of it any more
  std::byte* Data() const { return data; } // null while nothing is held
  size_t Size() const { return size; }
  std::span<const std::byte> Bytes() const { return {data, size}; }

private:
  std::byte* data = nullptr;
  size_t size = 0;
  size_t allocated = 0;
};

// A whole regular file, as QReadFile.
[[nodiscard]] bool QReadFile(const std::string& path, QZeroBlock& content);
