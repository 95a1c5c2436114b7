// Sparse optical flow: where the surroundings of a point of one image lie in another, iteratively and from the coarsest
// level of two pyramids to the finest. With the windows I1, Ix, Iy around the point and I2 around its guess v
//
//   v += G^-1 b,  G = sum (Ix, Iy)(Ix, Iy)^T,  b = sum (I1 - I2)(Ix, Iy)
//
// Method: B. Lucas, T. Kanade, 1981; over pyramids: J.-Y. Bouguet, 1999. Derivatives: H. Scharr, 2000.
#include "motion/flow.h"

#include <math.h>
#include <string.h>

#include "core/checks.h"
#include "core/entry.h"
#include "core/image.h"
#include "core/loops.h"
#include "core/memory.h"
#include "core/reduce.h"
#include "core/sample.h"
#include "core/scratch.h"
#include "core/widen.h"
#include "filter/taps.h"

namespace {

using namespace zeb;

constexpr int roundedUp(int n) {
  return (n + 7) & ~7;
}

struct Point {
  double x;
  double y;
};

template <class T>
struct Level {
  Rows<const T> rows;
  ZebiSize size;
};

// Columns or rows from..to-1 of a window.
struct Span {
  int from;
  int to;
  bool empty() const { return from >= to; }
};
Span common(Span a, Span b) {
  return {a.from > b.from ? a.from : b.from, a.to < b.to ? a.to : b.to};
}

// How many pixels of a line there are from pixel p on, at most so many. p is not behind the last one but may lie before
// the first, where they may be more than 2^31 - 1.
int pixelsFrom(int p, int length, int most) {
  const unsigned left = static_cast<unsigned>(length) - static_cast<unsigned>(p);
  return left < static_cast<unsigned>(most) ? static_cast<int>(left) : most;
}

// One dimension of a window: pixel k stands at first + k + fraction.
struct Stretch {
  int first = 0;
  Zeb32f fraction = 0;
  Span inside = {0, 0};  // the pixels between the first and the last pixel of the image, both included
};
Stretch stretchAround(double centre, int window, int length) {
  Stretch s;
  const double corner = centre - 0.5 * (window - 1);
  if (!(corner > -window && corner < length)) return s;  // nothing inside; nor is a NaN
  const double whole = floor(corner);
  s.first = static_cast<int>(whole);
  s.fraction = static_cast<Zeb32f>(corner - whole);
  s.inside = {s.first < 0 ? -s.first : 0, pixelsFrom(s.first, s.fraction > 0 ? length - 1 : length, window)};
  return s;
}
struct Frame {
  Stretch x;
  Stretch y;
  Frame(Point centre, int window, ZebiSize size)
      : x(stretchAround(centre.x, window, size.width)), y(stretchAround(centre.y, window, size.height)) {}
  bool empty() const { return x.inside.empty() || y.inside.empty(); }
};

// Eight neighbours of a row of a window: the first image there and its derivatives; 0 in the lanes outside the image.
struct Eight {
  Zeb32f first[8];
  Zeb32f gradientX[8];
  Zeb32f gradientY[8];
};

// The work rows of a tracker: whole vectors of a window's rows with three pixels beside them, and a vector more; and
// the window itself in columns of eight pixels.
struct Windows {
  Windows(Zeb8u* buffer, int64_t bytes, int window) : size(window), stride(roundedUp(window + 3) + 8) {
    Scratch scratch(buffer, bytes);
    // Whole vectors are read of rows whose last elements nothing else may have written.
    const auto rows = [&](int count) {
      const int64_t elements = static_cast<int64_t>(stride) * count;
      auto* const first = scratch.take<Zeb32f>(elements);
      memset(first, 0, static_cast<size_t>(elements) * sizeof(Zeb32f));
      return first;
    };
    around = rows(window + 2);
    lattice = rows(window + 3);
    eights = scratch.take<Eight>(static_cast<int64_t>(roundedUp(window) / 8) * window);
  }
  Eight* column(int x) const { return eights + static_cast<ptrdiff_t>(x / 8) * size; }

  int size, stride;
  Zeb32f* around;   // the first image at the window's pixels and one pixel around them
  Zeb32f* lattice;  // an image at whole pixels
  Eight* eights;
};

// n x n whole pixels x.., y.. of a level as floats; outside pixels repeat the edge.
template <class T>
void fillLattice(const Level<T>& level, int x, int y, int n, const Windows& w) {
  const auto clamped = [](int p, int end) { return p < 0 ? 0 : p < end ? p : end - 1; };
  // Columns from..to-1 come from the row, at least one of them.
  const int from = clamped(-x, n), to = pixelsFrom(x, level.size.width, n), rows = pixelsFrom(y, level.size.height, n);
  const int shift = clamped(x + from, level.size.width) - from;
  Zeb32f* lattice = w.lattice;
  for (int r = 0; r < n; ++r, lattice += w.stride) {
    const int q = y + (r < rows ? r : rows - 1);
    const T* const row = level.rows[q > 0 ? q : 0];
    const V32f left = splat(static_cast<Zeb32f>(row[shift + from]));
    const V32f right = splat(static_cast<Zeb32f>(row[shift + to - 1]));
    for (int c = 0; c < from; c += 8) store(lattice + c, left);
    if (to - from >= 8) {
      for (int c = from; c < to - 8; c += 8) store(lattice + c, loadAsFloat(row + shift + c));
      store(lattice + to - 8, loadAsFloat(row + shift + to - 8));
    } else {
      store(lattice + from, loadAsFloatN(row + shift + from, to - from));
    }
    for (int c = to; c < n; c += 8) store(lattice + c, right);
  }
}

// run(rows) with the whole pixels x.., y.. of a level between which n x n values lie: straight from the image where
// whole vectors stay inside its rows, else from a copy with repeated edges.
template <class T, class Run>
void onWholePixels(const Level<T>& level, int x, int y, int n, const Windows& w, Run run) {
  if (x >= 0 && y >= 0 && x < level.size.width - roundedUp(n) && y < level.size.height - n)
    return run(level.rows.from(x, y));
  fillLattice(level, x, y, n + 1, w);
  run(Rows<const Zeb32f>(w.lattice, w.stride * static_cast<int>(sizeof(Zeb32f))));
}

// Goes down rows of pixels that each lie between a row of whole pixels and the next one: body(to, pixels of a row) for
// each place from `to` to `end`.
template <class T, class To, class Blend, class Body>
ZEB_INLINE void betweenRows(const T* whole, int step, To* to, To* end, int stride, V32f fx, V32f fy, Blend blend,
                            Body body) {
  const auto next = [&]() ZEB_BODY {
    whole = reinterpret_cast<const T*>(reinterpret_cast<const Zeb8u*>(whole) + step);
    return betweenNeighbours(whole, fx, blend);
  };
  V32f even = betweenNeighbours(whole, fx, blend);
  for (; to < end - stride; to += 2 * stride) {
    const V32f odd = next();
    body(to, blend(even, odd, fy));
    even = next();
    body(to + stride, blend(odd, even, fy));
  }
  if (to < end) body(to, blend(even, next(), fy));
}

// n rows of values between the whole pixels of as many rows and one more; n of them, in whole vectors.
template <class T, class Blend>
void interpolate(Rows<const T> whole, const Frame& frame, Zeb32f* out, int n, int stride, Blend blend) {
  const V32f fx = splat(frame.x.fraction), fy = splat(frame.y.fraction);
  for (int c = 0; c < n; c += 8, out += 8)
    betweenRows(whole[0] + c, whole.step(), out, out + n * stride, stride, fx, fy, blend,
                [](Zeb32f* to, V32f value) ZEB_BODY { store(to, value); });
}

// All ones in the lanes whose columns c, c + 1, ... belong to the span.
ZEB_INLINE V32f lanesOf(Span span, int c) {
  alignas(32) static constexpr Zeb32s numbers[8] = {0, 1, 2, 3, 4, 5, 6, 7};
  const V32s column = load(numbers) + splat(c);
  return as<Zeb32f>(greater(column, splat(span.from - 1)) & less(column, splat(span.to)));
}

// The Scharr filters give so many times the slope per pixel: a power of two, so that it may be taken out later.
constexpr double slopeUnit = 32;

// The derivatives of the window as the filters give them, to the bit: those between pixels are those of the values
// there.
void differentiate(const Windows& w, const Frame& frame) {
  struct RowSums {
    V32f first, smooth;
  };
  const int stride = w.stride, size = w.size;
  for (int x = 0; x < size; x += 8) {
    const V32f mask = lanesOf(frame.x.inside, x);
    const Zeb32f* row = w.around + x;
    const auto next = [&]() ZEB_BODY {
      const auto pixels = [row](int k) ZEB_BODY { return load(row + k); };
      row += stride;
      return RowSums{First3::floats(pixels), ScharrSmooth::floats(pixels)};
    };
    RowSums above = next(), here = next();
    Eight* out = w.column(x);
    for (Eight* const end = out + size; out != end; ++out) {
      store(out->first, load(row - stride + 1) & mask);
      const RowSums rows[] = {above, here, next()};
      store(out->gradientX, ScharrSmoothDown::floats([&](int k) ZEB_BODY { return rows[k].first; }) & mask);
      store(out->gradientY, First3::floats([&](int k) ZEB_BODY { return rows[k].smooth; }) & mask);
      above = here, here = rows[2];
    }
  }
}

template <class T>
void takeFirst(const Level<T>& level, const Frame& frame, const Windows& w) {
  const int n = w.size + 2;
  onWholePixels(level, frame.x.first - 1, frame.y.first - 1, n, w, [&](auto whole) {
    blending<T>(frame.x.fraction, frame.y.fraction,
                [&](auto blend) { interpolate(whole, frame, w.around, n, w.stride, blend); });
  });
  differentiate(w, frame);
}

// G over the part of the window that lies in the image.
struct Matrix {
  double xx = 0;
  double xy = 0;
  double yy = 0;
  double determinant() const { return xx * yy - xy * xy; }
};
Matrix matrixOf(const Windows& w, const Frame& frame) {
  // Sums of the lower and of the upper halves, so that fewer additions wait for each other.
  V64f xx[2] = {splat(0.0), splat(0.0)}, xy[2] = {xx[0], xx[0]}, yy[2] = {xx[0], xx[0]};
  const auto add = [&](int half, const Eight* e) ZEB_BODY {
    const V64f x = loadAsDouble(e->gradientX + 4 * half), y = loadAsDouble(e->gradientY + 4 * half);
    xx[half] = fma(x, x, xx[half]);
    xy[half] = fma(x, y, xy[half]);
    yy[half] = fma(y, y, yy[half]);
    settle(xx[half]), settle(xy[half]), settle(yy[half]);
  };
  const Span rows = frame.y.inside;
  for (int c = 0; c < w.size; c += 8) {
    const Eight *e = w.column(c) + rows.from, *const end = w.column(c) + rows.to;
    if (w.size - c > 4)
      for (; e != end; ++e) add(0, e), add(1, e);
    else
      for (; e != end; ++e) add(0, e);
  }
  Zeb64f sums[4], last[4];
  store(sums, sumsOfPairs(xx[0] + xx[1], yy[0] + yy[1]));
  store(last, xy[0] + xy[1]);
  constexpr double scale = 1 / (slopeUnit * slopeUnit);
  return {scale * (sums[0] + sums[2]), scale * ((last[0] + last[1]) + (last[2] + last[3])),
          scale * (sums[1] + sums[3])};
}

// The two windows compared where both lie in their images: b times slopeUnit, or the sum of the squared differences as
// x. Columns are lanes, rows follow each other, so that each row of the second image is interpolated once. A lane adds
// one product per row in single precision; lanes are added in double precision. The derivatives are 0 in the lanes
// outside the first image, and integers lie straight in the second one: they need no mask.
template <bool squares, class T, class Blend>
Point differenceTo(Rows<const T> second, Stretch x, Stretch y, Span columns, Span rows, const Windows& w, Blend blend) {
  const V32f fx = splat(x.fraction), fy = splat(y.fraction);
  V64f sums[2] = {splat(0.0), splat(0.0)};
  const T* whole = second[rows.from];
  const Eight *from = w.eights + rows.from, *to = w.eights + rows.to;
  for (int c = 0; c < w.size; c += 8, whole += 8, from += w.size, to += w.size) {
    const V32f mask = lanesOf(columns, c);
    V32f bx = splat(0.0f), by = bx;
    betweenRows(whole, second.step(), from, to, 1, fx, fy, blend, [&](const Eight* e, V32f value) ZEB_BODY {
      V32f d = value - load(e->first);
      if (squares || std::is_floating_point_v<T>) d = d & mask;
      if (squares) {
        bx = fma(d, d, bx);
      } else {
        bx = fnma(d, load(e->gradientX), bx);
        by = fnma(d, load(e->gradientY), by);
      }
    });
    sums[0] = sums[0] + (widenLow(bx) + widenHigh(bx));
    if (!squares) sums[1] = sums[1] + (widenLow(by) + widenHigh(by));
  }
  Zeb64f b[4];
  store(b, sumsOfPairs(sums[0], sums[1]));
  return {b[0] + b[2], b[1] + b[3]};
}

template <bool squares, class T>
Point compare(const Level<T>& level, const Frame& second, Span columns, Span rows, const Windows& w) {
  Point difference;
  onWholePixels(level, second.x.first, second.y.first, w.size, w, [&](auto whole) {
    blending<T>(second.x.fraction, second.y.fraction, [&](auto blend) {
      difference = differenceTo<squares>(whole, second.x, second.y, columns, rows, w, blend);
    });
  });
  return difference;
}

// Gradients whose matrix has a smaller determinant point nowhere.
constexpr double leastDeterminant = 0x1p-52;

struct Limits {
  int iterations;
  double squaredStep;
};

// A step that takes back the step before but for this much: the guess swings about its place.
constexpr double swing = 3.4526698e-4f;

// Finds the period of steps that go round for ever (R. Brent, 1980). The next step depends on the guess, and whether it
// is the last one on the step before: a pair of both that comes again, to the bit, leads round the same way, and
// nothing on it ends the search.
class Round {
 public:
  // The period when guess and step are those of a moment before, else 0.
  int64_t closedBy(Point guess, Point step) {
    const Point now[2] = {guess, step};
    ++since_;
    if (memcmp(now, then_, sizeof(now)) == 0) return since_;
    if (since_ == kept_) {
      memcpy(then_, now, sizeof(now));
      kept_ *= 2, since_ = 0;
    }
    return 0;
  }

 private:
  Point then_[2] = {{NAN, NAN}, {NAN, NAN}};
  int64_t kept_ = 1, since_ = 0;
};

// Where whole vectors of a window's rows, and the pixels right of them and below, stay inside an image.
struct Interior {
  Interior(int window, ZebiSize size)
      : reach(0.5 * (window - 1)), right(size.width - roundedUp(window)), bottom(size.height - window) {}
  double reach, right, bottom;
};

// b times slopeUnit for a guess anywhere; false when no pixel of the window lies in both images.
template <class T>
__attribute__((noinline)) bool compareAcross(const Level<T>& second, const Frame& frame, Point v, const Windows& w,
                                             Point& b) {
  const Frame target(v, w.size, second.size);
  const Span columns = common(frame.x.inside, target.x.inside), rows = common(frame.y.inside, target.y.inside);
  if (columns.empty() || rows.empty()) return false;
  b = compare<false>(second, target, columns, rows, w);
  return true;
}
template <class T>
ZEB_INLINE bool compareAt(const Level<T>& second, const Interior& interior, const Frame& frame, Point v,
                          const Windows& w, Point& b) {
  const double x = v.x - interior.reach, y = v.y - interior.reach;
  if (!(x >= 0 && y >= 0 && x < interior.right && y < interior.bottom)) return compareAcross(second, frame, v, w, b);
  Stretch across, down;
  across.first = static_cast<int>(x), across.fraction = static_cast<Zeb32f>(x - across.first);
  down.first = static_cast<int>(y), down.fraction = static_cast<Zeb32f>(y - down.first);
  blending<T>(across.fraction, down.fraction, [&](auto blend) {
    b = differenceTo<false>(second.rows.from(across.first, down.first), across, down, frame.x.inside, frame.y.inside, w,
                            blend);
  });
  return true;
}

// Steps before it is looked whether they go round.
constexpr int soon = 16;

// Moves v to where the window around u is found; false when the point is lost.
template <class T>
bool trackLevel(const Level<T>& first, const Level<T>& second, Point u, Point& v, Limits limits, const Windows& w) {
  const Frame frame(u, w.size, first.size);
  if (frame.empty()) return false;
  takeFirst(first, frame, w);
  const Matrix g = matrixOf(w, frame);
  const double determinant = g.determinant();
  if (!(determinant >= leastDeterminant)) return false;
  const double divisor = slopeUnit * determinant;
  const Interior interior(w.size, second.size);
  Point before = {0, 0};
  Round round;
  for (int k = 1;; ++k) {
    Point b;
    if (!compareAt(second, interior, frame, v, w, b)) return false;
    const Point step = {(g.yy * b.x - g.xy * b.y) / divisor, (g.xx * b.y - g.xy * b.x) / divisor};
    v = {v.x + step.x, v.y + step.y};
    if (step.x * step.x + step.y * step.y < limits.squaredStep) return true;
    if (k > 1 && fabs(step.x + before.x) < swing && fabs(step.y + before.y) < swing) {
      v = {v.x - 0.5 * step.x, v.y - 0.5 * step.y};
      return true;
    }
    before = step;
    if (k < soon && k < limits.iterations) continue;
    if (!isfinite(v.x) || !isfinite(v.y)) return false;
    if (k >= limits.iterations) return true;
    // Whole rounds change nothing.
    if (const int64_t period = round.closedBy(v, step))
      k = limits.iterations - static_cast<int>((limits.iterations - k) % period);
    if (k == limits.iterations) return true;
  }
}

// Root of the mean squared difference over the pixels that both windows have; 0 when there are none.
template <class T>
Zeb32f errorAt(const Level<T>& first, const Level<T>& second, Point u, Point v, const Windows& w) {
  const Frame frame(u, w.size, first.size), target(v, w.size, second.size);
  const Span columns = common(frame.x.inside, target.x.inside), rows = common(frame.y.inside, target.y.inside);
  if (columns.empty() || rows.empty()) return 0;
  const double squares = compare<true>(second, target, columns, rows, w).x;
  if (!(squares > 0)) return 0;
  const double pixels = static_cast<double>(columns.to - columns.from) * (rows.to - rows.from);
  return static_cast<Zeb32f>(sqrt(squares / pixels));
}

template <class T>
Level<T> levelOf(const ZebiPyramid& pyramid, int level) {
  return {Rows<const T>(reinterpret_cast<const T*>(pyramid.pImage[level]), pyramid.pStep[level]), pyramid.pRoi[level]};
}

constexpr uint32_t flowId(ZebDataType type) {
  return stateId(StateKind::opticalFlow, type, 1);
}

// A record may be the caller's own, so it is known by what it holds.
ZebStatus hasLevels(const ZebiPyramid& pyramid, int maxLev) {
  if (maxLev > pyramid.level) return zebStsErrBadArgument;
  if (auto bad = present(pyramid.pImage, pyramid.pRoi, pyramid.pRate, pyramid.pStep)) return bad;
  for (int i = 0; i <= maxLev; ++i)
    if (!pyramid.pImage[i]) return zebStsErrNullPointer;
  return zebStsOk;
}

template <class T>
ZebStatus trackPoints(const ZebiPyramid* pPyr1, const ZebiPyramid* pPyr2, const ZebiPoint_32f* pPrev,
                      ZebiPoint_32f* pNext, Zeb8s* pStatus, Zeb32f* pError, int numFeat, int winSize, int maxLev,
                      int maxIter, Zeb32f threshold, ZebiOptFlowPyrLKState* pState, uint32_t id) {
  if (auto bad = present(pPyr1, pPyr2, pState, pPrev, pNext, pStatus, pError)) return bad;
  if (auto bad = firstFailure(
          atLeastOne(numFeat), atLeastOne(winSize), require(winSize == pState->winSize, zebStsErrSize),
          require(maxLev >= 0 && maxIter >= 1 && !(threshold < 0), zebStsErrBadArgument), isState(pState->id, id)))
    return bad;
  if (auto bad = hasLevels(*pPyr1, maxLev)) return bad;
  if (auto bad = hasLevels(*pPyr2, maxLev)) return bad;
  const ZebiSize roi = {pState->roiWidth, pState->roiHeight};
  const Windows windows(pState->pBuffer, flowBufferBytes(roi, winSize, pState->dataType), winSize);
  const Limits limits = {maxIter, static_cast<double>(threshold) * threshold};
  for (int i = 0; i < numFeat; ++i) {
    Point guess = {pNext[i].x, pNext[i].y};
    bool found = true;
    pError[i] = 0;
    for (int level = maxLev; level >= 0 && found; --level) {
      const double scale = pPyr1->pRate[level];
      const Level<T> first = levelOf<T>(*pPyr1, level), second = levelOf<T>(*pPyr2, level);
      const Point u = {pPrev[i].x * scale, pPrev[i].y * scale};
      Point v = {guess.x * scale, guess.y * scale};
      pStatus[i] = static_cast<Zeb8s>(level);
      found = trackLevel(first, second, u, v, limits, windows);
      guess = level > 0 ? Point{v.x / scale, v.y / scale} : v;
      if (found && level == 0) pError[i] = errorAt(first, second, u, v, windows);
    }
    pNext[i] = {static_cast<Zeb32f>(guess.x), static_cast<Zeb32f>(guess.y)};
  }
  return zebStsOk;
}

ZebStatus makeState(ZebiOptFlowPyrLKState** ppState, ZebiSize roi, int winSize, int hint, ZebDataType type) {
  if (auto bad = firstFailure(present(ppState), hasArea(roi), atLeastOne(winSize))) return bad;
  auto* const state = reinterpret_cast<ZebiOptFlowPyrLKState*>(allocateState(sizeof(ZebiOptFlowPyrLKState)));
  if (!state) return zebStsErrMemAlloc;
  Zeb8u* const buffer = allocateState(flowBufferBytes(roi, winSize, type));
  *state = {roi.width, roi.height, 1, type, flowId(type), hint, winSize, buffer};
  if (!buffer) {
    releaseState(state, state->id);
    return zebStsErrMemAlloc;
  }
  *ppState = state;
  return zebStsOk;
}

ZebStatus freeState(ZebiOptFlowPyrLKState* pState, uint32_t id) {
  if (auto bad = present(pState)) return bad;
  if (auto bad = isState(pState->id, id)) return bad;
  zebsFree(pState->pBuffer);
  releaseState(pState, pState->id);
  return zebStsOk;
}

}  // namespace

#define FLOW(init, track, release, T, type)                                                                          \
  ZEB_ENTRY(init)(ZebiOptFlowPyrLKState * *ppState, ZebiSize roiSize, int winSize, int hint) {                       \
    return makeState(ppState, roiSize, winSize, hint, type);                                                         \
  }                                                                                                                  \
  ZEB_ENTRY(track)                                                                                                   \
  (ZebiPyramid * pPyr1, ZebiPyramid * pPyr2, const ZebiPoint_32f* pPrev, ZebiPoint_32f* pNext, Zeb8s* pStatus,       \
   Zeb32f* pError, int numFeat, int winSize, int maxLev, int maxIter, Zeb32f threshold,                              \
   ZebiOptFlowPyrLKState* pState) {                                                                                  \
    return trackPoints<T>(pPyr1, pPyr2, pPrev, pNext, pStatus, pError, numFeat, winSize, maxLev, maxIter, threshold, \
                          pState, flowId(type));                                                                     \
  }                                                                                                                  \
  ZEB_ENTRY(release)(ZebiOptFlowPyrLKState * pState) {                                                               \
    return freeState(pState, flowId(type));                                                                          \
  }
FLOW(zebiOpticalFlowPyrLKInitAlloc_8u_C1R, zebiOpticalFlowPyrLK_8u_C1R, zebiOpticalFlowPyrLKFree_8u_C1R, Zeb8u, zeb8u)
FLOW(zebiOpticalFlowPyrLKInitAlloc_16u_C1R, zebiOpticalFlowPyrLK_16u_C1R, zebiOpticalFlowPyrLKFree_16u_C1R, Zeb16u,
     zeb16u)
FLOW(zebiOpticalFlowPyrLKInitAlloc_32f_C1R, zebiOpticalFlowPyrLK_32f_C1R, zebiOpticalFlowPyrLKFree_32f_C1R, Zeb32f,
     zeb32f)
