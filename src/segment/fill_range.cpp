// Flood fill of the pixels that are connected to the seed and lie in an interval about its value.
#include <limits>

#include "segment/fill_bindings.h"
#include "segment/fill_painted.h"

namespace {

using namespace zeb;

// The interval about a value, limited to the type for integers; single-precision sums for floats.
template <class T>
void interval(T value, T below, T above, T* low, T* high) {
  if constexpr (std::is_integral_v<T>) {
    constexpr int largest = std::numeric_limits<T>::max();
    *low = static_cast<T>(value > below ? value - below : 0);
    *high = static_cast<T>(value + above < largest ? value + above : largest);
  } else {
    *low = value - below;
    *high = value + above;
  }
}

template <class T, int channels, class Pixels>
void run(Rows<T> image, ZebiSize size, ZebiPoint seed, const T* newValue, Pixels& pixels, SpanStack& stack,
         ZebiConnectedComp* pRegion, Connected connected) {
  EndAt whenFull{pixelCount(size) / 4};
  PaintedRegion<T, channels, Pixels, EndAt> region(image, size, newValue, pixels, stack, whenFull);
  region.fill(seed, size, connected);
  region.record(pRegion);
}

template <class T, int channels>
ZebStatus fillRange(T* pImage, int imageStep, ZebiSize size, ZebiPoint seed, const T* newValue, const T* minDelta,
                    const T* maxDelta, ZebiConnectedComp* pRegion, Zeb8u* pBuffer, Connected connected) {
  if (auto bad = fillChecks<T, channels>(pImage, imageStep, size, seed, pRegion, pBuffer, paintedFillBytes(size),
                                         newValue, minDelta, maxDelta))
    return bad;
  const Rows image(pImage, imageStep);
  const T* seedPixel = image[seed.y] + seed.x * channels;
  if (equalPixels<T, channels>(seedPixel, newValue)) return zebStsOk;

  T low[channels], high[channels];
  for (int c = 0; c < channels; ++c) interval(seedPixel[c], minDelta[c], maxDelta[c], &low[c], &high[c]);
  const InInterval<T, channels> test(low, high);
  const int64_t room = stackBytes(size);
  SpanStack stack(pBuffer, room);
  if (test(newValue)) {
    UnpaintedPixels<T, channels, InInterval<T, channels>> pixels(image, size, test, pBuffer + room);
    run<T, channels>(image, size, seed, newValue, pixels, stack, pRegion, connected);
  } else {
    TestedPixels<T, channels, InInterval<T, channels>> pixels(image, size, test);
    run<T, channels>(image, size, seed, newValue, pixels, stack, pRegion, connected);
  }
  return zebStsOk;
}

}  // namespace

FILL_WITHIN_C1(zebiFloodFill_Range4Con_8u_C1IR, fillRange, Zeb8u, Connected::four)
FILL_WITHIN_C1(zebiFloodFill_Range4Con_16u_C1IR, fillRange, Zeb16u, Connected::four)
FILL_WITHIN_C1(zebiFloodFill_Range4Con_32f_C1IR, fillRange, Zeb32f, Connected::four)
FILL_WITHIN_C1(zebiFloodFill_Range8Con_8u_C1IR, fillRange, Zeb8u, Connected::eight)
FILL_WITHIN_C1(zebiFloodFill_Range8Con_16u_C1IR, fillRange, Zeb16u, Connected::eight)
FILL_WITHIN_C1(zebiFloodFill_Range8Con_32f_C1IR, fillRange, Zeb32f, Connected::eight)
FILL_WITHIN_C3(zebiFloodFill_Range4Con_8u_C3IR, fillRange, Zeb8u, Connected::four)
FILL_WITHIN_C3(zebiFloodFill_Range4Con_16u_C3IR, fillRange, Zeb16u, Connected::four)
FILL_WITHIN_C3(zebiFloodFill_Range4Con_32f_C3IR, fillRange, Zeb32f, Connected::four)
FILL_WITHIN_C3(zebiFloodFill_Range8Con_8u_C3IR, fillRange, Zeb8u, Connected::eight)
FILL_WITHIN_C3(zebiFloodFill_Range8Con_16u_C3IR, fillRange, Zeb16u, Connected::eight)
FILL_WITHIN_C3(zebiFloodFill_Range8Con_32f_C3IR, fillRange, Zeb32f, Connected::eight)
