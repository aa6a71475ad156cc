#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#ifdef __SSE2__
#include <emmintrin.h>
#endif

// Stores that go to memory past the caches. What fits none of them is written nearly twice as fast that way, since its
// lines needn't be fetched to be overwritten; what is smaller is better left for its next reader.

constexpr size_t QBEYOND_CACHE = size_t{4} << 20; // bytes

using QSixteenBytes [[gnu::vector_size(16)]] = uint64_t;

// The address is divisible by 16.
inline void QStorePastCache(QSixteenBytes bytes, void* to)
{
#ifdef __SSE2__
  _mm_stream_si128(static_cast<__m128i*>(to), reinterpret_cast<__m128i>(bytes));
#else
  std::memcpy(to, &bytes, sizeof bytes);
#endif
}

// To be called before another thread may read what was stored.
inline void QFinishStores()
{
#ifdef __SSE2__
  _mm_sfence();
#endif
}
