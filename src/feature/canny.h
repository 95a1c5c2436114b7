// What the forms of the Canny detector share: non-maximum suppression into a map, and hysteresis over the map
// (J. Canny, 1986).
#pragma once

#include <initializer_list>

#include "core/checks.h"
#include "core/image.h"
#include "core/loops.h"
#include "core/scratch.h"
#include "core/services.h"
#include "core/widen.h"
#include "filter/border.h"

namespace zeb {

constexpr Zeb32f tan22 = 0.41421357f, tan67 = 2.4142137f;

// A byte of the map. The map has a frame of one pixel that never holds a candidate.
constexpr Zeb8u cannyCandidate = 128;
constexpr Zeb8u cannyEdge = 64;     // with cannyCandidate
constexpr Zeb8u cannyVisited = 32;  // its neighbours need not be looked at again

struct CannyMap {
  Zeb8u* first;  // of pixel (0, 0)
  int step;
  Zeb8u* row(int y) const { return first + static_cast<ptrdiff_t>(y) * step; }
};

inline int64_t cannyMapBytes(ZebiSize roi) {
  return (int64_t{roi.width} + 2) * (int64_t{roi.height} + 2);
}

inline CannyMap takeCannyMap(Scratch& scratch, ZebiSize roi) {
  const int64_t bytes = cannyMapBytes(roi);
  Zeb8u* map = scratch.take<Zeb8u>(bytes, 1);
  zebsZero_8u(map, static_cast<int>(bytes));
  return {map + roi.width + 3, roi.width + 2};
}

// Thresholds in order and not below 0; values that are not numbers are in no order.
inline ZebStatus orderedThresholds(Zeb32f low, Zeb32f high) {
  return require(low >= 0 && low <= high, zebStsErrBadArgument);
}

// Magnitudes of three neighbouring rows with a zero at each end. M is Zeb16u (saturating sums of absolute values, 16
// pixels to a vector) or Zeb32f.
template <class M>
class MagnitudeRing {
 public:
  MagnitudeRing(Scratch& scratch, int width) : rows_(scratch, int64_t{width} + 2) {
    for (int y = 0; y < 3; ++y) memset(rows_[y], 0, (static_cast<size_t>(width) + 2) * sizeof(M));
  }
  M* row(int y) const { return rows_[y] + 1; }

 private:
  RowRing<M, 3> rows_;
};

// Which of eight gradients point along the row, along the column, and which have components of different signs.
struct Sectors32 {
  V32f horizontal, vertical, opposite;
};

// The two ways to find the vertical sector: by its own constant, or by a sum that is rounded step by step.
struct VerticalByProduct {
  static ZEB_INLINE V32f bound(V32f ax) { return splat(tan67) * ax; }
};
struct VerticalBySum {
  static ZEB_INLINE V32f bound(V32f ax) { return splat(2.0f) * ax + splat(tan22) * ax; }
};

template <class Vertical>
ZEB_INLINE Sectors32 sectorsOf(V32f dx, V32f dy) {
  const V32f ax = abs(dx), ay = abs(dy);
  return {less(ay, splat(tan22) * ax), less(Vertical::bound(ax), ay), dx ^ dy};
}

// a < b and a <= b per lane as masks.
ZEB_INLINE V16u isLess(V16u a, V16u b) {
  return equal(subSat(b, a), splat(Zeb16u(0))) ^ splat(Zeb16u(0xFFFF));
}
ZEB_INLINE V16u isAtMost(V16u a, V16u b) {
  return equal(subSat(a, b), splat(Zeb16u(0)));
}
ZEB_INLINE V32f isLess(V32f a, V32f b) {
  return less(a, b);
}
ZEB_INLINE V32f isAtMost(V32f a, V32f b) {
  return less(a, b) | equal(a, b);
}

struct Sectors16 {
  V16u horizontal, vertical, opposite;
};

// The sum of absolute values of 16s derivatives, saturating at 65535, sixteen pixels to a vector. Thresholds are
// truncated; from 65535 on no magnitude is greater.
template <class Vertical>
struct SumOfAbsolutes {
  using Magnitude = Zeb16u;
  static Magnitude threshold(Zeb32f t) { return t >= 65535.0f ? Zeb16u(65535) : static_cast<Zeb16u>(t); }
  static void magnitudes(const Zeb16s* dx, const Zeb16s* dy, Zeb16u* out, int n, Zeb16u low) {
    const V16u bound = splat(low);
    forVectors<16>(0, n, [&](int x, auto part) ZEB_BODY {
      const V16u m = addSat(as<Zeb16u>(abs(part.from(dx + x))), as<Zeb16u>(abs(part.from(dy + x))));
      part.to(out + x, m & isLess(bound, m));
    });
  }
  template <class Part>
  static ZEB_INLINE Sectors16 sectors(const Zeb16s* dx, const Zeb16s* dy, const Part part) {
    const V16s x = part.from(dx), y = part.from(dy);
    const Sectors32 low = sectorsOf<Vertical>(toFloat(widenLow(x)), toFloat(widenLow(y)));
    const Sectors32 high = sectorsOf<Vertical>(toFloat(widenHigh(x)), toFloat(widenHigh(y)));
    return {narrowMask(low.horizontal, high.horizontal), narrowMask(low.vertical, high.vertical),
            as<Zeb16u>(shiftRight<15>(x ^ y))};
  }
};

// Which pixels of a vector stand out against their neighbours along the gradient.
template <class M, class S>
ZEB_INLINE Vec<M> standsOut(const M* above, const M* row, const M* below, Vec<M> m, const S& sector) {
  const Vec<M> alongRow = isLess(load(row - 1), m) & isAtMost(load(row + 1), m);
  const Vec<M> alongColumn = isLess(load(above), m) & isAtMost(load(below), m);
  const Vec<M> opposite = isLess(max(load(below - 1), load(above + 1)), m);
  const Vec<M> same = isLess(max(load(below + 1), load(above - 1)), m);
  return select(sector.horizontal, alongRow,
                select(sector.vertical, alongColumn, select(sector.opposite, opposite, same)));
}

// The map's bytes for a vector of pixels: candidates, and edges among them.
ZEB_INLINE V16u marks(V16u keep, V16u strong) {
  return keep & (splat(Zeb16u(cannyCandidate)) | (strong & splat(Zeb16u(cannyEdge))));
}
ZEB_INLINE V32f marks(V32f keep, V32f strong) {
  const V32f candidate = as<Zeb32f>(splat(Zeb32s(cannyCandidate))), edge = as<Zeb32f>(splat(Zeb32s(cannyEdge)));
  return keep & (candidate | (strong & edge));
}

// Suppresses row y: gradients(x, part) yields the sectors of a vector of pixels. high: an edge has m > high.
template <class M, class Gradients>
void suppressRow(const MagnitudeRing<M>& ring, int y, int width, M high, Zeb8u* map, Gradients gradients) {
  const M *above = ring.row(y - 1), *row = ring.row(y), *below = ring.row(y + 1);
  constexpr int lanes = Vec<M>::lanes;
  const Vec<M> zero = splat(M(0));
  int x = 0;
  for (; x <= width - lanes; x += lanes) {
    const Vec<M> m = load(row + x);
    const Vec<M> none = equal(m, zero);
    if (allLanes(none)) continue;
    const auto sector = gradients(x, WholeVector{});
    const Vec<M> keep = andNot(none, standsOut(above + x, row + x, below + x, m, sector));
    storeBytes(map + x, marks(keep, isLess(splat(high), m)));
  }
  if (x == width) return;
  // The last pixels, with zeros behind them.
  const int n = width - x;
  alignas(32) M rows[3][lanes + 2] = {};
  int k = 0;
  for (const M* from : {above, row, below}) memcpy(rows[k++], from + x - 1, (static_cast<size_t>(n) + 2) * sizeof(M));
  const Vec<M> m = load(rows[1] + 1);
  const auto sector = gradients(x, RowEnd{n});
  const Vec<M> keep = andNot(equal(m, zero), standsOut(rows[0] + 1, rows[1] + 1, rows[2] + 1, m, sector));
  Zeb8u bytes[lanes];
  storeBytes(bytes, marks(keep, isLess(splat(high), m)));
  memcpy(map + x, bytes, static_cast<size_t>(n));
}

// Spreads the edges over neighbouring candidates and writes the result. The stack needs four bytes a pixel: a pixel is
// pushed only when it becomes an edge.
void hysteresis(const CannyMap& map, ZebiSize roi, Scratch& scratch, Rows<Zeb8u> dst);

}  // namespace zeb
