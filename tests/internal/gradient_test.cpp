// Magnitudes of bytes where roots lie next to the middle between two integers, which no image meets by chance.
#include "geometry/gradient_rows.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

TEST(MagnitudeRow, IsTheIntegerNearestToTheRoot) {
  constexpr int largest = 12240;
  std::vector<Zeb16s> gx(largest + 1), gy(largest + 1), magnitude(largest + 1);
  for (int y = 0; y <= largest; ++y) gy[y] = static_cast<Zeb16s>(y % 2 ? -y : y);
  int64_t wrong = 0, beside = 0;
  for (int x = 0; x <= largest; x += 6) {
    gx.assign(gx.size(), static_cast<Zeb16s>(-x));
    zeb::magnitudeRow(zebNormL2, gx.data(), gy.data(), largest + 1, magnitude.data());
    for (int y = 0; y <= largest; ++y) {
      const int64_t s = int64_t{x} * x + int64_t{y} * y, m = magnitude[y];
      wrong += s > 0 ? !(m * m - m < s && s <= m * m + m) : m != 0;
      beside += s == m * m + m || s == m * m - m + 1;
    }
  }
  EXPECT_EQ(wrong, 0);
  EXPECT_GT(beside, 1000);
}

}  // namespace
