// Derivative rows where no exported function reaches: three channels, rows in any order, one derivative alone.
#include "filter/derivative.h"

#include "reference/canny.h"
#include "support/compare.h"

namespace {

using namespace test;
using ref::Plane;

TEST(DerivativeRows, OfThreeChannelsInAnyOrder) {
  Random random;
  for (int w = 1; w <= 40; ++w) {
    const int bases[] = {zebBorderConst, zebBorderRepl, zebBorderInMem};
    const int border = bases[w % 3] | (random.within(0, 15) << 4), h = 1 + w % 5;
    const auto op = static_cast<zeb::Operator>(random.within(0, 2));
    const int taps = 2 * zeb::reachOf(op) + 1, filter = op == zeb::Operator::scharr ? zebFilterScharr : zebFilterSobel;
    constexpr int margin = 2;
    Plane<Zeb8u> all(w + 2 * margin, h + 2 * margin, 3);
    for (Zeb8u& v : all.data) v = static_cast<Zeb8u>(random.within(0, 255));
    const Image<Zeb8u> src(all, Layout::random<Zeb8u>(random));
    const int64_t bytes = zeb::DerivativeRows<Zeb8u>::scratchBytes(op, w, 3);
    Scratch memory(static_cast<int>(bytes));
    zeb::Scratch scratch(memory.get(), bytes);
    const Zeb8u value[] = {77, 200, 3};
    zeb::DerivativeRows<Zeb8u> rows(
        op, zeb::BorderedImage(src.pixels(margin, margin), src.step(), {w, h}, 3, border, value), scratch);
    Image<Zeb16s> dx(w, h, 3, Layout::random<Zeb16s>(random)), dy(w, h, 3, Layout::random<Zeb16s>(random));
    for (int y = h; y-- > 0;) {
      rows.form(y, w % 2 ? dx.pixels(0, y) : nullptr, dy.pixels(0, y));
      if (w % 2 == 0) rows.form(y, dx.pixels(0, y), nullptr);
    }
    Plane<Zeb16s> wantX(w, h, 3), wantY(w, h, 3);
    for (int c = 0; c < 3; ++c) {
      Plane<Zeb8u> plane(all.width, all.height);
      for (int y = 0; y < all.height; ++y)
        for (int x = 0; x < all.width; ++x) plane.at(x, y) = all.at(x, y, c);
      const auto want = ref::gradient<Zeb8u, Zeb16s>(
          ref::bordered<Zeb8u>(plane, margin, margin, {w, h}, border, value[c]), {w, h}, filter, taps);
      for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x) wantX.at(x, y, c) = want.dx.at(x, y), wantY.at(x, y, c) = want.dy.at(x, y);
    }
    ASSERT_TRUE(agree("dx", dx, wantX)) << "border " << border;
    ASSERT_TRUE(agree("dy", dy, wantY)) << "border " << border;
    ASSERT_TRUE(memory.intact());
  }
}

}  // namespace
