// Minimum and maximum over small centred rectangles, and over the cross of five pixels, with no line of scratch.
//
// Strips one or two vectors wide are made from top to bottom. A row's windows come straight from the source: a load for
// each pixel of the window, and beside an edge that is repeated a load whose bytes are put in place. Three rows stay in
// registers; of more rows the windows stay on the stack until the last window that needs them is made. Written and read
// again at other offsets, as lines along the row are, vectors would wait for the store, which is what short rows cost.
#pragma once

#include "filter/rank.h"

namespace zeb {

// False where the window, the width or the pixels are not for this; then nothing is written. cross: of 3 x 3 pixels the
// middle row and the middle column alone. Otherwise as rankRegion().
template <class Op>
bool trySmallWindows(const BorderedImage& source, Window window, bool cross, int channels,
                     const RowOutput<typename Op::Type>& output);

}  // namespace zeb
