// The Canny detector on an 8-bit image, which it differentiates itself.
#include "core/entry.h"
#include "core/vec.h"
#include "feature/canny.h"
#include "filter/derivative.h"

namespace {

using namespace zeb;

int64_t bufferSize(ZebiSize roi, int mask) {
  const int64_t b = mask == zebMskSize3x3 ? 2 : 4, w = roi.width + b, h = roi.height + b;
  return boundedProduct(h + 16 + 4 * h, w) + 64;
}

// Derivatives of 8-bit pixels stay below 2^15 together, so a sum of absolute values compares with the truncated
// threshold as the threshold itself would.
using Sum = SumOfAbsolutes<VerticalBySum>;

struct RootOfSquares {
  using Magnitude = Zeb32f;
  static Magnitude threshold(Zeb32f t) { return t; }
  static void magnitudes(const Zeb16s* dx, const Zeb16s* dy, Zeb32f* out, int n, Zeb32f low) {
    const V32f bound = splat(low);
    forVectors<8>(0, n, [&](int x, auto part) ZEB_BODY {
      const V32f fx = part.floats(dx + x), fy = part.floats(dy + x);
      const V32f m = sqrt(fma(fx, fx, fy * fy));
      part.to(out + x, less(bound, m) & m);
    });
  }
  template <class Part>
  static ZEB_INLINE Sectors32 sectors(const Zeb16s* dx, const Zeb16s* dy, const Part part) {
    return sectorsOf<VerticalBySum>(part.floats(dx), part.floats(dy));
  }
};

struct Request {
  BorderedImage source;
  Rows<Zeb8u> dst;
};

// The rows that the passes work on lie where the stack of the hysteresis comes afterwards.
template <class Form>
void detect(Operator op, const Request& image, Zeb32f lowThresh, Zeb32f highThresh, Zeb8u* pBuffer, int64_t size) {
  using M = typename Form::Magnitude;
  const ZebiSize roi = image.source.size();
  Scratch scratch(pBuffer, size);
  const CannyMap map = takeCannyMap(scratch, roi);
  Scratch stack = scratch;
  DerivativeRows<Zeb8u> derivatives(op, image.source, scratch);
  const MagnitudeRing<M> ring(scratch, roi.width);
  Zeb16s *dx[2], *dy[2];
  for (int k = 0; k < 2; ++k) dx[k] = scratch.take<Zeb16s>(roi.width, 1), dy[k] = scratch.take<Zeb16s>(roi.width, 1);
  const M low = Form::threshold(lowThresh), high = Form::threshold(highThresh);
  for (int y = 0; y <= roi.height; ++y) {
    if (y < roi.height) {
      derivatives.form(y, dx[y & 1], dy[y & 1]);
      Form::magnitudes(dx[y & 1], dy[y & 1], ring.row(y), roi.width, low);
    } else {
      memset(ring.row(y), 0, static_cast<size_t>(roi.width) * sizeof(M));
    }
    if (y == 0) continue;
    const Zeb16s *rowDx = dx[(y - 1) & 1], *rowDy = dy[(y - 1) & 1];
    suppressRow(ring, y - 1, roi.width, high, map.row(y - 1),
                [=](int x, auto part) ZEB_BODY { return Form::sectors(rowDx + x, rowDy + x, part); });
  }
  hysteresis(map, roi, stack, image.dst);
}

}  // namespace

ZEB_ENTRY(zebiCannyBorderGetSize)(ZebiSize roiSize, int, int mask, int, int* pBufferSize) {
  if (auto bad = firstFailure(present(pBufferSize), hasArea(roiSize), isMaskSize(mask))) return bad;
  return reportSize(bufferSize(roiSize, mask), pBufferSize);
}

ZEB_ENTRY(zebiCannyBorder_8u_C1R)
(const Zeb8u* pSrc, int srcStep, Zeb8u* pDst, int dstStep, ZebiSize roiSize, int filterType, int mask,
 ZebiBorderType borderType, Zeb8u borderValue, Zeb32f lowThresh, Zeb32f highThresh, int norm, Zeb8u* pBuffer) {
  if (auto bad = firstFailure(
          isMaskSize(mask), require(mask == zebMskSize3x3 || filterType != zebFilterScharr, zebStsErrMaskSize),
          present(pSrc, pDst, pBuffer), hasArea(roiSize),
          require(filterType == zebFilterSobel || filterType == zebFilterScharr, zebStsErrBadArgument),
          require(norm == zebNormL1 || norm == zebNormL2, zebStsErrBadArgument),
          orderedThresholds(lowThresh, highThresh), takesBorder(borderBase(borderType))))
    return bad;
  const int64_t size = bufferSize(roiSize, mask);
  if (size > INT32_MAX) return zebStsErrOverflow;
  const Request image = {BorderedImage(pSrc, srcStep, roiSize, 1, borderType, &borderValue), Rows(pDst, dstStep)};
  (norm == zebNormL1 ? detect<Sum> : detect<RootOfSquares>)(operatorOf(filterType, mask), image, lowThresh, highThresh,
                                                            pBuffer, size);
  return zebStsOk;
}
