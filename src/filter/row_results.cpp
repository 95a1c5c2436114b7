#include "filter/row_results.h"

namespace zeb {

RowWindow::RowWindow(const BorderedImage& source, int kept, int64_t stride, Scratch& scratch)
    : top_(source.sides().top),
      bottom_(source.sides().bottom),
      hasConstant_(source.constant() != nullptr),
      last_(source.size().height - 1),
      kept_(kept),
      shift_((int64_t{farthest} + kept - 1) / kept * kept),
      stride_(static_cast<ptrdiff_t>(stride)),
      first_(scratch.take<Zeb8u>(kept * stride)),
      constant_(scratch.take<Zeb8u>(stride)),
      rows_(scratch.take<const Zeb8u*>(kept)) {}

RowWindow::Wanted RowWindow::move(int64_t from, int count) {
  const int64_t to = from + count - 1;
  const bool above = to < 0 && !top_, below = from > last_ && !bottom_;
  int64_t top = top_ || from > 0 ? from : 0, bottom = bottom_ || to < last_ ? to : last_;
  // Wholly beside the image: its edge stands for all rows, or the constant does.
  if (above || below) top = bottom = above ? 0 : last_;
  if (top < begin_ || top < next_ - kept_ || top > next_) begin_ = next_ = top;
  Wanted wanted = {next_, bottom, Wanted::none};
  if (next_ <= bottom) next_ = bottom + 1;
  const Zeb8u *first = slot(top), *last = slot(bottom);
  if (hasConstant_ && (from < top || to > bottom)) {
    if (!constantMade_) wanted.constant = from < top ? -1 : last_ + 1;
    constantMade_ = true;
    first = last = constant_;
  }
  const Zeb8u** out = rows_;
  const Zeb8u** const outEnd = rows_ + count;
  for (int64_t q = from; q < top && out < outEnd; ++q) *out++ = first;
  const Zeb8u* const end = first_ + kept_ * stride_;
  const Zeb8u* row = slot(top);
  for (int64_t q = top; q <= bottom && !above && !below; ++q) {
    *out++ = row;
    row += stride_;
    if (row == end) row = first_;
  }
  while (out < outEnd) *out++ = last;
  return wanted;
}

}  // namespace zeb
