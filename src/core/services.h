// Services that many families share: allocation, fills, copies, element-wise helpers, two-dimensional helpers.
//
// All of them work at any address. Large fills and conversions bypass the cache; the result is the same either way.
#pragma once

#include "core/entry.h"

// ---- Allocation ----

// count elements through zebMalloc; null when count is below 1 (zebMalloc is then not called) or on failure. The
// product is not checked for overflow: callers bound their counts.
ZEB_INTERNAL(Zeb8u*, zebsMalloc_8u, int count);
ZEB_INTERNAL(Zeb16u*, zebsMalloc_16u, int count);
ZEB_INTERNAL(Zeb32s*, zebsMalloc_32s, int count);
ZEB_INTERNAL(Zeb32f*, zebsMalloc_32f, int count);
ZEB_INTERNAL(void, zebsFree, void* pointer);

// ---- Questions ----

// The library starts no threads: callers that split work run one strip.
ZEB_INTERNAL(int, owncvGetMaxNumThreads, void);
// The value that the core library wrote for the largest data cache, whatever its status (0 if it wrote nothing).
ZEB_INTERNAL(int, owncvGetCacheSize, void);

// ---- Runs of elements; a count below 1 does nothing ----

ZEB_INTERNAL(void, zebsSet_8u, Zeb8u value, Zeb8u* pDst, int count);
ZEB_INTERNAL(void, zebsSet_16s, Zeb16s value, Zeb16s* pDst, int count);
ZEB_INTERNAL(void, zebsSet_32s, Zeb32s value, Zeb32s* pDst, int count);
ZEB_INTERNAL(void, zebsSet_32f, Zeb32f value, Zeb32f* pDst, int count);
ZEB_INTERNAL(void, zebsZero_8u, Zeb8u* pDst, int count);
ZEB_INTERNAL(void, zebsZero_16s, Zeb16s* pDst, int count);
ZEB_INTERNAL(void, zebsZero_32s, Zeb32s* pDst, int count);
ZEB_INTERNAL(void, zebsZero_32f, Zeb32f* pDst, int count);
ZEB_INTERNAL(void, zebsCopy_8u, const Zeb8u* pSrc, Zeb8u* pDst, int count);
ZEB_INTERNAL(void, zebsCopy_16s, const Zeb16s* pSrc, Zeb16s* pDst, int count);
ZEB_INTERNAL(void, zebsCopy_32f, const Zeb32f* pSrc, Zeb32f* pDst, int count);

// dst = min(src, dst) or max(src, dst) per element; where one value is not a number, dst keeps the second operand, dst.
ZEB_INTERNAL(void, zebsMinEvery_8u, const Zeb8u* pSrc, Zeb8u* pSrcDst, int count);
ZEB_INTERNAL(void, zebsMinEvery_16u, const Zeb16u* pSrc, Zeb16u* pSrcDst, int count);
ZEB_INTERNAL(void, zebsMinEvery_32f, const Zeb32f* pSrc, Zeb32f* pSrcDst, int count);
ZEB_INTERNAL(void, zebsMinEvery_64f, const Zeb64f* pSrc, Zeb64f* pSrcDst, int count);
ZEB_INTERNAL(void, zebsMaxEvery_8u, const Zeb8u* pSrc, Zeb8u* pSrcDst, int count);
ZEB_INTERNAL(void, zebsMaxEvery_16u, const Zeb16u* pSrc, Zeb16u* pSrcDst, int count);
ZEB_INTERNAL(void, zebsMaxEvery_32f, const Zeb32f* pSrc, Zeb32f* pSrcDst, int count);
ZEB_INTERNAL(void, zebsMaxEvery_64f, const Zeb64f* pSrc, Zeb64f* pSrcDst, int count);

// dst = square root of src, correctly rounded; dst may be src.
ZEB_INTERNAL(void, zebsSqrt_32f, const Zeb32f* pSrc, Zeb32f* pDst, int count);

// ---- Two-dimensional helpers, with the checks of the exported functions ----

ZEB_INTERNAL(ZebStatus, zebiCopy_8u_C1R, const Zeb8u* pSrc, int srcStep, Zeb8u* pDst, int dstStep, ZebiSize roiSize);
ZEB_INTERNAL(ZebStatus, zebiCopy_16s_C1R, const Zeb16s* pSrc, int srcStep, Zeb16s* pDst, int dstStep, ZebiSize roiSize);
ZEB_INTERNAL(ZebStatus, zebiCopy_32f_C1R, const Zeb32f* pSrc, int srcStep, Zeb32f* pDst, int dstStep, ZebiSize roiSize);
ZEB_INTERNAL(ZebStatus, zebiSet_8u_C1R, Zeb8u value, Zeb8u* pDst, int dstStep, ZebiSize roiSize);
ZEB_INTERNAL(ZebStatus, zebiSet_16s_C1R, Zeb16s value, Zeb16s* pDst, int dstStep, ZebiSize roiSize);
ZEB_INTERNAL(ZebStatus, zebiSet_32f_C1R, Zeb32f value, Zeb32f* pDst, int dstStep, ZebiSize roiSize);
// dst = src as float, exactly. Steps need only be at least 1.
ZEB_INTERNAL(ZebStatus, zebiConvert_16u32f_C1R, const Zeb16u* pSrc, int srcStep, Zeb32f* pDst, int dstStep,
             ZebiSize roiSize);
