#include <gtest/gtest.h>
#include <string.h>

#include <vector>

#include "support/record.h"
#include "zebcv.h"

namespace {

TEST(MorphAdv, SizesAndHeader) {
  int spec = 0, buffer = 0, s = 0, b = 0;
  ASSERT_EQ(zebiMorphologyBorderGetSize_16u_C1R(100, {5, 4}, &s, &b), zebStsOk);
  ASSERT_EQ(zebiMorphAdvGetSize_16u_C1R({100, 50}, {5, 4}, &spec, &buffer), zebStsOk);
  EXPECT_EQ(spec, 2 * s + static_cast<int>(test::morphAdvState(nullptr).bytes()));
  EXPECT_EQ(buffer, ((100 + 5 + 30) & ~31) * (50 + 4 - 1) + 2 * b);
  const Zeb8u mask[20] = {1, 1, 1};
  ZebiMorphAdvState* state = nullptr;
  ASSERT_EQ(zebiMorphAdvInitAlloc_16u_C1R(&state, {100, 50}, mask, {5, 4}, {1, 0}), zebStsOk);
  const test::Record record = test::morphAdvState(state);
  EXPECT_EQ(record.word<unsigned>(3), ((100u + 5 + 30) & ~31) * (50 + 4 - 1) * 2);
  // The erosion's rectangle begins at the anchor's left; the dilation's is its reflection.
  for (size_t operation = 0; operation < 2; ++operation) {
    const test::Record one = test::morphState(record.pointer<void>(operation));
    EXPECT_EQ(one.word(7), 1) << operation;
    EXPECT_EQ(one.word(8), 0) << operation;
  }
  EXPECT_NE(record.address(2), 0u);
  // A state is for regions of its size at most; its intermediate images must be counted in 32 bits.
  std::vector<Zeb16u> pixels(101 * 3);
  std::vector<Zeb8u> scratch(static_cast<size_t>(buffer));
  const auto open = [&](ZebiSize size) {
    return zebiMorphOpenBorder_16u_C1R(pixels.data(), 202, pixels.data(), 202, size, zebBorderRepl, 0, state,
                                       scratch.data());
  };
  EXPECT_EQ(open({101, 3}), zebStsErrSize);
  EXPECT_EQ(open({100, 100000}), zebStsErrSize);
  zebiMorphAdvFree(state);
  int untouched = 5;
  EXPECT_EQ(zebiMorphAdvGetSize_8u_C1R({60000, 60000}, {3, 3}, &untouched, &untouched), zebStsErrOverflow);
  EXPECT_EQ(zebiMorphAdvInitAlloc_8u_C1R(&state, {60000, 60000}, mask, {3, 3}, {1, 1}), zebStsErrOverflow);
  EXPECT_EQ(untouched, 5);
}

}  // namespace
