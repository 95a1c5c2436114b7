// Erosion and dilation of bit-packed images.
#pragma once

#include "filter/bit_rows.h"
#include "morph/state.h"

namespace zeb {

// What becomes of a result row: dst = result, other & ~result, result & ~other, or dst & ~result. The other image's
// rows begin at bit 0. Bits of the last byte beyond the width are kept.
struct BitOutput {
  Rows<Zeb8u> dst;
  RowOutput<Zeb8u>::Finish finish = RowOutput<Zeb8u>::store;
  Rows<const Zeb8u> other{nullptr, 0};
};

// Conjunction (erosion) or disjunction (dilation) over the set elements.
void erodeBits(const ZebiMorphState& state, const BitRows& source, const BitOutput& output, Zeb8u* scratch,
               int64_t scratchSize);
void dilateBits(const ZebiMorphState& state, const BitRows& source, const BitOutput& output, Zeb8u* scratch,
                int64_t scratchSize);

}  // namespace zeb
