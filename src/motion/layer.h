// What the down and the up layers share: the state, smoothing with its kernel, and linear interpolation.
#pragma once

#include <math.h>
#include <stddef.h>
#include <stdint.h>

#include <limits>
#include <type_traits>

#include "core/image.h"
#include "core/lanes.h"
#include "core/scratch.h"
#include "core/state_id.h"
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
  bool unitSum;  // the weights are made to add up to 1, what rounding took from them given to the centre
  uint32_t id;

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

// Linear between s and t. From s on, so that equal samples stay exactly what they are, or as a weighted sum, in which
// an infinite sample stays infinite; a sample of weight 0 adds nothing.
struct FromFirst {
  ZEB_INLINE V32f operator()(V32f s, V32f t, V32f fraction) const { return fma(fraction, t - s, s); }
};
struct WeightedSum {
  ZEB_INLINE V32f operator()(V32f s, V32f t, V32f fraction) const {
    const V32f far = andNot(equal(fraction, splat(0.0f)), t);
    return fma(fraction, far, (splat(1.0f) - fraction) * s);
  }
};

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

// The places of the elements of a row, in blocks of eight: each block with its first element in the source row, from
// which the others are counted, and whether sixteen elements from there hold them all.
class RowPlaces {
 public:
  static int64_t bytes(int64_t width, int channels) { return 16 * workRow(width * channels); }

  RowPlaces() = default;
  RowPlaces(Scratch& scratch, int64_t width, int channels) {
    const int64_t n = workRow(width * channels);
    index_ = scratch.take<Zeb32s>(n, 4);
    next_ = scratch.take<Zeb32s>(n, 4);
    fraction_ = scratch.take<Zeb32f>(n, 4);
    first_ = scratch.take<Zeb32s>(n / 8, 4);
    near_ = scratch.take<Zeb32s>(n / 8, 4);
  }

  // Pixel x of width pixels is read at position(x) in a work row of sourceWidth pixels.
  template <int channels, class Position>
  void set(int width, int sourceWidth, Position position) {
    n_ = width * channels;
    for (int x = 0, i = 0; x < width; ++x) {
      const Place place = placeAt(position(x), sourceWidth);
      for (int c = 0; c < channels; ++c, ++i) {
        index_[i] = place.index * channels + c;
        next_[i] = place.next * channels + c;
        fraction_[i] = place.fraction;
      }
    }
    for (int i = n_; i % 8 != 0; ++i) index_[i] = index_[n_ - 1], next_[i] = next_[n_ - 1], fraction_[i] = 0;
    const int64_t readable = workRow(static_cast<int64_t>(sourceWidth) * channels);
    for (int i = 0; i < n_; i += 8) {
      int first = index_[i], last = next_[i];
      for (int k = i + 1; k < i + 8; ++k) {
        if (index_[k] < first) first = index_[k];
        if (next_[k] > last) last = next_[k];
      }
      for (int k = i; k < i + 8; ++k) index_[k] -= first, next_[k] -= first;
      first_[i / 8] = first;
      near_[i / 8] = last - first < 16 && first <= readable - 16;
    }
  }

  // Whole vectors are stored to out.
  template <class Blend>
  void interpolate(const Zeb32f* row, Zeb32f* out, Blend blend) const {
    for (int i = 0; i < n_; i += 8) {
      const Zeb32f* const p = row + first_[i / 8];
      const V32s index = load(index_ + i), next = load(next_ + i);
      const bool near = near_[i / 8] != 0;
      const V32f s = near ? pickOfSixteen(p, index) : gather(p, index);
      const V32f t = near ? pickOfSixteen(p, next) : gather(p, next);
      store(out + i, blend(s, t, load(fraction_ + i)));
    }
  }

 private:
  int n_ = 0;
  Zeb32s *index_ = nullptr, *next_ = nullptr;  // counted from the block's first
  Zeb32f* fraction_ = nullptr;
  Zeb32s *first_ = nullptr, *near_ = nullptr;  // a block's
};

// The first n of eight values as pixels; all of them where n is larger. What is not a number becomes 0.
template <class T>
ZEB_INLINE void storePixels(T* p, V32f v, int n) {
  Vec<T> pixels;
  if constexpr (std::is_floating_point_v<T>) {
    pixels = v;
  } else {
    const V32f top = splat(static_cast<Zeb32f>(std::numeric_limits<T>::max()));
    const V32s whole = truncateToInt(min(max(v, splat(0.0f)), top) + splat(0.5f));
    if constexpr (sizeof(T) == 1) {
      const V16s words = narrowTo16s(whole, whole);
      pixels = narrowTo8u(words, words);
    } else {
      pixels = narrowTo16u(whole, whole);
    }
  }
  if (n >= 8)
    storeN(p, pixels, 8);  // a constant count: one store
  else
    storeN(p, pixels, n);
}

template <class T>
constexpr ZebDataType dataTypeOf() {
  return sizeof(T) == 1 ? zeb8u : sizeof(T) == 2 ? zeb16u : zeb32f;
}

template <class T>
constexpr uint32_t layerId(StateKind kind, int channels) {
  return stateId(kind, dataTypeOf<T>(), channels);
}

// What a state is made for.
struct LayerPlan {
  uint32_t id;
  ZebDataType type;
  bool unitSum;  // the weights are to add up to 1, unless their sum is 0
  int64_t workBytes;
};

// Makes a state; status as the initialisers report it. Integer kernels are those of the 8u and 16u layers.
ZebStatus makeLayer(LayerState** ppState, ZebiSize srcRoi, Zeb32f rate, const Zeb16s* pKernel, int kerSize, int mode,
                    LayerPlan plan);
ZebStatus makeLayer(LayerState** ppState, ZebiSize srcRoi, Zeb32f rate, const Zeb32f* pKernel, int kerSize, int mode,
                    LayerPlan plan);
ZebStatus freeLayer(LayerState* pState, uint32_t id);

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
