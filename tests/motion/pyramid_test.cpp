#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <limits>

#include "zebcv.h"

namespace {

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

TEST(PyramidSizes, RefusesWhatOverflows) {
  ZebiSize a = {}, b = {};
  EXPECT_EQ(zebiGetPyramidUpROI({INT32_MAX, 1}, &a, &b, 2), zebStsErrOverflow);
  EXPECT_EQ(zebiGetPyramidUpROI({1, 0x40000001}, &a, &b, 2), zebStsErrOverflow);
  ZebiPyramid* pyramid = nullptr;
  EXPECT_EQ(zebiPyramidInitAlloc(&pyramid, 3, {INT32_MAX, 1}, 2), zebStsErrMemAlloc);
  EXPECT_EQ(pyramid, nullptr);
}

}  // namespace
