// Fast marching.
#include "segment/marching.h"

#include "segment/features.h"

namespace {

using namespace test;
using ref::Plane;

int bufferSize(ZebiSize size) {
  int bytes = 0;
  EXPECT_EQ(zebiFastMarchingGetBufferSize_8u32f_C1R(size, &bytes), zebStsOk);
  return bytes;
}

void check(const Plane<Zeb8u>& picture, Zeb32f radius, Random& random) {
  const Image<Zeb8u> src(picture, Layout::random<Zeb8u>(random));
  Image<Zeb32f> dst(picture.width, picture.height, 1, Layout::random<Zeb32f>(random));
  const test::Scratch scratch(bufferSize(src.size()));
  ASSERT_EQ(
      zebiFastMarching_8u32f_C1R(src.pixels(), src.step(), dst.pixels(), dst.step(), src.size(), radius, scratch.get()),
      zebStsOk);
  ASSERT_TRUE(scratch.intact());
  ASSERT_TRUE(agreesWithMarching(dst.plane(), picture, radius));
  ASSERT_TRUE(dst.intact());
}

// Tiles below each other as well as side by side, whole ones and narrow rests, bands that end in another tile.
TEST(FastMarching, SeveralTiles) {
  Random random;
  for (const ZebiSize size : {ZebiSize{64, 64}, ZebiSize{65, 66}, ZebiSize{20, 150}, ZebiSize{170, 140}})
    for (Features kind : {Features::none, Features::one, Features::sparse, Features::blobs})
      for (const bool inverted : {false, true}) {
        auto picture = features(kind, size, random);
        if (inverted)
          for (Zeb8u& v : picture.data) v = v ? 0 : 7;
        for (Zeb32f radius : {20.0f, 150.0f}) check(picture, radius, random);
        ASSERT_FALSE(HasFatalFailure()) << size.width << " x " << size.height << ", inverted " << inverted;
      }
}

// One corner decides everything: distances cross all tiles.
TEST(FastMarching, FarFromTheBoundary) {
  Random random;
  for (const bool inside : {true, false}) {
    Plane<Zeb8u> picture(130, 100, 1, inside ? 1 : 0);
    if (inside) picture.at(0, 99) = 0;
    check(picture, 1000, random);
    if (!inside) picture.at(129, 0) = 9;
    check(picture, 1000, random);
    ASSERT_FALSE(HasFatalFailure());
  }
}

TEST(FastMarching, KnownDistances) {
  const auto run = [](std::vector<Zeb8u> row, Zeb32f radius) {
    const ZebiSize size{static_cast<int>(row.size()), 1};
    std::vector<Zeb32f> out(row.size());
    const test::Scratch scratch(bufferSize(size));
    EXPECT_EQ(
        zebiFastMarching_8u32f_C1R(row.data(), size.width, out.data(), 4 * size.width, size, radius, scratch.get()),
        zebStsOk);
    return out;
  };
  EXPECT_EQ(run({0, 0, 0, 0, 5, 6, 7}, 2), (std::vector<Zeb32f>{0, -2, -1, -1e-10f, 1, 2, 3}));
  EXPECT_EQ(run({0, 0, 1, 1, 1, 0}, 0), (std::vector<Zeb32f>{0, -1e-10f, 1, 2, 1, -1e-10f}));
  EXPECT_EQ(run({0, 0, 1, 0}, std::nanf("")), (std::vector<Zeb32f>{0, -1e-10f, 1, -1e-10f}));
  EXPECT_EQ(run({0, 0, 0}, 5), (std::vector<Zeb32f>{0, 0, 0}));
  EXPECT_EQ(run({1, 1, 1}, 5), (std::vector<Zeb32f>{1000000, 1000001, 1000002}));
}

TEST(FastMarching, BufferSizes) {
  EXPECT_EQ(bufferSize({1, 1}), 35 * 37 + 40);
  EXPECT_EQ(bufferSize({33, 6}), 40 * 69 + 40);
  int bytes = -1;
  EXPECT_EQ(zebiFastMarchingGetBufferSize_8u32f_C1R({0, 4}, nullptr), zebStsErrNullPointer);
  EXPECT_EQ(zebiFastMarchingGetBufferSize_8u32f_C1R({0, 4}, &bytes), zebStsErrSize);
  EXPECT_EQ(zebiFastMarchingGetBufferSize_8u32f_C1R({4, -4}, &bytes), zebStsErrSize);
  EXPECT_EQ(zebiFastMarchingGetBufferSize_8u32f_C1R({0x7FFFFFFF, 4}, &bytes), zebStsErrOverflow);
  EXPECT_EQ(zebiFastMarchingGetBufferSize_8u32f_C1R({0x7FFFFFFF, 0x7FFFFFFF}, &bytes), zebStsErrOverflow);
  EXPECT_EQ(bytes, -1);
}

}  // namespace
