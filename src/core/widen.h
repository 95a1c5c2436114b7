// Wider elements: widening loads, conversions to wider and to floating-point elements, masks from bytes.
#pragma once

#include "core/vec.h"

namespace zeb {

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

ZEB_INLINE V32f toFloat(V32s a) {
  return {_mm256_cvtepi32_ps(a.v)};
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

// The halves of eight integers, signed, as 64 bits modulo 2^64.
ZEB_INLINE V64u widenLow(V32s a) {
  return {_mm256_cvtepi32_epi64(_mm256_castsi256_si128(a.v))};
}

ZEB_INLINE V64u widenHigh(V32s a) {
  return {_mm256_cvtepi32_epi64(_mm256_extracti128_si256(a.v, 1))};
}

// Eight mask bytes as lanes: all ones where the byte is not zero.
ZEB_INLINE V32s loadMask(const Zeb8u* p) {
  return greater(loadAs32s(p), splat(0));
}

ZEB_INLINE V16s loadAs16s(const Zeb16s* p) {
  return load(p);
}

// Lanes taken as unsigned, rounded once.
ZEB_INLINE V32f toFloatUnsigned(V32s a) {
  const V32s low = a & splat(0xFFFF), high = {_mm256_srli_epi32(a.v, 16)};
  return fma(toFloat(high), splat(65536.0f), toFloat(low));
}

}  // namespace zeb
