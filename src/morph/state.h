// The state of a structuring element: what its mask looks like, decided once, and the room that its path needs.
#pragma once

#include <stddef.h>

#include "core/state_id.h"
#include "core/variant.h"
#include "filter/rank.h"
#include "zebcv/morph.h"

// Shape of a mask.
enum { zebShapeGeneral = 0, zebShapeRectangle = 1, zebShapeEllipse = 2, zebShapeEmpty = 3 };

// What is known of a rectangle or of an ellipse: a mask whose rows are single runs around the anchor column.
struct ZebiMorphShape {
  int width, height;     // of the rectangle around all elements
  int anchorX, anchorY;  // in that rectangle; a rectangle's anchor may lie off it
  int zeros[2];
  int rows;          // ellipse: mask rows with elements
  int lengths;       // and distinct lengths of their runs
  int* rowOffset;    // of each row, from the first
  int* lengthIndex;  // of each row
  int* length;       // longest first
  int* reach;        // of each length: anchor column minus the run's first column
};

struct ZebiMorphState {
  Zeb8u* mask;
  Zeb8u* erodeTable;  // general shape: 16 bytes for each mask byte
  Zeb8u* dilateTable;
  Zeb8u* scratch;  // in the block itself, or null
  ZebiMorphShape* shape;
  int width, height;           // of the mask; of a rectangle
  int anchorX, anchorY;        // in it
  int rightReach, lowerReach;  // general shape
  int lengths;                 // ellipse
  int scratchSize;
  int typeCode;
  int channels;
  int roiWidth;
  int minusOne;
  int shapeClass;
  uint32_t id;
  int room;  // bytes of scratch that the paths are given: scratchSize, or more where a mask is wider than its region
};

namespace zeb {

constexpr int stateHeaderBytes = sizeof(ZebiMorphState);
static_assert(zeb::widePointers ||
              (stateHeaderBytes == 80 && offsetof(ZebiMorphState, width) == 20 &&
               offsetof(ZebiMorphState, rightReach) == 36 && offsetof(ZebiMorphState, scratchSize) == 48 &&
               offsetof(ZebiMorphState, shapeClass) == 68));
static_assert(zeb::widePointers || sizeof(ZebiMorphShape) == 48);

// Element types as the state records them; bit-packed images have no data type of their own.
constexpr int typeCodeBits = 0;
template <class T>
constexpr int typeCodeOf() {
  return std::is_same_v<T, Zeb8u>    ? zeb8u
         : std::is_same_v<T, Zeb16u> ? zeb16u
         : std::is_same_v<T, Zeb16s> ? zeb16s
                                     : zeb32f;
}

// What a state is built for.
struct MorphKind {
  int typeCode;
  int channels;

  int elementBytes() const { return typeCode == zeb32f ? 4 : typeCode == zeb16u || typeCode == zeb16s ? 2 : 1; }
  int pixelBytes() const { return channels * elementBytes(); }
  constexpr uint32_t id(StateKind kind) const { return stateId(kind, typeCode, channels); }
};

template <class T, int channels>
constexpr MorphKind kindOf() {
  return {typeCodeOf<T>(), channels};
}
constexpr MorphKind kindOfBits{typeCodeBits, 1};

// Whether an identifier is one of this kind, whatever the elements.
constexpr ZebStatus isOfKind(uint32_t id, StateKind kind) {
  return isState(id >> 16, stateId(kind, 0, 0) >> 16);
}

// A mask read forwards or, reflected through its centre, backwards.
struct Mask {
  const Zeb8u* bytes;
  ZebiSize size;
  bool reflected = false;

  int64_t area() const { return static_cast<int64_t>(size.width) * size.height; }

  struct Row {
    const Zeb8u* first;
    int step;

    Zeb8u operator[](int column) const { return first[static_cast<ptrdiff_t>(column) * step]; }
  };
  Row row(int y) const {
    const int64_t first = static_cast<int64_t>(y) * size.width;
    return {bytes + static_cast<ptrdiff_t>(reflected ? area() - 1 - first : first), reflected ? -1 : 1};
  }
};

// How far the lists of an ellipse go: what its path keeps depends on it.
struct EllipseExtent {
  int rows = 0, lengths = 0;    // entries
  int64_t left = 0, right = 0;  // pixels beside the anchor
  int64_t kept = 0;             // source rows, filtered by one length each, from the first mask row that has it down

  void add(int length, int reach, int keptRows) {
    const int64_t behind = int64_t(length) - 1 - reach;
    ++lengths;
    if (reach > left) left = reach;
    if (behind > right) right = behind;
    kept += keptRows;
  }
};

// ---- Sizes in bytes ----

// Of the mask, in whole pieces of 16.
int64_t maskBytes(ZebiSize mask);
// Of the scratch that any mask of this size may need.
int64_t morphScratchSize(MorphKind kind, int roiWidth, ZebiSize mask);
// Of a state in the caller's memory.
int64_t morphStateSize(MorphKind kind, int roiWidth, ZebiSize mask);
// Of the rows of one path, and its lists of pointers.
int64_t generalScratchSize(int64_t width, int pixelBytes, ZebiSize mask);
int64_t tightScratchSize(int64_t width, int pixelBytes, ZebiSize mask);  // the same without a byte to spare
int64_t ellipseScratchSize(int64_t width, int pixelBytes, const EllipseExtent& extent);
int64_t bitScratchSize(int64_t width, ZebiSize mask);

// ---- Building ----

// The checks that all builds make after their pointers.
ZebStatus buildable(int roiWidth, ZebiSize mask, ZebiPoint anchor);

// Builds a state in memory of morphStateSize() bytes, with or without its scratch inside. Allocates nothing.
ZebStatus buildState(MorphKind kind, int roiWidth, const Mask& mask, ZebiPoint anchor, bool ownScratch,
                     ZebiMorphState* state);
// Allocates exactly what the state takes.
ZebStatus newState(MorphKind kind, int roiWidth, const Mask& mask, ZebiPoint anchor, bool ownScratch,
                   ZebiMorphState** state);

// The pixels that an operation with this state reads, relative to its own.
Window reachOf(const ZebiMorphState& state);

}  // namespace zeb
