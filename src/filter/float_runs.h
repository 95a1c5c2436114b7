// Sums of float products along a row and down columns of rows: the product of the first tap, then one fused step for
// each further tap, in order; down three rows the product of the second, then the first, then the third.
#pragma once

#include "zebcv/types.h"

namespace zeb {

// n elements; first is under the first tap, taps are `channels` elements apart.
template <int channels>
void correlateRow(const Zeb32f* first, const Zeb32f* kernel, int count, Zeb32f* dst, int n);
void correlateColumns(const Zeb32f* const* rows, const Zeb32f* kernel, int count, Zeb32f* dst, int n);

}  // namespace zeb
