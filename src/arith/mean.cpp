// Mean and standard deviation.
//
// Integers: with the exact sums S1 of the values and S2 of their squares over n pixels the mean is S1 / n, the
// deviation sqrt(n S2 - S1 S1) / n. Adding a constant to all values changes no deviation, so signed bytes count from
// -128 on.
//
// Floats are summed less the first of them, K (T. Chan, G. Golub, R. LeVeque, 1983): with the sums D1 of d = v - K and
// D2 of d d the mean is K + m, m = D1 / n, the deviation sqrt((D2 - m D1) / n).
#include "arith/sums.h"
#include "core/entry.h"

namespace {

using namespace zeb;

struct Moments {
  Zeb64f mean = 0, deviation = 0;
};

// The 128 bits of a b.
struct Wide {
  uint64_t high, low;
  Wide(uint64_t a, uint64_t b) {
    const uint64_t a0 = static_cast<uint32_t>(a), a1 = a >> 32, b0 = static_cast<uint32_t>(b), b1 = b >> 32;
    const uint64_t outer = a0 * b0, cross = a1 * b0 + (outer >> 32), inner = a0 * b1 + static_cast<uint32_t>(cross);
    high = a1 * b1 + (cross >> 32) + (inner >> 32);
    low = inner << 32 | static_cast<uint32_t>(outer);
  }
  // At most what is there.
  void subtract(const Wide& other) {
    high -= other.high + (low < other.low);
    low -= other.low;
  }
  // To the nearest double, ties to even: the uppermost 63 bits are converted, the last of them standing for all bits
  // behind it too, and the power of two is exact.
  Zeb64f rounded() const {
    uint64_t top = high, rest = low;
    int exponent = 64;
    if (top == 0) top = low, rest = 0, exponent = 0;
    if (top == 0) return 0;
    // The leading one goes to bit 62.
    const int shift = __builtin_clzll(top) - 1;
    if (shift < 0) {
      rest |= top & 1;
      top >>= 1;
    } else if (shift > 0) {
      top = top << shift | rest >> (64 - shift);
      rest <<= shift;
    }
    if (rest != 0) top |= 1;
    const uint64_t powerBits = static_cast<uint64_t>(1023 + exponent - shift) << 52;
    Zeb64f power;
    memcpy(&power, &powerBits, sizeof(power));
    return static_cast<Zeb64f>(static_cast<int64_t>(top)) * power;
  }
};

// Of unsigned values that are too large by `origin`; n is not 0.
Moments momentsOfWhole(const Totals& totals, uint64_t n, int origin) {
  const uint64_t sum = sumOfLanes(totals.sum), squares = sumOfLanes(totals.squares);
  Wide variance(n, squares);
  variance.subtract(Wide(sum, sum));
  const auto count = static_cast<Zeb64f>(static_cast<int64_t>(n));
  const auto shifted = static_cast<int64_t>(sum) - static_cast<int64_t>(n) * origin;
  return {static_cast<Zeb64f>(shifted) / count, sqrt(variance.rounded()) / count};
}

Moments momentsOfFloats(const Totals& totals, uint64_t n) {
  const Zeb64f sum = foldedLanes<8>(totals.lanes), squares = foldedLanes<8>(totals.lanes + 8);
  const auto count = static_cast<Zeb64f>(static_cast<int64_t>(n));
  const Zeb64f m = sum / count;
  Zeb64f v = __builtin_fma(-m, sum, squares);
  if (v < 0) v = 0;
  return {canonical(totals.shift + m), canonical(sqrt(v / count))};
}

template <class T>
RunKernel momentsKernel() {
  if constexpr (std::is_same_v<T, Zeb32f>) {
    return addElements<FloatMoments, T>;
  } else if constexpr (std::is_same_v<T, Zeb16u>) {
    return addElements<WordMoments, T>;
  } else {
    return addElements<ByteMoments<std::is_signed_v<T> ? 0x80 : 0>, T>;
  }
}

template <class T>
Moments moments(const Selection& selection) {
  constexpr bool floats = std::is_same_v<T, Zeb32f>;
  Totals totals;
  // The smallest value of an integer type counts as 0.
  Runs runs(selection, 1 << 30, !floats, std::is_signed_v<T> ? 0x80808080 : 0);
  T first;
  if (!runs.seekFirst(&first)) return {};
  if constexpr (floats) {
    if (!__builtin_isfinite(first)) first = 0;
    totals.shift = static_cast<Zeb64f>(first);
    uint32_t filling;
    memcpy(&filling, &first, sizeof(filling));
    runs.fillWith(filling);
  }
  const RunKernel add = momentsKernel<T>();
  for (Run run; runs.next(run);) add(totals, run.first, nullptr, run.n);
  const uint64_t n = selection.isMasked() ? runs.selected() : selection.pixels();
  if constexpr (floats) {
    return momentsOfFloats(totals, n);
  } else {
    return momentsOfWhole(totals, n, std::is_signed_v<T> ? 128 : 0);
  }
}

template <class T>
__attribute__((noinline)) ZebStatus meanAndDeviation(const Selection& selection, Zeb64f* pMean, Zeb64f* pStdDev) {
  if (auto bad = selection.flaw(also())) return bad;
  if (pMean == nullptr && pStdDev == nullptr) return zebStsOk;
  const Moments result = moments<T>(selection);
  if (pMean != nullptr) *pMean = result.mean;
  if (pStdDev != nullptr) *pStdDev = result.deviation;
  return zebStsOk;
}

}  // namespace

// ---- Bindings ----

#define MEAN_C1R(name, T)                                                                         \
  ZEB_ENTRY(name)(const T* pSrc, int srcStep, ZebiSize roiSize, Zeb64f* pMean, Zeb64f* pStdDev) { \
    return meanAndDeviation<T>(Selection(roiSize, image(pSrc, srcStep)), pMean, pStdDev);         \
  }
#define MEAN_C1MR(name, T)                                                                                           \
  ZEB_ENTRY(name)                                                                                                    \
  (const T* pSrc, int srcStep, const Zeb8u* pMask, int maskStep, ZebiSize roiSize, Zeb64f* pMean, Zeb64f* pStdDev) { \
    return meanAndDeviation<T>(Selection(roiSize, image(pSrc, srcStep)).under(image(pMask, maskStep)), pMean,        \
                               pStdDev);                                                                             \
  }
#define MEAN_C3CR(name, T)                                                                                  \
  ZEB_ENTRY(name)(const T* pSrc, int srcStep, ZebiSize roiSize, int coi, Zeb64f* pMean, Zeb64f* pStdDev) {  \
    return meanAndDeviation<T>(Selection(roiSize, image<3>(pSrc, srcStep)).ofChannel(coi), pMean, pStdDev); \
  }
#define MEAN_C3CMR(name, T)                                                                                \
  ZEB_ENTRY(name)                                                                                          \
  (const T* pSrc, int srcStep, const Zeb8u* pMask, int maskStep, ZebiSize roiSize, int coi, Zeb64f* pMean, \
   Zeb64f* pStdDev) {                                                                                      \
    Selection selection(roiSize, image<3>(pSrc, srcStep));                                                 \
    return meanAndDeviation<T>(selection.under(image(pMask, maskStep)).ofChannel(coi), pMean, pStdDev);    \
  }

MEAN_C1R(zebiMean_StdDev_8u_C1R, Zeb8u)
MEAN_C1R(zebiMean_StdDev_8s_C1R, Zeb8s)
MEAN_C1R(zebiMean_StdDev_16u_C1R, Zeb16u)
MEAN_C1R(zebiMean_StdDev_32f_C1R, Zeb32f)

MEAN_C1MR(zebiMean_StdDev_8u_C1MR, Zeb8u)
MEAN_C1MR(zebiMean_StdDev_8s_C1MR, Zeb8s)
MEAN_C1MR(zebiMean_StdDev_16u_C1MR, Zeb16u)
MEAN_C1MR(zebiMean_StdDev_32f_C1MR, Zeb32f)

MEAN_C3CR(zebiMean_StdDev_8u_C3CR, Zeb8u)
MEAN_C3CR(zebiMean_StdDev_8s_C3CR, Zeb8s)
MEAN_C3CR(zebiMean_StdDev_16u_C3CR, Zeb16u)
MEAN_C3CR(zebiMean_StdDev_32f_C3CR, Zeb32f)

MEAN_C3CMR(zebiMean_StdDev_8u_C3CMR, Zeb8u)
MEAN_C3CMR(zebiMean_StdDev_8s_C3CMR, Zeb8s)
MEAN_C3CMR(zebiMean_StdDev_16u_C3CMR, Zeb16u)
MEAN_C3CMR(zebiMean_StdDev_32f_C3CMR, Zeb32f)
