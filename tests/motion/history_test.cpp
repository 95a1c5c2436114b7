#include <limits>

#include "support/compare.h"
#include "support/contract.h"

namespace {

using namespace test;

template <class T>
using Update = ZebStatus (*)(const T*, int, Zeb32f*, int, ZebiSize, Zeb32f, Zeb32f);

template <class T>
void checkOrder(const char* name, Update<T> update) {
  constexpr int w = 13, h = 3, size = static_cast<int>(sizeof(T));
  Random random;
  const Image<T> src(w, h, 1, {}, Content::noise, random);
  const Image<Zeb32f> mhi(w, h, 1, {}, Content::noise, random);
  Contract contract(name, update, src.pixels(), src.step(), mhi.pixels(), mhi.step(), src.size(), 5.0f, 1.0f);
  contract.template nulls<0, 2>().template sizes<4>().template hostile<4>();
  contract.template step<1>(w * size, size).template step<3>(w * 4, 4);
  if (size > 1) contract.template multiple<1>(size);
  contract.template multiple<3>(4).template with<6>(-0.5f, zebStsErrOutOfRange).check();
}

// By hand, in rows of whole vectors and a rest: now is 7, the duration 3; times before 4 end. Neither 0 nor -0 is a
// silhouette; everything else is, numbers or not.
TEST(MotionHistory, EndsTimesBeforeTheLimit) {
  const Zeb32f silhouette[] = {0, 0, 0, -0.0f, 0.5f, std::numeric_limits<Zeb32f>::quiet_NaN(), -1};
  const Zeb32f before[] = {3.5f, 4, 6, 2, 1, 2, 9}, after[] = {0, 4, 6, 0, 7, 7, 7};
  ref::Plane<Zeb32f> shapes(45, 2), times(45, 2), want(45, 2);
  for (size_t i = 0; i < want.data.size(); ++i)
    shapes.data[i] = silhouette[i % 7], times.data[i] = before[i % 7], want.data[i] = after[i % 7];
  const Image<Zeb32f> src(shapes, {}), mhi(times, {});
  ASSERT_EQ(zebiUpdateMotionHistory_32f_C1IR(src.pixels(), src.step(), mhi.pixels(), mhi.step(), src.size(), 7, 3),
            zebStsOk);
  EXPECT_TRUE(agree("zebiUpdateMotionHistory_32f_C1IR", mhi, want));
}

TEST(MotionHistory, ChecksArgumentsInOrder) {
  checkOrder<Zeb8u>(NAMED(zebiUpdateMotionHistory_8u32f_C1IR));
  checkOrder<Zeb16u>(NAMED(zebiUpdateMotionHistory_16u32f_C1IR));
  checkOrder<Zeb32f>(NAMED(zebiUpdateMotionHistory_32f_C1IR));
}

}  // namespace
