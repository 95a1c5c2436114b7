/** Corner responses by the structure tensor: minimum eigenvalue, eigenvalues and vectors, determinant and trace. */
#ifndef ZEBCV_CORNER_H
#define ZEBCV_CORNER_H

#include "types.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * @defgroup corner Corner responses
 *
 * The structure tensor of a pixel is the mean, over a window, of the products of the derivatives dx and dy: how much
 * the image changes in each direction. Where it changes in both, a point can be located.
 *
 *   | a b |                                                   a = f Sum dx^2
 *   | b c |   over winSize x winSize pixels, 1..255,          b = f Sum dx dy
 *                                                             c = f Sum dy^2
 *
 * The window reaches (winSize - 1) / 2 pixels (integer division) to the left of the pixel and above it, and the rest to
 * the right and below. filterType and mask choose the derivatives, which are those of the filters, unscaled:
 * zebFilterSobel with zebMskSize3x3 or zebMskSize5x5, zebFilterScharr with zebMskSize3x3. A ramp of 1 a pixel gives
 * D = 8, 128 and 32; f = 1 / (D^2 winSize^2), formed in double and rounded once. So responses, and thresholds on them,
 * do not depend on filter and window: a ramp of 1 a pixel has the eigenvalues 1 and 0.
 *
 *   MinEigenVal     L2, the smaller eigenvalue                (J. Shi, C. Tomasi, 1994)
 *   EigenValsVecs   six floats a pixel: L1, L2, x1, y1, x2, y2, the eigenvalues and their unit vectors, L1 >= L2
 *   HarrisCorner    (a c - b^2) - k (a + c)^2                 (C. Harris, M. Stephens, 1988)
 *
 * 8u: the sums are exact, each rounded once to single precision; the time does not depend on the window. 32f: down each
 * column of the window from top to bottom the first product is rounded and the others are added by fma(); then the
 * columns are added from left to right, each addition rounded. a, b, c are products with f, rounded. Then, in single
 * precision and rounded at every step,
 *
 *   h = 0.5 (a + c), g = 0.5 (a - c), r = sqrt(fma(g, g, b b)), L1 = h + r, L2 = h - r, but 0 where that is negative
 *   u = g + r, v = b where g >= 0; else u = |b|, v = r - g, or g - r where b < 0
 *   m = sqrt(fma(u, u, v v)), x1 = u / m, y1 = v / m, but (1, 0) where m = 0; x2 = -y1, y2 = x1
 *   Harris: t = a + c, fma(-k, t t, fma(a, c, -(b b)))
 *
 * x1 is never negative; no difference in (x1, y1) cancels. Infinities and values that are not numbers reach only the
 * pixels whose window and kernel reach them.
 *
 * Border: the low three bits of borderType are zebBorderConst (borderValue), zebBorderRepl or zebBorderInMem; side
 * flags as in the filters. The image is extended as far as window and kernel reach, and everything is computed on it as
 * if it were larger. So a tile computed with its inner sides in memory has the bytes of that part of the whole image.
 *
 * Source and destination must not overlap. Steps are in bytes. pBuffer holds as many bytes as GetBufferSize reports,
 * which do not depend on the height.
 *
 * Status, in this order: zebStsErrNullPointer; zebStsErrSize (width or height below 1); zebStsErrStep (a step smaller
 * than its row, of EigenValsVecs 24 bytes a pixel); zebStsErrNotEvenStep (a step of floats that is no multiple of 4);
 * zebStsErrFilterType (neither zebFilterSobel nor zebFilterScharr); zebStsErrMaskSize (mask is neither zebMskSize3x3
 * nor zebMskSize5x5, or that with zebFilterScharr; then winSize not in 1..255); zebStsErrBadArgument (HarrisCorner: k
 * not in [0, 1]); zebStsErrBorder; zebStsErrOverflow (the buffer could not be sized); zebStsOk.
 * GetBufferSize: zebStsErrNullPointer; zebStsErrSize; zebStsErrFilterType; zebStsErrMaskSize; zebStsErrOverflow (more
 * than 2^31 - 1 bytes; nothing is written); zebStsOk.
 * @{
 */
ZebStatus zebiMinEigenValGetBufferSize_8u32f_C1R(ZebiSize roiSize, int filterType, int mask, int winSize,
                                                 int* pBufferSize);
ZebStatus zebiMinEigenValGetBufferSize_32f_C1R(ZebiSize roiSize, int filterType, int mask, int winSize,
                                               int* pBufferSize);
ZebStatus zebiMinEigenVal_8u32f_C1R(const Zeb8u* pSrc, int srcStep, Zeb32f* pDst, int dstStep, ZebiSize roiSize,
                                    int filterType, int mask, int winSize, ZebiBorderType borderType, Zeb8u borderValue,
                                    Zeb8u* pBuffer);
ZebStatus zebiMinEigenVal_32f_C1R(const Zeb32f* pSrc, int srcStep, Zeb32f* pDst, int dstStep, ZebiSize roiSize,
                                  int filterType, int mask, int winSize, ZebiBorderType borderType, Zeb32f borderValue,
                                  Zeb8u* pBuffer);

ZebStatus zebiEigenValsVecsGetBufferSize_8u32f_C1R(ZebiSize roiSize, int filterType, int mask, int winSize,
                                                   int* pBufferSize);
ZebStatus zebiEigenValsVecsGetBufferSize_32f_C1R(ZebiSize roiSize, int filterType, int mask, int winSize,
                                                 int* pBufferSize);
ZebStatus zebiEigenValsVecs_8u32f_C1R(const Zeb8u* pSrc, int srcStep, Zeb32f* pDst, int dstStep, ZebiSize roiSize,
                                      int filterType, int mask, int winSize, ZebiBorderType borderType,
                                      Zeb8u borderValue, Zeb8u* pBuffer);
ZebStatus zebiEigenValsVecs_32f_C1R(const Zeb32f* pSrc, int srcStep, Zeb32f* pDst, int dstStep, ZebiSize roiSize,
                                    int filterType, int mask, int winSize, ZebiBorderType borderType,
                                    Zeb32f borderValue, Zeb8u* pBuffer);

/** For both types. */
ZebStatus zebiHarrisCornerGetBufferSize(ZebiSize roiSize, int filterType, int mask, int winSize, int* pBufferSize);
ZebStatus zebiHarrisCorner_8u32f_C1R(const Zeb8u* pSrc, int srcStep, Zeb32f* pDst, int dstStep, ZebiSize roiSize,
                                     int filterType, int mask, int winSize, Zeb32f k, ZebiBorderType borderType,
                                     Zeb8u borderValue, Zeb8u* pBuffer);
ZebStatus zebiHarrisCorner_32f_C1R(const Zeb32f* pSrc, int srcStep, Zeb32f* pDst, int dstStep, ZebiSize roiSize,
                                   int filterType, int mask, int winSize, Zeb32f k, ZebiBorderType borderType,
                                   Zeb32f borderValue, Zeb8u* pBuffer);
/** @} */

#ifdef __cplusplus
}
#endif

#endif
