#include "filter/rank.h"

#include "reference/morph.h"
#include "support/compare.h"

namespace {

using namespace test;

// A rectangle over a region inside a guarded image; the library may read the surroundings only where they are declared.
template <class T>
void check(Random& random, int channels, ZebiSize roi, ZebiSize rect, ZebiPoint anchor, int sides) {
  const ZebiBorderType border = zebBorderRepl | sides << 4;
  const zeb::Sides in = zeb::sidesInMemory(border);
  const zeb::Window window = zeb::windowOf(rect, anchor);
  const auto reach = [](bool memory, int64_t v) { return memory && v > 0 ? static_cast<int>(v) : 0; };
  const int left = reach(in.left, -window.left), right = reach(in.right, window.right);
  const int top = reach(in.top, -window.top), bottom = reach(in.bottom, window.bottom);
  const Image<T> src(left + roi.width + right, top + roi.height + bottom, channels, Layout::random<T>(random),
                     random.within(0, 3) ? Content::noise : Content::runs, random);
  const auto plane = src.plane();
  const ref::Region<T> region{&plane, left, top, roi.width, roi.height, in.left, in.right, in.top, in.bottom};
  const ref::Element element{std::vector<Zeb8u>(static_cast<size_t>(rect.width) * rect.height, 1), rect.width,
                             rect.height, anchor.x, anchor.y};
  const int px = channels * static_cast<int>(sizeof(T));
  const int64_t size = zeb::rankBufferSize(roi.width, px, rect);
  const zeb::BorderedImage rows(src.pixels(left, top), src.step(), roi, px, border);
  for (bool lowest : {true, false}) {
    Image<T> dst(roi.width, roi.height, channels, Layout::random<T>(random));
    const Scratch scratch(static_cast<int>(size));
    const zeb::RowOutput<T> output(zeb::Rows<T>(dst.pixels(), dst.step()), 0, roi.height);
    if (lowest)
      zeb::rankRegion<zeb::Lowest<T>>(rows, window, channels, output, zeb::Scratch(scratch.get(), size));
    else
      zeb::rankRegion<zeb::Highest<T>>(rows, window, channels, output, zeb::Scratch(scratch.get(), size));
    ASSERT_TRUE(agree("rankRegion", dst, ref::extremum(region, element, lowest)))
        << rect.width << " x " << rect.height << " anchor " << anchor.x << ", " << anchor.y << " sides " << sides;
    ASSERT_TRUE(scratch.intact());
  }
}

template <class T>
void checkAll() {
  Random random;
  for (int round = 0; round < 260; ++round) {
    const int channels = round % 3 == 0 ? 1 : round % 3 == 1 ? 3 : 4;
    const ZebiSize roi{round < 140 ? 1 + round / 2 : random.within(1, 150), random.within(1, 23)};
    const ZebiSize rect{random.within(1, round % 5 ? 9 : 40), random.within(1, round % 4 ? 9 : 30)};
    // The anchor may lie off the rectangle.
    const ZebiPoint anchor{random.within(round % 7 ? 0 : -12, rect.width + (round % 7 ? -1 : 12)),
                           random.within(round % 7 ? 0 : -9, rect.height + (round % 7 ? -1 : 9))};
    check<T>(random, channels, roi, rect, anchor, round % 2 ? 0 : random.within(0, 15));
  }
  // Several strips of columns.
  check<T>(random, 4, {4200, 4}, {5, 3}, {2, 1}, 0);
  check<T>(random, 1, {9000, 12}, {3, 10}, {1, 5}, 15);
  check<T>(random, 3, {700, 30}, {70, 90}, {33, 80}, 3);
}

TEST(Rank, EqualsReference8u) {
  checkAll<Zeb8u>();
}
TEST(Rank, EqualsReference16u) {
  checkAll<Zeb16u>();
}
TEST(Rank, EqualsReference16s) {
  checkAll<Zeb16s>();
}
TEST(Rank, EqualsReference32f) {
  checkAll<Zeb32f>();
}

TEST(Rank, BufferSizeStopsInsteadOfWrapping) {
  EXPECT_GT(zeb::rankBufferSize(0x7FFFFFFF, 16, {0x7FFFFFFF, 0x7FFFFFFF}), 0x7FFFFFFF);
  EXPECT_GT(zeb::rankBufferSize(1, 1, {1, 0x7FFFFFFF}), 0x7FFFFFFF);
}

}  // namespace
