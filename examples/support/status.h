// What the examples do about a status.
#pragma once

#include <stdexcept>
#include <string>

#include "zebcv/types.h"

namespace support {

// Throws when a call reports anything but zebStsOk.
inline void requireOk(ZebStatus status) {
  if (status != zebStsOk) throw std::runtime_error("a call returned status " + std::to_string(status));
}

}  // namespace support
