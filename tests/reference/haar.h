// A stage of a Haar cascade at one pixel, from its definition.
#pragma once

#include <climits>
#include <cmath>
#include <vector>

#include "reference/integral.h"

namespace ref {

template <class T>
struct HaarStage {
  std::vector<ZebiRect> features;
  std::vector<T> weights, thresholds, values1, values2;
  std::vector<int> counts;
  std::vector<bool> tilted;  // per classifier

  // The classifiers in the order of evaluation.
  std::vector<int> order() const {
    std::vector<int> all;
    for (int group = 0; group < 3; ++group)
      for (size_t i = 0; i < counts.size(); ++i)
        if ((counts[i] == 2 ? 0 : counts[i] == 3 ? 1 : 2) == group) all.push_back(static_cast<int>(i));
    return all;
  }
  int firstFeature(int classifier) const {
    int first = 0;
    for (int i = 0; i < classifier; ++i) first += counts[static_cast<size_t>(i)];
    return first;
  }
};

template <class S>
S rectangleSum(const Plane<S>& t, int x, int y, const ZebiRect& r, bool tilted) {
  if (tilted)
    return plus(minus(minus(t.at(x + r.x + r.width - r.height, y + r.y + r.width + r.height),
                            t.at(x + r.x - r.height, y + r.y + r.height)),
                      t.at(x + r.x + r.width, y + r.y + r.width)),
                t.at(x + r.x, y + r.y));
  return plus(minus(minus(t.at(x + r.x + r.width, y + r.y + r.height), t.at(x + r.x, y + r.y + r.height)),
                    t.at(x + r.x + r.width, y + r.y)),
              t.at(x + r.x, y + r.y));
}

template <class S>
bool passes(const HaarStage<Zeb32f>& stage, const Plane<S>& upright, const Plane<S>& tilted, int x, int y, Zeb32f norm,
            Zeb32f threshold) {
  Zeb32f sum = 0;
  for (int i : stage.order()) {
    Zeb32f t = 0;
    for (int k = stage.firstFeature(i); k < stage.firstFeature(i) + stage.counts[i]; ++k) {
      const bool slanted = stage.tilted[i];
      const Zeb32f product = stage.weights[k] * static_cast<Zeb32f>(rectangleSum(slanted ? tilted : upright, x, y,
                                                                                 stage.features[k], slanted));
      t = t + product;
    }
    sum = sum + (t < norm * stage.thresholds[i] ? stage.values1[i] : stage.values2[i]);
  }
  return !(threshold > sum);
}

// v x 2^-shift to nearest even, the nearest value of 64 bits where it has more; exact in long double.
inline long long scaledDown(long long v, int shift) {
  const long double scaled = std::ldexp(static_cast<long double>(v), -shift);
  return scaled >= 0x1p63L ? LLONG_MAX : scaled <= -0x1p63L ? LLONG_MIN : std::llrint(scaled);
}

inline bool passesScaled(const HaarStage<Zeb32s>& stage, const Plane<Zeb32s>& upright, const Plane<Zeb32s>& tilted,
                         int x, int y, Zeb32s norm, Zeb32s threshold, int scaleFactor) {
  long long sum = 0;
  for (int i : stage.order()) {
    long long t = 0;
    for (int k = stage.firstFeature(i); k < stage.firstFeature(i) + stage.counts[i]; ++k) {
      const bool slanted = stage.tilted[i];
      t += static_cast<long long>(stage.weights[k]) *
           rectangleSum(slanted ? tilted : upright, x, y, stage.features[k], slanted);
    }
    sum += scaledDown(t, scaleFactor) < static_cast<long long>(norm) * stage.thresholds[i] ? stage.values1[i]
                                                                                           : stage.values2[i];
  }
  return threshold <= sum;
}

}  // namespace ref
