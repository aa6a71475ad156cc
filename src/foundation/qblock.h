#pragma once

#include <cstddef>
#include <utility>

// Memory for what can be big: the text of a file, the nodes of a tree. The first touch of a small page costs more than
// parsing what stands on it, so a block of a megabyte or more lies on 2 MB pages, and is kept for the next taker when
// it is given back. A small block is plain heap memory.
class QBlock
{
public:
  QBlock() = default;
  explicit QBlock(size_t size); // the content is undefined
  ~QBlock();
  QBlock(QBlock&& other) noexcept : data(std::exchange(other.data, nullptr)), size(std::exchange(other.size, 0)) {}
  QBlock& operator=(QBlock&& other) noexcept
  {
    std::swap(data, other.data);
    std::swap(size, other.size);
    return *this;
  }
  std::byte* Data() { return data; }
  const std::byte* Data() const { return data; }
  char* Text() { return reinterpret_cast<char*>(data); }
  const char* Text() const { return reinterpret_cast<const char*>(data); }
  size_t Size() const { return size; } // at least what was asked for

private:
  std::byte* data = nullptr;
  size_t size = 0;
};
