// Memory of states: the one way to get it and to give it back.
#pragma once

#include "core/services.h"
#include "core/state_id.h"

namespace zeb {

// Null where there is none, or where the count of bytes does not fit the allocator's.
inline Zeb8u* allocateState(int64_t bytes) {
  return bytes > INT32_MAX ? nullptr : zebsMalloc_8u(static_cast<int>(bytes));
}

// Clears the identifier, so that nobody takes what is left in memory for a state, and gives the memory back.
inline void releaseState(void* state, uint32_t& id) {
  id = 0;
  zebsFree(state);
}

}  // namespace zeb
