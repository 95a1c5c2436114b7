// What halving and doubling with the 5 x 5 binomial kernel share.
#pragma once

#include <math.h>

#include <type_traits>

#include "core/checks.h"
#include "core/vec.h"

namespace zeb {

template <int n>
struct Channels {};

// Sums of bytes are formed in 16 unsigned bits. Signed bytes are taken as unsigned ones by flipping their top bit,
// which adds 128 to every pixel and so to every result, exactly.
template <class T>
struct GaussType {
  using Sum = Zeb16u;
  static constexpr Zeb8u flip = std::is_signed_v<T> ? 0x80 : 0;
  static int widened(T v) { return static_cast<Zeb8u>(v) ^ flip; }
  static Sum sum(int a, int b, int c, int d, int e) { return static_cast<Sum>(a + 4 * b + 6 * c + 4 * d + e); }
};
template <>
struct GaussType<Zeb32f> {
  using Sum = Zeb32f;
  static Zeb32f widened(Zeb32f v) { return v; }
  static Sum sum(Sum a, Sum b, Sum c, Sum d, Sum e) { return fmaf(6.0f, c, fmaf(4.0f, b + d, a + e)); }
};
ZEB_INLINE V32f gaussSum(V32f a, V32f b, V32f c, V32f d, V32f e) {
  return fma(splat(6.0f), c, fma(splat(4.0f), b + d, a + e));
}

// Calls block(i) for as many whole blocks as n holds, the last one overlapping the one before it, or one(i) for each
// element when there are fewer. Only where a block may be made twice.
template <class Block, class One>
ZEB_INLINE void forBlocks(int n, Block block, One one, int size) {
  int i = 0;
  if (n >= size) {
    for (; i <= n - size; i += size) block(i);
    if (i < n) block(n - size);
    return;
  }
  for (; i < n; ++i) one(i);
}

// One byte per pixel would do, but the sizes are those of four-byte elements for every type.
constexpr int64_t pyrDownBufferBytes(int width, int channels) {
  return ((static_cast<int64_t>(width) * 4 * channels + 15) >> 4) * 96 + 64;
}
constexpr int64_t pyrUpBufferBytes(int width, int channels) {
  return ((static_cast<int64_t>(width) * 8 * channels + 15) >> 4) * 48 + 64;
}
inline ZebStatus gaussBufferChecks(int width, ZebDataType type, int channels, const int* pBufSize) {
  return firstFailure(present(pBufSize), atLeastOne(width),
                      require(channels == 1 || channels == 3, zebStsErrNumChannels),
                      require(type == zeb8u || type == zeb8s || type == zeb32f, zebStsErrDataType));
}

}  // namespace zeb
