// Core services: allocation, fills, copies, element-wise helpers and their streaming decision.
#include "core/services.h"

#include "core/init.h"
#include "support/compare.h"
#include "support/zebcore_double.h"

namespace {

using namespace test;
using ref::Plane;

TEST(Initialiser, StoresTheVariantIndex) {
  auto& core = zebcore();
  for (unsigned long long mask : {0x00ull, 0x10ull, 0x20ull, 0x30ull, 0xFFFFFFFFFFFFFFFFull, 0xFFFFFFFFFFFFFFCFull}) {
    core.reset();
    core.features = mask;
    zebJumpIndexForMergedDLL = 7;
    zeb::detectProcessor();
    EXPECT_EQ(zebJumpIndexForMergedDLL, (mask & 0x30) == 0x30 ? 1 : 0) << mask;
    EXPECT_EQ(core.featureCalls, 1);
    EXPECT_TRUE(core.featureArgumentsNull);
  }
}

TEST(Services, Allocation) {
  auto& core = zebcore();
  core.reset();
  EXPECT_EQ(zebsMalloc_32f(0), nullptr);
  EXPECT_EQ(zebsMalloc_32f(-5), nullptr);
  EXPECT_EQ(zebsMalloc_8u(-1), nullptr);
  EXPECT_EQ(core.mallocCalls, 0);
  const auto allocates = [&](auto* p, int bytes) {
    EXPECT_NE(p, nullptr);
    EXPECT_EQ(core.lastLength, bytes);
    zebsFree(p);
  };
  allocates(zebsMalloc_8u(7), 7);
  allocates(zebsMalloc_16u(7), 14);
  allocates(zebsMalloc_32s(7), 28);
  allocates(zebsMalloc_32f(7), 28);
  core.failMallocAt = 0;
  EXPECT_EQ(zebsMalloc_32s(1), nullptr);
  EXPECT_EQ(core.liveBlocks, 0);
}

TEST(Services, Questions) {
  auto& core = zebcore();
  core.reset();
  core.cacheSize = 12345;
  EXPECT_EQ(owncvGetCacheSize(), 12345);
  EXPECT_EQ(owncvGetMaxNumThreads(), 1);
}

// A fill at every small length and address, then at the lengths where the decision turns.
template <class T>
void fills(void (*set)(T, T*, int), void (*zero)(T*, int)) {
  Random random;
  for (int count = 0; count <= 140; ++count) {
    Image<T> d(count + 1, 1, 1, Layout::random<T>(random), Content::noise, random);
    const T value = noiseValue<T>(random);
    auto want = d.plane();
    for (int i = 0; i < count; ++i) want.at(i, 0) = count % 3 ? value : T(0);
    count % 3 ? set(value, d.pixels(), count) : zero(d.pixels(), count);
    ASSERT_TRUE(agree("fill", d, want)) << count;
  }
  set(T(1), nullptr, 0);
  set(T(1), nullptr, -3);
}

TEST(Services, Fills) {
  fills<Zeb8u>(zebsSet_8u, zebsZero_8u);
  fills<Zeb16s>(zebsSet_16s, zebsZero_16s);
  fills<Zeb32s>(zebsSet_32s, zebsZero_32s);
  fills<Zeb32f>(zebsSet_32f, zebsZero_32f);
}

// Large fills: when the cache size is asked, that the result is the same for either kind of store, and that a failing
// query only means ordinary stores.
TEST(Services, LargeFillsAskForTheCacheSize) {
  auto& core = zebcore();
  const auto asks = [&](auto&& call) {
    core.reset();
    call();
    return core.cacheCalls;
  };
  constexpr int threshold = 0x200000;
  GuardedBytes bytes(threshold + 64, Place::odd, 3);
  Zeb8u* p = bytes.data();
  auto* p32 = reinterpret_cast<Zeb32s*>(p);
  EXPECT_EQ(asks([&] { zebsSet_8u(9, p, threshold); }), 0);
  EXPECT_EQ(asks([&] { zebsSet_8u(9, p, threshold + 1); }), 1);
  EXPECT_EQ(asks([&] { zebsZero_32s(p32, threshold / 4); }), 0);
  EXPECT_EQ(asks([&] { zebsSet_32s(9, p32, threshold / 4 + 1); }), 1);
  EXPECT_EQ(asks([&] { zebsZero_16s(reinterpret_cast<Zeb16s*>(p), threshold / 2 + 1); }), 1);

  for (int offset : {0, 4, 36, 3}) {
    for (ZebStatus status : {zebStsOk, zebStsErr}) {
      core.reset();
      core.cacheStatus = status;
      const int count = threshold / 4 + 7;
      Zeb8u* start = p + (64 - reinterpret_cast<uintptr_t>(p) % 64) % 64 + offset;
      memset(p, 0x11, bytes.size());
      const int room = static_cast<int>((p + bytes.size() - start) / 4);
      const int n = count < room - 1 ? count : room - 1;
      zebsSet_32s(0x01020304, reinterpret_cast<Zeb32s*>(start), n);
      EXPECT_EQ(core.cacheCalls, n * 4 > threshold ? 1 : 0);
      int wrong = 0;
      for (Zeb8u* q = p; q < p + bytes.size(); ++q) {
        const bool inside = q >= start && q < start + 4 * n;
        wrong += *q != (inside ? 4 - (q - start) % 4 : 0x11);
      }
      EXPECT_EQ(wrong, 0) << "offset " << offset << " status " << status;
    }
  }
  EXPECT_TRUE(bytes.intactMargins());
}

TEST(Services, TwoDimensionalFillsAskForTheCacheSize) {
  auto& core = zebcore();
  const int width = 3000;
  Image<Zeb8u> d(width, 2098, 1, {Place::odd, 0, 1});
  for (int height : {2097, 2098}) {  // on either side of 0x600000 bytes
    core.reset();
    ASSERT_EQ(zebiSet_8u_C1R(Zeb8u(height), d.pixels(), d.step(), {width, height}), zebStsOk);
    EXPECT_EQ(core.cacheCalls, height == 2098 ? 1 : 0);
    EXPECT_EQ(*d.pixels(0, 0), Zeb8u(height));
    EXPECT_EQ(*d.pixels(width - 1, height - 1), Zeb8u(height));
    EXPECT_TRUE(d.intact());
  }
}

template <class T>
void copies(void (*copy)(const T*, T*, int)) {
  Random random;
  for (int count = 0; count <= 70; ++count) {
    const Image<T> s(count + 1, 1, 1, Layout::random<T>(random), Content::noise, random);
    Image<T> d(count + 1, 1, 1, Layout::random<T>(random), Content::noise, random);
    auto want = d.plane();
    for (int i = 0; i < count; ++i) want.at(i, 0) = s.plane().at(i, 0);
    copy(s.pixels(), d.pixels(), count);
    ASSERT_TRUE(agree("copy", d, want));
  }
}

TEST(Services, Copies) {
  copies<Zeb8u>(zebsCopy_8u);
  copies<Zeb16s>(zebsCopy_16s);
  copies<Zeb32f>(zebsCopy_32f);
}

template <class T>
void everyElement(void (*least)(const T*, T*, int), void (*most)(const T*, T*, int)) {
  Random random;
  for (int count = 1; count <= 70; ++count) {
    const Image<T> s(count, 1, 1, Layout::random<T>(random), allContents[count % 8], random);
    Image<T> d(count, 1, 1, Layout::random<T>(random), Content::noise, random);
    auto want = d.plane();
    for (int i = 0; i < count; ++i) {
      const T a = s.plane().at(i, 0), b = want.at(i, 0);
      want.at(i, 0) = count % 2 ? (a < b ? a : b) : (a > b ? a : b);
    }
    (count % 2 ? least : most)(s.pixels(), d.pixels(), count);
    ASSERT_TRUE(agree("min or max", d, want)) << count;
  }
}

TEST(Services, MinimumAndMaximum) {
  everyElement<Zeb8u>(zebsMinEvery_8u, zebsMaxEvery_8u);
  everyElement<Zeb16u>(zebsMinEvery_16u, zebsMaxEvery_16u);
  everyElement<Zeb32f>(zebsMinEvery_32f, zebsMaxEvery_32f);
  everyElement<Zeb64f>(zebsMinEvery_64f, zebsMaxEvery_64f);
}

TEST(Services, SquareRoot) {
  Random random;
  for (int count = 1; count <= 40; ++count) {
    Image<Zeb32f> d(count, 1, 1, Layout::random<Zeb32f>(random), allContents[count % 8], random);
    auto want = d.plane();
    for (auto& v : want.data) v = std::sqrt(v);
    zebsSqrt_32f(d.pixels(), d.pixels(), count);
    ASSERT_TRUE(agree("square root", d, want));
  }
}

template <class T>
void copyImage(const char* name, ZebStatus (*copy)(const T*, int, T*, int, ZebiSize)) {
  Random random;
  for (int width = 1; width < 40; ++width) {
    const Image<T> s(width, 3, 1, Layout::random<T>(random), Content::noise, random);
    Image<T> d(width, 3, 1, Layout::random<T>(random));
    ASSERT_EQ(copy(s.pixels(), s.step(), d.pixels(), d.step(), d.size()), zebStsOk);
    ASSERT_TRUE(agree(name, d, s.plane()));
  }
  const Image<T> s(9, 3, 1, {});
  const auto status = [&](const T* from, int step, ZebiSize size) {
    return copy(from, step, s.pixels(), s.step(), size);
  };
  EXPECT_EQ(status(nullptr, 0, {0, 3}), zebStsErrNullPointer);
  EXPECT_EQ(status(s.pixels(), 0, {9, 0}), zebStsErrSize);
  EXPECT_EQ(status(s.pixels(), s.step() - 1, {9, 3}), zebStsErrStep);
  EXPECT_EQ(status(s.pixels(), s.step() + 1, {9, 1}), sizeof(T) > 1 ? zebStsErrNotEvenStep : zebStsOk);
}

TEST(Services, ImageCopies) {
  copyImage("8u", zebiCopy_8u_C1R);
  copyImage("16s", zebiCopy_16s_C1R);
  copyImage("32f", zebiCopy_32f_C1R);
}

TEST(Services, Convert16uToFloat) {
  Random random;
  auto& core = zebcore();
  for (int width : {1, 2, 7, 8, 9, 15, 16, 17, 31, 33, 70, 700}) {
    const int height = width == 700 ? 300 : 3;  // 300 rows lie beyond the threshold of 0x100000 bytes
    const Image<Zeb16u> s(width, height, 1, Layout::random<Zeb16u>(random), Content::noise, random);
    Image<Zeb32f> d(width, height, 1, Layout::random<Zeb32f>(random));
    Plane<Zeb32f> want(width, height);
    const auto from = s.plane();
    for (size_t i = 0; i < want.data.size(); ++i) want.data[i] = from.data[i];
    core.reset();
    ASSERT_EQ(zebiConvert_16u32f_C1R(s.pixels(), s.step(), d.pixels(), d.step(), d.size()), zebStsOk);
    EXPECT_EQ(core.cacheCalls, height == 300 ? 1 : 0);
    ASSERT_TRUE(agree("zebiConvert_16u32f_C1R", d, want));
  }
}

}  // namespace
