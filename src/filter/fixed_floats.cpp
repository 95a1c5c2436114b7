// Fixed kernels on floats.
#include "core/loops.h"
#include "filter/fixed.h"
#include "filter/taps.h"

namespace zeb {
namespace {

template <class Taps>
void alongRow(const Zeb32f* p, int n, Zeb32f* out) {
  forVectors<8, 2>(
      0, n,
      [=](int x, auto part)
          ZEB_BODY { part.to(out + x, Taps::floats([=](int k) ZEB_BODY { return part.from(p + x + k); })); },
      [=](int x) ZEB_BODY { fetchAhead(p + x); });
}

template <class Taps>
void downColumns(const Zeb32f* const* rows, int n, Zeb32f* out) {
  const Zeb32f* p[Taps::taps];
  for (int k = 0; k < Taps::taps; ++k) p[k] = rows[k];
  forVectors<8, 2>(
      0, n,
      [&](int x, auto part)
          ZEB_BODY { part.to(out + x, Taps::floats([&](int k) ZEB_BODY { return part.from(p[k] + x); })); },
      [=](int x) ZEB_BODY { fetchAhead(out + x); });
}

struct Corners3 {
  template <class At>
  static ZEB_INLINE V32f floats(At v) {
    return v(0) + v(2);
  }
};
struct LaplacianDown3 {
  static constexpr int taps = 3;
  template <class At>
  static ZEB_INLINE V32f floats(At v) {
    const V32f corners = v(0) + v(2);
    return fnma(splat(8.0f), v(1), corners + corners);
  }
};
struct LaplacianDown5 {
  static constexpr int taps = 10;
  template <class At>
  static ZEB_INLINE V32f floats(At v) {
    return Smooth5::floats(v) + Second5::floats([&](int k) ZEB_BODY { return v(5 + k); });
  }
};

// The reciprocals are rounded once.
template <class Mean>
struct ScaledMean : Mean {
  template <class At>
  static ZEB_INLINE V32f floats(At v) {
    return Mean::floats(v) * splat(1.0f / (Mean::taps * Mean::taps));
  }
};

}  // namespace

const FloatRow laplacianFloatRow3 = alongRow<Corners3>;
const FloatColumns laplacianFloatColumns3 = downColumns<LaplacianDown3>;
const FloatColumns laplacianFloatColumns5 = downColumns<LaplacianDown5>;

FloatRow meanFloatRow(int reach) {
  return reach == 1 ? alongRow<Mean3> : alongRow<Mean5>;
}
FloatColumns meanFloatColumns(int reach) {
  return reach == 1 ? downColumns<ScaledMean<Mean3>> : downColumns<ScaledMean<Mean5>>;
}

FloatLines::FloatLines(const BorderedImage& source, int reach, FloatRow kernel, Scratch& scratch, Margins margins)
    : source_(source),
      margins_(margins),
      reach_(reach),
      kernel_(kernel),
      results_(source, 2 * reach + 1, margins.around(source), scratch),
      line_(scratch.take<Zeb32f>(margins.around(source) + 2 * reach, 4)) {}

void FloatLines::make(int64_t q, Zeb32f* out) const {
  const auto run = [&](const Zeb32f* p, int from, int to) { kernel_(p, to - from, out + (from + margins_.before)); };
  overRow<1>(source_, q, reach_, line_, run, margins_.before, margins_.after);
}

const Zeb32f* const* FloatLines::around(int64_t y) {
  return results_.rows(y - reach_, 2 * reach_ + 1, [this](int64_t q, Zeb32f* out) { make(q, out); });
}

FloatRow floatRow(Operator op, Order order) {
  switch (op) {
    case Operator::sobel3:
      return order == Order::smooth ? alongRow<Smooth3> : order == Order::first ? alongRow<First3> : alongRow<Second3>;
    case Operator::sobel5:
      return order == Order::smooth ? alongRow<Smooth5> : order == Order::first ? alongRow<First5> : alongRow<Second5>;
    case Operator::prewitt:
      return order == Order::smooth ? alongRow<Mean3> : alongRow<First3>;
    default:
      return order == Order::smooth ? alongRow<ScharrSmooth> : alongRow<First3>;
  }
}

FloatColumns floatColumns(Operator op, Order order) {
  switch (op) {
    case Operator::sobel3:
      return order == Order::smooth  ? downColumns<Smooth3>
             : order == Order::first ? downColumns<First3>
                                     : downColumns<Second3>;
    case Operator::sobel5:
      return order == Order::smooth  ? downColumns<Smooth5>
             : order == Order::first ? downColumns<First5>
                                     : downColumns<Second5>;
    case Operator::prewitt:
      return order == Order::smooth ? downColumns<Mean3> : downColumns<First3>;
    default:
      return order == Order::smooth ? downColumns<ScharrSmoothDown> : downColumns<First3>;
  }
}

}  // namespace zeb
