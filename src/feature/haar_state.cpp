// Building, tilting, measuring and releasing the stages of a Haar cascade.
#include "feature/haar_state.h"

#include "core/checks.h"
#include "core/entry.h"
#include "core/memory.h"

namespace {

using namespace zeb;

HaarNumber number(Zeb32f v) {
  return {.f = v};
}
HaarNumber number(Zeb32s v) {
  HaarNumber n;
  n.s = v;
  return n;
}

// A weight that truncates to -1.
bool isMinusOne(Zeb32f w) {
  return w > -2.0f && w <= -1.0f;
}
bool isMinusOne(Zeb32s w) {
  return w == -1;
}

// Sums of coordinates wrap rather than overflow.
int plus(int a, int b) {
  return static_cast<int>(static_cast<unsigned>(a) + static_cast<unsigned>(b));
}

void setCorners(HaarRectangle& r, int x, int y, int w, int h, bool tilted) {
  if (tilted) {
    r.corner[0] = {plus(plus(x, w), -h), plus(plus(y, w), h)};
    r.corner[1] = {plus(x, -h), plus(y, h)};
    r.corner[2] = {plus(x, w), plus(y, w)};
  } else {
    r.corner[0] = {plus(x, w), plus(y, h)};
    r.corner[1] = {x, plus(y, h)};
    r.corner[2] = {plus(x, w), y};
  }
  r.corner[3] = {x, y};
}

template <class T>
struct Lists {
  const ZebiRect* features;
  const T *weights, *thresholds, *values1, *values2;
  const int* counts;
  int length;
};

// Writes the classifiers whose number of rectangles the group takes, in the caller's order.
template <class T, class Group>
void addGroup(const Lists<T>& in, bool tilted, Group takes, HaarClassifierRecord*& classifier,
              HaarRectangle*& rectangle) {
  int first = 0;
  for (int i = 0; i < in.length; first += in.counts[i++]) {
    if (!takes(in.counts[i])) continue;
    *classifier++ = {in.counts[i],          rectangle,   number(in.thresholds[i]), number(in.values1[i]),
                     number(in.values2[i]), indexWord(i)};
    for (int k = first; k < first + in.counts[i]; ++k, ++rectangle) {
      const ZebiRect& f = in.features[k];
      setCorners(*rectangle, f.x, f.y, f.width, f.height, tilted);
      rectangle->weight = number(in.weights[k]);
    }
  }
}

template <class T>
void fillHeader(const Lists<T>& in, int total, bool tilted, ZebiHaarClassifier* state) {
  *state = {};
  state->length = in.length;
  state->rectangles = state->rectanglesAgain = total;
  state->tilt = tilted ? stateCreatedTilted : 0;
  state->firstWeightsAreMinusOne = 1;
  int first = 0;
  for (int i = 0; i < in.length; first += in.counts[i++]) {
    state->pairs += in.counts[i] == 2;
    state->pairsAndTriples += in.counts[i] == 2 || in.counts[i] == 3;
    if (!isMinusOne(in.weights[first])) state->firstWeightsAreMinusOne = 0;
  }
  for (int k = 0; k < total; ++k) {
    const ZebiRect& f = in.features[k];
    if (k == 0) {
      state->minX = f.x, state->minY = f.y;
      state->firstRight = plus(f.x, f.width), state->firstBottom = plus(f.y, f.height);
    }
    if (f.x < state->minX) state->minX = f.x;
    if (f.y < state->minY) state->minY = f.y;
  }
}

template <class T>
ZebStatus build(ZebiHaarClassifier** ppState, const Lists<T>& in, bool tilted) {
  if (auto bad =
          firstFailure(present(ppState, in.features, in.weights, in.thresholds, in.values1, in.values2, in.counts),
                       require(in.length >= 0, zebStsErrSize)))
    return bad;
  int64_t total = 0;
  for (int i = 0; i < in.length; ++i) {
    if (in.counts[i] < 1) return zebStsErrSize;
    total += in.counts[i];
  }
  for (int64_t k = 0; k < total; ++k) {
    const ZebiRect& f = in.features[k];
    if (f.x < 0 || f.y < 0 || f.width < 1 || f.height < 1) return zebStsErrBadArgument;
  }
  const int64_t bytes = static_cast<int64_t>(sizeof(ZebiHaarClassifier)) +
                        in.length * static_cast<int64_t>(sizeof(HaarClassifierRecord)) +
                        total * static_cast<int64_t>(sizeof(HaarRectangle));
  Zeb8u* const memory = allocateState(bytes);
  if (!memory) return zebStsErrMemAlloc;

  auto* state = reinterpret_cast<ZebiHaarClassifier*>(memory);
  auto* classifier = reinterpret_cast<HaarClassifierRecord*>(state + 1);
  auto* rectangle = reinterpret_cast<HaarRectangle*>(classifier + in.length);
  fillHeader(in, static_cast<int>(total), tilted, state);
  state->classifiers = classifier;
  addGroup(
      in, tilted, [](int n) { return n == 2; }, classifier, rectangle);
  addGroup(
      in, tilted, [](int n) { return n == 3; }, classifier, rectangle);
  addGroup(
      in, tilted, [](int n) { return n != 2 && n != 3; }, classifier, rectangle);
  *ppState = state;
  return zebStsOk;
}

ZebStatus windowSize(const ZebiHaarClassifier* pState, ZebiSize* pSize) {
  if (auto bad = present(pState, pSize)) return bad;
  if (auto bad = isStage(pState)) return bad;
  ZebiSize size = {0, 0};
  for (int i = 0; i < pState->length; ++i) {
    const HaarClassifierRecord& c = pState->classifiers[i];
    for (int k = 0; k < c.count; ++k) {
      // Of a tilted rectangle, too, the far corner as the caller gave it: (x + w, y + h).
      const ZebiPoint* const corner = c.rectangles[k].corner;
      const bool slanted = isTilted(*pState, c);
      const int right = slanted ? corner[2].x : corner[0].x;
      const int bottom = slanted ? corner[1].y : corner[0].y;
      if (right > size.width) size.width = right;
      if (bottom > size.height) size.height = bottom;
    }
  }
  *pSize = size;
  return zebStsOk;
}

ZebStatus tilt(const Zeb8u* pMask, int flag, ZebiHaarClassifier* pState) {
  if (auto bad = present(pMask, pState)) return bad;
  if (pState->tilt & stateCreatedTilted) return zebStsErrBadArgument;
  if (auto bad = isStage(pState)) return bad;
  for (int i = 0; i < pState->length; ++i) {
    HaarClassifierRecord& c = pState->classifiers[i];
    const bool marked = pMask[listIndex(c.index)] != 0;
    if (marked != (flag != 0) || (c.index & classifierTilted)) continue;
    for (int k = 0; k < c.count; ++k) {
      HaarRectangle& r = c.rectangles[k];
      const ZebiPoint near = r.corner[3], far = r.corner[0];
      setCorners(r, near.x, near.y, plus(far.x, -near.x), plus(far.y, -near.y), true);
    }
    c.index |= classifierTilted;
    pState->tilt |= stateMixed;
  }
  return zebStsOk;
}

ZebStatus release(ZebiHaarClassifier* pState) {
  if (auto bad = present(pState)) return bad;
  if (auto bad = isStage(pState)) return bad;
  pState->classifiers = nullptr;
  zebsFree(pState);
  return zebStsOk;
}

}  // namespace

#define INIT_ALLOC(name, T, tilted)                                                                                \
  ZEB_ENTRY(name)                                                                                                  \
  (ZebiHaarClassifier * *ppState, const ZebiRect* pFeature, const T* pWeight, const T* pThreshold, const T* pVal1, \
   const T* pVal2, const int* pNum, int length) {                                                                  \
    return build(ppState, Lists<T>{pFeature, pWeight, pThreshold, pVal1, pVal2, pNum, length}, tilted);            \
  }

INIT_ALLOC(zebiHaarClassifierInitAlloc_32f, Zeb32f, false)
INIT_ALLOC(zebiHaarClassifierInitAlloc_32s, Zeb32s, false)
INIT_ALLOC(zebiTiltedHaarClassifierInitAlloc_32f, Zeb32f, true)
INIT_ALLOC(zebiTiltedHaarClassifierInitAlloc_32s, Zeb32s, true)

ZEB_ENTRY(zebiHaarClassifierFree_32f)(ZebiHaarClassifier* pState) {
  return release(pState);
}
ZEB_ENTRY(zebiHaarClassifierFree_32s)(ZebiHaarClassifier* pState) {
  return release(pState);
}
ZEB_ENTRY(zebiGetHaarClassifierSize_32f)(const ZebiHaarClassifier* pState, ZebiSize* pSize) {
  return windowSize(pState, pSize);
}
ZEB_ENTRY(zebiGetHaarClassifierSize_32s)(const ZebiHaarClassifier* pState, ZebiSize* pSize) {
  return windowSize(pState, pSize);
}
ZEB_ENTRY(zebiTiltHaarFeatures_32f)(const Zeb8u* pMask, int flag, ZebiHaarClassifier* pState) {
  return tilt(pMask, flag, pState);
}
ZEB_ENTRY(zebiTiltHaarFeatures_32s)(const Zeb8u* pMask, int flag, ZebiHaarClassifier* pState) {
  return tilt(pMask, flag, pState);
}
