// The segment test: corners where an arc of a circle is brighter or darker than its centre.
// Method: E. Rosten, T. Drummond, "Machine learning for high-speed corner detection", 2006.
#include "zebcv/fastn.h"
#include "core/checks.h"
#include "core/entry.h"
#include "core/loops.h"
#include "core/scratch.h"
#include "core/shuffle.h"
#include "core/state_id.h"
#include "feature/circles.h"

struct ZebiFastNState {
  uint32_t id;
  int radius, positions, arcLength, threshold, options;
  int zeros[2];
};
static_assert(sizeof(ZebiFastNState) == 32);

namespace zeb {

namespace {

using State = ZebiFastNState;

constexpr uint32_t id = stateId(StateKind::fastN, zeb8u, 1);
constexpr int quarters = 4;

constexpr int positionsOf(int radius) {
  return 4 + 4 * radius;
}

// A state may stand at any address.
State read(const State* state) {
  State copy;
  memcpy(&copy, static_cast<const void*>(state), sizeof copy);
  return copy;
}

ZebStatus hasArcs(int radius, int arcLength) {
  return require(radius >= 1 && radius <= mostRadius && arcLength >= 1 && arcLength <= positionsOf(radius),
                 zebStsErrOutOfRange);
}

// A row of scores or of polarities with zeros at both ends, read a vector at a time.
int64_t lineBytes(int width) {
  return int64_t{width} + 3 * V8u::lanes;
}
// Rows of pixels that are narrower than a vector and its circle are copied to where they may be read by vectors.
constexpr int narrowStride = 2 * V8u::lanes + 2 * mostRadius;
constexpr int64_t narrowBytes = (2 * mostRadius + 1) * narrowStride;
int64_t bufferBytes(int width) {
  return 6 * lineBytes(width) + narrowBytes;
}

// The circle around 32 neighbouring pixels.
class Circle {
 public:
  Circle(const State& state, int step)
      : positions_(state.positions),
        arcLength_(state.arcLength),
        compass_(state.arcLength * quarters / state.positions) {
    const Offset* const offsets = circles[state.radius - 1];
    for (int i = 0; i < positions_; ++i) at_[i] = offsets[i].y * static_cast<ptrdiff_t>(step) + offsets[i].x;
  }

  // Whether one of 32 pixels can be a corner at all: an arc takes so many neighbours of the four compass positions.
  ZEB_INLINE bool passes(const Zeb8u* p, V8u threshold) const {
    if (compass_ == 0) return true;
    const int quarter = positions_ / quarters;
    const V8u centre = load(p);
    const V8u east = load(p + at_[0]), south = load(p + at_[quarter]), west = load(p + at_[2 * quarter]),
              north = load(p + at_[3 * quarter]);
    const V8u vertical[2] = {min(south, north), max(south, north)};
    const V8u horizontal[2] = {min(east, west), max(east, west)};
    V8u brightest, darkest;
    if (compass_ == 1) {
      brightest = max(horizontal[1], vertical[1]), darkest = min(horizontal[0], vertical[0]);
    } else if (compass_ == 2) {  // two neighbours: one of each pair
      brightest = min(horizontal[1], vertical[1]), darkest = max(horizontal[0], vertical[0]);
    } else if (compass_ == 3) {  // all but one: a pair, and one of the other pair
      brightest = max(min(horizontal[0], vertical[1]), min(horizontal[1], vertical[0]));
      darkest = min(max(horizontal[1], vertical[0]), max(horizontal[0], vertical[1]));
    } else {
      brightest = min(horizontal[0], vertical[0]), darkest = max(horizontal[1], vertical[1]);
    }
    return anyBit(subSat(subSat(brightest, centre) | subSat(centre, darkest), threshold));
  }

  // Scores of 32 pixels, 0 where there is no corner; and all ones where the brighter arc has the score.
  ZEB_INLINE V8u score(const Zeb8u* p, V8u threshold, V8u& brighter) const {
    const V8u centre = load(p);
    const V8u bright = subSat(bestOfArcs<true>(p), centre), dark = subSat(centre, bestOfArcs<false>(p));
    const V8u best = max(bright, dark);
    brighter = equal(bright, best);
    return andNot(equal(subSat(best, threshold), splat(Zeb8u(0))), best);
  }

  // The direction of the marks of one polarity around a corner.
  int direction(const Zeb8u* p, int threshold, bool brighter) const {
    unsigned marks = 0;
    for (int i = 0; i < positions_; ++i) {
      const int difference = brighter ? p[at_[i]] - *p : *p - p[at_[i]];
      marks |= static_cast<unsigned>(difference > threshold) << i;
    }
    const unsigned all = (1u << positions_) - 1;
    if (marks == all) return 0;
    // Each round keeps the positions whose run goes on for one more.
    unsigned runs = marks, longest = marks;
    int length = 0;
    for (; runs != 0; ++length) {
      longest = runs;
      runs &= (runs >> 1 | runs << (positions_ - 1)) & all;
    }
    return (2 * __builtin_ctz(longest) + length - 1) % (2 * positions_);
  }

 private:
  // The maximum over all arcs of their minimum, or the other way round: extrema of 1, 2, 4, 8 neighbours, then of two
  // overlapping ones of those.
  template <bool lowest>
  ZEB_INLINE V8u bestOfArcs(const Zeb8u* p) const {
    const auto pick = [](V8u a, V8u b) { return lowest ? min(a, b) : max(a, b); };
    alignas(32) Zeb8u values[(mostPositions + mostPositions) * V8u::lanes];
    const auto value = [&](int i) { return values + i * V8u::lanes; };
    for (int i = 0; i < positions_; ++i) store(value(i), load(p + at_[i]));
    int length = 1;
    for (; 2 * length <= arcLength_; length *= 2) {
      wrap(values, length);
      for (int i = 0; i < positions_; ++i) store(value(i), pick(load(value(i)), load(value(i + length))));
    }
    const int rest = arcLength_ - length;
    wrap(values, rest);
    V8u best = pick(load(value(0)), load(value(rest)));
    for (int i = 1; i < positions_; ++i) {
      const V8u arc = pick(load(value(i)), load(value(i + rest)));
      best = lowest ? max(best, arc) : min(best, arc);
    }
    return best;
  }
  ZEB_INLINE void wrap(Zeb8u* values, int count) const {
    for (int i = 0; i < count; ++i) store(values + (positions_ + i) * V8u::lanes, load(values + i * V8u::lanes));
  }

  int positions_, arcLength_, compass_;
  ptrdiff_t at_[mostPositions];
};

// Score and polarity of one row's pixels, at column 0 of lines with zeros around.
struct Lines {
  Zeb8u *score, *brighter;
};

// Pixels from..to-1 of a row whose 32 pixels from any of them on may be read, circles included, where there are as
// many.
void scoreRow(const Circle& circle, const Zeb8u* row, int from, int to, int threshold, const Lines& lines) {
  const V8u t = splat(static_cast<Zeb8u>(threshold));
  const auto block = [&](int x) {
    V8u score = splat(Zeb8u(0)), brighter = score;
    if (circle.passes(row + x, t)) score = circle.score(row + x, t, brighter);
    store(lines.score + x, score);
    store(lines.brighter + x, brighter);
  };
  int x = from;
  for (; x <= to - V8u::lanes; x += V8u::lanes) block(x);
  if (x == to) return;
  block(to - from >= V8u::lanes ? to - V8u::lanes : x);
}

// 32 scores that stay, from the lines above, of and below the row.
template <bool nonMax>
ZEB_INLINE V8u staying(const Zeb8u* above, const Zeb8u* own, const Zeb8u* below) {
  const V8u score = load(own);
  if constexpr (nonMax) {
    const V8u before = max(max(load(above - 1), load(above)), max(load(above + 1), load(own - 1)));
    const V8u after = max(max(load(own + 1), load(below - 1)), max(load(below), load(below + 1)));
    // Above those before, not below those after.
    const V8u loses = equal(subSat(score, before), splat(Zeb8u(0))) | as<Zeb8u>(subSat(after, score));
    return score & equal(loses, splat(Zeb8u(0)));
  }
  return score;
}

class SegmentTest {
 public:
  SegmentTest(const State& state, Rows<const Zeb8u> src, ZebiSize size, Scratch scratch)
      : state_(state),
        src_(src),
        size_(size),
        circle_(state, src.step()),
        narrowCircle_(state, narrowStride),
        threshold_(state.threshold < 255 ? state.threshold : 255) {
    const auto line = [&] {
      Zeb8u* const first = scratch.take<Zeb8u>(lineBytes(size_.width), 1);
      memset(first, 0, static_cast<size_t>(lineBytes(size_.width)));
      return first + V8u::lanes;
    };
    for (Lines& lines : ring_) lines = {line(), line()};
    copy_ = scratch.take<Zeb8u>(narrowBytes, 1);
  }

  void run(Rows<Zeb8u> dst, Optional<Zeb8u, 1> orient) {
    for (int y = 0; y < size_.height; ++y) {
      form(y);
      if (y > 0) finish(y - 1, dst[y - 1], orient.row(y - 1));
    }
    finish(size_.height - 1, dst[size_.height - 1], orient.row(size_.height - 1));
  }

 private:
  const Lines& lines(int y) const { return ring_[(static_cast<unsigned>(y) + 3) % 3]; }

  // The scores of row y.
  void form(int y) {
    const Lines& own = lines(y);
    const int radius = state_.radius, from = radius, to = size_.width - radius;
    if (y == 0) clear(lines(-1));
    if (y < radius || y >= size_.height - radius || to <= from) return clear(own);
    if (size_.width < V8u::lanes + 2 * radius) {
      for (int r = -radius; r <= radius; ++r)
        memcpy(copy_ + (r + radius) * narrowStride, src_[y + r], static_cast<size_t>(size_.width));
      scoreRow(narrowCircle_, copy_ + radius * narrowStride, from, to, threshold_, own);
      // What was computed behind the last pixel.
      memset(own.score + to, 0, static_cast<size_t>(V8u::lanes));
    } else {
      scoreRow(circle_, src_[y], from, to, threshold_, own);
    }
  }
  void clear(const Lines& lines) const { memset(lines.score, 0, static_cast<size_t>(size_.width)); }

  void finish(int y, Zeb8u* out, Zeb8u* orient) const {
    if (y + 1 == size_.height) clear(lines(y + 1));
    const Zeb8u *above = lines(y - 1).score, *own = lines(y).score, *below = lines(y + 1).score;
    const bool nonMax = state_.options & zebFastNNonMax, scores = state_.options & zebFastNScore;
    for (int x = 0; x < size_.width; x += V8u::lanes) {
      const V8u stay = nonMax ? staying<true>(above + x, own + x, below + x) : staying<false>(above, own + x, below);
      const V8u zero = splat(Zeb8u(0)), map = scores ? stay : andNot(equal(stay, zero), splat(Zeb8u(255)));
      const int count = size_.width - x < V8u::lanes ? size_.width - x : V8u::lanes;
      put(out + x, map, count);
      if (orient == nullptr) continue;
      alignas(32) Zeb8u codes[V8u::lanes];
      store(codes, zero);
      for (unsigned left = ~topBits(equal(stay, zero)); left != 0; left &= left - 1) {
        const int k = __builtin_ctz(left);
        if (k >= count) break;
        codes[k] = code(x + k, y);
      }
      put(orient + x, load(codes), count);
    }
  }
  ZEB_INLINE static void put(Zeb8u* p, V8u v, int count) {
    if (count == V8u::lanes) {
      store(p, v);
    } else {
      storeN(p, v, count);
    }
  }

  Zeb8u code(int x, int y) const {
    const bool brighter = lines(y).brighter[x] != 0;
    return static_cast<Zeb8u>((brighter ? 1 : 129) + circle_.direction(src_[y] + x, threshold_, brighter));
  }

  const State& state_;
  Rows<const Zeb8u> src_;
  ZebiSize size_;
  Circle circle_, narrowCircle_;
  int threshold_;
  Lines ring_[3];
  Zeb8u* copy_;
};

}  // namespace

ZEB_ENTRY(zebiFastNGetSize)(int circleRadius, int arcLength, int* pSpecSize) {
  if (auto bad = firstFailure(present(pSpecSize), hasArcs(circleRadius, arcLength))) return bad;
  *pSpecSize = sizeof(State);
  return zebStsOk;
}

ZEB_ENTRY(zebiFastNInit)(int circleRadius, int arcLength, int threshold, int options, ZebiFastNState* pSpec) {
  if (auto bad =
          firstFailure(present(pSpec), hasArcs(circleRadius, arcLength), require(threshold >= 0, zebStsErrThreshold),
                       require((options & ~(zebFastNScore | zebFastNNonMax)) == 0, zebStsErrBadArgument)))
    return bad;
  const State state = {id, circleRadius, positionsOf(circleRadius), arcLength, threshold, options, {0, 0}};
  memcpy(static_cast<void*>(pSpec), &state, sizeof state);
  return zebStsOk;
}

ZEB_ENTRY(zebiFastNGetBufferSize)(ZebiSize roiSize, const ZebiFastNState* pSpec, int* pBufferSize) {
  if (auto bad = firstFailure(present(pSpec, pBufferSize), hasArea(roiSize))) return bad;
  if (auto bad = isState(read(pSpec).id, id)) return bad;
  return reportSize(bufferBytes(roiSize.width), pBufferSize);
}

ZEB_ENTRY(zebiFastN_8u_C1R)
(const Zeb8u* pSrc, int srcStep, Zeb8u* pDst, int dstStep, Zeb8u* pOrient, int orientStep, ZebiSize roiSize,
 const ZebiFastNState* pSpec, Zeb8u* pBuffer) {
  const auto src = image(pSrc, srcStep);
  const auto dst = image(pDst, dstStep);
  const auto orient = optional(image(pOrient, orientStep));
  int bytes = 0;
  if (auto bad = checked(roiSize, src, dst, orient, also(pSpec, pBuffer))) return bad;
  const State state = read(pSpec);
  if (auto bad = firstFailure(isState(state.id, id), reportSize(bufferBytes(roiSize.width), &bytes))) return bad;
  SegmentTest(state, src.rows(), roiSize, Scratch(pBuffer, bytes)).run(dst.rows(), orient);
  return zebStsOk;
}

ZEB_ENTRY(zebiFastN2DToVec_8u)
(const Zeb8u* pSrc, int srcStep, const Zeb8u* pOrient, int orientStep, ZebiSize roiSize, ZebiFastNCorner* pCorner,
 int maxCount, int* pCount, const ZebiFastNState* pSpec) {
  const auto src = image(pSrc, srcStep);
  const auto orient = optional(image(pOrient, orientStep));
  if (auto bad = firstFailure(present(pSrc, pCorner, pCount, pSpec), hasArea(roiSize), atLeastOne(maxCount),
                              require(src.holdsRow(roiSize.width) && orient.holdsRow(roiSize.width), zebStsErrStep)))
    return bad;
  const State state = read(pSpec);
  if (auto bad = isState(state.id, id)) return bad;
  int count = 0;
  for (int y = 0; y < roiSize.height && count < maxCount; ++y) {
    const Zeb8u* const row = src.rows()[y];
    const auto list = [&](int x, V8u pixels) ZEB_BODY {
      for (unsigned left = ~topBits(equal(pixels, splat(Zeb8u(0)))); left != 0 && count < maxCount; left &= left - 1) {
        const int at = x + __builtin_ctz(left);
        ZebiFastNCorner corner = {at, y, row[at], 0, 0};
        const int code = orient ? orient.row(y)[at] : 0, direction = (code & 127) - 1;
        if (direction >= 0 && direction < 2 * state.positions) {
          corner.polarity = code >= 128 ? -1 : 1;
          corner.angle = static_cast<Zeb32f>(direction * 180) / static_cast<Zeb32f>(state.positions);
        }
        pCorner[count++] = corner;
      }
    };
    int x = 0;
    for (; x <= roiSize.width - V8u::lanes && count < maxCount; x += V8u::lanes) list(x, load(row + x));
    if (x < roiSize.width && count < maxCount) list(x, loadN(row + x, roiSize.width - x));
  }
  *pCount = count;
  return zebStsOk;
}

}  // namespace zeb
