#include "reference/gray.h"

#include "support/compare.h"
#include "support/contract.h"

namespace {

using namespace test;

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

// As many weights as stay prepared (1024), and more: in rows longer than what is prepared at a time (64), and in short
// ones. Regions wider and narrower than the masks. Such weights keep most extrema away from the ends of the bytes.
template <class T, class W>
void checkLarge(const Functions<T, W>& f) {
  Random random;
  for (const ZebiSize mask : {ZebiSize{64, 16}, {70, 15}, {3, 350}})
    for (const ZebiSize roi : {ZebiSize{300, 5}, {40, 30}}) {
      const ZebiPoint anchor = {random.within(0, mask.width - 1), random.within(0, mask.height - 1)};
      std::vector<W> weights(static_cast<size_t>(mask.width) * mask.height);
      for (W& w : weights) w = static_cast<W>(random.within(-300, -100));
      const Image<T> src(roi.width, roi.height, 1, {}, Content::noise, random), dst(roi.width, roi.height, 1, {});
      ZebiMorphGrayState* state = nullptr;
      ASSERT_EQ(f.initAlloc(&state, roi, weights.data(), mask, anchor), zebStsOk);
      for (bool dilate : {true, false}) {
        EXPECT_EQ((dilate ? f.dilate : f.erode)(src.pixels(), src.step(), dst.pixels(), dst.step(), roi, zebBorderRepl,
                                                state),
                  zebStsOk);
        EXPECT_TRUE(agree(f.name, dst, ref::grayMorphology<T, W>(src.plane(), weights, mask, anchor, dilate)))
            << (dilate ? "dilate " : "erode ") << "mask " << mask.width << " x " << mask.height << " anchor "
            << anchor.x << ", " << anchor.y;
      }
      EXPECT_EQ(f.release(state), zebStsOk);
    }
}

TEST(MorphGray, LargeMasks) {
  checkLarge(f8u);
  checkLarge(f32f);
}

template <class T, class W>
void checkContract(const Functions<T, W>& f) {
  constexpr int w = 13, e = sizeof(T);
  SCOPED_TRACE(f.name);
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
  EXPECT_EQ(size, 4 * 3 * 2 + 28);
  const Scratch memory(size);
  auto* state = reinterpret_cast<ZebiMorphGrayState*>(memory.get());
  const auto checkInit = [](auto contract) {
    contract.template nulls<0, 2>()
        .template sizes<1>()
        .template sizes<3>()
        .template with<4>(ZebiPoint{3, 0}, zebStsErrAnchor)
        .template with<4>(ZebiPoint{0, 2}, zebStsErrAnchor)
        .template with<4>(ZebiPoint{-1, 0}, zebStsErrAnchor)
        .check();
  };
  checkInit(Contract("MorphGrayInit", f.init, state, roi, weights, mask, ZebiPoint{2, 0}));
  ZebiMorphGrayState* allocated = nullptr;
  checkInit(Contract("MorphGrayInitAlloc", f.initAlloc, &allocated, roi, weights, mask, ZebiPoint{2, 0}));
  EXPECT_EQ(f.release(allocated), zebStsOk);
  EXPECT_EQ(f.release(nullptr), zebStsErrNullPointer);
  const unsigned* words = reinterpret_cast<const unsigned*>(state);
  const unsigned head[] = {3, 2, 2, 0, w, 4};
  for (int i = 0; i < 6; ++i) EXPECT_EQ(words[1 + i], head[i]);
  EXPECT_EQ(memcmp(reinterpret_cast<const void*>(words[0]), weights, sizeof weights), 0);

  const Scratch elsewhere(size);
  auto* moved = reinterpret_cast<ZebiMorphGrayState*>(elsewhere.get());
  memcpy(moved, state, static_cast<size_t>(size));
  EXPECT_EQ(f.release(moved), zebStsErrContextMatch);
  for (const auto function : {f.erode, f.dilate}) {
    Contract c(f.name, function, src.pixels(), src.step(), dst.pixels(), dst.step(), roi, zebBorderRepl, state);
    c.template nulls<0, 2, 6>().template sizes<4>().template step<1>(e * w).template step<3>(e * w);
    c.template hostile<4>();
    for (ZebiBorderType border : {0, 6, 0x11}) c.template with<5>(border, zebStsErrBadArgument);
    c.template with<4>(ZebiSize{w + 1, 3}, zebStsErrSize).template with<4>(ZebiSize{w, 5}, zebStsErrSize);
    c.template with<6>(moved, zebStsErrContextMatch, "moved state").check();
  }
}

TEST(MorphGray, Checks) {
  checkContract(f8u);
  checkContract(f32f);
}

}  // namespace
