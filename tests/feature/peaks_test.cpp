#include "reference/peaks.h"

#include "support/compare.h"
#include "support/contract.h"

namespace {

using namespace test;
using ref::Plane;

template <class T>
using Find = ZebStatus (*)(const T*, int, ZebiSize, T, ZebiPoint*, int, int*, int, int, Zeb8u*);

template <class T>
void check(const char* name, Find<T> find, const Plane<T>& plane, T threshold, int norm, int border, int most,
           Random& random) {
  const Image<T> src(plane, Layout::random<T>(random));
  const auto want = ref::peaks(plane, threshold, norm == zebiNormInf, border, static_cast<size_t>(most));
  int size = 0;
  ASSERT_EQ(zebiFindPeaks3x3GetBufferSize_32f_C1R(plane.width, &size), zebStsOk);
  Scratch scratch(size);
  GuardedBytes peaks(static_cast<size_t>(most) * sizeof(ZebiPoint), Place::back);
  int count = -1;
  ASSERT_EQ(find(src.pixels(), src.step(), src.size(), threshold, reinterpret_cast<ZebiPoint*>(peaks.data()), most,
                 &count, norm, border, scratch.get()),
            zebStsOk);
  ASSERT_EQ(count, static_cast<int>(want.size())) << name << " " << src.describe() << " norm " << norm;
  for (int i = 0; i < count; ++i) {
    const auto* got = reinterpret_cast<const ZebiPoint*>(peaks.data()) + i;
    ASSERT_EQ(got->x, want[i].x) << name << " peak " << i;
    ASSERT_EQ(got->y, want[i].y) << name << " peak " << i;
  }
  ASSERT_TRUE(peaks.intactMargins() && scratch.intact());
}

template <class T>
void checkAll(const char* name, Find<T> find) {
  Random random;
  for (int w = 2; w <= 70; ++w) {
    Plane<T> plane(w, 2 + w % 9);
    fillPlane(plane, allContents[w % 8], random);
    if (w % 2)  // few levels: plateaus everywhere
      for (T& v : plane.data) v = static_cast<T>(random.within(-3, 3));
    const int border = random.within(1, std::min(plane.width, plane.height) / 2);
    const T threshold = w % 5 == 0 ? T(-1) : static_cast<T>(random.within(0, 3));
    for (int norm : {zebiNormInf, zebiNormL1})
      for (int most : {1, 7, 1000}) check(name, find, plane, threshold, norm, border, most, random);
  }
}

TEST(FindPeaks, EqualReference32f) {
  checkAll<Zeb32f>("zebiFindPeaks3x3_32f_C1R", zebiFindPeaks3x3_32f_C1R);
}
TEST(FindPeaks, EqualReference32s) {
  checkAll<Zeb32s>("zebiFindPeaks3x3_32s_C1R", zebiFindPeaks3x3_32s_C1R);
}

TEST(FindPeaks, EndsOfTheTypes) {
  Random random;
  Plane<Zeb32s> lowest(5, 5, 1, 0);
  lowest.at(2, 2) = -0x7FFFFFFF - 1;
  for (Zeb32s threshold : {0, 0x7FFFFFFF, -0x7FFFFFFF - 1})
    check<Zeb32s>("32s", zebiFindPeaks3x3_32s_C1R, lowest, threshold, zebiNormInf, 1, 30, random);
  // A difference of the smallest normal float is none; one step more is.
  const float least = std::numeric_limits<float>::min();
  Plane<Zeb32f> close(5, 3, 1, 0);
  close.at(1, 1) = 4 * least, close.at(2, 1) = 5 * least,
              close.at(3, 1) = 6 * least + std::numeric_limits<float>::denorm_min();
  check<Zeb32f>("32f", zebiFindPeaks3x3_32f_C1R, close, 0.0f, zebiNormInf, 1, 30, random);
}

template <class T>
void contract(const char* name, Find<T> find) {
  const Image<T> src(9, 7, 1, {});
  int count = 0;
  ZebiPoint peaks[4];
  Scratch scratch(1000);
  Contract c(name, find, src.pixels(), src.step(), ZebiSize{9, 7}, T(0), peaks, 4, &count, int(zebiNormInf), 1,
             scratch.get());
  c.template nulls<0, 4, 6, 9>().template sizes<2>().template with<5>(0, zebStsErrSize);
  c.template with<8>(0, zebStsErrSize).template with<8>(4, zebStsErrSize).template with<8>(0x7FFFFFFF, zebStsErrSize);
  c.template step<1>(36, 4).template hostile<2>().template multiple<1>(4).template with<7>(2, zebStsErrBadArgument);
  c.check();
  EXPECT_EQ(find(src.pixels(), src.step(), {8, 7}, T(0), peaks, 4, &count, zebiNormL1, 3, scratch.get()), zebStsOk);
}

TEST(FindPeaks, Checks) {
  contract<Zeb32f>("zebiFindPeaks3x3_32f_C1R", zebiFindPeaks3x3_32f_C1R);
  contract<Zeb32s>("zebiFindPeaks3x3_32s_C1R", zebiFindPeaks3x3_32s_C1R);
  for (auto function : {zebiFindPeaks3x3GetBufferSize_32f_C1R, zebiFindPeaks3x3GetBufferSize_32s_C1R}) {
    int size = -1;
    EXPECT_EQ(function(0, nullptr), zebStsErrNullPointer);
    EXPECT_EQ(function(0, &size), zebStsErrSize);
    EXPECT_EQ(function(0x7FFFFFFF, &size), zebStsErrOverflow);
    EXPECT_EQ(size, -1);
    EXPECT_EQ(function(17, &size), zebStsOk);
    EXPECT_EQ(size, 5 * 128 + 32);
  }
}

}  // namespace
