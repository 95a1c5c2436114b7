// The one way through the rows of a region and the elements of a row: maps and reductions, their ends included.
//
//   forEachRow    calls a kernel with the rows of several images
//   forVectors    calls a body for every vector of a row, and for what is left behind the last whole one
//   mapRow        dst[i] = op(src[i]...) over a row
//   forWhole      the vectors of a run that has no end of a row in it, the unrolled ones numbered
//
// A body is written once: the part it is given loads and stores a whole vector, or the first n elements of one, and
// widens where the vector's elements are wider than the row's.
#pragma once

#include "core/image.h"
#include "core/streaming.h"
#include "core/widen.h"

namespace zeb {

// Lambdas that stand for a loop's body.
#define ZEB_BODY __attribute__((always_inline))

struct WholeVector {
  template <class T>
  ZEB_INLINE Vec<T> from(const T* p) const {
    return load(p);
  }
  template <class T>
  ZEB_INLINE V32f floats(const T* p) const {
    return loadAsFloat(p);
  }
  template <class T>
  ZEB_INLINE V16s words(const T* p) const {
    return loadAs16s(p);
  }
  // All ones in the lanes of 32 bits whose mask byte is not 0.
  ZEB_INLINE V32s selected(const Zeb8u* mask) const { return loadMask(mask); }
  template <class T>
  ZEB_INLINE void to(T* p, Vec<T> v) const {
    store(p, v);
  }
  // A bit for every lane that there is.
  ZEB_INLINE unsigned laneBits() const { return ~0u; }
};

// Elements behind the first n are neither read nor written; loads give 0 for them.
struct RowEnd {
  int n;
  template <class T>
  ZEB_INLINE Vec<T> from(const T* p) const {
    return loadN(p, n);
  }
  template <class T>
  ZEB_INLINE V32f floats(const T* p) const {
    return loadAsFloatN(p, n);
  }
  template <class T>
  ZEB_INLINE V16s words(const T* p) const {
    alignas(16) T block[V16s::lanes] = {};
    copyFew(block, p, n * static_cast<int>(sizeof(T)));
    return loadAs16s(block);
  }
  ZEB_INLINE V32s selected(const Zeb8u* mask) const {
    alignas(8) Zeb8u block[8] = {};
    copyFew(block, mask, n);
    return loadMask(block);
  }
  template <class T>
  ZEB_INLINE void to(T* p, Vec<T> v) const {
    storeN(p, v, n);
  }
  ZEB_INLINE unsigned laneBits() const { return (1u << n) - 1; }
};

// Nothing to do once a turn.
struct NoTurn {
  ZEB_INLINE void operator()(int) const {}
};

// Calls body(x, part) for the elements from..to-1, `lanes` at a time; whole vectors by turns of `unrolled`, before each
// of which turn(x) is called.
template <int lanes, int unrolled = 1, class Body, class Turn = NoTurn>
ZEB_INLINE void forVectors(int from, int to, Body body, Turn turn = Turn()) {
  int x = from;
  if constexpr (unrolled > 1) {
    for (; x <= to - unrolled * lanes; x += unrolled * lanes) {
      turn(x);
#pragma GCC unroll 8
      for (int k = 0; k < unrolled; ++k) body(x + k * lanes, WholeVector{});
    }
  }
  for (; x <= to - lanes; x += lanes) body(x, WholeVector{});
  if (x < to) body(x, RowEnd{to - x});
}

// The same where a vector may be made twice, because no destination is a source: the last one of a row overlaps the one
// before it, and only rows shorter than a vector are partial.
template <int lanes, class Body>
ZEB_INLINE void forOverlappingVectors(int from, int to, Body body) {
  int x = from;
  for (; x <= to - lanes; x += lanes) body(x, WholeVector{});
  if (x == to) return;
  if (to - from >= lanes)
    body(to - lanes, WholeVector{});
  else
    body(x, RowEnd{to - x});
}

// body(x, part) for the vectors of a row of n elements that reads from memory at the pointers given, two at a time, the
// bytes further on asked for ahead.
template <int lanes, class Body, class... T>
ZEB_INLINE void forVectorsAhead(int n, Body body, const T*... touched) {
  forVectors<lanes, 2>(0, n, body, [=](int x) ZEB_BODY { (fetchAhead(touched, x, n), ...); });
}

// Calls body(x, k) for the n elements of a run of whole vectors; k, known to the compiler, counts the vectors of a
// turn, so that each may have an accumulator of its own.
template <int lanes, int unrolled, class Body>
ZEB_INLINE void forWhole(int n, Body body) {
  int x = 0;
  for (; x <= n - unrolled * lanes; x += unrolled * lanes) {
#pragma GCC unroll 8
    for (int k = 0; k < unrolled; ++k) body(x + k * lanes, k);
  }
  for (; x < n; x += lanes) body(x, 0);
}

// dst[i] = op(src[i]...); dst may be one of the sources.
template <class Op, class T, class... S>
ZEB_INLINE void mapRow(const Op op, T* dst, int n, const S*... src) {
  forVectorsAhead<Vec<T>::lanes>(
      n, [=](int x, auto part) ZEB_BODY { part.to(dst + x, op(part.from(src + x)...)); }, dst, src...);
}

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
// The images' own channels, all the same.
template <class Kernel, class First, class... I>
inline void forEachRow(ZebiSize size, Kernel kernel, First first, I... images) {
  static_assert((... && (First::channels == I::channels)));
  forEachRow(size, First::channels, kernel, first.rows(), images.rows()...);
}

}  // namespace zeb
