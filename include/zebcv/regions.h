/** Segmentation, labelling and inpainting. */
#ifndef ZEBCV_REGIONS_H
#define ZEBCV_REGIONS_H

#include "types.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * @defgroup segmentation Segmentation from markers
 *
 * Labelled markers grow until every pixel that they can reach belongs to one of them. In a marker image 0 is
 * unlabelled, every other value a label. The neighbourhood is that of norm: zebiNormL1 takes the four pixels above,
 * left, right and below, in this order; zebiNormInf the eight pixels around, row by row. Pixels outside the region are
 * no neighbours. Source and marker image must not overlap.
 *
 * flag 0: every reached pixel is labelled. zebSegmentBoundary: pixels at which floods of different labels meet become
 * V, the largest value of the type (255 or 65535). V is then no label: pixels that hold it on entry are barriers, which
 * stay as they are, are never flooded and pass no flood on; afterwards no two neighbours carry different labels unless
 * both were markers.
 *
 * Pixels that no flood reaches keep 0. Every queue is served first in, first out, so the result is unique. The cost
 * grows with the area, whatever the content. pBuffer is scratch of the size that the query reports, at any address,
 * with any content.
 *
 * Status: zebStsOk; zebStsErrNullPointer (an image or the buffer); zebStsErrSize (width or height below 1);
 * zebStsErrStep; zebStsErrNotEvenStep (16u); zebStsErrNorm (norm neither zebiNormInf nor zebiNormL1);
 * zebStsErrBadArgument (flag neither 0 nor 1); zebStsErrOverflow (the query of the buffer reports it for the size,
 * too).
 * @{
 */

/** Flag of the segmentations: boundaries between segments are marked. */
enum { zebSegmentBoundary = 1 };

/**
 * Bytes of the buffer of the watershed: 5 (width + 2) (height + 2) + 2112 for 8u, 6 (width + 2) (height + 2) + 532800
 * for 16u.
 *
 * zebStsErrNullPointer (pBufferSize), zebStsErrSize (width or height below 1), zebStsErrOverflow (more than 2^31 - 1).
 */
ZebStatus zebiSegmentWatershedGetBufferSize_8u_C1IR(ZebiSize roiSize, int* pBufferSize);
ZebStatus zebiSegmentWatershedGetBufferSize_16u_C1IR(ZebiSize roiSize, int* pBufferSize);
/**
 * Watershed: floods rise from the markers over the relief f = pSrc, one queue for each level.
 *
 * 1. The free (0) neighbours of the markers are appended, each to the queue of its own value f, markers in scan order.
 * 2. The first pixel p of the lowest queue that is not empty is taken; h is that queue's level, which never falls.
 * 3. flag 0: p took the label of the pixel that appended it. zebSegmentBoundary: p takes the one label that its
 *    neighbours hold; where they hold several it becomes V and passes nothing on.
 * 4. The free neighbours q of p are appended to the queues max(f(q), h), and so on from 2.
 *
 * With flag 0 each pixel is taken at the smallest possible value, over all paths from any marker, of the largest f on
 * the path; plateaus are divided midway.
 *
 * F. Meyer, "Color image segmentation" (1992); L. Vincent and P. Soille, "Watersheds in digital spaces" (1991).
 */
ZebStatus zebiSegmentWatershed_8u_C1IR(const Zeb8u* pSrc, int srcStep, Zeb8u* pMarker, int markerStep, ZebiSize roiSize,
                                       ZebiNorm norm, int flag, Zeb8u* pBuffer);
ZebStatus zebiSegmentWatershed_16u_C1IR(const Zeb16u* pSrc, int srcStep, Zeb16u* pMarker, int markerStep,
                                        ZebiSize roiSize, ZebiNorm norm, int flag, Zeb8u* pBuffer);

/** Bytes of the buffer of the gradient segmentation: 10 (width + 2) (height + 2) + 2112; else as for the watershed. */
ZebStatus zebiSegmentGradientGetBufferSize_8u_C1IR(ZebiSize roiSize, int* pBufferSize);
ZebStatus zebiSegmentGradientGetBufferSize_8u_C3IR(ZebiSize roiSize, int* pBufferSize);
/**
 * Gradient segmentation: as the watershed, but a step from p to q costs c = abs(f(p) - f(q)), with three channels the
 * largest of the three differences, so that no gradient image has to be formed.
 *
 * Where a marker or a taken pixel p meets a neighbour q, let t = max(c, h), h = 0 for markers: a free q is appended to
 * the queue t; a q that waits in a higher queue leaves it and is appended to the queue t; either way it takes p's label
 * with flag 0. A q that waits at t or lower stays.
 *
 * With flag 0 each pixel is taken at the smallest possible value, over all paths from any marker, of the largest cost
 * on the path: a minimum spanning forest rooted in the markers. The C3 form reads three channels; its marker image has
 * one.
 *
 * F. Meyer, "Minimum spanning forests for morphological segmentation" (1994).
 */
ZebStatus zebiSegmentGradient_8u_C1IR(const Zeb8u* pSrc, int srcStep, Zeb8u* pMarker, int markerStep, ZebiSize roiSize,
                                      ZebiNorm norm, int flag, Zeb8u* pBuffer);
ZebStatus zebiSegmentGradient_8u_C3IR(const Zeb8u* pSrc, int srcStep, Zeb8u* pMarker, int markerStep, ZebiSize roiSize,
                                      ZebiNorm norm, int flag, Zeb8u* pBuffer);

/**
 * Boundaries: a pixel other than val becomes val when one of its neighbours that follow it in scan order (right and
 * below; for zebiNormInf right, below left, below, below right) differs from it and from val.
 *
 * Values on entry count. 0 is a segment like any other. Afterwards no two neighbours other than val differ, and a
 * second call changes nothing. No scratch.
 *
 * Status: zebStsOk; zebStsErrNullPointer; zebStsErrSize; zebStsErrStep; zebStsErrNotEvenStep (16u); zebStsErrNorm.
 */
ZebStatus zebiBoundSegments_8u_C1IR(Zeb8u* pMarker, int markerStep, ZebiSize roiSize, Zeb8u val, ZebiNorm norm);
ZebStatus zebiBoundSegments_16u_C1IR(Zeb16u* pMarker, int markerStep, ZebiSize roiSize, Zeb16u val, ZebiNorm norm);

/** @} */

/**
 * @defgroup components Connected components
 *
 * Labels for the components of an image, and the removal of small regions. Neighbours are the four pixels beside a
 * pixel (norm zebiNormL1) or the eight around it (zebiNormInf). The cost grows with the area, whatever the content.
 * @{
 */

/**
 * Bytes of the buffer of the labelling, for r = (width + 1) / 2 rounded down: 4 r height + 24 ceil(width / 32) + 64.
 *
 * zebStsErrNullPointer (pBufferSize), zebStsErrSize (width or height below 1), zebStsErrOverflow (more than 2^31 - 1).
 */
ZebStatus zebiLabelMarkersGetBufferSize_8u_C1IR(ZebiSize roiSize, int* pBufferSize);
ZebStatus zebiLabelMarkersGetBufferSize_16u_C1IR(ZebiSize roiSize, int* pBufferSize);
ZebStatus zebiLabelMarkersGetBufferSize_32s_C1IR(ZebiSize roiSize, int* pBufferSize);
/**
 * Labels the connected components of the non-zero pixels, ready to serve as markers.
 *
 * Components are numbered k = 0, 1, 2, ... in the scan order of their first pixels; the pixels of component k become
 * minLabel + (k mod (maxLabel - minLabel + 1)). When the labels run out they start again; pNumber receives the number
 * of components, which tells whether labels were used twice. Zero pixels stay 0.
 *
 * Status: zebStsOk; zebStsErrNullPointer (the image, pNumber or the buffer); zebStsErrSize; zebStsErrStep;
 * zebStsErrNotEvenStep (16u, 32s); zebStsErrOutOfRange (minLabel below 1, or maxLabel above 255 for 8u, 65535 for 16u);
 * zebStsErrRange (minLabel above maxLabel); zebStsErrNorm; zebStsErrOverflow (the query reports it for the size, too).
 */
ZebStatus zebiLabelMarkers_8u_C1IR(Zeb8u* pMarker, int markerStep, ZebiSize roiSize, int minLabel, int maxLabel,
                                   ZebiNorm norm, int* pNumber, Zeb8u* pBuffer);
ZebStatus zebiLabelMarkers_16u_C1IR(Zeb16u* pMarker, int markerStep, ZebiSize roiSize, int minLabel, int maxLabel,
                                    ZebiNorm norm, int* pNumber, Zeb8u* pBuffer);
ZebStatus zebiLabelMarkers_32s_C1IR(Zeb32s* pMarker, int markerStep, ZebiSize roiSize, int minLabel, int maxLabel,
                                    ZebiNorm norm, int* pNumber, Zeb8u* pBuffer);

/**
 * Bytes of the buffer of zebiMarkSpeckles for zeb8u, zeb16u, zeb16s or zeb32f: 4 width height + 24 ceil(width / 32)
 * + 8.
 *
 * zebStsErrNullPointer (pBufferSize), zebStsErrSize (width or height below 1), zebStsErrDataType,
 * zebStsErrOverflow (more than 2^31 - 1).
 */
ZebStatus zebiMarkSpecklesGetBufferSize(ZebiSize roiSize, ZebDataType dataType, int* pBufferSize);
/**
 * Overwrites small regions: every region of at most maxSize pixels becomes newVal as a whole.
 *
 * Two neighbours a and b, neither equal to newVal, are linked when abs(a - b) <= maxDiff; regions are the connected
 * components of these links. Pixels equal to newVal belong to none and separate their neighbours. Integer differences
 * are exact, 32f differences are rounded once; comparisons with a value that is not a number fail, so that such a
 * pixel is a region of its own, and so is an infinity among infinities of its sign. All tests use the values on entry.
 *
 * Status: zebStsOk; zebStsErrNullPointer (the image or the buffer); zebStsErrSize; zebStsErrStep; zebStsErrNotEvenStep
 * (16u, 16s, 32f); zebStsErrSize (maxSize below 1); zebStsErrBadArgument (maxDiff below 0 or not a number);
 * zebStsErrNorm; zebStsErrOverflow (the query reports it for the size, too).
 */
ZebStatus zebiMarkSpeckles_8u_C1IR(Zeb8u* pSrcDst, int srcDstStep, ZebiSize roiSize, Zeb8u newVal, int maxSize,
                                   int maxDiff, ZebiNorm norm, Zeb8u* pBuffer);
ZebStatus zebiMarkSpeckles_16u_C1IR(Zeb16u* pSrcDst, int srcDstStep, ZebiSize roiSize, Zeb16u newVal, int maxSize,
                                    int maxDiff, ZebiNorm norm, Zeb8u* pBuffer);
ZebStatus zebiMarkSpeckles_16s_C1IR(Zeb16s* pSrcDst, int srcDstStep, ZebiSize roiSize, Zeb16s newVal, int maxSize,
                                    int maxDiff, ZebiNorm norm, Zeb8u* pBuffer);
ZebStatus zebiMarkSpeckles_32f_C1IR(Zeb32f* pSrcDst, int srcDstStep, ZebiSize roiSize, Zeb32f newVal, int maxSize,
                                    Zeb32f maxDiff, ZebiNorm norm, Zeb8u* pBuffer);

/** @} */

/**
 * @defgroup inpaint Inpainting
 *
 * Fills the pixels under a mask from their surroundings, in the order of their distance from the mask's edge. The
 * distances, the order and the weights depend on the mask only and are kept in a state.
 */

/**
 * An opaque state: distances T, ranks, fill order and weights for one mask. It is only read by zebiInpaint, so any
 * number of threads may share one. It holds pointers into itself: it may not be moved or copied.
 */
typedef struct ZebiInpaintState ZebiInpaintState;

/** Method of inpainting. */
typedef int ZebiInpaintMethod;

enum {
  zebInpaintTelea = 0,   /**< weights by direction, distance and level set */
  zebInpaintIsophote = 1 /**< weights by the direction of the isophotes and distance */
};

/**
 * Builds a state for the pixels whose mask byte is not zero.
 *
 * T is what zebiFastMarching_8u32f_C1R gives for the mask with the radius `radius + 2`. The masked pixels are filled
 * by ascending T, equal T in scan order. Weights reach over the offsets (dx, dy) with 0 < dx^2 + dy^2 <= radius^2, at
 * most R = floor(radius) a side. The state takes 8 width height + 4 masked + 8 (2R + 1)^2 + 512 bytes at most; one more
 * block is allocated and released again.
 *
 * Status: zebStsOk; zebStsErrNullPointer (ppState or pMask); zebStsErrSize; zebStsErrStep; zebStsErrOutOfRange (radius
 * outside 1..100, or not a number); zebStsErrBadArgument (method); zebStsErrOverflow (a block of more than 2^31 - 1
 * bytes); zebStsErrMemAlloc (nothing stays allocated, *ppState is not written).
 */
ZebStatus zebiInpaintInitAlloc_8u_C1R(ZebiInpaintState** ppState, const Zeb8u* pMask, int maskStep, ZebiSize roiSize,
                                      Zeb32f radius, ZebiInpaintMethod method);
ZebStatus zebiInpaintInitAlloc_8u_C3R(ZebiInpaintState** ppState, const Zeb8u* pMask, int maskStep, ZebiSize roiSize,
                                      Zeb32f radius, ZebiInpaintMethod method);
/** Releases a state. Status: zebStsOk, zebStsErrNullPointer, zebStsErrContextMatch (nothing is released). */
ZebStatus zebiInpaintFree_8u_C1R(ZebiInpaintState* pState);
ZebStatus zebiInpaintFree_8u_C3R(ZebiInpaintState* pState);

/**
 * Copies the source outside the mask and fills the pixels p under it, in the order of the state: the weighted mean
 * sum(w e) / sum(w) over the known pixels q = p + (dx, dy) of the weights' reach, rounded to nearest even. Known is
 * what lies in the image and is not masked, or was filled before. Channels are treated separately; everything is in
 * single precision.
 *
 * With g the gradient of T at p (half the difference of the neighbours; one-sided at an image edge), r = (-dx, -dy), d2
 * = dx^2 + dy^2 and h the gradient of the image at q from known pixels (half the difference of both, the one-sided
 * difference where one is known, else 0):
 *
 * - zebInpaintTelea: w = max(abs(g . r) / sqrt(d2), 1e-6) / d2 / (1 + abs(T(p) - T(q))), e = I(q) + h . r for the eight
 *   nearest q and I(q) farther out.
 * - zebInpaintIsophote: w = max(abs(h x r) / sqrt(d2) / abs(h), 1e-6) / d2, or 1 / d2 where h is 0; e = I(q).
 *
 * 1 / sqrt(d2) and 1 / d2 are single-precision factors. g . r is fma(gx, rx, gy ry). The sums have eight parts each, by
 * (dx + R) mod 8, which grow row by row by fused steps for w e and by additions for w; parts j and j + 4 are added,
 * then 0 and 2, 1 and 3, then these two.
 *
 * A mask without a zero pixel leaves nothing to fill from: the source is copied. Values of the source under the mask
 * are not used otherwise. Source and destination may be the same image with the same step; they must not overlap in any
 * other way. A pixel without a known one about it becomes 0; there is none unless the first pixel of the image lies
 * more than 1000000 pixels inside the mask, since distances begin there with that number.
 *
 * Status: zebStsOk; zebStsErrNullPointer; zebStsErrSize (width or height below 1); zebStsErrStep (C3: below 3 x width);
 * zebStsErrContextMatch (no state, or one for another number of channels); zebStsErrSize (the region is not the
 * state's).
 *
 * A. Telea, "An image inpainting technique based on the fast marching method" (2004); M. Bertalmio, A. Bertozzi, G.
 * Sapiro, "Navier-Stokes, fluid dynamics, and image and video inpainting" (2001).
 */
ZebStatus zebiInpaint_8u_C1R(const Zeb8u* pSrc, int srcStep, Zeb8u* pDst, int dstStep, ZebiSize roiSize,
                             const ZebiInpaintState* pState);
ZebStatus zebiInpaint_8u_C3R(const Zeb8u* pSrc, int srcStep, Zeb8u* pDst, int dstStep, ZebiSize roiSize,
                             const ZebiInpaintState* pState);

#ifdef __cplusplus
}
#endif

#endif
