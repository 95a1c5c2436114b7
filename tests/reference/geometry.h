// Sampling between pixels, lenses, lines, gradient vectors and super-resolution, from their definitions.
#pragma once

#include <algorithm>
#include <array>
#include <limits>
#include <optional>

#include "reference/neighbourhood.h"

namespace ref {

// ---- Between pixels ----

// next is asked for where the fraction is not 0.
template <class Next>
Zeb32f between(Zeb32f a, Zeb32f fraction, Next next) {
  return fraction == 0 ? a : std::fma(fraction, next() - a, a);
}
template <class T>
Zeb32f bilinear(const Plane<T>& src, int x, int y, Zeb32f fx, Zeb32f fy, int c = 0) {
  const auto row = [&](int at) {
    return between(static_cast<Zeb32f>(src.at(x, at, c)), fx,
                   [&] { return static_cast<Zeb32f>(src.at(x + 1, at, c)); });
  };
  return between(row(y), fy, [&] { return row(y + 1); });
}
template <class D>
D pixel(Zeb32f v) {
  if constexpr (std::is_floating_point_v<D>) {
    return v;
  } else {
    constexpr auto most = static_cast<Zeb32f>(std::numeric_limits<D>::max());
    constexpr auto least = static_cast<Zeb32f>(std::numeric_limits<D>::min());
    return static_cast<D>(std::nearbyint(std::clamp(v, least, most)));
  }
}
template <class D, class T>
D subpixel(const Plane<T>& src, int x, int y, Zeb32f fx, Zeb32f fy, int scaleFactor) {
  return pixel<D>(bilinear(src, x, y, fx, fy) * std::ldexp(1.0f, -std::clamp(scaleFactor, -31, 31)));
}

// Where the window's pixels of one dimension stand.
struct Stretch {
  double first;
  Zeb32f fraction;

  Stretch(Zeb32f centre, int n) {
    const double corner = static_cast<double>(centre) - 0.5 * (n - 1);
    first = std::floor(corner);
    fraction = static_cast<Zeb32f>(corner - first);
    if (fraction == 1) first += 1, fraction = 0;
  }
  bool inside(int i, int length) const {
    return first + i >= 0 && (fraction == 0 ? first + i <= length - 1 : first + i < length - 1);
  }
  int pixel(int i) const { return static_cast<int>(first) + i; }
};

// ---- Lenses ----

struct Lens {
  ZebiPoint_32f focal, centre;
  Zeb32f k1, k2, p1, p2;

  ZebiPoint_32f position(int column, int row, bool tangential) const {
    const auto i = static_cast<Zeb32f>(column), j = static_cast<Zeb32f>(row);
    const Zeb32f ifx = 1 / focal.x, ify = 1 / focal.y;
    const Zeb32f dx = i - centre.x, dy = j - centre.y, x = dx * ifx, y = dy * ify;
    const Zeb32f xx = x * x, yy = y * y, r2 = xx + yy, d = r2 * std::fma(k2, r2, k1);
    const ZebiPoint_32f at = {std::fma(dx, d, i), std::fma(dy, d, j)};
    if (!tangential) return at;
    if (p1 == 0 && p2 == 0 && std::isfinite(r2)) return {at.x + 0.0f, at.y + 0.0f};
    const Zeb32f t = (x + x) * y;
    const Zeb32f tx = std::fma(p2, std::fma(2.0f, xx, r2), p1 * t), ty = std::fma(p1, std::fma(2.0f, yy, r2), p2 * t);
    return {std::fma(focal.x, tx, at.x), std::fma(focal.y, ty, at.y)};
  }
};

template <class T>
Plane<T> undistorted(const Plane<T>& src, const Lens& lens) {
  Plane<T> out(src.width, src.height, src.channels);
  const auto inside = [](Zeb32f p, int n) { return p >= 0 && static_cast<double>(p) <= n - 1; };
  for (int j = 0; j < src.height; ++j)
    for (int i = 0; i < src.width; ++i) {
      const ZebiPoint_32f at = lens.position(i, j, false);
      if (!inside(at.x, src.width) || !inside(at.y, src.height)) continue;
      const Zeb32f x = std::floor(at.x), y = std::floor(at.y);
      for (int c = 0; c < src.channels; ++c)
        out.at(i, j, c) = pixel<T>(bilinear(src, static_cast<int>(x), static_cast<int>(y), at.x - x, at.y - y, c));
    }
  return out;
}

// ---- Lines ----

inline std::vector<ZebiPoint> line(ZebiPoint a, ZebiPoint b) {
  const int64_t dx = std::abs(b.x - a.x), dy = std::abs(b.y - a.y), n = std::max(dx, dy), m = std::min(dx, dy);
  std::vector<ZebiPoint> out;
  for (int64_t k = 0; k <= n; ++k) {
    const int64_t aside = n == 0 ? 0 : (2 * k * m + n - 1) / (2 * n);
    const auto x = static_cast<int>(dx == n ? k : aside), y = static_cast<int>(dx == n ? aside : k);
    out.push_back({b.x < a.x ? a.x - x : a.x + x, b.y < a.y ? a.y - y : a.y + y});
  }
  return out;
}

// ---- Gradients ----

// The integer nearest to the root.
inline int64_t nearestRoot(int64_t s) {
  auto m = static_cast<int64_t>(std::sqrt(static_cast<double>(s)));
  while (m > 0 && m * m - m >= s) --m;
  while (m * m + m < s) ++m;
  return m;
}

template <class D>
struct Vector {
  D gx, gy;

  D magnitude(ZebNormType norm) const {
    const auto ax = std::abs(gx), ay = std::abs(gy);
    if (norm == zebNormInf) return static_cast<D>(ax > ay ? ax : ay);
    if (norm == zebNormL1) return static_cast<D>(ax + ay);
    if constexpr (std::is_floating_point_v<D>)
      return std::sqrt(std::fma(gx, gx, gy * gy));
    else
      return static_cast<D>(nearestRoot(gx * gx + gy * gy));
  }
  // What channels are compared by.
  int64_t strength(ZebNormType norm) const {
    return norm == zebNormL2 ? static_cast<int64_t>(gx) * gx + static_cast<int64_t>(gy) * gy
                             : static_cast<int64_t>(magnitude(norm));
  }
  Zeb32f angle() const {
    const auto x = static_cast<Zeb32f>(gx), y = static_cast<Zeb32f>(gy);
    if (std::isnan(x) || std::isnan(y)) return NAN;
    constexpr Zeb32f pi = 0x1.921fb6p+1f;
    const Zeb32f taps[] = {-0x1.5554dcp-2f, 0x1.9978f4p-3f, -0x1.230adcp-3f, 0x1.b4e128p-4f,
                           -0x1.3556b2p-4f, 0x1.61fdd2p-5f, -0x1.0c2c0cp-6f, 0x1.7ed222p-9f};
    const Zeb32f ax = std::fabs(x), ay = std::fabs(y), hi = std::max(ax, ay), lo = std::min(ax, ay);
    const Zeb32f q = hi == 0 ? 0 : lo / hi, z = q * q;
    Zeb32f p = taps[7];
    for (int i = 6; i >= 0; --i) p = std::fma(p, z, taps[i]);
    Zeb32f t = std::fma(z * q, p, q);
    if (ax < ay) t = pi / 2 - t;
    if (x < 0) t = pi - t;
    return y < 0 ? -t : t;
  }
};

struct Derivative {
  Taps smooth;
  int taps;
};
template <class D, class S>
Vector<D> gradientAt(const Sampler<S>& at, int x, int y, Derivative d) {
  return {static_cast<D>(wholeSum(at, x, y, Taps::first, d.smooth, d.taps)),
          static_cast<D>(wholeSum(at, x, y, d.smooth, Taps::first, d.taps))};
}

template <class T>
T colourToGray(T c0, T c1, T c2, ZebNormType norm) {
  if constexpr (std::is_floating_point_v<T>) {
    if (norm == zebNormL1) return (std::fabs(c0) + std::fabs(c1)) + std::fabs(c2);
    if (norm == zebNormL2) return std::sqrt(std::fma(c2, c2, std::fma(c1, c1, c0 * c0)));
    T m = std::fabs(c0);
    for (const T c : {c1, c2})
      if (std::fabs(c) > m) m = std::fabs(c);
    return m;
  } else {
    const int64_t a = c0, b = c1, c = c2;
    const int64_t v = norm == zebNormInf  ? std::max({a, b, c})
                      : norm == zebNormL1 ? a + b + c
                                          : nearestRoot(a * a + b * b + c * c);
    return static_cast<T>(std::min<int64_t>(v, std::numeric_limits<T>::max()));
  }
}

// ---- Super-resolution ----

struct Observation {
  std::array<Zeb64f, 6> at;
  std::vector<Zeb32f> psf;
  int n;  // the footprint's side

  // The footprint's first pixel, where it is observed.
  std::optional<ZebiPoint> footprint(int x, int y, ZebiSize high) const {
    const double px = std::fma(at[0], x, std::fma(at[1], y, at[2])), py = std::fma(at[3], x, std::fma(at[4], y, at[5]));
    if (!std::isfinite(px) || !std::isfinite(py)) return std::nullopt;
    const double left = n == 2 ? std::floor(px) : std::floor(px + 0.5) - 1;
    const double top = n == 2 ? std::floor(py) : std::floor(py + 0.5) - 1;
    if (left < 0 || top < 0 || left + n > high.width || top + n > high.height) return std::nullopt;
    return ZebiPoint{static_cast<int>(left), static_cast<int>(top)};
  }
};

inline Plane<Zeb16s> residual(const Plane<Zeb8u>& high, const Plane<Zeb8u>& low, const Observation& o) {
  Plane<Zeb16s> out(low.width, low.height);
  for (int y = 0; y < low.height; ++y)
    for (int x = 0; x < low.width; ++x) {
      const auto first = o.footprint(x, y, {high.width, high.height});
      if (!first) continue;
      const auto h = [&](int k) { return static_cast<Zeb32f>(high.at(first->x + k % o.n, first->y + k / o.n)); };
      Zeb32f e = o.psf[0] * h(0);
      for (int k = 1; k < o.n * o.n; ++k) e = std::fma(o.psf[k], h(k), e);
      out.at(x, y) = pixel<Zeb16s>((static_cast<Zeb32f>(low.at(x, y)) - e) * 128);
    }
  return out;
}
inline void addResiduals(const Plane<Zeb32f>& res, Plane<Zeb32f>& grad, const Observation& o) {
  for (int y = 0; y < res.height; ++y)
    for (int x = 0; x < res.width; ++x) {
      const auto first = o.footprint(x, y, {grad.width, grad.height});
      if (!first) continue;
      for (int k = 0; k < o.n * o.n; ++k) {
        Zeb32f& g = grad.at(first->x + k % o.n, first->y + k / o.n);
        g = std::fma(o.psf[k], res.at(x, y), g);
      }
    }
}

}  // namespace ref
