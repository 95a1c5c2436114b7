// What the down and the up layers share: the state and the pixels that are stored.
#pragma once

#include <math.h>
#include <stddef.h>
#include <stdint.h>

#include <limits>

#include "core/image.h"
#include "core/narrow.h"
#include "core/sample.h"
#include "core/scratch.h"
#include "core/state_id.h"
#include "filter/smooth.h"
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

  int reach() const { return kernelSize / 2; }
  SymmetricKernel kernel() const { return {pWeights + reach(), reach(), unitSum}; }
  bool serves(ZebiSize size) const { return size.width <= maxWidth && size.height <= maxHeight; }
};

// The first n of eight values as pixels; all of them where n is larger. What is not a number becomes 0.
ZEB_INLINE void storePixels(Zeb32f* p, V32f v, int n) {
  if (n >= 8)
    store(p, v);
  else
    storeN(p, v, n);
}
template <class T>
ZEB_INLINE void storePixels(T* p, V32f v, int n) {
  const V32f top = splat(static_cast<Zeb32f>(std::numeric_limits<T>::max()));
  const __m256i whole = truncateToInt(min(max(v, splat(0.0f)), top) + splat(0.5f)).v;
  const __m128i words = _mm_packus_epi32(_mm256_castsi256_si128(whole), _mm256_extracti128_si256(whole, 1));
  const __m128i pixels = sizeof(T) == 1 ? _mm_packus_epi16(words, words) : words;
  alignas(16) T block[16 / sizeof(T)];
  const auto to = reinterpret_cast<__m128i*>(n >= 8 ? p : block);
  if constexpr (sizeof(T) == 1)
    _mm_storel_epi64(to, pixels);
  else
    _mm_storeu_si128(to, pixels);
  if (n < 8) copyFew(p, block, n * static_cast<int>(sizeof(T)));
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

// How many more elements a row of one size holds than one of another.
template <int channels>
constexpr int64_t widerBy(ZebiSize size, ZebiSize other) {
  return (static_cast<int64_t>(size.width) - other.width) * channels;
}

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
