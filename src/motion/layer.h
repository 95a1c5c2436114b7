// What the down and the up layers share: the state, smoothing with its kernel, and linear interpolation.
#pragma once

#include <math.h>
#include <stddef.h>
#include <stdint.h>

#include <limits>
#include <type_traits>

#include "core/rows.h"
#include "core/vec.h"
#include "filter/border.h"
#include "motion/pyramid.h"
#include "zebcv.h"

namespace zeb {

struct LayerState {
  Zeb32f* pWeights;  // kernelSize weights, the second half a mirror image of the first
  Zeb8u* pWork;      // work rows of the down layers, null for the up layers
  Zeb8u* pTables;    // unused
  ZebiSize* pSizes;  // level sizes from the largest source on
  int sizeCount;     // 0 where the largest source does not exceed the kernel
  int kernelSize;
  ZebDataType dataType;
  int maxWidth;
  int maxHeight;
  int mode;
  Zeb32f rate;
  bool unitSum;  // the weights stand for a sum of 1

  // The weight of the neighbours at a distance.
  Zeb32f weight(int distance) const { return pWeights[kernelSize / 2 - distance]; }
  int reach() const { return kernelSize / 2; }
  bool serves(ZebiSize size) const { return size.width <= maxWidth && size.height <= maxHeight; }
};

// Floats of a work row that whole vectors may be stored to.
constexpr int64_t workRow(int64_t elements) {
  return elements + 8;
}

// ---- Smoothing ----

// A sample with its pairs of neighbours: start() with the sample itself, then add() for each distance.
template <class V>
ZEB_INLINE V startSmoothing(const LayerState& state, V centre, V centreWeight) {
  return state.unitSum ? centre : centreWeight * centre;
}

// out = smoothed rows around row y; rowAt(q) points to row q of height rows. As many passes as the kernel reaches.
template <class RowAt>
void smoothColumns(const LayerState& state, RowAt rowAt, int y, int height, int n, Zeb32f* out) {
  const auto centre = rowAt(y);
  const auto eight = [](const auto* p, int left) { return left < 8 ? loadAsFloatN(p, left) : loadAsFloat(p); };
  const V32f own = splat(state.weight(0));
  for (int i = 0; i < n; i += 8) store(out + i, startSmoothing(state, eight(centre + i, n - i), own));
  for (int j = 1; j <= state.reach(); ++j) {
    const auto a = rowAt(borderSource(zebBorderMirror, y - j, height));
    const auto b = rowAt(borderSource(zebBorderMirror, y + j, height));
    const V32f w = splat(state.weight(j));
    if (state.unitSum) {
      for (int i = 0; i < n; i += 8) {
        const V32f c = eight(centre + i, n - i);
        store(out + i, fma(w, (eight(a + i, n - i) - c) + (eight(b + i, n - i) - c), load(out + i)));
      }
    } else {
      for (int i = 0; i < n; i += 8) store(out + i, fma(w, eight(a + i, n - i) + eight(b + i, n - i), load(out + i)));
    }
  }
}

// bordered: the first pixel of a row with reach() pixels of room on both sides, which are filled here.
template <int channels>
void smoothRow(const LayerState& state, Zeb32f* bordered, int width, Zeb32f* out) {
  for (int j = 1; j <= state.reach(); ++j)
    for (int c = 0; c < channels; ++c) {
      const auto mirrored = [=](int p) { return bordered[borderSource(zebBorderMirror, p, width) * channels + c]; };
      bordered[-j * channels + c] = mirrored(-j);
      bordered[(width - 1 + j) * channels + c] = mirrored(width - 1 + j);
    }
  const V32f own = splat(state.weight(0));
  for (int i = 0; i < width * channels; i += 8) {
    const V32f c = load(bordered + i);
    V32f sum = startSmoothing(state, c, own);
    for (int j = 1; j <= state.reach(); ++j) {
      const V32f a = load(bordered + i - j * channels), b = load(bordered + i + j * channels);
      sum = fma(splat(state.weight(j)), state.unitSum ? (a - c) + (b - c) : a + b, sum);
    }
    store(out + i, sum);
  }
}

// ---- Interpolation ----

// Between sample index and the next one; on the last sample, fraction 0 and no next one.
struct Place {
  int index;
  Zeb32f fraction;
};
inline Place placeAt(double position, int length) {
  if (!(position < length - 1)) return {length - 1, 0};
  const int index = static_cast<int>(position);
  return {index, static_cast<Zeb32f>(position - index)};
}

template <int channels>
void interpolateRow(const Zeb32f* row, const Place* places, int width, Zeb32f* out) {
  for (int x = 0; x < width; ++x) {
    const Place place = places[x];
    const Zeb32f* const s = row + place.index * channels;
    const Zeb32f* const t = place.fraction > 0 ? s + channels : s;
    for (int c = 0; c < channels; ++c) out[x * channels + c] = fmaf(place.fraction, t[c] - s[c], s[c]);
  }
}

template <class T>
inline T pixelOf(Zeb32f v) {
  if constexpr (std::is_floating_point_v<T>) {
    return v;
  } else {
    const Zeb32f top = std::numeric_limits<T>::max();
    const Zeb32f low = v > 0 ? v : 0;
    return static_cast<T>(static_cast<int>((low < top ? low : top) + 0.5f));
  }
}

template <class T>
constexpr ZebDataType dataTypeOf() {
  return sizeof(T) == 1 ? zeb8u : sizeof(T) == 2 ? zeb16u : zeb32f;
}

// Makes a state whose work area has this many bytes; status as the initialisers report it. Integer kernels are those of
// the 8u and 16u layers.
ZebStatus makeLayer(LayerState** ppState, ZebiSize srcRoi, Zeb32f rate, const Zeb16s* pKernel, int kerSize, int mode,
                    ZebDataType type, int64_t workBytes);
ZebStatus makeLayer(LayerState** ppState, ZebiSize srcRoi, Zeb32f rate, const Zeb32f* pKernel, int kerSize, int mode,
                    ZebDataType type, int64_t workBytes);
ZebStatus freeLayer(LayerState* pState);

// The size that the level below a source must have.
inline ZebiSize levelBelow(const LayerState& state, ZebiSize source) {
  int found = -1;
  for (int i = state.sizeCount - 2; i >= 0; --i)
    if (sameSize(state.pSizes[i], source)) return state.pSizes[i + 1];
  for (int i = state.sizeCount - 2; i >= 0; --i)
    if (state.pSizes[i].height == source.height) found = i;
  return found >= 0 ? state.pSizes[found + 1] : pyramidDownSize(source, state.rate);
}

}  // namespace zeb

struct ZebiPyramidDownState : zeb::LayerState {};
struct ZebiPyramidUpState : zeb::LayerState {};
