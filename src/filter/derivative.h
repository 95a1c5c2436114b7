// First derivatives of an image, row by row, with borders.
//
//   Operator::sobel3   smoothing 1 2 1      difference -1 0 1
//   Operator::sobel5   smoothing 1 4 6 4 1  difference -1 -2 0 2 1
//   Operator::scharr   smoothing 3 10 3     difference -1 0 1       (H. Scharr, 2000)
//   Operator::prewitt  smoothing 1 1 1      difference -1 0 1       (J. Prewitt, 1970)
//
// dx differentiates along the row and smooths along the column, dy the other way round; dx grows to the right, dy
// downwards. Nothing is scaled. They are those of zebiFilterSobel*Border and zebiFilterScharr*Border to the bit. Rows
// and margins beside the image are those of the image extended by its border, as if it were larger; widths of scratch
// are with the margins.
#pragma once

#include "filter/fixed.h"

namespace zeb {

// Which derivatives will be asked for.
struct Axes {
  bool x = true, y = true;
};

template <class T>
class DerivativeRows;

// Bytes of any number of channels up to 4, channel by channel. Rows are asked for in any order.
template <>
class DerivativeRows<Zeb8u> {
 public:
  static int64_t scratchBytes(Operator op, int width, int channels = 1) {
    return ByteLines::scratchBytes(width, channels, reachOf(op));
  }

  // The pixels of source have so many bytes as there are channels. What is along one axis may never be asked for.
  DerivativeRows(Operator op, const BorderedImage& source, Scratch& scratch, Margins margins = {}, Axes axes = {})
      : elements_(static_cast<int>(margins.around(source)) * source.pixelBytes()),
        channels_(source.pixelBytes()),
        lineOfY_(axes.x ? 1 : 0),
        lines_(source, channels_, reachOf(op),
               axes.x && axes.y ? byteColumnsOfBoth(op) : byteColumns(op, axes.x ? Order::smooth : Order::first),
               scratch, margins),
        difference_(wordRow(op, Order::first)),
        smoothing_(wordRow(op, Order::smooth)) {}

  // The derivatives of row y; one of them may be null. Rows beside the image are those of its border.
  void form(int64_t y, Zeb16s* dx, Zeb16s* dy) {
    lines_.form(y);
    if (dx) difference_(lines_.line(0), channels_, elements_, dx);
    if (dy) smoothing_(lines_.line(lineOfY_), channels_, elements_, dy);
  }

 private:
  int elements_, channels_, lineOfY_;
  ByteLines lines_;
  WordRow difference_, smoothing_;
};

// Floats of one channel. Rows are asked for in any order, one after the other best.
template <>
class DerivativeRows<Zeb32f> {
 public:
  static int64_t scratchBytes(Operator op, int width) { return 2 * FloatLines::scratchBytes(width, reachOf(op)); }

  DerivativeRows(Operator op, const BorderedImage& source, Scratch& scratch, Margins margins = {}, Axes = {})
      : width_(static_cast<int>(margins.around(source))),
        differences_(source, reachOf(op), floatRow(op, Order::first), scratch, margins),
        smooth_(source, reachOf(op), floatRow(op, Order::smooth), scratch, margins),
        smoothing_(floatColumns(op, Order::smooth)),
        difference_(floatColumns(op, Order::first)) {}

  void form(int64_t y, Zeb32f* dx, Zeb32f* dy) {
    if (dx) smoothing_(differences_.around(y), width_, dx);
    if (dy) difference_(smooth_.around(y), width_, dy);
  }

 private:
  int width_;
  FloatLines differences_, smooth_;
  FloatColumns smoothing_, difference_;
};

}  // namespace zeb
