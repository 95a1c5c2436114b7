// What the models of a scene share: the head of their records, its checks, the count of frames learned.
#pragma once

#include "core/checks.h"
#include "core/entry.h"
#include "core/memory.h"
#include "core/narrow.h"
#include "zebcv/background.h"

namespace zeb {

// The first words of every record. The body, an array of vectors, begins at a multiple of 32.
struct SceneHead {
  uint32_t id;
  int width, height;
  int frames;  // learned, up to mostFrames
  int body;    // bytes from the record's start
};
static_assert(sizeof(SceneHead) == 20);

constexpr int mostFrames = 65535;
constexpr int64_t sceneHeaderBytes = 64, sceneRoom = 128;  // the room ends where the longest way to a boundary does

// Four letters, in their order in memory: F, G, the model, the channels.
constexpr uint32_t sceneId(char model, int channels) {
  return 'F' | 'G' << 8 | static_cast<uint32_t>(model) << 16 | static_cast<uint32_t>('0' + channels) << 24;
}

// Bytes of a record with so many bytes for each row of pixels.
inline int64_t sceneBytes(int64_t rowBytes, int height) {
  return sceneRoom + boundedProduct(rowBytes, height);
}
// Pixels of a row in whole vectors of eight.
inline int64_t wholeEights(int width) {
  return (static_cast<int64_t>(width) + 7) & ~int64_t{7};
}

template <class State>
inline void placeBody(State* state, uint32_t id, ZebiSize size) {
  const auto at = reinterpret_cast<uintptr_t>(state);
  const uintptr_t body = (at + sceneHeaderBytes + 31) & ~uintptr_t{31};
  memset(static_cast<void*>(state), 0, sceneHeaderBytes);
  state->head = {id, size.width, size.height, 0, static_cast<int>(body - at)};
}
template <class T, class State>
inline auto bodyOf(State* state) {
  using Byte = std::conditional_t<std::is_const_v<State>, const Zeb8u, Zeb8u>;
  using Element = std::conditional_t<std::is_const_v<State>, const T, T>;
  return reinterpret_cast<Element*>(reinterpret_cast<Byte*>(state) + state->head.body);
}

// The two checks of every call that takes a record, after all others.
template <class State>
inline ZebStatus fits(const State* state, uint32_t id, ZebiSize size) {
  if (state->head.id != id) return zebStsErrContextMatch;
  const bool same = state->head.width == size.width && state->head.height == size.height;
  return require(same, zebStsErrSize);
}

template <int channels, class State>
inline ZebStatus takesFrame(Image<const Zeb8u, channels> src, Image<Zeb8u> dst, ZebiSize roi, const State* state,
                            uint32_t id) {
  if (auto bad = checked(roi, src, dst, also(state))) return bad;
  return fits(state, id, roi);
}
template <int channels, class State>
inline ZebStatus takesLesson(Image<const Zeb8u, channels> src, Optional<const Zeb8u, 1> mask, ZebiSize roi,
                             const State* state, uint32_t id) {
  if (auto bad = checked(roi, src, mask, also(state))) return bad;
  return fits(state, id, roi);
}

// One more frame is learned; how many there were, this one and the first included.
inline int countFrame(SceneHead& head) {
  if (head.frames < mostFrames) ++head.frames;
  return head.frames + 1;
}
// A plain average of the frames until the learning rate takes over.
inline Zeb32f learningRateNow(SceneHead& head, Zeb32f learningRate) {
  const Zeb32f average = 1.0f / static_cast<Zeb32f>(countFrame(head));
  return average > learningRate ? average : learningRate;
}

// Ends included; no number lies within.
template <class T>
constexpr ZebStatus within(T value, std::common_type_t<T> least, std::common_type_t<T> most) {
  return require(value >= least && value <= most, zebStsErrBadArgument);
}
constexpr ZebStatus aboveZero(Zeb32f value, Zeb32f most) {
  return require(value > 0 && value <= most, zebStsErrBadArgument);
}

// Checks, allocates and starts a record; start(state) fills in what is the model's own.
template <class State, class Start>
inline ZebStatus newScene(State** ppState, uint32_t id, ZebiSize size, ZebStatus parameters, int64_t bytes,
                          Start start) {
  int count = 0;
  if (auto bad = parameters) return bad;
  if (auto bad = reportSize(bytes, &count)) return bad;
  auto* const state = reinterpret_cast<State*>(allocateState(count));
  if (state == nullptr) return zebStsErrMemAlloc;
  placeBody(state, id, size);
  start(state);
  *ppState = state;
  return zebStsOk;
}

template <class State>
inline ZebStatus releaseScene(State* state, uint32_t id) {
  if (auto bad = present(state)) return bad;
  if (state->head.id != id) return zebStsErrContextMatch;
  releaseState(state, state->head.id);
  return zebStsOk;
}

// The functions of a model whose file has start, foreground, update and id for each channel count.
#define SCENE_MODEL(initAlloc, foregroundOf, updateOf, freeOf, State, Param, channels)                          \
  ZEB_ENTRY(initAlloc)                                                                                          \
  (State * *ppState, const Zeb8u* pSrc, int srcStep, ZebiSize roiSize, const Param* pParam) {                   \
    return start<channels>(ppState, image<channels>(pSrc, srcStep), roiSize, pParam);                           \
  }                                                                                                             \
  ZEB_ENTRY(foregroundOf)                                                                                       \
  (const Zeb8u* pSrc, int srcStep, Zeb8u* pDst, int dstStep, ZebiSize roiSize, const State* pState) {           \
    return foreground<channels>(image<channels>(pSrc, srcStep), image(pDst, dstStep), roiSize, pState);         \
  }                                                                                                             \
  ZEB_ENTRY(updateOf)                                                                                           \
  (const Zeb8u* pSrc, int srcStep, const Zeb8u* pMask, int maskStep, ZebiSize roiSize, State* pState) {         \
    return update<channels>(image<channels>(pSrc, srcStep), optional(image(pMask, maskStep)), roiSize, pState); \
  }                                                                                                             \
  ZEB_ENTRY(freeOf)(State * pState) {                                                                           \
    return releaseScene(pState, id<channels>);                                                                  \
  }

}  // namespace zeb
