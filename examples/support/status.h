// What the examples do about a status.
#pragma once

#include <stdexcept>
#include <string>

#include "zebcv/status.h"

namespace support {

// Throws when a call reports anything but zebStsOk.
inline void requireOk(ZebStatus status) {
  if (status != zebStsOk)
    throw std::runtime_error(std::string("a call returned ") + zebStatusName(status) + ": " + zebStatusText(status));
}

}  // namespace support
