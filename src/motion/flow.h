// The tracker's state.
#pragma once

#include <stdint.h>

#include "filter/fixed.h"
#include "zebcv.h"

struct ZebiOptFlowPyrLKState {
  Zeb32s roiWidth;
  Zeb32s roiHeight;
  Zeb32s one;  // always 1
  Zeb32s dataType;
  uint32_t id;
  Zeb32s hint;
  Zeb32s winSize;
  Zeb8u* pBuffer;
};

namespace zeb {

// Bytes of the work buffer: windows of the tracker, a level image of the largest size as floats with its two gradients,
// and the buffer of a 3 x 3 filter of such an image. INT64_MAX where the bytes do not fit a signed 32-bit count anyway.
inline int64_t flowBufferBytes(ZebiSize roi, int winSize, ZebDataType type) {
  const int64_t width = static_cast<int64_t>(roi.width) + 5, height = static_cast<int64_t>(roi.height) + 5;
  const int64_t window = winSize;
  if (window > INT32_MAX / 12 / window || width > INT32_MAX / height) return INT64_MAX;
  const int64_t filter = FloatLines::scratchBytes(static_cast<int>(width), 1);
  const int64_t level = filter + width * height * (type == zeb32f ? 2 : 3);
  return ((window * 12 + 36) * (window + 3) + level) * 4 + 36;
}

}  // namespace zeb
