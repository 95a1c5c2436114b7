// Kernels that take the extremum of several rows, element by element. Morphology and the rank filters are made of them:
// taps of one row at several offsets are rows too.
//
// An Op names the element type and the extremum of two values, as a vector and as one element. Bit-packed images take
// part with the conjunction and the disjunction of bytes.
#pragma once

#include <assert.h>
#include <stddef.h>
#include <stdint.h>

#include <limits>

#include "core/loops.h"
#include "core/streaming.h"
#include "core/vec.h"

namespace zeb {

template <class T, bool lowest>
struct Extremum {
  using Type = T;
  // Not below, or not above, any value that counts.
  static constexpr T neutral = lowest ? std::numeric_limits<T>::max() : std::numeric_limits<T>::lowest();

  template <class V>
  static ZEB_INLINE V begin(V first) {
    return first;
  }
  static ZEB_INLINE Vec<T> pick(Vec<T> best, Vec<T> v) { return lowest ? min(best, v) : max(best, v); }
  static ZEB_INLINE T pick(T best, T v) { return (lowest ? best < v : best > v) ? best : v; }
};
template <class T>
struct Lowest : Extremum<T, true> {
  using Numbers = Lowest;
};
template <class T>
struct Highest : Extremum<T, false> {
  using Numbers = Highest;
};

// Of floats, what is not a number takes no part. A comparison begins with begin(first value), where an infinity stands
// for it, and goes on with pick(extremum so far, value): of two operands the processor's minimum and maximum give the
// second where either is no number. What comes out are numbers, so that the first of several passes is enough.
template <bool lowest>
struct ExtremumOfNumbers : Extremum<Zeb32f, lowest> {
  static constexpr Zeb32f farthest = std::numeric_limits<Zeb32f>::infinity() * (lowest ? 1 : -1);
  static ZEB_INLINE V32f begin(V32f first) { return pick(splat(farthest), first); }
  static ZEB_INLINE Zeb32f begin(Zeb32f first) { return pick(farthest, first); }
  static ZEB_INLINE V32f pick(V32f best, V32f v) { return lowest ? min(v, best) : max(v, best); }
  static ZEB_INLINE Zeb32f pick(Zeb32f best, Zeb32f v) { return (lowest ? v < best : v > best) ? v : best; }
};
template <>
struct Lowest<Zeb32f> : Extremum<Zeb32f, true> {
  using Numbers = ExtremumOfNumbers<true>;
};
template <>
struct Highest<Zeb32f> : Extremum<Zeb32f, false> {
  using Numbers = ExtremumOfNumbers<false>;
};

struct EveryBit {
  using Type = Zeb8u;
  static ZEB_INLINE V8u begin(V8u first) { return first; }
  static ZEB_INLINE V8u pick(V8u a, V8u b) { return a & b; }
};
struct AnyBit {
  using Type = Zeb8u;
  static ZEB_INLINE V8u begin(V8u first) { return first; }
  static ZEB_INLINE V8u pick(V8u a, V8u b) { return a | b; }
};

// ---- out[x] = extremum of rows[0..count-1][x], for several lines of each ----

// fixed: how many rows there are, where the compiler is to know; else there are two at least. Pointers are taken anew:
// else the compiler splits sums of row and column up and keeps a column for each vector, in memory.
template <class Op, int vectors, int fixed, class T>
ZEB_INLINE void combineBlock(const T* const* rows, int count, ptrdiff_t x, T* out) {
  constexpr int lanes = Vec<T>::lanes;
  assert(fixed > 0 || count > 1);
  Vec<T> best[vectors];
  const T* p = rows[0] + x;
#pragma GCC unroll 8
  for (int k = 0; k < vectors; ++k) best[k] = Op::begin(load(p + k * lanes));
  const auto tap = [&](const T* p) ZEB_BODY {
#pragma GCC unroll 8
    for (int k = 0; k < vectors; ++k) best[k] = Op::pick(best[k], load(p + k * lanes));
  };
  if constexpr (fixed > 0) {
#pragma GCC unroll 8
    for (int i = 1; i < fixed; ++i) tap(anew(rows[i] + x));
  } else {
    const T* const* const end = rows + count - 1;
    if constexpr (vectors <= 2)
      for (; end - rows > 4; rows += 4) {
#pragma GCC unroll 4
        for (int i = 1; i <= 4; ++i) tap(anew(rows[i] + x));
      }
    do {
      tap(anew(*++rows + x));
#pragma GCC unroll 8
      for (int k = 0; k < vectors; ++k) settle(best[k]);  // one register, no copy for behind the loop
    } while (rows != end);
  }
#pragma GCC unroll 8
  for (int k = 0; k < vectors; ++k) store(out + k * lanes, best[k]);
}

// Lines of n elements: where each begins, from the one before, in the rows and in the result.
struct Lines {
  int count;
  ptrdiff_t step, outStep;
};
constexpr Lines oneLine{1, 0, 0};

// Behind n elements in whole vectors of floats one of numbers, where the next pass may look.
template <class T>
ZEB_INLINE void numbersBehind([[maybe_unused]] T* out, [[maybe_unused]] ptrdiff_t n) {
  constexpr int lanes = Vec<T>::lanes;
  if constexpr (std::is_floating_point_v<T>) store(out + ((n + lanes - 1) & -lanes), splat(T(0)));
}

// The same columns of every line, of which there is one at least; of the rows those `from` elements further on.
template <class Op, int vectors, int fixed, class T>
ZEB_INLINE void combineColumns(const T* const* rows, int count, ptrdiff_t from, T* out, const Lines& lines) {
  const ptrdiff_t step = lines.step, outStep = lines.outStep;
  int y = lines.count;
  do {
    if (vectors > 2)
#pragma GCC unroll 8
      for (int k = 0; k < vectors; k += 2) fetchAhead(out + k * Vec<T>::lanes);
    combineBlock<Op, vectors, fixed>(rows, count, from, out);
    from += step, out += outStep;
  } while (--y > 0);
}

template <class Op, int fixed, class T>
ZEB_INLINE void combineBlocks(const T* const* rows, int count, ptrdiff_t from, T* out, ptrdiff_t n, const Lines& lines,
                              bool exact) {
  constexpr int lanes = Vec<T>::lanes;
  const ptrdiff_t last = exact ? n - lanes : n;
  ptrdiff_t x = 0;
  // Worth a loop of its own where memory keeps up with it.
  if (sizeof(T) == 1 && lines.count == 1) {
    for (; x <= n - 6 * lanes; x += 6 * lanes) {
#pragma GCC unroll 8
      for (int k = 0; k < 6; k += 2) fetchAhead(out + x + k * lanes);
      combineBlock<Op, 6, fixed>(rows, count, from + x, out + x);
    }
  }
  for (; x <= n - 6 * lanes; x += 6 * lanes) combineColumns<Op, 6, fixed>(rows, count, from + x, out + x, lines);
  for (; x <= n - 2 * lanes; x += 2 * lanes) combineColumns<Op, 2, fixed>(rows, count, from + x, out + x, lines);
  for (; x < n; x += lanes) {
    const ptrdiff_t at = x < last ? x : last;
    combineColumns<Op, 1, fixed>(rows, count, from + at, out + at, lines);
  }
}

// Of few rows the compiler knows how many: no loop over them. Exactly n elements, at least a vector of them, the last
// vector overlapping the one before it; or n rounded up to whole vectors.
template <class Op, class T>
__attribute__((noinline)) void combineBlocksOf(const T* const* rows, int count, ptrdiff_t from, T* out, ptrdiff_t n,
                                               const Lines& lines, bool exact) {
  switch (count) {
    case 1:
      return combineBlocks<Op, 1>(rows, count, from, out, n, lines, exact);
    case 2:
      return combineBlocks<Op, 2>(rows, count, from, out, n, lines, exact);
    case 3:
      return combineBlocks<Op, 3>(rows, count, from, out, n, lines, exact);
    case 5:
      return combineBlocks<Op, 5>(rows, count, from, out, n, lines, exact);
    case 7:
      return combineBlocks<Op, 7>(rows, count, from, out, n, lines, exact);
    default:
      return combineBlocks<Op, 0>(rows, count, from, out, n, lines, exact);
  }
}

// Lines of so many vectors or fewer go together, column by column, so that little is left to do for each; longer ones
// one after the other, as memory likes it.
constexpr ptrdiff_t shortLine = 32;
template <class Op, class T>
void combineWhole(const T* const* rows, int count, ptrdiff_t from, T* out, ptrdiff_t n, const Lines& lines,
                  bool exact) {
  if (n <= shortLine * Vec<T>::lanes) {
    combineBlocksOf<Op>(rows, count, from, out, n, lines, exact);
  } else {
    T* to = out;
    for (int y = 0; y < lines.count; ++y, from += lines.step, to += lines.outStep)
      combineBlocksOf<Op>(rows, count, from, to, n, oneLine, exact);
  }
  if (std::is_floating_point_v<T> && !exact)
    for (int y = 0; y < lines.count; ++y, out += lines.outStep) numbersBehind(out, n);
}

// Exactly n elements, of the rows from element `from` on. out must not be one of the rows.
template <class Op, class T = typename Op::Type>
void combineLines(const T* const* rows, int count, ptrdiff_t from, T* out, ptrdiff_t n, const Lines& lines) {
  if (n >= Vec<T>::lanes) return combineWhole<Op>(rows, count, from, out, n, lines, true);
  for (ptrdiff_t y = 0; y < lines.count; ++y, from += lines.step, out += lines.outStep)
    for (ptrdiff_t x = 0; x < n; ++x) {
      T best = Op::begin(rows[0][from + x]);
      for (int i = 1; i < count; ++i) best = Op::pick(best, rows[i][from + x]);
      out[x] = best;
    }
}
template <class Op, class T = typename Op::Type>
ZEB_INLINE void combineRows(const T* const* rows, int count, T* out, ptrdiff_t n) {
  if (n >= Vec<T>::lanes) return combineBlocksOf<Op>(rows, count, 0, out, n, oneLine, true);
  combineLines<Op>(rows, count, 0, out, n, oneLine);
}

// n rounded up to whole vectors, for scratch rows with a vector to spare. out may be rows[0] where no row starts before
// it: a block is read from every row before it is stored.
template <class Op, class T = typename Op::Type>
ZEB_INLINE void combinePadded(const T* const* rows, int count, T* out, ptrdiff_t n, const Lines& lines = oneLine) {
  combineWhole<Op>(rows, count, 0, out, n, lines, false);
}

// ---- Four windows of h rows at once, h >= 3, one row further down each ----

// early(i) is a vector of row i, late(i) one of row h + i, common what all windows of more than three rows share. to(i)
// is where a result goes.
template <class Op, bool three, class Early, class Late, class To, class T>
ZEB_INLINE void fourWindows(Early early, Late late, Vec<T> common, To to) {
  // Windows that begin early end with the rows in common, those that end late begin with them.
  const Vec<T> from2 = three ? Op::begin(early(2)) : Op::pick(common, early(2));
  const Vec<T> from1 = Op::pick(from2, early(1));
  store(to(0), Op::pick(from1, early(0)));
  const Vec<T> s0 = Op::begin(late(0)), s01 = Op::pick(s0, late(1));
  store(to(1), Op::pick(from1, s0));
  store(to(2), Op::pick(from2, s01));
  store(to(3), Op::pick(three ? s01 : Op::pick(common, s01), late(2)));
}

// Of the rows from `rows` on, step elements apart; the lines of the result are outStep apart.
template <class Op, int fixed, class T>
ZEB_INLINE void combineFourBlocks(const T* rows, ptrdiff_t step, int h, T* out, ptrdiff_t outStep, ptrdiff_t n) {
  constexpr int lanes = Vec<T>::lanes;
  const auto block = [=](ptrdiff_t x) ZEB_BODY {
    // Few sums of addresses: three rows from each of some.
    const T *const p = anew(rows + x), *q = anew(p + 3 * step);
    const auto early = [=](int i) ZEB_BODY { return load(p + i * step); };
    T *const to = anew(out + x), *const to2 = anew(to + 2 * outStep);
    const auto place = [=](int i) ZEB_BODY { return i < 2 ? to + i * outStep : to2 + (i - 2) * outStep; };
    if constexpr (fixed > 0) {
      const T *const q3 = anew(q + 3 * step), *const q6 = fixed > 5 ? anew(q3 + 3 * step) : q3;
      const auto further = [=](int i) ZEB_BODY {
        return load(i < 3 ? q + i * step : i < 6 ? q3 + (i - 3) * step : q6 + (i - 6) * step);
      };
      Vec<T> common = Op::begin(further(0));
      settle(common);  // in a register, not by way of memory
#pragma GCC unroll 8
      for (int i = 1; i < fixed - 3; ++i) common = Op::pick(common, further(i));
      fourWindows<Op, fixed == 3>(
          early, [=](int i) ZEB_BODY { return further(fixed - 3 + i); }, common, place);
    } else {
      Vec<T> common = Op::begin(load(q));
      for (int i = 4; i < h; ++i) q += step, common = Op::pick(common, load(q));
      q += step;
      fourWindows<Op, false>(
          early, [=](int i) ZEB_BODY { return load(q + i * step); }, common, place);
    }
  };
  ptrdiff_t x = 0;
  if (isLong(rows, n)) {
    const T* const entering = rows + (h - 1) * step;
    for (; x <= n - 2 * lanes; x += 2 * lanes) {
      for (int i = 0; i < 4; ++i) fetchAhead(entering + x + i * step);
      block(x);
      block(x + lanes);
    }
  }
  for (; x <= n - lanes; x += lanes) block(x);
  if (x < n) block(n - lanes);
}

// n elements, at least a vector of them.
template <class Op, class T = typename Op::Type>
__attribute__((noinline)) void combineFour(const T* rows, ptrdiff_t step, int h, T* out, ptrdiff_t outStep,
                                           ptrdiff_t n) {
  switch (h) {
    case 3:
      return combineFourBlocks<Op, 3>(rows, step, h, out, outStep, n);
    case 5:
      return combineFourBlocks<Op, 5>(rows, step, h, out, outStep, n);
    case 7:
      return combineFourBlocks<Op, 7>(rows, step, h, out, outStep, n);
    default:
      return combineFourBlocks<Op, 0>(rows, step, h, out, outStep, n);
  }
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
    best[k] = Op::begin(load(p + k * lanes));
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
    T best = Op::begin(rows[count - 1][x]);
    for (int i = count - 1; i >= 0; --i) suffix[i * stride + x] = best = Op::pick(best, rows[i][x]);
  }
}

// For one row after the other: prefix = extremum of prefix and row, out = extremum of prefix and suffix.
template <class Op, int rows, class T>
inline void advanceRows(const T* const* entering, T* prefix, const T* const* suffixes, T* const* out, ptrdiff_t n) {
  constexpr int lanes = Vec<T>::lanes, vectors = 2;
  const auto block = [=](ptrdiff_t x, auto count) ZEB_BODY {
    Vec<T> best[count.value];
    for (int k = 0; k < count.value; ++k) best[k] = load(prefix + x + k * lanes);
#pragma GCC unroll 4
    for (int i = 0; i < rows; ++i) {
      const T *const row = entering[i] + x, *const suffix = suffixes[i] + x;
      T* const to = out[i] + x;
      for (int k = 0; k < count.value; ++k) {
        best[k] = Op::pick(best[k], load(row + k * lanes));
        store(to + k * lanes, Op::pick(best[k], load(suffix + k * lanes)));
      }
    }
    for (int k = 0; k < count.value; ++k) store(prefix + x + k * lanes, best[k]);
  };
  // The last vector overlaps the one before it: its prefix is put aside, as rows must enter once only.
  const bool apart = n >= lanes && n % lanes != 0;
  T last[lanes];
  if (apart) {
    const Vec<T> before = load(prefix + n - lanes);
    block(n - lanes, std::integral_constant<int, 1>());
    store(last, load(prefix + n - lanes));
    store(prefix + n - lanes, before);
  }
  ptrdiff_t x = 0;
  for (; x <= n - vectors * lanes; x += vectors * lanes) block(x, std::integral_constant<int, vectors>());
  for (; x <= n - lanes; x += lanes) block(x, std::integral_constant<int, 1>());
  if (apart) return store(prefix + n - lanes, load(last));
  for (; x < n; ++x)
    for (int i = 0; i < rows; ++i) {
      prefix[x] = Op::pick(prefix[x], entering[i][x]);
      out[i][x] = Op::pick(prefix[x], suffixes[i][x]);
    }
}

}  // namespace zeb
