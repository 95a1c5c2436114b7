#include "support/compare.h"

namespace {

using namespace test;
using ref::Plane;

// The meaning of the tables, apart from any recurrence: rectangles upright, cones tilted.
TEST(Integral, SumsWhatItSays) {
  Random random;
  const int w = 19, h = 13;
  const Image<Zeb8u> src(w, h, 1, {}, Content::noise, random);
  const auto p = src.plane();
  Image<Zeb32s> up(w + 1, h + 1, 1, {}), tilted(w + 2, h + 2, 1, {});
  ASSERT_EQ(zebiIntegral_8u32s_C1R(src.pixels(), src.step(), up.pixels(), up.step(), {w, h}, 5), zebStsOk);
  ASSERT_EQ(zebiTiltedIntegral_8u32s_C1R(src.pixels(), src.step(), tilted.pixels(), tilted.step(), {w, h}, 5),
            zebStsOk);
  for (int r = 0; r <= h; ++r)
    for (int c = 0; c <= w; ++c) {
      int sum = 5;
      for (int y = 0; y < r; ++y)
        for (int x = 0; x < c; ++x) sum += p.at(x, y);
      ASSERT_EQ(up.plane().at(c, r), sum);
    }
  for (int r = 2; r <= h + 1; ++r)
    for (int c = r; c < w + 1 - r; ++c) {  // cones that the image cuts at the top only
      int sum = 5;
      for (int y = 0; y <= r - 2; ++y)
        for (int x = 0; x < w; ++x)
          if (x >= c - (r - 1 - y) && x < c + (r - 1 - y)) sum += p.at(x, y);
      ASSERT_EQ(tilted.plane().at(c, r), sum) << c << " " << r;
    }
}

// Saturation, rounding to even at the half, and scale factors far outside the exponents.
TEST(RectStdDev, ScaledFormsSaturate) {
  const Zeb32s sums[4] = {0, 0, 0, 0}, squares[4] = {0, 0, 0, 25};  // one pixel of variance 25
  Zeb32s d = -1;
  const auto scaled = [&](int factor) {
    EXPECT_EQ(zebiRectStdDev_32s_C1RSfs(sums, 8, squares, 8, &d, 4, {1, 1}, {0, 0, 1, 1}, factor), zebStsOk);
    return d;
  };
  EXPECT_EQ(scaled(0), 5);
  EXPECT_EQ(scaled(1), 2);  // 2.5
  EXPECT_EQ(scaled(-28), 5 << 28);
  EXPECT_EQ(scaled(-29), 0x7FFFFFFF);
  EXPECT_EQ(scaled(-0x7FFFFFFF - 1), 0x7FFFFFFF);
  EXPECT_EQ(scaled(0x7FFFFFFF), 0);
}

}  // namespace
