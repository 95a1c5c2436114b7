// Analysis of structuring elements and layout of their states.
#include "morph/state.h"

#include <float.h>
#include <string.h>

#include "core/checks.h"
#include "core/memory.h"
#include "filter/bit_rows.h"
#include "morph/cover.h"

namespace zeb {

namespace {

struct Analysis {
  int shapeClass;
  int firstColumn, endColumn;  // of all elements
  int firstRow, lastRow;
  int rows, lengths;
};

// The first column of the one run of a row and the column behind it; false where there is a second run. A row without
// elements has begin == end.
bool runOf(const Mask& mask, int row, int* begin, int* end) {
  const int width = mask.size.width;
  int x = 0;
  while (x < width && !mask.at(x, row)) ++x;
  *begin = *end = x;
  if (x == width) return *begin = *end = 0, true;
  while (x < width && mask.at(x, row)) ++x;
  *end = x;
  while (x < width && !mask.at(x, row)) ++x;
  return x == width;
}

// The four lists of an ellipse, in room for as many entries as the mask has rows.
struct Runs {
  int *rowOffset, *lengthIndex, *length, *reach;
};
Runs runsIn(int* room, int64_t rows, int64_t lengths) {
  return {room, room + rows, room + 2 * rows, room + 2 * rows + lengths};
}

// Inserts a run into the descending list; false where its length is listed with another reach.
bool insertLength(const Runs& runs, int* lengths, int row, int length, int reach) {
  int at = 0;
  while (at < *lengths && runs.length[at] > length) ++at;
  if (at < *lengths && runs.length[at] == length) {
    runs.lengthIndex[row] = at;
    return runs.reach[at] == reach;
  }
  for (int i = *lengths; i > at; --i) runs.length[i] = runs.length[i - 1], runs.reach[i] = runs.reach[i - 1];
  for (int i = 0; i < row; ++i)
    if (runs.lengthIndex[i] >= at) ++runs.lengthIndex[i];
  runs.length[at] = length;
  runs.reach[at] = reach;
  runs.lengthIndex[row] = at;
  ++*lengths;
  return true;
}

Analysis analyse(const Mask& mask, ZebiPoint anchor, const Runs& runs) {
  Analysis a{zebShapeEmpty, mask.size.width, 0, -1, -1, 0, 0};
  bool single = true, alike = true, around = true, consistent = true;
  int firstBegin = 0, firstEnd = 0;
  for (int y = 0; y < mask.size.height && single; ++y) {
    int begin, end;
    single = runOf(mask, y, &begin, &end);
    if (begin == end) continue;
    if (a.firstRow < 0) a.firstRow = y, firstBegin = begin, firstEnd = end;
    alike = alike && begin == firstBegin && end == firstEnd && y == a.firstRow + a.rows;
    around = around && begin <= anchor.x && anchor.x < end;
    a.lastRow = y;
    if (begin < a.firstColumn) a.firstColumn = begin;
    if (end > a.endColumn) a.endColumn = end;
    runs.rowOffset[a.rows] = y - a.firstRow;
    if (consistent && around) consistent = insertLength(runs, &a.lengths, a.rows, end - begin, anchor.x - begin);
    ++a.rows;
  }
  if (a.rows == 0) return a;
  around = around && a.firstRow <= anchor.y && anchor.y <= a.lastRow;
  a.shapeClass = !single                ? zebShapeGeneral
                 : alike                ? zebShapeRectangle
                 : around && consistent ? zebShapeEllipse
                                        : zebShapeGeneral;
  return a;
}

// Images of three and four floats a pixel filter each distinct length of a small ellipse at more cost than they save.
bool toGeneral(MorphKind kind, int64_t area) {
  return kind.typeCode == typeCodeBits ||
         (kind.typeCode == zeb32f && ((kind.channels == 3 && area < 17) || (kind.channels == 4 && area < 49)));
}

int64_t ellipseFormula(int64_t width, int pixelBytes, int64_t height, int64_t lengths) {
  return boundedProduct(boundedProduct(height, lengths) + 1, boundedProduct(width, pixelBytes) + 32) + 20 * height + 36;
}

// Masks that are taken by pieces.
bool hasPlan(MorphKind kind, int shapeClass) {
  return kind.typeCode != typeCodeBits && (shapeClass == zebShapeGeneral || shapeClass == zebShapeEllipse);
}
constexpr int64_t usefulScratch = 96 << 10;

// Where the parts of a state lie, from its start; the mask goes to the next multiple of 16.
struct Layout {
  int64_t shape, shapeBytes, mask, tables, plan, scratch, scratchBytes, room, total;
};

Layout layoutOf(MorphKind kind, int roiWidth, const Mask& mask, const Analysis& a, const Runs& runs, bool ownScratch) {
  const int px = kind.pixelBytes();
  const int64_t area = maskBytes(mask.size);
  Layout l{};
  l.shape = stateHeaderBytes;
  const bool bits = kind.typeCode == typeCodeBits;
  if (a.shapeClass != zebShapeGeneral && !bits) l.shapeBytes = sizeof(ZebiMorphShape);
  ZebiMorphShape shape{};
  switch (a.shapeClass) {
    case zebShapeRectangle:
      l.scratchBytes = rankBufferSize(roiWidth, px, {a.endColumn - a.firstColumn, a.rows});
      break;
    case zebShapeEllipse: {
      l.shapeBytes += 8 * (int64_t(a.rows) + a.lengths);
      l.scratchBytes = ellipseFormula(roiWidth, px, mask.size.height, a.lengths);
      shape.height = a.lastRow - a.firstRow + 1;
      shape.rows = a.rows, shape.lengths = a.lengths;
      shape.rowOffset = runs.rowOffset, shape.lengthIndex = runs.lengthIndex;
      shape.length = runs.length, shape.reach = runs.reach;
      // A mask much wider than the region: its bordered rows do not fit; taken element by element they do.
      const int64_t tight = tightScratchSize(roiWidth, px, mask.size);
      if (ellipseScratchSize(roiWidth, px, shape) > l.scratchBytes && tight > l.scratchBytes) l.room = tight;
      break;
    }
    case zebShapeGeneral:
      l.scratchBytes = bits ? bitScratchSize(roiWidth, mask.size) : generalScratchSize(roiWidth, px, mask.size);
      break;
    default:
      // Copies need a line of bits only.
      l.scratchBytes = bits ? bitScratchSize(roiWidth, {1, 1}) : 0;
      break;
  }
  if (l.room == 0) l.room = l.scratchBytes;
  l.mask = l.shape + l.shapeBytes + 15;
  l.tables = l.mask + area;
  l.plan = l.tables + (a.shapeClass == zebShapeGeneral && !bits ? 2 * boundedProduct(16, area) : 0);
  l.scratch = l.plan + (hasPlan(kind, a.shapeClass) ? CoverPlan::bytes(mask.size) : 0);
  // Of what any mask of this size may need, a plan makes good use of more than its mask alone does.
  if (hasPlan(kind, a.shapeClass)) {
    const int64_t free = ownScratch ? morphStateSize(kind, roiWidth, mask.size) - l.scratch
                                    : morphScratchSize(kind, roiWidth, mask.size);
    const int64_t useful = ownScratch && free > usefulScratch ? usefulScratch : free;
    if (useful > l.room) l.room = useful;
  }
  l.total = l.scratch + (ownScratch ? l.room : 0);
  return l;
}

// An entry stands where the mask has an element: the value that lets the pixel through.
template <class T>
void fillTable(const Zeb8u* mask, int64_t count, T element, T other, Zeb8u* table) {
  for (int64_t i = 0; i < count; ++i) {
    const T value = mask[i] ? element : other;
    for (size_t k = 0; k < 16; k += sizeof(T)) memcpy(table + 16 * i + k, &value, sizeof(T));
  }
}

void fillTables(MorphKind kind, const Zeb8u* mask, int64_t count, Zeb8u* erode, Zeb8u* dilate) {
  const auto both = [=](auto lowest, auto highest) {
    fillTable(mask, count, lowest, highest, erode);
    fillTable(mask, count, highest, lowest, dilate);
  };
  switch (kind.typeCode) {
    case zeb16u:
      return both(Zeb16u(0), Zeb16u(0xFFFF));
    case zeb16s:
      return both(Zeb16s(-0x8000), Zeb16s(0x7FFF));
    case zeb32f:
      return both(-FLT_MAX, FLT_MAX);
    default:
      return both(Zeb8u(0), Zeb8u(0xFF));
  }
}

void fillState(MorphKind kind, int roiWidth, const Mask& mask, ZebiPoint anchor, const Analysis& a, const Runs& runs,
               const Layout& l, bool ownScratch, ZebiMorphState* state) {
  Zeb8u* block = reinterpret_cast<Zeb8u*>(state);
  ZebiMorphState s{};
  s.typeCode = kind.typeCode;
  s.channels = kind.channels;
  s.roiWidth = roiWidth;
  s.minusOne = -1;
  s.shapeClass = a.shapeClass;
  s.width = mask.size.width, s.height = mask.size.height;
  s.anchorX = anchor.x, s.anchorY = anchor.y;
  s.id = kind.id(StateKind::morphology);
  s.scratchSize = static_cast<int>(l.scratchBytes);
  s.room = static_cast<int>(l.room);
  if (l.shapeBytes > 0) {
    s.shape = reinterpret_cast<ZebiMorphShape*>(block + l.shape);
    ZebiMorphShape shape{1, 1, 0, 0, {0, 0}, 0, 0, nullptr, nullptr, nullptr, nullptr};
    if (a.shapeClass != zebShapeEmpty) {
      shape.width = a.endColumn - a.firstColumn, shape.height = a.lastRow - a.firstRow + 1;
      shape.anchorX = anchor.x - a.firstColumn, shape.anchorY = anchor.y - a.firstRow;
    }
    if (a.shapeClass == zebShapeEllipse) {
      s.lengths = shape.lengths = a.lengths;
      shape.rows = a.rows;
      const Runs to = runsIn(reinterpret_cast<int*>(s.shape + 1), a.rows, a.lengths);
      shape.rowOffset = to.rowOffset, shape.lengthIndex = to.lengthIndex;
      shape.length = to.length, shape.reach = to.reach;
      const size_t rows = static_cast<size_t>(a.rows) * sizeof(int);
      const size_t lengths = static_cast<size_t>(a.lengths) * sizeof(int);
      memmove(to.rowOffset, runs.rowOffset, rows);
      memmove(to.lengthIndex, runs.lengthIndex, rows);
      memmove(to.length, runs.length, lengths);
      memmove(to.reach, runs.reach, lengths);
    } else {
      s.width = shape.width, s.height = shape.height;
      s.anchorX = shape.anchorX, s.anchorY = shape.anchorY;
    }
    *s.shape = shape;
  }
  s.mask = reinterpret_cast<Zeb8u*>((reinterpret_cast<uintptr_t>(block + l.mask - 15) + 15) & ~uintptr_t(15));
  const int64_t area = mask.area();
  for (int y = 0; y < mask.size.height; ++y)
    for (int x = 0; x < mask.size.width; ++x)
      s.mask[static_cast<ptrdiff_t>(y) * mask.size.width + x] = mask.bytes[static_cast<ptrdiff_t>(
          mask.reflected ? area - 1 - (int64_t(y) * mask.size.width + x) : int64_t(y) * mask.size.width + x)];
  if (a.shapeClass == zebShapeGeneral) {
    s.rightReach = mask.size.width - anchor.x - 1;
    s.lowerReach = mask.size.height - anchor.y - 1;
  }
  if (l.plan > l.tables) {
    s.erodeTable = s.mask + maskBytes(mask.size);
    s.dilateTable = s.erodeTable + 16 * maskBytes(mask.size);
    fillTables(kind, s.mask, area, s.erodeTable, s.dilateTable);
  }
  if (ownScratch) s.scratch = block + l.scratch;
  if (l.scratch > l.plan) coverOf(s)->make(s.mask, mask.size);
  *state = s;
}

}  // namespace

int64_t maskBytes(ZebiSize mask) {
  return (boundedProduct(mask.width, mask.height) + 15) & ~int64_t(15);
}

// A set element of a mask as the paths list it: where it is, and the pointer that reads there.
constexpr int64_t elementBytes = 8 + sizeof(void*);

int64_t generalScratchSize(int64_t width, int pixelBytes, ZebiSize mask) {
  return boundedProduct(mask.height, scratchStrideBound(width + mask.width - 1, pixelBytes)) +
         boundedProduct(elementBytes, boundedProduct(mask.width, mask.height)) + 96;
}

int64_t tightScratchSize(int64_t width, int pixelBytes, ZebiSize mask) {
  return boundedProduct(mask.height, boundedProduct(width + mask.width - 1, pixelBytes)) +
         boundedProduct(elementBytes, boundedProduct(mask.width, mask.height)) + 16;
}

int64_t ellipseScratchSize(int64_t width, int pixelBytes, const ZebiMorphShape& shape) {
  int64_t left = 0, right = 0, rows = 1;
  for (int j = 0; j < shape.lengths; ++j) {
    const int64_t r = int64_t(shape.length[j]) - 1 - shape.reach[j];
    if (shape.reach[j] > left) left = shape.reach[j];
    if (r > right) right = r;
    int first = 0;
    while (shape.lengthIndex[first] != j) ++first;
    rows += shape.height - shape.rowOffset[first];
  }
  return boundedProduct(rows, scratchStrideBound(width + left + right, pixelBytes)) +
         static_cast<int64_t>(sizeof(void*)) * shape.rows +
         (8 + 2 * static_cast<int64_t>(sizeof(void*))) * shape.lengths + 96;
}

int64_t bitScratchSize(int64_t width, ZebiSize mask) {
  // Eight phases of every row of the mask, and lines for the fetched row, the windows along it and the result.
  return boundedProduct(8 * int64_t(mask.height) + 4,
                        scratchStrideBound(bytesOfBits(width + 2 * (int64_t(mask.width) - 1)) + 9, 1)) +
         boundedProduct(elementBytes, boundedProduct(mask.width, mask.height)) + 96;
}

int64_t morphScratchSize(MorphKind kind, int roiWidth, ZebiSize mask) {
  const int64_t h = mask.height;
  int64_t most = kind.typeCode == typeCodeBits ? bitScratchSize(roiWidth, mask)
                                               : rankBufferSize(roiWidth, kind.pixelBytes(), mask);
  const int64_t ellipse = ellipseFormula(roiWidth, kind.pixelBytes(), h, h);
  if (kind.typeCode != typeCodeBits && ellipse > most) most = ellipse;
  return most + ((24 * h + 15) & ~int64_t(15)) + maskBytes(mask) + ((16 * h + 63) & ~int64_t(15));
}

int64_t morphStateSize(MorphKind kind, int roiWidth, ZebiSize mask) {
  const int64_t r = maskBytes(mask);
  if (kind.typeCode == typeCodeBits) return 3 * r + stateHeaderBytes;
  return 33 * r + 16 * int64_t(mask.height) + stateHeaderBytes + static_cast<int64_t>(sizeof(ZebiMorphShape)) +
         morphScratchSize(kind, roiWidth, mask);
}

ZebStatus buildable(int roiWidth, ZebiSize mask, ZebiPoint anchor) {
  return firstFailure(atLeastOne(roiWidth), hasArea(mask),
                      require(anchor.x >= 0 && anchor.x < mask.width, zebStsErrAnchor),
                      require(anchor.y >= 0 && anchor.y < mask.height, zebStsErrAnchor));
}

namespace {

// Analysis and layout; the lists of an ellipse go to `room`.
ZebStatus plan(MorphKind kind, int roiWidth, const Mask& mask, ZebiPoint anchor, bool ownScratch, const Runs& runs,
               Analysis* a, Layout* l) {
  *a = analyse(mask, anchor, runs);
  if (kind.typeCode == typeCodeBits ? a->shapeClass != zebShapeEmpty
                                    : a->shapeClass == zebShapeEllipse && toGeneral(kind, mask.area()))
    a->shapeClass = zebShapeGeneral;
  *l = layoutOf(kind, roiWidth, mask, *a, runs, ownScratch);
  return l->total > INT32_MAX || l->room > INT32_MAX ? zebStsErrOverflow : zebStsOk;
}

}  // namespace

ZebStatus buildState(MorphKind kind, int roiWidth, const Mask& mask, ZebiPoint anchor, bool ownScratch,
                     ZebiMorphState* state) {
  // The lists are made behind the place where the shape record will be, in room that later holds mask and scratch.
  // Bit-packed states are too small for that, and keep no lists.
  Analysis a;
  Layout l;
  if (kind.typeCode == typeCodeBits) {
    bool empty = true;
    for (int y = 0; y < mask.size.height && empty; ++y)
      for (int x = 0; x < mask.size.width && empty; ++x) empty = !mask.at(x, y);
    a = {empty ? zebShapeEmpty : zebShapeGeneral, 0, 0, 0, 0, 0, 0};
    l = layoutOf(kind, roiWidth, mask, a, Runs(), ownScratch);
    if (l.total > INT32_MAX || l.room > INT32_MAX) return zebStsErrOverflow;
    fillState(kind, roiWidth, mask, anchor, a, Runs(), l, ownScratch, state);
    return zebStsOk;
  }
  if (morphStateSize(kind, roiWidth, mask.size) > INT32_MAX) return zebStsErrOverflow;
  const int64_t h = mask.size.height;
  int* room = reinterpret_cast<int*>(reinterpret_cast<Zeb8u*>(state) + stateHeaderBytes + sizeof(ZebiMorphShape) +
                                     static_cast<ptrdiff_t>(16 * h));
  const Runs runs = runsIn(room, h, h);
  if (auto bad = plan(kind, roiWidth, mask, anchor, ownScratch, runs, &a, &l)) return bad;
  fillState(kind, roiWidth, mask, anchor, a, runs, l, ownScratch, state);
  return zebStsOk;
}

ZebStatus newState(MorphKind kind, int roiWidth, const Mask& mask, ZebiPoint anchor, bool ownScratch,
                   ZebiMorphState** state) {
  const int64_t h = mask.size.height;
  if (16 * h > INT32_MAX || morphStateSize(kind, roiWidth, mask.size) > INT32_MAX) return zebStsErrOverflow;
  int* room = reinterpret_cast<int*>(allocateState(16 * h));
  if (room == nullptr) return zebStsErrMemAlloc;
  const Runs runs = runsIn(room, h, h);
  Analysis a;
  Layout l;
  ZebStatus status = plan(kind, roiWidth, mask, anchor, ownScratch, runs, &a, &l);
  if (status == zebStsOk) {
    ZebiMorphState* made = reinterpret_cast<ZebiMorphState*>(allocateState(l.total));
    if (made == nullptr) {
      status = zebStsErrMemAlloc;
    } else {
      fillState(kind, roiWidth, mask, anchor, a, runs, l, ownScratch, made);
      *state = made;
    }
  }
  zebsFree(room);
  return status;
}

Window reachOf(const ZebiMorphState& state) {
  if (state.shapeClass == zebShapeEmpty) return {0, 0, 0, 0};
  return windowOf({state.width, state.height}, {state.anchorX, state.anchorY});
}

}  // namespace zeb
