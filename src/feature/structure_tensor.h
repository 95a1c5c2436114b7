// The structure tensor of an image: sums, over a window, of products of its derivatives, row by row.
#pragma once

#include "filter/derivative.h"

namespace zeb {

// Which derivatives, and how many pixels square the window is.
struct TensorForm {
  Operator op;
  int window;

  int before() const { return (window - 1) >> 1; }
  int after() const { return window - 1 - before(); }
  Margins margins() const { return {before(), after()}; }
  int64_t extended(int width) const { return int64_t{width} + window - 1; }
  // The reciprocal of the sum of squares that a ramp of 1 a pixel has.
  Zeb32f scale() const;
};

// The tensors of some pixels of a row, in whole vectors.
struct TensorBlock {
  static constexpr int most = 256;
  alignas(32) Zeb32f a[most], b[most], c[most];
};

template <class T>
class TensorRows;

// Bytes: exact sums down the columns that follow the window from row to row, and along the row from pixel to pixel.
template <>
class TensorRows<Zeb8u> {
 public:
  static int64_t scratchBytes(TensorForm form, int width);

  TensorRows(TensorForm form, const BorderedImage& source, Scratch& scratch);

  // Goes on to the next row, which is row 0 at first.
  void next();
  // The tensors of its next n <= TensorBlock::most pixels; all but the last blocks of a row are full.
  void take(int n, TensorBlock& block);

  // How sums are kept that 32 bits hold, and those that only 64 bits hold.
  enum class Width { few, narrow, wide };

 private:
  static Width widthOf(TensorForm form);
  void enter(int64_t q);

  TensorForm form_;
  Width width_;
  Zeb32f scale_;
  int columns_;
  DerivativeRows<Zeb8u> derivatives_;
  RowRing<Zeb16s> dx_, dy_;
  Zeb16s* none_;
  void* sums_[3];  // of columns; room and a 0 before the first
  int64_t entered_;
  int x_ = 0;
  alignas(32) uint64_t carry_[3][4];  // the sum before the next pixel, in all lanes
};

// Floats: the sums down the columns in order, then along the row in order.
template <>
class TensorRows<Zeb32f> {
 public:
  static int64_t scratchBytes(TensorForm form, int width);

  TensorRows(TensorForm form, const BorderedImage& source, Scratch& scratch);

  void next();
  void take(int n, TensorBlock& block);

 private:
  TensorForm form_;
  Zeb32f scale_;
  int columns_;
  DerivativeRows<Zeb32f> derivatives_;
  RowRing<Zeb32f> dx_, dy_;
  Zeb32f* sums_[3];
  int64_t entered_, y_ = -1;
  int x_ = 0;
};

}  // namespace zeb
