// Responses of the structure tensor, from their definitions.
#pragma once

#include <cmath>

#include "reference/neighbourhood.h"

namespace ref {

// The means of the products of derivatives: a, b, c of every pixel.
template <class S>
Plane<Zeb32f> structureTensor(const Sampler<S>& at, ZebiSize roi, int filter, int taps, int window) {
  using D = std::conditional_t<sizeof(S) == 1, int, Zeb32f>;
  using Sum = std::conditional_t<sizeof(S) == 1, int64_t, Zeb32f>;
  const int before = (window - 1) / 2;
  const ZebiSize all = {roi.width + window - 1, roi.height + window - 1};
  // Every pixel is asked for once: the taps of a window of 255 would ask millions of times.
  const int reach = taps / 2;
  Plane<S> source(all.width + 2 * reach, all.height + 2 * reach);
  for (int y = 0; y < source.height; ++y)
    for (int x = 0; x < source.width; ++x) source.at(x, y) = at(x - reach - before, y - reach - before);
  const Sampler<S> moved = [&](int x, int y) { return source.at(x + reach, y + reach); };
  const Taps smooth = filter == zebFilterScharr ? Taps::scharr : Taps::smooth;
  const Plane<D> dx = fixedFilter<D>(moved, all, Fixed{Taps::first, smooth}, taps);
  const Plane<D> dy = fixedFilter<D>(moved, all, Fixed{smooth, Taps::first}, taps);
  const double ramp = filter == zebFilterScharr ? 32 : taps == 3 ? 8 : 128;
  const auto f = static_cast<Zeb32f>(1 / (ramp * ramp * window * window));

  Plane<Zeb32f> out(roi.width, roi.height, 3);
  std::vector<Sum> columns(static_cast<size_t>(all.width));
  for (int y = 0; y < roi.height; ++y)
    for (int k = 0; k < 3; ++k) {
      const Plane<D>&p = k < 2 ? dx : dy, &q = k < 1 ? dx : dy;
      for (int x = 0; x < all.width; ++x) {
        Sum& sum = columns[static_cast<size_t>(x)];
        sum = static_cast<Sum>(p.at(x, y)) * static_cast<Sum>(q.at(x, y));
        for (int j = y + 1; j < y + window; ++j) {
          if constexpr (sizeof(S) == 1)
            sum += static_cast<Sum>(p.at(x, j)) * q.at(x, j);
          else
            sum = std::fma(p.at(x, j), q.at(x, j), sum);
        }
      }
      for (int x = 0; x < roi.width; ++x) {
        Sum sum = columns[static_cast<size_t>(x)];
        for (int i = 1; i < window; ++i) sum = sum + columns[static_cast<size_t>(x + i)];
        out.at(x, y, k) = static_cast<Zeb32f>(sum) * f;
      }
    }
  return out;
}

enum class Corner { minEigenVal, eigenValsVecs, harris };

inline std::array<Zeb32f, 6> cornerResponse(Corner kind, Zeb32f a, Zeb32f b, Zeb32f c, Zeb32f k) {
  if (kind == Corner::harris) {
    const Zeb32f t = a + c, bb = b * b, tt = t * t;
    return {std::fma(-k, tt, std::fma(a, c, -bb))};
  }
  const Zeb32f h = 0.5f * (a + c), g = 0.5f * (a - c), bb = b * b, r = std::sqrt(std::fma(g, g, bb));
  const Zeb32f larger = h + r, smaller = h - r < 0 ? 0 : h - r;
  if (kind == Corner::minEigenVal) return {smaller};
  Zeb32f u = g + r, v = b;
  if (!(g >= 0)) {
    u = std::fabs(b), v = r - g;
    if (b < 0) v = -v;
  }
  const Zeb32f vv = v * v, m = std::sqrt(std::fma(u, u, vv)), x = m == 0 ? 1 : u / m, y = m == 0 ? 0 : v / m;
  return {larger, smaller, x, y, -y, x};
}

inline Plane<Zeb32f> corners(Corner kind, const Plane<Zeb32f>& tensors, Zeb32f k) {
  const int floats = kind == Corner::eigenValsVecs ? 6 : 1;
  Plane<Zeb32f> out(tensors.width, tensors.height, floats);
  for (int y = 0; y < out.height; ++y)
    for (int x = 0; x < out.width; ++x) {
      const auto values = cornerResponse(kind, tensors.at(x, y, 0), tensors.at(x, y, 1), tensors.at(x, y, 2), k);
      for (int i = 0; i < floats; ++i) out.at(x, y, i) = values[static_cast<size_t>(i)];
    }
  return out;
}

}  // namespace ref
