// Standard weights of the chamfer transforms.
//
// G. Borgefors, Distance transformations in digital images (1986), gives the optimal real weights and the integers that
// stand near them.
#include "core/checks.h"
#include "core/entry.h"

namespace {

using namespace zeb;

template <class T>
struct Weights {
  T mask3[3][2], mask5[3][3];
};

constexpr Weights<Zeb32f> realWeights = {
    {{1, 1}, {1, 2}, {0.955f, 0x1.5e8a72p+0f}},
    {{1, 1, 2}, {1, 2, 3}, {1, 1.4f, 0x1.193404p+1f}},
};
constexpr Weights<Zeb32s> integerWeights = {
    {{1, 1}, {1, 2}, {2, 3}},
    {{1, 1, 2}, {1, 2, 3}, {5, 7, 11}},
};

template <class T>
ZebStatus write(const Weights<T>& weights, int kerSize, ZebiNorm norm, T* pMetrics) {
  if (auto bad = firstFailure(present(pMetrics), require(kerSize == 3 || kerSize == 5, zebStsErrSize),
                              require(norm >= zebiNormInf && norm <= zebiNormL2, zebStsErrBadArgument)))
    return bad;
  const T* from = kerSize == 3 ? weights.mask3[norm] : weights.mask5[norm];
  for (int i = 0; i < (kerSize == 3 ? 2 : 3); ++i) pMetrics[i] = from[i];
  return zebStsOk;
}

}  // namespace

ZEB_ENTRY(zebiGetDistanceTransformMask_32f)(int kerSize, ZebiNorm norm, Zeb32f* pMetrics) {
  return write(realWeights, kerSize, norm, pMetrics);
}
ZEB_ENTRY(zebiGetDistanceTransformMask_32s)(int kerSize, ZebiNorm norm, Zeb32s* pMetrics) {
  return write(integerWeights, kerSize, norm, pMetrics);
}
ZEB_ENTRY(zebiGetDistanceTransformMask)(int maskType, Zeb32f* pMetrics) {
  const int norm = maskType % 10;
  if (norm < 0 || norm > 2) return zebStsErrBadArgument;
  return write(realWeights, maskType / 10, norm, pMetrics);
}
