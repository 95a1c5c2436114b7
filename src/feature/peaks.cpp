// Local maxima and minima of a response image.
#include <initializer_list>
#include <limits>

#include "core/checks.h"
#include "core/columns.h"
#include "core/entry.h"
#include "core/rows.h"
#include "core/scratch.h"
#include "core/vec.h"

namespace {

using namespace zeb;

// Six rows of extremes take 24 bytes a column.
int64_t bufferSize(int roiWidth) {
  return (((int64_t{roiWidth} + 5) >> 2) * 128) | 32;
}

// ---- The test of one neighbourhood, in vectors ----

// Magnitude above the threshold. For integers every value passes a negative threshold; else v and -threshold compare
// without overflow, and the most negative integer has the largest magnitude.
ZEB_INLINE V32f exceeds(V32f v, Zeb32f threshold) {
  return greater(abs(v), splat(threshold));
}
ZEB_INLINE V32s exceeds(V32s v, Zeb32s threshold) {
  if (threshold < 0) return equal(v, v);
  return greater(v, splat(threshold)) | greater(splat(-threshold), v);
}

// The lanes of n pixels that are peaks, given the extremes of their neighbourhoods.
ZEB_INLINE unsigned peaks(V32f v, V32f largest, V32f smallest, Zeb32f threshold, unsigned lanes) {
  // Infinities of one sign are equal: their difference is no number, and above nothing.
  const V32f beyond = select(greater(v, splat(0.0f)), largest - v, v - smallest);
  const V32f beaten = greater(beyond, splat(std::numeric_limits<Zeb32f>::min()));
  return topBits(andNot(beaten, exceeds(v, threshold))) & lanes;
}
ZEB_INLINE unsigned peaks(V32s v, V32s largest, V32s smallest, Zeb32s threshold, unsigned lanes) {
  const V32s beaten = select(greater(v, splat(0)), greater(largest, v), greater(v, smallest));
  return topBits(andNot(beaten, exceeds(v, threshold))) & lanes;
}

// A value that is not a number as one that beats nothing.
ZEB_INLINE V32f orLowest(V32f v) {
  return max(v, splat(-std::numeric_limits<Zeb32f>::infinity()));
}
ZEB_INLINE V32f orHighest(V32f v) {
  return min(v, splat(std::numeric_limits<Zeb32f>::infinity()));
}
ZEB_INLINE V32s orLowest(V32s v) {
  return v;
}
ZEB_INLINE V32s orHighest(V32s v) {
  return v;
}

// Extremes of each pixel of a row and its two neighbours in the row, for columns from .. to - 1.
template <class T>
struct RowExtremes {
  T *largest, *smallest;

  void form(const T* row, int from, int to) const {
    forColumns<8>(from, to, [&](int x, auto part) ZEB_BODY {
      const Vec<T> left = part.from(row + x - 1), v = part.from(row + x), right = part.from(row + x + 1);
      part.to(largest + x, max(left, max(right, orLowest(v))));
      part.to(smallest + x, min(left, min(right, orHighest(v))));
    });
  }
};

// Appends peaks in scan order until there are enough.
struct Peaks {
  ZebiPoint* out;
  int most;
  int count = 0;

  void add(unsigned lanes, int x, int y) {
    for (; lanes && count < most; lanes &= lanes - 1) out[count++] = {x + __builtin_ctz(lanes), y};
  }
};

template <class T>
int findPeaks8(Rows<const T> src, ZebiSize size, T threshold, ZebiPoint* out, int most, int border, Zeb8u* pBuffer) {
  Scratch scratch(pBuffer, bufferSize(size.width));
  RowExtremes<T> ring[3];
  for (auto& r : ring) r = {scratch.take<T>(size.width, 1), scratch.take<T>(size.width, 1)};
  Peaks found{out, most};
  const int end = size.width - border;
  if (end <= border || size.height - border <= border) return 0;
  ring[0].form(src[border - 1], border, end);
  ring[1].form(src[border], border, end);
  for (int y = border; y < size.height - border && found.count < most; ++y) {
    ring[2].form(src[y + 1], border, end);
    const T* row = src[y];
    forColumns<8>(border, end, [&](int x, auto part) ZEB_BODY {
      const Vec<T> largest =
          max(part.from(ring[0].largest + x), max(part.from(ring[1].largest + x), part.from(ring[2].largest + x)));
      const Vec<T> smallest =
          min(part.from(ring[0].smallest + x), min(part.from(ring[1].smallest + x), part.from(ring[2].smallest + x)));
      found.add(peaks(part.from(row + x), largest, smallest, threshold, part.lanes()), x, y);
    });
    const RowExtremes<T> oldest = ring[0];
    ring[0] = ring[1], ring[1] = ring[2], ring[2] = oldest;
  }
  return found.count;
}

template <class T>
int findPeaks4(Rows<const T> src, ZebiSize size, T threshold, ZebiPoint* out, int most, int border, Zeb8u*) {
  Peaks found{out, most};
  for (int y = border; y < size.height - border && found.count < most; ++y) {
    const T *row = src[y], *above = src[y - 1], *below = src[y + 1];
    forColumns<8>(border, size.width - border, [&](int x, auto part) ZEB_BODY {
      const Vec<T> v = part.from(row + x);
      // The neighbour comes first: the extreme so far stays where the neighbour is not a number.
      Vec<T> largest = v, smallest = v;
      for (const T* p : {row + x - 1, row + x + 1, above + x, below + x}) {
        const Vec<T> q = part.from(p);
        largest = max(q, largest);
        smallest = min(q, smallest);
      }
      found.add(peaks(v, largest, smallest, threshold, part.lanes()), x, y);
    });
  }
  return found.count;
}

template <class T>
ZebStatus peaksOf(const T* pSrc, int srcStep, ZebiSize roi, T threshold, ZebiPoint* pPeak, int maxPeakCount,
                  int* pPeakCount, int norm, int border, Zeb8u* pBuffer) {
  if (auto bad = firstFailure(
          present(pSrc, pPeak, pPeakCount, pBuffer), hasArea(roi), atLeastOne(maxPeakCount), atLeastOne(border),
          require(int64_t{2} * border <= roi.width && int64_t{2} * border <= roi.height, zebStsErrSize),
          holdsRow<T>(srcStep, roi.width), wholeElements<T>(srcStep),
          require(norm == zebiNormInf || norm == zebiNormL1, zebStsErrBadArgument)))
    return bad;
  const auto find = norm == zebiNormInf ? findPeaks8<T> : findPeaks4<T>;
  *pPeakCount = find(Rows(pSrc, srcStep), roi, threshold, pPeak, maxPeakCount, border, pBuffer);
  return zebStsOk;
}

ZebStatus reportBufferSize(int roiWidth, int* pBufferSize) {
  if (auto bad = firstFailure(present(pBufferSize), atLeastOne(roiWidth))) return bad;
  return reportSize(bufferSize(roiWidth), pBufferSize);
}

}  // namespace

ZEB_ENTRY(zebiFindPeaks3x3_32f_C1R)
(const Zeb32f* pSrc, int srcStep, ZebiSize roiSize, Zeb32f threshold, ZebiPoint* pPeak, int maxPeakCount,
 int* pPeakCount, int norm, int border, Zeb8u* pBuffer) {
  return peaksOf(pSrc, srcStep, roiSize, threshold, pPeak, maxPeakCount, pPeakCount, norm, border, pBuffer);
}
ZEB_ENTRY(zebiFindPeaks3x3_32s_C1R)
(const Zeb32s* pSrc, int srcStep, ZebiSize roiSize, Zeb32s threshold, ZebiPoint* pPeak, int maxPeakCount,
 int* pPeakCount, int norm, int border, Zeb8u* pBuffer) {
  return peaksOf(pSrc, srcStep, roiSize, threshold, pPeak, maxPeakCount, pPeakCount, norm, border, pBuffer);
}

ZEB_ENTRY(zebiFindPeaks3x3GetBufferSize_32f_C1R)(int roiWidth, int* pBufferSize) {
  return reportBufferSize(roiWidth, pBufferSize);
}
ZEB_ENTRY(zebiFindPeaks3x3GetBufferSize_32s_C1R)(int roiWidth, int* pBufferSize) {
  return reportBufferSize(roiWidth, pBufferSize);
}
