// The paths of erosion and dilation: element by element, by run lengths, by rectangles.
#include "morph/region.h"

#include "filter/small_windows.h"
#include "filter/windows_along.h"
#include "morph/columns.h"
#include "morph/cover.h"

namespace zeb {

namespace {

template <class T>
void copyRegion(const BorderedImage& source, int channels, const RowOutput<T>& output) {
  const ptrdiff_t n = static_cast<ptrdiff_t>(source.size().width) * channels;
  for (int y = output.firstRow; y < output.endRow; ++y) {
    memcpy(output.begin(y, 0), source.row(y), static_cast<size_t>(n) * sizeof(T));
    output.end(y, 0, n);
  }
}

// Strips of columns whose ring of rows stays in the second cache, and no narrower than so many pixels.
constexpr int64_t bytesOfRing = 512 << 10, leastColumns = 256;
int stripColumns(int width, int64_t rows, int pixelBytes, int64_t reach) {
  const int64_t fit = bytesOfRing / (rows * pixelBytes);
  const int64_t least = 8 * reach > leastColumns ? 8 * reach : leastColumns;
  const int64_t most = fit > least ? fit : least;
  if (width <= most) return width;
  const int strips = static_cast<int>((width + most - 1) / most);
  return (width / strips + 63) & ~63;
}

// ---- Small masks: taps straight from the source rows, and the few pixels beside the edges one by one ----

struct SmallMask {
  static constexpr int most = 9;
  int count = 0, left = 0, right = 0;  // reach to either side, at least 0
  int top = 0, bottom = 0;             // rows, of those above and below the anchor or its own
  int row[most], column[most];         // relative to the anchor

  // Whether the mask is small: few elements, few columns of pixels that need the border.
  bool take(const ZebiMorphState& state) {
    if (state.width > 16 || state.height > 16) return false;
    for (int y = 0, i = 0; y < state.height; ++y)
      for (int x = 0; x < state.width; ++x, ++i) {
        if (!state.mask[i]) continue;
        if (count == most) return false;
        row[count] = y - state.anchorY;
        if (row[count] < top) top = row[count];
        if (row[count] > bottom) bottom = row[count];
        column[count++] = x - state.anchorX;
        if (state.anchorX - x > left) left = state.anchorX - x;
        if (x - state.anchorX > right) right = x - state.anchorX;
      }
    return left + right <= 2;
  }
};

// The middle row and the middle column of 3 x 3, the anchor in the middle.
bool isCross(const ZebiMorphState& state) {
  constexpr Zeb8u cross[] = {0, 1, 0, 1, 1, 1, 0, 1, 0};
  if (state.width != 3 || state.height != 3 || state.anchorX != 1 || state.anchorY != 1) return false;
  bool same = true;
  for (int i = 0; i < 9; ++i) same = same && (state.mask[i] != 0) == (cross[i] != 0);
  return same;
}

// A pixel beside an edge is the first or the last element of a vector that lies in the row; what the vector leaves
// beside it is overwritten by the pixels further in.
template <class Op, class T = typename Op::Type>
class SmallRegion {
  static constexpr int lanes = Vec<T>::lanes;

 public:
  SmallRegion(const SmallMask& mask, int channels, const BorderedImage& source, const RowOutput<T>& output)
      : mask_(mask), channels_(channels), source_(source), output_(output), in_(source.sides()) {
    width_ = source.size().width;
    begin_ = in_.left ? 0 : mask.left < width_ ? mask.left : width_;
    const int last = in_.right ? width_ : width_ - mask.right;
    end_ = last > begin_ ? last : begin_;
  }

  void run() const {
    const ptrdiff_t n = static_cast<ptrdiff_t>(width_) * channels_;
    const bool wide = n >= lanes + 2 * channels_;
    const int height = source_.size().height;
    // Rows from..end-1 see no repeated row, so that their taps are equally far apart.
    const int from = in_.top ? 0 : -mask_.top, end = in_.bottom ? height : height - mask_.bottom;
    const ptrdiff_t step = height > 1 ? elements(source_.row(1) - source_.row(0)) : 0;
    const ptrdiff_t outStep = output_.step();
    for (int y = output_.firstRow; y < output_.endRow;) {
      int rows = output_.endRow - y < rowsTogether ? output_.endRow - y : rowsTogether;
      if (y < from || y >= end || rows > output_.together()) {
        rows = 1;
      } else if (rows > end - y) {
        rows = end - y;
      }
      const T *row[SmallMask::most], *taps[SmallMask::most];
      for (int i = 0; i < mask_.count; ++i) {
        row[i] = reinterpret_cast<const T*>(source_.row(int64_t(y) + mask_.row[i]));
        taps[i] = row[i] + static_cast<ptrdiff_t>(begin_ + mask_.column[i]) * channels_;
      }
      T* const out = output_.begin(y, 0);
      const Lines lines{rows, step, outStep};
      if (wide) {
        for (int x = width_ - 1; x >= end_; --x) edge(row, x, lanes - channels_, out, lines);
        for (int x = 0; x < begin_; ++x) edge(row, x, 0, out, lines);
      } else {
        for (int i = 0; i < rows; ++i) {
          const auto pixel = [&](int x) {
            for (int c = 0; c < channels_; ++c) {
              const auto at = [&](int k) { return row[k][i * step + sourceColumn(x, k) * channels_ + c]; };
              T best = at(0);
              for (int k = 1; k < mask_.count; ++k) best = Op::pick(best, at(k));
              out[i * outStep + static_cast<ptrdiff_t>(x) * channels_ + c] = best;
            }
          };
          for (int x = 0; x < begin_; ++x) pixel(x);
          for (int x = end_; x < width_; ++x) pixel(x);
        }
      }
      if (end_ > begin_)
        combineLines<Op>(taps, mask_.count, 0, out + static_cast<ptrdiff_t>(begin_) * channels_,
                         static_cast<ptrdiff_t>(end_ - begin_) * channels_, lines);
      for (int i = 0; i < rows; ++i) output_.end(y + i, 0, n, i);
      y += rows;
    }
  }

 private:
  static ptrdiff_t elements(ptrdiff_t bytes) { return bytes / static_cast<ptrdiff_t>(sizeof(T)); }
  ptrdiff_t sourceColumn(int x, int tap) const {
    const int column = x + mask_.column[tap];
    return column < 0 && !in_.left ? 0 : column >= width_ && !in_.right ? width_ - 1 : column;
  }
  // Pixel x of all lines; of the vectors that are read and written it begins `before` elements behind the start.
  void edge(const T* const* row, int x, int before, T* out, const Lines& lines) const {
    const T* taps[SmallMask::most];
    for (int i = 0; i < mask_.count; ++i) taps[i] = row[i] + sourceColumn(x, i) * channels_ - before;
    combineColumns<Op, 1, 0>(taps, mask_.count, 0, out + static_cast<ptrdiff_t>(x) * channels_ - before, lines);
  }

  const SmallMask& mask_;
  int channels_;
  const BorderedImage& source_;
  const RowOutput<T>& output_;
  Sides in_;
  int width_, begin_, end_;
};

// ---- General masks: one tap for each set element; the others change nothing and are left out. Where room is scarce
// the rows stand without a byte between them ----

template <class Op, class T = typename Op::Type>
void generalRegion(const ZebiMorphState& state, const BorderedImage& source, const RowOutput<T>& output,
                   Scratch scratch, bool tight) {
  // The mask's own size and anchor; a state of a rectangle keeps those of the rectangle.
  const int channels = state.channels;
  struct Element {
    int row, column;
  };
  const int64_t area = static_cast<int64_t>(state.width) * state.height;
  Element* elements = scratch.take<Element>(area, alignof(Element));
  const T** taps = scratch.take<const T*>(area, alignof(const T*));
  int count = 0, left = state.width, right = 0;
  for (int y = 0, i = 0; y < state.height; ++y)
    for (int x = 0; x < state.width; ++x, ++i) {
      if (!state.mask[i]) continue;
      elements[count++] = {y, x};
      if (x < left) left = x;
      if (x > right) right = x;
    }
  const int top = elements[0].row, bottom = elements[count - 1].row;
  const int rows = bottom - top + 1;

  const int all = source.size().width;
  const int strip = stripColumns(all, rows, source.pixelBytes(), right - left);
  for (int x = 0; x < all;) {
    const int columns = strip < all - x ? strip : all - x;
    const auto range = source.columns(int64_t(x) + left - state.anchorX, int64_t(x) + columns + right - state.anchorX);
    const int64_t width = range.to - range.from;
    Scratch rest = scratch;
    RowRing<T> ring = tight ? RowRing<T>(rest, rows, width * channels, sizeof(T))
                            : RowRing<T>(rest, rows, scratchStride(width, source.pixelBytes()) / int64_t(sizeof(T)), 32,
                                         -(range.before * channels) & (Vec<T>::lanes - 1));
    const auto fetch = [&](int64_t y) {
      T* row = ring.enter();
      if (tight) {
        source.fetch(y, range, reinterpret_cast<Zeb8u*>(row));
      } else {
        source.fetchLine(y, range, row);
      }
    };
    const int64_t first = int64_t(top) - state.anchorY;
    for (int i = 0; i < rows - 1; ++i) fetch(first + output.firstRow + i);
    for (int y = output.firstRow; y < output.endRow; ++y) {
      fetch(first + y + rows - 1);
      const T* row = nullptr;
      for (int i = 0, last = -1; i < count; ++i) {
        if (elements[i].row != last) last = elements[i].row, row = ring.back(bottom - last) - left * channels;
        taps[i] = row + elements[i].column * channels;
      }
      const ptrdiff_t at = static_cast<ptrdiff_t>(x) * channels, n = static_cast<ptrdiff_t>(columns) * channels;
      combineRows<Op>(taps, count, output.begin(y, at), n);
      output.end(y, at, n);
    }
    x += columns;
  }
}

// ---- Ellipses: every source row is filtered once for each distinct run length, the longer from the shorter; an output
// row combines as many filtered rows as the mask has rows ----

// Rows of the ring of length j.
int keptRows(const ZebiMorphShape& shape, int j) {
  int first = 0;
  while (shape.lengthIndex[first] != j) ++first;
  return shape.height - shape.rowOffset[first];
}
EllipseExtent extentOf(const ZebiMorphShape& shape) {
  EllipseExtent extent;
  extent.rows = shape.rows;
  for (int j = 0; j < shape.lengths; ++j) extent.add(shape.length[j], shape.reach[j], keptRows(shape, j));
  return extent;
}

template <class Op, class T = typename Op::Type>
void ellipseRegion(const ZebiMorphState& state, const BorderedImage& source, const RowOutput<T>& output,
                   Scratch scratch) {
  const ZebiMorphShape& shape = *state.shape;
  const int channels = state.channels, lengths = shape.lengths, height = shape.height;
  const EllipseExtent extent = extentOf(shape);
  const int64_t left = extent.left, right = extent.right;
  RowRing<T>* rings = scratch.take<RowRing<T>>(lengths, alignof(RowRing<T>));
  const T** taps = scratch.take<const T*>(shape.rows, alignof(const T*));

  const int all = source.size().width;
  const int strip = stripColumns(all, extent.kept, source.pixelBytes(), left + right);
  for (int x = 0; x < all;) {
    const int columns = strip < all - x ? strip : all - x;
    const auto range = source.columns(x - left, int64_t(x) + columns + right);
    const int64_t width = range.to - range.from;
    const ptrdiff_t stride = static_cast<ptrdiff_t>(scratchStride(width, source.pixelBytes()) / sizeof(T));
    const ptrdiff_t offset = -(range.before * channels) & (Vec<T>::lanes - 1);
    Scratch rest = scratch;
    for (int j = 0; j < lengths; ++j) rings[j] = RowRing<T>(rest, keptRows(shape, j), stride, 32, offset);
    T* line = rest.take<T>(stride) + offset;

    const auto enter = [&](int64_t y) {
      // Row j holds at column x the extremum over length[j] pixels from x on.
      int j = lengths - 1, cur = 1;
      const T* from = line;
      if (shape.length[j] == 1) {
        T* row = rings[j--].enter();
        source.fetchLine(y, range, row);
        from = row;
      } else {
        source.fetchLine(y, range, line);
      }
      for (; j >= 0; --j) {
        T* row = rings[j].enter();
        const int length = shape.length[j];
        const ptrdiff_t n = static_cast<ptrdiff_t>((width - length + 1) * channels);
        widenLines<Op>(from, cur, row, length, line, channels, n, oneLine, false);
        from = row, cur = length;
      }
    };
    const ptrdiff_t at = static_cast<ptrdiff_t>(x) * channels, n = static_cast<ptrdiff_t>(columns) * channels;
    for (int i = 0; i < height - 1; ++i) enter(int64_t(output.firstRow) + i - shape.anchorY);
    for (int y = output.firstRow; y < output.endRow; ++y) {
      enter(int64_t(y) - shape.anchorY + height - 1);
      for (int i = 0; i < shape.rows; ++i) {
        const int j = shape.lengthIndex[i];
        taps[i] =
            rings[j].back(height - 1 - shape.rowOffset[i]) + static_cast<ptrdiff_t>((left - shape.reach[j]) * channels);
      }
      combineRows<Op>(taps, shape.rows, output.begin(y, at), n);
      output.end(y, at, n);
    }
    x += columns;
  }
}

// What a vector of results takes, in loads of a column. An element is taken one load and the extremum at a time as
// well, but from a row that was fetched with its borders, at any address and through a list that is made for every row.
int64_t elementCost(const ZebiMorphState& state) {
  int64_t elements = 0;
  for (int64_t i = 0, n = int64_t(state.width) * state.height; i < n; ++i) elements += state.mask[i] != 0;
  return 2 + 7 * elements / 4;
}
int64_t ellipseCost(const ZebiMorphShape& shape) {
  return 3 + 8 * int64_t(shape.lengths) + 2 * shape.rows;
}

// The cheapest way through the elements that the scratch has room for.
template <class Op, class T = typename Op::Type>
void elementsRegion(const ZebiMorphState& state, const BorderedImage& source, const RowOutput<T>& output,
                    Scratch scratch) {
  if (isCross(state) && trySmallWindows<Op>(source, reachOf(state), true, state.channels, output)) return;
  SmallMask small;
  if (small.take(state)) return SmallRegion<Op>(small, state.channels, source, output).run();
  if (coverRegion<Op>(*coverOf(state), {state.anchorX, state.anchorY}, state.channels, source, output, scratch)) return;
  const int width = source.size().width, px = source.pixelBytes();
  const ZebiSize mask{state.width, state.height};
  const int64_t room = scratch.left();
  const int64_t elements = elementCost(state);
  const auto elementsFit = [&] { return generalScratchSize(width, px, mask) <= room; };
  const auto ellipseFits = [&](int64_t most) {
    return state.shapeClass == zebShapeEllipse && ellipseCost(*state.shape) <= most &&
           ellipseScratchSize(width, px, extentOf(*state.shape)) <= room;
  };
  if (ColumnPlan::roomFor(mask) <= room) {
    ColumnPlan plan;
    Scratch rest = scratch;
    plan.make(state.mask, mask, &rest);
    if ((plan.cost() <= elements || !elementsFit()) && !ellipseFits(plan.cost() - 1) &&
        columnScratchSize(plan, width, px, mask) <= room)
      return columnRegion<Op>(plan, {state.anchorX, state.anchorY}, state.channels, source, output, rest);
  }
  const bool fit = elementsFit();
  if (ellipseFits(fit ? elements : INT64_MAX)) return ellipseRegion<Op>(state, source, output, scratch);
  generalRegion<Op>(state, source, output, scratch, !fit);
}

}  // namespace

template <class Op>
void morphRegion(const ZebiMorphState& state, const BorderedImage& source, const RowOutput<typename Op::Type>& output,
                 Zeb8u* scratch, int64_t scratchSize) {
  const Scratch room(scratch, scratchSize);
  switch (state.shapeClass) {
    case zebShapeEmpty:
      return copyRegion(source, state.channels, output);
    case zebShapeRectangle:
      return rankRegion<Op>(source, reachOf(state), state.channels, output, room);
    default:
      return elementsRegion<Op>(state, source, output, room);
  }
}

#define MORPH(T)                                                                                                  \
  template void morphRegion<Lowest<T>>(const ZebiMorphState&, const BorderedImage&, const RowOutput<T>&, Zeb8u*,  \
                                       int64_t);                                                                  \
  template void morphRegion<Highest<T>>(const ZebiMorphState&, const BorderedImage&, const RowOutput<T>&, Zeb8u*, \
                                        int64_t);
MORPH(Zeb8u)
MORPH(Zeb16u)
MORPH(Zeb16s)
MORPH(Zeb32f)

}  // namespace zeb
