#include "feature/canny.h"

namespace zeb {

namespace {

// Words at any address.
using Place __attribute__((aligned(1))) = int;

// Visits what the edge at a place of the map reaches.
void spread(Zeb8u* map, int step, int from, Place* stack) {
  const int around[8] = {-step - 1, -step, -step + 1, -1, 1, step - 1, step, step + 1};
  int count = 0;
  for (int place = from;;) {
    map[place] |= cannyVisited;
    for (int offset : around) {
      Zeb8u& pixel = map[place + offset];
      if ((pixel & (cannyCandidate | cannyEdge)) != cannyCandidate) continue;
      pixel |= cannyEdge;
      stack[count++] = place + offset;
    }
    if (count == 0) return;
    place = stack[--count];
  }
}

}  // namespace

void hysteresis(const CannyMap& map, ZebiSize roi, Scratch& scratch, Rows<Zeb8u> dst) {
  auto* stack = reinterpret_cast<Place*>(scratch.take<Zeb8u>(4 * cannyMapBytes(roi), 1));
  const V8u kind = splat(Zeb8u(cannyEdge | cannyVisited)), fresh = splat(cannyEdge);
  for (int y = 0; y < roi.height; ++y) {
    Zeb8u* row = map.row(y);
    const auto visit = [&](int x) {
      // An earlier visit in this vector may have reached it.
      if ((row[x] & (cannyEdge | cannyVisited)) == cannyEdge) spread(map.first, map.step, y * map.step + x, stack);
    };
    int x = 0;
    for (; x <= roi.width - 32; x += 32)
      for (unsigned edges = topBits(equal(load(row + x) & kind, fresh)); edges; edges &= edges - 1)
        visit(x + __builtin_ctz(edges));
    for (; x < roi.width; ++x) visit(x);
  }
  for (int y = 0; y < roi.height; ++y) {
    const Zeb8u* row = map.row(y);
    Zeb8u* out = dst[y];
    forVectors<32>(0, roi.width,
                   [&](int x, auto part) ZEB_BODY { part.to(out + x, equal(part.from(row + x) & fresh, fresh)); });
  }
}

}  // namespace zeb
