// Halving and doubling, pyramid records, layers of any rate.
#include <numeric>

#include "motion/layer_result.h"
#include "reference/gauss_pyramid.h"
#include "sizes.h"

namespace {

using namespace fuzz;
using ref::Plane;

// ---- Halving and doubling ----

template <class T>
void resize(Choice& c, Function<int, ZebDataType, int, int*> query,
            Function<const T*, int, T*, int, ZebiSize, Zeb8u*> f, int channels, bool down) {
  const ZebiSize size = c.size();
  const Image<T> src = c.image<T>(size, channels);
  const Image<T> dst = c.empty<T>(
      down ? ZebiSize{(size.width + 1) / 2, (size.height + 1) / 2} : ZebiSize{2 * size.width, 2 * size.height},
      channels);
  const ZebDataType type = sizeof(T) == 4 ? zeb32f : std::is_signed_v<T> ? zeb8s : zeb8u;
  int bytes = 0;
  query.ok(c, size.width, orElse(type, zeb16u, zebStsErrDataType), orElse(channels, 2, zebStsErrNumChannels), &bytes);
  const Scratch scratch = c.scratch(bytes);
  f.ok(c, src.pixels(), src.step(), dst.pixels(), dst.step(), size, scratch.get());
  const auto ask = [&](int width, int* told) { return query.bare(width, type, channels, told); };
  const int pixel = channels * static_cast<int>(sizeof(T));
  const auto told = [&](int64_t width) {
    return down ? (width * 4 * channels + 15) / 16 * 96 + 64 : (width * 8 * channels + 15) / 16 * 48 + 64;
  };
  atLeastRefused(leastRefused(c, ask, told), 2 * pixel, [&](int wide) {
    f.refused(zebStsErrOverflow, src.pixels(), wide * pixel, dst.pixels(), 2 * wide * pixel,
              ZebiSize{wide, size.height}, scratch.get());
  });
  require(agree(f.name(), dst, down ? ref::halved(src.plane()) : ref::doubled(src.plane())), src.describe());
  require(src.intact() && scratch.intact(), "wrote outside");
}

#define RESIZE(form, channels)                                                                                        \
  DRIVER("motion", "zebiPyrDown_Gauss5x5_" #form,                                                                     \
         resize(c, FUNCTION(zebiPyrDownGetBufSize_Gauss5x5), FUNCTION(zebiPyrDown_Gauss5x5_##form), channels, true)); \
  DRIVER("motion", "zebiPyrUp_Gauss5x5_" #form,                                                                       \
         resize(c, FUNCTION(zebiPyrUpGetBufSize_Gauss5x5), FUNCTION(zebiPyrUp_Gauss5x5_##form), channels, false))
RESIZE(8u_C1R, 1);
RESIZE(8u_C3R, 3);
RESIZE(8s_C1R, 1);
RESIZE(8s_C3R, 3);
RESIZE(32f_C1R, 1);
RESIZE(32f_C3R, 3);

// ---- Sizes and records ----

Zeb32f anyRate(Choice& c) {
  const Zeb32f usual[] = {1.0000001f, 1.01f, 1.5f, 1.99999f, 2, 2.7f, 10};
  return c.coin() ? c.oneOf(usual) : c.real(1.001f, 10);
}
Zeb32f badRate(Choice& c) {
  const Zeb32f bad[] = {1, 10.01f, -2, NAN};
  return c.oneOf(bad);
}

struct Range {
  int low, high;
};
Range sourcesOf(int n, Zeb32f rate) {
  return {n == 1 ? 1 : std::max(n + 1, static_cast<int>(static_cast<Zeb32f>(n - 1) * rate) + 1),
          std::max(n + 1, static_cast<int>(static_cast<Zeb32f>(n) * rate))};
}

void sizes(Choice& c) {
  const ZebiSize size = c.size(2000, 2000);
  const Zeb32f rate = anyRate(c), bad = badRate(c);
  ZebiSize down = {-1, -1}, low = {-1, -1}, high = {-1, -1};
  FUNCTION(zebiGetPyramidDownROI).ok(c, size, &down, orElse(rate, bad));
  FUNCTION(zebiGetPyramidUpROI).ok(c, size, &low, &high, orElse(rate, bad));
  const Range width = sourcesOf(size.width, rate), height = sourcesOf(size.height, rate);
  const std::string what =
      "rate " + test::shown(rate) + " of " + std::to_string(size.width) + " x " + std::to_string(size.height);
  require(low.width == width.low && high.width == width.high && low.height == height.low && high.height == height.high,
          "upwards, " + what);
  const auto contains = [&](int n, int source) {
    const Range r = sourcesOf(n, rate);
    return n >= 1 && r.low <= source && source <= r.high;
  };
  require(contains(down.width, size.width) && contains(down.height, size.height), "downwards, " + what);
}
DRIVER("motion", "zebiGetPyramidDownROI", sizes(c));

void record(Choice& c) {
  const ZebiSize size = c.size(300, 300);
  const Zeb32f rate = anyRate(c);
  const int level = c.oneIn(4) ? c.within(1, 2000) : c.within(1, 5);
  ZebiPyramid* pyramid = nullptr;
  FUNCTION(zebiPyramidInitAlloc)
      .ok(c, &pyramid, orElse(level, 0, zebStsErrBadArgument), size, orElse(rate, badRate(c)));
  bool good = pyramid->level <= level && pyramid->pState == nullptr;
  double scale = 1;
  ZebiSize expected = size;
  for (int i = 0; i <= pyramid->level; ++i, scale *= 1.0 / static_cast<double>(rate)) {
    const ZebiSize roi = pyramid->pRoi[i];
    good = good && pyramid->pRate[i] == scale && !pyramid->pImage[i] && pyramid->pStep[i] == 0 &&
           roi.width == expected.width && roi.height == expected.height;
    require(zebiGetPyramidDownROI(roi, &expected, rate) == zebStsOk, "the next size");
  }
  const ZebiSize last = pyramid->pRoi[pyramid->level];
  good = good && (pyramid->level == level || (last.width == 1 && last.height == 1));
  FUNCTION(zebiPyramidFree).ok(c, pyramid);
  require(good, "a pyramid of rate " + test::shown(rate));
}
DRIVER("motion", "zebiPyramidInitAlloc", record(c));

// ---- Layers of any rate ----

// The size that follows a source's on the way down under a state for sources up to `served`.
ZebiSize nextLevel(ZebiSize source, ZebiSize served, Zeb32f rate, int taps) {
  const auto below = [=](ZebiSize size) {
    ZebiSize next = {};
    require(zebiGetPyramidDownROI(size, &next, rate) == zebStsOk, "the next size");
    return next;
  };
  std::vector<ZebiSize> chain;
  if (served.width > taps && served.height > taps)
    for (ZebiSize size = served; chain.empty() || size.width > 1 || size.height > 1; size = below(size))
      chain.push_back(size);
  for (const bool equal : {true, false})
    for (const ZebiSize& size : chain)
      if (size.height == source.height && (!equal || size.width == source.width)) return below(size);
  return below(source);
}

template <class T, class K, class State>
void layer(Choice& c, Function<State**, ZebiSize, Zeb32f, const K*, int, int> make,
           Function<const T*, int, ZebiSize, T*, int, ZebiSize, State*> f, Function<State*> release, int channels,
           bool down) {
  const ZebiSize size = c.size(60, 16);
  const Zeb32f rate = anyRate(c);
  std::vector<K> kernel(static_cast<size_t>(2 * c.within(1, 5) + 1));
  const bool mixed = c.oneIn(4);  // negative weights among them
  for (size_t i = 0; i <= kernel.size() / 2; ++i)
    kernel[i] = kernel[kernel.size() - 1 - i] = static_cast<K>(c.within(mixed ? -2 : 0, 9));
  K& middle = kernel[kernel.size() / 2];
  if (sizeof(T) == 1 && mixed && c.coin())  // weights that leave their 16 bits: the sum is small
    middle = static_cast<K>(c.within(-2, 2) - std::accumulate(kernel.begin(), kernel.end(), K(0)) + middle);
  else
    middle = static_cast<K>(c.within(mixed ? 60 : 1, 90));
  const bool symmetric = !c.oneIn(8);
  if (!symmetric) kernel.back() = static_cast<K>(kernel.back() + K(1));
  ZebiSize out = {}, largest = {};
  FUNCTION(zebiGetPyramidUpROI).ok(c, size, &out, &largest, rate);
  const ZebiSize least = out;
  // The largest source that the state serves: this one, one that is as high, or one whose next level is as high.
  ZebiSize served = size;
  if (const int kind = c.slack(5); kind == 1 || kind == 2) {
    served.width = c.within(size.width, std::max(largest.width, size.width + 20));
    if (kind == 2 && out.height >= size.height) served.height = c.within(out.height, largest.height);
  }
  if (down)
    out = nextLevel(size, served, rate, static_cast<int>(kernel.size()));
  else
    out = {c.within(out.width, largest.width), c.within(out.height, largest.height)};
  Plane<T> content = c.plane<T>(size.width, size.height, channels);
  if constexpr (std::is_floating_point_v<T>)
    for (T& v : content.data)
      if (!(std::fabs(v) < 1000)) v = T(1);
  const Image<T> src(content, c.layout<T>()), dst = c.empty<T>(out, channels);
  State* state = nullptr;
  const ZebStatus made = make(c, &state, served, orElse(rate, badRate(c)), kernel.data(),
                              orElse(static_cast<int>(kernel.size()), c.coin() ? 4 : 1, zebStsErrBadArgument),
                              orElse(zebInterLinear, 1, zebStsErrBadArgument));
  require(made == (symmetric ? zebStsOk : zebStsWarnKernelNotSymmetric), "status of the state");
  const ZebiSize wrong = {down ? out.width + 1 : largest.width + 1, out.height};
  f.ok(c, src.pixels(), src.step(), size, dst.pixels(), dst.step(), orElse(out, wrong), state);
  for (const ZebiSize beyond : {ZebiSize{served.width + 1, 1}, ZebiSize{1, served.height + 1}}) {
    ZebiSize next = nextLevel(beyond, served, rate, static_cast<int>(kernel.size())), highest = {};
    if (!down) require(zebiGetPyramidUpROI(beyond, &next, &highest, rate) == zebStsOk, "the size above");
    f.refused(zebStsErrSize, src.pixels(), INT32_MAX, beyond, dst.pixels(), INT32_MAX, next, state);
  }
  const ZebiSize tooSmall = {out.width, (down ? out.height : least.height) - 1};
  f.refused(zebStsErrSize, src.pixels(), src.step(), size, dst.pixels(), INT32_MAX, tooSmall, state);
  release.ok(c, state);
  require(test::agreesWithLayer(dst.plane(), content, kernel, rate, down),
          "rate " + test::shown(rate) + ", " + std::to_string(kernel.size()) + " taps, for " +
              std::to_string(served.width) + " x " + std::to_string(served.height) + ", " + src.describe());
  require(src.intact() && dst.intact(), "wrote outside");
}

#define LAYER(direction, form, channels, down)                                                                     \
  DRIVER("motion", "zebiPyramidLayer" #direction "_" #form,                                                        \
         layer(c, FUNCTION(zebiPyramidLayer##direction##InitAlloc_##form),                                         \
               FUNCTION(zebiPyramidLayer##direction##_##form), FUNCTION(zebiPyramidLayer##direction##Free_##form), \
               channels, down))
#define LAYERS(type)                \
  LAYER(Down, type##_C1R, 1, true); \
  LAYER(Down, type##_C3R, 3, true); \
  LAYER(Up, type##_C1R, 1, false);  \
  LAYER(Up, type##_C3R, 3, false)
LAYERS(8u);
LAYERS(16u);
LAYERS(32f);

}  // namespace
