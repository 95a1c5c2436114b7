// Colours that several sections use.
#pragma once

#include <algorithm>
#include <cmath>

#include "picture.h"

namespace tour {

struct Rgb {
  float r, g, b;  // 0 to 1
};

// 0 dark blue, over cyan and yellow, 1 red.
inline Rgb warmth(float t) {
  const auto hat = [t](float middle) { return std::clamp(1.5f - std::fabs(4 * t - middle), 0.0f, 1.0f); };
  return {hat(3), hat(2), hat(1)};
}

inline void put(Zeb8u* rgb, Rgb colour, float light) {
  const float channels[] = {colour.r, colour.g, colour.b};
  for (int i = 0; i < 3; ++i) rgb[i] = support::level(255 * light * channels[i]);
}

}  // namespace tour
