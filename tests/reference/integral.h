// Summed-area tables and window deviations, from their definitions.
#pragma once

#include <cmath>
#include <cstdint>
#include <type_traits>

#include "reference/plane.h"

namespace ref {

// The sum of two elements of a table: modulo 2^32 for integers.
inline Zeb32s plus(Zeb32s a, Zeb32s b) {
  return static_cast<Zeb32s>(static_cast<uint32_t>(a) + static_cast<uint32_t>(b));
}
inline Zeb32f plus(Zeb32f a, Zeb32f b) {
  return a + b;
}
inline Zeb64f plus(Zeb64f a, Zeb64f b) {
  return a + b;
}
inline Zeb32s minus(Zeb32s a, Zeb32s b) {
  return static_cast<Zeb32s>(static_cast<uint32_t>(a) - static_cast<uint32_t>(b));
}
inline Zeb32f minus(Zeb32f a, Zeb32f b) {
  return a - b;
}
inline Zeb64f minus(Zeb64f a, Zeb64f b) {
  return a - b;
}

template <class T>
Plane<T> integral(const Plane<Zeb8u>& src, T val, bool squared) {
  Plane<T> t(src.width + 1, src.height + 1, 1, val);
  for (int y = 0; y < src.height; ++y) {
    T sum = 0;
    for (int x = 0; x < src.width; ++x) {
      const int p = src.at(x, y);
      sum = plus(sum, static_cast<T>(squared ? p * p : p));
      t.at(x + 1, y + 1) = plus(t.at(x + 1, y), sum);
    }
  }
  return t;
}

// before is what the destination held: with addToColumn its column w is added to.
template <class T>
Plane<T> tiltedIntegral(const Plane<Zeb8u>& src, T val, bool squared, const Plane<T>& before, bool addToColumn) {
  using Wide = std::conditional_t<std::is_integral_v<T>, int64_t, Zeb64f>;
  const int w = src.width;
  Plane<T> t = before;
  const auto pixel = [&](int x, int y) {
    const int p = src.at(x, y);
    return static_cast<Wide>(squared ? p * p : p);
  };
  const auto narrow = [](Wide v) {
    if constexpr (std::is_integral_v<T>)
      return static_cast<T>(static_cast<uint32_t>(v));
    else
      return static_cast<T>(v);
  };
  for (int x = 0; x < w + 2; ++x) t.at(x, 0) = t.at(x, 1) = val;
  for (int y = 0; y < src.height; ++y) {
    const int r = y + 2;
    const auto prev = [&](int x) { return static_cast<Wide>(t.at(x, r - 1)); };
    const auto prevprev = [&](int x) { return static_cast<Wide>(t.at(x, r - 2)); };
    t.at(0, r) = t.at(1, r - 1);
    for (int x = 1; x < w; ++x)
      t.at(x, r) = narrow(prev(x - 1) - prevprev(x) + prev(x + 1) + pixel(x - 1, y) + pixel(x, y));
    const T edge = narrow(prev(w - 1) + prev(w + 1) - prevprev(w) + pixel(w - 1, y));
    t.at(w, r) = addToColumn ? plus(t.at(w, r), edge) : edge;
    t.at(w + 1, r) = t.at(w, r - 1);
  }
  return t;
}

// The variance of a window from its four corners in both tables.
template <class S, class Q>
double variance(bool tilted, const Plane<S>& sums, const Plane<Q>& squares, int i, int j, ZebiRect k) {
  const auto window = [&](const auto& t) {
    if (!tilted) {
      return plus(minus(t.at(i + k.x, j + k.y), t.at(i + k.x + k.width, j + k.y)),
                  minus(t.at(i + k.x + k.width, j + k.y + k.height), t.at(i + k.x, j + k.y + k.height)));
    }
    const int r = j + k.x + k.y, c = i + k.x - k.y;
    return plus(minus(t.at(c, r), t.at(c + k.width, r + k.width)),
                minus(t.at(c + k.width - k.height, r + k.width + k.height), t.at(c - k.height, r + k.height)));
  };
  const double sum = static_cast<double>(window(sums)), square = static_cast<double>(window(squares));
  if (!tilted) {
    const double inv = 1.0 / (static_cast<double>(k.width) * k.height), mean = sum * inv;
    return square * inv - mean * mean;
  }
  const double area = 2.0 * k.width * k.height, mean = sum / area;
  return std::fma(-mean, mean, square / area);
}

inline Zeb32f deviation(double v) {
  return v > 0 ? std::sqrt(static_cast<Zeb32f>(v)) : 0.0f;
}

inline Zeb32s scaledDeviation(double v, int scaleFactor) {
  if (!(v > 0)) return 0;
  const double d = std::nearbyint(std::ldexp(std::sqrt(v), -scaleFactor));
  return d >= 2147483647.0 ? 2147483647 : static_cast<Zeb32s>(d);
}

}  // namespace ref
