// Where a position beside a line of pixels comes from, under each border rule.
//
// A border type is a base rule in its low four bits and side flags above them.
#pragma once

#include <limits.h>
#include <stdint.h>

#include "zebcv/types.h"

namespace zeb {

constexpr int borderBaseMask = 15;
constexpr int borderSideFlags = zebBorderInMemTop | zebBorderInMemBottom | zebBorderInMemLeft | zebBorderInMemRight;

constexpr int borderBase(ZebiBorderType type) {
  return type & borderBaseMask;
}

// A known base rule, and above it nothing or at least one of the side flags.
constexpr bool isBorderType(ZebiBorderType type) {
  const int base = borderBase(type);
  const bool known = (base >= zebBorderConst && base <= zebBorderMirrorR) || base == zebBorderInMem;
  return known && ((type & ~borderBaseMask) == 0 || (type & borderSideFlags) != 0);
}

// What filters take: a constant, the edge repeated, or what is in memory, told by the bits of a border type that a
// family looks at. withoutSides(): all but the side flags. ofThreeBits(): the type with the base rule that its low
// three bits tell.
constexpr ZebStatus takesBorder(int base, ZebStatus otherwise = zebStsErrBorder) {
  return base == zebBorderConst || base == zebBorderRepl || base == zebBorderInMem ? zebStsOk : otherwise;
}
constexpr int withoutSides(ZebiBorderType type) {
  return type & ~borderSideFlags;
}
constexpr ZebiBorderType ofThreeBits(ZebiBorderType type) {
  return type & ~8;
}

// On which sides of a region the pixels beyond the edge exist in memory.
struct Sides {
  bool left = false, right = false, top = false, bottom = false;

  bool any() const { return left || right || top || bottom; }
};
constexpr Sides sidesInMemory(ZebiBorderType border) {
  const bool all = borderBase(border) == zebBorderInMem;
  return {all || (border & zebBorderInMemLeft), all || (border & zebBorderInMemRight),
          all || (border & zebBorderInMemTop), all || (border & zebBorderInMemBottom)};
}

// The same sides in memory, edge pixels repeated beyond the others.
constexpr ZebiBorderType replicatedElsewhere(ZebiBorderType border) {
  return borderBase(border) == zebBorderInMem ? border : (border & ~borderBaseMask) | zebBorderRepl;
}

// What borderSource() answers for a position that takes the constant.
constexpr int borderConstant = INT_MIN;

// Which pixel of a line of n stands at position p, 0 <= p < n or outside, under a base rule: an index in 0..n-1, or
// borderConstant, or p itself under the in-memory rule. Positions farther out than the line is long wrap or reflect as
// often as needed; a line of one pixel is its own reflection. Beside a line of 2^31 - 1 pixels a position is no int.
constexpr int borderSource(int base, int64_t p, int n) {
  if ((p >= 0 && p < n) || base == zebBorderInMem) return static_cast<int>(p);
  switch (base) {
    case zebBorderRepl:
      return p < 0 ? 0 : n - 1;
    case zebBorderWrap: {
      const auto r = static_cast<int>(p % n);
      return r < 0 ? r + n : r;
    }
    case zebBorderMirror: {  // period 2(n - 1): 0 1 .. n-1 n-2 .. 1
      if (n == 1) return 0;
      const int64_t period = 2 * (int64_t{n} - 1), away = p < 0 ? -p : p;
      const int64_t r = away < period ? away : away % period;  // the usual first reflection takes no division
      return static_cast<int>(r < n ? r : period - r);
    }
    case zebBorderMirrorR: {  // period 2n: 0 1 .. n-1 n-1 .. 1 0; p and -1-p are the same pixel
      const int64_t period = 2 * int64_t{n}, away = p < 0 ? -1 - p : p;
      const int64_t r = away < period ? away : away % period;
      return static_cast<int>(r < n ? r : period - 1 - r);
    }
    default:
      return borderConstant;
  }
}

}  // namespace zeb
