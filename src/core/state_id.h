// The identifier of a state record: one word that tells kind, element type and channels.
#pragma once

#include "core/checks.h"

namespace zeb {

enum class StateKind : uint8_t {
  morphology = 1,
  morphAdvanced,
  morphGray,
  haar,
  pyramid,
  opticalFlow,
  pyramidLayerDown,
  pyramidLayerUp,
  gaussian,
  fastN,
  inpaint,
  houghProbabilistic,
};

// 0x5A, kind, data type, channels from the most significant byte down. Neither zeroed nor 0xFF-filled memory looks so.
constexpr uint32_t stateId(StateKind kind, int dataType, int channels) {
  return 0x5A000000u | static_cast<uint32_t>(kind) << 16 | static_cast<uint32_t>(dataType) << 8 |
         static_cast<uint32_t>(channels);
}

constexpr ZebStatus isState(uint32_t found, uint32_t wanted) {
  return found == wanted ? zebStsOk : zebStsErrContextMatch;
}

}  // namespace zeb
