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

/** An opaque stage. It is only read by the apply functions, so several threads may share one. */
typedef struct ZebiHaarClassifier ZebiHaarClassifier;

/**
 * Builds a stage: pFeature, pWeight all rectangles and their weights, classifier after classifier, relative to the
 * top-left corner of the window; pThreshold, pVal1, pVal2, pNum (rectangle count) one entry per classifier; length the
 * number of classifiers. A length of 0 gives a valid empty stage. The stage takes 48 + 24 length + 36 rectangles bytes
 * in one allocation, released by zebiHaarClassifierFree.
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

/** Releases a stage. Status: zebStsOk, zebStsErrNullPointer. */
ZebStatus zebiHaarClassifierFree_32f(ZebiHaarClassifier* pState);
ZebStatus zebiHaarClassifierFree_32s(ZebiHaarClassifier* pState);

/**
 * The size of the detection window: the largest column and the largest row that a corner of any rectangle reaches,
 * counted from the window's corner; (0, 0) for an empty stage. Status: zebStsOk, zebStsErrNullPointer.
 */
ZebStatus zebiGetHaarClassifierSize_32f(const ZebiHaarClassifier* pState, ZebiSize* pSize);
ZebStatus zebiGetHaarClassifierSize_32s(const ZebiHaarClassifier* pState, ZebiSize* pSize);

/**
 * Turns classifiers of an upright stage into tilted ones, for the Mixed functions. pMask has one byte per classifier in
 * the caller's order; flag not zero: those whose byte is not zero become tilted; flag zero: those whose byte is zero.
 * Classifiers that are tilted already stay so.
 *
 * Status: zebStsOk (also, at once, for an empty stage); zebStsErrNullPointer; zebStsErrBadArgument (the stage was
 * created tilted).
 */
ZebStatus zebiTiltHaarFeatures_32f(const Zeb8u* pMask, int flag, ZebiHaarClassifier* pState);
ZebStatus zebiTiltHaarFeatures_32s(const Zeb8u* pMask, int flag, ZebiHaarClassifier* pState);

/**
 * Evaluates a stage. pSrc is the summed-area table (upright, or tilted for a stage created tilted) whose element (r, c)
 * belongs to pixel (r, c) of the region; it must reach the window size beyond every evaluated pixel. Pixels whose mask
 * byte is 0 are neither evaluated nor counted, and nothing of the table or of pNorm is read for them. *pPositive
 * receives the number of pixels that passed; a sum equal to threshold passes.
 *
 * 32s32f: rectangle sums S[x + w, y + h] - S[x, y + h] - S[x + w, y] + S[x, y] modulo 2^32, converted to float; each
 * weighted sum is rounded, then added. 32f: the same in float from left to right.
 * 32s_C1RSfs: weighted sums in 64 bits, multiplied by 2^-scaleFactor and rounded to nearest even; norm x threshold and
 * the sum of values in 64 bits. It takes a stage built by the 32s form, the others one built by the 32f form.
 *
 * Steps in bytes: srcStep, tiltStep and normStep at least 4 x width and multiples of 4; maskStep at least width.
 * A table of offsets is allocated for the duration of the call.
 *
 * Status: zebStsOk, zebStsErrNullPointer, zebStsErrSize, zebStsErrStep, zebStsErrNotEvenStep, zebStsErrMemAlloc.
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

/** The same for stages that mix upright and tilted classifiers: pTilt is the tilted table, addressed alike. */
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

#ifdef __cplusplus
}
#endif

#endif
