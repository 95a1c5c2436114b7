// The plain and range fills: pixels are painted as soon as they are found.
#pragma once

#include "core/rows.h"
#include "segment/fill_rows.h"
#include "segment/fill_spans.h"

namespace zeb {

// One bit per pixel, rows one after the other, in the caller's memory.
class PixelBits {
 public:
  PixelBits(Zeb8u* memory, ZebiSize size) : bits_(memory), width_(size.width), count_(pixelCount(size)) {}

  static int64_t bytes(ZebiSize size) { return (pixelCount(size) + 7) / 8; }
  void clear() { memset(bits_, 0, static_cast<size_t>((count_ + 7) / 8)); }
  bool at(int x, int y) const {
    const int64_t i = index(x, y);
    return bits_[i >> 3] >> (i & 7) & 1;
  }
  void set(int y, int left, int right) {
    for (int64_t i = index(left, y), end = index(right, y); i <= end; ++i)
      bits_[i >> 3] = static_cast<Zeb8u>(bits_[i >> 3] | 1 << (i & 7));
  }
  void reset(int x, int y) {
    const int64_t i = index(x, y);
    bits_[i >> 3] = static_cast<Zeb8u>(bits_[i >> 3] & ~(1 << (i & 7)));
  }
  int64_t index(int x, int y) const { return static_cast<int64_t>(y) * width_ + x; }
  // The first set bit from i on, or -1.
  int64_t firstFrom(int64_t i) const {
    while (i < count_) {
      if (const int byte = bits_[i >> 3] >> (i & 7)) {
        i += __builtin_ctz(static_cast<unsigned>(byte));
        return i;
      }
      i = (i | 7) + 1;
    }
    return -1;
  }

 private:
  Zeb8u* bits_;
  int width_;
  int64_t count_;
};

// Spans that found the stack full, as bits of their pixels: runs of one row never touch each other, so the spans can be
// read back from the bits. They come back without their parent; its row is then looked through again, in vain.
class PostponedSpans {
 public:
  PostponedSpans(Zeb8u* memory, ZebiSize size) : bits_(memory, size), size_(size) {}

  void add(const Span& s) {
    if (!used_) bits_.clear();
    used_ = true;
    bits_.set(s.y, s.left, s.right);
    const int64_t i = bits_.index(s.left, s.y);
    if (i < next_) next_ = i;
  }
  bool take(Span* s) {
    if (!used_) return false;
    const int64_t i = bits_.firstFrom(next_);
    if (i < 0) return false;
    next_ = i;
    s->y = static_cast<int>(i / size_.width);
    s->left = s->right = static_cast<int>(i % size_.width);
    bits_.reset(s->left, s->y);
    while (s->right + 1 < size_.width && bits_.at(s->right + 1, s->y)) bits_.reset(++s->right, s->y);
    s->parentLeft = s->right + 1;
    s->parentRight = s->right;
    s->direction = 1;
    return true;
  }

 private:
  PixelBits bits_;
  ZebiSize size_;
  bool used_ = false;
  int64_t next_ = INT64_MAX;
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

// The same where painted pixels pass the test again: a bit per pixel tells that it has been painted.
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
  void taken(int y, int left, int right) { painted_.set(y, left, right); }

 private:
  template <bool wanted>
  int first(int y, int x) const {
    while (x < width_ && passes(x, y) != wanted) ++x;
    return x;
  }
  bool passes(int x, int y) const { return test_(image_[y] + x * channels) && !painted_.at(x, y); }

  Rows<T> image_;
  int width_;
  Test test_;
  PixelBits painted_;
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
  template <bool diagonal>
  void fill(ZebiPoint seed, ZebiSize size) {
    const int left = pixels_.start(seed.y, seed.x), right = pixels_.end(seed.y, seed.x + 1) - 1;
    const bool goesOn =
        join(seed.y, left, right, right + 1, right, seed.y == size.height - 1 ? -1 : 1) && size.height > 1;
    if (goesOn) spread<diagonal>(*this, stack_, size);
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

// What the fill before it needs of the buffer behind its stack.
inline int64_t stackBytes(ZebiSize size) {
  return fillBytes(size) - PixelBits::bytes(size);
}

}  // namespace zeb
