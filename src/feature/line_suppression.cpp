// Line suppression: a response goes where the strong pixels of its ring are two short runs opposite each other.
#include "core/checks.h"
#include "core/entry.h"
#include "core/scratch.h"
#include "core/shuffle.h"
#include "core/streaming.h"
#include "feature/circles.h"
#include "filter/border.h"
#include "zebcv/fastn.h"

namespace zeb {

namespace {

// One bit for every pattern of strong positions: whether it is that of a line.
template <int positions>
struct Patterns {
  Zeb8u bits[(1 << positions) / 8] = {};

  constexpr Patterns() {
    for (int first = 0; first < positions; ++first)
      for (int length = 1; length <= positions / 4; ++length)
        for (int gap = 1; gap < positions - length; ++gap)
          for (int second = 1; second <= positions / 4 && length + gap + second < positions; ++second)
            if (opposite(length, gap, second)) set(run(first, length) | run(first + length + gap, second));
  }
  constexpr unsigned run(int from, int length) const {
    unsigned marks = 0;
    for (int i = 0; i < length; ++i) marks |= 1u << (from + i) % positions;
    return marks;
  }
  // Twice the way between the middles, which must be at least 3/8 of the ring either way round.
  static constexpr bool opposite(int length, int gap, int second) {
    const int way = length + 2 * gap + second;
    return way >= 2 * 3 * positions / 8 && 2 * positions - way >= 2 * 3 * positions / 8;
  }
  constexpr void set(unsigned marks) { bits[marks / 8] = static_cast<Zeb8u>(bits[marks / 8] | 1u << marks % 8); }
  bool holds(unsigned marks) const { return bits[marks / 8] >> marks % 8 & 1; }
};
constexpr Patterns<8> nearLines;
constexpr Patterns<16> farLines;

int64_t stride(int width, int reach) {
  return int64_t{width} + 2 * reach + 3 * V8u::lanes;
}
int64_t bufferBytes(int width, int reach) {
  return (2 * reach + 1) * stride(width, reach);
}

// The strong ones of eight positions as one bit for each.
ZEB_INLINE V8u marksOfEight(const Zeb8u* const* rows, int x, const Offset* ring, int reach, V8u least) {
  V8u marks = splat(Zeb8u(0));
#pragma GCC unroll 8
  for (int i = 0; i < 8; ++i) {
    const V8u pixels = load(rows[ring[i].y + reach] + x + ring[i].x);
    marks = marks | (equal(max(pixels, least), pixels) & splat(static_cast<Zeb8u>(1 << i)));
  }
  return marks;
}

// A vector of pixels of which those in `left` may lie on a line. Not inlined: the pixels of the ring that the caller
// has compared would all be kept for it.
template <int reach>
__attribute__((noinline)) void lookUp(const Zeb8u* const* rows, int x, Zeb8u tolerance, unsigned left, Zeb8u* kept) {
  const V8u zero = splat(Zeb8u(0)), pixels = load(rows[reach] + x);
  const V8u least = max(subSat(pixels, splat(tolerance)), splat(Zeb8u(1)));
  alignas(32) Zeb8u marks[2][V8u::lanes];
  store(marks[0], marksOfEight(rows, x, reach == 1 ? circles[0] : squareRing, reach, least));
  store(marks[1], reach == 1 ? zero : marksOfEight(rows, x, squareRing + 8, reach, least));
  store(kept, pixels);
  for (; left != 0; left &= left - 1) {
    const int k = __builtin_ctz(left);
    const bool line = reach == 1 ? nearLines.holds(marks[0][k])
                                 : farLines.holds(marks[0][k] | static_cast<unsigned>(marks[1][k]) << 8);
    kept[k] = line ? Zeb8u(0) : kept[k];
  }
}

// rows: those around the row from -reach to reach, at column 0, readable a vector further than the row. The largest
// pixel of each ring tells at little cost whether any position is strong: in a thin map few pixels are left to look up,
// and few branches to guess. src: the newest row of the source, behind which memory is read ahead.
template <int reach>
void suppressRow(const Zeb8u* const* rows, const Zeb8u* src, int n, Zeb8u tolerance, Zeb8u* out) {
  constexpr const Offset* ring = reach == 1 ? circles[0] : squareRing;
  for (int x = 0; x < n; x += V8u::lanes) {
    const V8u zero = splat(Zeb8u(0)), pixels = load(rows[reach] + x);
    const V8u least = max(subSat(pixels, splat(tolerance)), splat(Zeb8u(1)));
    fetchAhead(src + x);
    fetchAhead(out + x);
    V8u largest = zero;
#pragma GCC unroll 16
    for (int i = 0; i < 8 * reach; ++i) largest = max(largest, load(rows[ring[i].y + reach] + x + ring[i].x));
    V8u kept = pixels;
    // What is 0 or stands alone stays.
    const unsigned left = topBits(andNot(equal(pixels, zero), equal(max(largest, least), largest)));
    if (left != 0) {
      alignas(32) Zeb8u values[V8u::lanes];
      lookUp<reach>(rows, x, tolerance, left, values);
      kept = load(values);
    }
    if (n - x >= V8u::lanes) {
      store(out + x, kept);
    } else {
      storeN(out + x, kept, n - x);
    }
  }
}

template <int reach>
void suppress(const BorderedImage& source, Rows<Zeb8u> dst, ZebiSize size, Zeb8u tolerance, Scratch scratch) {
  const auto columns = source.columns(-reach, int64_t{size.width} + reach);
  const RowRing<Zeb8u, 2 * reach + 1> ring(scratch, stride(size.width, reach));
  for (int y = -reach; y < size.height + reach; ++y) {
    Zeb8u* const line = ring[y];
    source.fetch<1>(y, columns, line);
    // What vectors see behind the row decides nothing.
    memset(line + (columns.to - columns.from), 0, static_cast<size_t>(V8u::lanes));
    if (y < reach) continue;
    const Zeb8u* rows[2 * reach + 1];
    for (int i = 0; i <= 2 * reach; ++i) rows[i] = ring[y - 2 * reach + i] + reach;
    suppressRow<reach>(rows, reinterpret_cast<const Zeb8u*>(source.row(y < size.height ? y : size.height - 1)),
                       size.width, tolerance, dst[y - reach]);
  }
}

int reachOf(int mask) {
  return mask == zebMskSize3x3 ? 1 : 2;
}

}  // namespace

ZEB_ENTRY(zebiLineSuppressionGetBufferSize_8u_C1R)(ZebiSize roiSize, int mask, int* pBufferSize) {
  if (auto bad = firstFailure(present(pBufferSize), hasArea(roiSize), isMaskSize(mask))) return bad;
  return reportSize(bufferBytes(roiSize.width, reachOf(mask)), pBufferSize);
}

ZEB_ENTRY(zebiLineSuppression_8u_C1R)
(const Zeb8u* pSrc, int srcStep, Zeb8u* pDst, int dstStep, ZebiSize roiSize, int mask, Zeb8u tolerance,
 ZebiBorderType borderType, Zeb8u borderValue, Zeb8u* pBuffer) {
  const auto dst = image(pDst, dstStep);
  if (auto bad = firstFailure(checked(roiSize, image(pSrc, srcStep), dst, also(pBuffer)), isMaskSize(mask),
                              takesBorder(borderBase(ofThreeBits(borderType)))))
    return bad;
  int bytes = 0;
  if (auto bad = reportSize(bufferBytes(roiSize.width, reachOf(mask)), &bytes)) return bad;
  const BorderedImage source(pSrc, srcStep, roiSize, 1, ofThreeBits(borderType), &borderValue);
  const Scratch scratch(pBuffer, bytes);
  if (mask == zebMskSize3x3) {
    suppress<1>(source, dst.rows(), roiSize, tolerance, scratch);
  } else {
    suppress<2>(source, dst.rows(), roiSize, tolerance, scratch);
  }
  return zebStsOk;
}

}  // namespace zeb
