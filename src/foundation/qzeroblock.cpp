#include "foundation/qzeroblock.h"

#include <cstdint>
#include <cstdlib>
#include <sys/mman.h>

namespace {

constexpr size_t BIG_PAGE = size_t{2} << 20;

bool IsBig(size_t size)
{
  return size >= 2 * BIG_PAGE;
}

size_t MappedSize(size_t size)
{
  return (size + BIG_PAGE - 1) / BIG_PAGE * BIG_PAGE;
}

// A mapping starts anywhere on small pages: one page too many is taken, and both ends are given back.
std::byte* MapBig(size_t size)
{
  const size_t wanted = MappedSize(size);
  void* start = mmap(nullptr, wanted + BIG_PAGE, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (start == MAP_FAILED)
    return nullptr;
  auto* bytes = static_cast<std::byte*>(start);
  const size_t before = (BIG_PAGE - reinterpret_cast<uintptr_t>(start) % BIG_PAGE) % BIG_PAGE;
  if (before > 0)
    munmap(bytes, before);
  munmap(bytes + before + wanted, BIG_PAGE - before);
  madvise(bytes + before, wanted, MADV_HUGEPAGE); // a wish: without it all works, slower
  return bytes + before;
}

} // namespace

bool QZeroBlock::Alloc(size_t bytes)
{
  Free();
  if (bytes > SIZE_MAX / 2)
    return false;
  data = IsBig(bytes) ? MapBig(bytes) : static_cast<std::byte*>(std::calloc(bytes > 0 ? bytes : 1, 1));
  size = allocated = data ? bytes : 0;
  return data != nullptr;
}

void QZeroBlock::Free()
{
  if (IsBig(allocated))
    munmap(data, MappedSize(allocated));
  else
    std::free(data);
  data = nullptr;
  size = allocated = 0;
}

void QZeroBlock::Shrink(size_t bytes)
{
  size = bytes < size ? bytes : size;
}
