// How the fills with two distances are bound: fill<T, channels, diagonal>() of the including file does the work.
#pragma once

#include "core/entry.h"

// The values stand in a vector's place so that the frame is aligned however the caller's stack is; the address checker
// relies on it.
#define ONE_CHANNEL(name, T, diagonal)                                                                               \
  ZEB_ENTRY(name)                                                                                                    \
  (T * pImage, int imageStep, ZebiSize roiSize, ZebiPoint seed, T newVal, T minDelta, T maxDelta,                    \
   ZebiConnectedComp* pRegion, Zeb8u* pBuffer) {                                                                     \
    alignas(32) const T values[] = {newVal, minDelta, maxDelta};                                                     \
    return fill<T, 1, diagonal>(pImage, imageStep, roiSize, seed, values, values + 1, values + 2, pRegion, pBuffer); \
  }
#define THREE_CHANNELS(name, T, diagonal)                                                                        \
  ZEB_ENTRY(name)                                                                                                \
  (T * pImage, int imageStep, ZebiSize roiSize, ZebiPoint seed, const T newVal[3], const T minDelta[3],          \
   const T maxDelta[3], ZebiConnectedComp* pRegion, Zeb8u* pBuffer) {                                            \
    return fill<T, 3, diagonal>(pImage, imageStep, roiSize, seed, newVal, minDelta, maxDelta, pRegion, pBuffer); \
  }
