/** Gradient vectors: derivatives, magnitude and angle in one pass; gradients of colours. */
#ifndef ZEBCV_GRADIENT_H
#define ZEBCV_GRADIENT_H

#include "types.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * @defgroup gradientvector Gradient vectors
 *
 * The derivatives gx along x (to the right) and gy along y (downwards) of every pixel, its magnitude and its angle: any
 * of the four. Each of pGx, pGy, pMag and pAngle may be null, but not all; what is null is not formed, and its step is
 * not looked at.
 *
 *   operator   mask            derivative     smoothing
 *   Sobel      zebMskSize3x3   -1 0 1         1 2 1
 *   Sobel      zebMskSize5x5   -1 -2 0 2 1    1 4 6 4 1
 *   Scharr     zebMskSize3x3   -1 0 1         3 10 3
 *   Prewitt    zebMskSize3x3   -1 0 1         1 1 1
 *
 * The derivatives are, bit for bit, those of zebiFilterSobelHorizBorder, zebiFilterSobelVertBorder and their Scharr
 * forms with the same mask and border; Prewitt's are formed like them, of the pixels a b c as c - a and (a + b) + c.
 * Nothing is scaled.
 *
 * Magnitude:
 *
 *   zebNormInf   |gx| if |gx| > |gy|, else |gy|
 *   zebNormL1    |gx| + |gy|
 *   zebNormL2    8u: the integer nearest to the root of gx^2 + gy^2; 32f: sqrt(fma(gx, gx, gy gy))
 *
 * Angle, in radians in [-pi, pi], in single precision: with hi and lo the larger and the smaller of |gx| and |gy|, the
 * arctangent of q = lo / hi (0 when hi is 0) is fma(q^3, P(q^2), q) with a polynomial P of degree 7, and taken from pi
 * / 2 if |gx| < |gy|, then from pi if gx < 0, then from 0 if gy < 0. Its relative error is below 2^-22. The angle is
 * NaN when a derivative is, or both are infinite; that of (0, 0) is 0. It is -pi only of a 32f vector just below the
 * negative x axis.
 *
 * C3C1: the derivatives are formed in every channel, and those of the channel with the largest magnitude in the norm
 * (L2: with the largest gx^2 + gy^2), the lowest of several, are the pixel's.
 *
 * Pixels outside the region, side flags and tiles are as for zebiFilterSobelHorizBorder. Sources and destinations may
 * not overlap. pBuffer holds as many bytes as zebiGradientVectorGetBufferSize reports.
 *
 * Status, in this order: zebStsErrNullPointer (pSrc, pBuffer, all four outputs; pBorderValue under zebBorderConst, else
 * it is not read); zebStsErrSize; zebStsErrStep; zebStsErrNotEvenStep; zebStsErrMaskSize (maskSize is not one of the
 * operator's); zebStsErrNorm (even when there is no pMag); zebStsErrBorder (borderType without its side flags is not
 * zebBorderConst, zebBorderRepl or zebBorderInMem); zebStsErrOverflow (the query reports it); zebStsOk.
 * @{
 */
ZebStatus zebiGradientVectorSobel_8u16s_C1R(const Zeb8u* pSrc, int srcStep, Zeb16s* pGx, int gxStep, Zeb16s* pGy,
                                            int gyStep, Zeb16s* pMag, int magStep, Zeb32f* pAngle, int angleStep,
                                            ZebiSize roiSize, int maskSize, ZebNormType norm, ZebiBorderType borderType,
                                            Zeb8u borderValue, Zeb8u* pBuffer);
ZebStatus zebiGradientVectorSobel_32f_C1R(const Zeb32f* pSrc, int srcStep, Zeb32f* pGx, int gxStep, Zeb32f* pGy,
                                          int gyStep, Zeb32f* pMag, int magStep, Zeb32f* pAngle, int angleStep,
                                          ZebiSize roiSize, int maskSize, ZebNormType norm, ZebiBorderType borderType,
                                          Zeb32f borderValue, Zeb8u* pBuffer);
ZebStatus zebiGradientVectorScharr_8u16s_C1R(const Zeb8u* pSrc, int srcStep, Zeb16s* pGx, int gxStep, Zeb16s* pGy,
                                             int gyStep, Zeb16s* pMag, int magStep, Zeb32f* pAngle, int angleStep,
                                             ZebiSize roiSize, int maskSize, ZebNormType norm,
                                             ZebiBorderType borderType, Zeb8u borderValue, Zeb8u* pBuffer);
ZebStatus zebiGradientVectorScharr_32f_C1R(const Zeb32f* pSrc, int srcStep, Zeb32f* pGx, int gxStep, Zeb32f* pGy,
                                           int gyStep, Zeb32f* pMag, int magStep, Zeb32f* pAngle, int angleStep,
                                           ZebiSize roiSize, int maskSize, ZebNormType norm, ZebiBorderType borderType,
                                           Zeb32f borderValue, Zeb8u* pBuffer);
ZebStatus zebiGradientVectorPrewitt_8u16s_C1R(const Zeb8u* pSrc, int srcStep, Zeb16s* pGx, int gxStep, Zeb16s* pGy,
                                              int gyStep, Zeb16s* pMag, int magStep, Zeb32f* pAngle, int angleStep,
                                              ZebiSize roiSize, int maskSize, ZebNormType norm,
                                              ZebiBorderType borderType, Zeb8u borderValue, Zeb8u* pBuffer);
ZebStatus zebiGradientVectorPrewitt_32f_C1R(const Zeb32f* pSrc, int srcStep, Zeb32f* pGx, int gxStep, Zeb32f* pGy,
                                            int gyStep, Zeb32f* pMag, int magStep, Zeb32f* pAngle, int angleStep,
                                            ZebiSize roiSize, int maskSize, ZebNormType norm, ZebiBorderType borderType,
                                            Zeb32f borderValue, Zeb8u* pBuffer);
ZebStatus zebiGradientVectorSobel_8u16s_C3C1R(const Zeb8u* pSrc, int srcStep, Zeb16s* pGx, int gxStep, Zeb16s* pGy,
                                              int gyStep, Zeb16s* pMag, int magStep, Zeb32f* pAngle, int angleStep,
                                              ZebiSize roiSize, int maskSize, ZebNormType norm,
                                              ZebiBorderType borderType, const Zeb8u* pBorderValue, Zeb8u* pBuffer);
ZebStatus zebiGradientVectorScharr_8u16s_C3C1R(const Zeb8u* pSrc, int srcStep, Zeb16s* pGx, int gxStep, Zeb16s* pGy,
                                               int gyStep, Zeb16s* pMag, int magStep, Zeb32f* pAngle, int angleStep,
                                               ZebiSize roiSize, int maskSize, ZebNormType norm,
                                               ZebiBorderType borderType, const Zeb8u* pBorderValue, Zeb8u* pBuffer);
/**
 * Bytes of pBuffer for sources of zeb8u or zeb32f. Status, in this order: zebStsErrNullPointer; zebStsErrSize;
 * zebStsErrMaskSize (neither zebMskSize3x3 nor zebMskSize5x5); zebStsErrDataType; zebStsErrNumChannels (not 1 or 3);
 * zebStsErrChannelCount (3 of zeb32f); zebStsErrOverflow; zebStsOk.
 */
ZebStatus zebiGradientVectorGetBufferSize(ZebiSize roiSize, int maskSize, ZebDataType dataType, int numChannels,
                                          int* pBufferSize);
/** @} */

/**
 * @defgroup colourgradient Gradients of colours
 *
 * One value from the three c0, c1, c2 of a pixel:
 *
 *   zebNormInf   the largest absolute value; 32f: m = |c0|, then m = |c| if |c| > m for c1 and c2
 *   zebNormL1    (|c0| + |c1|) + |c2|, saturated to 8u and 16u
 *   zebNormL2    8u, 16u: the integer nearest to the root of the sum of squares, saturated;
 *                32f: sqrt(fma(c2, c2, fma(c1, c1, c0 c0)))
 *
 * Source and destination may not overlap. Status, in this order: zebStsErrNullPointer; zebStsErrSize; zebStsErrStep;
 * zebStsErrNotEvenStep (16u and 32f); zebStsErrNorm; zebStsOk.
 * @{
 */
ZebStatus zebiGradientColorToGray_8u_C3C1R(const Zeb8u* pSrc, int srcStep, Zeb8u* pDst, int dstStep, ZebiSize roiSize,
                                           ZebNormType norm);
ZebStatus zebiGradientColorToGray_16u_C3C1R(const Zeb16u* pSrc, int srcStep, Zeb16u* pDst, int dstStep,
                                            ZebiSize roiSize, ZebNormType norm);
ZebStatus zebiGradientColorToGray_32f_C3C1R(const Zeb32f* pSrc, int srcStep, Zeb32f* pDst, int dstStep,
                                            ZebiSize roiSize, ZebNormType norm);
/** @} */

#ifdef __cplusplus
}
#endif

#endif
