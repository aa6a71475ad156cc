#include "foundation/qblock.h"

#include <algorithm>
#include <cstdint>
#include <mutex>
#include <new>
#include <sys/mman.h>
#include <vector>

namespace {

constexpr size_t PAGE = size_t{2} << 20;
constexpr size_t LARGE = size_t{1} << 20;
constexpr size_t MAX_KEPT = size_t{256} << 20; // bytes that wait for a taker

// The address sanitizer sees a byte too far only in heap memory.
#if defined(__SANITIZE_ADDRESS__)
constexpr bool PLAIN = true;
#elif defined(__has_feature)
constexpr bool PLAIN = __has_feature(address_sanitizer);
#else
constexpr bool PLAIN = false;
#endif

struct Span
{
  std::byte* data = nullptr;
  size_t size = 0;
};

struct Kept
{
  std::mutex mutex;
  std::vector<Span> spans;
  size_t bytes = 0;
};

Kept& Keeper()
{
  static Kept& kept = *new Kept; // never destroyed: blocks of other statics come back later
  return kept;
}

// The smallest waiting span that holds size and isn't more than twice as large. None: a null span.
Span TakeKept(size_t size)
{
  Kept& kept = Keeper();
  const std::lock_guard lock(kept.mutex);
  auto best = kept.spans.end();
  for (auto it = kept.spans.begin(); it != kept.spans.end(); ++it)
    if (it->size >= size && it->size / 2 <= size && (best == kept.spans.end() || it->size < best->size))
      best = it;
  if (best == kept.spans.end())
    return {};
  const Span span = *best;
  kept.spans.erase(best);
  kept.bytes -= span.size;
  return span;
}

bool Keep(Span span)
{
  Kept& kept = Keeper();
  const std::lock_guard lock(kept.mutex);
  if (span.size > MAX_KEPT - kept.bytes)
    return false;
  kept.spans.push_back(span);
  kept.bytes += span.size;
  return true;
}

// Mapped with a page more than needed, so that an aligned part can be cut out.
Span Map(size_t size)
{
  void* mapped = mmap(nullptr, size + PAGE, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (mapped == MAP_FAILED)
    throw std::bad_alloc();
  auto* start = static_cast<std::byte*>(mapped);
  const size_t front = (PAGE - reinterpret_cast<uintptr_t>(start) % PAGE) % PAGE;
  if (front > 0)
    munmap(start, front);
  if (front < PAGE)
    munmap(start + front + size, PAGE - front);
  madvise(start + front, size, MADV_HUGEPAGE);
  return {start + front, size};
}

bool IsLarge(size_t size)
{
  return !PLAIN && size >= LARGE;
}

} // namespace

QBlock::QBlock(size_t wanted)
{
  if (!IsLarge(wanted)) {
    data = static_cast<std::byte*>(::operator new(wanted));
    size = wanted;
    return;
  }
  const size_t whole = (wanted + PAGE - 1) / PAGE * PAGE;
  Span span = TakeKept(whole);
  if (!span.data)
    span = Map(whole);
  data = span.data;
  size = span.size;
}

QBlock::~QBlock()
{
  if (!IsLarge(size))
    ::operator delete(data);
  else if (!Keep({data, size}))
    munmap(data, size);
}
