// Stages of Haar cascades: their state and their checks.
#include "reference/haar.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "support/image.h"
#include "support/record.h"
#include "support/zebcore_double.h"

namespace {

using namespace test;
using ref::HaarStage;
using ref::Plane;

// An upright stage.
template <class T>
ZebiHaarClassifier* build(const HaarStage<T>& s) {
  ZebiHaarClassifier* state = nullptr;
  const auto with = [&](auto initAlloc) {
    EXPECT_EQ(initAlloc(&state, s.features.data(), s.weights.data(), s.thresholds.data(), s.values1.data(),
                        s.values2.data(), s.counts.data(), static_cast<int>(s.counts.size())),
              zebStsOk);
  };
  if constexpr (std::is_integral_v<T>) {
    with(zebiHaarClassifierInitAlloc_32s);
  } else {
    with(zebiHaarClassifierInitAlloc_32f);
  }
  return state;
}

// One classifier of two squares. Its window is 4 x 4 pixels.
template <class T>
HaarStage<T> twoSquares() {
  HaarStage<T> stage;
  stage.features = {{0, 0, 2, 2}, {1, 1, 3, 3}};
  stage.weights = {-1, 2}, stage.thresholds = {1}, stage.values1 = {0}, stage.values2 = {1}, stage.counts = {2};
  return stage;
}

// Reads only what live pixels need: every table ends at the last element that the one live pixel reads.
TEST(Haar, DeadPixelsAreNotRead) {
  ZebiHaarClassifier* state = build(twoSquares<Zeb32f>());
  for (int live = 0; live < 24; ++live) {
    // A region of 32 x 1 pixels, whose live ones end at column live.
    Image<Zeb32s> table(32 + 4, 5, 1, {});
    table.set(Plane<Zeb32s>(36, 5));
    // The rows stand so that the table's last row ends right before the page behind.
    const Zeb32s* first = table.pixels(31 - live, 0);
    Image<Zeb32f> norm(live + 1, 1, 1, {});
    norm.set(Plane<Zeb32f>(live + 1, 1, 1, 1.0f));
    Plane<Zeb8u> m(32, 1);
    for (int x = live > 3 ? live - 3 : 0; x <= live; ++x) m.at(x, 0) = 1;
    Image<Zeb8u> mask(m, {});
    int positive = 0;
    ASSERT_EQ(zebiApplyHaarClassifier_32s32f_C1R(first, table.step(), norm.pixels(), 4 * 32, mask.pixels(), mask.step(),
                                                 {32, 1}, &positive, 0.0f, state),
              zebStsOk);
    EXPECT_EQ(positive, std::min(live + 1, 4));
  }
  zebiHaarClassifierFree_32f(state);
}

// The words of a state: they are a contract.
TEST(Haar, StateLayout) {
  auto& core = zebcore();
  core.reset();
  HaarStage<Zeb32f> stage;
  stage.counts = {3, 2, 1, 2};
  stage.features = {{5, 6, 1, 2}, {3, 9, 2, 2}, {4, 4, 1, 1}, {7, 2, 3, 4},
                    {8, 8, 1, 1}, {9, 9, 2, 2}, {6, 7, 1, 3}, {2, 8, 5, 5}};
  stage.weights = {-1.5f, 1, 1, -1, 2, -1, -1.25f, 3};
  stage.thresholds = {10, 20, 30, 40}, stage.values1 = {1, 2, 3, 4}, stage.values2 = {5, 6, 7, 8};
  ZebiHaarClassifier* state = build(stage);
  const Record head = haarStage(state);
  EXPECT_EQ(core.lastLength, static_cast<int64_t>(head.bytes() + haarClassifier(nullptr).bytes() * 4 + 36 * 8));
  const auto word = [](const void* p, int i) {
    int v;
    memcpy(&v, static_cast<const char*>(p) + 4 * i, 4);
    return v;
  };
  EXPECT_EQ(head.word(0), 4);
  EXPECT_EQ(head.word(1), 8);
  EXPECT_EQ(head.word(3), 2);  // least x
  EXPECT_EQ(head.word(4), 2);  // least y
  EXPECT_EQ(head.word(7), 0);  // tilt
  EXPECT_EQ(head.word(8), 2);  // pairs
  EXPECT_EQ(head.word(9), 3);  // pairs and triples
  EXPECT_EQ(head.word(10), 8);
  EXPECT_EQ(head.word(11), 1);  // all first weights truncate to -1
  const void* next = head.pointer<void>(2);
  const int order[] = {1, 3, 0, 2};
  for (int i = 0; i < 4; ++i) {
    const int from = order[i];
    const Record record = haarClassifier(next);
    next = record.end();
    EXPECT_EQ(record.word(0), stage.counts[from]);
    EXPECT_EQ(record.word<Zeb32f>(2), stage.thresholds[from]);
    EXPECT_EQ(record.word(5), from << 8);
    const char* rectangle = record.pointer<char>(1);
    const ZebiRect& f = stage.features[stage.firstFeature(from)];
    const int corners[8] = {f.x + f.width, f.y + f.height, f.x, f.y + f.height, f.x + f.width, f.y, f.x, f.y};
    for (int k = 0; k < 8; ++k) EXPECT_EQ(word(rectangle, k), corners[k]);
    Zeb32f weight;
    memcpy(&weight, rectangle + 32, 4);
    EXPECT_EQ(weight, stage.weights[stage.firstFeature(from)]);
  }
  ZebiSize size = {};
  ASSERT_EQ(zebiGetHaarClassifierSize_32f(state, &size), zebStsOk);
  EXPECT_EQ(size.width, 11);
  EXPECT_EQ(size.height, 13);
  zebiHaarClassifierFree_32f(state);

  stage.weights[6] = -2.0f;  // no longer truncates to -1
  state = build(stage);
  EXPECT_EQ(haarStage(state).word(11), 0);
  zebiHaarClassifierFree_32f(state);
  EXPECT_EQ(core.liveBlocks, 0);
}

// A stage without classifiers has nothing to tilt; one that was created tilted, be it empty, is not tilted again.
TEST(Haar, WhatIsNotTilted) {
  const ZebiRect feature = {1, 0, 1, 1};
  const Zeb32f one = 1;
  const int count = 1;
  const Zeb8u mark = 1;
  ZebiHaarClassifier* state = nullptr;
  ASSERT_EQ(zebiHaarClassifierInitAlloc_32f(&state, &feature, &one, &one, &one, &one, &count, 0), zebStsOk);
  EXPECT_EQ(zebiTiltHaarFeatures_32f(&mark, 1, state), zebStsOk);
  zebiHaarClassifierFree_32f(state);
  for (int length : {0, 1}) {
    ASSERT_EQ(zebiTiltedHaarClassifierInitAlloc_32f(&state, &feature, &one, &one, &one, &one, &count, length),
              zebStsOk);
    EXPECT_EQ(zebiTiltHaarFeatures_32f(&mark, 1, state), zebStsErrBadArgument);
    zebiHaarClassifierFree_32f(state);
  }
  // Its index words are those of an upright stage, and the Mixed calls read the tilted table all the same.
  const ZebiRect features[] = {{1, 0, 1, 1}, {1, 0, 1, 1}};
  const Zeb32f ones[] = {1, 1}, half[] = {0.5f, 0.5f}, values[] = {2, 2}, none[] = {0, 0};
  const int counts[] = {1, 1};
  ASSERT_EQ(zebiTiltedHaarClassifierInitAlloc_32f(&state, features, ones, half, none, values, counts, 2), zebStsOk);
  const Record first = haarClassifier(haarStage(state).end());
  EXPECT_EQ(first.word(5), 0);
  EXPECT_EQ(haarClassifier(first.end()).word(5), 1 << 8);
  const Image<Zeb32f> zeros(Plane<Zeb32f>(4, 4), {});
  Plane<Zeb32f> top(4, 4);
  top.at(1, 0) = 1;  // the top corner of both rectangles
  const Image<Zeb32f> tilted(top, {}), norm(Plane<Zeb32f>(1, 1, 1, 1), {});
  const Image<Zeb8u> mask(Plane<Zeb8u>(1, 1, 1, 1), {});
  int positive = -1;
  EXPECT_EQ(
      zebiApplyMixedHaarClassifier_32f_C1R(zeros.pixels(), zeros.step(), tilted.pixels(), tilted.step(), norm.pixels(),
                                           norm.step(), mask.pixels(), mask.step(), {1, 1}, &positive, 4.0f, state),
      zebStsOk);
  EXPECT_EQ(positive, 1);
  zebiHaarClassifierFree_32f(state);
}

}  // namespace
