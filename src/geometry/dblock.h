#pragma once

#include <cstddef>
#include <new>
#include <utility>
#include <vector>

// Memory for big arrays. A first touch of ordinary memory costs more than parsing what goes into it, so blocks from
// 16 KB on are cut from regions of 2 MB pages, and a freed block is kept for the next one. Smaller ones are ordinary.
// Not for several threads at once.
void* DBlockAllocate(size_t bytes); // throws std::bad_alloc, as new does
void DBlockFree(void* block, size_t bytes) noexcept;

// For vectors: memory as above, and a resize leaves plain numbers unset where a plain vector writes zeroes.
template <typename T>
struct DBlockAllocator
{
  using value_type = T;
  DBlockAllocator() = default;
  template <typename U>
  DBlockAllocator(const DBlockAllocator<U>&)
  {}
  T* allocate(size_t count)
  {
    if (count > static_cast<size_t>(-1) / sizeof(T))
      throw std::bad_array_new_length();
    return static_cast<T*>(DBlockAllocate(count * sizeof(T)));
  }
  void deallocate(T* block, size_t count) noexcept { DBlockFree(block, count * sizeof(T)); }
  template <typename U>
  void construct(U* at) noexcept
  {
    ::new (static_cast<void*>(at)) U;
  }
  template <typename U, typename... Args>
  void construct(U* at, Args&&... args)
  {
    ::new (static_cast<void*>(at)) U(std::forward<Args>(args)...);
  }
  friend bool operator==(const DBlockAllocator&, const DBlockAllocator&) { return true; }
};

// An array that can go to OpenGL with a stride of 0. resize(n) leaves new entries unset; resize(n, value) sets them.
template <typename T>
using DArray = std::vector<T, DBlockAllocator<T>>;
