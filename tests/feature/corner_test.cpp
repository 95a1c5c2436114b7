#include <gtest/gtest.h>

#include <vector>

#include "zebcv.h"

namespace {

// The order among the checks of the functions' own.
TEST(CornerResponses, RefuseTheirOwnArgumentsInOrder) {
  const Zeb8u src[4] = {};
  Zeb32f dst[4];
  std::vector<Zeb8u> scratch(20000);
  const auto status = [&](int filter, int mask, int window, Zeb32f k, int border) {
    return zebiHarrisCorner_8u32f_C1R(src, 2, dst, 8, {2, 2}, filter, mask, window, k, border, 0, scratch.data());
  };
  EXPECT_EQ(status(3, 0, 0, 2, 3), zebStsErrFilterType);
  EXPECT_EQ(status(zebFilterScharr, zebMskSize5x5, 3, 2, 3), zebStsErrMaskSize);
  EXPECT_EQ(status(zebFilterScharr, zebMskSize3x3, 256, 2, 3), zebStsErrMaskSize);
  EXPECT_EQ(status(zebFilterScharr, zebMskSize3x3, 3, 2, 3), zebStsErrBadArgument);
  EXPECT_EQ(status(zebFilterScharr, zebMskSize3x3, 3, 1, 3), zebStsErrBorder);
  EXPECT_EQ(status(zebFilterScharr, zebMskSize3x3, 3, 1, 9), zebStsOk);
}

}  // namespace
