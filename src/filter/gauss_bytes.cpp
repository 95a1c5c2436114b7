#include "filter/gauss_bytes.h"

#include "core/loops.h"
#include "core/narrow.h"
#include "core/reduce.h"
#include "core/shuffle.h"

namespace zeb {
namespace {

// Sums of products of at(-reach) .. at(reach): two terms at a time, each the sum of a mirrored pair of at most 2 x
// 16352.
template <class At>
ZEB_INLINE void foldedSums(const Zeb32s* pairs, int reach, At at, V32s& first, V32s& last) {
  const V16s centre = at(0), inner = at(-1) + at(1);
  const V16s taps = as<Zeb16s>(splat(pairs[0]));
  first = dotPairs(interleaveFirst(centre, inner), taps), last = dotPairs(interleaveLast(centre, inner), taps);
  int j = 2;
  for (; j < reach; j += 2) {
    const V16s a = at(-j) + at(j), b = at(-j - 1) + at(j + 1);
    const V16s t = as<Zeb16s>(splat(pairs[j / 2]));
    first = first + dotPairs(interleaveFirst(a, b), t), last = last + dotPairs(interleaveLast(a, b), t);
  }
  if (j == reach) {
    const V16s a = at(-j) + at(j);
    const V16s t = as<Zeb16s>(splat(pairs[j / 2]));
    first = first + dotPairs(interleaveFirst(a, a), t), last = last + dotPairs(interleaveLast(a, a), t);
  }
}

// The reaches whose sums are worth unrolling; others are known at run time.
template <class Run>
ZEB_INLINE void withReach(int reach, Run run) {
  if (reach == 1) return run(std::integral_constant<int, 1>());
  if (reach == 2) return run(std::integral_constant<int, 2>());
  run(reach);
}

}  // namespace

void FoldedTaps::make(const Zeb32s* taps, int reach, Zeb32s* pairs) {
  for (int j = 0; j <= reach; j += 2) {
    const Zeb32s next = j < reach ? taps[reach + j + 1] : 0;
    pairs[j / 2] = taps[reach + j] | next << 16;
  }
}

void gaussRow(const FoldedTaps& taps, const Zeb16s* line, int channels, int n, Zeb16s* out) {
  withReach(taps.reach, [&](auto reach) ZEB_BODY {
    const Zeb16s* const centre = line + static_cast<ptrdiff_t>(static_cast<int>(reach)) * channels;
    const V32s bias = splat(128 + (32 << 8));
    for (int x = 0; x < n; x += 16) {
      V32s first, last;
      foldedSums(
          taps.pairs, reach, [=](int j) ZEB_BODY { return load(centre + x + static_cast<ptrdiff_t>(j) * channels); },
          first, last);
      store(out + x, packSat(shiftRight<8>(first + bias), shiftRight<8>(last + bias)));
    }
  });
}

void gaussColumns(const FoldedTaps& taps, const Zeb16s* const* rows, int n, Zeb8u* out) {
  withReach(taps.reach, [&](auto reach) ZEB_BODY {
    const Zeb16s* const* const centre = rows + static_cast<int>(reach);
    const auto words = [&](int x) ZEB_BODY {
      V32s first, last;
      foldedSums(
          taps.pairs, reach, [=](int j) ZEB_BODY { return load(centre[j] + x); }, first, last);
      return packSat(shiftRight<20>(first), shiftRight<20>(last));
    };
    int x = 0;
    for (; x <= n - 16; x += 16) storeSat(out + x, words(x));
    if (x == n) return;
    Zeb8u block[16];
    storeSat(block, words(x));
    copyFew(out + x, block, n - x);
  });
}

}  // namespace zeb
