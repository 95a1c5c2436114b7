// Random stages of a Haar cascade.
#pragma once

#include "reference/haar.h"
#include "support/image.h"

namespace test {

template <class T>
T number(Random& random, int low, int high) {
  return std::is_integral_v<T> ? static_cast<T>(random.within(low, high))
                               : static_cast<T>(random.real(static_cast<float>(low), static_cast<float>(high)));
}

// A stage that may mix upright and tilted classifiers; tilted rectangles stay right of column 0.
template <class T>
ref::HaarStage<T> randomStage(Random& random, int length, bool mayTilt) {
  ref::HaarStage<T> s;
  s.features.reserve(1), s.counts.reserve(1);  // an empty stage has lists too
  for (auto* list : {&s.weights, &s.thresholds, &s.values1, &s.values2}) list->reserve(1);
  for (int i = 0; i < length; ++i) {
    const int count = random.within(1, 4);
    const bool tilted = mayTilt && random.within(0, 1);
    s.counts.push_back(count);
    s.tilted.push_back(tilted);
    for (int k = 0; k < count; ++k) {
      ZebiRect r = {random.within(0, 5), random.within(0, 5), random.within(1, 4), random.within(1, 4)};
      if (tilted) r.x += r.height;
      s.features.push_back(r);
      s.weights.push_back(k == 0 ? T(-1) : number<T>(random, -3, 3));
    }
    s.thresholds.push_back(number<T>(random, -30, 30));
    s.values1.push_back(number<T>(random, -5, 5));
    s.values2.push_back(number<T>(random, -5, 5));
  }
  return s;
}

inline ref::Plane<Zeb8u> tiltMask(const std::vector<bool>& tilted, bool inverted) {
  ref::Plane<Zeb8u> mask(static_cast<int>(tilted.size()), 1);
  for (size_t i = 0; i < tilted.size(); ++i) mask.data[i] = tilted[i] != inverted ? 200 : 0;
  return mask;
}

}  // namespace test
