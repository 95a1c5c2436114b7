#include "reference/reconstruct.h"

#include "support/compare.h"

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

#define FAMILIES(form)                                                                               \
  {                                                                                                  \
    {"zebiMorphReconstructDilate_" #form "_C1IR", zebiMorphReconstructDilate_##form##_C1IR, true,    \
     zebiMorphReconstructGetBufferSize_##form##_C1},                                                 \
        {"zebiMorphReconstructErode_" #form "_C1IR", zebiMorphReconstructErode_##form##_C1IR, false, \
         zebiMorphReconstructGetBufferSize_##form##_C1},                                             \
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
enum class Scenery { maze, comb, spiral, diagonal, streams, plateaus };

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
      if (kind == Scenery::streams) open = y % 3 != 2 && (x + 2 * (y % 3)) % 4 != 1;  // between two rows, to and fro
      p.at(x, y) = open ? T(100) : T(3);
    }
  return p;
}

// One marked pixel in corridors, noise on plateaus, the springs of all streams, each higher than those before it: more
// of them advance at once than the buffer has room for.
template <class T>
void check(const Family<T>& f, Scenery kind, int w, int h, bool eight, Random& random) {
  auto mask = scenery<T>(kind, w, h, random), marker = Plane<T>(w, h);
  if (kind == Scenery::plateaus)
    fillPlane(marker, Content::noise, random);
  else if (kind == Scenery::streams)
    for (int y = 0; y < h; y += 3) marker.at(0, y) = static_cast<T>(10 + 80 * y / h);
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
        for (int w : {29, 67, 130}) check(f, kind, w, 101, eight, random);
      check(f, Scenery::plateaus, 3, 150, eight, random);
      check(f, Scenery::plateaus, 200, 40, eight, random);
      check(f, Scenery::streams, 29, 240, eight, random);
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

TEST(Reconstruct, BufferSizes) {
  for (const auto& [type, want] : {std::pair{zeb8u, 208}, {zeb16u, 416}, {zeb32f, 331}, {zeb64f, 495}}) {
    int bytes = -1;
    EXPECT_EQ(zebiMorphReconstructGetBufferSize({INT32_MAX, 1}, type, 1, &bytes), zebStsErrOverflow);
    EXPECT_EQ(bytes, -1);
    EXPECT_EQ(zebiMorphReconstructGetBufferSize({10, 7}, type, 1, &bytes), zebStsOk);
    EXPECT_EQ(bytes, want);
    EXPECT_EQ(zebiMorphReconstructGetBufferSize({10, 7}, type, 3, &bytes), zebStsErrNumChannels);
    EXPECT_EQ(zebiMorphReconstructGetBufferSize({10, 7}, zeb16s, 1, &bytes), zebStsErrDataType);
  }
}

}  // namespace
