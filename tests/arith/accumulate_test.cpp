#include <cmath>

#include "support/compare.h"
#include "support/contract.h"

namespace {

using namespace test;
using ref::Plane;

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

}  // namespace
