// Local maxima and minima of a response image.
#include <limits>

#include "core/checks.h"
#include "core/entry.h"
#include "core/image.h"
#include "core/loops.h"
#include "core/scratch.h"
#include "core/streaming.h"
#include "core/widen.h"

namespace {

using namespace zeb;

// The columns of a row's peaks and of the strong vectors of two rows take 5 bytes a pixel and 36 more, a part of this.
constexpr int64_t bufferSize(int roiWidth) {
  return (((int64_t{roiWidth} + 5) >> 2) * 128) | 32;
}
constexpr int widest = (1 << 26) - 6;
static_assert(bufferSize(widest) <= INT32_MAX && bufferSize(widest + 1) > INT32_MAX);

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

// The bits whose inversion turns the order around in the lanes that are not above zero: a minimum is looked for as a
// maximum. The sign for floats; every bit for integers, whose complement has no overflow.
ZEB_INLINE V32f turned(V32f v) {
  return andNot(greater(v, splat(0.0f)), splat(-0.0f));
}
ZEB_INLINE V32s turned(V32s v) {
  return andNot(greater(v, splat(0)), splat(-1));
}

// Infinities of one sign are equal: their difference is no number, and above nothing.
ZEB_INLINE V32f higher(V32f largest, V32f v) {
  return greater(largest - v, splat(std::numeric_limits<Zeb32f>::min()));
}
ZEB_INLINE V32s higher(V32s largest, V32s v) {
  return greater(largest, v);
}

// The numbers of the set bits of each byte, in order: where the peaks among eight pixels stand.
struct SetBits {
  Zeb8u positions[256][8] = {};
  constexpr SetBits() {
    for (int byte = 0; byte < 256; ++byte)
      for (int bit = 0, n = 0; bit < 8; ++bit)
        if (byte >> bit & 1) positions[byte][n++] = static_cast<Zeb8u>(bit);
  }
};
constexpr SetBits setBits;

// Appends peaks in scan order until there are enough. Responses have peaks in every other vector, at no regular
// distance: the columns of a row are gathered without a branch, eight entries stored and as many kept as there are
// peaks.
class Peaks {
 public:
  // columns holds an entry for every pixel of a row and seven more.
  Peaks(ZebiPoint* out, int most, Zeb32s* columns) : out_(out), most_(most), columns_(columns), next_(columns) {}

  ZEB_INLINE void add(unsigned lanes, int x) {
    store(next_, splat(x) + loadAs32s(setBits.positions[lanes]));
    next_ += __builtin_popcount(lanes);
  }
  void endRow(int y) {
    const int left = most_ - count_, inRow = static_cast<int>(next_ - columns_), n = inRow < left ? inRow : left;
    for (int i = 0; i < n; ++i) out_[count_ + i] = {columns_[i], y};
    count_ += n;
    next_ = columns_;
  }
  bool enough() const { return count_ == most_; }
  int count() const { return count_; }

 private:
  ZebiPoint* out_;
  int most_;
  Zeb32s *columns_, *next_;
  int count_ = 0;
};

// The first columns of the whole vectors of a row that hold a strong value.
template <class T>
struct StrongVectors {
  Zeb32s* first;  // room for a row
  Zeb32s* end = first;

  void find(const T* row, int from, int to, T threshold) {
    end = first;
    for (int x = from; x <= to - 8; x += 8) {
      fetchAhead(row + x);
      *end = x;
      end += topBits(exceeds(load(row + x), threshold)) != 0;
    }
  }
};

// A row is read once for its strong values, one row ahead, so that it comes from memory in one sweep; only the vectors
// that hold one are compared with their neighbours. Both loops run without a branch on the values.
template <int neighbours, class T>
int findPeaks(Rows<const T> src, ZebiSize size, T threshold, ZebiPoint* out, int most, int border, Zeb8u* pBuffer) {
  Scratch scratch(pBuffer, bufferSize(size.width));
  Peaks found(out, most, scratch.take<Zeb32s>(int64_t{size.width} + 7, 1));
  StrongVectors<T> strong{scratch.take<Zeb32s>(size.width / 8 + 1, 1)};
  StrongVectors<T> ahead{scratch.take<Zeb32s>(size.width / 8 + 1, 1)};
  const int end = size.width - border, rest = end - (end - border) % 8;
  ahead.find(src[border], border, end, threshold);
  for (int y = border; y < size.height - border && !found.enough(); ++y) {
    const T *row = src[y], *above = src[y - 1], *below = src[y + 1];
    const StrongVectors<T> done = strong;
    strong = ahead, ahead = done;
    ahead.find(below, border, end, threshold);
    const auto compare = [&](int x, auto part) ZEB_BODY {
      const Vec<T> pixel = part.from(row + x), order = turned(pixel), v = pixel ^ order;
      // The neighbour comes first: the largest so far stays where the neighbour is not a number.
      Vec<T> sides = max(part.from(row + x - 1) ^ order, v), others = max(part.from(above + x) ^ order, v);
      sides = max(part.from(row + x + 1) ^ order, sides);
      others = max(part.from(below + x) ^ order, others);
      if constexpr (neighbours == 8) {
        sides = max(part.from(above + x - 1) ^ order, sides);
        others = max(part.from(above + x + 1) ^ order, others);
        sides = max(part.from(below + x - 1) ^ order, sides);
        others = max(part.from(below + x + 1) ^ order, others);
      }
      const Vec<T> beaten = higher(max(sides, others), v);
      found.add(topBits(andNot(beaten, exceeds(pixel, threshold))) & part.laneBits(), x);
    };
    for (const Zeb32s* p = strong.first; p < strong.end; ++p) compare(*p, WholeVector{});
    if (rest < end) compare(rest, RowEnd{end - rest});
    found.endRow(y);
  }
  return found.count();
}

template <class T>
ZebStatus peaksOf(const T* pSrc, int srcStep, ZebiSize roi, T threshold, ZebiPoint* pPeak, int maxPeakCount,
                  int* pPeakCount, int norm, int border, Zeb8u* pBuffer) {
  const auto src = image(pSrc, srcStep);
  // The counts stand before the step.
  if (auto bad =
          firstFailure(present(pSrc, pPeak, pPeakCount, pBuffer), hasArea(roi), atLeastOne(maxPeakCount),
                       atLeastOne(border), require(border <= roi.width / 2 && border <= roi.height / 2, zebStsErrSize)))
    return bad;
  if (auto bad = firstFailure(checked(roi, src), isNeighbourhood(norm, zebStsErrBadArgument),
                              require(roi.width <= widest, zebStsErrOverflow)))
    return bad;
  // The border may take all columns or rows.
  *pPeakCount = 0;
  if (roi.width - border == border || roi.height - border == border) return zebStsOk;
  const auto find = norm == zebiNormInf ? findPeaks<8, T> : findPeaks<4, T>;
  *pPeakCount = find(src.rows(), roi, threshold, pPeak, maxPeakCount, border, pBuffer);
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
