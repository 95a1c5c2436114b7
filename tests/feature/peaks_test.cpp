// Local peaks.
#include "support/compare.h"

namespace {

using namespace test;
using ref::Plane;

template <class T>
using Find = ZebStatus (*)(const T*, int, ZebiSize, T, ZebiPoint*, int, int*, int, int, Zeb8u*);

// The peaks among eight neighbours.
template <class T>
std::vector<std::pair<int, int>> peaksOf(Find<T> find, const Plane<T>& plane, T threshold) {
  const Image<T> src(plane, {});
  const Scratch scratch(1000);
  ZebiPoint found[30];
  int count = 0;
  EXPECT_EQ(find(src.pixels(), src.step(), src.size(), threshold, found, 30, &count, zebiNormInf, 1, scratch.get()),
            zebStsOk);
  std::vector<std::pair<int, int>> points;
  for (int i = 0; i < count; ++i) points.push_back({found[i].x, found[i].y});
  return points;
}

TEST(FindPeaks, EndsOfTheTypes) {
  Plane<Zeb32s> lowest(5, 5);
  lowest.at(2, 2) = -0x7FFFFFFF - 1;
  const std::vector<std::pair<int, int>> middle = {{2, 2}}, outer = {{1, 1}, {3, 1}};
  for (Zeb32s threshold : {0, 0x7FFFFFFF, -0x7FFFFFFF - 1})
    EXPECT_EQ(peaksOf(zebiFindPeaks3x3_32s_C1R, lowest, threshold), middle) << threshold;
  // A neighbour that is higher by the smallest normal float beats nothing; one step more does.
  const Zeb32f least = std::numeric_limits<Zeb32f>::min();
  Plane<Zeb32f> close(5, 3);
  close.at(1, 1) = least, close.at(2, 1) = 2 * least, close.at(3, 1) = std::nextafter(3 * least, 1.0f);
  EXPECT_EQ(peaksOf(zebiFindPeaks3x3_32f_C1R, close, 0.0f), outer);
}

TEST(FindPeaks, Sizes) {
  int size = -1;
  EXPECT_EQ(zebiFindPeaks3x3GetBufferSize_32f_C1R(INT32_MAX, &size), zebStsErrOverflow);
  EXPECT_EQ(size, -1);
  EXPECT_EQ(zebiFindPeaks3x3GetBufferSize_32f_C1R(17, &size), zebStsOk);
  EXPECT_EQ(size, 5 * 128 + 32);
}

}  // namespace
