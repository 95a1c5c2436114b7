// Sobel, Scharr, Laplacian and low-pass filters, and the generator of Sobel taps.
#include "core/checks.h"
#include "core/entry.h"
#include "core/image.h"
#include "filter/fixed.h"

namespace {

using namespace zeb;

// ---- Scratch ----

constexpr int reachOf(int mask) {
  return zeb::reachOf(sobelOf(mask));
}

int64_t bytesOfWords(int width, int reach) {
  return ByteLines::scratchBytes(width, 1, reach);
}
int64_t bytesOfFloats(int width, int reach) {
  return FloatLines::scratchBytes(width, reach);
}
int64_t bytesOfLaplacianFloats(int width, int reach) {
  return reach * FloatLines::scratchBytes(width, reach);
}
// Sums are formed for whole blocks of 32 pixels.
constexpr int64_t wholeBlocks(int width) {
  return (int64_t{width} + 31) / 32 * 32;
}
int64_t bytesOfMeans(int width, int reach) {
  return RowResults<Zeb16s>::scratchBytes(2 * reach + 2, wholeBlocks(width)) + wholeBlocks(width) + 2 * reach;
}

using BufferBytes = int64_t (*)(int width, int reach);

ZebStatus bufferSize(ZebiSize roi, int mask, int* pBufferSize, BufferBytes bytes) {
  if (auto bad = firstFailure(present(pBufferSize), hasArea(roi), isMaskSize(mask))) return bad;
  return reportSize(bytes(roi.width, reachOf(mask)), pBufferSize);
}

// ---- The filters ----

template <class T, class D>
struct Job {
  BorderedImage source;
  Rows<const T> src;
  Rows<D> dst;
  Scratch scratch;

  ZebiSize size() const { return source.size(); }
  using Filter = void (*)(const Job&, int mask);
};

// The orders along x and along y.
void derive(const Job<Zeb8u, Zeb16s>& job, Operator op, Order x, Order y) {
  Scratch scratch = job.scratch;
  ByteLines lines(job.source, 1, reachOf(op), byteColumns(op, y), scratch);
  const WordRow along = wordRow(op, x);
  for (int row = 0; row < job.size().height; ++row) {
    lines.form(row);
    along(lines.line(0), 1, job.size().width, job.dst[row]);
  }
}
void derive(const Job<Zeb32f, Zeb32f>& job, Operator op, Order x, Order y) {
  Scratch scratch = job.scratch;
  FloatLines lines(job.source, reachOf(op), floatRow(op, x), scratch);
  const FloatColumns down = floatColumns(op, y);
  for (int row = 0; row < job.size().height; ++row) down(lines.around(row), job.size().width, job.dst[row]);
}

template <Order x, Order y, class T, class D>
void sobel(const Job<T, D>& job, int mask) {
  derive(job, sobelOf(mask), x, y);
}
template <Order x, Order y, class T, class D>
void scharr(const Job<T, D>& job, int) {
  derive(job, Operator::scharr, x, y);
}

void laplacian(const Job<Zeb8u, Zeb16s>& job, int mask) {
  Scratch scratch = job.scratch;
  const int reach = reachOf(mask), width = job.size().width;
  ByteLines lines(job.source, 1, reach, laplacianColumns(reach), scratch);
  for (int y = 0; y < job.size().height; ++y) {
    lines.form(y);
    if (reach == 1)
      laplacianRow3(lines, job.src[y], width, job.dst[y]);
    else
      laplacianRow5(lines, width, job.dst[y]);
  }
}
void laplacian(const Job<Zeb32f, Zeb32f>& job, int mask) {
  Scratch scratch = job.scratch;
  const int width = job.size().width, height = job.size().height;
  if (mask == zebMskSize3x3) {
    FloatLines lines(job.source, 1, laplacianFloatRow3, scratch);
    for (int y = 0; y < height; ++y) {
      const Zeb32f* const* sums = lines.around(y);
      const Zeb32f* const rows[] = {sums[0], job.src[y], sums[2]};
      laplacianFloatColumns3(rows, width, job.dst[y]);
    }
    return;
  }
  FloatLines second(job.source, 2, floatRow(Operator::sobel5, Order::second), scratch);
  FloatLines smooth(job.source, 2, floatRow(Operator::sobel5, Order::smooth), scratch);
  for (int y = 0; y < height; ++y) {
    const Zeb32f *const *a = second.around(y), *const *b = smooth.around(y);
    const Zeb32f* const rows[] = {a[0], a[1], a[2], a[3], a[4], b[0], b[1], b[2], b[3], b[4]};
    laplacianFloatColumns5(rows, width, job.dst[y]);
  }
}

void lowpass(const Job<Zeb8u, Zeb8u>& job, int mask) {
  Scratch scratch = job.scratch;
  const int reach = reachOf(mask), taps = 2 * reach + 1, width = job.size().width, height = job.size().height;
  RowResults<Zeb16s> sums(job.source, taps + 1, wholeBlocks(width), scratch);
  Zeb8u* const line = scratch.take<Zeb8u>(wholeBlocks(width) + 2 * reach, 1);
  const auto columns = job.source.columns(-reach, int64_t{width} + reach);
  const auto make = [&](int64_t q, Zeb16s* out) {
    fetchPixels<1>(job.source, q, columns, line);
    meanRow(reach, line, width, out);
  };
  // Two rows of means have all their rows of sums but one in common.
  int y = 0;
  for (; y < height - 1; y += 2)
    meanColumns(reach, sums.rows(int64_t{y} - reach, taps + 1, make), width, job.dst[y], job.dst[y + 1]);
  if (y < height) meanColumns(reach, sums.rows(int64_t{y} - reach, taps, make), width, job.dst[y], nullptr);
}
void lowpass(const Job<Zeb32f, Zeb32f>& job, int mask) {
  Scratch scratch = job.scratch;
  const int reach = reachOf(mask);
  FloatLines lines(job.source, reach, meanFloatRow(reach), scratch);
  const FloatColumns down = meanFloatColumns(reach);
  for (int y = 0; y < job.size().height; ++y) down(lines.around(y), job.size().width, job.dst[y]);
}

// ---- Checks ----

template <class T, class D>
__attribute__((noinline)) ZebStatus filtered(const T* pSrc, int srcStep, D* pDst, int dstStep, ZebiSize roi, int mask,
                                             ZebiBorderType border, T value, Zeb8u* pBuffer, BufferBytes bytes,
                                             typename Job<T, D>::Filter filter) {
  const auto src = image(pSrc, srcStep);
  const auto dst = image(pDst, dstStep);
  if (auto bad =
          firstFailure(checked(roi, src, dst, also(pBuffer)), isMaskSize(mask), takesBorder(withoutSides(border))))
    return bad;
  const int64_t size = bytes(roi.width, reachOf(mask));
  if (size > INT32_MAX) return zebStsErrOverflow;
  filter(Job<T, D>{BorderedImage(pSrc, srcStep, roi, static_cast<int>(sizeof(T)), border, &value), src, dst,
                   Scratch(pBuffer, size)},
         mask);
  return zebStsOk;
}

// The coefficients of (z - 1)^order (z + 1)^(size - 1 - order).
constexpr int mostTaps = 63;
__attribute__((noinline)) void makeTaps(int size, int order, int sign, int64_t* taps) {
  taps[0] = sign < 0 ? -1 : 1;
  for (int k = 1; k < size; ++k) {
    const int64_t constant = k <= order ? -1 : 1;
    taps[k] = taps[k - 1];
    for (int i = k - 1; i > 0; --i) taps[i] = taps[i - 1] + constant * taps[i];
    taps[0] *= constant;
  }
}

ZebStatus takesTaps(const void* pDst, int kernelSize, int order) {
  return firstFailure(require(pDst != nullptr, zebStsErrNullPointer),
                      require(kernelSize >= 1 && kernelSize <= mostTaps, zebStsErrMaskSize),
                      require(order >= 0 && order < kernelSize, zebStsErrBadArgument));
}

}  // namespace

// ---- Bindings ----

#define FIXED(stem, form, T, D, bytes, filter)                                                              \
  ZEB_ENTRY(zebiFilter##stem##Border_##form)                                                                \
  (const T* pSrc, int srcStep, D* pDst, int dstStep, ZebiSize roiSize, int mask, ZebiBorderType borderType, \
   T borderValue, Zeb8u* pBuffer) {                                                                         \
    return filtered(pSrc, srcStep, pDst, dstStep, roiSize, mask, borderType, borderValue, pBuffer, bytes,   \
                    [](const Job<T, D>& job, int size) { filter(job, size); });                             \
  }                                                                                                         \
  ZEB_ENTRY(zebiFilter##stem##GetBufferSize_##form)(ZebiSize roiSize, int mask, int* pBufferSize) {         \
    return bufferSize(roiSize, mask, pBufferSize, bytes);                                                   \
  }
#define SOBEL(stem, x, y)                                                   \
  FIXED(Sobel##stem, 8u16s_C1R, Zeb8u, Zeb16s, bytesOfWords, (sobel<x, y>)) \
  FIXED(Sobel##stem, 32f_C1R, Zeb32f, Zeb32f, bytesOfFloats, (sobel<x, y>))

SOBEL(Horiz, Order::first, Order::smooth)
SOBEL(Vert, Order::smooth, Order::first)
SOBEL(HorizSecond, Order::second, Order::smooth)
SOBEL(VertSecond, Order::smooth, Order::second)
SOBEL(Cross, Order::first, Order::first)
FIXED(Laplacian, 8u16s_C1R, Zeb8u, Zeb16s, bytesOfWords, laplacian)
FIXED(Laplacian, 32f_C1R, Zeb32f, Zeb32f, bytesOfLaplacianFloats, laplacian)
FIXED(Lowpass, 8u_C1R, Zeb8u, Zeb8u, bytesOfMeans, lowpass)
FIXED(Lowpass, 32f_C1R, Zeb32f, Zeb32f, bytesOfFloats, lowpass)

#define SCHARR(stem, form, T, D, bytes, x, y)                                                                      \
  ZEB_ENTRY(zebiFilterScharr##stem##Border_##form)                                                                 \
  (const T* pSrc, int srcStep, D* pDst, int dstStep, ZebiSize roiSize, ZebiBorderType borderType, T borderValue,   \
   Zeb8u* pBuffer) {                                                                                               \
    return filtered(pSrc, srcStep, pDst, dstStep, roiSize, zebMskSize3x3, borderType, borderValue, pBuffer, bytes, \
                    [](const Job<T, D>& job, int size) { scharr<x, y>(job, size); });                              \
  }                                                                                                                \
  ZEB_ENTRY(zebiFilterScharr##stem##GetBufferSize_##form)(ZebiSize roiSize, int* pBufferSize) {                    \
    return bufferSize(roiSize, zebMskSize3x3, pBufferSize, bytes);                                                 \
  }
#define SCHARR_BOTH(stem, x, y)                              \
  SCHARR(stem, 8u16s_C1R, Zeb8u, Zeb16s, bytesOfWords, x, y) \
  SCHARR(stem, 32f_C1R, Zeb32f, Zeb32f, bytesOfFloats, x, y)

SCHARR_BOTH(Horiz, Order::first, Order::smooth)
SCHARR_BOTH(Vert, Order::smooth, Order::first)

ZEB_ENTRY(zebiGenSobelKernel_16s)(Zeb16s* pDst, int kernelSize, int order, int sign) {
  if (auto bad = takesTaps(pDst, kernelSize, order)) return bad;
  int64_t taps[mostTaps];
  makeTaps(kernelSize, order, sign, taps);
  for (int i = 0; i < kernelSize; ++i)
    if (taps[i] != static_cast<Zeb16s>(taps[i])) return zebStsErrOverflow;
  for (int i = 0; i < kernelSize; ++i) pDst[i] = static_cast<Zeb16s>(taps[i]);
  return zebStsOk;
}
ZEB_ENTRY(zebiGenSobelKernel_32f)(Zeb32f* pDst, int kernelSize, int order, int sign) {
  if (auto bad = takesTaps(pDst, kernelSize, order)) return bad;
  int64_t taps[mostTaps];
  makeTaps(kernelSize, order, sign, taps);
  for (int i = 0; i < kernelSize; ++i) pDst[i] = static_cast<Zeb32f>(taps[i]);
  return zebStsOk;
}
