#include "reference/gray.h"

#include "support/compare.h"
#include "support/contract.h"
#include "support/zebcore_double.h"

namespace {

using namespace test;
using ref::Plane;

template <class T, class W>
struct Functions {
  const char* name;
  ZebStatus (*getSize)(ZebiSize, const W*, ZebiSize, int*);
  ZebStatus (*init)(ZebiMorphGrayState*, ZebiSize, const W*, ZebiSize, ZebiPoint);
  ZebStatus (*initAlloc)(ZebiMorphGrayState**, ZebiSize, const W*, ZebiSize, ZebiPoint);
  ZebStatus (*release)(ZebiMorphGrayState*);
  ZebStatus (*erode)(const T*, int, T*, int, ZebiSize, ZebiBorderType, const ZebiMorphGrayState*);
  ZebStatus (*dilate)(const T*, int, T*, int, ZebiSize, ZebiBorderType, const ZebiMorphGrayState*);
};
#define FUNCTIONS(s)                                                                                        \
  {                                                                                                         \
#s, zebiMorphGrayGetSize_##s, zebiMorphGrayInit_##s, zebiMorphGrayInitAlloc_##s, zebiMorphGrayFree_##s, \
        zebiGrayErodeBorder_##s, zebiGrayDilateBorder_##s                                                   \
  }
const Functions<Zeb8u, Zeb32s> f8u = FUNCTIONS(8u_C1R);
const Functions<Zeb32f, Zeb32f> f32f = FUNCTIONS(32f_C1R);

template <class T, class W>
void check(const Functions<T, W>& f) {
  Random random;
  for (int round = 0; round < 200; ++round) {
    const ZebiSize roi{round < 150 ? 1 + round : random.within(150, 400), random.within(1, 9)};
    const ZebiSize mask{random.within(1, round % 6 ? 7 : 50), random.within(1, round % 50 ? 6 : 40)};
    const ZebiPoint anchor{random.within(0, mask.width - 1), random.within(0, mask.height - 1)};
    std::vector<W> weights(static_cast<size_t>(mask.width) * mask.height);
    for (W& w : weights) {
      const int kind = random.within(0, 9);
      w = static_cast<W>(random.within(-300, 300));
      if (round % 4 == 0) w = static_cast<W>(random.within(-20, 20));
      if (round % 4 == 1 && kind == 0) w = static_cast<W>(0x7FFFFFFF);
      if (round % 4 == 1 && kind == 1) w = static_cast<W>(-0x7FFFFFFF - 1);
    }
    const Image<T> src(roi.width, roi.height, 1, Layout::random<T>(random), round % 3 ? Content::noise : Content::runs,
                       random);
    int size = 0;
    ASSERT_EQ(f.getSize(roi, weights.data(), mask, &size), zebStsOk);
    ASSERT_EQ(size, 4 * mask.width * mask.height + 28);
    const Scratch memory(size);
    auto* own = reinterpret_cast<ZebiMorphGrayState*>(memory.get());
    ASSERT_EQ(f.init(own, roi, weights.data(), mask, anchor), zebStsOk);
    ZebiMorphGrayState* allocated = nullptr;
    ASSERT_EQ(f.initAlloc(&allocated, roi, weights.data(), mask, anchor), zebStsOk);
    for (bool dilate : {true, false}) {
      Image<T> dst(roi.width, roi.height, 1, Layout::random<T>(random));
      ASSERT_EQ((dilate ? f.dilate : f.erode)(src.pixels(), src.step(), dst.pixels(), dst.step(), roi, zebBorderRepl,
                                              round % 2 ? own : allocated),
                zebStsOk);
      ASSERT_TRUE(agree(f.name, dst, ref::grayMorphology<T, W>(src.plane(), weights, mask, anchor, dilate)))
          << (dilate ? "dilate " : "erode ") << "mask " << mask.width << " x " << mask.height << " anchor " << anchor.x
          << ", " << anchor.y;
    }
    ASSERT_EQ(f.release(allocated), zebStsOk);
    ASSERT_TRUE(memory.intact());
  }
}

TEST(MorphGray, EqualsReference) {
  check(f8u);
  check(f32f);
}

template <class T, class W>
void checkContract(const Functions<T, W>& f) {
  constexpr int w = 13, e = sizeof(T);
  const Image<T> src(w + 4, 6, 1, {});
  Image<T> dst(w + 4, 6, 1, {});
  const W weights[] = {1, 2, 3, 4, 5, 6};
  const ZebiSize roi{w, 4}, mask{3, 2};
  int size = 0;
  Contract("MorphGrayGetSize", f.getSize, roi, weights, mask, &size)
      .template nulls<1, 3>()
      .template sizes<0>()
      .template sizes<2>()
      .template with<2>(ZebiSize{0x7FFFFFFF, 0x7FFFFFFF}, zebStsErrOverflow, "hostile mask")
      .check();
  const Scratch memory(size);
  auto* state = reinterpret_cast<ZebiMorphGrayState*>(memory.get());
  Contract("MorphGrayInit", f.init, state, roi, weights, mask, ZebiPoint{2, 0})
      .template nulls<0, 2>()
      .template sizes<1>()
      .template sizes<3>()
      .template with<4>(ZebiPoint{3, 0}, zebStsErrAnchor)
      .template with<4>(ZebiPoint{0, 2}, zebStsErrAnchor)
      .template with<4>(ZebiPoint{-1, 0}, zebStsErrAnchor)
      .check();
  const unsigned* words = reinterpret_cast<const unsigned*>(state);
  const unsigned head[] = {3, 2, 2, 0, w, 4};
  for (int i = 0; i < 6; ++i) EXPECT_EQ(words[1 + i], head[i]);
  EXPECT_EQ(memcmp(reinterpret_cast<const void*>(words[0]), weights, sizeof weights), 0);

  const int live = zebcore().liveBlocks;
  zebcore().reset();
  zebcore().failMallocAt = 0;
  ZebiMorphGrayState* none = nullptr;
  EXPECT_EQ(f.initAlloc(&none, roi, weights, mask, {0, 0}), zebStsErrMemAlloc);
  EXPECT_EQ(f.initAlloc(&none, roi, weights, mask, {0, 2}), zebStsErrAnchor);
  EXPECT_EQ(f.initAlloc(nullptr, roi, weights, {0, 0}, {0, 2}), zebStsErrNullPointer);
  EXPECT_EQ(none, nullptr);
  EXPECT_EQ(zebcore().liveBlocks, live);
  zebcore().reset();
  EXPECT_EQ(f.release(nullptr), zebStsErrNullPointer);

  for (const auto function : {f.erode, f.dilate}) {
    Contract c(f.name, function, src.pixels(), src.step(), dst.pixels(), dst.step(), roi, zebBorderRepl, state);
    c.template nulls<0, 2, 6>().template sizes<4>().template step<1>(e * w).template step<3>(e * w);
    c.template hostile<4>();
    for (ZebiBorderType border : {0, 6, 0x11}) c.template with<5>(border, zebStsErrBadArgument);
    c.template with<4>(ZebiSize{w + 1, 3}, zebStsErrSize).template with<4>(ZebiSize{w, 5}, zebStsErrSize).check();
  }
}

TEST(MorphGray, Checks) {
  checkContract(f8u);
  checkContract(f32f);
}

}  // namespace
