// How the fills are bound: the operation fill<T, channels>() does the work of every form of a kind.
#pragma once

#include "core/entry.h"
#include "segment/fill_spans.h"

// The values stand in a vector's place so that the frame is aligned however the caller's stack is; the address checker
// relies on it.
#define FILL_EQUAL_C1(name, fill, T, connected)                                                       \
  ZEB_ENTRY(name)                                                                                     \
  (T * pImage, int imageStep, ZebiSize roiSize, ZebiPoint seed, T newVal, ZebiConnectedComp* pRegion, \
   Zeb8u* pBuffer) {                                                                                  \
    alignas(32) const T values[] = {newVal};                                                          \
    return fill<T, 1>(pImage, imageStep, roiSize, seed, values, pRegion, pBuffer, connected);         \
  }
#define FILL_EQUAL_C3(name, fill, T, connected)                                                                \
  ZEB_ENTRY(name)                                                                                              \
  (T * pImage, int imageStep, ZebiSize roiSize, ZebiPoint seed, const T newVal[3], ZebiConnectedComp* pRegion, \
   Zeb8u* pBuffer) {                                                                                           \
    return fill<T, 3>(pImage, imageStep, roiSize, seed, newVal, pRegion, pBuffer, connected);                  \
  }
#define FILL_WITHIN_C1(name, fill, T, connected)                                                                      \
  ZEB_ENTRY(name)                                                                                                     \
  (T * pImage, int imageStep, ZebiSize roiSize, ZebiPoint seed, T newVal, T minDelta, T maxDelta,                     \
   ZebiConnectedComp* pRegion, Zeb8u* pBuffer) {                                                                      \
    alignas(32) const T values[] = {newVal, minDelta, maxDelta};                                                      \
    return fill<T, 1>(pImage, imageStep, roiSize, seed, values, values + 1, values + 2, pRegion, pBuffer, connected); \
  }
#define FILL_WITHIN_C3(name, fill, T, connected)                                                                  \
  ZEB_ENTRY(name)                                                                                                 \
  (T * pImage, int imageStep, ZebiSize roiSize, ZebiPoint seed, const T newVal[3], const T minDelta[3],           \
   const T maxDelta[3], ZebiConnectedComp* pRegion, Zeb8u* pBuffer) {                                             \
    return fill<T, 3>(pImage, imageStep, roiSize, seed, newVal, minDelta, maxDelta, pRegion, pBuffer, connected); \
  }
