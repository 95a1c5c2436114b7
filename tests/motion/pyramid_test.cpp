#include <algorithm>
#include <cstdlib>
#include <limits>

#include "support/contract.h"
#include "support/random.h"
#include "support/zebcore_double.h"

namespace {

using namespace test;

const float rates[] = {1.0000001f, 1.01f, 1.2f, 1.5f, 1.99998f, 2.0f, 2.5f, 3.0f, 7.3f, 10.0f};

// The rules as they are written down, in single precision.
int smallest(int n, float rate) {
  return n == 1 ? 1 : std::max(n + 1, static_cast<int>(static_cast<float>(n - 1) * rate) + 1);
}
int largest(int n, float rate) {
  return std::max(n + 1, static_cast<int>(static_cast<float>(n) * rate));
}

TEST(PyramidSizes, UpRangesFollowTheirFormula) {
  for (float rate : rates)
    for (int n = 1; n < 400; ++n) {
      ZebiSize low = {}, high = {};
      ASSERT_EQ(zebiGetPyramidUpROI({n, 401 - n}, &low, &high, rate), zebStsOk);
      ASSERT_EQ(low.width, smallest(n, rate)) << n << " " << rate;
      ASSERT_EQ(high.width, largest(n, rate)) << n << " " << rate;
      ASSERT_EQ(low.height, smallest(401 - n, rate));
      ASSERT_EQ(high.height, largest(401 - n, rate));
    }
}

TEST(PyramidSizes, DownSizesHaveTheSourceInTheirRange) {
  for (float rate : rates)
    for (int n : {1, 2, 3, 4, 5, 6, 7, 8, 31, 100, 641, 1080, 16777217, 33554431, 2147483647}) {
      ZebiSize down = {};
      ASSERT_EQ(zebiGetPyramidDownROI({n, 5}, &down, rate), zebStsOk);
      ASSERT_GE(down.width, 1);
      ASSERT_LE(down.width, n);
      if (n < 100000) {
        EXPECT_LE(smallest(down.width, rate), n) << n << " " << rate;
        EXPECT_GE(largest(down.width, rate), n) << n << " " << rate;
        EXPECT_LE(std::abs(down.width - std::max(1, static_cast<int>(0.5f + n / rate))), 1) << n << " " << rate;
      }
    }
  ZebiSize down = {};
  ASSERT_EQ(zebiGetPyramidDownROI({5, 9}, &down, 2.0f), zebStsOk);
  EXPECT_EQ(down.width, 3);
  EXPECT_EQ(down.height, 5);
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

TEST(PyramidRecord, ListsLevels) {
  for (float rate : rates)
    for (int level : {1, 3, 1000}) {
      ZebiPyramid* pyramid = nullptr;
      ASSERT_EQ(zebiPyramidInitAlloc(&pyramid, level, {61, 7}, rate), zebStsOk);
      ASSERT_LE(pyramid->level, level);
      ASSERT_EQ(pyramid->pRoi[0].width, 61);
      ASSERT_EQ(pyramid->pRoi[0].height, 7);
      EXPECT_EQ(pyramid->pState, nullptr);
      double scale = 1.0;
      for (int i = 0; i <= pyramid->level; ++i, scale *= 1.0 / static_cast<double>(rate)) {
        EXPECT_EQ(pyramid->pRate[i], scale);
        EXPECT_EQ(pyramid->pImage[i], nullptr);
        EXPECT_EQ(pyramid->pStep[i], 0);
        if (i == 0) continue;
        ZebiSize down = {};
        ASSERT_EQ(zebiGetPyramidDownROI(pyramid->pRoi[i - 1], &down, rate), zebStsOk);
        EXPECT_EQ(pyramid->pRoi[i].width, down.width);
        EXPECT_EQ(pyramid->pRoi[i].height, down.height);
      }
      const ZebiSize last = pyramid->pRoi[pyramid->level];
      EXPECT_TRUE(pyramid->level == level || (last.width == 1 && last.height == 1));
      EXPECT_EQ(zebiPyramidFree(pyramid), zebStsOk);
    }
}

TEST(PyramidRecord, ChecksArgumentsAndLeavesNothingBehind) {
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
  zebcore().reset();
  const int before = zebcore().liveBlocks;
  for (int failing : {0, 1}) {
    pyramid = nullptr;
    zebcore().failMallocAt = failing;
    EXPECT_EQ(zebiPyramidInitAlloc(&pyramid, 3, {9, 9}, 2.0f), zebStsErrMemAlloc);
    EXPECT_EQ(pyramid, nullptr);
    EXPECT_EQ(zebcore().liveBlocks, before);
    zebcore().reset();
  }
  EXPECT_EQ(zebiPyramidInitAlloc(&pyramid, 3, {0x7FFFFFFF, 1}, 2.0f), zebStsErrMemAlloc);
}

}  // namespace
