/** Corners by the segment test, lists of them, suppression of straight lines. */
#ifndef ZEBCV_FASTN_H
#define ZEBCV_FASTN_H

#include "types.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * @defgroup fastn Segment test
 *
 * A pixel p is a corner where an arc of arcLength neighbouring positions of a circle around it is brighter than it, or
 * darker, by more than threshold. Circles, clockwise from the positive x axis, y downwards:
 *
 *   radius 1, P = 8    (1,0) (1,1) (0,1) (-1,1)
 *   radius 2, P = 12   (2,0) (2,1) (1,2) (0,2) (-1,2) (-2,1)
 *   radius 3, P = 16   (3,0) (3,1) (2,2) (1,3) (0,3) (-1,3) (-2,2) (-3,1)
 *
 * and then the same positions with both signs changed, in the same order.
 *
 * brighter = the maximum over the P arcs of the minimum of I - p on the arc, darker the same of p - I; the score s is
 * the larger of the two. The pixel is a corner where s > threshold; s - 1 is the largest threshold under which it still
 * is one. Pixels nearer than the radius to an edge of the region are none; nothing outside the region is read.
 *
 * With zebFastNNonMax a corner stays only where s is above the scores of its upper left, upper, upper right and left
 * neighbour and not below those of the four others; what is no corner counts 0. pDst gets s (zebFastNScore) or 255
 * where a corner stays and 0 elsewhere, the whole region.
 *
 * pOrient may be null, then orientStep is not looked at; else it gets 0 where pDst is 0 and 1 + d, plus 128 where the
 * arc is darker. d in 0..2P - 1 is the direction of the middle of the arc in steps of 180 / P degrees, clockwise from
 * the positive x axis: of the longest run of positions that differ by more than threshold, the first among equals; 0
 * where all do. An arc counts as brighter where both polarities have the same score.
 *
 * The state has 32 bytes, in the caller's memory at any address; it may be copied, and serve any number of threads,
 * each with its own buffer. pBuffer holds as many bytes as GetBufferSize reports, which do not depend on the height.
 * Source and destinations must not overlap. Steps are in bytes.
 *
 * Status of GetSize and Init, in this order: zebStsErrNullPointer; zebStsErrOutOfRange (circleRadius not in 1..3, then
 * arcLength not in 1..P); of Init also zebStsErrThreshold (threshold below 0), zebStsErrBadArgument (any other option);
 * zebStsOk.
 * Status of GetBufferSize: zebStsErrNullPointer; zebStsErrSize; zebStsErrContextMatch (not such a state);
 * zebStsErrOverflow (more than 2^31 - 1 bytes; nothing is written); zebStsOk.
 * Status of the test: zebStsErrNullPointer; zebStsErrSize (width or height below 1); zebStsErrStep (a step smaller than
 * its row); zebStsErrContextMatch; zebStsErrOverflow (the buffer could not be sized); zebStsOk.
 *
 * Method: E. Rosten, T. Drummond, 2006.
 * @{
 */
typedef struct ZebiFastNState ZebiFastNState;

/** Options, to be OR-ed. */
enum {
  zebFastNScore = 1, /**< write scores instead of 255 */
  zebFastNNonMax = 2 /**< keep local maxima of the score only */
};

/** Bytes of a state: 32. */
ZebStatus zebiFastNGetSize(int circleRadius, int arcLength, int* pSpecSize);
/** Builds a state. */
ZebStatus zebiFastNInit(int circleRadius, int arcLength, int threshold, int options, ZebiFastNState* pSpec);
/** Bytes of scratch for a region of this width. */
ZebStatus zebiFastNGetBufferSize(ZebiSize roiSize, const ZebiFastNState* pSpec, int* pBufferSize);
/** Corners and, where wanted, their orientations. */
ZebStatus zebiFastN_8u_C1R(const Zeb8u* pSrc, int srcStep, Zeb8u* pDst, int dstStep, Zeb8u* pOrient, int orientStep,
                           ZebiSize roiSize, const ZebiFastNState* pSpec, Zeb8u* pBuffer);
/** @} */

/** One corner of a list. */
typedef struct ZebiFastNCorner {
  int x;        /**< column in the region */
  int y;        /**< row */
  int score;    /**< the value of the map */
  int polarity; /**< +1 the arc is brighter than the centre, -1 darker, 0 not known */
  Zeb32f
      angle; /**< of the middle of the arc, degrees clockwise from the positive x axis, in [0, 360); 0 if not known */
} ZebiFastNCorner;

/**
 * The pixels of a map that are not 0, rows from top to bottom and by increasing column, at most maxCount of them: the
 * first ones. Any 8-bit map will do. pOrient may be null, then orientStep is not looked at, polarity and angle are 0;
 * the state tells what an orientation means.
 *
 * Status, in this order: zebStsErrNullPointer (pSrc, pCorner, pCount, pSpec); zebStsErrSize (width, height or maxCount
 * below 1); zebStsErrStep; zebStsErrContextMatch; zebStsOk, also where the list is full.
 */
ZebStatus zebiFastN2DToVec_8u(const Zeb8u* pSrc, int srcStep, const Zeb8u* pOrient, int orientStep, ZebiSize roiSize,
                              ZebiFastNCorner* pCorner, int maxCount, int* pCount, const ZebiFastNState* pSpec);

/**
 * Line suppression: removes responses that only follow a straight line. A pixel v that is not 0 looks at its ring, the
 * N = 8 neighbours (mask zebMskSize3x3) or the N = 16 pixels two columns or rows away (zebMskSize5x5). A position of it
 * is strong where its pixel is at least max(v - tolerance, 1). The pixel lies on a line, and becomes 0, where exactly
 * two runs of strong positions stand around the ring, none longer than N / 4, their middles at least 135 degrees apart.
 * All decisions are made on source values. Ends, junctions, right angles and blobs stay.
 *
 * Border: the low three bits of borderType are zebBorderConst (borderValue), zebBorderRepl or zebBorderInMem; side
 * flags as in the filters. Not in place. Steps are in bytes. pBuffer holds as many bytes as GetBufferSize reports.
 *
 * Status, in this order: zebStsErrNullPointer; zebStsErrSize; zebStsErrStep; zebStsErrMaskSize; zebStsErrBorder;
 * zebStsErrOverflow (the buffer could not be sized); zebStsOk. GetBufferSize: zebStsErrNullPointer; zebStsErrSize;
 * zebStsErrMaskSize; zebStsErrOverflow (more than 2^31 - 1 bytes; nothing is written); zebStsOk.
 * @{
 */
ZebStatus zebiLineSuppressionGetBufferSize_8u_C1R(ZebiSize roiSize, int mask, int* pBufferSize);
ZebStatus zebiLineSuppression_8u_C1R(const Zeb8u* pSrc, int srcStep, Zeb8u* pDst, int dstStep, ZebiSize roiSize,
                                     int mask, Zeb8u tolerance, ZebiBorderType borderType, Zeb8u borderValue,
                                     Zeb8u* pBuffer);
/** @} */

#ifdef __cplusplus
}
#endif

#endif
