// What a fill does inside one row: find the pixels that pass a test, the ends of their run, and paint it.
//
// A block is as many pixels as a vector has elements: one vector of a one-channel image, three of a three-channel one,
// whose elements then belong to the channels in turn.
#pragma once

#include <stdint.h>

#include "core/vec.h"

namespace zeb {

// Every channel of a pixel, as a value and repeated over the vectors of a block.
template <class T, int channels>
struct PixelValue {
  T value[channels];
  Vec<T> block[channels];

  explicit PixelValue(const T* pixel) {
    for (int c = 0; c < channels; ++c) value[c] = pixel[c];
    alignas(32) T elements[channels * Vec<T>::lanes];
    for (int i = 0; i < channels * Vec<T>::lanes; ++i) elements[i] = value[i % channels];
    for (int c = 0; c < channels; ++c) block[c] = load(elements + c * Vec<T>::lanes);
  }
};

template <class T, int channels>
inline bool equalPixels(const T* a, const T* b) {
  for (int c = 0; c < channels; ++c)
    if (!(a[c] == b[c])) return false;
  return true;
}

// One bit per byte, lowest address in bit 0: set where the mask is clear.
template <class T>
ZEB_INLINE unsigned clearBytes(Vec<T> mask) {
  return ~topBits(as<Zeb8u>(mask));
}

// The test of the plain fills: every channel equals the seed's.
template <class T, int channels>
class EqualsSeed {
 public:
  explicit EqualsSeed(const T* seed) : seed_(seed) {}
  ZEB_INLINE bool operator()(const T* pixel) const { return equalPixels<T, channels>(pixel, seed_.value); }
  ZEB_INLINE unsigned failing(const T* p, int c) const { return clearBytes(equal(load(p), seed_.block[c])); }

 private:
  PixelValue<T, channels> seed_;
};

// The test of the range fills: every channel lies in its interval, both ends included.
template <class T, int channels>
class InInterval {
 public:
  InInterval(const T* low, const T* high) : low_(low), high_(high) {}
  ZEB_INLINE bool operator()(const T* pixel) const {
    for (int c = 0; c < channels; ++c)
      if (!(low_.value[c] <= pixel[c] && pixel[c] <= high_.value[c])) return false;
    return true;
  }
  ZEB_INLINE unsigned failing(const T* p, int c) const {
    const Vec<T> v = load(p);
    return clearBytes(atMost(low_.block[c], v) & atMost(v, high_.block[c]));
  }

 private:
  PixelValue<T, channels> low_, high_;
};

// The first column of x..end-1 whose pixel fails, or end. end is the row's width.
template <class T, int channels, class Test>
ZEB_INLINE int runEnd(const T* row, int x, int end, const Test& test) {
  constexpr int lanes = Vec<T>::lanes, element = sizeof(T);
  for (; x <= end - lanes; x += lanes)
    for (int c = 0; c < channels; ++c)
      if (const unsigned bad = test.failing(row + x * channels + c * lanes, c))
        return x + (32 * c + __builtin_ctz(bad)) / (channels * element);
  if (channels == 1 && end >= lanes && x < end) {
    const int start = end - lanes;
    const unsigned bad = test.failing(row + start, 0) >> ((x - start) * element);
    return bad ? x + __builtin_ctz(bad) / element : end;
  }
  while (x < end && test(row + x * channels)) ++x;
  return x;
}

// The first column of x..end-1 whose pixel passes, or end; pixels up to width may be read.
template <class T, int channels, class Test>
ZEB_INLINE int firstPassing(const T* row, int x, int end, int width, const Test& test) {
  constexpr int lanes = Vec<T>::lanes, element = sizeof(T);
  if (channels == 1 && width >= lanes) {
    while (x < end) {
      const int start = x <= width - lanes ? x : width - lanes;
      if (const unsigned good = ~test.failing(row + start, 0) >> ((x - start) * element)) {
        x += __builtin_ctz(good) / element;
        return x < end ? x : end;
      }
      x = start + lanes;
    }
    return end;
  }
  while (x < end && !test(row + x * channels)) ++x;
  return x;
}

// The first column of the run of passing pixels that ends in column x, which passes.
template <class T, int channels, class Test>
ZEB_INLINE int runStart(const T* row, int x, const Test& test) {
  constexpr int lanes = Vec<T>::lanes, element = sizeof(T);
  while (x >= lanes)
    for (int c = channels - 1; c >= 0; --c) {
      if (const unsigned bad = test.failing(row + (x - lanes) * channels + c * lanes, c))
        return x - lanes + (32 * c + 31 - __builtin_clz(bad)) / (channels * element) + 1;
      if (c == 0) x -= lanes;
    }
  while (x > 0 && test(row + (x - 1) * channels)) --x;
  return x;
}

// Writes a pixel's value to columns left..right. A run that is shorter than a block is blended into one where the row
// has room for it.
template <class T, int channels>
ZEB_INLINE void paintRun(T* row, int left, int right, int width, const PixelValue<T, channels>& pixel) {
  constexpr int lanes = Vec<T>::lanes;
  int x = left;
  for (; x <= right + 1 - lanes; x += lanes)
    for (int c = 0; c < channels; ++c) store(row + x * channels + c * lanes, pixel.block[c]);
  if (channels == 1 && x <= right && x <= width - lanes) {
    store(row + x, select(firstElements<T>(right + 1 - x), pixel.block[0], load(row + x)));
    return;
  }
  for (; x <= right; ++x)
    for (int c = 0; c < channels; ++c) row[x * channels + c] = pixel.value[c];
}

}  // namespace zeb
