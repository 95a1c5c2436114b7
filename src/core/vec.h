// The vector vocabulary: the one place that knows the 256-bit registers.
//
// V8u, V8s, V16u, V16s, V32s, V64u, V32f and V64f are vectors of that element. A kernel is written once over Vec<T>:
// load, store, the partial forms for the last elements of a row, splat, arithmetic, comparisons (all-ones masks of the
// same shape) and select, all of them lane by lane. Partial loads and stores touch exactly n elements. What changes the
// width of the elements or moves them to other lanes is in core/widen.h, narrow.h, shuffle.h, reduce.h.
#pragma once

#include <immintrin.h>
#include <stdint.h>
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
using V64u = Vec<uint64_t>;

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

// At most 32 bytes, in two moves that overlap.
__attribute__((noinline)) inline void copyFew(void* to, const void* from, int bytes) {
  const auto d = static_cast<char*>(to);
  const auto s = static_cast<const char*>(from);
  const auto ends = [=](auto piece) {
    decltype(piece) last;
    memcpy(&piece, s, sizeof(piece));
    memcpy(&last, s + bytes - sizeof(last), sizeof(last));
    memcpy(d, &piece, sizeof(piece));
    memcpy(d + bytes - sizeof(last), &last, sizeof(last));
  };
  if (bytes >= 16) return ends(__m128i());
  if (bytes >= 8) return ends(double());
  if (bytes >= 4) return ends(int());
  if (bytes >= 2) return ends(short());
  if (bytes == 1) *d = *s;
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
    copyFew(block, p, n * static_cast<int>(sizeof(T)));
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
    copyFew(p, block, n * static_cast<int>(sizeof(T)));
  }
}

// The elements of those lanes whose mask is all ones; the memory of the others is not touched, the lanes are 0.
ZEB_INLINE V32s loadWhere(const Zeb32s* p, V32s mask) {
  return {_mm256_maskload_epi32(p, mask.v)};
}
ZEB_INLINE V32f loadWhere(const Zeb32f* p, V32s mask) {
  return {_mm256_maskload_ps(p, mask.v)};
}

// Eight pairs of floats taken apart; from memory all or n of them, 0 <= n <= 8, the lanes behind those 0.
ZEB_INLINE void splitPairs(V32f a, V32f b, V32f& first, V32f& second) {
  const __m256 low = _mm256_permute2f128_ps(a.v, b.v, 0x20), high = _mm256_permute2f128_ps(a.v, b.v, 0x31);
  first = {_mm256_shuffle_ps(low, high, 0x88)};
  second = {_mm256_shuffle_ps(low, high, 0xDD)};
}
ZEB_INLINE void loadPairs(const Zeb32f* p, V32f& first, V32f& second) {
  splitPairs(load(p), load(p + 8), first, second);
}
ZEB_INLINE void loadPairs(const Zeb32f* p, int n, V32f& first, V32f& second) {
  const V32f a = loadN(p, 2 * n), b = n > 4 ? loadN(p + 8, 2 * n - 8) : V32f{_mm256_setzero_ps()};
  splitPairs(a, b, first, second);
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
ZEB_INLINE V64u splat(uint64_t x) {
  return {_mm256_set1_epi64x(static_cast<long long>(x))};
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
ZEB_INLINE V64u operator+(V64u a, V64u b) {
  return {_mm256_add_epi64(a.v, b.v)};
}
ZEB_INLINE V32f operator+(V32f a, V32f b) {
  return {_mm256_add_ps(a.v, b.v)};
}
ZEB_INLINE V64f operator+(V64f a, V64f b) {
  return {_mm256_add_pd(a.v, b.v)};
}
ZEB_INLINE V16s operator-(V16s a, V16s b) {
  return {_mm256_sub_epi16(a.v, b.v)};
}
ZEB_INLINE V32s operator-(V32s a, V32s b) {
  return {_mm256_sub_epi32(a.v, b.v)};
}
ZEB_INLINE V64u operator-(V64u a, V64u b) {
  return {_mm256_sub_epi64(a.v, b.v)};
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

// acc + a x b rounded once, with the operands in one order for the processor: of several values that are not numbers it
// is always the same one that the result repeats.
ZEB_INLINE V32f addProductInOrder(V32f acc, V32f a, V32f b) {
  __asm__("vfmadd231ps %2, %1, %0" : "+x"(acc.v) : "x"(a.v), "x"(b.v));
  return acc;
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
ZEB_INLINE V8s min(V8s a, V8s b) {
  return {_mm256_min_epi8(a.v, b.v)};
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
ZEB_INLINE V8s max(V8s a, V8s b) {
  return {_mm256_max_epi8(a.v, b.v)};
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
template <int n>
ZEB_INLINE V64u shiftLeft(V64u a) {
  return {_mm256_slli_epi64(a.v, n)};
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

template <int n>
ZEB_INLINE V64u shiftRight(V64u a) {
  return {_mm256_srli_epi64(a.v, n)};
}

ZEB_INLINE V16s abs(V16s a) {
  return {_mm256_abs_epi16(a.v)};
}
ZEB_INLINE V32f abs(V32f a) {
  return andNot(splat(-0.0f), a);
}

// ---- Comparisons: all ones where true. Ordered for floats: false where one value is not a number. ----

ZEB_INLINE V8u equal(V8u a, V8u b) {
  return {_mm256_cmpeq_epi8(a.v, b.v)};
}
ZEB_INLINE V8s equal(V8s a, V8s b) {
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

// The value is needed here: keeps a compiler from forming all terms of a sum before it adds the first two, which takes
// more registers than there are.
template <class T>
ZEB_INLINE void settle(Vec<T>& a) {
  asm("" : "+x"(a.v));
}
// The same place, of which nothing is known: keeps a compiler from putting what it reads there together from what it
// stored there, and from taking the sum apart that leads there.
template <class T>
ZEB_INLINE T* anew(T* p) {
  asm("" : "+r"(p));
  return p;
}

}  // namespace zeb
