// Fixed kernels of 3 x 3 and 5 x 5 on one row of an image, with borders.
//
// Integers are combined down the columns first, so that rows beside the image are only pointers; floats along the rows
// first, which is part of their contract.
#pragma once

#include "filter/border.h"
#include "filter/row_results.h"

namespace zeb {

// Columns beside the image for which results are formed as well.
struct Margins {
  int before = 0, after = 0;

  int64_t around(const BorderedImage& source) const { return int64_t{source.size().width} + before + after; }
};

// ---- Bytes ----

// Sums down n columns of rows, to one line or two.
struct ByteColumns {
  void (*sum)(const Zeb8u* const* rows, int n, Zeb16s* line, Zeb16s* second);
  int lines;
};

// The column sums around one row at a time, extended beside the image.
class ByteLines {
 public:
  // width: with the margins.
  static int64_t scratchBytes(int width, int channels, int reach) {
    const int64_t n = (int64_t{width} + 2 * reach) * channels;
    return 2 * n * static_cast<int64_t>(sizeof(Zeb16s)) + n + 64;
  }

  ByteLines(const BorderedImage& source, int channels, int reach, ByteColumns kernel, Scratch& scratch,
            Margins margins = {});

  // The sums of row y, which is in the image or beside it.
  void form(int64_t y);
  // Line 0 or 1, reach columns before the first result; a filter may work in it.
  Zeb16s* line(int k) const { return lines_[k]; }

 private:
  BorderedImage source_;
  BorderedImage::Columns columns_;
  int channels_, reach_;
  ByteColumns kernel_;
  Zeb16s* lines_[2];
  Zeb8u* constantRow_;
  Zeb16s constants_[2][4];
};

// Sums along a row of column sums, whose elements are `channels` apart, to n elements.
using WordRow = void (*)(const Zeb16s* line, int channels, int n, Zeb16s* out);

// ---- Floats ----

// Sums along a row to n elements: p is at column -reach of the first.
using FloatRow = void (*)(const Zeb32f* p, int n, Zeb32f* out);
// Sums down n columns of rows.
using FloatColumns = void (*)(const Zeb32f* const* rows, int n, Zeb32f* out);

// The row sums around one row at a time.
class FloatLines {
 public:
  // width: with the margins.
  static int64_t scratchBytes(int width, int reach) {
    return RowResults<Zeb32f>::scratchBytes(2 * reach + 1, width) +
           (int64_t{width} + 2 * reach) * static_cast<int64_t>(sizeof(Zeb32f));
  }

  FloatLines(const BorderedImage& source, int reach, FloatRow kernel, Scratch& scratch, Margins margins = {});

  // Of rows y - reach .. y + reach.
  const Zeb32f* const* around(int64_t y);

 private:
  void make(int64_t q, Zeb32f* out) const;

  BorderedImage source_;
  Margins margins_;
  int reach_;
  FloatRow kernel_;
  RowResults<Zeb32f> results_;
  Zeb32f* line_;
};

// ---- Derivatives ----

enum class Operator { sobel3, sobel5, scharr, prewitt };
constexpr int reachOf(Operator op) {
  return op == Operator::sobel5 ? 2 : 1;
}
// Of a mask that is one.
constexpr Operator sobelOf(int mask) {
  return mask == zebMskSize3x3 ? Operator::sobel3 : Operator::sobel5;
}
constexpr Operator operatorOf(int filterType, int mask) {
  return filterType == zebFilterScharr ? Operator::scharr : sobelOf(mask);
}
enum class Order { smooth, first, second };

// Second orders are those of the Sobel operators.
ByteColumns byteColumns(Operator op, Order order);
// Line: smooth, second: first order.
ByteColumns byteColumnsOfBoth(Operator op);
WordRow wordRow(Operator op, Order order);
FloatRow floatRow(Operator op, Order order);
FloatColumns floatColumns(Operator op, Order order);

// ---- The Laplacian ----

// 3 x 3: 2 0 2 / 0 -8 0 / 2 0 2; 5 x 5: the sum of both second derivatives, which is that kernel smoothed by 1 2 1 in
// both directions.
ByteColumns laplacianColumns(int reach);
// centre: the row of bytes itself. Both lines may be worked in.
void laplacianRow3(const ByteLines& lines, const Zeb8u* centre, int n, Zeb16s* out);
void laplacianRow5(const ByteLines& lines, int n, Zeb16s* out);

// Along a row: the pixels left and right. Down the columns: the results above, the pixels themselves, the results
// below.
extern const FloatRow laplacianFloatRow3;
extern const FloatColumns laplacianFloatColumns3;
// Down the columns: five rows of second derivatives, then five smooth ones.
extern const FloatColumns laplacianFloatColumns5;

// ---- Means ----

// Sums along rows of bytes, for blocks of 32 pixels those of the even ones, then those of the odd ones. Whole blocks
// are read and written.
void meanRow(int reach, const Zeb8u* p, int n, Zeb16s* sums);
// Means down the columns of one row of results or of two, the second of which may be null.
void meanColumns(int reach, const Zeb16s* const* rows, int n, Zeb8u* out, Zeb8u* below);

FloatRow meanFloatRow(int reach);
FloatColumns meanFloatColumns(int reach);

}  // namespace zeb
