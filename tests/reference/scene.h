// Models of a scene, one pixel at a time.
#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>

#include "reference/plane.h"

namespace ref {

using Pixel = std::array<int, 3>;  // the first of them where there is one channel

// The share of a frame: that of an average at first. frames counts the calls that learn, this one included.
inline float sceneRate(float learningRate, int frames) {
  return std::max(learningRate, 1.0f / static_cast<float>(std::min(frames, 65535) + 1));
}

struct HistogramPixel {
  using Param = ZebiFGHistogramParam;
  struct Entry {
    int key = 0xFFFF, weight = 0;
  };
  std::array<Entry, 8> entries;

  static int level(const Param& p, int value) { return value >> (8 - p.levelBits); }
  static int key(const Param& p, const Pixel& x, int channels) {
    int joined = 0;
    for (int c = 0; c < channels; ++c) joined |= level(p, x[c]) << (c * p.levelBits);
    return joined;
  }

  HistogramPixel(const Param& p, const Pixel& x, int channels) { entries[0] = {key(p, x, channels), 65535}; }

  bool foreground(const Param& p, const Pixel& x, int channels) const {
    long sum = 0;
    for (const Entry& e : entries) {
      bool near = true;
      for (int c = 0; c < channels; ++c) {
        const int other = (e.key >> (c * p.levelBits)) & ((1 << p.levelBits) - 1);
        near = near && std::abs(other - level(p, x[c])) <= p.reach;
      }
      if (near) sum += e.weight;
    }
    return sum < std::lrint(65536.0 * static_cast<double>(p.threshold));
  }
  void learn(const Param& p, const Pixel& x, int channels, int frames) {
    const int rate = std::max(static_cast<int>(std::lrint(65536.0 * static_cast<double>(p.learningRate))),
                              65536 / (std::min(frames, 65535) + 1));
    for (Entry& e : entries) e.weight = static_cast<int>(static_cast<int64_t>(e.weight) * (65536 - rate) >> 16);
    const int own = key(p, x, channels);
    for (Entry& e : entries)
      if (e.key == own) {
        e.weight += rate;
        return;
      }
    *std::min_element(entries.begin(), entries.end(), [](Entry a, Entry b) { return a.weight < b.weight; }) = {own,
                                                                                                               rate};
  }
};

struct GaussianPixel {
  using Param = ZebiFGGaussianParam;
  std::array<float, 3> mean{}, variance{};

  GaussianPixel(const Param& p, const Pixel& x, int channels) {
    for (int c = 0; c < channels; ++c) mean[c] = static_cast<float>(x[c]), variance[c] = p.initVariance;
  }
  bool foreground(const Param& p, const Pixel& x, int channels) const {
    bool any = false;
    for (int c = 0; c < channels; ++c) {
      const float d = static_cast<float>(x[c]) - mean[c], square = d * d, k2 = p.threshold * p.threshold;
      any = any || square > k2 * variance[c];
    }
    return any;
  }
  void learn(const Param& p, const Pixel& x, int channels, int frames) {
    const float alpha = sceneRate(p.learningRate, frames);
    for (int c = 0; c < channels; ++c) {
      const float d = static_cast<float>(x[c]) - mean[c];
      mean[c] = std::fma(alpha, d, mean[c]);
      const float e = std::fma(d, d, -variance[c]);
      variance[c] = std::max(std::fma(alpha, e, variance[c]), p.minVariance);
    }
  }
};

struct MixturePixel {
  using Param = ZebiFGMixtureParam;
  struct Component {
    float weight = 0, variance = 0;
    std::array<float, 3> mean{};
  };
  std::vector<Component> components;  // those that are present

  MixturePixel(const Param& p, const Pixel& x) : components{fresh(1, p, x)} {}

  static Component fresh(float weight, const Param& p, const Pixel& x) {
    return {weight, p.initVariance, {static_cast<float>(x[0]), static_cast<float>(x[1]), static_cast<float>(x[2])}};
  }
  static std::array<float, 3> difference(const Component& k, const Pixel& x) {
    return {static_cast<float>(x[0]) - k.mean[0], static_cast<float>(x[1]) - k.mean[1],
            static_cast<float>(x[2]) - k.mean[2]};
  }
  static float distance(const Component& k, const Pixel& x) {
    const auto d = difference(k, x);
    return std::fma(d[2], d[2], std::fma(d[1], d[1], d[0] * d[0]));
  }

  bool foreground(const Param& p, const Pixel& x) const {
    const float b2 = p.backgroundThreshold * p.backgroundThreshold;
    float before = 0;
    for (const Component& k : components) {
      if (before < p.backgroundRatio && distance(k, x) < b2 * k.variance) return false;
      before += k.weight;
    }
    return true;
  }
  void learn(const Param& p, const Pixel& x, float learningRate, int frames) {
    const float alpha = sceneRate(learningRate, frames), beta = 1 - alpha, pruned = alpha * p.complexityPrior;
    const float g2 = p.matchThreshold * p.matchThreshold;
    const auto match = std::find_if(components.begin(), components.end(),
                                    [&](const Component& k) { return distance(k, x) < g2 * k.variance; });
    size_t j = static_cast<size_t>(match - components.begin());
    const bool matched = match != components.end();
    for (size_t k = 0; k < components.size(); ++k) {
      components[k].weight = std::fma(beta, components[k].weight, -pruned);
      if (matched && k == j) components[k].weight += alpha;
    }
    if (matched) {
      Component& own = components[j];
      const auto d = difference(own, x);
      const float square = distance(own, x), r = std::min(alpha / own.weight, 1.0f);
      for (int c = 0; c < 3; ++c) own.mean[c] = std::fma(r, d[c], own.mean[c]);
      own.variance = std::clamp(std::fma(r, square - own.variance, own.variance), p.minVariance, p.maxVariance);
    }
    // Those that fell to nothing; the order of the others stays.
    for (size_t k = components.size(); k-- > 0;)
      if (components[k].weight <= 0) {
        components.erase(components.begin() + static_cast<std::ptrdiff_t>(k));
        if (matched && k < j) --j;
      }
    if (!matched) {
      if (components.size() < static_cast<size_t>(p.maxComponents)) components.emplace_back();
      j = components.size() - 1;
      components[j] = fresh(alpha, p, x);
    }
    for (; j > 0 && components[j - 1].weight < components[j].weight; --j) std::swap(components[j - 1], components[j]);
    float sum = 0;
    for (const Component& k : components) sum += k.weight;
    const float scale = 1 / sum;
    for (Component& k : components) k.weight *= scale;
  }
};

}  // namespace ref
