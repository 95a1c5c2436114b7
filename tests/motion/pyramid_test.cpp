#include <algorithm>
#include <cstdlib>
#include <limits>

#include "support/contract.h"

namespace {

using namespace test;

// By hand: at a rate of 2, 2n - 1 and 2n pixels become n.
TEST(PyramidSizes, KnownSizes) {
  ZebiSize down = {}, low = {}, high = {};
  ASSERT_EQ(zebiGetPyramidDownROI({5, 9}, &down, 2.0f), zebStsOk);
  EXPECT_EQ(down.width, 3);
  EXPECT_EQ(down.height, 5);
  ASSERT_EQ(zebiGetPyramidUpROI({1, 5}, &low, &high, 2.0f), zebStsOk);
  EXPECT_EQ(low.width, 1);
  EXPECT_EQ(high.width, 2);
  EXPECT_EQ(low.height, 9);
  EXPECT_EQ(high.height, 10);
}

// The rounded quotient, give or take one; and a search that ends where floats no longer tell lengths apart.
TEST(PyramidSizes, LongSources) {
  for (float rate : {1.0000001f, 1.01f, 1.2f, 1.5f, 1.99998f, 2.0f, 2.5f, 3.0f, 7.3f, 10.0f})
    for (int n : {1, 7, 31, 100, 641, 1080, 16777217, 33554431, 2147483647}) {
      ZebiSize down = {};
      ASSERT_EQ(zebiGetPyramidDownROI({n, 5}, &down, rate), zebStsOk);
      ASSERT_GE(down.width, 1);
      ASSERT_LE(down.width, n);
      if (n < 100000) {
        EXPECT_LE(std::abs(down.width - std::max(1, static_cast<int>(0.5f + n / rate))), 1) << n << " " << rate;
      }
    }
}

TEST(PyramidSizes, ChecksArgumentsInOrder) {
  ZebiSize a = {}, b = {};
  const float nan = std::numeric_limits<float>::quiet_NaN();
  Contract(NAMED(zebiGetPyramidDownROI), ZebiSize{7, 8}, &a, 2.0f)
      .nulls<1>()
      .sizes<0>()
      .with<2>(1.0f, zebStsErrBadArgument)
      .with<2>(10.01f, zebStsErrBadArgument)
      .with<2>(nan, zebStsErrBadArgument)
      .check();
  Contract(NAMED(zebiGetPyramidUpROI), ZebiSize{7, 8}, &a, &b, 2.0f)
      .nulls<1, 2>()
      .sizes<0>()
      .with<3>(1.0f, zebStsErrBadArgument)
      .with<3>(10.01f, zebStsErrBadArgument)
      .with<3>(nan, zebStsErrBadArgument)
      .with<0>(ZebiSize{0x7FFFFFFF, 1}, zebStsErrOverflow)
      .with<0>(ZebiSize{1, 0x40000001}, zebStsErrOverflow)
      .check();
}

TEST(PyramidRecord, ChecksArgumentsInOrder) {
  EXPECT_EQ(zebiPyramidFree(nullptr), zebStsErrNullPointer);
  ZebiPyramid* pyramid = nullptr;
  Contract(NAMED(zebiPyramidInitAlloc), &pyramid, 2, ZebiSize{9, 9}, 2.0f)
      .nulls<0>()
      .sizes<2>()
      .with<3>(1.0f, zebStsErrBadArgument)
      .with<3>(std::numeric_limits<float>::quiet_NaN(), zebStsErrBadArgument)
      .with<1>(0, zebStsErrBadArgument)
      .check();
  EXPECT_EQ(zebiPyramidFree(pyramid), zebStsOk);
  EXPECT_EQ(zebiPyramidInitAlloc(&pyramid, 3, {0x7FFFFFFF, 1}, 2.0f), zebStsErrMemAlloc);
}

}  // namespace
