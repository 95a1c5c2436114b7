#include "reference/accumulate.h"

#include "support/compare.h"
#include "support/contract.h"
#include "support/stack.h"

namespace {

using namespace test;
using ref::Plane;

// Every vector tail, and some rows of several vectors.
std::vector<int> widths() {
  std::vector<int> all;
  for (int w = 1; w <= 70; ++w) all.push_back(w);
  for (int w : {127, 128, 129, 255, 301}) all.push_back(w);
  return all;
}

// One function of the family: how it is called, and what it does to one pixel.
template <class T>
struct Case {
  const char* name;
  bool masked;
  bool twoSources;
  std::function<ZebStatus(const Image<T>& a, const Image<T>& b, const Image<Zeb8u>& mask, Image<Zeb32f>& acc,
                          Zeb32f alpha)>
      call;
  std::function<Zeb32f(Zeb32f acc, Zeb32f a, Zeb32f b, Zeb32f alpha)> pixel;
};

template <class T>
void run(const Case<T>& c) {
  Random random;
  int round = 0;
  for (int width : widths()) {
    const int height = 1 + round % 3;
    const Content content = allContents[round++ % 8];
    const Image<T> a(width, height, 1, Layout::random<T>(random), content, random);
    const Image<T> b(width, height, 1, Layout::random<T>(random), round % 2 ? Content::noise : Content::extremes,
                     random);
    Plane<Zeb8u> bytes(width, height);
    for (auto& m : bytes.data) m = static_cast<Zeb8u>(random.within(0, 1) * random.within(0, 255));
    if (round % 9 == 0) bytes = Plane<Zeb8u>(width, height, 1, 0);
    const Image<Zeb8u> mask(bytes, Layout::random<Zeb8u>(random));
    Image<Zeb32f> acc(width, height, 1, Layout::random<Zeb32f>(random), round % 5 ? Content::noise : Content::extremes,
                      random);
    const Zeb32f alpha = round % 4 == 0 ? 0.0f : round % 4 == 1 ? 1.0f : random.real(-0.5f, 1.5f);

    Plane<Zeb32f> want = acc.plane();
    const auto pa = a.plane(), pb = b.plane();
    for (size_t i = 0; i < want.data.size(); ++i)
      if (!c.masked || bytes.data[i])
        want.data[i] = c.pixel(want.data[i], static_cast<Zeb32f>(pa.data[i]), static_cast<Zeb32f>(pb.data[i]), alpha);

    ASSERT_EQ(c.call(a, b, mask, acc, alpha), zebStsOk) << c.name;
    ASSERT_TRUE(agree(c.name, acc, want)) << "source " << a.describe();
    ASSERT_TRUE(a.intact() && b.intact() && mask.intact());
  }
}

#define S a.pixels(), a.step()
#define S2 a.pixels(), a.step(), b.pixels(), b.step()
#define M mask.pixels(), mask.step()
#define D acc.pixels(), acc.step(), acc.size()
#define CASE(T, function, masked, two, formula, ...)                                                             \
  run<T>({#function, masked, two,                                                                                \
          [](const Image<T>& a, const Image<T>& b, const Image<Zeb8u>& mask, Image<Zeb32f>& acc, Zeb32f alpha) { \
            (void)b, (void)mask, (void)alpha;                                                                    \
            return function(__VA_ARGS__);                                                                        \
          },                                                                                                     \
          [](Zeb32f acc, Zeb32f a, Zeb32f b, Zeb32f alpha) {                                                     \
            (void)acc, (void)b, (void)alpha;                                                                     \
            return formula;                                                                                      \
          }})

TEST(Accumulate, AddEqualsReference) {
  CASE(Zeb8u, zebiAdd_8u32f_C1IR, false, false, ref::add(acc, a), S, D);
  CASE(Zeb8s, zebiAdd_8s32f_C1IR, false, false, ref::add(acc, a), S, D);
  CASE(Zeb16u, zebiAdd_16u32f_C1IR, false, false, ref::add(acc, a), S, D);
  CASE(Zeb8u, zebiAdd_8u32f_C1IMR, true, false, ref::add(acc, a), S, M, D);
  CASE(Zeb8s, zebiAdd_8s32f_C1IMR, true, false, ref::add(acc, a), S, M, D);
  CASE(Zeb16u, zebiAdd_16u32f_C1IMR, true, false, ref::add(acc, a), S, M, D);
  CASE(Zeb32f, zebiAdd_32f_C1IMR, true, false, ref::add(acc, a), S, M, D);
}

TEST(Accumulate, AddSquareEqualsReference) {
  CASE(Zeb8u, zebiAddSquare_8u32f_C1IR, false, false, ref::addSquare(acc, a), S, D);
  CASE(Zeb8s, zebiAddSquare_8s32f_C1IR, false, false, ref::addSquare(acc, a), S, D);
  CASE(Zeb16u, zebiAddSquare_16u32f_C1IR, false, false, ref::addSquare(acc, a), S, D);
  CASE(Zeb32f, zebiAddSquare_32f_C1IR, false, false, ref::addSquare(acc, a), S, D);
  CASE(Zeb8u, zebiAddSquare_8u32f_C1IMR, true, false, ref::addSquare(acc, a), S, M, D);
  CASE(Zeb8s, zebiAddSquare_8s32f_C1IMR, true, false, ref::addSquare(acc, a), S, M, D);
  CASE(Zeb16u, zebiAddSquare_16u32f_C1IMR, true, false, ref::addSquare(acc, a), S, M, D);
  CASE(Zeb32f, zebiAddSquare_32f_C1IMR, true, false, ref::addSquare(acc, a), S, M, D);
}

TEST(Accumulate, AddProductEqualsReference) {
  CASE(Zeb8u, zebiAddProduct_8u32f_C1IR, false, true, ref::addProduct(acc, a, b), S2, D);
  CASE(Zeb8s, zebiAddProduct_8s32f_C1IR, false, true, ref::addProduct(acc, a, b), S2, D);
  CASE(Zeb16u, zebiAddProduct_16u32f_C1IR, false, true, ref::addProduct(acc, a, b), S2, D);
  CASE(Zeb32f, zebiAddProduct_32f_C1IR, false, true, ref::addProduct(acc, a, b), S2, D);
  CASE(Zeb8u, zebiAddProduct_8u32f_C1IMR, true, true, ref::addProduct(acc, a, b), S2, M, D);
  CASE(Zeb8s, zebiAddProduct_8s32f_C1IMR, true, true, ref::addProduct(acc, a, b), S2, M, D);
  CASE(Zeb16u, zebiAddProduct_16u32f_C1IMR, true, true, ref::addProduct(acc, a, b), S2, M, D);
  CASE(Zeb32f, zebiAddProduct_32f_C1IMR, true, true, ref::addProduct(acc, a, b), S2, M, D);
}

TEST(Accumulate, AddWeightedEqualsReference) {
  CASE(Zeb8u, zebiAddWeighted_8u32f_C1IR, false, false, ref::addWeighted(acc, a, alpha), S, D, alpha);
  CASE(Zeb8s, zebiAddWeighted_8s32f_C1IR, false, false, ref::addWeighted(acc, a, alpha), S, D, alpha);
  CASE(Zeb16u, zebiAddWeighted_16u32f_C1IR, false, false, ref::addWeighted(acc, a, alpha), S, D, alpha);
  CASE(Zeb32f, zebiAddWeighted_32f_C1IR, false, false, ref::addWeighted(acc, a, alpha), S, D, alpha);
  CASE(Zeb8u, zebiAddWeighted_8u32f_C1IMR, true, false, ref::addWeighted(acc, a, alpha), S, M, D, alpha);
  CASE(Zeb8s, zebiAddWeighted_8s32f_C1IMR, true, false, ref::addWeighted(acc, a, alpha), S, M, D, alpha);
  CASE(Zeb16u, zebiAddWeighted_16u32f_C1IMR, true, false, ref::addWeighted(acc, a, alpha), S, M, D, alpha);
  CASE(Zeb32f, zebiAddWeighted_32f_C1IMR, true, false, ref::addWeighted(acc, a, alpha), S, M, D, alpha);
  CASE(Zeb32f, zebiAddWeighted_32f_C1R, false, true, ref::addWeighted(b, a, alpha), S2, D, alpha);
}

// Many frames into rows without gaps: the whole image is handed over as one run.
TEST(Accumulate, ContiguousImagesAreOneRun) {
  Random random;
  const Image<Zeb8u> src(61, 53, 1, {}, Content::noise, random);
  Image<Zeb32f> acc(61, 53, 1, {}, Content::noise, random);
  auto want = acc.plane();
  for (size_t i = 0; i < want.data.size(); ++i) want.data[i] += src.plane().data[i];
  ASSERT_EQ(zebiAdd_8u32f_C1IR(src.pixels(), src.step(), acc.pixels(), acc.step(), acc.size()), zebStsOk);
  EXPECT_TRUE(agree("zebiAdd_8u32f_C1IR", acc, want));
}

TEST(Accumulate, SourceMayBeTheAccumulator) {
  Random random;
  Image<Zeb32f> acc(37, 3, 1, Layout{Place::odd, 8, 5}, Content::noise, random);
  auto want = acc.plane();
  for (auto& v : want.data) v = ref::addSquare(v, v);
  ASSERT_EQ(zebiAddSquare_32f_C1IR(acc.pixels(), acc.step(), acc.pixels(), acc.step(), acc.size()), zebStsOk);
  EXPECT_TRUE(agree("zebiAddSquare_32f_C1IR", acc, want));
}

constexpr int w = 11;

template <class T>
void oneSourceContract(const char* name, ZebStatus (*function)(const T*, int, Zeb32f*, int, ZebiSize)) {
  const Image<T> src(w, 3, 1, {Place::back, 4 * sizeof(T), 0});
  Image<Zeb32f> acc(w, 3, 1, {Place::back, 8, 0});
  constexpr int e = sizeof(T);
  Contract c(name, function, src.pixels(), src.step(), acc.pixels(), acc.step(), ZebiSize{w, 3});
  c.template nulls<0, 2>().template sizes<4>().template step<1>(e * w, e).template step<3>(4 * w, 4);
  c.template hostile<4>();
  if (e > 1) c.template multiple<1>(e);
  c.template multiple<3>(4).check();
}

template <class T>
void oneSourceAlphaContract(const char* name, ZebStatus (*function)(const T*, int, Zeb32f*, int, ZebiSize, Zeb32f)) {
  const Image<T> src(w, 3, 1, {Place::back, 4 * sizeof(T), 0});
  Image<Zeb32f> acc(w, 3, 1, {Place::back, 8, 0});
  constexpr int e = sizeof(T);
  Contract c(name, function, src.pixels(), src.step(), acc.pixels(), acc.step(), ZebiSize{w, 3}, 0.5f);
  c.template nulls<0, 2>().template sizes<4>().template step<1>(e * w, e).template step<3>(4 * w, 4);
  c.template hostile<4>();
  if (e > 1) c.template multiple<1>(e);
  c.template multiple<3>(4).check();
}

template <class T, class... Alpha>
void maskedContract(const char* name,
                    ZebStatus (*function)(const T*, int, const Zeb8u*, int, Zeb32f*, int, ZebiSize, Alpha...)) {
  const Image<T> src(w, 3, 1, {Place::back, 4 * sizeof(T), 0});
  const Image<Zeb8u> mask(w, 3, 1, {});
  Image<Zeb32f> acc(w, 3, 1, {Place::back, 8, 0});
  constexpr int e = sizeof(T);
  Contract c(name, function, src.pixels(), src.step(), mask.pixels(), mask.step(), acc.pixels(), acc.step(),
             ZebiSize{w, 3}, Alpha(0.5f)...);
  c.template nulls<0, 2, 4>().template sizes<6>().template step<1>(e * w, e).template step<3>(w);
  c.template step<5>(4 * w, 4).template hostile<6>();
  if (e > 1) c.template multiple<1>(e);
  c.template multiple<5>(4).check();
}

template <class T>
void productContract(const char* name, ZebStatus (*function)(const T*, int, const T*, int, Zeb32f*, int, ZebiSize)) {
  const Image<T> a(w, 3, 1, {Place::back, 4 * sizeof(T), 0}), b(w, 3, 1, {});
  Image<Zeb32f> acc(w, 3, 1, {Place::back, 8, 0});
  constexpr int e = sizeof(T);
  Contract c(name, function, a.pixels(), a.step(), b.pixels(), b.step(), acc.pixels(), acc.step(), ZebiSize{w, 3});
  c.template nulls<0, 2, 4>().template sizes<6>().template step<1>(e * w, e).template step<3>(e * w, e);
  c.template step<5>(4 * w, 4).template hostile<6>();
  if (e > 1) c.template multiple<1>(e).template multiple<3>(e);
  c.template multiple<5>(4).check();
}

template <class T>
void maskedProductContract(const char* name, ZebStatus (*function)(const T*, int, const T*, int, const Zeb8u*, int,
                                                                   Zeb32f*, int, ZebiSize)) {
  const Image<T> a(w, 3, 1, {Place::back, 4 * sizeof(T), 0}), b(w, 3, 1, {});
  const Image<Zeb8u> mask(w, 3, 1, {});
  Image<Zeb32f> acc(w, 3, 1, {Place::back, 8, 0});
  constexpr int e = sizeof(T);
  Contract c(name, function, a.pixels(), a.step(), b.pixels(), b.step(), mask.pixels(), mask.step(), acc.pixels(),
             acc.step(), ZebiSize{w, 3});
  c.template nulls<0, 2, 4, 6>().template sizes<8>().template step<1>(e * w, e).template step<3>(e * w, e);
  c.template step<5>(w).template step<7>(4 * w, 4).template hostile<8>();
  if (e > 1) c.template multiple<1>(e).template multiple<3>(e);
  c.template multiple<7>(4).check();
}

TEST(Accumulate, Checks) {
  oneSourceContract(NAMED(zebiAdd_8u32f_C1IR));
  oneSourceContract(NAMED(zebiAdd_8s32f_C1IR));
  maskedContract(NAMED(zebiAdd_8u32f_C1IMR));
  maskedContract(NAMED(zebiAdd_8s32f_C1IMR));
  maskedContract(NAMED(zebiAdd_16u32f_C1IMR));
  maskedContract(NAMED(zebiAdd_32f_C1IMR));
  oneSourceContract(NAMED(zebiAddSquare_8u32f_C1IR));
  oneSourceContract(NAMED(zebiAddSquare_8s32f_C1IR));
  oneSourceContract(NAMED(zebiAddSquare_16u32f_C1IR));
  oneSourceContract(NAMED(zebiAddSquare_32f_C1IR));
  maskedContract(NAMED(zebiAddSquare_8u32f_C1IMR));
  maskedContract(NAMED(zebiAddSquare_8s32f_C1IMR));
  maskedContract(NAMED(zebiAddSquare_16u32f_C1IMR));
  maskedContract(NAMED(zebiAddSquare_32f_C1IMR));
  productContract(NAMED(zebiAddProduct_8u32f_C1IR));
  productContract(NAMED(zebiAddProduct_8s32f_C1IR));
  productContract(NAMED(zebiAddProduct_16u32f_C1IR));
  productContract(NAMED(zebiAddProduct_32f_C1IR));
  maskedProductContract(NAMED(zebiAddProduct_8u32f_C1IMR));
  maskedProductContract(NAMED(zebiAddProduct_8s32f_C1IMR));
  maskedProductContract(NAMED(zebiAddProduct_16u32f_C1IMR));
  maskedProductContract(NAMED(zebiAddProduct_32f_C1IMR));
  oneSourceAlphaContract(NAMED(zebiAddWeighted_8u32f_C1IR));
  oneSourceAlphaContract(NAMED(zebiAddWeighted_8s32f_C1IR));
  oneSourceAlphaContract(NAMED(zebiAddWeighted_16u32f_C1IR));
  oneSourceAlphaContract(NAMED(zebiAddWeighted_32f_C1IR));
  maskedContract(NAMED(zebiAddWeighted_8u32f_C1IMR));
  maskedContract(NAMED(zebiAddWeighted_8s32f_C1IMR));
  maskedContract(NAMED(zebiAddWeighted_16u32f_C1IMR));
  maskedContract(NAMED(zebiAddWeighted_32f_C1IMR));

  const Image<Zeb32f> a(w, 3, 1, {}), b(w, 3, 1, {});
  Image<Zeb32f> dst(w, 3, 1, {});
  Contract(NAMED(zebiAddWeighted_32f_C1R), a.pixels(), a.step(), b.pixels(), b.step(), dst.pixels(), dst.step(),
           ZebiSize{w, 3}, 0.25f)
      .nulls<0, 2, 4>()
      .sizes<6>()
      .step<1>(4 * w, 4)
      .step<3>(4 * w, 4)
      .step<5>(4 * w, 4)
      .hostile<6>()
      .multiple<1>(4)
      .multiple<3>(4)
      .multiple<5>(4)
      .check();
}

// The 16u sum tests the source's multiple before the accumulator's minimum, and asks for 2 x width bytes only.
TEST(Accumulate, Add16uAcceptsOverlappingAccumulatorRows) {
  Random random;
  const Image<Zeb16u> src(w, 2, 1, {}, Content::noise, random);
  Image<Zeb32f> acc(2 * w, 1, 1, {});
  acc.set(Plane<Zeb32f>(2 * w, 1));
  Contract(NAMED(zebiAdd_16u32f_C1IR), src.pixels(), src.step(), acc.pixels(), 2 * w + 2, ZebiSize{w, 2})
      .nulls<0, 2>()
      .sizes<4>()
      .step<1>(2 * w, 2)
      .hostile<4>()
      .multiple<1>(2)
      .step<3>(2 * w, 2)
      .multiple<3>(4)
      .check();
  Plane<Zeb32f> want(2 * w, 1);
  for (int y = 0; y < 2; ++y)
    for (int x = 0; x < w; ++x) want.at(x + y * (2 * w + 2) / 4, 0) += src.plane().at(x, y);
  EXPECT_TRUE(agree("zebiAdd_16u32f_C1IR", acc, want));
}

TEST(AbsDiff, EqualsReference) {
  Random random;
  const auto two = [&](auto tag, const char* name, int channels, auto function) {
    using T = decltype(tag);
    int round = 0;
    for (int width : widths()) {
      const int height = 1 + round % 3;
      const Image<T> a(width, height, channels, Layout::random<T>(random), allContents[round++ % 8], random);
      Image<T> b(width, height, channels, Layout::random<T>(random), Content::noise, random);
      Image<T> d(width, height, channels, Layout::random<T>(random));
      auto want = a.plane();
      for (size_t i = 0; i < want.data.size(); ++i)
        want.data[i] = static_cast<T>(ref::absDiff(a.plane().data[i], b.plane().data[i]));
      ASSERT_EQ(function(a.pixels(), a.step(), b.pixels(), b.step(), d.pixels(), d.step(), d.size()), zebStsOk);
      ASSERT_TRUE(agree(name, d, want));
      ASSERT_EQ(function(a.pixels(), a.step(), b.pixels(), b.step(), b.pixels(), b.step(), d.size()), zebStsOk);
      ASSERT_TRUE(agree(name, b, want)) << "in place";
    }
  };
  two(Zeb8u(), "zebiAbsDiff_8u_C1R", 1, zebiAbsDiff_8u_C1R);
  two(Zeb8u(), "zebiAbsDiff_8u_C3R", 3, zebiAbsDiff_8u_C3R);
  two(Zeb16u(), "zebiAbsDiff_16u_C1R", 1, zebiAbsDiff_16u_C1R);
  two(Zeb32f(), "zebiAbsDiff_32f_C1R", 1, zebiAbsDiff_32f_C1R);
}

TEST(AbsDiff, ConstantEqualsReference) {
  Random random;
  const auto constant = [&](auto tag, const char* name, auto function, auto values, auto clamped) {
    using T = decltype(tag);
    int round = 0;
    for (int width : widths()) {
      const Image<T> a(width, 2, 1, Layout::random<T>(random), allContents[round++ % 8], random);
      Image<T> d(width, 2, 1, Layout::random<T>(random));
      const auto value = values[round % values.size()];
      auto want = a.plane();
      for (auto& v : want.data) v = static_cast<T>(ref::absDiff(v, clamped(value)));
      ASSERT_EQ(function(a.pixels(), a.step(), d.pixels(), d.step(), d.size(), value), zebStsOk);
      ASSERT_TRUE(agree(name, d, want)) << "value " << value;
    }
  };
  const std::vector<int> integers = {0, 1, 77, 255, 300, -4, 65535, 65536, 0x7FFFFFFF, -0x7FFFFFFF - 1};
  const auto to = [](int high) { return [=](int v) { return v < 0 ? 0 : v > high ? high : v; }; };
  constant(Zeb8u(), "zebiAbsDiffC_8u_C1R", zebiAbsDiffC_8u_C1R, integers, to(255));
  constant(Zeb16u(), "zebiAbsDiffC_16u_C1R", zebiAbsDiffC_16u_C1R, integers, to(65535));
  constant(Zeb32f(), "zebiAbsDiffC_32f_C1R", zebiAbsDiffC_32f_C1R, std::vector<Zeb32f>{0.0f, -3.5f, 1e30f},
           [](Zeb32f v) { return v; });
}

TEST(AbsDiff, Checks) {
  const auto two = [](auto tag, const char* name, auto function, int channels) {
    using T = decltype(tag);
    constexpr int e = sizeof(T);
    const Image<T> a(w, 3, channels, {}), b(w, 3, channels, {});
    Image<T> d(w, 3, channels, {});
    const int row = w * channels * e;
    Contract c(name, function, a.pixels(), a.step(), b.pixels(), b.step(), d.pixels(), d.step(), ZebiSize{w, 3});
    c.template nulls<0, 2, 4>().template sizes<6>().template step<1>(row, e).template step<3>(row, e);
    c.template step<5>(row, e).template hostile<6>();
    if (e > 1) c.template multiple<1>(e).template multiple<3>(e).template multiple<5>(e);
    c.check();
  };
  two(Zeb8u(), NAMED(zebiAbsDiff_8u_C1R), 1);
  two(Zeb8u(), NAMED(zebiAbsDiff_8u_C3R), 3);
  two(Zeb16u(), NAMED(zebiAbsDiff_16u_C1R), 1);
  two(Zeb32f(), NAMED(zebiAbsDiff_32f_C1R), 1);

  const auto constant = [](auto tag, const char* name, auto function) {
    using T = decltype(tag);
    constexpr int e = sizeof(T);
    const Image<T> a(w, 3, 1, {});
    Image<T> d(w, 3, 1, {});
    Contract c(name, function, a.pixels(), a.step(), d.pixels(), d.step(), ZebiSize{w, 3}, 3);
    c.template nulls<0, 2>().template sizes<4>().template step<1>(w * e, e).template step<3>(w * e, e);
    c.template hostile<4>();
    if (e > 1) c.template multiple<1>(e).template multiple<3>(e);
    c.check();
  };
  constant(Zeb8u(), NAMED(zebiAbsDiffC_8u_C1R));
  constant(Zeb16u(), NAMED(zebiAbsDiffC_16u_C1R));
  constant(Zeb32f(), NAMED(zebiAbsDiffC_32f_C1R));
}

TEST(FastArctan, EqualsReferenceAtEveryLength) {
  Random random;
  for (int length : widths()) {
    const Image<Zeb32f> y(length, 1, 1, Layout::random<Zeb32f>(random), allContents[length % 8], random);
    Image<Zeb32f> x(length, 1, 1, Layout::random<Zeb32f>(random), length % 3 ? Content::noise : Content::extremes,
                    random);
    Image<Zeb32f> d(length, 1, 1, Layout::random<Zeb32f>(random));
    auto want = d.plane();
    for (int i = 0; i < length; ++i) want.at(i, 0) = ref::fastArctan(y.plane().at(i, 0), x.plane().at(i, 0));
    ASSERT_EQ(zebibFastArctan_32f(y.pixels(), x.pixels(), d.pixels(), length), zebStsOk);
    ASSERT_TRUE(agree("zebibFastArctan_32f", d, want));
    ASSERT_EQ(zebibFastArctan_32f(y.pixels(), x.pixels(), x.pixels(), length), zebStsOk);
    ASSERT_TRUE(agree("zebibFastArctan_32f", x, want)) << "in place";
  }
}

// The angle itself, against the standard library, so that a fault shared with the reference shows.
TEST(FastArctan, StaysNearTheTrueAngle) {
  for (int degree = 1; degree < 360; ++degree) {
    const Zeb32f y = static_cast<Zeb32f>(std::sin(degree * M_PI / 180)),
                 x = static_cast<Zeb32f>(std::cos(degree * M_PI / 180));
    Zeb32f got = 0;
    ASSERT_EQ(zebibFastArctan_32f(&y, &x, &got, 1), zebStsOk);
    EXPECT_NEAR(got, degree, 0.25) << degree;
  }
  const Zeb32f zero = 0;
  Zeb32f got = 0;
  zebibFastArctan_32f(&zero, &zero, &got, 1);
  EXPECT_EQ(got, -0.14050041139125824f);
}

TEST(FastArctan, Checks) {
  const Image<Zeb32f> y(9, 1, 1, {}), x(9, 1, 1, {});
  Image<Zeb32f> d(9, 1, 1, {});
  Contract(NAMED(zebibFastArctan_32f), y.pixels(), x.pixels(), d.pixels(), 9)
      .nulls<0, 1, 2>()
      .with<3>(0, zebStsErrSize)
      .with<3>(-7, zebStsErrSize)
      .check();
}

TEST(Accumulate, OldCallersStacks) {
  Random random;
  const Image<Zeb8u> src(45, 2, 1, {}, Content::noise, random), mask(45, 2, 1, {}, Content::runs, random);
  Image<Zeb32f> acc(45, 2, 1, {}, Content::noise, random), fresh(acc.plane(), {});
  const Zeb32f alpha = 0.25f;
  ASSERT_EQ(zebiAddWeighted_8u32f_C1IMR(src.pixels(), src.step(), mask.pixels(), mask.step(), fresh.pixels(),
                                        fresh.step(), fresh.size(), alpha),
            zebStsOk);
  const auto before = acc.plane();
  for (int shift : {0, 4, 8, 12}) {
    acc.set(before);
    ASSERT_EQ(callMisaligned(shift, zebiAddWeighted_8u32f_C1IMR, src.pixels(), src.step(), mask.pixels(), mask.step(),
                             acc.pixels(), acc.step(), acc.size(), alpha),
              zebStsOk);
    EXPECT_TRUE(agree("zebiAddWeighted_8u32f_C1IMR", acc, fresh.plane())) << "stack shift " << shift;
  }
}

}  // namespace
