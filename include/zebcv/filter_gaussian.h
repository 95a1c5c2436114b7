/** Gaussian smoothing. */
#ifndef ZEBCV_FILTER_GAUSSIAN_H
#define ZEBCV_FILTER_GAUSSIAN_H

#include "types.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * @defgroup gaussian Gaussian smoothing
 *
 * A separable filter with kernelSize taps in both directions, kernelSize odd. With r = kernelSize / 2, in double
 * precision:
 *
 *   e(i) = exp(-(i - r)^2 / (2 sigma sigma)),   G = 2 (e(0) + e(1) + .. + e(r - 1)) + 1,   g(i) = e(i) / G
 *
 * - 16u, 16s, 32f: the taps are g(i) in single precision.
 * - 8u: integers that sum up to 16384 and are never negative. With C(i) = 16384 (g(0) + .. + g(i)) for i < r and
 *   C(-1) = 0, tap i is rint(C(i)) - rint(C(i - 1)), the other half mirrors it, the centre has the rest. So a constant
 *   image stays as it is.
 *
 * Rows first, then columns, channels by themselves:
 *
 * - 8u: t = (S + 128) >> 8 of the exact sum S of tap x pixel along the row, then (S' + 524288) >> 20 of the exact
 *   sum S' of tap x t down the column.
 * - 32f: along the row the product of tap 0, then one fused step for each further tap; down the column the same, but
 *   with three taps fma(k2, r2, fma(k0, r0, k1 x r1)). A tap of 0 takes part like any other.
 * - 16u, 16s: pixels as floats, filtered likewise, rounded to the nearest, ties to even, and saturated.
 * @{
 */
/** The taps of one element type and channel count. It holds no pointers, may be copied and lie at any address. */
typedef struct ZebiFilterGaussianState ZebiFilterGaussianState;

/**
 * Bytes of the state (32 + 4 x kernelSize) and of the scratch buffer. Neither depends on the height.
 *
 * Status: zebStsErrNullPointer (pSpecSize or pBufferSize); zebStsErrSize; zebStsErrBadArgument (kernelSize below 3 or
 * even); zebStsErrDataType (not zeb8u, zeb16u, zeb16s or zeb32f); zebStsErrNumChannels (not 1, 3 or 4);
 * zebStsErrChannelCount (4); zebStsErrOverflow (one of the counts exceeds 2^31 - 1; nothing is written); zebStsOk.
 */
ZebStatus zebiFilterGaussianGetBufferSize(ZebiSize roiSize, int kernelSize, ZebDataType dataType, int numChannels,
                                          int* pSpecSize, int* pBufferSize);

/**
 * Builds a state in memory of the caller.
 *
 * Status: zebStsErrNullPointer (pSpec); zebStsErrBadArgument (kernelSize below 3 or even, sigma not a finite value
 * above 0); zebStsErrDataType; zebStsErrNumChannels; zebStsErrChannelCount, as above; zebStsErrOverflow (the state
 * would exceed 2^31 - 1 bytes); zebStsOk.
 */
ZebStatus zebiFilterGaussianInit(int kernelSize, Zeb32f sigma, ZebDataType dataType, int numChannels,
                                 ZebiFilterGaussianState* pSpec);

/**
 * Smooths a region. Pixels outside it come from where those of the filters with fixed kernels come from: borderValue
 * (C3: a pointer to three values, read only where the low four bits of borderType are 0) under zebBorderConst, the
 * nearest pixel under zebBorderRepl, memory under zebBorderInMem and on the sides whose flags are set. Only pixels in
 * memory under the kernel are read. Source and destination may not overlap. The state is not changed and may serve any
 * number of calls at once; pBuffer holds as many bytes as zebiFilterGaussianGetBufferSize reports.
 *
 * Status, in this order, steps before sizes: zebStsErrNullPointer (pSrc, pDst, pSpec, pBuffer; C3: also borderValue
 * where the low four bits of borderType are 0); zebStsErrStep; zebStsErrNotEvenStep (not for 8u); zebStsErrSize;
 * zebStsErrBorder (borderType without its side flags is not zebBorderConst, zebBorderRepl or zebBorderInMem);
 * zebStsErrContextMatch (the state is of another kind, element type or channel count); zebStsErrOverflow (the query
 * reports it for this size and kernel); zebStsOk.
 * @{
 */
ZebStatus zebiFilterGaussianBorder_8u_C1R(const Zeb8u* pSrc, int srcStep, Zeb8u* pDst, int dstStep, ZebiSize roiSize,
                                          ZebiBorderType borderType, Zeb8u borderValue,
                                          const ZebiFilterGaussianState* pSpec, Zeb8u* pBuffer);
ZebStatus zebiFilterGaussianBorder_8u_C3R(const Zeb8u* pSrc, int srcStep, Zeb8u* pDst, int dstStep, ZebiSize roiSize,
                                          ZebiBorderType borderType, const Zeb8u borderValue[3],
                                          const ZebiFilterGaussianState* pSpec, Zeb8u* pBuffer);
ZebStatus zebiFilterGaussianBorder_16u_C1R(const Zeb16u* pSrc, int srcStep, Zeb16u* pDst, int dstStep, ZebiSize roiSize,
                                           ZebiBorderType borderType, Zeb16u borderValue,
                                           const ZebiFilterGaussianState* pSpec, Zeb8u* pBuffer);
ZebStatus zebiFilterGaussianBorder_16u_C3R(const Zeb16u* pSrc, int srcStep, Zeb16u* pDst, int dstStep, ZebiSize roiSize,
                                           ZebiBorderType borderType, const Zeb16u borderValue[3],
                                           const ZebiFilterGaussianState* pSpec, Zeb8u* pBuffer);
ZebStatus zebiFilterGaussianBorder_16s_C1R(const Zeb16s* pSrc, int srcStep, Zeb16s* pDst, int dstStep, ZebiSize roiSize,
                                           ZebiBorderType borderType, Zeb16s borderValue,
                                           const ZebiFilterGaussianState* pSpec, Zeb8u* pBuffer);
ZebStatus zebiFilterGaussianBorder_16s_C3R(const Zeb16s* pSrc, int srcStep, Zeb16s* pDst, int dstStep, ZebiSize roiSize,
                                           ZebiBorderType borderType, const Zeb16s borderValue[3],
                                           const ZebiFilterGaussianState* pSpec, Zeb8u* pBuffer);
ZebStatus zebiFilterGaussianBorder_32f_C1R(const Zeb32f* pSrc, int srcStep, Zeb32f* pDst, int dstStep, ZebiSize roiSize,
                                           ZebiBorderType borderType, Zeb32f borderValue,
                                           const ZebiFilterGaussianState* pSpec, Zeb8u* pBuffer);
ZebStatus zebiFilterGaussianBorder_32f_C3R(const Zeb32f* pSrc, int srcStep, Zeb32f* pDst, int dstStep, ZebiSize roiSize,
                                           ZebiBorderType borderType, const Zeb32f borderValue[3],
                                           const ZebiFilterGaussianState* pSpec, Zeb8u* pBuffer);
/** @} */
/** @} */

#ifdef __cplusplus
}
#endif

#endif
