// Two-dimensional copies, fills and conversion.
#include <string.h>

#include "core/checks.h"
#include "core/loops.h"
#include "core/services.h"
#include "core/streaming.h"
#include "core/widen.h"

namespace {

using namespace zeb;

template <class T>
ZebStatus copy(const T* pSrc, int srcStep, T* pDst, int dstStep, ZebiSize roi) {
  const auto src = image(pSrc, srcStep);
  const auto dst = image(pDst, dstStep);
  if (auto bad = checked(roi, src, dst)) return bad;
  const auto row = [](const T* s, T* d, int n) { memcpy(d, s, static_cast<size_t>(n) * sizeof(T)); };
  forEachRow(roi, row, src, dst);
  return zebStsOk;
}

template <class T>
ZebStatus fill(T value, T* pDst, int dstStep, ZebiSize roi, bool streaming) {
  forEachRow(
      roi, 1, [=](T* d, int n) { fillRun(d, n, value, streaming); }, Rows(pDst, dstStep));
  return zebStsOk;
}

template <class T>
ZebStatus fillable(const T* pDst, int dstStep, ZebiSize roi) {
  return checked(roi, image(pDst, dstStep));
}

int64_t area(ZebiSize roi) {
  return static_cast<int64_t>(roi.width) * roi.height;
}

void convertRow(const Zeb16u* src, Zeb32f* dst, int count, bool streaming) {
  int i = 0;
  const auto toBoundary = (32 - (reinterpret_cast<uintptr_t>(dst) & 31)) & 31;
  if (streaming && count >= 16 && toBoundary % sizeof(Zeb32f) == 0) {
    store(dst, loadAsFloat(src));
    for (i = static_cast<int>(toBoundary / sizeof(Zeb32f)); i <= count - 8; i += 8)
      stream(dst + i, loadAsFloat(src + i));
    streamFence();
  }
  for (; i <= count - 8; i += 8) store(dst + i, loadAsFloat(src + i));
  if (i < count) storeN(dst + i, loadAsFloatN(src + i, count - i), count - i);
}

}  // namespace

ZebStatus zebiCopy_8u_C1R(const Zeb8u* pSrc, int srcStep, Zeb8u* pDst, int dstStep, ZebiSize roiSize) {
  return copy(pSrc, srcStep, pDst, dstStep, roiSize);
}
ZebStatus zebiCopy_16s_C1R(const Zeb16s* pSrc, int srcStep, Zeb16s* pDst, int dstStep, ZebiSize roiSize) {
  return copy(pSrc, srcStep, pDst, dstStep, roiSize);
}
ZebStatus zebiCopy_32f_C1R(const Zeb32f* pSrc, int srcStep, Zeb32f* pDst, int dstStep, ZebiSize roiSize) {
  return copy(pSrc, srcStep, pDst, dstStep, roiSize);
}

ZebStatus zebiSet_8u_C1R(Zeb8u value, Zeb8u* pDst, int dstStep, ZebiSize roiSize) {
  if (auto bad = fillable(pDst, dstStep, roiSize)) return bad;
  return fill(value, pDst, dstStep, roiSize, streamsImage(area(roiSize), 0x600000, 1));
}
ZebStatus zebiSet_16s_C1R(Zeb16s value, Zeb16s* pDst, int dstStep, ZebiSize roiSize) {
  if (auto bad = fillable(pDst, dstStep, roiSize)) return bad;
  return fill(value, pDst, dstStep, roiSize, streamsImage(area(roiSize), 0x300000, 2));
}
ZebStatus zebiSet_32f_C1R(Zeb32f value, Zeb32f* pDst, int dstStep, ZebiSize roiSize) {
  if (auto bad = fillable(pDst, dstStep, roiSize)) return bad;
  return fill(value, pDst, dstStep, roiSize, streamsImage(area(roiSize) * 4, 0x600000, 1));
}

ZebStatus zebiConvert_16u32f_C1R(const Zeb16u* pSrc, int srcStep, Zeb32f* pDst, int dstStep, ZebiSize roiSize) {
  if (auto bad = firstFailure(present(pSrc, pDst), hasArea(roiSize), require(srcStep >= 1, zebStsErrStep),
                              require(dstStep >= 1, zebStsErrStep)))
    return bad;
  const bool streaming = streamsImage(area(roiSize) * 6, 0x100000, 1);
  const auto row = [=](const Zeb16u* s, Zeb32f* d, int n) { convertRow(s, d, n, streaming); };
  forEachRow(roiSize, 1, row, Rows(pSrc, srcStep), Rows(pDst, dstStep));
  return zebStsOk;
}
