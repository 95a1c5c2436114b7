#include "reference/canny.h"

#include "support/compare.h"
#include "support/contract.h"

namespace {

using namespace test;
using ref::CannyKind;
using ref::Gradient;
using ref::Plane;

// Derivatives with all directions, equal neighbours, zeros of both signs and the ends of the type.
template <class T>
Plane<T> derivative(int w, int h, int round, Random& random) {
  Plane<T> p(w, h);
  if (round % 4 == 3) {
    fillPlane(p, std::is_floating_point_v<T> ? Content::noise : Content::extremes, random);
    return p;
  }
  const int range = round % 4 == 0 ? 3 : 40;
  for (T& v : p.data) {
    v = static_cast<T>(random.within(-range, range));
    if (std::is_floating_point_v<T> && random.within(0, 9) == 0) v = random.within(0, 1) ? T(-0.0) : v * T(0.41421357);
  }
  return p;
}

template <class T, class Call>
void checkDerivatives(const char* name, CannyKind kind, Call call) {
  Random random;
  for (int round = 0; round < 110; ++round) {
    const int w = round < 70 ? 1 + round : random.within(1, 120), h = 1 + random.within(0, 20);
    const Gradient<T> g{derivative<T>(w, h, round, random), derivative<T>(w, h, round, random)};
    const Image<T> dx(g.dx, Layout::random<T>(random)), dy(g.dy, Layout::random<T>(random));
    Image<Zeb8u> dst(w, h, 1, Layout::random<Zeb8u>(random));
    const float lows[] = {0, 1, 2.5f, 10.7f, 30, 70000}, low = lows[round % 6];
    const float high = low + random.real(0, 40) * static_cast<float>(random.within(0, 1));
    int size = 0;
    ASSERT_EQ(zebiCannyGetSize({w, h}, &size), zebStsOk);
    ASSERT_EQ(size, (5 * h + 10) * (w + 2) + 16 * w + 160);
    Scratch scratch(size);
    ASSERT_EQ(call(dx.pixels(), dx.step(), dy.pixels(), dy.step(), dst.pixels(), dst.step(), dst.size(), low, high,
                   scratch.get()),
              zebStsOk);
    ASSERT_TRUE(agree(name, dst, ref::canny(g, low, high, kind))) << "thresholds " << low << " " << high;
    ASSERT_TRUE(scratch.intact() && dx.intact() && dy.intact());
  }
}

TEST(Canny, EqualsReference16s) {
  checkDerivatives<Zeb16s>("zebiCanny_16s8u_C1R", CannyKind::derivatives16s, zebiCanny_16s8u_C1R);
}
TEST(Canny, EqualsReference32f) {
  checkDerivatives<Zeb32f>("zebiCanny_32f8u_C1R", CannyKind::derivatives32f, zebiCanny_32f8u_C1R);
}

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

// ---- Border form ----

void checkBorder(int w, int h, int filter, int mask, int border, int norm, int round, Random& random) {
  constexpr int margin = 2;
  Plane<Zeb8u> all(w + 2 * margin, h + 2 * margin);
  fillPlane(all, allContents[round % 8], random);
  if (round % 3 == 0)
    for (int y = 0; y < all.height; ++y)
      for (int x = 0; x < all.width; ++x) all.at(x, y) = static_cast<Zeb8u>((x * x + 3 * y * y + x * y) / 8);
  const Image<Zeb8u> src(all, Layout::random<Zeb8u>(random));
  Image<Zeb8u> dst(w, h, 1, Layout::random<Zeb8u>(random));
  const Zeb8u value = static_cast<Zeb8u>(random.within(0, 255));
  const float low = static_cast<float>(random.within(0, 200)),
              high = low + static_cast<float>(random.within(0, 300)) / 3;
  int size = 0;
  ASSERT_EQ(zebiCannyBorderGetSize({w, h}, filter, mask, zeb8u, &size), zebStsOk);
  Scratch scratch(size);
  ASSERT_EQ(zebiCannyBorder_8u_C1R(src.pixels(margin, margin), src.step(), dst.pixels(), dst.step(), {w, h}, filter,
                                   mask, border, value, low, high, norm, scratch.get()),
            zebStsOk);
  const auto g = ref::gradient<Zeb8u, Zeb16s>(ref::bordered<Zeb8u>(all, margin, margin, {w, h}, border, value), {w, h},
                                              filter, mask == zebMskSize3x3 ? 3 : 5);
  ASSERT_TRUE(agree("zebiCannyBorder_8u_C1R", dst,
                    ref::canny(g, low, high, norm == zebNormL1 ? CannyKind::borderL1 : CannyKind::borderL2)))
      << "filter " << filter << " mask " << mask << " border " << border << " norm " << norm;
  ASSERT_TRUE(scratch.intact());
}

TEST(CannyBorder, EqualsReference) {
  Random random;
  const std::pair<int, int> kernels[] = {
      {zebFilterSobel, zebMskSize3x3}, {zebFilterSobel, zebMskSize5x5}, {zebFilterScharr, zebMskSize3x3}};
  int round = 0;
  for (const auto& [filter, mask] : kernels)
    for (int norm : {zebNormL1, zebNormL2}) {
      for (int w = 1; w <= 50; ++w)
        checkBorder(w, 1 + w % 7, filter, mask,
                    w % 3 == 0   ? zebBorderConst
                    : w % 3 == 1 ? zebBorderRepl
                                 : zebBorderInMem,
                    norm, round++, random);
      for (int base : {zebBorderConst, zebBorderRepl, zebBorderInMem})
        for (int flags = 0; flags < 16; ++flags)
          checkBorder(random.within(1, 40), random.within(1, 9), filter, mask, base | flags << 4, norm, round++,
                      random);
      checkBorder(200, 90, filter, mask, zebBorderRepl, norm, round++, random);
    }
}

// Pixels that are not in memory by the border's word are not read: the region stands alone between its pages.
TEST(CannyBorder, ReadsNothingOutside) {
  Random random;
  for (Place place : {Place::front, Place::back}) {
    const Image<Zeb8u> src(45, 9, 1, {place, 0, 0}, Content::noise, random);
    Image<Zeb8u> dst(45, 9, 1, {});
    Scratch scratch(20000);
    for (int border : {zebBorderConst, zebBorderRepl})
      for (int mask : {zebMskSize3x3, zebMskSize5x5})
        ASSERT_EQ(zebiCannyBorder_8u_C1R(src.pixels(), src.step(), dst.pixels(), dst.step(), src.size(), zebFilterSobel,
                                         mask, border, 7, 10, 20, zebNormL1, scratch.get()),
                  zebStsOk);
  }
}

TEST(CannyBorder, InPlace) {
  Random random;
  Image<Zeb8u> image(61, 33, 1, {}, Content::runs, random);
  const auto before = image.plane();
  Scratch scratch((35 + 16 + 140) * 63 + 64);
  ASSERT_EQ(zebiCannyBorder_8u_C1R(image.pixels(), image.step(), image.pixels(), image.step(), image.size(),
                                   zebFilterSobel, zebMskSize3x3, zebBorderRepl, 0, 100, 200, zebNormL2, scratch.get()),
            zebStsOk);
  const auto g = ref::gradient<Zeb8u, Zeb16s>(ref::bordered<Zeb8u>(before, 0, 0, image.size(), zebBorderRepl, 0),
                                              image.size(), zebFilterSobel, 3);
  EXPECT_TRUE(agree("zebiCannyBorder_8u_C1R", image, ref::canny(g, 100, 200, CannyKind::borderL2)));
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
