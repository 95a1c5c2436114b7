// Flood fill of the pixels that differ little from a neighbour which is in the region already.
//
// All comparisons are made between values from before painting: a span is painted when its neighbours have been
// examined, and a map of visited pixels keeps it from being examined again.
#include "core/image.h"
#include "segment/fill_bindings.h"
#include "segment/fill_rows.h"
#include "segment/fill_spans.h"

namespace {

using namespace zeb;

// The allowed step from a pixel of the region to its neighbour, per channel.
template <class T, int channels>
class Step {
 public:
  Step(const T* below, const T* above) : below_(below), above_(above) {}

  ZEB_INLINE bool operator()(const T* from, const T* to) const {
    for (int c = 0; c < channels; ++c) {
      if constexpr (std::is_integral_v<T>) {
        const int rise = to[c] - from[c];
        if (rise < -static_cast<int>(below_.value[c]) || rise > static_cast<int>(above_.value[c])) return false;
      } else {
        const T low = from[c] - below_.value[c], high = from[c] + above_.value[c];
        if (!(low <= to[c] && to[c] <= high)) return false;
      }
    }
    return true;
  }
  // Vector c of a block; one bit per byte, set where the step is too large.
  ZEB_INLINE unsigned failing(const T* from, const T* to, int c) const {
    const Vec<T> n = load(from), p = load(to);
    if constexpr (std::is_integral_v<T>) {
      // Saturation moves a bound to the end of the type, which every pixel satisfies.
      return clearBytes(atMost(subSat(n, below_.block[c]), p) & atMost(p, addSat(n, above_.block[c])));
    } else {
      return clearBytes(atMost(n - below_.block[c], p) & atMost(p, n + above_.block[c]));
    }
  }

 private:
  PixelValue<T, channels> below_, above_;
};

// Bytes of the buffer: a map with a frame of one pixel, a third of the pixels times 48, and 64.
int64_t mapBytes(ZebiSize size) {
  return (static_cast<int64_t>(size.width) + 2) * (static_cast<int64_t>(size.height) + 2);
}
int64_t gradientFillBytes(ZebiSize size) {
  return mapBytes(size) + 48 * pixelCount(size) / 3 + 64;
}

template <class T, int channels>
class GradientRegion {
 public:
  GradientRegion(Rows<T> image, ZebiSize size, const T* newValue, const Step<T, channels>& step, Zeb8u* pBuffer,
                 Connected connected)
      : image_(image),
        connected_(connected),
        size_(size),
        newValue_(newValue),
        step_(step),
        map_(pBuffer),
        stack_(pBuffer + mapBytes(size), gradientFillBytes(size) - mapBytes(size)) {
    const size_t pitch = static_cast<size_t>(size.width) + 2;
    memset(map_, visited, pitch + 1);
    for (int y = 0; y < size.height; ++y) {
      memset(mapRow(y), 0, static_cast<size_t>(size.width));
      memset(mapRow(y) + size.width, visited, 2);
    }
    memset(mapRow(size.height), visited, pitch - 1);
  }

  void fill(ZebiPoint seed) {
    join(seed.y, seed.x, 1, 0, seed.y == size_.height - 1 ? -1 : 1);
    spread(*this, stack_, size_, connected_);
  }

  bool explore(int y, int from, int to, const Span& parent, int direction) {
    const Zeb8u* map = mapRow(y);
    for (int x = from; (x = nextUnvisited(map, x, to)) <= to;) {
      x = joins(x, y, parent) ? join(y, x, parent.left, parent.right, direction) + 1 : x + 1;
    }
    return true;
  }
  void finish(const Span& s) {
    paintRun(image_[s.y], s.left, s.right, size_.width, newValue_);
    extent_.add(s.y, s.left, s.right);
  }
  bool resume(Span*) { return false; }
  void record(ZebiConnectedComp* region) const { extent_.template record<T, channels>(newValue_.value, region); }

 private:
  static constexpr int visited = 1;

  Zeb8u* mapRow(int y) const {
    return map_ + (static_cast<size_t>(y) + 1) * (static_cast<size_t>(size_.width) + 2) + 1;
  }
  // The map ends well before the buffer does: a vector may reach over its end.
  static int nextUnvisited(const Zeb8u* map, int x, int to) {
    for (; x <= to; x += V8u::lanes)
      if (const unsigned unseen = topBits(equal(load(map + x), splat(Zeb8u(0))))) return x + __builtin_ctz(unseen);
    return x;
  }

  // The step into column x of row y from the pixels of the parent that are its neighbours.
  ZEB_INLINE bool joins(int x, int y, const Span& parent) const {
    const T* to = image_[y] + x * channels;
    const T* from = image_[parent.y];
    if (connected_ == Connected::four) return step_(from + x * channels, to);
    const int first = x - 1 > parent.left ? x - 1 : parent.left, last = x + 1 < parent.right ? x + 1 : parent.right;
    for (int i = first; i <= last; ++i)
      if (step_(from + i * channels, to)) return true;
    return false;
  }

  // Joins the run through column x and returns its last column.
  //
  // The stack never overflows. A span of L pixels other than the seed has at most 2 (L + 2) neighbours in the rows
  // above and below, one of which is its parent. So if spans of A pixels in all have been examined, at most 4 A + 2
  // wait; each of these has a pixel of its own, so they are at most 4/5 of the image's pixels and one more, and 16
  // bytes a pixel and 64 hold as many entries of 20 bytes.
  int join(int y, int x, int parentLeft, int parentRight, int direction) {
    const T* row = image_[y];
    Zeb8u* map = mapRow(y);
    int left = x;
    while (!map[left - 1] && step_(row + left * channels, row + (left - 1) * channels)) --left;
    const int right = runFrom(row, map, x);
    memset(map + left, visited, static_cast<size_t>(right - left + 1));
    Span s{y, left, right, parentLeft, parentRight, direction};
    if (parentLeft > parentRight) s.parentLeft = right + 1, s.parentRight = right;
    stack_.push(s);
    return right;
  }

  // The last column that is reached from column x through unvisited pixels by allowed steps to the right.
  ZEB_INLINE int runFrom(const T* row, const Zeb8u* map, int x) const {
    constexpr int lanes = Vec<T>::lanes, element = sizeof(T);
    constexpr unsigned block = lanes == 32 ? ~0u : (1u << (lanes & 31)) - 1;
    while (x < size_.width - lanes) {
      const unsigned seen = ~topBits(equal(load(map + x + 1), splat(Zeb8u(0)))) & block;
      int steps = seen ? __builtin_ctz(seen) : lanes;
      for (int c = 0; c < channels; ++c) {
        const T* from = row + x * channels + c * lanes;
        if (const unsigned bad = step_.failing(from, from + channels, c)) {
          const int good = (32 * c + __builtin_ctz(bad)) / (channels * element);
          if (good < steps) steps = good;
          break;
        }
      }
      x += steps;
      if (steps < lanes) return x;
    }
    return runAtEnd(step_, row, map, x, size_.width);
  }
  // The same from one of the last columns of a row, where a block reaches back over columns before it. Not part of the
  // loops that lead here, which fit the registers without it.
  static __attribute__((noinline)) int runAtEnd(const Step<T, channels>& step, const T* row, const Zeb8u* map, int x,
                                                int width) {
    constexpr int lanes = Vec<T>::lanes, element = sizeof(T);
    const int at = width - 1 - lanes, before = x - at;
    if (channels == 1 && at >= 0 && before < lanes) {
      const unsigned seen = ~topBits(equal(load(map + at + 1), splat(Zeb8u(0)))) >> before;
      const unsigned bad = step.failing(row + at, row + at + 1, 0) >> (before * element);
      int steps = lanes - before;
      if (seen && __builtin_ctz(seen) < steps) steps = __builtin_ctz(seen);
      if (bad && __builtin_ctz(bad) / element < steps) steps = __builtin_ctz(bad) / element;
      return x + steps;
    }
    while (!map[x + 1] && step(row + x * channels, row + (x + 1) * channels)) ++x;
    return x;
  }

  Rows<T> image_;
  Connected connected_;
  ZebiSize size_;
  PixelValue<T, channels> newValue_;
  Step<T, channels> step_;
  Zeb8u* map_;
  SpanStack stack_;
  Extent extent_;
};

template <class T, int channels>
ZebStatus fillGradient(T* pImage, int imageStep, ZebiSize size, ZebiPoint seed, const T* newValue, const T* minDelta,
                       const T* maxDelta, ZebiConnectedComp* pRegion, Zeb8u* pBuffer, Connected connected) {
  if (auto bad = fillChecks<T, channels>(pImage, imageStep, size, seed, pRegion, pBuffer, gradientFillBytes(size),
                                         newValue, minDelta, maxDelta))
    return bad;
  GradientRegion<T, channels> region(Rows(pImage, imageStep), size, newValue, Step<T, channels>(minDelta, maxDelta),
                                     pBuffer, connected);
  region.fill(seed);
  region.record(pRegion);
  return zebStsOk;
}

}  // namespace

ZEB_ENTRY(zebiFloodFillGetSize_Grad)(ZebiSize roiSize, int* pBufSize) {
  if (auto bad = firstFailure(present(pBufSize), hasArea(roiSize))) return bad;
  return reportSize(pixelCount(roiSize) > INT32_MAX ? -1 : gradientFillBytes(roiSize), pBufSize);
}

FILL_WITHIN_C1(zebiFloodFill_Grad4Con_8u_C1IR, fillGradient, Zeb8u, Connected::four)
FILL_WITHIN_C1(zebiFloodFill_Grad4Con_16u_C1IR, fillGradient, Zeb16u, Connected::four)
FILL_WITHIN_C1(zebiFloodFill_Grad4Con_32f_C1IR, fillGradient, Zeb32f, Connected::four)
FILL_WITHIN_C1(zebiFloodFill_Grad8Con_8u_C1IR, fillGradient, Zeb8u, Connected::eight)
FILL_WITHIN_C1(zebiFloodFill_Grad8Con_16u_C1IR, fillGradient, Zeb16u, Connected::eight)
FILL_WITHIN_C1(zebiFloodFill_Grad8Con_32f_C1IR, fillGradient, Zeb32f, Connected::eight)
FILL_WITHIN_C3(zebiFloodFill_Grad4Con_8u_C3IR, fillGradient, Zeb8u, Connected::four)
FILL_WITHIN_C3(zebiFloodFill_Grad4Con_16u_C3IR, fillGradient, Zeb16u, Connected::four)
FILL_WITHIN_C3(zebiFloodFill_Grad4Con_32f_C3IR, fillGradient, Zeb32f, Connected::four)
FILL_WITHIN_C3(zebiFloodFill_Grad8Con_8u_C3IR, fillGradient, Zeb8u, Connected::eight)
FILL_WITHIN_C3(zebiFloodFill_Grad8Con_16u_C3IR, fillGradient, Zeb16u, Connected::eight)
FILL_WITHIN_C3(zebiFloodFill_Grad8Con_32f_C3IR, fillGradient, Zeb32f, Connected::eight)
