// Integral images, deviations of windows, stages of Haar cascades.
#include "feature/stages.h"
#include "function.h"
#include "reference/integral.h"

namespace {

using namespace fuzz;
using ref::Plane;

// ---- Integral images ----

struct Tilt {
  bool tilted;
  bool addToColumn;
};
constexpr Tilt upright = {false, false}, tilted = {true, false}, addingTilted = {true, true};

template <class T>
struct Table {
  Table(Choice& c, ZebiSize size, Tilt tilt)
      : image(c.image<T>(size.width + 1 + tilt.tilted, size.height + 1 + tilt.tilted)),
        start(c.coin() ? static_cast<T>(c.within(-9, 9)) : c.value<T>()) {}

  void check(const char* name, const Plane<Zeb8u>& src, bool squared, Tilt tilt, const Plane<T>& before) const {
    require(agree(name, image,
                  tilt.tilted ? ref::tiltedIntegral<T>(src, start, squared, before, tilt.addToColumn)
                              : ref::integral<T>(src, start, squared)),
            squared ? "squares" : "sums");
  }

  Image<T> image;
  T start;
};

template <class S>
void sums(Choice& c, Function<const Zeb8u*, int, S*, int, ZebiSize, S> f, Tilt tilt) {
  const ZebiSize size = c.size();
  const Image<Zeb8u> src = c.image<Zeb8u>(size);
  const Table<S> table(c, size, tilt);
  const Plane<S> before = table.image.plane();
  f.ok(c, src.pixels(), src.step(), table.image.pixels(), table.image.step(), size, table.start);
  table.check(f.name(), src.plane(), false, tilt, before);
}

template <class S, class Q>
void sumsAndSquares(Choice& c, Function<const Zeb8u*, int, S*, int, Q*, int, ZebiSize, S, Q> f, Tilt tilt) {
  const ZebiSize size = c.size();
  const Image<Zeb8u> src = c.image<Zeb8u>(size);
  const Table<S> table(c, size, tilt);
  const Table<Q> squares(c, size, tilt);
  const Plane<S> before = table.image.plane();
  const Plane<Q> beforeSquares = squares.image.plane();
  f.ok(c, src.pixels(), src.step(), table.image.pixels(), table.image.step(), squares.image.pixels(),
       squares.image.step(), size, table.start, squares.start);
  table.check(f.name(), src.plane(), false, tilt, before);
  squares.check(f.name(), src.plane(), true, tilt, beforeSquares);
}

#define TABLES(function, shape, ...) DRIVER("tables", #function, shape(c, FUNCTION(function), __VA_ARGS__))
TABLES(zebiIntegral_8u32s_C1R, sums, upright);
TABLES(zebiIntegral_8u32f_C1R, sums, upright);
TABLES(zebiTiltedIntegral_8u32s_C1R, sums, tilted);
TABLES(zebiTiltedIntegral_8u32f_C1R, sums, addingTilted);
TABLES(zebiSqrIntegral_8u32s_C1R, sumsAndSquares, upright);
TABLES(zebiSqrIntegral_8u32s64f_C1R, sumsAndSquares, upright);
TABLES(zebiSqrIntegral_8u32f64f_C1R, sumsAndSquares, upright);
TABLES(zebiTiltedSqrIntegral_8u32s_C1R, sumsAndSquares, tilted);
TABLES(zebiTiltedSqrIntegral_8u32s64f_C1R, sumsAndSquares, tilted);
TABLES(zebiTiltedSqrIntegral_8u32f64f_C1R, sumsAndSquares, tilted);

// ---- Deviations of windows, over tables of exactly the rows and columns that they need ----

// The table of a picture, so that most windows have a variance; or any numbers.
template <class T>
Plane<T> tableOf(Choice& c, const Plane<Zeb8u>& picture, bool squared, Tilt tilt) {
  const int columns = picture.width + 1 + tilt.tilted, rows = picture.height + 1 + tilt.tilted;
  if (c.oneIn(4)) return c.plane<T>(columns, rows);
  return tilt.tilted ? ref::tiltedIntegral<T>(picture, T(0), squared, Plane<T>(columns, rows), tilt.addToColumn)
                     : ref::integral<T>(picture, T(0), squared);
}

template <class S, class Q, class D, class... Scale>
void deviation(Choice& c, Function<const S*, int, const Q*, int, D*, int, ZebiSize, ZebiRect, Scale...> f, Tilt tilt) {
  const ZebiSize size = c.size();
  ZebiRect r = {c.within(0, 3), c.within(0, 3), c.within(1, 9), c.within(1, 9)};
  if (tilt.tilted) r.x = r.y + r.height + c.within(0, 2);
  const int columns = size.width + (tilt.tilted ? r.x + r.y + r.width + r.height - 1 : r.x + r.width);
  const int rows = size.height + (tilt.tilted ? r.x + r.y + r.width + r.height : r.y + r.height);
  const auto picture = c.plane<Zeb8u>(columns - 1 - tilt.tilted, rows - 1 - tilt.tilted);
  const Image<S> sums{tableOf<S>(c, picture, false, tilt), c.layout<S>()};
  const Image<Q> squares{tableOf<Q>(c, picture, true, tilt), c.layout<Q>()};
  const Image<D> dst = c.empty<D>(size);
  const int scale = c.oneIn(16) ? INT32_MAX : c.within(-40, 40);
  const Plane<S> s = sums.plane();
  const Plane<Q> q = squares.plane();
  Plane<D> want(size.width, size.height);
  for (int j = 0; j < size.height; ++j)
    for (int i = 0; i < size.width; ++i) {
      const double v = ref::variance(tilt.tilted, s, q, i, j, r);
      if constexpr (sizeof...(Scale) > 0) {
        want.at(i, j) = ref::scaledDeviation(v, scale);
      } else {
        want.at(i, j) = ref::deviation(v);
      }
    }
  // Most ask for as many elements of a row as the valid one.
  const int across = r.x + r.width, all = across + r.y + r.height;
  const ZebiRect upright[] = {{-1, r.y, across + 1, 1}, {r.x, -1, r.width, 3}, {across, 1, 0, 3}, {r.x, 1, r.width, 0}};
  const ZebiRect diagonal[] = {{-1, 1, all - 1, 1}, {1, -1, all - 1, 1}, {1, 1, 0, all - 2}, {1, 1, all - 2, 0}};
  const bool wide = c.oneIn(5);
  const ZebiRect bad = wide ? ZebiRect{INT32_MAX, 0, INT32_MAX, 1} : c.oneOf(tilt.tilted ? diagonal : upright);
  f.ok(c, sums.pixels(), sums.step(), squares.pixels(), squares.step(), dst.pixels(), dst.step(), size,
       wide ? orElse(r, bad, zebStsErrStep, Check::step) : orElse(r, bad, zebStsErrSize), Scale(scale)...);
  require(agree(f.name(), dst, want), "rectangle " + std::to_string(r.x) + " " + std::to_string(r.y) + " " +
                                          std::to_string(r.width) + " " + std::to_string(r.height));
}

TABLES(zebiRectStdDev_32f_C1R, deviation, upright);
TABLES(zebiRectStdDev_32s32f_C1R, deviation, upright);
TABLES(zebiRectStdDev_32s_C1RSfs, deviation, upright);
TABLES(zebiTiltedRectStdDev_32f_C1R, deviation, tilted);
TABLES(zebiTiltedRectStdDev_32s32f_C1R, deviation, tilted);
TABLES(zebiTiltedRectStdDev_32s_C1RSfs, deviation, tilted);

// ---- Haar stages ----

template <class T>
using Build = Function<ZebiHaarClassifier**, const ZebiRect*, const T*, const T*, const T*, const T*, const int*, int>;

// The functions around a stage, for the type of its numbers.
template <class T>
struct Around;
template <>
struct Around<Zeb32f> {
  Build<Zeb32f> build = FUNCTION(zebiHaarClassifierInitAlloc_32f);
  Build<Zeb32f> buildTilted = FUNCTION(zebiTiltedHaarClassifierInitAlloc_32f);
  Function<ZebiHaarClassifier*> release = FUNCTION(zebiHaarClassifierFree_32f);
  Function<const ZebiHaarClassifier*, ZebiSize*> window = FUNCTION(zebiGetHaarClassifierSize_32f);
  Function<const Zeb8u*, int, ZebiHaarClassifier*> tilt = FUNCTION(zebiTiltHaarFeatures_32f);
};
template <>
struct Around<Zeb32s> {
  Build<Zeb32s> build = FUNCTION(zebiHaarClassifierInitAlloc_32s);
  Build<Zeb32s> buildTilted = FUNCTION(zebiTiltedHaarClassifierInitAlloc_32s);
  Function<ZebiHaarClassifier*> release = FUNCTION(zebiHaarClassifierFree_32s);
  Function<const ZebiHaarClassifier*, ZebiSize*> window = FUNCTION(zebiGetHaarClassifierSize_32s);
  Function<const Zeb8u*, int, ZebiHaarClassifier*> tilt = FUNCTION(zebiTiltHaarFeatures_32s);
};

enum class Kind { allUpright, allTilted, mixed };

// call(sums, tilted sums, norm, mask, positive, threshold, state, scale factor) evaluates the stage.
template <class S, class N, class Call>
void stage(Choice& c, const char* name, Kind kind, Call call) {
  constexpr bool scaled = std::is_integral_v<N>;
  const Around<N> around;
  const ZebiSize size = c.size(90, 4);
  Random random = c.random();
  const int length = c.within(kind == Kind::mixed, 6);
  ref::HaarStage<N> s = test::randomStage<N>(random, length, kind != Kind::allUpright);
  if (kind == Kind::allTilted) {
    s.tilted.assign(s.tilted.size(), true);
    for (ZebiRect& r : s.features) r.x = std::max(r.x, r.height);
  }
  ZebiHaarClassifier* state = nullptr;
  const auto& build = kind == Kind::allTilted ? around.buildTilted : around.build;
  auto features = s.features;
  auto counts = s.counts;
  const auto create = [&](auto rectangles, auto numbers) {
    build.ok(c, &state, rectangles, s.weights.data(), s.thresholds.data(), s.values1.data(), s.values2.data(), numbers,
             orElse(length, -1, zebStsErrSize));
  };
  if (length > 0) {
    ZebiRect& r = features[static_cast<size_t>(c.within(0, static_cast<int>(features.size()) - 1))];
    const ZebiRect bad[] = {{-1, r.y, 1, 1}, {r.x, -1, 1, 1}, {r.x, r.y, 0, 1}, {r.x, r.y, 1, 0}};
    r = c.oneOf(bad);
    counts[static_cast<size_t>(c.within(0, length - 1))] = 0;
    create(orElse(s.features.data(), features.data(), zebStsErrBadArgument),
           orElse(s.counts.data(), counts.data(), zebStsErrSize));
  } else {
    create(s.features.data(), s.counts.data());
  }
  if (kind == Kind::mixed) {
    const bool inverted = c.coin();
    const Image<Zeb8u> marks(test::tiltMask(s.tilted, inverted), c.layout<Zeb8u>());
    around.tilt.ok(c, marks.pixels(), keep(inverted ? 0 : c.within(1, 9)), state);
  }
  int right = 0, bottom = 0, lowest = 0;  // lowest: as given, which is less than a tilted rectangle reaches
  for (size_t i = 0, k = 0; i < s.counts.size(); ++i)
    for (int n = s.counts[i]; n > 0; --n, ++k) {
      const ZebiRect& r = s.features[k];
      right = std::max(right, r.x + r.width);
      lowest = std::max(lowest, r.y + r.height);
      bottom = std::max(bottom, r.y + r.height + (s.tilted[i] ? r.width : 0));
    }
  ZebiSize window = {-1, -1};
  around.window.ok(c, state, &window);
  require(window.width == right && window.height == lowest, "the size of the window");

  const Image<S> sums = c.image<S>(size.width + right, size.height + bottom),
                 tiltedSums = c.image<S>(size.width + right, size.height + bottom);
  const Image<N> norm = c.image<N>(size);
  const Image<Zeb8u> mask = c.image<Zeb8u>(size);
  const N threshold = test::number<N>(random, -6, 6);
  const int scale = c.oneIn(4) ? c.within(-70, 70) : c.within(-2, 40);
  // A stage that was built tilted reads its one table through the plain call.
  const Plane<S> u = sums.plane(), t = kind == Kind::allTilted ? u : tiltedSums.plane();
  const Plane<N> n = norm.plane();
  Plane<Zeb8u> want = mask.plane();
  int expected = 0;
  for (int y = 0; y < size.height; ++y)
    for (int x = 0; x < size.width; ++x) {
      if (!want.at(x, y)) continue;
      bool good;
      if constexpr (scaled) {
        good = ref::passesScaled(s, u, t, x, y, n.at(x, y), threshold, scale);
      } else {
        good = ref::passes(s, u, t, x, y, n.at(x, y), threshold);
      }
      if (good) {
        ++expected;
      } else {
        want.at(x, y) = 0;
      }
    }
  int positive = -1;
  call(sums, tiltedSums, norm, mask, &positive, threshold, state, scale);
  around.release.ok(c, state);
  require(agree(name, mask, want), sums.describe());
  require(positive == expected, "the count of positive pixels");
}

template <class S, class N, class... Scale>
void plainStage(
    Choice& c,
    Function<const S*, int, const N*, int, Zeb8u*, int, ZebiSize, int*, N, const ZebiHaarClassifier*, Scale...> f,
    Kind kind) {
  stage<S, N>(c, f.name(), kind,
              [&](const auto& u, const auto&, const auto& norm, const auto& mask, int* positive, N threshold,
                  const ZebiHaarClassifier* state, [[maybe_unused]] int scale) {
                f.ok(c, u.pixels(), u.step(), norm.pixels(), norm.step(), mask.pixels(), mask.step(), mask.size(),
                     positive, keep(threshold), state, Scale(scale)...);
              });
}

template <class S, class N, class... Scale>
void mixedStage(Choice& c,
                Function<const S*, int, const S*, int, const N*, int, Zeb8u*, int, ZebiSize, int*, N,
                         const ZebiHaarClassifier*, Scale...>
                    f,
                Kind kind) {
  stage<S, N>(c, f.name(), kind,
              [&](const auto& u, const auto& t, const auto& norm, const auto& mask, int* positive, N threshold,
                  const ZebiHaarClassifier* state, [[maybe_unused]] int scale) {
                f.ok(c, u.pixels(), u.step(), t.pixels(), t.step(), norm.pixels(), norm.step(), mask.pixels(),
                     mask.step(), mask.size(), positive, keep(threshold), state, Scale(scale)...);
              });
}

TABLES(zebiApplyHaarClassifier_32f_C1R, plainStage, Kind::allUpright);
TABLES(zebiApplyHaarClassifier_32s32f_C1R, plainStage, Kind::allUpright);
TABLES(zebiApplyHaarClassifier_32s_C1RSfs, plainStage, Kind::allUpright);
DRIVER("tables", "zebiTiltedHaarClassifierInitAlloc_32f",
       plainStage(c, FUNCTION(zebiApplyHaarClassifier_32s32f_C1R), Kind::allTilted));
DRIVER("tables", "zebiTiltedHaarClassifierInitAlloc_32s",
       plainStage(c, FUNCTION(zebiApplyHaarClassifier_32s_C1RSfs), Kind::allTilted));
TABLES(zebiApplyMixedHaarClassifier_32f_C1R, mixedStage, Kind::mixed);
TABLES(zebiApplyMixedHaarClassifier_32s32f_C1R, mixedStage, Kind::mixed);
TABLES(zebiApplyMixedHaarClassifier_32s_C1RSfs, mixedStage, Kind::mixed);

}  // namespace
