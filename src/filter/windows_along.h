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
    if (next == wider && exact) return combineLines<Op>(taps, count, 0, out, n, lines);
    if (next == wider) return combinePadded<Op>(taps, count, out, n, lines);
    combinePadded<Op>(taps, count, temp, n + reach, between);
    from = temp;
    cur = next;
  }
}

}  // namespace zeb
