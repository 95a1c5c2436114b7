// Row and column filters against their definition, their rounding, checks and scratch sizes.
#include "filter/kernels.h"
#include "support/compare.h"

namespace {

using namespace test;
// ---- Rounding: an image of ones under one tap of 2 n + 1 and divisor 2 gives n + 0.5 everywhere ----

TEST(RowFilter, BordersTruncateAndTheRestRoundsToEven) {
  const auto rows = [](int width, int taps, int anchor, Zeb16s tap, ZebiBorderType type) {
    std::vector<Zeb8u> src(width + taps, 1), buffer(4096);
    std::vector<Zeb16s> kernel(taps), dst(width, -1);
    kernel[anchor] = tap;
    Zeb16s* row = dst.data();
    EXPECT_EQ(zebiFilterRowBorderPipeline_8u16s_C1R(src.data() + anchor, width, &row, {width, 1}, kernel.data(), taps,
                                                    anchor, type, 1, 2, buffer.data()),
              zebStsOk);
    return dst;
  };
  const auto parts = [](int left, int inner, int right, Zeb16s border, Zeb16s rounded) {
    std::vector<Zeb16s> row(left, border);
    row.resize(left + inner, rounded);
    row.resize(left + inner + right, border);
    return row;
  };
  for (ZebiBorderType type : {zebBorderConst, zebBorderRepl, zebBorderInMem}) {
    EXPECT_EQ(rows(40, 5, 1, 3, type), parts(1, 36, 3, 1, 2));
    EXPECT_EQ(rows(40, 5, 4, 5, type), parts(4, 36, 0, 2, 2));     // 2.5: ties to even
    EXPECT_EQ(rows(40, 5, 0, -3, type), parts(0, 36, 4, -1, -2));  // -1.5
    EXPECT_EQ(rows(9, 4, 2, 3, type), parts(2, 6, 1, 1, 2));       // short rows too
    EXPECT_EQ(rows(16, 3, 1, 3, type), parts(1, 14, 1, 1, 1));     // but not under three taps
    EXPECT_EQ(rows(17, 3, 1, 3, type), parts(1, 15, 1, 1, 2));
    EXPECT_EQ(rows(12, 1, 0, 3, type), parts(0, 12, 0, 1, 2));  // no border at all
    EXPECT_EQ(rows(4, 5, 2, 3, type), parts(2, 0, 2, 1, 2));    // nothing but border
  }
}

TEST(ColumnFilter, WholeBlocksRoundToEvenAndTheirRestTruncates) {
  const auto column = [](int width, Zeb16s tap) {
    const std::vector<Zeb16s> ones(3 * width, 1), kernel{0, tap, 0};
    const Zeb16s* rows[] = {ones.data(), ones.data(), ones.data()};
    std::vector<Zeb8s> dst(3 * width);
    std::vector<Zeb8u> buffer(65536);
    EXPECT_EQ(
        zebiFilterColumnPipeline_16s8s_C3R(rows, dst.data(), 3 * width, {width, 1}, kernel.data(), 3, 2, buffer.data()),
        zebStsOk);
    return dst;
  };
  const auto parts = [](int blocks, int rest, Zeb8s rounded, Zeb8s truncated) {
    std::vector<Zeb8s> row(16 * blocks, rounded);
    row.resize(16 * blocks + rest, truncated);
    return row;
  };
  EXPECT_EQ(column(11, 3), parts(2, 1, 2, 1));  // 33 elements
  EXPECT_EQ(column(11, -3), parts(2, 1, -2, -1));
  EXPECT_EQ(column(11, 5), parts(2, 1, 2, 2));
  EXPECT_EQ(column(5, 3), parts(0, 15, 2, 1));
  EXPECT_EQ(column(16, 3), parts(3, 0, 2, 1));
}

// Sums next to 2^31, under divisors that leave them there, saturate to the right side.
TEST(RowFilter, LargestSumsSaturateUpwards) {
  const std::vector<Zeb16s> src(40, -32768), kernel{-32768, -32767, -1, 0, 0, 0};
  std::vector<Zeb16s> dst(40);
  std::vector<Zeb8u> buffer(4096);
  Zeb16s* row = dst.data();
  // 2^31 - 32768 is 2147450880; one tap of -1 more would wrap.
  for (int divisor : {1, -1}) {
    ASSERT_EQ(zebiFilterRowBorderPipeline_16s_C1R(src.data(), 80, &row, {40, 1}, kernel.data(), 2, 0, zebBorderRepl, 0,
                                                  divisor, buffer.data()),
              zebStsOk);
    EXPECT_EQ(dst, std::vector<Zeb16s>(40, divisor == 1 ? 32767 : -32768));
  }
  const std::vector<Zeb16s> most{32767, 32767, 1, 1, 1, 1};  // -65538 x 32768 wraps to 2^31 - 65536
  ASSERT_EQ(zebiFilterRowBorderPipeline_16s_C1R(src.data(), 80, &row, {40, 1}, most.data(), 6, 0, zebBorderRepl, 0, 1,
                                                buffer.data()),
            zebStsOk);
  EXPECT_EQ(dst, std::vector<Zeb16s>(40, 32767));
  const std::vector<Zeb16s> exactly{32767, 32767, 2};  // -2^31, whose negative is 2^31
  ASSERT_EQ(zebiFilterRowBorderPipeline_16s_C1R(src.data(), 80, &row, {40, 1}, exactly.data(), 3, 0, zebBorderRepl, 0,
                                                -1, buffer.data()),
            zebStsOk);
  EXPECT_EQ(dst, std::vector<Zeb16s>(40, 32767));
}

}  // namespace
