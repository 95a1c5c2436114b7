#include "track.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <memory>

#include "status.h"

namespace track {
namespace {

using support::Plane;
using support::requireOk;

constexpr int window = 15;  // side of the windows that are compared, in pixels
constexpr int iterations = 20;
constexpr float enough = 0.01f;  // a step below this many pixels ends the search on a level

struct Turn {
  float x, y;  // zoom times cosine and sine
  Turn(float degrees, float zoom)
      : x(zoom * std::cos(degrees * 0.017453293f)), y(zoom * std::sin(degrees * 0.017453293f)) {}
};

ZebiPoint_32f middle(ZebiSize size) {
  return {(size.width - 1) / 2.0f, (size.height - 1) / 2.0f};
}

// The smaller eigenvalue of the structure tensor, over the window that is compared.
Plane cornerResponse(const Picture& gray) {
  Plane response(gray.size());
  int bytes = 0;
  requireOk(zebiMinEigenValGetBufferSize_8u32f_C1R(gray.size(), zebFilterScharr, zebMskSize3x3, window, &bytes));
  std::vector<Zeb8u> scratch(bytes);
  requireOk(zebiMinEigenVal_8u32f_C1R(gray.pixels.data(), gray.step(), response.data(), response.step(), gray.size(),
                                      zebFilterScharr, zebMskSize3x3, window, zebBorderRepl, 0, scratch.data()));
  return response;
}

struct Release {
  void operator()(ZebiPyramidDownState* state) const { zebiPyramidLayerDownFree_8u_C1R(state); }
  void operator()(ZebiOptFlowPyrLKState* state) const { zebiOpticalFlowPyrLKFree_8u_C1R(state); }
};

}  // namespace

Motion Motion::times(int count) const {
  const float n = static_cast<float>(count);
  return {n * shiftX, n * shiftY, n * degrees, std::pow(zoom, n)};
}

ZebiPoint_32f Motion::moved(ZebiPoint_32f point, ZebiSize size) const {
  const Turn turn(degrees, zoom);
  const ZebiPoint_32f m = middle(size);
  const float x = point.x - m.x, y = point.y - m.y;
  return {m.x + turn.x * x - turn.y * y + shiftX, m.y + turn.y * x + turn.x * y + shiftY};
}

ZebiPoint_32f Motion::origin(ZebiPoint_32f point, ZebiSize size) const {
  const Turn back(-degrees, 1 / zoom);
  const ZebiPoint_32f m = middle(size);
  const float x = point.x - shiftX - m.x, y = point.y - shiftY - m.y;
  return {m.x + back.x * x - back.y * y, m.y + back.y * x + back.x * y};
}

Picture moved(const Picture& gray, const Motion& motion) {
  Picture out(gray.width, gray.height, 1);
  for (int y = 0; y < out.height; ++y)
    for (int x = 0; x < out.width; ++x) {
      const ZebiPoint_32f from = motion.origin({static_cast<float>(x), static_cast<float>(y)}, gray.size());
      *out.at(x, y) = support::level(support::sample(gray, from.x, from.y));
    }
  return out;
}

std::vector<ZebiPoint_32f> goodPoints(const Picture& gray, int most, float apart) {
  const Plane response = cornerResponse(gray);
  const auto strength = [&](const ZebiPoint& p) {
    return response.pixels[static_cast<size_t>(gray.width) * p.y + p.x];
  };
  int bytes = 0, count = 0;
  requireOk(zebiFindPeaks3x3GetBufferSize_32f_C1R(gray.width, &bytes));
  std::vector<Zeb8u> scratch(bytes);
  std::vector<ZebiPoint> peaks(gray.pixels.size());
  const float weakest = 0.005f * *std::max_element(response.pixels.begin(), response.pixels.end());
  const int border = std::max(1, std::min({window / 2, gray.width / 2, gray.height / 2}));
  requireOk(zebiFindPeaks3x3_32f_C1R(response.data(), response.step(), gray.size(), weakest, peaks.data(),
                                     static_cast<int>(peaks.size()), &count, zebiNormInf, border, scratch.data()));
  peaks.resize(count);
  std::stable_sort(peaks.begin(), peaks.end(),
                   [&](const ZebiPoint& a, const ZebiPoint& b) { return strength(a) > strength(b); });
  std::vector<ZebiPoint_32f> points;
  for (const ZebiPoint& peak : peaks) {
    if (static_cast<int>(points.size()) >= most) break;
    const ZebiPoint_32f p = {static_cast<float>(peak.x), static_cast<float>(peak.y)};
    const auto near = [&](const ZebiPoint_32f& q) { return std::hypot(p.x - q.x, p.y - q.y) < apart; };
    if (std::none_of(points.begin(), points.end(), near)) points.push_back(p);
  }
  return points;
}

Pyramid::Pyramid(const Picture& gray, int levels) {
  constexpr float rate = 2;
  constexpr Zeb16s binomial[] = {1, 4, 6, 4, 1};
  ZebiPyramidDownState* state = nullptr;
  requireOk(zebiPyramidLayerDownInitAlloc_8u_C1R(&state, gray.size(), rate, binomial, 5, zebInterLinear));
  const std::unique_ptr<ZebiPyramidDownState, Release> layer(state);
  requireOk(zebiPyramidInitAlloc(&record_, levels, gray.size(), rate));
  images_.push_back(gray);
  for (int i = 1; i <= record_->level; ++i) {
    const Picture& above = images_.back();
    Picture below(record_->pRoi[i].width, record_->pRoi[i].height, 1);
    requireOk(zebiPyramidLayerDown_8u_C1R(above.pixels.data(), above.step(), above.size(), below.pixels.data(),
                                          below.step(), below.size(), state));
    images_.push_back(std::move(below));
  }
  for (size_t i = 0; i < images_.size(); ++i) {
    record_->pImage[i] = images_[i].pixels.data();
    record_->pStep[i] = images_[i].step();
  }
}

std::vector<Place> follow(const Pyramid& from, const Pyramid& to, const std::vector<ZebiPoint_32f>& points,
                          double* milliseconds) {
  std::vector<Place> places;
  if (points.empty()) return places;
  const int count = static_cast<int>(points.size()), levels = std::min(from.record()->level, to.record()->level);
  const ZebiSize size = from.record()->pRoi[0];
  ZebiOptFlowPyrLKState* state = nullptr;
  requireOk(zebiOpticalFlowPyrLKInitAlloc_8u_C1R(&state, size, window, 0));
  const std::unique_ptr<ZebiOptFlowPyrLKState, Release> tracker(state);
  std::vector<ZebiPoint_32f> there = points, back;
  std::vector<Zeb8s> status(count), statusBack(count);
  std::vector<Zeb32f> difference(count), differenceBack(count);
  const auto start = std::chrono::steady_clock::now();
  requireOk(zebiOpticalFlowPyrLK_8u_C1R(from.record(), to.record(), points.data(), there.data(), status.data(),
                                        difference.data(), count, window, levels, iterations, enough, state));
  back = there;
  requireOk(zebiOpticalFlowPyrLK_8u_C1R(to.record(), from.record(), there.data(), back.data(), statusBack.data(),
                                        differenceBack.data(), count, window, levels, iterations, enough, state));
  if (milliseconds)
    *milliseconds += std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
  for (int i = 0; i < count; ++i) {
    const ZebiPoint_32f p = there[i];
    const bool inside = p.x >= 0 && p.y >= 0 && p.x <= size.width - 1 && p.y <= size.height - 1;
    const bool returned = std::hypot(back[i].x - points[i].x, back[i].y - points[i].y) < 0.5f;
    places.push_back({p, difference[i], inside && returned && status[i] == 0 && statusBack[i] == 0});
  }
  return places;
}

double quantile(std::vector<double> values, double part) {
  if (values.empty()) return 0;
  const size_t k = std::min(values.size() - 1, static_cast<size_t>(part * values.size()));
  std::nth_element(values.begin(), values.begin() + k, values.end());
  return values[k];
}

Accuracy compare(const std::vector<Place>& places, const std::vector<ZebiPoint_32f>& truth, ZebiSize size) {
  constexpr float margin = window / 2;
  Accuracy accuracy;
  std::vector<double> errors;
  for (size_t i = 0; i < places.size(); ++i) {
    const ZebiPoint_32f t = truth[i];
    if (t.x < margin || t.y < margin || t.x > size.width - 1 - margin || t.y > size.height - 1 - margin) continue;
    ++accuracy.visible;
    if (places[i].found)
      errors.push_back(std::hypot(places[i].at.x - t.x, places[i].at.y - t.y));
    else
      ++accuracy.lost;
  }
  accuracy.median = quantile(errors, 0.5);
  accuracy.percentile90 = quantile(errors, 0.9);
  return accuracy;
}

}  // namespace track
