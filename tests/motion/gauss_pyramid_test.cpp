// Scratch sizes of halving and doubling.
#include <gtest/gtest.h>

#include "zebcv.h"

namespace {

TEST(GaussPyramid, ReportsScratchSizes) {
  struct Query {
    ZebStatus (*call)(int, ZebDataType, int, int*);
    int unit, per16;
  };
  for (const Query& q : {Query{zebiPyrDownGetBufSize_Gauss5x5, 4, 96}, {zebiPyrUpGetBufSize_Gauss5x5, 8, 48}}) {
    int size = 0;
    for (int w : {1, 2, 5, 640, 100001}) {
      ASSERT_EQ(q.call(w, zeb8s, 3, &size), zebStsOk);
      EXPECT_EQ(size, (w * q.unit * 3 + 15) / 16 * q.per16 + 64) << w;
    }
    size = -7;
    EXPECT_EQ(q.call(INT32_MAX, zeb8u, 1, &size), zebStsErrOverflow);
    EXPECT_EQ(q.call(10, zeb8u, 4, &size), zebStsErrNumChannels);
    EXPECT_EQ(q.call(10, zeb16u, 1, &size), zebStsErrDataType);
    EXPECT_EQ(size, -7);
  }
}

}  // namespace
