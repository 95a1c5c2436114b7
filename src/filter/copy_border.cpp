// Copies with a border: the image in the middle, the frame from a constant, the edge pixels or the memory around it.
#include "filter/copy_border.h"

#include "core/image.h"
#include "filter/bit_rows.h"

namespace zeb {

namespace {

ZebStatus holds(const FrameShape& s) {
  return firstFailure(hasArea(s.src), hasArea(s.dst), require(s.top >= 0 && s.left >= 0, zebStsErrSize),
                      require(s.dst.width >= static_cast<int64_t>(s.src.width) + s.left, zebStsErrSize),
                      require(s.dst.height >= static_cast<int64_t>(s.src.height) + s.top, zebStsErrSize));
}

ZebStatus copyable(const void* pSrc, int srcStep, const void* pDst, int dstStep, const FrameShape& shape) {
  return firstFailure(present(pSrc, pDst), require(srcStep >= 1 && dstStep >= 1, zebStsErrStep), holds(shape));
}

}  // namespace

ZebStatus copyBorder(const void* pSrc, int srcStep, void* pDst, int dstStep, const FrameShape& shape, int pixelBytes,
                     ZebiBorderType border, const void* value) {
  if (auto bad = copyable(pSrc, srcStep, pDst, dstStep, shape)) return bad;
  const BorderedImage source(pSrc, srcStep, shape.src, pixelBytes, border, value);
  const Rows<Zeb8u> dst(static_cast<Zeb8u*>(pDst), dstStep);
  const auto columns = source.columns(-shape.left, static_cast<int64_t>(shape.dst.width) - shape.left);
  for (int y = 0; y < shape.dst.height; ++y) source.fetch(static_cast<int64_t>(y) - shape.top, columns, dst[y]);
  return zebStsOk;
}

ZebStatus fillFrame(void* pSrcDst, int step, const FrameShape& shape, int pixelBytes) {
  if (auto bad = copyable(pSrcDst, step, pSrcDst, step, shape)) return bad;
  const BorderedImage source(pSrcDst, step, shape.src, pixelBytes);
  const Rows<Zeb8u> dst = Rows<Zeb8u>(static_cast<Zeb8u*>(pSrcDst), step)
                              .from(static_cast<int>(-int64_t(shape.left) * pixelBytes), -shape.top);
  const auto columns = source.columns(-shape.left, static_cast<int64_t>(shape.dst.width) - shape.left);
  const size_t bytes = static_cast<size_t>(static_cast<int64_t>(shape.dst.width) * pixelBytes);
  const int last = shape.top + shape.src.height - 1;
  for (int y = shape.top; y <= last; ++y) source.complete(dst[y], columns);
  for (int y = 0; y < shape.top; ++y) memcpy(dst[y], dst[shape.top], bytes);
  for (int y = last + 1; y < shape.dst.height; ++y) memcpy(dst[y], dst[last], bytes);
  return zebStsOk;
}

ZebStatus copyReplicateBorder1u(const Zeb8u* pSrc, int srcStep, ZebiSize srcSize, Zeb8u* pDst, int dstStep,
                                ZebiSize dstSize, int top, int left) {
  return copyInMemBorder1u(pSrc, srcStep, srcSize, pDst, dstStep, dstSize, top, left, zebBorderRepl);
}

ZebStatus copyInMemBorder1u(const Zeb8u* pSrc, int srcStep, ZebiSize srcSize, Zeb8u* pDst, int dstStep,
                            ZebiSize dstSize, int top, int left, ZebiBorderType border) {
  if (auto bad = copyable(pSrc, srcStep, pDst, dstStep, {srcSize, dstSize, top, left})) return bad;
  const BitRows source(pSrc, srcStep, 0, srcSize, replicatedElsewhere(border));
  const Rows<Zeb8u> dst(pDst, dstStep);
  for (int y = 0; y < dstSize.height; ++y)
    source.fetch(static_cast<int64_t>(y) - top, -left, static_cast<int64_t>(dstSize.width) - left, dst[y]);
  return zebStsOk;
}

}  // namespace zeb
