// Sums of float products along a row and down columns of rows: the product of the first tap, then one fused step for
// each further tap, in order; down three rows the product of the second, then the first, then the third.
#pragma once

#include "core/image.h"

namespace zeb {

// n elements; first is under the first tap, taps are `channels` elements apart.
template <int channels>
void correlateRow(const Zeb32f* first, const Zeb32f* kernel, int count, Zeb32f* dst, int n);

// Rows of one channel with their borders: edges repeated, a constant, or what is in memory.
struct FloatRows {
  Rows<const Zeb32f> src;
  Zeb32f* const* dst;
  ZebiSize size;
  int anchor;
  ZebiBorderType border;
  Zeb32f value;
};
// Says no, and does nothing, where another number of taps or the shortness of the rows calls for the way above.
bool correlateRows(const FloatRows& rows, const Zeb32f* kernel, int count);

// n elements of each of `height` rows: those of row y are sums down the rows from y on.
void correlateColumns(const Zeb32f* const* rows, const Zeb32f* kernel, int count, Rows<Zeb32f> dst, int height, int n);

}  // namespace zeb
