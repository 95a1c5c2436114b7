// Accumulation, differences, arctangent, motion history: pixel by pixel.
#include "function.h"
#include "reference/accumulate.h"
#include "reference/history.h"

namespace {

using namespace fuzz;
using ref::Plane;

// Some images of a call may be one and the same.
template <class T, class D>
const Image<T>& oneOrOther(Choice& c, const Image<T>& own, const Image<D>& destination) {
  if constexpr (std::is_same_v<T, D>)
    if (c.oneIn(4)) return destination;
  return own;
}

using Formula = Zeb32f (*)(Zeb32f acc, Zeb32f a, Zeb32f b, Zeb32f alpha);

template <class T>
struct Sources {
  const Image<T>&a, &b;
  const Image<Zeb8u>& mask;
};

template <class T, class Call>
void accumulate(Choice& c, const char* name, bool masked, Formula formula, Call call) {
  const ZebiSize size = c.size();
  const Image<T> ownA = c.image<T>(size), ownB = c.image<T>(size);
  const Image<Zeb8u> mask = c.image<Zeb8u>(size);
  const Image<Zeb32f> acc = c.image<Zeb32f>(size);
  const Sources<T> s = {oneOrOther(c, ownA, acc), oneOrOther(c, ownB, acc), mask};
  const Zeb32f alpha = c.coin() ? c.value<Zeb32f>() : c.real(-0.5f, 1.5f);
  Plane<Zeb32f> want = acc.plane();
  const Plane<T> a = s.a.plane(), b = s.b.plane();
  const Plane<Zeb8u> m = mask.plane();
  for (size_t i = 0; i < want.data.size(); ++i)
    if (!masked || m.data[i])
      want.data[i] = formula(want.data[i], static_cast<Zeb32f>(a.data[i]), static_cast<Zeb32f>(b.data[i]), alpha);
  call(s, acc, alpha);
  require(agree(name, acc, want), s.a.describe());
  require(ownA.intact() && ownB.intact() && mask.intact(), "a source was written");
}

template <class T, class... Alpha>
void oneSource(Choice& c, Function<const T*, int, Zeb32f*, int, ZebiSize, Alpha...> f, Formula formula) {
  accumulate<T>(c, f.name(), false, formula, [&](const auto& s, const auto& acc, [[maybe_unused]] Zeb32f alpha) {
    f.ok(c, s.a.pixels(), s.a.step(), acc.pixels(), acc.step(), acc.size(), Alpha(alpha)...);
  });
}

template <class T, class... Alpha>
void underMask(Choice& c, Function<const T*, int, const Zeb8u*, int, Zeb32f*, int, ZebiSize, Alpha...> f,
               Formula formula) {
  accumulate<T>(c, f.name(), true, formula, [&](const auto& s, const auto& acc, [[maybe_unused]] Zeb32f alpha) {
    f.ok(c, s.a.pixels(), s.a.step(), s.mask.pixels(), s.mask.step(), acc.pixels(), acc.step(), acc.size(),
         Alpha(alpha)...);
  });
}

template <class T, class... Alpha>
void twoSources(Choice& c, Function<const T*, int, const T*, int, Zeb32f*, int, ZebiSize, Alpha...> f,
                Formula formula) {
  accumulate<T>(c, f.name(), false, formula, [&](const auto& s, const auto& acc, [[maybe_unused]] Zeb32f alpha) {
    f.ok(c, s.a.pixels(), s.a.step(), s.b.pixels(), s.b.step(), acc.pixels(), acc.step(), acc.size(), Alpha(alpha)...);
  });
}

template <class T>
void twoUnderMask(Choice& c, Function<const T*, int, const T*, int, const Zeb8u*, int, Zeb32f*, int, ZebiSize> f,
                  Formula formula) {
  accumulate<T>(c, f.name(), true, formula, [&](const auto& s, const auto& acc, Zeb32f) {
    f.ok(c, s.a.pixels(), s.a.step(), s.b.pixels(), s.b.step(), s.mask.pixels(), s.mask.step(), acc.pixels(),
         acc.step(), acc.size());
  });
}

Zeb32f add(Zeb32f acc, Zeb32f a, Zeb32f, Zeb32f) {
  return ref::add(acc, a);
}
Zeb32f addSquare(Zeb32f acc, Zeb32f a, Zeb32f, Zeb32f) {
  return ref::addSquare(acc, a);
}
Zeb32f addProduct(Zeb32f acc, Zeb32f a, Zeb32f b, Zeb32f) {
  return ref::addProduct(acc, a, b);
}
Zeb32f addWeighted(Zeb32f acc, Zeb32f a, Zeb32f, Zeb32f alpha) {
  return ref::addWeighted(acc, a, alpha);
}
Zeb32f weightedMean(Zeb32f, Zeb32f a, Zeb32f b, Zeb32f alpha) {
  return ref::addWeighted(b, a, alpha);
}

#define ELEMENTS(function, shape, ...) DRIVER("elements", #function, shape(c, FUNCTION(function), __VA_ARGS__))
#define INTEGER_SOURCES(stem, form, shape, formula)     \
  ELEMENTS(stem##_8u32f_##form, shape<Zeb8u>, formula); \
  ELEMENTS(stem##_8s32f_##form, shape<Zeb8s>, formula); \
  ELEMENTS(stem##_16u32f_##form, shape<Zeb16u>, formula)
#define SOURCES(stem, form, shape, formula)    \
  INTEGER_SOURCES(stem, form, shape, formula); \
  ELEMENTS(stem##_32f_##form, shape<Zeb32f>, formula)

INTEGER_SOURCES(zebiAdd, C1IR, oneSource, add);
SOURCES(zebiAdd, C1IMR, underMask, add);
SOURCES(zebiAddSquare, C1IR, oneSource, addSquare);
SOURCES(zebiAddSquare, C1IMR, underMask, addSquare);
SOURCES(zebiAddProduct, C1IR, twoSources, addProduct);
SOURCES(zebiAddProduct, C1IMR, twoUnderMask, addProduct);
SOURCES(zebiAddWeighted, C1IR, oneSource, addWeighted);
SOURCES(zebiAddWeighted, C1IMR, underMask, addWeighted);
ELEMENTS(zebiAddWeighted_32f_C1R, twoSources<Zeb32f>, weightedMean);

template <class T>
void absDiff(Choice& c, Function<const T*, int, const T*, int, T*, int, ZebiSize> f, int channels) {
  const ZebiSize size = c.size();
  const Image<T> dst = c.image<T>(size, channels), ownA = c.image<T>(size, channels), ownB = c.image<T>(size, channels);
  const Image<T>&a = oneOrOther(c, ownA, dst), &b = oneOrOther(c, ownB, dst);
  Plane<T> want = a.plane();
  const Plane<T> subtrahend = b.plane();
  for (size_t i = 0; i < want.data.size(); ++i)
    want.data[i] = static_cast<T>(ref::absDiff(want.data[i], subtrahend.data[i]));
  f.ok(c, a.pixels(), a.step(), b.pixels(), b.step(), dst.pixels(), dst.step(), size);
  require(agree(f.name(), dst, want), a.describe());
}

template <class T, class V>
void absDiffC(Choice& c, Function<const T*, int, T*, int, ZebiSize, V> f) {
  const ZebiSize size = c.size();
  const Image<T> dst = c.image<T>(size), own = c.image<T>(size);
  const Image<T>& a = oneOrOther(c, own, dst);
  const V value = c.coin() ? c.value<V>() : static_cast<V>(c.within(-3, 300));
  V inRange = value;
  if constexpr (std::is_integral_v<T>)
    inRange = value < 0 ? 0 : value > std::numeric_limits<T>::max() ? std::numeric_limits<T>::max() : value;
  Plane<T> want = a.plane();
  for (T& v : want.data) v = static_cast<T>(ref::absDiff(v, inRange));
  f.ok(c, a.pixels(), a.step(), dst.pixels(), dst.step(), size, value);
  require(agree(f.name(), dst, want), a.describe());
}

ELEMENTS(zebiAbsDiff_8u_C1R, absDiff<Zeb8u>, 1);
ELEMENTS(zebiAbsDiff_8u_C3R, absDiff<Zeb8u>, 3);
ELEMENTS(zebiAbsDiff_16u_C1R, absDiff<Zeb16u>, 1);
ELEMENTS(zebiAbsDiff_32f_C1R, absDiff<Zeb32f>, 1);
DRIVER("elements", "zebiAbsDiffC_8u_C1R", absDiffC(c, FUNCTION(zebiAbsDiffC_8u_C1R)));
DRIVER("elements", "zebiAbsDiffC_16u_C1R", absDiffC(c, FUNCTION(zebiAbsDiffC_16u_C1R)));
DRIVER("elements", "zebiAbsDiffC_32f_C1R", absDiffC(c, FUNCTION(zebiAbsDiffC_32f_C1R)));

void arctan(Choice& c) {
  const ZebiSize size = c.size();
  const int length = size.width * size.height;
  const Image<Zeb32f> dst = c.image<Zeb32f>(length, 1), ownY = c.image<Zeb32f>(length, 1),
                      ownX = c.image<Zeb32f>(length, 1);
  const Image<Zeb32f>&y = oneOrOther(c, ownY, dst), &x = oneOrOther(c, ownX, dst);
  Plane<Zeb32f> want(length, 1);
  const Plane<Zeb32f> py = y.plane(), px = x.plane();
  for (int i = 0; i < length; ++i) want.at(i, 0) = ref::fastArctan(py.at(i, 0), px.at(i, 0));
  FUNCTION(zebibFastArctan_32f)
      .ok(c, y.pixels(), x.pixels(), dst.pixels(), orElse(length, c.within(-9, 0), zebStsErrSize));
  require(agree("zebibFastArctan_32f", dst, want), y.describe());
}
DRIVER("elements", "zebibFastArctan_32f", arctan(c));

template <class T>
void motionHistory(Choice& c, Function<const T*, int, Zeb32f*, int, ZebiSize, Zeb32f, Zeb32f> f) {
  const ZebiSize size = c.size();
  const Image<T> silhouette = c.image<T>(size);
  const Image<Zeb32f> mhi = c.image<Zeb32f>(size);
  const auto now = static_cast<Zeb32f>(c.within(-3, 250)), duration = static_cast<Zeb32f>(c.within(0, 250));
  const auto want = ref::motionHistory(silhouette.plane(), mhi.plane(), now, duration);
  f.ok(c, silhouette.pixels(), silhouette.step(), mhi.pixels(), mhi.step(), size, now,
       orElse(duration, -0.5f, zebStsErrOutOfRange));
  require(agree(f.name(), mhi, want), silhouette.describe());
}
DRIVER("elements", "zebiUpdateMotionHistory_8u32f_C1IR",
       motionHistory(c, FUNCTION(zebiUpdateMotionHistory_8u32f_C1IR)));
DRIVER("elements", "zebiUpdateMotionHistory_16u32f_C1IR",
       motionHistory(c, FUNCTION(zebiUpdateMotionHistory_16u32f_C1IR)));
DRIVER("elements", "zebiUpdateMotionHistory_32f_C1IR", motionHistory(c, FUNCTION(zebiUpdateMotionHistory_32f_C1IR)));

// The version has neither size nor arguments.
DRIVER("elements", "zebcvGetLibVersion", {
  (void)c;
  require(zebcvGetLibVersion() == zebcvGetLibVersion() && zebcvGetLibVersion()->majorBuild >= 0, "the version record");
  if (watch().noting) watch().calls["zebcvGetLibVersion"].sizes.insert({watch().size.width, watch().size.height});
});

}  // namespace
