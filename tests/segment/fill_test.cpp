// Flood fills: plain, range and gradient.
#include "reference/fill.h"
#include "segment/shapes.h"
#include "support/compare.h"

namespace {

using namespace test;
using ref::Plane;
using ref::Seed;
using Kind = ref::FillKind;

// The fills by their arguments: with or without two distances, single values or arrays of three.
template <class T>
using Plain1 = ZebStatus (*)(T*, int, ZebiSize, ZebiPoint, T, ZebiConnectedComp*, Zeb8u*);
template <class T>
using Plain3 = ZebStatus (*)(T*, int, ZebiSize, ZebiPoint, const T*, ZebiConnectedComp*, Zeb8u*);
template <class T>
using Delta1 = ZebStatus (*)(T*, int, ZebiSize, ZebiPoint, T, T, T, ZebiConnectedComp*, Zeb8u*);
template <class T>
using Delta3 = ZebStatus (*)(T*, int, ZebiSize, ZebiPoint, const T*, const T*, const T*, ZebiConnectedComp*, Zeb8u*);

int bufferSize(Kind kind, ZebiSize size) {
  int bytes = 0;
  EXPECT_EQ((kind == Kind::gradient ? zebiFloodFillGetSize_Grad : zebiFloodFillGetSize)(size, &bytes), zebStsOk);
  return bytes;
}

// The marked pixels differ from the region in one channel alone.
template <class T>
Plane<T> pictureOf(const Plane<int>& shape, int channels) {
  Plane<T> p(shape.width, shape.height, channels);
  for (int y = 0; y < p.height; ++y)
    for (int x = 0; x < p.width; ++x)
      if (shape.at(x, y)) p.at(x, y, (x + y) % channels) = T(3);
  return p;
}

constexpr Zeb8u newValue[3] = {200, 201, 202}, distances[3] = {1, 1, 1};

ZebStatus fill(Plain1<Zeb8u> f, const Image<Zeb8u>& i, ZebiPoint seed, ZebiConnectedComp* region, Zeb8u* buffer) {
  return f(i.pixels(), i.step(), i.size(), seed, newValue[0], region, buffer);
}
ZebStatus fill(Plain3<Zeb8u> f, const Image<Zeb8u>& i, ZebiPoint seed, ZebiConnectedComp* region, Zeb8u* buffer) {
  return f(i.pixels(), i.step(), i.size(), seed, newValue, region, buffer);
}
ZebStatus fill(Delta1<Zeb8u> f, const Image<Zeb8u>& i, ZebiPoint seed, ZebiConnectedComp* region, Zeb8u* buffer) {
  return f(i.pixels(), i.step(), i.size(), seed, newValue[0], distances[0], distances[0], region, buffer);
}

// More runs wait than the buffer has entries: the plain fill is whole all the same, the range fill ends where it must.
TEST(Fill, MoreRunsThanTheStackHolds) {
  Random random;
  int cut = 0;
  const auto check = [&](const char* name, auto function, Kind kind, bool diagonal) {
    const int channels = std::is_same_v<decltype(function), Plain3<Zeb8u>> ? 3 : 1;
    for (Shape shape : {Shape::lattice, Shape::checkerboard, Shape::dense, Shape::hook})
      for (const ZebiSize size : {ZebiSize{301, 150}, ZebiSize{5, 300}, ZebiSize{3, 200}, ZebiSize{90, 3}})
        for (const Seed seed : {Seed{0, 1}, Seed{size.width - 1, size.height - 2}}) {
          auto want = pictureOf<Zeb8u>(shaped(shape, size.width, size.height, random), channels);
          const Image<Zeb8u> image(want, {});
          const Scratch scratch(bufferSize(kind, size));
          bool ended = false;
          const ZebiConnectedComp region = ref::filled<Zeb8u>(kind, want, seed, diagonal, {200, 201, 202}, {1, 1, 1},
                                                              {1, 1, 1}, ZebiConnectedComp{}, &ended);
          ZebiConnectedComp got = {};
          ASSERT_EQ(fill(function, image, {seed.x, seed.y}, &got, scratch.get()), zebStsOk);
          ASSERT_TRUE(agree(name, image, want)) << "shape " << static_cast<int>(shape);
          ASSERT_TRUE(ref::sameComp(got, region)) << name << ": area " << got.area << ", want " << region.area;
          ASSERT_TRUE(scratch.intact()) << name;
          cut += ended;
        }
  };
  check("zebiFloodFill_4Con_8u_C1IR", zebiFloodFill_4Con_8u_C1IR, Kind::plain, false);
  check("zebiFloodFill_8Con_8u_C1IR", zebiFloodFill_8Con_8u_C1IR, Kind::plain, true);
  check("zebiFloodFill_Range4Con_8u_C1IR", zebiFloodFill_Range4Con_8u_C1IR, Kind::range, false);
  check("zebiFloodFill_Range8Con_8u_C1IR", zebiFloodFill_Range8Con_8u_C1IR, Kind::range, true);
  check("zebiFloodFill_Grad4Con_8u_C1IR", zebiFloodFill_Grad4Con_8u_C1IR, Kind::gradient, false);
  check("zebiFloodFill_Grad8Con_8u_C1IR", zebiFloodFill_Grad8Con_8u_C1IR, Kind::gradient, true);
  check("zebiFloodFill_4Con_8u_C3IR", zebiFloodFill_4Con_8u_C3IR, Kind::plain, false);
  check("zebiFloodFill_8Con_8u_C3IR", zebiFloodFill_8Con_8u_C3IR, Kind::plain, true);
  EXPECT_GT(cut, 3) << "no range fill met its limit";
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

}  // namespace
