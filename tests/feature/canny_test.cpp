#include "reference/canny.h"

#include "support/compare.h"
#include "support/contract.h"

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

// A step between two columns: an edge in the last one before it, as long as the thresholds stay below the derivative.
TEST(CannyBorder, KnownStep) {
  Plane<Zeb8u> picture(8, 4);
  for (int y = 0; y < 4; ++y)
    for (int x = 4; x < 8; ++x) picture.at(x, y) = 100;
  const Image<Zeb8u> src(picture, {}), dst(8, 4, 1, {});
  const struct {
    int filter, mask;
    Zeb32f derivative;
  } kernels[] = {{zebFilterSobel, zebMskSize3x3, 400},
                 {zebFilterSobel, zebMskSize5x5, 4800},
                 {zebFilterScharr, zebMskSize3x3, 1600}};
  for (const auto& k : kernels)
    for (int norm : {zebNormL1, zebNormL2})
      for (int below : {0, 1}) {
        const Zeb32f threshold = k.derivative - static_cast<Zeb32f>(below);
        int bytes = 0;
        ASSERT_EQ(zebiCannyBorderGetSize({8, 4}, k.filter, k.mask, zeb8u, &bytes), zebStsOk);
        const Scratch scratch(bytes);
        ASSERT_EQ(zebiCannyBorder_8u_C1R(src.pixels(), src.step(), dst.pixels(), dst.step(), {8, 4}, k.filter, k.mask,
                                         zebBorderRepl, 0, threshold, threshold, norm, scratch.get()),
                  zebStsOk);
        for (int y = 0; y < 4; ++y)
          for (int x = 0; x < 8; ++x) EXPECT_EQ(dst.plane().at(x, y), x == 3 && below ? 255 : 0) << x << ", " << y;
      }
}

// ---- Checks ----

template <class T>
void derivativeContract(const char* name, ZebStatus (*function)(const T*, int, const T*, int, Zeb8u*, int, ZebiSize,
                                                                Zeb32f, Zeb32f, Zeb8u*)) {
  constexpr int w = 9, e = sizeof(T);
  const Image<T> dx(w, 3, 1, {}), dy(w, 3, 1, {});
  Image<Zeb8u> dst(w, 3, 1, {});
  Scratch scratch(2000);
  Contract c(name, function, dx.pixels(), dx.step(), dy.pixels(), dy.step(), dst.pixels(), dst.step(), ZebiSize{w, 3},
             1.0f, 2.0f, scratch.get());
  c.template nulls<0, 2, 4, 9>().template sizes<6>().template step<1>(e * w, e).template step<3>(e * w, e);
  c.template step<5>(w).template hostile<6>().template multiple<1>(e).template multiple<3>(e);
  c.template with<7>(-1.0f, zebStsErrBadArgument).template with<7>(3.0f, zebStsErrBadArgument);
  c.template with<7>(NAN, zebStsErrBadArgument);
  c.check();
}

TEST(Canny, Checks) {
  derivativeContract(NAMED(zebiCanny_16s8u_C1R));
  derivativeContract(NAMED(zebiCanny_32f8u_C1R));
  int size = 0;
  Contract(NAMED(zebiCannyGetSize), ZebiSize{9, 3}, &size)
      .nulls<1>()
      .sizes<0>()
      .with<0>(ZebiSize{0x7FFFFFFF, 0x7FFFFFFF}, zebStsErrOverflow)
      .check();
  EXPECT_EQ(size, 25 * 11 + 144 + 160);
}

TEST(CannyBorder, Checks) {
  const Image<Zeb8u> src(9, 3, 1, {});
  Image<Zeb8u> dst(9, 3, 1, {});
  Scratch scratch(2000);
  Contract(NAMED(zebiCannyBorder_8u_C1R), src.pixels(), 9, dst.pixels(), 9, ZebiSize{9, 3}, int(zebFilterSobel),
           int(zebMskSize3x3), ZebiBorderType(zebBorderRepl), Zeb8u(0), 1.0f, 2.0f, int(zebNormL1), scratch.get())
      .with<6>(0, zebStsErrMaskSize)
      .with<6>(44, zebStsErrMaskSize)
      .nulls<0, 2, 12>()
      .sizes<4>()
      .with<5>(1, zebStsErrBadArgument)
      .with<11>(zebNormInf, zebStsErrBadArgument)
      .with<9>(-1.0f, zebStsErrBadArgument)
      .with<10>(0.5f, zebStsErrBadArgument)
      .with<10>(NAN, zebStsErrBadArgument)
      .with<7>(zebBorderWrap, zebStsErrBorder)
      .with<7>(zebBorderMirror | zebBorderInMemTop, zebStsErrBorder)
      .with<7>(-1, zebStsErrBorder)
      .with<4>(ZebiSize{0x7FFFFFFF, 0x7FFFFFFF}, zebStsErrOverflow)
      .check();
  EXPECT_EQ(zebiCannyBorder_8u_C1R(nullptr, 9, dst.pixels(), 9, {9, 3}, zebFilterScharr, zebMskSize5x5, zebBorderRepl,
                                   0, 1, 2, zebNormL1, scratch.get()),
            zebStsErrMaskSize);
  int size = 0;
  Contract(NAMED(zebiCannyBorderGetSize), ZebiSize{9, 3}, 0, int(zebMskSize5x5), 0, &size)
      .nulls<4>()
      .sizes<0>()
      .with<2>(34, zebStsErrMaskSize)
      .with<0>(ZebiSize{0x7FFFFFFF, 0x7FFFFFFF}, zebStsErrOverflow)
      .check();
  EXPECT_EQ(size, (7 + 16 + 28) * 13 + 64);
}

}  // namespace
