// Extrema of windows along a row: short ones by shifting registers, long ones from overlapping shorter ones.
#pragma once

#include "filter/extremum_rows.h"

namespace zeb {

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
  const bool ahead = exact && isLong(out, n);
  for (int y = lines.count; y > 0; --y, row += lines.step, out += lines.outStep) {
    Vec<T> two = pair(row);
    ptrdiff_t x = 0;
    for (; x < stop; x += lanes) {
      if (ahead) fetchAhead(out + x);
      const Vec<T> next = pair(row + x + lanes);
      store(out + x, whole(two, next));
      two = next;
    }
    if (x < n) store(out + n - lanes, whole(pair(row + n - lanes), pair(row + n)));
    if (!exact) numbersBehind(out, n);
  }
}

// The extremum over 4 pixels of `px` bytes from p on.
template <class Op, int px, class T>
ZEB_INLINE Vec<T> fourPixels(const T* p) {
  constexpr int pixel = px / static_cast<int>(sizeof(T));
  const Vec<T> two = Op::pick(load(p), load(p + pixel));
  return Op::pick(Op::pick(two, load(p + 2 * pixel)), load(p + 3 * pixel));
}
// The windows that are so many bytes longer than those in a; next holds those of the vector behind it.
template <class Op, int bytes, class T>
ZEB_INLINE Vec<T> longerBy(Vec<T> a, Vec<T> next) {
  return Op::pick(a, fromByte<bytes>(a, halvesBetween(a, next)));
}

// Windows as long as a vector, in whole vectors; out may be the row. Shorter ones are carried on until those of the
// vectors behind are there; of the last vectors behind the row only what stands in the line counts.
template <class Op, int px, class T>
__attribute__((noinline)) void vectorWindows(const T* row, T* out, ptrdiff_t n, const Lines& lines) {
  constexpr int lanes = Vec<T>::lanes;
  for (int y = lines.count; y > 0; --y, row += lines.step, out += lines.outStep) {
    const auto within = [=](ptrdiff_t x) ZEB_BODY { return x < n + lanes ? x : n + lanes; };
    Vec<T> last = fourPixels<Op, px>(row + within(2 * lanes)), middle = fourPixels<Op, px>(row + within(lanes));
    Vec<T> half = longerBy<Op, 4 * px>(fourPixels<Op, px>(row), middle), eight = longerBy<Op, 4 * px>(middle, last);
    if constexpr (px == 1) half = longerBy<Op, 8>(half, eight);
    ptrdiff_t x = 0;
    const auto one = [&](ptrdiff_t ahead) ZEB_BODY {
      const Vec<T> four = fourPixels<Op, px>(row + ahead), nextEight = longerBy<Op, 4 * px>(last, four);
      Vec<T> nextHalf = eight;
      if constexpr (px == 1) nextHalf = longerBy<Op, 8>(eight, nextEight);
      store(out + x, longerBy<Op, 16>(half, nextHalf));
      last = four, eight = nextEight, half = nextHalf;
      x += lanes;
    };
    while (x < n - 2 * lanes) one(x + 3 * lanes);
    while (x < n) one(within(x + 3 * lanes));
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

// Windows within the n elements of a line, in place; their length, as long as a vector and then three times that as
// often as `longest` allows, or 1 where pixels are no single elements of one or two bytes.
template <class Op, class T = typename Op::Type>
ptrdiff_t widenWithin(T* line, ptrdiff_t n, ptrdiff_t longest, int channels, const Lines& lines) {
  constexpr ptrdiff_t vector = Vec<T>::lanes;
  if constexpr (sizeof(T) <= 2) {
    if (channels > 1 || longest < vector) return 1;
    vectorWindows<Op, sizeof(T)>(line, line, n - vector + 1, lines);
    ptrdiff_t cur = vector;
    for (; 3 * cur <= longest; cur *= 3) {
      const T* const taps[] = {line, line + cur, line + 2 * cur};
      combinePadded<Op>(taps, 3, line, n - 3 * cur + 1, lines);
    }
    return cur;
  } else {
    return 1;
  }
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
    if constexpr (sizeof(T) <= 2) {
      // More than one pass of seven taps makes of windows of 8.
      if (channels == 1 && wider > 56) {
        vectorWindows<Op, sizeof(T)>(from, temp, n + wider - Vec<T>::lanes, between);
        from = temp, cur = Vec<T>::lanes;
      }
    }
    const ptrdiff_t reach = (wider - 8) * channels;
    if (cur == 1 && wider > 8 && tryShortWindows<Op>(8, px, from, temp, n + reach, between, false))
      from = temp, cur = 8;
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
    if (next == wider && exact) return combineLines<Op>(taps, count, 0, out, n, lines);
    if (next == wider) return combinePadded<Op>(taps, count, out, n, lines);
    combinePadded<Op>(taps, count, temp, n + reach, between);
    from = temp;
    cur = next;
  }
}

}  // namespace zeb
