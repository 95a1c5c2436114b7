/** Borders and separable filters. */
#ifndef ZEBCV_FILTER_H
#define ZEBCV_FILTER_H

#include "types.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * @defgroup rowfilter Row filters
 *
 * First half of a separable filter. Row y of the region is extended to the left and right by a border rule, correlated
 * with a kernel (taps in the order given, not reversed) and written to the row buffer ppDst[y]:
 *
 *   S(x) = sum over j of kernel[j] x row(x - xAnchor + j),   0 <= j < kernelSize
 *
 * xAnchor is the tap that lies over the output pixel: xAnchor border pixels are needed on the left and
 * kernelSize - 1 - xAnchor on the right. The channels of C3 images are filtered independently with the same kernel.
 *
 * Border rules: zebBorderConst (borderValue; C3: a pointer to three values), zebBorderRepl, zebBorderInMem (the
 * xAnchor pixels left and the kernelSize - 1 - xAnchor pixels right of each row are in memory and are read). The region
 * may be narrower than the kernel.
 *
 * Integer forms sum in 32 bits, modulo 2^32 (signed for 8u and 16s sources, unsigned for 16u). The result is
 * (float)S x (1.0f / divisor), both operations in single precision, clamped to the range of the row buffer's type and
 * converted to an integer:
 * - the first xAnchor and the last kernelSize - 1 - xAnchor pixels of a row, whatever the border rule, by truncation
 *   towards zero;
 * - all others, to the last, by rounding to the nearest, ties to even;
 * - with three taps and a width of at most 16 pixels, all by truncation.
 *
 * The Low forms compute the low 16 bits of (S x f) >> 14 with f = trunc(16384.0f / divisor): nothing is rounded and
 * nothing saturates. The 32f forms start with the product of tap 0 and add one fused step for each further tap, in
 * order.
 *
 * roiSize.height pointers are read from ppDst, each to width x channels elements of any alignment; no further pointer
 * is looked at. srcStep is in bytes, at least the row, and a multiple of the element. Row buffers and source may not
 * overlap. pBuffer holds as many bytes as the form's GetBufferSize reports, which does not depend on the width.
 *
 * Status, in this order: zebStsErrNullPointer (pSrc, ppDst, pKernel or pBuffer; also the pointer to the C3 border value
 * with zebBorderConst, otherwise it may be null); zebStsErrSize (width or height below 1); zebStsErrNullPointer (one of
 * the row pointers); zebStsErrSize (kernelSize below 1); zebStsErrAnchor (xAnchor not in 0..kernelSize - 1);
 * zebStsErrStep; zebStsErrNotEvenStep (not for 8u); zebStsErrBadArgument (any other borderType); zebStsErrBadArgument
 * (divisor 0; 16u: divisor below 1); zebStsErrOverflow (the query reports it); zebStsOk.
 * @{
 */
/** 8u to 16s, 16s taps. */
ZebStatus zebiFilterRowBorderPipeline_8u16s_C1R(const Zeb8u* pSrc, int srcStep, Zeb16s** ppDst, ZebiSize roiSize,
                                                const Zeb16s* pKernel, int kernelSize, int xAnchor,
                                                ZebiBorderType borderType, Zeb8u borderValue, int divisor,
                                                Zeb8u* pBuffer);
ZebStatus zebiFilterRowBorderPipeline_8u16s_C3R(const Zeb8u* pSrc, int srcStep, Zeb16s** ppDst, ZebiSize roiSize,
                                                const Zeb16s* pKernel, int kernelSize, int xAnchor,
                                                ZebiBorderType borderType, const Zeb8u* pBorderValue, int divisor,
                                                Zeb8u* pBuffer);
/** 16s to 16s. */
ZebStatus zebiFilterRowBorderPipeline_16s_C1R(const Zeb16s* pSrc, int srcStep, Zeb16s** ppDst, ZebiSize roiSize,
                                              const Zeb16s* pKernel, int kernelSize, int xAnchor,
                                              ZebiBorderType borderType, Zeb16s borderValue, int divisor,
                                              Zeb8u* pBuffer);
ZebStatus zebiFilterRowBorderPipeline_16s_C3R(const Zeb16s* pSrc, int srcStep, Zeb16s** ppDst, ZebiSize roiSize,
                                              const Zeb16s* pKernel, int kernelSize, int xAnchor,
                                              ZebiBorderType borderType, const Zeb16s* pBorderValue, int divisor,
                                              Zeb8u* pBuffer);
/** 16u to 16u, 16u taps. */
ZebStatus zebiFilterRowBorderPipeline_16u_C1R(const Zeb16u* pSrc, int srcStep, Zeb16u** ppDst, ZebiSize roiSize,
                                              const Zeb16u* pKernel, int kernelSize, int xAnchor,
                                              ZebiBorderType borderType, Zeb16u borderValue, int divisor,
                                              Zeb8u* pBuffer);
ZebStatus zebiFilterRowBorderPipeline_16u_C3R(const Zeb16u* pSrc, int srcStep, Zeb16u** ppDst, ZebiSize roiSize,
                                              const Zeb16u* pKernel, int kernelSize, int xAnchor,
                                              ZebiBorderType borderType, const Zeb16u* pBorderValue, int divisor,
                                              Zeb8u* pBuffer);
/** 32f to 32f, no scaling. */
ZebStatus zebiFilterRowBorderPipeline_32f_C1R(const Zeb32f* pSrc, int srcStep, Zeb32f** ppDst, ZebiSize roiSize,
                                              const Zeb32f* pKernel, int kernelSize, int xAnchor,
                                              ZebiBorderType borderType, Zeb32f borderValue, Zeb8u* pBuffer);
ZebStatus zebiFilterRowBorderPipeline_32f_C3R(const Zeb32f* pSrc, int srcStep, Zeb32f** ppDst, ZebiSize roiSize,
                                              const Zeb32f* pKernel, int kernelSize, int xAnchor,
                                              ZebiBorderType borderType, const Zeb32f* pBorderValue, Zeb8u* pBuffer);
/** 16s to 16s, fixed-point factor, wrapping. */
ZebStatus zebiFilterRowBorderPipeline_Low_16s_C1R(const Zeb16s* pSrc, int srcStep, Zeb16s** ppDst, ZebiSize roiSize,
                                                  const Zeb16s* pKernel, int kernelSize, int xAnchor,
                                                  ZebiBorderType borderType, Zeb16s borderValue, int divisor,
                                                  Zeb8u* pBuffer);
ZebStatus zebiFilterRowBorderPipeline_Low_16s_C3R(const Zeb16s* pSrc, int srcStep, Zeb16s** ppDst, ZebiSize roiSize,
                                                  const Zeb16s* pKernel, int kernelSize, int xAnchor,
                                                  ZebiBorderType borderType, const Zeb16s* pBorderValue, int divisor,
                                                  Zeb8u* pBuffer);
/** @} */

/**
 * Bytes of scratch that the row filter of the same form needs. The width plays no part beyond being checked.
 *
 * Status: zebStsErrNullPointer (pBufferSize); zebStsErrSize (width, height or kernelSize below 1); zebStsErrOverflow
 * (the count exceeds 2^31 - 1; nothing is written); zebStsOk.
 * @{
 */
ZebStatus zebiFilterRowBorderPipelineGetBufferSize_8u16s_C1R(ZebiSize roiSize, int kernelSize, int* pBufferSize);
ZebStatus zebiFilterRowBorderPipelineGetBufferSize_8u16s_C3R(ZebiSize roiSize, int kernelSize, int* pBufferSize);
ZebStatus zebiFilterRowBorderPipelineGetBufferSize_16s_C1R(ZebiSize roiSize, int kernelSize, int* pBufferSize);
ZebStatus zebiFilterRowBorderPipelineGetBufferSize_16s_C3R(ZebiSize roiSize, int kernelSize, int* pBufferSize);
ZebStatus zebiFilterRowBorderPipelineGetBufferSize_16u_C1R(ZebiSize roiSize, int kernelSize, int* pBufferSize);
ZebStatus zebiFilterRowBorderPipelineGetBufferSize_16u_C3R(ZebiSize roiSize, int kernelSize, int* pBufferSize);
ZebStatus zebiFilterRowBorderPipelineGetBufferSize_32f_C1R(ZebiSize roiSize, int kernelSize, int* pBufferSize);
ZebStatus zebiFilterRowBorderPipelineGetBufferSize_32f_C3R(ZebiSize roiSize, int kernelSize, int* pBufferSize);
ZebStatus zebiFilterRowBorderPipelineGetBufferSize_Low_16s_C1R(ZebiSize roiSize, int kernelSize, int* pBufferSize);
ZebStatus zebiFilterRowBorderPipelineGetBufferSize_Low_16s_C3R(ZebiSize roiSize, int kernelSize, int* pBufferSize);
/** @} */

/**
 * @defgroup columnfilter Column filters
 *
 * Second half of a separable filter. Row y of the destination combines kernelSize row buffers:
 *
 *   S(x) = sum over i of kernel[i] x ppSrc[y + i][x],   0 <= i < kernelSize
 *
 * height + kernelSize - 1 pointers are read from ppSrc, each to width x channels elements of any alignment. The usual
 * driver keeps a rolling set of rows: it lets the row filter fill a few, calls the column filter for as many, and moves
 * the pointers of the last kernelSize - 1 rows to the front.
 *
 * Integer forms sum, scale and clamp as the row filters do. A destination row is taken as width x channels elements in
 * blocks of sixteen from its start: elements of whole blocks are rounded to the nearest, ties to even; the last
 * (width x channels) mod 16 elements are truncated towards zero. The Low forms neither round nor saturate.
 *
 * 32f: with three taps fma(k2, r2, fma(k0, r0, k1 x r1)); with any other number the product of tap 0, then one fused
 * step for each further tap, in order.
 *
 * dstStep is in bytes, at least the row, and a multiple of the element. The destination may not overlap the row
 * buffers. pBuffer holds as many bytes as the form's GetBufferSize reports.
 *
 * Status, in this order: zebStsErrNullPointer (ppSrc, pDst or pKernel); zebStsErrSize (width or height below 1);
 * zebStsErrNullPointer (one of the row pointers); zebStsErrSize (kernelSize below 1); zebStsErrStep;
 * zebStsErrNotEvenStep (not for 8-bit destinations); zebStsErrNullPointer (pBuffer); zebStsErrBadArgument (divisor 0; a
 * negative divisor is allowed in every form); zebStsErrOverflow (the query reports it); zebStsOk.
 * @{
 */
/** 16s rows to 16s. */
ZebStatus zebiFilterColumnPipeline_16s_C1R(const Zeb16s** ppSrc, Zeb16s* pDst, int dstStep, ZebiSize dstRoiSize,
                                           const Zeb16s* pKernel, int kernelSize, int divisor, Zeb8u* pBuffer);
ZebStatus zebiFilterColumnPipeline_16s_C3R(const Zeb16s** ppSrc, Zeb16s* pDst, int dstStep, ZebiSize dstRoiSize,
                                           const Zeb16s* pKernel, int kernelSize, int divisor, Zeb8u* pBuffer);
/** 16s rows to 8u. */
ZebStatus zebiFilterColumnPipeline_16s8u_C1R(const Zeb16s** ppSrc, Zeb8u* pDst, int dstStep, ZebiSize dstRoiSize,
                                             const Zeb16s* pKernel, int kernelSize, int divisor, Zeb8u* pBuffer);
ZebStatus zebiFilterColumnPipeline_16s8u_C3R(const Zeb16s** ppSrc, Zeb8u* pDst, int dstStep, ZebiSize dstRoiSize,
                                             const Zeb16s* pKernel, int kernelSize, int divisor, Zeb8u* pBuffer);
/** 16s rows to 8s. */
ZebStatus zebiFilterColumnPipeline_16s8s_C1R(const Zeb16s** ppSrc, Zeb8s* pDst, int dstStep, ZebiSize dstRoiSize,
                                             const Zeb16s* pKernel, int kernelSize, int divisor, Zeb8u* pBuffer);
ZebStatus zebiFilterColumnPipeline_16s8s_C3R(const Zeb16s** ppSrc, Zeb8s* pDst, int dstStep, ZebiSize dstRoiSize,
                                             const Zeb16s* pKernel, int kernelSize, int divisor, Zeb8u* pBuffer);
/** 16u rows to 16u, 16u taps. */
ZebStatus zebiFilterColumnPipeline_16u_C1R(const Zeb16u** ppSrc, Zeb16u* pDst, int dstStep, ZebiSize dstRoiSize,
                                           const Zeb16u* pKernel, int kernelSize, int divisor, Zeb8u* pBuffer);
ZebStatus zebiFilterColumnPipeline_16u_C3R(const Zeb16u** ppSrc, Zeb16u* pDst, int dstStep, ZebiSize dstRoiSize,
                                           const Zeb16u* pKernel, int kernelSize, int divisor, Zeb8u* pBuffer);
/** 32f rows to 32f, no scaling. */
ZebStatus zebiFilterColumnPipeline_32f_C1R(const Zeb32f** ppSrc, Zeb32f* pDst, int dstStep, ZebiSize dstRoiSize,
                                           const Zeb32f* pKernel, int kernelSize, Zeb8u* pBuffer);
ZebStatus zebiFilterColumnPipeline_32f_C3R(const Zeb32f** ppSrc, Zeb32f* pDst, int dstStep, ZebiSize dstRoiSize,
                                           const Zeb32f* pKernel, int kernelSize, Zeb8u* pBuffer);
/** 16s rows to 16s, fixed-point factor, wrapping. */
ZebStatus zebiFilterColumnPipeline_Low_16s_C1R(const Zeb16s** ppSrc, Zeb16s* pDst, int dstStep, ZebiSize dstRoiSize,
                                               const Zeb16s* pKernel, int kernelSize, int divisor, Zeb8u* pBuffer);
ZebStatus zebiFilterColumnPipeline_Low_16s_C3R(const Zeb16s** ppSrc, Zeb16s* pDst, int dstStep, ZebiSize dstRoiSize,
                                               const Zeb16s* pKernel, int kernelSize, int divisor, Zeb8u* pBuffer);
/** @} */

/**
 * Bytes of scratch that the column filter of the same form takes.
 *
 * Status: zebStsErrNullPointer (pBufferSize); zebStsErrSize (width, height or kernelSize below 1); zebStsErrOverflow
 * (the count exceeds 2^31 - 1; nothing is written); zebStsOk.
 * @{
 */
ZebStatus zebiFilterColumnPipelineGetBufferSize_16s_C1R(ZebiSize roiSize, int kernelSize, int* pBufferSize);
ZebStatus zebiFilterColumnPipelineGetBufferSize_16s_C3R(ZebiSize roiSize, int kernelSize, int* pBufferSize);
ZebStatus zebiFilterColumnPipelineGetBufferSize_16s8u_C1R(ZebiSize roiSize, int kernelSize, int* pBufferSize);
ZebStatus zebiFilterColumnPipelineGetBufferSize_16s8u_C3R(ZebiSize roiSize, int kernelSize, int* pBufferSize);
ZebStatus zebiFilterColumnPipelineGetBufferSize_16s8s_C1R(ZebiSize roiSize, int kernelSize, int* pBufferSize);
ZebStatus zebiFilterColumnPipelineGetBufferSize_16s8s_C3R(ZebiSize roiSize, int kernelSize, int* pBufferSize);
ZebStatus zebiFilterColumnPipelineGetBufferSize_16u_C1R(ZebiSize roiSize, int kernelSize, int* pBufferSize);
ZebStatus zebiFilterColumnPipelineGetBufferSize_16u_C3R(ZebiSize roiSize, int kernelSize, int* pBufferSize);
ZebStatus zebiFilterColumnPipelineGetBufferSize_32f_C1R(ZebiSize roiSize, int kernelSize, int* pBufferSize);
ZebStatus zebiFilterColumnPipelineGetBufferSize_32f_C3R(ZebiSize roiSize, int kernelSize, int* pBufferSize);
ZebStatus zebiFilterColumnPipelineGetBufferSize_Low_16s_C1R(ZebiSize roiSize, int kernelSize, int* pBufferSize);
ZebStatus zebiFilterColumnPipelineGetBufferSize_Low_16s_C3R(ZebiSize roiSize, int kernelSize, int* pBufferSize);
/** @} */

#ifdef __cplusplus
}
#endif

#endif
