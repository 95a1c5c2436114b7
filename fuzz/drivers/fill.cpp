// Flood fills.
#include "reference/fill.h"
#include "segment/shapes.h"
#include "sizes.h"

namespace {

using namespace fuzz;
using ref::FillKind;
using ref::Plane;

// Any content, or one of the hard shapes in two values.
template <class T>
Plane<T> picture(Choice& c, ZebiSize size, int channels) {
  if (c.coin()) return c.plane<T>(size.width, size.height, channels);
  Random random = c.random();
  const Plane<int> shape = test::shaped(c.oneOf(test::allShapes), size.width, size.height, random);
  const T low = static_cast<T>(c.within(0, 9)), high = c.coin() ? static_cast<T>(low + 3) : c.value<T>();
  const int differing = c.within(0, channels);  // this channel alone, or all
  Plane<T> p(size.width, size.height, channels);
  for (size_t i = 0; i < p.data.size(); ++i) {
    const int channel = static_cast<int>(i) % channels;
    const bool marked = shape.data[i / static_cast<size_t>(channels)] != 0;
    p.data[i] = marked && (differing == channels || differing == channel) ? high : low;
  }
  return p;
}

template <class T>
struct FillCase {
  FillCase(Choice& c, int numberOfChannels)
      : channels(numberOfChannels),
        size(c.size()),
        image{picture<T>(c, size, channels), c.layout<T>()},
        seed{c.within(0, size.width - 1), c.within(0, size.height - 1)},
        value(triple(c, 12)),
        below(triple(c, 5)),
        above(triple(c, 5)),
        memory(sizeof(ZebiConnectedComp), test::Place::back) {
    const Plane<T> p = image.plane();
    if (c.oneIn(8))
      for (int k = 0; k < channels; ++k) value[static_cast<size_t>(k)] = p.at(seed.x, seed.y, k);
    memcpy(memory.data(), &untouched, sizeof(untouched));
    const ZebiPoint outside[] = {{-1, seed.y}, {size.width, seed.y}, {seed.x, -1}, {seed.x, size.height}};
    badSeed = c.oneOf(outside);
  }

  static std::vector<T> triple(Choice& c, int high) {
    std::vector<T> v;
    for (int k = 0; k < 3; ++k) v.push_back(c.oneIn(4) ? c.value<T>() : static_cast<T>(c.within(0, high)));
    return v;
  }

  // Fills by call(record, scratch, a size that must be refused) and by the reference.
  template <class Call>
  void run(Choice& c, const char* name, FillKind kind, bool diagonal, Call call) {
    Plane<T> expected = image.plane();
    bool ended = false;
    const ZebiConnectedComp want =
        ref::filled(kind, expected, {seed.x, seed.y}, diagonal, value, below, above, untouched, &ended);
    int bytes = 0;
    const auto query =
        kind == FillKind::gradient ? FUNCTION(zebiFloodFillGetSize_Grad) : FUNCTION(zebiFloodFillGetSize);
    query.ok(c, size, &bytes);
    const Scratch scratch = c.scratch(bytes);
    auto* record = reinterpret_cast<ZebiConnectedComp*>(memory.data());
    call(record, scratch.get(), tooHigh(c, query, anyBytes));
    const std::string what = "seed " + std::to_string(seed.x) + ", " + std::to_string(seed.y);
    require(agree(name, image, expected), what);
    require(ref::sameComp(*record, want), what + ": record of area " + std::to_string(record->area) + ", not " +
                                              std::to_string(want.area) + ", or another rectangle");
    require(scratch.intact() && memory.intactMargins(), "wrote outside");
  }

  const ZebiConnectedComp untouched = {-1, {-2, -3, -4}, {-5, -6, -7, -8}};
  int channels;
  ZebiSize size;
  Image<T> image;
  ZebiPoint seed, badSeed;
  std::vector<T> value, below, above;
  test::GuardedBytes memory;
};

// Values as the calls take them: one, or an array of three.
template <class V>
constexpr int channelsOf = std::is_pointer_v<V> ? 3 : 1;
template <class V, class T>
V passed(const std::vector<T>& v) {
  if constexpr (std::is_pointer_v<V>) {
    return v.data();
  } else {
    return v[0];
  }
}

template <class T, class V>
void plainFill(Choice& c, Function<T*, int, ZebiSize, ZebiPoint, V, ZebiConnectedComp*, Zeb8u*> f, bool diagonal) {
  FillCase<T> fill(c, channelsOf<V>);
  fill.run(c, f.name(), FillKind::plain, diagonal, [&](ZebiConnectedComp* record, Zeb8u* buffer, ZebiSize tooHigh) {
    f.refused(zebStsErrOverflow, fill.image.pixels(), fill.image.step(), tooHigh, ZebiPoint{0, 0},
              passed<V>(fill.value), record, buffer);
    f.ok(c, fill.image.pixels(), fill.image.step(), fill.size, orElse(fill.seed, fill.badSeed, zebStsErrOutOfRange),
         passed<V>(fill.value), record, buffer);
  });
}

template <class T, class V>
void deltaFill(Choice& c, Function<T*, int, ZebiSize, ZebiPoint, V, V, V, ZebiConnectedComp*, Zeb8u*> f, FillKind kind,
               bool diagonal) {
  FillCase<T> fill(c, channelsOf<V>);
  fill.run(c, f.name(), kind, diagonal, [&](ZebiConnectedComp* record, Zeb8u* buffer, ZebiSize tooHigh) {
    f.refused(zebStsErrOverflow, fill.image.pixels(), fill.image.step(), tooHigh, ZebiPoint{0, 0},
              passed<V>(fill.value), passed<V>(fill.below), passed<V>(fill.above), record, buffer);
    f.ok(c, fill.image.pixels(), fill.image.step(), fill.size, orElse(fill.seed, fill.badSeed, zebStsErrOutOfRange),
         passed<V>(fill.value), passed<V>(fill.below), passed<V>(fill.above), record, buffer);
  });
}

#define FILL(function, shape, ...) DRIVER("segmentation", #function, shape(c, FUNCTION(function), __VA_ARGS__))
#define PLAIN(form)                                         \
  FILL(zebiFloodFill_4Con_##form##_C1IR, plainFill, false); \
  FILL(zebiFloodFill_8Con_##form##_C1IR, plainFill, true)
#define DELTAS(form)                                                         \
  FILL(zebiFloodFill_Range4Con_##form, deltaFill, FillKind::range, false);   \
  FILL(zebiFloodFill_Range8Con_##form, deltaFill, FillKind::range, true);    \
  FILL(zebiFloodFill_Grad4Con_##form, deltaFill, FillKind::gradient, false); \
  FILL(zebiFloodFill_Grad8Con_##form, deltaFill, FillKind::gradient, true)
#define ALL_FILLS(type)                                     \
  PLAIN(type);                                              \
  FILL(zebiFloodFill_4Con_##type##_C3IR, plainFill, false); \
  FILL(zebiFloodFill_8Con_##type##_C3IR, plainFill, true);  \
  DELTAS(type##_C1IR);                                      \
  DELTAS(type##_C3IR)
ALL_FILLS(8u);
ALL_FILLS(16u);
ALL_FILLS(32f);
PLAIN(32s);

}  // namespace
