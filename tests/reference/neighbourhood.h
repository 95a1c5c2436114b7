// Filters with fixed kernels, Gaussian smoothing and the taps of both, from their definitions.
#pragma once

#include <array>

#include "reference/canny.h"
#include "reference/filter.h"

namespace ref {

// ---- Fixed kernels ----

enum class Taps { smooth, first, second, scharr, mean };

// The first n are the taps.
inline std::array<int, 5> tapsOf(Taps taps, int n) {
  using All = std::array<int, 5>;
  switch (taps) {
    case Taps::smooth:
      return n == 3 ? All{1, 2, 1} : All{1, 4, 6, 4, 1};
    case Taps::first:
      return n == 3 ? All{-1, 0, 1} : All{-1, -2, 0, 2, 1};
    case Taps::second:
      return n == 3 ? All{1, -2, 1} : All{1, 0, -2, 0, 1};
    case Taps::scharr:
      return {3, 10, 3};
    default:
      return {1, 1, 1, 1, 1};
  }
}

// The order in which floats are summed; down: along a column.
template <class At>
Zeb32f floatSum(Taps taps, int n, bool down, At v) {
  const auto five = n == 5;
  switch (taps) {
    case Taps::smooth:
      if (five) return v(4) + std::fma(4.0f, v(3), std::fma(6.0f, v(2), std::fma(4.0f, v(1), v(0))));
      return std::fma(2.0f, v(1), v(0)) + v(2);
    case Taps::first:
      return five ? std::fma(2.0f, v(3) - v(1), v(4) - v(0)) : v(2) - v(0);
    case Taps::second:
      return five ? std::fma(-2.0f, v(2), v(0)) + v(4) : std::fma(-2.0f, v(1), v(0)) + v(2);
    case Taps::scharr: {
      const Zeb32f outer = 3.0f * v(0), inner = 10.0f * v(1);
      return std::fma(3.0f, v(2), down ? std::fma(3.0f, v(0), inner) : std::fma(10.0f, v(1), outer));
    }
    default:
      return five ? (((v(0) + v(1)) + v(2)) + v(3)) + v(4) : (v(0) + v(1)) + v(2);
  }
}

struct Fixed {
  Taps x, y;
  bool laplacian = false;
};

inline int wholeSum(const Sampler<Zeb8u>& at, int x, int y, Taps along, Taps down, int n) {
  const auto a = tapsOf(along, n), b = tapsOf(down, n);
  int sum = 0;
  for (int j = 0; j < n; ++j)
    for (int i = 0; i < n; ++i) sum += a[i] * b[j] * at(x + i - n / 2, y + j - n / 2);
  return sum;
}
inline Zeb32f wholeSum(const Sampler<Zeb32f>& at, int x, int y, Taps along, Taps down, int n) {
  return floatSum(down, n, true, [&](int j) {
    return floatSum(along, n, false, [&](int i) { return at(x + i - n / 2, y + j - n / 2); });
  });
}

template <class D, class S>
Plane<D> fixedFilter(const Sampler<S>& at, ZebiSize roi, const Fixed& f, int n) {
  Plane<D> out(roi.width, roi.height);
  for (int y = 0; y < roi.height; ++y)
    for (int x = 0; x < roi.width; ++x) {
      auto v = wholeSum(at, x, y, f.x, f.y, n);
      if (f.laplacian) v = v + wholeSum(at, x, y, f.y, f.x, n);
      if constexpr (std::is_floating_point_v<S>) {
        if (f.laplacian && n == 3) {
          const Zeb32f s = (at(x - 1, y - 1) + at(x + 1, y - 1)) + (at(x - 1, y + 1) + at(x + 1, y + 1));
          v = std::fma(-8.0f, at(x, y), 2 * s);
        }
        if (f.x == Taps::mean) v *= n == 3 ? 1.0f / 9 : 1.0f / 25;
      } else if (f.x == Taps::mean) {
        v = (v + n * n / 2) / (n * n);
      }
      out.at(x, y) = static_cast<D>(v);
    }
  return out;
}

// The coefficients of (z - 1)^order (z + 1)^(n - 1 - order).
inline std::vector<int64_t> sobelTaps(int n, int order, int sign) {
  std::vector<int64_t> p = {sign < 0 ? -1 : 1};
  for (int k = 1; k < n; ++k) {
    std::vector<int64_t> product(p.size() + 1);
    for (size_t i = 0; i < p.size(); ++i) product[i + 1] += p[i], product[i] += k <= order ? -p[i] : p[i];
    p = product;
  }
  return p;
}

// ---- Gaussian smoothing ----

inline std::vector<double> gaussCurve(int n, double sigma) {
  const int r = n / 2;
  std::vector<double> g(static_cast<size_t>(n), 1);
  double sum = 0;
  for (int i = 0; i < r; ++i) {
    const double d = i - r;
    g[i] = g[n - 1 - i] = std::exp(-(d * d) / (2 * sigma * sigma));
    sum += g[i];
  }
  for (double& v : g) v /= 2 * sum + 1;
  return g;
}

// K: int for bytes, Zeb32f else.
template <class K>
std::vector<K> gaussTaps(int n, double sigma) {
  const auto g = gaussCurve(n, sigma);
  std::vector<K> taps(g.begin(), g.end());
  if constexpr (std::is_same_v<K, int>) {
    double sum = 0;
    int given = 0;
    for (int i = 0; i < n / 2; ++i) {
      sum += g[i];
      taps[i] = taps[n - 1 - i] = static_cast<int>(std::nearbyint(16384 * sum)) - given;
      given += taps[i];
    }
    taps[n / 2] = 16384 - 2 * given;
  }
  return taps;
}

template <class S>
Plane<S> gaussian(const Sampler<S>& at, ZebiSize roi, int n, Zeb32f sigma) {
  constexpr bool bytes = sizeof(S) == 1;
  using T = std::conditional_t<bytes, int, Zeb32f>;
  const int r = n / 2;
  const auto taps = gaussTaps<T>(n, static_cast<double>(sigma));
  const auto sum = [&](bool down, auto read) -> T {
    if constexpr (bytes) {
      return static_cast<int>(wholeSum(taps, read));
    } else {
      return floatSum(taps, down, read);
    }
  };
  Plane<T> rows(roi.width, roi.height + 2 * r);
  for (int y = 0; y < rows.height; ++y)
    for (int x = 0; x < roi.width; ++x) {
      T& v = rows.at(x, y) = sum(false, [&](int i) { return static_cast<T>(at(x + i - r, y - r)); });
      if constexpr (bytes) v = (v + 128) >> 8;
    }
  Plane<S> out(roi.width, roi.height);
  for (int y = 0; y < roi.height; ++y)
    for (int x = 0; x < roi.width; ++x) {
      const T v = sum(true, [&](int j) { return rows.at(x, y + j); });
      if constexpr (bytes) {
        out.at(x, y) = static_cast<S>((v + 524288) >> 20);
      } else if constexpr (std::is_floating_point_v<S>) {
        out.at(x, y) = v;
      } else {
        out.at(x, y) = scaledSum<S>(v, 1, true);
      }
    }
  return out;
}

}  // namespace ref
