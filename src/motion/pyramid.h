// The sizes of pyramid levels.
#pragma once

#include <stdint.h>

#include "core/checks.h"

namespace zeb {

// Not a number is no rate.
constexpr bool isPyramidRate(Zeb32f rate) {
  return rate > 1.0f && rate <= 10.0f;
}

// Lengths of source that lead to a length n on the way down; beyond 32 bits for lengths near their end.
struct LengthRange {
  int64_t smallest;
  int64_t largest;
};
inline LengthRange pyramidUpRange(int n, Zeb32f rate) {
  const int64_t next = static_cast<int64_t>(n) + 1;
  const int64_t below = static_cast<int64_t>(static_cast<Zeb32f>(n - 1) * rate) + 1;
  const int64_t above = static_cast<int64_t>(static_cast<Zeb32f>(n) * rate);
  return {n == 1 ? 1 : below > next ? below : next, above > next ? above : next};
}

// The length whose range contains n. The products of both ends are the same ones, so the steps cannot swing.
inline int pyramidDownLength(int n, Zeb32f rate) {
  if (n == 1) return 1;
  int down = static_cast<int>(0.5f + static_cast<Zeb32f>(n) / rate);
  if (down < 1) down = 1;
  for (;;) {
    const LengthRange range = pyramidUpRange(down, rate);
    if (n < range.smallest)
      --down;
    else if (n > range.largest)
      ++down;
    else
      return down;
  }
}
inline ZebiSize pyramidDownSize(ZebiSize size, Zeb32f rate) {
  return {pyramidDownLength(size.width, rate), pyramidDownLength(size.height, rate)};
}

// Calls visit(index, size) for the base and each smaller level down to 1 x 1, but for no more than `most`, and returns
// how many there were.
template <class Visit>
inline int64_t forEachLevel(ZebiSize size, Zeb32f rate, int64_t most, Visit visit) {
  int64_t count = 0;
  visit(count++, size);
  while (count < most && (size.width >= 2 || size.height >= 2)) {
    size = pyramidDownSize(size, rate);
    visit(count++, size);
  }
  return count;
}

constexpr bool sameSize(ZebiSize a, ZebiSize b) {
  return a.width == b.width && a.height == b.height;
}

}  // namespace zeb
