#include <cmath>

#include "support/compare.h"

namespace {

using namespace test;
using ref::Plane;

constexpr int w = 11;

// The 16u sum asks for 2 x width bytes of the accumulator only, and looks at the source's step first.
TEST(Accumulate, Add16uAcceptsOverlappingAccumulatorRows) {
  Random random;
  const Image<Zeb16u> src(w, 2, 1, {}, Content::noise, random);
  Image<Zeb32f> acc(2 * w, 1, 1, {});
  acc.set(Plane<Zeb32f>(2 * w, 1));
  const auto add = [&](int srcStep, int step) {
    return zebiAdd_16u32f_C1IR(src.pixels(), srcStep, acc.pixels(), step, {w, 2});
  };
  EXPECT_EQ(add(2 * w + 1, 0), zebStsErrNotEvenStep);
  EXPECT_EQ(add(2 * w, 2 * w - 2), zebStsErrStep);
  EXPECT_EQ(add(2 * w, 2 * w), zebStsErrNotEvenStep);
  ASSERT_EQ(add(2 * w, 2 * w + 2), zebStsOk);
  Plane<Zeb32f> want(2 * w, 1);
  for (int y = 0; y < 2; ++y)
    for (int x = 0; x < w; ++x) want.at(x + y * (2 * w + 2) / 4, 0) += src.plane().at(x, y);
  EXPECT_TRUE(agree("zebiAdd_16u32f_C1IR", acc, want));
}

// Where several operands are no numbers, every column and every run's end answers with the same one.
TEST(Accumulate, NumbersThatAreNoneAreTheSameInEveryColumn) {
  const auto nan = [](uint32_t payload) {
    Zeb32f v;
    const uint32_t bits = 0x7FC00000 | payload;
    memcpy(&v, &bits, sizeof v);
    return v;
  };
  for (int n = 1; n <= 40; ++n) {
    std::vector<Zeb32f> a(n, nan(1)), b(n, nan(2)), product(n, nan(3)), square(n, nan(3));
    const std::vector<Zeb8u> mask(n, 1);
    const int step = 4 * n;
    ASSERT_EQ(zebiAddProduct_32f_C1IR(a.data(), step, b.data(), step, product.data(), step, {n, 1}), zebStsOk);
    ASSERT_EQ(zebiAddSquare_32f_C1IMR(a.data(), step, mask.data(), n, square.data(), step, {n, 1}), zebStsOk);
    for (int x = 1; x < n; ++x) {
      EXPECT_EQ(memcmp(&product[0], &product[x], 4), 0) << x << " of " << n;
      EXPECT_EQ(memcmp(&square[0], &square[x], 4), 0) << x << " of " << n;
    }
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

}  // namespace
