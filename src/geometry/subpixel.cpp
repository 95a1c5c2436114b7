// Rectangles of an image at positions between its pixels.
#include <math.h>
#include <string.h>

#include "core/checks.h"
#include "core/entry.h"
#include "core/image.h"
#include "core/sample.h"
#include "geometry/pixels.h"

namespace {

using namespace zeb;

// Only bytes to words take a scale; others are stored as they are.
template <class T, class D>
constexpr bool isScaled = std::is_same_v<T, Zeb8u>&& std::is_same_v<D, Zeb16u>;

// 2^-factor, factor limited to -31..31.
Zeb32f scaleOf(int factor) {
  const int limited = factor < -31 ? -31 : factor > 31 ? 31 : factor;
  const Zeb32s exponent = (127 - limited) << 23;
  Zeb32f scale;
  memcpy(&scale, &exponent, sizeof(scale));
  return scale;
}

// In strips whose results along a row are kept until the row below has its own: every pixel is widened once. Column
// `width` is read where x is not 0, the row below the last where y is not 0.
template <class T, class D>
void copyAt(Rows<const T> src, Rows<D> dst, ZebiSize size, Zeb32f x, Zeb32f y, [[maybe_unused]] Zeb32f scale) {
  constexpr int strip = 1024;
  alignas(32) Zeb32f kept[strip];
  const int right = x > 0 ? 1 : 0;
  const V32f fx = splat(x), fy = splat(y);
  const auto along = [=](const T* p, auto part)
                         ZEB_BODY { return between<T>(part.floats(p), part.floats(p + right), fx); };
  const auto put = [=](D* p, V32f v, auto part) ZEB_BODY {
    if constexpr (isScaled<T, D>) v = min(v * splat(scale), splat(65535.0f));
    storeRounded(p, v, part);
  };
  for (int from = 0, n; from < size.width; from += n) {
    n = size.width - from < strip ? size.width - from : strip;
    if (!(y > 0)) {
      for (int row = 0; row < size.height; ++row) {
        const T* const p = src[row] + from;
        D* const out = dst[row] + from;
        forVectors<8>(0, n, [=](int i, auto part) ZEB_BODY { put(out + i, along(p + i, part), part); });
      }
      continue;
    }
    const T* const first = src[0] + from;
    forVectors<8>(0, n, [&](int i, auto part) ZEB_BODY { store(kept + i, along(first + i, part)); });
    for (int row = 0; row < size.height; ++row) {
      const T* const p = src[row + 1] + from;
      D* const out = dst[row] + from;
      forVectors<8>(0, n, [&](int i, auto part) ZEB_BODY {
        const V32f above = load(kept + i), below = along(p + i, part);
        store(kept + i, below);
        put(out + i, between<T>(above, below, fy), part);
      });
    }
  }
}

template <class T, class D>
ZebStatus copied(Image<const T> src, Image<D> dst, ZebiSize roi, ZebiPoint_32f offset, Zeb32f scale = 1) {
  const auto isFraction = [](Zeb32f f) { return f >= 0 && f < 1; };
  if (auto bad = firstFailure(checked(roi, src.wider(offset.x > 0 ? 1 : 0), dst),
                              require(isFraction(offset.x) && isFraction(offset.y), zebStsErrOutOfRange)))
    return bad;
  copyAt(src.rows(), dst.rows(), roi, offset.x, offset.y, scale);
  return zebStsOk;
}

// One dimension of a window of n pixels around a centre in an image of `length` pixels.
struct Stretch {
  Stretch(Zeb32f centre, int n, int length) {
    const double corner = static_cast<double>(centre) - 0.5 * (n - 1.0);
    double whole = floor(corner);
    fraction = static_cast<Zeb32f>(corner - whole);
    if (fraction == 1) fraction = 0, whole += 1;
    const double from = whole < 0 ? -whole : 0, last = length - 1 - whole - (fraction != 0 ? 1 : 0);
    const double to = last < n - 1 ? last : n - 1;
    // A corner that is no number has no part, whatever the comparisons above made of it.
    if (!(from <= to) || !(fraction >= 0)) return;
    first = static_cast<int>(from);
    count = static_cast<int>(to - from) + 1;
    source = static_cast<int>(whole + from);
  }

  Zeb32f fraction;
  int first = 0, count = 0;  // the pixels of the window that lie in the image
  int source = 0;            // where the first of them begins
};

template <class T, class D>
ZebStatus intersected(Image<const T> src, ZebiSize srcRoi, Image<D> dst, ZebiSize dstRoi, ZebiPoint_32f centre,
                      ZebiRect* pPart, Zeb32f scale = 1) {
  if (auto bad = firstFailure(require(src.isPresent() && dst.isPresent() && pPart != nullptr, zebStsErrNullPointer),
                              hasArea(srcRoi), hasArea(dstRoi),
                              require(src.holdsRow(srcRoi.width) && dst.holdsRow(dstRoi.width), zebStsErrStep),
                              require(src.holdsWholeElements() && dst.holdsWholeElements(), zebStsErrNotEvenStep)))
    return bad;
  const Stretch x(centre.x, dstRoi.width, srcRoi.width), y(centre.y, dstRoi.height, srcRoi.height);
  if (x.count == 0 || y.count == 0) {
    *pPart = {0, 0, 0, 0};
    return zebStsOk;
  }
  copyAt(src.rows().from(x.source, y.source), dst.rows().from(x.first, y.first), {x.count, y.count}, x.fraction,
         y.fraction, scale);
  *pPart = {x.first, y.first, x.count, y.count};
  return zebStsOk;
}

}  // namespace

#define SUBPIXEL(form, T, D)                                                                                         \
  ZEB_ENTRY(zebiCopySubpix_##form##_C1R)                                                                             \
  (const T* pSrc, int srcStep, D* pDst, int dstStep, ZebiSize roiSize, ZebiPoint_32f offset) {                       \
    return copied(image(pSrc, srcStep), image(pDst, dstStep), roiSize, offset);                                      \
  }                                                                                                                  \
  ZEB_ENTRY(zebiCopySubpixIntersect_##form##_C1R)                                                                    \
  (const T* pSrc, int srcStep, ZebiSize srcRoiSize, D* pDst, int dstStep, ZebiSize dstRoiSize, ZebiPoint_32f centre, \
   ZebiRect* pPart) {                                                                                                \
    return intersected(image(pSrc, srcStep), srcRoiSize, image(pDst, dstStep), dstRoiSize, centre, pPart);           \
  }

SUBPIXEL(8u, Zeb8u, Zeb8u)
SUBPIXEL(8u32f, Zeb8u, Zeb32f)
SUBPIXEL(16u, Zeb16u, Zeb16u)
SUBPIXEL(16u32f, Zeb16u, Zeb32f)
SUBPIXEL(32f, Zeb32f, Zeb32f)

ZEB_ENTRY(zebiCopySubpix_8u16u_C1RSfs)
(const Zeb8u* pSrc, int srcStep, Zeb16u* pDst, int dstStep, ZebiSize roiSize, ZebiPoint_32f offset, int scaleFactor) {
  return copied(image(pSrc, srcStep), image(pDst, dstStep), roiSize, offset, scaleOf(scaleFactor));
}
ZEB_ENTRY(zebiCopySubpixIntersect_8u16u_C1RSfs)
(const Zeb8u* pSrc, int srcStep, ZebiSize srcRoiSize, Zeb16u* pDst, int dstStep, ZebiSize dstRoiSize,
 ZebiPoint_32f centre, ZebiRect* pPart, int scaleFactor) {
  return intersected(image(pSrc, srcStep), srcRoiSize, image(pDst, dstStep), dstRoiSize, centre, pPart,
                     scaleOf(scaleFactor));
}
