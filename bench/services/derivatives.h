// Services that the library does not export, as calls over a whole image.
#pragma once

#include <cstdint>

#include "zebcv/types.h"

namespace bench {

// The Sobel derivatives of the replicated image, 3 x 3, by the rows that the edge detector stands on. dy may be
// null.
int64_t sobelScratchBytes(int width);
void sobel(const Zeb8u* src, int srcStep, Zeb16s* dx, Zeb16s* dy, int dstStep, ZebiSize size, Zeb8u* scratch);

}  // namespace bench
