#include "reference/integral.h"

#include "support/compare.h"
#include "support/contract.h"

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

// Rows whose float sums leave the exact integers, and integer tables that wrap.
TEST(Integral, LongRows) {
  Random random;
  const int w = 70000;
  const Image<Zeb8u> src(w, 2, 1, {}, Content::largest, random);
  Image<Zeb32f> dst(w + 1, 3, 1, {});
  Image<Zeb64f> sqr(w + 1, 3, 1, {});
  ASSERT_EQ(zebiSqrIntegral_8u32f64f_C1R(src.pixels(), src.step(), dst.pixels(), dst.step(), sqr.pixels(), sqr.step(),
                                         {w, 2}, 0.5f, 0.25),
            zebStsOk);
  EXPECT_TRUE(agree("zebiSqrIntegral_8u32f64f_C1R", dst, ref::integral<Zeb32f>(src.plane(), 0.5f, false)));
  EXPECT_TRUE(agree("zebiSqrIntegral_8u32f64f_C1R", sqr, ref::integral<Zeb64f>(src.plane(), 0.25, true)));
  Image<Zeb32s> wrapped(w + 1, 3, 1, {}), wrappedSquares(w + 1, 3, 1, {});
  ASSERT_EQ(zebiSqrIntegral_8u32s_C1R(src.pixels(), src.step(), wrapped.pixels(), wrapped.step(),
                                      wrappedSquares.pixels(), wrappedSquares.step(), {w, 2}, 0x7FFFFFF0, -7),
            zebStsOk);
  EXPECT_TRUE(agree("sums", wrapped, ref::integral<Zeb32s>(src.plane(), 0x7FFFFFF0, false)));
  EXPECT_TRUE(agree("squares", wrappedSquares, ref::integral<Zeb32s>(src.plane(), -7, true)));
}

// ---- Deviations ----

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

template <class S, class Q, class D, class F, class... Scale>
void deviationContract(const char* name, bool tilted, F function, Scale... scale) {
  const ZebiRect rect = tilted ? ZebiRect{4, 1, 2, 3} : ZebiRect{1, 1, 2, 3};
  const int w = 9, columns = tilted ? w + 9 : w + 3;
  const Image<S> src(columns, 12, 1, {});
  const Image<Q> sqr(columns, 12, 1, {});
  Image<D> dst(w, 2, 1, {});
  constexpr int q = sizeof(Q);
  Contract c(name, function, src.pixels(), src.step(), sqr.pixels(), sqr.step(), dst.pixels(), dst.step(),
             ZebiSize{w, 2}, rect, scale...);
  c.template nulls<0, 2, 4>().template sizes<6>().template step<1>(columns * 4, 4).template step<5>(w * 4, 4);
  c.template step<3>(columns * q, q).template hostile<6>();
  c.template with<7>(ZebiRect{0x7FFFFFFF, 0, 0x7FFFFFFF, 1}, zebStsErrStep);
  c.template multiple<1>(4).template multiple<5>(4).template multiple<3>(q);
  // Invalid rectangles that ask for as many elements a row as the valid one.
  const ZebiRect upright[] = {{-1, 1, 4, 3}, {1, -1, 2, 3}, {3, 1, 0, 3}, {1, 1, 2, 0}};
  const ZebiRect diagonal[] = {{-1, 1, 7, 3}, {1, -1, 7, 3}, {1, 1, 0, 8}, {1, 1, 8, 0}};
  for (const ZebiRect& bad : tilted ? diagonal : upright) c.template with<7>(bad, zebStsErrSize);
  c.check();
}

TEST(RectStdDev, Checks) {
  deviationContract<Zeb32f, Zeb64f, Zeb32f>("zebiRectStdDev_32f_C1R", false, zebiRectStdDev_32f_C1R);
  deviationContract<Zeb32s, Zeb64f, Zeb32f>("zebiRectStdDev_32s32f_C1R", false, zebiRectStdDev_32s32f_C1R);
  deviationContract<Zeb32s, Zeb32s, Zeb32s>("zebiRectStdDev_32s_C1RSfs", false, zebiRectStdDev_32s_C1RSfs, 2);
  deviationContract<Zeb32f, Zeb64f, Zeb32f>("zebiTiltedRectStdDev_32f_C1R", true, zebiTiltedRectStdDev_32f_C1R);
  deviationContract<Zeb32s, Zeb64f, Zeb32f>("zebiTiltedRectStdDev_32s32f_C1R", true, zebiTiltedRectStdDev_32s32f_C1R);
  deviationContract<Zeb32s, Zeb32s, Zeb32s>("zebiTiltedRectStdDev_32s_C1RSfs", true, zebiTiltedRectStdDev_32s_C1RSfs,
                                            2);
}

}  // namespace
