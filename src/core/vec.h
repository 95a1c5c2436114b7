// The vector vocabulary: the one place that knows the 256-bit registers.
//
// V8u, V16u, V16s, V32s, V32f and V64f are vectors of that element. A kernel is written once over Vec<T>: load, store,
// the partial forms for the last elements of a row, splat, arithmetic, comparisons (all-ones masks of the same shape),
// select, and the widening and narrowing conversions. Partial loads and stores touch exactly n elements.
#pragma once

#include <immintrin.h>
#include <string.h>

#include <type_traits>

#include "zebcv/types.h"

#define ZEB_INLINE inline __attribute__((always_inline))

namespace zeb {

template <class T>
struct Vec {
  static constexpr int lanes = 32 / sizeof(T);
  __m256i v;
};
template <>
struct Vec<Zeb32f> {
  static constexpr int lanes = 8;
  __m256 v;
};
template <>
struct Vec<Zeb64f> {
  static constexpr int lanes = 4;
  __m256d v;
};

using V8u = Vec<Zeb8u>;
using V8s = Vec<Zeb8s>;
using V16u = Vec<Zeb16u>;
using V16s = Vec<Zeb16s>;
using V32s = Vec<Zeb32s>;
using V32f = Vec<Zeb32f>;
using V64f = Vec<Zeb64f>;

// ---- The same bits seen as another type ----

ZEB_INLINE __m256i bits(__m256i v) {
  return v;
}
ZEB_INLINE __m256i bits(__m256 v) {
  return _mm256_castps_si256(v);
}
ZEB_INLINE __m256i bits(__m256d v) {
  return _mm256_castpd_si256(v);
}

template <class To, class From>
ZEB_INLINE Vec<To> as(Vec<From> a) {
  if constexpr (std::is_same_v<To, Zeb32f>) {
    return {_mm256_castsi256_ps(bits(a.v))};
  } else if constexpr (std::is_same_v<To, Zeb64f>) {
    return {_mm256_castsi256_pd(bits(a.v))};
  } else {
    return {bits(a.v)};
  }
}

// ---- Loads and stores, any address ----

template <class T>
ZEB_INLINE Vec<T> load(const T* p) {
  return as<T>(Vec<Zeb8u>{_mm256_loadu_si256(reinterpret_cast<const __m256i*>(p))});
}
// A load that is made once and kept in a register, where the compiler would fold it into several instructions.
template <class T>
ZEB_INLINE Vec<T> loadOnce(const T* p) {
  Vec<T> a = load(p);
  __asm__("" : "+x"(a.v));
  return a;
}
template <class T>
ZEB_INLINE void store(T* p, Vec<T> a) {
  _mm256_storeu_si256(reinterpret_cast<__m256i*>(p), bits(a.v));
}
// To a 32-byte boundary, past the cache.
template <class T>
ZEB_INLINE void stream(T* p, Vec<T> a) {
  _mm256_stream_si256(reinterpret_cast<__m256i*>(p), bits(a.v));
}
ZEB_INLINE void streamFence() {
  _mm_sfence();
}

// All-ones in the first n of eight (four) lanes.
ZEB_INLINE __m256i firstLanes32(int n) {
  return _mm256_cmpgt_epi32(_mm256_set1_epi32(n), _mm256_setr_epi32(0, 1, 2, 3, 4, 5, 6, 7));
}
ZEB_INLINE __m256i firstLanes64(int n) {
  return _mm256_cmpgt_epi32(_mm256_set1_epi32(n), _mm256_setr_epi32(0, 0, 1, 1, 2, 2, 3, 3));
}

// All ones in the first n elements, 0 <= n <= lanes.
ZEB_INLINE __m256i firstBytes(int n) {
  const __m256i index = _mm256_setr_epi8(0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17, 18, 19, 20, 21,
                                         22, 23, 24, 25, 26, 27, 28, 29, 30, 31);
  return _mm256_cmpgt_epi8(_mm256_set1_epi8(static_cast<char>(n)), index);
}
template <class T>
ZEB_INLINE Vec<T> firstElements(int n) {
  return as<T>(Vec<Zeb8u>{firstBytes(n * static_cast<int>(sizeof(T)))});
}

// The first n elements, 0 <= n <= lanes; the other lanes are 0.
template <class T>
ZEB_INLINE Vec<T> loadN(const T* p, int n) {
  if constexpr (sizeof(T) == 4) {
    return as<T>(V32s{_mm256_maskload_epi32(reinterpret_cast<const int*>(p), firstLanes32(n))});
  } else if constexpr (sizeof(T) == 8) {
    return as<T>(V64f{_mm256_maskload_pd(reinterpret_cast<const double*>(p), firstLanes64(n))});
  } else {
    alignas(32) T block[Vec<T>::lanes] = {};
    memcpy(block, p, static_cast<size_t>(n) * sizeof(T));
    return load(block);
  }
}
template <class T>
ZEB_INLINE void storeN(T* p, Vec<T> a, int n) {
  if constexpr (sizeof(T) == 4) {
    _mm256_maskstore_epi32(reinterpret_cast<int*>(p), firstLanes32(n), bits(a.v));
  } else if constexpr (sizeof(T) == 8) {
    _mm256_maskstore_pd(reinterpret_cast<double*>(p), firstLanes64(n), _mm256_castsi256_pd(bits(a.v)));
  } else {
    alignas(32) T block[Vec<T>::lanes];
    store(block, a);
    memcpy(p, block, static_cast<size_t>(n) * sizeof(T));
  }
}

// The elements of those lanes whose mask is all ones; the memory of the others is not touched, the lanes are 0.
ZEB_INLINE V32s loadWhere(const Zeb32s* p, V32s mask) {
  return {_mm256_maskload_epi32(p, mask.v)};
}
ZEB_INLINE V32f loadWhere(const Zeb32f* p, V32s mask) {
  return {_mm256_maskload_ps(p, mask.v)};
}

// n pairs of floats taken apart, 0 <= n <= 8; the lanes behind them are 0.
ZEB_INLINE void loadPairs(const Zeb32f* p, int n, V32f& first, V32f& second) {
  const V32f a = loadN(p, 2 * n), b = n > 4 ? loadN(p + 8, 2 * n - 8) : V32f{_mm256_setzero_ps()};
  const __m256 low = _mm256_permute2f128_ps(a.v, b.v, 0x20), high = _mm256_permute2f128_ps(a.v, b.v, 0x31);
  first = {_mm256_shuffle_ps(low, high, 0x88)};
  second = {_mm256_shuffle_ps(low, high, 0xDD)};
}

// ---- Constants ----

ZEB_INLINE V8u splat(Zeb8u x) {
  return {_mm256_set1_epi8(static_cast<char>(x))};
}
ZEB_INLINE V8s splat(Zeb8s x) {
  return {_mm256_set1_epi8(x)};
}
ZEB_INLINE V16u splat(Zeb16u x) {
  return {_mm256_set1_epi16(static_cast<short>(x))};
}
ZEB_INLINE V16s splat(Zeb16s x) {
  return {_mm256_set1_epi16(x)};
}
ZEB_INLINE V32s splat(Zeb32s x) {
  return {_mm256_set1_epi32(x)};
}
ZEB_INLINE V32f splat(Zeb32f x) {
  return {_mm256_set1_ps(x)};
}
ZEB_INLINE V64f splat(Zeb64f x) {
  return {_mm256_set1_pd(x)};
}

// ---- Arithmetic ----

ZEB_INLINE V8u operator+(V8u a, V8u b) {
  return {_mm256_add_epi8(a.v, b.v)};
}
ZEB_INLINE V16u operator+(V16u a, V16u b) {
  return {_mm256_add_epi16(a.v, b.v)};
}
ZEB_INLINE V16s operator+(V16s a, V16s b) {
  return {_mm256_add_epi16(a.v, b.v)};
}
ZEB_INLINE V32s operator+(V32s a, V32s b) {
  return {_mm256_add_epi32(a.v, b.v)};
}
ZEB_INLINE V32f operator+(V32f a, V32f b) {
  return {_mm256_add_ps(a.v, b.v)};
}
ZEB_INLINE V64f operator+(V64f a, V64f b) {
  return {_mm256_add_pd(a.v, b.v)};
}
ZEB_INLINE V8u operator-(V8u a, V8u b) {
  return {_mm256_sub_epi8(a.v, b.v)};
}
ZEB_INLINE V16u operator-(V16u a, V16u b) {
  return {_mm256_sub_epi16(a.v, b.v)};
}
ZEB_INLINE V16s operator-(V16s a, V16s b) {
  return {_mm256_sub_epi16(a.v, b.v)};
}
ZEB_INLINE V32s operator-(V32s a, V32s b) {
  return {_mm256_sub_epi32(a.v, b.v)};
}
ZEB_INLINE V32f operator-(V32f a, V32f b) {
  return {_mm256_sub_ps(a.v, b.v)};
}
ZEB_INLINE V64f operator-(V64f a, V64f b) {
  return {_mm256_sub_pd(a.v, b.v)};
}
ZEB_INLINE V16s operator*(V16s a, V16s b) {
  return {_mm256_mullo_epi16(a.v, b.v)};
}
ZEB_INLINE V32s operator*(V32s a, V32s b) {
  return {_mm256_mullo_epi32(a.v, b.v)};
}
ZEB_INLINE V32f operator*(V32f a, V32f b) {
  return {_mm256_mul_ps(a.v, b.v)};
}
ZEB_INLINE V64f operator*(V64f a, V64f b) {
  return {_mm256_mul_pd(a.v, b.v)};
}
ZEB_INLINE V32f operator/(V32f a, V32f b) {
  return {_mm256_div_ps(a.v, b.v)};
}
ZEB_INLINE V64f operator/(V64f a, V64f b) {
  return {_mm256_div_pd(a.v, b.v)};
}

// Saturating sums and differences.
ZEB_INLINE V8u addSat(V8u a, V8u b) {
  return {_mm256_adds_epu8(a.v, b.v)};
}
ZEB_INLINE V16u addSat(V16u a, V16u b) {
  return {_mm256_adds_epu16(a.v, b.v)};
}
ZEB_INLINE V16s addSat(V16s a, V16s b) {
  return {_mm256_adds_epi16(a.v, b.v)};
}
ZEB_INLINE V8u subSat(V8u a, V8u b) {
  return {_mm256_subs_epu8(a.v, b.v)};
}
ZEB_INLINE V16u subSat(V16u a, V16u b) {
  return {_mm256_subs_epu16(a.v, b.v)};
}
ZEB_INLINE V16s subSat(V16s a, V16s b) {
  return {_mm256_subs_epi16(a.v, b.v)};
}

// Rounded once: a x b + c, a x b - c, c - a x b.
ZEB_INLINE V32f fma(V32f a, V32f b, V32f c) {
  return {_mm256_fmadd_ps(a.v, b.v, c.v)};
}
ZEB_INLINE V64f fma(V64f a, V64f b, V64f c) {
  return {_mm256_fmadd_pd(a.v, b.v, c.v)};
}
ZEB_INLINE V32f fms(V32f a, V32f b, V32f c) {
  return {_mm256_fmsub_ps(a.v, b.v, c.v)};
}
ZEB_INLINE V32f fnma(V32f a, V32f b, V32f c) {
  return {_mm256_fnmadd_ps(a.v, b.v, c.v)};
}
ZEB_INLINE V64f fnma(V64f a, V64f b, V64f c) {
  return {_mm256_fnmadd_pd(a.v, b.v, c.v)};
}

ZEB_INLINE V32f sqrt(V32f a) {
  return {_mm256_sqrt_ps(a.v)};
}
ZEB_INLINE V64f sqrt(V64f a) {
  return {_mm256_sqrt_pd(a.v)};
}
// The processor's reciprocal to 12 bits.
ZEB_INLINE V32f approximateReciprocal(V32f a) {
  return {_mm256_rcp_ps(a.v)};
}

// min(a, b) = a < b ? a : b and max(a, b) = a > b ? a : b, so for floats the second operand wins where one is not a
// number and between zeros of either sign.
ZEB_INLINE V8u min(V8u a, V8u b) {
  return {_mm256_min_epu8(a.v, b.v)};
}
ZEB_INLINE V16u min(V16u a, V16u b) {
  return {_mm256_min_epu16(a.v, b.v)};
}
ZEB_INLINE V16s min(V16s a, V16s b) {
  return {_mm256_min_epi16(a.v, b.v)};
}
ZEB_INLINE V32s min(V32s a, V32s b) {
  return {_mm256_min_epi32(a.v, b.v)};
}
ZEB_INLINE V32f min(V32f a, V32f b) {
  return {_mm256_min_ps(a.v, b.v)};
}
ZEB_INLINE V64f min(V64f a, V64f b) {
  return {_mm256_min_pd(a.v, b.v)};
}
ZEB_INLINE V8u max(V8u a, V8u b) {
  return {_mm256_max_epu8(a.v, b.v)};
}
ZEB_INLINE V16u max(V16u a, V16u b) {
  return {_mm256_max_epu16(a.v, b.v)};
}
ZEB_INLINE V16s max(V16s a, V16s b) {
  return {_mm256_max_epi16(a.v, b.v)};
}
ZEB_INLINE V32s max(V32s a, V32s b) {
  return {_mm256_max_epi32(a.v, b.v)};
}
ZEB_INLINE V32f max(V32f a, V32f b) {
  return {_mm256_max_ps(a.v, b.v)};
}
ZEB_INLINE V64f max(V64f a, V64f b) {
  return {_mm256_max_pd(a.v, b.v)};
}

// ---- Bits ----

template <class T>
ZEB_INLINE Vec<T> operator&(Vec<T> a, Vec<T> b) {
  return as<T>(V8u{_mm256_and_si256(bits(a.v), bits(b.v))});
}
template <class T>
ZEB_INLINE Vec<T> operator|(Vec<T> a, Vec<T> b) {
  return as<T>(V8u{_mm256_or_si256(bits(a.v), bits(b.v))});
}
template <class T>
ZEB_INLINE Vec<T> operator^(Vec<T> a, Vec<T> b) {
  return as<T>(V8u{_mm256_xor_si256(bits(a.v), bits(b.v))});
}
// b where a is clear.
template <class T>
ZEB_INLINE Vec<T> andNot(Vec<T> a, Vec<T> b) {
  return as<T>(V8u{_mm256_andnot_si256(bits(a.v), bits(b.v))});
}
template <int n>
ZEB_INLINE V16s shiftLeft(V16s a) {
  return {_mm256_slli_epi16(a.v, n)};
}
template <int n>
ZEB_INLINE V32s shiftLeft(V32s a) {
  return {_mm256_slli_epi32(a.v, n)};
}
// Arithmetic for signed, logical for unsigned elements.
template <int n>
ZEB_INLINE V16s shiftRight(V16s a) {
  return {_mm256_srai_epi16(a.v, n)};
}
template <int n>
ZEB_INLINE V16u shiftRight(V16u a) {
  return {_mm256_srli_epi16(a.v, n)};
}
template <int n>
ZEB_INLINE V32s shiftRight(V32s a) {
  return {_mm256_srai_epi32(a.v, n)};
}

ZEB_INLINE V16s abs(V16s a) {
  return {_mm256_abs_epi16(a.v)};
}
ZEB_INLINE V32s abs(V32s a) {
  return {_mm256_abs_epi32(a.v)};
}
ZEB_INLINE V32f abs(V32f a) {
  return andNot(splat(-0.0f), a);
}

// ---- Comparisons: all ones where true. Ordered for floats: false where one value is not a number. ----

ZEB_INLINE V8u equal(V8u a, V8u b) {
  return {_mm256_cmpeq_epi8(a.v, b.v)};
}
ZEB_INLINE V16u equal(V16u a, V16u b) {
  return {_mm256_cmpeq_epi16(a.v, b.v)};
}
ZEB_INLINE V16s equal(V16s a, V16s b) {
  return {_mm256_cmpeq_epi16(a.v, b.v)};
}
ZEB_INLINE V32s equal(V32s a, V32s b) {
  return {_mm256_cmpeq_epi32(a.v, b.v)};
}
ZEB_INLINE V32f equal(V32f a, V32f b) {
  return {_mm256_cmp_ps(a.v, b.v, _CMP_EQ_OQ)};
}
ZEB_INLINE V16s greater(V16s a, V16s b) {
  return {_mm256_cmpgt_epi16(a.v, b.v)};
}
ZEB_INLINE V32s greater(V32s a, V32s b) {
  return {_mm256_cmpgt_epi32(a.v, b.v)};
}
ZEB_INLINE V32f greater(V32f a, V32f b) {
  return {_mm256_cmp_ps(a.v, b.v, _CMP_GT_OQ)};
}
ZEB_INLINE V64f greater(V64f a, V64f b) {
  return {_mm256_cmp_pd(a.v, b.v, _CMP_GT_OQ)};
}
template <class T>
ZEB_INLINE Vec<T> less(Vec<T> a, Vec<T> b) {
  return greater(b, a);
}
template <class T>
ZEB_INLINE Vec<T> atMost(Vec<T> a, Vec<T> b) {
  if constexpr (std::is_same_v<T, Zeb32f>) {
    return {_mm256_cmp_ps(a.v, b.v, _CMP_LE_OQ)};
  } else {
    return equal(min(a, b), a);
  }
}

// yes where the mask is all ones, no where it is all zeros.
template <class M, class T>
ZEB_INLINE Vec<T> select(Vec<M> mask, Vec<T> yes, Vec<T> no) {
  if constexpr (sizeof(M) == 4) {
    return as<T>(V32f{_mm256_blendv_ps(as<Zeb32f>(no).v, as<Zeb32f>(yes).v, as<Zeb32f>(mask).v)});
  } else {
    return as<T>(V8u{_mm256_blendv_epi8(bits(no.v), bits(yes.v), bits(mask.v))});
  }
}
// yes where the sign bit of a lane is set.
ZEB_INLINE V32f selectNegative(V32f sign, V32f yes, V32f no) {
  return {_mm256_blendv_ps(no.v, yes.v, sign.v)};
}
// The 32 bytes of a row that begin `bytes` after a, 0 < bytes <= 16; middle holds those that begin 16 bytes after a.
template <int bytes, class T>
ZEB_INLINE Vec<T> fromByte(Vec<T> a, Vec<T> middle) {
  if constexpr (bytes == 16) {
    return middle;
  } else {
    return as<T>(V8u{_mm256_alignr_epi8(bits(middle.v), bits(a.v), bytes)});
  }
}
// The 32 bytes from the middle of a to the middle of the vector b behind it.
template <class T>
ZEB_INLINE Vec<T> halvesBetween(Vec<T> a, Vec<T> b) {
  return as<T>(V8u{_mm256_permute2x128_si256(bits(a.v), bits(b.v), 0x21)});
}
template <class T>
ZEB_INLINE bool anyBit(Vec<T> a) {
  return !_mm256_testz_si256(bits(a.v), bits(a.v));
}
// One bit per byte, lane or float: the top bits, lane 0 in bit 0.
ZEB_INLINE unsigned topBits(V8u a) {
  return static_cast<unsigned>(_mm256_movemask_epi8(a.v));
}
ZEB_INLINE unsigned topBits(V32s a) {
  return static_cast<unsigned>(_mm256_movemask_ps(_mm256_castsi256_ps(a.v)));
}
ZEB_INLINE unsigned topBits(V32f a) {
  return static_cast<unsigned>(_mm256_movemask_ps(a.v));
}

// The lanes, each below 256, as bytes.
ZEB_INLINE void storeBytes(Zeb8u* p, V16u a) {
  const __m256i packed = _mm256_permute4x64_epi64(_mm256_packus_epi16(a.v, a.v), 0xD8);
  _mm_storeu_si128(reinterpret_cast<__m128i*>(p), _mm256_castsi256_si128(packed));
}
ZEB_INLINE void storeBytes(Zeb8u* p, V32f lanesOf32) {
  const __m256i words = _mm256_packus_epi32(bits(lanesOf32.v), bits(lanesOf32.v));
  const __m256i packed = _mm256_packus_epi16(_mm256_permute4x64_epi64(words, 0xD8), words);
  _mm_storel_epi64(reinterpret_cast<__m128i*>(p), _mm256_castsi256_si128(packed));
}
// Whether all lanes of a mask are set.
template <class T>
ZEB_INLINE bool allLanes(Vec<T> mask) {
  return _mm256_testc_si256(bits(mask.v), _mm256_set1_epi8(-1));
}
// Two masks of eight lanes as one of sixteen.
ZEB_INLINE V16u narrowMask(V32f a, V32f b) {
  return {_mm256_permute4x64_epi64(_mm256_packs_epi32(bits(a.v), bits(b.v)), 0xD8)};
}

// ---- Widening loads: as many elements as the wide vector has lanes ----

ZEB_INLINE V16s loadAs16s(const Zeb8u* p) {
  return {_mm256_cvtepu8_epi16(_mm_loadu_si128(reinterpret_cast<const __m128i*>(p)))};
}
ZEB_INLINE V32s loadAs32s(const Zeb8u* p) {
  return {_mm256_cvtepu8_epi32(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(p)))};
}
ZEB_INLINE V32s loadAs32s(const Zeb8s* p) {
  return {_mm256_cvtepi8_epi32(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(p)))};
}
ZEB_INLINE V32s loadAs32s(const Zeb16u* p) {
  return {_mm256_cvtepu16_epi32(_mm_loadu_si128(reinterpret_cast<const __m128i*>(p)))};
}
ZEB_INLINE V32s loadAs32s(const Zeb16s* p) {
  return {_mm256_cvtepi16_epi32(_mm_loadu_si128(reinterpret_cast<const __m128i*>(p)))};
}

// Eight pixels in the low half.
ZEB_INLINE V16s loadAs16sLow(const Zeb8u* p) {
  return {_mm256_castsi128_si256(_mm_cvtepu8_epi16(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(p))))};
}

// ---- Conversions ----

ZEB_INLINE V32f toFloat(V32s a) {
  return {_mm256_cvtepi32_ps(a.v)};
}
// Nearest even, and truncation; values outside the integer range give the most negative integer.
ZEB_INLINE V32s roundToInt(V32f a) {
  return {_mm256_cvtps_epi32(a.v)};
}
ZEB_INLINE V32s truncateToInt(V32f a) {
  return {_mm256_cvttps_epi32(a.v)};
}

// The halves of eight integers as doubles, exactly.
ZEB_INLINE V64f lowToDouble(V32s a) {
  return {_mm256_cvtepi32_pd(_mm256_castsi256_si128(a.v))};
}
ZEB_INLINE V64f highToDouble(V32s a) {
  return {_mm256_cvtepi32_pd(_mm256_extracti128_si256(a.v, 1))};
}
// Four floats as doubles.
ZEB_INLINE V64f loadAsDouble(const Zeb32f* p) {
  return {_mm256_cvtps_pd(_mm_loadu_ps(p))};
}

// Eight pixels of any type as floats, exactly.
template <class T>
ZEB_INLINE V32f loadAsFloat(const T* p) {
  return toFloat(loadAs32s(p));
}
template <>
ZEB_INLINE V32f loadAsFloat<Zeb32f>(const Zeb32f* p) {
  return load(p);
}
// The first n of eight pixels as floats; the other lanes are 0.
template <class T>
ZEB_INLINE V32f loadAsFloatN(const T* p, int n) {
  if constexpr (sizeof(T) == 4) {
    return loadN(p, n);
  } else {
    alignas(16) T block[8] = {};
    memcpy(block, p, static_cast<size_t>(n) * sizeof(T));
    return loadAsFloat(block);
  }
}

// The halves of a vector, widened in order.
ZEB_INLINE V16s widenLow(V8u a) {
  return {_mm256_cvtepu8_epi16(_mm256_castsi256_si128(a.v))};
}
ZEB_INLINE V16s widenHigh(V8u a) {
  return {_mm256_cvtepu8_epi16(_mm256_extracti128_si256(a.v, 1))};
}
ZEB_INLINE V32s widenLow(V16s a) {
  return {_mm256_cvtepi16_epi32(_mm256_castsi256_si128(a.v))};
}
ZEB_INLINE V32s widenLowUnsigned(V16s a) {
  return {_mm256_cvtepu16_epi32(_mm256_castsi256_si128(a.v))};
}
ZEB_INLINE V32s widenHigh(V16s a) {
  return {_mm256_cvtepi16_epi32(_mm256_extracti128_si256(a.v, 1))};
}
ZEB_INLINE V64f widenLow(V32f a) {
  return {_mm256_cvtps_pd(_mm256_castps256_ps128(a.v))};
}
ZEB_INLINE V64f widenHigh(V32f a) {
  return {_mm256_cvtps_pd(_mm256_extractf128_ps(a.v, 1))};
}

// Sums of products of neighbouring lanes: a[2k] b[2k] + a[2k + 1] b[2k + 1], exact but for both being -32768
// throughout.
ZEB_INLINE V32s pairProducts(V16s a, V16s b) {
  return {_mm256_madd_epi16(a.v, b.v)};
}
// Sums of neighbouring pixels: lane k holds pixel 2k plus pixel 2k + 1.
ZEB_INLINE V16s pairSums(V8u a) {
  return {_mm256_maddubs_epi16(a.v, _mm256_set1_epi8(1))};
}
// a0 b0 a1 b1 ... from each 128-bit half: the lower four lanes of both halves, and the upper four.
ZEB_INLINE V16s interleaveLow(V16s a, V16s b) {
  return {_mm256_unpacklo_epi16(a.v, b.v)};
}
ZEB_INLINE V16s interleaveHigh(V16s a, V16s b) {
  return {_mm256_unpackhi_epi16(a.v, b.v)};
}

// The elements moved up by some bytes (1..16), the first ones taken from the end of the vector before; and moved down,
// the last ones taken from the start of the vector behind.
template <int bytes, class T>
ZEB_INLINE Vec<T> movedUp(Vec<T> a, Vec<T> before) {
  const __m256i middle = _mm256_permute2x128_si256(bits(before.v), bits(a.v), 0x21);
  if constexpr (bytes == 16)
    return as<T>(V8u{middle});
  else
    return as<T>(V8u{_mm256_alignr_epi8(bits(a.v), middle, 16 - bytes)});
}
template <int bytes, class T>
ZEB_INLINE Vec<T> movedDown(Vec<T> a, Vec<T> behind) {
  const __m256i middle = _mm256_permute2x128_si256(bits(a.v), bits(behind.v), 0x21);
  if constexpr (bytes == 16)
    return as<T>(V8u{middle});
  else
    return as<T>(V8u{_mm256_alignr_epi8(middle, bits(a.v), bytes)});
}
// Whether all bits agree.
template <class T>
ZEB_INLINE bool identical(Vec<T> a, Vec<T> b) {
  const __m256i difference = _mm256_xor_si256(bits(a.v), bits(b.v));
  return _mm256_testz_si256(difference, difference);
}

// ---- Prefix sums ----

// Every lane becomes the sum of itself and the lanes before it; the sums wrap.
ZEB_INLINE V32s prefixSum(V32s a) {
  __m256i s = _mm256_add_epi32(a.v, _mm256_slli_si256(a.v, 4));
  s = _mm256_add_epi32(s, _mm256_slli_si256(s, 8));
  // The last sum of the low half goes to every lane of the high half.
  const __m256i low = _mm256_permute2x128_si256(s, s, 0x08);
  return {_mm256_add_epi32(s, _mm256_shuffle_epi32(low, 0xFF))};
}
ZEB_INLINE V16s prefixSum(V16s a) {
  __m256i s = _mm256_add_epi16(a.v, _mm256_slli_si256(a.v, 2));
  s = _mm256_add_epi16(s, _mm256_slli_si256(s, 4));
  s = _mm256_add_epi16(s, _mm256_slli_si256(s, 8));
  const __m256i low = _mm256_permute2x128_si256(s, s, 0x08);
  const __m256i last = _mm256_set1_epi16(0x0F0E);
  return {_mm256_add_epi16(s, _mm256_shuffle_epi8(low, last))};
}
ZEB_INLINE int firstLane(V32s a) {
  return _mm_cvtsi128_si32(_mm256_castsi256_si128(a.v));
}
ZEB_INLINE double firstLane(V64f a) {
  return _mm256_cvtsd_f64(a.v);
}
// The last lane in every lane.
ZEB_INLINE V32s lastLane(V32s a) {
  return {_mm256_permutevar8x32_epi32(a.v, _mm256_set1_epi32(7))};
}

// Two vectors narrowed with saturation into one, in order. The packing instructions work within 128-bit halves; one
// permutation of quarters puts them back in order.
ZEB_INLINE __m256i inOrder(__m256i packed) {
  return _mm256_permute4x64_epi64(packed, 0xD8);
}
ZEB_INLINE V16s narrowTo16s(V32s a, V32s b) {
  return {inOrder(_mm256_packs_epi32(a.v, b.v))};
}
ZEB_INLINE V16u narrowTo16u(V32s a, V32s b) {
  return {inOrder(_mm256_packus_epi32(a.v, b.v))};
}
ZEB_INLINE V8u narrowTo8u(V16s a, V16s b) {
  return {inOrder(_mm256_packus_epi16(a.v, b.v))};
}
ZEB_INLINE V8s narrowTo8s(V16s a, V16s b) {
  return {inOrder(_mm256_packs_epi16(a.v, b.v))};
}
ZEB_INLINE V32f narrowToFloat(V64f a, V64f b) {
  return {_mm256_set_m128(_mm256_cvtpd_ps(b.v), _mm256_cvtpd_ps(a.v))};
}

// Whether eight bytes are all 0.
ZEB_INLINE bool allZero8(const Zeb8u* p) {
  const __m128i a = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(p));
  return _mm_testz_si128(a, a);
}
// While it lives, float arithmetic and conversions round toward zero; then the control word is as it was.
class RoundTowardZero {
 public:
  RoundTowardZero() : before_(_mm_getcsr()) { _mm_setcsr(before_ | _MM_ROUND_TOWARD_ZERO); }
  ~RoundTowardZero() { _mm_setcsr((_mm_getcsr() & ~_MM_ROUND_MASK) | (before_ & _MM_ROUND_MASK)); }
  RoundTowardZero(const RoundTowardZero&) = delete;
  RoundTowardZero& operator=(const RoundTowardZero&) = delete;

 private:
  unsigned before_;
};

// ---- Within the 128-bit halves of a vector ----

// Elements moved by n places to higher or lower positions; zeros move in.
template <int n, class T>
ZEB_INLINE Vec<T> shiftUpInHalves(Vec<T> a) {
  return as<T>(V8u{_mm256_bslli_epi128(bits(a.v), n * static_cast<int>(sizeof(T)))});
}
template <int n, class T>
ZEB_INLINE Vec<T> shiftDownInHalves(Vec<T> a) {
  return as<T>(V8u{_mm256_bsrli_epi128(bits(a.v), n * static_cast<int>(sizeof(T)))});
}
// The low half in the place of the high one, or the other way round; zeros in the half that is left.
template <class T>
ZEB_INLINE Vec<T> lowHalfUp(Vec<T> a) {
  return as<T>(V8u{_mm256_permute2x128_si256(bits(a.v), bits(a.v), 0x08)});
}
template <class T>
ZEB_INLINE Vec<T> highHalfDown(Vec<T> a) {
  return as<T>(V8u{_mm256_permute2x128_si256(bits(a.v), bits(a.v), 0x81)});
}
// The last or first element of each half, or of the vector, everywhere.
ZEB_INLINE V8u repeatLastOfHalves(V8u a) {
  return {_mm256_shuffle_epi8(a.v, _mm256_set1_epi8(15))};
}
ZEB_INLINE V16u repeatLastOfHalves(V16u a) {
  return {_mm256_shuffle_epi8(a.v, _mm256_set1_epi16(0x0F0E))};
}
ZEB_INLINE V8u repeatFirstOfHalves(V8u a) {
  return {_mm256_shuffle_epi8(a.v, _mm256_setzero_si256())};
}
ZEB_INLINE V16u repeatFirstOfHalves(V16u a) {
  return {_mm256_shuffle_epi8(a.v, _mm256_set1_epi16(0x0100))};
}
template <class T>
ZEB_INLINE Vec<T> repeatLast(Vec<T> a) {
  return repeatLastOfHalves(as<T>(V8u{_mm256_permute4x64_epi64(bits(a.v), 0xFF)}));
}
template <class T>
ZEB_INLINE Vec<T> repeatFirst(Vec<T> a) {
  return repeatFirstOfHalves(as<T>(V8u{_mm256_permute4x64_epi64(bits(a.v), 0x00)}));
}
// Four elements from one place as the low half, four from another as the high half.
ZEB_INLINE V32f loadHalves(const Zeb32f* low, const Zeb32f* high) {
  return {_mm256_loadu2_m128(high, low)};
}
ZEB_INLINE V32s loadHalvesAs32s(const Zeb8u* low, const Zeb8u* high) {
  int a, b;
  memcpy(&a, low, 4);
  memcpy(&b, high, 4);
  return {_mm256_cvtepu8_epi32(_mm_insert_epi32(_mm_cvtsi32_si128(a), b, 1))};
}
ZEB_INLINE void storeHalves(Zeb32f* low, Zeb32f* high, V32f a) {
  _mm_storeu_ps(low, _mm256_castps256_ps128(a.v));
  _mm_storeu_ps(high, _mm256_extractf128_ps(a.v, 1));
}
// Each half: element j of vector i becomes element i of vector j.
ZEB_INLINE void transposeHalves(V32f& a, V32f& b, V32f& c, V32f& d) {
  const __m256 ab0 = _mm256_unpacklo_ps(a.v, b.v), ab1 = _mm256_unpackhi_ps(a.v, b.v);
  const __m256 cd0 = _mm256_unpacklo_ps(c.v, d.v), cd1 = _mm256_unpackhi_ps(c.v, d.v);
  a.v = _mm256_shuffle_ps(ab0, cd0, 0x44);
  b.v = _mm256_shuffle_ps(ab0, cd0, 0xEE);
  c.v = _mm256_shuffle_ps(ab1, cd1, 0x44);
  d.v = _mm256_shuffle_ps(ab1, cd1, 0xEE);
}
ZEB_INLINE V32s laneNumbers() {
  return {_mm256_setr_epi32(0, 1, 2, 3, 4, 5, 6, 7)};
}
// A lane that holds the least value.
ZEB_INLINE int laneOfLeast(V32s a) {
  __m256i m = _mm256_min_epi32(a.v, _mm256_permute2x128_si256(a.v, a.v, 0x01));
  m = _mm256_min_epi32(m, _mm256_shuffle_epi32(m, 0x4E));
  m = _mm256_min_epi32(m, _mm256_shuffle_epi32(m, 0xB1));
  return __builtin_ctz(topBits(equal(a, V32s{m})));
}
// Every lane's value moves to the next lane; the first lane takes the value at p.
ZEB_INLINE V32f moveUpOneLane(V32f a, const Zeb32f* p) {
  const __m256 moved = _mm256_permutevar8x32_ps(a.v, _mm256_setr_epi32(7, 0, 1, 2, 3, 4, 5, 6));
  return {_mm256_blend_ps(moved, _mm256_broadcast_ss(p), 1)};
}

// Lane k takes element index[k], 0 to 15, of the sixteen at p.
ZEB_INLINE V32f pickOfSixteen(const Zeb32f* p, V32s index) {
  const V32f low = {_mm256_permutevar8x32_ps(load(p).v, index.v)};
  const V32f high = {_mm256_permutevar8x32_ps(load(p + 8).v, index.v)};
  return select(greater(index, splat(7)), high, low);
}
// Lane k takes p[index[k]].
ZEB_INLINE V32f gather(const Zeb32f* p, V32s index) {
  return {_mm256_i32gather_ps(p, index.v, 4)};
}

// Eight mask bytes as lanes: all ones where the byte is not zero.
ZEB_INLINE V32s loadMask(const Zeb8u* p) {
  return greater(loadAs32s(p), splat(0));
}

// The value is needed here: keeps a compiler from forming all terms of a sum before it adds the first two, which takes
// more registers than there are.
template <class T>
ZEB_INLINE void settle(Vec<T>& a) {
  asm("" : "+x"(a.v));
}

// ---- Sums of products of 16-bit elements ----

// Lanes of two vectors in turn, within the halves of the register: the first four lanes of each half, and the last.
// packSat() and packSatUnsigned() undo the pair of them.
ZEB_INLINE V16s interleaveFirst(V16s a, V16s b) {
  return {_mm256_unpacklo_epi16(a.v, b.v)};
}
ZEB_INLINE V16s interleaveLast(V16s a, V16s b) {
  return {_mm256_unpackhi_epi16(a.v, b.v)};
}
ZEB_INLINE V16s packSat(V32s first, V32s last) {
  return {_mm256_packs_epi32(first.v, last.v)};
}
ZEB_INLINE V16u packSatUnsigned(V32s first, V32s last) {
  return {_mm256_packus_epi32(first.v, last.v)};
}
// even0 odd0 even1 odd1 ..., saturated.
ZEB_INLINE V16s packSatInTurn(V32s even, V32s odd) {
  const __m256i turns = _mm256_setr_epi8(0, 1, 8, 9, 2, 3, 10, 11, 4, 5, 12, 13, 6, 7, 14, 15,  //
                                         0, 1, 8, 9, 2, 3, 10, 11, 4, 5, 12, 13, 6, 7, 14, 15);
  return {_mm256_shuffle_epi8(_mm256_packs_epi32(even.v, odd.v), turns)};
}
// a0 b0 + a1 b1, a2 b2 + a3 b3, ...; exact but for the one sum 2 x 32768 x 32768, which wraps.
ZEB_INLINE V32s dotPairs(V16s a, V16s b) {
  return {_mm256_madd_epi16(a.v, b.v)};
}
// The two elements at p in every pair of lanes.
ZEB_INLINE V16s splatPair(const Zeb16s* p) {
  int pair;
  memcpy(&pair, p, sizeof pair);
  return {_mm256_set1_epi32(pair)};
}
ZEB_INLINE V16u operator*(V16u a, V16u b) {
  return {_mm256_mullo_epi16(a.v, b.v)};
}
// The upper 16 bits of the products.
ZEB_INLINE V16u highProduct(V16u a, V16u b) {
  return {_mm256_mulhi_epu16(a.v, b.v)};
}
ZEB_INLINE V16s loadAs16s(const Zeb16s* p) {
  return load(p);
}
// The same for bytes: unsigned elements of a times signed elements of b, pairs summed with saturation.
ZEB_INLINE V16s dotPairs(V8u a, V8s b) {
  return {_mm256_maddubs_epi16(a.v, b.v)};
}
ZEB_INLINE V8u interleaveFirst(V8u a, V8u b) {
  return {_mm256_unpacklo_epi8(a.v, b.v)};
}
ZEB_INLINE V8u interleaveLast(V8u a, V8u b) {
  return {_mm256_unpackhi_epi8(a.v, b.v)};
}
// Two bytes, the first in the low one, in every pair of lanes.
ZEB_INLINE V8s splatBytePair(int first, int second) {
  return {_mm256_set1_epi16(static_cast<short>((first & 0xFF) | (second & 0xFF) << 8))};
}
// The results of interleaveFirst() and interleaveLast(), put in order.
ZEB_INLINE void storeInOrder(Zeb16s* p, V16s first, V16s last) {
  _mm256_storeu_si256(reinterpret_cast<__m256i*>(p), _mm256_permute2x128_si256(first.v, last.v, 0x20));
  _mm256_storeu_si256(reinterpret_cast<__m256i*>(p + 16), _mm256_permute2x128_si256(first.v, last.v, 0x31));
}
// a b / 32768 to the nearest integer, ties upwards.
ZEB_INLINE V16s roundedHighProduct(V16s a, V16s b) {
  return {_mm256_mulhrs_epi16(a.v, b.v)};
}
// Lanes taken as unsigned, rounded once.
ZEB_INLINE V32f toFloatUnsigned(V32s a) {
  const V32s low = a & splat(0xFFFF), high = {_mm256_srli_epi32(a.v, 16)};
  return fma(toFloat(high), splat(65536.0f), toFloat(low));
}
// One value, nearest even; as the vector form.
ZEB_INLINE int roundToInt(Zeb32f a) {
  return _mm_cvtss_si32(_mm_set_ss(a));
}
// Sixteen lanes, saturated to the type.
ZEB_INLINE void storeSat(Zeb16s* p, V16s a) {
  store(p, a);
}
ZEB_INLINE void storeSat(Zeb16u* p, V16u a) {
  store(p, a);
}
ZEB_INLINE void storeSat(Zeb8u* p, V16s a) {
  _mm_storeu_si128(reinterpret_cast<__m128i*>(p), _mm256_castsi256_si128(narrowTo8u(a, a).v));
}
ZEB_INLINE void storeSat(Zeb8s* p, V16s a) {
  _mm_storeu_si128(reinterpret_cast<__m128i*>(p), _mm256_castsi256_si128(narrowTo8s(a, a).v));
}
// Two vectors to two places.
ZEB_INLINE void storeSat(Zeb16s* p, Zeb16s* q, V16s a, V16s b) {
  store(p, a);
  store(q, b);
}
ZEB_INLINE void storeHalves(void* p, void* q, __m256i v) {
  _mm_storeu_si128(static_cast<__m128i*>(p), _mm256_castsi256_si128(v));
  _mm_storeu_si128(static_cast<__m128i*>(q), _mm256_extracti128_si256(v, 1));
}
ZEB_INLINE void storeSat(Zeb8u* p, Zeb8u* q, V16s a, V16s b) {
  storeHalves(p, q, narrowTo8u(a, b).v);
}
ZEB_INLINE void storeSat(Zeb8s* p, Zeb8s* q, V16s a, V16s b) {
  storeHalves(p, q, narrowTo8s(a, b).v);
}

// ---- Halving and doubling rows ----

// Four pixels of three bytes at each of two places, one per half: bytes of pixels 0 and 1, then of pixels 2 and 3,
// channel by channel side by side. Sixteen bytes are read at each place; the last four bytes of each half are 0.
ZEB_INLINE V8u pixelPairs3(const Zeb8u* p, const Zeb8u* q) {
  const __m256i both = _mm256_set_m128i(_mm_loadu_si128(reinterpret_cast<const __m128i*>(q)),
                                        _mm_loadu_si128(reinterpret_cast<const __m128i*>(p)));
  const __m256i order = _mm256_setr_epi8(0, 3, 1, 4, 2, 5, 6, 9, 7, 10, 8, 11, -1, -1, -1, -1,  //
                                         0, 3, 1, 4, 2, 5, 6, 9, 7, 10, 8, 11, -1, -1, -1, -1);
  return {_mm256_shuffle_epi8(both, order)};
}
// The first six lanes of each half one after the other; two lanes of no meaning are written behind them.
ZEB_INLINE void storeSixes(Zeb16u* p, V16u a) {
  _mm_storeu_si128(reinterpret_cast<__m128i*>(p), _mm256_castsi256_si128(a.v));
  _mm_storeu_si128(reinterpret_cast<__m128i*>(p + 6), _mm256_extracti128_si256(a.v, 1));
}
// Eight pairs of floats taken apart, lanes in the order 0 1 4 5 2 3 6 7, which joinedHalves() undoes.
ZEB_INLINE void splitPairs(const Zeb32f* p, V32f& first, V32f& second) {
  const V32f a = load(p), b = load(p + 8);
  first = {_mm256_shuffle_ps(a.v, b.v, 0x88)};
  second = {_mm256_shuffle_ps(a.v, b.v, 0xDD)};
}
ZEB_INLINE V32f joinedHalves(V32f a) {
  return as<Zeb32f>(V8u{inOrder(bits(a.v))});
}
// Sixteen bytes with some bits flipped, widened.
ZEB_INLINE V16s widenedFlipped(const Zeb8u* p, V8u flip) {
  const __m128i a = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
  return {_mm256_cvtepu8_epi16(_mm_xor_si128(a, _mm256_castsi256_si128(flip.v)))};
}
// even0 odd0 even1 odd1 ...
ZEB_INLINE void storeInTurn(Zeb32f* p, V32f even, V32f odd) {
  const __m256 low = _mm256_unpacklo_ps(even.v, odd.v), high = _mm256_unpackhi_ps(even.v, odd.v);
  _mm256_storeu_ps(p, _mm256_permute2f128_ps(low, high, 0x20));
  _mm256_storeu_ps(p + 8, _mm256_permute2f128_ps(low, high, 0x31));
}

}  // namespace zeb
