#include "reference/canny.h"

#include "support/compare.h"

namespace {

using namespace test;
using ref::CannyKind;
using ref::Gradient;
using ref::Plane;

// The forms differ at an integral threshold: 16s needs one more.
TEST(Canny, TheThresholdItself) {
  const Zeb16s dx16[3] = {0, 10, 0}, dy16[3] = {};
  const Zeb32f dx32[3] = {0, 10, 0}, dy32[3] = {};
  Zeb8u dst[3];
  Scratch scratch(2000);
  ASSERT_EQ(zebiCanny_16s8u_C1R(dx16, 6, dy16, 6, dst, 3, {3, 1}, 10, 10, scratch.get()), zebStsOk);
  EXPECT_EQ(dst[1], 0);
  ASSERT_EQ(zebiCanny_32f8u_C1R(dx32, 12, dy32, 12, dst, 3, {3, 1}, 10, 10, scratch.get()), zebStsOk);
  EXPECT_EQ(dst[1], 0);  // kept, but no edge
  ASSERT_EQ(zebiCanny_16s8u_C1R(dx16, 6, dy16, 6, dst, 3, {3, 1}, 9.7f, 9.9f, scratch.get()), zebStsOk);
  EXPECT_EQ(dst[1], 255);
  // The largest sum of 16s derivatives is 65535; from there on no threshold is met.
  const Zeb16s ends[3] = {0, -32768, 0};
  for (const Zeb32f threshold : {65534.5f, 65535.0f, 70000.0f}) {
    ASSERT_EQ(zebiCanny_16s8u_C1R(ends, 6, ends, 6, dst, 3, {3, 1}, threshold, threshold, scratch.get()), zebStsOk);
    EXPECT_EQ(dst[1], threshold < 65535 ? 255 : 0) << threshold;
  }
}

// Every pixel a candidate, one of them an edge: the longest way through the hysteresis; and wide images.
TEST(Canny, LongChains) {
  for (const ZebiSize size : {ZebiSize{70000, 3}, ZebiSize{300, 200}, ZebiSize{1, 70000}}) {
    // A comb of columns, joined above and below in turn.
    Gradient<Zeb16s> g{Plane<Zeb16s>(size.width, size.height), Plane<Zeb16s>(size.width, size.height)};
    for (int y = 0; y < size.height; ++y)
      for (int x = 0; x < size.width; ++x)
        if (x % 4 == 0 || y == (x % 8 < 4 ? 0 : size.height - 1)) (x % 4 ? g.dy : g.dx).at(x, y) = 20;
    g.dx.at(0, size.height - 1) = 40;
    const Image<Zeb16s> dx(g.dx, {}), dy(g.dy, {});
    Image<Zeb8u> dst(size.width, size.height, 1, {});
    int bytes = 0;
    ASSERT_EQ(zebiCannyGetSize(size, &bytes), zebStsOk);
    Scratch scratch(bytes);
    ASSERT_EQ(zebiCanny_16s8u_C1R(dx.pixels(), dx.step(), dy.pixels(), dy.step(), dst.pixels(), dst.step(), size, 5, 30,
                                  scratch.get()),
              zebStsOk);
    ASSERT_TRUE(agree("zebiCanny_16s8u_C1R", dst, ref::canny(g, 5, 30, CannyKind::derivatives16s)));
  }
  int bytes = 0;
  EXPECT_EQ(zebiCannyGetSize({65532, 2}, &bytes), zebStsOk);
  EXPECT_EQ(bytes, 20 * 65534 + 16 * 65532 + 160);
  EXPECT_EQ(zebiCannyGetSize({65533, 2}, &bytes), zebStsOk);
  EXPECT_EQ(bytes, 36 * 65535 + 16 * 65533 + 160);
}

TEST(Canny, Sizes) {
  int size = 0;
  EXPECT_EQ(zebiCannyGetSize({9, 3}, &size), zebStsOk);
  EXPECT_EQ(size, 25 * 11 + 144 + 160);
  EXPECT_EQ(zebiCannyGetSize({INT32_MAX, INT32_MAX}, &size), zebStsErrOverflow);
  EXPECT_EQ(zebiCannyBorderGetSize({9, 3}, 0, zebMskSize5x5, 0, &size), zebStsOk);
  EXPECT_EQ(size, (7 + 16 + 28) * 13 + 64);
  EXPECT_EQ(zebiCannyBorderGetSize({INT32_MAX, INT32_MAX}, 0, zebMskSize5x5, 0, &size), zebStsErrOverflow);
}

}  // namespace
