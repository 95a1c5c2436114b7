// Eight pixels at a time: channels taken apart and put together, flags of lanes as bytes.
#pragma once

#include <stddef.h>

#include "core/vec.h"

namespace zeb {

// Eight bytes, in the low half of a small register.
struct Eight {
  __m128i v;
};

ZEB_INLINE Eight loadEight(const Zeb8u* p) {
  return {_mm_loadl_epi64(reinterpret_cast<const __m128i*>(p))};
}
ZEB_INLINE void storeEight(Zeb8u* p, Eight a) {
  _mm_storel_epi64(reinterpret_cast<__m128i*>(p), a.v);
}
ZEB_INLINE V32f toFloat(Eight a) {
  return {_mm256_cvtepi32_ps(_mm256_cvtepu8_epi32(a.v))};
}

// The channels of eight pixels of three.
struct EightColours {
  Eight channel[3];
};
ZEB_INLINE EightColours loadColours(const Zeb8u* p) {
  const __m128i low = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
  const __m128i high = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(p + 16));
  const auto pick = [=](__m128i fromLow, __m128i fromHigh) {
    return Eight{_mm_or_si128(_mm_shuffle_epi8(low, fromLow), _mm_shuffle_epi8(high, fromHigh))};
  };
  constexpr char o = -1;
  return {{pick(_mm_setr_epi8(0, 3, 6, 9, 12, 15, o, o, o, o, o, o, o, o, o, o),
                _mm_setr_epi8(o, o, o, o, o, o, 2, 5, o, o, o, o, o, o, o, o)),
           pick(_mm_setr_epi8(1, 4, 7, 10, 13, o, o, o, o, o, o, o, o, o, o, o),
                _mm_setr_epi8(o, o, o, o, o, 0, 3, 6, o, o, o, o, o, o, o, o)),
           pick(_mm_setr_epi8(2, 5, 8, 11, 14, o, o, o, o, o, o, o, o, o, o, o),
                _mm_setr_epi8(o, o, o, o, o, 1, 4, 7, o, o, o, o, o, o, o, o))}};
}
ZEB_INLINE void storeColours(Zeb8u* p, EightColours a) {
  const __m128i two = _mm_unpacklo_epi64(a.channel[0].v, a.channel[1].v), third = a.channel[2].v;
  constexpr char o = -1;
  const __m128i low =
      _mm_or_si128(_mm_shuffle_epi8(two, _mm_setr_epi8(0, 8, o, 1, 9, o, 2, 10, o, 3, 11, o, 4, 12, o, 5)),
                   _mm_shuffle_epi8(third, _mm_setr_epi8(o, o, 0, o, o, 1, o, o, 2, o, o, 3, o, o, 4, o)));
  const __m128i high =
      _mm_or_si128(_mm_shuffle_epi8(two, _mm_setr_epi8(13, o, 6, 14, o, 7, 15, o, o, o, o, o, o, o, o, o)),
                   _mm_shuffle_epi8(third, _mm_setr_epi8(o, 5, o, o, 6, o, o, 7, o, o, o, o, o, o, o, o)));
  _mm_storeu_si128(reinterpret_cast<__m128i*>(p), low);
  _mm_storel_epi64(reinterpret_cast<__m128i*>(p + 16), high);
}

// Lanes rounded to nearest even and saturated.
ZEB_INLINE Eight toBytes(V32f a) {
  const __m256i rounded = _mm256_cvtps_epi32(a.v);
  const __m128i words = _mm_packs_epi32(_mm256_castsi256_si128(rounded), _mm256_extracti128_si256(rounded, 1));
  return {_mm_packus_epi16(words, words)};
}
// 255 where a lane's mask is set.
ZEB_INLINE Eight maskBytes(V32f mask) {
  const __m128i words =
      _mm_packs_epi32(_mm256_castsi256_si128(bits(mask.v)), _mm256_extracti128_si256(bits(mask.v), 1));
  return {_mm_packs_epi16(words, words)};
}
// 255 where one of the three lanes of a pixel is set, of the 24 lanes of eight pixels.
ZEB_INLINE Eight maskBytesOfThree(const V32f* mask) {
  const auto words = [](V32f m) {
    return _mm_packs_epi32(_mm256_castsi256_si128(bits(m.v)), _mm256_extracti128_si256(bits(m.v), 1));
  };
  const __m128i last = words(mask[2]);
  const __m128i low = _mm_packs_epi16(words(mask[0]), words(mask[1])), high = _mm_packs_epi16(last, last);
  const __m128i any = _mm_or_si128(low, _mm_or_si128(_mm_alignr_epi8(high, low, 1), _mm_alignr_epi8(high, low, 2)));
  const __m128i anyHigh = _mm_or_si128(high, _mm_or_si128(_mm_srli_si128(high, 1), _mm_srli_si128(high, 2)));
  constexpr char o = -1;
  return {_mm_or_si128(_mm_shuffle_epi8(any, _mm_setr_epi8(0, 3, 6, 9, 12, 15, o, o, o, o, o, o, o, o, o, o)),
                       _mm_shuffle_epi8(anyHigh, _mm_setr_epi8(o, o, o, o, o, o, 2, 5, o, o, o, o, o, o, o, o)))};
}
// The mask bytes of eight pixels for the 24 lanes of their channels.
ZEB_INLINE void spreadToThree(Eight mask, V32s* lanes) {
  const auto spread = [=](__m128i index) { return V32s{_mm256_cvtepu8_epi32(_mm_shuffle_epi8(mask.v, index))}; };
  constexpr char o = -1;
  lanes[0] = greater(spread(_mm_setr_epi8(0, 0, 0, 1, 1, 1, 2, 2, o, o, o, o, o, o, o, o)), splat(0));
  lanes[1] = greater(spread(_mm_setr_epi8(2, 3, 3, 3, 4, 4, 4, 5, o, o, o, o, o, o, o, o)), splat(0));
  lanes[2] = greater(spread(_mm_setr_epi8(5, 5, 6, 6, 6, 7, 7, 7, o, o, o, o, o, o, o, o)), splat(0));
}

// Calls body(x, pixels, count) for every eight pixels of a row of n; the last ones may be fewer: their bytes then stand
// in a place of their own with zeros behind them.
template <int channels, class Body>
ZEB_INLINE void forEights(const Zeb8u* row, int n, Body body) {
  int x = 0;
  for (; x <= n - 8; x += 8) body(x, row + static_cast<ptrdiff_t>(x) * channels, 8);
  if (x == n) return;
  Zeb8u last[8 * channels] = {};
  copyFew(last, row + static_cast<ptrdiff_t>(x) * channels, (n - x) * channels);
  body(x, last, n - x);
}
ZEB_INLINE void storeEight(Zeb8u* p, Eight a, int count) {
  if (count == 8) return storeEight(p, a);
  Zeb8u block[8];
  storeEight(block, a);
  copyFew(p, block, count);
}
ZEB_INLINE Eight loadEight(const Zeb8u* p, int count) {
  if (count == 8) return loadEight(p);
  Zeb8u block[8] = {};
  copyFew(block, p, count);
  return loadEight(block);
}

}  // namespace zeb
