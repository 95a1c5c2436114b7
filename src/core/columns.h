// A row in vectors: whole ones, and the elements that are left at its end.
#pragma once

#include "core/lanes.h"

namespace zeb {

// The part of a row that a piece of a kernel works on: a whole vector, or its first n elements.
struct WholeVector {
  template <class T>
  ZEB_INLINE Vec<T> from(const T* p) const {
    return load(p);
  }
  ZEB_INLINE V16s wide(const Zeb8u* p) const { return loadAs16s(p); }
  ZEB_INLINE V32f wide(const Zeb32f* p) const { return load(p); }
  template <class T>
  ZEB_INLINE void to(T* p, Vec<T> v) const {
    store(p, v);
  }
  ZEB_INLINE unsigned lanes() const { return ~0u; }
};
struct RowEnd {
  int n;
  template <class T>
  ZEB_INLINE Vec<T> from(const T* p) const {
    return loadN(p, n);
  }
  ZEB_INLINE V16s wide(const Zeb8u* p) const {
    alignas(16) Zeb8u block[16] = {};
    memcpy(block, p, static_cast<size_t>(n));
    return loadAs16s(block);
  }
  ZEB_INLINE V32f wide(const Zeb32f* p) const { return loadN(p, n); }
  template <class T>
  ZEB_INLINE void to(T* p, Vec<T> v) const {
    storeN(p, v, n);
  }
  ZEB_INLINE unsigned lanes() const { return (1u << n) - 1; }
};

// Calls part(x, WholeVector or RowEnd) for the columns from .. to - 1, so many at a time.
template <int lanes, class Part>
ZEB_INLINE void forColumns(int from, int to, Part part) {
  int x = from;
  for (; x <= to - lanes; x += lanes) part(x, WholeVector{});
  if (x < to) part(x, RowEnd{to - x});
}

// Lambdas that stand for a loop's body.
#define ZEB_BODY __attribute__((always_inline))

}  // namespace zeb
