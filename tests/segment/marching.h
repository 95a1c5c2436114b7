// What a result of the fast marching must be.
#pragma once

#include "reference/distance.h"
#include "support/compare.h"

namespace test {

// The stated signs, and magnitudes that no update would change, bit for bit.
inline testing::AssertionResult isFixedPoint(const ref::Plane<Zeb32f>& out, const ref::Plane<Zeb8u>& src,
                                             Zeb32f radius) {
  ref::Marching m{out, &src, radius};
  const auto failure = [&](int x, int y, const char* what) {
    return testing::AssertionFailure() << what << " at " << x << ", " << y << ": " << shown(out.at(x, y));
  };
  for (int y = 0; y < src.height; ++y)
    for (int x = 0; x < src.width; ++x) {
      const Zeb32f v = out.at(x, y);
      m.value.at(x, y) = v > 0 ? v : v == 0 ? 1e30f : ref::isBoundary(src, x, y) ? 0 : -v;
      if (ref::isBoundary(src, x, y) && v != -1e-10f) return failure(x, y, "boundary");
      if (src.at(x, y) ? !(v > 0) : v > 0 || v < -std::max(radius, 1e-10f)) return failure(x, y, "sign or band");
    }
  for (int y = 0; y < src.height; ++y)
    for (int x = 0; x < src.width; ++x)
      if (m.allowed(x, y) < m.value.at(x, y)) return failure(x, y, "not settled");
  return testing::AssertionSuccess();
}

// A fixed point near the reference's. The order of updates shows in the last bits; at the end of the band these decide
// between a distance and 0.
inline testing::AssertionResult agreesWithMarching(const ref::Plane<Zeb32f>& out, const ref::Plane<Zeb8u>& src,
                                                   Zeb32f radius) {
  if (auto result = isFixedPoint(out, src, radius); !result) return result;
  const auto close = [radius](Zeb32f a, Zeb32f b) {
    const Zeb32f tolerance = 2e-6f * std::max(1.0f, std::max(std::fabs(a), std::fabs(b)));
    return std::fabs(a - b) <= tolerance || (a * b == 0 && std::fabs(std::fabs(a + b) - radius) <= tolerance);
  };
  return agree(out, ref::marching(src, radius), close);
}

}  // namespace test
