// First derivatives of an image, row by row, with borders.
//
//   Sobel, 3 taps    smoothing 1 2 1      difference -1 0 1
//   Sobel, 5 taps    smoothing 1 4 6 4 1  difference -1 -2 0 2 1
//   Scharr, 3 taps   smoothing 3 10 3     difference -1 0 1       (H. Scharr, 2000)
//
// dx differentiates along the row and smooths along the column, dy the other way round; dx grows to the right, dy
// downwards. Nothing is scaled.
#pragma once

#include "core/image.h"
#include "core/loops.h"
#include "core/scratch.h"
#include "filter/border.h"

namespace zeb {

template <int taps_, bool scharr_>
struct DerivativeKernel {
  static constexpr int taps = taps_;
  static constexpr int reach = taps / 2;

  // Along a column or a row of samples p(0) .. p(taps - 1). Floats are added in the order written.
  template <class V, class At>
  static ZEB_INLINE V smoothed(At p) {
    if constexpr (taps == 5)
      return p(0) + p(4) + four(p(1) + p(3)) + six(p(2));
    else if constexpr (scharr_)
      return times(p(0) + p(2), 3) + times(p(1), 10);
    else
      return p(0) + p(2) + (p(1) + p(1));
  }
  template <class V, class At>
  static ZEB_INLINE V difference(At p) {
    if constexpr (taps == 5) {
      const V inner = p(3) - p(1);
      return p(4) - p(0) + (inner + inner);
    } else {
      return p(2) - p(0);
    }
  }

 private:
  static ZEB_INLINE V16s times(V16s a, int k) { return a * splat(static_cast<Zeb16s>(k)); }
  static ZEB_INLINE V32f times(V32f a, int k) { return a * splat(static_cast<Zeb32f>(k)); }
  template <class V>
  static ZEB_INLINE V four(V a) {
    return times(a, 4);
  }
  template <class V>
  static ZEB_INLINE V six(V a) {
    return times(a, 6);
  }
};
using Sobel3 = DerivativeKernel<3, false>;
using Sobel5 = DerivativeKernel<5, false>;
using Scharr3 = DerivativeKernel<3, true>;

// T: 8u with 16s derivatives, or 32f with 32f derivatives.
template <class Kernel, class T>
class DerivativeRows {
 public:
  using D = std::conditional_t<std::is_same_v<T, Zeb8u>, Zeb16s, Zeb32f>;
  static constexpr int reach = Kernel::reach, taps = Kernel::taps;

  static int64_t scratchBytes(int width) {
    return RowRing<T, taps>::bytes(bordered(width)) + 2 * bordered(width) * static_cast<int64_t>(sizeof(D));
  }

  DerivativeRows(const BorderedImage& source, Scratch& scratch)
      : source_(source),
        columns_(source.columns(-reach, int64_t{source.size().width} + reach)),
        ring_(scratch, bordered(source.size().width)),
        smoothed_(scratch.take<D>(bordered(source.size().width), 1)),
        difference_(scratch.take<D>(bordered(source.size().width), 1)) {}

  // The derivatives of row y; dy may be null where only dx is of use. Rows are asked for from 0 on, one after the
  // other.
  void form(int y, D* dx, D* dy) {
    for (int r = y == 0 ? -reach : y + reach; r <= y + reach; ++r)
      source_.fetch<int(sizeof(T))>(r, columns_, reinterpret_cast<Zeb8u*>(ring_[r]));
    dy ? derive<true>(y, dx, dy) : derive<false>(y, dx, dy);
  }

 private:
  static int64_t bordered(int width) { return int64_t{width} + 2 * reach; }

  template <bool both>
  void derive(int y, D* dx, [[maybe_unused]] D* dy) {
    const T* rows[taps];
    for (int k = 0; k < taps; ++k) rows[k] = ring_[y - reach + k];
    const int width = source_.size().width;
    using V = Vec<D>;
    forVectors<V::lanes>(0, width + 2 * reach, [&](int x, auto part) ZEB_BODY {
      const auto at = [&](int k) ZEB_BODY {
        if constexpr (std::is_same_v<T, Zeb8u>)
          return part.words(rows[k] + x);
        else
          return part.from(rows[k] + x);
      };
      part.to(smoothed_ + x, Kernel::template smoothed<V>(at));
      if constexpr (both) part.to(difference_ + x, Kernel::template difference<V>(at));
    });
    forVectors<V::lanes>(0, width, [&](int x, auto part) ZEB_BODY {
      part.to(dx + x, Kernel::template difference<V>([&](int k) ZEB_BODY { return part.from(smoothed_ + x + k); }));
      if constexpr (both)
        part.to(dy + x, Kernel::template smoothed<V>([&](int k) ZEB_BODY { return part.from(difference_ + x + k); }));
    });
  }

  BorderedImage source_;
  BorderedImage::Columns columns_;
  RowRing<T, taps> ring_;
  D *smoothed_, *difference_;
};

}  // namespace zeb
