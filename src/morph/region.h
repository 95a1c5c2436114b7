// Erosion and dilation of a region along the path that its state has chosen.
#pragma once

#include "morph/state.h"

namespace zeb {

// out = extremum over the set elements, the anchor on the pixel. Op is Lowest<T> or Highest<T>. The scratch holds at
// least what the state asks for at the width of the source.
template <class Op>
void morphRegion(const ZebiMorphState& state, const BorderedImage& source, const RowOutput<typename Op::Type>& output,
                 Zeb8u* scratch, int64_t scratchSize);

// General masks and regions with pixels in memory give finite results for floats: infinite ones become the largest
// values.
inline bool isFinite(const ZebiMorphState& state, ZebiBorderType border) {
  return state.shapeClass == zebShapeGeneral || (state.shapeClass != zebShapeEmpty && sidesInMemory(border).any());
}

}  // namespace zeb
