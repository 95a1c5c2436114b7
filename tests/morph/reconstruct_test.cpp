#include "reference/reconstruct.h"

#include "support/compare.h"
#include "support/contract.h"

namespace {

using namespace test;
using ref::Plane;

template <class T>
using Function = ZebStatus (*)(const T*, int, T*, int, ZebiSize, Zeb8u*, ZebiNorm);

template <class T>
struct Family {
  const char* name;
  bool dilate;
  Function<T> function;
  ZebStatus (*size)(ZebiSize, int*);
};

const Family<Zeb8u> families8u[] = {{"zebiMorphReconstructDilate_8u_C1IR", true, zebiMorphReconstructDilate_8u_C1IR,
                                     zebiMorphReconstructGetBufferSize_8u_C1},
                                    {"zebiMorphReconstructErode_8u_C1IR", false, zebiMorphReconstructErode_8u_C1IR,
                                     zebiMorphReconstructGetBufferSize_8u_C1}};
const Family<Zeb16u> families16u[] = {{"zebiMorphReconstructDilate_16u_C1IR", true, zebiMorphReconstructDilate_16u_C1IR,
                                       zebiMorphReconstructGetBufferSize_16u_C1},
                                      {"zebiMorphReconstructErode_16u_C1IR", false, zebiMorphReconstructErode_16u_C1IR,
                                       zebiMorphReconstructGetBufferSize_16u_C1}};
const Family<Zeb32f> families32f[] = {{"zebiMorphReconstructDilate_32f_C1IR", true, zebiMorphReconstructDilate_32f_C1IR,
                                       zebiMorphReconstructGetBufferSize_32f_C1},
                                      {"zebiMorphReconstructErode_32f_C1IR", false, zebiMorphReconstructErode_32f_C1IR,
                                       zebiMorphReconstructGetBufferSize_32f_C1}};
const Family<Zeb64f> families64f[] = {{"zebiMorphReconstructDilate_64f_C1IR", true, zebiMorphReconstructDilate_64f_C1IR,
                                       zebiMorphReconstructGetBufferSize_64f_C1},
                                      {"zebiMorphReconstructErode_64f_C1IR", false, zebiMorphReconstructErode_64f_C1IR,
                                       zebiMorphReconstructGetBufferSize_64f_C1}};

// Masks in which values travel far: noise, plateaus, corridors one pixel wide.
enum class Scenery { noise, smooth, maze, comb, spiral, diagonal };

template <class T>
Plane<T> scenery(Scenery kind, int w, int h, Random& random) {
  Plane<T> p(w, h);
  if (kind == Scenery::noise) fillPlane(p, Content::noise, random);
  if (kind == Scenery::smooth) fillPlane(p, Content::runs, random);
  const T high = T(100), low = T(3);
  for (int y = 0; y < h; ++y)
    for (int x = 0; x < w; ++x) {
      bool open = true;
      if (kind == Scenery::maze) open = x % 2 == 0 ? true : y % 2 == 0 && random.within(0, 2) == 0;
      if (kind == Scenery::comb) open = x % 2 == 0 || y == (x % 4 == 1 ? 0 : h - 1);  // one corridor up and down
      if (kind == Scenery::diagonal) open = x == y || x + y == w - 1;
      if (kind == Scenery::spiral) {  // rings, each open to the next at one place
        const int ring = std::min(std::min(x, y), std::min(w - 1 - x, h - 1 - y));
        open = ring % 2 == 0 || (y == ring + 1 && x == ring);
      }
      if (kind != Scenery::noise && kind != Scenery::smooth) p.at(x, y) = open ? high : low;
    }
  return p;
}

template <class T>
void check(const Family<T>& f, Scenery kind, int w, int h, bool eight, bool sparse, Random& random) {
  auto maskPlane = scenery<T>(kind, w, h, random);
  auto markerPlane = Plane<T>(w, h, 1, T(0));
  if (sparse) {
    markerPlane.at(random.within(0, w - 1), random.within(0, h - 1)) = T(99);
  } else {
    fillPlane(markerPlane, Content::noise, random);
  }
  if (!f.dilate) {  // the dual image
    for (auto* p : {&maskPlane, &markerPlane})
      for (T& v : p->data) v = static_cast<T>(T(110) - v);
  }
  const Image<T> mask(maskPlane, Layout::random<T>(random));
  Image<T> marker(markerPlane, Layout::random<T>(random));
  int size = 0;
  ASSERT_EQ(f.size({w, h}, &size), zebStsOk);
  Scratch scratch(size);
  ASSERT_EQ(f.function(mask.pixels(), mask.step(), marker.pixels(), marker.step(), {w, h}, scratch.get(),
                       eight ? zebiNormInf : zebiNormL1),
            zebStsOk);
  ASSERT_TRUE(agree(f.name, marker, ref::reconstruct(maskPlane, markerPlane, f.dilate, eight)))
      << "scenery " << static_cast<int>(kind) << (eight ? " 8" : " 4") << "-connected";
  ASSERT_TRUE(scratch.intact());
}

template <class T, size_t n>
void checkAll(const Family<T> (&families)[n]) {
  Random random;
  for (const auto& f : families) {
    for (int w = 1; w <= 70; ++w) check(f, static_cast<Scenery>(w % 6), w, 1 + (w * 7) % 23, w % 2, w % 3 == 0, random);
    for (int kind = 0; kind < 6; ++kind)
      for (bool eight : {false, true}) check(f, static_cast<Scenery>(kind), 67, 51, eight, true, random);
    check(f, Scenery::smooth, 3, 150, true, false, random);
    check(f, Scenery::smooth, 200, 40, true, false, random);
  }
}

TEST(Reconstruct, EqualsReference8u) {
  checkAll(families8u);
}
TEST(Reconstruct, EqualsReference16u) {
  checkAll(families16u);
}
TEST(Reconstruct, EqualsReference32f) {
  checkAll(families32f);
}
TEST(Reconstruct, EqualsReference64f) {
  checkAll(families64f);
}

// Values that are not numbers keep their place, hide no neighbour and stop nothing from ending; infinities travel.
template <class T, size_t count>
void checkStrange(const Family<T> (&families)[count]) {
  const T nan = std::numeric_limits<T>::quiet_NaN(), infinity = std::numeric_limits<T>::infinity();
  const T values[] = {nan, infinity, -infinity, T(0), T(1), T(-5), T(7), T(2)};
  Random random;
  for (const auto& f : families)
    for (int width = 1; width < 40; ++width) {
      Plane<T> maskPlane(width, 7), markerPlane(width, 7);
      for (auto* plane : {&maskPlane, &markerPlane})
        for (T& v : plane->data) v = values[random.within(0, 7)];
      const bool eight = width % 3 != 0;
      const Image<T> mask(maskPlane, {}), marker(markerPlane, {});
      int size = 0;
      ASSERT_EQ(f.size(mask.size(), &size), zebStsOk);
      Scratch scratch(size);
      ASSERT_EQ(f.function(mask.pixels(), mask.step(), marker.pixels(), marker.step(), mask.size(), scratch.get(),
                           eight ? zebiNormInf : zebiNormL1),
                zebStsOk);
      ASSERT_TRUE(agree(marker.plane(), ref::reconstruct(maskPlane, markerPlane, f.dilate, eight),
                        [](T a, T b) { return a == b || (a != a && b != b); }))
          << f.name << ", width " << width;
    }
}
TEST(Reconstruct, StrangeFloats) {
  checkStrange(families32f);
  checkStrange(families64f);
}

// A value that travels through a spiral of 150 turns.
TEST(Reconstruct, Spiral) {
  const int n = 601;
  Random random;
  Plane<Zeb8u> maskPlane(n, n, 1, 0);
  int x = 0, y = 0, dx = 1, dy = 0;
  const auto wall = [&](int a, int b) {  // the second pixel ahead is taken, or the picture ends
    const int c = x + 2 * a, d = y + 2 * b, e = x + a, f = y + b;
    if (e < 0 || f < 0 || e >= n || f >= n) return true;
    return c >= 0 && d >= 0 && c < n && d < n && maskPlane.at(c, d) != 0;
  };
  for (int length = 0; length < n * n / 2; ++length) {
    maskPlane.at(x, y) = 200;
    if (wall(dx, dy)) {
      std::swap(dx, dy);
      dx = -dx;
      if (wall(dx, dy)) break;
    }
    x += dx, y += dy;
  }
  Plane<Zeb8u> markerPlane(n, n, 1, 0);
  markerPlane.at(0, 0) = 150;
  const Image<Zeb8u> mask(maskPlane, {});
  Image<Zeb8u> marker(markerPlane, {});
  Scratch scratch(n + 4 * n + 161);
  ASSERT_EQ(zebiMorphReconstructDilate_8u_C1IR(mask.pixels(), mask.step(), marker.pixels(), marker.step(), {n, n},
                                               scratch.get(), zebiNormL1),
            zebStsOk);
  auto want = maskPlane;
  for (auto& v : want.data) v = v ? 150 : 0;
  EXPECT_TRUE(agree("zebiMorphReconstructDilate_8u_C1IR", marker, want));
}

TEST(Reconstruct, BufferSizes) {
  const auto size = [](auto function, ZebiSize s) {
    int bytes = -1;
    EXPECT_EQ(function(s, &bytes), zebStsOk);
    return bytes;
  };
  EXPECT_EQ(size(zebiMorphReconstructGetBufferSize_8u_C1, {10, 7}), 7 + 40 + 161);
  EXPECT_EQ(size(zebiMorphReconstructGetBufferSize_16u_C1, {10, 7}), 2 * 47 + 322);
  EXPECT_EQ(size(zebiMorphReconstructGetBufferSize_32f_C1, {10, 7}), 160 + 7 + 164);
  EXPECT_EQ(size(zebiMorphReconstructGetBufferSize_64f_C1, {10, 7}), 320 + 7 + 168);
  int bytes = -1;
  for (auto function : {zebiMorphReconstructGetBufferSize_8u_C1, zebiMorphReconstructGetBufferSize_16u_C1,
                        zebiMorphReconstructGetBufferSize_32f_C1, zebiMorphReconstructGetBufferSize_64f_C1}) {
    EXPECT_EQ(function({0, 1}, nullptr), zebStsErrNullPointer);
    EXPECT_EQ(function({0, 1}, &bytes), zebStsErrSize);
    EXPECT_EQ(function({1, 0}, &bytes), zebStsErrSize);
    EXPECT_EQ(function({0x7FFFFFFF, 1}, &bytes), zebStsErrOverflow);
  }
  EXPECT_EQ(bytes, -1);
  Contract(NAMED(zebiMorphReconstructGetBufferSize), ZebiSize{10, 7}, zeb16u, 1, &bytes)
      .nulls<3>()
      .sizes<0>()
      .with<1>(zeb8s, zebStsErrDataType)
      .with<1>(zeb16s, zebStsErrDataType)
      .with<2>(3, zebStsErrNumChannels)
      .with<2>(0, zebStsErrNumChannels)
      .check();
  EXPECT_EQ(bytes, 2 * 47 + 322);
  for (const auto& [type, want] : {std::pair{zeb8u, 208}, {zeb16u, 416}, {zeb32f, 331}, {zeb64f, 495}}) {
    EXPECT_EQ(zebiMorphReconstructGetBufferSize({10, 7}, type, 1, &bytes), zebStsOk);
    EXPECT_EQ(bytes, want);
  }
}

template <class T, size_t n>
void contracts(const Family<T> (&families)[n]) {
  for (const auto& f : families) {
    constexpr int e = sizeof(T), w = 9;
    const Image<T> mask(w, 3, 1, {});
    Image<T> marker(w, 3, 1, {});
    Scratch scratch(2000);
    Contract c(f.name, f.function, mask.pixels(), mask.step(), marker.pixels(), marker.step(), ZebiSize{w, 3},
               scratch.get(), ZebiNorm(zebiNormInf));
    c.template nulls<0, 2, 5>().template sizes<4>().template step<1>(e * w, e).template step<3>(e * w, e);
    c.template hostile<4>().template with<6>(2, zebStsErrBadArgument).template with<6>(-1, zebStsErrBadArgument);
    c.check();
  }
}

TEST(Reconstruct, Checks) {
  contracts(families8u);
  contracts(families16u);
  contracts(families32f);
  contracts(families64f);
}

}  // namespace
