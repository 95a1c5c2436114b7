// Norms, mean and deviation, extremes: of images and of pairs, under masks and of channels.
#include "reference/statistics.h"

#include "function.h"
#include "support/memcheck.h"

namespace {

using namespace fuzz;
using ref::Norm;
using ref::Plane;

// What a function takes: two images or one, a mask, a channel of three.
struct Form {
  bool pair, masked, channel;
};

// Any content; now and then ordinary numbers with one infinity here and there, often at the start.
template <class T>
Image<T> picture(Choice& c, ZebiSize size, int channels) {
  if constexpr (std::is_floating_point_v<T>) {
    if (c.oneIn(4)) {
      Random random = c.random();
      const T infinity = c.coin() ? std::numeric_limits<T>::infinity() : -std::numeric_limits<T>::infinity();
      Plane<T> p(size.width, size.height, channels);
      for (T& v : p.data) v = random.within(0, 9) == 0 ? infinity : test::noiseValue<T>(random);
      for (size_t i = 0; i < static_cast<size_t>(channels) && random.within(0, 1); ++i) p.data[i] = infinity;
      if (random.within(0, 9) == 0) std::fill(p.data.begin(), p.data.end(), std::numeric_limits<T>::quiet_NaN());
      c.look(infinity);
      return Image<T>{p, c.layout<T>()};
    }
  }
  return c.image<T>(size, channels);
}

// The images of a case, and what the reference sees of them.
template <class T>
struct Scene {
  Form form;
  ZebiSize size;
  Image<T> a, own;
  bool twice;
  Image<Zeb8u> mask;
  int coi;
  Plane<T> planeA, planeB;
  Plane<Zeb8u> planeMask;

  Scene(Choice& c, Form f)
      : form(f),
        size(c.size()),
        a(picture<T>(c, size, f.channel ? 3 : 1)),
        own(c.image<T>(size, f.channel ? 3 : 1)),
        twice(c.oneIn(8)),
        mask(c.image<Zeb8u>(size)),
        coi(c.within(1, 3)),
        planeA(a.plane()),
        planeB(b().plane()),
        planeMask(mask.plane()) {}

  // Both images may be the same.
  const Image<T>& b() const { return twice ? a : own; }
  ref::Selected selected() const { return {form.masked ? &planeMask : nullptr, form.channel ? coi - 1 : 0}; }
  bool intact() const { return a.intact() && own.intact() && mask.intact(); }
};

template <bool wanted, class... V>
auto argumentsIf(V... values) {
  if constexpr (wanted) {
    return std::tuple(values...);
  } else {
    return std::tuple();
  }
}

template <bool pair, bool masked, bool channel, class T, class... A, class... Out>
ZebStatus call(Choice& c, const Function<A...>& f, const Scene<T>& s, Out... outputs) {
  const int wrongChannel = c.coin() ? c.within(4, INT32_MAX) : c.within(-INT32_MAX, 0);
  const auto arguments =
      std::tuple_cat(std::tuple(s.a.pixels(), s.a.step()), argumentsIf<pair>(s.b().pixels(), s.b().step()),
                     argumentsIf<masked>(s.mask.pixels(), stepOf(s.mask, s.size.width)), std::tuple(s.size),
                     argumentsIf<channel>(orElse(s.coi, wrongChannel, zebStsErrChannel)), std::tuple(outputs...));
  return std::apply([&](auto... v) { return f(c, v...); }, arguments);
}

// A place for a result, anywhere in guarded memory.
template <class V>
class Result {
 public:
  explicit Result(Choice& c) : memory_(c.scratch(sizeof(V))) {
    test::mayBeLookedAt(memory_.get(), sizeof(V));  // it may be left as it is
    memcpy(before_, memory_.get(), sizeof(V));
  }
  V* place() const { return reinterpret_cast<V*>(memory_.get()); }
  // The very bits; what is not a number has its bits stated.
  bool is(V want) const {
    if constexpr (std::is_floating_point_v<V>)
      if (std::isnan(want)) {
        const uint64_t stated = 0x7FF8000000000000;
        memcpy(&want, &stated, sizeof(V));
      }
    return memcmp(memory_.get(), &want, sizeof(V)) == 0 && memory_.intact();
  }
  bool isUntouched() const { return memcmp(memory_.get(), before_, sizeof(V)) == 0 && memory_.intact(); }
  V value() const {
    V v;
    memcpy(&v, memory_.get(), sizeof(V));
    return v;
  }

 private:
  Scratch memory_;
  Zeb8u before_[sizeof(V)];
};

enum class Family { norm, difference, relative };

template <class T, bool pair, bool masked, bool channel, class... A>
void norm(Choice& c, Function<A...> f, Family family, Norm kind) {
  const Scene<T> s(c, {pair, masked, channel});
  const Zeb64f want = family == Family::norm         ? ref::norm(kind, s.planeA, s.selected())
                      : family == Family::difference ? ref::normDiff(kind, s.planeA, s.planeB, s.selected())
                                                     : ref::normRel(kind, s.planeA, s.planeB, s.selected());
  const bool warns = family == Family::relative && ref::norm(kind, s.planeB, s.selected()) == 0;
  const Result<Zeb64f> result(c);
  const ZebStatus status = call<pair, masked, channel>(c, f, s, result.place());
  require(status == (warns ? zebStsWarnDivByZero : zebStsOk), f.name() + (" returned " + std::to_string(status)));
  require(result.is(want),
          f.name() + (": " + test::shown(result.value()) + ", not " + test::shown(want) + ", ") + s.a.describe());
  require(s.intact(), "an image was written");
}

// Outputs are optional: each may be left out.
template <class V>
void expectOptional(const char* name, const char* what, const Result<V>& result, bool asked, V want) {
  require(asked ? result.is(want) : result.isUntouched(), std::string(name) + ": " + what);
}

template <class T, bool masked, bool channel, class... A>
void mean(Choice& c, Function<A...> f) {
  const Scene<T> s(c, {false, masked, channel});
  const ref::MeanAndDeviation want = ref::meanAndDeviation(s.planeA, s.selected());
  const Result<Zeb64f> mean(c), deviation(c);
  const bool both = c.coin(), asksMean = both || c.coin(), asksDeviation = both || c.coin();
  const ZebStatus status = call<false, masked, channel>(c, f, s, keep(asksMean ? mean.place() : nullptr),
                                                        keep(asksDeviation ? deviation.place() : nullptr));
  require(status == zebStsOk, f.name() + (" returned " + std::to_string(status)));
  expectOptional(f.name(), "the mean", mean, asksMean, want.mean);
  expectOptional(f.name(), "the deviation", deviation, asksDeviation, want.deviation);
  require(s.intact(), "an image was written");
}

template <class T, bool masked, bool channel, class... A>
void extremes(Choice& c, Function<A...> f) {
  const Scene<T> s(c, {false, masked, channel});
  const ref::Extremes want = ref::extremes(s.planeA, s.selected());
  const Result<Zeb32f> smallest(c), largest(c);
  const Result<ZebiPoint> smallestAt(c), largestAt(c);
  const int asked = c.coin() ? 15 : c.within(0, 15);
  const auto place = [&](const auto& result, int bit) { return keep(asked & bit ? result.place() : nullptr); };
  const ZebStatus status = call<false, masked, channel>(c, f, s, place(smallest, 1), place(largest, 2),
                                                        place(smallestAt, 4), place(largestAt, 8));
  require(status == zebStsOk, f.name() + (" returned " + std::to_string(status)));
  expectOptional(f.name(), "the smallest value", smallest, asked & 1, want.smallest);
  expectOptional(f.name(), "the largest value", largest, asked & 2, want.largest);
  expectOptional(f.name(), "the place of the smallest value", smallestAt, asked & 4, want.smallestAt);
  expectOptional(f.name(), "the place of the largest value", largestAt, asked & 8, want.largestAt);
  require(s.intact(), "an image was written");
}

#define STATISTICS(function, ...) DRIVER("statistics", #function, __VA_ARGS__)
#define NORM_OF_TYPE(stem, token, T, pair, family, kind)                                                           \
  STATISTICS(stem##_##token##_C1R, norm<T, pair, false, false>(c, FUNCTION(stem##_##token##_C1R), family, kind));  \
  STATISTICS(stem##_##token##_C1MR, norm<T, pair, true, false>(c, FUNCTION(stem##_##token##_C1MR), family, kind)); \
  STATISTICS(stem##_##token##_C3CMR, norm<T, pair, true, true>(c, FUNCTION(stem##_##token##_C3CMR), family, kind))
#define NORM(stem, pair, family, kind)                 \
  NORM_OF_TYPE(stem, 8u, Zeb8u, pair, family, kind);   \
  NORM_OF_TYPE(stem, 16u, Zeb16u, pair, family, kind); \
  NORM_OF_TYPE(stem, 32f, Zeb32f, pair, family, kind)
#define NORMS(stem, pair, family)            \
  NORM(stem##_Inf, pair, family, Norm::inf); \
  NORM(stem##_L1, pair, family, Norm::l1);   \
  NORM(stem##_L2, pair, family, Norm::l2)

NORMS(zebiNorm, false, Family::norm);
NORMS(zebiNormDiff, true, Family::difference);
NORMS(zebiNormRel, true, Family::relative);

#define OF_TYPE(stem, token, T, driver)                                                          \
  STATISTICS(stem##_##token##_C1R, driver<T, false, false>(c, FUNCTION(stem##_##token##_C1R)));  \
  STATISTICS(stem##_##token##_C1MR, driver<T, true, false>(c, FUNCTION(stem##_##token##_C1MR))); \
  STATISTICS(stem##_##token##_C3CR, driver<T, false, true>(c, FUNCTION(stem##_##token##_C3CR))); \
  STATISTICS(stem##_##token##_C3CMR, driver<T, true, true>(c, FUNCTION(stem##_##token##_C3CMR)))
#define OF_ALL_TYPES(stem, driver)    \
  OF_TYPE(stem, 8u, Zeb8u, driver);   \
  OF_TYPE(stem, 8s, Zeb8s, driver);   \
  OF_TYPE(stem, 16u, Zeb16u, driver); \
  OF_TYPE(stem, 32f, Zeb32f, driver)

OF_ALL_TYPES(zebiMean_StdDev, mean);
OF_ALL_TYPES(zebiMinMaxIndx, extremes);

}  // namespace
