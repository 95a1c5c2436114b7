// What the queries of buffers tell, over all sizes.
#pragma once

#include "function.h"

namespace fuzz {

// The least extent, of rows or columns, for which a query tells no size, or 2^31. ask(n, &bytes) calls it; most(n) is
// what it may tell. On the way there, and at extents of every magnitude, it must keep to that, and refuse nothing that
// fits. Takes nothing from the input.
template <class Ask, class Most>
int64_t leastRefused(Choice peek, Ask ask, Most most) {
  const auto fits = [&](int64_t n) {
    int bytes = -1;
    const ZebStatus status = ask(static_cast<int>(n), &bytes);
    const bool kept = status == zebStsOk ? bytes >= 1 && bytes <= most(n)
                                         : status == zebStsErrOverflow && bytes == -1 && most(n) > INT32_MAX;
    if (!kept)
      require(false, "at an extent of " + std::to_string(n) + " a query returned " + std::to_string(status) +
                         " and told " + std::to_string(bytes) + ", not up to " + std::to_string(most(n)));
    return status == zebStsOk;
  };
  Random random = peek.random();
  for (int64_t n = 1; n <= INT32_MAX; n *= 2) fits(n + random.within(0, static_cast<int>(n - 1)));
  int64_t fitting = 0, refused = int64_t{INT32_MAX} + 1;
  while (refused - fitting > 1) {
    const int64_t middle = (fitting + refused) / 2;
    (fits(middle) ? fitting : refused) = middle;
  }
  return refused;
}
// For queries of which nothing is promised.
inline int64_t anyBytes(int64_t) {
  return INT64_MAX;
}

// The same for a query that takes a size, here of one row, and what else it is told.
template <class Query, class Most, class... Other>
int64_t leastWidthRefused(const Choice& c, const Query& query, Most most, Other... other) {
  const auto ask = [&](int width, int* told) { return query.bare({width, 1}, other..., told); };
  return leastRefused(c, ask, most);
}
// One column with the least height that the query refuses; most: of heights.
template <class Query, class Most, class... Other>
ZebiSize tooHigh(const Choice& c, const Query& query, Most most, Other... other) {
  const auto ask = [&](int height, int* told) { return query.bare({1, height}, other..., told); };
  const int64_t height = leastRefused(c, ask, most);
  require(height <= INT32_MAX, "a query refuses no height");
  return {1, static_cast<int>(height)};
}

// Calls refused(n) for the least extent that a query refuses, if rows of so many bytes a pixel can be that long: the
// function itself must refuse it, too.
template <class Refused>
void atLeastRefused(int64_t n, size_t pixelBytes, Refused refused) {
  if (n <= INT32_MAX / static_cast<int64_t>(pixelBytes)) refused(static_cast<int>(n));
}

// The bytes that a query tells: within its bound, no fewer than for a narrower region, the same for any height.
template <class Ask>
int bufferBytes(Choice& c, ZebiSize size, int64_t most, Ask ask) {
  const int bytes = ask(size);
  const ZebiSize narrower = {c.within(1, size.width), size.height}, higher = {size.width, c.within(1, INT32_MAX)};
  require(bytes >= 1 && bytes <= most, "a query told " + std::to_string(bytes) + " bytes");
  require(ask(narrower) <= bytes && ask(higher) == bytes, "a query falls, or depends on the height");
  return bytes;
}

}  // namespace fuzz
