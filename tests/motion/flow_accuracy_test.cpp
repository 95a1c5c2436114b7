// How near the tracker comes to motions by fractions of a pixel, on pictures with the spectrum of photographs. Both
// pictures of a pair are computed, so that nothing but the tracker interpolates.
#include <algorithm>
#include <cmath>
#include <limits>
#include <type_traits>
#include <vector>

#include "layer.h"
#include "support/compare.h"
#include "support/random.h"
#include "tracker.h"

namespace {

using namespace test;

struct Point {
  double x, y;
};

// Waves of random directions and phases, wavelengths of 8 pixels and more, amplitudes in proportion.
class Scene {
 public:
  Scene(Random& random, float longest) {
    constexpr float turn = 6.2831853f;
    for (int i = 0; i < 50; ++i) {
      const double length = 8 * std::pow(longest / 8, random.real(0, 1)), frequency = turn / length;
      const double direction = random.real(0, turn);
      waves_.push_back(
          {frequency * std::cos(direction), frequency * std::sin(direction), random.real(0, turn), length});
      power_ += length * length / 2;
    }
  }
  // 0 to 1; the deviation of the levels is a sixth.
  double at(Point p) const {
    double sum = 0;
    for (const Wave& w : waves_) sum += w.amplitude * std::sin(w.x * p.x + w.y * p.y + w.phase);
    return std::clamp(0.5 + sum / (6 * std::sqrt(power_)), 0.0, 1.0);
  }

 private:
  struct Wave {
    double x, y, phase, amplitude;
  };
  std::vector<Wave> waves_;
  double power_ = 0;
};

constexpr ZebiSize size = {220, 200};
constexpr Point middle = {(size.width - 1) / 2.0, (size.height - 1) / 2.0};
constexpr int levels = 3;

// Enlarged about the middle, then shifted.
struct Motion {
  Point shift = {0, 0};
  double zoom = 1;
  Point moved(Point p) const {
    return {middle.x + zoom * (p.x - middle.x) + shift.x, middle.y + zoom * (p.y - middle.y) + shift.y};
  }
  Point origin(Point p) const {
    return {middle.x + (p.x - shift.x - middle.x) / zoom, middle.y + (p.y - shift.y - middle.y) / zoom};
  }
};

// The scene as the motion leaves it, on as many levels of rate 2 as there are.
template <class T>
class Pictures {
 public:
  template <class K>
  Pictures(const Scene& scene, const Motion& motion, const Layer<T, K, ZebiPyramidDownState>& layer) {
    const K binomial[] = {1, 4, 6, 4, 1};
    const double white = std::is_floating_point_v<T> ? 1.0 : static_cast<double>(std::numeric_limits<T>::max());
    const double half = std::is_floating_point_v<T> ? 0 : 0.5;
    ZebiPyramidDownState* state = nullptr;
    EXPECT_EQ(zebiPyramidInitAlloc(&record_, levels - 1, size, 2), zebStsOk);
    EXPECT_EQ(layer.make(&state, size, 2, binomial, 5, zebInterLinear), zebStsOk);
    for (int l = 0; l < levels; ++l) {
      const ZebiSize roi = record_->pRoi[l];
      images_[l].resize(static_cast<size_t>(roi.width) * static_cast<size_t>(roi.height));
      record_->pImage[l] = reinterpret_cast<Zeb8u*>(images_[l].data());
      record_->pStep[l] = roi.width * static_cast<int>(sizeof(T));
      if (l > 0)
        EXPECT_EQ(layer.call(images_[l - 1].data(), record_->pStep[l - 1], record_->pRoi[l - 1], images_[l].data(),
                             record_->pStep[l], roi, state),
                  zebStsOk);
      else
        for (int i = 0; i < roi.width * roi.height; ++i) {
          const Point p = {static_cast<double>(i % roi.width), static_cast<double>(i / roi.width)};
          images_[0][static_cast<size_t>(i)] = static_cast<T>(white * scene.at(motion.origin(p)) + half);
        }
    }
    layer.release(state);
  }
  Pictures(const Pictures&) = delete;
  ~Pictures() { zebiPyramidFree(record_); }
  ZebiPyramid* record() const { return record_; }

 private:
  std::vector<T> images_[levels];
  ZebiPyramid* record_ = nullptr;
};

// Errors of many points, x and y together, and how much of the motion was found. In a window whose surroundings hardly
// change along one direction a point may stray; such points are only counted.
struct Errors {
  int strayed = 0;
  Point mean = {0, 0};
  double rms = 0, portion = 0;
};
struct Search {
  double near;  // a point farther from the truth than this has strayed
  int window, maxLevel, iterations;
  bool guessed;  // starts at the truth, else where the point was
};

template <class T>
Errors errorsOf(const Tracker<T>& tracker, const Pictures<T>& first, const Pictures<T>& second, const Motion& motion,
                Search search, Random& random) {
  constexpr int n = 1500, margin = 34;
  std::vector<ZebiPoint_32f> prev(n), next;
  for (auto& p : prev)
    p = {random.real(margin, static_cast<float>(size.width - 1 - margin)),
         random.real(margin, static_cast<float>(size.height - 1 - margin))};
  next = prev;
  if (search.guessed)
    for (auto& p : next) {
      const Point truth = motion.moved({p.x, p.y});
      p = {static_cast<float>(truth.x), static_cast<float>(truth.y)};
    }
  std::vector<Zeb8s> status(n, 9);
  std::vector<Zeb32f> difference(n);
  ZebiOptFlowPyrLKState* state = nullptr;
  EXPECT_EQ(tracker.make(&state, size, search.window, 0), zebStsOk);
  EXPECT_EQ(tracker.track(first.record(), second.record(), prev.data(), next.data(), status.data(), difference.data(),
                          n, search.window, search.maxLevel, search.iterations, 1e-3f, state),
            zebStsOk);
  EXPECT_EQ(tracker.release(state), zebStsOk);
  Errors e;
  double found = 0, moved = 0;
  for (size_t i = 0; i < n; ++i) {
    const Point from = {prev[i].x, prev[i].y}, truth = motion.moved(from);
    EXPECT_EQ(status[i], 0);
    const Point error = {next[i].x - truth.x, next[i].y - truth.y};
    if (!(std::hypot(error.x, error.y) < search.near)) {
      ++e.strayed;
      continue;
    }
    e.mean = {e.mean.x + error.x, e.mean.y + error.y};
    e.rms += error.x * error.x + error.y * error.y;
    const Point way = {truth.x - from.x, truth.y - from.y};
    found += (next[i].x - from.x) * way.x + (next[i].y - from.y) * way.y;
    moved += way.x * way.x + way.y * way.y;
  }
  EXPECT_LT(e.strayed, n / 50) << search.window;
  const double kept = n - e.strayed;
  e.mean = {e.mean.x / kept, e.mean.y / kept};
  e.rms = std::sqrt(e.rms / (2 * kept));
  e.portion = found / moved;
  return e;
}

// Bounds from forty random scenes, about twice what the worst of them needs. Bytes carry the error of their rounding.
template <class T, class K>
void checkAccuracy(const Tracker<T>& tracker, const Layer<T, K, ZebiPyramidDownState>& layer) {
  Random random;
  const Scene scene(random, 250), fine(random, 20);
  const Pictures<T> still(scene, {}, layer), fineStill(fine, {}, layer);
  const bool coarse = sizeof(T) == 1;
  for (const Point shift : {Point{0.25, -0.5}, {0.5, 0.875}, {-7.3, 4.6}}) {
    const Motion motion = {shift, 1};
    const Pictures<T> moved(scene, motion, layer);
    for (int window : {10, 15, 21}) {
      const Errors e = errorsOf(tracker, still, moved, motion, {0.3, window, levels - 1, 20, false}, random);
      EXPECT_LT(e.rms, (coarse ? 1.0 : 0.3) / window) << layer.name << " " << shift.x << " " << window;
      EXPECT_LT(std::max(std::fabs(e.mean.x), std::fabs(e.mean.y)), coarse ? 0.015 : 0.004)
          << layer.name << " " << window;
    }
    // The first step alone goes as far as the gradients are right.
    if (std::fabs(shift.x) < 1) {
      const Errors e = errorsOf(tracker, still, moved, motion, {0.3, 15, 0, 1, false}, random);
      EXPECT_NEAR(e.portion, 1, 0.05) << layer.name << " " << shift.x;
    }
  }
  // A window that stood half a pixel beside its point would be moved by half of the growth, 0.05, on average.
  const Motion growth = {{0.3, -0.2}, 1.1};
  const Pictures<T> grown(fine, growth, layer);
  for (int window : {6, 7}) {
    const Errors e = errorsOf(tracker, fineStill, grown, growth, {1, window, 0, 20, true}, random);
    EXPECT_LT(std::max(std::fabs(e.mean.x), std::fabs(e.mean.y)), 0.025) << layer.name << " " << window;
  }
}

TEST(OpticalFlow, IsAccurateToFractionsOfAPixel) {
  checkAccuracy(bytes, LAYER(Down, 8u_C1R, Zeb8u, Zeb16s, 1));
  checkAccuracy(words, LAYER(Down, 16u_C1R, Zeb16u, Zeb16s, 1));
  checkAccuracy(floats, LAYER(Down, 32f_C1R, Zeb32f, Zeb32f, 1));
}

}  // namespace
