// Derivatives with borders and the Canny detector, from their definitions.
#pragma once

#include <cmath>
#include <cstdlib>
#include <functional>
#include <vector>

#include "reference/plane.h"

namespace ref {

// A pixel of an image at any position, as a border rule has it.
template <class T>
using Sampler = std::function<T(int x, int y)>;

// The region of a larger plane whose corner is (left, top); border as the library takes it.
template <class T>
Sampler<T> bordered(const Plane<T>& all, int left, int top, ZebiSize roi, int border, T value) {
  return [=, &all](int x, int y) {
    const auto reads = [&](int flag) { return (border & 15) == zebBorderInMem || (border & flag); };
    const bool up = y < 0, down = y >= roi.height, before = x < 0, behind = x >= roi.width;
    const bool constant = (border & 15) == zebBorderConst;
    if (up && !reads(zebBorderInMemTop)) {
      if (constant) return value;
      y = 0;
    }
    if (down && !reads(zebBorderInMemBottom)) {
      if (constant) return value;
      y = roi.height - 1;
    }
    if (before && !reads(zebBorderInMemLeft)) {
      if (constant) return value;
      x = 0;
    }
    if (behind && !reads(zebBorderInMemRight)) {
      if (constant) return value;
      x = roi.width - 1;
    }
    return all.at(left + x, top + y);
  };
}

template <class T>
struct Gradient {
  Plane<T> dx, dy;
};

template <class S, class D>
Gradient<D> gradient(const Sampler<S>& at, ZebiSize roi, int filter, int taps) {
  const std::vector<int> smooth = taps == 5                   ? std::vector<int>{1, 4, 6, 4, 1}
                                  : filter == zebFilterScharr ? std::vector<int>{3, 10, 3}
                                                              : std::vector<int>{1, 2, 1};
  const std::vector<int> step = taps == 5 ? std::vector<int>{-1, -2, 0, 2, 1} : std::vector<int>{-1, 0, 1};
  Gradient<D> g{Plane<D>(roi.width, roi.height), Plane<D>(roi.width, roi.height)};
  for (int y = 0; y < roi.height; ++y)
    for (int x = 0; x < roi.width; ++x) {
      double dx = 0, dy = 0;
      for (int j = 0; j < taps; ++j)
        for (int i = 0; i < taps; ++i) {
          const double p = at(x + i - taps / 2, y + j - taps / 2);
          dx += p * step[i] * smooth[j];
          dy += p * smooth[i] * step[j];
        }
      g.dx.at(x, y) = static_cast<D>(dx);
      g.dy.at(x, y) = static_cast<D>(dy);
    }
  return g;
}

enum class CannyKind { derivatives16s, derivatives32f, borderL1, borderL2 };

template <class D>
Plane<Zeb8u> canny(const Gradient<D>& g, float low, float high, CannyKind kind) {
  const int w = g.dx.width, h = g.dx.height;
  Plane<float> m(w, h);
  const bool border = kind == CannyKind::borderL1 || kind == CannyKind::borderL2;
  if (kind == CannyKind::derivatives16s) low = std::trunc(low), high = std::trunc(high);
  for (int y = 0; y < h; ++y)
    for (int x = 0; x < w; ++x) {
      const float dx = static_cast<float>(g.dx.at(x, y)), dy = static_cast<float>(g.dy.at(x, y));
      float v = std::fabs(dx) + std::fabs(dy);
      if (kind == CannyKind::derivatives16s && v > 65535) v = 65535;
      if (kind == CannyKind::borderL2) v = std::sqrt(std::fma(dx, dx, dy * dy));
      const bool dropped = kind == CannyKind::derivatives32f ? v < low : !(v > low);
      m.at(x, y) = dropped ? 0 : v;
    }
  const auto at = [&](int x, int y) { return x < 0 || y < 0 || x >= w || y >= h ? 0.0f : m.at(x, y); };
  Plane<Zeb8u> candidate(w, h), edge(w, h);
  std::vector<ZebiPoint> waiting;
  for (int y = 0; y < h; ++y)
    for (int x = 0; x < w; ++x) {
      const float v = m.at(x, y);
      if (v == 0) continue;
      const float dx = static_cast<float>(g.dx.at(x, y)), dy = static_cast<float>(g.dy.at(x, y));
      const float ax = std::fabs(dx), ay = std::fabs(dy);
      const float steep = border ? 2.0f * ax + 0.41421357f * ax : 2.4142137f * ax;
      bool keep;
      if (ay < 0.41421357f * ax) {
        keep = at(x - 1, y) < v && at(x + 1, y) <= v;
      } else if (steep < ay) {
        keep = at(x, y - 1) < v && at(x, y + 1) <= v;
      } else if (std::signbit(dx) != std::signbit(dy)) {
        keep = std::max(at(x - 1, y + 1), at(x + 1, y - 1)) < v;
      } else {
        keep = std::max(at(x + 1, y + 1), at(x - 1, y - 1)) < v;
      }
      candidate.at(x, y) = keep;
      if (keep && v > high) edge.at(x, y) = 255, waiting.push_back({x, y});
    }
  while (!waiting.empty()) {
    const ZebiPoint p = waiting.back();
    waiting.pop_back();
    for (int dy = -1; dy <= 1; ++dy)
      for (int dx = -1; dx <= 1; ++dx) {
        const int x = p.x + dx, y = p.y + dy;
        if (x < 0 || y < 0 || x >= w || y >= h || !candidate.at(x, y) || edge.at(x, y)) continue;
        edge.at(x, y) = 255;
        waiting.push_back({x, y});
      }
  }
  return edge;
}

}  // namespace ref
