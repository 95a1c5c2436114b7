#include "scene.h"

#include <algorithm>
#include <chrono>
#include <cmath>

#include "status.h"

namespace scene {

using support::requireOk;

namespace {

// The same for the same place and time: noise that can be made again.
unsigned scrambled(unsigned x, unsigned y, unsigned t) {
  unsigned h = x * 0x9E3779B1u ^ y * 0x85EBCA77u ^ t * 0xC2B2AE3Du;
  h = (h ^ h >> 15) * 0x2C1B3C6Du;
  h = (h ^ h >> 12) * 0x297A2D39u;
  return h ^ h >> 15;
}

}  // namespace

// A head and a body, as high as a third of the picture, that cross it once.
bool Sequence::isWalker(int x, int y, int t) const {
  if (t < quiet_) return false;
  const float height = static_cast<float>(base_.height) / 3, wide = static_cast<float>(base_.width);
  const float part = static_cast<float>(t - quiet_) / static_cast<float>(std::max(1, frames_ - 1 - quiet_));
  const float middle = wide * (0.12f + 0.76f * part), floor = 0.9f * static_cast<float>(base_.height);
  const float dx = (static_cast<float>(x) - middle) / height, up = (floor - static_cast<float>(y)) / height;
  const bool head = dx * dx + (up - 0.88f) * (up - 0.88f) < 0.12f * 0.12f;
  const float stride = 0.1f + 0.06f * std::fabs(std::sin(0.8f * static_cast<float>(t)));
  const bool body = up > 0.4f && up < 0.78f && std::fabs(dx) < 0.14f;
  const bool legs = up > 0 && up <= 0.4f && std::fabs(std::fabs(dx) - stride * (0.4f - up) / 0.4f) < 0.055f;
  return head || body || legs;
}

Picture Sequence::walker(int t) const {
  Picture out(base_.width, base_.height, 1);
  for (int y = 0; y < out.height; ++y)
    for (int x = 0; x < out.width; ++x) *out.at(x, y) = isWalker(x, y, t) ? 255 : 0;
  return out;
}

Picture Sequence::frame(int t) const {
  Picture out(base_.width, base_.height, 3);
  const float light = 4 * std::sin(1.7f * static_cast<float>(t));
  // The upper left sixth sways by two pixels, like leaves.
  const int sway = static_cast<int>(std::lround(2 * std::sin(1.1f * static_cast<float>(t))));
  for (int y = 0; y < out.height; ++y)
    for (int x = 0; x < out.width; ++x) {
      const bool leaves = x < out.width / 3 && y < out.height / 2;
      const Zeb8u* const from = base_.at(leaves ? std::clamp(x + sway, 0, out.width - 1) : x, y);
      const bool walker = isWalker(x, y, t);
      for (int c = 0; c < 3; ++c) {
        constexpr float coat[] = {40, 160, 70};
        const unsigned bits =
            scrambled(static_cast<unsigned>(3 * x + c), static_cast<unsigned>(y), static_cast<unsigned>(t));
        const float noise = static_cast<float>(bits % 9) - 4;
        const float value = walker ? coat[c] : static_cast<float>(from[c]) + light;
        out.at(x, y)[c] = support::level(static_cast<double>(value + noise));
      }
    }
  return out;
}

Watcher::Watcher(const Picture& first, int newFrames) : size_(first.size()), left_(newFrames) {
  const ZebiFGHistogramParam histogram = {5, 1, 0.01f, 0.05f};
  const ZebiFGGaussianParam gaussian = {0.005f, 3.5f, 100, 4};
  const ZebiFGMixtureParam mixed = {5, 3, 4, 0.9f, 0.05f, 100, 12, 300};
  ZebiFGHistogramState* h = nullptr;
  requireOk(zebiFGHistogramInitAlloc_8u_C3R(&h, first.pixels.data(), first.step(), size_, &histogram));
  histogram_.reset(h);
  ZebiFGGaussianState* g = nullptr;
  requireOk(zebiFGGaussianInitAlloc_8u_C3R(&g, first.pixels.data(), first.step(), size_, &gaussian));
  gaussian_.reset(g);
  int bytes = 0;
  requireOk(zebiFGMixtureGetBufferSize_8u_C3R(size_, mixed.maxComponents, &bytes));
  memory_.resize(static_cast<size_t>(bytes));
  requireOk(zebiFGMixtureInit_8u_C3R(first.pixels.data(), first.step(), size_, &mixed, mixture()));
}

Maps Watcher::look(const Picture& frame) {
  const Zeb8u* const src = frame.pixels.data();
  const int step = frame.step(), width = size_.width;
  const Picture empty(size_.width, size_.height, 1);
  Maps maps = {empty, empty, empty};
  Picture background = empty;
  const bool everything = left_ > 0;
  left_ -= everything;
  const auto start = std::chrono::steady_clock::now();
  requireOk(zebiFGHistogramForeground_8u_C3R(src, step, maps.histogram.pixels.data(), width, size_, histogram_.get()));
  requireOk(zebiAbsDiffC_8u_C1R(maps.histogram.pixels.data(), width, background.pixels.data(), width, size_, 255));
  requireOk(zebiFGHistogramUpdate_8u_C3R(src, step, everything ? nullptr : background.pixels.data(), width, size_,
                                         histogram_.get()));
  requireOk(zebiFGGaussianForeground_8u_C3R(src, step, maps.gaussian.pixels.data(), width, size_, gaussian_.get()));
  requireOk(zebiAbsDiffC_8u_C1R(maps.gaussian.pixels.data(), width, background.pixels.data(), width, size_, 255));
  requireOk(zebiFGGaussianUpdate_8u_C3R(src, step, everything ? nullptr : background.pixels.data(), width, size_,
                                        gaussian_.get()));
  requireOk(zebiFGMixtureForeground_8u_C3R(src, step, maps.mixture.pixels.data(), width, size_, 0.005f, mixture()));
  milliseconds_ = std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
  return maps;
}

Picture Watcher::background() const {
  Picture out(size_.width, size_.height, 3);
  requireOk(zebiFGMixtureBackground_8u_C3R(out.pixels.data(), out.step(), size_, mixture()));
  return out;
}

Score score(const Picture& map, const Picture& truth) {
  double hits = 0, alarms = 0, walker = 0;
  for (size_t i = 0; i < map.pixels.size(); ++i) {
    walker += truth.pixels[i] != 0;
    (truth.pixels[i] != 0 ? hits : alarms) += map.pixels[i] != 0;
  }
  const double rest = static_cast<double>(map.pixels.size()) - walker;
  return {walker > 0 ? hits / walker : 0, rest > 0 ? alarms / rest : 0};
}

}  // namespace scene
