// Absolute differences of two images, or of an image and a constant.
#include "core/checks.h"
#include "core/entry.h"
#include "core/rows.h"
#include "core/streaming.h"
#include "core/vec.h"

namespace {

using namespace zeb;

// For unsigned elements one of the two saturating differences is the answer and the other is 0.
template <class T>
ZEB_INLINE Vec<T> absDiff(Vec<T> a, Vec<T> b) {
  return subSat(a, b) | subSat(b, a);
}
template <>
ZEB_INLINE V32f absDiff(V32f a, V32f b) {
  return abs(a - b);
}

template <class T>
void absDiffRow(const T* a, const T* b, T* d, int n) {
  constexpr int lanes = Vec<T>::lanes;
  int i = 0;
  for (; i <= n - 2 * lanes; i += 2 * lanes) {
    fetchAhead(a, i, n);
    fetchAhead(b, i, n);
    fetchAhead(d, i, n);
    const Vec<T> first = absDiff(load(a + i), load(b + i));
    const Vec<T> second = absDiff(load(a + i + lanes), load(b + i + lanes));
    store(d + i, first);
    store(d + i + lanes, second);
  }
  if (i <= n - lanes) {
    store(d + i, absDiff(load(a + i), load(b + i)));
    i += lanes;
  }
  if (i < n) storeN(d + i, absDiff(loadN(a + i, n - i), loadN(b + i, n - i)), n - i);
}

template <class T>
void absDiffConstantRow(const T* a, Vec<T> value, T* d, int n) {
  constexpr int lanes = Vec<T>::lanes;
  int i = 0;
  for (; i <= n - lanes; i += lanes) store(d + i, absDiff(load(a + i), value));
  if (i < n) storeN(d + i, absDiff(loadN(a + i, n - i), value), n - i);
}

template <class T, int channels>
ZebStatus absDiffImages(const T* pSrc1, int src1Step, const T* pSrc2, int src2Step, T* pDst, int dstStep,
                        ZebiSize roi) {
  if (auto bad = firstFailure(present(pSrc1, pSrc2, pDst), hasArea(roi), holdsRow<T, channels>(src1Step, roi.width),
                              holdsRow<T, channels>(src2Step, roi.width), holdsRow<T, channels>(dstStep, roi.width),
                              wholeElements<T>(src1Step), wholeElements<T>(src2Step), wholeElements<T>(dstStep)))
    return bad;
  forEachRow(roi, channels, absDiffRow<T>, Rows(pSrc1, src1Step), Rows(pSrc2, src2Step), Rows(pDst, dstStep));
  return zebStsOk;
}

template <class T>
ZebStatus absDiffConstant(const T* pSrc, int srcStep, T* pDst, int dstStep, ZebiSize roi, T value) {
  if (auto bad = firstFailure(present(pSrc, pDst), hasArea(roi), holdsRow<T>(srcStep, roi.width),
                              holdsRow<T>(dstStep, roi.width), wholeElements<T>(srcStep), wholeElements<T>(dstStep)))
    return bad;
  const auto row = [v = splat(value)](const T* s, T* d, int n) { absDiffConstantRow(s, v, d, n); };
  forEachRow(roi, 1, row, Rows(pSrc, srcStep), Rows(pDst, dstStep));
  return zebStsOk;
}

template <class T>
T clampTo(int value, int largest) {
  return static_cast<T>(value < 0 ? 0 : value > largest ? largest : value);
}

}  // namespace

ZEB_ENTRY(zebiAbsDiff_8u_C1R)
(const Zeb8u* pSrc1, int src1Step, const Zeb8u* pSrc2, int src2Step, Zeb8u* pDst, int dstStep, ZebiSize roiSize) {
  return absDiffImages<Zeb8u, 1>(pSrc1, src1Step, pSrc2, src2Step, pDst, dstStep, roiSize);
}
ZEB_ENTRY(zebiAbsDiff_8u_C3R)
(const Zeb8u* pSrc1, int src1Step, const Zeb8u* pSrc2, int src2Step, Zeb8u* pDst, int dstStep, ZebiSize roiSize) {
  return absDiffImages<Zeb8u, 3>(pSrc1, src1Step, pSrc2, src2Step, pDst, dstStep, roiSize);
}
ZEB_ENTRY(zebiAbsDiff_16u_C1R)
(const Zeb16u* pSrc1, int src1Step, const Zeb16u* pSrc2, int src2Step, Zeb16u* pDst, int dstStep, ZebiSize roiSize) {
  return absDiffImages<Zeb16u, 1>(pSrc1, src1Step, pSrc2, src2Step, pDst, dstStep, roiSize);
}
ZEB_ENTRY(zebiAbsDiff_32f_C1R)
(const Zeb32f* pSrc1, int src1Step, const Zeb32f* pSrc2, int src2Step, Zeb32f* pDst, int dstStep, ZebiSize roiSize) {
  return absDiffImages<Zeb32f, 1>(pSrc1, src1Step, pSrc2, src2Step, pDst, dstStep, roiSize);
}

ZEB_ENTRY(zebiAbsDiffC_8u_C1R)
(const Zeb8u* pSrc, int srcStep, Zeb8u* pDst, int dstStep, ZebiSize roiSize, int value) {
  return absDiffConstant(pSrc, srcStep, pDst, dstStep, roiSize, clampTo<Zeb8u>(value, 255));
}
ZEB_ENTRY(zebiAbsDiffC_16u_C1R)
(const Zeb16u* pSrc, int srcStep, Zeb16u* pDst, int dstStep, ZebiSize roiSize, int value) {
  return absDiffConstant(pSrc, srcStep, pDst, dstStep, roiSize, clampTo<Zeb16u>(value, 65535));
}
ZEB_ENTRY(zebiAbsDiffC_32f_C1R)
(const Zeb32f* pSrc, int srcStep, Zeb32f* pDst, int dstStep, ZebiSize roiSize, Zeb32f value) {
  return absDiffConstant(pSrc, srcStep, pDst, dstStep, roiSize, value);
}
