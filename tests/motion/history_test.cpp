#include "reference/history.h"

#include "support/compare.h"
#include "support/contract.h"

namespace {

using namespace test;

template <class T>
using Update = ZebStatus (*)(const T*, int, Zeb32f*, int, ZebiSize, Zeb32f, Zeb32f);

// Silhouettes are mostly 0; times lie on a few values around the limit, so that equality is common.
template <class T>
ref::Plane<T> silhouetteOf(int w, int h, Content content, Random& random) {
  ref::Plane<T> plane(w, h);
  fillPlane(plane, content, random);
  for (T& v : plane.data)
    if (random.within(0, 2)) v = std::is_floating_point_v<T> && random.within(0, 1) ? static_cast<T>(-0.0) : T(0);
  return plane;
}

template <class T>
void checkUpdates(const char* name, Update<T> update) {
  Random random;
  for (int i = 0; i < 300; ++i) {
    const int w = i < 140 ? i / 2 + 1 : random.within(1, 300), h = random.within(1, 5);
    const auto content = i % 2 ? Content::extremes : Content::noise;
    const auto silhouette = silhouetteOf<T>(w, h, content, random);
    const float now = static_cast<float>(random.within(-3, 8)), duration = static_cast<float>(random.within(0, 4));
    ref::Plane<Zeb32f> times(w, h);
    fillPlane(times, Content::extremes, random);
    for (float& v : times.data)
      if (random.within(0, 5)) v = static_cast<float>(random.within(-6, 9));
    const Image<T> src(silhouette, Layout::random<T>(random));
    const Image<Zeb32f> mhi(times, Layout::random<Zeb32f>(random));
    ASSERT_EQ(update(src.pixels(), src.step(), mhi.pixels(), mhi.step(), {w, h}, now, duration), zebStsOk);
    ASSERT_TRUE(agree(name, mhi, ref::motionHistory(silhouette, times, now, duration)));
  }
}

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

TEST(MotionHistory, EqualsItsReference) {
  checkUpdates<Zeb8u>(NAMED(zebiUpdateMotionHistory_8u32f_C1IR));
  checkUpdates<Zeb16u>(NAMED(zebiUpdateMotionHistory_16u32f_C1IR));
  checkUpdates<Zeb32f>(NAMED(zebiUpdateMotionHistory_32f_C1IR));
}

TEST(MotionHistory, ChecksArgumentsInOrder) {
  checkOrder<Zeb8u>(NAMED(zebiUpdateMotionHistory_8u32f_C1IR));
  checkOrder<Zeb16u>(NAMED(zebiUpdateMotionHistory_16u32f_C1IR));
  checkOrder<Zeb32f>(NAMED(zebiUpdateMotionHistory_32f_C1IR));
}

}  // namespace
