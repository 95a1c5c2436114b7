// 32 pixels of a row as bits, the leftmost in bit 0.
#pragma once

#include <stdint.h>

#include "core/narrow.h"

namespace zeb {

// The bits of the first n pixels, 1 <= n <= 32.
ZEB_INLINE uint32_t firstBits(int n) {
  return ~0u >> (32 - n);
}

// masks(k): a vector of masks, all ones or all zeros a lane, for the pixels from k on.
template <class T, class Masks>
ZEB_INLINE uint32_t bitsOf32(Masks masks) {
  if constexpr (sizeof(T) == 1) {
    return topBits(as<Zeb8u>(masks(0)));
  } else if constexpr (sizeof(T) == 2) {
    return topBits(as<Zeb8u>(narrowTo8s(as<Zeb16s>(masks(0)), as<Zeb16s>(masks(16)))));
  } else {
    const V16s first = narrowTo16s(as<Zeb32s>(masks(0)), as<Zeb32s>(masks(8)));
    const V16s last = narrowTo16s(as<Zeb32s>(masks(16)), as<Zeb32s>(masks(24)));
    return topBits(as<Zeb8u>(narrowTo8s(first, last)));
  }
}

// For which of the n pixels from p... on test(vectors...) holds, 0 <= n <= 32.
template <class T, class Test, class... P>
ZEB_INLINE uint32_t bitsWhere(int n, Test test, const T* first, const P*... more) {
  constexpr int lanes = Vec<T>::lanes;
  if (n == 32) return bitsOf32<T>([=](int k) ZEB_BODY { return test(load(first + k), load(more + k)...); });
  uint32_t bits = 0;
  for (int k = 0; k < n; k += lanes) {
    const int some = n - k < lanes ? n - k : lanes;
    const auto mask = test(loadN(first + k, some), loadN(more + k, some)...);
    bits |= bitsOf32<T>([=](int at) ZEB_BODY { return at == 0 ? mask : Vec<T>{}; }) << k;
  }
  return n > 0 ? bits & firstBits(n) : 0;
}

// Which of the n pixels at p differ from a value, 1 <= n <= 32; as numbers, where they are floats.
template <class T>
ZEB_INLINE uint32_t differing(const T* p, int n, Vec<T> value) {
  return ~bitsWhere(
             n, [=](Vec<T> v) ZEB_BODY { return equal(v, value); }, p) &
         firstBits(n);
}

}  // namespace zeb
