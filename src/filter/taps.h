// The one-dimensional taps of the fixed filters, on vectors.
//
//   taps            3           5
//   smooth          1 2 1       1 4 6 4 1
//   first           -1 0 1      -1 -2 0 2 1
//   second          1 -2 1      1 0 -2 0 1
//   Scharr smooth   3 10 3
//   mean            1 1 1       1 1 1 1 1
//
// Each comes in up to three forms:
//
//   bytes    whole vectors of bytes to sums of 16 bits, half of the elements at a time
//   words    vectors of 16 bits
//   floats   vectors of floats, rounded in the order written; zero taps take no part
//
// v(k) yields the vector under tap k. Sums of bytes under two passes of any of them fit 16 bits.
#pragma once

#include "core/reduce.h"
#include "core/shuffle.h"

namespace zeb {

// Which half of the lanes of two vectors of bytes: interleaved, or one of them widened.
struct FirstHalf {
  static ZEB_INLINE V8u pair(V8u a, V8u b) { return interleaveFirst(a, b); }
};
struct LastHalf {
  static ZEB_INLINE V8u pair(V8u a, V8u b) { return interleaveLast(a, b); }
};
template <class Half>
ZEB_INLINE V16s widened(V8u a) {
  return as<Zeb16s>(Half::pair(a, splat(Zeb8u(0))));
}
template <class Half, int first, int second>
ZEB_INLINE V16s weighted(V8u a, V8u b) {
  return dotPairs(Half::pair(a, b), splatBytePair(first, second));
}
ZEB_INLINE V16s times(V16s a, int k) {
  return a * splat(static_cast<Zeb16s>(k));
}

struct Smooth3 {
  static constexpr int taps = 3;
  template <class Half, class At>
  static ZEB_INLINE V16s bytes(At v) {
    return weighted<Half, 1, 2>(v(0), v(1)) + widened<Half>(v(2));
  }
  template <class At>
  static ZEB_INLINE V16s words(At v) {
    const V16s middle = v(1);
    return (v(0) + middle) + (v(2) + middle);
  }
  template <class At>
  static ZEB_INLINE V32f floats(At v) {
    return fma(splat(2.0f), v(1), v(0)) + v(2);
  }
};
struct First3 {
  static constexpr int taps = 3;
  template <class Half, class At>
  static ZEB_INLINE V16s bytes(At v) {
    return weighted<Half, -1, 1>(v(0), v(2));
  }
  template <class At>
  static ZEB_INLINE V16s words(At v) {
    return v(2) - v(0);
  }
  template <class At>
  static ZEB_INLINE V32f floats(At v) {
    return v(2) - v(0);
  }
};
struct Second3 {
  static constexpr int taps = 3;
  template <class Half, class At>
  static ZEB_INLINE V16s bytes(At v) {
    return weighted<Half, 1, -2>(v(0), v(1)) + widened<Half>(v(2));
  }
  template <class At>
  static ZEB_INLINE V16s words(At v) {
    const V16s middle = v(1);
    return (v(0) - middle) + (v(2) - middle);
  }
  template <class At>
  static ZEB_INLINE V32f floats(At v) {
    return fnma(splat(2.0f), v(1), v(0)) + v(2);
  }
};
struct Mean3 {
  static constexpr int taps = 3;
  template <class Half, class At>
  static ZEB_INLINE V16s bytes(At v) {
    return weighted<Half, 1, 1>(v(0), v(1)) + widened<Half>(v(2));
  }
  template <class At>
  static ZEB_INLINE V16s words(At v) {
    return (v(0) + v(1)) + v(2);
  }
  template <class At>
  static ZEB_INLINE V32f floats(At v) {
    return (v(0) + v(1)) + v(2);
  }
};
// Along a row and along a column the floats of 3 10 3 are added in different orders.
struct ScharrSmooth {
  static constexpr int taps = 3;
  template <class Half, class At>
  static ZEB_INLINE V16s bytes(At v) {
    return weighted<Half, 3, 10>(v(0), v(1)) + weighted<Half, 3, 0>(v(2), splat(Zeb8u(0)));
  }
  template <class At>
  static ZEB_INLINE V16s words(At v) {
    return times(v(0) + v(2), 3) + times(v(1), 10);
  }
  template <class At>
  static ZEB_INLINE V32f floats(At v) {
    return fma(splat(3.0f), v(2), fma(splat(10.0f), v(1), splat(3.0f) * v(0)));
  }
};
struct ScharrSmoothDown : ScharrSmooth {
  template <class At>
  static ZEB_INLINE V32f floats(At v) {
    return fma(splat(3.0f), v(2), fma(splat(3.0f), v(0), splat(10.0f) * v(1)));
  }
};

struct Smooth5 {
  static constexpr int taps = 5;
  template <class Half, class At>
  static ZEB_INLINE V16s bytes(At v) {
    return weighted<Half, 1, 4>(v(0), v(1)) + weighted<Half, 6, 4>(v(2), v(3)) + widened<Half>(v(4));
  }
  template <class At>
  static ZEB_INLINE V16s words(At v) {
    const V16s middle = v(2), inner = v(1) + v(3) + middle;
    return v(0) + v(4) + (middle + middle) + shiftLeft<2>(inner);
  }
  template <class At>
  static ZEB_INLINE V32f floats(At v) {
    return v(4) + fma(splat(4.0f), v(3), fma(splat(6.0f), v(2), fma(splat(4.0f), v(1), v(0))));
  }
};
struct First5 {
  static constexpr int taps = 5;
  template <class Half, class At>
  static ZEB_INLINE V16s bytes(At v) {
    return weighted<Half, -1, -2>(v(0), v(1)) + weighted<Half, 2, 1>(v(3), v(4));
  }
  template <class At>
  static ZEB_INLINE V16s words(At v) {
    const V16s inner = v(3) - v(1);
    return v(4) - v(0) + (inner + inner);
  }
  template <class At>
  static ZEB_INLINE V32f floats(At v) {
    return fma(splat(2.0f), v(3) - v(1), v(4) - v(0));
  }
};
struct Second5 {
  static constexpr int taps = 5;
  template <class Half, class At>
  static ZEB_INLINE V16s bytes(At v) {
    return weighted<Half, 1, -2>(v(0), v(2)) + widened<Half>(v(4));
  }
  template <class At>
  static ZEB_INLINE V16s words(At v) {
    const V16s middle = v(2);
    return (v(0) - middle) + (v(4) - middle);
  }
  template <class At>
  static ZEB_INLINE V32f floats(At v) {
    return fnma(splat(2.0f), v(2), v(0)) + v(4);
  }
};
struct Mean5 {
  static constexpr int taps = 5;
  template <class At>
  static ZEB_INLINE V32f floats(At v) {
    return (((v(0) + v(1)) + v(2)) + v(3)) + v(4);
  }
};

}  // namespace zeb
