#include "reference/hough.h"

#include <memory>

#include "feature/drawing.h"
#include "support/compare.h"

namespace {

using namespace test;
using ref::HoughGrid;
using ref::Plane;

void checkLines(const Plane<Zeb8u>& plane, ZebiPoint_32f delta, int threshold) {
  constexpr int most = 40;
  const Image<Zeb8u> src(plane, {});
  const HoughGrid grid{src.size(), delta};
  const auto want = ref::houghLines(plane, grid, threshold, most);
  int size = 0, count = -1;
  ASSERT_EQ(zebiHoughLineGetSize_8u_C1R(src.size(), delta, most, &size), zebStsOk);
  ASSERT_EQ(size,
            grid.cells() * 16 + (plane.width * 4 + 48) * plane.height + most * 16 + (grid.angles() - 1) * 8 + 264);
  const Scratch scratch(size);
  ZebiPoint_32f lines[most];
  ASSERT_EQ(zebiHoughLine_8u32f_C1R(src.pixels(), src.step(), src.size(), delta, threshold, lines, most, &count,
                                    scratch.get()),
            zebStsOk);
  ASSERT_EQ(count, static_cast<int>(want.size())) << src.describe() << " delta " << delta.x << " " << delta.y;
  for (int i = 0; i < count; ++i) {
    ASSERT_TRUE(same(lines[i].x, want[i].x)) << i << ": rho " << lines[i].x << ", want " << want[i].x;
    ASSERT_TRUE(same(lines[i].y, want[i].y)) << i << ": theta " << lines[i].y << ", want " << want[i].y;
  }
  ASSERT_TRUE(scratch.intact());
}

// The largest coordinates and factors of 16 bits, and larger ones.
TEST(HoughLine, SixteenBitsAndMore) {
  Random random;
  for (int side : {32768, 33000}) {
    checkLines(Plane<Zeb8u>(side, 1, 1, 1), {50.0f, 0.4f}, 3);
    checkLines(Plane<Zeb8u>(1, side, 1, 1), {50.0f, 0.4f}, 3);
  }
  for (const Zeb32f rho : {0.032f, 0.02f})
    for (int round = 0; round < 4; ++round)
      checkLines(drawing(random.within(2, 120), random.within(2, 60), 10, random), {rho, 0.5f}, random.within(1, 6));
}

// Cells so narrow that the factors leave 32 bits: the right one of two columns.
TEST(HoughLine, NarrowestCells) {
  const Zeb8u src[4] = {0, 1, 0, 1};
  const ZebiPoint_32f delta = {4.7e-7f, 3.0f};
  int size = 0, count = -1;
  ASSERT_EQ(zebiHoughLineGetSize_8u_C1R({2, 2}, delta, 1, &size), zebStsOk);
  const std::unique_ptr<Zeb8u[]> scratch(new Zeb8u[static_cast<size_t>(size)]);
  ZebiPoint_32f line = {};
  ASSERT_EQ(zebiHoughLine_8u32f_C1R(src, 2, {2, 2}, delta, 1, &line, 1, &count, scratch.get()), zebStsOk);
  EXPECT_EQ(count, 1);
  EXPECT_NEAR(line.x, 1.0f, 1e-6f);
  EXPECT_EQ(line.y, 0.0f);
}

// Overlapping rows: a step below the width.
TEST(HoughLine, StepBelowTheWidth) {
  Random random;
  Plane<Zeb8u> memory(40, 1);
  for (auto& v : memory.data) v = random.within(0, 1) ? 9 : 0;
  const Image<Zeb8u> src(memory, {});
  Plane<Zeb8u> seen(20, 5);
  for (int y = 0; y < 5; ++y)
    for (int x = 0; x < 20; ++x) seen.at(x, y) = memory.at(x + 5 * y, 0);
  const HoughGrid grid{{20, 5}, {1.0f, 0.1f}};
  int size = 0, count = 0;
  ASSERT_EQ(zebiHoughLineGetSize_8u_C1R(grid.size, grid.delta, 4, &size), zebStsOk);
  Scratch scratch(size);
  ZebiPoint_32f lines[4];
  ASSERT_EQ(zebiHoughLine_8u32f_C1R(src.pixels(), 5, grid.size, grid.delta, 2, lines, 4, &count, scratch.get()),
            zebStsOk);
  const auto want = ref::houghLines(seen, grid, 2, 4);
  ASSERT_EQ(count, static_cast<int>(want.size()));
  for (int i = 0; i < count; ++i) EXPECT_TRUE(same(lines[i].x, want[i].x) && same(lines[i].y, want[i].y));
}

// What no buffer is large enough for, and what no comparison is true of.
TEST(HoughLine, RefusesHopelessSteps) {
  const Image<Zeb8u> src(20, 10, 1, {});
  ZebiPoint_32f lines[4];
  int count = 0, size = 0;
  Scratch scratch(9000);
  const auto find = [&](ZebiPoint_32f delta, ZebiPoint_32f from) {
    ZebiPoint_32f region[] = {from, {9, 2}};
    return zebiHoughLine_Region_8u32f_C1R(src.pixels(), 20, {20, 10}, lines, region, 4, &count, delta, 3,
                                          scratch.get());
  };
  for (const ZebiPoint_32f bad : {ZebiPoint_32f{30.5f, 0.1f}, {1, 3.1416f}})
    EXPECT_EQ(find(bad, {-9, NAN}), zebStsErrBadArgument);
  EXPECT_EQ(find({1, 0.1f}, {-9, NAN}), zebStsErrRange);
  for (const ZebiPoint_32f fine : {ZebiPoint_32f{1e-30f, 0.1f}, {1, 1e-30f}})
    EXPECT_EQ(find(fine, {-9, 0}), zebStsErrOverflow);
  EXPECT_EQ(zebiHoughLineGetSize_8u_C1R({INT32_MAX, INT32_MAX}, {1, 0.1f}, 4, &size), zebStsErrOverflow);
}

// ---- Probabilistic ----

struct Probabilistic {
  Probabilistic(ZebiSize size, ZebiPoint_32f delta)
      : sizes(query(size, delta)), spec(sizes.first), scratch(sizes.second, Place::front) {
    EXPECT_EQ(zebiHoughProbLineInit_8u32f_C1R(size, delta, 7, get()), zebStsOk);
  }
  static std::pair<int, int> query(ZebiSize size, ZebiPoint_32f delta) {
    int specSize = 0, bufferSize = 0;
    EXPECT_EQ(zebiHoughProbLineGetSize_8u_C1R(size, delta, &specSize, &bufferSize), zebStsOk);
    const HoughGrid grid{size, delta};
    EXPECT_EQ(specSize, (grid.angles() - 1) * 8 + 24);
    EXPECT_EQ(bufferSize,
              size.height * (size.width / 8 + 1) + 4 * (grid.cells() * grid.angles() + size.height * size.width));
    return {specSize, bufferSize};
  }
  ZebiHoughProbSpec* get() const { return reinterpret_cast<ZebiHoughProbSpec*>(spec.get()); }

  std::pair<int, int> sizes;
  Scratch spec, scratch;
};

// Under a rounding mode that the caller has set, and keeps.
void checkSegments(const Plane<Zeb8u>& plane, ZebiPoint_32f delta, int threshold, int length, int gap, int most) {
  const Image<Zeb8u> src(plane, {});
  Probabilistic p(src.size(), delta);
  const auto want = ref::houghSegments(plane, {src.size(), delta}, threshold, length, gap, static_cast<size_t>(most));
  GuardedBytes segments(static_cast<size_t>(most) * sizeof(ZebiRect), Place::back);
  auto* rects = reinterpret_cast<ZebiRect*>(segments.data());
  std::fesetround(FE_UPWARD);
  int count = -1;
  const ZebStatus status = zebiHoughProbLine_8u32f_C1R(src.pixels(), src.step(), src.size(), threshold, length, gap,
                                                       rects, most, &count, p.scratch.get(), p.get());
  EXPECT_EQ(std::fegetround(), FE_UPWARD);
  std::fesetround(FE_TONEAREST);
  ASSERT_EQ(status, want.truncated ? zebStsWarnLinesTruncated : zebStsOk);
  ASSERT_EQ(count, static_cast<int>(want.segments.size())) << src.describe() << " delta " << delta.x << " " << delta.y;
  for (int i = 0; i < count; ++i)
    ASSERT_EQ(memcmp(&rects[i], &want.segments[i], sizeof(ZebiRect)), 0)
        << i << ": " << rects[i].x << " " << rects[i].y << " " << rects[i].width << " " << rects[i].height << ", want "
        << want.segments[i].x << " " << want.segments[i].y << " " << want.segments[i].width << " "
        << want.segments[i].height;
  ASSERT_TRUE(segments.intactMargins() && p.scratch.intact() && p.spec.intact());
}

TEST(HoughProbLine, CountsAndCells) {
  Random random;
  checkSegments(drawing(120, 70, 12, random), {0.5f, 0.05f}, 9, 10, 2, 50);
  // More pixels than 16 bits count: in cells that hold a part of them, and in one cell.
  checkSegments(Plane<Zeb8u>(200, 170, 1, 1), {1.0f, 0.017453292f}, 60, 30, 3, 300);
  for (const int threshold : {60, 33000})
    checkSegments(Plane<Zeb8u>(190, 180, 1, 1), {400.0f, 1.0f}, threshold, 30, 3, 300);
  checkSegments(drawing(30, 20, 20, random), {1e30f, 1.0f}, 1, 0, 0, 3);  // no cell at all
}

TEST(HoughProbLine, SpecLayout) {
  const ZebiPoint_32f delta = {2.0f, 0.5f};
  Probabilistic p({10, 10}, delta);
  float words[3 + 2 * 7];
  memcpy(words, p.get(), sizeof(words));
  EXPECT_EQ(words[0], 2.0f);
  EXPECT_EQ(words[1], 0.5f);
  int hint;
  memcpy(&hint, &words[2], 4);
  EXPECT_EQ(hint, 7);
  float theta = 0;
  for (int k = 0; k < 7; ++k, theta += 0.5f) {
    EXPECT_EQ(words[3 + 2 * k], static_cast<float>(std::cos(static_cast<double>(theta)) / 2));
    EXPECT_EQ(words[4 + 2 * k], static_cast<float>(std::sin(static_cast<double>(theta)) / 2));
  }
}

TEST(HoughProbLine, RefusesHopelessSizes) {
  const Image<Zeb8u> src(Plane<Zeb8u>(20, 10, 1, 0), {});
  Probabilistic p({20, 10}, {1, 0.1f});
  ZebiRect rects[4];
  int count = 0, spec = 0, size = 0;
  EXPECT_EQ(zebiHoughProbLine_8u32f_C1R(src.pixels(), 20, {INT32_MAX, INT32_MAX}, 3, 2, 1, rects, 4, &count,
                                        p.scratch.get(), p.get()),
            zebStsErrOverflow);
  for (const ZebiPoint_32f fine : {ZebiPoint_32f{1e-20f, 1}, {1, 1e-20f}})
    EXPECT_EQ(zebiHoughProbLineGetSize_8u_C1R({20, 10}, fine, &spec, &size), zebStsErrOverflow);
  EXPECT_EQ(zebiHoughProbLineInit_8u32f_C1R({20, 10}, {1, 1e-20f}, 0, p.get()), zebStsErrOverflow);
}

}  // namespace
