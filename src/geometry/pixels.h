// Eight results as pixels of a type; the channels of pixels of three taken apart.
#pragma once

#include <string.h>

#include "core/loops.h"
#include "core/narrow.h"

namespace zeb {

// ---- Eight results ----

// Integers within -32768..32767 and 0..65535.
ZEB_INLINE void storeWords(Zeb16s* p, V32s a) {
  _mm_storeu_si128(reinterpret_cast<__m128i*>(p), _mm256_castsi256_si128(narrowTo16s(a, a).v));
}
ZEB_INLINE void storeWords(Zeb16u* p, V32s a) {
  _mm_storeu_si128(reinterpret_cast<__m128i*>(p), _mm256_castsi256_si128(narrowTo16u(a, a).v));
}

// Rounded to nearest even; what lies within the type's range.
ZEB_INLINE void storeRounded(Zeb8u* p, V32f a) {
  storeBytes(p, as<Zeb32f>(roundToInt(a)));
}
template <class T>
ZEB_INLINE void storeRounded(T* p, V32f a) {
  storeWords(p, roundToInt(a));
}
ZEB_INLINE void storeRounded(Zeb32f* p, V32f a) {
  store(p, a);
}
template <class T>
ZEB_INLINE void storeRounded(T* p, V32f a, WholeVector) {
  storeRounded(p, a);
}
template <class T>
ZEB_INLINE void storeRounded(T* p, V32f a, RowEnd end) {
  alignas(32) T block[8];
  storeRounded(block, a);
  copyFew(p, block, end.n * static_cast<int>(sizeof(T)));
}

// ---- Pixels of three channels ----

// Half a register holds a third of so many pixels as it has elements. Channel c of pixel i is element (3 i + c) mod
// lanes of one of the three parts, and no two pixels share that place.
template <int lanes>
struct PartsOfThree {
  alignas(32) Zeb8u fromSecond[3][32] = {}, fromThird[3][32] = {}, order[3][32] = {};

  constexpr PartsOfThree() {
    constexpr int bytes = 16 / lanes;
    for (int c = 0; c < 3; ++c)
      for (int i = 0; i < lanes; ++i)
        for (int b = 0; b < 2 * bytes; ++b) {
          const int half = b / bytes * 16, byte = b % bytes;
          const int element = 3 * i + c, place = element % lanes, part = element / lanes;
          const int to = half + place * bytes + byte;
          fromSecond[c][to] = part == 1 ? 255 : 0;
          fromThird[c][to] = part == 2 ? 255 : 0;
          order[c][half + i * bytes + byte] = static_cast<Zeb8u>(place * bytes + byte);
        }
  }
};
template <int lanes>
inline constexpr PartsOfThree<lanes> partsOfThree = PartsOfThree<lanes>();

// A vector of each channel.
template <class T>
struct Channels {
  Vec<T> first, second, third;
};
template <class T>
ZEB_INLINE Channels<T> loadChannels(const T* p, WholeVector) {
  constexpr int lanes = Vec<T>::lanes / 2;
  const auto part = [=](int k) ZEB_BODY {
    return V8u{_mm256_loadu2_m128i(reinterpret_cast<const __m128i*>(p + (3 + k) * lanes),
                                   reinterpret_cast<const __m128i*>(p + k * lanes))};
  };
  const V8u a = part(0), b = part(1), c = part(2);
  const auto channel = [=](int k) ZEB_BODY {
    const auto& parts = partsOfThree<lanes>;
    const V8u mixed = select(load(parts.fromThird[k]), c, select(load(parts.fromSecond[k]), b, a));
    return as<T>(V8u{_mm256_shuffle_epi8(mixed.v, load(parts.order[k]).v)});
  };
  return {channel(0), channel(1), channel(2)};
}
template <class T>
ZEB_INLINE Channels<T> loadChannels(const T* p, RowEnd end) {
  T block[3 * Vec<T>::lanes] = {};
  memcpy(block, p, static_cast<size_t>(end.n) * 3 * sizeof(T));
  return loadChannels(block, WholeVector{});
}

}  // namespace zeb
