// The state of inpainting: one block with the header, the weights, the distances, the ranks and the fill order.
#pragma once

#include "core/image.h"
#include "core/state_id.h"
#include "zebcv/regions.h"

namespace zeb {

struct InpaintState {
  uint32_t id;
  ZebiSize roi;
  ZebiInpaintMethod method;
  Zeb32f radius;
  int reach;     // R: offsets run from -R to R
  int masked;    // pixels under the mask
  Zeb32f* c1;    // 1 / distance, for (2R + 1)^2 offsets row by row; 0 for those that take no part
  Zeb32f* c2;    // 1 / distance^2
  Zeb32f* t;     // distances from the mask's edge, row by row
  Zeb32s* rank;  // place in the order of filling, -1 outside the mask
  Zeb32s* order;

  int side() const { return 2 * reach + 1; }
};

constexpr uint32_t inpaintId(int channels) {
  return stateId(StateKind::inpaint, zeb8u, channels);
}

}  // namespace zeb
