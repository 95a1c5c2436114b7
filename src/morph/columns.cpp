// Masks by their columns.
#include "morph/columns.h"

namespace zeb {

namespace {

// One distinct set of rows while the plan is made.
struct Candidate {
  uint64_t key;  // of its rows; columns with the same key are compared row by row
  int column, rows;
};

}  // namespace

int64_t ColumnPlan::roomFor(ZebiSize mask) {
  return int64_t(mask.width) * int64_t(sizeof(Set) + sizeof(int) + sizeof(Candidate)) +
         4 * boundedProduct(mask.width, mask.height) + 32;
}

void ColumnPlan::make(const Zeb8u* mask, ZebiSize size, Scratch* scratch) {
  const int w = size.width, h = size.height;
  const auto at = [=](int column, int row) { return mask[static_cast<ptrdiff_t>(row) * w + column] != 0; };
  set = scratch->take<Set>(w, alignof(Set));
  setOf = scratch->take<int>(w, alignof(int));
  tapRow = scratch->take<int>(int64_t(w) * h, alignof(int));
  Candidate* found = scratch->take<Candidate>(w, alignof(int));
  left = w, right = -1, top = h, bottom = -1;
  sets = taps = columns = 0;
  for (int x = 0; x < w; ++x) {
    Candidate c{0, x, 0};
    for (int y = 0; y < h; ++y) {
      c.key = (c.key ^ (at(x, y) ? 2 : 1)) * 0x9E3779B97F4A7C15u;
      if (!at(x, y)) continue;
      ++c.rows;
      if (y < top) top = y;
      if (y > bottom) bottom = y;
    }
    setOf[x] = -1;
    if (c.rows == 0) continue;
    if (x < left) left = x;
    right = x;
    ++columns;
    const auto alike = [&](const Candidate& other) {
      if (other.key != c.key || other.rows != c.rows) return false;
      for (int y = 0; y < h; ++y)
        if (at(x, y) != at(other.column, y)) return false;
      return true;
    };
    int i = 0;
    while (i < sets && !alike(found[i])) ++i;
    setOf[x] = i;
    if (i == sets) found[sets++] = c;
  }
  // Small sets first. setOf still counts in the order of discovery.
  for (int i = 0; i < sets; ++i) set[i].first = i;
  for (int i = 1; i < sets; ++i) {
    const int moved = set[i].first;
    int to = i;
    for (; to > 0 && found[set[to - 1].first].rows > found[moved].rows; --to) set[to].first = set[to - 1].first;
    set[to].first = moved;
  }
  for (int i = 0; i < sets; ++i) {
    const int column = found[set[i].first].column, before = i > 0 ? set[i - 1].first : 0;
    bool onward = i > 0;
    for (int y = 0; y < h && onward; ++y) onward = !at(before, y) || at(column, y);
    const int start = taps;
    for (int y = 0; y < h; ++y)
      if (at(column, y) && !(onward && at(before, y))) tapRow[taps++] = y;
    found[set[i].first].rows = i;
    set[i] = {column, taps - start, onward};
  }
  for (int x = left; x <= right; ++x) setOf[x - left] = setOf[x] < 0 ? -1 : found[setOf[x]].rows;
}

namespace {

// One tap: a row of the image, whether an extremum begins with it, and the line that gets the extremum after it.
template <class T>
struct Step {
  const T* row;
  T* line;
  bool fresh;
};

// The extrema of all sets for some vectors of columns. Where nested, one extremum runs through all of them.
template <class Op, int vectors, bool nested, class T>
ZEB_INLINE void setsBlock(const Step<T>* step, int count, ptrdiff_t x, ptrdiff_t lineX) {
  constexpr int lanes = Vec<T>::lanes;
  Vec<T> best[vectors];
  const T* p = step->row + x;
  for (int k = 0; k < vectors; ++k) best[k] = load(p + k * lanes);
  for (const Step<T>* end = step + count;;) {
    if (step->line != nullptr) {
      T* line = step->line + lineX;
      for (int k = 0; k < vectors; ++k) store(line + k * lanes, best[k]);
    }
    if (++step == end) return;
    p = step->row + x;
    if (!nested && step->fresh) {
      for (int k = 0; k < vectors; ++k) best[k] = load(p + k * lanes);
    } else {
      for (int k = 0; k < vectors; ++k) best[k] = Op::pick(best[k], load(p + k * lanes));
    }
  }
}

// Of the rows from element `from` on, to the lines from element `to` on.
template <class Op, bool nested, class T>
void setsRow(const Step<T>* steps, int count, ptrdiff_t n, ptrdiff_t from, ptrdiff_t to) {
  constexpr int lanes = Vec<T>::lanes;
  ptrdiff_t x = 0;
  for (; x <= n - 6 * lanes; x += 6 * lanes) setsBlock<Op, 6, nested>(steps, count, from + x, to + x);
  for (; x <= n - 2 * lanes; x += 2 * lanes) setsBlock<Op, 2, nested>(steps, count, from + x, to + x);
  for (; x <= n - lanes; x += lanes) setsBlock<Op, 1, nested>(steps, count, from + x, to + x);
  if (x == n) return;
  if (n >= lanes) return setsBlock<Op, 1, nested>(steps, count, from + n - lanes, to + n - lanes);
  for (; x < n; ++x) {
    T best = steps[0].row[from + x];
    for (int i = 0; i < count; ++i) {
      best = steps[i].fresh ? steps[i].row[from + x] : Op::pick(best, steps[i].row[from + x]);
      if (steps[i].line != nullptr) steps[i].line[to + x] = best;
    }
  }
}

}  // namespace

int64_t columnScratchSize(const ColumnPlan& plan, int64_t width, int pixelBytes, ZebiSize mask) {
  return ColumnPlan::roomFor(mask) +
         boundedProduct(plan.sets, scratchStrideBound(width + plan.right - plan.left, pixelBytes)) +
         int64_t(sizeof(Step<Zeb8u>)) * plan.taps +
         static_cast<int64_t>(sizeof(void*)) * (int64_t(plan.columns) + mask.height) + 96;
}

namespace {

// Fewer rows of longer lines are made together, so that the lines stay in the first cache.
constexpr int64_t bytesOfLines = 14 << 10;

}  // namespace

template <class Op>
void columnRegion(const ColumnPlan& plan, ZebiPoint anchor, int channels, const BorderedImage& source,
                  const RowOutput<typename Op::Type>& output, Scratch scratch) {
  using T = typename Op::Type;
  const ptrdiff_t n = static_cast<ptrdiff_t>(source.size().width) * channels;
  const auto range =
      source.columns(int64_t(plan.left) - anchor.x, int64_t(source.size().width) + plan.right - anchor.x);
  const ptrdiff_t stride =
      static_cast<ptrdiff_t>(scratchStride(range.to - range.from, source.pixelBytes()) / sizeof(T));
  const ptrdiff_t place = static_cast<ptrdiff_t>(range.before * channels);
  // The kept columns begin at a vector boundary. There are lines of every set for as many rows as are made together.
  int together = rowsTogether < output.together() ? rowsTogether : output.together();
  const int maskRows = plan.bottom - plan.top + 1;
  const int64_t lists = int64_t(sizeof(Step<T>)) * plan.taps +
                        static_cast<int64_t>(sizeof(void*)) * (int64_t(plan.columns) + maskRows) + 96;
  const int64_t left = scratch.left() - lists, room = left < bytesOfLines ? left : bytesOfLines;
  while (together > 1 && int64_t(together) * plan.sets * stride * int64_t(sizeof(T)) > room) together /= 2;
  T* first = scratch.take<T>(plan.sets * together * stride) + (-place & (Vec<T>::lanes - 1));
  Step<T>* steps = scratch.take<Step<T>>(plan.taps, alignof(T*));
  bool nested = true;
  for (int set = 0, i = 0; set < plan.sets; ++set) {
    const bool alone = set == 0 || !plan.set[set].onward;
    if (alone && set > 0) nested = false;
    for (int r = 0; r < plan.set[set].rows; ++r, ++i) steps[i] = {nullptr, nullptr, alone && r == 0};
    steps[i - 1].line = first + set * together * stride + place;
  }
  const T** shifted = scratch.take<const T*>(plan.columns, alignof(const T*));
  const T** rows = scratch.take<const T*>(maskRows, alignof(const T*));
  int count = 0;
  for (int x = 0; x <= plan.right - plan.left; ++x)
    if (plan.setOf[x] >= 0)
      shifted[count++] = first + plan.setOf[x] * together * stride + static_cast<ptrdiff_t>(x) * channels;

  const ptrdiff_t kept = static_cast<ptrdiff_t>(range.keptCount() * channels);
  // Where no row is repeated, the rows of several results are equally far apart.
  const int64_t above = int64_t(plan.top) - anchor.y;
  const int height = source.size().height;
  const ptrdiff_t step = height > 1 ? (source.row(1) - source.row(0)) / static_cast<ptrdiff_t>(sizeof(T)) : 0;
  for (int y = output.firstRow; y < output.endRow; y += together) {
    const int made = output.endRow - y < together ? output.endRow - y : together;
    const bool even = y + above >= 0 && y + made - 1 + above + maskRows <= height;
    for (int r = 0; r < made; ++r) {
      if (r == 0 || !even) {
        source.rows(y + r + above, maskRows, range.kept, rows);
        for (int i = 0; i < plan.taps; ++i) steps[i].row = rows[plan.tapRow[i] - plan.top];
      }
      (nested ? setsRow<Op, true, T> : setsRow<Op, false, T>)(steps, plan.taps, kept, even ? r * step : 0, r * stride);
    }
    for (int i = 0; i < plan.sets; ++i)
      for (int r = 0; r < made; ++r) source.completeLine(first + (i * together + r) * stride, range);
    combineLines<Op>(shifted, count, 0, output.begin(y, 0), n, {made, stride, output.step()});
    for (int r = 0; r < made; ++r) output.end(y + r, 0, n, r);
  }
}

#define COLUMNS(T)                                                                                                     \
  template void columnRegion<Lowest<T>>(const ColumnPlan&, ZebiPoint, int, const BorderedImage&, const RowOutput<T>&,  \
                                        Scratch);                                                                      \
  template void columnRegion<Highest<T>>(const ColumnPlan&, ZebiPoint, int, const BorderedImage&, const RowOutput<T>&, \
                                         Scratch);
COLUMNS(Zeb8u)
COLUMNS(Zeb16u)
COLUMNS(Zeb16s)
COLUMNS(Zeb32f)

}  // namespace zeb
