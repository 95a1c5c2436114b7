// Flood fills: plain, range and gradient.
#include "reference/fill.h"
#include "segment/shapes.h"
#include "support/compare.h"
#include "support/contract.h"
#include "support/stack.h"

namespace {

using namespace test;
using ref::Plane;
using ref::Seed;
using Kind = ref::FillKind;

template <class T>
using Plain1 = ZebStatus (*)(T*, int, ZebiSize, ZebiPoint, T, ZebiConnectedComp*, Zeb8u*);
template <class T>
using Plain3 = ZebStatus (*)(T*, int, ZebiSize, ZebiPoint, const T*, ZebiConnectedComp*, Zeb8u*);
template <class T>
using Delta1 = ZebStatus (*)(T*, int, ZebiSize, ZebiPoint, T, T, T, ZebiConnectedComp*, Zeb8u*);
template <class T>
using Delta3 = ZebStatus (*)(T*, int, ZebiSize, ZebiPoint, const T*, const T*, const T*, ZebiConnectedComp*, Zeb8u*);

// One exported fill, called the same way whatever its arguments.
template <class T>
struct Fill {
  const char* name;
  Kind kind;
  bool diagonal;
  int channels;
  Plain1<T> plain1 = nullptr;
  Plain3<T> plain3 = nullptr;
  Delta1<T> delta1 = nullptr;
  Delta3<T> delta3 = nullptr;

  Fill(const char* n, bool d, Plain1<T> f) : name(n), kind(Kind::plain), diagonal(d), channels(1), plain1(f) {}
  Fill(const char* n, bool d, Plain3<T> f) : name(n), kind(Kind::plain), diagonal(d), channels(3), plain3(f) {}
  Fill(const char* n, Kind k, bool d, Delta1<T> f) : name(n), kind(k), diagonal(d), channels(1), delta1(f) {}
  Fill(const char* n, Kind k, bool d, Delta3<T> f) : name(n), kind(k), diagonal(d), channels(3), delta3(f) {}

  ZebStatus operator()(T* p, int step, ZebiSize size, Seed seed, const std::vector<T>& value,
                       const std::vector<T>& below, const std::vector<T>& above, ZebiConnectedComp* comp,
                       Zeb8u* buffer) const {
    const ZebiPoint at{seed.x, seed.y};
    if (plain1) return plain1(p, step, size, at, value[0], comp, buffer);
    if (plain3) return plain3(p, step, size, at, value.data(), comp, buffer);
    if (delta1) return delta1(p, step, size, at, value[0], below[0], above[0], comp, buffer);
    return delta3(p, step, size, at, value.data(), below.data(), above.data(), comp, buffer);
  }
};

#define PLAIN(t, c)                                                                            \
  Fill<Zeb##t>("zebiFloodFill_4Con_" #t "_" #c "IR", false, zebiFloodFill_4Con_##t##_##c##IR), \
      Fill<Zeb##t>("zebiFloodFill_8Con_" #t "_" #c "IR", true, zebiFloodFill_8Con_##t##_##c##IR)
#define DELTA(kind, con, diagonal, test, t, c)                                       \
  Fill<Zeb##t>("zebiFloodFill_" #kind #con "_" #t "_" #c "IR", Kind::test, diagonal, \
               zebiFloodFill_##kind##con##_##t##_##c##IR)
#define DELTAS(t, c)                                                             \
  DELTA(Range, 4Con, false, range, t, c), DELTA(Range, 8Con, true, range, t, c), \
      DELTA(Grad, 4Con, false, gradient, t, c), DELTA(Grad, 8Con, true, gradient, t, c)

// Calls visit(table of one type) for every type.
template <class Visit>
void forEveryFill(Visit visit) {
  visit(std::vector<Fill<Zeb8u>>{PLAIN(8u, C1), PLAIN(8u, C3), DELTAS(8u, C1), DELTAS(8u, C3)});
  visit(std::vector<Fill<Zeb16u>>{PLAIN(16u, C1), PLAIN(16u, C3), DELTAS(16u, C1), DELTAS(16u, C3)});
  visit(std::vector<Fill<Zeb32s>>{PLAIN(32s, C1)});
  visit(std::vector<Fill<Zeb32f>>{PLAIN(32f, C1), PLAIN(32f, C3), DELTAS(32f, C1), DELTAS(32f, C3)});
}

int bufferSize(Kind kind, ZebiSize size) {
  int bytes = 0;
  EXPECT_EQ((kind == Kind::gradient ? zebiFloodFillGetSize_Grad : zebiFloodFillGetSize)(size, &bytes), zebStsOk);
  return bytes;
}

// Fills a copy of the picture by library and reference and compares images and records.
template <class T>
testing::AssertionResult fillsLikeReference(const Fill<T>& fill, const Plane<T>& picture, Layout layout, Seed seed,
                                            const std::vector<T>& value, const std::vector<T>& below,
                                            const std::vector<T>& above, bool* cutShort = nullptr) {
  Image<T> image(picture, layout);
  const Scratch scratch(bufferSize(fill.kind, image.size()));
  const ZebiConnectedComp untouched{-1, {-2, -3, -4}, {-5, -6, -7, -8}};
  ZebiConnectedComp got = untouched;
  Plane<T> expected = picture;
  bool ended = false;
  const ZebiConnectedComp want =
      ref::filled(fill.kind, expected, seed, fill.diagonal, value, below, above, untouched, &ended);
  if (cutShort) *cutShort = ended;
  const ZebStatus status =
      fill(image.pixels(), image.step(), image.size(), seed, value, below, above, &got, scratch.get());
  auto failure = testing::AssertionFailure() << fill.name << " seed " << seed.x << ", " << seed.y << ": ";
  if (status != zebStsOk) return failure << "status " << status;
  if (!scratch.intact()) return failure << "wrote outside the buffer";
  if (auto result = agree(fill.name, image, expected); !result) return failure << result.message();
  if (!ref::sameComp(got, want))
    return failure << "record: area " << got.area << " want " << want.area << ", rect " << got.rect.x << " "
                   << got.rect.y << " " << got.rect.width << " " << got.rect.height << " want " << want.rect.x << " "
                   << want.rect.y << " " << want.rect.width << " " << want.rect.height;
  return testing::AssertionSuccess();
}

template <class T>
T leveled(int level, int channel) {
  if constexpr (std::is_same_v<T, Zeb32f>) return static_cast<T>(0.5 * level - 20 + channel);
  return static_cast<T>(level * 3 + channel);
}

template <class T>
Plane<T> leveled(const Plane<int>& levels, int channels, Random& random) {
  Plane<T> p(levels.width, levels.height, channels);
  for (int y = 0; y < p.height; ++y)
    for (int x = 0; x < p.width; ++x)
      for (int c = 0; c < channels; ++c) {
        // A difference in one channel alone must count, too.
        const bool differs = levels.at(x, y) && (channels == 1 || c == random.within(0, 2) || c == (x + y) % 3);
        p.at(x, y, c) = leveled<T>(differs ? levels.at(x, y) : 0, c);
      }
  return p;
}

template <class T>
std::vector<T> triple(T a, T b, T c) {
  return {a, b, c};
}

template <class T>
void equalsReference(const std::vector<Fill<T>>& fills) {
  Random random;
  int round = 0;
  for (const Fill<T>& fill : fills)
    for (Shape shape : allShapes)
      for (int i = 0; i < 14; ++i, ++round) {
        const int w = i < 12 ? random.within(1, 75) : random.within(100, 180);
        const int h = i < 2 ? 1 + i : random.within(1, 24);
        const Plane<T> picture = leveled<T>(shaped(shape, w, h, random), fill.channels, random);
        const Seed seed = round % 3 ? Seed{random.within(0, w - 1), random.within(0, h - 1)} : Seed{0, 0};
        ASSERT_TRUE(fillsLikeReference(fill, picture, Layout::random<T>(random), seed,
                                       triple<T>(leveled<T>(9, 0), leveled<T>(9, 1), leveled<T>(9, 2)),
                                       triple<T>(T(1), T(2), T(1)), triple<T>(T(2), T(1), T(2))))
            << "shape " << static_cast<int>(shape) << ", " << w << " x " << h;
      }
}

TEST(Fill, EqualsReference) {
  forEveryFill([](const auto& fills) { equalsReference(fills); });
}

// Smooth and noisy values, intervals that meet the ends of the type, new values inside the interval, values that are
// not numbers.
template <class T>
void valuesAndIntervals(const std::vector<Fill<T>>& fills) {
  Random random;
  for (const Fill<T>& fill : fills)
    for (int i = 0; i < 60; ++i) {
      const int w = random.within(1, 80), h = random.within(1, 20);
      Plane<T> picture(w, h, fill.channels);
      fillPlane(picture, i % 4 == 0 ? Content::extremes : i % 4 == 1 ? Content::runs : Content::ramp, random);
      if (i % 4 == 3)
        for (T& v : picture.data) v = static_cast<T>(random.within(0, 12));
      const auto any = [&](int high) {
        return i % 5 == 0 ? extremeValue<T>(random) : static_cast<T>(random.within(0, high));
      };
      const Seed seed{random.within(0, w - 1), random.within(0, h - 1)};
      auto value = triple<T>(any(12), any(12), any(12));
      if (i % 7 == 0)
        for (int c = 0; c < fill.channels; ++c) value[c] = picture.at(seed.x, seed.y, c);
      ASSERT_TRUE(fillsLikeReference(fill, picture, Layout::random<T>(random), seed, value,
                                     triple<T>(any(9), any(9), any(9)), triple<T>(any(9), any(9), any(9))))
          << "round " << i << ", " << w << " x " << h;
    }
}

TEST(Fill, ValuesAndIntervals) {
  forEveryFill([](const auto& fills) { valuesAndIntervals(fills); });
}

// More runs wait than the buffer has entries: the plain fill is whole all the same, the range fill ends where it must.
TEST(Fill, MoreRunsThanTheStackHolds) {
  Random random;
  const std::vector<Fill<Zeb8u>> fills{PLAIN(8u, C1), DELTAS(8u, C1), PLAIN(8u, C3)};
  int cut = 0;
  for (const Fill<Zeb8u>& fill : fills)
    for (Shape shape : {Shape::lattice, Shape::checkerboard, Shape::dense, Shape::hook})
      for (const ZebiSize size : {ZebiSize{301, 150}, ZebiSize{5, 300}, ZebiSize{3, 200}, ZebiSize{90, 3}})
        for (const Seed seed : {Seed{0, 1}, Seed{size.width - 1, size.height - 2}}) {
          bool cutShort = false;
          const auto picture = leveled<Zeb8u>(shaped(shape, size.width, size.height, random), fill.channels, random);
          ASSERT_TRUE(
              fillsLikeReference<Zeb8u>(fill, picture, {}, seed, {200, 201, 202}, {1, 1, 1}, {1, 1, 1}, &cutShort))
              << "shape " << static_cast<int>(shape) << ", " << size.width << " x " << size.height;
          cut += cutShort;
        }
  EXPECT_GT(cut, 3) << "no range fill met its limit";
}

// The smallest images, where the capacity of the range fills is 0 or 1.
TEST(Fill, SmallestImages) {
  Random random;
  const std::vector<Fill<Zeb8u>> fills{PLAIN(8u, C1), DELTAS(8u, C1)};
  for (const Fill<Zeb8u>& fill : fills)
    for (int h = 1; h <= 9; ++h)
      for (int w = 1; w <= 9; ++w)
        for (int i = 0; i < 3; ++i) {
          const auto picture = leveled<Zeb8u>(shaped(allShapes[i], w, h, random), 1, random);
          const Seed seed{random.within(0, w - 1), random.within(0, h - 1)};
          ASSERT_TRUE(fillsLikeReference<Zeb8u>(fill, picture, {}, seed, {i ? Zeb8u(200) : Zeb8u(1)}, {2}, {2}))
              << w << " x " << h;
        }
}

TEST(Fill, Sizes) {
  int bytes = 0;
  const auto ask = [&](auto query, int w, int h) {
    bytes = -1;
    return query(ZebiSize{w, h}, &bytes);
  };
  EXPECT_EQ(ask(zebiFloodFillGetSize, 5, 3), zebStsOk);
  EXPECT_EQ(bytes, 24 * 15 / 4 + 32);
  EXPECT_EQ(ask(zebiFloodFillGetSize_Grad, 5, 3), zebStsOk);
  EXPECT_EQ(bytes, 7 * 5 + 48 * 15 / 3 + 64);
  for (auto query : {zebiFloodFillGetSize, zebiFloodFillGetSize_Grad}) {
    EXPECT_EQ(query(ZebiSize{0, 5}, nullptr), zebStsErrNullPointer);
    for (int side : {46341, 1 << 20, 0x7FFFFFFF}) {
      EXPECT_EQ(ask(query, side, side), zebStsErrOverflow);
      EXPECT_EQ(bytes, -1);
    }
    EXPECT_EQ(ask(query, 0, 4), zebStsErrSize);
    EXPECT_EQ(ask(query, 4, -1), zebStsErrSize);
  }
  // The last image whose buffer can be counted, and the first whose cannot.
  EXPECT_EQ(ask(zebiFloodFillGetSize, 357913935, 1), zebStsOk);
  EXPECT_EQ(bytes, 2147483642);
  EXPECT_EQ(ask(zebiFloodFillGetSize, 357913936, 1), zebStsErrOverflow);
}

// ---- Checks ----

constexpr int w = 9, h = 4;

template <class T, class F>
void checkFill(const char* name, F function, int channels, Kind kind) {
  constexpr int e = sizeof(T);
  const int row = w * channels * e;
  Image<T> image(Plane<T>(w, h, channels, T(1)), {Place::back, 4 * e, 0});
  const Scratch scratch(bufferSize(kind, {w, h}));
  const GuardedBytes comp(sizeof(ZebiConnectedComp), Place::back);
  auto* region = reinterpret_cast<ZebiConnectedComp*>(comp.data());
  const T values[3] = {T(2), T(2), T(2)};
  const auto run = [&](auto contract, auto region_, auto buffer) {
    constexpr size_t r = decltype(region_)::value, b = decltype(buffer)::value;
    contract.template nulls<0, r, b>();
    if constexpr (std::is_same_v<F, Plain3<T>>) contract.template nulls<4>();
    if constexpr (std::is_same_v<F, Delta3<T>>) contract.template nulls<4, 5, 6>();
    contract.template sizes<2>().template step<1>(row, e).template hostile<2>();
    if (e > 1) contract.template multiple<1>(e);
    for (const ZebiPoint outside : {ZebiPoint{-1, 0}, ZebiPoint{w, 0}, ZebiPoint{0, -1}, ZebiPoint{0, h}})
      contract.template with<3>(outside, zebStsErrOutOfRange);
    contract.check();
  };
  const ZebiSize size{w, h};
  const ZebiPoint seed{w - 1, h - 1};
  using I5 = std::integral_constant<size_t, 5>;
  using I6 = std::integral_constant<size_t, 6>;
  using I7 = std::integral_constant<size_t, 7>;
  using I8 = std::integral_constant<size_t, 8>;
  if constexpr (std::is_same_v<F, Plain1<T>>)
    run(Contract(name, function, image.pixels(), image.step(), size, seed, T(2), region, scratch.get()), I5(), I6());
  if constexpr (std::is_same_v<F, Plain3<T>>)
    run(Contract(name, function, image.pixels(), image.step(), size, seed, values, region, scratch.get()), I5(), I6());
  if constexpr (std::is_same_v<F, Delta1<T>>)
    run(Contract(name, function, image.pixels(), image.step(), size, seed, T(2), T(2), T(2), region, scratch.get()),
        I7(), I8());
  if constexpr (std::is_same_v<F, Delta3<T>>)
    run(Contract(name, function, image.pixels(), image.step(), size, seed, values, values, values, region,
                 scratch.get()),
        I7(), I8());
}

template <class T>
void checkFill(const Fill<T>& fill) {
  if (fill.plain1) checkFill<T>(fill.name, fill.plain1, 1, fill.kind);
  if (fill.plain3) checkFill<T>(fill.name, fill.plain3, 3, fill.kind);
  if (fill.delta1) checkFill<T>(fill.name, fill.delta1, 1, fill.kind);
  if (fill.delta3) checkFill<T>(fill.name, fill.delta3, 3, fill.kind);
}

TEST(Fill, Checks) {
  forEveryFill([](const auto& fills) {
    for (const auto& fill : fills) checkFill(fill);
  });
}

TEST(Fill, OldCallersStacks) {
  Random random;
  const auto picture = leveled<Zeb32f>(shaped(Shape::dense, 40, 9, random), 1, random);
  Image<Zeb32f> expected(picture, {});
  const Scratch scratch(bufferSize(Kind::gradient, expected.size()));
  ZebiConnectedComp comp;
  ASSERT_EQ(zebiFloodFill_Grad8Con_32f_C1IR(expected.pixels(), expected.step(), expected.size(), {3, 3}, 7.0f, 1.0f,
                                            1.0f, &comp, scratch.get()),
            zebStsOk);
  for (int shift : {0, 4, 8, 12}) {
    Image<Zeb32f> image(picture, {});
    ASSERT_EQ(callMisaligned(shift, zebiFloodFill_Grad8Con_32f_C1IR, image.pixels(), image.step(), image.size(),
                             ZebiPoint{3, 3}, 7.0f, 1.0f, 1.0f, &comp, scratch.get()),
              zebStsOk);
    EXPECT_TRUE(agree("zebiFloodFill_Grad8Con_32f_C1IR", image, expected.plane())) << "stack shift " << shift;
  }
}

}  // namespace
