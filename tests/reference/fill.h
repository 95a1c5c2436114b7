// Flood fills from their definitions.
#pragma once

#include <cmath>
#include <functional>
#include <limits>
#include <set>
#include <utility>
#include <vector>

#include "reference/plane.h"

namespace ref {

struct Seed {
  int x, y;
};

inline bool sameComp(const ZebiConnectedComp& a, const ZebiConnectedComp& b) {
  for (int c = 0; c < 3; ++c)
    if (!(a.value[c] == b.value[c] || (std::isnan(a.value[c]) && std::isnan(b.value[c])))) return false;
  return a.area == b.area && a.rect.x == b.rect.x && a.rect.y == b.rect.y && a.rect.width == b.rect.width &&
         a.rect.height == b.rect.height;
}

// Paints the marked pixels and tells what they are.
template <class T>
ZebiConnectedComp paint(Plane<T>& image, const std::vector<char>& marked, const std::vector<T>& newValue) {
  ZebiConnectedComp comp{};
  int left = image.width, right = -1, top = image.height, bottom = -1;
  for (int y = 0; y < image.height; ++y)
    for (int x = 0; x < image.width; ++x) {
      if (!marked[static_cast<size_t>(y) * image.width + x]) continue;
      for (int c = 0; c < image.channels; ++c) image.at(x, y, c) = newValue[c];
      comp.area += 1;
      left = x < left ? x : left, right = x > right ? x : right;
      top = y < top ? y : top, bottom = y > bottom ? y : bottom;
    }
  for (int c = 0; c < image.channels; ++c) comp.value[c] = static_cast<double>(newValue[c]);
  comp.rect = {left, top, right - left + 1, bottom - top + 1};
  return comp;
}

// Everything that can be reached from the seed by steps between neighbours; joins(from x, from y, to x, to y).
template <class T, class Joins>
ZebiConnectedComp fill(Plane<T>& image, Seed seed, bool diagonal, const std::vector<T>& newValue, Joins joins) {
  std::vector<char> marked(static_cast<size_t>(image.width) * image.height);
  std::vector<Seed> open{seed};
  marked[static_cast<size_t>(seed.y) * image.width + seed.x] = 1;
  while (!open.empty()) {
    const Seed p = open.back();
    open.pop_back();
    for (int dy = -1; dy <= 1; ++dy)
      for (int dx = -1; dx <= 1; ++dx) {
        const int x = p.x + dx, y = p.y + dy;
        if ((!diagonal && dx && dy) || x < 0 || y < 0 || x >= image.width || y >= image.height) continue;
        char& mark = marked[static_cast<size_t>(y) * image.width + x];
        if (mark || !joins(p.x, p.y, x, y)) continue;
        mark = 1;
        open.push_back({x, y});
      }
  }
  return paint(image, marked, newValue);
}

template <class T>
bool within(T value, T middle, T below, T above) {
  if constexpr (std::is_floating_point_v<T>) {
    const T low = middle - below, high = middle + above;
    return value >= low && value <= high;
  } else {
    const long long v = value, m = middle;
    return v >= m - below && v <= m + above;
  }
}

// The range fill as the sequence of steps that decides where a full stack ends it.
template <class T>
ZebiConnectedComp rangeFill(Plane<T>& image, Seed seed, bool diagonal, const std::vector<T>& newValue,
                            const std::vector<T>& below, const std::vector<T>& above, bool* ended) {
  const int w = image.width, h = image.height;
  const long long capacity = static_cast<long long>(w) * h / 4;
  const Plane<T> before = image;
  std::vector<char> marked(static_cast<size_t>(w) * h);
  const auto open = [&](int x, int y) {
    if (marked[static_cast<size_t>(y) * w + x]) return false;
    for (int c = 0; c < image.channels; ++c)
      if (!within(before.at(x, y, c), before.at(seed.x, seed.y, c), below[c], above[c])) return false;
    return true;
  };
  struct Entry {
    int y, xl, xr, pl, pr, d;
  };
  std::vector<Entry> stack;
  *ended = false;
  const auto take = [&](int x, int y, int& xl, int& xr) {
    marked[static_cast<size_t>(y) * w + x] = 1;
    for (xl = x; xl > 0 && open(xl - 1, y);) marked[static_cast<size_t>(y) * w + --xl] = 1;
    for (xr = x; xr < w - 1 && open(xr + 1, y);) marked[static_cast<size_t>(y) * w + ++xr] = 1;
  };
  const auto push = [&](Entry e) {
    stack.push_back(e);
    if (static_cast<long long>(stack.size()) == capacity) *ended = true;
  };
  int xl, xr;
  take(seed.x, seed.y, xl, xr);
  if (h > 1) push({seed.y, xl, xr, xr + 1, xr, seed.y == h - 1 ? -1 : 1});
  const int reach = diagonal ? 1 : 0;
  while (!stack.empty() && !*ended) {
    const Entry e = stack.back();
    stack.pop_back();
    const auto scan = [&](int y, int from, int to, int d) {
      if (y < 0 || y >= h) return;
      for (int x = from < 0 ? 0 : from; x <= to && x < w && !*ended; ++x) {
        if (!open(x, y)) continue;
        int l, r;
        take(x, y, l, r);
        push({y, l, r, e.xl, e.xr, d});
        x = r;
      }
    };
    scan(e.y - e.d, e.xl - reach, e.xr + reach, e.d);
    scan(e.y + e.d, e.xl - reach, e.pl - 1, -e.d);
    scan(e.y + e.d, e.pr + 1, e.xr + reach, -e.d);
  }
  return paint(image, marked, newValue);
}

enum class FillKind { plain, range, gradient };

// The fill of a kind; the record is as before where the call ends without a fill.
template <class T>
ZebiConnectedComp filled(FillKind kind, Plane<T>& image, Seed seed, bool diagonal, const std::vector<T>& newValue,
                         const std::vector<T>& below, const std::vector<T>& above, const ZebiConnectedComp& record,
                         bool* ended) {
  const Plane<T> before = image;
  const auto each = [&](int x, int y, auto test) {
    for (int c = 0; c < image.channels; ++c)
      if (!test(before.at(x, y, c), c)) return false;
    return true;
  };
  *ended = false;
  if (kind == FillKind::gradient)
    return fill(image, seed, diagonal, newValue, [&](int fx, int fy, int x, int y) {
      return each(x, y, [&](T v, int c) { return within(v, before.at(fx, fy, c), below[c], above[c]); });
    });
  if (each(seed.x, seed.y, [&](T v, int c) { return v == newValue[c]; })) return record;
  if (kind == FillKind::range) return rangeFill(image, seed, diagonal, newValue, below, above, ended);
  return fill(image, seed, diagonal, newValue, [&](int, int, int x, int y) {
    return each(x, y, [&](T v, int c) { return v == before.at(seed.x, seed.y, c); });
  });
}

}  // namespace ref
