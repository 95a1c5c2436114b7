// Flood fill of the pixels that are connected to the seed and equal to it.
//
// A span algorithm after A. R. Smith, Tint fill (1979), and P. S. Heckbert, A seed fill algorithm (1990).
#include "segment/fill_bindings.h"
#include "segment/fill_painted.h"

namespace {

using namespace zeb;

template <class T, int channels>
ZebStatus fillEqual(T* pImage, int imageStep, ZebiSize size, ZebiPoint seed, const T* newValue,
                    ZebiConnectedComp* pRegion, Zeb8u* pBuffer, Connected connected) {
  if (auto bad =
          fillChecks<T, channels>(pImage, imageStep, size, seed, pRegion, pBuffer, paintedFillBytes(size), newValue))
    return bad;
  const Rows image(pImage, imageStep);
  const T* seedPixel = image[seed.y] + seed.x * channels;
  if (equalPixels<T, channels>(seedPixel, newValue)) return zebStsOk;

  const int64_t room = stackBytes(size);
  SpanStack stack(pBuffer, room);
  PutAside whenFull{PostponedSpans(pBuffer + room, size)};
  TestedPixels<T, channels, EqualsSeed<T, channels>> pixels(image, size, EqualsSeed<T, channels>(seedPixel));
  PaintedRegion<T, channels, decltype(pixels), PutAside> region(image, size, newValue, pixels, stack, whenFull);
  region.fill(seed, size, connected);
  region.record(pRegion);
  return zebStsOk;
}

}  // namespace

ZEB_ENTRY(zebiFloodFillGetSize)(ZebiSize roiSize, int* pBufSize) {
  if (auto bad = firstFailure(present(pBufSize), hasArea(roiSize))) return bad;
  return reportSize(pixelCount(roiSize) > INT32_MAX ? -1 : paintedFillBytes(roiSize), pBufSize);
}

FILL_EQUAL_C1(zebiFloodFill_4Con_8u_C1IR, fillEqual, Zeb8u, Connected::four)
FILL_EQUAL_C1(zebiFloodFill_4Con_16u_C1IR, fillEqual, Zeb16u, Connected::four)
FILL_EQUAL_C1(zebiFloodFill_4Con_32s_C1IR, fillEqual, Zeb32s, Connected::four)
FILL_EQUAL_C1(zebiFloodFill_4Con_32f_C1IR, fillEqual, Zeb32f, Connected::four)
FILL_EQUAL_C1(zebiFloodFill_8Con_8u_C1IR, fillEqual, Zeb8u, Connected::eight)
FILL_EQUAL_C1(zebiFloodFill_8Con_16u_C1IR, fillEqual, Zeb16u, Connected::eight)
FILL_EQUAL_C1(zebiFloodFill_8Con_32s_C1IR, fillEqual, Zeb32s, Connected::eight)
FILL_EQUAL_C1(zebiFloodFill_8Con_32f_C1IR, fillEqual, Zeb32f, Connected::eight)
FILL_EQUAL_C3(zebiFloodFill_4Con_8u_C3IR, fillEqual, Zeb8u, Connected::four)
FILL_EQUAL_C3(zebiFloodFill_4Con_16u_C3IR, fillEqual, Zeb16u, Connected::four)
FILL_EQUAL_C3(zebiFloodFill_4Con_32f_C3IR, fillEqual, Zeb32f, Connected::four)
FILL_EQUAL_C3(zebiFloodFill_8Con_8u_C3IR, fillEqual, Zeb8u, Connected::eight)
FILL_EQUAL_C3(zebiFloodFill_8Con_16u_C3IR, fillEqual, Zeb16u, Connected::eight)
FILL_EQUAL_C3(zebiFloodFill_8Con_32f_C3IR, fillEqual, Zeb32f, Connected::eight)
