// Elements in other lanes: halves of registers, interleaving, lookups.
#pragma once

#include "core/vec.h"

namespace zeb {

// Four elements from one place as the low half, four from another as the high half.
ZEB_INLINE V32f loadHalves(const Zeb32f* low, const Zeb32f* high) {
  return {_mm256_loadu2_m128(high, low)};
}

ZEB_INLINE void storeHalves(Zeb32f* low, Zeb32f* high, V32f a) {
  _mm_storeu_ps(low, _mm256_castps256_ps128(a.v));
  _mm_storeu_ps(high, _mm256_extractf128_ps(a.v, 1));
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
