// Sums of products along a row or down a column of rows, and their conversion to the destination type.
//
// Element i of a result is the sum over the taps j of kernel[j] x tap(j)[i]. In a row filter tap(j) is the source row
// shifted by j pixels, in a column filter it is the j-th of the stacked rows; the arithmetic is the same. 16-bit
// kernels sum in 32 bits, modulo 2^32, so that the order of addition does not matter. Floats are summed in tap order.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include <limits>
#include <type_traits>

#include "core/narrow.h"
#include "core/reduce.h"
#include "core/shuffle.h"
#include "core/streaming.h"
#include "core/widen.h"

namespace zeb {

// Elements of a block. Results of whole blocks and of the elements beside them may be rounded differently.
constexpr int filterBlock = 16;

enum class Rounding { nearest, truncate };

// ---- Where the taps read ----

template <class S, int channels>
struct Shifted {
  using Element = S;
  const S* first;
  const S* tap(int j) const { return first + static_cast<ptrdiff_t>(j) * channels; }
};

// A fixed number of row pointers is kept by value: a store to the destination could otherwise change them.
template <class S, int taps>
struct Stacked {
  using Element = S;
  explicit Stacked(const S* const* rows) {
    for (int j = 0; j < taps; ++j) rows_[j] = rows[j];
  }
  const S* tap(int j) const { return rows_[j]; }

 private:
  const S* rows_[taps];
};
template <class S>
struct Stacked<S, 0> {
  using Element = S;
  explicit Stacked(const S* const* rows) : rows_(rows) {}
  const S* tap(int j) const { return rows_[j]; }

 private:
  const S* const* rows_;
};

// ---- From the 32-bit sum to the destination ----

template <class D>
ZEB_INLINE D clampAndConvert(Zeb32f v, Rounding rounding) {
  constexpr Zeb32f low = std::numeric_limits<D>::lowest(), high = std::numeric_limits<D>::max();
  const Zeb32f clamped = v < low ? low : v > high ? high : v;
  return static_cast<D>(rounding == Rounding::nearest ? roundToInt(clamped) : static_cast<int>(clamped));
}

template <Rounding rounding>
ZEB_INLINE V32s convert(V32f v) {
  if constexpr (rounding == Rounding::nearest) {
    return roundToInt(v);
  } else {
    return truncateToInt(v);
  }
}

// (float)sum x (1 / divisor), saturated. Sums are signed. Narrowing saturates after the conversion; but 2^31, which
// only divisors of 1 and -1 let through, would be converted with the wrong sign, and a guard keeps it out.
template <bool guarded>
class Reciprocal {
 public:
  explicit Reciprocal(int divisor) : factor_(1.0f / static_cast<Zeb32f>(divisor)) {}

  template <Rounding rounding>
  ZEB_INLINE V32s operator()(V32s sum) const {
    V32f v = toFloat(sum) * splat(factor_);
    if (guarded) v = min(v, splat(65535.0f));
    return convert<rounding>(v);
  }
  template <Rounding rounding, class D>
  ZEB_INLINE D one(Zeb32s sum) const {
    return clampAndConvert<D>(static_cast<Zeb32f>(sum) * factor_, rounding);
  }

 private:
  Zeb32f factor_;
};

// Sums of 16-bit elements that stay below 2^31 - 64 are rounded to less than 2^31.
inline bool needsGuard(const Zeb16s* kernel, int count, int divisor) {
  if (divisor != 1 && divisor != -1) return false;
  int64_t weight = 0;
  for (int j = 0; j < count; ++j) weight += kernel[j] < 0 ? -kernel[j] : kernel[j];
  return weight * 32768 >= INT32_MAX - 64;
}

// The same for unsigned sums, kept within the conversion's range at both ends: negative divisors give 0.
class ReciprocalUnsigned {
 public:
  explicit ReciprocalUnsigned(int divisor) : factor_(1.0f / static_cast<Zeb32f>(divisor)) {}

  template <Rounding rounding>
  ZEB_INLINE V32s operator()(V32s sum) const {
    return convert<rounding>(max(min(toFloatUnsigned(sum) * splat(factor_), splat(65535.0f)), splat(-1.0f)));
  }
  template <Rounding rounding>
  ZEB_INLINE Zeb16u one(unsigned sum) const {
    return clampAndConvert<Zeb16u>(static_cast<Zeb32f>(sum) * factor_, rounding);
  }

 private:
  Zeb32f factor_;
};

// The low 16 bits of (sum x f) >> 14 with f = trunc(16384 / divisor): bits 14 to 29 of the product, so that it may
// wrap in 32 bits. Nothing is rounded, so that blocks and single elements agree.
class FixedPoint {
 public:
  explicit FixedPoint(int divisor) : factor_(static_cast<Zeb16s>(16384.0f / static_cast<Zeb32f>(divisor))) {}

  template <Rounding>
  ZEB_INLINE V32s operator()(V32s sum) const {
    return shiftRight<16>(shiftLeft<2>(sum * splat(static_cast<Zeb32s>(factor_))));
  }
  template <Rounding, class D>
  ZEB_INLINE D one(Zeb32s sum) const {
    return static_cast<D>(static_cast<unsigned>(sum) * static_cast<unsigned>(factor_) >> 14);
  }

 private:
  Zeb16s factor_;
};

// ---- Sums of 16-bit products ----

// The taps in pairs, each pair in every pair of lanes: in registers for a known count, read again from the kernel
// otherwise.
template <int taps>
class TapPairs {
 public:
  TapPairs(const Zeb16s* kernel, int) : kernel_(kernel) {
    for (int j = 0; j < taps / 2; ++j) pairs_[j] = splatPair(kernel + 2 * j);
    const int last = static_cast<Zeb16u>(kernel[taps - 1]);
    lastThenZero_ = as<Zeb16s>(splat(last));
    zeroThenLast_ = as<Zeb16s>(splat(static_cast<int>(static_cast<unsigned>(last) << 16)));
  }
  constexpr int count() const { return taps; }
  Zeb16s operator[](int j) const { return kernel_[j]; }
  V16s pair(int j) const { return pairs_[j]; }
  // An odd tap with a zero behind or before it.
  V16s lastThenZero() const { return lastThenZero_; }
  V16s zeroThenLast() const { return zeroThenLast_; }

 private:
  const Zeb16s* kernel_;
  V16s pairs_[taps / 2];
  V16s lastThenZero_, zeroThenLast_;
};
template <>
class TapPairs<0> {
 public:
  TapPairs(const Zeb16s* kernel, int count) : kernel_(kernel), count_(count) {}
  int count() const { return count_; }
  Zeb16s operator[](int j) const { return kernel_[j]; }
  V16s pair(int j) const { return splatPair(kernel_ + 2 * static_cast<ptrdiff_t>(j)); }
  V16s lastThenZero() const { return as<Zeb16s>(splat(static_cast<int>(last()))); }
  V16s zeroThenLast() const { return as<Zeb16s>(splat(static_cast<int>(last() << 16))); }

 private:
  unsigned last() const { return static_cast<Zeb16u>(kernel_[count_ - 1]); }
  const Zeb16s* kernel_;
  int count_;
};

template <class Source, class Taps>
ZEB_INLINE Zeb32s sumOfProducts(const Source& source, const Taps& taps, int i) {
  unsigned sum = 0;
  for (int j = 0; j < taps.count(); ++j)
    sum += static_cast<unsigned>(static_cast<int>(taps[j]) * static_cast<int>(source.tap(j)[i]));
  return static_cast<Zeb32s>(sum);
}

// Two taps at a time: the rows of two taps are interleaved, each pair of lanes multiplied by the pair of taps.
template <int taps, class Source, class Scale>
struct InterleavedSums {
  Source source;
  TapPairs<taps> kernel;
  Scale scale;

  template <Rounding rounding>
  ZEB_INLINE V16s block(int i) const {
    V32s first = splat(0), last = splat(0);
    for (int j = 0; j < kernel.count() / 2; ++j) {
      const V16s a = loadAs16s(source.tap(2 * j) + i), b = loadAs16s(source.tap(2 * j + 1) + i);
      const V16s pair = kernel.pair(j);
      first = first + dotPairs(interleaveFirst(a, b), pair);
      last = last + dotPairs(interleaveLast(a, b), pair);
      settle(first), settle(last);
    }
    if (kernel.count() % 2) {
      const V16s a = loadAs16s(source.tap(kernel.count() - 1) + i);
      const V16s pair = kernel.lastThenZero();
      first = first + dotPairs(interleaveFirst(a, a), pair);
      last = last + dotPairs(interleaveLast(a, a), pair);
    }
    return packSat(scale.template operator()<rounding>(first), scale.template operator()<rounding>(last));
  }
  template <Rounding rounding, class D>
  ZEB_INLINE D one(int i) const {
    return scale.template one<rounding, D>(sumOfProducts(source, kernel, i));
  }
};

// One-channel rows: neighbouring pixels are already the pairs that two neighbouring taps need, those from an even
// pixel on for the even outputs, those from an odd pixel on for the odd ones.
template <int taps, class S, class Scale>
struct NeighbourSums {
  Shifted<S, 1> source;
  TapPairs<taps> kernel;
  Scale scale;

  template <Rounding rounding>
  ZEB_INLINE V16s block(int i) const {
    V32s even = splat(0), odd = splat(0);
    for (int j = 0; j < kernel.count() / 2; ++j) {
      const S* p = source.tap(2 * j) + i;
      const V16s pair = kernel.pair(j);
      even = even + dotPairs(loadAs16s(p), pair);
      odd = odd + dotPairs(loadAs16s(p + 1), pair);
      settle(even), settle(odd);
    }
    if (kernel.count() % 2) {
      const V16s a = loadAs16s(source.tap(kernel.count() - 1) + i);
      even = even + dotPairs(a, kernel.lastThenZero());
      odd = odd + dotPairs(a, kernel.zeroThenLast());
    }
    return packSatInTurn(scale.template operator()<rounding>(even), scale.template operator()<rounding>(odd));
  }
  template <Rounding rounding, class D>
  ZEB_INLINE D one(int i) const {
    return scale.template one<rounding, D>(sumOfProducts(source, kernel, i));
  }
};

// Unsigned pixels and taps: the halves of the products, put together.
template <class Source>
struct UnsignedSums {
  Source source;
  const Zeb16u* kernel;
  int count;
  ReciprocalUnsigned scale;

  template <Rounding rounding>
  ZEB_INLINE V16u block(int i) const {
    V32s first = splat(0), last = splat(0);
    for (int j = 0; j < count; ++j) {
      const V16u a = load(source.tap(j) + i), tap = splat(kernel[j]);
      const V16s low = as<Zeb16s>(a * tap), high = as<Zeb16s>(highProduct(a, tap));
      first = first + as<Zeb32s>(interleaveFirst(low, high));
      last = last + as<Zeb32s>(interleaveLast(low, high));
    }
    return packSatUnsigned(scale.template operator()<rounding>(first), scale.template operator()<rounding>(last));
  }
  template <Rounding rounding, class D>
  ZEB_INLINE D one(int i) const {
    unsigned sum = 0;
    for (int j = 0; j < count; ++j) sum += static_cast<unsigned>(kernel[j]) * source.tap(j)[i];
    return scale.template one<rounding>(sum);
  }
};

// ---- Runs of integer results ----

// What lies behind the n-th element of a run's source.
enum class Behind { unknown, readable };

// Whole blocks rounded in one way, the elements after the last of them in another: in a block that overlaps the one
// before it, or in the next one where a block of the source can be read behind the run.
template <Rounding whole, Rounding rest, Behind behind = Behind::unknown, class Sums, class D>
inline void filterRun(const Sums& sums, D* dst, int n) {
  int i = 0;
  for (; i <= n - filterBlock; i += filterBlock) storeSat(dst + i, sums.template block<whole>(i));
  if (i == n) return;
  if (behind == Behind::unknown && n < filterBlock) {
    for (; i < n; ++i) dst[i] = sums.template one<rest, D>(i);
    return;
  }
  const int from = behind == Behind::readable ? i : n - filterBlock;
  D last[filterBlock];
  storeSat(last, sums.template block<rest>(from));
  copyFew(dst + i, last + (i - from), (n - i) * static_cast<int>(sizeof(D)));
}

// ---- Few taps ----

// run(taps) with the number of taps as a constant where it is one of those whose loop is worth unrolling, else with 0.
template <int... unrolled, class Run>
inline void withTaps(int count, const Run& run) {
  const bool done = ((count == unrolled && (run(std::integral_constant<int, unrolled>()), true)) || ...);
  if (!done) run(std::integral_constant<int, 0>());
}

}  // namespace zeb
