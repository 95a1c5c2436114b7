// The Canny detector on images of derivatives.
#include "core/entry.h"
#include "feature/canny.h"

namespace {

using namespace zeb;

// Sizes with a side from here on are told more room, which the work does not need.
constexpr int longSide = 65533;

int64_t bufferSize(ZebiSize roi) {
  const int64_t w = roi.width, h = roi.height;
  const bool small = w < longSide && h < longSide;
  return boundedProduct(small ? 5 * h + 10 : 9 * h + 18, w + 2) + 16 * w + 160;
}

struct Derivatives16s : SumOfAbsolutes<VerticalByProduct> {
  using Element = Zeb16s;
};

struct Derivatives32f {
  using Element = Zeb32f;
  using Magnitude = Zeb32f;

  static Magnitude threshold(Zeb32f t) { return t; }
  static void magnitudes(const Zeb32f* dx, const Zeb32f* dy, Zeb32f* out, int n, Zeb32f low) {
    const V32f bound = splat(low);
    forVectors<8>(0, n, [&](int x, auto part) ZEB_BODY {
      const V32f m = abs(part.from(dx + x)) + abs(part.from(dy + x));
      part.to(out + x, andNot(less(m, bound), m));
    });
  }
  template <class Part>
  static ZEB_INLINE Sectors32 sectors(const Zeb32f* dx, const Zeb32f* dy, const Part part) {
    return sectorsOf<VerticalByProduct>(part.from(dx), part.from(dy));
  }
};

template <class Form>
ZebStatus canny(const typename Form::Element* pSrcDx, int srcDxStep, const typename Form::Element* pSrcDy,
                int srcDyStep, Zeb8u* pDst, int dstStep, ZebiSize roi, Zeb32f lowThresh, Zeb32f highThresh,
                Zeb8u* pBuffer) {
  using T = typename Form::Element;
  const auto dx = image(pSrcDx, srcDxStep), dy = image(pSrcDy, srcDyStep);
  const auto dst = image(pDst, dstStep);
  if (auto bad = firstFailure(checked(roi, dx, dy, dst, also(pBuffer)), orderedThresholds(lowThresh, highThresh),
                              require(bufferSize(roi) <= INT32_MAX, zebStsErrOverflow)))
    return bad;
  using M = typename Form::Magnitude;
  Scratch scratch(pBuffer, bufferSize(roi));
  const CannyMap map = takeCannyMap(scratch, roi);
  const MagnitudeRing<M> ring(scratch, roi.width);
  const auto rowsDx = dx.rows(), rowsDy = dy.rows();
  const M low = Form::threshold(lowThresh), high = Form::threshold(highThresh);
  for (int y = 0; y <= roi.height; ++y) {
    if (y < roi.height)
      Form::magnitudes(rowsDx[y], rowsDy[y], ring.row(y), roi.width, low);
    else
      memset(ring.row(y), 0, static_cast<size_t>(roi.width) * sizeof(M));
    if (y == 0) continue;
    const T *rowDx = rowsDx[y - 1], *rowDy = rowsDy[y - 1];
    suppressRow(ring, y - 1, roi.width, high, map.row(y - 1),
                [=](int x, auto part) ZEB_BODY { return Form::sectors(rowDx + x, rowDy + x, part); });
  }
  hysteresis(map, roi, scratch, dst.rows());
  return zebStsOk;
}

}  // namespace

ZEB_ENTRY(zebiCannyGetSize)(ZebiSize roiSize, int* pBufferSize) {
  if (auto bad = firstFailure(present(pBufferSize), hasArea(roiSize))) return bad;
  return reportSize(bufferSize(roiSize), pBufferSize);
}

ZEB_ENTRY(zebiCanny_16s8u_C1R)
(const Zeb16s* pSrcDx, int srcDxStep, const Zeb16s* pSrcDy, int srcDyStep, Zeb8u* pDst, int dstStep, ZebiSize roiSize,
 Zeb32f lowThresh, Zeb32f highThresh, Zeb8u* pBuffer) {
  return canny<Derivatives16s>(pSrcDx, srcDxStep, pSrcDy, srcDyStep, pDst, dstStep, roiSize, lowThresh, highThresh,
                               pBuffer);
}
ZEB_ENTRY(zebiCanny_32f8u_C1R)
(const Zeb32f* pSrcDx, int srcDxStep, const Zeb32f* pSrcDy, int srcDyStep, Zeb8u* pDst, int dstStep, ZebiSize roiSize,
 Zeb32f lowThresh, Zeb32f highThresh, Zeb8u* pBuffer) {
  return canny<Derivatives32f>(pSrcDx, srcDxStep, pSrcDy, srcDyStep, pDst, dstStep, roiSize, lowThresh, highThresh,
                               pBuffer);
}
