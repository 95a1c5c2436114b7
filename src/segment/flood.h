// What both segmentations from markers share: neighbours in a framed image, the scan of the markers, the arguments.
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

// The neighbours of a pixel in their order, as offsets: in the framed image, and in bytes of another one of a step and
// bytes per pixel.
struct Neighbours {
  int count;
  int framed[8];
  ptrdiff_t bytes[8];

  Neighbours(ZebiNorm norm, int pitch, int step = 0, int pixelBytes = 0) : count(0) {
    for (int dy = -1; dy <= 1; ++dy)
      for (int dx = -1; dx <= 1; ++dx) {
        const bool beside = norm == zebiNormInf ? dx != 0 || dy != 0 : (dx == 0) != (dy == 0);
        if (!beside) continue;
        framed[count] = dy * pitch + dx;
        bytes[count++] = static_cast<ptrdiff_t>(dy) * step + dx * pixelBytes;
      }
  }
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

// The one label among values, where 0 and the barrier do not count; tells of several labels apart.
template <class T>
class OneLabel {
 public:
  ZEB_INLINE void operator()(T label) {
    // 0 becomes the largest value and the barrier the second largest, or the barrier 0 and 0 the value 1.
    const T down = static_cast<T>(label - 1), up = static_cast<T>(label + 1);
    if (down < least_) least_ = down;
    if (up > most_) most_ = up;
  }
  bool several() const { return most_ - least_ > 2; }
  T label() const { return static_cast<T>(most_ - 1); }

 private:
  unsigned least_ = barrier<T>, most_ = 0;
};

// The checks that follow those of the images.
inline ZebStatus floodChecks(ZebiNorm norm, int flag, int64_t bytes) {
  return firstFailure(isNeighbourhood(norm), require(flag == 0 || flag == zebSegmentBoundary, zebStsErrBadArgument),
                      require(bytes <= INT32_MAX, zebStsErrOverflow));
}

}  // namespace zeb
