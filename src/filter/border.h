// Pixels outside a row or column: where they come from under each border rule, and the working rows that hold them.
//
// A border type is a base rule in its low four bits and side flags above them. A flag replaces the base rule on its own
// side by the pixels that lie in memory there.
#pragma once

#include <limits.h>
#include <stddef.h>
#include <stdint.h>
#include <string.h>

#include "zebcv/types.h"

namespace zeb {

constexpr int borderBaseMask = 15;
constexpr int borderSideFlags = zebBorderInMemTop | zebBorderInMemBottom | zebBorderInMemLeft | zebBorderInMemRight;

constexpr int borderBase(ZebiBorderType type) {
  return type & borderBaseMask;
}

// A known base rule, and above it nothing or at least one of the side flags.
constexpr bool isBorderType(ZebiBorderType type) {
  const int base = borderBase(type);
  const bool known = (base >= zebBorderConst && base <= zebBorderMirrorR) || base == zebBorderInMem;
  return known && ((type & ~borderBaseMask) == 0 || (type & borderSideFlags) != 0);
}

// The base rule of one side: in memory where the side's flag is set.
constexpr int borderOnSide(ZebiBorderType type, int sideFlag) {
  return type & sideFlag ? static_cast<int>(zebBorderInMem) : borderBase(type);
}

// What borderSource() answers for a position that takes the constant.
constexpr int borderConstant = INT_MIN;

// Which pixel of a line of n stands at position p, 0 <= p < n or outside, under a base rule: an index in 0..n-1, or
// borderConstant, or p itself under the in-memory rule. Positions farther out than the line is long wrap or reflect as
// often as needed; a line of one pixel is its own reflection.
constexpr int borderSource(int base, int p, int n) {
  if ((p >= 0 && p < n) || base == zebBorderInMem) return p;
  switch (base) {
    case zebBorderRepl:
      return p < 0 ? 0 : n - 1;
    case zebBorderWrap: {
      const int r = p % n;
      return r < 0 ? r + n : r;
    }
    case zebBorderMirror: {  // period 2(n - 1): 0 1 .. n-1 n-2 .. 1
      if (n == 1) return 0;
      const int64_t period = 2 * (static_cast<int64_t>(n) - 1);
      const int64_t r = p < 0 ? -static_cast<int64_t>(p) % period : p % period;
      return static_cast<int>(r < n ? r : period - r);
    }
    case zebBorderMirrorR: {  // period 2n: 0 1 .. n-1 n-1 .. 1 0; p and -1-p are the same pixel
      const int64_t period = 2 * static_cast<int64_t>(n);
      const int64_t r = (p < 0 ? -1 - static_cast<int64_t>(p) : p) % period;
      return static_cast<int>(r < n ? r : period - 1 - r);
    }
    default:
      return borderConstant;
  }
}

// A row with its border, read by position: 0 is the row's first pixel, negative positions lie left of it.
template <class T, int channels>
class BorderedRow {
 public:
  // value: one constant per channel; read under the constant rule only. top and bottom flags mean nothing to a row.
  BorderedRow(const T* row, int width, ZebiBorderType type, const T* value)
      : row_(row),
        width_(width),
        left_(borderOnSide(type, zebBorderInMemLeft)),
        right_(borderOnSide(type, zebBorderInMemRight)),
        value_(value) {}

  // Writes the pixels at positions from..to-1, one after the other; does nothing when there are none. Reads no pixel
  // of the caller's row but those.
  void copy(int from, int to, T* dst) const {
    const int memoryFrom = left_ == zebBorderInMem ? from : 0, memoryTo = right_ == zebBorderInMem ? to : width_;
    int p = from;
    for (; p < to && p < memoryFrom; ++p, dst += channels) put(outside(left_, p), dst);
    if (const int end = to < memoryTo ? to : memoryTo; p < end) {
      memcpy(dst, at(p), sizeof(T) * channels * static_cast<size_t>(end - p));
      dst += static_cast<ptrdiff_t>(end - p) * channels;
      p = end;
    }
    for (; p < to; ++p, dst += channels) put(outside(right_, p), dst);
  }

 private:
  const T* at(int p) const { return row_ + static_cast<ptrdiff_t>(p) * channels; }
  const T* outside(int base, int p) const {
    if (base == zebBorderConst) return value_;
    if (base == zebBorderRepl) return at(p < 0 ? 0 : width_ - 1);
    return at(borderSource(base, p, width_));
  }
  static void put(const T* pixel, T* dst) {
    for (int c = 0; c < channels; ++c) dst[c] = pixel[c];
  }

  const T* row_;
  int width_;
  int left_;
  int right_;
  const T* value_;
};

// Pixels of working row that fillBorder() needs.
constexpr int64_t borderSegmentPixels(int kernelSize) {
  return 3 * (static_cast<int64_t>(kernelSize) - 1);
}

// Both ends of a row with what a kernel of kernelSize taps reads beside them. The left segment starts at work: anchor
// border pixels, then the first kernelSize - 1 pixels of the row. The right segment, whose place is returned: the last
// kernelSize - 1 pixels, then kernelSize - 1 - anchor border pixels. In a row shorter than kernelSize - 1 the segments
// run on into the other side's border, as far as an output of the row reads; places beyond that are left unwritten.
template <class T, int channels>
inline T* fillBorder(const T* row, int width, int kernelSize, int anchor, ZebiBorderType type, const T* value,
                     T* work) {
  const BorderedRow<T, channels> bordered(row, width, type, value);
  const int reach = kernelSize - 1;
  const int first = -anchor, end = width + (reach - anchor);
  bordered.copy(first, reach < end ? reach : end, work);
  T* const right = work + static_cast<ptrdiff_t>(anchor + reach) * channels;
  const int rightFirst = width - reach;
  const int from = rightFirst > first ? rightFirst : first;
  bordered.copy(from, end, right + static_cast<ptrdiff_t>(from - rightFirst) * channels);
  return right;
}

}  // namespace zeb
