/** Filters with fixed kernels of 3 x 3 and 5 x 5: derivatives, the Laplacian, means; and the taps of Sobel kernels. */
#ifndef ZEBCV_FILTER_FIXED_H
#define ZEBCV_FILTER_FIXED_H

#include "types.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * @defgroup fixedfilter Derivatives, Laplacian, low-pass
 *
 * Every pixel of the region is replaced by a weighted sum of the 3 x 3 (zebMskSize3x3) or 5 x 5 (zebMskSize5x5) pixels
 * around it. A kernel is a product of taps along x (to the right) and taps along y (downwards), applied as
 * correlation:
 *
 *   taps            3           5
 *   smooth          1 2 1       1 4 6 4 1
 *   first           -1 0 1      -1 -2 0 2 1
 *   second          1 -2 1      1 0 -2 0 1
 *   Scharr smooth   3 10 3      -            (H. Scharr, Optimale Operatoren in der Digitalen Bildverarbeitung, 2000)
 *   mean            1 1 1       1 1 1 1 1
 *
 *   filter             along x         along y         8u16s, 3 x 3   8u16s, 5 x 5
 *   SobelHoriz         first           smooth          -1020..1020    -12240..12240
 *   SobelVert          smooth          first           -1020..1020    -12240..12240
 *   SobelHorizSecond   second          smooth          -2040..2040    -8160..8160
 *   SobelVertSecond    smooth          second          -2040..2040    -8160..8160
 *   SobelCross         first           first           -510..510      -4590..4590
 *   ScharrHoriz        first           Scharr smooth   -4080..4080    -
 *   ScharrVert         Scharr smooth   first           -4080..4080    -
 *   Laplacian          SobelHorizSecond + SobelVertSecond -2040..2040 -14280..14280
 *   Lowpass            mean            mean            0..255 (8u)    0..255 (8u)
 *
 * Horiz differentiates along x and is positive where the image grows to the right, Vert along y and is positive where
 * it grows downwards. A ramp that grows by 1 a pixel gives 8 (Sobel 3 x 3), 128 (Sobel 5 x 5) and 32 (Scharr). Only the
 * low-pass filter is scaled, by 1/9 or 1/25. The Laplacian of 3 x 3 is 2 0 2 / 0 -8 0 / 2 0 2.
 *
 * 8u: the exact sum, which always fits; the low-pass sum is divided to the nearest integer (there are no ties).
 *
 * 32f: rows first, then columns, in single precision, each operation rounded once; taps of 0 take no part. Of the
 * pixels a b c (d e) from left to right, or of the row results from above to below:
 *
 *   taps            3                                    5
 *   smooth          fma(2, b, a) + c                     e + fma(4, d, fma(6, c, fma(4, b, a)))
 *   first           c - a                                fma(2, d - b, e - a)
 *   second          fma(-2, b, a) + c                    fma(-2, c, a) + e
 *   mean            (a + b) + c                          (((a + b) + c) + d) + e
 *   Scharr smooth   along x fma(3, c, fma(10, b, 3 a)), along y fma(3, c, fma(3, a, 10 b))
 *
 * Low-pass: the result times 1/9 or 1/25 in single precision. Laplacian 3 x 3: with s = (upper left + upper right) +
 * (lower left + lower right), fma(-8, centre, 2 s); 5 x 5: the second derivatives along x and along y, added. A
 * constant finite image has derivatives of exactly 0 as long as no sum overflows. Infinities and values that are not
 * numbers reach only the results that have a tap other than 0 on them.
 *
 * Pixels outside the region: a side is in memory where the base rule of borderType is zebBorderInMem or the side's flag
 * is set. A position beyond a side that is not is borderValue under zebBorderConst, at the corners too; under the other
 * rules, each coordinate beyond such a side moves to the nearest one of the region. Only pixels in memory under the
 * kernel are read. So a tile filtered with its inner sides in memory has the bytes of that part of the whole image.
 *
 * Source and destination may not overlap. pBuffer holds as many bytes as the filter's GetBufferSize reports.
 *
 * Status, in this order: zebStsErrNullPointer; zebStsErrSize; zebStsErrStep; zebStsErrNotEvenStep (16s and 32f);
 * zebStsErrMaskSize (mask is neither zebMskSize3x3 nor zebMskSize5x5); zebStsErrBorder (borderType without its side
 * flags is not zebBorderConst, zebBorderRepl or zebBorderInMem); zebStsErrOverflow (the query reports it); zebStsOk.
 * @{
 */
/** First derivative along x. */
ZebStatus zebiFilterSobelHorizBorder_8u16s_C1R(const Zeb8u* pSrc, int srcStep, Zeb16s* pDst, int dstStep,
                                               ZebiSize roiSize, int mask, ZebiBorderType borderType, Zeb8u borderValue,
                                               Zeb8u* pBuffer);
ZebStatus zebiFilterSobelHorizBorder_32f_C1R(const Zeb32f* pSrc, int srcStep, Zeb32f* pDst, int dstStep,
                                             ZebiSize roiSize, int mask, ZebiBorderType borderType, Zeb32f borderValue,
                                             Zeb8u* pBuffer);
/** First derivative along y. */
ZebStatus zebiFilterSobelVertBorder_8u16s_C1R(const Zeb8u* pSrc, int srcStep, Zeb16s* pDst, int dstStep,
                                              ZebiSize roiSize, int mask, ZebiBorderType borderType, Zeb8u borderValue,
                                              Zeb8u* pBuffer);
ZebStatus zebiFilterSobelVertBorder_32f_C1R(const Zeb32f* pSrc, int srcStep, Zeb32f* pDst, int dstStep,
                                            ZebiSize roiSize, int mask, ZebiBorderType borderType, Zeb32f borderValue,
                                            Zeb8u* pBuffer);
/** Second derivative along x. */
ZebStatus zebiFilterSobelHorizSecondBorder_8u16s_C1R(const Zeb8u* pSrc, int srcStep, Zeb16s* pDst, int dstStep,
                                                     ZebiSize roiSize, int mask, ZebiBorderType borderType,
                                                     Zeb8u borderValue, Zeb8u* pBuffer);
ZebStatus zebiFilterSobelHorizSecondBorder_32f_C1R(const Zeb32f* pSrc, int srcStep, Zeb32f* pDst, int dstStep,
                                                   ZebiSize roiSize, int mask, ZebiBorderType borderType,
                                                   Zeb32f borderValue, Zeb8u* pBuffer);
/** Second derivative along y. */
ZebStatus zebiFilterSobelVertSecondBorder_8u16s_C1R(const Zeb8u* pSrc, int srcStep, Zeb16s* pDst, int dstStep,
                                                    ZebiSize roiSize, int mask, ZebiBorderType borderType,
                                                    Zeb8u borderValue, Zeb8u* pBuffer);
ZebStatus zebiFilterSobelVertSecondBorder_32f_C1R(const Zeb32f* pSrc, int srcStep, Zeb32f* pDst, int dstStep,
                                                  ZebiSize roiSize, int mask, ZebiBorderType borderType,
                                                  Zeb32f borderValue, Zeb8u* pBuffer);
/** Mixed derivative. */
ZebStatus zebiFilterSobelCrossBorder_8u16s_C1R(const Zeb8u* pSrc, int srcStep, Zeb16s* pDst, int dstStep,
                                               ZebiSize roiSize, int mask, ZebiBorderType borderType, Zeb8u borderValue,
                                               Zeb8u* pBuffer);
ZebStatus zebiFilterSobelCrossBorder_32f_C1R(const Zeb32f* pSrc, int srcStep, Zeb32f* pDst, int dstStep,
                                             ZebiSize roiSize, int mask, ZebiBorderType borderType, Zeb32f borderValue,
                                             Zeb8u* pBuffer);
/** First derivative along x, of 3 x 3, in directions more exact than Sobel's. */
ZebStatus zebiFilterScharrHorizBorder_8u16s_C1R(const Zeb8u* pSrc, int srcStep, Zeb16s* pDst, int dstStep,
                                                ZebiSize roiSize, ZebiBorderType borderType, Zeb8u borderValue,
                                                Zeb8u* pBuffer);
ZebStatus zebiFilterScharrHorizBorder_32f_C1R(const Zeb32f* pSrc, int srcStep, Zeb32f* pDst, int dstStep,
                                              ZebiSize roiSize, ZebiBorderType borderType, Zeb32f borderValue,
                                              Zeb8u* pBuffer);
/** The same along y. */
ZebStatus zebiFilterScharrVertBorder_8u16s_C1R(const Zeb8u* pSrc, int srcStep, Zeb16s* pDst, int dstStep,
                                               ZebiSize roiSize, ZebiBorderType borderType, Zeb8u borderValue,
                                               Zeb8u* pBuffer);
ZebStatus zebiFilterScharrVertBorder_32f_C1R(const Zeb32f* pSrc, int srcStep, Zeb32f* pDst, int dstStep,
                                             ZebiSize roiSize, ZebiBorderType borderType, Zeb32f borderValue,
                                             Zeb8u* pBuffer);
/** The sum of both second derivatives. */
ZebStatus zebiFilterLaplacianBorder_8u16s_C1R(const Zeb8u* pSrc, int srcStep, Zeb16s* pDst, int dstStep,
                                              ZebiSize roiSize, int mask, ZebiBorderType borderType, Zeb8u borderValue,
                                              Zeb8u* pBuffer);
ZebStatus zebiFilterLaplacianBorder_32f_C1R(const Zeb32f* pSrc, int srcStep, Zeb32f* pDst, int dstStep,
                                            ZebiSize roiSize, int mask, ZebiBorderType borderType, Zeb32f borderValue,
                                            Zeb8u* pBuffer);
/** The mean. */
ZebStatus zebiFilterLowpassBorder_8u_C1R(const Zeb8u* pSrc, int srcStep, Zeb8u* pDst, int dstStep, ZebiSize roiSize,
                                         int mask, ZebiBorderType borderType, Zeb8u borderValue, Zeb8u* pBuffer);
ZebStatus zebiFilterLowpassBorder_32f_C1R(const Zeb32f* pSrc, int srcStep, Zeb32f* pDst, int dstStep, ZebiSize roiSize,
                                          int mask, ZebiBorderType borderType, Zeb32f borderValue, Zeb8u* pBuffer);
/** @} */

/**
 * Bytes of scratch that the filter of the same form needs. The height plays no part beyond being checked; neither a
 * smaller width nor a smaller mask needs more.
 *
 * Status: zebStsErrNullPointer (pBufferSize); zebStsErrSize; zebStsErrMaskSize; zebStsErrOverflow (the count exceeds
 * 2^31 - 1; nothing is written); zebStsOk.
 * @{
 */
ZebStatus zebiFilterSobelHorizGetBufferSize_8u16s_C1R(ZebiSize roiSize, int mask, int* pBufferSize);
ZebStatus zebiFilterSobelHorizGetBufferSize_32f_C1R(ZebiSize roiSize, int mask, int* pBufferSize);
ZebStatus zebiFilterSobelVertGetBufferSize_8u16s_C1R(ZebiSize roiSize, int mask, int* pBufferSize);
ZebStatus zebiFilterSobelVertGetBufferSize_32f_C1R(ZebiSize roiSize, int mask, int* pBufferSize);
ZebStatus zebiFilterSobelHorizSecondGetBufferSize_8u16s_C1R(ZebiSize roiSize, int mask, int* pBufferSize);
ZebStatus zebiFilterSobelHorizSecondGetBufferSize_32f_C1R(ZebiSize roiSize, int mask, int* pBufferSize);
ZebStatus zebiFilterSobelVertSecondGetBufferSize_8u16s_C1R(ZebiSize roiSize, int mask, int* pBufferSize);
ZebStatus zebiFilterSobelVertSecondGetBufferSize_32f_C1R(ZebiSize roiSize, int mask, int* pBufferSize);
ZebStatus zebiFilterSobelCrossGetBufferSize_8u16s_C1R(ZebiSize roiSize, int mask, int* pBufferSize);
ZebStatus zebiFilterSobelCrossGetBufferSize_32f_C1R(ZebiSize roiSize, int mask, int* pBufferSize);
ZebStatus zebiFilterScharrHorizGetBufferSize_8u16s_C1R(ZebiSize roiSize, int* pBufferSize);
ZebStatus zebiFilterScharrHorizGetBufferSize_32f_C1R(ZebiSize roiSize, int* pBufferSize);
ZebStatus zebiFilterScharrVertGetBufferSize_8u16s_C1R(ZebiSize roiSize, int* pBufferSize);
ZebStatus zebiFilterScharrVertGetBufferSize_32f_C1R(ZebiSize roiSize, int* pBufferSize);
ZebStatus zebiFilterLaplacianGetBufferSize_8u16s_C1R(ZebiSize roiSize, int mask, int* pBufferSize);
ZebStatus zebiFilterLaplacianGetBufferSize_32f_C1R(ZebiSize roiSize, int mask, int* pBufferSize);
ZebStatus zebiFilterLowpassGetBufferSize_8u_C1R(ZebiSize roiSize, int mask, int* pBufferSize);
ZebStatus zebiFilterLowpassGetBufferSize_32f_C1R(ZebiSize roiSize, int mask, int* pBufferSize);
/** @} */

/**
 * Taps of a Sobel kernel of any size: the coefficients of z^0 .. z^(kernelSize - 1) in
 *
 *   (z - 1)^order (z + 1)^(kernelSize - 1 - order)
 *
 * each negated where sign is negative (0 counts as positive). order 0 smooths, 1 and 2 differentiate once and twice.
 * The coefficients are formed exactly; 32f rounds each once.
 *
 * Status: zebStsErrNullPointer (pDst); zebStsErrMaskSize (kernelSize not in 1..63); zebStsErrBadArgument (order not in
 * 0..kernelSize - 1); zebStsErrOverflow (16s: a tap does not fit, first at 19 taps of order 0; nothing is written);
 * zebStsOk.
 * @{
 */
ZebStatus zebiGenSobelKernel_16s(Zeb16s* pDst, int kernelSize, int order, int sign);
ZebStatus zebiGenSobelKernel_32f(Zeb32f* pDst, int kernelSize, int order, int sign);
/** @} */

#ifdef __cplusplus
}
#endif

#endif
