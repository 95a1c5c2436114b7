// Kernels that take the extremum of several rows, element by element. Morphology and the rank filters are made of them:
// taps of one row at several offsets are rows too.
//
// An Op names the element type and the extremum of two values, as a vector and as one element. Bit-packed images take
// part with the conjunction and the disjunction of bytes.
#pragma once

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
  static ZEB_INLINE Zeb8u begin(Zeb8u first) { return first; }
  static ZEB_INLINE V8u pick(V8u a, V8u b) { return a & b; }
  static ZEB_INLINE Zeb8u pick(Zeb8u a, Zeb8u b) { return a & b; }
};
struct AnyBit {
  using Type = Zeb8u;
  static ZEB_INLINE V8u begin(V8u first) { return first; }
  static ZEB_INLINE Zeb8u begin(Zeb8u first) { return first; }
  static ZEB_INLINE V8u pick(V8u a, V8u b) { return a | b; }
  static ZEB_INLINE Zeb8u pick(Zeb8u a, Zeb8u b) { return a | b; }
};

// ---- out[x] = extremum of rows[0..count-1][x], for several lines of each ----

// A pointer that the compiler takes as it is: else it splits sums of row and column up and keeps a column for each
// vector, in memory.
template <class T>
ZEB_INLINE const T* onePointer(const T* p) {
  __asm__("" : "+r"(p));
  return p;
}

template <class Op, int vectors, class T>
ZEB_INLINE void combineBlock(const T* const* rows, int count, ptrdiff_t x, T* out) {
  constexpr int lanes = Vec<T>::lanes;
  Vec<T> best[vectors];
  const T* p = onePointer(rows[0] + x);
  for (int k = 0; k < vectors; ++k) best[k] = Op::begin(load(p + k * lanes));
  const auto tap = [&](int i) ZEB_BODY {
    p = onePointer(rows[i] + x);
    for (int k = 0; k < vectors; ++k) best[k] = Op::pick(best[k], load(p + k * lanes));
  };
  int i = 1;
  for (; i < count - 1; i += 2) tap(i), tap(i + 1);
  if (i < count) tap(i);
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

// The same columns of every line, so that little is left to do for each of many short lines.
template <class Op, int vectors, class T>
ZEB_INLINE void combineColumns(const T* const* rows, int count, ptrdiff_t x, T* out, const Lines& lines) {
  const ptrdiff_t step = lines.step, outStep = lines.outStep;
  out += x;
  for (int y = lines.count; y > 0; --y, x += step, out += outStep) {
    if (vectors > 2)
      for (int k = 0; k < vectors; k += 2) fetchAhead(out + k * Vec<T>::lanes);
    combineBlock<Op, vectors>(rows, count, x, out);
  }
}

template <class Op, class T>
ZEB_INLINE void combineBlocks(const T* const* rows, int count, T* out, ptrdiff_t n, const Lines& lines, bool exact) {
  constexpr int lanes = Vec<T>::lanes;
  ptrdiff_t x = 0;
  for (; x <= n - 6 * lanes; x += 6 * lanes) combineColumns<Op, 6>(rows, count, x, out, lines);
  for (; x <= n - 2 * lanes; x += 2 * lanes) combineColumns<Op, 2>(rows, count, x, out, lines);
  for (; x < n; x += lanes) {
    if (exact && x > n - lanes) x = n - lanes;
    combineColumns<Op, 1>(rows, count, x, out, lines);
  }
  if (std::is_floating_point_v<T> && !exact)
    for (int y = 0; y < lines.count; ++y, out += lines.outStep) numbersBehind(out, n);
}

// Of few rows the compiler knows how many: no loop over them. Exactly n elements, at least a vector of them, the last
// vector overlapping the one before it; or n rounded up to whole vectors.
template <class Op, class T>
__attribute__((noinline)) void combineWhole(const T* const* rows, int count, T* out, ptrdiff_t n, const Lines& lines,
                                            bool exact) {
  switch (count) {
    case 1:
      return combineBlocks<Op>(rows, 1, out, n, lines, exact);
    case 2:
      return combineBlocks<Op>(rows, 2, out, n, lines, exact);
    case 3:
      return combineBlocks<Op>(rows, 3, out, n, lines, exact);
    case 5:
      return combineBlocks<Op>(rows, 5, out, n, lines, exact);
    case 7:
      return combineBlocks<Op>(rows, 7, out, n, lines, exact);
    default:
      return combineBlocks<Op>(rows, count, out, n, lines, exact);
  }
}

// Exactly n elements. out must not be one of the rows.
template <class Op, class T = typename Op::Type>
void combineLines(const T* const* rows, int count, T* out, ptrdiff_t n, const Lines& lines) {
  if (n >= Vec<T>::lanes) return combineWhole<Op>(rows, count, out, n, lines, true);
  for (ptrdiff_t y = 0, from = 0; y < lines.count; ++y, from += lines.step, out += lines.outStep)
    for (ptrdiff_t x = 0; x < n; ++x) {
      T best = Op::begin(rows[0][from + x]);
      for (int i = 1; i < count; ++i) best = Op::pick(best, rows[i][from + x]);
      out[x] = best;
    }
}
template <class Op, class T = typename Op::Type>
ZEB_INLINE void combineRows(const T* const* rows, int count, T* out, ptrdiff_t n) {
  combineLines<Op>(rows, count, out, n, oneLine);
}

// n rounded up to whole vectors, for scratch rows with a vector to spare. out may be rows[0] where no row starts before
// it: a block is read from every row before it is stored.
template <class Op, class T = typename Op::Type>
ZEB_INLINE void combinePadded(const T* const* rows, int count, T* out, ptrdiff_t n, const Lines& lines = oneLine) {
  combineWhole<Op>(rows, count, out, n, lines, false);
}

// ---- Two windows of h rows at once, h >= 2: of rows[0..h-1] and of rows[1..h] ----

template <class Op, int vectors, class T>
ZEB_INLINE void combinePairBlock(const T* const* rows, int h, ptrdiff_t x, T* out0, T* out1) {
  constexpr int lanes = Vec<T>::lanes;
  Vec<T> both[vectors];
  const T* p = rows[1] + x;
  for (int k = 0; k < vectors; ++k) both[k] = Op::begin(load(p + k * lanes));
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

// ---- Four windows of h rows at once, h >= 3: of rows[i..i+h-1], i = 0..3 ----

template <class Op, class T>
ZEB_INLINE void combineQuadBlock(const T* const* rows, int h, ptrdiff_t x, T* const* out) {
  // Ends of the windows that begin early, beginnings of those that end late.
  const Vec<T> r2 = Op::begin(load(rows[2] + x));
  const Vec<T> r12 = Op::pick(r2, load(rows[1] + x));
  const Vec<T> r012 = Op::pick(r12, load(rows[0] + x));
  const Vec<T> s0 = Op::begin(load(rows[h] + x));
  const Vec<T> s01 = Op::pick(s0, load(rows[h + 1] + x));
  const Vec<T> s012 = Op::pick(s01, load(rows[h + 2] + x));
  if (h == 3) {
    store(out[0] + x, r012);
    store(out[1] + x, Op::pick(r12, s0));
    store(out[2] + x, Op::pick(r2, s01));
    store(out[3] + x, s012);
    return;
  }
  Vec<T> common = Op::begin(load(rows[3] + x));
  for (int i = 4; i < h; ++i) common = Op::pick(common, load(rows[i] + x));
  store(out[0] + x, Op::pick(common, r012));
  store(out[1] + x, Op::pick(common, Op::pick(r12, s0)));
  store(out[2] + x, Op::pick(common, Op::pick(r2, s01)));
  store(out[3] + x, Op::pick(common, s012));
}

template <class Op, class T>
ZEB_INLINE void combineQuadBlocks(const T* const* rows, int h, T* const* out, ptrdiff_t n) {
  constexpr int lanes = Vec<T>::lanes;
  ptrdiff_t x = 0;
  for (; x <= n - 2 * lanes; x += 2 * lanes) {
    for (int i = -1; i < 3; ++i) fetchAhead(rows[h + i] + x);
    combineQuadBlock<Op>(rows, h, x, out);
    combineQuadBlock<Op>(rows, h, x + lanes, out);
  }
  for (; x <= n - lanes; x += lanes) combineQuadBlock<Op>(rows, h, x, out);
  if (x < n) combineQuadBlock<Op>(rows, h, n - lanes, out);
}

template <class Op, class T = typename Op::Type>
inline void combineQuad(const T* const* rows, int h, T* const* out, ptrdiff_t n) {
  if (n < Vec<T>::lanes) {
    for (int i = 0; i < 4; ++i) combineRows<Op>(rows + i, h, out[i], n);
  } else if (h == 3) {
    combineQuadBlocks<Op>(rows, 3, out, n);
  } else if (h == 5) {
    combineQuadBlocks<Op>(rows, 5, out, n);
  } else if (h == 7) {
    combineQuadBlocks<Op>(rows, 7, out, n);
  } else {
    combineQuadBlocks<Op>(rows, h, out, n);
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

// Two rows of that: out[0] from rows[0], out[1] from both.
template <class Op, class T = typename Op::Type>
inline void advanceTwoRows(const T* const* rows, T* prefix, const T* const* suffixes, T* const* out, ptrdiff_t n) {
  constexpr int lanes = Vec<T>::lanes;
  ptrdiff_t x = 0;
  for (; x <= n - lanes; x += lanes) {
    const Vec<T> p0 = Op::pick(load(prefix + x), load(rows[0] + x));
    const Vec<T> p1 = Op::pick(p0, load(rows[1] + x));
    store(out[0] + x, Op::pick(p0, load(suffixes[0] + x)));
    store(out[1] + x, Op::pick(p1, load(suffixes[1] + x)));
    store(prefix + x, p1);
  }
  for (; x < n; ++x) {
    const T p0 = Op::pick(prefix[x], rows[0][x]);
    out[0][x] = Op::pick(p0, suffixes[0][x]);
    prefix[x] = Op::pick(p0, rows[1][x]);
    out[1][x] = Op::pick(prefix[x], suffixes[1][x]);
  }
}

// ---- Windows along a row ----

// The extremum over 5..8 pixels of `px` bytes from each on: pairs by two loads, fours and the whole by shifting
// registers. A row is a scratch line with two vectors to spare; it may be out where whole vectors may be written.
template <class Op, int px, int width, class T>
__attribute__((noinline)) void shortWindows(const T* row, T* out, ptrdiff_t n, const Lines& lines, bool exact) {
  constexpr int lanes = Vec<T>::lanes, pixel = px / static_cast<int>(sizeof(T));
  const auto pair = [](const T* p) ZEB_BODY { return Op::pick(load(p), load(p + pixel)); };
  const auto whole = [](Vec<T> two, Vec<T> next) ZEB_BODY {
    const Vec<T> middle = halvesBetween(two, next);
    const Vec<T> four = Op::pick(two, fromByte<2 * px>(two, middle));
    const Vec<T> fourMiddle = Op::pick(middle, fromByte<2 * px>(middle, next));
    return Op::pick(four, fromByte<(width - 4) * px>(four, fourMiddle));
  };
  const ptrdiff_t stop = exact ? n - lanes + 1 : n;
  for (int y = lines.count; y > 0; --y, row += lines.step, out += lines.outStep) {
    Vec<T> two = pair(row);
    ptrdiff_t x = 0;
    for (; x < stop; x += lanes) {
      if (exact) fetchAhead(out + x);
      const Vec<T> next = pair(row + x + lanes);
      store(out + x, whole(two, next));
      two = next;
    }
    if (x < n) store(out + n - lanes, whole(pair(row + n - lanes), pair(row + n)));
    if (!exact) numbersBehind(out, n);
  }
}

// Windows of 32 pixels of one byte from those of 8, in whole vectors and in place.
template <class Op>
void windowsOf32(Zeb8u* row, ptrdiff_t n, const Lines& lines) {
  for (int y = lines.count; y > 0; --y, row += lines.step) {
    V8u eight = load(row);
    for (ptrdiff_t x = 0; x < n; x += 32) {
      const V8u next = load(row + x + 32), middle = halvesBetween(eight, next);
      const V8u sixteen = Op::pick(eight, fromByte<8>(eight, middle));
      store(row + x, Op::pick(sixteen, Op::pick(middle, fromByte<8>(middle, next))));
      eight = next;
    }
  }
}

template <class Op, int px, class T>
void shortWindowsOf(int width, const T* row, T* out, ptrdiff_t n, const Lines& lines, bool exact) {
  switch (width) {
    case 5:
      return shortWindows<Op, px, 5>(row, out, n, lines, exact);
    case 6:
      return shortWindows<Op, px, 6>(row, out, n, lines, exact);
    case 7:
      return shortWindows<Op, px, 7>(row, out, n, lines, exact);
    default:
      return shortWindows<Op, px, 8>(row, out, n, lines, exact);
  }
}

// Whether there is such a kernel for pixels of this many bytes, and it was used.
template <class Op, class T = typename Op::Type>
bool tryShortWindows(ptrdiff_t width, int px, const T* row, T* out, ptrdiff_t n, const Lines& lines, bool exact) {
  if (width < 5 || width > 8 || (exact && n < Vec<T>::lanes)) return false;
  const int w = static_cast<int>(width);
  if constexpr (sizeof(T) == 1) {
    if (px == 1) return shortWindowsOf<Op, 1>(w, row, out, n, lines, exact), true;
    if (px == 3) return shortWindowsOf<Op, 3>(w, row, out, n, lines, exact), true;
  }
  if constexpr (sizeof(T) == 2) {
    if (px == 2) return shortWindowsOf<Op, 2>(w, row, out, n, lines, exact), true;
  } else {
    if (px == 4) return shortWindowsOf<Op, 4>(w, row, out, n, lines, exact), true;
  }
  return false;
}

// from[x] holds the extremum over `shorter` pixels from x on; out[x] gets that over `longer`, n elements in all, in
// several lines. A window is covered by overlapping shorter ones, in passes of a few taps each. Passes before the last
// go to temp, lines as far apart as those of from, which may be from itself; they write whole vectors and so does the
// last unless it must be exact. temp and from are scratch lines with two vectors to spare. out must not be from when
// the last pass is exact.
template <class Op, class T = typename Op::Type>
void widenLines(const T* from, int64_t shorter, T* out, int64_t longer, T* temp, int channels, ptrdiff_t n,
                const Lines& lines, bool exact) {
  constexpr int mostTaps = 8;
  const Lines between{lines.count, lines.step, lines.step};
  const int px = channels * static_cast<int>(sizeof(T));
  // What fits a line fits the machine's words, and so do a dozen times as many of them.
  ptrdiff_t cur = shorter;
  const ptrdiff_t wider = longer;
  if (cur == 1) {
    if (tryShortWindows<Op>(wider, px, from, out, n, lines, exact)) return;
    const ptrdiff_t reach = (wider - 8) * channels;
    if (wider > 8 && tryShortWindows<Op>(8, px, from, temp, n + reach, between, false)) from = temp, cur = 8;
    if constexpr (sizeof(T) == 1) {
      if (cur == 8 && px == 1 && wider >= 32) {
        windowsOf32<Op>(temp, n + wider - 32, between);
        cur = 32;
      }
    }
  }
  const T* taps[mostTaps];
  for (;;) {
    // Three taps a pass cost least when there are many passes; up to seven save a pass.
    const ptrdiff_t next = wider <= 7 * cur    ? wider
                           : wider <= 9 * cur  ? 3 * cur
                           : wider <= 12 * cur ? 4 * cur
                                               : 3 * cur;
    int count = 0;
    for (ptrdiff_t at = 0; at + cur < next; at += cur) taps[count++] = from + at * channels;
    taps[count++] = from + (next - cur) * channels;
    const ptrdiff_t reach = (wider - next) * channels;
    if (next == wider && exact) return combineLines<Op>(taps, count, out, n, lines);
    if (next == wider) return combinePadded<Op>(taps, count, out, n, lines);
    combinePadded<Op>(taps, count, temp, n + reach, between);
    from = temp;
    cur = next;
  }
}

}  // namespace zeb
