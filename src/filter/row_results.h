// Results along the rows of an image, kept for as many rows as the columns of a filter take.
#pragma once

#include "core/checks.h"
#include "core/scratch.h"
#include "filter/border.h"

namespace zeb {

// Which rows have to be made for a window of rows, and where each of the window's rows lies.
class RowWindow {
 public:
  static constexpr int farthest = 256;  // rows above the image, or as many as are kept

  RowWindow(const BorderedImage& source, int kept, int64_t stride, Scratch& scratch);

  struct Wanted {
    int64_t from, to;  // source rows to make now, the last one included
    int64_t constant;  // a constant row to make now, or `none`
    static constexpr int64_t none = INT64_MIN;
  };
  Wanted move(int64_t from, int count);

  Zeb8u* slot(int64_t row) const {
    // Neither below 0 nor above 2^32 - 1: a kernel that has a buffer is no longer than some 2^24.
    const auto shifted = static_cast<unsigned>(row + shift_);
    return first_ + static_cast<ptrdiff_t>(shifted % static_cast<unsigned>(kept_)) * stride_;
  }
  Zeb8u* constant() const { return constant_; }
  const Zeb8u* const* rows() const { return rows_; }

 private:
  bool top_, bottom_, hasConstant_;  // in memory; wanted but not made
  int64_t last_;
  int kept_;
  int64_t shift_;  // the least multiple of the rows kept that the farthest row above needs
  ptrdiff_t stride_;
  Zeb8u *first_, *constant_;
  const Zeb8u** rows_;
  int64_t begin_ = 0, next_ = 0;  // what is made
  bool constantMade_ = false;
};

template <class R>
class RowResults {
 public:
  static int64_t scratchBytes(int64_t kept, int64_t elements) {
    return boundedProduct(kept + 1, stride(elements)) + kept * static_cast<int64_t>(sizeof(R*)) + 64;
  }

  // Keeps so many rows of so many results.
  RowResults(const BorderedImage& source, int kept, int64_t elements, Scratch& scratch)
      : window_(source, kept, stride(elements), scratch) {}

  // The results of count rows from `from` on, each of which is in the image or beside it as its border rule says, at
  // most RowWindow::farthest rows above it or as many as are kept. make(q, out) computes those of source row q: never
  // twice where rows are asked for from above to below, and once for all constant rows.
  template <class Make>
  const R* const* rows(int64_t from, int count, Make make) {
    const auto wanted = window_.move(from, count);
    for (int64_t q = wanted.from; q <= wanted.to; ++q) make(q, reinterpret_cast<R*>(window_.slot(q)));
    if (wanted.constant != RowWindow::Wanted::none) make(wanted.constant, reinterpret_cast<R*>(window_.constant()));
    return reinterpret_cast<const R* const*>(window_.rows());
  }

 private:
  // Bytes, with a vector to spare. Rows a power of two apart would share their places in the cache.
  static int64_t stride(int64_t elements) { return (elements * static_cast<int64_t>(sizeof(R)) + 95) / 32 * 32; }

  RowWindow window_;
};

// Runs a filter over one row of an image and so many columns before and after it: run(p, from, to) makes the results of
// columns from..to-1 with p at column from - reach. Straight from the row where the taps lie inside it, from copies of
// its ends with their borders elsewhere. line: room for the row with its borders.
template <int channels, class T, class Run>
void overRow(const BorderedImage& source, int64_t q, int reach, T* line, Run run, int before = 0, int after = 0) {
  const int width = source.size().width, first = -before, end = width + after;
  const auto* const row = reinterpret_cast<const T*>(source.row(q));
  struct Piece {
    int from, to;
    bool copied;
  } pieces[3];
  int count = 0;
  if (row == nullptr || width / 4 < reach) {
    pieces[count++] = {first, end, true};
  } else {
    const Sides sides = source.sides();
    const int from = sides.left ? first : reach, to = sides.right ? end : width - reach;
    if (from > first) pieces[count++] = {first, from, true};
    pieces[count++] = {from, to, false};
    if (to < end) pieces[count++] = {to, end, true};
  }
  for (int i = 0; i < count; ++i) {
    const Piece piece = pieces[i];
    const T* p = line;
    if (piece.copied)
      fetchPixels<channels* int(sizeof(T))>(
          source, q, source.columns(int64_t{piece.from} - reach, int64_t{piece.to} + reach), line);
    else
      p = row + static_cast<ptrdiff_t>(piece.from - reach) * channels;
    run(p, piece.from, piece.to);
  }
}

}  // namespace zeb
