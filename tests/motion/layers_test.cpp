#include "layer.h"

#include <limits>

#include "layer_result.h"
#include "support/contract.h"
#include "support/zebcore_double.h"

namespace {

using namespace test;

template <class F>
void forEachLayer(F check) {
  check(LAYER(Down, 8u_C1R, Zeb8u, Zeb16s, 1));
  check(LAYER(Down, 8u_C3R, Zeb8u, Zeb16s, 3));
  check(LAYER(Down, 16u_C1R, Zeb16u, Zeb16s, 1));
  check(LAYER(Down, 16u_C3R, Zeb16u, Zeb16s, 3));
  check(LAYER(Down, 32f_C1R, Zeb32f, Zeb32f, 1));
  check(LAYER(Down, 32f_C3R, Zeb32f, Zeb32f, 3));
  check(LAYER(Up, 8u_C1R, Zeb8u, Zeb16s, 1));
  check(LAYER(Up, 8u_C3R, Zeb8u, Zeb16s, 3));
  check(LAYER(Up, 16u_C1R, Zeb16u, Zeb16s, 1));
  check(LAYER(Up, 16u_C3R, Zeb16u, Zeb16s, 3));
  check(LAYER(Up, 32f_C1R, Zeb32f, Zeb32f, 1));
  check(LAYER(Up, 32f_C3R, Zeb32f, Zeb32f, 3));
}

template <class K>
const std::vector<std::vector<K>> kernels = {{1, 2, 1},         {1, 4, 6, 4, 1}, {1, 1, 1, 1, 1, 1, 1},
                                             {-1, 0, 4, 0, -1}, {-1, 2, -1},     {3, 1, 4, 1, 5, 9, 2, 6, 5}};

template <class T, class K, class S>
void checkResults(const Layer<T, K, S>& layer) {
  Random random;
  for (const float rate : {1.01f, 1.3f, 1.5f, 1.99999f, 2.0f, 2.7f, 10.0f})
    for (int i = 0; i < 18; ++i) {
      const auto& kernel = kernels<K>[static_cast<size_t>(i % 6)];
      const int w = i < 9 ? i + 1 : random.within(1, 90), h = random.within(1, 23),
                taps = static_cast<int>(kernel.size());
      const bool symmetric = std::equal(kernel.begin(), kernel.end(), kernel.rbegin());
      S* state = nullptr;
      ASSERT_EQ(layer.make(&state, {w, h}, rate, kernel.data(), taps, zebInterLinear),
                symmetric ? zebStsOk : zebStsWarnKernelNotSymmetric);
      ZebiSize size = {}, largest = {};
      if (layer.down)
        ASSERT_EQ(zebiGetPyramidDownROI({w, h}, &size, rate), zebStsOk);
      else
        ASSERT_EQ(zebiGetPyramidUpROI({w, h}, &size, &largest, rate), zebStsOk);
      if (!layer.down && i % 2) size = largest;
      const Image<T> src(w, h, layer.channels, Layout::random<T>(random), allContents[i % 7], random);
      const Image<T> dst(size.width, size.height, layer.channels, Layout::random<T>(random));
      const int calls = zebcore().mallocCalls;
      ASSERT_EQ(layer.call(src.pixels(), src.step(), {w, h}, dst.pixels(), dst.step(), size, state), zebStsOk)
          << layer.name << " " << rate << " " << src.describe();
      EXPECT_EQ(zebcore().mallocCalls - calls, layer.down ? 0 : 1);
      EXPECT_EQ(layer.release(state), zebStsOk);

      const ref::Plane<T> given = src.plane();
      ASSERT_TRUE(agreesWithLayer(dst.plane(), given, kernel, rate, layer.down))
          << layer.name << " rate " << rate << " taps " << taps << " " << src.describe();
      ASSERT_TRUE(dst.intact()) << layer.name << " " << dst.describe();
      if (i % 7 >= 1 && i % 7 <= 3 && i % 6 != 4 && !std::is_floating_point_v<T>) {
        ASSERT_TRUE(agree(dst.plane(), ref::Plane<T>(size.width, size.height, layer.channels, given.data[0])));
      }
    }
}

template <class T, class K, class S>
void checkOrder(const Layer<T, K, S>& layer) {
  const K kernel[] = {1, 4, 6, 4, 1}, lopsided[] = {1, 4, 6, 5, 1};
  S* state = nullptr;
  Contract(layer.name, layer.make, &state, ZebiSize{20, 16}, 2.0f, kernel, 5, zebInterLinear)
      .template nulls<0, 3>()
      .template sizes<1>()
      .template with<5>(1, zebStsErrBadArgument)
      .template with<2>(1.0f, zebStsErrBadArgument)
      .template with<2>(std::numeric_limits<float>::quiet_NaN(), zebStsErrBadArgument)
      .template with<4>(4, zebStsErrBadArgument)
      .template with<4>(1, zebStsErrBadArgument)
      .template with<4>(0x7FFFFFFF, zebStsErrMemAlloc)
      .check();
  Random random;
  const ZebiSize in = {20, 16}, out = layer.down ? ZebiSize{10, 8} : ZebiSize{40, 32};
  const Image<T> src(in.width, in.height, layer.channels, {}, Content::noise, random);
  const Image<T> dst(out.width, out.height, layer.channels, {Place::back, 64, 0}, Content::noise, random);
  Contract(layer.name, layer.call, src.pixels(), src.step(), in, dst.pixels(), dst.step(), out, state)
      .template nulls<0, 3, 6>()
      .template sizes<2>()
      .template step<1>(src.step())
      .template step<4>(dst.step() - 64)
      .template with<5>(ZebiSize{out.width + 3, out.height}, zebStsErrSize)
      .template with<5>(ZebiSize{out.width, out.height - 3}, zebStsErrSize)
      .check();
  EXPECT_EQ(layer.call(src.pixels(), src.step(), {20, 17}, dst.pixels(), dst.step(), out, state), zebStsErrSize);
  zebcore().reset();
  const int before = zebcore().liveBlocks;
  zebcore().failMallocAt = 0;
  EXPECT_EQ(layer.call(src.pixels(), src.step(), in, dst.pixels(), dst.step(), out, state),
            layer.down ? zebStsOk : zebStsErrMemAlloc);
  zebcore().failMallocAt = 0;
  S* other = nullptr;
  EXPECT_EQ(layer.make(&other, in, 2.0f, kernel, 5, zebInterLinear), zebStsErrMemAlloc);
  EXPECT_EQ(other, nullptr);
  EXPECT_EQ(zebcore().liveBlocks, before);
  zebcore().reset();
  EXPECT_EQ(layer.release(nullptr), zebStsErrNullPointer);

  // A lopsided kernel is the symmetric one of its first half.
  ASSERT_EQ(layer.make(&other, in, 2.0f, lopsided, 5, zebInterLinear), zebStsWarnKernelNotSymmetric);
  const Image<T> second(out.width, out.height, layer.channels, {});
  ASSERT_EQ(layer.call(src.pixels(), src.step(), in, dst.pixels(), dst.step(), out, state), zebStsOk);
  ASSERT_EQ(layer.call(src.pixels(), src.step(), in, second.pixels(), second.step(), out, other), zebStsOk);
  EXPECT_TRUE(agree(layer.name, second, dst.plane()));
  EXPECT_EQ(layer.release(state), zebStsOk);
  EXPECT_EQ(layer.release(other), zebStsOk);
}

TEST(PyramidLayers, EqualTheirReference) {
  forEachLayer([](const auto& layer) { checkResults(layer); });
}

TEST(PyramidLayers, CheckArgumentsInOrder) {
  forEachLayer([](const auto& layer) { checkOrder(layer); });
}

// Every level of a pyramid with one state, down to a single pixel.
TEST(PyramidLayers, OneStateServesAllLevels) {
  const Zeb16s kernel[] = {1, 2, 1};
  for (const ZebiSize base : {ZebiSize{64, 40}, ZebiSize{64, 4}}) {
    ZebiPyramid* pyramid = nullptr;
    ZebiPyramidDownState* state = nullptr;
    ASSERT_EQ(zebiPyramidInitAlloc(&pyramid, 100, base, 1.7f), zebStsOk);
    ASSERT_EQ(zebiPyramidLayerDownInitAlloc_8u_C1R(&state, base, 1.7f, kernel, 3, zebInterLinear), zebStsOk);
    Random random;
    for (int i = 0; i < pyramid->level; ++i) {
      const ZebiSize from = pyramid->pRoi[i], to = pyramid->pRoi[i + 1];
      const Image<Zeb8u> src(from.width, from.height, 1, {}, Content::noise, random), dst(to.width, to.height, 1, {});
      EXPECT_EQ(zebiPyramidLayerDown_8u_C1R(src.pixels(), src.step(), from, dst.pixels(), dst.step(), to, state),
                zebStsOk)
          << from.width << " x " << from.height;
    }
    EXPECT_EQ(zebiPyramidLayerDownFree_8u_C1R(state), zebStsOk);
    EXPECT_EQ(zebiPyramidFree(pyramid), zebStsOk);
  }
}

}  // namespace
