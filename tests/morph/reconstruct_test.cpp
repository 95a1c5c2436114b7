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
  Function<T> function;
  bool dilate;
  ZebStatus (*size)(ZebiSize, int*);
};

#define FAMILIES(form)                                                                                          \
  {                                                                                                             \
    {NAMED(zebiMorphReconstructDilate_##form##_C1IR), true, zebiMorphReconstructGetBufferSize_##form##_C1},     \
        {NAMED(zebiMorphReconstructErode_##form##_C1IR), false, zebiMorphReconstructGetBufferSize_##form##_C1}, \
  }
const Family<Zeb8u> families8u[] = FAMILIES(8u);
const Family<Zeb16u> families16u[] = FAMILIES(16u);
const Family<Zeb32f> families32f[] = FAMILIES(32f);
const Family<Zeb64f> families64f[] = FAMILIES(64f);

// The marker after reconstruction.
template <class T>
Plane<T> reconstructed(const Family<T>& f, const Plane<T>& maskPlane, const Plane<T>& markerPlane, bool eight,
                       Random& random) {
  const Image<T> mask(maskPlane, Layout::random<T>(random)), marker(markerPlane, Layout::random<T>(random));
  int size = 0;
  EXPECT_EQ(f.size(mask.size(), &size), zebStsOk);
  const Scratch scratch(size);
  EXPECT_EQ(f.function(mask.pixels(), mask.step(), marker.pixels(), marker.step(), mask.size(), scratch.get(),
                       eight ? zebiNormInf : zebiNormL1),
            zebStsOk);
  EXPECT_TRUE(scratch.intact() && marker.intact()) << f.name;
  return marker.plane();
}

// Corridors one pixel wide, through which a value travels far, and plateaus.
enum class Scenery { maze, comb, spiral, diagonal, plateaus };

template <class T>
Plane<T> scenery(Scenery kind, int w, int h, Random& random) {
  Plane<T> p(w, h);
  if (kind == Scenery::plateaus) {
    fillPlane(p, Content::runs, random);
    return p;
  }
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
      p.at(x, y) = open ? T(100) : T(3);
    }
  return p;
}

// One marked pixel in corridors, noise on plateaus.
template <class T>
void check(const Family<T>& f, Scenery kind, int w, int h, bool eight, Random& random) {
  auto mask = scenery<T>(kind, w, h, random), marker = Plane<T>(w, h);
  if (kind == Scenery::plateaus)
    fillPlane(marker, Content::noise, random);
  else
    marker.at(random.within(0, w - 1), random.within(0, h - 1)) = T(99);
  if (!f.dilate) {  // the dual image
    for (auto* p : {&mask, &marker})
      for (T& v : p->data) v = static_cast<T>(T(110) - v);
  }
  EXPECT_TRUE(agree(reconstructed(f, mask, marker, eight, random), ref::reconstruct(mask, marker, f.dilate, eight)))
      << f.name << ", scenery " << static_cast<int>(kind) << (eight ? " 8" : " 4") << "-connected";
}

template <class T, size_t n>
void checkAll(const Family<T> (&families)[n]) {
  Random random;
  for (const auto& f : families)
    for (bool eight : {false, true}) {
      for (Scenery kind : {Scenery::maze, Scenery::comb, Scenery::spiral, Scenery::diagonal})
        for (int w : {29, 67}) check(f, kind, w, 51, eight, random);
      check(f, Scenery::plateaus, 3, 150, eight, random);
      check(f, Scenery::plateaus, 200, 40, eight, random);
    }
}

TEST(Reconstruct, Corridors) {
  checkAll(families8u);
  checkAll(families16u);
  checkAll(families32f);
  checkAll(families64f);
}

// By hand: an infinity fills the first row and passes between the values that are not numbers in the second one, which
// stay and hide nothing. In the third row only every other pixel is open: it is reached across corners or not at all.
template <class T, size_t n>
void checkStrange(const Family<T> (&families)[n]) {
  Random random;
  for (const auto& f : families)
    for (bool eight : {false, true})
      for (int width = 2; width < 40; ++width) {
        const T nan = std::numeric_limits<T>::quiet_NaN(), infinity = std::numeric_limits<T>::infinity();
        const T most = f.dilate ? infinity : -infinity;
        Plane<T> mask(width, 3, 1, most), marker(width, 3), want = mask;
        marker.at(width / 2, 0) = most;
        for (int x = 0; x < width; ++x) {
          const bool even = x % 2 == 0;
          if (even) marker.at(x, 1) = want.at(x, 1) = nan;
          if (!even) mask.at(x, 2) = T(0);
          want.at(x, 2) = even && eight ? most : T(0);
        }
        EXPECT_TRUE(agree(reconstructed(f, mask, marker, eight, random), want)) << f.name << ", width " << width;
      }
}
TEST(Reconstruct, StrangeFloats) {
  checkStrange(families32f);
  checkStrange(families64f);
}

// A value that travels through a spiral of 150 turns.
TEST(Reconstruct, Spiral) {
  const int n = 601;
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
