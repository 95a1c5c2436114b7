// Canny edges, Hough lines, local peaks.
#include "feature/drawing.h"
#include "reference/canny.h"
#include "reference/hough.h"
#include "reference/peaks.h"
#include "sizes.h"

namespace {

using namespace fuzz;
using ref::CannyKind;
using ref::Gradient;
using ref::Plane;

// ---- Canny ----

struct Thresholds {
  explicit Thresholds(Choice& c)
      : low(c.coin() ? static_cast<Zeb32f>(c.within(0, 60)) : c.real(0, c.oneIn(8) ? 1e5f : 300)),
        high(c.oneIn(3) ? low : low + c.real(0, 200)),
        bad(c.oneIn(3) ? high + 1
            : c.coin() ? -1e-30f
                       : NAN) {}
  Zeb32f low, high, bad;
};

// Derivatives of all sectors with equal neighbours, of any numbers, or with zeros of both signs.
template <class T>
Plane<T> derivative(Choice& c, ZebiSize size) {
  const int kind = c.within(0, 2);
  if (kind == 0) return c.finite<T>(size.width, size.height);
  Random random = c.random();
  const int range = c.within(1, 60);
  Plane<T> p(size.width, size.height);
  for (T& v : p.data) {
    v = static_cast<T>(random.within(-range, range));
    if (std::is_floating_point_v<T> && kind == 2 && random.within(0, 3) == 0) v = v > 0 ? T(-0.0) : v * T(0.41421357);
  }
  return p;
}

template <class T>
void canny(Choice& c, Function<const T*, int, const T*, int, Zeb8u*, int, ZebiSize, Zeb32f, Zeb32f, Zeb8u*> f,
           CannyKind kind) {
  const ZebiSize size = c.size();
  const Gradient<T> g{derivative<T>(c, size), derivative<T>(c, size)};
  const Image<T> dx(g.dx, c.layout<T>()), dy(g.dy, c.layout<T>());
  const Image<Zeb8u> dst = c.empty<Zeb8u>(size);
  const Thresholds t(c);
  int bytes = 0;
  const auto query = FUNCTION(zebiCannyGetSize);
  query.ok(c, size, &bytes);
  const Scratch scratch = c.scratch(bytes);
  f.refused(zebStsErrOverflow, dx.pixels(), dx.step(), dy.pixels(), dy.step(), dst.pixels(), dst.step(),
            tooHigh(c, query, anyBytes), t.low, t.high, scratch.get());
  f.ok(c, dx.pixels(), dx.step(), dy.pixels(), dy.step(), dst.pixels(), dst.step(), size, orElse(t.low, t.bad), t.high,
       scratch.get());
  require(agree(f.name(), dst, ref::canny(g, t.low, t.high, kind)),
          "thresholds " + test::shown(t.low) + " " + test::shown(t.high) + ", " + dx.describe());
  require(dx.intact() && dy.intact() && scratch.intact(), "wrote outside");
}
DRIVER("features", "zebiCanny_16s8u_C1R", canny(c, FUNCTION(zebiCanny_16s8u_C1R), CannyKind::derivatives16s));
DRIVER("features", "zebiCanny_32f8u_C1R", canny(c, FUNCTION(zebiCanny_32f8u_C1R), CannyKind::derivatives32f));

void cannyBorder(Choice& c) {
  const auto f = FUNCTION(zebiCannyBorder_8u_C1R);
  const ZebiSize size = c.size();
  const int filter = c.coin() ? zebFilterSobel : zebFilterScharr;
  const int mask = filter == zebFilterSobel && c.coin() ? zebMskSize5x5 : zebMskSize3x3;
  const ZebiBorderType rules[] = {zebBorderConst, zebBorderRepl, zebBorderInMem};
  const ZebiBorderType rule = c.oneOf(rules), border = rule | c.within(0, 15) << 4;
  // Exactly the pixels that the border type lets the function read.
  const int reach = mask == zebMskSize5x5 ? 2 : 1;
  const auto margin = [&](int side) { return (border & 15) == zebBorderInMem || (border & side) ? reach : 0; };
  const int left = margin(zebBorderInMemLeft), top = margin(zebBorderInMemTop);
  const Image<Zeb8u> src =
      c.image<Zeb8u>(size.width + left + margin(zebBorderInMemRight), size.height + top + margin(zebBorderInMemBottom));
  const bool inPlace = c.oneIn(4);
  const Image<Zeb8u> own = c.empty<Zeb8u>(size);
  const Plane<Zeb8u> all = src.plane();
  Zeb8u* const pDst = inPlace ? src.pixels(left, top) : own.pixels();
  const auto value = c.value<Zeb8u>();
  const Thresholds t(c);
  const int norm = c.coin() ? zebNormL1 : zebNormL2;
  const ZebiBorderType refused[] = {zebBorderWrap, zebBorderMirror, zebBorderMirrorR, 5};
  int bytes = 0;
  const auto query = FUNCTION(zebiCannyBorderGetSize);
  query.ok(c, size, filter, orElse(mask, 53, zebStsErrMaskSize), keep(zeb8u), &bytes);
  const Scratch scratch = c.scratch(bytes);
  f.refused(zebStsErrOverflow, src.pixels(left, top), src.step(), pDst, src.step(),
            tooHigh(c, query, anyBytes, filter, mask, zeb8u), filter, mask, border, value, t.low, t.high, norm,
            scratch.get());
  // Its steps are taken as they are, so a region may be spoiled by sizes without an area only.
  const ZebiSize noArea = {size.width, c.within(-9, 0)};
  f.ok(c, src.pixels(left, top), keep(src.step()), pDst, keep(inPlace ? src.step() : own.step()),
       orElse(size, noArea, zebStsErrSize), orElse(filter, 3, zebStsErrBadArgument),
       orElse(mask, 35, zebStsErrMaskSize), orElse(border, c.oneOf(refused), zebStsErrBorder), value,
       orElse(t.low, t.bad), t.high, orElse(norm, int(zebNormInf), zebStsErrBadArgument), scratch.get());
  const auto g = ref::gradient<Zeb8u, Zeb16s>(ref::bordered<Zeb8u>(all, left, top, size, border, value), size, filter,
                                              2 * reach + 1);
  const auto want = ref::canny(g, t.low, t.high, norm == zebNormL1 ? CannyKind::borderL1 : CannyKind::borderL2);
  const std::string what = "filter " + std::to_string(filter) + ", mask " + std::to_string(mask) + ", border " +
                           std::to_string(border) + ", norm " + std::to_string(norm) + ", " + src.describe();
  if (inPlace) {
    Plane<Zeb8u> changed = all;
    for (int y = 0; y < size.height; ++y)
      for (int x = 0; x < size.width; ++x) changed.at(left + x, top + y) = want.at(x, y);
    require(agree(f.name(), src, changed), what + ", in place");
  } else {
    require(agree(f.name(), own, want), what);
  }
  require(src.intact() && scratch.intact(), "wrote outside");
}
DRIVER("features", "zebiCannyBorder_8u_C1R", cannyBorder(c));

// ---- Lists of results in guarded memory ----

template <class P>
struct List {
  explicit List(int most) : memory(static_cast<size_t>(most) * sizeof(P), test::Place::back) { memory.fillWithJunk(); }
  P* get() const { return reinterpret_cast<P*>(memory.data()); }
  // Holds exactly these, and junk behind them.
  void check(int count, const std::vector<P>& want, const std::string& what) const {
    require(count == static_cast<int>(want.size()),
            what + ": " + std::to_string(count) + " found, not " + std::to_string(want.size()));
    for (size_t i = 0; i < want.size(); ++i)
      require(memcmp(get() + i, &want[i], sizeof(P)) == 0, what + ": entry " + std::to_string(i) + " differs");
    require(memory.intactMargins(), what + ": wrote outside the list");
  }
  test::GuardedBytes memory;
};

// ---- Hough ----

// A drawing and steps of an accumulator, most of at most some ten thousand cells.
struct Lines {
  explicit Lines(Choice& c)
      : size(c.size(60, 20)), src{content(c), c.layout<Zeb8u>()}, grid{size, delta(c)}, most(c.within(1, 12)) {
    const ZebiPoint_32f refused[] = {
        {0, grid.delta.y}, {-1, grid.delta.y}, {grid.delta.x, 0}, {NAN, grid.delta.y}, {grid.delta.x, NAN}};
    badDelta = c.oneOf(refused);
    what = "delta " + test::shown(grid.delta.x) + " " + test::shown(grid.delta.y) + ", " + src.describe();
  }
  Plane<Zeb8u> content(Choice& c) const {
    if (c.coin()) return c.plane<Zeb8u>(size.width, size.height);
    Random random = c.random();
    return test::drawing(size.width, size.height, c.within(0, 30), random);
  }
  ZebiPoint_32f delta(Choice& c) const {
    const auto widest = static_cast<Zeb32f>(size.width + size.height);
    const Zeb32f rho = c.coin() ? static_cast<Zeb32f>(c.within(1, 4)) : c.real(0.1f, 9);
    Zeb32f theta = c.coin() ? 3.14159f / static_cast<Zeb32f>(c.within(1, 40)) : c.real(0.03f, 3.14159f);
    if (rho >= 1 && c.oneIn(8)) theta = c.real(0.006f, 0.02f);
    return {std::min(rho, widest), theta};
  }
  ZebiSize noArea(Choice& c) const { return c.coin() ? ZebiSize{0, size.height} : ZebiSize{size.width, -1}; }

  ZebiSize size;
  Image<Zeb8u> src;
  ref::HoughGrid grid;
  ZebiPoint_32f badDelta;
  int most;
  std::string what;
};

void houghLine(Choice& c, bool inRegion) {
  const Lines l(c);
  const int threshold = c.oneIn(4) ? c.within(1, 200) : c.within(1, 8);
  const Zeb32f rho = c.real(-60, 60), theta = c.real(-0.5f, 3);
  ZebiPoint_32f region[2] = {{rho, theta}, {rho + c.real(0, 60), theta + c.real(0, 2)}},
                inverted[2] = {region[1], region[0]};
  inverted[0].y += 1;
  int bytes = 0, count = -1;
  const auto query = FUNCTION(zebiHoughLineGetSize_8u_C1R);
  query.ok(c, l.size, orElse(l.grid.delta, l.badDelta), orElse(l.most, INT32_MAX, zebStsErrOverflow, Check::state),
           &bytes);
  const ZebiSize hopeless = tooHigh(c, query, anyBytes, l.grid.delta, l.most);
  const Scratch scratch = c.scratch(bytes);
  const List<ZebiPoint_32f> list(l.most);
  const auto size = orElse(l.size, l.noArea(c), zebStsErrSize);
  const auto delta = orElse(l.grid.delta, l.badDelta, zebStsErrBadArgument, Check::state);
  if (inRegion) {
    const auto f = FUNCTION(zebiHoughLine_Region_8u32f_C1R);
    f.refused(zebStsErrOverflow, l.src.pixels(), l.src.step(), hopeless, list.get(), region, l.most, &count,
              l.grid.delta, threshold, scratch.get());
    f.ok(c, l.src.pixels(), l.src.step(), size, list.get(), orElse(region, inverted, zebStsErrRange, Check::anywhere),
         orElse(l.most, 0, zebStsErrSize), &count, delta, orElse(threshold, 0, zebStsErrBadArgument, Check::state),
         scratch.get());
  } else {
    const auto f = FUNCTION(zebiHoughLine_8u32f_C1R);
    f.refused(zebStsErrOverflow, l.src.pixels(), l.src.step(), hopeless, l.grid.delta, threshold, list.get(), l.most,
              &count, scratch.get());
    f.ok(c, l.src.pixels(), l.src.step(), size, delta, orElse(threshold, 0, zebStsErrBadArgument, Check::state),
         list.get(), orElse(l.most, 0, zebStsErrSize), &count, scratch.get());
  }
  const auto want =
      ref::houghLines(l.src.plane(), l.grid, threshold, static_cast<size_t>(l.most), inRegion ? region : nullptr);
  list.check(count, want, l.what);
  require(l.src.intact() && scratch.intact(), "wrote outside");
}
DRIVER("features", "zebiHoughLine_8u32f_C1R", houghLine(c, false));
DRIVER("features", "zebiHoughLine_Region_8u32f_C1R", houghLine(c, true));

void houghSegments(Choice& c) {
  const Lines l(c);
  const int threshold = c.within(1, 15), length = c.within(0, 20), gap = c.within(0, 5);
  int specBytes = 0, bytes = 0, count = -1;
  const auto delta = orElse(l.grid.delta, l.badDelta);
  const auto query = FUNCTION(zebiHoughProbLineGetSize_8u_C1R);
  query.ok(c, l.size, delta, &specBytes, &bytes);
  const Scratch specMemory = c.scratch(specBytes), scratch = c.scratch(bytes);
  auto* spec = reinterpret_cast<ZebiHoughProbSpec*>(specMemory.get());
  const auto init = FUNCTION(zebiHoughProbLineInit_8u32f_C1R);
  const ZebiSize hopeless = tooHigh(c, query, anyBytes, l.grid.delta, &specBytes);
  init.refused(zebStsErrOverflow, hopeless, l.grid.delta, 0, spec);
  init.ok(c, l.size, delta, keep(c.within(0, 9)), spec);
  const List<ZebiRect> list(l.most);
  const auto want = ref::houghSegments(l.src.plane(), l.grid, threshold, length, gap, static_cast<size_t>(l.most));
  const ZebStatus status = FUNCTION(zebiHoughProbLine_8u32f_C1R)(
      c, l.src.pixels(), keep(l.src.step()), orElse(l.size, l.noArea(c), zebStsErrSize, Check::size),
      orElse(threshold, 0, zebStsErrBadArgument), orElse(length, -1, zebStsErrBadArgument),
      orElse(gap, -1, zebStsErrBadArgument), list.get(), orElse(l.most, 0, zebStsErrSize, Check::size), &count,
      scratch.get(), spec);
  require(status == (want.truncated ? zebStsWarnLinesTruncated : zebStsOk),
          l.what + ": status " + std::to_string(status));
  list.check(count, want.segments, l.what);
  require(l.src.intact() && scratch.intact() && specMemory.intact(), "wrote outside");
}
DRIVER("features", "zebiHoughProbLine_8u32f_C1R", houghSegments(c));

// ---- Peaks ----

template <class T>
void peaks(Choice& c, Function<int, int*> query,
           Function<const T*, int, ZebiSize, T, ZebiPoint*, int, int*, int, int, Zeb8u*> f) {
  const ZebiSize size = c.size();
  const Image<T> src = c.image<T>(size);
  const T threshold = c.oneIn(4) ? c.value<T>() : static_cast<T>(c.within(-1, 3));
  const int norm = c.coin() ? zebiNormInf : zebiNormL1, most = c.oneIn(4) ? c.within(1, 9) : 400;
  int bytes = 0, count = -1;
  query.ok(c, size.width, &bytes);
  const Scratch scratch = c.scratch(bytes);
  const List<ZebiPoint> list(most);
  const auto ask = [&](int width, int* told) { return query.bare(width, told); };
  const auto told = [](int64_t width) { return (width + 5) / 4 * 128 | 32; };
  atLeastRefused(leastRefused(c, ask, told), sizeof(T), [&](int wide) {
    f.refused(zebStsErrOverflow, src.pixels(), 4 * wide, ZebiSize{wide, 2}, threshold, list.get(), most, &count, norm,
              1, scratch.get());
  });
  const int widest = std::min(size.width, size.height) / 2;
  if (widest == 0) {  // no pixel of a single row or column is a pixel away from every edge
    f.refused(zebStsErrSize, src.pixels(), src.step(), size, threshold, list.get(), most, &count, norm, 1,
              scratch.get());
    return;
  }
  f.refused(zebStsErrSize, src.pixels(), src.step(), size, threshold, list.get(), most, &count, norm, widest + 1,
            scratch.get());
  const int border = c.within(1, widest);
  // More than half the height also where the width is spoiled.
  const int wrong = c.coin() ? 0 : size.height / 2 + 1;
  f.ok(c, src.pixels(), src.step(), size, threshold, list.get(), orElse(most, 0, zebStsErrSize), &count,
       orElse(norm, int(zebiNormL2), zebStsErrBadArgument), orElse(border, wrong, zebStsErrSize), scratch.get());
  list.check(count, ref::peaks(src.plane(), threshold, norm == zebiNormInf, border, static_cast<size_t>(most)),
             "norm " + std::to_string(norm) + ", " + src.describe());
  require(src.intact() && scratch.intact(), "wrote outside");
}
DRIVER("features", "zebiFindPeaks3x3_32f_C1R",
       peaks(c, FUNCTION(zebiFindPeaks3x3GetBufferSize_32f_C1R), FUNCTION(zebiFindPeaks3x3_32f_C1R)));
DRIVER("features", "zebiFindPeaks3x3_32s_C1R",
       peaks(c, FUNCTION(zebiFindPeaks3x3GetBufferSize_32s_C1R), FUNCTION(zebiFindPeaks3x3_32s_C1R)));

}  // namespace
