// The mixture model of a scene: for every pixel up to eight Gaussians, the heaviest first.
// After: C. Stauffer, W. Grimson, "Adaptive background mixture models for real-time tracking", 1999; update and
// pruning: Z. Zivkovic, "Improved adaptive Gaussian mixture model for background subtraction", 2004.
#include "core/entry.h"
#include "core/loops.h"
#include "motion/eight_pixels.h"
#include "motion/scene.h"

struct ZebiFGMixtureState {
  zeb::SceneHead head;
  int maxComponents;
  Zeb32f squaredMatch, squaredBackground, backgroundRatio, complexityPrior;
  Zeb32f initVariance, minVariance, maxVariance;
};

namespace zeb {

namespace {

using State = ZebiFGMixtureState;

// One component of eight neighbouring pixels. A row of them stands together for each component, so that pixels with few
// components are a few runs of memory.
struct alignas(32) Component {
  Zeb32f weight[8], variance[8], mean[3][8];
};
constexpr int64_t pixelBytes = sizeof(Component) / 8;

constexpr int leastComponents = 2, mostComponents = 8;
constexpr uint32_t id = sceneId('M', 3);

int64_t recordBytes(ZebiSize roi, int components) {
  return sceneBytes(boundedProduct(components * pixelBytes, wholeEights(roi.width)), roi.height);
}
ptrdiff_t rowOf(ZebiSize roi) {
  return static_cast<ptrdiff_t>(wholeEights(roi.width)) / 8;
}

ZEB_INLINE void swapWhere(V32f where, Zeb32f* a, Zeb32f* b) {
  const V32f x = load(a), y = load(b);
  store(a, select(where, y, x));
  store(b, select(where, x, y));
}

// What a call learns with: its rate alpha, alpha x the complexity prior, 1 - alpha.
struct Rates {
  V32f alpha, pruned, kept;
};

// Moves by r towards what was d away, at the squared distance given.
ZEB_INLINE V32f movedVariance(const State& state, V32f r, V32f distance, V32f variance) {
  const V32f moved = fma(r, distance - variance, variance);
  return min(max(moved, splat(state.minVariance)), splat(state.maxVariance));
}

// Most of a scene at rest: eight pixels that have one component each and match it. False, with nothing done, where one
// has more or does not.
ZEB_INLINE bool learnSettled(const State& state, const Rates& rates, Component& own, const Component& next,
                             const Zeb8u* pixels, Eight& foreground) {
  if (anyBit(load(next.weight))) return false;
  const EightColours colours = loadColours(pixels);
  V32f d[3];
  for (int c = 0; c < 3; ++c) d[c] = toFloat(colours.channel[c]) - load(own.mean[c]);
  const V32f distance = fma(d[2], d[2], fma(d[1], d[1], d[0] * d[0])), variance = load(own.variance);
  if (!allLanes(less(distance, splat(state.squaredMatch) * variance))) return false;
  foreground = maskBytes(atMost(splat(state.squaredBackground) * variance, distance));
  const V32f weight = fms(rates.kept, load(own.weight), rates.pruned) + rates.alpha;
  const V32f r = min(rates.alpha / weight, splat(1.0f));
  store(own.weight, weight * (splat(1.0f) / weight));
  store(own.variance, movedVariance(state, r, distance, variance));
  for (int c = 0; c < 3; ++c) store(own.mean[c], fma(r, d[c], load(own.mean[c])));
  return true;
}

// The components of eight pixels: component k stands k x `row` further on.
class EightMixtures {
 public:
  ZEB_INLINE EightMixtures(Component* first, ptrdiff_t row, const Zeb8u* pixels) : first_(first), row_(row) {
    const EightColours colours = loadColours(pixels);
    for (int c = 0; c < 3; ++c) x_[c] = toFloat(colours.channel[c]);
  }

  // Whether a pixel is foreground; where it is to be learned also which component it matches.
  template <bool learning>
  ZEB_INLINE Eight classify(const State& state) {
    const V32f zero = splat(0.0f);
    V32f before = zero, background = zero;
    matched_ = distance_ = d_[0] = d_[1] = d_[2] = zero;
    place_ = splat(0), count_ = 0;
    for (int k = 0; k < state.maxComponents; ++k, ++count_) {
      const Component& component = at(k);
      const V32f weight = load(component.weight), present = greater(weight, zero);
      if (!anyBit(present)) break;
      V32f d[3];
      for (int c = 0; c < 3; ++c) d[c] = x_[c] - load(component.mean[c]);
      const V32f distance = fma(d[2], d[2], fma(d[1], d[1], d[0] * d[0])), variance = load(component.variance);
      const V32f part = present & less(before, splat(state.backgroundRatio));
      background = background | (part & less(distance, splat(state.squaredBackground) * variance));
      before = before + weight;
      if constexpr (learning) {
        const V32f here = andNot(matched_, present & less(distance, splat(state.squaredMatch) * variance));
        matched_ = matched_ | here;
        place_ = select(here, splat(k), place_);
        distance_ = select(here, distance, distance_);
        for (int c = 0; c < 3; ++c) d_[c] = select(here, d[c], d_[c]);
      }
    }
    return maskBytes(as<Zeb32f>(equal(as<Zeb32s>(background), splat(0))));
  }

  ZEB_INLINE void learn(const State& state, const Rates& rates) {
    reweigh(state, rates);
    if (!allLanes(matched_)) begin(state, rates.alpha);
    climb();
    normalise();
  }

 private:
  ZEB_INLINE Component& at(int k) const { return first_[k * row_]; }
  ZEB_INLINE V32f isPlace(int k) const { return as<Zeb32f>(equal(place_, splat(k))); }

  ZEB_INLINE void reweigh(const State& state, const Rates& rates) {
    const V32f alpha = rates.alpha;
    const V32f zero = splat(0.0f);
    V32s left = splat(0);
    for (int k = 0; k < count_; ++k) {
      Component& component = at(k);
      const V32f old = load(component.weight), scaled = fms(rates.kept, old, rates.pruned);
      const V32f here = matched_ & isPlace(k);
      const V32f weight = select(here, scaled + alpha, scaled & greater(scaled, zero)) & greater(old, zero);
      store(component.weight, weight);
      left = left - as<Zeb32s>(greater(weight, zero));
      if (anyBit(here)) move(component, here, alpha / select(here, weight, alpha), state);
    }
    // Without a match: the first that is absent, or the last.
    const V32s absent = min(left, splat(state.maxComponents - 1));
    place_ = select(matched_, place_, absent);
  }

  ZEB_INLINE void move(Component& component, V32f here, V32f ratio, const State& state) const {
    const V32f r = min(ratio, splat(1.0f)), variance = load(component.variance);
    for (int c = 0; c < 3; ++c) {
      const V32f mean = load(component.mean[c]);
      store(component.mean[c], select(here, fma(r, d_[c], mean), mean));
    }
    store(component.variance, select(here, movedVariance(state, r, distance_, variance), variance));
  }

  ZEB_INLINE void begin(const State& state, V32f alpha) {
    for (int k = 0; k < state.maxComponents; ++k) {
      const V32f here = andNot(matched_, isPlace(k));
      if (!anyBit(here)) continue;
      Component& component = at(k);
      store(component.weight, select(here, alpha, load(component.weight)));
      store(component.variance, select(here, splat(state.initVariance), load(component.variance)));
      for (int c = 0; c < 3; ++c) store(component.mean[c], select(here, x_[c], load(component.mean[c])));
      if (k >= count_) count_ = k + 1;
    }
  }

  ZEB_INLINE void climb() {
    for (int k = count_ - 1; k > 0; --k) {
      Component &component = at(k), &heavier = at(k - 1);
      const V32f up = isPlace(k) & less(load(heavier.weight), load(component.weight));
      if (!anyBit(up)) continue;
      swapWhere(up, heavier.weight, component.weight);
      swapWhere(up, heavier.variance, component.variance);
      for (int c = 0; c < 3; ++c) swapWhere(up, heavier.mean[c], component.mean[c]);
      place_ = select(up, splat(k - 1), place_);
    }
  }

  ZEB_INLINE void normalise() const {
    V32f sum = load(at(0).weight);
    for (int k = 1; k < count_; ++k) sum = sum + load(at(k).weight);
    const V32f scale = splat(1.0f) / sum;
    for (int k = 0; k < count_; ++k) store(at(k).weight, load(at(k).weight) * scale);
  }

  Component* first_;
  ptrdiff_t row_;
  int count_ = 0;  // components that one of the pixels has, or more
  V32f x_[3], d_[3], distance_;
  V32f matched_;
  V32s place_;  // of the component that is matched or new
};

template <bool learning>
__attribute__((noinline)) Eight anyPixels(const State& state, const Rates& rates, Component* first, ptrdiff_t row,
                                          const Zeb8u* p) {
  EightMixtures pixels(first, row, p);
  const Eight foreground = pixels.classify<learning>(state);
  if constexpr (learning) pixels.learn(state, rates);
  return foreground;
}

// Limit: 20 bytes read, and written where learning, per pixel and component that it has.
template <bool learning>
void foregroundRow(const State& state, Zeb32f rate, const Zeb8u* src, Zeb8u* dst, int n, Component* body,
                   ptrdiff_t row) {
  const Rates rates = {splat(rate), splat(rate * state.complexityPrior), splat(1.0f - rate)};
  forEights<3>(src, n, [&](int x, const Zeb8u* p, int count) ZEB_BODY {
    Component* const first = body + x / 8;
    Eight foreground;
    if (!learning || !learnSettled(state, rates, *first, first[row], p, foreground))
      foreground = anyPixels<learning>(state, rates, first, row, p);
    storeEight(dst + x, foreground, count);
  });
}

}  // namespace

ZEB_ENTRY(zebiFGMixtureGetBufferSize_8u_C3R)(ZebiSize roiSize, int maxComponents, int* pBufferSize) {
  if (auto bad =
          firstFailure(present(pBufferSize), hasArea(roiSize), within(maxComponents, leastComponents, mostComponents)))
    return bad;
  return reportSize(recordBytes(roiSize, maxComponents), pBufferSize);
}

ZEB_ENTRY(zebiFGMixtureInit_8u_C3R)
(const Zeb8u* pSrc, int srcStep, ZebiSize roiSize, const ZebiFGMixtureParam* pParam, ZebiFGMixtureState* pState) {
  const auto src = image<3>(pSrc, srcStep);
  if (auto bad = checked(roiSize, src, also(pParam, pState))) return bad;
  const ZebiFGMixtureParam p = *pParam;
  constexpr Zeb32f leastVariance = 1.0f / 64;
  if (auto bad = firstFailure(
          within(p.maxComponents, leastComponents, mostComponents), within(p.matchThreshold, 0.125f, 64),
          within(p.backgroundThreshold, 0.125f, 64), aboveZero(p.backgroundRatio, 1),
          within(p.complexityPrior, 0, 0.5f), within(p.initVariance, p.minVariance, p.maxVariance),
          within(p.minVariance, leastVariance, p.maxVariance), within(p.maxVariance, leastVariance, 195075)))
    return bad;
  if (recordBytes(roiSize, p.maxComponents) > INT32_MAX) return zebStsErrOverflow;
  placeBody(pState, id, roiSize);
  pState->maxComponents = p.maxComponents;
  pState->squaredMatch = p.matchThreshold * p.matchThreshold;
  pState->squaredBackground = p.backgroundThreshold * p.backgroundThreshold;
  pState->backgroundRatio = p.backgroundRatio, pState->complexityPrior = p.complexityPrior;
  pState->initVariance = p.initVariance, pState->minVariance = p.minVariance, pState->maxVariance = p.maxVariance;
  auto* body = bodyOf<Component>(pState);
  const ptrdiff_t row = rowOf(roiSize);
  for (int y = 0; y < roiSize.height; ++y, body += row * p.maxComponents) {
    forEights<3>(src.rows()[y], roiSize.width, [=](int x, const Zeb8u* pixels, int) {
      const EightColours colours = loadColours(pixels);
      Component& first = body[x / 8];
      store(first.weight, splat(1.0f));
      store(first.variance, splat(p.initVariance));
      for (int c = 0; c < 3; ++c) store(first.mean[c], toFloat(colours.channel[c]));
    });
    memset(static_cast<void*>(body + row), 0, static_cast<size_t>(row * (p.maxComponents - 1)) * sizeof(Component));
  }
  return zebStsOk;
}

ZEB_ENTRY(zebiFGMixtureForeground_8u_C3R)
(const Zeb8u* pSrc, int srcStep, Zeb8u* pDst, int dstStep, ZebiSize roiSize, Zeb32f learningRate,
 ZebiFGMixtureState* pState) {
  const auto src = image<3>(pSrc, srcStep);
  const auto dst = image(pDst, dstStep);
  if (auto bad = firstFailure(checked(roiSize, src, dst, also(pState)), within(learningRate, 0, 0.5f))) return bad;
  if (auto bad = fits(pState, id, roiSize)) return bad;
  const bool learning = learningRate > 0;
  const Zeb32f rate = learning ? learningRateNow(pState->head, learningRate) : 0;
  const ptrdiff_t row = rowOf(roiSize);
  auto* body = bodyOf<Component>(pState);
  for (int y = 0; y < roiSize.height; ++y, body += row * pState->maxComponents)
    (learning ? foregroundRow<true> : foregroundRow<false>)(*pState, rate, src.rows()[y], dst.rows()[y], roiSize.width,
                                                            body, row);
  return zebStsOk;
}

ZEB_ENTRY(zebiFGMixtureBackground_8u_C3R)
(Zeb8u* pDst, int dstStep, ZebiSize roiSize, const ZebiFGMixtureState* pState) {
  const auto dst = image<3>(pDst, dstStep);
  if (auto bad = checked(roiSize, dst, also(pState))) return bad;
  if (auto bad = fits(pState, id, roiSize)) return bad;
  const auto* body = bodyOf<Component>(pState);
  for (int y = 0; y < roiSize.height; ++y, body += rowOf(roiSize) * pState->maxComponents) {
    Zeb8u* const row = dst.rows()[y];
    for (int x = 0; x < roiSize.width; x += 8) {
      EightColours mean;
      for (int c = 0; c < 3; ++c) mean.channel[c] = toBytes(load(body[x / 8].mean[c]));
      if (x <= roiSize.width - 8) {
        storeColours(row + 3 * static_cast<ptrdiff_t>(x), mean);
      } else {
        Zeb8u block[24];
        storeColours(block, mean);
        copyFew(row + 3 * static_cast<ptrdiff_t>(x), block, 3 * (roiSize.width - x));
      }
    }
  }
  return zebStsOk;
}

}  // namespace zeb
