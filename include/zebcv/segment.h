/** Distances and fills. */
#ifndef ZEBCV_SEGMENT_H
#define ZEBCV_SEGMENT_H

#include "types.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * @defgroup distance Distance transforms
 *
 * For every pixel of an 8u image the distance to the nearest feature: a zero pixel of the source. Zero pixels get 0.
 * Pixels outside the image are no features.
 *
 * Steps are in bytes: srcStep at least width, dstStep at least width x element size and a multiple of the element size.
 *
 * Status: zebStsOk; zebStsErrNullPointer (an image, the weights or the buffer); zebStsErrSize (width or height below
 * 1); zebStsErrStep; zebStsErrNotEvenStep (dstStep of 16u and 32f); then zebStsErrMetric (a weight is not above 0) or
 * zebStsErrBadArgument (a radius below 0); zebStsErrOverflow (the query of the buffer reports it for the size, too).
 * @{
 */

/**
 * Standard weights of the chamfer transforms: for kerSize 3 a straight and a diagonal step, for kerSize 5 a knight's
 * step (one pixel one way, two the other) as well.
 *
 *     kerSize  norm              32f                 32s
 *     3        zebiNormInf (0)   1, 1                1, 1
 *     3        zebiNormL1 (1)    1, 2                1, 2
 *     3        zebiNormL2 (2)    0.955, 1.3693       2, 3
 *     5        zebiNormInf (0)   1, 1, 2             1, 1, 2
 *     5        zebiNormL1 (1)    1, 2, 3             1, 2, 3
 *     5        zebiNormL2 (2)    1, 1.4, 2.1969      5, 7, 11
 *
 * zebStsErrNullPointer (pMetrics), zebStsErrSize (kerSize neither 3 nor 5), zebStsErrBadArgument (norm).
 */
ZebStatus zebiGetDistanceTransformMask_32f(int kerSize, ZebiNorm norm, Zeb32f* pMetrics);
ZebStatus zebiGetDistanceTransformMask_32s(int kerSize, ZebiNorm norm, Zeb32s* pMetrics);
/**
 * The 32f weights for maskType = 10 x kerSize + norm. A last digit other than 0, 1 or 2 is zebStsErrBadArgument before
 * anything else is looked at.
 */
ZebStatus zebiGetDistanceTransformMask(int maskType, Zeb32f* pMetrics);

/**
 * Chamfer transform: the length of the shortest path of mask steps, in two raster passes.
 *
 * The pass from the top left gives a nonzero pixel the least of value + weight over the neighbours that it has visited
 * (left, upper left, up, upper right; 5x5: the four knight's steps above and left as well), the pass back the least of
 * that and of value + weight over the mirrored neighbours. This is so for any positive weights, also where a diagonal
 * step weighs less than a straight one. A pixel without a visited neighbour starts at infinity: 255 for 8u, 65535 for
 * 16u, the largest finite float for 32f. Sums of 8u and 16u saturate; sums of 32f are single-precision, one step after
 * the other. In an image without a zero pixel all of 8u and 16u is infinity, and all of 32f as long as a weight is too
 * small to change the largest float.
 *
 * The 8u forms may work in place (C1IR); source and destination that overlap otherwise are not supported. No scratch.
 *
 * G. Borgefors, "Distance transformations in digital images" (1986).
 */
ZebStatus zebiDistanceTransform_3x3_8u_C1R(const Zeb8u* pSrc, int srcStep, Zeb8u* pDst, int dstStep, ZebiSize roiSize,
                                           const Zeb32s* pMetrics);
ZebStatus zebiDistanceTransform_5x5_8u_C1R(const Zeb8u* pSrc, int srcStep, Zeb8u* pDst, int dstStep, ZebiSize roiSize,
                                           const Zeb32s* pMetrics);
ZebStatus zebiDistanceTransform_3x3_8u_C1IR(Zeb8u* pSrcDst, int srcDstStep, ZebiSize roiSize, const Zeb32s* pMetrics);
ZebStatus zebiDistanceTransform_5x5_8u_C1IR(Zeb8u* pSrcDst, int srcDstStep, ZebiSize roiSize, const Zeb32s* pMetrics);
ZebStatus zebiDistanceTransform_3x3_8u16u_C1R(const Zeb8u* pSrc, int srcStep, Zeb16u* pDst, int dstStep,
                                              ZebiSize roiSize, const Zeb32s* pMetrics);
ZebStatus zebiDistanceTransform_5x5_8u16u_C1R(const Zeb8u* pSrc, int srcStep, Zeb16u* pDst, int dstStep,
                                              ZebiSize roiSize, const Zeb32s* pMetrics);
ZebStatus zebiDistanceTransform_3x3_8u32f_C1R(const Zeb8u* pSrc, int srcStep, Zeb32f* pDst, int dstStep,
                                              ZebiSize roiSize, const Zeb32f* pMetrics);
ZebStatus zebiDistanceTransform_5x5_8u32f_C1R(const Zeb8u* pSrc, int srcStep, Zeb32f* pDst, int dstStep,
                                              ZebiSize roiSize, const Zeb32f* pMetrics);

/**
 * Bytes of the buffer of the exact transform: 24 x max(width, height), rounded up to a multiple of four pixels, + 56.
 *
 * zebStsErrNullPointer (pBufferSize), zebStsErrSize (width or height below 1), zebStsErrOverflow (more than 2^31 - 1).
 */
ZebStatus zebiTrueDistanceTransformGetBufferSize_8u32f_C1R(ZebiSize roiSize, int* pBufferSize);
/**
 * Exact Euclidean transform: dst = sqrt(min over the features of dx^2 + dy^2), the single-precision number nearest to
 * the true distance, in images of any size.
 *
 * In an image without a zero pixel every distance is the square root of the largest finite float, 1.8446743e19. The
 * cost grows with the area only. pBuffer is scratch of the size that the query reports, at any address, with any
 * content.
 *
 * T. Hirata, "A unified linear-time algorithm for computing distance maps" (1996); A. Meijster, J. Roerdink, W.
 * Hesselink, "A general algorithm for computing distance transforms in linear time" (2000).
 */
ZebStatus zebiTrueDistanceTransform_8u32f_C1R(const Zeb8u* pSrc, int srcStep, Zeb32f* pDst, int dstStep,
                                              ZebiSize roiSize, Zeb8u* pBuffer);

/**
 * Bytes of the buffer of the fast marching: (height + 34) x (((width + 31) & ~31) | 5) + 40.
 *
 * zebStsErrNullPointer (pBufferSize), zebStsErrSize (width or height below 1), zebStsErrOverflow (more than 2^31 - 1).
 */
ZebStatus zebiFastMarchingGetBufferSize_8u32f_C1R(ZebiSize roiSize, int* pBufferSize);
/**
 * Signed distance about the boundary between nonzero pixels, the object, and zero pixels.
 *
 * Zero pixels that have a 4-neighbour in the object are the boundary and get -1e-10. Inside, distances are positive and
 * grow into the object. Outside, distances are negative down to -radius; zero pixels farther out get 0, and so do all
 * that are not on the boundary when radius is 0. In an image without zero pixels distances are measured from its first
 * pixel, which holds 1000000; so does a first pixel that lies farther inside than that.
 *
 * The magnitudes m are a fixed point of the local update, in single precision: with s the smaller magnitude of the left
 * and right neighbour and t that of the upper and lower one (0 on the boundary), m is at most 1 + min(s, t) where
 * |s - t| >= 1 and at most (s + t + sqrt(2 - (s - t)^2)) / 2 elsewhere; outside, magnitudes beyond the radius count as
 * unknown. Rounding makes the last bits depend on the order of updates.
 *
 * radius below 0 is zebStsErrBadArgument; one that is not a number counts as 0. pBuffer is scratch of the size that the
 * query reports, at any address, with any content. Source and destination must not overlap.
 *
 * J. N. Tsitsiklis, "Efficient algorithms for globally optimal trajectories" (1995); solved by sweeping after H. Zhao,
 * "A fast sweeping method for Eikonal equations" (2005).
 */
ZebStatus zebiFastMarching_8u32f_C1R(const Zeb8u* pSrc, int srcStep, Zeb32f* pDst, int dstStep, ZebiSize roiSize,
                                     Zeb32f radius, Zeb8u* pBuffer);

/** @} */

/**
 * @defgroup fill Flood fill
 *
 * Starting at a seed, every pixel that is connected to it (4Con: by edges; 8Con: by edges and corners) and passes a
 * test is painted with a new value, in place. A three-channel pixel passes when all of its channels do. Integer
 * comparisons are exact; bounds of floats are single-precision sums; a value that is not a number never passes. The
 * seed itself is painted in any case.
 *
 * imageStep is in bytes, at least width x channels x element size and a multiple of the element size. pBuffer is
 * scratch of the size that the query reports, at any address, with any content; it is enough for every image. Nothing
 * but the painted pixels changes, except that pixels near a painted run may be written with their own value.
 *
 * Status: zebStsOk; zebStsErrNullPointer (pImage, pRegion, pBuffer or, for three channels, an array of values);
 * zebStsErrSize (width or height below 1); zebStsErrStep; zebStsErrNotEvenStep (16u, 32s, 32f); zebStsErrOutOfRange
 * (the seed lies outside the image); zebStsErrOverflow (the query reports it for the size, too). On failure neither
 * image nor record is written.
 *
 * Span filling after A. R. Smith, "Tint fill" (1979), and P. S. Heckbert, "A seed fill algorithm" (1990).
 * @{
 */

/** What a fill has painted. */
typedef struct ZebiConnectedComp {
  Zeb64f area;     /**< number of painted pixels */
  Zeb64f value[3]; /**< the new value per channel; 0 for the channels that a one-channel image does not have */
  ZebiRect rect;   /**< bounding box of the painted pixels */
} ZebiConnectedComp;

/**
 * Bytes of the buffer of the plain and range fills: 24 x width x height / 4 + 32.
 *
 * zebStsErrNullPointer (pBufSize), zebStsErrSize (width or height below 1), zebStsErrOverflow (more than 2^31 - 1).
 */
ZebStatus zebiFloodFillGetSize(ZebiSize roiSize, int* pBufSize);
/** Bytes of the buffer of the gradient fills: (width + 2) x (height + 2) + 48 x width x height / 3 + 64; else alike. */
ZebStatus zebiFloodFillGetSize_Grad(ZebiSize roiSize, int* pBufSize);

/**
 * Plain fill: pixels that equal the seed's value (as numbers: both zeros of a float are equal).
 *
 * When the seed equals newVal the call returns zebStsOk at once and writes neither image nor record.
 */
ZebStatus zebiFloodFill_4Con_8u_C1IR(Zeb8u* pImage, int imageStep, ZebiSize roiSize, ZebiPoint seed, Zeb8u newVal,
                                     ZebiConnectedComp* pRegion, Zeb8u* pBuffer);
ZebStatus zebiFloodFill_4Con_16u_C1IR(Zeb16u* pImage, int imageStep, ZebiSize roiSize, ZebiPoint seed, Zeb16u newVal,
                                      ZebiConnectedComp* pRegion, Zeb8u* pBuffer);
ZebStatus zebiFloodFill_4Con_32s_C1IR(Zeb32s* pImage, int imageStep, ZebiSize roiSize, ZebiPoint seed, Zeb32s newVal,
                                      ZebiConnectedComp* pRegion, Zeb8u* pBuffer);
ZebStatus zebiFloodFill_4Con_32f_C1IR(Zeb32f* pImage, int imageStep, ZebiSize roiSize, ZebiPoint seed, Zeb32f newVal,
                                      ZebiConnectedComp* pRegion, Zeb8u* pBuffer);
ZebStatus zebiFloodFill_4Con_8u_C3IR(Zeb8u* pImage, int imageStep, ZebiSize roiSize, ZebiPoint seed,
                                     const Zeb8u newVal[3], ZebiConnectedComp* pRegion, Zeb8u* pBuffer);
ZebStatus zebiFloodFill_4Con_16u_C3IR(Zeb16u* pImage, int imageStep, ZebiSize roiSize, ZebiPoint seed,
                                      const Zeb16u newVal[3], ZebiConnectedComp* pRegion, Zeb8u* pBuffer);
ZebStatus zebiFloodFill_4Con_32f_C3IR(Zeb32f* pImage, int imageStep, ZebiSize roiSize, ZebiPoint seed,
                                      const Zeb32f newVal[3], ZebiConnectedComp* pRegion, Zeb8u* pBuffer);
ZebStatus zebiFloodFill_8Con_8u_C1IR(Zeb8u* pImage, int imageStep, ZebiSize roiSize, ZebiPoint seed, Zeb8u newVal,
                                     ZebiConnectedComp* pRegion, Zeb8u* pBuffer);
ZebStatus zebiFloodFill_8Con_16u_C1IR(Zeb16u* pImage, int imageStep, ZebiSize roiSize, ZebiPoint seed, Zeb16u newVal,
                                      ZebiConnectedComp* pRegion, Zeb8u* pBuffer);
ZebStatus zebiFloodFill_8Con_32s_C1IR(Zeb32s* pImage, int imageStep, ZebiSize roiSize, ZebiPoint seed, Zeb32s newVal,
                                      ZebiConnectedComp* pRegion, Zeb8u* pBuffer);
ZebStatus zebiFloodFill_8Con_32f_C1IR(Zeb32f* pImage, int imageStep, ZebiSize roiSize, ZebiPoint seed, Zeb32f newVal,
                                      ZebiConnectedComp* pRegion, Zeb8u* pBuffer);
ZebStatus zebiFloodFill_8Con_8u_C3IR(Zeb8u* pImage, int imageStep, ZebiSize roiSize, ZebiPoint seed,
                                     const Zeb8u newVal[3], ZebiConnectedComp* pRegion, Zeb8u* pBuffer);
ZebStatus zebiFloodFill_8Con_16u_C3IR(Zeb16u* pImage, int imageStep, ZebiSize roiSize, ZebiPoint seed,
                                      const Zeb16u newVal[3], ZebiConnectedComp* pRegion, Zeb8u* pBuffer);
ZebStatus zebiFloodFill_8Con_32f_C3IR(Zeb32f* pImage, int imageStep, ZebiSize roiSize, ZebiPoint seed,
                                      const Zeb32f newVal[3], ZebiConnectedComp* pRegion, Zeb8u* pBuffer);

/**
 * Range fill: pixels within [seed - minDelta, seed + maxDelta], bounds taken from the seed's value before painting and,
 * for integer types, limited to the type.
 *
 * When the seed equals newVal the call returns zebStsOk at once and writes neither image nor record. Painted pixels are
 * not visited again, even where newVal lies in the interval itself.
 *
 * The number of runs that wait to be examined is limited: when a new run makes it width x height / 4 (rounded down),
 * the fill ends with that run painted. The record then tells what has been painted, which may be less than the region,
 * and the status is zebStsOk. In an image of 4 to 7 pixels that has more than one row only the seed's run is filled.
 */
ZebStatus zebiFloodFill_Range4Con_8u_C1IR(Zeb8u* pImage, int imageStep, ZebiSize roiSize, ZebiPoint seed, Zeb8u newVal,
                                          Zeb8u minDelta, Zeb8u maxDelta, ZebiConnectedComp* pRegion, Zeb8u* pBuffer);
ZebStatus zebiFloodFill_Range4Con_16u_C1IR(Zeb16u* pImage, int imageStep, ZebiSize roiSize, ZebiPoint seed,
                                           Zeb16u newVal, Zeb16u minDelta, Zeb16u maxDelta, ZebiConnectedComp* pRegion,
                                           Zeb8u* pBuffer);
ZebStatus zebiFloodFill_Range4Con_32f_C1IR(Zeb32f* pImage, int imageStep, ZebiSize roiSize, ZebiPoint seed,
                                           Zeb32f newVal, Zeb32f minDelta, Zeb32f maxDelta, ZebiConnectedComp* pRegion,
                                           Zeb8u* pBuffer);
ZebStatus zebiFloodFill_Range4Con_8u_C3IR(Zeb8u* pImage, int imageStep, ZebiSize roiSize, ZebiPoint seed,
                                          const Zeb8u newVal[3], const Zeb8u minDelta[3], const Zeb8u maxDelta[3],
                                          ZebiConnectedComp* pRegion, Zeb8u* pBuffer);
ZebStatus zebiFloodFill_Range4Con_16u_C3IR(Zeb16u* pImage, int imageStep, ZebiSize roiSize, ZebiPoint seed,
                                           const Zeb16u newVal[3], const Zeb16u minDelta[3], const Zeb16u maxDelta[3],
                                           ZebiConnectedComp* pRegion, Zeb8u* pBuffer);
ZebStatus zebiFloodFill_Range4Con_32f_C3IR(Zeb32f* pImage, int imageStep, ZebiSize roiSize, ZebiPoint seed,
                                           const Zeb32f newVal[3], const Zeb32f minDelta[3], const Zeb32f maxDelta[3],
                                           ZebiConnectedComp* pRegion, Zeb8u* pBuffer);
ZebStatus zebiFloodFill_Range8Con_8u_C1IR(Zeb8u* pImage, int imageStep, ZebiSize roiSize, ZebiPoint seed, Zeb8u newVal,
                                          Zeb8u minDelta, Zeb8u maxDelta, ZebiConnectedComp* pRegion, Zeb8u* pBuffer);
ZebStatus zebiFloodFill_Range8Con_16u_C1IR(Zeb16u* pImage, int imageStep, ZebiSize roiSize, ZebiPoint seed,
                                           Zeb16u newVal, Zeb16u minDelta, Zeb16u maxDelta, ZebiConnectedComp* pRegion,
                                           Zeb8u* pBuffer);
ZebStatus zebiFloodFill_Range8Con_32f_C1IR(Zeb32f* pImage, int imageStep, ZebiSize roiSize, ZebiPoint seed,
                                           Zeb32f newVal, Zeb32f minDelta, Zeb32f maxDelta, ZebiConnectedComp* pRegion,
                                           Zeb8u* pBuffer);
ZebStatus zebiFloodFill_Range8Con_8u_C3IR(Zeb8u* pImage, int imageStep, ZebiSize roiSize, ZebiPoint seed,
                                          const Zeb8u newVal[3], const Zeb8u minDelta[3], const Zeb8u maxDelta[3],
                                          ZebiConnectedComp* pRegion, Zeb8u* pBuffer);
ZebStatus zebiFloodFill_Range8Con_16u_C3IR(Zeb16u* pImage, int imageStep, ZebiSize roiSize, ZebiPoint seed,
                                           const Zeb16u newVal[3], const Zeb16u minDelta[3], const Zeb16u maxDelta[3],
                                           ZebiConnectedComp* pRegion, Zeb8u* pBuffer);
ZebStatus zebiFloodFill_Range8Con_32f_C3IR(Zeb32f* pImage, int imageStep, ZebiSize roiSize, ZebiPoint seed,
                                           const Zeb32f newVal[3], const Zeb32f minDelta[3], const Zeb32f maxDelta[3],
                                           ZebiConnectedComp* pRegion, Zeb8u* pBuffer);

/**
 * Gradient fill: pixels within [n - minDelta, n + maxDelta], where n is the value before painting of an adjacent pixel
 * that belongs to the region already; the test floats with the region. The size of the buffer comes from
 * zebiFloodFillGetSize_Grad. A new value that equals the seed's is no special case.
 */
ZebStatus zebiFloodFill_Grad4Con_8u_C1IR(Zeb8u* pImage, int imageStep, ZebiSize roiSize, ZebiPoint seed, Zeb8u newVal,
                                         Zeb8u minDelta, Zeb8u maxDelta, ZebiConnectedComp* pRegion, Zeb8u* pBuffer);
ZebStatus zebiFloodFill_Grad4Con_16u_C1IR(Zeb16u* pImage, int imageStep, ZebiSize roiSize, ZebiPoint seed,
                                          Zeb16u newVal, Zeb16u minDelta, Zeb16u maxDelta, ZebiConnectedComp* pRegion,
                                          Zeb8u* pBuffer);
ZebStatus zebiFloodFill_Grad4Con_32f_C1IR(Zeb32f* pImage, int imageStep, ZebiSize roiSize, ZebiPoint seed,
                                          Zeb32f newVal, Zeb32f minDelta, Zeb32f maxDelta, ZebiConnectedComp* pRegion,
                                          Zeb8u* pBuffer);
ZebStatus zebiFloodFill_Grad4Con_8u_C3IR(Zeb8u* pImage, int imageStep, ZebiSize roiSize, ZebiPoint seed,
                                         const Zeb8u newVal[3], const Zeb8u minDelta[3], const Zeb8u maxDelta[3],
                                         ZebiConnectedComp* pRegion, Zeb8u* pBuffer);
ZebStatus zebiFloodFill_Grad4Con_16u_C3IR(Zeb16u* pImage, int imageStep, ZebiSize roiSize, ZebiPoint seed,
                                          const Zeb16u newVal[3], const Zeb16u minDelta[3], const Zeb16u maxDelta[3],
                                          ZebiConnectedComp* pRegion, Zeb8u* pBuffer);
ZebStatus zebiFloodFill_Grad4Con_32f_C3IR(Zeb32f* pImage, int imageStep, ZebiSize roiSize, ZebiPoint seed,
                                          const Zeb32f newVal[3], const Zeb32f minDelta[3], const Zeb32f maxDelta[3],
                                          ZebiConnectedComp* pRegion, Zeb8u* pBuffer);
ZebStatus zebiFloodFill_Grad8Con_8u_C1IR(Zeb8u* pImage, int imageStep, ZebiSize roiSize, ZebiPoint seed, Zeb8u newVal,
                                         Zeb8u minDelta, Zeb8u maxDelta, ZebiConnectedComp* pRegion, Zeb8u* pBuffer);
ZebStatus zebiFloodFill_Grad8Con_16u_C1IR(Zeb16u* pImage, int imageStep, ZebiSize roiSize, ZebiPoint seed,
                                          Zeb16u newVal, Zeb16u minDelta, Zeb16u maxDelta, ZebiConnectedComp* pRegion,
                                          Zeb8u* pBuffer);
ZebStatus zebiFloodFill_Grad8Con_32f_C1IR(Zeb32f* pImage, int imageStep, ZebiSize roiSize, ZebiPoint seed,
                                          Zeb32f newVal, Zeb32f minDelta, Zeb32f maxDelta, ZebiConnectedComp* pRegion,
                                          Zeb8u* pBuffer);
ZebStatus zebiFloodFill_Grad8Con_8u_C3IR(Zeb8u* pImage, int imageStep, ZebiSize roiSize, ZebiPoint seed,
                                         const Zeb8u newVal[3], const Zeb8u minDelta[3], const Zeb8u maxDelta[3],
                                         ZebiConnectedComp* pRegion, Zeb8u* pBuffer);
ZebStatus zebiFloodFill_Grad8Con_16u_C3IR(Zeb16u* pImage, int imageStep, ZebiSize roiSize, ZebiPoint seed,
                                          const Zeb16u newVal[3], const Zeb16u minDelta[3], const Zeb16u maxDelta[3],
                                          ZebiConnectedComp* pRegion, Zeb8u* pBuffer);
ZebStatus zebiFloodFill_Grad8Con_32f_C3IR(Zeb32f* pImage, int imageStep, ZebiSize roiSize, ZebiPoint seed,
                                          const Zeb32f newVal[3], const Zeb32f minDelta[3], const Zeb32f maxDelta[3],
                                          ZebiConnectedComp* pRegion, Zeb8u* pBuffer);

/** @} */

#ifdef __cplusplus
}
#endif

#endif
