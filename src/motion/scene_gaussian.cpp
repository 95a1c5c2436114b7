// The Gaussian model of a scene: a mean and a variance for every channel of every pixel.
// After: C. Wren, A. Azarbayejani, T. Darrell, A. Pentland, "Pfinder: real-time tracking of the human body", 1997.
#include "core/loops.h"
#include "motion/eight_pixels.h"
#include "motion/scene.h"

struct ZebiFGGaussianState {
  zeb::SceneHead head;
  Zeb32f learningRate, squaredThreshold, initVariance, minVariance;
};

namespace zeb {

namespace {

using State = ZebiFGGaussianState;

// Of eight neighbouring elements of a row; channels stand in turn as in the frame. Side by side, since two planes at a
// distance of a multiple of 4096 bytes would fight for the same places in the cache.
struct alignas(32) EightElements {
  Zeb32f mean[8], variance[8];
};
constexpr int64_t elementBytes = sizeof(EightElements) / 8;

ZEB_INLINE V32f elements(const Zeb8u* pixels, int k) {
  return toFloat(loadEight(pixels + 8 * k));
}

// Limit: 8 bytes read per element.
template <int channels>
void foregroundRow(V32f squaredThreshold, const Zeb8u* src, Zeb8u* dst, int n, const EightElements* body) {
  forEights<channels>(src, n, [=](int x, const Zeb8u* p, int count) ZEB_BODY {
    V32f far[channels];
    for (int k = 0; k < channels; ++k) {
      const EightElements& e = body[x / 8 * channels + k];
      const V32f d = elements(p, k) - load(e.mean);
      far[k] = greater(d * d, squaredThreshold * load(e.variance));
    }
    storeEight(dst + x, channels == 1 ? maskBytes(far[0]) : maskBytesOfThree(far), count);
  });
}

// Limit: 8 bytes read and written per element.
template <int channels, bool masked>
void updateRow(Zeb32f rate, Zeb32f least, const Zeb8u* src, const Zeb8u* mask, int n, EightElements* body) {
  const V32f alpha = splat(rate), minVariance = splat(least);
  forEights<channels>(src, n, [=](int x, const Zeb8u* p, int count) ZEB_BODY {
    V32s selected[channels];
    if constexpr (masked) {
      const Eight bytes = loadEight(mask + x, count);
      if constexpr (channels == 1) {
        selected[0] = greater(V32s{_mm256_cvtepu8_epi32(bytes.v)}, splat(0));
      } else {
        spreadToThree(bytes, selected);
      }
    }
    for (int k = 0; k < channels; ++k) {
      EightElements& e = body[x / 8 * channels + k];
      const V32f mean = load(e.mean), variance = load(e.variance);
      const V32f d = elements(p, k) - mean;
      V32f newMean = fma(alpha, d, mean);
      V32f newVariance = max(fma(alpha, fms(d, d, variance), variance), minVariance);
      if constexpr (masked) {
        newMean = select(selected[k], newMean, mean);
        newVariance = select(selected[k], newVariance, variance);
      }
      store(e.mean, newMean);
      store(e.variance, newVariance);
    }
  });
}

template <int channels>
constexpr uint32_t id = sceneId('G', channels);
template <int channels>
ptrdiff_t rowOf(ZebiSize roi) {
  return static_cast<ptrdiff_t>(wholeEights(roi.width)) / 8 * channels;
}

template <int channels>
ZebStatus start(State** ppState, Image<const Zeb8u, channels> src, ZebiSize roi, const ZebiFGGaussianParam* p) {
  if (auto bad = checked(roi, src, also(p, ppState))) return bad;
  const auto parameters =
      firstFailure(aboveZero(p->learningRate, 0.5f), within(p->threshold, 0.125f, 64),
                   within(p->initVariance, p->minVariance, 65025), within(p->minVariance, 1.0f / 64, 65025));
  const int64_t rowBytes = channels * elementBytes * wholeEights(roi.width);
  return newScene(ppState, id<channels>, roi, parameters, sceneBytes(rowBytes, roi.height), [=](State* state) {
    state->learningRate = p->learningRate, state->squaredThreshold = p->threshold * p->threshold;
    state->initVariance = p->initVariance, state->minVariance = p->minVariance;
    auto* body = bodyOf<EightElements>(state);
    for (int y = 0; y < roi.height; ++y, body += rowOf<channels>(roi))
      forEights<channels>(src.rows()[y], roi.width, [=](int x, const Zeb8u* pixels, int) {
        for (int k = 0; k < channels; ++k) {
          EightElements& e = body[x / 8 * channels + k];
          store(e.mean, elements(pixels, k));
          store(e.variance, splat(state->initVariance));
        }
      });
  });
}

template <int channels>
ZebStatus foreground(Image<const Zeb8u, channels> src, Image<Zeb8u> dst, ZebiSize roi, const State* state) {
  if (auto bad = takesFrame(src, dst, roi, state, id<channels>)) return bad;
  const auto* body = bodyOf<EightElements>(state);
  const V32f threshold = splat(state->squaredThreshold);
  for (int y = 0; y < roi.height; ++y, body += rowOf<channels>(roi))
    foregroundRow<channels>(threshold, src.rows()[y], dst.rows()[y], roi.width, body);
  return zebStsOk;
}

template <int channels>
ZebStatus update(Image<const Zeb8u, channels> src, Optional<const Zeb8u, 1> mask, ZebiSize roi, State* state) {
  if (auto bad = takesLesson(src, mask, roi, state, id<channels>)) return bad;
  const Zeb32f rate = learningRateNow(state->head, state->learningRate), least = state->minVariance;
  auto* body = bodyOf<EightElements>(state);
  for (int y = 0; y < roi.height; ++y, body += rowOf<channels>(roi)) {
    const Zeb8u* const row = src.rows()[y];
    if (mask) {
      updateRow<channels, true>(rate, least, row, mask.row(y), roi.width, body);
    } else {
      updateRow<channels, false>(rate, least, row, nullptr, roi.width, body);
    }
  }
  return zebStsOk;
}

}  // namespace

SCENE_MODEL(zebiFGGaussianInitAlloc_8u_C1R, zebiFGGaussianForeground_8u_C1R, zebiFGGaussianUpdate_8u_C1R,
            zebiFGGaussianFree_8u_C1R, ZebiFGGaussianState, ZebiFGGaussianParam, 1)
SCENE_MODEL(zebiFGGaussianInitAlloc_8u_C3R, zebiFGGaussianForeground_8u_C3R, zebiFGGaussianUpdate_8u_C3R,
            zebiFGGaussianFree_8u_C3R, ZebiFGGaussianState, ZebiFGGaussianParam, 3)

}  // namespace zeb
