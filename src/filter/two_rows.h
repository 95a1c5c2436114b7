// Two neighbouring output rows of a column filter at a time: the rows that a pair of taps needs are interleaved once
// and serve both outputs, the upper one under taps (0, 1), (2, 3), ..., the lower one under (-, 0), (1, 2), ...
#pragma once

#include "core/narrow.h"
#include "core/reduce.h"
#include "core/shuffle.h"
#include "filter/separable.h"

namespace zeb {

// The pairs of taps of the upper and of the lower output, a 0 where there is no tap.
template <int taps>
class TwoRowTaps {
 public:
  TwoRowTaps(const Zeb16s* kernel, int) {
    static_assert(taps % 2 == 1);
    Zeb16s padded[taps + 2] = {};
    for (int j = 0; j < taps; ++j) padded[j + 1] = kernel[j];
    for (int j = 0; j < pairs; ++j) {
      upper_[j] = splatPair(padded + 1 + 2 * j);
      lower_[j] = splatPair(padded + 2 * j);
    }
  }
  constexpr int count() const { return taps; }
  V16s upper(int j) const { return upper_[j]; }
  V16s lower(int j) const { return lower_[j]; }

 private:
  static constexpr int pairs = (taps + 1) / 2;
  V16s upper_[pairs], lower_[pairs];
};

template <int taps, class Scale>
struct TwoRowSums {
  Stacked<Zeb16s, taps + 1> source;
  TwoRowTaps<taps> kernel;
  Scale scale;

  template <Rounding rounding, class D>
  ZEB_INLINE void block(int i, D* upper, D* lower) const {
    V32s a = splat(0), b = a, c = a, d = a;
    for (int j = 0; j < (kernel.count() + 1) / 2; ++j) {
      const V16s p = load(source.tap(2 * j) + i), q = load(source.tap(2 * j + 1) + i);
      const V16s first = interleaveFirst(p, q), last = interleaveLast(p, q);
      a = a + dotPairs(first, kernel.upper(j));
      b = b + dotPairs(last, kernel.upper(j));
      c = c + dotPairs(first, kernel.lower(j));
      d = d + dotPairs(last, kernel.lower(j));
      settle(a), settle(b), settle(c), settle(d);
    }
    storeSat(upper, lower, packSat(scale.template operator()<rounding>(a), scale.template operator()<rounding>(b)),
             packSat(scale.template operator()<rounding>(c), scale.template operator()<rounding>(d)));
  }
};

// At least one block. Whole blocks to the nearest, the elements after the last of them truncated.
template <class Sums, class D>
inline void filterTwoRows(const Sums& sums, D* upper, D* lower, int n) {
  int i = 0;
  for (; i <= n - filterBlock; i += filterBlock) sums.template block<Rounding::nearest>(i, upper + i, lower + i);
  if (i == n) return;
  D last[2][filterBlock];
  sums.template block<Rounding::truncate>(n - filterBlock, last[0], last[1]);
  const int from = filterBlock - (n - i);
  copyFew(upper + i, last[0] + from, (n - i) * static_cast<int>(sizeof(D)));
  copyFew(lower + i, last[1] + from, (n - i) * static_cast<int>(sizeof(D)));
}

}  // namespace zeb
