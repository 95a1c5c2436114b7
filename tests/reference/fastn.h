// The segment test and the suppression of lines, from their definitions.
#pragma once

#include <algorithm>
#include <cstdlib>

#include "reference/plane.h"

namespace ref {

struct Position {
  int x, y;
};
inline const std::vector<Position>& circle(int radius) {
  static const std::vector<Position> near = {{1, 0}, {1, 1}, {0, 1}, {-1, 1}, {-1, 0}, {-1, -1}, {0, -1}, {1, -1}};
  static const std::vector<Position> middle = {{2, 0},  {2, 1},   {1, 2},   {0, 2},  {-1, 2}, {-2, 1},
                                               {-2, 0}, {-2, -1}, {-1, -2}, {0, -2}, {1, -2}, {2, -1}};
  static const std::vector<Position> far = {{3, 0},  {3, 1},   {2, 2},   {1, 3},   {0, 3},  {-1, 3}, {-2, 2}, {-3, 1},
                                            {-3, 0}, {-3, -1}, {-2, -2}, {-1, -3}, {0, -3}, {1, -3}, {2, -2}, {3, -1}};
  return radius == 1 ? near : radius == 2 ? middle : far;
}

struct SegmentTest {
  int radius, arcLength, threshold;
  bool scores, nonMax;

  int positions() const { return static_cast<int>(circle(radius).size()); }

  // Of every arc of the circle the least difference of one sign, and of those the largest.
  int best(const Plane<Zeb8u>& image, int x, int y, int sign) const {
    const auto& ring = circle(radius);
    int largest = -256;
    for (int start = 0; start < positions(); ++start) {
      int least = 256;
      for (int i = 0; i < arcLength; ++i) {
        const Position p = ring[static_cast<size_t>((start + i) % positions())];
        least = std::min(least, sign * (image.at(x + p.x, y + p.y) - image.at(x, y)));
      }
      largest = std::max(largest, least);
    }
    return largest;
  }
  int score(const Plane<Zeb8u>& image, int x, int y) const {
    if (x < radius || y < radius || x >= image.width - radius || y >= image.height - radius) return 0;
    const int s = std::max(best(image, x, y, 1), best(image, x, y, -1));
    return s > threshold ? s : 0;
  }
  int orientation(const Plane<Zeb8u>& image, int x, int y) const {
    const int sign = best(image, x, y, 1) >= best(image, x, y, -1) ? 1 : -1, count = positions();
    const auto& ring = circle(radius);
    const auto marked = [&](int i) {
      const Position p = ring[static_cast<size_t>((i + count) % count)];
      return sign * (image.at(x + p.x, y + p.y) - image.at(x, y)) > threshold;
    };
    int longest = 0, first = 0;
    for (int start = 0; start < count; ++start) {
      if (!marked(start) || marked(start - 1)) continue;
      int length = 1;
      while (marked(start + length)) ++length;
      if (length > longest) longest = length, first = start;
    }
    const int direction = longest == 0 ? 0 : (2 * first + longest - 1) % (2 * count);
    return 1 + direction + (sign < 0 ? 128 : 0);
  }

  void run(const Plane<Zeb8u>& image, Plane<Zeb8u>* map, Plane<Zeb8u>* orient) const {
    Plane<int> all(image.width, image.height);
    for (int y = 0; y < image.height; ++y)
      for (int x = 0; x < image.width; ++x) all.at(x, y) = score(image, x, y);
    const auto at = [&](int x, int y) {
      return x < 0 || y < 0 || x >= image.width || y >= image.height ? 0 : all.at(x, y);
    };
    for (int y = 0; y < image.height; ++y)
      for (int x = 0; x < image.width; ++x) {
        const int s = all.at(x, y);
        const int before = std::max({at(x - 1, y - 1), at(x, y - 1), at(x + 1, y - 1), at(x - 1, y)});
        const int after = std::max({at(x + 1, y), at(x - 1, y + 1), at(x, y + 1), at(x + 1, y + 1)});
        const bool stays = s > 0 && (!nonMax || (s > before && s >= after));
        map->at(x, y) = static_cast<Zeb8u>(stays ? (scores ? s : 255) : 0);
        orient->at(x, y) = static_cast<Zeb8u>(stays ? orientation(image, x, y) : 0);
      }
  }
};

// The ring of a pixel is the border of the square of 2 reach + 1 around it. at(x, y) gives pixels in and around the
// image.
template <class At>
Zeb8u withoutLine(At at, int x, int y, int reach, int tolerance) {
  const int v = at(x, y);
  if (v == 0) return 0;
  std::vector<Position> ring;
  for (int i = 0; i < reach; ++i) ring.push_back({reach, i});
  for (int i = reach; i > -reach; --i) ring.push_back({i, reach});
  for (int i = reach; i > -reach; --i) ring.push_back({-reach, i});
  for (int i = -reach; i < reach; ++i) ring.push_back({i, -reach});
  for (int i = -reach; i < 0; ++i) ring.push_back({reach, i});
  const int count = static_cast<int>(ring.size()), least = std::max(v - tolerance, 1);
  const auto strong = [&](int i) {
    const Position p = ring[static_cast<size_t>((i + count) % count)];
    return at(x + p.x, y + p.y) >= least;
  };
  std::vector<int> twiceMiddle;
  bool brief = true;
  for (int start = 0; start < count; ++start) {
    if (!strong(start) || strong(start - 1)) continue;
    int length = 1;
    while (strong(start + length)) ++length;
    brief = brief && length <= count / 4;
    twiceMiddle.push_back(2 * start + length - 1);
  }
  if (twiceMiddle.size() != 2 || !brief) return static_cast<Zeb8u>(v);
  const int way = std::abs(twiceMiddle[1] - twiceMiddle[0]), around = std::min(way, 2 * count - way);
  return around >= 2 * 3 * count / 8 ? Zeb8u(0) : static_cast<Zeb8u>(v);
}

}  // namespace ref
