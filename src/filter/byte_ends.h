// The ends of a row of bytes with what a filter reads beside them, each in one store, so that loads from it need not
// wait for the cache.
#pragma once

#include "core/shuffle.h"
#include "filter/border_rules.h"

namespace zeb {

// For each byte of two halves that stand one behind the other, the first of them at or before the left edge of a row,
// or the last at or beyond the right edge: which byte of the first (the last) sixteen of the row it is; the top bit
// where it is a constant. The row's own bytes are in the middle.
template <int channels>
struct EndTable {
  static constexpr int half = 16;
  Zeb8u repeated[3 * half] = {}, replaced[3 * half] = {};

  constexpr EndTable() {
    for (int i = 0; i < half; ++i) {
      repeated[i] = static_cast<Zeb8u>((i + channels * half - half) % channels);
      repeated[half + i] = replaced[half + i] = static_cast<Zeb8u>(i);
      repeated[2 * half + i] = static_cast<Zeb8u>(half - channels + i % channels);
      replaced[i] = replaced[2 * half + i] = 128;
    }
  }
};

// Rows of at least 32 bytes, of which so many are read before and after them, together at most 16. The borders repeat
// the edges, are constant, or lie in memory.
template <int channels>
class ByteEnds {
 public:
  static constexpr int outputs = 16;  // of either end

  ByteEnds(ZebiBorderType border, const Zeb8u* value, int width, int before, int after)
      : before_(before), end_(width - outputs), leftAt_(0), rightAt_(end_) {
    static constexpr EndTable<channels> table;
    const Zeb8u* const own = (border == zebBorderConst ? table.replaced : table.repeated) + outputs;
    const bool inMemory = border == zebBorderInMem;
    if (inMemory) leftAt_ -= before, rightAt_ += after;
    left_ = loadHalves(own - (inMemory ? 0 : before), own);
    right_ = loadHalves(own, own + outputs - before - (inMemory ? after : 0));
    leftConstant_ = rightConstant_ = splat(Zeb8u(0));
    if (border != zebBorderConst) return;
    Zeb8u constant[outputs];
    for (int i = 0; i < outputs; ++i) constant[i] = value[i % channels];
    const V8u both = loadHalves(constant, constant);
    leftConstant_ = select(left_, both, leftConstant_);
    rightConstant_ = select(right_, both, rightConstant_);
  }

  // 32 bytes of either end: what the first outputs of a row read, and what the last ones do.
  ZEB_INLINE void fill(const Zeb8u* row, Zeb8u* left, Zeb8u* right) const {
    store(left, bytesAt(loadHalves(row + leftAt_, row + outputs - before_), left_) | leftConstant_);
    store(right, bytesAt(loadHalves(row + end_ - before_, row + rightAt_), right_) | rightConstant_);
  }

 private:
  int before_, end_, leftAt_, rightAt_;
  V8u left_, right_;
  V8u leftConstant_, rightConstant_;
};

}  // namespace zeb
