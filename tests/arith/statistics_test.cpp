// Statistics of images that are larger than any driver makes.
#include "reference/statistics.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <utility>

#include "support/image.h"

namespace {

template <class T>
struct Picture {
  ZebiSize size;
  std::vector<T> pixels;
  Picture(int width, int height, T value)
      : size{width, height}, pixels(static_cast<size_t>(width) * static_cast<size_t>(height), value) {}
  const T* data() const { return pixels.data(); }
  int step() const { return size.width * static_cast<int>(sizeof(T)); }
  ref::Plane<T> plane() const {
    ref::Plane<T> p(size.width, size.height);
    p.data = pixels;
    return p;
  }
};

// No lane wraps where every pixel is as large as can be.
TEST(Statistics, SumsOfTheLargestBytes) {
  const Picture<Zeb8u> white(32768, 2048, 255), black(32768, 2048, 0);
  Zeb64f l1 = 0, l2 = 0, distance = 0, mean = 0, deviation = 1;
  ASSERT_EQ(zebiNorm_L1_8u_C1R(white.data(), white.step(), white.size, &l1), zebStsOk);
  ASSERT_EQ(zebiNorm_L2_8u_C1R(white.data(), white.step(), white.size, &l2), zebStsOk);
  ASSERT_EQ(zebiNormDiff_L2_8u_C1R(black.data(), black.step(), white.data(), white.step(), white.size, &distance),
            zebStsOk);
  ASSERT_EQ(zebiMean_StdDev_8u_C1R(white.data(), white.step(), white.size, &mean, &deviation), zebStsOk);
  EXPECT_EQ(l1, 255.0 * 32768 * 2048);
  EXPECT_EQ(l2, 255.0 * 8192);
  EXPECT_EQ(distance, 255.0 * 8192);
  EXPECT_EQ(mean, 255);
  EXPECT_EQ(deviation, 0);
  Picture<Zeb8s> ends(32768, 2048, -128);
  for (size_t i = 1; i < ends.pixels.size(); i += 2) ends.pixels[i] = 127;
  ASSERT_EQ(zebiMean_StdDev_8s_C1R(ends.data(), ends.step(), ends.size, &mean, &deviation), zebStsOk);
  EXPECT_EQ(mean, -0.5);
  EXPECT_EQ(deviation, 127.5);
}

TEST(Statistics, SumsOfTheLargestWords) {
  constexpr int n = 1 << 20;
  const Picture<Zeb16u> white(n, 1, 65535), black(n, 1, 0);
  const Picture<Zeb8u> mask(n, 1, 255);
  Zeb64f l1 = 0, l2 = 0, distance = 0, masked = 0, mean = 0, deviation = 1;
  ASSERT_EQ(zebiNorm_L1_16u_C1R(white.data(), white.step(), white.size, &l1), zebStsOk);
  ASSERT_EQ(zebiNorm_L2_16u_C1R(white.data(), white.step(), white.size, &l2), zebStsOk);
  ASSERT_EQ(zebiNormDiff_L2_16u_C1R(white.data(), white.step(), black.data(), black.step(), white.size, &distance),
            zebStsOk);
  ASSERT_EQ(zebiNorm_L2_16u_C1MR(white.data(), white.step(), mask.data(), mask.step(), white.size, &masked), zebStsOk);
  ASSERT_EQ(zebiMean_StdDev_16u_C1R(white.data(), white.step(), white.size, &mean, &deviation), zebStsOk);
  EXPECT_EQ(l1, 65535.0 * n);
  EXPECT_EQ(l2, 65535.0 * 1024);
  EXPECT_EQ(distance, 65535.0 * 1024);
  EXPECT_EQ(masked, 65535.0 * 1024);
  EXPECT_EQ(mean, 65535);
  EXPECT_EQ(deviation, 0);
  ASSERT_EQ(zebiNorm_L2_16u_C1R(black.data(), black.step(), black.size, &l2), zebStsOk);
  EXPECT_EQ(l2, 0);
}

// n S2 - S1 S1 takes more than 64 bits here, and is rounded once.
TEST(Statistics, DeviationOfManyWords) {
  test::Random random(5);
  for (const int width : {700, 1024, 2040}) {
    Picture<Zeb16u> noise(width, 511, 0);
    for (Zeb16u& v : noise.pixels) v = test::noiseValue<Zeb16u>(random);
    const auto want = ref::meanAndDeviation(noise.plane(), {});
    Zeb64f mean = 0, deviation = 0;
    ASSERT_EQ(zebiMean_StdDev_16u_C1R(noise.data(), noise.step(), noise.size, &mean, &deviation), zebStsOk);
    EXPECT_EQ(mean, want.mean);
    EXPECT_EQ(deviation, want.deviation) << width;
  }
  // All bits between those of a double and the last 64 are those of a tie in the first of these; what lies behind them
  // decides. In the second one all 64 bits are taken, and none behind them.
  for (const auto& [pixels, white] : {std::pair(200000, 84309), std::pair(100000, 50001)}) {
    Picture<Zeb16u> halves(pixels, 1, 0);
    std::fill_n(halves.pixels.begin(), white, Zeb16u(65535));
    Zeb64f deviation = 0;
    ASSERT_EQ(zebiMean_StdDev_16u_C1R(halves.data(), halves.step(), halves.size, nullptr, &deviation), zebStsOk);
    EXPECT_EQ(deviation, ref::meanAndDeviation(halves.plane(), {}).deviation) << pixels;
  }
}

// The sample taken off beforehand keeps a small deviation beside a large mean.
TEST(Statistics, FloatsFarFromZero) {
  Picture<Zeb32f> picture(1000, 1000, 0.1f);
  Zeb64f mean = 0, deviation = 1;
  ASSERT_EQ(zebiMean_StdDev_32f_C1R(picture.data(), picture.step(), picture.size, &mean, &deviation), zebStsOk);
  EXPECT_EQ(mean, static_cast<Zeb64f>(0.1f));
  EXPECT_EQ(deviation, 0);
  for (size_t i = 0; i < picture.pixels.size(); ++i) picture.pixels[i] = i % 2 ? 1e6f : 1e6f + 0.0625f;
  ASSERT_EQ(zebiMean_StdDev_32f_C1R(picture.data(), picture.step(), picture.size, &mean, &deviation), zebStsOk);
  EXPECT_EQ(mean, 1e6 + 0.03125);
  EXPECT_EQ(deviation, 0.03125);
}

// The first of equals, wherever the runs of a large image end.
TEST(Statistics, PlacesInALargeImage) {
  Picture<Zeb8u> picture(1920, 1080, 7);
  const ZebiSize size = picture.size;
  Zeb32f least = 0, most = 0;
  ZebiPoint leastAt, mostAt;
  const auto at = [&](int x, int y) -> Zeb8u& { return picture.pixels[static_cast<size_t>(y) * 1920 + x]; };
  at(1919, 1079) = 255;
  at(5, 900) = at(4, 900) = at(1900, 300) = 3;
  ASSERT_EQ(zebiMinMaxIndx_8u_C1R(picture.data(), picture.step(), size, &least, &most, &leastAt, &mostAt), zebStsOk);
  EXPECT_EQ(least, 3);
  EXPECT_EQ(leastAt.x, 1900);
  EXPECT_EQ(leastAt.y, 300);
  EXPECT_EQ(most, 255);
  EXPECT_EQ(mostAt.x, 1919);
  EXPECT_EQ(mostAt.y, 1079);
}

}  // namespace
