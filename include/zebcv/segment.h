/** Distances and fills. */
#ifndef ZEBCV_SEGMENT_H
#define ZEBCV_SEGMENT_H

#include "types.h"

#ifdef __cplusplus
extern "C" {
#endif

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
 * (the seed lies outside the image). On failure neither image nor record is written.
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
