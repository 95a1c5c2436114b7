// Morphological reconstruction from its definition: elementary steps, scanning forwards and backwards,
// until nothing changes. A value that is not a number stays and does not spread.
#pragma once

#include <algorithm>

#include "reference/plane.h"

namespace ref {

template <class T>
Plane<T> reconstruct(const Plane<T>& mask, Plane<T> marker, bool dilate, bool eight) {
  const auto limited = [&](T v, T m) { return dilate ? std::min(v, m) : std::max(v, m); };
  for (size_t i = 0; i < mask.data.size(); ++i) marker.data[i] = limited(marker.data[i], mask.data[i]);
  bool backwards = false;
  for (bool changed = true; changed; backwards = !backwards) {
    changed = false;
    for (int row = 0; row < mask.height; ++row)
      for (int column = 0; column < mask.width; ++column) {
        const int y = backwards ? mask.height - 1 - row : row, x = backwards ? mask.width - 1 - column : column;
        T v = marker.at(x, y);
        for (int dy = -1; dy <= 1; ++dy)
          for (int dx = -1; dx <= 1; ++dx) {
            if (!eight && dx != 0 && dy != 0) continue;
            if (x + dx < 0 || y + dy < 0 || x + dx >= mask.width || y + dy >= mask.height) continue;
            const T q = marker.at(x + dx, y + dy);
            v = dilate ? std::max(v, q) : std::min(v, q);
          }
        v = limited(v, mask.at(x, y));
        if (v == v && v != marker.at(x, y)) marker.at(x, y) = v, changed = true;
      }
  }
  return marker;
}

}  // namespace ref
