// Standard deviation of every window of a rectangle, from a table of sums and a table of sums of squares.
#include <math.h>

#include "core/checks.h"
#include "core/entry.h"
#include "core/image.h"
#include "core/narrow.h"
#include "core/streaming.h"
#include "core/widen.h"

namespace {

using namespace zeb;

// The four corners of the first window in a table: the sum over the window i columns to the right is
// (a[i] - b[i]) + (d[i] - c[i]).
template <class T>
struct Corners {
  const T *a, *b, *c, *d;
};

Zeb32s windowSum(const Corners<Zeb32s>& k, int i) {
  return static_cast<Zeb32s>(static_cast<unsigned>(k.a[i]) - static_cast<unsigned>(k.b[i]) +
                             static_cast<unsigned>(k.d[i]) - static_cast<unsigned>(k.c[i]));
}
template <class T>
T windowSum(const Corners<T>& k, int i) {
  return (k.a[i] - k.b[i]) + (k.d[i] - k.c[i]);
}
template <class T>
ZEB_INLINE Vec<T> windowSums(const Corners<T>& k, int i) {
  return (load(k.a + i) - load(k.b + i)) + (load(k.d + i) - load(k.c + i));
}

// Upright: variance = squares x inv - mean x mean, each step rounded. Tilted: division by the area and one fused step.
struct Upright {
  double inv;
  double variance(double sum, double squares) const {
    const double mean = sum * inv;
    return squares * inv - mean * mean;
  }
  ZEB_INLINE V64f variance(V64f sum, V64f squares) const {
    const V64f mean = sum * splat(inv);
    return squares * splat(inv) - mean * mean;
  }
};
struct Tilted {
  double area;
  double variance(double sum, double squares) const {
    const double mean = sum / area;
    return fma(-mean, mean, squares / area);
  }
  ZEB_INLINE V64f variance(V64f sum, V64f squares) const {
    const V64f mean = sum / splat(area);
    return fnma(mean, mean, squares / splat(area));
  }
};

ZEB_INLINE V64f low(V32s a) {
  return lowToDouble(a);
}
ZEB_INLINE V64f high(V32s a) {
  return highToDouble(a);
}
ZEB_INLINE V64f low(V32f a) {
  return widenLow(a);
}
ZEB_INLINE V64f high(V32f a) {
  return widenHigh(a);
}

template <class Shape, class S>
void deviationRow(const Shape shape, const Corners<S> sums, const Corners<Zeb64f> squares, Zeb32f* dst, int n) {
  int i = 0;
  const V32f zero = splat(0.0f);
  for (; i <= n - 8; i += 8) {
    fetchAhead(sums.d + i);
    fetchAhead(squares.d + i);
    fetchAhead(squares.a + i);
    fetchAhead(dst + i);
    const Vec<S> sum = windowSums(sums, i);
    const V64f first = shape.variance(low(sum), windowSums(squares, i));
    const V64f second = shape.variance(high(sum), windowSums(squares, i + 4));
    const V32f v = narrowToFloat(first, second);
    // A positive variance below the smallest float rounds to 0, whose root is 0 either way.
    store(dst + i, sqrt(select(greater(v, zero), v, zero)));
  }
  for (; i < n; ++i) {
    const double v = shape.variance(static_cast<double>(windowSum(sums, i)), windowSum(squares, i));
    dst[i] = v > 0 ? sqrtf(static_cast<Zeb32f>(v)) : 0.0f;
  }
}

// 2^-scaleFactor, brought to exponents at which nothing changes any more.
double scaling(int scaleFactor) {
  const int bounded = scaleFactor > 1000 ? 1000 : scaleFactor < -1000 ? -1000 : scaleFactor;
  return ldexp(1.0, -bounded);
}

Zeb32s saturate(double v) {
  if (v >= 2147483647.0) return 0x7FFFFFFF;
  return static_cast<Zeb32s>(__builtin_nearbyint(v));
}

template <class Shape>
void scaledDeviationRow(const Shape shape, double scale, const Corners<Zeb32s> sums, const Corners<Zeb32s> squares,
                        Zeb32s* dst, int n) {
  for (int i = 0; i < n; ++i) {
    const double v =
        shape.variance(static_cast<double>(windowSum(sums, i)), static_cast<double>(windowSum(squares, i)));
    dst[i] = v > 0 ? saturate(__builtin_sqrt(v) * scale) : 0;
  }
}

// ---- Where the corners of the windows of row j stand ----

template <class T>
Corners<T> corners(Upright, Rows<const T> table, int j, ZebiRect r) {
  const T* top = table[j + r.y] + r.x;
  const T* bottom = table[j + r.y + r.height] + r.x;
  return {top, top + r.width, bottom, bottom + r.width};
}

// P0, P1, P3, P2 in the roles of a, b, c, d: (P0 - P1) + (P2 - P3).
template <class T>
Corners<T> corners(Tilted, Rows<const T> table, int j, ZebiRect r) {
  const int row = j + r.x + r.y, column = r.x - r.y;
  return {table[row] + column, table[row + r.width] + column + r.width, table[row + r.height] + column - r.height,
          table[row + r.width + r.height] + column + r.width - r.height};
}

Upright shapeOf(Upright, ZebiRect r) {
  return {1.0 / (static_cast<double>(r.width) * r.height)};
}
Tilted shapeOf(Tilted, ZebiRect r) {
  return {2.0 * r.width * r.height};
}

int64_t rowElements(Upright, int width, ZebiRect r) {
  return static_cast<int64_t>(width) + r.x + r.width;
}
int64_t rowElements(Tilted, int width, ZebiRect r) {
  return static_cast<int64_t>(width) + r.width + r.x + r.y + r.height - 1;
}

ZebStatus isWindow(ZebiRect rect) {
  return require(rect.x >= 0 && rect.y >= 0 && rect.width >= 1 && rect.height >= 1, zebStsErrSize);
}

template <class Shape, class S>
ZebStatus deviation(Shape kind, const S* pSrc, int srcStep, const Zeb64f* pSqr, int sqrStep, Zeb32f* pDst, int dstStep,
                    ZebiSize roi, ZebiRect rect) {
  const int64_t more = rowElements(kind, roi.width, rect) - roi.width;
  const auto sums = image(pSrc, srcStep).wider(more);
  const auto squares = image(pSqr, sqrStep).wider(more);
  if (auto bad = firstFailure(checked(roi, sums, image(pDst, dstStep), squares), isWindow(rect))) return bad;
  const Shape shape = shapeOf(kind, rect);
  const Rows src(pSrc, srcStep);
  const Rows sqr(pSqr, sqrStep);
  const Rows dst(pDst, dstStep);
  for (int j = 0; j < roi.height; ++j)
    deviationRow(shape, corners(kind, src, j, rect), corners(kind, sqr, j, rect), dst[j], roi.width);
  return zebStsOk;
}

template <class Shape>
ZebStatus scaledDeviation(Shape kind, const Zeb32s* pSrc, int srcStep, const Zeb32s* pSqr, int sqrStep, Zeb32s* pDst,
                          int dstStep, ZebiSize roi, ZebiRect rect, int scaleFactor) {
  const int64_t more = rowElements(kind, roi.width, rect) - roi.width;
  const auto sums = image(pSrc, srcStep).wider(more);
  const auto squares = image(pSqr, sqrStep).wider(more);
  if (auto bad = firstFailure(checked(roi, sums, image(pDst, dstStep), squares), isWindow(rect))) return bad;
  const Shape shape = shapeOf(kind, rect);
  const double scale = scaling(scaleFactor);
  const Rows src(pSrc, srcStep);
  const Rows sqr(pSqr, sqrStep);
  const Rows dst(pDst, dstStep);
  for (int j = 0; j < roi.height; ++j)
    scaledDeviationRow(shape, scale, corners(kind, src, j, rect), corners(kind, sqr, j, rect), dst[j], roi.width);
  return zebStsOk;
}

}  // namespace

#define RECT_STD_DEV(name, S, Shape)                                                                         \
  ZEB_ENTRY(name)                                                                                            \
  (const S* pSrc, int srcStep, const Zeb64f* pSqr, int sqrStep, Zeb32f* pDst, int dstStep, ZebiSize roiSize, \
   ZebiRect rect) {                                                                                          \
    return deviation(Shape{}, pSrc, srcStep, pSqr, sqrStep, pDst, dstStep, roiSize, rect);                   \
  }
#define RECT_STD_DEV_SCALED(name, Shape)                                                                          \
  ZEB_ENTRY(name)                                                                                                 \
  (const Zeb32s* pSrc, int srcStep, const Zeb32s* pSqr, int sqrStep, Zeb32s* pDst, int dstStep, ZebiSize roiSize, \
   ZebiRect rect, int scaleFactor) {                                                                              \
    return scaledDeviation(Shape{}, pSrc, srcStep, pSqr, sqrStep, pDst, dstStep, roiSize, rect, scaleFactor);     \
  }

RECT_STD_DEV(zebiRectStdDev_32f_C1R, Zeb32f, Upright)
RECT_STD_DEV(zebiRectStdDev_32s32f_C1R, Zeb32s, Upright)
RECT_STD_DEV(zebiTiltedRectStdDev_32f_C1R, Zeb32f, Tilted)
RECT_STD_DEV(zebiTiltedRectStdDev_32s32f_C1R, Zeb32s, Tilted)
RECT_STD_DEV_SCALED(zebiRectStdDev_32s_C1RSfs, Upright)
RECT_STD_DEV_SCALED(zebiTiltedRectStdDev_32s_C1RSfs, Tilted)
