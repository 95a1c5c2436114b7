/** Images read between their pixels, along lines and through lenses; gradient vectors; super-resolution. */
#ifndef ZEBCV_GEOMETRY_H
#define ZEBCV_GEOMETRY_H

#include "types.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * @defgroup subpixel Between pixels
 *
 * The bilinear rule, by which all functions of this header interpolate: between two values at a fraction f in [0, 1)
 *
 *   L(a, b, f) = a for f = 0, where b is not used, else fma(f, b - a, a)
 *
 * in single precision, the difference rounded first. With the pixels a b of a row and c d below them the value at the
 * fractions fx, fy is B = L(L(a, b, fx), L(c, d, fx), fy). Integers are converted exactly and results rounded to
 * nearest even; they need no saturation. Pixels that the rule does not use are not read. NaN and infinity follow from
 * the rule.
 *
 * Source and destination may not overlap.
 * @{
 */

/**
 * A rectangle shifted by a fraction of a pixel: dst(i, j) is the bilinear rule at pixel (i, j) with the fractions
 * offset.x and offset.y. Column roiSize.width is read when offset.x is not 0, row roiSize.height when offset.y is not.
 * Sfs: B x 2^-scaleFactor (scaleFactor limited to -31..31), rounded to nearest even and saturated.
 *
 * Status, in this order: zebStsErrNullPointer; zebStsErrSize; zebStsErrStep (the source row has width + 1 pixels when
 * offset.x is above 0); zebStsErrNotEvenStep (16u and 32f); zebStsErrOutOfRange (offset.x or offset.y not in [0, 1));
 * zebStsOk.
 */
ZebStatus zebiCopySubpix_8u_C1R(const Zeb8u* pSrc, int srcStep, Zeb8u* pDst, int dstStep, ZebiSize roiSize,
                                ZebiPoint_32f offset);
ZebStatus zebiCopySubpix_8u32f_C1R(const Zeb8u* pSrc, int srcStep, Zeb32f* pDst, int dstStep, ZebiSize roiSize,
                                   ZebiPoint_32f offset);
ZebStatus zebiCopySubpix_16u_C1R(const Zeb16u* pSrc, int srcStep, Zeb16u* pDst, int dstStep, ZebiSize roiSize,
                                 ZebiPoint_32f offset);
ZebStatus zebiCopySubpix_16u32f_C1R(const Zeb16u* pSrc, int srcStep, Zeb32f* pDst, int dstStep, ZebiSize roiSize,
                                    ZebiPoint_32f offset);
ZebStatus zebiCopySubpix_32f_C1R(const Zeb32f* pSrc, int srcStep, Zeb32f* pDst, int dstStep, ZebiSize roiSize,
                                 ZebiPoint_32f offset);
ZebStatus zebiCopySubpix_8u16u_C1RSfs(const Zeb8u* pSrc, int srcStep, Zeb16u* pDst, int dstStep, ZebiSize roiSize,
                                      ZebiPoint_32f offset, int scaleFactor);

/**
 * A window of dstRoiSize around a point of an image of srcRoiSize, as far as it lies in it. For the window's width w,
 * in double precision, c = centre.x - (w - 1) / 2, its first pixel is at ix = floor(c) with the fraction fx = c - ix
 * rounded to single precision (a fraction that becomes 1 is 0 of the next pixel); likewise iy, fy. Window pixel (i, j)
 * is the bilinear rule at pixel (ix + i, iy + j) with fx, fy. Those inside, at positions 0 to width - 1 and 0 to height
 * - 1 of the image, are written at their places in the destination, no others; *pPart is their rectangle in the window,
 * (0, 0, 0, 0) when there are none. The centre may be anything. Sfs: scaled as above.
 *
 * Status, in this order: zebStsErrNullPointer; zebStsErrSize (either size); zebStsErrStep; zebStsErrNotEvenStep (16u
 * and 32f); zebStsOk, also for an empty part.
 */
ZebStatus zebiCopySubpixIntersect_8u_C1R(const Zeb8u* pSrc, int srcStep, ZebiSize srcRoiSize, Zeb8u* pDst, int dstStep,
                                         ZebiSize dstRoiSize, ZebiPoint_32f centre, ZebiRect* pPart);
ZebStatus zebiCopySubpixIntersect_8u32f_C1R(const Zeb8u* pSrc, int srcStep, ZebiSize srcRoiSize, Zeb32f* pDst,
                                            int dstStep, ZebiSize dstRoiSize, ZebiPoint_32f centre, ZebiRect* pPart);
ZebStatus zebiCopySubpixIntersect_16u_C1R(const Zeb16u* pSrc, int srcStep, ZebiSize srcRoiSize, Zeb16u* pDst,
                                          int dstStep, ZebiSize dstRoiSize, ZebiPoint_32f centre, ZebiRect* pPart);
ZebStatus zebiCopySubpixIntersect_16u32f_C1R(const Zeb16u* pSrc, int srcStep, ZebiSize srcRoiSize, Zeb32f* pDst,
                                             int dstStep, ZebiSize dstRoiSize, ZebiPoint_32f centre, ZebiRect* pPart);
ZebStatus zebiCopySubpixIntersect_32f_C1R(const Zeb32f* pSrc, int srcStep, ZebiSize srcRoiSize, Zeb32f* pDst,
                                          int dstStep, ZebiSize dstRoiSize, ZebiPoint_32f centre, ZebiRect* pPart);
ZebStatus zebiCopySubpixIntersect_8u16u_C1RSfs(const Zeb8u* pSrc, int srcStep, ZebiSize srcRoiSize, Zeb16u* pDst,
                                               int dstStep, ZebiSize dstRoiSize, ZebiPoint_32f centre, ZebiRect* pPart,
                                               int scaleFactor);
/** @} */

/**
 * @defgroup lens Lens distortion
 *
 * Radial distortion moves a point by an even polynomial of its distance from the principal point `centre`, and
 * tangential distortion, of a lens whose elements are not in line, by two more terms. For the pixel (i, j) of the image
 * without distortion, in single precision, each step rounded once:
 *
 *   dx = i - centre.x, x = dx (1 / focal.x), xx = x x;  dy, y, yy likewise;  r2 = xx + yy
 *   D = r2 fma(k2, r2, k1),  X = fma(dx, D, i),  Y = fma(dy, D, j)
 *
 * (X, Y) is where it lies in the distorted image; as a displacement, so that coefficients of 0 give the pixel itself.
 * focal and centre are in pixels. Models: D. Brown, Decentering distortion of lenses, 1966; Close-range camera
 * calibration, 1971.
 *
 * pBuffer holds as many bytes as zebiUndistortGetSize reports.
 * @{
 */

/**
 * Frees an image of radial distortion: the destination pixel is the bilinear rule at (X, Y), each channel alike, and 0
 * where that is not inside the image (0 <= X <= width - 1, 0 <= Y <= height - 1; NaN is outside). Source and
 * destination may not overlap.
 *
 * Status, in this order: zebStsErrNullPointer; zebStsErrSize; zebStsErrStep; zebStsErrNotEvenStep (16u and 32f);
 * zebStsErrBadArgument (a focal length not above 0, or any of the numbers not finite); zebStsErrOverflow (the query
 * reports it); zebStsOk.
 */
ZebStatus zebiUndistortRadial_8u_C1R(const Zeb8u* pSrc, int srcStep, Zeb8u* pDst, int dstStep, ZebiSize roiSize,
                                     ZebiPoint_32f focal, ZebiPoint_32f centre, Zeb32f k1, Zeb32f k2, Zeb8u* pBuffer);
ZebStatus zebiUndistortRadial_8u_C3R(const Zeb8u* pSrc, int srcStep, Zeb8u* pDst, int dstStep, ZebiSize roiSize,
                                     ZebiPoint_32f focal, ZebiPoint_32f centre, Zeb32f k1, Zeb32f k2, Zeb8u* pBuffer);
ZebStatus zebiUndistortRadial_16u_C1R(const Zeb16u* pSrc, int srcStep, Zeb16u* pDst, int dstStep, ZebiSize roiSize,
                                      ZebiPoint_32f focal, ZebiPoint_32f centre, Zeb32f k1, Zeb32f k2, Zeb8u* pBuffer);
ZebStatus zebiUndistortRadial_16u_C3R(const Zeb16u* pSrc, int srcStep, Zeb16u* pDst, int dstStep, ZebiSize roiSize,
                                      ZebiPoint_32f focal, ZebiPoint_32f centre, Zeb32f k1, Zeb32f k2, Zeb8u* pBuffer);
ZebStatus zebiUndistortRadial_32f_C1R(const Zeb32f* pSrc, int srcStep, Zeb32f* pDst, int dstStep, ZebiSize roiSize,
                                      ZebiPoint_32f focal, ZebiPoint_32f centre, Zeb32f k1, Zeb32f k2, Zeb8u* pBuffer);
ZebStatus zebiUndistortRadial_32f_C3R(const Zeb32f* pSrc, int srcStep, Zeb32f* pDst, int dstStep, ZebiSize roiSize,
                                      ZebiPoint_32f focal, ZebiPoint_32f centre, Zeb32f k1, Zeb32f k2, Zeb8u* pBuffer);
/**
 * For every pixel of the image without distortion its place in the distorted one, with the tangential terms
 *
 *   t = (x + x) y,  tx = fma(p2, fma(2, xx, r2), p1 t),  ty = fma(p1, fma(2, yy, r2), p2 t)
 *   mapX = fma(focal.x, tx, X),  mapY = fma(focal.y, ty, Y)
 *
 * With p1 = p2 = 0 it is (X, Y) wherever r2 is finite. The maps may not overlap. Status, in this order:
 * zebStsErrNullPointer; zebStsErrSize; zebStsErrStep; zebStsErrNotEvenStep; zebStsErrBadArgument (a focal length not
 * above 0, or any of the numbers not finite); zebStsErrOverflow (the query reports it); zebStsOk.
 */
ZebStatus zebiCreateMapCameraUndistort_32f_C1R(Zeb32f* pMapX, int mapXStep, Zeb32f* pMapY, int mapYStep,
                                               ZebiSize roiSize, ZebiPoint_32f focal, ZebiPoint_32f centre, Zeb32f k1,
                                               Zeb32f k2, Zeb32f p1, Zeb32f p2, Zeb8u* pBuffer);
/**
 * Bytes of pBuffer for the functions above. Status, in this order: zebStsErrNullPointer; zebStsErrSize;
 * zebStsErrOverflow; zebStsOk.
 */
ZebStatus zebiUndistortGetSize(ZebiSize roiSize, int* pBufferSize);
/** @} */

/**
 * @defgroup sampleline Along a line
 *
 * The pixels on the line from pt1 to pt2, both included: n + 1 of them, n the larger of the two extents and a the
 * smaller, one after the other to pDst, which must hold them. Pixel k lies k steps along the longer axis and
 * floor((2 k a + n - 1) / (2 n)) steps along the other one, so that of two pixels equally near the one nearer to pt1's
 * row or column is taken. Method: J. Bresenham, Algorithm for computer control of a digital plotter, 1965.
 *
 * Status, in this order: zebStsErrNullPointer; zebStsErrSize; zebStsErrStep; zebStsErrNotEvenStep (16u and 32f);
 * zebStsErrOutOfRange (pt1 or pt2 not in the region); zebStsOk.
 * @{
 */
ZebStatus zebiSampleLine_8u_C1R(const Zeb8u* pSrc, int srcStep, Zeb8u* pDst, ZebiSize roiSize, ZebiPoint pt1,
                                ZebiPoint pt2);
ZebStatus zebiSampleLine_8u_C3R(const Zeb8u* pSrc, int srcStep, Zeb8u* pDst, ZebiSize roiSize, ZebiPoint pt1,
                                ZebiPoint pt2);
ZebStatus zebiSampleLine_16u_C1R(const Zeb16u* pSrc, int srcStep, Zeb16u* pDst, ZebiSize roiSize, ZebiPoint pt1,
                                 ZebiPoint pt2);
ZebStatus zebiSampleLine_16u_C3R(const Zeb16u* pSrc, int srcStep, Zeb16u* pDst, ZebiSize roiSize, ZebiPoint pt1,
                                 ZebiPoint pt2);
ZebStatus zebiSampleLine_32f_C1R(const Zeb32f* pSrc, int srcStep, Zeb32f* pDst, ZebiSize roiSize, ZebiPoint pt1,
                                 ZebiPoint pt2);
ZebStatus zebiSampleLine_32f_C3R(const Zeb32f* pSrc, int srcStep, Zeb32f* pDst, ZebiSize roiSize, ZebiPoint pt1,
                                 ZebiPoint pt2);
/** @} */

/**
 * @defgroup superresolution Super-resolution
 *
 * One step of iterative back-projection: several small pictures of a scene, shifted against each other, give one of
 * higher resolution. Method: M. Irani, S. Peleg, Improving resolution by image registration, 1991.
 *
 * The six numbers c of pCoeffs map pixel (x, y) of an observation to the position
 *
 *   X = fma(c0, x, fma(c1, y, c2)),  Y = fma(c3, x, fma(c4, y, c5))
 *
 * of the estimate, in double precision. Its footprint, the 2 x 2 or 3 x 3 pixels about that position, begins at
 * (floor(X), floor(Y)), or at (floor(X + 0.5) - 1, floor(Y + 0.5) - 1). pPsf, the point-spread function, has a weight
 * for each of its pixels, row by row; they are used as they are. A pixel whose footprint does not lie in the estimate
 * as a whole is not observed. pCoeffs and pPsf may lie at any address. No image may overlap another.
 *
 * Status, in this order: zebStsErrNullPointer; zebStsErrSize (either size); zebStsErrStep; zebStsErrNotEvenStep (16s
 * and 32f); zebStsErrBadArgument (a coefficient or a weight not finite); zebStsOk.
 * @{
 */

/**
 * What the observation has that the estimate does not explain, in units of 1/128 of a gray level: with the pixels h of
 * the footprint and the weights p, row by row, e = p0 h0, then e = fma(pk, hk, e); the residual is (low - e) x 128 in
 * single precision, limited to -32768..32767 and rounded to nearest even. 0 where a pixel is not observed.
 */
ZebStatus zebiSRCalcResidual_PSF2x2_8u16s_C1R(const Zeb8u* pHigh, int highStep, ZebiSize highSize, const Zeb8u* pLow,
                                              int lowStep, Zeb16s* pRes, int resStep, ZebiSize lowSize,
                                              const Zeb64f* pCoeffs, const Zeb32f* pPsf);
ZebStatus zebiSRCalcResidual_PSF3x3_8u16s_C1R(const Zeb8u* pHigh, int highStep, ZebiSize highSize, const Zeb8u* pLow,
                                              int lowStep, Zeb16s* pRes, int resStep, ZebiSize lowSize,
                                              const Zeb64f* pCoeffs, const Zeb32f* pPsf);
/**
 * Adds residuals to the gradient of the estimate: for every observed pixel in the order of rows, and every pixel g of
 * its footprint, g = fma(pk, residual, g). So several observations accumulate. With the same geometry and weights it is
 * the transpose of the projection e above. Calls that update one gradient must not run at the same time.
 */
ZebStatus zebiSRUpdateGradient_PSF2x2_32f_C1R(const Zeb32f* pRes, int resStep, ZebiSize lowSize, Zeb32f* pGrad,
                                              int gradStep, ZebiSize highSize, const Zeb64f* pCoeffs,
                                              const Zeb32f* pPsf);
ZebStatus zebiSRUpdateGradient_PSF3x3_32f_C1R(const Zeb32f* pRes, int resStep, ZebiSize lowSize, Zeb32f* pGrad,
                                              int gradStep, ZebiSize highSize, const Zeb64f* pCoeffs,
                                              const Zeb32f* pPsf);
/** @} */

#ifdef __cplusplus
}
#endif

#endif
