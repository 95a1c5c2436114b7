#include <cmath>

#include "support/compare.h"
#include "support/contract.h"

namespace {

using namespace test;
using ref::Plane;

constexpr int w = 11;

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
