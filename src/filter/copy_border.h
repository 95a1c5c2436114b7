// Copies of an image into the middle of a larger one, the frame filled by a border rule.
//
// The source is copied to column left, row top of the destination. Checks, first failure returned: a null pointer
// (zebStsErrNullPointer), a step below 1 (zebStsErrStep), a size below 1, a negative top or left, or a destination that
// does not hold the source at that place (zebStsErrSize). Steps are in bytes.
#pragma once

#include "core/checks.h"
#include "filter/border.h"

namespace zeb {

// What the copies are told about their images, in pixels.
struct FrameShape {
  ZebiSize src, dst;
  int top, left;
};

// For pixels of any type and channel count, which are moved as bytes.
ZebStatus copyBorder(const void* pSrc, int srcStep, void* pDst, int dstStep, const FrameShape& shape, int pixelBytes,
                     ZebiBorderType border, const void* value = nullptr);
// The image is in place already at pSrcDst; the frame lies around it, at negative rows and columns too.
ZebStatus fillFrame(void* pSrcDst, int step, const FrameShape& shape, int pixelBytes);

// Frame of one value.
template <class T, int channels = 1>
inline ZebStatus copyConstBorder(const T* pSrc, int srcStep, ZebiSize srcSize, T* pDst, int dstStep, ZebiSize dstSize,
                                 int top, int left, const T (&value)[channels]) {
  return copyBorder(pSrc, srcStep, pDst, dstStep, {srcSize, dstSize, top, left}, channels * int(sizeof(T)),
                    zebBorderConst, value);
}

// Frame of the nearest edge pixels. Where source and destination are the same pointer, the image is in place.
template <class T, int channels = 1>
inline ZebStatus copyReplicateBorderInPlace(T* pSrcDst, int step, ZebiSize srcSize, ZebiSize dstSize, int top,
                                            int left) {
  return fillFrame(pSrcDst, step, {srcSize, dstSize, top, left}, channels * int(sizeof(T)));
}
template <class T, int channels = 1>
inline ZebStatus copyReplicateBorder(const T* pSrc, int srcStep, ZebiSize srcSize, T* pDst, int dstStep,
                                     ZebiSize dstSize, int top, int left) {
  if (pSrc != nullptr && pSrc == pDst)
    return copyReplicateBorderInPlace<T, channels>(pDst, dstStep, srcSize, dstSize, top, left);
  return copyBorder(pSrc, srcStep, pDst, dstStep, {srcSize, dstSize, top, left}, channels * int(sizeof(T)),
                    zebBorderRepl);
}

// Frame of the real pixels around the source on the sides that the border type marks, of edge pixels on the others.
template <class T, int channels = 1>
inline ZebStatus copyInMemBorder(const T* pSrc, int srcStep, ZebiSize srcSize, T* pDst, int dstStep, ZebiSize dstSize,
                                 int top, int left, ZebiBorderType border) {
  return copyBorder(pSrc, srcStep, pDst, dstStep, {srcSize, dstSize, top, left}, channels * int(sizeof(T)),
                    replicatedElsewhere(border));
}

// The same for bit-packed images; both regions start at bit 0 of their first byte. Bits beside the destination are
// kept.
ZebStatus copyReplicateBorder1u(const Zeb8u* pSrc, int srcStep, ZebiSize srcSize, Zeb8u* pDst, int dstStep,
                                ZebiSize dstSize, int top, int left);
ZebStatus copyInMemBorder1u(const Zeb8u* pSrc, int srcStep, ZebiSize srcSize, Zeb8u* pDst, int dstStep,
                            ZebiSize dstSize, int top, int left, ZebiBorderType border);

}  // namespace zeb
