// The segment test, its lists, and the suppression of lines.
#include "reference/fastn.h"
#include "morph/elements.h"
#include "reference/morph.h"
#include "sizes.h"

namespace {

using namespace fuzz;
using ref::Plane;

// A few bars one or two pixels wide, upright or lying, on a plain ground: corners of one direction only.
Plane<Zeb8u> barsOn(Choice& c, int width, int height) {
  const bool bright = c.coin(), upright = c.coin();
  Plane<Zeb8u> p(width, height, 1, Zeb8u(bright ? 20 : 220));
  Random random = c.random();
  for (int k = c.within(1, 3); k > 0; --k) {
    const int far = random.within(1, 20), broad = random.within(1, 2);
    const int w = upright ? broad : far, h = upright ? far : broad;
    const int x0 = random.within(-3, width - 1), y0 = random.within(-3, height - 1);
    for (int y = std::max(y0, 0); y < std::min(height, y0 + h); ++y)
      for (int x = std::max(x0, 0); x < std::min(width, x0 + w); ++x) p.at(x, y) = bright ? 220 : 20;
  }
  return p;
}

// Also content in which many arcs pass, and equal scores stand side by side.
Plane<Zeb8u> pixels(Choice& c, int width, int height) {
  if (c.oneIn(3)) return barsOn(c, width, height);
  Plane<Zeb8u> p = c.plane<Zeb8u>(width, height);
  if (c.coin()) return p;
  Random random = c.random();
  const int levels = c.within(2, 5), side = c.within(1, 6);
  for (int y = 0; y < height; ++y)
    for (int x = 0; x < width; ++x)
      if (x % side == 0 && y % side == 0) {
        const auto v = static_cast<Zeb8u>(random.within(0, levels - 1) * 255 / (levels - 1));
        for (int r = y; r < std::min(height, y + side); ++r)
          for (int q = x; q < std::min(width, x + side); ++q) p.at(q, r) = v;
      }
  return p;
}

ZebiFastNState* stateIn(const Scratch& memory) {
  return reinterpret_cast<ZebiFastNState*>(memory.get());
}

void fastN(Choice& c) {
  const ZebiSize size = c.size(70, 20);
  ref::SegmentTest test;
  test.radius = c.within(1, 3);
  test.arcLength = c.within(1, test.positions());
  test.threshold = c.oneIn(8) ? c.within(0, 300) : c.within(0, 60);
  test.scores = c.coin(), test.nonMax = c.coin();
  const int options = test.scores * zebFastNScore + test.nonMax * zebFastNNonMax;
  const auto badRadius = orElse(test.radius, c.coin() ? 0 : 4, zebStsErrOutOfRange, Check::size);
  const auto badArc = orElse(test.arcLength, c.coin() ? 0 : test.positions() + 1, zebStsErrOutOfRange, Check::size);
  int specBytes = 0, bytes = 0, wider = 0;
  FUNCTION(zebiFastNGetSize).ok(c, badRadius, badArc, &specBytes);
  require(specBytes == 32, "the size of the state");
  const Scratch spec = c.scratch(specBytes);
  FUNCTION(zebiFastNInit)
      .ok(c, badRadius, badArc, orElse(test.threshold, -1, zebStsErrThreshold, Check::inner),
          orElse(options, options | (c.coin() ? 4 : INT32_MIN), zebStsErrBadArgument), stateIn(spec));
  const auto query = FUNCTION(zebiFastNGetBufferSize);
  query.ok(c, size, stateIn(spec), &bytes);
  query.ok(c, keep(ZebiSize{size.width + c.within(0, 99), c.within(1, 99)}), stateIn(spec), &wider);
  const auto mostBytes = [](int64_t width) { return 16 * (width + 512) + 1024; };
  require(bytes <= wider && bytes <= mostBytes(size.width), "the size of the buffer");
  const Scratch buffer = c.scratch(bytes);

  const Image<Zeb8u> src{pixels(c, size.width, size.height), c.layout<Zeb8u>()};
  const Image<Zeb8u> dst = c.empty<Zeb8u>(size), orient = c.empty<Zeb8u>(size);
  Plane<Zeb8u> map(size.width, size.height), codes = map;
  test.run(src.plane(), &map, &codes);
  const bool oriented = c.coin();
  const auto f = FUNCTION(zebiFastN_8u_C1R);
  atLeastRefused(leastWidthRefused(c, query, mostBytes, stateIn(spec)), 1, [&](int wide) {
    f.refused(zebStsErrOverflow, src.pixels(), wide, dst.pixels(), wide, nullptr, 0, ZebiSize{wide, 1}, stateIn(spec),
              buffer.get());
  });
  if (oriented) {
    f.ok(c, src.pixels(), src.step(), dst.pixels(), dst.step(), keep(orient.pixels()), orient.step(), size,
         stateIn(spec), buffer.get());
    require(agree(f.name(), orient, codes), src.describe());
  } else {
    f.ok(c, src.pixels(), src.step(), dst.pixels(), dst.step(), keep<Zeb8u*>(nullptr), keep(-c.within(0, 9)), size,
         stateIn(spec), buffer.get());
  }
  require(agree(f.name(), dst, map), "radius " + std::to_string(test.radius) + ", arc " +
                                         std::to_string(test.arcLength) + ", threshold " +
                                         std::to_string(test.threshold) + ", " + src.describe());
  require(src.intact() && spec.intact() && buffer.intact(), "wrote outside");

  // The list of the map, or of any other.
  const Image<Zeb8u> listed = c.coin() ? Image<Zeb8u>{map, c.layout<Zeb8u>()} : c.image<Zeb8u>(size);
  const Image<Zeb8u> turned = c.coin() ? Image<Zeb8u>{codes, c.layout<Zeb8u>()} : c.image<Zeb8u>(size);
  std::vector<ZebiFastNCorner> want;
  const Plane<Zeb8u> found = listed.plane(), told = turned.plane();
  for (int y = 0; y < size.height; ++y)
    for (int x = 0; x < size.width; ++x) {
      if (found.at(x, y) == 0) continue;
      const int o = told.at(x, y), q = o & 127;
      const bool known = oriented && q >= 1 && q <= 2 * test.positions();
      const float angle = known ? static_cast<float>((q - 1) * 180.0 / test.positions()) : 0.0f;
      want.push_back({x, y, found.at(x, y), known ? (o >= 128 ? -1 : 1) : 0, angle});
    }
  const int most = c.coin() ? size.width * size.height : c.within(1, size.width);
  const size_t expected = std::min(want.size(), static_cast<size_t>(most));
  const Scratch corners = c.scratch(static_cast<int>(sizeof(ZebiFastNCorner)) * most);
  auto* const list = reinterpret_cast<ZebiFastNCorner*>(corners.get());
  int count = -1;
  const auto toVec = FUNCTION(zebiFastN2DToVec_8u);
  const auto list2D = [&](auto codesAt, auto codesStep) {
    toVec.ok(c, listed.pixels(), listed.step(), codesAt, codesStep, size, list,
             orElse(most, -c.within(0, 3), zebStsErrSize, Check::size), &count, stateIn(spec));
  };
  if (oriented)
    list2D(keep(turned.pixels()), stepOf(turned, size.width));
  else
    list2D(keep<const Zeb8u*>(nullptr), keep(-7));
  require(count == static_cast<int>(expected), "the count of corners");
  require(expected == 0 || memcmp(list, want.data(), expected * sizeof(ZebiFastNCorner)) == 0, "a corner");
  require(listed.intact() && turned.intact() && corners.intact(), "wrote outside");
}
// Many circles, arcs and options.
DRIVER("corners", "zebiFastN_8u_C1R", for (int i = 0; i < 2; ++i) fastN(c));

void lineSuppression(Choice& c) {
  const ZebiSize size = c.size(70, 14);
  const int reach = c.within(1, 2), mask = reach == 1 ? zebMskSize3x3 : zebMskSize5x5;
  Random random = c.random();
  const test::Surroundings around(random, reach, reach, reach, reach);
  // Few strong pixels, in lines and alone.
  Plane<Zeb8u> p = c.plane<Zeb8u>(around.left + size.width + around.right, around.top + size.height + around.bottom);
  const int kind = c.within(0, 3), slope = c.within(-4, 4);
  for (int y = 0; y < p.height && kind > 0; ++y)
    for (int x = 0; x < p.width; ++x) {
      const bool line = (2 * x + slope * y + 64 * p.height) % 9 < 2;
      const auto v = static_cast<Zeb8u>(200 + random.within(0, 3));
      p.at(x, y) = (kind == 1 ? line : random.within(0, 3) == 0) ? v : Zeb8u(random.within(0, kind == 3));
    }
  const Image<Zeb8u> src{p, c.layout<Zeb8u>()}, dst = c.empty<Zeb8u>(size);
  const ref::Region<Zeb8u> region = around.region(p, size);
  const bool constant = around.border != zebBorderInMem && c.coin();
  const auto value = c.value<Zeb8u>(), tolerance = static_cast<Zeb8u>(c.coin() ? c.within(0, 5) : c.within(0, 255));
  // The fourth bit of the rule is not looked at.
  const int border = (constant ? around.border & ~7 : around.border) | (c.coin() ? 8 : 0);
  const auto at = [&](int x, int y) -> int {
    const bool outside = (x < 0 && !region.left) || (x >= size.width && !region.right) || (y < 0 && !region.top) ||
                         (y >= size.height && !region.bottom);
    return constant && outside ? value : region.at(x, y, 0);
  };
  Plane<Zeb8u> want(size.width, size.height);
  for (int y = 0; y < size.height; ++y)
    for (int x = 0; x < size.width; ++x) want.at(x, y) = ref::withoutLine(at, x, y, reach, tolerance);
  const int badMasks[] = {0, 3, 5, 53, -1}, badBorders[] = {2, 3, 4, 5, 7, 0x12, 0xF7};
  int bytes = 0;
  const auto query = FUNCTION(zebiLineSuppressionGetBufferSize_8u_C1R);
  query.ok(c, size, orElse(mask, c.oneOf(badMasks), zebStsErrMaskSize), &bytes);
  const Scratch buffer = c.scratch(bytes);
  const auto f = FUNCTION(zebiLineSuppression_8u_C1R);
  const auto most = [&](int64_t width) { return (2 * reach + 3) * (width + 512) + 1024; };
  atLeastRefused(leastWidthRefused(c, query, most, mask), 1, [&](int wide) {
    f.refused(zebStsErrOverflow, src.pixels(), wide, dst.pixels(), wide, ZebiSize{wide, 1}, mask, tolerance, border,
              value, buffer.get());
  });
  require(bytes <= most(size.width), "the size of the buffer");
  f.ok(c, src.pixels(around.left, around.top), src.step(), dst.pixels(), dst.step(), size,
       orElse(mask, c.oneOf(badMasks), zebStsErrMaskSize), tolerance,
       orElse(border, c.oneOf(badBorders), zebStsErrBorder, Check::state), value, buffer.get());
  require(agree(f.name(), dst, want), "mask " + std::to_string(mask) + ", tolerance " + std::to_string(tolerance) +
                                          ", border " + std::to_string(border) + ", " + src.describe());
  require(src.intact() && buffer.intact(), "wrote outside");
}
DRIVER("corners", "zebiLineSuppression_8u_C1R", lineSuppression(c));

}  // namespace
