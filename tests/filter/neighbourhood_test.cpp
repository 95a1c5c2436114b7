// Filters with fixed kernels and Gaussian smoothing where no driver reaches: sizes too large for images, zero widths,
// taps of extreme curves, tiles, known ramps.
#include <vector>

#include "support/compare.h"
#include "zebcv.h"

namespace {

using Bytes = std::vector<Zeb8u>;

ZebiFilterGaussianState* stateIn(Bytes& memory) {
  return reinterpret_cast<ZebiFilterGaussianState*>(memory.data());
}

TEST(FixedFilters, QueriesOverflowWithoutWriting) {
  int bytes = 7, state = 7;
  EXPECT_EQ(zebiFilterLaplacianGetBufferSize_32f_C1R({INT32_MAX, 1}, zebMskSize5x5, &bytes), zebStsErrOverflow);
  EXPECT_EQ(zebiFilterGaussianGetBufferSize({1, 1}, INT32_MAX, zeb8u, 1, &state, &bytes), zebStsErrOverflow);
  EXPECT_EQ(zebiFilterGaussianGetBufferSize({INT32_MAX, 1}, 3, zeb32f, 3, &state, &bytes), zebStsErrOverflow);
  // The rows of the widest image under the largest kernels that have a state at all are more than 2^63 bytes.
  for (const int taps : {3, 65537, 383489731, 397133471, 536870903})
    EXPECT_EQ(zebiFilterGaussianGetBufferSize({INT32_MAX, 1}, taps, zeb32f, 3, &state, &bytes), zebStsErrOverflow);
  EXPECT_EQ(bytes, 7);
  EXPECT_EQ(state, 7);
  // Where (2 n + 4) rows of 32-bit words and their margins fit, the query answers.
  EXPECT_EQ(zebiFilterLaplacianGetBufferSize_32f_C1R({38000000, INT32_MAX}, zebMskSize5x5, &bytes), zebStsOk);
}

TEST(FixedFilters, RampsHaveTheirSlopes) {
  const ZebiSize size = {5, 5};
  Zeb8u ramp[5][5];
  for (int y = 0; y < 5; ++y)
    for (int x = 0; x < 5; ++x) ramp[y][x] = static_cast<Zeb8u>(x + 3 * y);
  Zeb16s out[5][5];
  Bytes buffer(8192);
  const int step = 5 * static_cast<int>(sizeof(Zeb16s));
  ASSERT_EQ(zebiFilterSobelHorizBorder_8u16s_C1R(ramp[0], 5, out[0], step, size, zebMskSize5x5, zebBorderRepl, 0,
                                                 buffer.data()),
            zebStsOk);
  EXPECT_EQ(out[2][2], 128);
  ASSERT_EQ(zebiFilterScharrVertBorder_8u16s_C1R(ramp[0], 5, out[0], step, size, zebBorderRepl, 0, buffer.data()),
            zebStsOk);
  EXPECT_EQ(out[2][2], 96);
}

TEST(FixedFilters, TilesAreThePartsOfTheWhole) {
  test::Random random;
  constexpr int w = 61, h = 23, left = 20, top = 9;
  std::vector<Zeb32f> src(w * h), whole(w * h), tiles(w * h);
  for (Zeb32f& v : src) v = random.real(-9, 9);
  Bytes buffer(65536);
  const int step = w * static_cast<int>(sizeof(Zeb32f));
  const auto filter = [&](std::vector<Zeb32f>& out, int x, int y, ZebiSize size, ZebiBorderType border) {
    return zebiFilterLaplacianBorder_32f_C1R(&src[y * w + x], step, &out[y * w + x], step, size, zebMskSize5x5, border,
                                             3, buffer.data());
  };
  constexpr int r = zebBorderConst;
  ASSERT_EQ(filter(whole, 0, 0, {w, h}, r), zebStsOk);
  ASSERT_EQ(filter(tiles, 0, 0, {left, top}, r | zebBorderInMemRight | zebBorderInMemBottom), zebStsOk);
  ASSERT_EQ(filter(tiles, left, 0, {w - left, top}, r | zebBorderInMemLeft | zebBorderInMemBottom), zebStsOk);
  ASSERT_EQ(filter(tiles, 0, top, {left, h - top}, r | zebBorderInMemRight | zebBorderInMemTop), zebStsOk);
  ASSERT_EQ(filter(tiles, left, top, {w - left, h - top}, r | zebBorderInMemLeft | zebBorderInMemTop), zebStsOk);
  EXPECT_EQ(whole, tiles);
}

TEST(Gaussian, ChecksStepsBeforeSizes) {
  Bytes memory(44), buffer(4096);
  Zeb8u pixels[8] = {};
  ASSERT_EQ(zebiFilterGaussianInit(3, 1, zeb8u, 1, stateIn(memory)), zebStsOk);
  const auto call = [&](int step, ZebiSize size) {
    return zebiFilterGaussianBorder_8u_C1R(pixels, step, pixels + 4, step, size, zebBorderRepl, 0, stateIn(memory),
                                           buffer.data());
  };
  EXPECT_EQ(call(-1, {0, 1}), zebStsErrStep);
  EXPECT_EQ(call(0, {0, 1}), zebStsErrSize);
  EXPECT_EQ(call(4, {0, 1}), zebStsErrSize);
  EXPECT_EQ(call(4, {-5, 1}), zebStsErrSize);
  EXPECT_EQ(call(4, {INT32_MAX, 1}), zebStsErrStep);
}

TEST(Gaussian, TapsOfTheNarrowestAndTheWidestCurve) {
  const auto taps = [](Zeb32f sigma) {
    Bytes memory(45);
    auto* const state = reinterpret_cast<ZebiFilterGaussianState*>(memory.data() + 1);  // at any address
    EXPECT_EQ(zebiFilterGaussianInit(3, sigma, zeb8u, 1, state), zebStsOk);
    std::vector<Zeb32s> out(3);
    memcpy(out.data(), memory.data() + 1 + 32, 12);
    return out;
  };
  EXPECT_EQ(taps(1e-3f), (std::vector<Zeb32s>{0, 16384, 0}));
  EXPECT_EQ(taps(1e30f), (std::vector<Zeb32s>{5461, 5462, 5461}));
}

}  // namespace
