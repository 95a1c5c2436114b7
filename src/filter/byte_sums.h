// Rows of bytes under small taps: sums of 16 bits, twice as many to a vector.
//
// Where the absolute taps sum up to at most 128, no sum of products with bytes leaves 16 bits, and the processor's
// product of unsigned with signed bytes takes two taps at a time.
#pragma once

#include "core/narrow.h"
#include "core/reduce.h"
#include "core/shuffle.h"
#include "filter/separable.h"

namespace zeb {

inline bool fitsByteSums(const Zeb16s* kernel, int count) {
  int weight = 0;
  for (int j = 0; j < count; ++j) {
    weight += kernel[j] < 0 ? -kernel[j] : kernel[j];
    if (weight > 128 || kernel[j] > 127) return false;
  }
  return true;
}

// Taps j and j + 1, the second 0 behind the last tap, the first 0 before the first one.
template <int taps>
class BytePairs {
 public:
  BytePairs(const Zeb16s* kernel, int) {
    for (int j = 0; j < taps / 2; ++j) pairs_[j] = splatBytePair(kernel[2 * j], kernel[2 * j + 1]);
    lastThenZero_ = splatBytePair(kernel[taps - 1], 0);
    zeroThenLast_ = splatBytePair(0, kernel[taps - 1]);
  }
  constexpr int count() const { return taps; }
  V8s pair(int j) const { return pairs_[j]; }
  V8s lastThenZero() const { return lastThenZero_; }
  V8s zeroThenLast() const { return zeroThenLast_; }

 private:
  V8s pairs_[taps / 2];
  V8s lastThenZero_, zeroThenLast_;
};
template <>
class BytePairs<0> {
 public:
  BytePairs(const Zeb16s* kernel, int count) : kernel_(kernel), count_(count) {}
  int count() const { return count_; }
  V8s pair(int j) const { return splatBytePair(kernel_[2 * j], kernel_[2 * j + 1]); }
  V8s lastThenZero() const { return splatBytePair(kernel_[count_ - 1], 0); }
  V8s zeroThenLast() const { return splatBytePair(0, kernel_[count_ - 1]); }

 private:
  const Zeb16s* kernel_;
  int count_;
};

// How 16-bit sums become 16-bit results.
enum class WordScaling { none, powerOfTwo, general };

// Divisors whose multiplication is exact in 16 bits: 1, and 2 to 2^15.
inline WordScaling wordScaling(int divisor) {
  if (divisor == 1) return WordScaling::none;
  const bool powerOfTwo = divisor > 0 && divisor <= 1 << 15 && (divisor & (divisor - 1)) == 0;
  return powerOfTwo ? WordScaling::powerOfTwo : WordScaling::general;
}

template <WordScaling scaling>
class WordScale {
 public:
  explicit WordScale(int divisor) : scale_(divisor) {}
  ZEB_INLINE V16s operator()(V16s sum) const {
    const V32s first = shiftRight<16>(as<Zeb32s>(interleaveFirst(sum, sum)));
    const V32s last = shiftRight<16>(as<Zeb32s>(interleaveLast(sum, sum)));
    return packSat(scale_.template operator()<Rounding::nearest>(first),
                   scale_.template operator()<Rounding::nearest>(last));
  }

 private:
  Reciprocal<false> scale_;
};
template <>
class WordScale<WordScaling::none> {
 public:
  explicit WordScale(int) {}
  ZEB_INLINE V16s operator()(V16s sum) const { return sum; }
};
// The product rounds ties upwards. One less where the quotient's floor is even sends those ties down and nothing else.
template <>
class WordScale<WordScaling::powerOfTwo> {
 public:
  explicit WordScale(int divisor)
      : divisor_(splat(static_cast<Zeb16s>(divisor))), factor_(splat(static_cast<Zeb16s>((1 << 15) / divisor))) {}
  ZEB_INLINE V16s operator()(V16s sum) const {
    return roundedHighProduct(sum + equal(sum & divisor_, splat(Zeb16s(0))), factor_);
  }

 private:
  V16s divisor_, factor_;
};

constexpr int byteBlock = 32;

// Blocks of 32 outputs, rounded to the nearest. One-channel rows pair neighbouring bytes as they lie; others interleave
// the bytes of neighbouring pixels.
template <int taps, int channels, WordScaling scaling>
struct ByteSums {
  Shifted<Zeb8u, channels> source;
  BytePairs<taps> kernel;
  WordScale<scaling> scale;

  // At least one block; the last one may overlap the one before it.
  void run(Zeb16s* dst, int n) const {
    int i = 0;
    for (; i <= n - byteBlock; i += byteBlock) block(dst, i);
    if (i < n) block(dst, n - byteBlock);
  }

 private:
  ZEB_INLINE void block(Zeb16s* dst, int i) const {
    V16s first = splat(Zeb16s(0)), last = first;
    if constexpr (channels == 1) {
      V16s even = first, odd = first;
      for (int j = 0; j < kernel.count() / 2; ++j) {
        const Zeb8u* p = source.tap(2 * j) + i;
        const V8s pair = kernel.pair(j);
        even = even + dotPairs(load(p), pair);
        odd = odd + dotPairs(load(p + 1), pair);
        settle(even), settle(odd);
      }
      if (kernel.count() % 2) {
        const V8u a = load(source.tap(kernel.count() - 1) + i);
        even = even + dotPairs(a, kernel.lastThenZero());
        odd = odd + dotPairs(a, kernel.zeroThenLast());
      }
      first = interleaveFirst(even, odd);
      last = interleaveLast(even, odd);
    } else {
      for (int j = 0; j < kernel.count() / 2; ++j) {
        const V8u a = load(source.tap(2 * j) + i), b = load(source.tap(2 * j + 1) + i);
        const V8s pair = kernel.pair(j);
        first = first + dotPairs(interleaveFirst(a, b), pair);
        last = last + dotPairs(interleaveLast(a, b), pair);
        settle(first), settle(last);
      }
      if (kernel.count() % 2) {
        const V8u a = load(source.tap(kernel.count() - 1) + i);
        first = first + dotPairs(interleaveFirst(a, a), kernel.lastThenZero());
        last = last + dotPairs(interleaveLast(a, a), kernel.lastThenZero());
      }
    }
    storeInOrder(dst + i, scale(first), scale(last));
  }
};

}  // namespace zeb
