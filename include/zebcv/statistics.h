/** Norms of images and of their differences, mean and standard deviation, smallest and largest values. */
#ifndef ZEBCV_STATISTICS_H
#define ZEBCV_STATISTICS_H

#include "types.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * @defgroup norms Norms of an image, of a difference, relative norms
 *
 * With v the value of a pixel:
 *
 *     Inf   the largest |v|
 *     L1    the sum of |v|
 *     L2    the square root of the sum of v x v
 *
 * C1R looks at all pixels of a one-channel image; C1MR at those whose mask byte is not zero; C3CMR at one channel of a
 * three-channel image, coi = 1, 2 or 3, under a mask. n is the number of pixels looked at; the norm of none is 0.
 *
 * 8u and 16u: the largest value and the sums are exact integers at every size; the L2 norm is the sum rounded once to
 * double and its square root rounded once. 32f: the values are converted exactly to double. Their sum, and that of
 * their squares, has 16 partial sums: the pixel in column x of the region is added to number x modulo 16, row by row
 * from left to right, whatever the mask and the channel, and at the end number j + h is added to number j for
 * j = 0..h-1, h = 8, 4, 2, 1. No sum of finite values overflows. A value looked at that is not a number makes the norm
 * one that is not. So results depend on no alignment, a mask without a zero byte gives the result of the form without
 * a mask, and a channel that of the same plane as an image of its own, all bit for bit. A result that is not a number
 * has the bits 0x7FF8000000000000.
 *
 * The images are only read and may overlap; pValue may stand at any address outside them. Outputs must not overlap each
 * other.
 *
 * Steps are in bytes and at least the row (width x channels elements; the mask: width), even for 16u, a multiple of 4
 * for 32f.
 *
 * Status: zebStsOk; zebStsErrNullPointer; zebStsErrSize (width or height below 1); zebStsErrStep (a step below its
 * row); zebStsErrNotEvenStep (a 16u or 32f step that is no multiple of its element); C3CMR: zebStsErrChannel (coi
 * outside 1..3); relative norms: zebStsWarnDivByZero.
 * @{
 */

/** Largest value: max |src|. */
ZebStatus zebiNorm_Inf_8u_C1R(const Zeb8u* pSrc, int srcStep, ZebiSize roiSize, Zeb64f* pValue);
ZebStatus zebiNorm_Inf_16u_C1R(const Zeb16u* pSrc, int srcStep, ZebiSize roiSize, Zeb64f* pValue);
ZebStatus zebiNorm_Inf_32f_C1R(const Zeb32f* pSrc, int srcStep, ZebiSize roiSize, Zeb64f* pValue);
ZebStatus zebiNorm_Inf_8u_C1MR(const Zeb8u* pSrc, int srcStep, const Zeb8u* pMask, int maskStep, ZebiSize roiSize,
                               Zeb64f* pValue);
ZebStatus zebiNorm_Inf_16u_C1MR(const Zeb16u* pSrc, int srcStep, const Zeb8u* pMask, int maskStep, ZebiSize roiSize,
                                Zeb64f* pValue);
ZebStatus zebiNorm_Inf_32f_C1MR(const Zeb32f* pSrc, int srcStep, const Zeb8u* pMask, int maskStep, ZebiSize roiSize,
                                Zeb64f* pValue);
ZebStatus zebiNorm_Inf_8u_C3CMR(const Zeb8u* pSrc, int srcStep, const Zeb8u* pMask, int maskStep, ZebiSize roiSize,
                                int coi, Zeb64f* pValue);
ZebStatus zebiNorm_Inf_16u_C3CMR(const Zeb16u* pSrc, int srcStep, const Zeb8u* pMask, int maskStep, ZebiSize roiSize,
                                 int coi, Zeb64f* pValue);
ZebStatus zebiNorm_Inf_32f_C3CMR(const Zeb32f* pSrc, int srcStep, const Zeb8u* pMask, int maskStep, ZebiSize roiSize,
                                 int coi, Zeb64f* pValue);

/** Sum of the values: sum of |src|. */
ZebStatus zebiNorm_L1_8u_C1R(const Zeb8u* pSrc, int srcStep, ZebiSize roiSize, Zeb64f* pValue);
ZebStatus zebiNorm_L1_16u_C1R(const Zeb16u* pSrc, int srcStep, ZebiSize roiSize, Zeb64f* pValue);
ZebStatus zebiNorm_L1_32f_C1R(const Zeb32f* pSrc, int srcStep, ZebiSize roiSize, Zeb64f* pValue);
ZebStatus zebiNorm_L1_8u_C1MR(const Zeb8u* pSrc, int srcStep, const Zeb8u* pMask, int maskStep, ZebiSize roiSize,
                              Zeb64f* pValue);
ZebStatus zebiNorm_L1_16u_C1MR(const Zeb16u* pSrc, int srcStep, const Zeb8u* pMask, int maskStep, ZebiSize roiSize,
                               Zeb64f* pValue);
ZebStatus zebiNorm_L1_32f_C1MR(const Zeb32f* pSrc, int srcStep, const Zeb8u* pMask, int maskStep, ZebiSize roiSize,
                               Zeb64f* pValue);
ZebStatus zebiNorm_L1_8u_C3CMR(const Zeb8u* pSrc, int srcStep, const Zeb8u* pMask, int maskStep, ZebiSize roiSize,
                               int coi, Zeb64f* pValue);
ZebStatus zebiNorm_L1_16u_C3CMR(const Zeb16u* pSrc, int srcStep, const Zeb8u* pMask, int maskStep, ZebiSize roiSize,
                                int coi, Zeb64f* pValue);
ZebStatus zebiNorm_L1_32f_C3CMR(const Zeb32f* pSrc, int srcStep, const Zeb8u* pMask, int maskStep, ZebiSize roiSize,
                                int coi, Zeb64f* pValue);

/** Euclidean norm: square root of the sum of src x src. */
ZebStatus zebiNorm_L2_8u_C1R(const Zeb8u* pSrc, int srcStep, ZebiSize roiSize, Zeb64f* pValue);
ZebStatus zebiNorm_L2_16u_C1R(const Zeb16u* pSrc, int srcStep, ZebiSize roiSize, Zeb64f* pValue);
ZebStatus zebiNorm_L2_32f_C1R(const Zeb32f* pSrc, int srcStep, ZebiSize roiSize, Zeb64f* pValue);
ZebStatus zebiNorm_L2_8u_C1MR(const Zeb8u* pSrc, int srcStep, const Zeb8u* pMask, int maskStep, ZebiSize roiSize,
                              Zeb64f* pValue);
ZebStatus zebiNorm_L2_16u_C1MR(const Zeb16u* pSrc, int srcStep, const Zeb8u* pMask, int maskStep, ZebiSize roiSize,
                               Zeb64f* pValue);
ZebStatus zebiNorm_L2_32f_C1MR(const Zeb32f* pSrc, int srcStep, const Zeb8u* pMask, int maskStep, ZebiSize roiSize,
                               Zeb64f* pValue);
ZebStatus zebiNorm_L2_8u_C3CMR(const Zeb8u* pSrc, int srcStep, const Zeb8u* pMask, int maskStep, ZebiSize roiSize,
                               int coi, Zeb64f* pValue);
ZebStatus zebiNorm_L2_16u_C3CMR(const Zeb16u* pSrc, int srcStep, const Zeb8u* pMask, int maskStep, ZebiSize roiSize,
                                int coi, Zeb64f* pValue);
ZebStatus zebiNorm_L2_32f_C3CMR(const Zeb32f* pSrc, int srcStep, const Zeb8u* pMask, int maskStep, ZebiSize roiSize,
                                int coi, Zeb64f* pValue);

/**
 * Largest difference: max |src1 - src2|; of 32f, here and below, the difference is rounded once to single precision,
 * as zebiAbsDiff_32f_C1R stores it.
 */
ZebStatus zebiNormDiff_Inf_8u_C1R(const Zeb8u* pSrc1, int src1Step, const Zeb8u* pSrc2, int src2Step, ZebiSize roiSize,
                                  Zeb64f* pValue);
ZebStatus zebiNormDiff_Inf_16u_C1R(const Zeb16u* pSrc1, int src1Step, const Zeb16u* pSrc2, int src2Step,
                                   ZebiSize roiSize, Zeb64f* pValue);
ZebStatus zebiNormDiff_Inf_32f_C1R(const Zeb32f* pSrc1, int src1Step, const Zeb32f* pSrc2, int src2Step,
                                   ZebiSize roiSize, Zeb64f* pValue);
ZebStatus zebiNormDiff_Inf_8u_C1MR(const Zeb8u* pSrc1, int src1Step, const Zeb8u* pSrc2, int src2Step,
                                   const Zeb8u* pMask, int maskStep, ZebiSize roiSize, Zeb64f* pValue);
ZebStatus zebiNormDiff_Inf_16u_C1MR(const Zeb16u* pSrc1, int src1Step, const Zeb16u* pSrc2, int src2Step,
                                    const Zeb8u* pMask, int maskStep, ZebiSize roiSize, Zeb64f* pValue);
ZebStatus zebiNormDiff_Inf_32f_C1MR(const Zeb32f* pSrc1, int src1Step, const Zeb32f* pSrc2, int src2Step,
                                    const Zeb8u* pMask, int maskStep, ZebiSize roiSize, Zeb64f* pValue);
ZebStatus zebiNormDiff_Inf_8u_C3CMR(const Zeb8u* pSrc1, int src1Step, const Zeb8u* pSrc2, int src2Step,
                                    const Zeb8u* pMask, int maskStep, ZebiSize roiSize, int coi, Zeb64f* pValue);
ZebStatus zebiNormDiff_Inf_16u_C3CMR(const Zeb16u* pSrc1, int src1Step, const Zeb16u* pSrc2, int src2Step,
                                     const Zeb8u* pMask, int maskStep, ZebiSize roiSize, int coi, Zeb64f* pValue);
ZebStatus zebiNormDiff_Inf_32f_C3CMR(const Zeb32f* pSrc1, int src1Step, const Zeb32f* pSrc2, int src2Step,
                                     const Zeb8u* pMask, int maskStep, ZebiSize roiSize, int coi, Zeb64f* pValue);

/** Sum of the differences |src1 - src2|. */
ZebStatus zebiNormDiff_L1_8u_C1R(const Zeb8u* pSrc1, int src1Step, const Zeb8u* pSrc2, int src2Step, ZebiSize roiSize,
                                 Zeb64f* pValue);
ZebStatus zebiNormDiff_L1_16u_C1R(const Zeb16u* pSrc1, int src1Step, const Zeb16u* pSrc2, int src2Step,
                                  ZebiSize roiSize, Zeb64f* pValue);
ZebStatus zebiNormDiff_L1_32f_C1R(const Zeb32f* pSrc1, int src1Step, const Zeb32f* pSrc2, int src2Step,
                                  ZebiSize roiSize, Zeb64f* pValue);
ZebStatus zebiNormDiff_L1_8u_C1MR(const Zeb8u* pSrc1, int src1Step, const Zeb8u* pSrc2, int src2Step,
                                  const Zeb8u* pMask, int maskStep, ZebiSize roiSize, Zeb64f* pValue);
ZebStatus zebiNormDiff_L1_16u_C1MR(const Zeb16u* pSrc1, int src1Step, const Zeb16u* pSrc2, int src2Step,
                                   const Zeb8u* pMask, int maskStep, ZebiSize roiSize, Zeb64f* pValue);
ZebStatus zebiNormDiff_L1_32f_C1MR(const Zeb32f* pSrc1, int src1Step, const Zeb32f* pSrc2, int src2Step,
                                   const Zeb8u* pMask, int maskStep, ZebiSize roiSize, Zeb64f* pValue);
ZebStatus zebiNormDiff_L1_8u_C3CMR(const Zeb8u* pSrc1, int src1Step, const Zeb8u* pSrc2, int src2Step,
                                   const Zeb8u* pMask, int maskStep, ZebiSize roiSize, int coi, Zeb64f* pValue);
ZebStatus zebiNormDiff_L1_16u_C3CMR(const Zeb16u* pSrc1, int src1Step, const Zeb16u* pSrc2, int src2Step,
                                    const Zeb8u* pMask, int maskStep, ZebiSize roiSize, int coi, Zeb64f* pValue);
ZebStatus zebiNormDiff_L1_32f_C3CMR(const Zeb32f* pSrc1, int src1Step, const Zeb32f* pSrc2, int src2Step,
                                    const Zeb8u* pMask, int maskStep, ZebiSize roiSize, int coi, Zeb64f* pValue);

/** Euclidean distance: square root of the sum of (src1 - src2) x (src1 - src2). */
ZebStatus zebiNormDiff_L2_8u_C1R(const Zeb8u* pSrc1, int src1Step, const Zeb8u* pSrc2, int src2Step, ZebiSize roiSize,
                                 Zeb64f* pValue);
ZebStatus zebiNormDiff_L2_16u_C1R(const Zeb16u* pSrc1, int src1Step, const Zeb16u* pSrc2, int src2Step,
                                  ZebiSize roiSize, Zeb64f* pValue);
ZebStatus zebiNormDiff_L2_32f_C1R(const Zeb32f* pSrc1, int src1Step, const Zeb32f* pSrc2, int src2Step,
                                  ZebiSize roiSize, Zeb64f* pValue);
ZebStatus zebiNormDiff_L2_8u_C1MR(const Zeb8u* pSrc1, int src1Step, const Zeb8u* pSrc2, int src2Step,
                                  const Zeb8u* pMask, int maskStep, ZebiSize roiSize, Zeb64f* pValue);
ZebStatus zebiNormDiff_L2_16u_C1MR(const Zeb16u* pSrc1, int src1Step, const Zeb16u* pSrc2, int src2Step,
                                   const Zeb8u* pMask, int maskStep, ZebiSize roiSize, Zeb64f* pValue);
ZebStatus zebiNormDiff_L2_32f_C1MR(const Zeb32f* pSrc1, int src1Step, const Zeb32f* pSrc2, int src2Step,
                                   const Zeb8u* pMask, int maskStep, ZebiSize roiSize, Zeb64f* pValue);
ZebStatus zebiNormDiff_L2_8u_C3CMR(const Zeb8u* pSrc1, int src1Step, const Zeb8u* pSrc2, int src2Step,
                                   const Zeb8u* pMask, int maskStep, ZebiSize roiSize, int coi, Zeb64f* pValue);
ZebStatus zebiNormDiff_L2_16u_C3CMR(const Zeb16u* pSrc1, int src1Step, const Zeb16u* pSrc2, int src2Step,
                                    const Zeb8u* pMask, int maskStep, ZebiSize roiSize, int coi, Zeb64f* pValue);
ZebStatus zebiNormDiff_L2_32f_C3CMR(const Zeb32f* pSrc1, int src1Step, const Zeb32f* pSrc2, int src2Step,
                                    const Zeb8u* pMask, int maskStep, ZebiSize roiSize, int coi, Zeb64f* pValue);

/**
 * Relative error: max |src1 - src2| / max |src2|, one division of the two norms in double.
 *
 * If the norm of src2 is 0, the result is infinity, or not a number where the norm of the difference is 0 or not a
 * number too, and the status is zebStsWarnDivByZero; so it is where the mask selects nothing. A norm of src2 that is
 * infinite or not a number is divided by like any other.
 */
ZebStatus zebiNormRel_Inf_8u_C1R(const Zeb8u* pSrc1, int src1Step, const Zeb8u* pSrc2, int src2Step, ZebiSize roiSize,
                                 Zeb64f* pValue);
ZebStatus zebiNormRel_Inf_16u_C1R(const Zeb16u* pSrc1, int src1Step, const Zeb16u* pSrc2, int src2Step,
                                  ZebiSize roiSize, Zeb64f* pValue);
ZebStatus zebiNormRel_Inf_32f_C1R(const Zeb32f* pSrc1, int src1Step, const Zeb32f* pSrc2, int src2Step,
                                  ZebiSize roiSize, Zeb64f* pValue);
ZebStatus zebiNormRel_Inf_8u_C1MR(const Zeb8u* pSrc1, int src1Step, const Zeb8u* pSrc2, int src2Step,
                                  const Zeb8u* pMask, int maskStep, ZebiSize roiSize, Zeb64f* pValue);
ZebStatus zebiNormRel_Inf_16u_C1MR(const Zeb16u* pSrc1, int src1Step, const Zeb16u* pSrc2, int src2Step,
                                   const Zeb8u* pMask, int maskStep, ZebiSize roiSize, Zeb64f* pValue);
ZebStatus zebiNormRel_Inf_32f_C1MR(const Zeb32f* pSrc1, int src1Step, const Zeb32f* pSrc2, int src2Step,
                                   const Zeb8u* pMask, int maskStep, ZebiSize roiSize, Zeb64f* pValue);
ZebStatus zebiNormRel_Inf_8u_C3CMR(const Zeb8u* pSrc1, int src1Step, const Zeb8u* pSrc2, int src2Step,
                                   const Zeb8u* pMask, int maskStep, ZebiSize roiSize, int coi, Zeb64f* pValue);
ZebStatus zebiNormRel_Inf_16u_C3CMR(const Zeb16u* pSrc1, int src1Step, const Zeb16u* pSrc2, int src2Step,
                                    const Zeb8u* pMask, int maskStep, ZebiSize roiSize, int coi, Zeb64f* pValue);
ZebStatus zebiNormRel_Inf_32f_C3CMR(const Zeb32f* pSrc1, int src1Step, const Zeb32f* pSrc2, int src2Step,
                                    const Zeb8u* pMask, int maskStep, ZebiSize roiSize, int coi, Zeb64f* pValue);

/** Relative error: sum of |src1 - src2| / sum of |src2|; division as above. */
ZebStatus zebiNormRel_L1_8u_C1R(const Zeb8u* pSrc1, int src1Step, const Zeb8u* pSrc2, int src2Step, ZebiSize roiSize,
                                Zeb64f* pValue);
ZebStatus zebiNormRel_L1_16u_C1R(const Zeb16u* pSrc1, int src1Step, const Zeb16u* pSrc2, int src2Step, ZebiSize roiSize,
                                 Zeb64f* pValue);
ZebStatus zebiNormRel_L1_32f_C1R(const Zeb32f* pSrc1, int src1Step, const Zeb32f* pSrc2, int src2Step, ZebiSize roiSize,
                                 Zeb64f* pValue);
ZebStatus zebiNormRel_L1_8u_C1MR(const Zeb8u* pSrc1, int src1Step, const Zeb8u* pSrc2, int src2Step, const Zeb8u* pMask,
                                 int maskStep, ZebiSize roiSize, Zeb64f* pValue);
ZebStatus zebiNormRel_L1_16u_C1MR(const Zeb16u* pSrc1, int src1Step, const Zeb16u* pSrc2, int src2Step,
                                  const Zeb8u* pMask, int maskStep, ZebiSize roiSize, Zeb64f* pValue);
ZebStatus zebiNormRel_L1_32f_C1MR(const Zeb32f* pSrc1, int src1Step, const Zeb32f* pSrc2, int src2Step,
                                  const Zeb8u* pMask, int maskStep, ZebiSize roiSize, Zeb64f* pValue);
ZebStatus zebiNormRel_L1_8u_C3CMR(const Zeb8u* pSrc1, int src1Step, const Zeb8u* pSrc2, int src2Step,
                                  const Zeb8u* pMask, int maskStep, ZebiSize roiSize, int coi, Zeb64f* pValue);
ZebStatus zebiNormRel_L1_16u_C3CMR(const Zeb16u* pSrc1, int src1Step, const Zeb16u* pSrc2, int src2Step,
                                   const Zeb8u* pMask, int maskStep, ZebiSize roiSize, int coi, Zeb64f* pValue);
ZebStatus zebiNormRel_L1_32f_C3CMR(const Zeb32f* pSrc1, int src1Step, const Zeb32f* pSrc2, int src2Step,
                                   const Zeb8u* pMask, int maskStep, ZebiSize roiSize, int coi, Zeb64f* pValue);

/** Relative error: Euclidean distance of src1 and src2 / Euclidean norm of src2; division as above. */
ZebStatus zebiNormRel_L2_8u_C1R(const Zeb8u* pSrc1, int src1Step, const Zeb8u* pSrc2, int src2Step, ZebiSize roiSize,
                                Zeb64f* pValue);
ZebStatus zebiNormRel_L2_16u_C1R(const Zeb16u* pSrc1, int src1Step, const Zeb16u* pSrc2, int src2Step, ZebiSize roiSize,
                                 Zeb64f* pValue);
ZebStatus zebiNormRel_L2_32f_C1R(const Zeb32f* pSrc1, int src1Step, const Zeb32f* pSrc2, int src2Step, ZebiSize roiSize,
                                 Zeb64f* pValue);
ZebStatus zebiNormRel_L2_8u_C1MR(const Zeb8u* pSrc1, int src1Step, const Zeb8u* pSrc2, int src2Step, const Zeb8u* pMask,
                                 int maskStep, ZebiSize roiSize, Zeb64f* pValue);
ZebStatus zebiNormRel_L2_16u_C1MR(const Zeb16u* pSrc1, int src1Step, const Zeb16u* pSrc2, int src2Step,
                                  const Zeb8u* pMask, int maskStep, ZebiSize roiSize, Zeb64f* pValue);
ZebStatus zebiNormRel_L2_32f_C1MR(const Zeb32f* pSrc1, int src1Step, const Zeb32f* pSrc2, int src2Step,
                                  const Zeb8u* pMask, int maskStep, ZebiSize roiSize, Zeb64f* pValue);
ZebStatus zebiNormRel_L2_8u_C3CMR(const Zeb8u* pSrc1, int src1Step, const Zeb8u* pSrc2, int src2Step,
                                  const Zeb8u* pMask, int maskStep, ZebiSize roiSize, int coi, Zeb64f* pValue);
ZebStatus zebiNormRel_L2_16u_C3CMR(const Zeb16u* pSrc1, int src1Step, const Zeb16u* pSrc2, int src2Step,
                                   const Zeb8u* pMask, int maskStep, ZebiSize roiSize, int coi, Zeb64f* pValue);
ZebStatus zebiNormRel_L2_32f_C3CMR(const Zeb32f* pSrc1, int src1Step, const Zeb32f* pSrc2, int src2Step,
                                   const Zeb8u* pMask, int maskStep, ZebiSize roiSize, int coi, Zeb64f* pValue);
/** @} */

/**
 * @defgroup mean Mean and standard deviation
 *
 * Of the n pixels of the region (C1R), of those whose mask byte is not zero (C1MR), or of one channel, coi = 1, 2 or 3,
 * of a three-channel image, whole (C3CR) or under a mask (C3CMR). The deviation is that of the population: the divisor
 * is n. pMean and pStdDev may be null and are then not written; if both are, only the checks are made. With n = 0 both
 * are 0.
 *
 * 8u, 8s, 16u: with the exact sums S1 of the values and S2 of their squares
 *
 *     mean   = S1 / n
 *     stdDev = sqrt(n x S2 - S1 x S1) / n
 *
 * where the difference under the root is an exact integer that is rounded once to double, and the root and the
 * quotients are rounded once each. A constant image gives exactly 0.
 *
 * 32f, in double, each step rounded once (sums shifted by a sample: T. Chan, G. Golub, R. LeVeque, 1983): K is the
 * first pixel looked at, row by row from left to right, or 0 where that is infinite or not a number; d = src - K; D1 is
 * the sum of d, D2 that of d x d by fused steps, each with 8 partial sums: the pixel in column x of the region is added
 * to number x modulo 8, whatever the mask and the channel, and at the end number j + h is added to number j for j =
 * 0..h-1, h = 4, 2, 1. Then
 *
 *     m      = D1 / n
 *     mean   = K + m
 *     stdDev = sqrt(max(0, D2 - m x D1) / n)        m x D1 fused with the difference
 *
 * A value that is not a number makes both results one that is not, with the bits 0x7FF8000000000000; infinities of one
 * sign make the mean that infinity and the deviation not a number; infinities of both signs make both not a number.
 *
 * Masks and channels have no influence on the bits of a result but by the values that they select. The images are only
 * read; outputs may stand at any address outside them. Steps as with the norms.
 *
 * Status: zebStsOk; zebStsErrNullPointer (image or mask); zebStsErrSize; zebStsErrStep; zebStsErrNotEvenStep; C3CR and
 * C3CMR: zebStsErrChannel (coi outside 1..3).
 * @{
 */

/** Mean and standard deviation of an image. */
ZebStatus zebiMean_StdDev_8u_C1R(const Zeb8u* pSrc, int srcStep, ZebiSize roiSize, Zeb64f* pMean, Zeb64f* pStdDev);
ZebStatus zebiMean_StdDev_8s_C1R(const Zeb8s* pSrc, int srcStep, ZebiSize roiSize, Zeb64f* pMean, Zeb64f* pStdDev);
ZebStatus zebiMean_StdDev_16u_C1R(const Zeb16u* pSrc, int srcStep, ZebiSize roiSize, Zeb64f* pMean, Zeb64f* pStdDev);
ZebStatus zebiMean_StdDev_32f_C1R(const Zeb32f* pSrc, int srcStep, ZebiSize roiSize, Zeb64f* pMean, Zeb64f* pStdDev);

/** The same under a mask. */
ZebStatus zebiMean_StdDev_8u_C1MR(const Zeb8u* pSrc, int srcStep, const Zeb8u* pMask, int maskStep, ZebiSize roiSize,
                                  Zeb64f* pMean, Zeb64f* pStdDev);
ZebStatus zebiMean_StdDev_8s_C1MR(const Zeb8s* pSrc, int srcStep, const Zeb8u* pMask, int maskStep, ZebiSize roiSize,
                                  Zeb64f* pMean, Zeb64f* pStdDev);
ZebStatus zebiMean_StdDev_16u_C1MR(const Zeb16u* pSrc, int srcStep, const Zeb8u* pMask, int maskStep, ZebiSize roiSize,
                                   Zeb64f* pMean, Zeb64f* pStdDev);
ZebStatus zebiMean_StdDev_32f_C1MR(const Zeb32f* pSrc, int srcStep, const Zeb8u* pMask, int maskStep, ZebiSize roiSize,
                                   Zeb64f* pMean, Zeb64f* pStdDev);

/** Of one channel. */
ZebStatus zebiMean_StdDev_8u_C3CR(const Zeb8u* pSrc, int srcStep, ZebiSize roiSize, int coi, Zeb64f* pMean,
                                  Zeb64f* pStdDev);
ZebStatus zebiMean_StdDev_8s_C3CR(const Zeb8s* pSrc, int srcStep, ZebiSize roiSize, int coi, Zeb64f* pMean,
                                  Zeb64f* pStdDev);
ZebStatus zebiMean_StdDev_16u_C3CR(const Zeb16u* pSrc, int srcStep, ZebiSize roiSize, int coi, Zeb64f* pMean,
                                   Zeb64f* pStdDev);
ZebStatus zebiMean_StdDev_32f_C3CR(const Zeb32f* pSrc, int srcStep, ZebiSize roiSize, int coi, Zeb64f* pMean,
                                   Zeb64f* pStdDev);

/** Of one channel under a mask. */
ZebStatus zebiMean_StdDev_8u_C3CMR(const Zeb8u* pSrc, int srcStep, const Zeb8u* pMask, int maskStep, ZebiSize roiSize,
                                   int coi, Zeb64f* pMean, Zeb64f* pStdDev);
ZebStatus zebiMean_StdDev_8s_C3CMR(const Zeb8s* pSrc, int srcStep, const Zeb8u* pMask, int maskStep, ZebiSize roiSize,
                                   int coi, Zeb64f* pMean, Zeb64f* pStdDev);
ZebStatus zebiMean_StdDev_16u_C3CMR(const Zeb16u* pSrc, int srcStep, const Zeb8u* pMask, int maskStep, ZebiSize roiSize,
                                    int coi, Zeb64f* pMean, Zeb64f* pStdDev);
ZebStatus zebiMean_StdDev_32f_C3CMR(const Zeb32f* pSrc, int srcStep, const Zeb8u* pMask, int maskStep, ZebiSize roiSize,
                                    int coi, Zeb64f* pMean, Zeb64f* pStdDev);
/** @} */

/**
 * @defgroup extrema Smallest and largest value
 *
 * Of the pixels of the region (C1R), of those whose mask byte is not zero (C1MR), or of one channel, coi = 1, 2 or 3,
 * of a three-channel image, whole (C3CR) or under a mask (C3CMR). 32f pixels that are not numbers take no part;
 * infinities do, and zeros of both signs are equal.
 *
 * *pMinVal and *pMaxVal are the values, exactly, zero as +0; *pMinIndex and *pMaxIndex are column and row, counted from
 * the region's first pixel, of the first pixel row by row from left to right that equals them. Where no pixel takes
 * part the values are 0 and the indices (-1, -1). Outputs may be null and are then not written; if all are, only the
 * checks are made. The image is only read; outputs may stand at any address outside it. Steps as with the norms.
 *
 * Status: zebStsOk; zebStsErrNullPointer (image or mask); zebStsErrSize; zebStsErrStep; zebStsErrNotEvenStep; C3CR and
 * C3CMR: zebStsErrChannel (coi outside 1..3).
 * @{
 */

/** Extremes of an image. */
ZebStatus zebiMinMaxIndx_8u_C1R(const Zeb8u* pSrc, int srcStep, ZebiSize roiSize, Zeb32f* pMinVal, Zeb32f* pMaxVal,
                                ZebiPoint* pMinIndex, ZebiPoint* pMaxIndex);
ZebStatus zebiMinMaxIndx_8s_C1R(const Zeb8s* pSrc, int srcStep, ZebiSize roiSize, Zeb32f* pMinVal, Zeb32f* pMaxVal,
                                ZebiPoint* pMinIndex, ZebiPoint* pMaxIndex);
ZebStatus zebiMinMaxIndx_16u_C1R(const Zeb16u* pSrc, int srcStep, ZebiSize roiSize, Zeb32f* pMinVal, Zeb32f* pMaxVal,
                                 ZebiPoint* pMinIndex, ZebiPoint* pMaxIndex);
ZebStatus zebiMinMaxIndx_32f_C1R(const Zeb32f* pSrc, int srcStep, ZebiSize roiSize, Zeb32f* pMinVal, Zeb32f* pMaxVal,
                                 ZebiPoint* pMinIndex, ZebiPoint* pMaxIndex);

/** The same under a mask. */
ZebStatus zebiMinMaxIndx_8u_C1MR(const Zeb8u* pSrc, int srcStep, const Zeb8u* pMask, int maskStep, ZebiSize roiSize,
                                 Zeb32f* pMinVal, Zeb32f* pMaxVal, ZebiPoint* pMinIndex, ZebiPoint* pMaxIndex);
ZebStatus zebiMinMaxIndx_8s_C1MR(const Zeb8s* pSrc, int srcStep, const Zeb8u* pMask, int maskStep, ZebiSize roiSize,
                                 Zeb32f* pMinVal, Zeb32f* pMaxVal, ZebiPoint* pMinIndex, ZebiPoint* pMaxIndex);
ZebStatus zebiMinMaxIndx_16u_C1MR(const Zeb16u* pSrc, int srcStep, const Zeb8u* pMask, int maskStep, ZebiSize roiSize,
                                  Zeb32f* pMinVal, Zeb32f* pMaxVal, ZebiPoint* pMinIndex, ZebiPoint* pMaxIndex);
ZebStatus zebiMinMaxIndx_32f_C1MR(const Zeb32f* pSrc, int srcStep, const Zeb8u* pMask, int maskStep, ZebiSize roiSize,
                                  Zeb32f* pMinVal, Zeb32f* pMaxVal, ZebiPoint* pMinIndex, ZebiPoint* pMaxIndex);

/** Of one channel. */
ZebStatus zebiMinMaxIndx_8u_C3CR(const Zeb8u* pSrc, int srcStep, ZebiSize roiSize, int coi, Zeb32f* pMinVal,
                                 Zeb32f* pMaxVal, ZebiPoint* pMinIndex, ZebiPoint* pMaxIndex);
ZebStatus zebiMinMaxIndx_8s_C3CR(const Zeb8s* pSrc, int srcStep, ZebiSize roiSize, int coi, Zeb32f* pMinVal,
                                 Zeb32f* pMaxVal, ZebiPoint* pMinIndex, ZebiPoint* pMaxIndex);
ZebStatus zebiMinMaxIndx_16u_C3CR(const Zeb16u* pSrc, int srcStep, ZebiSize roiSize, int coi, Zeb32f* pMinVal,
                                  Zeb32f* pMaxVal, ZebiPoint* pMinIndex, ZebiPoint* pMaxIndex);
ZebStatus zebiMinMaxIndx_32f_C3CR(const Zeb32f* pSrc, int srcStep, ZebiSize roiSize, int coi, Zeb32f* pMinVal,
                                  Zeb32f* pMaxVal, ZebiPoint* pMinIndex, ZebiPoint* pMaxIndex);

/** Of one channel under a mask. */
ZebStatus zebiMinMaxIndx_8u_C3CMR(const Zeb8u* pSrc, int srcStep, const Zeb8u* pMask, int maskStep, ZebiSize roiSize,
                                  int coi, Zeb32f* pMinVal, Zeb32f* pMaxVal, ZebiPoint* pMinIndex,
                                  ZebiPoint* pMaxIndex);
ZebStatus zebiMinMaxIndx_8s_C3CMR(const Zeb8s* pSrc, int srcStep, const Zeb8u* pMask, int maskStep, ZebiSize roiSize,
                                  int coi, Zeb32f* pMinVal, Zeb32f* pMaxVal, ZebiPoint* pMinIndex,
                                  ZebiPoint* pMaxIndex);
ZebStatus zebiMinMaxIndx_16u_C3CMR(const Zeb16u* pSrc, int srcStep, const Zeb8u* pMask, int maskStep, ZebiSize roiSize,
                                   int coi, Zeb32f* pMinVal, Zeb32f* pMaxVal, ZebiPoint* pMinIndex,
                                   ZebiPoint* pMaxIndex);
ZebStatus zebiMinMaxIndx_32f_C3CMR(const Zeb32f* pSrc, int srcStep, const Zeb8u* pMask, int maskStep, ZebiSize roiSize,
                                   int coi, Zeb32f* pMinVal, Zeb32f* pMaxVal, ZebiPoint* pMinIndex,
                                   ZebiPoint* pMaxIndex);
/** @} */

#ifdef __cplusplus
}
#endif

#endif
