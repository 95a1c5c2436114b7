// Pyramidal optical flow, written from its formulas in double precision.
#pragma once

#include <cmath>
#include <vector>

#include "reference/plane.h"

namespace ref {

struct Track {
  double x, y;
  int status;
  double error;
};

struct FlowLevel {
  Plane<double> first, second;
  double scale;
};

inline double clampedAt(const Plane<double>& p, int x, int y) {
  x = x < 0 ? 0 : x < p.width ? x : p.width - 1;
  y = y < 0 ? 0 : y < p.height ? y : p.height - 1;
  return p.at(x, y);
}
template <class At>
double bilinear(At at, double x, double y) {
  const int i = static_cast<int>(std::floor(x)), j = static_cast<int>(std::floor(y));
  const double f = x - i, g = y - j;
  return (1 - g) * ((1 - f) * at(i, j) + f * at(i + 1, j)) + g * ((1 - f) * at(i, j + 1) + f * at(i + 1, j + 1));
}
inline bool inside(const Plane<double>& p, double x, double y) {
  return x >= 0 && y >= 0 && x <= p.width - 1 && y <= p.height - 1;
}

// One point; levels from the base on.
inline Track tracked(const std::vector<FlowLevel>& levels, double px, double py, double gx, double gy, int window,
                     int iterations, double threshold) {
  for (int level = static_cast<int>(levels.size()) - 1; level >= 0; --level) {
    const FlowLevel& l = levels[static_cast<size_t>(level)];
    const double ux = px * l.scale, uy = py * l.scale;
    double vx = gx * l.scale, vy = gy * l.scale;
    const auto value = [&](int x, int y) { return clampedAt(l.first, x, y); };
    const auto target = [&](int x, int y) { return clampedAt(l.second, x, y); };
    const auto slopeX = [&](int x, int y) {
      double s = 0;
      for (int k = -1; k <= 1; ++k) s += (k ? 3 : 10) * (value(x + 1, y + k) - value(x - 1, y + k));
      return s / 32;
    };
    const auto slopeY = [&](int x, int y) {
      double s = 0;
      for (int k = -1; k <= 1; ++k) s += (k ? 3 : 10) * (value(x + k, y + 1) - value(x + k, y - 1));
      return s / 32;
    };
    // Calls visit(x1, y1, x2, y2) for the pixels of the window that both images have.
    const auto overWindow = [&](bool both, auto visit) {
      int count = 0;
      for (int r = 0; r < window; ++r)
        for (int c = 0; c < window; ++c) {
          const double dx = c - 0.5 * (window - 1), dy = r - 0.5 * (window - 1);
          if (!inside(l.first, ux + dx, uy + dy) || (both && !inside(l.second, vx + dx, vy + dy))) continue;
          visit(ux + dx, uy + dy, vx + dx, vy + dy);
          ++count;
        }
      return count;
    };
    double xx = 0, xy = 0, yy = 0;
    const int pixels = overWindow(false, [&](double x, double y, double, double) {
      const double a = bilinear(slopeX, x, y), b = bilinear(slopeY, x, y);
      xx += a * a, xy += a * b, yy += b * b;
    });
    const double det = xx * yy - xy * xy;
    const auto lost = [&] { return Track{vx / l.scale, vy / l.scale, level, 0}; };
    if (pixels == 0 || !(det >= std::ldexp(1.0, -52))) return lost();
    double lastX = 0, lastY = 0;
    for (int k = 1; k <= iterations; ++k) {
      double bx = 0, by = 0;
      const int shared = overWindow(true, [&](double x, double y, double x2, double y2) {
        const double d = bilinear(value, x, y) - bilinear(target, x2, y2);
        bx += d * bilinear(slopeX, x, y), by += d * bilinear(slopeY, x, y);
      });
      if (shared == 0) return lost();
      const double dx = (yy * bx - xy * by) / det, dy = (xx * by - xy * bx) / det;
      vx += dx, vy += dy;
      if (dx * dx + dy * dy < threshold * threshold) break;
      const double e = std::pow(2.0, -11.5);
      if (k > 1 && std::fabs(dx + lastX) < e && std::fabs(dy + lastY) < e) {
        vx -= dx / 2, vy -= dy / 2;
        break;
      }
      lastX = dx, lastY = dy;
    }
    gx = vx / l.scale, gy = vy / l.scale;
    if (level > 0) continue;
    double squares = 0;
    const int count = overWindow(true, [&](double x, double y, double x2, double y2) {
      const double d = bilinear(value, x, y) - bilinear(target, x2, y2);
      squares += d * d;
    });
    return {gx, gy, 0, count ? std::sqrt(squares / count) : 0};
  }
  return {gx, gy, static_cast<int>(levels.size()), 0};
}

}  // namespace ref
