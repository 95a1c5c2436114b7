// The vector vocabulary, second part: wider and narrower elements, and what goes across the lanes: prefix sums,
// shuffles within and between the halves of a register, sums of products, stores that pack or interleave.
#pragma once

#include "core/vec.h"

namespace zeb {

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
    copyFew(block, p, n * static_cast<int>(sizeof(T)));
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

// Sums of neighbouring pixels: lane k holds pixel 2k plus pixel 2k + 1.
ZEB_INLINE V16s pairSums(V8u a) {
  return {_mm256_maddubs_epi16(a.v, _mm256_set1_epi8(1))};
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
