// Several elements to one: sums of products of neighbours, and the multiplications that they are made of.
#pragma once

#include "core/vec.h"

namespace zeb {

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

// The same for bytes: unsigned elements of a times signed elements of b, pairs summed with saturation.
ZEB_INLINE V16s dotPairs(V8u a, V8s b) {
  return {_mm256_maddubs_epi16(a.v, b.v)};
}

// Two bytes, the first in the low one, in every pair of lanes.
ZEB_INLINE V8s splatBytePair(int first, int second) {
  return {_mm256_set1_epi16(static_cast<short>((first & 0xFF) | (second & 0xFF) << 8))};
}

// Every lane of 64 bits is the sum of |a - b| over its eight bytes.
ZEB_INLINE V64u byteDistances(V8u a, V8u b) {
  return {_mm256_sad_epu8(a.v, b.v)};
}

// Neighbouring lanes of 32 bits, taken as unsigned, summed in 64 bits.
ZEB_INLINE V64u sumPairs(V32s a) {
  return (as<uint64_t>(a) & splat(uint64_t{0xFFFFFFFF})) + shiftRight<32>(as<uint64_t>(a));
}

// a0 + a1, b0 + b1, a2 + a3, b2 + b3.
ZEB_INLINE V64f sumsOfPairs(V64f a, V64f b) {
  return {_mm256_hadd_pd(a.v, b.v)};
}

// a b / 32768 to the nearest integer, ties upwards.
ZEB_INLINE V16s roundedHighProduct(V16s a, V16s b) {
  return {_mm256_mulhrs_epi16(a.v, b.v)};
}

}  // namespace zeb
