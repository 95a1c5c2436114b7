// Halving and doubling with the 5 x 5 binomial kernel, pixel by pixel.
#pragma once

#include <math.h>
#include <stddef.h>

#include <type_traits>

#include "reference/plane.h"

namespace ref {

// Reflection without repeating the edge pixel.
inline int mirrored(int p, int n) {
  while (n > 1 && (p < 0 || p >= n)) p = p < 0 ? -p : 2 * (n - 1) - p;
  return n > 1 ? p : 0;
}

template <class S>
S binomial(S a, S b, S c, S d, S e) {
  if constexpr (std::is_floating_point_v<S>)
    return fmaf(6, c, fmaf(4, b + d, a + e));
  else
    return a + 4 * b + 6 * c + 4 * d + e;
}

template <class T>
Plane<T> halved(const Plane<T>& src) {
  using S = std::conditional_t<std::is_floating_point_v<T>, float, int>;
  Plane<T> dst((src.width + 1) / 2, (src.height + 1) / 2, src.channels);
  for (int y = 0; y < dst.height; ++y)
    for (int x = 0; x < dst.width; ++x)
      for (int c = 0; c < dst.channels; ++c) {
        const auto row = [&](int q) {
          const auto at = [&](int p) { return static_cast<S>(src.at(mirrored(p, src.width), q, c)); };
          return binomial<S>(at(2 * x - 2), at(2 * x - 1), at(2 * x), at(2 * x + 1), at(2 * x + 2));
        };
        const auto near = [&](int q) { return row(mirrored(2 * y + q, src.height)); };
        const bool flat = src.height <= 2;
        const S s = flat ? row(0) + row(src.height - 1) : binomial<S>(near(-2), near(-1), near(0), near(1), near(2));
        if constexpr (std::is_floating_point_v<T>)
          dst.at(x, y, c) = s * (flat ? 1.0f / 32 : 1.0f / 256);
        else
          dst.at(x, y, c) = static_cast<T>(((flat ? 8 * s : s) + 128) >> 8);
      }
  return dst;
}

template <class T>
Plane<T> doubled(const Plane<T>& src) {
  using S = std::conditional_t<std::is_floating_point_v<T>, float, int>;
  Plane<T> dst(2 * src.width, 2 * src.height, src.channels);
  const auto place = [](int p, int n) { return p < 0 ? (n > 1 ? 1 : 0) : p >= n ? n - 1 : p; };
  const auto mix = [](bool odd, S a, S b, S c) -> S {
    if (odd) return 4 * (b + c);
    if constexpr (std::is_floating_point_v<S>)
      return fmaf(6, b, a + c);
    else
      return a + 6 * b + c;
  };
  for (int y = 0; y < dst.height; ++y)
    for (int x = 0; x < dst.width; ++x)
      for (int c = 0; c < dst.channels; ++c) {
        const auto row = [&](int q) {
          const auto at = [&](int p) { return static_cast<S>(src.at(place(p, src.width), place(q, src.height), c)); };
          return mix(x % 2, at(x / 2 - 1), at(x / 2), at(x / 2 + 1));
        };
        const S s = mix(y % 2, row(y / 2 - 1), row(y / 2), row(y / 2 + 1));
        if constexpr (std::is_floating_point_v<T>)
          dst.at(x, y, c) = s * (1.0f / 64);
        else
          dst.at(x, y, c) = static_cast<T>((s + 32) >> 6);
      }
  return dst;
}

}  // namespace ref
