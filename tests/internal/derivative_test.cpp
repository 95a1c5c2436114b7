// Derivative rows of 8u and 32f images, with borders.
#include "filter/derivative.h"

#include "reference/canny.h"
#include "support/compare.h"

namespace {

using namespace test;
using ref::Plane;

// Every fourth image asks for dx alone.
template <class Kernel, class T>
void check(int w, int h, int filter, int border, Random& random) {
  using Rows = zeb::DerivativeRows<Kernel, T>;
  using D = typename Rows::D;
  constexpr int margin = 2;
  Plane<T> all(w + 2 * margin, h + 2 * margin);
  for (T& v : all.data) v = static_cast<T>(random.within(0, 255));
  const Image<T> src(all, Layout::random<T>(random));
  const int64_t bytes = Rows::scratchBytes(w);
  Scratch memory(static_cast<int>(bytes));
  zeb::Scratch scratch(memory.get(), bytes);
  const T value = 77;
  Rows rows(zeb::BorderedImage(src.pixels(margin, margin), src.step(), {w, h}, sizeof(T), border, &value), scratch);
  const auto want =
      ref::gradient<T, D>(ref::bordered<T>(all, margin, margin, {w, h}, border, T(77)), {w, h}, filter, Kernel::taps);
  Image<D> dx(w, h, 1, Layout::random<D>(random)), dy(w, h, 1, Layout::random<D>(random));
  const bool both = w % 4 != 0;
  for (int y = 0; y < h; ++y) rows.form(y, dx.pixels(0, y), both ? dy.pixels(0, y) : nullptr);
  ASSERT_TRUE(agree("dx", dx, want.dx)) << "border " << border;
  if (both) {
    ASSERT_TRUE(agree("dy", dy, want.dy)) << "border " << border;
  }
  ASSERT_TRUE(memory.intact());
}

TEST(DerivativeRows, EqualReference) {
  Random random;
  for (int w = 1; w <= 70; ++w) {
    const int border = (w % 3 == 0   ? zebBorderConst
                        : w % 3 == 1 ? zebBorderRepl
                                     : zebBorderInMem) |
                       (random.within(0, 15) << 4);
    const int h = 1 + w % 6;
    check<zeb::Scharr3, Zeb32f>(w, h, zebFilterScharr, border, random);
  }
}

}  // namespace
