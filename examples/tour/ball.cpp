#include "ball.h"

#include <cmath>

namespace tour {

support::Picture withBall(const support::Picture& scene, float centreX, float centreY, float radius, float turn) {
  support::Picture out = scene;
  for (int y = 0; y < out.height; ++y)
    for (int x = 0; x < out.width; ++x) {
      const float u = (x - centreX) / radius, v = (y - centreY) / radius, r2 = u * u + v * v;
      if (r2 >= 1) continue;
      const float light = 0.7f + 0.3f * (-0.5f * u - 0.6f * v + 0.62f * std::sqrt(1 - r2));
      const float along = std::cos(turn) * u + std::sin(turn) * v;
      *out.at(x, y) = support::level(light * (std::fabs(along) < 0.3f ? 160 : 250));
    }
  return out;
}

}  // namespace tour
