// Minimum and maximum over a rectangle of pixels.
//
// Columns first: up to eight rows are combined directly, four output rows at a time; more rows by blocks of as many
// rows as the rectangle has, in which every window is the end of one block and the beginning of the next (van Herk,
// 1992; Gil and Werman, 1993). Then along the row by widening windows, each covered by overlapping shorter ones; while
// they fit into what an edge leaves of the whole, without the borders. Neither costs more for larger rectangles but for
// the logarithm of the width.
#pragma once

#include "core/checks.h"
#include "core/scratch.h"
#include "filter/border.h"
#include "filter/extremum_rows.h"
#include "filter/row_output.h"

namespace zeb {

// The pixels that a result is taken over, relative to its own: columns left..right and rows top..bottom, both included.
// They need not contain the pixel itself.
struct Window {
  int64_t left, right, top, bottom;
};
inline Window windowOf(ZebiSize rect, ZebiPoint anchor) {
  return {-int64_t(anchor.x), int64_t(rect.width) - 1 - anchor.x, -int64_t(anchor.y),
          int64_t(rect.height) - 1 - anchor.y};
}

// Distance of scratch rows of this many pixels: whole vectors, and room for what kernels read and write past the end.
// Not near a multiple of 1 KB, where the same columns of neighbouring rows would get in each other's way in the cache.
inline int64_t scratchStride(int64_t pixels, int pixelBytes) {
  const int64_t stride = ((boundedProduct(pixels, pixelBytes) + 31) & ~int64_t(31)) + 128;
  return ((stride + 128) & 1023) < 256 ? stride + 256 : stride;
}

// At least as much, for rows of this many pixels or fewer: what sizes are reported by.
inline int64_t scratchStrideBound(int64_t pixels, int pixelBytes) {
  return ((boundedProduct(pixels, pixelBytes) + 31) & ~int64_t(31)) + 128 + 256;
}

// Bytes of scratch for a region of this width. The morphology sizes its own scratch by this query: it keeps a whole
// bordered row for every row of its mask and a few words for each of its elements, and widens the region of the first
// of two operations by the reach of the second. Room for that is part of it.
inline int64_t rankBufferSize(int width, int pixelBytes, ZebiSize rect) {
  const int64_t stride = scratchStrideBound(int64_t(width) + 2 * (int64_t(rect.width) - 1), pixelBytes);
  return boundedProduct(int64_t(rect.height) + 5, stride) +
         boundedProduct(16, boundedProduct(rect.width, rect.height)) + 128;
}

// out = extremum over the window of every pixel of the source, channel by channel. Op is Lowest<T> or Highest<T> for
// 8u, 16u, 16s and 32f. The rows that the output names are made. The output must not overlap the source.
template <class Op>
void rankRegion(const BorderedImage& source, Window window, int channels, const RowOutput<typename Op::Type>& output,
                Scratch scratch);

}  // namespace zeb
