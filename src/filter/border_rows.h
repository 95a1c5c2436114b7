// Rows of a region together with the pixels around it: read where they are in memory, repeated from the nearest edge
// pixel elsewhere.
#pragma once

#include <stddef.h>
#include <stdint.h>
#include <string.h>

#include "core/vec.h"
#include "zebcv/types.h"

namespace zeb {

// On which sides of a region the pixels beyond the edge exist in memory.
struct Sides {
  bool left = false, right = false, top = false, bottom = false;

  bool any() const { return left || right || top || bottom; }
};

// zebBorderInMem stands for all four flags.
inline Sides sidesInMemory(ZebiBorderType border) {
  if ((border & 15) == zebBorderInMem) return {true, true, true, true};
  return {(border & zebBorderInMemLeft) != 0, (border & zebBorderInMemRight) != 0, (border & zebBorderInMemTop) != 0,
          (border & zebBorderInMemBottom) != 0};
}

// count copies of a pixel of size bytes.
inline void repeatPixel(const Zeb8u* pixel, int size, Zeb8u* out, int64_t count) {
  const int64_t bytes = count * size;
  if (bytes <= 16) {
    // The usual few pixels beside a row: cheaper than a call.
    for (int i = 0; i < static_cast<int>(bytes); i += size)
      for (int k = 0; k < size; ++k) out[i + k] = pixel[k];
    return;
  }
  if (size == 1) {
    memset(out, *pixel, static_cast<size_t>(bytes));
    return;
  }
  // Copies of what is there already, twice as many each time.
  memmove(out, pixel, static_cast<size_t>(size));
  for (int64_t done = size; done < bytes;) {
    const int64_t piece = done < bytes - done ? done : bytes - done;
    memcpy(out + done, out, static_cast<size_t>(piece));
    done += piece;
  }
}

class BorderRows {
 public:
  BorderRows(const void* first, int step, ZebiSize size, int pixelBytes, Sides sides)
      : first_(static_cast<const Zeb8u*>(first)), step_(step), size_(size), pixelBytes_(pixelBytes), sides_(sides) {}

  // Column 0 of row y; rows beyond an edge that is not in memory are the edge row.
  const Zeb8u* row(int64_t y) const {
    if (y < 0 && !sides_.top) y = 0;
    if (y >= size_.height && !sides_.bottom) y = size_.height - 1;
    return first_ + static_cast<ptrdiff_t>(y) * step_;
  }

  // Column `column` of rows y..y+count-1.
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

  // A range of columns, and which of it stand in memory. A range that lies wholly beyond an edge keeps the edge pixel.
  struct Columns {
    int64_t from, to;
    int64_t kept, keptEnd;

    bool beyond() const { return from >= keptEnd || to <= kept; }
    // Where the kept columns belong among from..to-1, in pixels; a lone edge pixel comes first.
    int64_t place() const { return beyond() ? 0 : kept - from; }
    int64_t keptCount() const { return keptEnd - kept; }
  };
  Columns columns(int64_t from, int64_t to) const {
    Columns c{from, to, from, to};
    if (!sides_.left) {
      if (c.kept < 0) c.kept = 0;
      if (c.keptEnd < 1) c.keptEnd = 1;
    }
    if (!sides_.right) {
      if (c.kept > size_.width - 1) c.kept = size_.width - 1;
      if (c.keptEnd > size_.width) c.keptEnd = size_.width;
    }
    return c;
  }

  // out holds the kept columns in their place; repeats the first and the last of them over the rest of the range.
  void complete(Zeb8u* out, const Columns& c) const {
    const int64_t px = pixelBytes_;
    if (c.beyond()) {
      repeatPixel(out, pixelBytes_, out, c.to - c.from);
      return;
    }
    repeatPixel(out + (c.kept - c.from) * px, pixelBytes_, out, c.kept - c.from);
    repeatPixel(out + (c.keptEnd - 1 - c.from) * px, pixelBytes_, out + (c.keptEnd - c.from) * px, c.to - c.keptEnd);
  }

  // The same in a scratch line of T with a vector of room at either end, which a usual border fills with one store.
  template <class T>
  ZEB_INLINE void completeLine(T* line, const Columns& c) const {
    constexpr int lanes = Vec<T>::lanes;
    if (pixelBytes_ != static_cast<int>(sizeof(T)) || c.kept - c.from > lanes || c.to - c.keptEnd > lanes || c.beyond())
      return complete(reinterpret_cast<Zeb8u*>(line), c);
    T* first = line + (c.kept - c.from);
    T* end = line + (c.keptEnd - c.from);
    if (c.kept > c.from) store(first - lanes, splat(*first));
    if (c.to > c.keptEnd) store(end, splat(end[-1]));
  }

  // The columns of row y, all of the range.
  void fetch(int64_t y, const Columns& c, Zeb8u* out) const {
    const int64_t px = pixelBytes_;
    memcpy(out + c.place() * px, row(y) + c.kept * px, static_cast<size_t>(c.keptCount() * px));
    complete(out, c);
  }

  // The same into a scratch line with room as above.
  template <class T>
  void fetchLine(int64_t y, const Columns& c, T* line) const {
    const int64_t px = pixelBytes_;
    memcpy(reinterpret_cast<Zeb8u*>(line) + c.place() * px, row(y) + c.kept * px,
           static_cast<size_t>(c.keptCount() * px));
    completeLine(line, c);
  }

  ZebiSize size() const { return size_; }
  int pixelBytes() const { return pixelBytes_; }
  Sides sides() const { return sides_; }

 private:
  const Zeb8u* first_;
  int step_;
  ZebiSize size_;
  int pixelBytes_;
  Sides sides_;
};

}  // namespace zeb
