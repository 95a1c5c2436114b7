// Chamfer distance transforms and their weights.
#include "reference/distance.h"
#include "segment/features.h"
#include "support/compare.h"
#include "support/contract.h"

namespace {

using namespace test;
using ref::Plane;

template <class T, class W>
using Transform = ZebStatus (*)(const Zeb8u*, int, T*, int, ZebiSize, const W*);

// Images of several strips and chunks, whose inner parts go another way than their edges, with distances and weights
// whose multiples reach the end of the type on the way.
template <class Sum, class T, class W>
void largeImages(const char* name, Transform<T, W> function, int mask, const std::vector<std::vector<W>>& weights) {
  Random random;
  for (const ZebiSize size : {ZebiSize{200, 17}, ZebiSize{331, 24}, ZebiSize{97, 90}, ZebiSize{600, 9}})
    for (Features kind : {Features::one, Features::sparse, Features::columns})
      for (const std::vector<W>& w : weights) {
        const auto picture = features(kind, size, random);
        const Image<Zeb8u> src(picture, Layout::random<Zeb8u>(random));
        const Image<T> dst(size.width, size.height, 1, Layout::random<T>(random));
        ASSERT_EQ(function(src.pixels(), src.step(), dst.pixels(), dst.step(), size, w.data()), zebStsOk);
        ASSERT_TRUE(agree(name, dst, ref::chamfer<T, Sum>(picture, mask, w.data())))
            << size.width << " x " << size.height << ", weights " << w[0] << ' ' << w[1];
      }
}

TEST(Chamfer, LargeImages) {
  const std::vector<std::vector<Zeb32s>> integers = {{1, 2, 3},     {40, 57, 90},        {3, 200, 1},
                                                     {255, 1, 300}, {5000, 7100, 11000}, {65535, 65536, 40000}};
  const std::vector<std::vector<Zeb32f>> reals = {
      {0.955f, 1.3693f, 2.1969f}, {0.1f, 0.141f, 0.2f}, {3.3f, 0.7f, 0.3f}, {1e32f, 2e33f, 3e38f}};
  largeImages<long long>(NAMED(zebiDistanceTransform_3x3_8u_C1R), 3, integers);
  largeImages<long long>(NAMED(zebiDistanceTransform_5x5_8u_C1R), 5, integers);
  largeImages<long long>(NAMED(zebiDistanceTransform_3x3_8u16u_C1R), 3, integers);
  largeImages<long long>(NAMED(zebiDistanceTransform_5x5_8u16u_C1R), 5, integers);
  largeImages<Zeb32f>(NAMED(zebiDistanceTransform_3x3_8u32f_C1R), 3, reals);
  largeImages<Zeb32f>(NAMED(zebiDistanceTransform_5x5_8u32f_C1R), 5, reals);
}

// City blocks and the chessboard about one feature, and the ends of the scale.
TEST(Chamfer, KnownDistances) {
  Plane<Zeb8u> picture(41, 33, 1, 1);
  picture.at(17, 20) = 0;
  const Image<Zeb8u> src(picture, {});
  Image<Zeb8u> bytes(41, 33, 1, {});
  Image<Zeb32f> floats(41, 33, 1, {});
  const Zeb32s chessboard[] = {1, 1};
  const Zeb32f blocks[] = {1, 2};
  ASSERT_EQ(
      zebiDistanceTransform_3x3_8u_C1R(src.pixels(), src.step(), bytes.pixels(), bytes.step(), src.size(), chessboard),
      zebStsOk);
  ASSERT_EQ(
      zebiDistanceTransform_3x3_8u32f_C1R(src.pixels(), src.step(), floats.pixels(), floats.step(), src.size(), blocks),
      zebStsOk);
  for (int y = 0; y < 33; ++y)
    for (int x = 0; x < 41; ++x) {
      ASSERT_EQ(bytes.plane().at(x, y), std::max(std::abs(x - 17), std::abs(y - 20)));
      ASSERT_EQ(floats.plane().at(x, y), std::abs(x - 17) + std::abs(y - 20));
    }
}

TEST(Chamfer, WeightChecks) {
  Zeb32f f[3];
  Zeb32s s[3];
  Contract(NAMED(zebiGetDistanceTransformMask_32f), 3, 0, f)
      .nulls<2>()
      .with<0>(4, zebStsErrSize)
      .with<0>(-3, zebStsErrSize)
      .with<1>(3, zebStsErrBadArgument)
      .with<1>(-1, zebStsErrBadArgument)
      .check();
  Contract(NAMED(zebiGetDistanceTransformMask_32s), 5, 2, s)
      .nulls<2>()
      .with<0>(0, zebStsErrSize)
      .with<1>(3, zebStsErrBadArgument)
      .check();
  EXPECT_EQ(zebiGetDistanceTransformMask(40, f), zebStsErrSize);
  EXPECT_EQ(zebiGetDistanceTransformMask(33, f), zebStsErrBadArgument);
  EXPECT_EQ(zebiGetDistanceTransformMask(-31, f), zebStsErrBadArgument);
  EXPECT_EQ(zebiGetDistanceTransformMask(33, nullptr), zebStsErrBadArgument);
  EXPECT_EQ(zebiGetDistanceTransformMask(31, nullptr), zebStsErrNullPointer);
}

constexpr int w = 11, h = 3;

template <class T, class W>
void checks(const char* name, Transform<T, W> function, int mask) {
  constexpr int e = sizeof(T);
  const Image<Zeb8u> src(Plane<Zeb8u>(w, h, 1, 1), {});
  Image<T> dst(w, h, 1, {Place::back, 4 * e, 0});
  const W good[3] = {W(1), W(1), W(1)};
  const W bad[][3] = {{W(0), W(1), W(1)}, {W(1), W(0), W(1)}, {W(1), W(-1), W(1)}, {W(1), W(1), W(0)}};
  const W* last = bad[3];
  Contract c(name, function, src.pixels(), src.step(), dst.pixels(), dst.step(), ZebiSize{w, h}, good);
  c.template nulls<0, 2, 5>().template sizes<4>().template step<1>(w).template step<3>(w * e, e).template hostile<4>();
  if (e > 1) c.template multiple<3>(e);
  for (int i = 0; i < 3; ++i) c.template with<5>(static_cast<const W*>(bad[i]), zebStsErrMetric, "weight");
  const W nan = std::is_floating_point_v<W> ? static_cast<W>(std::nan("")) : W(-5);
  const W odd[3] = {nan, W(1), W(1)};
  c.template with<5>(static_cast<const W*>(odd), zebStsErrMetric, "weight");
  if (mask == 5) c.template with<5>(last, zebStsErrMetric, "knight's weight");
  c.check();
  if (mask == 5) return;
  EXPECT_EQ(function(src.pixels(), src.step(), dst.pixels(), dst.step(), {w, h}, last), zebStsOk)
      << "3 x 3 masks have two weights";
}

TEST(Chamfer, Checks) {
  checks(NAMED(zebiDistanceTransform_3x3_8u_C1R), 3);
  checks(NAMED(zebiDistanceTransform_5x5_8u_C1R), 5);
  checks(NAMED(zebiDistanceTransform_3x3_8u16u_C1R), 3);
  checks(NAMED(zebiDistanceTransform_5x5_8u16u_C1R), 5);
  checks(NAMED(zebiDistanceTransform_3x3_8u32f_C1R), 3);
  checks(NAMED(zebiDistanceTransform_5x5_8u32f_C1R), 5);
  const auto inPlace = [](const char* name, auto function) {
    Image<Zeb8u> image(Plane<Zeb8u>(w, h, 1, 1), {});
    const Zeb32s good[3] = {1, 1, 1}, bad[3] = {1, 0, 1};
    Contract(name, function, image.pixels(), image.step(), ZebiSize{w, h}, good)
        .template nulls<0, 3>()
        .template sizes<2>()
        .template step<1>(w)
        .template hostile<2>()
        .template with<3>(static_cast<const Zeb32s*>(bad), zebStsErrMetric, "weight")
        .check();
  };
  inPlace(NAMED(zebiDistanceTransform_3x3_8u_C1IR));
  inPlace(NAMED(zebiDistanceTransform_5x5_8u_C1IR));
}

}  // namespace
