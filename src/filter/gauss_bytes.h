// Gaussian sums of bytes, whose taps are mirrored: both pixels of a pair are added before they are multiplied.
#pragma once

#include "zebcv/types.h"

namespace zeb {

// Tap `reach` is the centre's; taps sum up to 16384. pairs: reach / 2 + 1 of them, the first of the centre and its
// neighbours, the last padded with 0 where it is alone.
struct FoldedTaps {
  const Zeb32s* pairs;
  int reach;

  // pairs may be where the taps begin.
  static void make(const Zeb32s* taps, int reach, Zeb32s* pairs);
};

// Row results t = (S + 128 >> 8) + 32: six fraction bits, and half a unit of the last rounding, as the taps of a column
// sum up to 2^14. Whole vectors of 16 elements are read and written.
void gaussRow(const FoldedTaps& taps, const Zeb16s* line, int channels, int n, Zeb16s* out);
// The sums down the columns, without their 20 fraction bits. Whole vectors of the rows are read.
void gaussColumns(const FoldedTaps& taps, const Zeb16s* const* rows, int n, Zeb8u* out);

}  // namespace zeb
