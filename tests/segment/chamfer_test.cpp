// Chamfer distance transforms and their weights.
#include "support/compare.h"

namespace {

using namespace test;
using ref::Plane;

// City blocks and the chessboard about one feature, and the ends of the scale.
TEST(Chamfer, KnownDistances) {
  Plane<Zeb8u> picture(41, 33, 1, 1);
  picture.at(17, 20) = 0;
  const Image<Zeb8u> src(picture, {});
  Image<Zeb8u> bytes(41, 33, 1, {});
  Image<Zeb32f> floats(41, 33, 1, {});
  const Zeb32s chessboard[] = {1, 1};
  const Zeb32f blocks[] = {1, 2};
  ASSERT_EQ(
      zebiDistanceTransform_3x3_8u_C1R(src.pixels(), src.step(), bytes.pixels(), bytes.step(), src.size(), chessboard),
      zebStsOk);
  ASSERT_EQ(
      zebiDistanceTransform_3x3_8u32f_C1R(src.pixels(), src.step(), floats.pixels(), floats.step(), src.size(), blocks),
      zebStsOk);
  for (int y = 0; y < 33; ++y)
    for (int x = 0; x < 41; ++x) {
      ASSERT_EQ(bytes.plane().at(x, y), std::max(std::abs(x - 17), std::abs(y - 20)));
      ASSERT_EQ(floats.plane().at(x, y), std::abs(x - 17) + std::abs(y - 20));
    }
}

}  // namespace
