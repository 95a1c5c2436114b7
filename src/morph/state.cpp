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
  int rows;             // with elements
  EllipseExtent lists;  // of an ellipse
};

struct Run {
  int begin, end;

  int length() const { return end - begin; }
};

// The one run of a row, empty where the row has no elements; false where there is a second run.
bool runOf(const Mask& mask, int y, Run* run) {
  const Mask::Row row = mask.row(y);
  const int width = mask.size.width;
  int x = 0;
  while (x < width && !row[x]) ++x;
  run->begin = x;
  while (x < width && row[x]) ++x;
  run->end = x;
  while (x < width && !row[x]) ++x;
  return x == width;
}

// Tells take(length, reach, row) the distinct lengths of runs, longest first, how far their runs reach to the left of
// the anchor, and the first row, from the first with elements, that has each. False where a length has two reaches.
// A pass over the rows finds the longest that were not told yet, as many as the stack is to hold.
template <class Take>
bool eachLength(const Mask& mask, int anchor, const Analysis& a, Take take) {
  constexpr int most = 256;
  struct {
    int length, reach, row;
  } found[most];
  for (int count = most, below = INT32_MAX; count == most; below = found[most - 1].length) {
    count = 0;
    for (int y = a.firstRow; y <= a.lastRow; ++y) {
      Run run;
      runOf(mask, y, &run);
      const int length = run.length(), reach = anchor - run.begin;
      if (length == 0 || length >= below) continue;
      int at = count;
      while (at > 0 && found[at - 1].length < length) --at;
      if (at > 0 && found[at - 1].length == length) {
        if (found[at - 1].reach != reach) return false;
        continue;
      }
      if (at == most) continue;
      if (count < most) ++count;
      for (int i = count - 1; i > at; --i) found[i] = found[i - 1];
      found[at] = {length, reach, y - a.firstRow};
    }
    for (int i = 0; i < count; ++i) take(found[i].length, found[i].reach, found[i].row);
  }
  return true;
}

// Images of three and four floats a pixel filter each distinct length of a small ellipse at more cost than they save.
bool toGeneral(MorphKind kind, int64_t area) {
  return kind.typeCode == zeb32f && ((kind.channels == 3 && area < 17) || (kind.channels == 4 && area < 49));
}

Analysis analyse(MorphKind kind, const Mask& mask, ZebiPoint anchor) {
  Analysis a{zebShapeEmpty, mask.size.width, 0, -1, -1, 0, {}};
  bool single = true, alike = true, around = true;
  Run first{0, 0};
  for (int y = 0; y < mask.size.height && single; ++y) {
    Run run;
    single = runOf(mask, y, &run);
    if (run.length() == 0) continue;
    if (a.firstRow < 0) a.firstRow = y, first = run;
    alike = alike && run.begin == first.begin && run.end == first.end && y == a.firstRow + a.rows;
    around = around && run.begin <= anchor.x && anchor.x < run.end;
    a.lastRow = y;
    if (run.begin < a.firstColumn) a.firstColumn = run.begin;
    if (run.end > a.endColumn) a.endColumn = run.end;
    ++a.rows;
  }
  if (a.rows == 0) return a;
  a.shapeClass = zebShapeGeneral;
  if (!single || kind.typeCode == typeCodeBits) return a;
  if (alike) return a.shapeClass = zebShapeRectangle, a;
  if (!around || anchor.y < a.firstRow || anchor.y > a.lastRow || toGeneral(kind, mask.area())) return a;
  const int height = a.lastRow - a.firstRow + 1;
  a.lists.rows = a.rows;
  const bool consistent =
      eachLength(mask, anchor.x, a, [&](int length, int reach, int row) { a.lists.add(length, reach, height - row); });
  if (consistent) a.shapeClass = zebShapeEllipse;
  return a;
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

Layout layoutOf(MorphKind kind, int roiWidth, const Mask& mask, const Analysis& a, bool ownScratch) {
  const int px = kind.pixelBytes();
  const int64_t area = maskBytes(mask.size);
  Layout l{};
  l.shape = stateHeaderBytes;
  const bool bits = kind.typeCode == typeCodeBits;
  if (a.shapeClass != zebShapeGeneral && !bits) l.shapeBytes = sizeof(ZebiMorphShape);
  switch (a.shapeClass) {
    case zebShapeRectangle:
      l.scratchBytes = rankBufferSize(roiWidth, px, {a.endColumn - a.firstColumn, a.rows});
      break;
    case zebShapeEllipse: {
      l.shapeBytes += 8 * (int64_t(a.rows) + a.lists.lengths);
      l.scratchBytes = ellipseFormula(roiWidth, px, mask.size.height, a.lists.lengths);
      // A mask much wider than the region: its bordered rows do not fit; taken element by element they do.
      const int64_t tight = tightScratchSize(roiWidth, px, mask.size);
      if (ellipseScratchSize(roiWidth, px, a.lists) > l.scratchBytes && tight > l.scratchBytes) l.room = tight;
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

// The lists of an ellipse, right behind its record.
void fillLists(const Mask& mask, int anchor, const Analysis& a, ZebiMorphShape* shape) {
  shape->rows = a.rows;
  shape->rowOffset = reinterpret_cast<int*>(shape + 1);
  shape->lengthIndex = shape->rowOffset + a.rows;
  shape->length = shape->lengthIndex + a.rows;
  shape->reach = shape->length + a.lists.lengths;
  eachLength(mask, anchor, a, [&](int length, int reach, int) {
    shape->length[shape->lengths] = length;
    shape->reach[shape->lengths++] = reach;
  });
  for (int y = a.firstRow, i = 0; y <= a.lastRow; ++y) {
    Run run;
    runOf(mask, y, &run);
    if (run.length() == 0) continue;
    int index = 0;
    while (shape->length[index] != run.length()) ++index;
    shape->rowOffset[i] = y - a.firstRow;
    shape->lengthIndex[i++] = index;
  }
}

void fillState(MorphKind kind, int roiWidth, const Mask& mask, ZebiPoint anchor, const Analysis& a, const Layout& l,
               bool ownScratch, ZebiMorphState* state) {
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
    ZebiMorphShape& shape = *s.shape;
    shape = {1, 1, 0, 0, {0, 0}, 0, 0, nullptr, nullptr, nullptr, nullptr};
    if (a.shapeClass != zebShapeEmpty) {
      shape.width = a.endColumn - a.firstColumn, shape.height = a.lastRow - a.firstRow + 1;
      shape.anchorX = anchor.x - a.firstColumn, shape.anchorY = anchor.y - a.firstRow;
    }
    if (a.shapeClass == zebShapeEllipse) {
      fillLists(mask, anchor.x, a, s.shape);
      s.lengths = shape.lengths;
    } else {
      s.width = shape.width, s.height = shape.height;
      s.anchorX = shape.anchorX, s.anchorY = shape.anchorY;
    }
  }
  s.mask = reinterpret_cast<Zeb8u*>((reinterpret_cast<uintptr_t>(block + l.mask - 15) + 15) & ~uintptr_t(15));
  const int64_t area = mask.area();
  for (int y = 0; y < mask.size.height; ++y) {
    const Mask::Row row = mask.row(y);
    Zeb8u* const out = s.mask + static_cast<ptrdiff_t>(y) * mask.size.width;
    for (int x = 0; x < mask.size.width; ++x) out[x] = row[x];
  }
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

int64_t ellipseScratchSize(int64_t width, int pixelBytes, const EllipseExtent& e) {
  return boundedProduct(e.kept + 1, scratchStrideBound(width + e.left + e.right, pixelBytes)) +
         static_cast<int64_t>(sizeof(void*)) * e.rows + (8 + 2 * static_cast<int64_t>(sizeof(void*))) * e.lengths + 96;
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

ZebStatus plan(MorphKind kind, int roiWidth, const Mask& mask, ZebiPoint anchor, bool ownScratch, Analysis* a,
               Layout* l) {
  if (morphStateSize(kind, roiWidth, mask.size) > INT32_MAX || morphScratchSize(kind, roiWidth, mask.size) > INT32_MAX)
    return zebStsErrOverflow;
  *a = analyse(kind, mask, anchor);
  *l = layoutOf(kind, roiWidth, mask, *a, ownScratch);
  return l->total > INT32_MAX || l->room > INT32_MAX ? zebStsErrOverflow : zebStsOk;
}

}  // namespace

ZebStatus buildState(MorphKind kind, int roiWidth, const Mask& mask, ZebiPoint anchor, bool ownScratch,
                     ZebiMorphState* state) {
  Analysis a;
  Layout l;
  if (auto bad = plan(kind, roiWidth, mask, anchor, ownScratch, &a, &l)) return bad;
  fillState(kind, roiWidth, mask, anchor, a, l, ownScratch, state);
  return zebStsOk;
}

ZebStatus newState(MorphKind kind, int roiWidth, const Mask& mask, ZebiPoint anchor, bool ownScratch,
                   ZebiMorphState** state) {
  Analysis a;
  Layout l;
  if (auto bad = plan(kind, roiWidth, mask, anchor, ownScratch, &a, &l)) return bad;
  ZebiMorphState* made = reinterpret_cast<ZebiMorphState*>(allocateState(l.total));
  if (made == nullptr) return zebStsErrMemAlloc;
  fillState(kind, roiWidth, mask, anchor, a, l, ownScratch, made);
  *state = made;
  return zebStsOk;
}

Window reachOf(const ZebiMorphState& state) {
  if (state.shapeClass == zebShapeEmpty) return {0, 0, 0, 0};
  return windowOf({state.width, state.height}, {state.anchorX, state.anchorY});
}

}  // namespace zeb
