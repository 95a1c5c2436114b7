#include "reference/gray.h"

#include "support/compare.h"
#include "support/record.h"

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

// The words of a state, and regions that it is not for.
TEST(MorphGray, StateHeader) {
  const Zeb32s weights[] = {1, 2, 3, 4, 5, 6};
  int size = 0;
  ASSERT_EQ(zebiMorphGrayGetSize_8u_C1R({13, 4}, weights, {3, 2}, &size), zebStsOk);
  EXPECT_EQ(size, 4 * 3 * 2 + static_cast<int>(morphGrayState(nullptr).bytes()));
  EXPECT_EQ(zebiMorphGrayGetSize_8u_C1R({13, 4}, weights, {INT32_MAX, INT32_MAX}, &size), zebStsErrOverflow);
  ZebiMorphGrayState* state = nullptr;
  ASSERT_EQ(zebiMorphGrayInitAlloc_8u_C1R(&state, {13, 4}, weights, {3, 2}, {2, 0}), zebStsOk);
  const Record record = morphGrayState(state);
  const int head[] = {3, 2, 2, 0, 13, 4};
  for (size_t i = 0; i < 6; ++i) EXPECT_EQ(record.word(1 + i), head[i]);
  EXPECT_EQ(memcmp(record.pointer<void>(0), weights, sizeof weights), 0);
  Zeb8u pixels[70];
  for (const ZebiSize wide : {ZebiSize{14, 3}, ZebiSize{13, 5}})
    EXPECT_EQ(zebiGrayErodeBorder_8u_C1R(pixels, 14, pixels, 14, wide, zebBorderRepl, state), zebStsErrSize);
  EXPECT_EQ(zebiMorphGrayFree_8u_C1R(state), zebStsOk);
}

}  // namespace
