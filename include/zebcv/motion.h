/** Pyramids, optical flow and motion history. */
#ifndef ZEBCV_MOTION_H
#define ZEBCV_MOTION_H

#include "types.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * @defgroup gausspyramid Halving and doubling
 *
 * Down: the source filtered with the outer product of 1 4 6 4 1 with itself (sum 256), taken at every second pixel from
 * (0, 0) on. roiSize is the source; the destination is ((width + 1) / 2) x ((height + 1) / 2). Outside pixels are
 * mirrored without repeating the edge, as often as needed. Sources of one or two rows are not filtered down the
 * columns: the row sums of the first and the last row are averaged.
 *
 * Up: roiSize is the source; the destination is twice as wide and high. In each dimension pixel s[x] becomes
 * s[x-1] + 6 s[x] + s[x+1] at 2x and 4 s[x] + 4 s[x+1] at 2x + 1, weight 8 (64 for both dimensions). The pixel before
 * the first is the second one, the pixel behind the last is the last itself.
 *
 * Bytes: sums are exact, results (S + 128) >> 8 down and (S + 32) >> 6 up. Floats: row sums are
 * fma(6, c, fma(4, b + d, a + e)) down, fma(6, b, a + c) and 4 (b + c) up; columns likewise from the row sums, times
 * 1/256, 1/32 (one or two rows) and 1/64. The channels of C3 images are filtered independently.
 *
 * Steps are in bytes. Source and destination may not overlap. pBuffer holds as many bytes as the query reports for the
 * source's width, at any address. Method: P. Burt, E. Adelson, 1983.
 *
 * Status, in this order: zebStsErrNullPointer (pSrc, pDst or pBuffer); zebStsErrSize (width or height below 1);
 * zebStsErrStep (a step smaller than its row); zebStsErrNotEvenStep (32f only); zebStsErrOverflow (the query reports it
 * for the width, too); zebStsOk.
 * @{
 */
ZebStatus zebiPyrDown_Gauss5x5_8u_C1R(const Zeb8u* pSrc, int srcStep, Zeb8u* pDst, int dstStep, ZebiSize roiSize,
                                      Zeb8u* pBuffer);
ZebStatus zebiPyrDown_Gauss5x5_8u_C3R(const Zeb8u* pSrc, int srcStep, Zeb8u* pDst, int dstStep, ZebiSize roiSize,
                                      Zeb8u* pBuffer);
ZebStatus zebiPyrDown_Gauss5x5_8s_C1R(const Zeb8s* pSrc, int srcStep, Zeb8s* pDst, int dstStep, ZebiSize roiSize,
                                      Zeb8u* pBuffer);
ZebStatus zebiPyrDown_Gauss5x5_8s_C3R(const Zeb8s* pSrc, int srcStep, Zeb8s* pDst, int dstStep, ZebiSize roiSize,
                                      Zeb8u* pBuffer);
ZebStatus zebiPyrDown_Gauss5x5_32f_C1R(const Zeb32f* pSrc, int srcStep, Zeb32f* pDst, int dstStep, ZebiSize roiSize,
                                       Zeb8u* pBuffer);
ZebStatus zebiPyrDown_Gauss5x5_32f_C3R(const Zeb32f* pSrc, int srcStep, Zeb32f* pDst, int dstStep, ZebiSize roiSize,
                                       Zeb8u* pBuffer);
ZebStatus zebiPyrUp_Gauss5x5_8u_C1R(const Zeb8u* pSrc, int srcStep, Zeb8u* pDst, int dstStep, ZebiSize roiSize,
                                    Zeb8u* pBuffer);
ZebStatus zebiPyrUp_Gauss5x5_8u_C3R(const Zeb8u* pSrc, int srcStep, Zeb8u* pDst, int dstStep, ZebiSize roiSize,
                                    Zeb8u* pBuffer);
ZebStatus zebiPyrUp_Gauss5x5_8s_C1R(const Zeb8s* pSrc, int srcStep, Zeb8s* pDst, int dstStep, ZebiSize roiSize,
                                    Zeb8u* pBuffer);
ZebStatus zebiPyrUp_Gauss5x5_8s_C3R(const Zeb8s* pSrc, int srcStep, Zeb8s* pDst, int dstStep, ZebiSize roiSize,
                                    Zeb8u* pBuffer);
ZebStatus zebiPyrUp_Gauss5x5_32f_C1R(const Zeb32f* pSrc, int srcStep, Zeb32f* pDst, int dstStep, ZebiSize roiSize,
                                     Zeb8u* pBuffer);
ZebStatus zebiPyrUp_Gauss5x5_32f_C3R(const Zeb32f* pSrc, int srcStep, Zeb32f* pDst, int dstStep, ZebiSize roiSize,
                                     Zeb8u* pBuffer);
/**
 * Bytes of pBuffer: ((roiWidth x 4 x channels + 15) / 16) x 96 + 64 down, ((roiWidth x 8 x channels + 15) / 16) x 48 +
 * 64 up, for every type. Status, in this order: zebStsErrNullPointer; zebStsErrSize (roiWidth below 1);
 * zebStsErrNumChannels (not 1 or 3); zebStsErrDataType (not zeb8u, zeb8s or zeb32f); zebStsErrOverflow; zebStsOk.
 */
ZebStatus zebiPyrDownGetBufSize_Gauss5x5(int roiWidth, ZebDataType dataType, int channels, int* pBufSize);
ZebStatus zebiPyrUpGetBufSize_Gauss5x5(int roiWidth, ZebDataType dataType, int channels, int* pBufSize);
/** @} */

/**
 * @defgroup pyramidrecord Pyramid records
 * @{
 */

/**
 * Levels of an image and their scales. One block; the arrays, of level + 1 entries each, lie in it, so a record is
 * neither moved nor copied.
 */
typedef struct ZebiPyramid {
  Zeb8u** pImage; /**< first pixel of each level; null until the caller sets it */
  ZebiSize* pRoi; /**< size of each level; entry 0 is the base */
  Zeb64f* pRate;  /**< scale of each level relative to the base: (1 / rate)^i */
  int* pStep;     /**< row step of each level in bytes; 0 until the caller sets it */
  void* pState;   /**< for the caller, null at first; may hold a layer state. It is not freed with the record */
  int level;      /**< levels above the base */
} ZebiPyramid;

/**
 * The sizes of a source that lead to srcRoi on the way down, smallest and largest. For n = width or height, products in
 * single precision, truncated:
 *
 *   smallest = 1 for n = 1, else max(n + 1, trunc((n - 1) rate) + 1),  largest = max(n + 1, trunc(n rate))
 *
 * Status, in this order: zebStsErrNullPointer; zebStsErrSize (width or height below 1); zebStsErrBadArgument (rate not
 * in (1, 10]); zebStsErrOverflow (a result beyond 2^31 - 1; nothing is written); zebStsOk.
 */
ZebStatus zebiGetPyramidUpROI(ZebiSize srcRoi, ZebiSize* pDstRoiMin, ZebiSize* pDstRoiMax, Zeb32f rate);

/**
 * The size of the next smaller level: max(1, trunc(0.5 + n / rate)) for width and height, in single precision, moved by
 * single steps to where zebiGetPyramidUpROI of it contains the source.
 *
 * Status, in this order: zebStsErrNullPointer; zebStsErrSize; zebStsErrBadArgument (rate not in (1, 10]); zebStsOk.
 */
ZebStatus zebiGetPyramidDownROI(ZebiSize srcRoi, ZebiSize* pDstRoi, Zeb32f rate);

/**
 * Makes a record with the base roiSize and as many levels as requested, or as there are until the size is 1 x 1.
 * Allocates; zebiPyramidFree releases it (zebStsErrNullPointer for null; zebStsErrContextMatch for a record that was
 * not made here, or released before).
 *
 * Status, in this order: zebStsErrNullPointer; zebStsErrSize (width or height below 1); zebStsErrBadArgument (rate not
 * in (1, 10], level below 1); zebStsErrMemAlloc; zebStsOk. *ppPyr is written on success only.
 */
ZebStatus zebiPyramidInitAlloc(ZebiPyramid** ppPyr, int level, ZebiSize roiSize, Zeb32f rate);
ZebStatus zebiPyramidFree(ZebiPyramid* pPyr);
/** @} */

/**
 * @defgroup pyramidlayers Pyramid layers of any rate
 *
 * A state holds a symmetric kernel, a rate in (1, 10] and the largest source size it serves. Only kernel[0] to the
 * centre kernel[kerSize / 2] are used, sum = centre + 2 x (sum of those before it); the other half is their mirror
 * image. Weights are (k x 16384 / sum) >> 1 in units of 2^-13 (8u), (k x 16384 / sum) >> 2 in units of 2^-12 (16u),
 * both saturated to 16 bits, and k / sum (32f). With sum 0 they are k in the same units.
 *
 * Smoothing of a sample c with its neighbours a[j], b[j] at distance j on both sides, in single precision, each step
 * fused, from the nearest neighbour outwards: w[0] c + sum of w[j] x (a[j] + b[j]). Outside pixels are mirrored without
 * repeating the edge, as often as needed. Linear interpolation between neighbours s and t at the fraction f goes along
 * the rows, then down the columns; beyond the last pixel the last one is taken. Positions are formed in double
 * precision, their fractions rounded to single. Integer results are rounded to nearest (0.5 added, truncated) and
 * saturated. Sums and differences of two 32f pixels are formed, so values beyond 2^126, or smaller ones under weights
 * that magnify, may become infinite or NaN.
 *
 * Down: the source is smoothed, columns then rows, and read at (rate x, rate y) as fma(f, t, (1 - f) s), s itself where
 * f is 0; a rate from 1.99998 to 2.00002 counts as 2. The weights are taken as they were truncated, so an integer image
 * may come out a little darker (a white 16u image by as much as the weights lack), and an infinite pixel stays infinite
 * under weights above 0. The destination must have the size of the next level: where the largest source exceeds the
 * kernel in both dimensions the state holds the chain of level sizes, and a source that equals an entry, or else is as
 * high as one, requires the following entry (the last one, 1 x 1, has none: its height counts); all others
 * zebiGetPyramidDownROI of the source. Nothing is allocated. The call uses work rows in the state.
 *
 * Up: the source is read at (x / rate, y / rate) as s + f (t - s), one fused step, and smoothed: both along the rows,
 * then both down the columns. A constant image stays exactly what it is, whatever the rounding of the weights: where
 * sum is not 0 a sample is c + sum of w[j] x ((a[j] - c) + (b[j] - c)). The destination must lie within
 * zebiGetPyramidUpROI of the source. Each call allocates and frees one block.
 *
 * Steps are in bytes and need not be a multiple of the element. Source and destination may not overlap. A state may not
 * be used by two calls at the same time, and is neither moved nor copied: it points into itself.
 *
 * InitAlloc, status in this order: zebStsErrNullPointer (ppState or pKernel); zebStsErrSize (width or height below 1);
 * zebStsErrBadArgument (mode not zebInterLinear, rate not in (1, 10], kerSize even or below 3); zebStsErrMemAlloc;
 * zebStsWarnKernelNotSymmetric (the state is made); zebStsOk.
 *
 * Layer calls, status in this order: zebStsErrNullPointer (pSrc, pDst or pState); zebStsErrSize (source width or height
 * below 1); zebStsErrStep (a step smaller than its row); zebStsErrBadArgument (state's rate); zebStsErrSize
 * (destination not as required); zebStsErrContextMatch (the state is not one of this direction, type and channels;
 * down: before the destination's size); zebStsErrSize (source larger than the state serves); up only:
 * zebStsErrMemAlloc; zebStsOk.
 *
 * Free: zebStsErrNullPointer; zebStsErrContextMatch; zebStsOk.
 * @{
 */
typedef struct ZebiPyramidDownState ZebiPyramidDownState;
typedef struct ZebiPyramidUpState ZebiPyramidUpState;

ZebStatus zebiPyramidLayerDownInitAlloc_8u_C1R(ZebiPyramidDownState** ppState, ZebiSize srcRoi, Zeb32f rate,
                                               const Zeb16s* pKernel, int kerSize, int mode);
ZebStatus zebiPyramidLayerDownInitAlloc_8u_C3R(ZebiPyramidDownState** ppState, ZebiSize srcRoi, Zeb32f rate,
                                               const Zeb16s* pKernel, int kerSize, int mode);
ZebStatus zebiPyramidLayerDownInitAlloc_16u_C1R(ZebiPyramidDownState** ppState, ZebiSize srcRoi, Zeb32f rate,
                                                const Zeb16s* pKernel, int kerSize, int mode);
ZebStatus zebiPyramidLayerDownInitAlloc_16u_C3R(ZebiPyramidDownState** ppState, ZebiSize srcRoi, Zeb32f rate,
                                                const Zeb16s* pKernel, int kerSize, int mode);
ZebStatus zebiPyramidLayerDownInitAlloc_32f_C1R(ZebiPyramidDownState** ppState, ZebiSize srcRoi, Zeb32f rate,
                                                const Zeb32f* pKernel, int kerSize, int mode);
ZebStatus zebiPyramidLayerDownInitAlloc_32f_C3R(ZebiPyramidDownState** ppState, ZebiSize srcRoi, Zeb32f rate,
                                                const Zeb32f* pKernel, int kerSize, int mode);
ZebStatus zebiPyramidLayerDown_8u_C1R(const Zeb8u* pSrc, int srcStep, ZebiSize srcRoiSize, Zeb8u* pDst, int dstStep,
                                      ZebiSize dstRoiSize, ZebiPyramidDownState* pState);
ZebStatus zebiPyramidLayerDown_8u_C3R(const Zeb8u* pSrc, int srcStep, ZebiSize srcRoiSize, Zeb8u* pDst, int dstStep,
                                      ZebiSize dstRoiSize, ZebiPyramidDownState* pState);
ZebStatus zebiPyramidLayerDown_16u_C1R(const Zeb16u* pSrc, int srcStep, ZebiSize srcRoiSize, Zeb16u* pDst, int dstStep,
                                       ZebiSize dstRoiSize, ZebiPyramidDownState* pState);
ZebStatus zebiPyramidLayerDown_16u_C3R(const Zeb16u* pSrc, int srcStep, ZebiSize srcRoiSize, Zeb16u* pDst, int dstStep,
                                       ZebiSize dstRoiSize, ZebiPyramidDownState* pState);
ZebStatus zebiPyramidLayerDown_32f_C1R(const Zeb32f* pSrc, int srcStep, ZebiSize srcRoiSize, Zeb32f* pDst, int dstStep,
                                       ZebiSize dstRoiSize, ZebiPyramidDownState* pState);
ZebStatus zebiPyramidLayerDown_32f_C3R(const Zeb32f* pSrc, int srcStep, ZebiSize srcRoiSize, Zeb32f* pDst, int dstStep,
                                       ZebiSize dstRoiSize, ZebiPyramidDownState* pState);
ZebStatus zebiPyramidLayerDownFree_8u_C1R(ZebiPyramidDownState* pState);
ZebStatus zebiPyramidLayerDownFree_8u_C3R(ZebiPyramidDownState* pState);
ZebStatus zebiPyramidLayerDownFree_16u_C1R(ZebiPyramidDownState* pState);
ZebStatus zebiPyramidLayerDownFree_16u_C3R(ZebiPyramidDownState* pState);
ZebStatus zebiPyramidLayerDownFree_32f_C1R(ZebiPyramidDownState* pState);
ZebStatus zebiPyramidLayerDownFree_32f_C3R(ZebiPyramidDownState* pState);
ZebStatus zebiPyramidLayerUpInitAlloc_8u_C1R(ZebiPyramidUpState** ppState, ZebiSize srcRoi, Zeb32f rate,
                                             const Zeb16s* pKernel, int kerSize, int mode);
ZebStatus zebiPyramidLayerUpInitAlloc_8u_C3R(ZebiPyramidUpState** ppState, ZebiSize srcRoi, Zeb32f rate,
                                             const Zeb16s* pKernel, int kerSize, int mode);
ZebStatus zebiPyramidLayerUpInitAlloc_16u_C1R(ZebiPyramidUpState** ppState, ZebiSize srcRoi, Zeb32f rate,
                                              const Zeb16s* pKernel, int kerSize, int mode);
ZebStatus zebiPyramidLayerUpInitAlloc_16u_C3R(ZebiPyramidUpState** ppState, ZebiSize srcRoi, Zeb32f rate,
                                              const Zeb16s* pKernel, int kerSize, int mode);
ZebStatus zebiPyramidLayerUpInitAlloc_32f_C1R(ZebiPyramidUpState** ppState, ZebiSize srcRoi, Zeb32f rate,
                                              const Zeb32f* pKernel, int kerSize, int mode);
ZebStatus zebiPyramidLayerUpInitAlloc_32f_C3R(ZebiPyramidUpState** ppState, ZebiSize srcRoi, Zeb32f rate,
                                              const Zeb32f* pKernel, int kerSize, int mode);
ZebStatus zebiPyramidLayerUp_8u_C1R(const Zeb8u* pSrc, int srcStep, ZebiSize srcRoiSize, Zeb8u* pDst, int dstStep,
                                    ZebiSize dstRoiSize, ZebiPyramidUpState* pState);
ZebStatus zebiPyramidLayerUp_8u_C3R(const Zeb8u* pSrc, int srcStep, ZebiSize srcRoiSize, Zeb8u* pDst, int dstStep,
                                    ZebiSize dstRoiSize, ZebiPyramidUpState* pState);
ZebStatus zebiPyramidLayerUp_16u_C1R(const Zeb16u* pSrc, int srcStep, ZebiSize srcRoiSize, Zeb16u* pDst, int dstStep,
                                     ZebiSize dstRoiSize, ZebiPyramidUpState* pState);
ZebStatus zebiPyramidLayerUp_16u_C3R(const Zeb16u* pSrc, int srcStep, ZebiSize srcRoiSize, Zeb16u* pDst, int dstStep,
                                     ZebiSize dstRoiSize, ZebiPyramidUpState* pState);
ZebStatus zebiPyramidLayerUp_32f_C1R(const Zeb32f* pSrc, int srcStep, ZebiSize srcRoiSize, Zeb32f* pDst, int dstStep,
                                     ZebiSize dstRoiSize, ZebiPyramidUpState* pState);
ZebStatus zebiPyramidLayerUp_32f_C3R(const Zeb32f* pSrc, int srcStep, ZebiSize srcRoiSize, Zeb32f* pDst, int dstStep,
                                     ZebiSize dstRoiSize, ZebiPyramidUpState* pState);
ZebStatus zebiPyramidLayerUpFree_8u_C1R(ZebiPyramidUpState* pState);
ZebStatus zebiPyramidLayerUpFree_8u_C3R(ZebiPyramidUpState* pState);
ZebStatus zebiPyramidLayerUpFree_16u_C1R(ZebiPyramidUpState* pState);
ZebStatus zebiPyramidLayerUpFree_16u_C3R(ZebiPyramidUpState* pState);
ZebStatus zebiPyramidLayerUpFree_32f_C1R(ZebiPyramidUpState* pState);
ZebStatus zebiPyramidLayerUpFree_32f_C3R(ZebiPyramidUpState* pState);
/** @} */

/**
 * @defgroup opticalflow Pyramidal optical flow
 *
 * Finds points of a first image in a second one, from level maxLev of two pyramids down to level 0. The caller has set
 * pImage and pStep of levels 0 to maxLev of both records, images of the function's type. At level L, u = pPrev x
 * pRate[L] of pPyr1 and v = guess x pRate[L]. The window of winSize x winSize pixels around u, its top left pixel at
 * u - (winSize - 1) / 2, is read from the first image and its Scharr derivatives (edges repeated, times 1/32) with
 * bilinear interpolation, in which a neighbour at fraction 0 takes no part; I2 likewise around v from the second image.
 * Only pixels from the first to the last of an image count. With sums over the pixels of both windows (G: the first):
 *
 *   b = sum (I1 - I2)(Ix, Iy),  d = G^-1 b,  v += d
 *
 * until |d|^2 < threshold^2; or d takes the step before back within 2^-11.5 per coordinate (then v -= d / 2); or
 * maxIter steps are made. A point is lost on the level where det G is below 2^-52, the windows have no pixel in
 * common, or v is no number.
 *
 * pNext holds the guesses on entry and the places found on return (a lost point's last guess), both in level 0.
 * pStatus: 0 for a point tracked to level 0, else the level on which it was lost (0 also for one lost on level 0), its
 * low eight bits where there are more than 127. Sums of squares of 32f pixels are formed in single precision: values
 * beyond some 1e16 may lose points.
 * pError: root of the mean squared difference of the two windows over the pixels that both have; 0 for a lost point.
 * Any coordinate is allowed. The work buffer in the state is used: one call at a time for a state.
 *
 * InitAlloc: roiSize and hint are stored; roiSize bounds the work buffer. Derivatives are formed per window on every
 * level, which gives what images of the Scharr filters give, at whole pixels to the bit. Status, in this order:
 * zebStsErrNullPointer; zebStsErrSize (roiSize or winSize below 1); zebStsErrMemAlloc; zebStsOk.
 *
 * Tracking, status in this order: zebStsErrNullPointer (a record, the state or an array); zebStsErrSize (numFeat or
 * winSize below 1, winSize not the state's); zebStsErrBadArgument (maxLev below 0, maxIter below 1, threshold below
 * 0); zebStsErrContextMatch (the state is not one of this type); zebStsErrBadArgument (a record with fewer
 * than maxLev levels above its base); zebStsErrNullPointer (an array of a record, or an image of those levels);
 * zebStsOk. Nothing is allocated. Records may be filled in by the caller: they are taken as they are.
 *
 * A state is neither moved nor copied: it is released with its work buffer.
 *
 * Free: zebStsErrNullPointer; zebStsErrContextMatch; zebStsOk.
 *
 * Methods: B. Lucas, T. Kanade, 1981; J.-Y. Bouguet, 1999; H. Scharr, 2000.
 * @{
 */
typedef struct ZebiOptFlowPyrLKState ZebiOptFlowPyrLKState;

ZebStatus zebiOpticalFlowPyrLKInitAlloc_8u_C1R(ZebiOptFlowPyrLKState** ppState, ZebiSize roiSize, int winSize,
                                               int hint);
ZebStatus zebiOpticalFlowPyrLK_8u_C1R(ZebiPyramid* pPyr1, ZebiPyramid* pPyr2, const ZebiPoint_32f* pPrev,
                                      ZebiPoint_32f* pNext, Zeb8s* pStatus, Zeb32f* pError, int numFeat, int winSize,
                                      int maxLev, int maxIter, Zeb32f threshold, ZebiOptFlowPyrLKState* pState);
ZebStatus zebiOpticalFlowPyrLKFree_8u_C1R(ZebiOptFlowPyrLKState* pState);
ZebStatus zebiOpticalFlowPyrLKInitAlloc_16u_C1R(ZebiOptFlowPyrLKState** ppState, ZebiSize roiSize, int winSize,
                                                int hint);
ZebStatus zebiOpticalFlowPyrLK_16u_C1R(ZebiPyramid* pPyr1, ZebiPyramid* pPyr2, const ZebiPoint_32f* pPrev,
                                       ZebiPoint_32f* pNext, Zeb8s* pStatus, Zeb32f* pError, int numFeat, int winSize,
                                       int maxLev, int maxIter, Zeb32f threshold, ZebiOptFlowPyrLKState* pState);
ZebStatus zebiOpticalFlowPyrLKFree_16u_C1R(ZebiOptFlowPyrLKState* pState);
ZebStatus zebiOpticalFlowPyrLKInitAlloc_32f_C1R(ZebiOptFlowPyrLKState** ppState, ZebiSize roiSize, int winSize,
                                                int hint);
ZebStatus zebiOpticalFlowPyrLK_32f_C1R(ZebiPyramid* pPyr1, ZebiPyramid* pPyr2, const ZebiPoint_32f* pPrev,
                                       ZebiPoint_32f* pNext, Zeb8s* pStatus, Zeb32f* pError, int numFeat, int winSize,
                                       int maxLev, int maxIter, Zeb32f threshold, ZebiOptFlowPyrLKState* pState);
ZebStatus zebiOpticalFlowPyrLKFree_32f_C1R(ZebiOptFlowPyrLKState* pState);
/** @} */

/**
 * @defgroup motionhistory Motion history
 *
 * A motion history image holds in every pixel the time at which motion was last seen there. A call folds one silhouette
 * into it, in place. With limit = timestamp - mhiDuration, formed once in single precision:
 *
 *   mhi = timestamp   where the silhouette is not 0
 *   mhi = 0           elsewhere, where mhi < limit
 *   mhi as it was     everywhere else
 *
 * A time equal to the limit survives; a time later than timestamp is kept. In a float silhouette -0 is zero and a value
 * that is not a number is motion. Steps are in bytes. Method: A. Bobick, J. Davis, 2001.
 *
 * Status, in this order: zebStsErrNullPointer; zebStsErrSize (width or height below 1); zebStsErrStep (silStep, then
 * mhiStep, smaller than its row); zebStsErrNotEvenStep (a step is no multiple of its element; silStep then mhiStep);
 * zebStsErrOutOfRange (mhiDuration below 0); zebStsOk.
 * @{
 */
ZebStatus zebiUpdateMotionHistory_8u32f_C1IR(const Zeb8u* pSilhouette, int silStep, Zeb32f* pMHI, int mhiStep,
                                             ZebiSize roiSize, Zeb32f timestamp, Zeb32f mhiDuration);
ZebStatus zebiUpdateMotionHistory_16u32f_C1IR(const Zeb16u* pSilhouette, int silStep, Zeb32f* pMHI, int mhiStep,
                                              ZebiSize roiSize, Zeb32f timestamp, Zeb32f mhiDuration);
ZebStatus zebiUpdateMotionHistory_32f_C1IR(const Zeb32f* pSilhouette, int silStep, Zeb32f* pMHI, int mhiStep,
                                           ZebiSize roiSize, Zeb32f timestamp, Zeb32f mhiDuration);
/** @} */

#ifdef __cplusplus
}
#endif

#endif
