// Signed distances about the boundary of an object, for the fast marching itself and for inpainting.
#pragma once

#include "core/image.h"

namespace zeb {

// Bytes of the buffer for a region.
int64_t marchingBytes(ZebiSize roi);

// dst: distances about the pixels of src that are not 0, positive inside, down to -radius outside, 0 farther out.
void march(Rows<const Zeb8u> src, Rows<Zeb32f> dst, ZebiSize roi, Zeb32f radius, Zeb8u* pBuffer);

}  // namespace zeb
