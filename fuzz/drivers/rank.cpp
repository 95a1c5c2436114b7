// Minimum and maximum over rectangles.
#include "reference/morph.h"
#include "sizes.h"

namespace {

using namespace fuzz;

// Which of two zeros comes out is open.
template <class T>
bool alike(T a, T b) {
  return a == b;
}

// Pixels that matter, so few that a window of this many pixels holds two or so; all others are beyond them.
template <class T>
ref::Plane<T> sparse(Choice& c, ZebiSize size, int channels, int64_t area, bool lowest) {
  ref::Plane<T> plane(size.width, size.height, channels);
  Random r = c.random();
  for (T& v : plane.data)
    v = r.within(0, static_cast<int>(area / 2)) == 0 ? static_cast<T>(r.within(1, 100))
                                                     : static_cast<T>(lowest ? 101 : 0);
  return plane;
}

template <class T>
void rank(Choice& c, const Function<int, ZebiSize, int*>& query,
          const Function<const T*, int, T*, int, ZebiSize, ZebiSize, ZebiPoint, Zeb8u*>& f, bool lowest) {
  const int channels = strstr(f.name(), "_C3R") ? 3 : strstr(f.name(), "_C4R") ? 4 : 1;
  const ZebiSize size = c.size(70, 14);
  const bool large = c.oneIn(5);
  // Centred ones of 3, 5 and 7 pixels are those that are asked for most.
  const bool usual = !large && c.oneIn(3);
  // Large ones around the middle are widened before the row has its borders, as far as half of them allows.
  const bool centred = usual || (large && !c.oneIn(4));
  const int vector = 32 / static_cast<int>(sizeof(T));
  ZebiSize rect = {c.within(1, large ? 70 : 9), c.within(1, large ? 40 : 9)};
  if (centred) rect.width = 2 * (c.coin() ? vector : 3 * vector) - c.within(0, 3);
  if (usual) rect = {2 * c.within(1, 3) + 1, 2 * c.within(1, 3) + 1};
  const ZebiPoint anchor = centred ? ZebiPoint{rect.width / 2, rect.height / 2}
                                   : ZebiPoint{c.within(0, rect.width - 1), c.within(0, rect.height - 1)};
  const ZebiPoint outside[] = {{-1, 0}, {0, -1}, {rect.width, 0}, {0, rect.height}};
  const ZebiSize none[] = {{0, rect.height}, {rect.width, -1}};
  const int64_t pixel = channels * static_cast<int64_t>(sizeof(T)), area = int64_t(rect.width) * rect.height;
  const bool few = large && !c.oneIn(4);
  const Image<T> src =
      few ? Image<T>{sparse<T>(c, size, channels, area, lowest), c.layout<T>()} : c.image<T>(size, channels);
  const Image<T> dst = c.empty<T>(size, channels);
  int bytes = 0, wider = 0;
  query.ok(c, size.width, orElse(rect, c.oneOf(none), zebStsErrMaskSize), &bytes);
  query.ok(c, keep(size.width + c.within(0, 99)), keep(ZebiSize{rect.width + c.within(0, 3), rect.height + 1}), &wider);
  require(bytes >= 1 && bytes <= wider, "the query falls");
  const auto most = [&](int64_t width) {
    return (rect.height + 5) * (pixel * (width + 2 * rect.width) + 512) + 16 * area + 1024;
  };
  require(bytes <= most(size.width), "the query exceeds its bound");
  const Scratch buffer = c.scratch(bytes);
  const ref::Element element{std::vector<Zeb8u>(static_cast<size_t>(area), 1), rect.width, rect.height, anchor.x,
                             anchor.y};
  const auto plane = src.plane();
  const auto want = ref::extremum(ref::Region<T>{&plane, 0, 0, size.width, size.height}, element, lowest);
  f.refused(zebStsErrOverflow, src.pixels(), src.step(), dst.pixels(), dst.step(), size,
            ZebiSize{rect.width, INT32_MAX}, anchor, buffer.get());
  const auto ask = [&](int width, int* told) { return query.bare(width, rect, told); };
  atLeastRefused(leastRefused(c, ask, most), pixel, [&](int wide) {
    const int step = static_cast<int>(wide * pixel);
    f.refused(zebStsErrOverflow, src.pixels(), step, dst.pixels(), step, ZebiSize{wide, 1}, rect, anchor, buffer.get());
  });
  f.ok(c, src.pixels(), src.step(), dst.pixels(), dst.step(), size,
       orElse(rect, c.oneOf(none), zebStsErrMaskSize, Check::own),
       orElse(anchor, c.oneOf(outside), zebStsErrAnchor, Check::state), buffer.get());
  require(agree(dst.plane(), want, alike<T>), std::string(f.name()) + ", " + std::to_string(rect.width) + " x " +
                                                  std::to_string(rect.height) + " at " + std::to_string(anchor.x) +
                                                  ", " + std::to_string(anchor.y) + ", " + src.describe());
  require(src.intact() && dst.intact() && buffer.intact(), "wrote outside");
}

#define RANK(form, T)                                                                                                \
  DRIVER(                                                                                                            \
      "filters", "zebiFilterMinBorderReplicate_" #form,                                                              \
      rank<T>(c, FUNCTION(zebiFilterMinGetBufferSize_##form), FUNCTION(zebiFilterMinBorderReplicate_##form), true)); \
  DRIVER(                                                                                                            \
      "filters", "zebiFilterMaxBorderReplicate_" #form,                                                              \
      rank<T>(c, FUNCTION(zebiFilterMaxGetBufferSize_##form), FUNCTION(zebiFilterMaxBorderReplicate_##form), false))

RANK(8u_C1R, Zeb8u);
RANK(8u_C3R, Zeb8u);
RANK(8u_C4R, Zeb8u);
RANK(16u_C1R, Zeb16u);
RANK(16s_C1R, Zeb16s);
RANK(32f_C1R, Zeb32f);
RANK(32f_C3R, Zeb32f);
RANK(32f_C4R, Zeb32f);

}  // namespace
