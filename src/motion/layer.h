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

// Calls body(i, read) for blocks of eight elements; read(p) loads those at p + i as floats, no more than there are.
template <class Body>
ZEB_INLINE void forEights(int n, Body body) {
  int i = 0;
  for (; i <= n - 8; i += 8) body(i, [i](const auto* p) { return loadAsFloat(p + i); });
  if (i < n) body(i, [i, n](const auto* p) { return loadAsFloatN(p + i, n - i); });
}

// out = smoothed rows around row y; rowAt(q) points to row q of height rows. As many passes as the kernel reaches.
template <class RowAt>
void smoothColumns(const LayerState& state, RowAt rowAt, int y, int height, int n, Zeb32f* out) {
  const auto centre = rowAt(y);
  const V32f own = splat(state.weight(0));
  const bool unitSum = state.unitSum;
  for (int j = 1; j <= state.reach(); ++j) {
    const auto a = rowAt(borderSource(zebBorderMirror, y - j, height));
    const auto b = rowAt(borderSource(zebBorderMirror, y + j, height));
    const V32f w = splat(state.weight(j));
    if (unitSum && j == 1) {
      forEights(n, [=](int i, auto read) {
        const V32f c = read(centre);
        store(out + i, fma(w, (read(a) - c) + (read(b) - c), c));
      });
    } else if (unitSum) {
      forEights(n, [=](int i, auto read) {
        const V32f c = read(centre);
        store(out + i, fma(w, (read(a) - c) + (read(b) - c), load(out + i)));
      });
    } else {
      forEights(n, [=](int i, auto read) {
        store(out + i, fma(w, read(a) + read(b), j == 1 ? own * read(centre) : load(out + i)));
      });
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
  const int reach = state.reach(), n = width * channels;
  const bool unitSum = state.unitSum;
  const Zeb32f* const weights = state.pWeights + reach;
  const V32f own = splat(weights[0]);
  for (int i = 0; i < n; i += 8) {
    const V32f c = load(bordered + i);
    V32f sum = unitSum ? c : own * c;
    for (int j = 1; j <= reach; ++j) {
      const V32f a = load(bordered + i - j * channels), b = load(bordered + i + j * channels);
      sum = fma(splat(weights[-j]), unitSum ? (a - c) + (b - c) : a + b, sum);
    }
    store(out + i, sum);
  }
}

// ---- Interpolation ----

// Between sample index and sample next, which is the same one where the fraction is 0.
struct Place {
  int index;
  int next;
  Zeb32f fraction;
};
inline Place placeAt(double position, int length) {
  if (!(position < length - 1)) return {length - 1, length - 1, 0};
  const int index = static_cast<int>(position);
  const auto fraction = static_cast<Zeb32f>(position - index);
  return {index, fraction > 0 ? index + 1 : index, fraction};
}

template <int channels>
void interpolateRow(const Zeb32f* row, const Place* places, int width, Zeb32f* __restrict out) {
  for (int x = 0; x < width; ++x) {
    const Place place = places[x];
    const Zeb32f* const s = row + place.index * channels;
    const Zeb32f* const t = row + place.next * channels;
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
