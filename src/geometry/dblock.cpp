#include "geometry/dblock.h"

#include <cstdint>
#include <iterator>
#include <map>
#include <set>
#include <sys/mman.h>

#if defined(__SANITIZE_ADDRESS__)
#define DBLOCK_PLAIN 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define DBLOCK_PLAIN 1
#endif
#endif
#ifndef DBLOCK_PLAIN
#define DBLOCK_PLAIN 0
#endif

namespace {

constexpr size_t SMALLEST = 16 << 10;
constexpr size_t GRAIN = 4096; // block sizes are multiples of it
constexpr size_t HUGE_PAGE = 2 << 20;
constexpr size_t REGION = 64 << 20;

size_t RoundUp(size_t bytes, size_t to)
{
  return (bytes + to - 1) / to * to;
}

// Address space in 2 MB pages, given out by best fit. Memory that was touched once stays: that is what it is for.
class Regions
{
public:
  void* Allocate(size_t bytes)
  {
    bytes = RoundUp(bytes, GRAIN);
    auto best = bySize.lower_bound({bytes, 0});
    if (best == bySize.end()) {
      if (!Grow(bytes))
        throw std::bad_alloc();
      best = bySize.lower_bound({bytes, 0});
    }
    const auto [size, at] = *best;
    Forget(at, size);
    if (size > bytes)
      Remember(at + bytes, size - bytes);
    return reinterpret_cast<void*>(at);
  }
  void Free(void* block, size_t bytes)
  {
    auto at = reinterpret_cast<uintptr_t>(block);
    bytes = RoundUp(bytes, GRAIN);
    const auto next = byAddress.lower_bound(at);
    if (next != byAddress.begin()) {
      const auto [before, size] = *std::prev(next);
      if (before + size == at) {
        Forget(before, size);
        at = before;
        bytes += size;
      }
    }
    const auto behind = byAddress.find(at + bytes);
    if (behind != byAddress.end()) {
      const size_t size = behind->second;
      Forget(at + bytes, size);
      bytes += size;
    }
    Remember(at, bytes);
  }

private:
  bool Grow(size_t bytes)
  {
    if (bytes > static_cast<size_t>(-1) / 2)
      return false;
    const size_t size = RoundUp(bytes < REGION ? REGION : bytes, HUGE_PAGE);
    void* raw =
        mmap(nullptr, size + HUGE_PAGE, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    if (raw == MAP_FAILED)
      return false;
    const auto at = RoundUp(reinterpret_cast<uintptr_t>(raw), HUGE_PAGE);
    madvise(reinterpret_cast<void*>(at), size, MADV_HUGEPAGE);
    Remember(at, size);
    return true;
  }
  void Remember(uintptr_t at, size_t size)
  {
    byAddress[at] = size;
    bySize.insert({size, at});
  }
  void Forget(uintptr_t at, size_t size)
  {
    byAddress.erase(at);
    bySize.erase({size, at});
  }
  std::map<uintptr_t, size_t> byAddress;
  std::set<std::pair<size_t, uintptr_t>> bySize;
};

Regions& TheRegions()
{
  static auto* regions = new Regions; // arrays of other statics may go after any static here
  return *regions;
}

} // namespace

void* DBlockAllocate(size_t bytes)
{
  // The address sanitizer is to see each array's own end.
  if (DBLOCK_PLAIN || bytes < SMALLEST)
    return ::operator new(bytes);
  return TheRegions().Allocate(bytes);
}

void DBlockFree(void* block, size_t bytes) noexcept
{
  if (DBLOCK_PLAIN || bytes < SMALLEST)
    ::operator delete(block);
  else
    TheRegions().Free(block, bytes);
}
