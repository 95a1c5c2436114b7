/** Minimum and maximum over a rectangle. */
#ifndef ZEBCV_FILTER_RANK_H
#define ZEBCV_FILTER_RANK_H

#include "types.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * @defgroup rank Minimum and maximum
 *
 *   dst(x, y) = min or max of src(x + i - anchor.x, y + j - anchor.y),
 *               0 <= i < maskSize.width,  0 <= j < maskSize.height
 *
 * each channel by itself, all four of C4. Positions outside the region take the nearest pixel of the region (replicated
 * border): no other pixel is read. The rectangle may be larger than the region.
 *
 * 32f: infinities are values like others; pixels that are not numbers are passed over, and a rectangle of nothing else
 * gives +infinity (minimum) or -infinity (maximum). Zeros of either sign are equal; the sign of a zero result is not
 * fixed.
 *
 * The cost of a pixel does not grow with the rectangle but for the logarithm of its width: running blocks down the
 * columns (van Herk, 1992; Gil and Werman, 1993), widening windows along the rows. Not in place: source and destination
 * must not overlap. Steps are in bytes. pBuffer holds as many bytes as the GetBufferSize of the same form reports, at
 * any address.
 *
 * Status, in this order: zebStsErrNullPointer; zebStsErrSize (width or height below 1); zebStsErrStep (a step below its
 * row); zebStsErrNotEvenStep (a step that is no multiple of the element; not for 8u); zebStsErrMaskSize (width or
 * height of the rectangle below 1); zebStsErrAnchor (anchor outside the rectangle); zebStsErrOverflow (the buffer would
 * exceed 2^31 - 1 bytes); zebStsOk.
 * @{
 */
ZebStatus zebiFilterMinBorderReplicate_8u_C1R(const Zeb8u* pSrc, int srcStep, Zeb8u* pDst, int dstStep,
                                              ZebiSize roiSize, ZebiSize maskSize, ZebiPoint anchor, Zeb8u* pBuffer);
ZebStatus zebiFilterMinBorderReplicate_8u_C3R(const Zeb8u* pSrc, int srcStep, Zeb8u* pDst, int dstStep,
                                              ZebiSize roiSize, ZebiSize maskSize, ZebiPoint anchor, Zeb8u* pBuffer);
ZebStatus zebiFilterMinBorderReplicate_8u_C4R(const Zeb8u* pSrc, int srcStep, Zeb8u* pDst, int dstStep,
                                              ZebiSize roiSize, ZebiSize maskSize, ZebiPoint anchor, Zeb8u* pBuffer);
ZebStatus zebiFilterMinBorderReplicate_16u_C1R(const Zeb16u* pSrc, int srcStep, Zeb16u* pDst, int dstStep,
                                               ZebiSize roiSize, ZebiSize maskSize, ZebiPoint anchor, Zeb8u* pBuffer);
ZebStatus zebiFilterMinBorderReplicate_16s_C1R(const Zeb16s* pSrc, int srcStep, Zeb16s* pDst, int dstStep,
                                               ZebiSize roiSize, ZebiSize maskSize, ZebiPoint anchor, Zeb8u* pBuffer);
ZebStatus zebiFilterMinBorderReplicate_32f_C1R(const Zeb32f* pSrc, int srcStep, Zeb32f* pDst, int dstStep,
                                               ZebiSize roiSize, ZebiSize maskSize, ZebiPoint anchor, Zeb8u* pBuffer);
ZebStatus zebiFilterMinBorderReplicate_32f_C3R(const Zeb32f* pSrc, int srcStep, Zeb32f* pDst, int dstStep,
                                               ZebiSize roiSize, ZebiSize maskSize, ZebiPoint anchor, Zeb8u* pBuffer);
ZebStatus zebiFilterMinBorderReplicate_32f_C4R(const Zeb32f* pSrc, int srcStep, Zeb32f* pDst, int dstStep,
                                               ZebiSize roiSize, ZebiSize maskSize, ZebiPoint anchor, Zeb8u* pBuffer);
ZebStatus zebiFilterMaxBorderReplicate_8u_C1R(const Zeb8u* pSrc, int srcStep, Zeb8u* pDst, int dstStep,
                                              ZebiSize roiSize, ZebiSize maskSize, ZebiPoint anchor, Zeb8u* pBuffer);
ZebStatus zebiFilterMaxBorderReplicate_8u_C3R(const Zeb8u* pSrc, int srcStep, Zeb8u* pDst, int dstStep,
                                              ZebiSize roiSize, ZebiSize maskSize, ZebiPoint anchor, Zeb8u* pBuffer);
ZebStatus zebiFilterMaxBorderReplicate_8u_C4R(const Zeb8u* pSrc, int srcStep, Zeb8u* pDst, int dstStep,
                                              ZebiSize roiSize, ZebiSize maskSize, ZebiPoint anchor, Zeb8u* pBuffer);
ZebStatus zebiFilterMaxBorderReplicate_16u_C1R(const Zeb16u* pSrc, int srcStep, Zeb16u* pDst, int dstStep,
                                               ZebiSize roiSize, ZebiSize maskSize, ZebiPoint anchor, Zeb8u* pBuffer);
ZebStatus zebiFilterMaxBorderReplicate_16s_C1R(const Zeb16s* pSrc, int srcStep, Zeb16s* pDst, int dstStep,
                                               ZebiSize roiSize, ZebiSize maskSize, ZebiPoint anchor, Zeb8u* pBuffer);
ZebStatus zebiFilterMaxBorderReplicate_32f_C1R(const Zeb32f* pSrc, int srcStep, Zeb32f* pDst, int dstStep,
                                               ZebiSize roiSize, ZebiSize maskSize, ZebiPoint anchor, Zeb8u* pBuffer);
ZebStatus zebiFilterMaxBorderReplicate_32f_C3R(const Zeb32f* pSrc, int srcStep, Zeb32f* pDst, int dstStep,
                                               ZebiSize roiSize, ZebiSize maskSize, ZebiPoint anchor, Zeb8u* pBuffer);
ZebStatus zebiFilterMaxBorderReplicate_32f_C4R(const Zeb32f* pSrc, int srcStep, Zeb32f* pDst, int dstStep,
                                               ZebiSize roiSize, ZebiSize maskSize, ZebiPoint anchor, Zeb8u* pBuffer);
/** @} */

/**
 * Bytes of scratch for a region of this width and any height; the same for minimum and maximum.
 *
 * Status: zebStsErrNullPointer (pBufferSize); zebStsErrSize (roiWidth below 1); zebStsErrMaskSize (width or height of
 * the rectangle below 1); zebStsErrOverflow (the count exceeds 2^31 - 1; nothing is written); zebStsOk.
 * @{
 */
ZebStatus zebiFilterMinGetBufferSize_8u_C1R(int roiWidth, ZebiSize maskSize, int* pBufferSize);
ZebStatus zebiFilterMinGetBufferSize_8u_C3R(int roiWidth, ZebiSize maskSize, int* pBufferSize);
ZebStatus zebiFilterMinGetBufferSize_8u_C4R(int roiWidth, ZebiSize maskSize, int* pBufferSize);
ZebStatus zebiFilterMinGetBufferSize_16u_C1R(int roiWidth, ZebiSize maskSize, int* pBufferSize);
ZebStatus zebiFilterMinGetBufferSize_16s_C1R(int roiWidth, ZebiSize maskSize, int* pBufferSize);
ZebStatus zebiFilterMinGetBufferSize_32f_C1R(int roiWidth, ZebiSize maskSize, int* pBufferSize);
ZebStatus zebiFilterMinGetBufferSize_32f_C3R(int roiWidth, ZebiSize maskSize, int* pBufferSize);
ZebStatus zebiFilterMinGetBufferSize_32f_C4R(int roiWidth, ZebiSize maskSize, int* pBufferSize);
ZebStatus zebiFilterMaxGetBufferSize_8u_C1R(int roiWidth, ZebiSize maskSize, int* pBufferSize);
ZebStatus zebiFilterMaxGetBufferSize_8u_C3R(int roiWidth, ZebiSize maskSize, int* pBufferSize);
ZebStatus zebiFilterMaxGetBufferSize_8u_C4R(int roiWidth, ZebiSize maskSize, int* pBufferSize);
ZebStatus zebiFilterMaxGetBufferSize_16u_C1R(int roiWidth, ZebiSize maskSize, int* pBufferSize);
ZebStatus zebiFilterMaxGetBufferSize_16s_C1R(int roiWidth, ZebiSize maskSize, int* pBufferSize);
ZebStatus zebiFilterMaxGetBufferSize_32f_C1R(int roiWidth, ZebiSize maskSize, int* pBufferSize);
ZebStatus zebiFilterMaxGetBufferSize_32f_C3R(int roiWidth, ZebiSize maskSize, int* pBufferSize);
ZebStatus zebiFilterMaxGetBufferSize_32f_C4R(int roiWidth, ZebiSize maskSize, int* pBufferSize);
/** @} */

#ifdef __cplusplus
}
#endif

#endif
