/** Morphology: erosion and dilation. */
#ifndef ZEBCV_MORPH_H
#define ZEBCV_MORPH_H

#include "types.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * @defgroup morphology Erosion and dilation
 *
 * Erosion of a pixel is the minimum, dilation the maximum of the source pixels under the elements of a mask whose
 * anchor lies on the pixel, channel by channel. A mask is maskSize.height rows of maskSize.width bytes without padding;
 * a byte that is not zero is an element. A mask without elements copies the image. Dilation does not reflect the mask.
 *
 * The mask is analysed once, when a state is built. Rectangles cost the same at any size but for the logarithm of the
 * width (running minima in blocks: van Herk, 1992; Gil and Werman, 1993); masks whose rows are single runs around the
 * anchor column (crosses, discs, diamonds: "ellipses") filter each row once for each distinct run length; any other
 * mask is taken element by element.
 *
 * Images: 8u and 32f with one, three or four channels, 16u and 16s with one, and bit-packed ones (1u): the leftmost
 * pixel of a byte is its most significant bit, a region starts at that bit of its first byte, a row takes
 * (width + 7) / 8 bytes, and the bits of the last byte beyond the width keep their value in the destination.
 * Source and destination must not overlap.
 *
 * Pixels outside the region repeat the nearest edge pixel (zebBorderRepl), or are read from the memory around it: on
 * all sides with zebBorderInMem, on single sides with zebBorderRepl and zebBorderInMemTop, -Bottom, -Left, -Right. Only
 * the pixels that the mask reaches are read.
 *
 * Floats: a pixel whose mask covers a value that is not a number gets an unspecified value; which of two zeros of
 * either sign is returned is unspecified. Masks that are taken element by element by their class (see the state), and
 * any mask but an empty one with pixels in memory, return the largest finite values in place of infinities.
 *
 * The state is the same for every call with a region no wider than roiWidth, and no call changes it. It begins with 20
 * words: pointers to the mask copy, the erode and dilate tables, the scratch and the shape record; width, height,
 * anchor column and row of the mask (of the rectangle, relative to it, where the mask is one); right and lower reach
 * (general masks); number of distinct run lengths; bytes of scratch by the formula of the class; type code (1 8u,
 * 5 16u, 7 16s, 13 32f, 0 1u); channels; roiWidth; -1; class (0 general, 1 rectangle, 2 ellipse, 3 empty; 1u: 0 or 3);
 * identifier of kind, type code and channels; bytes of scratch that are really used. A state points into itself: it
 * must neither be moved nor copied. What does not carry the identifier of a call's kind, type and channels is refused
 * with zebStsErrContextMatch, after all other checks.
 *
 * Masks of floats with three channels are ellipses from an area (width x height of the mask) of 17, with four channels
 * from 49; smaller ones are general.
 * @{
 */

typedef struct ZebiMorphState ZebiMorphState;

/**
 * Size in bytes of a state with its scratch.
 *
 * With w x h the mask, R = w h rounded up to 16, e bytes a pixel and X = max(m, (h h + 1)(roiWidth e + 32) + 20 h + 36)
 * + 24 h rounded up to 16 + R + 16 h + 48: 33 R + 16 h + 128 + X, where m is what the minimum and
 * maximum filters need: h + 5 rows of roiWidth + 2 w - 2 pixels, each with some vectors to spare, and 16 w h + 128.
 *
 * Status: zebStsOk; zebStsErrNullPointer (pMask or pSize); zebStsErrSize (roiWidth or a mask side below 1);
 * zebStsErrOverflow (more than 2^31 - 1 bytes).
 */
ZebStatus zebiMorphologyGetSize_8u_C1R(int roiWidth, const Zeb8u* pMask, ZebiSize maskSize, int* pSize);
ZebStatus zebiMorphologyGetSize_8u_C3R(int roiWidth, const Zeb8u* pMask, ZebiSize maskSize, int* pSize);
ZebStatus zebiMorphologyGetSize_8u_C4R(int roiWidth, const Zeb8u* pMask, ZebiSize maskSize, int* pSize);
ZebStatus zebiMorphologyGetSize_32f_C1R(int roiWidth, const Zeb8u* pMask, ZebiSize maskSize, int* pSize);
ZebStatus zebiMorphologyGetSize_32f_C3R(int roiWidth, const Zeb8u* pMask, ZebiSize maskSize, int* pSize);
ZebStatus zebiMorphologyGetSize_32f_C4R(int roiWidth, const Zeb8u* pMask, ZebiSize maskSize, int* pSize);

/**
 * Builds a state in memory of the size that zebiMorphologyGetSize gives; nothing is allocated.
 *
 * Status: zebStsOk; zebStsErrNullPointer (pMask); zebStsErrSize (roiWidth or a mask side below 1); zebStsErrAnchor (the
 * anchor outside the mask); zebStsErrNullPointer (pState, tested last); zebStsErrOverflow.
 */
ZebStatus zebiMorphologyInit_8u_C1R(int roiWidth, const Zeb8u* pMask, ZebiSize maskSize, ZebiPoint anchor,
                                    ZebiMorphState* pState);
ZebStatus zebiMorphologyInit_8u_C3R(int roiWidth, const Zeb8u* pMask, ZebiSize maskSize, ZebiPoint anchor,
                                    ZebiMorphState* pState);
ZebStatus zebiMorphologyInit_8u_C4R(int roiWidth, const Zeb8u* pMask, ZebiSize maskSize, ZebiPoint anchor,
                                    ZebiMorphState* pState);
ZebStatus zebiMorphologyInit_32f_C1R(int roiWidth, const Zeb8u* pMask, ZebiSize maskSize, ZebiPoint anchor,
                                     ZebiMorphState* pState);
ZebStatus zebiMorphologyInit_32f_C3R(int roiWidth, const Zeb8u* pMask, ZebiSize maskSize, ZebiPoint anchor,
                                     ZebiMorphState* pState);
ZebStatus zebiMorphologyInit_32f_C4R(int roiWidth, const Zeb8u* pMask, ZebiSize maskSize, ZebiPoint anchor,
                                     ZebiMorphState* pState);

/**
 * Allocates a state of the size that its mask needs and builds it; release it with zebiMorphologyFree. A failure leaves
 * nothing allocated and *ppState as it was.
 *
 * Status: zebStsOk; zebStsErrNullPointer (pMask or ppState); zebStsErrSize; zebStsErrAnchor; zebStsErrMemAlloc;
 * zebStsErrOverflow.
 */
ZebStatus zebiMorphologyInitAlloc_8u_C1R(int roiWidth, const Zeb8u* pMask, ZebiSize maskSize, ZebiPoint anchor,
                                         ZebiMorphState** ppState);
ZebStatus zebiMorphologyInitAlloc_8u_C3R(int roiWidth, const Zeb8u* pMask, ZebiSize maskSize, ZebiPoint anchor,
                                         ZebiMorphState** ppState);
ZebStatus zebiMorphologyInitAlloc_8u_C4R(int roiWidth, const Zeb8u* pMask, ZebiSize maskSize, ZebiPoint anchor,
                                         ZebiMorphState** ppState);
ZebStatus zebiMorphologyInitAlloc_32f_C1R(int roiWidth, const Zeb8u* pMask, ZebiSize maskSize, ZebiPoint anchor,
                                          ZebiMorphState** ppState);
ZebStatus zebiMorphologyInitAlloc_32f_C3R(int roiWidth, const Zeb8u* pMask, ZebiSize maskSize, ZebiPoint anchor,
                                          ZebiMorphState** ppState);
ZebStatus zebiMorphologyInitAlloc_32f_C4R(int roiWidth, const Zeb8u* pMask, ZebiSize maskSize, ZebiPoint anchor,
                                          ZebiMorphState** ppState);

/**
 * Releases a state of zebiMorphologyInitAlloc and clears its identifier. Status: zebStsOk; zebStsErrNullPointer;
 * zebStsErrContextMatch (not a state of this kind).
 */
ZebStatus zebiMorphologyFree(ZebiMorphState* pState);

/**
 * Erosion and dilation with replicated border and the anchor that the state was given, which may lie off the rectangle
 * of the elements. The scratch is in the state: one state serves one call at a time. Steps in bytes.
 *
 * Status: zebStsOk; zebStsErrNullPointer; zebStsErrSize (width or height below 1); zebStsErrStep (a step below the
 * row); zebStsErrNotEvenStep (32f: a step that is no multiple of 4); zebStsErrBadArgument (borderType is not
 * zebBorderRepl); zebStsErrSize (wider than the state's roiWidth); zebStsErrContextMatch (not a state for these
 * elements, or one of zebiMorphologyBorderInit, which has no scratch).
 */
ZebStatus zebiErodeBorderReplicate_8u_C1R(const Zeb8u* pSrc, int srcStep, Zeb8u* pDst, int dstStep, ZebiSize roiSize,
                                          ZebiBorderType borderType, ZebiMorphState* pState);
ZebStatus zebiErodeBorderReplicate_8u_C3R(const Zeb8u* pSrc, int srcStep, Zeb8u* pDst, int dstStep, ZebiSize roiSize,
                                          ZebiBorderType borderType, ZebiMorphState* pState);
ZebStatus zebiErodeBorderReplicate_8u_C4R(const Zeb8u* pSrc, int srcStep, Zeb8u* pDst, int dstStep, ZebiSize roiSize,
                                          ZebiBorderType borderType, ZebiMorphState* pState);
ZebStatus zebiErodeBorderReplicate_32f_C1R(const Zeb32f* pSrc, int srcStep, Zeb32f* pDst, int dstStep, ZebiSize roiSize,
                                           ZebiBorderType borderType, ZebiMorphState* pState);
ZebStatus zebiErodeBorderReplicate_32f_C3R(const Zeb32f* pSrc, int srcStep, Zeb32f* pDst, int dstStep, ZebiSize roiSize,
                                           ZebiBorderType borderType, ZebiMorphState* pState);
ZebStatus zebiErodeBorderReplicate_32f_C4R(const Zeb32f* pSrc, int srcStep, Zeb32f* pDst, int dstStep, ZebiSize roiSize,
                                           ZebiBorderType borderType, ZebiMorphState* pState);
ZebStatus zebiDilateBorderReplicate_8u_C1R(const Zeb8u* pSrc, int srcStep, Zeb8u* pDst, int dstStep, ZebiSize roiSize,
                                           ZebiBorderType borderType, ZebiMorphState* pState);
ZebStatus zebiDilateBorderReplicate_8u_C3R(const Zeb8u* pSrc, int srcStep, Zeb8u* pDst, int dstStep, ZebiSize roiSize,
                                           ZebiBorderType borderType, ZebiMorphState* pState);
ZebStatus zebiDilateBorderReplicate_8u_C4R(const Zeb8u* pSrc, int srcStep, Zeb8u* pDst, int dstStep, ZebiSize roiSize,
                                           ZebiBorderType borderType, ZebiMorphState* pState);
ZebStatus zebiDilateBorderReplicate_32f_C1R(const Zeb32f* pSrc, int srcStep, Zeb32f* pDst, int dstStep,
                                            ZebiSize roiSize, ZebiBorderType borderType, ZebiMorphState* pState);
ZebStatus zebiDilateBorderReplicate_32f_C3R(const Zeb32f* pSrc, int srcStep, Zeb32f* pDst, int dstStep,
                                            ZebiSize roiSize, ZebiBorderType borderType, ZebiMorphState* pState);
ZebStatus zebiDilateBorderReplicate_32f_C4R(const Zeb32f* pSrc, int srcStep, Zeb32f* pDst, int dstStep,
                                            ZebiSize roiSize, ZebiBorderType borderType, ZebiMorphState* pState);

/**
 * Sizes in bytes of a state and of the scratch of the calls that use it: X and 33 R + 16 h + 128 + X as above. 1u: the
 * state takes 3 R + 80 bytes, and X stands on what eight phases of every bordered row take.
 *
 * Status: zebStsOk; zebStsErrNullPointer (pSpecSize or pBufferSize); zebStsErrSize; zebStsErrOverflow.
 */
ZebStatus zebiMorphologyBorderGetSize_8u_C1R(int roiWidth, ZebiSize maskSize, int* pSpecSize, int* pBufferSize);
ZebStatus zebiMorphologyBorderGetSize_8u_C3R(int roiWidth, ZebiSize maskSize, int* pSpecSize, int* pBufferSize);
ZebStatus zebiMorphologyBorderGetSize_8u_C4R(int roiWidth, ZebiSize maskSize, int* pSpecSize, int* pBufferSize);
ZebStatus zebiMorphologyBorderGetSize_16u_C1R(int roiWidth, ZebiSize maskSize, int* pSpecSize, int* pBufferSize);
ZebStatus zebiMorphologyBorderGetSize_16s_C1R(int roiWidth, ZebiSize maskSize, int* pSpecSize, int* pBufferSize);
ZebStatus zebiMorphologyBorderGetSize_32f_C1R(int roiWidth, ZebiSize maskSize, int* pSpecSize, int* pBufferSize);
ZebStatus zebiMorphologyBorderGetSize_32f_C3R(int roiWidth, ZebiSize maskSize, int* pSpecSize, int* pBufferSize);
ZebStatus zebiMorphologyBorderGetSize_32f_C4R(int roiWidth, ZebiSize maskSize, int* pSpecSize, int* pBufferSize);
ZebStatus zebiMorphologyBorderGetSize_1u_C1R(int roiWidth, ZebiSize maskSize, int* pSpecSize, int* pBufferSize);

/**
 * Builds a state whose anchor is the mask's centre, column (width - 1) >> 1 and row (height - 1) >> 1. The scratch is
 * not used, and not kept.
 *
 * Status: zebStsOk; zebStsErrNullPointer (pMask, pSpec or pBuffer); zebStsErrSize; zebStsErrOverflow.
 */
ZebStatus zebiMorphologyBorderInit_8u_C1R(int roiWidth, const Zeb8u* pMask, ZebiSize maskSize, ZebiMorphState* pSpec,
                                          Zeb8u* pBuffer);
ZebStatus zebiMorphologyBorderInit_8u_C3R(int roiWidth, const Zeb8u* pMask, ZebiSize maskSize, ZebiMorphState* pSpec,
                                          Zeb8u* pBuffer);
ZebStatus zebiMorphologyBorderInit_8u_C4R(int roiWidth, const Zeb8u* pMask, ZebiSize maskSize, ZebiMorphState* pSpec,
                                          Zeb8u* pBuffer);
ZebStatus zebiMorphologyBorderInit_16u_C1R(int roiWidth, const Zeb8u* pMask, ZebiSize maskSize, ZebiMorphState* pSpec,
                                           Zeb8u* pBuffer);
ZebStatus zebiMorphologyBorderInit_16s_C1R(int roiWidth, const Zeb8u* pMask, ZebiSize maskSize, ZebiMorphState* pSpec,
                                           Zeb8u* pBuffer);
ZebStatus zebiMorphologyBorderInit_32f_C1R(int roiWidth, const Zeb8u* pMask, ZebiSize maskSize, ZebiMorphState* pSpec,
                                           Zeb8u* pBuffer);
ZebStatus zebiMorphologyBorderInit_32f_C3R(int roiWidth, const Zeb8u* pMask, ZebiSize maskSize, ZebiMorphState* pSpec,
                                           Zeb8u* pBuffer);
ZebStatus zebiMorphologyBorderInit_32f_C4R(int roiWidth, const Zeb8u* pMask, ZebiSize maskSize, ZebiMorphState* pSpec,
                                           Zeb8u* pBuffer);
ZebStatus zebiMorphologyBorderInit_1u_C1R(int roiWidth, const Zeb8u* pMask, ZebiSize maskSize, ZebiMorphState* pSpec,
                                          Zeb8u* pBuffer);

/**
 * Erosion and dilation with replicated or in-memory border. pBuffer: as many bytes as zebiMorphologyBorderGetSize
 * gives; calls with scratch of their own may share a state. borderValue is not used. Steps in bytes.
 *
 * Status: zebStsOk; zebStsErrNullPointer; zebStsErrSize (width or height below 1); zebStsErrStep (a step below the
 * row); zebStsErrNotEvenStep (16u, 16s, 32f: a step that is no multiple of the element); zebStsErrBorder (the low four
 * bits of borderType are neither zebBorderRepl nor zebBorderInMem); zebStsErrSize (wider than the state's roiWidth);
 * zebStsErrContextMatch (not a state for these elements).
 */
ZebStatus zebiErodeBorder_8u_C1R(const Zeb8u* pSrc, int srcStep, Zeb8u* pDst, int dstStep, ZebiSize roiSize,
                                 ZebiBorderType borderType, Zeb8u borderValue, const ZebiMorphState* pSpec,
                                 Zeb8u* pBuffer);
ZebStatus zebiErodeBorder_8u_C3R(const Zeb8u* pSrc, int srcStep, Zeb8u* pDst, int dstStep, ZebiSize roiSize,
                                 ZebiBorderType borderType, Zeb8u borderValue, const ZebiMorphState* pSpec,
                                 Zeb8u* pBuffer);
ZebStatus zebiErodeBorder_8u_C4R(const Zeb8u* pSrc, int srcStep, Zeb8u* pDst, int dstStep, ZebiSize roiSize,
                                 ZebiBorderType borderType, Zeb8u borderValue, const ZebiMorphState* pSpec,
                                 Zeb8u* pBuffer);
ZebStatus zebiErodeBorder_16u_C1R(const Zeb16u* pSrc, int srcStep, Zeb16u* pDst, int dstStep, ZebiSize roiSize,
                                  ZebiBorderType borderType, Zeb16u borderValue, const ZebiMorphState* pSpec,
                                  Zeb8u* pBuffer);
ZebStatus zebiErodeBorder_16s_C1R(const Zeb16s* pSrc, int srcStep, Zeb16s* pDst, int dstStep, ZebiSize roiSize,
                                  ZebiBorderType borderType, Zeb16s borderValue, const ZebiMorphState* pSpec,
                                  Zeb8u* pBuffer);
ZebStatus zebiErodeBorder_32f_C1R(const Zeb32f* pSrc, int srcStep, Zeb32f* pDst, int dstStep, ZebiSize roiSize,
                                  ZebiBorderType borderType, Zeb32f borderValue, const ZebiMorphState* pSpec,
                                  Zeb8u* pBuffer);
ZebStatus zebiErodeBorder_32f_C3R(const Zeb32f* pSrc, int srcStep, Zeb32f* pDst, int dstStep, ZebiSize roiSize,
                                  ZebiBorderType borderType, Zeb32f borderValue, const ZebiMorphState* pSpec,
                                  Zeb8u* pBuffer);
ZebStatus zebiErodeBorder_32f_C4R(const Zeb32f* pSrc, int srcStep, Zeb32f* pDst, int dstStep, ZebiSize roiSize,
                                  ZebiBorderType borderType, Zeb32f borderValue, const ZebiMorphState* pSpec,
                                  Zeb8u* pBuffer);
ZebStatus zebiErodeBorder_1u_C1R(const Zeb8u* pSrc, int srcStep, Zeb8u* pDst, int dstStep, ZebiSize roiSize,
                                 ZebiBorderType borderType, Zeb8u borderValue, const ZebiMorphState* pSpec,
                                 Zeb8u* pBuffer);
ZebStatus zebiDilateBorder_8u_C1R(const Zeb8u* pSrc, int srcStep, Zeb8u* pDst, int dstStep, ZebiSize roiSize,
                                  ZebiBorderType borderType, Zeb8u borderValue, const ZebiMorphState* pSpec,
                                  Zeb8u* pBuffer);
ZebStatus zebiDilateBorder_8u_C3R(const Zeb8u* pSrc, int srcStep, Zeb8u* pDst, int dstStep, ZebiSize roiSize,
                                  ZebiBorderType borderType, Zeb8u borderValue, const ZebiMorphState* pSpec,
                                  Zeb8u* pBuffer);
ZebStatus zebiDilateBorder_8u_C4R(const Zeb8u* pSrc, int srcStep, Zeb8u* pDst, int dstStep, ZebiSize roiSize,
                                  ZebiBorderType borderType, Zeb8u borderValue, const ZebiMorphState* pSpec,
                                  Zeb8u* pBuffer);
ZebStatus zebiDilateBorder_16u_C1R(const Zeb16u* pSrc, int srcStep, Zeb16u* pDst, int dstStep, ZebiSize roiSize,
                                   ZebiBorderType borderType, Zeb16u borderValue, const ZebiMorphState* pSpec,
                                   Zeb8u* pBuffer);
ZebStatus zebiDilateBorder_16s_C1R(const Zeb16s* pSrc, int srcStep, Zeb16s* pDst, int dstStep, ZebiSize roiSize,
                                   ZebiBorderType borderType, Zeb16s borderValue, const ZebiMorphState* pSpec,
                                   Zeb8u* pBuffer);
ZebStatus zebiDilateBorder_32f_C1R(const Zeb32f* pSrc, int srcStep, Zeb32f* pDst, int dstStep, ZebiSize roiSize,
                                   ZebiBorderType borderType, Zeb32f borderValue, const ZebiMorphState* pSpec,
                                   Zeb8u* pBuffer);
ZebStatus zebiDilateBorder_32f_C3R(const Zeb32f* pSrc, int srcStep, Zeb32f* pDst, int dstStep, ZebiSize roiSize,
                                   ZebiBorderType borderType, Zeb32f borderValue, const ZebiMorphState* pSpec,
                                   Zeb8u* pBuffer);
ZebStatus zebiDilateBorder_32f_C4R(const Zeb32f* pSrc, int srcStep, Zeb32f* pDst, int dstStep, ZebiSize roiSize,
                                   ZebiBorderType borderType, Zeb32f borderValue, const ZebiMorphState* pSpec,
                                   Zeb8u* pBuffer);
ZebStatus zebiDilateBorder_1u_C1R(const Zeb8u* pSrc, int srcStep, Zeb8u* pDst, int dstStep, ZebiSize roiSize,
                                  ZebiBorderType borderType, Zeb8u borderValue, const ZebiMorphState* pSpec,
                                  Zeb8u* pBuffer);

/** @} */

#ifdef __cplusplus
}
#endif

#endif
