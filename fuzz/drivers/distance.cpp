// Distance transforms: chamfer, exact, fast marching.
#include "reference/distance.h"
#include "segment/features.h"
#include "segment/marching.h"
#include "sizes.h"

namespace {

using namespace fuzz;
using ref::Plane;

// Pictures of objects and features as well as any bytes.
Image<Zeb8u> picture(Choice& c, ZebiSize size) {
  if (c.oneIn(3)) return c.image<Zeb8u>(size);
  Random random = c.random();
  auto plane = test::features(c.oneOf(test::allFeatures), size, random);
  if (c.oneIn(4))
    for (Zeb8u& v : plane.data) v = v ? 0 : 7;
  return Image<Zeb8u>(plane, c.layout<Zeb8u>());
}

// ---- Weights ----

constexpr int integerWeights[2][3][3] = {{{1, 1, -1}, {1, 2, -1}, {2, 3, -1}}, {{1, 1, 2}, {1, 2, 3}, {5, 7, 11}}};
constexpr Zeb32f realWeights[2][3][3] = {{{1, 1, -1}, {1, 2, -1}, {0.955f, 1.3693f, -1}},
                                         {{1, 1, 2}, {1, 2, 3}, {1, 1.4f, 2.1969f}}};

// make(kernel side, norm, metrics) asks for the weights.
template <class W, class Make>
void weights(Choice& c, const W (&table)[2][3][3], Make make) {
  const int side = c.coin() ? 3 : 5, norm = c.within(zebiNormInf, zebiNormL2);
  W metrics[3] = {-1, -1, -1};
  make(side, norm, metrics);
  const W* want = table[side == 5][norm];
  require(std::equal(metrics, metrics + 3, want), "weights " + std::to_string(side) + ", " + std::to_string(norm));
}

DRIVER("segmentation", "zebiGetDistanceTransformMask_32s",
       weights(c, integerWeights, [&](int side, int norm, Zeb32s* metrics) {
         FUNCTION(zebiGetDistanceTransformMask_32s)
             .ok(c, orElse(side, 4, zebStsErrSize), orElse(norm, 3, zebStsErrBadArgument), metrics);
       }));
DRIVER("segmentation", "zebiGetDistanceTransformMask_32f",
       weights(c, realWeights, [&](int side, int norm, Zeb32f* metrics) {
         FUNCTION(zebiGetDistanceTransformMask_32f)
             .ok(c, orElse(side, -3, zebStsErrSize), orElse(norm, -1, zebStsErrBadArgument), metrics);
       }));
DRIVER("segmentation", "zebiGetDistanceTransformMask",
       weights(c, realWeights, [&](int side, int norm, Zeb32f* metrics) {
         const int bad[] = {40, 10 * side + 3, -31};
         const int k = c.within(0, 2);
         FUNCTION(zebiGetDistanceTransformMask)
             .ok(c, orElse(10 * side + norm, bad[k], k ? zebStsErrBadArgument : zebStsErrSize), metrics);
       }));

// ---- Chamfer ----

template <class W>
struct Metrics {
  // A mask of 3 pixels has two weights, one of 5 has three.
  Metrics(Choice& c, int mask) {
    for (W& v : values) v = small(c);
    std::copy(values, values + 3, bad);
    if (mask == 3) values[2] = 0;
    const W refused[] = {W(0), W(-1), std::is_floating_point_v<W> ? static_cast<W>(std::nanf("")) : W(INT32_MIN)};
    const int k = c.within(0, mask / 2);
    bad[k] = c.oneOf(refused);
  }
  static W small(Choice& c) {
    if constexpr (std::is_integral_v<W>) {
      return c.oneIn(4) ? c.within(1, INT32_MAX) : c.within(1, 20);
    } else {
      if (!c.oneIn(4)) return c.real(0.1f, 3);
      const W any = c.value<W>();
      return any > 0 ? any : W(1);
    }
  }
  W values[3];
  W bad[3];
};

template <class T, class W>
Plane<T> wanted(const Plane<Zeb8u>& src, int mask, const W* metrics) {
  using Sum = std::conditional_t<std::is_integral_v<T>, long long, Zeb32f>;
  return ref::chamfer<T, Sum>(src, mask, metrics);
}

template <class T, class W>
void chamfer(Choice& c, Function<const Zeb8u*, int, T*, int, ZebiSize, const W*> f, int mask) {
  const ZebiSize size = c.size();
  const Image<Zeb8u> src = picture(c, size);
  const Image<T> dst = c.empty<T>(size);
  const Metrics<W> m(c, mask);
  f.ok(c, src.pixels(), src.step(), dst.pixels(), dst.step(), size, orElse(m.values, m.bad, zebStsErrMetric));
  require(agree(f.name(), dst, wanted<T>(src.plane(), mask, m.values)), src.describe());
  require(src.intact(), "wrote into the source");
}

void chamferInPlace(Choice& c, Function<Zeb8u*, int, ZebiSize, const Zeb32s*> f, int mask) {
  const ZebiSize size = c.size();
  const Image<Zeb8u> image = picture(c, size);
  const auto before = image.plane();
  const Metrics<Zeb32s> m(c, mask);
  f.ok(c, image.pixels(), image.step(), size, orElse(m.values, m.bad, zebStsErrMetric));
  require(agree(f.name(), image, wanted<Zeb8u>(before, mask, m.values)), image.describe());
}

#define CHAMFER(shape, form)                                                                                           \
  DRIVER("segmentation", "zebiDistanceTransform_3x3_" #form, shape(c, FUNCTION(zebiDistanceTransform_3x3_##form), 3)); \
  DRIVER("segmentation", "zebiDistanceTransform_5x5_" #form, shape(c, FUNCTION(zebiDistanceTransform_5x5_##form), 5))
CHAMFER(chamfer, 8u_C1R);
CHAMFER(chamfer, 8u16u_C1R);
CHAMFER(chamfer, 8u32f_C1R);
CHAMFER(chamferInPlace, 8u_C1IR);

// ---- Exact distances and marching, with scratch ----

using Query = Function<ZebiSize, int*>;

Scratch scratchFor(Choice& c, const Query& query, ZebiSize size) {
  int bytes = 0;
  query.ok(c, size, &bytes);
  return c.scratch(bytes);
}

void euclid(Choice& c) {
  const auto f = FUNCTION(zebiTrueDistanceTransform_8u32f_C1R);
  const auto query = FUNCTION(zebiTrueDistanceTransformGetBufferSize_8u32f_C1R);
  const ZebiSize size = c.size(150, 9);
  const Image<Zeb8u> src = picture(c, size);
  const Image<Zeb32f> dst = c.empty<Zeb32f>(size);
  const Scratch scratch = scratchFor(c, query, size);
  f.refused(zebStsErrOverflow, src.pixels(), src.step(), dst.pixels(), dst.step(), tooHigh(c, query, anyBytes),
            scratch.get());
  f.ok(c, src.pixels(), src.step(), dst.pixels(), dst.step(), size, scratch.get());
  require(agree(f.name(), dst, ref::euclid(src.plane())), src.describe());
  require(src.intact() && scratch.intact(), "wrote outside");
}
DRIVER("segmentation", "zebiTrueDistanceTransform_8u32f_C1R", euclid(c));

void marching(Choice& c) {
  const auto f = FUNCTION(zebiFastMarching_8u32f_C1R);
  const auto query = FUNCTION(zebiFastMarchingGetBufferSize_8u32f_C1R);
  const ZebiSize size = c.size();
  const Image<Zeb8u> src = picture(c, size);
  const Image<Zeb32f> dst = c.empty<Zeb32f>(size);
  const Scratch scratch = scratchFor(c, query, size);
  Zeb32f radius = c.oneIn(4) ? c.value<Zeb32f>() : c.oneIn(4) ? static_cast<Zeb32f>(c.within(0, 9)) : c.real(0, 20);
  if (radius < 0) radius = -radius;
  f.refused(zebStsErrOverflow, src.pixels(), src.step(), dst.pixels(), dst.step(), tooHigh(c, query, anyBytes), radius,
            scratch.get());
  f.ok(c, src.pixels(), src.step(), dst.pixels(), dst.step(), size, orElse(radius, -1e-40f, zebStsErrBadArgument),
       scratch.get());
  const Zeb32f counted = std::isnan(radius) ? 0 : radius;
  require(test::agreesWithMarching(dst.plane(), src.plane(), counted),
          "radius " + std::to_string(radius) + ", " + src.describe());
  require(src.intact() && dst.intact() && scratch.intact(), "wrote outside");
}
DRIVER("segmentation", "zebiFastMarching_8u32f_C1R", marching(c));

}  // namespace
