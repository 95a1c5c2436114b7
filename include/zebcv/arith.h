/** Accumulation, differences, fast arctangent, integral images and rectangle statistics. */
#ifndef ZEBCV_ARITH_H
#define ZEBCV_ARITH_H

#include "types.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * @defgroup accumulate Accumulation into a float image
 *
 * Every pixel of a one-channel Zeb32f accumulator is updated in place from one or two source images of the same size.
 * 8u, 8s and 16u sources are converted exactly. The masked forms (IMR) update only where the mask byte is not zero and
 * leave the other accumulator pixels bit for bit as they are. Nothing but the rows of the accumulator is written. The
 * sources may be the accumulator itself where the types agree; a partial overlap is not supported.
 *
 * Steps are in bytes and at least the row: width for 8-bit sources and masks, 2 x width for 16u, 4 x width for 32f;
 * even for 16u, a multiple of 4 for 32f.
 *
 * Status: zebStsOk; zebStsErrNullPointer (an image or mask is null); zebStsErrSize (width or height below 1);
 * zebStsErrStep (a step below its row); zebStsErrNotEvenStep (a 16u or 32f step that is no multiple of its element).
 * All minimum tests come before all multiple tests.
 * @{
 */

/**
 * acc = acc + src, rounded once.
 *
 * zebiAdd_16u32f_C1IR departs in its checks: it tests the source step (at least 2 x width, then even) and then the
 * accumulator step against the same 2 x width bytes, then for a multiple of 4.
 */
ZebStatus zebiAdd_8u32f_C1IR(const Zeb8u* pSrc, int srcStep, Zeb32f* pSrcDst, int srcDstStep, ZebiSize roiSize);
ZebStatus zebiAdd_8s32f_C1IR(const Zeb8s* pSrc, int srcStep, Zeb32f* pSrcDst, int srcDstStep, ZebiSize roiSize);
ZebStatus zebiAdd_16u32f_C1IR(const Zeb16u* pSrc, int srcStep, Zeb32f* pSrcDst, int srcDstStep, ZebiSize roiSize);
ZebStatus zebiAdd_8u32f_C1IMR(const Zeb8u* pSrc, int srcStep, const Zeb8u* pMask, int maskStep, Zeb32f* pSrcDst,
                              int srcDstStep, ZebiSize roiSize);
ZebStatus zebiAdd_8s32f_C1IMR(const Zeb8s* pSrc, int srcStep, const Zeb8u* pMask, int maskStep, Zeb32f* pSrcDst,
                              int srcDstStep, ZebiSize roiSize);
ZebStatus zebiAdd_16u32f_C1IMR(const Zeb16u* pSrc, int srcStep, const Zeb8u* pMask, int maskStep, Zeb32f* pSrcDst,
                               int srcDstStep, ZebiSize roiSize);
ZebStatus zebiAdd_32f_C1IMR(const Zeb32f* pSrc, int srcStep, const Zeb8u* pMask, int maskStep, Zeb32f* pSrcDst,
                            int srcDstStep, ZebiSize roiSize);

/** acc = src x src + acc, fused: rounded once. */
ZebStatus zebiAddSquare_8u32f_C1IR(const Zeb8u* pSrc, int srcStep, Zeb32f* pSrcDst, int srcDstStep, ZebiSize roiSize);
ZebStatus zebiAddSquare_8s32f_C1IR(const Zeb8s* pSrc, int srcStep, Zeb32f* pSrcDst, int srcDstStep, ZebiSize roiSize);
ZebStatus zebiAddSquare_16u32f_C1IR(const Zeb16u* pSrc, int srcStep, Zeb32f* pSrcDst, int srcDstStep, ZebiSize roiSize);
ZebStatus zebiAddSquare_32f_C1IR(const Zeb32f* pSrc, int srcStep, Zeb32f* pSrcDst, int srcDstStep, ZebiSize roiSize);
ZebStatus zebiAddSquare_8u32f_C1IMR(const Zeb8u* pSrc, int srcStep, const Zeb8u* pMask, int maskStep, Zeb32f* pSrcDst,
                                    int srcDstStep, ZebiSize roiSize);
ZebStatus zebiAddSquare_8s32f_C1IMR(const Zeb8s* pSrc, int srcStep, const Zeb8u* pMask, int maskStep, Zeb32f* pSrcDst,
                                    int srcDstStep, ZebiSize roiSize);
ZebStatus zebiAddSquare_16u32f_C1IMR(const Zeb16u* pSrc, int srcStep, const Zeb8u* pMask, int maskStep, Zeb32f* pSrcDst,
                                     int srcDstStep, ZebiSize roiSize);
ZebStatus zebiAddSquare_32f_C1IMR(const Zeb32f* pSrc, int srcStep, const Zeb8u* pMask, int maskStep, Zeb32f* pSrcDst,
                                  int srcDstStep, ZebiSize roiSize);

/** acc = src1 x src2 + acc, fused: rounded once. */
ZebStatus zebiAddProduct_8u32f_C1IR(const Zeb8u* pSrc1, int src1Step, const Zeb8u* pSrc2, int src2Step, Zeb32f* pSrcDst,
                                    int srcDstStep, ZebiSize roiSize);
ZebStatus zebiAddProduct_8s32f_C1IR(const Zeb8s* pSrc1, int src1Step, const Zeb8s* pSrc2, int src2Step, Zeb32f* pSrcDst,
                                    int srcDstStep, ZebiSize roiSize);
ZebStatus zebiAddProduct_16u32f_C1IR(const Zeb16u* pSrc1, int src1Step, const Zeb16u* pSrc2, int src2Step,
                                     Zeb32f* pSrcDst, int srcDstStep, ZebiSize roiSize);
ZebStatus zebiAddProduct_32f_C1IR(const Zeb32f* pSrc1, int src1Step, const Zeb32f* pSrc2, int src2Step, Zeb32f* pSrcDst,
                                  int srcDstStep, ZebiSize roiSize);
ZebStatus zebiAddProduct_8u32f_C1IMR(const Zeb8u* pSrc1, int src1Step, const Zeb8u* pSrc2, int src2Step,
                                     const Zeb8u* pMask, int maskStep, Zeb32f* pSrcDst, int srcDstStep,
                                     ZebiSize roiSize);
ZebStatus zebiAddProduct_8s32f_C1IMR(const Zeb8s* pSrc1, int src1Step, const Zeb8s* pSrc2, int src2Step,
                                     const Zeb8u* pMask, int maskStep, Zeb32f* pSrcDst, int srcDstStep,
                                     ZebiSize roiSize);
ZebStatus zebiAddProduct_16u32f_C1IMR(const Zeb16u* pSrc1, int src1Step, const Zeb16u* pSrc2, int src2Step,
                                      const Zeb8u* pMask, int maskStep, Zeb32f* pSrcDst, int srcDstStep,
                                      ZebiSize roiSize);
ZebStatus zebiAddProduct_32f_C1IMR(const Zeb32f* pSrc1, int src1Step, const Zeb32f* pSrc2, int src2Step,
                                   const Zeb8u* pMask, int maskStep, Zeb32f* pSrcDst, int srcDstStep, ZebiSize roiSize);

/**
 * Running average: acc = (src - acc) x alpha + acc; the difference is rounded, the rest is one fused step. alpha may be
 * any value: 0 keeps the accumulator, 1 replaces it by the source, where the difference of both is exact.
 */
ZebStatus zebiAddWeighted_8u32f_C1IR(const Zeb8u* pSrc, int srcStep, Zeb32f* pSrcDst, int srcDstStep, ZebiSize roiSize,
                                     Zeb32f alpha);
ZebStatus zebiAddWeighted_8s32f_C1IR(const Zeb8s* pSrc, int srcStep, Zeb32f* pSrcDst, int srcDstStep, ZebiSize roiSize,
                                     Zeb32f alpha);
ZebStatus zebiAddWeighted_16u32f_C1IR(const Zeb16u* pSrc, int srcStep, Zeb32f* pSrcDst, int srcDstStep,
                                      ZebiSize roiSize, Zeb32f alpha);
ZebStatus zebiAddWeighted_32f_C1IR(const Zeb32f* pSrc, int srcStep, Zeb32f* pSrcDst, int srcDstStep, ZebiSize roiSize,
                                   Zeb32f alpha);
ZebStatus zebiAddWeighted_8u32f_C1IMR(const Zeb8u* pSrc, int srcStep, const Zeb8u* pMask, int maskStep, Zeb32f* pSrcDst,
                                      int srcDstStep, ZebiSize roiSize, Zeb32f alpha);
ZebStatus zebiAddWeighted_8s32f_C1IMR(const Zeb8s* pSrc, int srcStep, const Zeb8u* pMask, int maskStep, Zeb32f* pSrcDst,
                                      int srcDstStep, ZebiSize roiSize, Zeb32f alpha);
ZebStatus zebiAddWeighted_16u32f_C1IMR(const Zeb16u* pSrc, int srcStep, const Zeb8u* pMask, int maskStep,
                                       Zeb32f* pSrcDst, int srcDstStep, ZebiSize roiSize, Zeb32f alpha);
ZebStatus zebiAddWeighted_32f_C1IMR(const Zeb32f* pSrc, int srcStep, const Zeb8u* pMask, int maskStep, Zeb32f* pSrcDst,
                                    int srcDstStep, ZebiSize roiSize, Zeb32f alpha);

/** Weighted mean of two images: dst = (src1 - src2) x alpha + src2, rounded as above. dst may be src1 or src2. */
ZebStatus zebiAddWeighted_32f_C1R(const Zeb32f* pSrc1, int src1Step, const Zeb32f* pSrc2, int src2Step, Zeb32f* pDst,
                                  int dstStep, ZebiSize roiSize, Zeb32f alpha);
/** @} */

/**
 * @defgroup absdiff Absolute differences
 *
 * dst may be one of the sources. Steps in bytes: at least the row (3 x width for 8u C3); even for 16u, a multiple of 4
 * for 32f.
 *
 * Status: zebStsOk, zebStsErrNullPointer, zebStsErrSize, zebStsErrStep, zebStsErrNotEvenStep (16u and 32f only).
 * @{
 */

/** dst = |src1 - src2|, exact for integers, rounded once for floats. */
ZebStatus zebiAbsDiff_8u_C1R(const Zeb8u* pSrc1, int src1Step, const Zeb8u* pSrc2, int src2Step, Zeb8u* pDst,
                             int dstStep, ZebiSize roiSize);
ZebStatus zebiAbsDiff_8u_C3R(const Zeb8u* pSrc1, int src1Step, const Zeb8u* pSrc2, int src2Step, Zeb8u* pDst,
                             int dstStep, ZebiSize roiSize);
ZebStatus zebiAbsDiff_16u_C1R(const Zeb16u* pSrc1, int src1Step, const Zeb16u* pSrc2, int src2Step, Zeb16u* pDst,
                              int dstStep, ZebiSize roiSize);
ZebStatus zebiAbsDiff_32f_C1R(const Zeb32f* pSrc1, int src1Step, const Zeb32f* pSrc2, int src2Step, Zeb32f* pDst,
                              int dstStep, ZebiSize roiSize);

/** dst = |src - value|. value is first brought into the range of the integer type. */
ZebStatus zebiAbsDiffC_8u_C1R(const Zeb8u* pSrc, int srcStep, Zeb8u* pDst, int dstStep, ZebiSize roiSize, int value);
ZebStatus zebiAbsDiffC_16u_C1R(const Zeb16u* pSrc, int srcStep, Zeb16u* pDst, int dstStep, ZebiSize roiSize, int value);
ZebStatus zebiAbsDiffC_32f_C1R(const Zeb32f* pSrc, int srcStep, Zeb32f* pDst, int dstStep, ZebiSize roiSize,
                               Zeb32f value);
/** @} */

/**
 * Angle of the vectors (x, y) in degrees, nominally in [0, 360).
 *
 * With n and m the smaller and larger of |x| and |y| (m at least 1e-8) and a = n / m from the processor's approximate
 * reciprocal and one Newton step, the angle is (c2 a + c1) a + c0 with c2 = -15.8131895, c1 = 61.0941963,
 * c0 = -0.140500411, reflected into its octant. The error stays within about 0.2 degrees where m is from 1e-8 to 8e37;
 * because of c0 a vector on the positive x axis gives -0.14, one just below it slightly more than 360. A component that
 * is infinite or not a number gives a result that is not a number. dst may be one of the sources.
 *
 * Status: zebStsOk; zebStsErrNullPointer; zebStsErrSize (length below 1).
 */
ZebStatus zebibFastArctan_32f(const Zeb32f* pSrcY, const Zeb32f* pSrcX, Zeb32f* pDst, int length);

/**
 * @defgroup integral Integral images (summed-area tables; F. Crow, 1984)
 *
 * Upright table of a w x h image: (w + 1) x (h + 1) elements; element (row r, column c) is val plus the sum of the
 * source pixels in rows 0..r-1 and columns 0..c-1. Row 0 and column 0 hold val. Squared tables hold sums of squared
 * pixels and start from valSqr. Each element is formed as the element above plus the running sum of its row: in 32s
 * modulo 2^32, in 32f and 64f in floating point. 32s sums are exact up to 8421504 pixels of value 255, 32s sums of
 * squares up to 33025 such pixels; 32f row sums are exact up to 65793 pixels a row.
 *
 * roiSize is the size of the source. Steps in bytes: srcStep at least w; dstStep at least 4 (w + 1) and a multiple of
 * 4; sqrStep at least 4 (w + 1) or 8 (w + 1) and a multiple of 4 or 8 for 32s or 64f tables. Source and tables must not
 * overlap.
 *
 * Status: zebStsOk, zebStsErrNullPointer, zebStsErrSize, zebStsErrStep, zebStsErrNotEvenStep.
 * @{
 */

/** Sums. */
ZebStatus zebiIntegral_8u32s_C1R(const Zeb8u* pSrc, int srcStep, Zeb32s* pDst, int dstStep, ZebiSize roiSize,
                                 Zeb32s val);
ZebStatus zebiIntegral_8u32f_C1R(const Zeb8u* pSrc, int srcStep, Zeb32f* pDst, int dstStep, ZebiSize roiSize,
                                 Zeb32f val);

/** Sums and sums of squares. */
ZebStatus zebiSqrIntegral_8u32s_C1R(const Zeb8u* pSrc, int srcStep, Zeb32s* pDst, int dstStep, Zeb32s* pSqr,
                                    int sqrStep, ZebiSize roiSize, Zeb32s val, Zeb32s valSqr);
ZebStatus zebiSqrIntegral_8u32s64f_C1R(const Zeb8u* pSrc, int srcStep, Zeb32s* pDst, int dstStep, Zeb64f* pSqr,
                                       int sqrStep, ZebiSize roiSize, Zeb32s val, Zeb64f valSqr);
ZebStatus zebiSqrIntegral_8u32f64f_C1R(const Zeb8u* pSrc, int srcStep, Zeb32f* pDst, int dstStep, Zeb64f* pSqr,
                                       int sqrStep, ZebiSize roiSize, Zeb32f val, Zeb64f valSqr);
/** @} */

/**
 * @defgroup tilted Tilted integral images (R. Lienhart and J. Maydt, 2002)
 *
 * Table of a w x h image: (w + 2) x (h + 2) elements. Rows 0 and 1 hold val. For the source row y the new row r = y + 2
 * is formed from the two rows above it, "prev" and "prevprev":
 *
 *     new(0)     = prev(1)
 *     new(x)     = prev(x - 1) - prevprev(x) + prev(x + 1) + src(y, x - 1) + src(y, x)      for x = 1..w - 1
 *     new(w)     = prev(w - 1) + prev(w + 1) - prevprev(w) + src(y, w - 1)
 *     new(w + 1) = prev(w)
 *
 * 32s tables are formed modulo 2^32; 32f elements are summed in double from left to right and rounded once; 64f squared
 * tables are summed from left to right. Squared tables use squared pixels and valSqr.
 *
 * zebiTiltedIntegral_8u32f_C1R departs in column w: its value is added to what the destination held there, and later
 * rows read the table as it then stands. Clear that column beforehand to obtain the plain table.
 *
 * roiSize is the size of the source. Steps in bytes: srcStep at least w; dstStep at least 4 (w + 2) and a multiple of
 * 4; sqrStep at least 4 (w + 2) or 8 (w + 2) and a multiple of 4 or 8 for 32s or 64f tables. Source and tables must not
 * overlap.
 *
 * Status: zebStsOk, zebStsErrNullPointer, zebStsErrSize, zebStsErrStep, zebStsErrNotEvenStep.
 * @{
 */

/** Sums. */
ZebStatus zebiTiltedIntegral_8u32s_C1R(const Zeb8u* pSrc, int srcStep, Zeb32s* pDst, int dstStep, ZebiSize roiSize,
                                       Zeb32s val);
ZebStatus zebiTiltedIntegral_8u32f_C1R(const Zeb8u* pSrc, int srcStep, Zeb32f* pDst, int dstStep, ZebiSize roiSize,
                                       Zeb32f val);

/** Sums and sums of squares. */
ZebStatus zebiTiltedSqrIntegral_8u32s_C1R(const Zeb8u* pSrc, int srcStep, Zeb32s* pDst, int dstStep, Zeb32s* pSqr,
                                          int sqrStep, ZebiSize roiSize, Zeb32s val, Zeb32s valSqr);
ZebStatus zebiTiltedSqrIntegral_8u32s64f_C1R(const Zeb8u* pSrc, int srcStep, Zeb32s* pDst, int dstStep, Zeb64f* pSqr,
                                             int sqrStep, ZebiSize roiSize, Zeb32s val, Zeb64f valSqr);
ZebStatus zebiTiltedSqrIntegral_8u32f64f_C1R(const Zeb8u* pSrc, int srcStep, Zeb32f* pDst, int dstStep, Zeb64f* pSqr,
                                             int sqrStep, ZebiSize roiSize, Zeb32f val, Zeb64f valSqr);
/** @} */

/**
 * @defgroup rectdev Standard deviation of every window of a rectangle
 *
 * pSrc is a table of sums and pSqr a table of sums of squares as above; roiSize is the size of the output. For output
 * pixel (i, j) and the upright rectangle rect = (x, y, width, height), with the corners A = (j + y, i + x),
 * B = (j + y, i + x + width), C = (j + y + height, i + x), D = (j + y + height, i + x + width) as (row, column):
 *
 *     mean = ((A - B) + (D - C)) x inv,  inv = 1 / (width x height)
 *     v    = ((As - Bs) + (Ds - Cs)) x inv - mean x mean        in double
 *     dst  = square root of v rounded to float where v > 0, else 0
 *
 * Differences of the sum table are formed in its own type. The scaled integer forms take the square root in double,
 * multiply it by 2^-scaleFactor, round to nearest even and saturate to 32s.
 *
 * Steps in bytes: srcStep at least 4 (w + x + width), sqrStep at least 8 (w + x + width) or, for 32s squares, 4 of
 * them, dstStep at least 4 w, with w the output's width; multiples of their elements. Nothing but the corners is read,
 * so the tables must reach down to row h - 1 + y + height. The destination must not overlap the tables.
 *
 * Status: zebStsOk, zebStsErrNullPointer, zebStsErrSize (output size below 1), zebStsErrStep, zebStsErrNotEvenStep, and
 * last zebStsErrSize when rect.x or rect.y is negative or rect.width or rect.height is below 1.
 * @{
 */

/** Upright rectangles. */
ZebStatus zebiRectStdDev_32f_C1R(const Zeb32f* pSrc, int srcStep, const Zeb64f* pSqr, int sqrStep, Zeb32f* pDst,
                                 int dstStep, ZebiSize roiSize, ZebiRect rect);
ZebStatus zebiRectStdDev_32s32f_C1R(const Zeb32s* pSrc, int srcStep, const Zeb64f* pSqr, int sqrStep, Zeb32f* pDst,
                                    int dstStep, ZebiSize roiSize, ZebiRect rect);
ZebStatus zebiRectStdDev_32s_C1RSfs(const Zeb32s* pSrc, int srcStep, const Zeb32s* pSqr, int sqrStep, Zeb32s* pDst,
                                    int dstStep, ZebiSize roiSize, ZebiRect rect, int scaleFactor);

/**
 * Tilted rectangles, over tilted tables. With r0 = j + x + y and c0 = i + x - y the corners are P0 = (r0, c0),
 * P1 = (r0 + width, c0 + width), P2 = (r0 + width + height, c0 + width - height), P3 = (r0 + height, c0 - height);
 * mean = ((P0 - P1) + (P2 - P3)) / (2 width height), X likewise from the squares, v = X - mean x mean in one fused
 * step, clamped below at 0.
 *
 * srcStep and sqrStep must hold w + x + y + width + height - 1 elements. The left corner of the first window stands in
 * column x - y - height: choose rect.x at least rect.y + rect.height, or pass tables that have columns to the left.
 */
ZebStatus zebiTiltedRectStdDev_32f_C1R(const Zeb32f* pSrc, int srcStep, const Zeb64f* pSqr, int sqrStep, Zeb32f* pDst,
                                       int dstStep, ZebiSize roiSize, ZebiRect rect);
ZebStatus zebiTiltedRectStdDev_32s32f_C1R(const Zeb32s* pSrc, int srcStep, const Zeb64f* pSqr, int sqrStep,
                                          Zeb32f* pDst, int dstStep, ZebiSize roiSize, ZebiRect rect);
ZebStatus zebiTiltedRectStdDev_32s_C1RSfs(const Zeb32s* pSrc, int srcStep, const Zeb32s* pSqr, int sqrStep,
                                          Zeb32s* pDst, int dstStep, ZebiSize roiSize, ZebiRect rect, int scaleFactor);
/** @} */

#ifdef __cplusplus
}
#endif

#endif
