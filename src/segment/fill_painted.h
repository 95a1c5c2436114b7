// The plain and range fills: pixels are painted as soon as they are found.
#pragma once

#include "core/image.h"
#include "segment/fill_rows.h"
#include "segment/fill_spans.h"

namespace zeb {

// One byte per pixel, 0 or 1, rows one after the other, in the caller's memory.
class PixelMap {
 public:
  PixelMap(Zeb8u* memory, ZebiSize size)
      : bytes_(memory), width_(static_cast<size_t>(size.width)), count_(static_cast<size_t>(pixelCount(size))) {}

  void clear() { memset(bytes_, 0, count_); }
  Zeb8u* row(int y) const { return bytes_ + static_cast<size_t>(y) * width_; }
  void mark(int y, int left, int right, int value) {
    memset(row(y) + left, value, static_cast<size_t>(right - left + 1));
  }
  // The first marked pixel from number i on; false when there is none.
  bool next(size_t* i) const {
    const void* found = *i < count_ ? memchr(bytes_ + *i, 1, count_ - *i) : nullptr;
    if (found) *i = static_cast<size_t>(static_cast<const Zeb8u*>(found) - bytes_);
    return found != nullptr;
  }
  size_t width() const { return width_; }

 private:
  Zeb8u* bytes_;
  size_t width_, count_;
};

// Spans that found the stack full, as marks of their pixels: runs of one row never touch each other, so the spans can
// be read back. They come back without their parent; its row is then looked through again, in vain.
class PostponedSpans {
 public:
  PostponedSpans(Zeb8u* memory, ZebiSize size) : map_(memory, size), size_(size) {}

  void add(const Span& s) {
    if (!used_) map_.clear();
    used_ = true;
    map_.mark(s.y, s.left, s.right, 1);
    const size_t i = static_cast<size_t>(s.y) * map_.width() + static_cast<size_t>(s.left);
    if (i < next_) next_ = i;
  }
  bool take(Span* s) {
    if (!used_ || !map_.next(&next_)) return false;
    const int y = static_cast<int>(next_ / map_.width()), left = static_cast<int>(next_ % map_.width());
    int right = left;
    while (right + 1 < size_.width && map_.row(y)[right + 1]) ++right;
    map_.mark(y, left, right, 0);
    *s = {y, left, right, right + 1, right, 1};
    return true;
  }

 private:
  PixelMap map_;
  ZebiSize size_;
  bool used_ = false;
  size_t next_ = SIZE_MAX;
};

// Finds runs of pixels that pass a test, by vectors.
template <class T, int channels, class Test>
class TestedPixels {
 public:
  TestedPixels(Rows<T> image, ZebiSize size, const Test& test) : image_(image), width_(size.width), test_(test) {}
  ZEB_INLINE int first(int y, int x, int end) const {
    return firstPassing<T, channels>(image_[y], x, end, width_, test_);
  }
  ZEB_INLINE int start(int y, int x) const { return runStart<T, channels>(image_[y], x, test_); }
  ZEB_INLINE int end(int y, int x) const { return runEnd<T, channels>(image_[y], x, width_, test_); }
  void taken(int, int, int) {}

 private:
  Rows<T> image_;
  int width_;
  Test test_;
};

// The same where painted pixels pass the test again: a map tells what has been painted.
template <class T, int channels, class Test>
class UnpaintedPixels {
 public:
  UnpaintedPixels(Rows<T> image, ZebiSize size, const Test& test, Zeb8u* memory)
      : image_(image), width_(size.width), test_(test), painted_(memory, size) {
    painted_.clear();
  }
  int first(int y, int x, int end) const {
    while (x < end && !passes(x, y)) ++x;
    return x;
  }
  int start(int y, int x) const {
    while (x > 0 && passes(x - 1, y)) --x;
    return x;
  }
  int end(int y, int x) const { return first<false>(y, x); }
  void taken(int y, int left, int right) { painted_.mark(y, left, right, 1); }

 private:
  template <bool wanted>
  int first(int y, int x) const {
    while (x < width_ && passes(x, y) != wanted) ++x;
    return x;
  }
  bool passes(int x, int y) const { return test_(image_[y] + x * channels) && !painted_.row(y)[x]; }

  Rows<T> image_;
  int width_;
  Test test_;
  PixelMap painted_;
};

// What becomes of a span when the stack is full: the plain fills put it aside, the range fills end.
struct EndAt {
  int64_t capacity;  // reaching it ends the fill; 0 is never reached
  bool push(SpanStack& stack, const Span& s) const { return stack.push(s) && stack.count() != capacity; }
  bool resume(Span*) const { return false; }
};
struct PutAside {
  PostponedSpans postponed;
  bool push(SpanStack& stack, const Span& s) {
    if (!stack.push(s)) postponed.add(s);
    return true;
  }
  bool resume(Span* s) { return postponed.take(s); }
};

template <class T, int channels, class Pixels, class WhenFull>
class PaintedRegion {
 public:
  PaintedRegion(Rows<T> image, ZebiSize size, const T* newValue, Pixels& pixels, SpanStack& stack, WhenFull& whenFull)
      : image_(image), width_(size.width), newValue_(newValue), pixels_(pixels), stack_(stack), whenFull_(whenFull) {}

  // Joins the run through a pixel; false when the fill must end.
  ZEB_INLINE bool join(int y, int left, int right, int parentLeft, int parentRight, int direction) {
    paintRun(image_[y], left, right, width_, newValue_);
    pixels_.taken(y, left, right);
    extent_.add(y, left, right);
    return whenFull_.push(stack_, {y, left, right, parentLeft, parentRight, direction});
  }
  bool explore(int y, int from, int to, const Span& parent, int direction) {
    for (int x = from; (x = pixels_.first(y, x, to + 1)) <= to;) {
      const int left = x == from ? pixels_.start(y, x) : x;
      const int right = pixels_.end(y, x + 1) - 1;
      if (!join(y, left, right, parent.left, parent.right, direction)) return false;
      x = right + 2;
      if (x > to) break;
    }
    return true;
  }
  void finish(const Span&) {}
  bool resume(Span* s) { return whenFull_.resume(s); }

  // The seed belongs to the region whether it passes the test or not.
  void fill(ZebiPoint seed, ZebiSize size, Connected connected) {
    const int left = pixels_.start(seed.y, seed.x), right = pixels_.end(seed.y, seed.x + 1) - 1;
    const bool goesOn =
        join(seed.y, left, right, right + 1, right, seed.y == size.height - 1 ? -1 : 1) && size.height > 1;
    if (goesOn) spread(*this, stack_, size, connected);
  }
  void record(ZebiConnectedComp* region) const { extent_.template record<T, channels>(newValue_.value, region); }

 private:
  Rows<T> image_;
  int width_;
  PixelValue<T, channels> newValue_;
  Pixels& pixels_;
  SpanStack& stack_;
  WhenFull& whenFull_;
  Extent extent_;
};

// Bytes of the buffer: a quarter of the pixels times 24, and 32.
inline int64_t paintedFillBytes(ZebiSize size) {
  return 24 * pixelCount(size) / 4 + 32;
}

// The buffer holds the stack and, behind it, a map of one byte per pixel. Of the 6 bytes per pixel and 32 that there
// are this leaves the stack of a range fill the width x height / 4 - 1 entries of 20 bytes that it can come to hold.
inline int64_t stackBytes(ZebiSize size) {
  return paintedFillBytes(size) - pixelCount(size);
}

}  // namespace zeb
