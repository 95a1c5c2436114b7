/** Morphology. */
#ifndef ZEBCV_MORPH_H
#define ZEBCV_MORPH_H

#include "types.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * @defgroup reconstruct Morphological reconstruction (L. Vincent, 1993)
 *
 * Reconstruction by dilation repeats, until nothing changes: every pixel of the marker becomes the largest of itself
 * and its neighbours, then at most the mask's pixel. Reconstruction by erosion is the dual: smallest, then at least the
 * mask's pixel. The result is unique. pSrc is the mask, pSrcDst the marker on entry and the reconstruction on return;
 * they must not overlap. A marker beyond the mask is first brought inside. norm selects the neighbourhood: zebiNormInf
 * (8 neighbours) or zebiNormL1 (4 neighbours).
 *
 * Rows are swept downwards and upwards; a row is visited again only when a row beside it has changed, so that a
 * corridor of the mask costs one pass per change of its vertical direction, over the rows it runs through: a spiral of
 * n turns costs some n / 2 passes over half of the image. A value that is not a number keeps its place and does not
 * spread, and one in the mask does not limit.
 *
 * Steps in bytes: at least the row, for both images.
 *
 * Status: zebStsOk; zebStsErrNullPointer; zebStsErrSize; zebStsErrStep; zebStsErrBadArgument (another norm).
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
