// What the chamfer transforms share.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include "core/checks.h"
#include "core/image.h"

namespace zeb {

// Weights of a straight step, a diagonal step and, for 5 x 5 masks, a knight's step.
template <class Weight, int mask>
bool positive(const Weight* weights) {
  for (int i = 0; i < (mask == 5 ? 3 : 2); ++i)
    if (!(weights[i] > 0)) return false;
  return true;
}

template <class T, int mask, class Weight>
ZebStatus chamferChecks(const Zeb8u* pSrc, int srcStep, const T* pDst, int dstStep, ZebiSize roi,
                        const Weight* pMetrics) {
  if (auto bad = checked(roi, image(pSrc, srcStep), image(pDst, dstStep), also(pMetrics))) return bad;
  return require(positive<Weight, mask>(pMetrics), zebStsErrMetric);
}

}  // namespace zeb
