#include <limits>

#include "support/compare.h"

namespace {

using namespace test;

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

}  // namespace
