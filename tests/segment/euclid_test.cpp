// The exact Euclidean distance transform.
#include "reference/distance.h"
#include "segment/features.h"
#include "support/compare.h"

namespace {

using namespace test;
using ref::Plane;

constexpr const char* name = "zebiTrueDistanceTransform_8u32f_C1R";

int bufferSize(ZebiSize size) {
  int bytes = 0;
  EXPECT_EQ(zebiTrueDistanceTransformGetBufferSize_8u32f_C1R(size, &bytes), zebStsOk);
  return bytes;
}

testing::AssertionResult equalsReference(const Plane<Zeb8u>& picture, Random& random) {
  const Image<Zeb8u> src(picture, Layout::random<Zeb8u>(random));
  Image<Zeb32f> dst(picture.width, picture.height, 1, Layout::random<Zeb32f>(random));
  const test::Scratch scratch(bufferSize(src.size()), random.within(0, 1) ? Place::back : Place::front);
  const ZebStatus status = zebiTrueDistanceTransform_8u32f_C1R(src.pixels(), src.step(), dst.pixels(), dst.step(),
                                                               src.size(), scratch.get());
  if (status != zebStsOk) return testing::AssertionFailure() << "status " << status;
  if (!scratch.intact()) return testing::AssertionFailure() << "wrote outside the buffer";
  return agree(name, dst, ref::euclid(picture));
}

// Near features in some rows, none in others, so that a row changes between the two ways of finding its minima; a few
// features in images whose squares need more than 24, 30 and 32 bits.
TEST(Euclid, FarFeatures) {
  Random random;
  for (const ZebiSize size : {ZebiSize{700, 60}, ZebiSize{3001, 3}, ZebiSize{5200, 61}, ZebiSize{2, 5003},
                              ZebiSize{23000, 2}, ZebiSize{32748, 2}, ZebiSize{32760, 3}, ZebiSize{40009, 3},
                              ZebiSize{3, 40013}, ZebiSize{1, 70001}, ZebiSize{100003, 1}}) {
    Plane<Zeb8u> picture(size.width, size.height, 1, 1);
    for (int i = 0; i < 6; ++i) picture.at(random.within(0, size.width - 1), random.within(0, size.height - 1)) = 0;
    for (int x = 0; x < size.width && size.height == 60; x += 9) picture.at(x, 20) = 0;
    EXPECT_TRUE(equalsReference(picture, random)) << size.width << " x " << size.height;
    std::fill(picture.data.begin(), picture.data.end(), Zeb8u(1));
    picture.at(size.width - 1, size.height - 1) = 0;
    EXPECT_TRUE(equalsReference(picture, random)) << size.width << " x " << size.height << ", one feature";
  }
}

// Two features whose bisector passes through pixels: a boundary rounded to the wrong side would show.
TEST(Euclid, BoundariesThroughPixels) {
  Random random;
  for (int i = 0; i < 300; ++i) {
    Plane<Zeb8u> picture(random.within(150, 700), random.within(1, 9), 1, 1);
    for (int k = 0; k < 3; ++k)
      picture.at(random.within(0, picture.width - 1), random.within(0, picture.height - 1)) = 0;
    ASSERT_TRUE(equalsReference(picture, random)) << i;
  }
}

TEST(Euclid, BufferSizes) {
  EXPECT_EQ(bufferSize({1, 1}), 24 * 4 + 56);
  EXPECT_EQ(bufferSize({9, 4}), 24 * 12 + 56);
  EXPECT_EQ(bufferSize({4, 17}), 24 * 20 + 56);
  int bytes = -1;
  EXPECT_EQ(zebiTrueDistanceTransformGetBufferSize_8u32f_C1R({0, 4}, nullptr), zebStsErrNullPointer);
  EXPECT_EQ(zebiTrueDistanceTransformGetBufferSize_8u32f_C1R({0, 4}, &bytes), zebStsErrSize);
  EXPECT_EQ(zebiTrueDistanceTransformGetBufferSize_8u32f_C1R({4, -4}, &bytes), zebStsErrSize);
  EXPECT_EQ(zebiTrueDistanceTransformGetBufferSize_8u32f_C1R({0x7FFFFFFF, 4}, &bytes), zebStsErrOverflow);
  EXPECT_EQ(zebiTrueDistanceTransformGetBufferSize_8u32f_C1R({1, 89478484}, &bytes), zebStsErrOverflow);
  EXPECT_EQ(bytes, -1);
  EXPECT_EQ(bufferSize({89478480, 1}), 2147483576);
}

}  // namespace
