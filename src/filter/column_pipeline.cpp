// Column half of the separable filters: output row y is the sum of the row buffers y .. y + kernelSize - 1, each
// times its tap. The channels of a pixel are neighbouring elements of a row and need no treatment of their own.
#include "core/checks.h"
#include "core/image.h"
#include "filter/float_runs.h"
#include "filter/pipeline.h"
#include "filter/separable.h"
#include "filter/two_rows.h"

namespace {

using namespace zeb;

// ---- Scratch sizes. The sums are formed in registers and use none of it; the sizes are part of the binary contract.
// ----

constexpr int64_t roundedUp(int64_t width, int multiple) {
  return (width + multiple - 1) / multiple * multiple;
}
constexpr int64_t bytes_16s_C1(int64_t width, int64_t) {
  return 12 * roundedUp(width, 4) + 32 + 32;
}
constexpr int64_t bytes_16s_C3(int64_t width, int64_t) {
  return 36 * roundedUp(width, 4) + 32 + 32;
}
constexpr int64_t bytes_16u_C1(int64_t width, int64_t k) {
  return 32 * k + 64 + 32 * ((width + 3) / 4);
}
constexpr int64_t bytes_16u_C3(int64_t width, int64_t k) {
  return 32 * k + 64 + 32 * ((3 * width + 3) / 4);
}
constexpr int64_t bytes_32f(int64_t, int64_t k) {
  return 32 * k + 32;
}
constexpr int64_t bytes_Low_16s_C1(int64_t width, int64_t) {
  return 12 * roundedUp(width, 8) + 32 + 32;
}
constexpr int64_t bytes_Low_16s_C3(int64_t width, int64_t) {
  return 36 * roundedUp(width, 8) + 32 + 32;
}

ZebStatus columnBufferSize(ZebiSize roi, int kernelSize, int* pBufferSize, int64_t (*bytes)(int64_t, int64_t)) {
  if (auto bad = firstFailure(present(pBufferSize), hasArea(roi), atLeastOne(kernelSize))) return bad;
  return reportSize(bytes(roi.width, kernelSize), pBufferSize);
}

// ---- The operation ----

template <int taps, class Scale, class D>
void filterColumns(const Zeb16s** src, Rows<D> dst, int height, int elements, const Zeb16s* kernel, int kernelSize,
                   int divisor) {
  const Scale scale(divisor);
  using Source = Stacked<Zeb16s, taps>;
  int y = 0;
  if constexpr (taps != 0) {
    for (; y <= height - 2 && elements >= filterBlock; y += 2)
      filterTwoRows(TwoRowSums<taps, Scale>{Stacked<Zeb16s, taps + 1>(src + y), {kernel, kernelSize}, scale}, dst[y],
                    dst[y + 1], elements);
  }
  for (; y < height; ++y)
    filterRun<Rounding::nearest, Rounding::truncate>(
        InterleavedSums<taps, Source, Scale>{Source(src + y), {kernel, kernelSize}, scale}, dst[y], elements);
}

template <class Scale, class D>
void filterColumnsSigned(const Zeb16s** src, Rows<D> dst, int height, int elements, const Zeb16s* kernel,
                         int kernelSize, int divisor) {
  withTaps<3, 5>(kernelSize, [&](auto taps) {
    filterColumns<decltype(taps)::value, Scale>(src, dst, height, elements, kernel, kernelSize, divisor);
  });
}

template <class D>
void filterColumnsScaled(const Zeb16s** src, Rows<D> dst, int height, int elements, const Zeb16s* kernel,
                         int kernelSize, int divisor) {
  if (needsGuard(kernel, kernelSize, divisor))
    return filterColumns<0, Reciprocal<true>>(src, dst, height, elements, kernel, kernelSize, divisor);
  filterColumnsSigned<Reciprocal<false>>(src, dst, height, elements, kernel, kernelSize, divisor);
}

void filterColumnsUnsigned(const Zeb16u** src, Rows<Zeb16u> dst, int height, int elements, const Zeb16u* kernel,
                           int kernelSize, int divisor) {
  const ReciprocalUnsigned scale(divisor);
  using Source = Stacked<Zeb16u, 0>;
  for (int y = 0; y < height; ++y)
    filterRun<Rounding::nearest, Rounding::truncate>(UnsignedSums<Source>{Source(src + y), kernel, kernelSize, scale},
                                                     dst[y], elements);
}

void filterColumnsFloat(const Zeb32f** src, Rows<Zeb32f> dst, int height, int elements, const Zeb32f* kernel,
                        int kernelSize) {
  correlateColumns(src, kernel, kernelSize, dst, height, elements);
}

// Everything up to the divisor. The scratch buffer is looked at this late on purpose.
template <int channels, class S, class D, class K>
ZebStatus runnable(const S** ppSrc, D* pDst, int dstStep, ZebiSize roi, const K* pKernel, int kernelSize,
                   const Zeb8u* pBuffer) {
  if (auto bad = firstFailure(present(ppSrc, pDst, pKernel), hasArea(roi))) return bad;
  return firstFailure(rowsPresent(ppSrc, static_cast<int64_t>(roi.height) + kernelSize - 1), atLeastOne(kernelSize),
                      checked(roi, image<channels>(pDst, dstStep)), present(pBuffer));
}

}  // namespace

// ---- Bindings ----

#define COLUMN_FILTER(name, filter, bytes, S, D, K, channels)                                                        \
  ZEB_ENTRY(name)                                                                                                    \
  (const S** ppSrc, D* pDst, int dstStep, ZebiSize dstRoiSize, const K* pKernel, int kernelSize, int divisor,        \
   Zeb8u* pBuffer) {                                                                                                 \
    if (auto bad = firstFailure(runnable<channels>(ppSrc, pDst, dstStep, dstRoiSize, pKernel, kernelSize, pBuffer),  \
                                require(divisor != 0, zebStsErrBadArgument),                                         \
                                require(bytes(dstRoiSize.width, kernelSize) <= INT32_MAX, zebStsErrOverflow)))       \
      return bad;                                                                                                    \
    filter(ppSrc, Rows(pDst, dstStep), dstRoiSize.height, dstRoiSize.width* channels, pKernel, kernelSize, divisor); \
    return zebStsOk;                                                                                                 \
  }
#define COLUMN_FILTER_FLOAT(name, channels)                                                                         \
  ZEB_ENTRY(name)                                                                                                   \
  (const Zeb32f** ppSrc, Zeb32f* pDst, int dstStep, ZebiSize dstRoiSize, const Zeb32f* pKernel, int kernelSize,     \
   Zeb8u* pBuffer) {                                                                                                \
    if (auto bad = firstFailure(runnable<channels>(ppSrc, pDst, dstStep, dstRoiSize, pKernel, kernelSize, pBuffer), \
                                require(bytes_32f(dstRoiSize.width, kernelSize) <= INT32_MAX, zebStsErrOverflow)))  \
      return bad;                                                                                                   \
    filterColumnsFloat(ppSrc, Rows(pDst, dstStep), dstRoiSize.height, dstRoiSize.width* channels, pKernel,          \
                       kernelSize);                                                                                 \
    return zebStsOk;                                                                                                \
  }

COLUMN_FILTER(zebiFilterColumnPipeline_16s_C1R, filterColumnsScaled, bytes_16s_C1, Zeb16s, Zeb16s, Zeb16s, 1)
COLUMN_FILTER(zebiFilterColumnPipeline_16s_C3R, filterColumnsScaled, bytes_16s_C3, Zeb16s, Zeb16s, Zeb16s, 3)
COLUMN_FILTER(zebiFilterColumnPipeline_16s8u_C1R, filterColumnsScaled, bytes_16s_C1, Zeb16s, Zeb8u, Zeb16s, 1)
COLUMN_FILTER(zebiFilterColumnPipeline_16s8u_C3R, filterColumnsScaled, bytes_16s_C3, Zeb16s, Zeb8u, Zeb16s, 3)
COLUMN_FILTER(zebiFilterColumnPipeline_16s8s_C1R, filterColumnsScaled, bytes_16s_C1, Zeb16s, Zeb8s, Zeb16s, 1)
COLUMN_FILTER(zebiFilterColumnPipeline_16s8s_C3R, filterColumnsScaled, bytes_16s_C3, Zeb16s, Zeb8s, Zeb16s, 3)
COLUMN_FILTER(zebiFilterColumnPipeline_16u_C1R, filterColumnsUnsigned, bytes_16u_C1, Zeb16u, Zeb16u, Zeb16u, 1)
COLUMN_FILTER(zebiFilterColumnPipeline_16u_C3R, filterColumnsUnsigned, bytes_16u_C3, Zeb16u, Zeb16u, Zeb16u, 3)
COLUMN_FILTER_FLOAT(zebiFilterColumnPipeline_32f_C1R, 1)
COLUMN_FILTER_FLOAT(zebiFilterColumnPipeline_32f_C3R, 3)
COLUMN_FILTER(zebiFilterColumnPipeline_Low_16s_C1R, filterColumnsSigned<FixedPoint>, bytes_Low_16s_C1, Zeb16s, Zeb16s,
              Zeb16s, 1)
COLUMN_FILTER(zebiFilterColumnPipeline_Low_16s_C3R, filterColumnsSigned<FixedPoint>, bytes_Low_16s_C3, Zeb16s, Zeb16s,
              Zeb16s, 3)

#define COLUMN_BUFFER_SIZE(name, bytes)                                 \
  ZEB_ENTRY(name)(ZebiSize roiSize, int kernelSize, int* pBufferSize) { \
    return columnBufferSize(roiSize, kernelSize, pBufferSize, bytes);   \
  }

COLUMN_BUFFER_SIZE(zebiFilterColumnPipelineGetBufferSize_16s_C1R, bytes_16s_C1)
COLUMN_BUFFER_SIZE(zebiFilterColumnPipelineGetBufferSize_16s_C3R, bytes_16s_C3)
COLUMN_BUFFER_SIZE(zebiFilterColumnPipelineGetBufferSize_16s8u_C1R, bytes_16s_C1)
COLUMN_BUFFER_SIZE(zebiFilterColumnPipelineGetBufferSize_16s8u_C3R, bytes_16s_C3)
COLUMN_BUFFER_SIZE(zebiFilterColumnPipelineGetBufferSize_16s8s_C1R, bytes_16s_C1)
COLUMN_BUFFER_SIZE(zebiFilterColumnPipelineGetBufferSize_16s8s_C3R, bytes_16s_C3)
COLUMN_BUFFER_SIZE(zebiFilterColumnPipelineGetBufferSize_16u_C1R, bytes_16u_C1)
COLUMN_BUFFER_SIZE(zebiFilterColumnPipelineGetBufferSize_16u_C3R, bytes_16u_C3)
COLUMN_BUFFER_SIZE(zebiFilterColumnPipelineGetBufferSize_32f_C1R, bytes_32f)
COLUMN_BUFFER_SIZE(zebiFilterColumnPipelineGetBufferSize_32f_C3R, bytes_32f)
COLUMN_BUFFER_SIZE(zebiFilterColumnPipelineGetBufferSize_Low_16s_C1R, bytes_Low_16s_C1)
COLUMN_BUFFER_SIZE(zebiFilterColumnPipelineGetBufferSize_Low_16s_C3R, bytes_Low_16s_C3)
