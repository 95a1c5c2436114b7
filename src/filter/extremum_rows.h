// Kernels that take the extremum of several rows, element by element. Morphology and the rank filters are made of them:
// taps of one row at several offsets are rows too.
//
// An Op names the element type and the extremum of two values, as a vector and as one element. Bit-packed images take
// part with the conjunction and the disjunction of bytes.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include <limits>

#include "core/vec.h"

namespace zeb {

template <class T>
struct Lowest {
  using Type = T;
  // Not below any value that counts.
  static constexpr T neutral = std::numeric_limits<T>::max();
  static ZEB_INLINE Vec<T> pick(Vec<T> a, Vec<T> b) { return min(a, b); }
  static ZEB_INLINE T pick(T a, T b) { return a < b ? a : b; }
};
template <class T>
struct Highest {
  using Type = T;
  static constexpr T neutral = std::numeric_limits<T>::lowest();
  static ZEB_INLINE Vec<T> pick(Vec<T> a, Vec<T> b) { return max(a, b); }
  static ZEB_INLINE T pick(T a, T b) { return a > b ? a : b; }
};
struct EveryBit {
  using Type = Zeb8u;
  static ZEB_INLINE V8u pick(V8u a, V8u b) { return a & b; }
  static ZEB_INLINE Zeb8u pick(Zeb8u a, Zeb8u b) { return a & b; }
};
struct AnyBit {
  using Type = Zeb8u;
  static ZEB_INLINE V8u pick(V8u a, V8u b) { return a | b; }
  static ZEB_INLINE Zeb8u pick(Zeb8u a, Zeb8u b) { return a | b; }
};

// ---- out[x] = extremum of rows[0..count-1][x] ----

template <class Op, int vectors, class T>
ZEB_INLINE void combineBlock(const T* const* rows, int count, ptrdiff_t x, T* out) {
  constexpr int lanes = Vec<T>::lanes;
  Vec<T> best[vectors];
  const T* first = rows[0] + x;
  for (int k = 0; k < vectors; ++k) best[k] = load(first + k * lanes);
  for (int i = 1; i < count; ++i) {
    const T* p = rows[i] + x;
    for (int k = 0; k < vectors; ++k) best[k] = Op::pick(best[k], load(p + k * lanes));
  }
  for (int k = 0; k < vectors; ++k) store(out + x + k * lanes, best[k]);
}

template <class Op, class T>
ZEB_INLINE ptrdiff_t combineBlocks(const T* const* rows, int count, T* out, ptrdiff_t n) {
  constexpr int lanes = Vec<T>::lanes;
  ptrdiff_t x = 0;
  for (; x <= n - 4 * lanes; x += 4 * lanes) combineBlock<Op, 4>(rows, count, x, out);
  for (; x <= n - lanes; x += lanes) combineBlock<Op, 1>(rows, count, x, out);
  return x;
}

// Few rows, of which the compiler knows how many: no loop over them.
template <class Op, class T>
ZEB_INLINE ptrdiff_t combineWhole(const T* const* rows, int count, T* out, ptrdiff_t n) {
  switch (count) {
    case 1:
      return combineBlocks<Op>(rows, 1, out, n);
    case 2:
      return combineBlocks<Op>(rows, 2, out, n);
    case 3:
      return combineBlocks<Op>(rows, 3, out, n);
    case 4:
      return combineBlocks<Op>(rows, 4, out, n);
    case 5:
      return combineBlocks<Op>(rows, 5, out, n);
    case 7:
      return combineBlocks<Op>(rows, 7, out, n);
    default:
      return combineBlocks<Op>(rows, count, out, n);
  }
}

// Exactly n elements. The last vector overlaps the one before it, so out must not be one of the rows.
template <class Op, class T = typename Op::Type>
inline void combineRows(const T* const* rows, int count, T* out, ptrdiff_t n) {
  constexpr int lanes = Vec<T>::lanes;
  ptrdiff_t x = combineWhole<Op>(rows, count, out, n);
  if (x == n) return;
  if (n >= lanes) {
    combineBlock<Op, 1>(rows, count, n - lanes, out);
    return;
  }
  for (; x < n; ++x) {
    T best = rows[0][x];
    for (int i = 1; i < count; ++i) best = Op::pick(best, rows[i][x]);
    out[x] = best;
  }
}

// n rounded up to whole vectors, for scratch rows with a vector to spare. out may be rows[0] where no row starts before
// it: a block is read from every row before it is stored.
template <class Op, class T = typename Op::Type>
inline void combinePadded(const T* const* rows, int count, T* out, ptrdiff_t n) {
  const ptrdiff_t x = combineWhole<Op>(rows, count, out, n);
  if (x < n) combineBlock<Op, 1>(rows, count, x, out);
}

// ---- Two windows of h rows at once, h >= 2: of rows[0..h-1] and of rows[1..h] ----

template <class Op, int vectors, class T>
ZEB_INLINE void combinePairBlock(const T* const* rows, int h, ptrdiff_t x, T* out0, T* out1) {
  constexpr int lanes = Vec<T>::lanes;
  Vec<T> both[vectors];
  const T* p = rows[1] + x;
  for (int k = 0; k < vectors; ++k) both[k] = load(p + k * lanes);
  for (int i = 2; i < h; ++i) {
    p = rows[i] + x;
    for (int k = 0; k < vectors; ++k) both[k] = Op::pick(both[k], load(p + k * lanes));
  }
  p = rows[0] + x;
  for (int k = 0; k < vectors; ++k) store(out0 + x + k * lanes, Op::pick(both[k], load(p + k * lanes)));
  p = rows[h] + x;
  for (int k = 0; k < vectors; ++k) store(out1 + x + k * lanes, Op::pick(both[k], load(p + k * lanes)));
}

template <class Op, class T = typename Op::Type>
inline void combinePair(const T* const* rows, int h, T* out0, T* out1, ptrdiff_t n) {
  constexpr int lanes = Vec<T>::lanes;
  if (n < lanes) {
    combineRows<Op>(rows, h, out0, n);
    combineRows<Op>(rows + 1, h, out1, n);
    return;
  }
  ptrdiff_t x = 0;
  if (h == 3) {
    for (; x <= n - 4 * lanes; x += 4 * lanes) combinePairBlock<Op, 4>(rows, 3, x, out0, out1);
  } else {
    for (; x <= n - 4 * lanes; x += 4 * lanes) combinePairBlock<Op, 4>(rows, h, x, out0, out1);
  }
  for (; x <= n - lanes; x += lanes) combinePairBlock<Op, 1>(rows, h, x, out0, out1);
  if (x < n) combinePairBlock<Op, 1>(rows, h, n - lanes, out0, out1);
}

// ---- Running windows ----

// suffix row i = extremum of rows[i..count-1], for every i; rows of suffix are stride elements apart.
template <class Op, int vectors, class T>
ZEB_INLINE void suffixBlock(const T* const* rows, int count, ptrdiff_t x, T* suffix, ptrdiff_t stride) {
  constexpr int lanes = Vec<T>::lanes;
  Vec<T> best[vectors];
  const T* p = rows[count - 1] + x;
  T* out = suffix + (count - 1) * stride + x;
  for (int k = 0; k < vectors; ++k) {
    best[k] = load(p + k * lanes);
    store(out + k * lanes, best[k]);
  }
  for (int i = count - 2; i >= 0; --i) {
    p = rows[i] + x;
    out -= stride;
    for (int k = 0; k < vectors; ++k) {
      best[k] = Op::pick(best[k], load(p + k * lanes));
      store(out + k * lanes, best[k]);
    }
  }
}
template <class Op, class T = typename Op::Type>
inline void suffixRows(const T* const* rows, int count, T* suffix, ptrdiff_t stride, ptrdiff_t n) {
  constexpr int lanes = Vec<T>::lanes;
  ptrdiff_t x = 0;
  for (; x <= n - 4 * lanes; x += 4 * lanes) suffixBlock<Op, 4>(rows, count, x, suffix, stride);
  for (; x <= n - lanes; x += lanes) suffixBlock<Op, 1>(rows, count, x, suffix, stride);
  if (x == n) return;
  if (n >= lanes) {
    suffixBlock<Op, 1>(rows, count, n - lanes, suffix, stride);
    return;
  }
  for (; x < n; ++x) {
    T best = rows[count - 1][x];
    for (int i = count - 1; i >= 0; --i) suffix[i * stride + x] = best = Op::pick(best, rows[i][x]);
  }
}

// prefix = extremum of prefix and row; out = extremum of prefix and suffix. Doing an element twice changes nothing.
template <class Op, class T = typename Op::Type>
inline void advanceRow(const T* row, T* prefix, const T* suffix, T* out, ptrdiff_t n) {
  constexpr int lanes = Vec<T>::lanes;
  const auto block = [=](ptrdiff_t x) {
    const Vec<T> p = Op::pick(load(prefix + x), load(row + x));
    store(prefix + x, p);
    store(out + x, Op::pick(p, load(suffix + x)));
  };
  ptrdiff_t x = 0;
  for (; x <= n - 2 * lanes; x += 2 * lanes) {
    block(x);
    block(x + lanes);
  }
  for (; x <= n - lanes; x += lanes) block(x);
  if (x == n) return;
  if (n >= lanes) return block(n - lanes);
  for (; x < n; ++x) {
    prefix[x] = Op::pick(prefix[x], row[x]);
    out[x] = Op::pick(prefix[x], suffix[x]);
  }
}

// ---- Windows along a row by repeated widening ----

// The extremum over cur elements becomes that over `wider` in passes of at most `radix` taps each: a window is covered
// by overlapping shorter ones. The radix is the one with the least loads and stores over all passes.
inline int bestRadix(int64_t cur, int64_t wider) {
  int best = 8;
  double least = 1e30;
  for (int radix = 2; radix <= 8; ++radix) {
    double cost = 0;
    for (int64_t w = cur; w < wider; w *= radix) {
      const int64_t taps = (wider + w - 1) / w;
      cost += 1.5 + static_cast<double>(taps < radix ? taps : radix);
    }
    if (cost < least) least = cost, best = radix;
  }
  return best;
}

// from[x] holds the extremum over cur pixels from x on; out[x] gets that over `wider`, for pixels 0..n-1, n elements in
// all. Passes before the last go to temp (which may be from itself), rounded up to whole vectors; padded says whether
// the last may, too. When no pass is needed, the row is copied.
template <class Op, class T = typename Op::Type>
inline void widenRow(const T* from, int64_t cur, T* out, int64_t wider, T* temp, int channels, ptrdiff_t n, int radix,
                     bool padded) {
  const T* taps[8];
  for (;;) {
    const int64_t next = cur * radix < wider ? cur * radix : wider;
    const bool last = next == wider;
    int count = 0;
    for (int64_t at = 0; at + cur < next; at += cur) taps[count++] = from + static_cast<ptrdiff_t>(at * channels);
    taps[count++] = from + static_cast<ptrdiff_t>((next - cur) * channels);
    if (last && !padded) return combineRows<Op>(taps, count, out, n);
    if (last) return combinePadded<Op>(taps, count, out, n);
    combinePadded<Op>(taps, count, temp, n + static_cast<ptrdiff_t>((wider - next) * channels));
    from = temp;
    cur = next;
  }
}

}  // namespace zeb
