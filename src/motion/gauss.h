// What halving and doubling share: their buffers and how they go along a row.
#pragma once

#include <type_traits>

#include "core/checks.h"
#include "core/loops.h"
#include "filter/smooth.h"

namespace zeb {

template <int n>
struct Channels {};

// The body of forOverlappingVectors: block(i) for a whole vector, one(i) for each element of a row shorter than that.
template <class Block, class One>
ZEB_INLINE auto wholeOrEach(Block block, One one) {
  return [=](int i, auto part) ZEB_BODY {
    if constexpr (std::is_same_v<decltype(part), WholeVector>) {
      block(i);
    } else {
      for (int k = i; k < i + part.n; ++k) one(k);
    }
  };
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
