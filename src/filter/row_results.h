// Results along the rows of an image, kept for as many rows as the columns of a filter take.
#pragma once

#include "core/scratch.h"
#include "filter/border.h"

namespace zeb {

template <class R>
class RowResults {
 public:
  static int64_t scratchBytes(int64_t kept, int64_t elements) {
    return (kept + 1) * stride(elements) * static_cast<int64_t>(sizeof(R)) + kept * static_cast<int64_t>(sizeof(R*)) +
           64;
  }

  // Keeps so many rows of so many results.
  RowResults(const BorderedImage& source, int kept, int64_t elements, Scratch& scratch)
      : source_(source),
        kept_(kept),
        stride_(static_cast<ptrdiff_t>(stride(elements))),
        first_(scratch.take<R>(kept * stride(elements))),
        constant_(scratch.take<R>(stride(elements))),
        rows_(scratch.take<const R*>(kept)) {}

  // The results of count rows from `from` on, each of which is in the image or beside it as its border rule says; one
  // of them at least is in the image or in memory. make(q, out) computes those of source row q: never twice where rows
  // are asked for from above to below, and once for all constant rows.
  template <class Make>
  const R* const* rows(int64_t from, int count, Make make) {
    const int64_t to = from + count - 1, last = source_.size().height - 1;
    const Sides sides = source_.sides();
    const int64_t top = sides.top || from > 0 ? from : 0, bottom = sides.bottom || to < last ? to : last;
    if (top < begin_ || top < next_ - kept_ || top > next_) begin_ = next_ = top;
    for (; next_ <= bottom; ++next_) make(next_, slot(next_));
    const R *above = slot(top), *below = slot(bottom);
    if (source_.constant() && (from < top || to > bottom)) {
      if (!hasConstant_) make(from < top ? -1 : last + 1, constant_);
      hasConstant_ = true;
      above = below = constant_;
    }
    const R** out = rows_;
    for (int64_t q = from; q < top; ++q) *out++ = above;
    const R* const end = first_ + kept_ * stride_;
    const R* row = slot(top);
    for (int64_t q = top; q <= bottom; ++q) {
      *out++ = row;
      row += stride_;
      if (row == end) row = first_;
    }
    while (out < rows_ + count) *out++ = below;
    return rows_;
  }

 private:
  // Rows a power of two apart would share their places in the cache.
  static int64_t stride(int64_t elements) { return (elements + 31) / 16 * 16; }

  R* slot(int64_t q) const {
    return first_ + static_cast<ptrdiff_t>(static_cast<unsigned>(q + kept_) % static_cast<unsigned>(kept_)) * stride_;
  }

  BorderedImage source_;
  int kept_;
  ptrdiff_t stride_;
  R *first_, *constant_;
  const R** rows_;
  int64_t begin_ = 0, next_ = 0;  // what is made
  bool hasConstant_ = false;
};

}  // namespace zeb
