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
 * Running average: acc = (src - acc) x alpha + acc; the difference is rounded, the rest is one fused step.
 * alpha may be any value: 0 keeps the accumulator, 1 replaces it by the source.
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
 * c0 = -0.140500411, reflected into its octant. The error stays within about 0.2 degrees; because of c0 a vector on
 * the positive x axis gives -0.14, one just below it slightly more than 360. A component that is not a number gives a
 * result that is not one. dst may be one of the sources.
 *
 * Status: zebStsOk; zebStsErrNullPointer; zebStsErrSize (length below 1).
 */
ZebStatus zebibFastArctan_32f(const Zeb32f* pSrcY, const Zeb32f* pSrcX, Zeb32f* pDst, int length);

#ifdef __cplusplus
}
#endif

#endif
