// Segmentation from markers, labels, speckles, boundaries: from their definitions, pixel by pixel.
#pragma once

#include <algorithm>
#include <cmath>
#include <deque>
#include <functional>
#include <limits>
#include <map>
#include <set>

#include "reference/plane.h"

namespace ref {

struct Position {
  int x, y;
};

// The neighbours of a pixel inside an image, in scan order.
inline std::vector<Position> neighbours(int x, int y, int width, int height, ZebiNorm norm) {
  std::vector<Position> all;
  all.reserve(8);
  for (int dy = -1; dy <= 1; ++dy)
    for (int dx = -1; dx <= 1; ++dx) {
      const bool beside = norm == zebiNormInf ? dx || dy : std::abs(dx) + std::abs(dy) == 1;
      if (beside && x + dx >= 0 && y + dy >= 0 && x + dx < width && y + dy < height) all.push_back({x + dx, y + dy});
    }
  return all;
}

// The cost of a step from p to q in either segmentation: the value at q, or the largest difference of a channel.
template <class T>
int stepCost(const Plane<T>& src, bool gradient, Position p, Position q) {
  if (!gradient) return src.at(q.x, q.y);
  int most = 0;
  for (int c = 0; c < src.channels; ++c) most = std::max(most, std::abs(src.at(p.x, p.y, c) - src.at(q.x, q.y, c)));
  return most;
}

// Both segmentations; of the watershed a waiting pixel never changes its queue.
template <class T>
Plane<T> segmented(const Plane<T>& src, Plane<T> marker, ZebiNorm norm, bool boundary, bool gradient) {
  const int w = src.width, h = src.height;
  constexpr T mark = std::numeric_limits<T>::max();
  enum State : char { untouched, waiting, done };
  Plane<char> state(w, h);
  Plane<int> level(w, h);
  std::map<int, std::deque<Position>> queue;  // by level
  const auto meet = [&](Position p, int at) {
    for (const Position q : neighbours(p.x, p.y, w, h, norm)) {
      const int to = std::max(stepCost(src, gradient, p, q), at);
      char& s = state.at(q.x, q.y);
      int& l = level.at(q.x, q.y);
      if (s == done || (s == waiting && (!gradient || l <= to))) continue;
      if (s == waiting) {
        auto& left = queue[l];
        left.erase(std::find_if(left.begin(), left.end(), [&](Position r) { return r.x == q.x && r.y == q.y; }));
      }
      s = waiting;
      l = to;
      queue[to].push_back(q);
      if (!boundary) marker.at(q.x, q.y) = marker.at(p.x, p.y);
    }
  };
  for (int y = 0; y < h; ++y)
    for (int x = 0; x < w; ++x) state.at(x, y) = marker.at(x, y) ? done : untouched;
  const Plane<T> start = marker;
  for (int y = 0; y < h; ++y)
    for (int x = 0; x < w; ++x)
      if (start.at(x, y) && !(boundary && start.at(x, y) == mark)) meet({x, y}, 0);
  while (!queue.empty()) {
    const int at = queue.begin()->first;
    if (queue[at].empty()) {
      queue.erase(at);
      continue;
    }
    const Position p = queue[at].front();
    queue[at].pop_front();
    state.at(p.x, p.y) = done;
    if (boundary) {
      std::set<T> labels;
      for (const Position q : neighbours(p.x, p.y, w, h, norm))
        if (marker.at(q.x, q.y) != 0 && marker.at(q.x, q.y) != mark) labels.insert(marker.at(q.x, q.y));
      marker.at(p.x, p.y) = labels.size() == 1 ? *labels.begin() : mark;
      if (labels.size() != 1) continue;
    }
    meet(p, at);
  }
  return marker;
}

// For every pixel the least value, over all paths from pixels where from() holds, of the largest cost on the path;
// INT_MAX where there is none. Found by relaxation, without any order.
template <class T>
Plane<int> minimax(const Plane<T>& src, ZebiNorm norm, bool gradient, const std::function<bool(int, int)>& from) {
  Plane<int> best(src.width, src.height, 1, std::numeric_limits<int>::max());
  for (int y = 0; y < src.height; ++y)
    for (int x = 0; x < src.width; ++x)
      if (from(x, y)) best.at(x, y) = -1;
  for (bool changed = true; changed;) {
    changed = false;
    for (int y = 0; y < src.height; ++y)
      for (int x = 0; x < src.width; ++x)
        for (const Position q : neighbours(x, y, src.width, src.height, norm)) {
          const int through = std::max(best.at(q.x, q.y), stepCost(src, gradient, q, {x, y}));
          if (through < best.at(x, y)) best.at(x, y) = through, changed = true;
        }
  }
  return best;
}

// The pixels that hang together with a pixel by linked(p, q).
template <class Linked>
std::vector<Position> component(Position from, Plane<char>& seen, ZebiNorm norm, Linked linked) {
  std::vector<Position> all = {from};
  seen.at(from.x, from.y) = 1;
  for (size_t i = 0; i < all.size(); ++i) {
    const Position p = all[i];
    for (const Position q : neighbours(p.x, p.y, seen.width, seen.height, norm))
      if (!seen.at(q.x, q.y) && linked(p, q)) {
        seen.at(q.x, q.y) = 1;
        all.push_back(q);
      }
  }
  return all;
}

template <class T>
int labelled(Plane<T>& image, long long minLabel, long long maxLabel, ZebiNorm norm) {
  const Plane<T> src = image;
  Plane<char> seen(src.width, src.height);
  int number = 0;
  for (int y = 0; y < src.height; ++y)
    for (int x = 0; x < src.width; ++x) {
      if (src.at(x, y) == 0 || seen.at(x, y)) continue;
      const auto label = static_cast<T>(minLabel + number++ % (maxLabel - minLabel + 1));
      for (const Position p :
           component({x, y}, seen, norm, [&](Position, Position q) { return src.at(q.x, q.y) != 0; }))
        image.at(p.x, p.y) = label;
    }
  return number;
}

template <class T, class D>
void speckled(Plane<T>& image, T newVal, int maxSize, D maxDiff, ZebiNorm norm) {
  const Plane<T> src = image;
  Plane<char> seen(src.width, src.height);
  const auto linked = [&](Position p, Position q) {
    const T a = src.at(p.x, p.y), b = src.at(q.x, q.y);
    const D difference = static_cast<D>(a) - static_cast<D>(b);
    return a != newVal && b != newVal && std::abs(difference) <= maxDiff;
  };
  for (int y = 0; y < src.height; ++y)
    for (int x = 0; x < src.width; ++x) {
      if (src.at(x, y) == newVal || seen.at(x, y)) continue;
      const auto region = component({x, y}, seen, norm, linked);
      if (region.size() > static_cast<size_t>(maxSize)) continue;
      for (const Position p : region) image.at(p.x, p.y) = newVal;
    }
}

template <class T>
void bounded(Plane<T>& image, T val, ZebiNorm norm) {
  const Plane<T> src = image;
  for (int y = 0; y < src.height; ++y)
    for (int x = 0; x < src.width; ++x)
      for (const Position q : neighbours(x, y, src.width, src.height, norm)) {
        const bool follows = q.y > y || (q.y == y && q.x > x);
        if (follows && src.at(q.x, q.y) != src.at(x, y) && src.at(q.x, q.y) != val) image.at(x, y) = val;
      }
}

}  // namespace ref
