// Pictures for the Hough transforms.
#pragma once

#include <cmath>

#include "reference/plane.h"
#include "support/random.h"

namespace test {

// Some lines and some noise.
inline ref::Plane<Zeb8u> drawing(int w, int h, int noisePercent, Random& random) {
  ref::Plane<Zeb8u> p(w, h);
  for (auto& v : p.data) v = random.within(1, 100) <= noisePercent ? Zeb8u(random.within(1, 255)) : Zeb8u(0);
  for (int line = 0; line < 4; ++line) {
    const double x0 = random.within(0, w - 1), y0 = random.within(0, h - 1), angle = random.real(0.0f, 3.14f);
    const double from = random.within(-80, 0), to = random.within(0, 80);
    for (double t = from; t <= to; t += 0.4) {
      const int x = static_cast<int>(std::lround(x0 + t * std::cos(angle))),
                y = static_cast<int>(std::lround(y0 + t * std::sin(angle)));
      if (x >= 0 && y >= 0 && x < w && y < h) p.at(x, y) = 255;
    }
  }
  return p;
}

}  // namespace test
