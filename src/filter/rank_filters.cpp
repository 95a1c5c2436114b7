// The rank filters with replicated border over a rectangle placed by its anchor.
#include "core/entry.h"
#include "filter/rank.h"

namespace zeb {

namespace {

ZebStatus takesRectangle(ZebiSize rect) {
  return require(rect.width >= 1 && rect.height >= 1, zebStsErrMaskSize);
}

template <class T>
using Region = void (*)(const BorderedImage&, Window, int, const RowOutput<T>&, Scratch);

template <int channels, class T>
__attribute__((noinline)) ZebStatus rankFilter(const T* pSrc, int srcStep, T* pDst, int dstStep, ZebiSize roi,
                                               ZebiSize rect, ZebiPoint anchor, Zeb8u* pBuffer, Region<T> region) {
  constexpr int px = channels * static_cast<int>(sizeof(T));
  const bool inside = anchor.x >= 0 && anchor.x < rect.width && anchor.y >= 0 && anchor.y < rect.height;
  int bytes = 0;
  if (auto bad =
          firstFailure(checked(roi, image<channels>(pSrc, srcStep), image<channels>(pDst, dstStep), also(pBuffer)),
                       takesRectangle(rect), require(inside, zebStsErrAnchor)))
    return bad;
  if (auto bad = reportSize(rankBufferSize(roi.width, px, rect), &bytes)) return bad;
  region(BorderedImage(pSrc, srcStep, roi, px), windowOf(rect, anchor), channels,
         RowOutput<T>(Rows<T>(pDst, dstStep), 0, roi.height), Scratch(pBuffer, bytes));
  return zebStsOk;
}

ZebStatus rankFilterSize(int roiWidth, int pixelBytes, ZebiSize rect, int* pBufferSize) {
  if (auto bad = firstFailure(present(pBufferSize), atLeastOne(roiWidth), takesRectangle(rect))) return bad;
  return reportSize(rankBufferSize(roiWidth, pixelBytes, rect), pBufferSize);
}

}  // namespace

#define RANK_FILTER(filter, query, Op, T, channels)                                                                   \
  ZEB_ENTRY(filter)                                                                                                   \
  (const T* pSrc, int srcStep, T* pDst, int dstStep, ZebiSize roiSize, ZebiSize maskSize, ZebiPoint anchor,           \
   Zeb8u* pBuffer) {                                                                                                  \
    return rankFilter<channels>(pSrc, srcStep, pDst, dstStep, roiSize, maskSize, anchor, pBuffer, rankRegion<Op<T>>); \
  }                                                                                                                   \
  ZEB_ENTRY(query)(int roiWidth, ZebiSize maskSize, int* pBufferSize) {                                               \
    return rankFilterSize(roiWidth, channels * static_cast<int>(sizeof(T)), maskSize, pBufferSize);                   \
  }

RANK_FILTER(zebiFilterMinBorderReplicate_8u_C1R, zebiFilterMinGetBufferSize_8u_C1R, Lowest, Zeb8u, 1)
RANK_FILTER(zebiFilterMinBorderReplicate_8u_C3R, zebiFilterMinGetBufferSize_8u_C3R, Lowest, Zeb8u, 3)
RANK_FILTER(zebiFilterMinBorderReplicate_8u_C4R, zebiFilterMinGetBufferSize_8u_C4R, Lowest, Zeb8u, 4)
RANK_FILTER(zebiFilterMinBorderReplicate_16u_C1R, zebiFilterMinGetBufferSize_16u_C1R, Lowest, Zeb16u, 1)
RANK_FILTER(zebiFilterMinBorderReplicate_16s_C1R, zebiFilterMinGetBufferSize_16s_C1R, Lowest, Zeb16s, 1)
RANK_FILTER(zebiFilterMinBorderReplicate_32f_C1R, zebiFilterMinGetBufferSize_32f_C1R, Lowest, Zeb32f, 1)
RANK_FILTER(zebiFilterMinBorderReplicate_32f_C3R, zebiFilterMinGetBufferSize_32f_C3R, Lowest, Zeb32f, 3)
RANK_FILTER(zebiFilterMinBorderReplicate_32f_C4R, zebiFilterMinGetBufferSize_32f_C4R, Lowest, Zeb32f, 4)

RANK_FILTER(zebiFilterMaxBorderReplicate_8u_C1R, zebiFilterMaxGetBufferSize_8u_C1R, Highest, Zeb8u, 1)
RANK_FILTER(zebiFilterMaxBorderReplicate_8u_C3R, zebiFilterMaxGetBufferSize_8u_C3R, Highest, Zeb8u, 3)
RANK_FILTER(zebiFilterMaxBorderReplicate_8u_C4R, zebiFilterMaxGetBufferSize_8u_C4R, Highest, Zeb8u, 4)
RANK_FILTER(zebiFilterMaxBorderReplicate_16u_C1R, zebiFilterMaxGetBufferSize_16u_C1R, Highest, Zeb16u, 1)
RANK_FILTER(zebiFilterMaxBorderReplicate_16s_C1R, zebiFilterMaxGetBufferSize_16s_C1R, Highest, Zeb16s, 1)
RANK_FILTER(zebiFilterMaxBorderReplicate_32f_C1R, zebiFilterMaxGetBufferSize_32f_C1R, Highest, Zeb32f, 1)
RANK_FILTER(zebiFilterMaxBorderReplicate_32f_C3R, zebiFilterMaxGetBufferSize_32f_C3R, Highest, Zeb32f, 3)
RANK_FILTER(zebiFilterMaxBorderReplicate_32f_C4R, zebiFilterMaxGetBufferSize_32f_C4R, Highest, Zeb32f, 4)

}  // namespace zeb
