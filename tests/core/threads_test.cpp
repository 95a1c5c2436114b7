// States that calls only read, shared by several threads; the drivers try every function with states of its thread.
#include <gtest/gtest.h>

#include <functional>
#include <thread>
#include <vector>

#include "support/random.h"
#include "zebcv.h"

namespace {

constexpr int width = 101, height = 67, count = width * height;
constexpr ZebiSize size{width, height}, window{width - 8, height - 8};
using Bytes = std::vector<Zeb8u>;

TEST(Threads, ShareStatesThatAreOnlyRead) {
  test::Random random;
  Bytes image(count);
  for (Zeb8u& v : image) v = static_cast<Zeb8u>(random.within(0, 255));
  std::vector<Zeb32s> sums((width + 1) * (height + 1));
  ASSERT_EQ(zebiIntegral_8u32s_C1R(image.data(), width, sums.data(), 4 * (width + 1), size, 0), zebStsOk);
  const std::vector<Zeb32f> norm(count, 1.0f);

  const ZebiRect boxes[] = {{0, 0, 8, 4}, {0, 4, 8, 4}};
  const Zeb32f weights[] = {1, -1}, threshold = 0, below = -1, above = 1;
  const int boxCount = 2;
  ZebiHaarClassifier* stage = nullptr;
  ASSERT_EQ(zebiHaarClassifierInitAlloc_32f(&stage, boxes, weights, &threshold, &below, &above, &boxCount, 1), 0);
  const Zeb32s heights[] = {0, 3, 0, 3, 9, 3, 0, 3, 0};
  ZebiMorphGrayState* ball = nullptr;
  ASSERT_EQ(zebiMorphGrayInitAlloc_8u_C1R(&ball, size, heights, {3, 3}, {1, 1}), zebStsOk);
  const Zeb8u cross[] = {0, 1, 0, 1, 1, 1, 0, 1, 0};
  int bytes = 0, scratch = 0;
  ASSERT_EQ(zebiMorphologyBorderGetSize_8u_C1R(width, {3, 3}, &bytes, &scratch), zebStsOk);
  Bytes morphology(static_cast<size_t>(bytes)), initial(static_cast<size_t>(scratch));
  auto* const element = reinterpret_cast<ZebiMorphState*>(morphology.data());
  ASSERT_EQ(zebiMorphologyBorderInit_8u_C1R(width, cross, {3, 3}, element, initial.data()), zebStsOk);

  const std::function<ZebStatus(Bytes&)> calls[] = {
      [&](Bytes& out) {
        int positive = 0;
        return zebiApplyHaarClassifier_32s32f_C1R(sums.data(), 4 * (width + 1), norm.data(), 4 * width, out.data(),
                                                  width, window, &positive, 0.5f, stage);
      },
      [&](Bytes& out) {
        return zebiGrayDilateBorder_8u_C1R(image.data(), width, out.data(), width, size, zebBorderRepl, ball);
      },
      [&](Bytes& out) {
        int state = 0, buffer = 0;
        zebiMorphologyBorderGetSize_8u_C1R(width, {3, 3}, &state, &buffer);
        Bytes own(static_cast<size_t>(buffer));
        return zebiErodeBorder_8u_C1R(image.data(), width, out.data(), width, size, zebBorderRepl, 0, element,
                                      own.data());
      }};
  std::vector<Bytes> alone;
  for (const auto& call : calls) {
    alone.emplace_back(count, 255);
    ASSERT_EQ(call(alone.back()), zebStsOk);
    EXPECT_NE(alone.back(), Bytes(count, 255));
  }
  std::vector<std::thread> pool;
  for (int t = 0; t < 4; ++t)
    pool.emplace_back([&, t] {
      for (size_t i = 0; i < 150; ++i) {
        const size_t k = (i + static_cast<size_t>(t)) % std::size(calls);
        Bytes out(count, 255);
        EXPECT_EQ(calls[k](out), zebStsOk);
        EXPECT_TRUE(out == alone[k]) << "call " << k;
      }
    });
  for (auto& thread : pool) thread.join();
  EXPECT_EQ(zebiHaarClassifierFree_32f(stage), zebStsOk);
  EXPECT_EQ(zebiMorphGrayFree_8u_C1R(ball), zebStsOk);
}

}  // namespace
