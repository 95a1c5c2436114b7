// Segmentation from markers, components, inpainting.
#include "reference/regions.h"
#include "reference/inpaint.h"
#include "segment/shapes.h"
#include "sizes.h"

namespace {

using namespace fuzz;
using ref::Plane;

ZebiNorm anyNorm(Choice& c) {
  return c.coin() ? zebiNormInf : zebiNormL1;
}
// What is no norm.
ZebiNorm otherNorm(Choice& c) {
  const ZebiNorm norms[] = {zebiNormL2, -1, 256};
  return c.oneOf(norms);
}

using Query = Function<ZebiSize, int*>;

// What a query may tell of a single column; most(width, height): of any size.
template <class Most>
auto ofColumn(Most most) {
  return [=](int64_t height) { return most(1, height); };
}

// Scratch of the reported size, which is at most what is promised.
template <class Most>
Scratch scratchOf(Choice& c, int bytes, ZebiSize size, Most most) {
  require(bytes <= most(size.width, size.height), "the query reports " + std::to_string(bytes) + " bytes");
  return c.scratch(bytes);
}
template <class Most>
Scratch scratchFor(Choice& c, const Query& query, ZebiSize size, Most most) {
  int bytes = 0;
  query.ok(c, size, &bytes);
  return scratchOf(c, bytes, size, most);
}

// Any content, a shape in two values, or a few levels, on which queues are long.
template <class T>
Plane<T> picture(Choice& c, ZebiSize size, int channels = 1) {
  const int kind = c.within(0, 2);
  if (kind == 0) return c.plane<T>(size.width, size.height, channels);
  Random random = c.random();
  Plane<T> p(size.width, size.height, channels);
  if (kind == 1) {
    for (T& v : p.data) v = static_cast<T>(random.within(0, 3));
    return p;
  }
  const Plane<int> shape = test::shaped(c.oneOf(test::allShapes), size.width, size.height, random);
  const T low = c.value<T>(), high = c.value<T>();
  for (size_t i = 0; i < p.data.size(); ++i) p.data[i] = shape.data[i / static_cast<size_t>(channels)] ? high : low;
  return p;
}

// ---- Segmentation ----

// Few markers, many, or anything; some of them the largest value.
template <class T>
Plane<T> markers(Choice& c, ZebiSize size) {
  if (c.oneIn(4)) return c.plane<T>(size.width, size.height);
  const int labels = c.within(1, 5), one = c.oneIn(3) ? 3 : c.within(4, 60);
  const bool barriers = c.coin();
  Random random = c.random();
  Plane<T> p(size.width, size.height);
  for (T& v : p.data) {
    if (random.within(1, one) == 1) v = static_cast<T>(random.within(1, labels));
    if (barriers && random.within(1, 5) == 1) v = std::numeric_limits<T>::max();
  }
  return p;
}

// Every pixel belongs to a label that reaches it at the least cost that any marker needs.
template <class T>
void requireLeastCost(const Plane<T>& src, const Plane<T>& before, const Plane<T>& after, ZebiNorm norm,
                      bool gradient) {
  const std::set<T> labels(after.data.begin(), after.data.end());
  if (labels.size() > 4 || src.data.size() > 300) return;  // a search for each label
  const auto cost = ref::minimax<T>(src, norm, gradient, [&](int x, int y) { return before.at(x, y) != 0; });
  for (const T label : labels) {
    if (label == 0) continue;
    const auto own = ref::minimax<T>(src, norm, gradient, [&](int x, int y) { return before.at(x, y) == label; });
    for (size_t i = 0; i < own.data.size(); ++i)
      require(after.data[i] != label || own.data[i] == cost.data[i], "a label reached at a higher cost than another");
  }
}

template <class T>
void segment(Choice& c, Function<const T*, int, T*, int, ZebiSize, ZebiNorm, int, Zeb8u*> f, const Query& query,
             int channels, bool gradient) {
  const ZebiSize size = c.size();
  const Image<T> src(picture<T>(c, size, channels), c.layout<T>());
  const Image<T> marker(markers<T>(c, size), c.layout<T>());
  const Plane<T> before = marker.plane();
  const ZebiNorm norm = anyNorm(c), bad = otherNorm(c);
  const int flag = c.coin() ? zebSegmentBoundary : 0;
  const auto most = [&](int64_t w, int64_t h) {
    const int64_t framed = (w + 2) * (h + 2);
    return gradient ? 10 * framed + 2112 : sizeof(T) == 1 ? 5 * framed + 2112 : 6 * framed + 532800;
  };
  const Scratch scratch = scratchFor(c, query, size, most);
  f.refused(zebStsErrOverflow, src.pixels(), src.step(), marker.pixels(), marker.step(),
            tooHigh(c, query, ofColumn(most)), norm, flag, scratch.get());
  f.ok(c, src.pixels(), src.step(), marker.pixels(), stepOf(marker, size.width), size, orElse(norm, bad, zebStsErrNorm),
       orElse(flag, 2, zebStsErrBadArgument, Check::state), scratch.get());
  const auto want = ref::segmented(src.plane(), before, norm, flag != 0, gradient);
  require(agree(f.name(), marker, want), src.describe());
  require(src.intact() && scratch.intact(), "wrote outside");
  if (flag == 0) requireLeastCost(src.plane(), before, marker.plane(), norm, gradient);
}

#define SEGMENT(function, form, channels, gradient) \
  DRIVER("regions", #function "_" #form,            \
         segment(c, FUNCTION(function##_##form), FUNCTION(function##GetBufferSize_##form), channels, gradient))
SEGMENT(zebiSegmentWatershed, 8u_C1IR, 1, false);
SEGMENT(zebiSegmentWatershed, 16u_C1IR, 1, false);
SEGMENT(zebiSegmentGradient, 8u_C1IR, 1, true);
SEGMENT(zebiSegmentGradient, 8u_C3IR, 3, true);

template <class T>
void bounds(Choice& c, Function<T*, int, ZebiSize, T, ZebiNorm> f) {
  const ZebiSize size = c.size();
  const Image<T> image(picture<T>(c, size), c.layout<T>());
  Plane<T> want = image.plane();
  const T val = c.coin() ? c.value<T>() : want.data[static_cast<size_t>(c.within(0, size.width * size.height - 1))];
  const ZebiNorm norm = anyNorm(c), bad = otherNorm(c);
  f.ok(c, image.pixels(), image.step(), size, val, orElse(norm, bad, zebStsErrNorm));
  ref::bounded(want, val, norm);
  require(agree(f.name(), image, want), "value " + std::to_string(val));
}
DRIVER("regions", "zebiBoundSegments_8u_C1IR", bounds(c, FUNCTION(zebiBoundSegments_8u_C1IR)));
DRIVER("regions", "zebiBoundSegments_16u_C1IR", bounds(c, FUNCTION(zebiBoundSegments_16u_C1IR)));

// ---- Components ----

template <class T>
void label(Choice& c, Function<T*, int, ZebiSize, int, int, ZebiNorm, int*, Zeb8u*> f, const Query& query) {
  const ZebiSize size = c.size();
  const Image<T> image(picture<T>(c, size), c.layout<T>());
  Plane<T> want = image.plane();
  constexpr int64_t most = std::min<int64_t>(std::numeric_limits<T>::max(), INT32_MAX);
  const int low = c.oneIn(3) ? 1 : c.within(1, static_cast<int>(most)), room = static_cast<int>(most) - low;
  const int high = low + (c.coin() ? std::min(room, c.within(0, 4)) : room);
  const ZebiNorm norm = anyNorm(c), bad = otherNorm(c);
  const auto bytes = [](int64_t w, int64_t h) { return (w + 1) / 2 * (4 * h + 24) + 64; };
  const Scratch scratch = scratchFor(c, query, size, bytes);
  int number = -1;
  f.refused(zebStsErrOverflow, image.pixels(), image.step(), tooHigh(c, query, ofColumn(bytes)), low, high, norm,
            &number, scratch.get());
  f.refused(zebStsErrRange, image.pixels(), image.step(), size, 5, 4, bad, &number, scratch.get());
  const bool limited = most < INT32_MAX;
  f.ok(c, image.pixels(), image.step(), size, orElse(low, 0, zebStsErrOutOfRange),
       orElse(high, limited ? static_cast<int>(most) + 1 : low - 1, limited ? zebStsErrOutOfRange : zebStsErrRange),
       orElse(norm, bad, zebStsErrNorm, Check::state), &number, scratch.get());
  const int wanted = ref::labelled(want, low, high, norm);
  require(number == wanted, std::to_string(number) + " components, not " + std::to_string(wanted));
  require(agree(f.name(), image, want), "labels from " + std::to_string(low) + " to " + std::to_string(high));
  require(scratch.intact(), "wrote outside");
}
#define LABEL(form)                            \
  DRIVER("regions", "zebiLabelMarkers_" #form, \
         label(c, FUNCTION(zebiLabelMarkers_##form), FUNCTION(zebiLabelMarkersGetBufferSize_##form)))
LABEL(8u_C1IR);
LABEL(16u_C1IR);
LABEL(32s_C1IR);

template <class T, class D>
void speckles(Choice& c, Function<T*, int, ZebiSize, T, int, D, ZebiNorm, Zeb8u*> f, ZebDataType type) {
  const ZebiSize size = c.size();
  const Image<T> image(picture<T>(c, size), c.layout<T>());
  Plane<T> want = image.plane();
  const T newVal = c.coin() ? c.value<T>() : want.data[static_cast<size_t>(c.within(0, size.width * size.height - 1))];
  const int most = c.oneIn(4) ? INT32_MAX : c.within(1, 40);
  D difference = c.oneIn(4) ? c.value<D>() : static_cast<D>(c.within(0, 300));
  if (difference < 0) difference = std::is_integral_v<D> ? -(difference + 1) : -difference;
  if (difference != difference) difference = 2;
  const D refused[] = {D(-1),
                       std::is_floating_point_v<D> ? static_cast<D>(std::nanf("")) : std::numeric_limits<D>::min()};
  const D badDifference = c.oneOf(refused);
  const ZebiNorm norm = anyNorm(c), bad = otherNorm(c);
  int bytes = 0;
  const auto query = FUNCTION(zebiMarkSpecklesGetBufferSize);
  query.ok(c, size, orElse(type, zeb8s, zebStsErrDataType), &bytes);
  const auto mostBytes = [](int64_t w, int64_t h) { return (4 * h + 16) * w + 64; };
  const Scratch scratch = scratchOf(c, bytes, size, mostBytes);
  f.refused(zebStsErrOverflow, image.pixels(), image.step(), tooHigh(c, query, ofColumn(mostBytes), type), newVal, most,
            difference, norm, scratch.get());
  f.ok(c, image.pixels(), image.step(), size, newVal, orElse(most, 0, zebStsErrSize),
       orElse(difference, badDifference, zebStsErrBadArgument, Check::state),
       orElse(norm, bad, zebStsErrNorm, Check::state), scratch.get());
  using Exact = std::conditional_t<std::is_floating_point_v<T>, Zeb32f, long long>;
  ref::speckled<T, Exact>(want, newVal, most, difference, norm);
  require(agree(f.name(), image, want), "difference " + std::to_string(difference) + ", " + image.describe());
  require(scratch.intact(), "wrote outside");
}
DRIVER("regions", "zebiMarkSpeckles_8u_C1IR", speckles(c, FUNCTION(zebiMarkSpeckles_8u_C1IR), zeb8u));
DRIVER("regions", "zebiMarkSpeckles_16u_C1IR", speckles(c, FUNCTION(zebiMarkSpeckles_16u_C1IR), zeb16u));
DRIVER("regions", "zebiMarkSpeckles_16s_C1IR", speckles(c, FUNCTION(zebiMarkSpeckles_16s_C1IR), zeb16s));
DRIVER("regions", "zebiMarkSpeckles_32f_C1IR", speckles(c, FUNCTION(zebiMarkSpeckles_32f_C1IR), zeb32f));

// ---- Inpainting ----

// Strokes and blots, shapes, or anything.
Plane<Zeb8u> damage(Choice& c, ZebiSize size) {
  const int kind = c.within(0, 4);
  if (kind == 0) return c.plane<Zeb8u>(size.width, size.height);
  Random random = c.random();
  Plane<Zeb8u> mask(size.width, size.height);
  if (kind == 1) {
    const Plane<int> shape = test::shaped(c.oneOf(test::allShapes), size.width, size.height, random);
    for (size_t i = 0; i < mask.data.size(); ++i) mask.data[i] = shape.data[i] ? 9 : 0;
    return mask;
  }
  for (int k = c.within(0, 4); k > 0; --k) {
    const int x0 = random.within(0, size.width - 1), y0 = random.within(0, size.height - 1);
    const int x1 = std::min(size.width, x0 + random.within(1, 12)),
              y1 = std::min(size.height, y0 + random.within(1, 12));
    for (int y = y0; y < y1; ++y)
      for (int x = x0; x < x1; ++x) mask.at(x, y) = 1;
  }
  return mask;
}

Plane<Zeb32f> distances(Choice& c, const Plane<Zeb8u>& mask, Zeb32f radius) {
  const ZebiSize size = {mask.width, mask.height};
  int bytes = 0;
  FUNCTION(zebiFastMarchingGetBufferSize_8u32f_C1R).ok(c, size, &bytes);
  std::vector<Zeb8u> buffer(static_cast<size_t>(bytes));
  Plane<Zeb32f> t(mask.width, mask.height);
  require(zebiFastMarching_8u32f_C1R(mask.data.data(), mask.width, t.data.data(), 4 * mask.width, size, radius,
                                     buffer.data()) == zebStsOk,
          "fast marching");
  return t;
}

using InpaintInit = Function<ZebiInpaintState**, const Zeb8u*, int, ZebiSize, Zeb32f, ZebiInpaintMethod>;
using Inpaint = Function<const Zeb8u*, int, Zeb8u*, int, ZebiSize, const ZebiInpaintState*>;

void inpaint(Choice& c, const InpaintInit& init, const Inpaint& f, const Inpaint& ofOthers,
             const Function<ZebiInpaintState*>& free, int channels) {
  const ZebiSize size = c.size(40, 20);
  const Plane<Zeb8u> holes = damage(c, size);
  const Image<Zeb8u> mask(holes, c.layout<Zeb8u>());
  const Image<Zeb8u> src(picture<Zeb8u>(c, size, channels), c.layout<Zeb8u>());
  // Roots of integers, which floats miss by little, lie just within or without the reach of an offset.
  const Zeb32f any = c.oneIn(12) ? c.real(1, 100) : c.real(1, 9);
  const Zeb32f radius = c.coin() ? any : static_cast<Zeb32f>(std::sqrt(c.within(1, 50)));
  const Zeb32f refused[] = {0.999f, 100.001f, std::nanf("")};
  const Zeb32f bad = c.oneOf(refused);
  const ZebiInpaintMethod method = c.coin() ? zebInpaintTelea : zebInpaintIsophote;
  ZebiInpaintState* state = nullptr;
  init.refused(zebStsErrOverflow, &state, mask.pixels(), mask.step(), ZebiSize{1, INT32_MAX}, radius, method);
  const int live = test::zebcore().liveBlocks;
  init.ok(c, &state, mask.pixels(), stepOf(mask, size.width), size, orElse(radius, bad, zebStsErrOutOfRange),
          orElse(method, 2, zebStsErrBadArgument, Check::state));
  require(test::zebcore().liveBlocks == live + 1, "more than the state stays allocated");
  const auto masked =
      static_cast<int>(std::count_if(holes.data.begin(), holes.data.end(), [](Zeb8u v) { return v != 0; }));
  const int side = 2 * static_cast<int>(radius) + 1;
  require(test::bytesOfBlock(state) <= 8 * size.width * size.height + 4 * masked + 8 * side * side + 512,
          "the state is too large");

  const bool inPlace = c.oneIn(3);
  const Image<Zeb8u> dst = inPlace ? Image<Zeb8u>(src.plane(), c.layout<Zeb8u>()) : c.empty<Zeb8u>(size, channels);
  const Image<Zeb8u>& from = inPlace ? dst : src;
  if (size.height > 1)
    f.refused(zebStsErrSize, from.pixels(), from.step(), dst.pixels(), dst.step(),
              ZebiSize{size.width, size.height - 1}, state);
  ofOthers.refused(zebStsErrContextMatch, from.pixels(), 3 * size.width, dst.pixels(), 3 * size.width,
                   ZebiSize{size.width, size.height + 1}, state);
  f.ok(c, from.pixels(), from.step(), dst.pixels(), dst.step(), size, state);
  free.ok(c, state);
  const auto want = ref::inpainted(src.plane(), holes, distances(c, holes, radius + 2), radius, method);
  require(agree(f.name(), dst, want),
          "radius " + std::to_string(radius) + ", method " + std::to_string(method) + ", " + src.describe());
  require(src.intact() && mask.intact(), "wrote outside");
}
DRIVER("regions", "zebiInpaint_8u_C1R",
       inpaint(c, FUNCTION(zebiInpaintInitAlloc_8u_C1R), FUNCTION(zebiInpaint_8u_C1R), FUNCTION(zebiInpaint_8u_C3R),
               FUNCTION(zebiInpaintFree_8u_C1R), 1));
DRIVER("regions", "zebiInpaint_8u_C3R",
       inpaint(c, FUNCTION(zebiInpaintInitAlloc_8u_C3R), FUNCTION(zebiInpaint_8u_C3R), FUNCTION(zebiInpaint_8u_C1R),
               FUNCTION(zebiInpaintFree_8u_C3R), 3));

}  // namespace
