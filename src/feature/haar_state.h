// The state of a Haar stage, shared by its construction and its evaluation.
#pragma once

#include <stddef.h>

#include "core/checks.h"
#include "core/variant.h"
#include "zebcv.h"

namespace zeb {

// An element of the lists: Zeb32f or Zeb32s, as the stage was built.
union HaarNumber {
  Zeb32f f;
  Zeb32s s;
};

struct HaarRectangle {
  // Far corner, lower-left, upper-right, near corner for upright rectangles; bottom, left, right, top for tilted ones.
  // The rectangle sum is T(0) - T(1) - T(2) + T(3) either way.
  ZebiPoint corner[4];
  HaarNumber weight;
};

struct HaarClassifierRecord {
  int count;
  HaarRectangle* rectangles;
  HaarNumber threshold, value1, value2;
  // Index in the caller's list shifted left by 8, its bits from 24 on in bits 1 to 7; bit 0 is set when a classifier of
  // an upright stage was tilted later.
  unsigned index;
};

constexpr unsigned classifierTilted = 1;
constexpr unsigned indexWord(int i) {
  return static_cast<unsigned>(i) << 8 | static_cast<unsigned>(i) >> 24 << 1;
}
constexpr unsigned listIndex(unsigned word) {
  return word >> 8 | (word & 0xFE) << 23;
}
static_assert(listIndex(indexWord(INT32_MAX) | classifierTilted) == INT32_MAX);
constexpr int stateCreatedTilted = 1;
constexpr int stateMixed = 2;

}  // namespace zeb

struct ZebiHaarClassifier {
  int length;
  int rectangles;
  zeb::HaarClassifierRecord* classifiers;
  int minX, minY, firstRight, firstBottom;  // the least corner of all rectangles; the far corner of the first one
  int tilt;
  int pairs;            // classifiers of two rectangles
  int pairsAndTriples;  // of two or three
  int rectanglesAgain;
  int firstWeightsAreMinusOne;
};

namespace zeb {

inline bool isTilted(const ZebiHaarClassifier& state, const HaarClassifierRecord& c) {
  return (state.tilt & stateCreatedTilted) != 0 || (c.index & classifierTilted) != 0;
}

// All words of a stage are taken; what tells it from anything else is where it points: right behind its header.
inline ZebStatus isStage(const ZebiHaarClassifier* state) {
  return require(static_cast<const void*>(state->classifiers) == state + 1, zebStsErrContextMatch);
}

}  // namespace zeb

static_assert(zeb::widePointers || (sizeof(ZebiHaarClassifier) == 48 && offsetof(ZebiHaarClassifier, tilt) == 28 &&
                                    offsetof(ZebiHaarClassifier, firstWeightsAreMinusOne) == 44),
              "twelve words");
static_assert(zeb::widePointers ||
                  (sizeof(zeb::HaarClassifierRecord) == 24 && offsetof(zeb::HaarClassifierRecord, index) == 20),
              "six words");
static_assert(sizeof(zeb::HaarRectangle) == 36 && offsetof(zeb::HaarRectangle, weight) == 32, "nine words");
