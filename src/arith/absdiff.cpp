// Absolute differences of two images, or of an image and a constant.
#include "core/checks.h"
#include "core/entry.h"
#include "core/loops.h"

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
  mapRow([](Vec<T> x, Vec<T> y) ZEB_BODY { return absDiff(x, y); }, d, n, a, b);
}

template <class T, int channels>
ZebStatus absDiffImages(Image<const T, channels> a, Image<const T, channels> b, Image<T, channels> d, ZebiSize roi) {
  if (auto bad = checked(roi, a, b, d)) return bad;
  forEachRow(roi, absDiffRow<T>, a, b, d);
  return zebStsOk;
}

template <class T>
ZebStatus absDiffConstant(Image<const T> src, Image<T> dst, ZebiSize roi, T value) {
  if (auto bad = checked(roi, src, dst)) return bad;
  const auto op = [v = splat(value)](Vec<T> x) ZEB_BODY { return absDiff(x, v); };
  forEachRow(
      roi, [op](const T* s, T* d, int n) { mapRow(op, d, n, s); }, src, dst);
  return zebStsOk;
}

template <class T>
T clampTo(int value, int largest) {
  return static_cast<T>(value < 0 ? 0 : value > largest ? largest : value);
}

}  // namespace

ZEB_ENTRY(zebiAbsDiff_8u_C1R)
(const Zeb8u* pSrc1, int src1Step, const Zeb8u* pSrc2, int src2Step, Zeb8u* pDst, int dstStep, ZebiSize roiSize) {
  return absDiffImages<Zeb8u, 1>(image(pSrc1, src1Step), image(pSrc2, src2Step), image(pDst, dstStep), roiSize);
}
ZEB_ENTRY(zebiAbsDiff_8u_C3R)
(const Zeb8u* pSrc1, int src1Step, const Zeb8u* pSrc2, int src2Step, Zeb8u* pDst, int dstStep, ZebiSize roiSize) {
  return absDiffImages<Zeb8u, 3>(image<3>(pSrc1, src1Step), image<3>(pSrc2, src2Step), image<3>(pDst, dstStep),
                                 roiSize);
}
ZEB_ENTRY(zebiAbsDiff_16u_C1R)
(const Zeb16u* pSrc1, int src1Step, const Zeb16u* pSrc2, int src2Step, Zeb16u* pDst, int dstStep, ZebiSize roiSize) {
  return absDiffImages<Zeb16u, 1>(image(pSrc1, src1Step), image(pSrc2, src2Step), image(pDst, dstStep), roiSize);
}
ZEB_ENTRY(zebiAbsDiff_32f_C1R)
(const Zeb32f* pSrc1, int src1Step, const Zeb32f* pSrc2, int src2Step, Zeb32f* pDst, int dstStep, ZebiSize roiSize) {
  return absDiffImages<Zeb32f, 1>(image(pSrc1, src1Step), image(pSrc2, src2Step), image(pDst, dstStep), roiSize);
}

ZEB_ENTRY(zebiAbsDiffC_8u_C1R)
(const Zeb8u* pSrc, int srcStep, Zeb8u* pDst, int dstStep, ZebiSize roiSize, int value) {
  return absDiffConstant<Zeb8u>(image(pSrc, srcStep), image(pDst, dstStep), roiSize, clampTo<Zeb8u>(value, 255));
}
ZEB_ENTRY(zebiAbsDiffC_16u_C1R)
(const Zeb16u* pSrc, int srcStep, Zeb16u* pDst, int dstStep, ZebiSize roiSize, int value) {
  return absDiffConstant<Zeb16u>(image(pSrc, srcStep), image(pDst, dstStep), roiSize, clampTo<Zeb16u>(value, 65535));
}
ZEB_ENTRY(zebiAbsDiffC_32f_C1R)
(const Zeb32f* pSrc, int srcStep, Zeb32f* pDst, int dstStep, ZebiSize roiSize, Zeb32f value) {
  return absDiffConstant<Zeb32f>(image(pSrc, srcStep), image(pDst, dstStep), roiSize, value);
}
