// Hough transforms from their definitions.
#pragma once

#include <algorithm>
#include <cfenv>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <vector>

#include "reference/plane.h"

namespace ref {

struct HoughGrid {
  ZebiSize size;
  ZebiPoint_32f delta;
  int angles() const { return static_cast<int>(3.14159f / delta.y) + 1; }
  int cells() const { return static_cast<int>(static_cast<float>(2 * (size.width + size.height) + 1) / delta.x); }
  int origin() const { return (cells() - 1) / 2; }
};

// The whole accumulator; count(k, r) is 0 outside it.
struct HoughCounts {
  HoughGrid grid;
  std::vector<int> counts;
  int count(int k, int r) const {
    return k < 0 || r < 0 || k >= grid.angles() || r >= grid.cells()
               ? 0
               : counts[static_cast<size_t>(k) * grid.cells() + r];
  }
};

inline HoughCounts houghCounts(const Plane<Zeb8u>& src, const HoughGrid& grid, const ZebiPoint_32f* region) {
  HoughCounts all{grid, std::vector<int>(static_cast<size_t>(grid.angles()) * grid.cells())};
  float theta = 0;
  for (int k = 0; k < grid.angles(); ++k, theta += grid.delta.y) {
    const auto factor = [&](double v) {
      return static_cast<int64_t>(std::nearbyint(v * (1024.0 / static_cast<double>(grid.delta.x))));
    };
    const int64_t c = factor(std::cos(static_cast<double>(theta))), s = factor(std::sin(static_cast<double>(theta)));
    for (int y = 0; y < src.height; ++y)
      for (int x = 0; x < src.width; ++x) {
        if (!src.at(x, y)) continue;
        const int64_t cell = std::clamp<int64_t>(((x * c + y * s + 512) >> 10) + grid.origin(), 0, grid.cells() - 1);
        const float rho = grid.delta.x * static_cast<float>(cell - grid.origin()),
                    angle = grid.delta.y * static_cast<float>(k);
        if (region && (rho < region[0].x || rho > region[1].x || angle < region[0].y || angle > region[1].y)) continue;
        ++all.counts[static_cast<size_t>(k) * grid.cells() + static_cast<size_t>(cell)];
      }
  }
  return all;
}

inline std::vector<ZebiPoint_32f> houghLines(const Plane<Zeb8u>& src, const HoughGrid& grid, int threshold, size_t most,
                                             const ZebiPoint_32f* region = nullptr) {
  const HoughCounts all = houghCounts(src, grid, region);
  struct Peak {
    int count, k, r;
  };
  std::vector<Peak> peaks;
  for (int k = 0; k < grid.angles(); ++k)
    for (int r = 0; r < grid.cells(); ++r) {
      const int a = all.count(k, r);
      if (a > threshold && a > all.count(k, r - 1) && a >= all.count(k, r + 1) && a > all.count(k - 1, r) &&
          a >= all.count(k + 1, r))
        peaks.push_back({a, k, r});
    }
  std::stable_sort(peaks.begin(), peaks.end(), [](const Peak& a, const Peak& b) { return a.count > b.count; });
  if (peaks.size() > most) peaks.resize(most);
  std::vector<ZebiPoint_32f> lines;
  for (const Peak& p : peaks)
    lines.push_back({grid.delta.x * static_cast<float>(p.r - grid.origin()), grid.delta.y * static_cast<float>(p.k)});
  return lines;
}

struct HoughSegments {
  std::vector<ZebiRect> segments;
  bool truncated = false;
};

inline HoughSegments houghSegments(const Plane<Zeb8u>& src, const HoughGrid& grid, int threshold, int lineLength,
                                   int lineGap, size_t most) {
  HoughSegments result;
  const int angles = grid.angles(), cells = grid.cells();
  if (cells == 0) return result;
  std::vector<float> c, s;
  float theta = 0;
  for (int k = 0; k < angles; ++k, theta += grid.delta.y) {
    c.push_back(static_cast<float>(std::cos(static_cast<double>(theta))) / grid.delta.x);
    s.push_back(static_cast<float>(std::sin(static_cast<double>(theta))) / grid.delta.x);
  }
  std::vector<ZebiPoint> list;
  Plane<Zeb8u> left = src;
  for (int y = 0; y < src.height; ++y)
    for (int x = 0; x < src.width; ++x)
      if (src.at(x, y)) list.push_back({x, y});
  std::vector<int> counts(static_cast<size_t>(angles) * cells);
  const int mode = std::fegetround();
  std::fesetround(FE_TOWARDZERO);
  const auto cell = [&](ZebiPoint p, int k) -> int& {
    volatile float u = static_cast<float>(p.x) * c[k], v = static_cast<float>(p.y) * s[k];
    volatile float rho = u + v;
    return counts[static_cast<size_t>(k) * cells + std::clamp(static_cast<int>(rho) + (cells - 1) / 2, 0, cells - 1)];
  };
  uint64_t x = 0xFFFFFFFF, carry = 0xFFFFFFFF;
  while (!list.empty()) {
    const uint64_t t = 4164903690u * x + carry;
    carry = t >> 32, x = t & 0xFFFFFFFF;
    const size_t drawn = x % list.size();
    const ZebiPoint p = list[drawn];
    list[drawn] = list.back();
    list.pop_back();
    if (!left.at(p.x, p.y)) continue;
    int best = -1, angle = 0;
    for (int k = 0; k < angles; ++k) {
      const int votes = ++cell(p, k);
      if (k == 0 || votes > best) best = votes, angle = k;
    }
    if (best < threshold) continue;
    // All pixels of the line on either side, as far as the image goes.
    const bool alongX = std::fabs(s[angle]) > std::fabs(c[angle]);
    const float longer = alongX ? -s[angle] : c[angle], shorter = alongX ? c[angle] : -s[angle];
    volatile float ratio = shorter / std::fabs(longer);
    volatile float scaled = ratio * 65536.0f;
    ZebiPoint ends[2];
    std::vector<ZebiPoint> walked;
    for (int side = 0; side < 2; ++side) {
      const int unit = (longer < 0 ? -1 : 1) * (side ? -1 : 1);
      const int64_t slope = static_cast<int64_t>(static_cast<int>(scaled)) * (side ? -1 : 1);
      std::vector<ZebiPoint> path;
      size_t reached = 0;
      for (int i = 0, gap = 0;; ++i) {
        const int main = (alongX ? p.x : p.y) + i * unit;
        const int other =
            static_cast<int>(((static_cast<int64_t>(alongX ? p.y : p.x) << 16) + 32768 + i * slope) >> 16);
        const ZebiPoint q = alongX ? ZebiPoint{main, other} : ZebiPoint{other, main};
        if (q.x < 0 || q.y < 0 || q.x >= src.width || q.y >= src.height) break;
        path.push_back(q);
        if (left.at(q.x, q.y)) {
          gap = 0, reached = path.size();
        } else if (++gap > lineGap) {
          break;
        }
      }
      ends[side] = path[reached - 1];
      walked.insert(walked.end(), path.begin(), path.begin() + static_cast<long>(reached));
    }
    const bool segment = std::abs(ends[0].x - ends[1].x) >= lineLength || std::abs(ends[0].y - ends[1].y) >= lineLength;
    for (const ZebiPoint& q : walked) {
      if (!left.at(q.x, q.y)) continue;
      left.at(q.x, q.y) = 0;
      if (segment)
        for (int k = 0; k < angles; ++k) --cell(q, k);
    }
    if (!segment) continue;
    if (result.segments.size() == most) {
      result.truncated = true;
      break;
    }
    result.segments.push_back({ends[0].x, ends[0].y, ends[1].x, ends[1].y});
  }
  std::fesetround(mode);
  return result;
}

}  // namespace ref
