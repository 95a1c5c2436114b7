// Flood fill of the pixels that are connected to the seed and equal to it.
//
// A span algorithm after A. R. Smith, Tint fill (1979), and P. S. Heckbert, A seed fill algorithm (1990).
#include "core/entry.h"
#include "segment/fill_painted.h"

namespace {

using namespace zeb;

template <class T, int channels, bool diagonal>
ZebStatus fill(T* pImage, int imageStep, ZebiSize size, ZebiPoint seed, const T* newValue, ZebiConnectedComp* pRegion,
               Zeb8u* pBuffer) {
  if (auto bad = fillChecks<T, channels>(pImage, imageStep, size, seed, pRegion, pBuffer, fillBytes(size), newValue))
    return bad;
  const Rows image(pImage, imageStep);
  const T* seedPixel = image[seed.y] + seed.x * channels;
  if (equalPixels<T, channels>(seedPixel, newValue)) return zebStsOk;

  const int64_t room = stackBytes(size);
  SpanStack stack(pBuffer, room);
  PutAside whenFull{PostponedSpans(pBuffer + room, size)};
  TestedPixels<T, channels, EqualsSeed<T, channels>> pixels(image, size, EqualsSeed<T, channels>(seedPixel));
  PaintedRegion<T, channels, decltype(pixels), PutAside> region(image, size, newValue, pixels, stack, whenFull);
  region.template fill<diagonal>(seed, size);
  region.record(pRegion);
  return zebStsOk;
}

}  // namespace

ZEB_ENTRY(zebiFloodFillGetSize)(ZebiSize roiSize, int* pBufSize) {
  if (auto bad = firstFailure(present(pBufSize), hasArea(roiSize))) return bad;
  return reportSize(pixelCount(roiSize) > INT32_MAX ? -1 : fillBytes(roiSize), pBufSize);
}

// The values stand in a vector's place so that the frame is aligned however the caller's stack is; the address checker
// relies on it.
#define ONE_CHANNEL(name, T, diagonal)                                                                \
  ZEB_ENTRY(name)                                                                                     \
  (T * pImage, int imageStep, ZebiSize roiSize, ZebiPoint seed, T newVal, ZebiConnectedComp* pRegion, \
   Zeb8u* pBuffer) {                                                                                  \
    alignas(32) const T values[] = {newVal};                                                          \
    return fill<T, 1, diagonal>(pImage, imageStep, roiSize, seed, values, pRegion, pBuffer);          \
  }
#define THREE_CHANNELS(name, T, diagonal)                                                                      \
  ZEB_ENTRY(name)                                                                                              \
  (T * pImage, int imageStep, ZebiSize roiSize, ZebiPoint seed, const T newVal[3], ZebiConnectedComp* pRegion, \
   Zeb8u* pBuffer) {                                                                                           \
    return fill<T, 3, diagonal>(pImage, imageStep, roiSize, seed, newVal, pRegion, pBuffer);                   \
  }

ONE_CHANNEL(zebiFloodFill_4Con_8u_C1IR, Zeb8u, false)
ONE_CHANNEL(zebiFloodFill_4Con_16u_C1IR, Zeb16u, false)
ONE_CHANNEL(zebiFloodFill_4Con_32s_C1IR, Zeb32s, false)
ONE_CHANNEL(zebiFloodFill_4Con_32f_C1IR, Zeb32f, false)
ONE_CHANNEL(zebiFloodFill_8Con_8u_C1IR, Zeb8u, true)
ONE_CHANNEL(zebiFloodFill_8Con_16u_C1IR, Zeb16u, true)
ONE_CHANNEL(zebiFloodFill_8Con_32s_C1IR, Zeb32s, true)
ONE_CHANNEL(zebiFloodFill_8Con_32f_C1IR, Zeb32f, true)
THREE_CHANNELS(zebiFloodFill_4Con_8u_C3IR, Zeb8u, false)
THREE_CHANNELS(zebiFloodFill_4Con_16u_C3IR, Zeb16u, false)
THREE_CHANNELS(zebiFloodFill_4Con_32f_C3IR, Zeb32f, false)
THREE_CHANNELS(zebiFloodFill_8Con_8u_C3IR, Zeb8u, true)
THREE_CHANNELS(zebiFloodFill_8Con_16u_C3IR, Zeb16u, true)
THREE_CHANNELS(zebiFloodFill_8Con_32f_C3IR, Zeb32f, true)
