/** Edges, lines, peaks and cascades. */
#ifndef ZEBCV_FEATURE_H
#define ZEBCV_FEATURE_H

#include "types.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * @defgroup haar Stages of a Haar cascade (P. Viola and M. Jones, 2001; tilted features R. Lienhart and J. Maydt, 2002)
 *
 * A stage is a list of weak classifiers, each made of weighted rectangles, a threshold and two values. At a pixel whose
 * mask byte is not zero, every classifier forms t = sum of weight x rectangle sum from a summed-area table addressed
 * from that pixel, and contributes value 1 when t < norm x threshold, else value 2, where norm is the pixel's
 * normalisation factor (the deviation of the window, see zebiRectStdDev). A pixel whose sum of values stays below the
 * stage threshold is cleared in the mask; the others are counted. A cascade is run by one call per stage on the same
 * mask.
 *
 * Classifiers are evaluated, and their values added, in this order: those of two rectangles, those of three, the
 * others, each group in the caller's order.
 */

/**
 * An opaque stage. It is only read by the apply functions, so several threads may share one. It points into itself, so
 * it is neither moved nor copied: what does not point right behind its own header is no stage, and every function that
 * takes one answers zebStsErrContextMatch after its other checks. All of its words are taken: a stage of the 32f form
 * cannot be told from one of the 32s form.
 */
typedef struct ZebiHaarClassifier ZebiHaarClassifier;

/**
 * Builds a stage: pFeature, pWeight all rectangles and their weights, classifier after classifier, relative to the
 * top-left corner of the window; pThreshold, pVal1, pVal2, pNum (rectangle count) one entry per classifier; length the
 * number of classifiers. A length of 0 gives a valid empty stage. Corners are computed modulo 2^32: rectangles beyond
 * 2^31 - 1 lie in no table. The stage takes 48 + 24 length + 36 rectangles bytes in one allocation, released by
 * zebiHaarClassifierFree.
 *
 * The Tilted forms take rectangles tilted by 45 degrees: (x, y, w, h) has its top corner at column x, row y and its
 * other corners at (x + w, y + w), (x - h, y + h) and (x + w - h, y + w + h).
 *
 * Status: zebStsOk; zebStsErrNullPointer; zebStsErrSize (length below 0, or a count below 1); zebStsErrBadArgument (a
 * rectangle with a negative corner, or width or height below 1); zebStsErrMemAlloc.
 */
ZebStatus zebiHaarClassifierInitAlloc_32f(ZebiHaarClassifier** ppState, const ZebiRect* pFeature, const Zeb32f* pWeight,
                                          const Zeb32f* pThreshold, const Zeb32f* pVal1, const Zeb32f* pVal2,
                                          const int* pNum, int length);
ZebStatus zebiHaarClassifierInitAlloc_32s(ZebiHaarClassifier** ppState, const ZebiRect* pFeature, const Zeb32s* pWeight,
                                          const Zeb32s* pThreshold, const Zeb32s* pVal1, const Zeb32s* pVal2,
                                          const int* pNum, int length);
ZebStatus zebiTiltedHaarClassifierInitAlloc_32f(ZebiHaarClassifier** ppState, const ZebiRect* pFeature,
                                                const Zeb32f* pWeight, const Zeb32f* pThreshold, const Zeb32f* pVal1,
                                                const Zeb32f* pVal2, const int* pNum, int length);
ZebStatus zebiTiltedHaarClassifierInitAlloc_32s(ZebiHaarClassifier** ppState, const ZebiRect* pFeature,
                                                const Zeb32s* pWeight, const Zeb32s* pThreshold, const Zeb32s* pVal1,
                                                const Zeb32s* pVal2, const int* pNum, int length);

/** Releases a stage. Status: zebStsOk, zebStsErrNullPointer, zebStsErrContextMatch. */
ZebStatus zebiHaarClassifierFree_32f(ZebiHaarClassifier* pState);
ZebStatus zebiHaarClassifierFree_32s(ZebiHaarClassifier* pState);

/**
 * The size of the detection window: the largest x + width and y + height of the rectangles as they were given, tilted
 * ones too, which reach down to y + width + height; (0, 0) for an empty stage. Status: zebStsOk, zebStsErrNullPointer,
 * zebStsErrContextMatch.
 */
ZebStatus zebiGetHaarClassifierSize_32f(const ZebiHaarClassifier* pState, ZebiSize* pSize);
ZebStatus zebiGetHaarClassifierSize_32s(const ZebiHaarClassifier* pState, ZebiSize* pSize);

/**
 * Turns classifiers of an upright stage into tilted ones, for the Mixed functions. pMask has one byte per classifier in
 * the caller's order; flag not zero: those whose byte is not zero become tilted; flag zero: those whose byte is zero.
 * Classifiers that are tilted already stay so.
 *
 * Status, in this order: zebStsErrNullPointer; zebStsErrBadArgument (the stage was created tilted, be it empty);
 * zebStsErrContextMatch; zebStsOk (at once for an empty stage).
 */
ZebStatus zebiTiltHaarFeatures_32f(const Zeb8u* pMask, int flag, ZebiHaarClassifier* pState);
ZebStatus zebiTiltHaarFeatures_32s(const Zeb8u* pMask, int flag, ZebiHaarClassifier* pState);

/**
 * Evaluates a stage. pSrc is the summed-area table (upright, or tilted for a stage created tilted) whose element (r, c)
 * belongs to pixel (r, c) of the region; it must reach the window size beyond every evaluated pixel. Pixels whose mask
 * byte is 0 are neither evaluated nor counted, and nothing of the table or of pNorm is read for them. *pPositive
 * receives the number of pixels that passed; a sum equal to threshold passes. Tilted classifiers of a stage that mixes
 * both are looked up in pSrc as well: such stages are for the Mixed functions.
 *
 * 32s32f: rectangle sums S[x + w, y + h] - S[x, y + h] - S[x + w, y] + S[x, y] modulo 2^32, converted to float; each
 * weighted sum is rounded, then added. 32f: the same in float from left to right.
 * 32s_C1RSfs: weighted sums in 64 bits, multiplied by 2^-scaleFactor and rounded to nearest even; norm x threshold and
 * the sum of values in 64 bits. It takes a stage built by the 32s form, the others one built by the 32f form.
 *
 * Steps in bytes: srcStep, tiltStep and normStep at least 4 x width and multiples of 4; maskStep at least width.
 * A table of offsets is allocated for the duration of the call.
 *
 * Status: zebStsOk, zebStsErrNullPointer, zebStsErrSize, zebStsErrStep, zebStsErrNotEvenStep, zebStsErrContextMatch,
 * zebStsErrMemAlloc.
 */
ZebStatus zebiApplyHaarClassifier_32f_C1R(const Zeb32f* pSrc, int srcStep, const Zeb32f* pNorm, int normStep,
                                          Zeb8u* pMask, int maskStep, ZebiSize roiSize, int* pPositive,
                                          Zeb32f threshold, const ZebiHaarClassifier* pState);
ZebStatus zebiApplyHaarClassifier_32s32f_C1R(const Zeb32s* pSrc, int srcStep, const Zeb32f* pNorm, int normStep,
                                             Zeb8u* pMask, int maskStep, ZebiSize roiSize, int* pPositive,
                                             Zeb32f threshold, const ZebiHaarClassifier* pState);
ZebStatus zebiApplyHaarClassifier_32s_C1RSfs(const Zeb32s* pSrc, int srcStep, const Zeb32s* pNorm, int normStep,
                                             Zeb8u* pMask, int maskStep, ZebiSize roiSize, int* pPositive,
                                             Zeb32s threshold, const ZebiHaarClassifier* pState, int scaleFactor);

/**
 * The same for stages that mix upright and tilted classifiers: pTilt is the tilted table, addressed alike.
 *
 * Status: zebStsOk, zebStsErrNullPointer, zebStsErrSize, zebStsErrStep, zebStsErrNotEvenStep, zebStsErrContextMatch,
 * zebStsErrMemAlloc.
 */
ZebStatus zebiApplyMixedHaarClassifier_32f_C1R(const Zeb32f* pSrc, int srcStep, const Zeb32f* pTilt, int tiltStep,
                                               const Zeb32f* pNorm, int normStep, Zeb8u* pMask, int maskStep,
                                               ZebiSize roiSize, int* pPositive, Zeb32f threshold,
                                               const ZebiHaarClassifier* pState);
ZebStatus zebiApplyMixedHaarClassifier_32s32f_C1R(const Zeb32s* pSrc, int srcStep, const Zeb32s* pTilt, int tiltStep,
                                                  const Zeb32f* pNorm, int normStep, Zeb8u* pMask, int maskStep,
                                                  ZebiSize roiSize, int* pPositive, Zeb32f threshold,
                                                  const ZebiHaarClassifier* pState);
ZebStatus zebiApplyMixedHaarClassifier_32s_C1RSfs(const Zeb32s* pSrc, int srcStep, const Zeb32s* pTilt, int tiltStep,
                                                  const Zeb32s* pNorm, int normStep, Zeb8u* pMask, int maskStep,
                                                  ZebiSize roiSize, int* pPositive, Zeb32s threshold,
                                                  const ZebiHaarClassifier* pState, int scaleFactor);

/**
 * @defgroup peaks Local peaks
 *
 * Lists the pixels at least border pixels from every edge whose magnitude exceeds threshold and that are the largest of
 * their neighbourhood when positive, the smallest when zero or negative. The neighbourhood is the pixel and its 8
 * neighbours (zebiNormInf) or its 4 neighbours (zebiNormL1). Equal neighbours do not compete: every pixel of a plateau
 * is reported. For 32f "equal" allows a difference of the smallest normal float; a value that is not a number is no
 * peak and, as a neighbour, is passed over. The magnitude of the most negative 32s is 2^31.
 *
 * Peaks are stored in scan order as column and row of the region; *pPeakCount receives their number. The search ends
 * when maxPeakCount are found. srcStep in bytes: at least 4 x width and a multiple of 4.
 *
 * Status: zebStsOk; zebStsErrNullPointer; zebStsErrSize (width, height, maxPeakCount or border below 1, or border above
 * half of the width or height); zebStsErrStep; zebStsErrNotEvenStep; zebStsErrBadArgument (another norm);
 * zebStsErrOverflow (the query reports it for the width, too).
 */
ZebStatus zebiFindPeaks3x3_32f_C1R(const Zeb32f* pSrc, int srcStep, ZebiSize roiSize, Zeb32f threshold,
                                   ZebiPoint* pPeak, int maxPeakCount, int* pPeakCount, int norm, int border,
                                   Zeb8u* pBuffer);
ZebStatus zebiFindPeaks3x3_32s_C1R(const Zeb32s* pSrc, int srcStep, ZebiSize roiSize, Zeb32s threshold,
                                   ZebiPoint* pPeak, int maxPeakCount, int* pPeakCount, int norm, int border,
                                   Zeb8u* pBuffer);

/**
 * Bytes of scratch: ((roiWidth + 5) / 4) x 128, with bit 5 set.
 * Status: zebStsOk, zebStsErrNullPointer, zebStsErrSize, zebStsErrOverflow.
 */
ZebStatus zebiFindPeaks3x3GetBufferSize_32f_C1R(int roiWidth, int* pBufferSize);
ZebStatus zebiFindPeaks3x3GetBufferSize_32s_C1R(int roiWidth, int* pBufferSize);

/**
 * @defgroup hough Lines by the Hough transform (P. Hough, 1962; R. Duda and P. Hart, 1972)
 *
 * Every pixel (x, y) that is not zero votes, for every angle theta, for the line x cos(theta) + y sin(theta) = rho.
 *
 * Angles: theta_k, summed up in single precision from 0 in steps of deltaTheta, k = 0 .. A with A = trunc(3.14159 /
 * deltaTheta). Cells: nRho = trunc((2 (width + height) + 1) / deltaRho); cell r stands for rho = deltaRho x (r -
 * (nRho - 1) / 2), the division by 2 being whole. The cell of a pixel is ((x c + y s + 512) >> 10) + (nRho - 1) / 2,
 * kept within 0 .. nRho - 1, with c and s the cosine and sine times 1024 / deltaRho rounded to the nearest integer.
 *
 * A cell is a peak when its count exceeds threshold, exceeds the counts at rho - 1 and at the previous angle, and is at
 * least those at rho + 1 and at the next angle. Peaks are kept by count, largest first, the earlier found first among
 * equals, at most maxLineCount of them; *pLineCount receives their number, pLine[i] the pair (rho, theta = deltaTheta x
 * k) as x and y. When peaks had to be dropped *pLineCount equals maxLineCount; the status is zebStsOk all the same.
 *
 * The Region form lets only cells vote and be searched whose (rho, theta) lie in dstRoi[0] .. dstRoi[1], both included.
 *
 * srcStep is at least 1; steps below the width are taken as they are, the rows then overlap.
 *
 * Status, in this order: zebStsOk; zebStsErrNullPointer; zebStsErrStep; zebStsErrSize (width, height or maxLineCount
 * below 1); zebStsErrBadArgument (deltaRho not above 0 or above width + height, deltaTheta not above 0 or
 * above 3.14159, threshold below 1); zebStsErrRange (Region only: a lower bound above its upper bound);
 * zebStsErrOverflow (the scratch would not fit a 32-bit count).
 */
ZebStatus zebiHoughLine_8u32f_C1R(const Zeb8u* pSrc, int srcStep, ZebiSize roiSize, ZebiPoint_32f delta, int threshold,
                                  ZebiPoint_32f* pLine, int maxLineCount, int* pLineCount, Zeb8u* pBuffer);
ZebStatus zebiHoughLine_Region_8u32f_C1R(const Zeb8u* pSrc, int srcStep, ZebiSize roiSize, ZebiPoint_32f* pLine,
                                         ZebiPoint_32f dstRoi[2], int maxLineCount, int* pLineCount,
                                         ZebiPoint_32f delta, int threshold, Zeb8u* pBuffer);

/**
 * Bytes of scratch for both forms: 16 nRho + (4 width + 48) height + 16 maxLineCount + 8 A + 264.
 * Status: zebStsOk; zebStsErrNullPointer; zebStsErrSize; zebStsErrBadArgument (a delta not above 0); zebStsErrOverflow
 * (also where a negative maxLineCount makes the sum negative).
 */
ZebStatus zebiHoughLineGetSize_8u_C1R(ZebiSize roiSize, ZebiPoint_32f delta, int maxLineCount, int* pBufSize);

/**
 * Angle tables of the probabilistic transform: deltaRho, deltaTheta, hint, then cosine / deltaRho and sine / deltaRho,
 * and what tells them from anything else. They may stand at any address and be moved and copied.
 */
typedef struct ZebiHoughProbSpec ZebiHoughProbSpec;

/**
 * Bytes of the tables, 8 A + 24, and of the scratch, height (width / 8 + 1) + 4 (nRho (A + 1) + height width).
 * Status: zebStsOk; zebStsErrNullPointer; zebStsErrSize; zebStsErrBadArgument (a delta not above 0); zebStsErrOverflow.
 */
ZebStatus zebiHoughProbLineGetSize_8u_C1R(ZebiSize roiSize, ZebiPoint_32f delta, int* pSpecSize, int* pBufSize);

/**
 * Fills the tables. hint is stored only.
 * Status: zebStsOk; zebStsErrSize; zebStsErrBadArgument (a delta not above 0); zebStsErrNullPointer, tested after them;
 * zebStsErrOverflow (the query reports it).
 */
ZebStatus zebiHoughProbLineInit_8u32f_C1R(ZebiSize roiSize, ZebiPoint_32f delta, int hint, ZebiHoughProbSpec* pSpec);

/**
 * Line segments by the progressive probabilistic transform (J. Matas, C. Galambos and J. Kittler, 2000).
 *
 * Edge pixels are drawn in a random order that is the same for every call. A drawn pixel that no segment has taken yet
 * votes for every angle; its cell is trunc(x cos / deltaRho + y sin / deltaRho) + (nRho - 1) / 2 in single precision,
 * kept within 0 .. nRho - 1; with no cell, nRho 0, nothing is found. When its strongest cell (the smallest angle among
 * equals) holds at least threshold votes, the line is followed from the pixel in both directions over the edge pixels
 * that are left, over gaps of at most lineGap pixels. A segment whose larger extent in x or y is at least lineLength is
 * stored; its pixels are taken, and the votes of a pixel are taken back for each of them (drawn or not). Pixels of a
 * shorter one are taken too, but their votes stay.
 *
 * pRect[i] holds the two end points of a segment: (x, y) and, in width and height, (x2, y2). *pLineCount receives the
 * number of segments. The rounding mode of float conversions is as before on return.
 *
 * Status: zebStsOk; zebStsWarnLinesTruncated (another segment was found when maxLineCount were stored);
 * zebStsErrNullPointer; zebStsErrSize (width, height or maxLineCount below 1); zebStsErrBadArgument (threshold below 1,
 * lineLength or lineGap below 0); zebStsErrContextMatch (pSpec holds no tables); zebStsErrOverflow (the scratch would
 * not fit a 32-bit count). srcStep is taken as it is.
 */
ZebStatus zebiHoughProbLine_8u32f_C1R(const Zeb8u* pSrc, int srcStep, ZebiSize roiSize, int threshold, int lineLength,
                                      int lineGap, ZebiRect* pRect, int maxLineCount, int* pLineCount, Zeb8u* pBuffer,
                                      const ZebiHoughProbSpec* pSpec);

/**
 * @defgroup canny Edges (J. Canny, 1986)
 *
 * Magnitude of the gradient, non-maximum suppression along its direction in four sectors, hysteresis with two
 * thresholds and 8-connectivity. Every destination pixel becomes 0 or 255.
 *
 * A pixel survives when its magnitude m is kept by the low threshold and, with |dx| and |dy| compared in single
 * precision, in the horizontal sector (|dy| < 0.41421357 |dx|) left < m and right <= m, in the vertical sector
 * (2.4142137 |dx| < |dy|) upper < m and lower <= m, otherwise both neighbours < m on the diagonal that the gradient
 * points along: upper left and lower right when dx and dy have the same sign, else upper right and lower left. Pixels
 * outside the region count as 0. A survivor above the high threshold is an edge, and so is every survivor that a chain
 * of neighbouring survivors connects to it.
 */

/**
 * Edges from derivative images. Magnitude |dx| + |dy|; 32f: kept when m >= lowThresh, an edge when m > highThresh; 16s:
 * m saturates at 65535, the thresholds are truncated to integers, kept when m > lowThresh, an edge when m > highThresh.
 * The sign of a zero counts in 32f. The destination must not overlap the sources. Steps in bytes: at least the row,
 * multiples of the element.
 *
 * Status: zebStsOk; zebStsErrNullPointer; zebStsErrSize; zebStsErrStep; zebStsErrNotEvenStep; zebStsErrBadArgument
 * (lowThresh below 0 or above highThresh, or not a number); zebStsErrOverflow (the scratch would not fit a 32-bit
 * count).
 */
ZebStatus zebiCanny_32f8u_C1R(const Zeb32f* pSrcDx, int srcDxStep, const Zeb32f* pSrcDy, int srcDyStep, Zeb8u* pDst,
                              int dstStep, ZebiSize roiSize, Zeb32f lowThresh, Zeb32f highThresh, Zeb8u* pBuffer);
ZebStatus zebiCanny_16s8u_C1R(const Zeb16s* pSrcDx, int srcDxStep, const Zeb16s* pSrcDy, int srcDyStep, Zeb8u* pDst,
                              int dstStep, ZebiSize roiSize, Zeb32f lowThresh, Zeb32f highThresh, Zeb8u* pBuffer);

/**
 * Bytes of scratch for w x h pixels: (5 h + 10) (w + 2) + 16 w + 160 when both are below 65533, else
 * (9 h + 18) (w + 2) + 16 w + 160.
 * Status: zebStsOk; zebStsErrNullPointer; zebStsErrSize; zebStsErrOverflow.
 */
ZebStatus zebiCannyGetSize(ZebiSize roiSize, int* pBufferSize);

/**
 * Edges of an 8-bit image. filterType and mask choose the derivatives: zebFilterSobel with zebMskSize3x3 (1 2 1 and
 * -1 0 1) or zebMskSize5x5 (1 4 6 4 1 and -1 -2 0 2 1), zebFilterScharr with zebMskSize3x3 (3 10 3 and -1 0 1), not
 * scaled. norm chooses the magnitude: zebNormL1 |dx| + |dy|, or zebNormL2, the root of fma(dx, dx, dy dy) in single
 * precision. Kept when m > lowThresh, an edge when m > highThresh. The vertical sector begins where
 * |dy| > 2 |dx| + 0.41421357 |dx|.
 *
 * Borders: zebBorderConst (borderValue), zebBorderRepl or zebBorderInMem in the low four bits; side flags replace the
 * rule on their side by the pixels in memory. Rows above and below are extended first, then columns. The destination is
 * written after the whole source has been read and may be the source.
 *
 * Status, in this order: zebStsOk; zebStsErrMaskSize; zebStsErrNullPointer; zebStsErrSize; zebStsErrBadArgument
 * (filterType or norm, then the thresholds as above); zebStsErrBorder; zebStsErrOverflow. Steps are taken as they are.
 */
ZebStatus zebiCannyBorder_8u_C1R(const Zeb8u* pSrc, int srcStep, Zeb8u* pDst, int dstStep, ZebiSize roiSize,
                                 int filterType, int mask, ZebiBorderType borderType, Zeb8u borderValue,
                                 Zeb32f lowThresh, Zeb32f highThresh, int norm, Zeb8u* pBuffer);

/**
 * Bytes of scratch: with b = 2 (zebMskSize3x3) or 4 (zebMskSize5x5) and H = h + b, (H + 16 + 4 H) (w + b) + 64.
 * filterType and dataType are not examined.
 * Status: zebStsOk; zebStsErrNullPointer; zebStsErrSize; zebStsErrMaskSize; zebStsErrOverflow.
 */
ZebStatus zebiCannyBorderGetSize(ZebiSize roiSize, int filterType, int mask, int dataType, int* pBufferSize);

#ifdef __cplusplus
}
#endif

#endif
