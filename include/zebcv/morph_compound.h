/** Morphology: compositions of erosions and dilations, grayscale morphology, reconstruction. */
#ifndef ZEBCV_MORPH_COMPOUND_H
#define ZEBCV_MORPH_COMPOUND_H

#include "types.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * @defgroup morphcompound Opening, closing, top-hat, black-hat, gradient
 *
 *     opening = dilation of the erosion        top-hat   = source - opening
 *     closing = erosion of the dilation        black-hat = closing - source
 *                                              gradient  = dilation - erosion
 *
 * Erosion uses the mask and the anchor, dilation the mask reflected through its centre with the reflected anchor.
 * Differences do not fall below 0 for any type, and saturate at the largest value of integer types; for 1u they are a
 * and not b. The intermediate image of opening and closing is bordered as the source is: on the sides where the
 * source's surroundings are in memory, the first operation runs over as many further columns and rows as the second
 * reads there (so the source is read as far as both reach together), on the others its edge pixels are repeated. The
 * gradient reads the source twice and needs no more of it than one operation.
 *
 * The state is eight words: the state for erosion, the state for dilation, the intermediate image (null: it is the
 * beginning of the scratch), its capacity in bytes (in pixels where it is in the scratch), the place in the scratch of
 * the room that the operations share, the identifier of kind, type and channels, the width of the region, and the bytes
 * of that room. States point to or into themselves: they must neither be moved nor copied. What does not carry the
 * identifier of a call's kind, type and channels is refused with zebStsErrContextMatch, after all other checks.
 * @{
 */

typedef struct ZebiMorphAdvState ZebiMorphAdvState;

/**
 * Sizes in bytes of a state in the caller's memory, 2 S + 32, and of the scratch, P + 2 B, where S and B are the sizes
 * of zebiMorphologyBorderGetSize and P = (roiWidth + maskWidth - 1 rounded up to 32) x (roiHeight + maskHeight - 1) is
 * a byte for every pixel of the intermediate image. Larger pixels go through that room in strips of rows.
 *
 * Status: zebStsOk; zebStsErrNullPointer (pSpecSize or pBufferSize); zebStsErrSize (a side below 1); zebStsErrOverflow.
 */
ZebStatus zebiMorphAdvGetSize_8u_C1R(ZebiSize roiSize, ZebiSize maskSize, int* pSpecSize, int* pBufferSize);
ZebStatus zebiMorphAdvGetSize_8u_C3R(ZebiSize roiSize, ZebiSize maskSize, int* pSpecSize, int* pBufferSize);
ZebStatus zebiMorphAdvGetSize_8u_C4R(ZebiSize roiSize, ZebiSize maskSize, int* pSpecSize, int* pBufferSize);
ZebStatus zebiMorphAdvGetSize_16u_C1R(ZebiSize roiSize, ZebiSize maskSize, int* pSpecSize, int* pBufferSize);
ZebStatus zebiMorphAdvGetSize_16s_C1R(ZebiSize roiSize, ZebiSize maskSize, int* pSpecSize, int* pBufferSize);
ZebStatus zebiMorphAdvGetSize_32f_C1R(ZebiSize roiSize, ZebiSize maskSize, int* pSpecSize, int* pBufferSize);
ZebStatus zebiMorphAdvGetSize_32f_C3R(ZebiSize roiSize, ZebiSize maskSize, int* pSpecSize, int* pBufferSize);
ZebStatus zebiMorphAdvGetSize_32f_C4R(ZebiSize roiSize, ZebiSize maskSize, int* pSpecSize, int* pBufferSize);
ZebStatus zebiMorphAdvGetSize_1u_C1R(ZebiSize roiSize, ZebiSize maskSize, int* pSpecSize, int* pBufferSize);

/**
 * Builds a state in memory of the size that zebiMorphAdvGetSize gives; nothing is allocated, and there is nothing to
 * release but that memory. The intermediate image is in the scratch of each call, as a whole or by strips of rows; the
 * results are the same.
 *
 * Status: zebStsOk; zebStsErrNullPointer (pState or pMask); zebStsErrSize (a side of the region or mask below 1);
 * zebStsErrAnchor (the anchor outside the mask); zebStsErrOverflow.
 */
ZebStatus zebiMorphAdvInit_8u_C1R(ZebiMorphAdvState* pState, ZebiSize roiSize, const Zeb8u* pMask, ZebiSize maskSize,
                                  ZebiPoint anchor);
ZebStatus zebiMorphAdvInit_8u_C3R(ZebiMorphAdvState* pState, ZebiSize roiSize, const Zeb8u* pMask, ZebiSize maskSize,
                                  ZebiPoint anchor);
ZebStatus zebiMorphAdvInit_8u_C4R(ZebiMorphAdvState* pState, ZebiSize roiSize, const Zeb8u* pMask, ZebiSize maskSize,
                                  ZebiPoint anchor);
ZebStatus zebiMorphAdvInit_16u_C1R(ZebiMorphAdvState* pState, ZebiSize roiSize, const Zeb8u* pMask, ZebiSize maskSize,
                                   ZebiPoint anchor);
ZebStatus zebiMorphAdvInit_16s_C1R(ZebiMorphAdvState* pState, ZebiSize roiSize, const Zeb8u* pMask, ZebiSize maskSize,
                                   ZebiPoint anchor);
ZebStatus zebiMorphAdvInit_32f_C1R(ZebiMorphAdvState* pState, ZebiSize roiSize, const Zeb8u* pMask, ZebiSize maskSize,
                                   ZebiPoint anchor);
ZebStatus zebiMorphAdvInit_32f_C3R(ZebiMorphAdvState* pState, ZebiSize roiSize, const Zeb8u* pMask, ZebiSize maskSize,
                                   ZebiPoint anchor);
ZebStatus zebiMorphAdvInit_32f_C4R(ZebiMorphAdvState* pState, ZebiSize roiSize, const Zeb8u* pMask, ZebiSize maskSize,
                                   ZebiPoint anchor);
ZebStatus zebiMorphAdvInit_1u_C1R(ZebiMorphAdvState* pState, ZebiSize roiSize, const Zeb8u* pMask, ZebiSize maskSize,
                                  ZebiPoint anchor);

/**
 * Allocates the two states, the intermediate image and the record; release them with zebiMorphAdvFree. A failure leaves
 * nothing allocated and *ppState as it was. A state with its own intermediate image serves one call at a time.
 *
 * Status: as zebiMorphAdvInit; zebStsErrMemAlloc.
 */
ZebStatus zebiMorphAdvInitAlloc_8u_C1R(ZebiMorphAdvState** ppState, ZebiSize roiSize, const Zeb8u* pMask,
                                       ZebiSize maskSize, ZebiPoint anchor);
ZebStatus zebiMorphAdvInitAlloc_8u_C3R(ZebiMorphAdvState** ppState, ZebiSize roiSize, const Zeb8u* pMask,
                                       ZebiSize maskSize, ZebiPoint anchor);
ZebStatus zebiMorphAdvInitAlloc_8u_C4R(ZebiMorphAdvState** ppState, ZebiSize roiSize, const Zeb8u* pMask,
                                       ZebiSize maskSize, ZebiPoint anchor);
ZebStatus zebiMorphAdvInitAlloc_16u_C1R(ZebiMorphAdvState** ppState, ZebiSize roiSize, const Zeb8u* pMask,
                                        ZebiSize maskSize, ZebiPoint anchor);
ZebStatus zebiMorphAdvInitAlloc_16s_C1R(ZebiMorphAdvState** ppState, ZebiSize roiSize, const Zeb8u* pMask,
                                        ZebiSize maskSize, ZebiPoint anchor);
ZebStatus zebiMorphAdvInitAlloc_32f_C1R(ZebiMorphAdvState** ppState, ZebiSize roiSize, const Zeb8u* pMask,
                                        ZebiSize maskSize, ZebiPoint anchor);
ZebStatus zebiMorphAdvInitAlloc_32f_C3R(ZebiMorphAdvState** ppState, ZebiSize roiSize, const Zeb8u* pMask,
                                        ZebiSize maskSize, ZebiPoint anchor);
ZebStatus zebiMorphAdvInitAlloc_32f_C4R(ZebiMorphAdvState** ppState, ZebiSize roiSize, const Zeb8u* pMask,
                                        ZebiSize maskSize, ZebiPoint anchor);
ZebStatus zebiMorphAdvInitAlloc_1u_C1R(ZebiMorphAdvState** ppState, ZebiSize roiSize, const Zeb8u* pMask,
                                       ZebiSize maskSize, ZebiPoint anchor);

/**
 * Releases a state of zebiMorphAdvInitAlloc. Status: zebStsOk; zebStsErrNullPointer; zebStsErrContextMatch (not a state
 * of this kind, or one in the caller's memory).
 */
ZebStatus zebiMorphAdvFree(ZebiMorphAdvState* pState);

/**
 * The compositions. pBuffer: as many bytes as zebiMorphAdvGetSize gives for the state's region. borderValue is not
 * used. Steps in bytes. Source and destination must not overlap.
 *
 * Status: zebStsOk; zebStsErrNullPointer; zebStsErrSize (width or height below 1); zebStsErrStep (a step below the
 * row); zebStsErrBorder (the low four bits of borderType are neither zebBorderRepl nor zebBorderInMem); zebStsErrSize
 * (wider than the state's region, or an intermediate image that takes more bytes than the state's);
 * zebStsErrNotEvenStep (16u, 16s, 32f: a step that is no multiple of the element); zebStsErrContextMatch (not a state
 * for these elements).
 */
ZebStatus zebiMorphOpenBorder_8u_C1R(const Zeb8u* pSrc, int srcStep, Zeb8u* pDst, int dstStep, ZebiSize roiSize,
                                     ZebiBorderType borderType, Zeb8u borderValue, const ZebiMorphAdvState* pState,
                                     Zeb8u* pBuffer);
ZebStatus zebiMorphOpenBorder_8u_C3R(const Zeb8u* pSrc, int srcStep, Zeb8u* pDst, int dstStep, ZebiSize roiSize,
                                     ZebiBorderType borderType, Zeb8u borderValue, const ZebiMorphAdvState* pState,
                                     Zeb8u* pBuffer);
ZebStatus zebiMorphOpenBorder_8u_C4R(const Zeb8u* pSrc, int srcStep, Zeb8u* pDst, int dstStep, ZebiSize roiSize,
                                     ZebiBorderType borderType, Zeb8u borderValue, const ZebiMorphAdvState* pState,
                                     Zeb8u* pBuffer);
ZebStatus zebiMorphOpenBorder_16u_C1R(const Zeb16u* pSrc, int srcStep, Zeb16u* pDst, int dstStep, ZebiSize roiSize,
                                      ZebiBorderType borderType, Zeb16u borderValue, const ZebiMorphAdvState* pState,
                                      Zeb8u* pBuffer);
ZebStatus zebiMorphOpenBorder_16s_C1R(const Zeb16s* pSrc, int srcStep, Zeb16s* pDst, int dstStep, ZebiSize roiSize,
                                      ZebiBorderType borderType, Zeb16s borderValue, const ZebiMorphAdvState* pState,
                                      Zeb8u* pBuffer);
ZebStatus zebiMorphOpenBorder_32f_C1R(const Zeb32f* pSrc, int srcStep, Zeb32f* pDst, int dstStep, ZebiSize roiSize,
                                      ZebiBorderType borderType, Zeb32f borderValue, const ZebiMorphAdvState* pState,
                                      Zeb8u* pBuffer);
ZebStatus zebiMorphOpenBorder_32f_C3R(const Zeb32f* pSrc, int srcStep, Zeb32f* pDst, int dstStep, ZebiSize roiSize,
                                      ZebiBorderType borderType, Zeb32f borderValue, const ZebiMorphAdvState* pState,
                                      Zeb8u* pBuffer);
ZebStatus zebiMorphOpenBorder_32f_C4R(const Zeb32f* pSrc, int srcStep, Zeb32f* pDst, int dstStep, ZebiSize roiSize,
                                      ZebiBorderType borderType, Zeb32f borderValue, const ZebiMorphAdvState* pState,
                                      Zeb8u* pBuffer);
ZebStatus zebiMorphOpenBorder_1u_C1R(const Zeb8u* pSrc, int srcStep, Zeb8u* pDst, int dstStep, ZebiSize roiSize,
                                     ZebiBorderType borderType, Zeb8u borderValue, const ZebiMorphAdvState* pState,
                                     Zeb8u* pBuffer);
ZebStatus zebiMorphCloseBorder_8u_C1R(const Zeb8u* pSrc, int srcStep, Zeb8u* pDst, int dstStep, ZebiSize roiSize,
                                      ZebiBorderType borderType, Zeb8u borderValue, const ZebiMorphAdvState* pState,
                                      Zeb8u* pBuffer);
ZebStatus zebiMorphCloseBorder_8u_C3R(const Zeb8u* pSrc, int srcStep, Zeb8u* pDst, int dstStep, ZebiSize roiSize,
                                      ZebiBorderType borderType, Zeb8u borderValue, const ZebiMorphAdvState* pState,
                                      Zeb8u* pBuffer);
ZebStatus zebiMorphCloseBorder_8u_C4R(const Zeb8u* pSrc, int srcStep, Zeb8u* pDst, int dstStep, ZebiSize roiSize,
                                      ZebiBorderType borderType, Zeb8u borderValue, const ZebiMorphAdvState* pState,
                                      Zeb8u* pBuffer);
ZebStatus zebiMorphCloseBorder_16u_C1R(const Zeb16u* pSrc, int srcStep, Zeb16u* pDst, int dstStep, ZebiSize roiSize,
                                       ZebiBorderType borderType, Zeb16u borderValue, const ZebiMorphAdvState* pState,
                                       Zeb8u* pBuffer);
ZebStatus zebiMorphCloseBorder_16s_C1R(const Zeb16s* pSrc, int srcStep, Zeb16s* pDst, int dstStep, ZebiSize roiSize,
                                       ZebiBorderType borderType, Zeb16s borderValue, const ZebiMorphAdvState* pState,
                                       Zeb8u* pBuffer);
ZebStatus zebiMorphCloseBorder_32f_C1R(const Zeb32f* pSrc, int srcStep, Zeb32f* pDst, int dstStep, ZebiSize roiSize,
                                       ZebiBorderType borderType, Zeb32f borderValue, const ZebiMorphAdvState* pState,
                                       Zeb8u* pBuffer);
ZebStatus zebiMorphCloseBorder_32f_C3R(const Zeb32f* pSrc, int srcStep, Zeb32f* pDst, int dstStep, ZebiSize roiSize,
                                       ZebiBorderType borderType, Zeb32f borderValue, const ZebiMorphAdvState* pState,
                                       Zeb8u* pBuffer);
ZebStatus zebiMorphCloseBorder_32f_C4R(const Zeb32f* pSrc, int srcStep, Zeb32f* pDst, int dstStep, ZebiSize roiSize,
                                       ZebiBorderType borderType, Zeb32f borderValue, const ZebiMorphAdvState* pState,
                                       Zeb8u* pBuffer);
ZebStatus zebiMorphCloseBorder_1u_C1R(const Zeb8u* pSrc, int srcStep, Zeb8u* pDst, int dstStep, ZebiSize roiSize,
                                      ZebiBorderType borderType, Zeb8u borderValue, const ZebiMorphAdvState* pState,
                                      Zeb8u* pBuffer);
ZebStatus zebiMorphTophatBorder_8u_C1R(const Zeb8u* pSrc, int srcStep, Zeb8u* pDst, int dstStep, ZebiSize roiSize,
                                       ZebiBorderType borderType, Zeb8u borderValue, const ZebiMorphAdvState* pState,
                                       Zeb8u* pBuffer);
ZebStatus zebiMorphTophatBorder_8u_C3R(const Zeb8u* pSrc, int srcStep, Zeb8u* pDst, int dstStep, ZebiSize roiSize,
                                       ZebiBorderType borderType, Zeb8u borderValue, const ZebiMorphAdvState* pState,
                                       Zeb8u* pBuffer);
ZebStatus zebiMorphTophatBorder_8u_C4R(const Zeb8u* pSrc, int srcStep, Zeb8u* pDst, int dstStep, ZebiSize roiSize,
                                       ZebiBorderType borderType, Zeb8u borderValue, const ZebiMorphAdvState* pState,
                                       Zeb8u* pBuffer);
ZebStatus zebiMorphTophatBorder_16u_C1R(const Zeb16u* pSrc, int srcStep, Zeb16u* pDst, int dstStep, ZebiSize roiSize,
                                        ZebiBorderType borderType, Zeb16u borderValue, const ZebiMorphAdvState* pState,
                                        Zeb8u* pBuffer);
ZebStatus zebiMorphTophatBorder_16s_C1R(const Zeb16s* pSrc, int srcStep, Zeb16s* pDst, int dstStep, ZebiSize roiSize,
                                        ZebiBorderType borderType, Zeb16s borderValue, const ZebiMorphAdvState* pState,
                                        Zeb8u* pBuffer);
ZebStatus zebiMorphTophatBorder_32f_C1R(const Zeb32f* pSrc, int srcStep, Zeb32f* pDst, int dstStep, ZebiSize roiSize,
                                        ZebiBorderType borderType, Zeb32f borderValue, const ZebiMorphAdvState* pState,
                                        Zeb8u* pBuffer);
ZebStatus zebiMorphTophatBorder_32f_C3R(const Zeb32f* pSrc, int srcStep, Zeb32f* pDst, int dstStep, ZebiSize roiSize,
                                        ZebiBorderType borderType, Zeb32f borderValue, const ZebiMorphAdvState* pState,
                                        Zeb8u* pBuffer);
ZebStatus zebiMorphTophatBorder_32f_C4R(const Zeb32f* pSrc, int srcStep, Zeb32f* pDst, int dstStep, ZebiSize roiSize,
                                        ZebiBorderType borderType, Zeb32f borderValue, const ZebiMorphAdvState* pState,
                                        Zeb8u* pBuffer);
ZebStatus zebiMorphTophatBorder_1u_C1R(const Zeb8u* pSrc, int srcStep, Zeb8u* pDst, int dstStep, ZebiSize roiSize,
                                       ZebiBorderType borderType, Zeb8u borderValue, const ZebiMorphAdvState* pState,
                                       Zeb8u* pBuffer);
ZebStatus zebiMorphBlackhatBorder_8u_C1R(const Zeb8u* pSrc, int srcStep, Zeb8u* pDst, int dstStep, ZebiSize roiSize,
                                         ZebiBorderType borderType, Zeb8u borderValue, const ZebiMorphAdvState* pState,
                                         Zeb8u* pBuffer);
ZebStatus zebiMorphBlackhatBorder_8u_C3R(const Zeb8u* pSrc, int srcStep, Zeb8u* pDst, int dstStep, ZebiSize roiSize,
                                         ZebiBorderType borderType, Zeb8u borderValue, const ZebiMorphAdvState* pState,
                                         Zeb8u* pBuffer);
ZebStatus zebiMorphBlackhatBorder_8u_C4R(const Zeb8u* pSrc, int srcStep, Zeb8u* pDst, int dstStep, ZebiSize roiSize,
                                         ZebiBorderType borderType, Zeb8u borderValue, const ZebiMorphAdvState* pState,
                                         Zeb8u* pBuffer);
ZebStatus zebiMorphBlackhatBorder_16u_C1R(const Zeb16u* pSrc, int srcStep, Zeb16u* pDst, int dstStep, ZebiSize roiSize,
                                          ZebiBorderType borderType, Zeb16u borderValue,
                                          const ZebiMorphAdvState* pState, Zeb8u* pBuffer);
ZebStatus zebiMorphBlackhatBorder_16s_C1R(const Zeb16s* pSrc, int srcStep, Zeb16s* pDst, int dstStep, ZebiSize roiSize,
                                          ZebiBorderType borderType, Zeb16s borderValue,
                                          const ZebiMorphAdvState* pState, Zeb8u* pBuffer);
ZebStatus zebiMorphBlackhatBorder_32f_C1R(const Zeb32f* pSrc, int srcStep, Zeb32f* pDst, int dstStep, ZebiSize roiSize,
                                          ZebiBorderType borderType, Zeb32f borderValue,
                                          const ZebiMorphAdvState* pState, Zeb8u* pBuffer);
ZebStatus zebiMorphBlackhatBorder_32f_C3R(const Zeb32f* pSrc, int srcStep, Zeb32f* pDst, int dstStep, ZebiSize roiSize,
                                          ZebiBorderType borderType, Zeb32f borderValue,
                                          const ZebiMorphAdvState* pState, Zeb8u* pBuffer);
ZebStatus zebiMorphBlackhatBorder_32f_C4R(const Zeb32f* pSrc, int srcStep, Zeb32f* pDst, int dstStep, ZebiSize roiSize,
                                          ZebiBorderType borderType, Zeb32f borderValue,
                                          const ZebiMorphAdvState* pState, Zeb8u* pBuffer);
ZebStatus zebiMorphBlackhatBorder_1u_C1R(const Zeb8u* pSrc, int srcStep, Zeb8u* pDst, int dstStep, ZebiSize roiSize,
                                         ZebiBorderType borderType, Zeb8u borderValue, const ZebiMorphAdvState* pState,
                                         Zeb8u* pBuffer);
ZebStatus zebiMorphGradientBorder_8u_C1R(const Zeb8u* pSrc, int srcStep, Zeb8u* pDst, int dstStep, ZebiSize roiSize,
                                         ZebiBorderType borderType, Zeb8u borderValue, const ZebiMorphAdvState* pState,
                                         Zeb8u* pBuffer);
ZebStatus zebiMorphGradientBorder_8u_C3R(const Zeb8u* pSrc, int srcStep, Zeb8u* pDst, int dstStep, ZebiSize roiSize,
                                         ZebiBorderType borderType, Zeb8u borderValue, const ZebiMorphAdvState* pState,
                                         Zeb8u* pBuffer);
ZebStatus zebiMorphGradientBorder_8u_C4R(const Zeb8u* pSrc, int srcStep, Zeb8u* pDst, int dstStep, ZebiSize roiSize,
                                         ZebiBorderType borderType, Zeb8u borderValue, const ZebiMorphAdvState* pState,
                                         Zeb8u* pBuffer);
ZebStatus zebiMorphGradientBorder_16u_C1R(const Zeb16u* pSrc, int srcStep, Zeb16u* pDst, int dstStep, ZebiSize roiSize,
                                          ZebiBorderType borderType, Zeb16u borderValue,
                                          const ZebiMorphAdvState* pState, Zeb8u* pBuffer);
ZebStatus zebiMorphGradientBorder_16s_C1R(const Zeb16s* pSrc, int srcStep, Zeb16s* pDst, int dstStep, ZebiSize roiSize,
                                          ZebiBorderType borderType, Zeb16s borderValue,
                                          const ZebiMorphAdvState* pState, Zeb8u* pBuffer);
ZebStatus zebiMorphGradientBorder_32f_C1R(const Zeb32f* pSrc, int srcStep, Zeb32f* pDst, int dstStep, ZebiSize roiSize,
                                          ZebiBorderType borderType, Zeb32f borderValue,
                                          const ZebiMorphAdvState* pState, Zeb8u* pBuffer);
ZebStatus zebiMorphGradientBorder_32f_C3R(const Zeb32f* pSrc, int srcStep, Zeb32f* pDst, int dstStep, ZebiSize roiSize,
                                          ZebiBorderType borderType, Zeb32f borderValue,
                                          const ZebiMorphAdvState* pState, Zeb8u* pBuffer);
ZebStatus zebiMorphGradientBorder_32f_C4R(const Zeb32f* pSrc, int srcStep, Zeb32f* pDst, int dstStep, ZebiSize roiSize,
                                          ZebiBorderType borderType, Zeb32f borderValue,
                                          const ZebiMorphAdvState* pState, Zeb8u* pBuffer);
ZebStatus zebiMorphGradientBorder_1u_C1R(const Zeb8u* pSrc, int srcStep, Zeb8u* pDst, int dstStep, ZebiSize roiSize,
                                         ZebiBorderType borderType, Zeb8u borderValue, const ZebiMorphAdvState* pState,
                                         Zeb8u* pBuffer);

/** @} */

/**
 * @defgroup morphgray Grayscale morphology
 *
 *     dilation(x, y) = max over (i, j) of src(x + i - ax, y + j - ay) + weight(i, j)
 *     erosion(x, y)  = min over (i, j) of src(x + i - ax, y + j - ay) - weight(i, j)
 *
 * over all positions of a mask of weights with the anchor (ax, ay) on the pixel; pixels outside the region repeat the
 * nearest edge pixel. Erosion is the dual of dilation under negation, so the mask is not reflected. 8u: integer
 * weights, exact sums, results saturate to 0..255. 32f: float weights, every sum rounded once; where a sum is not a
 * number, the sums before it in row order are forgotten and the next one takes its place.
 *
 * The state is seven words (pointer to the weights, mask width and height, anchor column and row, largest region width
 * and height) followed by the weights, 4 x maskWidth x maskHeight + 28 bytes. No call changes it; it must neither be
 * moved nor copied. No word is left for an identifier: a state is known by its first word, which points right behind
 * the other six. So states for 8u and for 32f are not told apart.
 * @{
 */

typedef struct ZebiMorphGrayState ZebiMorphGrayState;

/**
 * Size in bytes of a state.
 *
 * Status: zebStsOk; zebStsErrNullPointer (pMask or pSize); zebStsErrSize (a side below 1); zebStsErrOverflow.
 */
ZebStatus zebiMorphGrayGetSize_8u_C1R(ZebiSize roiSize, const Zeb32s* pMask, ZebiSize maskSize, int* pSize);
ZebStatus zebiMorphGrayGetSize_32f_C1R(ZebiSize roiSize, const Zeb32f* pMask, ZebiSize maskSize, int* pSize);

/**
 * Builds a state in memory of that size. roiSize: the largest region of the calls to come.
 *
 * Status: zebStsOk; zebStsErrNullPointer (pState or pMask); zebStsErrSize (a side below 1); zebStsErrAnchor (the anchor
 * outside the mask); zebStsErrOverflow.
 */
ZebStatus zebiMorphGrayInit_8u_C1R(ZebiMorphGrayState* pState, ZebiSize roiSize, const Zeb32s* pMask, ZebiSize maskSize,
                                   ZebiPoint anchor);
ZebStatus zebiMorphGrayInit_32f_C1R(ZebiMorphGrayState* pState, ZebiSize roiSize, const Zeb32f* pMask,
                                    ZebiSize maskSize, ZebiPoint anchor);

/**
 * Allocates and builds a state; release it with zebiMorphGrayFree. A failure leaves nothing allocated and *ppState as
 * it was.
 *
 * Status: as zebiMorphGrayInit; zebStsErrMemAlloc.
 */
ZebStatus zebiMorphGrayInitAlloc_8u_C1R(ZebiMorphGrayState** ppState, ZebiSize roiSize, const Zeb32s* pMask,
                                        ZebiSize maskSize, ZebiPoint anchor);
ZebStatus zebiMorphGrayInitAlloc_32f_C1R(ZebiMorphGrayState** ppState, ZebiSize roiSize, const Zeb32f* pMask,
                                         ZebiSize maskSize, ZebiPoint anchor);

/**
 * Releases a state of zebiMorphGrayInitAlloc. Status: zebStsOk; zebStsErrNullPointer; zebStsErrContextMatch (no such
 * state, or a copy of one).
 */
ZebStatus zebiMorphGrayFree_8u_C1R(ZebiMorphGrayState* pState);
ZebStatus zebiMorphGrayFree_32f_C1R(ZebiMorphGrayState* pState);

/**
 * Grayscale erosion and dilation. Steps in bytes; source and destination must not overlap. No scratch.
 *
 * Status: zebStsOk; zebStsErrNullPointer; zebStsErrSize (width or height below 1); zebStsErrStep (a step below the
 * row); zebStsErrBadArgument (borderType is not zebBorderRepl); zebStsErrSize (wider or higher than the state's
 * region); zebStsErrContextMatch (no such state, or a copy of one).
 */
ZebStatus zebiGrayErodeBorder_8u_C1R(const Zeb8u* pSrc, int srcStep, Zeb8u* pDst, int dstStep, ZebiSize roiSize,
                                     ZebiBorderType borderType, const ZebiMorphGrayState* pState);
ZebStatus zebiGrayErodeBorder_32f_C1R(const Zeb32f* pSrc, int srcStep, Zeb32f* pDst, int dstStep, ZebiSize roiSize,
                                      ZebiBorderType borderType, const ZebiMorphGrayState* pState);
ZebStatus zebiGrayDilateBorder_8u_C1R(const Zeb8u* pSrc, int srcStep, Zeb8u* pDst, int dstStep, ZebiSize roiSize,
                                      ZebiBorderType borderType, const ZebiMorphGrayState* pState);
ZebStatus zebiGrayDilateBorder_32f_C1R(const Zeb32f* pSrc, int srcStep, Zeb32f* pDst, int dstStep, ZebiSize roiSize,
                                       ZebiBorderType borderType, const ZebiMorphGrayState* pState);

/** @} */

/**
 * @defgroup reconstruct Morphological reconstruction (L. Vincent, 1993)
 *
 * Reconstruction by dilation repeats, until nothing changes: every pixel of the marker becomes the largest of itself
 * and its neighbours, then at most the mask's pixel. Reconstruction by erosion is the dual: smallest, then at least the
 * mask's pixel. The result is unique. pSrc is the mask, pSrcDst the marker on entry and the reconstruction on return;
 * they must not overlap. A marker beyond the mask is first brought inside. norm selects the neighbourhood: zebiNormInf
 * (8 neighbours) or zebiNormL1 (4 neighbours).
 *
 * Rows are swept downwards and upwards; a row is visited again only when a row beside it has changed. Changes that are
 * few, or go on for more than some sweeps of the image, are followed where they lead, those with the farthest values
 * first: corridors, spirals and mazes cost what they are long, whichever way they run. A value that is not a number
 * keeps its place and does not spread, and one in the mask does not limit. Which of two zeros comes out is open.
 *
 * Steps in bytes: at least the row, for both images.
 *
 * Status: zebStsOk; zebStsErrNullPointer; zebStsErrSize; zebStsErrStep; zebStsErrBadArgument (another norm);
 * zebStsErrOverflow (the query reports it for the size, too).
 */

/**
 * Bytes of scratch for w x h pixels: 8u h + 4 w + 161, 16u 2 (h + 4 w) + 322, 32f 16 w + h + 164, 64f 32 w + h + 168.
 *
 * Status: zebStsOk; zebStsErrNullPointer; zebStsErrSize; zebStsErrDataType (not zeb8u, zeb16u, zeb32f or zeb64f);
 * zebStsErrNumChannels (not 1); zebStsErrOverflow.
 */
ZebStatus zebiMorphReconstructGetBufferSize(ZebiSize roiSize, ZebDataType dataType, int numChannels, int* pBufSize);
ZebStatus zebiMorphReconstructGetBufferSize_8u_C1(ZebiSize roiSize, int* pBufSize);
ZebStatus zebiMorphReconstructGetBufferSize_16u_C1(ZebiSize roiSize, int* pBufSize);
ZebStatus zebiMorphReconstructGetBufferSize_32f_C1(ZebiSize roiSize, int* pBufSize);
ZebStatus zebiMorphReconstructGetBufferSize_64f_C1(ZebiSize roiSize, int* pBufSize);

/** Reconstruction by dilation. */
ZebStatus zebiMorphReconstructDilate_8u_C1IR(const Zeb8u* pSrc, int srcStep, Zeb8u* pSrcDst, int srcDstStep,
                                             ZebiSize roiSize, Zeb8u* pBuf, ZebiNorm norm);
ZebStatus zebiMorphReconstructDilate_16u_C1IR(const Zeb16u* pSrc, int srcStep, Zeb16u* pSrcDst, int srcDstStep,
                                              ZebiSize roiSize, Zeb8u* pBuf, ZebiNorm norm);
ZebStatus zebiMorphReconstructDilate_32f_C1IR(const Zeb32f* pSrc, int srcStep, Zeb32f* pSrcDst, int srcDstStep,
                                              ZebiSize roiSize, Zeb8u* pBuf, ZebiNorm norm);
ZebStatus zebiMorphReconstructDilate_64f_C1IR(const Zeb64f* pSrc, int srcStep, Zeb64f* pSrcDst, int srcDstStep,
                                              ZebiSize roiSize, Zeb8u* pBuf, ZebiNorm norm);

/** Reconstruction by erosion. */
ZebStatus zebiMorphReconstructErode_8u_C1IR(const Zeb8u* pSrc, int srcStep, Zeb8u* pSrcDst, int srcDstStep,
                                            ZebiSize roiSize, Zeb8u* pBuf, ZebiNorm norm);
ZebStatus zebiMorphReconstructErode_16u_C1IR(const Zeb16u* pSrc, int srcStep, Zeb16u* pSrcDst, int srcDstStep,
                                             ZebiSize roiSize, Zeb8u* pBuf, ZebiNorm norm);
ZebStatus zebiMorphReconstructErode_32f_C1IR(const Zeb32f* pSrc, int srcStep, Zeb32f* pSrcDst, int srcDstStep,
                                             ZebiSize roiSize, Zeb8u* pBuf, ZebiNorm norm);
ZebStatus zebiMorphReconstructErode_64f_C1IR(const Zeb64f* pSrc, int srcStep, Zeb64f* pSrcDst, int srcDstStep,
                                             ZebiSize roiSize, Zeb8u* pBuf, ZebiNorm norm);

#ifdef __cplusplus
}
#endif

#endif
