// Regions for the flood fills.
#pragma once

#include <algorithm>
#include <cstdlib>

#include "reference/plane.h"
#include "support/random.h"

namespace test {

// Shapes of 0 (the region) and 1 that are hard on span stacks and on the finding of runs.
enum class Shape { sparse, dense, maze, flat, checkerboard, comb, sidewaysComb, spiral, lattice, stripes, hook };
constexpr Shape allShapes[] = {Shape::sparse, Shape::dense,        Shape::maze,   Shape::flat,    Shape::checkerboard,
                               Shape::comb,   Shape::sidewaysComb, Shape::spiral, Shape::lattice, Shape::stripes};

inline ref::Plane<int> shaped(Shape shape, int w, int h, Random& random) {
  ref::Plane<int> p(w, h);
  for (int y = 0; y < h; ++y)
    for (int x = 0; x < w; ++x) {
      const int ring = std::min({x, y, w - 1 - x, h - 1 - y});
      int& v = p.at(x, y);
      switch (shape) {
        case Shape::sparse:
          v = random.within(0, 15) == 0;
          break;
        case Shape::dense:
          v = random.within(0, 2) == 0;
          break;
        case Shape::maze:
          v = random.within(0, 99) < 42;
          break;
        case Shape::flat:
          v = 0;
          break;
        case Shape::checkerboard:
          v = (x + y) & 1;
          break;
        case Shape::comb:
          v = y > 0 && (x & 1);
          break;
        case Shape::sidewaysComb:
          v = x > 0 && (y & 1);
          break;
        case Shape::spiral:  // rings, each open at one place that wanders
          v = (ring & 1) && !(y == ring && x == ring + 1 + ring % 3);
          break;
        case Shape::lattice:  // full rows between rows of single pixels
          v = y % 2 == 0 && (x & 1);
          break;
        case Shape::hook:  // a full row cut in two, single pixels above and below, a way around the cut in the last row
          v = y == 1 ? x == w - w / 8 : (x & 1) && !(y == 2 && std::abs(x - (w - w / 8)) < 3);
          break;
        case Shape::stripes:
          v = (x / 7) & 1;
          break;
      }
    }
  return p;
}

}  // namespace test
