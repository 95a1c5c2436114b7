// Image rows: a pointer to the first pixel and the distance in bytes from row to row.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include <type_traits>

#include "zebcv/types.h"

namespace zeb {

template <class T>
class Rows {
 public:
  Rows(T* first, int step) : first_(first), step_(step) {}

  // Row y; y may be negative where rows above the region are known to be in memory.
  T* operator[](int y) const {
    using Byte = std::conditional_t<std::is_const_v<T>, const char, char>;
    return reinterpret_cast<T*>(reinterpret_cast<Byte*>(first_) + static_cast<ptrdiff_t>(y) * step_);
  }

  // The same rows from a pixel further right and down.
  Rows from(int column, int row) const { return Rows((*this)[row] + column, step_); }

  int step() const { return step_; }

 private:
  T* first_;
  int step_;
};

template <class T>
Rows(T*, int) -> Rows<T>;

// Calls kernel(row pointers..., elements per row) for every row. Images whose rows all follow each other without a gap
// are handed over as one long row.
template <class Kernel, class... T>
inline void forEachRow(ZebiSize size, int channels, Kernel kernel, Rows<T>... images) {
  const int64_t elements = static_cast<int64_t>(size.width) * channels;
  const bool contiguous = (... && (images.step() == elements * static_cast<int64_t>(sizeof(T))));
  if (contiguous && elements * size.height <= INT32_MAX) {
    kernel(images[0]..., static_cast<int>(elements * size.height));
    return;
  }
  for (int y = 0; y < size.height; ++y) kernel(images[y]..., static_cast<int>(elements));
}

}  // namespace zeb
