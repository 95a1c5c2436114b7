#include "layer.h"

#include <limits>

#include "layer_result.h"
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

// One layer of this content.
template <class T, class K, class S>
ref::Plane<T> layerOf(const Layer<T, K, S>& layer, const ref::Plane<T>& content, const std::vector<K>& kernel,
                      Zeb32f rate) {
  const ZebiSize size = {content.width, content.height};
  ZebiSize out = {}, largest = {};
  EXPECT_EQ(layer.down ? zebiGetPyramidDownROI(size, &out, rate) : zebiGetPyramidUpROI(size, &out, &largest, rate),
            zebStsOk);
  const Image<T> src(content, {}), dst(out.width, out.height, layer.channels, {});
  S* state = nullptr;
  EXPECT_EQ(layer.make(&state, size, rate, kernel.data(), static_cast<int>(kernel.size()), zebInterLinear), zebStsOk);
  const int calls = zebcore().mallocCalls;
  EXPECT_EQ(layer.call(src.pixels(), src.step(), size, dst.pixels(), dst.step(), out, state), zebStsOk);
  EXPECT_EQ(zebcore().mallocCalls - calls, layer.down ? 0 : 1);
  EXPECT_EQ(layer.release(state), zebStsOk);
  return dst.plane();
}

// Rates that are 2 but for rounding take every second sample, as 2 does.
template <class T, class K, class S>
void checkRatesOfTwo(const Layer<T, K, S>& layer) {
  if (!layer.down) return;
  Random random;
  ref::Plane<T> noise(63, 31, layer.channels);
  fillPlane(noise, Content::noise, random);
  const std::vector<K> kernel = {1, 2, 1};
  for (const float rate : {1.99998f, 2.00002f})
    EXPECT_TRUE(agree(layerOf(layer, noise, kernel, rate), layerOf(layer, noise, kernel, 2))) << layer.name;
}

// Weights with a sum of 0, which are taken as they are, and weights that lead far beyond the values of the source.
template <class T, class K, class S>
void checkKernels(const Layer<T, K, S>& layer) {
  Random random;
  const K unit = std::is_floating_point_v<K> ? K(1) / K(4) : K(3000);
  const std::vector<K> edges = {static_cast<K>(-unit), static_cast<K>(2 * unit), static_cast<K>(-unit)};
  const std::vector<K> sharp = {-1, 0, 4, 0, -1};
  for (const float rate : {1.3f, 2.0f, 2.7f}) {
    ref::Plane<T> noise(37, 12, layer.channels);
    fillPlane(noise, Content::noise, random);
    for (const auto& kernel : {edges, sharp})
      EXPECT_TRUE(agreesWithLayer(layerOf(layer, noise, kernel, rate), noise, kernel, rate, layer.down))
          << layer.name << " rate " << rate << " taps " << kernel.size();
    const T colour = std::is_floating_point_v<T> ? T(200) : std::numeric_limits<T>::max();
    const ref::Plane<T> plain(37, 12, layer.channels, colour);
    const std::vector<K> thirds = {1, 1, 1};
    for (const auto& kernel : {thirds, sharp}) {
      const ref::Plane<T> got = layerOf(layer, plain, kernel, rate);
      if (layer.down)  // darker by what the weights lack
        EXPECT_TRUE(agreesWithLayer(got, plain, kernel, rate, true)) << layer.name << " " << rate;
      else  // one colour stays one colour
        EXPECT_TRUE(agree(got, ref::Plane<T>(got.width, got.height, got.channels, colour)))
            << layer.name << " " << rate;
    }
    if constexpr (std::is_floating_point_v<T>) {
      if (!layer.down) continue;
      const T infinite = std::numeric_limits<T>::infinity();
      const ref::Plane<T> got = layerOf(layer, ref::Plane<T>(37, 12, layer.channels, infinite), thirds, rate);
      EXPECT_TRUE(agree(got, ref::Plane<T>(got.width, got.height, got.channels, infinite)))
          << layer.name << " " << rate;
    }
  }
}

TEST(PyramidLayers, UnusualKernelsAndConstantImages) {
  forEachLayer([](const auto& layer) { checkKernels(layer); });
}

TEST(PyramidLayers, RatesOfTwo) {
  forEachLayer([](const auto& layer) { checkRatesOfTwo(layer); });
}

// A lopsided kernel is the symmetric one of its first half.
TEST(PyramidLayers, LopsidedKernels) {
  const Zeb16s kernel[] = {1, 4, 6, 4, 1}, lopsided[] = {1, 4, 6, 5, 1};
  ZebiPyramidDownState *state = nullptr, *other = nullptr;
  EXPECT_EQ(zebiPyramidLayerDownInitAlloc_8u_C1R(&state, {20, 16}, 2, kernel, INT32_MAX, zebInterLinear),
            zebStsErrMemAlloc);
  ASSERT_EQ(zebiPyramidLayerDownInitAlloc_8u_C1R(&state, {20, 16}, 2, kernel, 5, zebInterLinear), zebStsOk);
  ASSERT_EQ(zebiPyramidLayerDownInitAlloc_8u_C1R(&other, {20, 16}, 2, lopsided, 5, zebInterLinear),
            zebStsWarnKernelNotSymmetric);
  Random random;
  const Image<Zeb8u> src(20, 16, 1, {}, Content::noise, random), first(10, 8, 1, {}), second(10, 8, 1, {});
  for (const auto& [with, dst] : {std::pair{state, &first}, {other, &second}})
    ASSERT_EQ(
        zebiPyramidLayerDown_8u_C1R(src.pixels(), src.step(), {20, 16}, dst->pixels(), dst->step(), {10, 8}, with),
        zebStsOk);
  for (int y = 0; y < 8; ++y) EXPECT_EQ(memcmp(first.pixels(0, y), second.pixels(0, y), 10), 0) << y;
  EXPECT_EQ(zebiPyramidLayerDownFree_8u_C1R(state), zebStsOk);
  EXPECT_EQ(zebiPyramidLayerDownFree_8u_C1R(other), zebStsOk);
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
