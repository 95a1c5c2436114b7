// The comparator and the guarded images must see every fault that they are there for.
#include "support/compare.h"

namespace {

using namespace test;
using ref::Plane;

TEST(Support, ComparatorSeesEveryDifference) {
  const float nan = std::numeric_limits<float>::quiet_NaN();
  EXPECT_TRUE(same(nan, nan));
  EXPECT_TRUE(same(nan, -nan));
  EXPECT_FALSE(same(nan, 1.0f));
  EXPECT_FALSE(same(0.0f, -0.0f));
  EXPECT_FALSE(same(Zeb8s(-128), Zeb8s(127)));
  EXPECT_FALSE(near(nan, 0.0f, 1e30));
  EXPECT_FALSE(near(INFINITY, 1e38f, 1e39));
  EXPECT_FALSE(near(INFINITY, -INFINITY, 1e39));
  EXPECT_FALSE(near(Zeb8s(-128), Zeb8s(127), 254));
  EXPECT_TRUE(near(1.0f, 1.25f, 0.25));
  for (int at = 0; at < 3 * 5 * 2; ++at) {
    Plane<Zeb8u> a(5, 3, 2, 7), b = a;
    b.data[static_cast<size_t>(at)] ^= 0x80;
    EXPECT_FALSE(agree(a, b)) << at;
  }
  EXPECT_FALSE(agree(Plane<Zeb8u>(3, 2), Plane<Zeb8u>(2, 3)));
  Plane<Zeb8u> a(20, 4), b = a;
  b.at(13, 2) = 9;
  const std::string message = agree(a, b).message();
  EXPECT_NE(message.find("(13, 2)"), std::string::npos) << message;
  EXPECT_NE(message.find("got 0, want 9"), std::string::npos) << message;
}

TEST(Support, GuardedImageSeesEveryStrayByte) {
  for (Place place : {Place::front, Place::back, Place::odd}) {
    Image<Zeb8u> image(5, 3, 1, {place, 4, 9});
    EXPECT_TRUE(image.intact());
    *image.pixels(4, 2) ^= 1;
    EXPECT_TRUE(image.intact()) << "a pixel is no padding";
    for (int y = 0; y < 2; ++y)
      for (int x = 5; x < 9; ++x) {
        *image.pixels(x, y) ^= 1;
        EXPECT_FALSE(image.intact());
        *image.pixels(x, y) ^= 1;
      }
    if (place != Place::front) {
      *image.pixels(-1, 0) ^= 1;
      EXPECT_FALSE(image.intact());
      *image.pixels(-1, 0) ^= 1;
    }
    EXPECT_TRUE(image.intact());
  }
}

TEST(SupportDeathTest, PagesAroundAnImageAreOutOfReach) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  Image<Zeb8u> back(5, 3, 1, {Place::back, 4, 9}), front(5, 3, 1, {Place::front, 4, 9});
  EXPECT_DEATH(*const_cast<volatile Zeb8u*>(back.pixels(5, 2)) = 1, "");
  EXPECT_DEATH(*const_cast<volatile Zeb8u*>(front.pixels(-1, 0)) = 1, "");
}

}  // namespace
