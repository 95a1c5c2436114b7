/** Models of a scene seen by a fixed camera: what is foreground in a frame, and learning from frames. */
#ifndef ZEBCV_BACKGROUND_H
#define ZEBCV_BACKGROUND_H

#include "types.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * @defgroup scenehistogram Histogram model of a scene
 *
 * Every pixel keeps up to eight quantised colours with their weights, which are forgotten exponentially. The level of a
 * channel value is its leading levelBits bits; the key of a pixel joins the levels of its channels. All arithmetic is
 * in integers, a weight of 65536 standing for 1; the sum of a pixel's weights stays below it.
 *
 *   init        one entry: the key of the first frame with weight 65535
 *   foreground  the weights of all entries whose levels differ by at most reach in every channel add up to less than
 *               65536 x threshold, rounded to nearest even
 *   update      every weight w becomes (w x (65536 - a)) >> 16; a is added to the entry of the pixel's key, or, where
 *               there is none, the entry with the smallest weight, the first among equals, becomes (key, a)
 *
 * a = max(65536 x learningRate rounded to nearest even, 65536 div (t + 1)), where t counts the calls of update, this
 * one included, up to 65535: the first frames are averaged.
 *
 * Frames are 8u of one or three channels, always as large as the record was made for. The foreground map has one
 * channel, 255 where foreground and 0 elsewhere; all of it is written. pMask of update may be null, then every pixel is
 * learned and maskStep is not looked at; else the pixels whose mask byte is not 0 are, and all others keep their
 * entries. Source and destination must not overlap. Steps are in bytes.
 *
 * InitAlloc makes one allocation of 128 + 32 x width x height bytes; the record must not be moved, and is released with
 * Free. Foreground only reads the record, which threads may share; update needs it alone.
 *
 * Status of InitAlloc, in this order: zebStsErrNullPointer; zebStsErrSize (width or height below 1); zebStsErrStep;
 * zebStsErrBadArgument (a parameter outside its interval or no number); zebStsErrOverflow (the record would exceed
 * 2^31 - 1 bytes); zebStsErrMemAlloc; zebStsOk.
 * Status of foreground and update: zebStsErrNullPointer; zebStsErrSize (width or height below 1); zebStsErrStep (of the
 * frame, then of the map or mask); zebStsErrContextMatch (not a record of this kind and channel count); zebStsErrSize
 * (roiSize is not the record's); zebStsOk.
 * Status of Free: zebStsErrNullPointer; zebStsErrContextMatch (nothing is released); zebStsOk.
 *
 * After: A. Godbehere, A. Matsukawa, K. Goldberg, 2012.
 * @{
 */
typedef struct ZebiFGHistogramState ZebiFGHistogramState;

/** Intervals contain both ends. */
typedef struct ZebiFGHistogramParam {
  int levelBits;       /**< leading bits kept of each channel: 1..8, three channels 1..5; typically 5 */
  int reach;           /**< levels that count as near: 0..3; typically 1 */
  Zeb32f learningRate; /**< 1/1024..1/2; typically 0.01 */
  Zeb32f threshold;    /**< least weight of background: 1/1024..1/2; typically 0.05 */
} ZebiFGHistogramParam;

/** Makes a record of the first frame; one channel. */
ZebStatus zebiFGHistogramInitAlloc_8u_C1R(ZebiFGHistogramState** ppState, const Zeb8u* pSrc, int srcStep,
                                          ZebiSize roiSize, const ZebiFGHistogramParam* pParam);
/** Tells the foreground of a frame. */
ZebStatus zebiFGHistogramForeground_8u_C1R(const Zeb8u* pSrc, int srcStep, Zeb8u* pDst, int dstStep, ZebiSize roiSize,
                                           const ZebiFGHistogramState* pState);
/** Learns a frame, or the pixels of it under a mask. */
ZebStatus zebiFGHistogramUpdate_8u_C1R(const Zeb8u* pSrc, int srcStep, const Zeb8u* pMask, int maskStep,
                                       ZebiSize roiSize, ZebiFGHistogramState* pState);
/** Releases a record. */
ZebStatus zebiFGHistogramFree_8u_C1R(ZebiFGHistogramState* pState);
/** Makes a record of the first frame; three channels. */
ZebStatus zebiFGHistogramInitAlloc_8u_C3R(ZebiFGHistogramState** ppState, const Zeb8u* pSrc, int srcStep,
                                          ZebiSize roiSize, const ZebiFGHistogramParam* pParam);
/** Tells the foreground of a frame. */
ZebStatus zebiFGHistogramForeground_8u_C3R(const Zeb8u* pSrc, int srcStep, Zeb8u* pDst, int dstStep, ZebiSize roiSize,
                                           const ZebiFGHistogramState* pState);
/** Learns a frame, or the pixels of it under a mask. */
ZebStatus zebiFGHistogramUpdate_8u_C3R(const Zeb8u* pSrc, int srcStep, const Zeb8u* pMask, int maskStep,
                                       ZebiSize roiSize, ZebiFGHistogramState* pState);
/** Releases a record. */
ZebStatus zebiFGHistogramFree_8u_C3R(ZebiFGHistogramState* pState);
/** @} */

/**
 * @defgroup scenegaussian Gaussian model of a scene
 *
 * Every channel of every pixel keeps a mean m and a variance v. With d = x - m in single precision, each step rounded
 * once:
 *
 *   init        m = the first frame, v = initVariance
 *   foreground  d d > (threshold threshold) v in at least one channel
 *   update      m = fma(alpha, d, m); v = max(fma(alpha, fma(d, d, -v), v), minVariance)
 *
 * alpha = max(learningRate, 1 / (t + 1)), where t counts the calls of update, this one included, up to 65535.
 *
 * Frames, map, mask and threads are those of the histogram model; the record has 128 + 8 x channels x (width rounded up
 * to a multiple of 8) x height bytes.
 *
 * Status of InitAlloc, in this order: zebStsErrNullPointer; zebStsErrSize; zebStsErrStep; zebStsErrBadArgument (a
 * parameter outside its interval or no number); zebStsErrOverflow; zebStsErrMemAlloc; zebStsOk. Status of foreground
 * and update: zebStsErrNullPointer; zebStsErrSize; zebStsErrStep; zebStsErrContextMatch; zebStsErrSize (roiSize is not
 * the record's); zebStsOk. Free: zebStsErrNullPointer; zebStsErrContextMatch; zebStsOk.
 *
 * After: C. Wren, A. Azarbayejani, T. Darrell, A. Pentland, 1997.
 * @{
 */
typedef struct ZebiFGGaussianState ZebiFGGaussianState;

/** Intervals contain both ends. */
typedef struct ZebiFGGaussianParam {
  Zeb32f learningRate; /**< above 0, up to 1/2; typically 0.005 */
  Zeb32f threshold;    /**< in standard deviations: 1/8..64; typically 3.5 */
  Zeb32f initVariance; /**< minVariance..65025; typically 100 */
  Zeb32f minVariance;  /**< 1/64..65025; typically 4 */
} ZebiFGGaussianParam;

/** Makes a record of the first frame; one channel. */
ZebStatus zebiFGGaussianInitAlloc_8u_C1R(ZebiFGGaussianState** ppState, const Zeb8u* pSrc, int srcStep,
                                         ZebiSize roiSize, const ZebiFGGaussianParam* pParam);
/** Tells the foreground of a frame. */
ZebStatus zebiFGGaussianForeground_8u_C1R(const Zeb8u* pSrc, int srcStep, Zeb8u* pDst, int dstStep, ZebiSize roiSize,
                                          const ZebiFGGaussianState* pState);
/** Learns a frame, or the pixels of it under a mask. */
ZebStatus zebiFGGaussianUpdate_8u_C1R(const Zeb8u* pSrc, int srcStep, const Zeb8u* pMask, int maskStep,
                                      ZebiSize roiSize, ZebiFGGaussianState* pState);
/** Releases a record. */
ZebStatus zebiFGGaussianFree_8u_C1R(ZebiFGGaussianState* pState);
/** Makes a record of the first frame; three channels. */
ZebStatus zebiFGGaussianInitAlloc_8u_C3R(ZebiFGGaussianState** ppState, const Zeb8u* pSrc, int srcStep,
                                         ZebiSize roiSize, const ZebiFGGaussianParam* pParam);
/** Tells the foreground of a frame. */
ZebStatus zebiFGGaussianForeground_8u_C3R(const Zeb8u* pSrc, int srcStep, Zeb8u* pDst, int dstStep, ZebiSize roiSize,
                                          const ZebiFGGaussianState* pState);
/** Learns a frame, or the pixels of it under a mask. */
ZebStatus zebiFGGaussianUpdate_8u_C3R(const Zeb8u* pSrc, int srcStep, const Zeb8u* pMask, int maskStep,
                                      ZebiSize roiSize, ZebiFGGaussianState* pState);
/** Releases a record. */
ZebStatus zebiFGGaussianFree_8u_C3R(ZebiFGGaussianState* pState);
/** @} */

/**
 * @defgroup scenemixture Mixture model of a scene
 *
 * Every pixel keeps a mixture of up to maxComponents Gaussians: a weight w, a variance v (mean squared distance, all
 * channels together) and three means. Weights do not increase from one component to the next; one of weight 0 is
 * absent. Single precision, each step rounded once. For a pixel x, d = x - m and D = fma(d2, d2, fma(d1, d1, d0 d0)):
 *
 *   init        one component: weight 1, initVariance, the first frame's pixel
 *   classify    a component belongs to the background while the weights before it add up to less than backgroundRatio;
 *               the pixel is background where such a component has D < backgroundThreshold^2 v
 *   learn       the first component with D < matchThreshold^2 v is matched. Every weight becomes fma(1 - alpha, w,
 *               -alpha complexityPrior); the matched one gains alpha, others that are not above 0 become absent. The
 *               matched one moves by r = min(alpha / w, 1): m = fma(r, d, m), v = fma(r, D - v, v) within its limits.
 *               Without a match the first absent component, or else the last, becomes (alpha, initVariance, x). It
 *               climbs past lighter ones, and the weights are multiplied by 1 / their sum.
 *
 * alpha = max(learningRate, 1 / (t + 1)), where t counts the calls with a positive rate, this one included, up to
 * 65535. zebiFGMixtureForeground classifies with the record as it stands and then learns at learningRate, 0 to 1/2;
 * with 0 (or -0) the record is left as it is. zebiFGMixtureBackground writes the means of the first component, rounded
 * to nearest even and kept in 0..255: no colour appears that was never seen.
 *
 * Frames are 8u of three channels, always as large as the record was made for. The foreground map has one channel, 255
 * where foreground and 0 elsewhere; all of it is written. Source and destination must not overlap. Steps are in bytes.
 * zebiFGMixtureBackground only reads the record, which threads may share; zebiFGMixtureForeground needs it alone.
 *
 * The record is built by Init in memory of the size that GetBufferSize reports for the same region and maxComponents,
 * at any address; nothing is allocated. It must not be moved. A second Init on the same memory starts anew.
 *
 * Status of GetBufferSize, in this order: zebStsErrNullPointer; zebStsErrSize; zebStsErrBadArgument (maxComponents);
 * zebStsErrOverflow (the size exceeds 2^31 - 1; nothing is written); zebStsOk.
 * Status of Init: as InitAlloc of the histogram model, but nothing can fail to be allocated.
 * Status of foreground: zebStsErrNullPointer; zebStsErrSize; zebStsErrStep; zebStsErrBadArgument (learningRate not in
 * 0..1/2); zebStsErrContextMatch; zebStsErrSize (roiSize is not the record's); zebStsOk. Background: the same without
 * learningRate.
 *
 * After: C. Stauffer, W. Grimson, 1999; Z. Zivkovic, 2004.
 * @{
 */
typedef struct ZebiFGMixtureState ZebiFGMixtureState;

/** Intervals contain both ends. */
typedef struct ZebiFGMixtureParam {
  int maxComponents;          /**< 2..8; typically 5 */
  Zeb32f matchThreshold;      /**< in standard deviations: 1/8..64; typically 3 */
  Zeb32f backgroundThreshold; /**< in standard deviations: 1/8..64; typically 4 */
  Zeb32f backgroundRatio;     /**< weight that the background holds: above 0, up to 1; typically 0.9 */
  Zeb32f complexityPrior;     /**< strength of pruning: 0..1/2; typically 0.05 */
  Zeb32f initVariance;        /**< minVariance..maxVariance; typically 100 */
  Zeb32f minVariance;         /**< 1/64..maxVariance; typically 12 */
  Zeb32f maxVariance;         /**< 1/64..195075; typically 300 */
} ZebiFGMixtureParam;

/** Bytes of a record. */
ZebStatus zebiFGMixtureGetBufferSize_8u_C3R(ZebiSize roiSize, int maxComponents, int* pBufferSize);
/** Builds a record of the first frame. */
ZebStatus zebiFGMixtureInit_8u_C3R(const Zeb8u* pSrc, int srcStep, ZebiSize roiSize, const ZebiFGMixtureParam* pParam,
                                   ZebiFGMixtureState* pState);
/** Tells the foreground of a frame, then learns it. */
ZebStatus zebiFGMixtureForeground_8u_C3R(const Zeb8u* pSrc, int srcStep, Zeb8u* pDst, int dstStep, ZebiSize roiSize,
                                         Zeb32f learningRate, ZebiFGMixtureState* pState);
/** Writes the background. */
ZebStatus zebiFGMixtureBackground_8u_C3R(Zeb8u* pDst, int dstStep, ZebiSize roiSize, const ZebiFGMixtureState* pState);
/** @} */

#ifdef __cplusplus
}
#endif

#endif
