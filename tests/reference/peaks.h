// Local peaks from their definition.
#pragma once

#include <cmath>
#include <limits>
#include <type_traits>
#include <vector>

#include "reference/plane.h"

namespace ref {

template <class T>
std::vector<ZebiPoint> peaks(const Plane<T>& src, T threshold, bool eight, int border, size_t most) {
  std::vector<ZebiPoint> found;
  for (int y = border; y < src.height - border; ++y)
    for (int x = border; x < src.width - border; ++x) {
      const double v = src.at(x, y);
      if (!(std::fabs(v) > static_cast<double>(threshold))) continue;
      bool peak = true;
      for (int dy = -1; dy <= 1; ++dy)
        for (int dx = -1; dx <= 1; ++dx) {
          if (!eight && dx && dy) continue;
          const double q = src.at(x + dx, y + dy);
          double above = v > 0 ? q - v : v - q;
          if (q == v || std::isnan(q)) above = 0;
          if constexpr (std::is_floating_point_v<T>) {
            if (static_cast<T>(above) > std::numeric_limits<T>::min()) peak = false;
          } else if (above > 0) {
            peak = false;
          }
        }
      if (peak) found.push_back({x, y});
      if (found.size() == most) return found;
    }
  return found;
}

}  // namespace ref
