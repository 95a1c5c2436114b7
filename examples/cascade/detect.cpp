// Running a cascade over a picture at several scales.
#include <algorithm>
#include <chrono>
#include <cmath>

#include "cascade.h"
#include "status.h"

namespace cascade {
namespace {

using support::requireOk;

// Overlapping windows that make a detection.
constexpr int agreeing = 4;

// Whether two boxes share more than 30 % of the smaller one.
bool overlap(const ZebiRect& a, const ZebiRect& b) {
  const int w = std::min(a.x + a.width, b.x + b.width) - std::max(a.x, b.x);
  const int h = std::min(a.y + a.height, b.y + b.height) - std::max(a.y, b.y);
  return w > 0 && h > 0 && 10 * w * h > 3 * std::min(a.width * a.height, b.width * b.height);
}

// Merges windows that overlap into their mean.
std::vector<Detection> grouped(const std::vector<ZebiRect>& windows) {
  struct Group {
    ZebiRect sum;
    int count;
    ZebiRect mean() const { return {sum.x / count, sum.y / count, sum.width / count, sum.height / count}; }
  };
  std::vector<Group> groups;
  for (const ZebiRect& w : windows) {
    auto g = std::find_if(groups.begin(), groups.end(), [&](const Group& a) { return overlap(a.mean(), w); });
    if (g == groups.end()) {
      groups.push_back({w, 1});
    } else {
      g->sum = {g->sum.x + w.x, g->sum.y + w.y, g->sum.width + w.width, g->sum.height + w.height};
      ++g->count;
    }
  }
  std::vector<Detection> found;
  for (const Group& g : groups) found.push_back({g.mean(), g.count});
  return found;
}

}  // namespace

std::vector<Placed> place(Picture& gray) {
  const float side = static_cast<float>(std::min(gray.width, gray.height));
  const float w = static_cast<float>(gray.width), h = static_cast<float>(gray.height);
  std::vector<Placed> placed;
  for (const Placed& p : {Placed{0.08f * w, 0.1f * h, 0.14f * side},
                          {0.7f * w, 0.08f * h, 0.2f * side},
                          {0.12f * w, 0.75f * h, 0.09f * side},
                          {0.72f * w, 0.7f * h, 0.06f * side}})
    if (p.side >= window) placed.push_back(p);
  for (const Placed& p : placed) drawObject(gray, p.x, p.y, p.side, 0.8f);
  return placed;
}

int objectOf(const Detection& detection, const std::vector<Placed>& placed) {
  const ZebiRect& box = detection.box;
  for (size_t i = 0; i < placed.size(); ++i) {
    const Placed& p = placed[i];
    const float dx = box.x + box.width / 2.0f - (p.x + p.side / 2), dy = box.y + box.height / 2.0f - (p.y + p.side / 2);
    if (std::hypot(dx, dy) < 0.3f * p.side && std::fabs(box.width - p.side) < 0.4f * p.side) return static_cast<int>(i);
  }
  return -1;
}

Detector::Detector(const std::vector<Stage>& stages) {
  for (const Stage& s : stages) {
    ZebiHaarClassifier* state = nullptr;
    requireOk(zebiHaarClassifierInitAlloc_32f(&state, s.features.data(), s.weights.data(), s.thresholds.data(),
                                              s.values1.data(), s.values2.data(), s.counts.data(),
                                              static_cast<int>(s.counts.size())));
    states_.emplace_back(state);
    thresholds_.push_back(s.threshold);
  }
}

std::vector<Zeb8u> Detector::passing(const Picture& gray, ZebiSize& positions, std::vector<long long>& left) const {
  positions = {gray.width - window + 1, gray.height - window + 1};
  const int columns = gray.width + 1;
  std::vector<Zeb32s> sums(static_cast<size_t>(columns) * (gray.height + 1));
  std::vector<Zeb64f> squares(sums.size());
  std::vector<Zeb32f> norm(static_cast<size_t>(positions.width) * positions.height);
  std::vector<Zeb8u> mask(norm.size(), 1);
  requireOk(zebiSqrIntegral_8u32s64f_C1R(gray.pixels.data(), gray.step(), sums.data(), 4 * columns, squares.data(),
                                         8 * columns, gray.size(), 0, 0.0));
  requireOk(zebiRectStdDev_32s32f_C1R(sums.data(), 4 * columns, squares.data(), 8 * columns, norm.data(),
                                      4 * positions.width, positions, {0, 0, window, window}));
  // Flat windows hold nothing to find.
  for (size_t i = 0; i < norm.size(); ++i)
    if (norm[i] < 8) mask[i] = 0;
  left[0] += static_cast<long long>(mask.size());
  for (size_t i = 0; i < states_.size(); ++i) {
    int positive = 0;
    requireOk(zebiApplyHaarClassifier_32s32f_C1R(sums.data(), 4 * columns, norm.data(), 4 * positions.width,
                                                 mask.data(), positions.width, positions, &positive, thresholds_[i],
                                                 states_[i].get()));
    left[i + 1] += positive;
  }
  return mask;
}

Search Detector::find(const Picture& gray, float factor) const {
  Search search;
  search.left.assign(states_.size() + 1, 0);
  std::vector<ZebiRect> windows;
  for (float scale = 1; std::min(gray.width, gray.height) / scale >= window; scale *= factor) {
    const Picture level =
        support::scaled(gray, static_cast<int>(gray.width / scale), static_cast<int>(gray.height / scale));
    if (std::min(level.width, level.height) < window) break;
    ZebiSize positions;
    const auto start = std::chrono::steady_clock::now();
    const auto mask = passing(level, positions, search.left);
    search.milliseconds += std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
    const int side = static_cast<int>(std::lround(window * scale));
    for (int i = 0; i < positions.width * positions.height; ++i)
      if (mask[i])
        windows.push_back(
            {static_cast<int>(i % positions.width * scale), static_cast<int>(i / positions.width * scale), side, side});
  }
  for (const Detection& d : grouped(windows))
    if (d.windows >= agreeing) search.detections.push_back(d);
  return search;
}

}  // namespace cascade
