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

// Walks along a queue ahead of the pixel whose turn it is, and has what lies around the pixels there fetched, when the
// image does not fit the second-level cache; in it the walk would only cost its steps.
class Scout {
 public:
  static int aheadOf(int64_t bytes) { return bytes > secondCache ? 4 : 0; }
  explicit Scout(int ahead) : ahead_(ahead) {}

  // It is p's turn. next(q) is the pixel behind q, or negative at the end; fetch(q) is done once for each.
  template <class Next, class Fetch>
  ZEB_INLINE void lead(int p, Next next, Fetch fetch) {
    if (--lead_ < 0) {
      lead_ = 0;
      at_ = p;
    }
    for (int q; lead_ < ahead_ && (q = next(at_)) >= 0; ++lead_) fetch(at_ = q);
  }

 private:
  static constexpr int64_t secondCache = 1 << 20;
  int ahead_, at_ = 0, lead_ = 0;
};

// Of two framed images the rows above and below a pixel; its own are read with its link.
template <class A, class B>
ZEB_INLINE void fetchBeside(const A* a, const B* b, ptrdiff_t pitch) {
  __builtin_prefetch(a - pitch);
  __builtin_prefetch(a + pitch);
  __builtin_prefetch(b - pitch);
  __builtin_prefetch(b + pitch);
}

// The checks that follow those of the images.
inline ZebStatus floodChecks(ZebiNorm norm, int flag, int64_t bytes) {
  return firstFailure(isNeighbourhood(norm), require(flag == 0 || flag == zebSegmentBoundary, zebStsErrBadArgument),
                      require(bytes <= INT32_MAX, zebStsErrOverflow));
}

}  // namespace zeb
