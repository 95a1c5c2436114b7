// Results along the rows of an image, kept for as many rows as the columns of a filter take.
#pragma once

#include "core/scratch.h"
#include "filter/border.h"

namespace zeb {

template <class R>
class RowResults {
 public:
  static constexpr int farthest = 256;  // rows above the image

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

  // The results of count rows from `from` >= -farthest on, each of which is in the image or beside it as its border
  // rule says. make(q, out) computes those of source row q: never twice where rows are asked for from above to below,
  // and once for all constant rows.
  template <class Make>
  const R* const* rows(int64_t from, int count, Make make) {
    const int64_t to = from + count - 1, last = source_.size().height - 1;
    const Sides sides = source_.sides();
    if (to < 0 && !sides.top) return copies(0, -1, count, make);
    if (from > last && !sides.bottom) return copies(last, last + 1, count, make);
    const int64_t top = sides.top || from > 0 ? from : 0, bottom = sides.bottom || to < last ? to : last;
    if (top < begin_ || top < next_ - kept_ || top > next_) begin_ = next_ = top;
    for (; next_ <= bottom; ++next_) make(next_, slot(next_));
    const R *above = slot(top), *below = slot(bottom);
    if (source_.constant() && (from < top || to > bottom)) above = below = constant(from < top ? -1 : last + 1, make);
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

  template <class Make>
  const R* constant(int64_t outside, Make make) {
    if (!hasConstant_) make(outside, constant_);
    hasConstant_ = true;
    return constant_;
  }
  // All rows beyond one side: those of the row at the edge, or of the constant.
  template <class Make>
  const R* const* copies(int64_t edge, int64_t outside, int count, Make make) {
    const R* const row = source_.constant() ? constant(outside, make) : rows(edge, 1, make)[0];
    for (int i = 0; i < count; ++i) rows_[i] = row;
    return rows_;
  }

  R* slot(int64_t q) const {
    const auto shifted = static_cast<unsigned>(q + farthest * kept_);  // not below 0
    return first_ + static_cast<ptrdiff_t>(shifted % static_cast<unsigned>(kept_)) * stride_;
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
