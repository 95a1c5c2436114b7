// Morphology from its definitions.
#pragma once

#include <algorithm>
#include <cmath>
#include <limits>

#include "reference/plane.h"

namespace ref {

// A region of a larger image: its first pixel, its size, and the sides on which the pixels beyond it are read. On the
// other sides the nearest pixel of the region stands for them.
template <class T>
struct Region {
  const Plane<T>* image;
  int x, y, width, height;
  bool left = false, right = false, top = false, bottom = false;

  T at(int column, int row, int channel) const {
    if (column < 0 && !left) column = 0;
    if (column >= width && !right) column = width - 1;
    if (row < 0 && !top) row = 0;
    if (row >= height && !bottom) row = height - 1;
    return image->at(x + column, y + row, channel);
  }
};

// Set elements of a mask with its anchor.
struct Element {
  std::vector<Zeb8u> mask;
  int width, height, anchorX, anchorY;

  bool empty() const {
    return std::all_of(mask.begin(), mask.end(), [](Zeb8u m) { return m == 0; });
  }
  bool at(int column, int row) const { return mask[static_cast<size_t>(row) * width + column] != 0; }
  Element reflected() const {
    Element e{{mask.rbegin(), mask.rend()}, width, height, width - 1 - anchorX, height - 1 - anchorY};
    return e;
  }
};

// Extremum of the pixels under the elements, the anchor on the pixel, for pixels first.. of the region. What is not a
// number takes no part. A mask without elements copies.
template <class T>
Plane<T> extremum(const Region<T>& source, const Element& element, bool lowest, int firstX, int firstY, int width,
                  int height) {
  using Limits = std::numeric_limits<T>;
  const T farthest = Limits::has_infinity ? (lowest ? Limits::infinity() : -Limits::infinity())
                                          : (lowest ? Limits::max() : Limits::lowest());
  const int channels = source.image->channels;
  const bool copies = element.empty();
  Plane<T> out(width, height, channels);
  for (int y = 0; y < height; ++y)
    for (int x = 0; x < width; ++x)
      for (int c = 0; c < channels; ++c) {
        T best = copies ? source.at(firstX + x, firstY + y, c) : farthest;
        for (int r = 0; r < element.height; ++r)
          for (int q = 0; q < element.width; ++q) {
            if (!element.at(q, r)) continue;
            const T v = source.at(firstX + x + q - element.anchorX, firstY + y + r - element.anchorY, c);
            if (lowest ? v < best : v > best) best = v;
          }
        out.at(x, y, c) = best;
      }
  return out;
}
template <class T>
Plane<T> extremum(const Region<T>& source, const Element& element, bool lowest) {
  return extremum(source, element, lowest, 0, 0, source.width, source.height);
}

}  // namespace ref
