// Responses of the structure tensor.
#include "reference/corner.h"

#include "sizes.h"

namespace {

using namespace fuzz;
using ref::Corner;
using ref::Plane;

// Bars of two or three pixels, black and white in turn: derivatives as large as they can be at most of the pixels.
template <class S>
Plane<S> bars(Choice& c, int width, int height) {
  const int broad = c.within(2, 3);
  const bool upright = c.coin();
  Plane<S> p(width, height);
  for (int y = 0; y < height; ++y)
    for (int x = 0; x < width; ++x) p.at(x, y) = static_cast<S>((upright ? x : y) / broad % 2 * 255);
  return p;
}

// A filter, a window, and exactly the pixels around the region that both may read.
template <class S>
struct Setup {
  explicit Setup(Choice& c)
      : window(windowOf(c)),
        size(window > 12 ? c.size(20, 4) : c.size(70, 8)),
        filter(c.oneIn(3) ? zebFilterScharr : zebFilterSobel),
        taps(filter == zebFilterSobel && c.coin() ? 5 : 3),
        border(rule(c) | c.within(0, 15) << 4),
        left(margin(zebBorderInMemLeft, before())),
        top(margin(zebBorderInMemTop, before())),
        image{content(c, size.width + left + margin(zebBorderInMemRight, window - 1 - before()),
                      size.height + top + margin(zebBorderInMemBottom, window - 1 - before())),
              c.layout<S>()},
        value(c.value<S>()),
        mask(taps == 3 ? zebMskSize3x3 : zebMskSize5x5) {
    const int filters[] = {0, 1, 3, 4, 6, -2}, masks[] = {0, 3, 5, 34, 53, -33}, windows[] = {0, -1, 256, INT32_MIN};
    const int borders[] = {2, 3, 4, 5, 7, 0x12, 0xF7, -1};
    badFilter = c.oneOf(filters), badWindow = c.oneOf(windows), badBorder = c.oneOf(borders);
    badMask = filter == zebFilterScharr && c.coin() ? int(zebMskSize5x5) : c.oneOf(masks);
    // The fourth bit is not looked at.
    told = border | (c.coin() ? 8 : 0);
  }
  const S* pixels() const { return image.pixels(left, top); }
  auto filters() const { return orElse(filter, badFilter, zebStsErrFilterType); }
  auto masks() const { return orElse(mask, badMask, zebStsErrMaskSize, Check::state); }
  auto windows() const { return orElse(window, badWindow, zebStsErrMaskSize, Check::state); }
  auto borders() const { return orElse(told, badBorder, zebStsErrBorder, Check::anywhere); }

  int before() const { return (window - 1) / 2; }
  std::string describe() const {
    return "filter " + std::to_string(filter) + ", " + std::to_string(taps) + " taps, window " +
           std::to_string(window) + ", border " + std::to_string(told) + ", " + image.describe();
  }

  const int window;
  const ZebiSize size;
  const int filter, taps, border, left, top;
  const Image<S> image;
  const S value;
  const int mask;
  int badFilter, badMask, badWindow, badBorder, told;

 private:
  // Many small ones; now and then those at which sums of products begin to need more than 32 bits.
  static int windowOf(Choice& c) {
    const int limits[] = {3, 4, 5, 11, 12, 45, 46};
    if (c.oneIn(64)) return c.within(1, 255);
    if (c.oneIn(8)) return c.within(1, 40);
    return c.oneIn(16) ? c.oneOf(limits) : c.within(1, 8);
  }
  static Plane<S> content(Choice& c, int width, int height) {
    return c.oneIn(4) ? bars<S>(c, width, height) : c.plane<S>(width, height);
  }
  static int rule(Choice& c) {
    const int rules[] = {zebBorderConst, zebBorderRepl, zebBorderInMem};
    return c.oneOf(rules);
  }
  int margin(int side, int reach) const {
    return (border & 15) == zebBorderInMem || (border & side) ? reach + taps / 2 : 0;
  }
};

// k...: for functions that take one.
template <class S, class F, class Q, class... K>
void corners(Choice& c, const F& f, const Q& query, Corner kind, K... k) {
  const Setup<S> s(c);
  int bytes = 0, more = 0;
  query.ok(c, s.size, s.filters(), s.masks(), s.windows(), &bytes);
  query.ok(c, keep(ZebiSize{s.size.width + c.within(0, 99), c.within(1, INT32_MAX)}), keep(s.filter), keep(s.mask),
           keep(s.window), &more);
  const auto most = [&](int64_t width) { return (s.window + s.taps + 8) * (8 * (width + s.window + 8) + 512) + 1024; };
  require(bytes >= 1 && bytes <= more && bytes <= most(s.size.width), "the size of the buffer");
  query.ok(c, s.size, keep(s.filter), keep(s.filter == zebFilterSobel ? int(zebMskSize5x5) : s.mask),
           keep(c.within(s.window, 255)), &more);
  require(bytes <= more, "the size of the buffer for a larger window");

  const Scratch buffer = c.scratch(bytes);
  const int floats = kind == Corner::eigenValsVecs ? 6 : 1;
  const Image<Zeb32f> dst = c.empty<Zeb32f>(s.size, floats);
  const int pixel = 4 * floats, element = sizeof(S);
  atLeastRefused(leastWidthRefused(c, query, most, s.filter, s.mask, s.window), pixel, [&](int wide) {
    f.refused(zebStsErrOverflow, s.pixels(), wide * element, dst.pixels(), wide * pixel, ZebiSize{wide, 1}, s.filter,
              s.mask, s.window, k..., s.border, s.value, buffer.get());
  });
  const auto want =
      ref::corners(kind,
                   ref::structureTensor(ref::bordered<S>(s.image.plane(), s.left, s.top, s.size, s.border, s.value),
                                        s.size, s.filter, s.taps, s.window),
                   (0.0f + ... + k));
  const Zeb32f badK[] = {-0.01f, 1.01f, INFINITY, NAN};
  [[maybe_unused]] const Zeb32f refused = c.oneOf(badK);
  f.ok(c, s.pixels(), s.image.step(), dst.pixels(), stepOf(dst, floats * s.size.width), s.size, s.filters(), s.masks(),
       s.windows(), orElse(k, refused, zebStsErrBadArgument, Check::anywhere)..., s.borders(), s.value, buffer.get());
  require(agree(f.name(), dst, want), s.describe());
  require(s.image.intact() && buffer.intact(), "wrote outside");
}

#define CORNERS(form, S)                                                                                           \
  DRIVER("corners", "zebiMinEigenVal_" #form,                                                                      \
         corners<S>(c, FUNCTION(zebiMinEigenVal_##form), FUNCTION(zebiMinEigenValGetBufferSize_##form),            \
                    Corner::minEigenVal));                                                                         \
  DRIVER("corners", "zebiEigenValsVecs_" #form,                                                                    \
         corners<S>(c, FUNCTION(zebiEigenValsVecs_##form), FUNCTION(zebiEigenValsVecsGetBufferSize_##form),        \
                    Corner::eigenValsVecs));                                                                       \
  DRIVER("corners", "zebiHarrisCorner_" #form,                                                                     \
         corners<S>(c, FUNCTION(zebiHarrisCorner_##form), FUNCTION(zebiHarrisCornerGetBufferSize), Corner::harris, \
                    c.oneIn(4) ? static_cast<Zeb32f>(c.within(0, 1)) : c.real(0.0f, 0.2f)))

CORNERS(8u32f_C1R, Zeb8u);
CORNERS(32f_C1R, Zeb32f);

}  // namespace
