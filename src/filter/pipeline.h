// What the halves of the separable filters share.
#pragma once

#include "core/checks.h"
#include "core/entry.h"

namespace zeb {

// No null among the first count row pointers.
template <class T>
inline ZebStatus rowsPresent(T* const* rows, int64_t count) {
  for (int64_t y = 0; y < count; ++y)
    if (rows[y] == nullptr) return zebStsErrNullPointer;
  return zebStsOk;
}

}  // namespace zeb
