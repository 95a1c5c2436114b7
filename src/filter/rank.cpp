// Minimum and maximum over a rectangle: columns by direct combination or by running blocks, rows by widening windows.
#include "filter/rank.h"

#include "filter/small_windows.h"
#include "filter/windows_along.h"

namespace zeb {

namespace {

// Up to this many rows are combined directly.
constexpr int64_t directRows = 8;

// Strips of columns are so wide that what is read again stays in the second cache: the source rows and lines of direct
// combination, or the suffixes and source rows of running blocks; and no narrower than this many pixels.
constexpr int64_t bytesOfDirectRows = 200 << 10, bytesOfBlocks = 384 << 10, leastColumns = 256;

// Longer lines than that are made four at a time, so that they stay in the first cache.
constexpr ptrdiff_t bytesOfLine = 768;

int64_t clamped(int64_t v, int64_t low, int64_t high) {
  return v < low ? low : v > high ? high : v;
}

// A window reaches no further than the image where what lies beyond repeats the edge.
Window withinReach(Window w, const BorderedImage& source, Sides sides) {
  const int64_t x = source.size().width - 1, y = source.size().height - 1;
  const auto reach = [](int64_t v, int64_t far, bool before, bool after) {
    return before && v < 0 ? v : after && v > 0 ? v : clamped(v, -far, far);
  };
  return {reach(w.left, x, sides.left, sides.right), reach(w.right, x, sides.left, sides.right),
          reach(w.top, y, sides.top, sides.bottom), reach(w.bottom, y, sides.top, sides.bottom)};
}

template <class Op>
class RankStrip {
  using T = typename Op::Type;
  using Numbers = typename Op::Numbers;  // of the source, which may hold others

 public:
  RankStrip(const BorderedImage& source, Window window, int channels, const RowOutput<T>& output, int x, int columns,
            Scratch scratch)
      : source_(source),
        output_(output),
        channels_(channels),
        width_(window.right - window.left + 1),
        height_(window.bottom - window.top + 1),
        top_(window.top),
        range_(source.columns(x + window.left, int64_t(x) + columns + window.right)),
        kept_(static_cast<ptrdiff_t>(range_.keptCount() * channels)),
        at_(static_cast<ptrdiff_t>(x) * channels),
        n_(static_cast<ptrdiff_t>(columns) * channels) {
    const ptrdiff_t reach = range_.before > range_.after ? range_.before : range_.after;
    within_ = static_cast<ptrdiff_t>(clamped(width_ - reach, 0, range_.keptCount()));
    stride_ = static_cast<ptrdiff_t>(scratchStride(range_.to - range_.from, source.pixelBytes()) / sizeof(T));
    // The kept columns begin at a boundary, so that the stores to them do not straddle cache lines.
    const int64_t place = range_.before * channels;
    lines_ = scratch.take<T>((height_ > directRows ? 5 : mostLines()) * stride_) + (-place & (Vec<T>::lanes - 1));
    if (height_ > directRows) {
      suffixes_ = scratch.take<T>(height_ * stride_);
      rows_ = scratch.take<const T*>(height_, alignof(const T*));
    }
  }

  void run() {
    if (height_ > directRows) {
      runBlocks();
    } else {
      runDirect();
    }
  }

 private:
  void rows(int64_t y, int count, const T** out) const { source_.rows(y + top_, count, range_.kept, out); }

  // Whether so many source rows from that of output row y on are all different ones.
  bool apart(int y, int count) const {
    const Sides in = source_.sides();
    const int64_t first = y + top_;
    return (in.top || first >= 0) && (in.bottom || first + count <= source_.size().height);
  }

  // Lines for as many rows as are made together, and one for the running extremum of blocks.
  int mostLines() const {
    return height_ < 3 || height_ > directRows || n_ > bytesOfLine / ptrdiff_t(sizeof(T)) ? 4 : rowsTogether;
  }
  T* line(int i) const { return lines_ + i * stride_; }

  // Where the columns' extremum of output row y goes: into the destination itself when nothing is left to do along the
  // row, else into a line, at the place that leaves room for the border.
  bool direct() const { return width_ == 1 && kept_ == n_ && !range_.beyond; }
  T* columnsTo(int y, int i) const { return direct() ? output_.begin(y, at_, i) : line(i) + range_.before * channels_; }
  // Rows that all pass through the one line of the output cannot be made together.
  bool oneByOne() const { return output_.together() < mostLines(); }
  bool single() const { return direct() && oneByOne(); }

  // The rest of the way for `count` rows from y on whose extrema along the columns are there.
  __attribute__((noinline)) void alongRows(int y, int count) const {
    ptrdiff_t made = 1;
    if (!direct()) {
      // Windows that are no longer than what is left of one beside an edge need no border: it repeats them instead.
      made = widenWithin<Op>(columnsTo(y, 0), kept_, within_, channels_, {count, stride_, stride_});
      BorderedImage::Columns c = range_;
      c.to -= made - 1, c.keptEnd -= made - 1;
      source_.completeLines(line(0), c, count, stride_);
      if (!oneByOne()) widen(made, y, 0, count);
    }
    for (int i = 0; i < count; ++i) {
      if (!direct() && oneByOne()) widen(made, y + i, i, 1);
      output_.end(y + i, at_, n_, oneByOne() ? 0 : i);
    }
  }
  void widen(ptrdiff_t made, int y, int i, int count) const {
    widenLines<Op>(line(i), made, output_.begin(y, at_), width_, line(i), channels_, n_,
                   {count, stride_, output_.step()}, true);
  }
  void oneRow(int y, const T* const* taps, int count) const {
    combineRows<Numbers>(taps, count, columnsTo(y, 0), kept_);
    alongRows(y, 1);
  }

  __attribute__((noinline)) void runDirect() const {
    const int end = output_.endRow, h = static_cast<int>(height_), group = single() ? 1 : 4;
    const ptrdiff_t step = source_.step() / static_cast<ptrdiff_t>(sizeof(T));
    const T* taps[directRows + 3];
    for (int y = output_.firstRow; y < end;) {
      // Groups of short lines go along their rows together.
      int made = 0;
      for (; group > 1 && made < mostLines() && y + made <= end - group; made += group) {
        rows(y + made, h + group - 1, taps);
        if (kept_ >= Vec<T>::lanes && apart(y + made, h + group - 1)) {
          T* const out = columnsTo(y + made, made);
          const ptrdiff_t outStep = direct() ? output_.step() : stride_;
          if (h >= 3) {
            combineFour<Numbers>(taps[0], step, h, out, outStep, kept_);
          } else {
            combineLines<Numbers>(taps, h, 0, out, kept_, {group, step, outStep});
          }
        } else {
          for (int i = 0; i < group; ++i) combineRows<Numbers>(taps + i, h, columnsTo(y + made + i, made + i), kept_);
        }
      }
      if (made == 0) {
        rows(y, h, taps);
        combineRows<Numbers>(taps, h, columnsTo(y, 0), kept_);
        made = 1;
      }
      alongRows(y, made);
      y += made;
    }
  }

  // Output rows y..y+h-1 stand on source rows y+top..: the suffixes of that block of h rows, and for all but the first
  // the beginning of the next block. Rows that repeat the first or the last of the image are taken once.
  __attribute__((noinline)) void runBlocks() const {
    const int end = output_.endRow, h = static_cast<int>(height_), group = single() ? 1 : 4;
    const int64_t below = source_.sides().bottom ? INT64_MAX / 2 : source_.size().height;
    T* const prefix = line(4);
    for (int64_t y = output_.firstRow; y < end; y += h) {
      const int first = static_cast<int>(y), many = static_cast<int>(end - y < h ? end - y : h);
      const int64_t top = y + top_;
      const int lead = source_.sides().top ? 0 : static_cast<int>(clamped(-top, 0, h - 1));
      const int different = h - lead - (below - top < h ? static_cast<int>(clamped(h - (below - top), 0, h - 1)) : 0);
      rows(y + lead, different, rows_);
      suffixRows<Numbers>(rows_, different, suffixes_, stride_, kept_);
      const auto suffix = [=](int j) { return suffixes_ + clamped(j - lead, 0, different - 1) * stride_; };
      const T* taps[2] = {suffix(0), prefix};
      oneRow(first, taps, 1);
      for (int j = 1; j < many;) {
        // The row that enters with result j, and whether it repeats the one before.
        const int64_t entering = top + h + j - 1;
        const int made = j == 1 ? 1 : many - j < group ? many - j : group;
        const T *next[4], *suffixesNow[4];
        T* out[4];
        for (int i = 0; i < made; ++i) suffixesNow[i] = suffix(j + i), out[i] = columnsTo(first + j + i, i);
        if (j == 1) {
          rows(y + h, 1, next);
          combineRows<Numbers>(next, 1, prefix, kept_);
        }
        if (j == 1 || entering > below - 1) {
          for (int i = 0; i < made; ++i) {
            taps[0] = suffixesNow[i];
            combineRows<Numbers>(taps, 2, out[i], kept_);
          }
        } else {
          rows(y + h + j - 1, made, next);
          if (made == 4) {
            advanceRows<Numbers, 4>(next, prefix, suffixesNow, out, kept_);
          } else {
            for (int i = 0; i < made; ++i) advanceRows<Numbers, 1>(next + i, prefix, suffixesNow + i, out + i, kept_);
          }
        }
        alongRows(first + j, made);
        j += made;
      }
    }
  }

  const BorderedImage& source_;
  const RowOutput<T>& output_;
  int channels_;
  int64_t width_, height_, top_;
  BorderedImage::Columns range_;
  ptrdiff_t kept_, at_, n_, stride_;
  ptrdiff_t within_;  // the longest windows of which every result has some that lie in the kept columns
  T* lines_;
  T* suffixes_ = nullptr;
  const T** rows_ = nullptr;
};

}  // namespace

template <class Op>
void rankRegion(const BorderedImage& source, Window window, int channels, const RowOutput<typename Op::Type>& output,
                Scratch scratch) {
  if (trySmallWindows<Op>(source, window, false, channels, output)) return;
  window = withinReach(window, source, source.sides());
  const int64_t height = window.bottom - window.top + 1, width = window.right - window.left + 1;
  const int64_t bytes = height > directRows ? bytesOfBlocks / (2 * height) : bytesOfDirectRows / (height + 8);
  const int64_t least = 8 * width > leastColumns ? 8 * width : leastColumns;
  const int64_t most = bytes / source.pixelBytes() > least ? bytes / source.pixelBytes() : least;
  const int all = source.size().width;
  const int strips = static_cast<int>((all + most - 1) / most);
  // Of equal width, in whole cache lines.
  const int columns = strips == 1 ? all : ((all + strips - 1) / strips + 63) & ~63;
  for (int x = 0; x < all;) {
    const int n = columns < all - x ? columns : all - x;
    RankStrip<Op>(source, window, channels, output, x, n, scratch).run();
    x += n;
  }
}

#define RANK(T)                                                                                         \
  template void rankRegion<Lowest<T>>(const BorderedImage&, Window, int, const RowOutput<T>&, Scratch); \
  template void rankRegion<Highest<T>>(const BorderedImage&, Window, int, const RowOutput<T>&, Scratch);
RANK(Zeb8u)
RANK(Zeb16u)
RANK(Zeb16s)
RANK(Zeb32f)

}  // namespace zeb
