// Tilted summed-area tables (R. Lienhart and J. Maydt, 2002): a row follows from the two rows above it and one row of
// pixels, and no element depends on its neighbour in the same row.
#include "core/checks.h"
#include "core/entry.h"
#include "core/image.h"
#include "core/narrow.h"
#include "core/streaming.h"
#include "core/widen.h"

namespace {

using namespace zeb;

struct Plain {
  static int of(int pixel) { return pixel; }
  static ZEB_INLINE V32s of(V32s pixels) { return pixels; }
};
struct Squared {
  static int of(int pixel) { return pixel * pixel; }
  static ZEB_INLINE V32s of(V32s pixels) { return pixels * pixels; }
};

// The inner sums in the order in which they are written, in the arithmetic of the table's type: modulo 2^32 for 32s,
// double for the others.
Zeb32s sum(Zeb32s left, Zeb32s above, Zeb32s right, int first, int second) {
  return static_cast<Zeb32s>(static_cast<unsigned>(left) - static_cast<unsigned>(above) + static_cast<unsigned>(right) +
                             static_cast<unsigned>(first) + static_cast<unsigned>(second));
}
template <class T>
T sum(T left, T above, T right, int first, int second) {
  return static_cast<T>(static_cast<Zeb64f>(left) - static_cast<Zeb64f>(above) + static_cast<Zeb64f>(right) + first +
                        second);
}

// Column n has one pixel, and takes the element above last.
Zeb32s lastColumn(Zeb32s left, Zeb32s right, Zeb32s above, int pixel) {
  return static_cast<Zeb32s>(static_cast<unsigned>(left) + static_cast<unsigned>(right) - static_cast<unsigned>(above) +
                             static_cast<unsigned>(pixel));
}
template <class T>
T lastColumn(T left, T right, T above, int pixel) {
  return static_cast<T>(static_cast<Zeb64f>(left) + static_cast<Zeb64f>(right) - static_cast<Zeb64f>(above) + pixel);
}

// Four elements in double.
ZEB_INLINE V64f sum(V64f left, V64f above, V64f right, V64f first, V64f second) {
  return left - above + right + first + second;
}

// Columns x = 1 .. n - 1: src points at pixel 0 of the row, the tables at their column 0.
template <class Pixel>
int innerVectors(const Zeb8u* src, const Zeb32s* prev, const Zeb32s* prevprev, Zeb32s* dst, int n) {
  int x = 1;
  for (; x <= n - 8; x += 8) {
    fetchAhead(dst + x);
    const V32s pixels = Pixel::of(loadAs32s(src + x - 1)) + Pixel::of(loadAs32s(src + x));
    store(dst + x, load(prev + x - 1) - load(prevprev + x) + load(prev + x + 1) + pixels);
  }
  return x;
}
template <class Pixel>
int innerVectors(const Zeb8u* src, const Zeb64f* prev, const Zeb64f* prevprev, Zeb64f* dst, int n) {
  int x = 1;
  for (; x <= n - 8; x += 8) {
    fetchAhead(dst + x);
    const V32s first = Pixel::of(loadAs32s(src + x - 1)), second = Pixel::of(loadAs32s(src + x));
    store(dst + x,
          sum(load(prev + x - 1), load(prevprev + x), load(prev + x + 1), lowToDouble(first), lowToDouble(second)));
    store(dst + x + 4, sum(load(prev + x + 3), load(prevprev + x + 4), load(prev + x + 5), highToDouble(first),
                           highToDouble(second)));
  }
  return x;
}
template <class Pixel>
int innerVectors(const Zeb8u* src, const Zeb32f* prev, const Zeb32f* prevprev, Zeb32f* dst, int n) {
  int x = 1;
  for (; x <= n - 8; x += 8) {
    fetchAhead(dst + x);
    const V32s first = Pixel::of(loadAs32s(src + x - 1)), second = Pixel::of(loadAs32s(src + x));
    const V64f low = sum(loadAsDouble(prev + x - 1), loadAsDouble(prevprev + x), loadAsDouble(prev + x + 1),
                         lowToDouble(first), lowToDouble(second));
    const V64f high = sum(loadAsDouble(prev + x + 3), loadAsDouble(prevprev + x + 4), loadAsDouble(prev + x + 5),
                          highToDouble(first), highToDouble(second));
    store(dst + x, narrowToFloat(low, high));
  }
  return x;
}

// What the recurrence does with column n: stores its value, or adds it to what is there.
enum class LastColumn { store, add };

template <class Pixel, LastColumn last, class T>
void tiltedRow(const Zeb8u* src, const T* prev, const T* prevprev, T* dst, int n) {
  dst[0] = prev[1];
  int x = innerVectors<Pixel>(src, prev, prevprev, dst, n);
  for (; x < n; ++x)
    dst[x] = sum(prev[x - 1], prevprev[x], prev[x + 1], Pixel::of(int(src[x - 1])), Pixel::of(int(src[x])));
  const T edge = lastColumn(prev[n - 1], prev[n + 1], prevprev[n], Pixel::of(int(src[n - 1])));
  if constexpr (last == LastColumn::add) {
    dst[n] += edge;
  } else {
    dst[n] = edge;
  }
  dst[n + 1] = prev[n];
}

template <class T>
void fillRows(Rows<T> rows, int count, T value) {
  for (int r = 0; r < 2; ++r)
    for (int i = 0; i < count; ++i) rows[r][i] = value;
}

// A table has two columns and two rows more than its image.
template <LastColumn last, class S>
ZebStatus tiltedTable(Image<const Zeb8u> src, Image<S> table, ZebiSize roi, S val) {
  if (auto bad = checked(roi, src, table.wider(2))) return bad;
  const Rows<S> dst = table;
  fillRows(dst, roi.width + 2, val);
  for (int y = 0; y < roi.height; ++y)
    tiltedRow<Plain, last, S>(src.rows()[y], dst[y + 1], dst[y], dst.row(ptrdiff_t{y} + 2), roi.width);
  return zebStsOk;
}

template <class S, class Q>
ZebStatus tiltedTables(Image<const Zeb8u> src, Image<S> sums, Image<Q> squares, ZebiSize roi, S val, Q valSqr) {
  if (auto bad = checked(roi, src, sums.wider(2), squares.wider(2))) return bad;
  const Rows<S> dst = sums;
  const Rows<Q> sqr = squares;
  fillRows(dst, roi.width + 2, val);
  fillRows(sqr, roi.width + 2, valSqr);
  for (int y = 0; y < roi.height; ++y) {
    const Zeb8u* const row = src.rows()[y];
    tiltedRow<Plain, LastColumn::store, S>(row, dst[y + 1], dst[y], dst.row(ptrdiff_t{y} + 2), roi.width);
    tiltedRow<Squared, LastColumn::store, Q>(row, sqr[y + 1], sqr[y], sqr.row(ptrdiff_t{y} + 2), roi.width);
  }
  return zebStsOk;
}

}  // namespace

#define TILTED(name, S, last)                                                              \
  ZEB_ENTRY(name)                                                                          \
  (const Zeb8u* pSrc, int srcStep, S* pDst, int dstStep, ZebiSize roiSize, S val) {        \
    return tiltedTable<last, S>(image(pSrc, srcStep), image(pDst, dstStep), roiSize, val); \
  }
#define TILTED_SQR(name, S, Q)                                                                                         \
  ZEB_ENTRY(name)                                                                                                      \
  (const Zeb8u* pSrc, int srcStep, S* pDst, int dstStep, Q* pSqr, int sqrStep, ZebiSize roiSize, S val, Q valSqr) {    \
    return tiltedTables<S, Q>(image(pSrc, srcStep), image(pDst, dstStep), image(pSqr, sqrStep), roiSize, val, valSqr); \
  }

TILTED(zebiTiltedIntegral_8u32s_C1R, Zeb32s, LastColumn::store)
TILTED(zebiTiltedIntegral_8u32f_C1R, Zeb32f, LastColumn::add)
TILTED_SQR(zebiTiltedSqrIntegral_8u32s_C1R, Zeb32s, Zeb32s)
TILTED_SQR(zebiTiltedSqrIntegral_8u32s64f_C1R, Zeb32s, Zeb64f)
TILTED_SQR(zebiTiltedSqrIntegral_8u32f64f_C1R, Zeb32f, Zeb64f)
