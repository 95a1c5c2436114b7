// Elements in other lanes: halves of registers, interleaving, lookups.
#pragma once

#include "core/vec.h"

namespace zeb {

// Four elements from one place as the low half, four from another as the high half.
ZEB_INLINE V32f loadHalves(const Zeb32f* low, const Zeb32f* high) {
  return {_mm256_loadu2_m128(high, low)};
}

// Sixteen bytes from one place as the low half, sixteen from another as the high half.
ZEB_INLINE V8u loadHalves(const Zeb8u* low, const Zeb8u* high) {
  return {_mm256_loadu2_m128i(reinterpret_cast<const __m128i*>(high), reinterpret_cast<const __m128i*>(low))};
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

// Byte k takes the one that index[k], 0 to 15, tells of its half of the register; 0 where the top bit of the index is
// set.
ZEB_INLINE V8u bytesAt(V8u a, V8u index) {
  return {_mm256_shuffle_epi8(a.v, index.v)};
}

// Lane k takes lane index[k] modulo 8.
ZEB_INLINE V32f lanesAt(V32f a, V32s index) {
  return {_mm256_permutevar8x32_ps(a.v, index.v)};
}

// Every lane's value moves to the next lane or to the one before; the first or last lane takes the value at p.
ZEB_INLINE V32f moveUpOneLane(V32f a, const Zeb32f* p) {
  const V32f moved = lanesAt(a, {_mm256_setr_epi32(7, 0, 1, 2, 3, 4, 5, 6)});
  return {_mm256_blend_ps(moved.v, _mm256_broadcast_ss(p), 1)};
}
ZEB_INLINE V32f moveDownOneLane(V32f a, const Zeb32f* p) {
  const V32f moved = lanesAt(a, {_mm256_setr_epi32(1, 2, 3, 4, 5, 6, 7, 0)});
  return {_mm256_blend_ps(moved.v, _mm256_broadcast_ss(p), 0x80)};
}

// Lane k takes element index[k], 0 to 15, of the sixteen at p.
ZEB_INLINE V32f pickOfSixteen(const Zeb32f* p, V32s index) {
  return select(greater(index, splat(7)), lanesAt(load(p + 8), index), lanesAt(load(p), index));
}

// Lane k takes p[index[k]].
ZEB_INLINE V32f gather(const Zeb32f* p, V32s index) {
  return {_mm256_i32gather_ps(p, index.v, 4)};
}

// Lanes of two vectors in turn, within the halves of the register: the first four lanes of each half, and the last.
// packSat() and packSatUnsigned() undo the pair of them.
ZEB_INLINE V16s interleaveFirst(V16s a, V16s b) {
  return {_mm256_unpacklo_epi16(a.v, b.v)};
}

ZEB_INLINE V16s interleaveLast(V16s a, V16s b) {
  return {_mm256_unpackhi_epi16(a.v, b.v)};
}

ZEB_INLINE V8u interleaveFirst(V8u a, V8u b) {
  return {_mm256_unpacklo_epi8(a.v, b.v)};
}

ZEB_INLINE V8u interleaveLast(V8u a, V8u b) {
  return {_mm256_unpackhi_epi8(a.v, b.v)};
}

}  // namespace zeb
