// What a pyramid layer must be.
#pragma once

#include <limits>

#include "reference/layers.h"
#include "support/compare.h"

namespace test {

// Within one level of the exact result, or a hundredth for floats up to 1000.
template <class T, class K>
testing::AssertionResult agreesWithLayer(const ref::Plane<T>& got, const ref::Plane<T>& src,
                                         const std::vector<K>& kernel, Zeb32f rate, bool down) {
  ref::Plane<double> exact(src.width, src.height, src.channels);
  std::copy(src.data.begin(), src.data.end(), exact.data.begin());
  const auto weights = ref::layerWeights(kernel, sizeof(T) == 1 ? 13 : sizeof(T) == 2 ? 12 : 0, !down);
  const double step = rate == 1.99999f ? 2 : static_cast<double>(rate);
  exact =
      down ? ref::layerRead(ref::layerSmoothed(exact, weights), got.width, got.height, step)
           : ref::layerSmoothed(ref::layerRead(exact, got.width, got.height, 1 / static_cast<double>(rate)), weights);
  ref::Plane<T> want(got.width, got.height, got.channels);
  for (size_t k = 0; k < want.data.size(); ++k) {
    const double v = exact.data[k];
    if constexpr (std::is_floating_point_v<T>)
      want.data[k] = static_cast<T>(v);
    else
      want.data[k] =
          static_cast<T>(std::clamp(std::floor(v + 0.5), 0.0, static_cast<double>(std::numeric_limits<T>::max())));
  }
  const double tolerance = std::is_floating_point_v<T> ? 0.01 : 1;
  return agree(got, want, [=](T a, T b) { return near(a, b, tolerance); });
}

}  // namespace test
