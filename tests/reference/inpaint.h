// Inpainting, pixel by pixel and offset by offset.
#pragma once

#include <algorithm>
#include <cmath>
#include <numeric>

#include "reference/plane.h"

namespace ref {

// t: what the fast marching gives for the mask with the radius + 2.
inline Plane<Zeb8u> inpainted(const Plane<Zeb8u>& src, const Plane<Zeb8u>& mask, const Plane<Zeb32f>& t, Zeb32f radius,
                              ZebiInpaintMethod method) {
  const int w = src.width, h = src.height, reach = static_cast<int>(std::floor(radius));
  std::vector<int> order;
  for (int i = 0; i < w * h; ++i)
    if (mask.data[i]) order.push_back(i);
  if (static_cast<int>(order.size()) == w * h) return src;
  std::stable_sort(order.begin(), order.end(), [&](int a, int b) { return t.data[a] < t.data[b]; });
  Plane<char> filled(w, h);
  const auto inside = [=](int x, int y) { return x >= 0 && y >= 0 && x < w && y < h; };
  const auto known = [&](int x, int y) { return inside(x, y) && (mask.at(x, y) == 0 || filled.at(x, y)); };
  // Half the difference of what there is before and after, or the one-sided difference, or 0.
  const auto slope = [](bool before, Zeb32f from, bool after, Zeb32f to, Zeb32f here) {
    if (before && after) return 0.5f * (to - from);
    return before ? here - from : after ? to - here : 0.0f;
  };
  Plane<Zeb8u> out = src;
  for (const int pixel : order) {
    const int x = pixel % w, y = pixel / w;
    const auto distance = [&](int i, int j) { return inside(i, j) ? t.at(i, j) : 0.0f; };
    const Zeb32f tp = t.at(x, y);
    const Zeb32f gx = slope(x > 0, distance(x - 1, y), x + 1 < w, distance(x + 1, y), tp);
    const Zeb32f gy = slope(y > 0, distance(x, y - 1), y + 1 < h, distance(x, y + 1), tp);
    for (int c = 0; c < src.channels; ++c) {
      Zeb32f a[8] = {}, b[8] = {};
      for (int dy = -reach; dy <= reach; ++dy)
        for (int dx = -reach; dx <= reach; ++dx) {
          const double d2 = dx * dx + dy * dy;
          const int qx = x + dx, qy = y + dy;
          if (d2 == 0 || d2 > static_cast<double>(radius) * radius || !known(qx, qy)) continue;
          const auto value = [&](int i, int j) { return inside(i, j) ? static_cast<Zeb32f>(out.at(i, j, c)) : 0.0f; };
          const Zeb32f rx = static_cast<Zeb32f>(-dx), ry = static_cast<Zeb32f>(-dy), here = value(qx, qy);
          const auto c1 = static_cast<Zeb32f>(1 / std::sqrt(d2)), c2 = static_cast<Zeb32f>(1 / d2);
          const Zeb32f hx = slope(known(qx - 1, qy), value(qx - 1, qy), known(qx + 1, qy), value(qx + 1, qy), here);
          const Zeb32f hy = slope(known(qx, qy - 1), value(qx, qy - 1), known(qx, qy + 1), value(qx, qy + 1), here);
          Zeb32f weight = 0, e = here;
          if (method == zebInpaintTelea) {
            const Zeb32f u = std::max(std::fabs(std::fma(gx, rx, gy * ry)) * c1, 1e-6f);
            weight = u * c2 / (1 + std::fabs(tp - t.at(qx, qy)));
            if (d2 <= 2) e = here + hx * rx + hy * ry;
          } else {
            const Zeb32f s = hx * hx + hy * hy;
            const Zeb32f u = s == 0 ? 1 : std::max(std::fabs(hy * rx - hx * ry) * c1 / std::sqrt(s), 1e-6f);
            weight = c2 * u;
          }
          const int j = (dx + reach) % 8;
          a[j] = std::fma(weight, e, a[j]);
          b[j] = b[j] + weight;
        }
      const auto folded = [](const Zeb32f* p) {
        const Zeb32f q[4] = {p[0] + p[4], p[1] + p[5], p[2] + p[6], p[3] + p[7]};
        return (q[0] + q[2]) + (q[1] + q[3]);
      };
      out.at(x, y, c) = static_cast<Zeb8u>(std::clamp(std::nearbyint(folded(a) / folded(b)), 0.0f, 255.0f));
    }
    filled.at(x, y) = 1;
  }
  return out;
}

}  // namespace ref
