// What both segmentations from markers share: the framed image, the scan of the markers, the arguments.
//
// Images of the flood have a frame of one pixel, which is never free, so that no neighbour lies outside. Positions are
// indices into the framed image.
#pragma once

#include <string.h>

#include "core/checks.h"
#include "core/loops.h"
#include "core/scratch.h"
#include "segment/pixel_bits.h"
#include "zebcv/regions.h"

namespace zeb {

struct Frame {
  int width, height;  // without the frame
  explicit Frame(ZebiSize roi) : width(roi.width), height(roi.height) {}
  int pitch() const { return width + 2; }
  int count() const { return (width + 2) * (height + 2); }
  int row(int y) const { return (y + 1) * (width + 2) + 1; }
  static int64_t countOf(ZebiSize roi) { return boundedProduct(int64_t{roi.width} + 2, int64_t{roi.height} + 2); }
};

// Largest value of a type: the mark of boundaries and barriers, and, as it is not free either, the label of the frame.
template <class T>
constexpr T barrier = static_cast<T>(~T(0));

// Calls visit(x, y) for the markers in scan order.
template <class T, class Visit>
ZEB_INLINE void eachMarker(Rows<const T> marker, Frame frame, bool boundary, Visit visit) {
  for (int y = 0; y < frame.height; ++y)
    for (int x = 0; x < frame.width; x += 32) {
      const T* m = marker[y] + x;
      const int n = frame.width - x < 32 ? frame.width - x : 32;
      uint32_t bits = differing(m, n, splat(T(0)));
      if (bits && boundary) bits &= differing(m, n, splat(barrier<T>));
      for (; bits; bits &= bits - 1) visit(x + __builtin_ctz(bits), y);
    }
}

// How many pixels of a queue are fetched ahead of their turn, when the image does not fit the second-level cache; in it
// the walk ahead would only cost its steps.
inline int fetchedAhead(int64_t bytes) {
  return bytes > 1 << 20 ? 4 : 0;
}

// The checks that follow those of the images.
inline ZebStatus floodChecks(ZebiNorm norm, int flag, int64_t bytes) {
  return firstFailure(isNeighbourhood(norm), require(flag == 0 || flag == zebSegmentBoundary, zebStsErrBadArgument),
                      require(bytes <= INT32_MAX, zebStsErrOverflow));
}

}  // namespace zeb
