// An image together with the pixels around it: where a position outside the region comes from under each border rule.
//
// A border type is a base rule in its low four bits and side flags above them. A side is in memory where the base rule
// is zebBorderInMem or the side's flag is set: pixels beyond it are read as they lie. Beyond the other sides the base
// rule holds. Rows first, then columns in that row; under the constant rule a row beyond such a side is constant as a
// whole, corners included.
#pragma once

#include <stddef.h>
#include <stdint.h>
#include <string.h>

#include <type_traits>

#include "core/scratch.h"
#include "core/vec.h"
#include "filter/border_rules.h"

namespace zeb {

// count copies of a pixel of size bytes: copies of what is there already, twice as many each time.
inline void repeatPixelOften(const Zeb8u* pixel, int size, Zeb8u* out, ptrdiff_t count) {
  const ptrdiff_t bytes = count * size;
  if (size == 1) {
    memset(out, *pixel, static_cast<size_t>(bytes));
    return;
  }
  memmove(out, pixel, static_cast<size_t>(size));
  for (ptrdiff_t done = size; done < bytes;) {
    const ptrdiff_t piece = done < bytes - done ? done : bytes - done;
    memcpy(out + done, out, static_cast<size_t>(piece));
    done += piece;
  }
}
// The same for the usual few beside a row, for which a call would cost more.
ZEB_INLINE void repeatPixel(const Zeb8u* pixel, int size, Zeb8u* out, ptrdiff_t count) {
  if (count > 8) return repeatPixelOften(pixel, size, out, count);
  for (; count > 0; --count, out += size)
    for (int k = 0; k < size; ++k) out[k] = pixel[k];
}

// A run of bytes, mostly short.
inline void copyRun(Zeb8u* to, const Zeb8u* from, ptrdiff_t bytes) {
  if (bytes <= 32)
    copyFew(to, from, static_cast<int>(bytes));
  else
    memcpy(to, from, static_cast<size_t>(bytes));
}

// An image of pixels of any type, which are moved as bytes.
class BorderedImage {
 public:
  // value: a pixel, read under the constant rule only.
  BorderedImage(const void* first, int step, ZebiSize size, int pixelBytes, ZebiBorderType border = zebBorderRepl,
                const void* value = nullptr)
      : first_(static_cast<const Zeb8u*>(first)),
        value_(static_cast<const Zeb8u*>(value)),
        step_(step),
        size_(size),
        pixelBytes_(pixelBytes),
        base_(borderBase(border)),
        sides_(sidesInMemory(border)) {}

  // Column 0 of row y, wherever the row comes from; null where every pixel of it is the constant.
  ZEB_INLINE const Zeb8u* row(int64_t y) const {
    const int at = static_cast<int>(y);
    return at == y && at >= 0 && at < size_.height ? rowAt(at) : rowOutside(y);
  }

  // Column `column` of rows y..y+count-1, none of which is constant.
  template <class T>
  void rows(int64_t y, int count, int64_t column, const T** out) const {
    const ptrdiff_t at = static_cast<ptrdiff_t>(column * pixelBytes_);
    if (y >= 0 && y <= static_cast<int64_t>(size_.height) - count) {
      const Zeb8u* p = first_ + static_cast<ptrdiff_t>(y) * step_ + at;
      for (int i = 0; i < count; ++i, p += step_) out[i] = reinterpret_cast<const T*>(p);
      return;
    }
    for (int i = 0; i < count; ++i) out[i] = reinterpret_cast<const T*>(row(y + i) + at);
  }

  // A range of columns: so many beyond the left edge, those that stand in memory, so many beyond the right edge. Of a
  // range that lies wholly beyond an edge, the edge pixel is kept where it is repeated, first, and none elsewhere.
  struct Columns {
    ptrdiff_t from, to;
    ptrdiff_t kept, keptEnd;
    ptrdiff_t before, after;
    bool beyond;

    ptrdiff_t keptCount() const { return keptEnd - kept; }
  };
  Columns columns(int64_t first, int64_t end) const {
    // A range that fits a scratch line fits the machine's words.
    const auto from = static_cast<ptrdiff_t>(first), to = static_cast<ptrdiff_t>(end);
    Columns c{from, to, from, to, 0, 0, false};
    if (!sides_.left) {
      if (c.kept < 0) c.kept = 0;
      if (c.keptEnd < 1) c.keptEnd = 1;
    }
    if (!sides_.right) {
      if (c.kept > size_.width - 1) c.kept = size_.width - 1;
      if (c.keptEnd > size_.width) c.keptEnd = size_.width;
    }
    c.beyond = from >= c.keptEnd || to <= c.kept;
    if (!c.beyond) {
      c.before = c.kept - from, c.after = to - c.keptEnd;
    } else if (repeats()) {
      c.after = to - from - 1;
    } else {
      c.keptEnd = c.kept;
      c.before = to - from;
    }
    return c;
  }

  // Replicated borders: out holds the kept columns in their place; repeats the first and the last of them over the rest
  // of the range. What was computed from the columns of several rows is completed as well as the columns themselves.
  template <int fixedBytes = 0>
  void complete(Zeb8u* out, const Columns& c) const {
    const int px = fixedBytes ? fixedBytes : pixelBytes_;
    Zeb8u* const kept = out + c.before * px;
    Zeb8u* const end = kept + c.keptCount() * px;
    repeatPixel(kept, px, out, c.before);
    repeatPixel(end - px, px, end, c.after);
  }

  // The same in a scratch line of T with a vector of room before it and two behind it, which a usual border fills with
  // one store. Kernels compute whole vectors: floats get numbers behind the range, so that none of them is invalid.
  template <class T>
  ZEB_INLINE void completeLine(T* line, const Columns& c) const {
    completeLines(line, c, 1, 0);
  }
  // Of so many lines, so many elements apart.
  template <class T>
  ZEB_INLINE void completeLines(T* line, const Columns& c, int count, ptrdiff_t stride) const {
    constexpr int lanes = Vec<T>::lanes;
    const ptrdiff_t width = c.to - c.from, before = c.before, after = c.after, kept = c.keptCount();
    const int px = pixelBytes_;
    const bool usual = px == static_cast<int>(sizeof(T)) && before <= lanes && after <= lanes;
    for (; count > 0; --count, line += stride) {
      if constexpr (std::is_floating_point_v<T>) {
        T* const behind = line + width * (px / static_cast<int>(sizeof(T)));
        store(behind, splat(T(0)));
        store(behind + lanes, splat(T(0)));
      }
      if (!usual) {
        complete(reinterpret_cast<Zeb8u*>(line), c);
        continue;
      }
      T* const first = line + before;
      T* const end = first + kept;
      if (before > 0) store(first - lanes, splat(*first));
      if (after > 0) store(end, splat(end[-1]));
    }
  }

  // The columns of row y, all of the range, under any rule. Reads no pixel but those. fixedBytes: those of a pixel,
  // where they are known.
  template <int fixedBytes = 0>
  void fetch(int64_t y, const Columns& c, Zeb8u* out) const {
    const int px = fixedBytes ? fixedBytes : pixelBytes_;
    const Zeb8u* const line = row(y);
    if (line == nullptr) return repeatPixelOften(value_, px, out, c.to - c.from);
    copyRun(out + c.before * px, line + c.kept * px, c.keptCount() * px);
    if (repeats()) return complete<fixedBytes>(out, c);
    fetchOutside(line, c.from, c.before, out);
    fetchOutside(line, c.keptEnd, c.after, out + (c.before + c.keptCount()) * px);
  }

  // The same into a scratch line with room as above, for replicated borders.
  template <class T>
  void fetchLine(int64_t y, const Columns& c, T* line) const {
    const ptrdiff_t px = pixelBytes_;
    memcpy(reinterpret_cast<Zeb8u*>(line) + c.before * px, row(y) + c.kept * px,
           static_cast<size_t>(c.keptCount() * px));
    completeLine(line, c);
  }

  ZebiSize size() const { return size_; }
  ptrdiff_t step() const { return step_; }  // bytes from row to row
  int pixelBytes() const { return pixelBytes_; }
  // The pixel beside the image, null where there is no one such pixel.
  const Zeb8u* constant() const { return base_ == zebBorderConst ? value_ : nullptr; }
  Sides sides() const { return sides_; }

 private:
  const Zeb8u* rowAt(ptrdiff_t y) const { return first_ + y * step_; }
  // Not inlined: it is rarely called, and would make every loop over rows larger.
  __attribute__((noinline)) const Zeb8u* rowOutside(int64_t y) const {
    if (y < 0 ? sides_.top : sides_.bottom) return rowAt(static_cast<ptrdiff_t>(y));
    if (base_ == zebBorderRepl || base_ == zebBorderInMem) return rowAt(y < 0 ? 0 : size_.height - 1);
    const int source = borderSource(base_, y, size_.height);
    return source == borderConstant ? nullptr : rowAt(source);
  }

  // Edge pixels are repeated beyond the sides that are not in memory.
  bool repeats() const { return base_ == zebBorderRepl || base_ == zebBorderInMem; }

  // count columns of a row from `from` on, all beyond one side.
  void fetchOutside(const Zeb8u* line, ptrdiff_t from, ptrdiff_t count, Zeb8u* out) const {
    const ptrdiff_t px = pixelBytes_;
    if (base_ == zebBorderConst) {
      repeatPixel(value_, pixelBytes_, out, count);
      return;
    }
    for (ptrdiff_t x = from; x < from + count; ++x, out += px)
      memcpy(out, line + borderSource(base_, x, size_.width) * px, static_cast<size_t>(px));
  }

  const Zeb8u* first_;
  const Zeb8u* value_;
  int step_;
  ZebiSize size_;
  int pixelBytes_;
  int base_;
  Sides sides_;
};

// fetch() once for all who need not have it in their loops; of pixels of 1, 4 and 12 bytes.
template <int pixelBytes>
void fetchPixels(const BorderedImage& source, int64_t y, const BorderedImage::Columns& c, void* out);

// What was computed from the kept columns, in its place in a line: the rest of the range repeats the first and the last
// of it, or a given pixel.
template <class T>
void completeEnds(T* line, const BorderedImage::Columns& c, int channels, const T* pixel);

// The last `count` rows of a sequence, each with room for a number of elements: row y stands where row y - count stood.
// Rows may have numbers from -count on.
template <class T, int count = 0>
class RowRing {
 public:
  static int64_t bytes(int64_t stride) { return count * stride * static_cast<int64_t>(sizeof(T)); }

  RowRing(Scratch& scratch, int64_t stride, unsigned alignment = 1)
      : first_(scratch.take<T>(count * stride, alignment)), stride_(static_cast<ptrdiff_t>(stride)) {}

  T* operator[](int64_t y) const {
    return first_ + static_cast<ptrdiff_t>((static_cast<unsigned>(y) + count) % count) * stride_;
  }

 private:
  T* first_;
  ptrdiff_t stride_;
};
// As many rows as are told when the ring is made. They enter one after the other and are found from the newest back,
// which takes no division; a row begins `offset` elements behind the start of its room.
template <class T>
class RowRing<T, 0> {
 public:
  static int64_t bytes(int count, int64_t stride) { return count * stride * static_cast<int64_t>(sizeof(T)); }

  RowRing(Scratch& scratch, int count, int64_t stride, unsigned alignment = 1, ptrdiff_t offset = 0)
      : first_(scratch.take<T>(count * stride, alignment) + offset),
        stride_(static_cast<ptrdiff_t>(stride)),
        count_(count) {}

  // Room for the next row, in the place of the oldest.
  T* enter() {
    newest_ = newest_ + 1 == count_ ? 0 : newest_ + 1;
    return first_ + newest_ * stride_;
  }
  // The row that entered this many rows before the newest.
  T* back(int rows) const {
    const int at = newest_ - rows;
    return first_ + (at < 0 ? at + count_ : at) * stride_;
  }

 private:
  T* first_;
  ptrdiff_t stride_;
  int count_, newest_ = -1;
};

}  // namespace zeb
