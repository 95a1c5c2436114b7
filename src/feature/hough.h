// What the standard and the probabilistic Hough transform share: the counts of angles and cells.
#pragma once

#include <math.h>

#include "core/checks.h"

namespace zeb {

constexpr Zeb32f largestAngle = 3.14159f;

// A and nRho in single precision, as 64-bit counts that a hostile delta cannot wrap.
inline int64_t houghCount(Zeb32f quotient) {
  return quotient < 0x1p40f ? static_cast<int64_t>(quotient) : int64_t{1} << 40;
}
inline int64_t houghAngleSteps(Zeb32f deltaTheta) {
  return houghCount(largestAngle / deltaTheta);
}
inline int64_t houghCells(ZebiSize roi, Zeb32f deltaRho) {
  return houghCount(static_cast<Zeb32f>(2 * (static_cast<int64_t>(roi.width) + roi.height) + 1) / deltaRho);
}

// Deltas above 0; a value that is not a number is not.
inline ZebStatus positiveDeltas(ZebiPoint_32f delta) {
  return require(delta.x > 0 && delta.y > 0, zebStsErrBadArgument);
}

}  // namespace zeb
