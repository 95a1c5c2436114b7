#include "support/contract.h"
#include "support/image.h"

namespace {

using namespace test;

template <class T>
struct Functions {
  const char* name;
  int channels;
  bool bits;
  decltype(&zebiMorphAdvGetSize_8u_C1R) getSize;
  decltype(&zebiMorphAdvInit_8u_C1R) init;
  decltype(&zebiMorphAdvInitAlloc_8u_C1R) initAlloc;
  using Call = ZebStatus (*)(const T*, int, T*, int, ZebiSize, ZebiBorderType, T, const ZebiMorphAdvState*, Zeb8u*);
  Call calls[5];
};
#define FUNCTIONS(s, channels, bits)                                                                             \
  {                                                                                                              \
#s, channels, bits, zebiMorphAdvGetSize_##s, zebiMorphAdvInit_##s, zebiMorphAdvInitAlloc_##s, {              \
      zebiMorphOpenBorder_##s, zebiMorphCloseBorder_##s, zebiMorphTophatBorder_##s, zebiMorphBlackhatBorder_##s, \
          zebiMorphGradientBorder_##s                                                                            \
    }                                                                                                            \
  }
const Functions<Zeb8u> f8u[] = {FUNCTIONS(8u_C1R, 1, false), FUNCTIONS(8u_C3R, 3, false), FUNCTIONS(8u_C4R, 4, false)};
const Functions<Zeb16u> f16u = FUNCTIONS(16u_C1R, 1, false);
const Functions<Zeb16s> f16s = FUNCTIONS(16s_C1R, 1, false);
const Functions<Zeb32f> f32f[] = {FUNCTIONS(32f_C1R, 1, false), FUNCTIONS(32f_C3R, 3, false),
                                  FUNCTIONS(32f_C4R, 4, false)};
const Functions<Zeb8u> f1u = FUNCTIONS(1u_C1R, 1, true);

TEST(MorphAdv, SizesAndHeader) {
  int spec = 0, buffer = 0, s = 0, b = 0;
  ASSERT_EQ(zebiMorphologyBorderGetSize_16u_C1R(100, {5, 4}, &s, &b), zebStsOk);
  ASSERT_EQ(zebiMorphAdvGetSize_16u_C1R({100, 50}, {5, 4}, &spec, &buffer), zebStsOk);
  EXPECT_EQ(spec, 2 * s + 32);
  EXPECT_EQ(buffer, ((100 + 5 + 30) & ~31) * (50 + 4 - 1) + 2 * b);
  const Zeb8u mask[20] = {1, 1, 1};
  ZebiMorphAdvState* state = nullptr;
  ASSERT_EQ(zebiMorphAdvInitAlloc_16u_C1R(&state, {100, 50}, mask, {5, 4}, {1, 0}), zebStsOk);
  unsigned words[5];
  memcpy(words, state, sizeof words);
  EXPECT_EQ(words[3], ((100u + 5 + 30) & ~31) * (50 + 4 - 1) * 2);
  // The erosion's rectangle begins at the anchor's left; the dilation's is its reflection.
  const int* erode = reinterpret_cast<const int*>(words[0]);
  const int* dilate = reinterpret_cast<const int*>(words[1]);
  EXPECT_EQ(erode[7], 1);
  EXPECT_EQ(erode[8], 0);
  EXPECT_EQ(dilate[7], 1);
  EXPECT_EQ(dilate[8], 0);
  EXPECT_NE(words[2], 0u);
  zebiMorphAdvFree(state);
  int untouched = 5;
  EXPECT_EQ(zebiMorphAdvGetSize_8u_C1R({60000, 60000}, {3, 3}, &untouched, &untouched), zebStsErrOverflow);
  EXPECT_EQ(zebiMorphAdvInitAlloc_8u_C1R(&state, {60000, 60000}, mask, {3, 3}, {1, 1}), zebStsErrOverflow);
  EXPECT_EQ(untouched, 5);
}

// Memory that holds no state: all zeros or all ones, and so no width that a region could have.
ZebiMorphAdvState* noState(int byte) {
  static unsigned zeros[8], ones[8];
  memset(ones, 0xFF, sizeof ones);
  return reinterpret_cast<ZebiMorphAdvState*>(byte == 0 ? zeros : ones);
}

template <class T>
void checkContract(const Functions<T>& f) {
  constexpr int w = 37, e = sizeof(T);
  SCOPED_TRACE(f.name);
  const int row = f.bits ? 5 : w * f.channels * e;
  Random random;
  const Image<T> src(w + 8, 6, f.channels, {}, Content::noise, random);
  Image<T> dst(w + 8, 6, f.channels, {});
  const Zeb8u mask[] = {1, 0, 1, 1, 1, 1};
  int specSize = 0, bufferSize = 0;
  const ZebiSize roi{w, 4}, shape{3, 2};
  Contract("MorphAdvGetSize", f.getSize, roi, shape, &specSize, &bufferSize)
      .template nulls<2, 3>()
      .template sizes<0>()
      .template sizes<1>()
      .check();
  ASSERT_EQ(f.getSize(roi, shape, &specSize, &bufferSize), zebStsOk);
  const Scratch spec(specSize), buffer(bufferSize);
  auto* state = reinterpret_cast<ZebiMorphAdvState*>(spec.get());
  const auto checkInit = [](auto contract) {
    contract.template nulls<0, 2>()
        .template sizes<1>()
        .template sizes<3>()
        .template with<4>(ZebiPoint{3, 0}, zebStsErrAnchor)
        .template with<4>(ZebiPoint{0, -1}, zebStsErrAnchor)
        .check();
  };
  checkInit(Contract("MorphAdvInit", f.init, state, roi, mask, shape, ZebiPoint{2, 1}));
  ZebiMorphAdvState* allocated = nullptr;
  checkInit(Contract("MorphAdvInitAlloc", f.initAlloc, &allocated, roi, mask, shape, ZebiPoint{2, 1}));
  EXPECT_EQ(zebiMorphAdvFree(allocated), zebStsOk);
  ASSERT_EQ(f.init(state, roi, mask, shape, {1, 1}), zebStsOk);
  EXPECT_EQ(zebiMorphAdvFree(state), zebStsErrContextMatch);  // nothing of it is allocated
  int otherSize = 0, otherBuffer = 0;
  ASSERT_EQ(zebiMorphAdvGetSize_16u_C1R(roi, {1, 1}, &otherSize, &otherBuffer), zebStsOk);
  const Scratch otherSpec(otherSize);
  auto* stateOfOthers = reinterpret_cast<ZebiMorphAdvState*>(otherSpec.get());
  const bool is16u = f.init == zebiMorphAdvInit_16u_C1R;
  ASSERT_EQ((is16u ? zebiMorphAdvInit_16s_C1R : zebiMorphAdvInit_16u_C1R)(stateOfOthers, roi, mask, {1, 1}, {0, 0}),
            zebStsOk);
  for (const auto function : f.calls) {
    Contract c(f.name, function, src.pixels(), src.step(), dst.pixels(), dst.step(), roi, zebBorderRepl, T(0), state,
               buffer.get());
    c.template nulls<0, 2, 7, 8>().template sizes<4>().template step<1>(row, e).template step<3>(row, e);
    if (!f.bits) c.template hostile<4>();
    for (ZebiBorderType border : {0, 2, 4, 0x40, 0x25}) c.template with<5>(border, zebStsErrBorder);
    c.template with<4>(ZebiSize{w + 1, 3}, zebStsErrSize, "wider than the state");
    c.template with<4>(ZebiSize{w, 100000}, zebStsErrSize, "an intermediate image too high");
    if (e > 1) c.template multiple<1>(e).template multiple<3>(e);
    c.check();
    // Memory that holds no state, and the state of other elements, which still tells its width.
    Contract other(f.name, function, src.pixels(), src.step(), dst.pixels(), dst.step(), roi, zebBorderRepl, T(0),
                   state, buffer.get());
    other.template with<5>(zebBorderConst, zebStsErrBorder);
    other.template with<7>(noState(0), zebStsErrSize).template with<7>(noState(0xFF), zebStsErrSize);
    other.template with<4>(ZebiSize{w + 1, 3}, zebStsErrSize, "wider than the state");
    if (e > 1) other.template multiple<1>(e);
    other.template with<7>(stateOfOthers, zebStsErrContextMatch).check();
  }
}

TEST(MorphAdv, Checks) {
  for (const auto& f : f8u) checkContract(f);
  checkContract(f16u);
  checkContract(f16s);
  for (const auto& f : f32f) checkContract(f);
  checkContract(f1u);
  EXPECT_EQ(zebiMorphAdvFree(nullptr), zebStsErrNullPointer);
  for (int byte : {0, 0xFF}) EXPECT_EQ(zebiMorphAdvFree(noState(byte)), zebStsErrContextMatch);
}

}  // namespace
