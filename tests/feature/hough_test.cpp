#include "reference/hough.h"

#include "feature/drawing.h"
#include "support/compare.h"
#include "support/contract.h"

namespace {

using namespace test;
using ref::HoughGrid;
using ref::Plane;

const ZebiPoint_32f deltas[] = {{1.0f, 0.017453292f}, {0.5f, 0.05f},    {3.0f, 0.3f},
                                {0.02f, 0.5f},        {1.0f, 3.14159f}, {2.5f, 1.6f}};

// region null: the whole accumulator.
void checkLines(const Plane<Zeb8u>& plane, ZebiPoint_32f delta, int threshold, int most, const ZebiPoint_32f* region,
                Random& random) {
  const Image<Zeb8u> src(plane, Layout::random<Zeb8u>(random));
  const HoughGrid grid{src.size(), delta};
  const auto want = ref::houghLines(plane, grid, threshold, static_cast<size_t>(most), region);
  int size = 0, count = -1;
  ASSERT_EQ(zebiHoughLineGetSize_8u_C1R(src.size(), delta, most, &size), zebStsOk);
  ASSERT_EQ(size,
            grid.cells() * 16 + (plane.width * 4 + 48) * plane.height + most * 16 + (grid.angles() - 1) * 8 + 264);
  Scratch scratch(size);
  GuardedBytes lines(static_cast<size_t>(most) * sizeof(ZebiPoint_32f), Place::back);
  auto* pLine = reinterpret_cast<ZebiPoint_32f*>(lines.data());
  for (int time = 0; time < 2; ++time) {
    if (region) {
      ZebiPoint_32f range[2] = {region[0], region[1]};
      ASSERT_EQ(zebiHoughLine_Region_8u32f_C1R(src.pixels(), src.step(), src.size(), pLine, range, most, &count, delta,
                                               threshold, scratch.get()),
                zebStsOk);
    } else {
      ASSERT_EQ(zebiHoughLine_8u32f_C1R(src.pixels(), src.step(), src.size(), delta, threshold, pLine, most, &count,
                                        scratch.get()),
                zebStsOk);
    }
    ASSERT_EQ(count, static_cast<int>(want.size())) << src.describe() << " delta " << delta.x << " " << delta.y;
    for (int i = 0; i < count; ++i) {
      ASSERT_TRUE(same(pLine[i].x, want[i].x)) << i << ": rho " << pLine[i].x << ", want " << want[i].x;
      ASSERT_TRUE(same(pLine[i].y, want[i].y)) << i << ": theta " << pLine[i].y << ", want " << want[i].y;
    }
  }
  ASSERT_TRUE(lines.intactMargins() && scratch.intact());
}

TEST(HoughLine, EqualsReference) {
  Random random;
  for (int round = 0; round < 60; ++round) {
    const int w = round < 40 ? 1 + round * 2 : random.within(1, 120), h = random.within(1, 60);
    const auto plane = drawing(w, h, round % 4 * 8, random);
    auto delta = deltas[round % 6];
    delta.x = std::min(delta.x, static_cast<float>(w + h));
    checkLines(plane, delta, random.within(1, 12), round % 3 == 0 ? 1 : 40, nullptr, random);
  }
  checkLines(Plane<Zeb8u>(50, 40, 1, 255), deltas[0], 5, 10, nullptr, random);  // every pixel
  checkLines(Plane<Zeb8u>(50, 40, 1, 0), deltas[0], 1, 10, nullptr, random);    // none
  checkLines(Plane<Zeb8u>(1, 300, 1, 1), deltas[0], 9, 5, nullptr, random);
  checkLines(Plane<Zeb8u>(33000, 1, 1, 1), {50.0f, 0.4f}, 3, 5, nullptr, random);  // coordinates beyond 15 bits
  checkLines(drawing(40, 40, 10, random), {80.0f, 0.1f}, 2, 5, nullptr, random);   // rho steps as large as allowed
}

TEST(HoughLine, RegionEqualsReference) {
  Random random;
  for (int round = 0; round < 30; ++round) {
    const auto plane = drawing(random.within(2, 90), random.within(2, 60), 10, random);
    const float rho = random.real(-60, 60), theta = random.real(0, 3);
    const ZebiPoint_32f region[2] = {{rho, theta}, {rho + random.real(0, 60), theta + random.real(0, 2)}};
    checkLines(plane, deltas[round % 3], random.within(1, 6), 30, region, random);
  }
  const ZebiPoint_32f outside[2] = {{1e6f, 0.0f}, {2e6f, 1.0f}};
  checkLines(drawing(40, 40, 10, random), deltas[0], 2, 5, outside, random);
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

TEST(HoughLine, Checks) {
  const Image<Zeb8u> src(20, 10, 1, {});
  ZebiPoint_32f lines[4], region[2] = {{-9, 0}, {9, 2}}, inverted[2] = {{-9, 2}, {9, 1}},
                          strange[2] = {{-9, NAN}, {9, 1}};
  int count = 0;
  Scratch scratch(9000);
  const ZebiPoint_32f delta = {1.0f, 0.1f};
  const auto faults = [&](auto& c, auto at) {
    constexpr bool whole = decltype(at)::value;
    constexpr size_t d = whole ? 3 : 7, threshold = whole ? 4 : 8, most = whole ? 6 : 5;
    if constexpr (whole)
      c.template nulls<0, 5, 7, 8>();
    else
      c.template nulls<0, 3, 6, 9, 4>();
    c.template with<1>(0, zebStsErrStep).template with<1>(-20, zebStsErrStep).template sizes<2>();
    c.template with<most>(0, zebStsErrSize);
    for (const ZebiPoint_32f bad :
         {ZebiPoint_32f{0, 0.1f}, {-1, 0.1f}, {30.5f, 0.1f}, {1, 0}, {1, 3.1416f}, {NAN, 0.1f}, {1, NAN}})
      c.template with<d>(bad, zebStsErrBadArgument);
    c.template with<threshold>(0, zebStsErrBadArgument);
    if constexpr (!whole) c.template with<4>(inverted, zebStsErrRange).template with<4>(strange, zebStsErrRange);
    c.template with<d>(ZebiPoint_32f{1e-30f, 0.1f}, zebStsErrOverflow);
    c.template with<d>(ZebiPoint_32f{1, 1e-30f}, zebStsErrOverflow);
    c.check();
  };
  Contract whole(NAMED(zebiHoughLine_8u32f_C1R), src.pixels(), src.step(), src.size(), delta, 3, lines, 4, &count,
                 scratch.get());
  faults(whole, std::true_type());
  Contract part(NAMED(zebiHoughLine_Region_8u32f_C1R), src.pixels(), src.step(), src.size(), lines, region, 4, &count,
                delta, 3, scratch.get());
  faults(part, std::false_type());
  int size = 0;
  Contract(NAMED(zebiHoughLineGetSize_8u_C1R), ZebiSize{20, 10}, delta, 4, &size)
      .nulls<3>()
      .sizes<0>()
      .with<1>(ZebiPoint_32f{0, 1}, zebStsErrBadArgument)
      .with<1>(ZebiPoint_32f{1, NAN}, zebStsErrBadArgument)
      .with<2>(0x7FFFFFFF, zebStsErrOverflow)
      .with<0>(ZebiSize{0x7FFFFFFF, 0x7FFFFFFF}, zebStsErrOverflow)
      .check();
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

void checkSegments(const Plane<Zeb8u>& plane, ZebiPoint_32f delta, int threshold, int length, int gap, int most,
                   Random& random) {
  const Image<Zeb8u> src(plane, Layout::random<Zeb8u>(random));
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

TEST(HoughProbLine, EqualsReference) {
  Random random;
  for (int round = 0; round < 60; ++round) {
    const int w = round < 30 ? 1 + round * 3 : random.within(1, 120), h = random.within(1, 70);
    checkSegments(drawing(w, h, round % 3 * 6, random), deltas[round % 6], random.within(2, 15), random.within(0, 20),
                  random.within(0, 5), round % 4 == 0 ? 2 : 50, random);
  }
  checkSegments(Plane<Zeb8u>(200, 170, 1, 1), deltas[0], 60, 30, 3, 300, random);  // more pixels than 16 bits count
  checkSegments(Plane<Zeb8u>(190, 180, 1, 1), {400.0f, 1.0f}, 60, 30, 3, 300, random);
  checkSegments(Plane<Zeb8u>(30, 20, 1, 0), deltas[0], 1, 0, 0, 3, random);
  checkSegments(Plane<Zeb8u>(1, 90, 1, 1), deltas[0], 5, 3, 0, 3, random);
  checkSegments(drawing(30, 20, 20, random), {1e30f, 1.0f}, 1, 0, 0, 3, random);  // no cell at all
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

TEST(HoughProbLine, Checks) {
  const ZebiPoint_32f delta = {1.0f, 0.1f};
  const Image<Zeb8u> src(Plane<Zeb8u>(20, 10, 1, 0), {});
  Probabilistic p({20, 10}, delta);
  ZebiRect rects[4];
  int count = 0, specSize = 0, size = 0;
  Contract(NAMED(zebiHoughProbLine_8u32f_C1R), src.pixels(), src.step(), src.size(), 3, 2, 1, rects, 4, &count,
           p.scratch.get(), p.get())
      .nulls<0, 6, 8, 9, 10>()
      .sizes<2>()
      .with<7>(0, zebStsErrSize)
      .with<3>(0, zebStsErrBadArgument)
      .with<4>(-1, zebStsErrBadArgument)
      .with<5>(-1, zebStsErrBadArgument)
      .with<2>(ZebiSize{0x7FFFFFFF, 0x7FFFFFFF}, zebStsErrOverflow)
      .check();
  Contract(NAMED(zebiHoughProbLineGetSize_8u_C1R), ZebiSize{20, 10}, delta, &specSize, &size)
      .nulls<2, 3>()
      .sizes<0>()
      .with<1>(ZebiPoint_32f{0, 1}, zebStsErrBadArgument)
      .with<1>(ZebiPoint_32f{1, -1}, zebStsErrBadArgument)
      .with<1>(ZebiPoint_32f{1e-20f, 1}, zebStsErrOverflow)
      .with<1>(ZebiPoint_32f{1, 1e-20f}, zebStsErrOverflow)
      .check();
  Contract(NAMED(zebiHoughProbLineInit_8u32f_C1R), ZebiSize{20, 10}, delta, 0, p.get())
      .sizes<0>()
      .with<1>(ZebiPoint_32f{0, 1}, zebStsErrBadArgument)
      .with<1>(ZebiPoint_32f{1, NAN}, zebStsErrBadArgument)
      .nulls<3>()
      .check();
}

}  // namespace
