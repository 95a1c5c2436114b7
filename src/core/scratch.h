// Carving typed pieces out of a caller's scratch buffer.
#pragma once

#include <assert.h>
#include <stddef.h>
#include <stdint.h>

#include "zebcv/types.h"

namespace zeb {

// Hands out pieces of a buffer one after the other. The buffer may start at any address; pieces are aligned inside it.
// Debug builds assert that the pieces stay within the size that was reported to the caller.
class Scratch {
 public:
  Scratch(void* buffer, int64_t size) : next_(reinterpret_cast<uintptr_t>(buffer)), end_(next_ + size) {}

  // count elements on a boundary of alignment bytes (a power of two).
  template <class T>
  T* take(int64_t count, unsigned alignment = 32) {
    const uintptr_t start = (next_ + alignment - 1) & ~static_cast<uintptr_t>(alignment - 1);
    next_ = start + static_cast<uintptr_t>(count * static_cast<int64_t>(sizeof(T)));
    assert(next_ >= start && next_ <= end_);
    return reinterpret_cast<T*>(start);
  }

  // Bytes left behind the last piece.
  int64_t left() const { return static_cast<int64_t>(end_) - static_cast<int64_t>(next_); }

 private:
  uintptr_t next_;
  uintptr_t end_;
};

}  // namespace zeb
