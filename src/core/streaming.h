// When a large run is written past the cache, and how; reading ahead.
#pragma once

#include <stdint.h>

#include "core/vec.h"
#include "zebcore.h"

namespace zeb {

// One-dimensional helpers: amount and threshold in bytes.
inline bool streamsRun(int64_t bytes) {
  constexpr int64_t threshold = 0x200000;
  if (bytes <= threshold) return false;
  int cache = 0;
  return zebGetMaxCacheSizeB(&cache) == zebStsOk && cache > 0 && bytes > cache;
}

// Two-dimensional helpers: amount and threshold in the helper's own unit, against a fraction of the cache size.
inline bool streamsImage(int64_t amount, int64_t threshold, int cacheDivisor) {
  if (amount <= threshold) return false;
  int cache = 0;
  return zebGetMaxCacheSizeB(&cache) == zebStsOk && amount >= cache / cacheDivisor;
}

// Asks for a row's bytes further on, in time for large images that lie in memory. Behind the row nothing is read: such
// a request is dropped, whatever the address. Where rows follow each other without a gap it is the next row's.
constexpr int fetchDistance = 4096;  // the best of 2048, 4096, 6144 and 8192
template <class T>
ZEB_INLINE void fetchAhead(const T* p, ptrdiff_t bytes = fetchDistance) {
  _mm_prefetch(reinterpret_cast<const char*>(reinterpret_cast<uintptr_t>(p) + static_cast<uintptr_t>(bytes)),
               _MM_HINT_T0);
}
// The same at element i of a row of n, unless the row is so short that only its neighbours would be read.
template <class T>
ZEB_INLINE void fetchAhead(const T* p, int i, int n) {
  if (n > fetchDistance / static_cast<int>(sizeof(T))) fetchAhead(p + i);
}

// Whether n elements make a row that is mostly part of a large image.
template <class T>
ZEB_INLINE bool isLong(const T*, ptrdiff_t n) {
  return n > 1024 / static_cast<ptrdiff_t>(sizeof(T));
}

// Asks for n elements that are wanted soon.
template <class T>
ZEB_INLINE void fetchRun(const T* p, ptrdiff_t n) {
  constexpr ptrdiff_t line = 64 / static_cast<ptrdiff_t>(sizeof(T));
  for (ptrdiff_t x = 0; x < n; x += line) _mm_prefetch(reinterpret_cast<const char*>(p + x), _MM_HINT_T0);
}

// Fills bytes with a vector whose content repeats every element. A streaming fill stores one unaligned block of 64
// bytes, goes on from the next 64-byte boundary with aligned blocks past the cache, and ends with ever smaller pieces.
// The phase of the pattern is kept although the boundary is no whole number of elements away from an odd address.
template <class T>
inline void fillRun(T* p, int64_t count, T value, bool streaming) {
  constexpr int lanes = Vec<T>::lanes;
  const Vec<T> pattern = splat(value);
  int64_t i = 0;
  const auto toBoundary = (64 - (reinterpret_cast<uintptr_t>(p) & 63)) & 63;
  if (streaming && count >= 4 * lanes && toBoundary % sizeof(T) == 0) {
    store(p, pattern);
    store(p + lanes, pattern);
    for (i = static_cast<int64_t>(toBoundary / sizeof(T)); i <= count - 2 * lanes; i += 2 * lanes) {
      stream(p + i, pattern);
      stream(p + i + lanes, pattern);
    }
    streamFence();
  }
  for (; i <= count - lanes; i += lanes) store(p + i, pattern);
  if (i < count) storeN(p + i, pattern, static_cast<int>(count - i));
}

}  // namespace zeb
