// Row half of the separable filters: every source row, extended at both ends by its border rule, is correlated with a
// kernel into a row buffer of its own.
//
// Outputs whose taps all lie inside the row are computed straight from it; the others from two short segments in the
// scratch buffer that hold the ends of the row with their border. Outputs from the segments are truncated, the others
// rounded to the nearest even.
#include "core/checks.h"
#include "core/image.h"
#include "core/scratch.h"
#include "filter/border.h"
#include "filter/byte_ends.h"
#include "filter/byte_sums.h"
#include "filter/float_runs.h"
#include "filter/pipeline.h"
#include "filter/separable.h"

namespace {

using namespace zeb;

// ---- Scratch sizes, from the number of taps ----

constexpr int64_t bytes_8u16s_C1(int64_t k) {
  return 2 * (k + 1) + 32 + 32 * (k + k / 4) + 32;
}
constexpr int64_t bytes_8u16s_C3(int64_t k) {
  return 60 * k + 112 + 32;
}
constexpr int64_t bytes_16s_C1(int64_t k) {
  return 48 * k + 80 + 32;
}
constexpr int64_t bytes_16s_C3(int64_t k) {
  return 40 * k + 64 + 32;
}
constexpr int64_t bytes_16u_C1(int64_t k) {
  return 64 * k + 96;
}
constexpr int64_t bytes_16u_C3(int64_t k) {
  return 128 * k + 96;
}
constexpr int64_t bytes_32f_C1(int64_t k) {
  return 48 * k + 64 + 32;
}
constexpr int64_t bytes_32f_C3(int64_t k) {
  return 144 * k + 64 + 32;
}
constexpr int64_t bytes_Low_16s_C1(int64_t k) {
  return 24 * k + 64 + 32;
}
constexpr int64_t bytes_Low_16s_C3(int64_t k) {
  return 208 * k + 64 + 32;
}

ZebStatus rowBufferSize(ZebiSize roi, int kernelSize, int* pBufferSize, int64_t (*bytes)(int64_t)) {
  if (auto bad = firstFailure(present(pBufferSize), hasArea(roi), atLeastOne(kernelSize))) return bad;
  return reportSize(bytes(kernelSize), pBufferSize);
}

// ---- The operation ----

// Pixels of the segments that hold both ends of a row.
constexpr int64_t segmentPixels(int kernelSize) {
  return 3 * (static_cast<int64_t>(kernelSize) - 1);
}

// Both ends of a row with what a kernel reads beside them. The left segment: anchor border pixels, then the first
// kernelSize - 1 pixels of the row. The right segment: the last kernelSize - 1 pixels, then kernelSize - 1 - anchor
// border pixels. In a row shorter than kernelSize - 1 the segments run on into the other side's border, as far as an
// output of the row reads; places beyond that are left unwritten.
template <class S, int channels>
class RowEnds {
 public:
  RowEnds(const BorderedImage& source, int kernelSize, int anchor, S* work) : source_(source), work_(work) {
    const int reach = kernelSize - 1, width = source.size().width;
    const int first = -anchor, end = width + (reach - anchor), rightFirst = width - reach;
    left_ = source.columns(first, reach < end ? reach : end);
    right_ = source.columns(rightFirst > first ? rightFirst : first, end);
    rightWork_ = work + static_cast<ptrdiff_t>(anchor + reach) * channels;
    rightAt_ = rightWork_ + static_cast<ptrdiff_t>(right_.from - rightFirst) * channels;
  }

  void fill(int y) const {
    if (left_.from < left_.to) source_.fetch<px>(y, left_, reinterpret_cast<Zeb8u*>(work_));
    if (right_.from < right_.to) source_.fetch<px>(y, right_, reinterpret_cast<Zeb8u*>(rightAt_));
  }
  const S* left() const { return work_; }
  const S* right() const { return rightWork_; }

 private:
  static constexpr int px = channels * static_cast<int>(sizeof(S));
  const BorderedImage& source_;
  BorderedImage::Columns left_, right_;
  S *work_, *rightWork_, *rightAt_;
};

// What a run of outputs is computed from, and so how it is rounded.
enum class Part {
  inner,      // the row itself, to the nearest
  shortRow,   // the row itself, truncated
  borderline  // a segment, truncated; at least a block of it can be read
};

// What a call is asked to do. value: the border's, one per channel.
template <class S, int channels_, class D, class K>
struct Job {
  static constexpr int channels = channels_;
  Rows<const S> src;
  D** dst;
  ZebiSize roi;
  const K* kernel;
  int kernelSize, anchor;
  ZebiBorderType border;
  const S* value;
  Scratch scratch;
};

// run(source, destination, elements, part) computes outputs from sources whose first element is under the first tap.
template <class S, int channels, class D, class K, class Run>
void filterRows(const Job<S, channels, D, K>& job, Run run) {
  const int width = job.roi.width, kernelSize = job.kernelSize, anchor = job.anchor, reach = kernelSize - 1;
  Scratch scratch = job.scratch;
  S* const work = scratch.take<S>(segmentPixels(kernelSize) * channels + filterBlock, sizeof(S) == 4 ? 32 : 16);
  const int leftOutputs = anchor < width ? anchor : width;
  const int innerOutputs = width > reach ? width - reach : 0;
  const int rightOutput = anchor + innerOutputs;  // the first output from the right segment, unless beyond the row
  const int rightOffset = width > reach ? 0 : reach - width;  // its first tap in that segment
  // Three taps walk short rows pixel by pixel, which truncates.
  const Part inner = kernelSize == 3 && width <= 16 ? Part::shortRow : Part::inner;
  const BorderedImage source(job.src[0], job.src.step(), job.roi, channels * static_cast<int>(sizeof(S)), job.border,
                             job.value);
  const RowEnds<S, channels> ends(source, kernelSize, anchor, work);
  for (int y = 0; y < job.roi.height; ++y) {
    const S* const row = job.src[y];
    D* const out = job.dst[y];
    if (innerOutputs > 0) run(row, out + anchor * channels, innerOutputs * channels, inner);
    if (reach == 0) continue;
    ends.fill(y);
    if (leftOutputs > 0) run(ends.left(), out, leftOutputs * channels, Part::borderline);
    if (rightOutput < width)
      run(ends.right() + rightOffset * channels, out + rightOutput * channels, (width - rightOutput) * channels,
          Part::borderline);
  }
}

template <class Sums, class D>
void runPart(const Sums& sums, D* out, int n, Part part) {
  switch (part) {
    case Part::inner:
      return filterRun<Rounding::nearest, Rounding::nearest>(sums, out, n);
    case Part::shortRow:
      return filterRun<Rounding::truncate, Rounding::truncate>(sums, out, n);
    case Part::borderline:
      return filterRun<Rounding::truncate, Rounding::truncate, Behind::readable>(sums, out, n);
  }
}

// Sums that are moved from run to run: their taps and scale are set up once a call.
template <class Sums>
struct MovingSums {
  Sums sums;

  template <class S, class D>
  void operator()(const S* p, D* out, int n, Part part) {
    sums.source.first = p;
    runPart(sums, out, n, part);
  }
};

template <int taps, int channels, class S, class Scale>
auto signedSums(const Zeb16s* kernel, int kernelSize, Scale scale) {
  using Sums = std::conditional_t<channels == 1, NeighbourSums<taps, S, Scale>,
                                  InterleavedSums<taps, Shifted<S, channels>, Scale>>;
  return MovingSums<Sums>{{{}, {kernel, kernelSize}, scale}};
}

// Bytes under small taps: inner runs by sums of 16 bits where they are long enough, the rest by the other sums.
template <class ByteSums, class Rest>
struct MovingByteSums {
  ByteSums bytes;
  Rest rest;

  void operator()(const Zeb8u* p, Zeb16s* out, int n, Part part) {
    if (part != Part::inner || n < byteBlock) return rest(p, out, n, part);
    bytes.source.first = p;
    bytes.run(out, n);
  }
};

// The same with both ends of a row at once, where that is long enough. Of the outputs of the ends those that lie inside
// are written over.
template <int channels, class ByteSums, class Rest>
void filterLongByteRows(const Job<Zeb8u, channels, Zeb16s, Zeb16s>& job, ByteSums bytes, Rest rest) {
  using Ends = ByteEnds<channels>;
  const int reach = (job.kernelSize - 1) * channels, before = job.anchor * channels, n = job.roi.width * channels;
  const Ends ends(job.border, job.value, n, before, reach - before);
  // The ends of the next row are stored before those of this one are read, which need not wait then.
  constexpr int bytesOfEnds = 4 * Ends::outputs;
  Scratch scratch = job.scratch;
  Zeb8u* const room = scratch.take<Zeb8u>(2 * bytesOfEnds, 2 * Ends::outputs);
  const auto fill = [&](int y) {
    Zeb8u* const left = room + y % 2 * bytesOfEnds;
    ends.fill(job.src[y], left, left + 2 * Ends::outputs);
  };
  fill(0);
  const auto end = [&](const Zeb8u* p, Zeb16s* out) {
    rest.source.first = anew(p);
    storeSat(out, rest.template block<Rounding::truncate>(0));
  };
  for (int y = 0; y < job.roi.height; ++y) {
    const Zeb8u* const row = job.src[y];
    Zeb16s* const out = job.dst[y];
    if (y + 1 < job.roi.height) fill(y + 1);
    const Zeb8u* const left = room + y % 2 * bytesOfEnds;
    end(left, out);
    end(left + 2 * Ends::outputs, out + n - Ends::outputs);
    bytes.source.first = row;
    bytes.run(out + before, n - reach);
  }
}

// Says no, and does nothing, where short rows call for the other sums.
template <WordScaling scaling, int taps, int channels, class Rest>
bool filterByteRows(const Job<Zeb8u, channels, Zeb16s, Zeb16s>& job, const Rest& rest, int divisor) {
  const ByteSums<taps, channels, scaling> bytes = {{}, {job.kernel, job.kernelSize}, WordScale<scaling>(divisor)};
  if constexpr (taps == 0) {
    filterRows(job, MovingByteSums<ByteSums<taps, channels, scaling>, Rest>{bytes, rest});
  } else {
    if (job.roi.width < byteBlock + taps) return false;
    filterLongByteRows(job, bytes, rest.sums);
  }
  return true;
}
template <int taps, int channels, class Rest>
bool filterByteRows(const Job<Zeb8u, channels, Zeb16s, Zeb16s>& job, const Rest& rest, int divisor) {
  switch (wordScaling(divisor)) {
    case WordScaling::none:
      return filterByteRows<WordScaling::none, taps>(job, rest, divisor);
    case WordScaling::powerOfTwo:
      return filterByteRows<WordScaling::powerOfTwo, taps>(job, rest, divisor);
    default:
      return filterByteRows<WordScaling::general, taps>(job, rest, divisor);
  }
}

// Pairs of words are read on behind the segments. What is there counts for nothing, but memory checkers follow sums of
// pairs by eight bytes only: left unwritten, it would seem to be in the last results.
template <class S, int channels, class D, class K>
void clearSegments(const Job<S, channels, D, K>& job) {
  Scratch scratch = job.scratch;
  const int64_t elements = segmentPixels(job.kernelSize) * channels + filterBlock;
  memset(scratch.take<S>(elements, 16), 0, static_cast<size_t>(elements) * sizeof(S));
}

template <int channels, class S>
void filterRowsSigned(const Job<S, channels, Zeb16s, Zeb16s>& job, int divisor) {
  clearSegments(job);
  const Zeb16s* const kernel = job.kernel;
  const int count = job.kernelSize;
  if (needsGuard(kernel, count, divisor))
    return filterRows(job, signedSums<0, channels, S>(kernel, count, Reciprocal<true>(divisor)));
  withTaps<3, 5>(count, [&](auto number) {
    constexpr int taps = decltype(number)::value;
    const auto sums = signedSums<taps, channels, S>(kernel, count, Reciprocal<false>(divisor));
    if constexpr (sizeof(S) == 1) {
      if (fitsByteSums(kernel, count) && filterByteRows<taps>(job, sums, divisor)) return;
    }
    filterRows(job, sums);
  });
}

template <int channels>
void filterRowsLow(const Job<Zeb16s, channels, Zeb16s, Zeb16s>& job, int divisor) {
  clearSegments(job);
  withTaps<3, 5>(job.kernelSize, [&](auto taps) {
    filterRows(job,
               signedSums<decltype(taps)::value, channels, Zeb16s>(job.kernel, job.kernelSize, FixedPoint(divisor)));
  });
}

template <int channels>
void filterRowsUnsigned(const Job<Zeb16u, channels, Zeb16u, Zeb16u>& job, int divisor) {
  using Sums = UnsignedSums<Shifted<Zeb16u, channels>>;
  filterRows(job, MovingSums<Sums>{{{}, job.kernel, job.kernelSize, ReciprocalUnsigned(divisor)}});
}

template <int channels>
void filterRowsFloat(const Job<Zeb32f, channels, Zeb32f, Zeb32f>& job, int) {
  if (channels == 1 &&
      correlateRows({job.src, job.dst, job.roi, job.anchor, job.border, job.border == zebBorderConst ? *job.value : 0},
                    job.kernel, job.kernelSize))
    return;
  const auto run = [kernel = job.kernel, count = job.kernelSize](const Zeb32f* p, Zeb32f* out, int n, Part) {
    correlateRow<channels>(p, kernel, count, out, n);
  };
  filterRows(job, run);
}

// ---- Checks ----

// Everything up to the divisor. A border value given by pointer must be there when it is to be read.
template <class S, int channels, class D, class K>
ZebStatus runnable(const Image<const S, channels>& src, D** ppDst, ZebiSize roi, const K* pKernel, int kernelSize,
                   int xAnchor, ZebiBorderType borderType, const S* pBorderValue, const Zeb8u* pBuffer) {
  if (auto bad =
          firstFailure(present(src.pixels, ppDst, pKernel, pBuffer),
                       require(pBorderValue || borderType != zebBorderConst, zebStsErrNullPointer), hasArea(roi)))
    return bad;
  return firstFailure(rowsPresent(ppDst, roi.height), atLeastOne(kernelSize),
                      require(xAnchor >= 0 && xAnchor < kernelSize, zebStsErrAnchor), checked(roi, src),
                      takesBorder(borderType, zebStsErrBadArgument));
}

// No kernel has a divisor of 0, nor one of unsigned elements a negative one.
template <class S>
ZebStatus divides(int divisor) {
  return require(std::is_same_v<S, Zeb16u> ? divisor >= 1 : divisor != 0, zebStsErrBadArgument);
}

}  // namespace

// ---- Bindings ----

#define ROW_FILTER(name, filter, bytes, S, D, K, channels, borderArgument, pBorderValue)                          \
  ZEB_ENTRY(name)                                                                                                 \
  (const S* pSrc, int srcStep, D** ppDst, ZebiSize roiSize, const K* pKernel, int kernelSize, int xAnchor,        \
   ZebiBorderType borderType, borderArgument, int divisor, Zeb8u* pBuffer) {                                      \
    if (auto bad = firstFailure(runnable<S, channels>(image<channels>(pSrc, srcStep), ppDst, roiSize, pKernel,    \
                                                      kernelSize, xAnchor, borderType, pBorderValue, pBuffer),    \
                                divides<S>(divisor), require(bytes(kernelSize) <= INT32_MAX, zebStsErrOverflow))) \
      return bad;                                                                                                 \
    filter(Job<S, channels, D, K>{Rows(pSrc, srcStep), ppDst, roiSize, pKernel, kernelSize, xAnchor, borderType,  \
                                  pBorderValue, Scratch(pBuffer, bytes(kernelSize))},                             \
           divisor);                                                                                              \
    return zebStsOk;                                                                                              \
  }
#define ROW_FILTER_FLOAT(name, channels, bytes, borderArgument, pBorderValue)                                       \
  ZEB_ENTRY(name)                                                                                                   \
  (const Zeb32f* pSrc, int srcStep, Zeb32f** ppDst, ZebiSize roiSize, const Zeb32f* pKernel, int kernelSize,        \
   int xAnchor, ZebiBorderType borderType, borderArgument, Zeb8u* pBuffer) {                                        \
    if (auto bad = firstFailure(runnable<Zeb32f, channels>(image<channels>(pSrc, srcStep), ppDst, roiSize, pKernel, \
                                                           kernelSize, xAnchor, borderType, pBorderValue, pBuffer), \
                                require(bytes(kernelSize) <= INT32_MAX, zebStsErrOverflow)))                        \
      return bad;                                                                                                   \
    filterRowsFloat(                                                                                                \
        Job<Zeb32f, channels, Zeb32f, Zeb32f>{Rows(pSrc, srcStep), ppDst, roiSize, pKernel, kernelSize, xAnchor,    \
                                              borderType, pBorderValue, Scratch(pBuffer, bytes(kernelSize))},       \
        1);                                                                                                         \
    return zebStsOk;                                                                                                \
  }

ROW_FILTER(zebiFilterRowBorderPipeline_8u16s_C1R, filterRowsSigned, bytes_8u16s_C1, Zeb8u, Zeb16s, Zeb16s, 1,
           Zeb8u borderValue, &borderValue)
ROW_FILTER(zebiFilterRowBorderPipeline_8u16s_C3R, filterRowsSigned, bytes_8u16s_C3, Zeb8u, Zeb16s, Zeb16s, 3,
           const Zeb8u* pBorderValue, pBorderValue)
ROW_FILTER(zebiFilterRowBorderPipeline_16s_C1R, filterRowsSigned, bytes_16s_C1, Zeb16s, Zeb16s, Zeb16s, 1,
           Zeb16s borderValue, &borderValue)
ROW_FILTER(zebiFilterRowBorderPipeline_16s_C3R, filterRowsSigned, bytes_16s_C3, Zeb16s, Zeb16s, Zeb16s, 3,
           const Zeb16s* pBorderValue, pBorderValue)
ROW_FILTER(zebiFilterRowBorderPipeline_16u_C1R, filterRowsUnsigned, bytes_16u_C1, Zeb16u, Zeb16u, Zeb16u, 1,
           Zeb16u borderValue, &borderValue)
ROW_FILTER(zebiFilterRowBorderPipeline_16u_C3R, filterRowsUnsigned, bytes_16u_C3, Zeb16u, Zeb16u, Zeb16u, 3,
           const Zeb16u* pBorderValue, pBorderValue)
ROW_FILTER_FLOAT(zebiFilterRowBorderPipeline_32f_C1R, 1, bytes_32f_C1, Zeb32f borderValue, &borderValue)
ROW_FILTER_FLOAT(zebiFilterRowBorderPipeline_32f_C3R, 3, bytes_32f_C3, const Zeb32f* pBorderValue, pBorderValue)
ROW_FILTER(zebiFilterRowBorderPipeline_Low_16s_C1R, filterRowsLow, bytes_Low_16s_C1, Zeb16s, Zeb16s, Zeb16s, 1,
           Zeb16s borderValue, &borderValue)
ROW_FILTER(zebiFilterRowBorderPipeline_Low_16s_C3R, filterRowsLow, bytes_Low_16s_C3, Zeb16s, Zeb16s, Zeb16s, 3,
           const Zeb16s* pBorderValue, pBorderValue)

#define ROW_BUFFER_SIZE(name, bytes)                                    \
  ZEB_ENTRY(name)(ZebiSize roiSize, int kernelSize, int* pBufferSize) { \
    return rowBufferSize(roiSize, kernelSize, pBufferSize, bytes);      \
  }

ROW_BUFFER_SIZE(zebiFilterRowBorderPipelineGetBufferSize_8u16s_C1R, bytes_8u16s_C1)
ROW_BUFFER_SIZE(zebiFilterRowBorderPipelineGetBufferSize_8u16s_C3R, bytes_8u16s_C3)
ROW_BUFFER_SIZE(zebiFilterRowBorderPipelineGetBufferSize_16s_C1R, bytes_16s_C1)
ROW_BUFFER_SIZE(zebiFilterRowBorderPipelineGetBufferSize_16s_C3R, bytes_16s_C3)
ROW_BUFFER_SIZE(zebiFilterRowBorderPipelineGetBufferSize_16u_C1R, bytes_16u_C1)
ROW_BUFFER_SIZE(zebiFilterRowBorderPipelineGetBufferSize_16u_C3R, bytes_16u_C3)
ROW_BUFFER_SIZE(zebiFilterRowBorderPipelineGetBufferSize_32f_C1R, bytes_32f_C1)
ROW_BUFFER_SIZE(zebiFilterRowBorderPipelineGetBufferSize_32f_C3R, bytes_32f_C3)
ROW_BUFFER_SIZE(zebiFilterRowBorderPipelineGetBufferSize_Low_16s_C1R, bytes_Low_16s_C1)
ROW_BUFFER_SIZE(zebiFilterRowBorderPipelineGetBufferSize_Low_16s_C3R, bytes_Low_16s_C3)
