// Narrower elements: rounding and truncation, saturating packs in order, stores that saturate; the rounding mode.
#pragma once

#include "core/vec.h"

namespace zeb {

// Nearest even, and truncation; values outside the integer range give the most negative integer.
ZEB_INLINE V32s roundToInt(V32f a) {
  return {_mm256_cvtps_epi32(a.v)};
}

ZEB_INLINE V32s truncateToInt(V32f a) {
  return {_mm256_cvttps_epi32(a.v)};
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

// The results of interleaveFirst() and interleaveLast(), put in order.
ZEB_INLINE void storeInOrder(Zeb16s* p, V16s first, V16s last) {
  _mm256_storeu_si256(reinterpret_cast<__m256i*>(p), _mm256_permute2x128_si256(first.v, last.v, 0x20));
  _mm256_storeu_si256(reinterpret_cast<__m256i*>(p + 16), _mm256_permute2x128_si256(first.v, last.v, 0x31));
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

}  // namespace zeb
