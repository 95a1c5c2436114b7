#include <algorithm>
#include <cmath>
#include <limits>
#include <tuple>
#include <vector>

#include <gtest/gtest.h>

#include "motion/image_pair.h"
#include "tracker.h"

namespace {

using namespace test;

// A smooth texture, 0..1, whose every level can be computed: waves of several directions.
double texture(double x, double y) {
  double s = 0;
  const double waves[][3] = {{0.21, 0.13, 0.4}, {-0.11, 0.25, 1.9}, {0.33, -0.28, 0.7}, {0.05, 0.09, 2.2}};
  for (const auto& w : waves) s += std::sin(w[0] * x + w[1] * y + w[2]);
  return 0.5 + s / 8.2;
}

// Two pyramids of rate 2 of the texture, the second one moved, in guarded images of exact size.
template <class T>
struct Pair : ImagePair<T> {
  Pair(int w, int h, int level, double moveX, double moveY, Random& random) {
    const double top = sizeof(T) == 1 ? 255 : sizeof(T) == 2 ? 60000 : 1;
    this->levels.resize(static_cast<size_t>(level) + 1);
    for (int side : {0, 1}) {
      EXPECT_EQ(zebiPyramidInitAlloc(&this->pyramids[side], std::max(level, 1), {w, h}, 2.0f), zebStsOk);
      for (int l = 0; l <= level; ++l) {
        const ZebiSize size = this->pyramids[side]->pRoi[l];
        const double scale = 1 << l;
        ref::Plane<T> plane(size.width, size.height);
        for (int y = 0; y < size.height; ++y)
          for (int x = 0; x < size.width; ++x)
            plane.at(x, y) = static_cast<T>(top * texture(x * scale - side * moveX, y * scale - side * moveY));
        this->setLevel(side, l, plane, Layout::random<T>(random));
      }
    }
  }
};

// Where one point went: from a guess, between two of a pair's pyramids.
struct Tracked {
  ZebiPoint_32f next;
  Zeb8s status = 9;
  Zeb32f error = 9;

  template <class T>
  Tracked(const Tracker<T>& tracker, ZebiOptFlowPyrLKState* state, ZebiPyramid* first, ZebiPyramid* second,
          ZebiPoint_32f prev, ZebiPoint_32f guess, int window, int level, int rounds, Zeb32f threshold)
      : next(guess) {
    EXPECT_EQ(tracker.track(first, second, &prev, &next, &status, &error, 1, window, level, rounds, threshold, state),
              zebStsOk);
  }
  bool stayedAt(ZebiPoint_32f p) const { return next.x == p.x && next.y == p.y && error == 0; }
};

TEST(OpticalFlow, FindsKnownMotion) {
  Random random;
  Pair<Zeb32f> pair(160, 140, 2, 5.3, -3.6, random);
  ZebiOptFlowPyrLKState* state = nullptr;
  ASSERT_EQ(floats.make(&state, {160, 140}, 15, 1), zebStsOk);
  for (int i = 0; i < 50; ++i) {
    const ZebiPoint_32f prev = {random.real(30, 120), random.real(30, 100)};
    const Tracked moved(floats, state, pair.pyramids[0], pair.pyramids[1], prev, prev, 15, 2, 20, 0.001f);
    EXPECT_EQ(moved.status, 0);
    EXPECT_NEAR(moved.next.x, prev.x + 5.3f, 0.05f);
    EXPECT_NEAR(moved.next.y, prev.y - 3.6f, 0.05f);
    EXPECT_LT(moved.error, 0.01f);
    // The same images: no motion, no error.
    const Tracked same(floats, state, pair.pyramids[0], pair.pyramids[0], prev, prev, 15, 0, 20, 0.001f);
    EXPECT_TRUE(same.status == 0 && same.stayedAt(prev));
  }
  EXPECT_EQ(floats.release(state), zebStsOk);
}

TEST(OpticalFlow, LosesWhatCannotBeTrackedAndNeverFaults) {
  Random random;
  Pair<Zeb32f> pair(50, 40, 2, 1, 1, random);
  for (int l = 0; l <= 2; ++l) {  // values that are no numbers here and there in the second image
    pair.images[static_cast<size_t>(3 + l)]->pixels()[7] = std::numeric_limits<float>::quiet_NaN();
    pair.images[static_cast<size_t>(3 + l)]->pixels()[9] = std::numeric_limits<float>::infinity();
  }
  const float inf = std::numeric_limits<float>::infinity(), nan = std::numeric_limits<float>::quiet_NaN();
  const float hostile[] = {nan, inf, -inf, 1e30f, -1e30f, 2147483648.0f, -2147483648.0f, 1e-40f, -0.0f, 60, -20, 25, 7};
  for (int window : {1, 11, 101}) {
    ZebiOptFlowPyrLKState* state = nullptr;
    ASSERT_EQ(floats.make(&state, {1, 1}, window, 0), zebStsOk);
    for (float x : hostile)
      for (float y : hostile)
        for (float guess : hostile) {
          const Tracked at(floats, state, pair.pyramids[0], pair.pyramids[1], {x, y}, {guess, y}, window, 2, 5, 0);
          if (!(std::fabs(x) < 1000 && std::fabs(y) < 1000 && std::fabs(guess) < 1000)) {
            EXPECT_EQ(at.status, 2) << x << " " << y << " " << guess;
            EXPECT_EQ(at.error, 0);
          }
        }
    EXPECT_EQ(floats.release(state), zebStsOk);
  }
  // A flat image has no gradients.
  const Image<Zeb8u> flat(ref::Plane<Zeb8u>(50, 40, 1, 77), {});
  for (int l = 0; l <= 2; ++l) pair.pyramids[0]->pImage[l] = flat.pixels(), pair.pyramids[0]->pStep[l] = flat.step();
  ZebiOptFlowPyrLKState* state = nullptr;
  ASSERT_EQ(bytes.make(&state, {64, 64}, 7, 0), zebStsOk);
  const Tracked lost(bytes, state, pair.pyramids[0], pair.pyramids[0], {20, 20}, {21, 22}, 7, 1, 5, 0.1f);
  EXPECT_TRUE(lost.status == 1 && lost.stayedAt({21, 22}));
  EXPECT_EQ(bytes.release(state), zebStsOk);
}

// Windows at whole pixels read nothing between pixels: what lies right of them and below takes no part in the one step
// from a guess a pixel too far to the right.
TEST(OpticalFlow, LeavesOutWhatAWholePositionDoesNotUse) {
  Random random;
  constexpr int window = 9, reach = window / 2;
  for (const ZebiPoint at : {ZebiPoint{30, 25}, ZebiPoint{50, 38}}) {
    Pair<Zeb32f> pair(60, 50, 0, 0, 0, random);
    for (const int side : {0, 1})
      for (int y = 0; y < 50; ++y)
        for (int x = 0; x < 60; ++x)
          // The derivatives of the first image reach a pixel further.
          if (x == at.x + reach + 2 || y == at.y + reach + 2 - side)
            pair.images[static_cast<size_t>(side)]->pixels(x, y)[0] = std::numeric_limits<float>::quiet_NaN();
    ZebiOptFlowPyrLKState* state = nullptr;
    ASSERT_EQ(floats.make(&state, {60, 50}, window, 0), zebStsOk);
    const ZebiPoint_32f prev = {static_cast<Zeb32f>(at.x), static_cast<Zeb32f>(at.y)};
    const Tracked found(floats, state, pair.pyramids[0], pair.pyramids[1], prev, {prev.x + 1, prev.y}, window, 0, 1, 0);
    EXPECT_EQ(found.status, 0);
    EXPECT_NEAR(found.next.x, prev.x, 0.3f);
    EXPECT_NEAR(found.next.y, prev.y, 0.3f);
    EXPECT_EQ(floats.release(state), zebStsOk);
  }
}

// The derivatives are those of the Scharr filters to the bit: where the contrast is next to nothing, what their sums
// round to shows in every step.
TEST(OpticalFlow, TakesTheDerivativesOfTheFilters) {
  Random random;
  constexpr int side = 24, window = 5, reach = window / 2;
  constexpr ZebiSize size = {side, side};
  Pair<Zeb32f> pair(side, side, 0, 0, 0, random);
  const auto pixel = [&](int image, int x, int y) -> Zeb32f& {
    return *pair.images[static_cast<size_t>(image)]->pixels(x, y);
  };
  for (int y = 0; y < side; ++y)
    for (int x = 0; x < side; ++x) {
      pixel(0, x, y) = 120 + random.real(-0.001f, 0.001f);
      pixel(1, x, y) = pixel(0, x, y) + random.real(-0.002f, 0.002f);
    }
  int bytes = 0;
  ASSERT_EQ(zebiFilterScharrHorizGetBufferSize_32f_C1R(size, &bytes), zebStsOk);
  std::vector<Zeb8u> buffer(static_cast<size_t>(bytes));
  std::vector<Zeb32f> slopes[2];
  for (const bool down : {false, true}) {
    slopes[down].resize(side * side);
    const auto filter = down ? zebiFilterScharrVertBorder_32f_C1R : zebiFilterScharrHorizBorder_32f_C1R;
    ASSERT_EQ(filter(pair.images[0]->pixels(), pair.images[0]->step(), slopes[down].data(), side * 4, size,
                     zebBorderRepl, 0, buffer.data()),
              zebStsOk);
  }
  ZebiOptFlowPyrLKState* state = nullptr;
  ASSERT_EQ(floats.make(&state, size, window, 0), zebStsOk);
  for (int py = reach; py < side - reach; ++py)
    for (int px = reach; px < side - reach; ++px) {
      double xx = 0, xy = 0, yy = 0, bx = 0, by = 0;
      for (int y = py - reach; y <= py + reach; ++y)
        for (int x = px - reach; x <= px + reach; ++x) {
          const double difference = static_cast<double>(pixel(0, x, y)) - static_cast<double>(pixel(1, x, y));
          const double dx = static_cast<double>(slopes[0][static_cast<size_t>(y * side + x)]) / 32;
          const double dy = static_cast<double>(slopes[1][static_cast<size_t>(y * side + x)]) / 32;
          xx += dx * dx, xy += dx * dy, yy += dy * dy;
          bx += difference * dx, by += difference * dy;
        }
      const double determinant = xx * yy - xy * xy;
      const auto stepped = [](int from, double step) { return static_cast<Zeb32f>(from + step); };
      const ZebiPoint_32f prev = {stepped(px, 0), stepped(py, 0)};
      const Tracked found(floats, state, pair.pyramids[0], pair.pyramids[1], prev, prev, window, 0, 1, 0);
      ASSERT_EQ(found.status, 0);
      ASSERT_NEAR(found.next.x, stepped(px, (yy * bx - xy * by) / determinant), 1e-4f) << px << " " << py;
      ASSERT_NEAR(found.next.y, stepped(py, (xx * by - xy * bx) / determinant), 1e-4f) << px << " " << py;
    }
  EXPECT_EQ(floats.release(state), zebStsOk);
}

// However badly a direction is told: two equal images differ nowhere, also between their pixels.
TEST(OpticalFlow, StandsStillOnEqualImages) {
  Random random;
  Pair<Zeb8u> pair(128, 128, 0, 0, 0, random);
  for (int y = 0; y < 128; ++y)
    for (int x = 0; x < 128; ++x) pair.images[0]->pixels(x, y)[0] = static_cast<Zeb8u>(x + y / 2);
  ZebiOptFlowPyrLKState* state = nullptr;
  ASSERT_EQ(bytes.make(&state, {128, 128}, 11, 0), zebStsOk);
  for (int i = 0; i < 200; ++i) {
    const ZebiPoint_32f prev = {random.real(20, 100), random.real(20, 100)};
    const Tracked same(bytes, state, pair.pyramids[0], pair.pyramids[0], prev, prev, 11, 0, 20, 0.03f);
    ASSERT_TRUE(same.status != 0 || same.stayedAt(prev)) << prev.x << " " << prev.y;
  }
  EXPECT_EQ(bytes.release(state), zebStsOk);
}

// The first image is xy around the centre, the second a quadratic form. A step then takes the guess, seen from the
// centre, from (x, y) to (p x + q y, r x + p y): with these numbers round a circle or an ellipse, exactly and for ever.
TEST(OpticalFlow, RoundsWithoutEnd) {
  constexpr int side = 31, centre = 15, window = 5;
  struct Turn {
    double p, q, r;
  };
  for (const Turn turn : {Turn{0, -1, 1}, Turn{-0.5, -1.5, 0.5}}) {
    ImagePair<Zeb32f> pair;
    pair.levels.resize(1);
    for (int which : {0, 1}) {
      ASSERT_EQ(zebiPyramidInitAlloc(&pair.pyramids[which], 1, {side, side}, 2.0f), zebStsOk);
      ref::Plane<Zeb32f> plane(side, side);
      for (int y = -centre; y <= centre; ++y)
        for (int x = -centre; x <= centre; ++x)
          plane.at(centre + x, centre + y) =
              static_cast<Zeb32f>(which ? (1 - turn.p) * x * y - (turn.r * x * x + turn.q * y * y) / 2 : x * y);
      pair.setLevel(which, 0, plane, {});
    }
    ZebiOptFlowPyrLKState* state = nullptr;
    ASSERT_EQ(floats.make(&state, {side, side}, window, 0), zebStsOk);
    for (const int steps : {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 1 << 30, (1 << 30) + 1, 0x7FFFFFFF}) {
      double x = 1.5, y = -0.25;
      for (int k = steps % 12; k > 0; --k) {
        const double turned = turn.p * x + turn.q * y;
        y = turn.r * x + turn.p * y, x = turned;
      }
      const Tracked turned(floats, state, pair.pyramids[0], pair.pyramids[1], {centre, centre},
                           {centre + 1.5f, centre - 0.25f}, window, 0, steps, 0);
      EXPECT_EQ(turned.status, 0);
      EXPECT_EQ(static_cast<double>(turned.next.x), centre + x) << steps << " steps";
      EXPECT_EQ(static_cast<double>(turned.next.y), centre + y) << steps << " steps";
    }
    EXPECT_EQ(floats.release(state), zebStsOk);
  }
}

TEST(OpticalFlow, RefusesHopelessSizesAndMissingImages) {
  Random random;
  Pair<Zeb8u> pair(20, 20, 1, 0, 0, random);
  ZebiOptFlowPyrLKState* state = nullptr;
  const ZebiPoint_32f prev = {10, 10};
  ZebiPoint_32f next = {10, 10};
  Zeb8s lost = 0;
  Zeb32f error = 0;
  EXPECT_EQ(bytes.make(&state, {INT32_MAX, INT32_MAX}, 5, 0), zebStsErrMemAlloc);
  EXPECT_EQ(bytes.make(&state, {20, 20}, INT32_MAX, 0), zebStsErrMemAlloc);
  ASSERT_EQ(bytes.make(&state, {20, 20}, 5, 0), zebStsOk);
  const auto track = [&](int level) {
    return bytes.track(pair.pyramids[0], pair.pyramids[1], &prev, &next, &lost, &error, 1, 5, level, 3, 0, state);
  };
  pair.pyramids[0]->pImage[1] = nullptr;
  EXPECT_EQ(track(2), zebStsErrBadArgument);
  EXPECT_EQ(track(1), zebStsErrNullPointer);
  EXPECT_EQ(bytes.release(state), zebStsOk);
}

}  // namespace
