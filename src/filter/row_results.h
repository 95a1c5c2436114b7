// Results along the rows of an image, kept for as many rows as the columns of a filter take.
#pragma once

#include "core/scratch.h"
#include "filter/border.h"

namespace zeb {

template <class R>
class RowResults {
 public:
  static int64_t scratchBytes(int64_t taps, int64_t elements) {
    return (taps + 1) * stride(elements) * static_cast<int64_t>(sizeof(R)) + taps * static_cast<int64_t>(sizeof(R*)) +
           64;
  }

  // taps is odd; a row of results has so many elements.
  RowResults(const BorderedImage& source, int taps, int64_t elements, Scratch& scratch)
      : source_(source),
        taps_(taps),
        reach_(taps / 2),
        stride_(static_cast<ptrdiff_t>(stride(elements))),
        first_(scratch.take<R>(taps * stride(elements))),
        constant_(scratch.take<R>(stride(elements))),
        rows_(scratch.take<const R*>(taps)) {}

  // The results of rows y - reach .. y + reach, each of which is in the image or beside it as its border rule says.
  // make(q, out) computes those of source row q; rows that repeat another, and all constant ones but the first, cost
  // nothing. y is asked for in any order, one after the other best; its column of taps touches the image.
  template <class Make>
  const R* const* around(int64_t y, Make make) {
    const int64_t from = y - reach_, to = y + reach_;
    const int64_t last = source_.size().height - 1;
    const Sides sides = source_.sides();
    const int64_t top = sides.top || from > 0 ? from : 0, bottom = sides.bottom || to < last ? to : last;
    for (int64_t q = y == after_ && next_ > top ? next_ : top; q <= bottom; ++q) make(q, slot(q));
    next_ = bottom + 1, after_ = y + 1;
    const bool constant = source_.constant() != nullptr;
    if (constant && !hasConstant_ && (top > from || bottom < to)) {
      make(top > from ? -1 : last + 1, constant_);
      hasConstant_ = true;
    }
    const R** out = rows_;
    const R* row = slot(top);
    for (int64_t q = from; q < top; ++q) *out++ = constant ? constant_ : row;
    const R* const end = first_ + taps_ * stride_;
    for (int64_t q = top; q <= bottom; ++q) {
      *out++ = row;
      row += stride_;
      if (row == end) row = first_;
    }
    for (const R* edge = out[-1]; out < rows_ + taps_;) *out++ = constant ? constant_ : edge;
    return rows_;
  }

 private:
  // Rows a power of two apart would share their places in the cache.
  static int64_t stride(int64_t elements) { return (elements + 31) / 16 * 16; }

  R* slot(int64_t q) const {
    return first_ + static_cast<ptrdiff_t>(static_cast<unsigned>(q + taps_) % static_cast<unsigned>(taps_)) * stride_;
  }

  BorderedImage source_;
  int taps_, reach_;
  ptrdiff_t stride_;
  R *first_, *constant_;
  const R** rows_;
  int64_t next_ = 0, after_ = INT64_MIN;
  bool hasConstant_ = false;
};

}  // namespace zeb
