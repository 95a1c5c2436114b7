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
  EXPECT_EQ(layer.release(nullptr), zebStsErrNullPointer);

  // A lopsided kernel is the symmetric one of its first half.
  S* other = nullptr;
  ASSERT_EQ(layer.make(&other, in, 2.0f, lopsided, 5, zebInterLinear), zebStsWarnKernelNotSymmetric);
  const Image<T> second(out.width, out.height, layer.channels, {});
  ASSERT_EQ(layer.call(src.pixels(), src.step(), in, dst.pixels(), dst.step(), out, state), zebStsOk);
  ASSERT_EQ(layer.call(src.pixels(), src.step(), in, second.pixels(), second.step(), out, other), zebStsOk);
  EXPECT_TRUE(agree(layer.name, second, dst.plane()));
  EXPECT_EQ(layer.release(state), zebStsOk);
  EXPECT_EQ(layer.release(other), zebStsOk);
}

TEST(PyramidLayers, UnusualKernelsAndConstantImages) {
  forEachLayer([](const auto& layer) { checkKernels(layer); });
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
