// The frame of all fills: runs of joined pixels wait on a stack; the run on top looks for its neighbours in the rows
// above and below, which go on the stack in turn.
#pragma once

#include <stddef.h>
#include <stdint.h>
#include <string.h>

#include "core/checks.h"
#include "zebcv/segment.h"

namespace zeb {

static_assert(sizeof(ZebiConnectedComp) == 48 && offsetof(ZebiConnectedComp, value) == 8 &&
                  offsetof(ZebiConnectedComp, rect) == 32,
              "the layout of the record is part of its contract");

// A run of joined pixels in row y and the run [parentLeft, parentRight] of row y + direction from which it was found;
// an empty parent has parentLeft > parentRight.
struct Span {
  int y;
  int left, right;
  int parentLeft, parentRight;
  int direction;
};

// Waiting spans in the caller's memory, which needs no alignment. The direction shares a word with the row.
class SpanStack {
 public:
  static constexpr int entryBytes = 20;

  SpanStack(Zeb8u* memory, int64_t bytes) : memory_(memory), room_(static_cast<int>(bytes / entryBytes)) {}

  bool empty() const { return count_ == 0; }
  int count() const { return count_; }
  bool push(const Span& s) {
    if (count_ == room_) return false;
    const uint32_t words[5] = {static_cast<uint32_t>(s.y) << 1 | (s.direction > 0), static_cast<uint32_t>(s.left),
                               static_cast<uint32_t>(s.right), static_cast<uint32_t>(s.parentLeft),
                               static_cast<uint32_t>(s.parentRight)};
    memcpy(memory_ + static_cast<size_t>(count_) * entryBytes, words, entryBytes);
    ++count_;
    return true;
  }
  Span pop() {
    uint32_t words[5];
    --count_;
    memcpy(words, memory_ + static_cast<size_t>(count_) * entryBytes, entryBytes);
    return {static_cast<int>(words[0] >> 1), static_cast<int>(words[1]), static_cast<int>(words[2]),
            static_cast<int>(words[3]),      static_cast<int>(words[4]), words[0] & 1 ? 1 : -1};
  }

 private:
  Zeb8u* memory_;
  int room_;
  int count_ = 0;
};

// Number and bounding box of the painted pixels.
class Extent {
 public:
  void add(int y, int left, int right) {
    area_ += right - left + 1;
    if (left < left_) left_ = left;
    if (right > right_) right_ = right;
    if (y < top_) top_ = y;
    if (y > bottom_) bottom_ = y;
  }
  template <class T, int channels>
  void record(const T* newValue, ZebiConnectedComp* region) const {
    region->area = static_cast<Zeb64f>(area_);
    for (int c = 0; c < 3; ++c) region->value[c] = c < channels ? static_cast<Zeb64f>(newValue[c]) : 0;
    region->rect = {left_, top_, right_ - left_ + 1, bottom_ - top_ + 1};
  }

 private:
  int64_t area_ = 0;
  int left_ = INT32_MAX, right_ = -1, top_ = INT32_MAX, bottom_ = -1;
};

inline int64_t pixelCount(ZebiSize size) {
  return static_cast<int64_t>(size.width) * size.height;
}

// Which neighbours a pixel has: the four beside it, or those and the four across its corners.
enum class Connected { four, eight };

// The checks of all fills, for a buffer of this many bytes; values are the arrays of new value and deltas, which
// three-channel callers may leave out.
template <class T, int channels, class... Values>
ZebStatus fillChecks(const T* pImage, int imageStep, ZebiSize size, ZebiPoint seed, const ZebiConnectedComp* pRegion,
                     const Zeb8u* pBuffer, int64_t bytes, const Values*... values) {
  return firstFailure(checked(size, image<channels>(pImage, imageStep), also(pRegion, pBuffer, values...)),
                      require(seed.x >= 0 && seed.x < size.width, zebStsErrOutOfRange),
                      require(seed.y >= 0 && seed.y < size.height, zebStsErrOutOfRange),
                      require(pixelCount(size) <= INT32_MAX && bytes <= INT32_MAX, zebStsErrOverflow));
}

// Takes the spans off the stack one after the other. The region provides
//   explore(y, from, to, span, direction)  joins what row y holds next to span in columns from..to; false ends the fill
//   finish(span)                           is told that the neighbours of a span have been examined
//   resume(&span)                          yields a span that did not fit on the stack
template <class Region>
void spread(Region& region, SpanStack& stack, ZebiSize size, Connected connected) {
  const int reach = connected == Connected::eight ? 1 : 0;
  for (;;) {
    Span s;
    if (!stack.empty()) {
      s = stack.pop();
    } else if (!region.resume(&s)) {
      return;
    }
    const int from = s.left - reach > 0 ? s.left - reach : 0;
    const int to = s.right + reach < size.width ? s.right + reach : size.width - 1;
    const int ahead = s.y - s.direction, behind = s.y + s.direction;
    if (ahead >= 0 && ahead < size.height && !region.explore(ahead, from, to, s, s.direction)) return;
    if (behind >= 0 && behind < size.height) {
      const int leftEnd = s.parentLeft - 1 < to ? s.parentLeft - 1 : to;
      const int rightStart = s.parentRight + 1 > from ? s.parentRight + 1 : from;
      if (from <= leftEnd && !region.explore(behind, from, leftEnd, s, -s.direction)) return;
      if (rightStart <= to && !region.explore(behind, rightStart, to, s, -s.direction)) return;
    }
    region.finish(s);
  }
}

}  // namespace zeb
