// The separable filters without argument checks, for the families that build on them.
//
// Row filters take every border type: any base rule, with the flags for the left and right side. The border value is
// one value per channel; it is read under the constant rule only. The scratch buffer has the size that the exported
// query of the same form reports.
#pragma once

#include <stdint.h>

#include "core/entry.h"

#define ZEB_ROW_FILTER(name, S, D, K, ...)                                                                          \
  ZEB_INTERNAL void name(const S* pSrc, int srcStep, D** ppDst, ZebiSize roiSize, const K* pKernel, int kernelSize, \
                         int xAnchor, ZebiBorderType borderType, const S* pBorderValue __VA_ARGS__, Zeb8u* pBuffer)
#define ZEB_COLUMN_FILTER(name, S, D, K, ...)                                                          \
  ZEB_INTERNAL void name(const S** ppSrc, D* pDst, int dstStep, ZebiSize dstRoiSize, const K* pKernel, \
                         int kernelSize __VA_ARGS__)
#define ZEB_DIVISOR , int divisor

ZEB_ROW_FILTER(q7_ownFilterRowBorderPipeline_8u16s_C1R, Zeb8u, Zeb16s, Zeb16s, ZEB_DIVISOR);
ZEB_ROW_FILTER(q7_ownFilterRowBorderPipeline_8u16s_C3R, Zeb8u, Zeb16s, Zeb16s, ZEB_DIVISOR);
ZEB_ROW_FILTER(q7_ownFilterRowBorderPipeline_16s_C1R, Zeb16s, Zeb16s, Zeb16s, ZEB_DIVISOR);
ZEB_ROW_FILTER(q7_ownFilterRowBorderPipeline_16s_C3R, Zeb16s, Zeb16s, Zeb16s, ZEB_DIVISOR);
ZEB_ROW_FILTER(q7_ownFilterRowBorderPipeline_16u_C1R, Zeb16u, Zeb16u, Zeb16u, ZEB_DIVISOR);
ZEB_ROW_FILTER(q7_ownFilterRowBorderPipeline_16u_C3R, Zeb16u, Zeb16u, Zeb16u, ZEB_DIVISOR);
ZEB_ROW_FILTER(q7_ownFilterRowBorderPipeline_32f_C1R, Zeb32f, Zeb32f, Zeb32f);
ZEB_ROW_FILTER(q7_ownFilterRowBorderPipeline_32f_C3R, Zeb32f, Zeb32f, Zeb32f);
ZEB_ROW_FILTER(q7_ownFilterRowBorderPipeline_Low_16s_C1R, Zeb16s, Zeb16s, Zeb16s, ZEB_DIVISOR);
ZEB_ROW_FILTER(q7_ownFilterRowBorderPipeline_Low_16s_C3R, Zeb16s, Zeb16s, Zeb16s, ZEB_DIVISOR);

ZEB_COLUMN_FILTER(q7_ownFilterColumnPipeline_16s_C1R, Zeb16s, Zeb16s, Zeb16s, ZEB_DIVISOR);
ZEB_COLUMN_FILTER(q7_ownFilterColumnPipeline_16s_C3R, Zeb16s, Zeb16s, Zeb16s, ZEB_DIVISOR);
ZEB_COLUMN_FILTER(q7_ownFilterColumnPipeline_16s8u_C1R, Zeb16s, Zeb8u, Zeb16s, ZEB_DIVISOR);
ZEB_COLUMN_FILTER(q7_ownFilterColumnPipeline_16s8u_C3R, Zeb16s, Zeb8u, Zeb16s, ZEB_DIVISOR);
ZEB_COLUMN_FILTER(q7_ownFilterColumnPipeline_16s8s_C1R, Zeb16s, Zeb8s, Zeb16s, ZEB_DIVISOR);
ZEB_COLUMN_FILTER(q7_ownFilterColumnPipeline_16s8s_C3R, Zeb16s, Zeb8s, Zeb16s, ZEB_DIVISOR);
ZEB_COLUMN_FILTER(q7_ownFilterColumnPipeline_16u_C1R, Zeb16u, Zeb16u, Zeb16u, ZEB_DIVISOR);
ZEB_COLUMN_FILTER(q7_ownFilterColumnPipeline_16u_C3R, Zeb16u, Zeb16u, Zeb16u, ZEB_DIVISOR);
ZEB_COLUMN_FILTER(q7_ownFilterColumnPipeline_32f_C1R, Zeb32f, Zeb32f, Zeb32f);
ZEB_COLUMN_FILTER(q7_ownFilterColumnPipeline_32f_C3R, Zeb32f, Zeb32f, Zeb32f);
ZEB_COLUMN_FILTER(q7_ownFilterColumnPipeline_Low_16s_C1R, Zeb16s, Zeb16s, Zeb16s, ZEB_DIVISOR);
ZEB_COLUMN_FILTER(q7_ownFilterColumnPipeline_Low_16s_C3R, Zeb16s, Zeb16s, Zeb16s, ZEB_DIVISOR);

namespace zeb {

// No null among the first count row pointers.
template <class T>
inline ZebStatus rowsPresent(T* const* rows, int64_t count) {
  for (int64_t y = 0; y < count; ++y)
    if (rows[y] == nullptr) return zebStsErrNullPointer;
  return zebStsOk;
}

}  // namespace zeb
