// Distance transforms from their definitions.
#pragma once

#include <algorithm>
#include <cmath>
#include <limits>

#include "reference/plane.h"

namespace ref {

// Two raster passes, pixel by pixel. Sums are formed in Sum and limited to the type where that is an integer.
template <class T, class Sum, class Weight>
Plane<T> chamfer(const Plane<Zeb8u>& src, int mask, const Weight* weights) {
  struct Step {
    int dx, dy, weight;
  };
  std::vector<Step> visited = {{-1, 0, 0}, {-1, -1, 1}, {0, -1, 0}, {1, -1, 1}};
  if (mask == 5) visited.insert(visited.end(), {{-2, -1, 2}, {-1, -2, 2}, {1, -2, 2}, {2, -1, 2}});
  Plane<T> d(src.width, src.height);
  const auto least = [&](int x, int y, int sign, bool* any) {
    Sum best = 0;
    *any = false;
    for (const Step& s : visited) {
      const int nx = x + sign * s.dx, ny = y + sign * s.dy;
      if (nx < 0 || ny < 0 || nx >= src.width || ny >= src.height) continue;
      Sum sum = static_cast<Sum>(d.at(nx, ny)) + static_cast<Sum>(weights[s.weight]);
      if (std::is_integral_v<T>) sum = std::min(sum, static_cast<Sum>(std::numeric_limits<T>::max()));
      best = *any ? std::min(best, sum) : sum;
      *any = true;
    }
    return best;
  };
  bool any = false;
  for (int y = 0; y < src.height; ++y)
    for (int x = 0; x < src.width; ++x) {
      const Sum sum = least(x, y, 1, &any);
      d.at(x, y) = src.at(x, y) == 0 ? T(0) : any ? static_cast<T>(sum) : std::numeric_limits<T>::max();
    }
  for (int y = src.height - 1; y >= 0; --y)
    for (int x = src.width - 1; x >= 0; --x) {
      const Sum sum = least(x, y, -1, &any);
      if (any && sum < static_cast<Sum>(d.at(x, y))) d.at(x, y) = static_cast<T>(sum);
    }
  return d;
}

// The nearest zero pixel of all, looked for anew for every pixel.
inline Plane<Zeb32f> euclid(const Plane<Zeb8u>& src) {
  std::vector<std::pair<long long, long long>> zeros;
  for (int y = 0; y < src.height; ++y)
    for (int x = 0; x < src.width; ++x)
      if (src.at(x, y) == 0) zeros.push_back({x, y});
  Plane<Zeb32f> d(src.width, src.height, 1, std::sqrt(std::numeric_limits<Zeb32f>::max()));
  for (int y = 0; y < src.height && !zeros.empty(); ++y)
    for (int x = 0; x < src.width; ++x) {
      long long least = std::numeric_limits<long long>::max();
      for (const auto& z : zeros)
        least = std::min(least, (z.first - x) * (z.first - x) + (z.second - y) * (z.second - y));
      d.at(x, y) = static_cast<Zeb32f>(std::sqrt(static_cast<long double>(least)));
    }
  return d;
}

// The local update of the marching from the nearer neighbours in the row and in the column.
inline Zeb32f marchingUpdate(Zeb32f s, Zeb32f t) {
  const Zeb32f d = s - t;
  if (std::fabs(d) >= 1) return 1 + std::min(s, t);
  return 0.5f * (s + t + std::sqrt(2 - d * d));
}

// Magnitudes of a marching result, 1e30 where nothing is known, and the update that each pixel's neighbours allow it.
struct Marching {
  Plane<Zeb32f> value;
  const Plane<Zeb8u>* src;
  Zeb32f radius;

  Zeb32f at(int x, int y) const {
    return x < 0 || y < 0 || x >= value.width || y >= value.height ? 1e30f : value.at(x, y);
  }
  Zeb32f allowed(int x, int y) const {
    const Zeb32f f = marchingUpdate(std::min(at(x - 1, y), at(x + 1, y)), std::min(at(x, y - 1), at(x, y + 1)));
    return src->at(x, y) == 0 && !(f <= radius) ? 1e30f : f;
  }
};

inline bool isBoundary(const Plane<Zeb8u>& src, int x, int y) {
  const auto object = [&](int i, int j) {
    return i >= 0 && j >= 0 && i < src.width && j < src.height && src.at(i, j) != 0;
  };
  return src.at(x, y) == 0 && (object(x - 1, y) || object(x + 1, y) || object(x, y - 1) || object(x, y + 1));
}

// Updates pixel after pixel until nothing changes.
inline Plane<Zeb32f> marching(const Plane<Zeb8u>& src, Zeb32f radius) {
  Marching m{Plane<Zeb32f>(src.width, src.height, 1, 1e30f), &src, radius};
  for (int y = 0; y < src.height; ++y)
    for (int x = 0; x < src.width; ++x)
      if (isBoundary(src, x, y)) m.value.at(x, y) = 0;
  if (src.at(0, 0)) m.value.at(0, 0) = 1000000;
  for (bool changed = true; changed;) {
    changed = false;
    for (int i = 0; i < 2 * src.width * src.height; ++i) {
      const int p = i < src.width * src.height ? i : 2 * src.width * src.height - 1 - i;
      const int x = p % src.width, y = p / src.width;
      const Zeb32f f = m.allowed(x, y);
      if (f < m.value.at(x, y)) m.value.at(x, y) = f, changed = true;
    }
  }
  Plane<Zeb32f> out(src.width, src.height);
  for (int y = 0; y < src.height; ++y)
    for (int x = 0; x < src.width; ++x) {
      const Zeb32f v = m.value.at(x, y);
      out.at(x, y) = src.at(x, y) ? v : v == 0 ? -1e-10f : v < 1e30f ? -v : 0;
    }
  return out;
}

}  // namespace ref
