#include <cmath>

#include "reference/morph.h"
#include "support/compare.h"
#include "support/record.h"

namespace {

using namespace test;
using ref::Element;
using ref::Plane;

template <class T>
using Call = ZebStatus (*)(const T*, int, T*, int, ZebiSize, ZebiBorderType, ZebiMorphState*);
template <class T>
struct Functions {
  const char* name;
  int channels;
  decltype(&zebiMorphologyInitAlloc_8u_C1R) initAlloc;
  Call<T> erode, dilate;
};
#define FUNCTIONS(s, channels) \
  { #s, channels, zebiMorphologyInitAlloc_##s, zebiErodeBorderReplicate_##s, zebiDilateBorderReplicate_##s }
const Functions<Zeb8u> bytes = FUNCTIONS(8u_C1R, 1);
const Functions<Zeb32f> floats = FUNCTIONS(32f_C4R, 4);

ZebiMorphState* stateIn(const Scratch& memory) {
  return reinterpret_cast<ZebiMorphState*>(memory.get());
}

// ---- Large masks ----

// Elements where set(x, y) holds, the anchor in the middle.
template <class Set>
Element maskOf(int width, int height, Set set) {
  Element e{std::vector<Zeb8u>(static_cast<size_t>(width) * height), width, height, width / 2, height / 2};
  for (int y = 0, i = 0; y < height; ++y)
    for (int x = 0; x < width; ++x, ++i) e.mask[static_cast<size_t>(i)] = set(x, y) ? 1 : 0;
  return e;
}

template <class T>
void checkLarge(const Functions<T>& f, const Element& e, ZebiSize roi, bool lowest) {
  Random random;
  const Image<T> src(roi.width, roi.height, f.channels, {}, Content::noise, random);
  const Image<T> dst(roi.width, roi.height, f.channels, {});
  ZebiMorphState* state = nullptr;
  ASSERT_EQ(f.initAlloc(roi.width, e.mask.data(), {e.width, e.height}, {e.anchorX, e.anchorY}, &state), zebStsOk);
  EXPECT_EQ(
      (lowest ? f.erode : f.dilate)(src.pixels(), src.step(), dst.pixels(), dst.step(), roi, zebBorderRepl, state),
      zebStsOk);
  EXPECT_EQ(zebiMorphologyFree(state), zebStsOk);
  const auto plane = src.plane();
  const ref::Region<T> region{&plane, 0, 0, roi.width, roi.height};
  EXPECT_TRUE(agree(f.name, dst, ref::extremum(region, e, lowest)))
      << "mask " << e.width << " x " << e.height << ", anchor " << e.anchorX << ", " << e.anchorY;
}

// Regions much wider and much narrower than a disc, also where the state has no room for the list of its elements;
// rectangles larger than the region and in a high one.
TEST(Erode, LargeMasks) {
  const auto& f = bytes;
  const Element disc = maskOf(45, 45, [](int x, int y) { return (x - 22) * (x - 22) + (y - 22) * (y - 22) <= 484; });
  checkLarge(f, disc, {1500, 9}, true);
  checkLarge(f, disc, {3, 50}, true);
  checkLarge(f, maskOf(131, 113, [](int x, int y) { return std::hypot((x - 65) / 65.0, (y - 56) / 56.0) <= 1; }),
             {3, 4}, true);
  checkLarge(f, {std::vector<Zeb8u>(61 * 63, 1), 61, 63, 60, 0}, {20, 11}, true);
  checkLarge(f, {std::vector<Zeb8u>(61 * 63, 1), 61, 63, 30, 31}, {300, 140}, true);
}

// So many bytes to a row that the rows of the mask go through the cache in strips of columns: element by element, by
// two run lengths, by pieces, and a rectangle.
TEST(Erode, StripsOfColumns) {
  const auto& f = floats;
  const Element diagonal = maskOf(45, 45, [](int x, int y) { return x == y && x % 4 == 0; });
  const Element plus = maskOf(61, 31, [](int x, int y) { return (y >= 10 && y <= 20) || (x >= 20 && x <= 40); });
  const Element stem = maskOf(61, 31, [](int x, int y) { return (y >= 10 && y <= 20) || x == 30; });
  Random random;
  const Element scattered = maskOf(15, 15, [&](int, int) { return random.within(0, 1) != 0; });
  for (bool lowest : {true, false}) {
    checkLarge(f, diagonal, {1500, 2}, lowest);
    checkLarge(f, plus, {1500, 2}, lowest);
    checkLarge(f, stem, {1500, 2}, lowest);
    checkLarge(f, scattered, {1501, 9}, lowest);
    checkLarge(f, {std::vector<Zeb8u>(45 * 41, 1), 45, 41, 22, 20}, {700, 12}, lowest);
  }
}

// ---- The state ----

TEST(Morphology, StateHeader) {
  struct Expected {
    int width, height;
    const char* mask;
    int anchorX, anchorY;
    unsigned shape, headWidth, headHeight;
    int headX, headY;
    unsigned rightReach, lowerReach, lengths;
  };
  const Expected cases[] = {
      {3, 3, "111111111", 1, 1, 1, 3, 3, 1, 1, 0, 0, 0},
      {4, 4,
       "0000"
       "0110"
       "0110"
       "0000",
       3, 0, 1, 2, 2, 2, -1, 0, 0, 0},
      {3, 3, "010111010", 1, 1, 2, 3, 3, 1, 1, 0, 0, 2},
      {3, 3, "111101111", 1, 1, 0, 3, 3, 1, 1, 1, 1, 0},  // a ring has a row of two runs
      {3, 2, "110011", 1, 0, 0, 3, 2, 1, 0, 1, 1, 0},     // equal lengths at different offsets
      {3, 3, "010111010", 0, 1, 0, 3, 3, 0, 1, 2, 1, 0},  // rows that do not reach the anchor
      {1, 3, "101", 0, 1, 2, 1, 3, 0, 1, 0, 0, 1},        // a gap: no rectangle
      {2, 2, "0000", 0, 0, 3, 1, 1, 0, 0, 0, 0, 0},
      {1, 1, "1", 0, 0, 1, 1, 1, 0, 0, 0, 0, 0},
  };
  for (const Expected& c : cases) {
    SCOPED_TRACE(c.mask);
    std::vector<Zeb8u> mask;
    for (const char* p = c.mask; *p; ++p) mask.push_back(*p == '1' ? 9 : 0);
    ZebiMorphState* state = nullptr;
    const ZebiSize size{c.width, c.height};
    ASSERT_EQ(zebiMorphologyInitAlloc_8u_C3R(50, mask.data(), size, {c.anchorX, c.anchorY}, &state), zebStsOk);
    const Record h = morphState(state);
    EXPECT_EQ(h.word<unsigned>(17), c.shape);
    EXPECT_EQ(h.address(0) % 16, 0u);
    EXPECT_EQ(memcmp(h.pointer<void>(0), mask.data(), mask.size()), 0);
    const bool general = c.shape == 0;
    EXPECT_EQ(h.address(1) != 0, general);
    EXPECT_EQ(h.address(2) != 0, general);
    EXPECT_NE(h.address(3), 0u);
    EXPECT_EQ(h.address(4) != 0, !general);
    EXPECT_EQ(h.word<unsigned>(5), c.headWidth);
    EXPECT_EQ(h.word<unsigned>(6), c.headHeight);
    EXPECT_EQ(h.word(7), c.headX);
    EXPECT_EQ(h.word(8), c.headY);
    EXPECT_EQ(h.word<unsigned>(9), c.rightReach);
    EXPECT_EQ(h.word<unsigned>(10), c.lowerReach);
    EXPECT_EQ(h.word<unsigned>(11), c.lengths);
    if (c.shape == 2) {
      EXPECT_EQ(h.word<unsigned>(12), (c.headHeight * c.lengths + 1) * (50 * 3 + 32) + 20 * c.headHeight + 36);
    }
    EXPECT_EQ(h.word<unsigned>(13), 1u);
    EXPECT_EQ(h.word<unsigned>(14), 3u);
    EXPECT_EQ(h.word<unsigned>(15), 50u);
    EXPECT_EQ(h.word<unsigned>(16), 0xFFFFFFFFu);
    for (size_t i = 0; general && i < mask.size(); ++i)
      for (int k = 0; k < 16; ++k) {
        EXPECT_EQ(h.pointer<Zeb8u>(1)[16 * i + k], mask[i] ? 0 : 0xFF);
        EXPECT_EQ(h.pointer<Zeb8u>(2)[16 * i + k], mask[i] ? 0xFF : 0);
      }
    zebiMorphologyFree(state);
  }
}

// The run-length list of a cross, longest first.
TEST(Morphology, ShapeRecord) {
  const Zeb8u cross[] = {0, 1, 0, 1, 1, 1, 0, 1, 0};
  ZebiMorphState* state = nullptr;
  ASSERT_EQ(zebiMorphologyInitAlloc_32f_C1R(20, cross, {3, 3}, {1, 1}, &state), zebStsOk);
  const Record record = morphShape(morphState(state).pointer<void>(4));
  const unsigned head[] = {3, 3, 1, 1, 0, 0, 3, 2};
  for (size_t i = 0; i < 8; ++i) EXPECT_EQ(record.word<unsigned>(i), head[i]) << i;
  const int lists[4][3] = {{0, 1, 2}, {1, 0, 1}, {3, 1, 0}, {1, 0, 0}};
  for (size_t list = 0; list < 4; ++list)
    for (int i = 0; i < (list < 2 ? 3 : 2); ++i)
      EXPECT_EQ(record.pointer<int>(8 + list)[i], lists[list][i]) << list << " " << i;
  zebiMorphologyFree(state);
}

// More lengths than are found in one pass over the mask: a triangle, either way up, and the same with two runs of three
// pixels that reach unequally far.
TEST(Morphology, ManyLengths) {
  constexpr int side = 600;
  std::vector<Zeb8u> mask;
  ZebiMorphState* state = nullptr;
  for (const bool longestFirst : {true, false}) {
    const auto length = [=](int row) { return std::max(longestFirst ? side - 1 - row : row, 1); };
    mask.assign(side * side, 0);
    for (int y = 0; y < side; ++y) memset(&mask[static_cast<size_t>(y) * side + 1], 1, static_cast<size_t>(length(y)));
    ASSERT_EQ(zebiMorphologyInitAlloc_8u_C1R(5, mask.data(), {side, side}, {1, 1}, &state), zebStsOk);
    EXPECT_EQ(morphState(state).word<unsigned>(17), 2u);
    const Record record = morphShape(morphState(state).pointer<void>(4));
    EXPECT_EQ(record.word<unsigned>(7), side - 1u);
    for (int i = 0; i < side; ++i) {
      EXPECT_EQ(record.pointer<int>(9)[i], side - 1 - length(i)) << i;
      if (i < side - 1) {
        EXPECT_EQ(record.pointer<int>(10)[i], side - 1 - i) << i;
        EXPECT_EQ(record.pointer<int>(11)[i], 0) << i;
      }
    }
    EXPECT_EQ(zebiMorphologyFree(state), zebStsOk);
  }
  memcpy(&mask[0], "\1\1\1\0", 4);
  ASSERT_EQ(zebiMorphologyInitAlloc_8u_C1R(5, mask.data(), {side, side}, {1, 1}, &state), zebStsOk);
  EXPECT_EQ(morphState(state).word<unsigned>(17), 0u);
  EXPECT_EQ(zebiMorphologyFree(state), zebStsOk);
}

TEST(Morphology, FloatThresholdsAndTables) {
  const auto shapeOf = [](auto initAlloc, ZebiSize size) {
    // A diamond of sorts: an ellipse that is no rectangle.
    std::vector<Zeb8u> mask(static_cast<size_t>(size.width) * size.height, 1);
    mask.front() = 0;
    ZebiMorphState* state = nullptr;
    EXPECT_EQ(initAlloc(10, mask.data(), size, ZebiPoint{size.width / 2, size.height / 2}, &state), zebStsOk);
    const unsigned shape = morphState(state).word<unsigned>(17);
    if (shape == 0) {
      const float* erode = morphState(state).pointer<float>(1);
      EXPECT_EQ(erode[0], std::numeric_limits<float>::max());
      EXPECT_EQ(erode[4], std::numeric_limits<float>::lowest());
      EXPECT_EQ(morphState(state).pointer<float>(2)[7], std::numeric_limits<float>::max());
    }
    zebiMorphologyFree(state);
    return shape;
  };
  EXPECT_EQ(shapeOf(zebiMorphologyInitAlloc_32f_C1R, {4, 4}), 2u);
  EXPECT_EQ(shapeOf(zebiMorphologyInitAlloc_8u_C4R, {4, 4}), 2u);
  EXPECT_EQ(shapeOf(zebiMorphologyInitAlloc_32f_C3R, {4, 4}), 0u);
  EXPECT_EQ(shapeOf(zebiMorphologyInitAlloc_32f_C3R, {5, 4}), 2u);
  EXPECT_EQ(shapeOf(zebiMorphologyInitAlloc_32f_C4R, {8, 6}), 0u);
  EXPECT_EQ(shapeOf(zebiMorphologyInitAlloc_32f_C4R, {7, 7}), 2u);
}

// A wide ellipse over a narrow region keeps its formula's scratch in word 13, whatever its path takes; bit-packed masks
// have their reach in words 10 and 11.
TEST(Morphology, WordsOfFormulas) {
  std::vector<Zeb8u> mask(61 * 2, 1);
  mask[0] = 0;
  ZebiMorphState* state = nullptr;
  ASSERT_EQ(zebiMorphologyInitAlloc_32f_C1R(1, mask.data(), {61, 2}, {30, 0}, &state), zebStsOk);
  const Record wide = morphState(state);
  EXPECT_EQ(wide.word<unsigned>(17), 2u);
  EXPECT_EQ(wide.word<unsigned>(12), (2u * 2 + 1) * (1 * 4 + 32) + 20 * 2 + 36);
  EXPECT_EQ(zebiMorphologyFree(state), zebStsOk);
  int spec = 0, buffer = 0;
  ASSERT_EQ(zebiMorphologyBorderGetSize_1u_C1R(9, {61, 2}, &spec, &buffer), zebStsOk);
  const Scratch bits(spec), scratch(buffer);
  ASSERT_EQ(zebiMorphologyBorderInit_1u_C1R(9, mask.data(), {61, 2}, stateIn(bits), scratch.get()), zebStsOk);
  const Record packed = morphState(bits.get());
  EXPECT_EQ(packed.word<unsigned>(9), 30u);
  EXPECT_EQ(packed.word<unsigned>(10), 1u);
}

TEST(Morphology, SizesFollowTheFormula) {
  Zeb8u mask[35] = {1};
  int state = 0, spec = 0, buffer = 0;
  ASSERT_EQ(zebiMorphologyGetSize_8u_C3R(100, mask, {5, 7}, &state), zebStsOk);
  ASSERT_EQ(zebiMorphologyBorderGetSize_8u_C3R(100, {5, 7}, &spec, &buffer), zebStsOk);
  EXPECT_EQ(state, spec);
  const int headers = static_cast<int>(morphState(nullptr).bytes() + morphShape(nullptr).bytes());
  EXPECT_EQ(spec, 33 * 48 + 16 * 7 + headers + buffer);
  // This mask's ellipse term is the largest.
  EXPECT_EQ(buffer, (7 * 7 + 1) * (100 * 3 + 32) + 20 * 7 + 36 + 176 + 48 + ((16 * 7 + 63) & ~15));
  ASSERT_EQ(zebiMorphologyBorderGetSize_1u_C1R(100, {5, 7}, &spec, &buffer), zebStsOk);
  EXPECT_EQ(spec, 3 * 48 + static_cast<int>(morphState(nullptr).bytes()));
  int untouched = 77;
  EXPECT_EQ(zebiMorphologyGetSize_32f_C4R(0x7FFFFFFF, mask, {5, 7}, &untouched), zebStsErrOverflow);
  EXPECT_EQ(zebiMorphologyBorderGetSize_1u_C1R(5, {0x7FFFFFFF, 0x7FFFFFFF}, &untouched, &untouched), zebStsErrOverflow);
  EXPECT_EQ(zebiMorphologyBorderGetSize_16s_C1R(0x40000000, {2, 2}, &untouched, &untouched), zebStsErrOverflow);
  EXPECT_EQ(untouched, 77);
}

// Elements bound the image for masks that are taken element by element and for pixels in memory; rectangles and
// ellipses with replicated border pass infinities through.
TEST(Erode, Infinities) {
  const float inf = std::numeric_limits<float>::infinity(), largest = std::numeric_limits<float>::max();
  Image<Zeb32f> src(40, 3, 1, {}), dst(40, 3, 1, {});
  const Zeb8u ring[] = {1, 0, 1}, rect[] = {1, 1, 1};
  const auto run = [&](const Zeb8u* mask, float value, ZebiBorderType border, ZebiSize roi, bool lowest) {
    src.set(Plane<Zeb32f>(40, 3, 1, value));
    int spec = 0, buffer = 0;
    EXPECT_EQ(zebiMorphologyBorderGetSize_32f_C1R(40, {3, 1}, &spec, &buffer), zebStsOk);
    const Scratch state(spec), scratch(buffer);
    EXPECT_EQ(zebiMorphologyBorderInit_32f_C1R(40, mask, {3, 1}, stateIn(state), scratch.get()), zebStsOk);
    EXPECT_EQ(
        (lowest ? zebiErodeBorder_32f_C1R : zebiDilateBorder_32f_C1R)(
            src.pixels(1), src.step(), dst.pixels(), dst.step(), roi, border, 0.0f, stateIn(state), scratch.get()),
        zebStsOk);
    return dst.plane().at(0, 0);
  };
  for (float value : {inf, -inf})
    for (bool lowest : {true, false}) {
      EXPECT_EQ(run(rect, value, zebBorderRepl, {38, 3}, lowest), value);
      EXPECT_EQ(run(rect, value, zebBorderInMem, {38, 3}, lowest), value > 0 ? largest : -largest);
      EXPECT_EQ(run(ring, value, zebBorderRepl, {38, 3}, lowest), value > 0 ? largest : -largest);
    }
}

// A state is for rows of its width at most.
TEST(Erode, WiderThanTheState) {
  const Zeb8u mask[] = {1, 0, 1, 1};
  const Image<Zeb8u> image(22, 3, 1, {});
  ZebiMorphState* state = nullptr;
  ASSERT_EQ(zebiMorphologyInitAlloc_8u_C1R(21, mask, {2, 2}, {1, 1}, &state), zebStsOk);
  for (const auto call : {bytes.erode, bytes.dilate})
    EXPECT_EQ(call(image.pixels(), 22, image.pixels(), 22, {22, 3}, zebBorderRepl, state), zebStsErrSize);
  EXPECT_EQ(zebiMorphologyFree(state), zebStsOk);
  int spec = 0, buffer = 0;
  ASSERT_EQ(zebiMorphologyBorderGetSize_1u_C1R(21, {2, 2}, &spec, &buffer), zebStsOk);
  const Scratch packed(spec), scratch(buffer);
  ASSERT_EQ(zebiMorphologyBorderInit_1u_C1R(21, mask, {2, 2}, stateIn(packed), scratch.get()), zebStsOk);
  for (const auto call : {zebiErodeBorder_1u_C1R, zebiDilateBorder_1u_C1R})
    EXPECT_EQ(call(image.pixels(), 22, image.pixels(), 22, {22, 3}, zebBorderRepl, 0, stateIn(packed), scratch.get()),
              zebStsErrSize);
}

}  // namespace
