// Masks by their columns.
#include "morph/columns.h"

namespace zeb {

void ColumnPlan::make(const Zeb8u* mask, ZebiSize size, Scratch* scratch) {
  const int w = size.width, h = size.height;
  const ptrdiff_t words = static_cast<ptrdiff_t>(wordsOf(h));
  set = scratch->take<Set>(w, alignof(Set));
  setOf = scratch->take<int>(w, alignof(int));
  tapRow = scratch->take<int>(int64_t(w) * h, alignof(int));
  // The rows of every column as bits.
  Bits* const bits = scratch->take<Bits>(w * words, alignof(Bits));
  memset(bits, 0, static_cast<size_t>(w * words) * sizeof(Bits));
  for (int y = 0; y < h; ++y, mask += w) {
    Bits* word = bits + y / rowsInWord;
    for (int x = 0; x < w; ++x, word += words) *word |= Bits(mask[x] != 0) << y % rowsInWord;
  }
  // Distinct sets, small ones first.
  left = w, right = -1, top = h, bottom = -1;
  sets = taps = columns = 0;
  for (int x = 0; x < w; ++x) {
    const Bits* const column = bits + x * words;
    int rows = 0;
    for (ptrdiff_t k = 0; k < words; ++k) {
      if (column[k] == 0) continue;
      const int row = static_cast<int>(k) * rowsInWord;
      const int first = row + __builtin_ctz(column[k]), last = row + rowsInWord - 1 - __builtin_clz(column[k]);
      if (first < top) top = first;
      if (last > bottom) bottom = last;
      rows += __builtin_popcount(column[k]);
    }
    setOf[x] = -1;
    if (rows == 0) continue;
    if (x < left) left = x;
    right = x;
    ++columns;
    const auto alike = [&](const Set& other) {
      const Bits* const its = bits + other.column * words;
      ptrdiff_t k = 0;
      while (k < words && its[k] == column[k]) ++k;
      return k == words;
    };
    int at = 0;
    while (at < sets && !(set[at].rows == rows && alike(set[at]))) ++at;
    if (at == sets) {
      for (; at > 0 && set[at - 1].rows > rows; --at) set[at] = set[at - 1];
      for (int i = left; i < x; ++i) setOf[i] += setOf[i] >= at;
      set[at] = {x, rows, false};
      ++sets;
    }
    setOf[x] = at;
  }
  for (int i = 0; i < sets; ++i) {
    const Bits* const column = bits + set[i].column * words;
    const Bits* const before = i > 0 ? bits + set[i - 1].column * words : nullptr;
    set[i].onward = i > 0;
    for (ptrdiff_t k = 0; k < words && set[i].onward; ++k) set[i].onward = (before[k] & ~column[k]) == 0;
    const int start = taps;
    for (ptrdiff_t k = 0; k < words; ++k)
      for (Bits rest = set[i].onward ? column[k] & ~before[k] : column[k]; rest != 0; rest &= rest - 1)
        tapRow[taps++] = static_cast<int>(k) * rowsInWord + __builtin_ctz(rest);
    set[i].rows = taps - start;
  }
  for (int x = left; x <= right; ++x) setOf[x - left] = setOf[x];
}

namespace {

// One tap: a row of the image, whether an extremum begins with it, and the line that gets the extremum after it.
template <class T>
struct Step {
  const T* row;
  T* line;
  bool fresh;
};

// The extrema of all sets for some vectors of columns in one or two rows. Where nested, one extremum runs through all
// of them.
template <class Op, int vectors, int rows, bool nested, class T>
ZEB_INLINE void setsBlock(const Step<T>* step, int count, ptrdiff_t x, ptrdiff_t lineX, const Lines& lines) {
  constexpr int lanes = Vec<T>::lanes;
  Vec<T> best[vectors], below[vectors];
  // Of many vectors, sums of row and column are made at once: else the compiler keeps a column for each, in memory.
  const auto at = [](auto* p) ZEB_BODY { return vectors > 2 ? anew(p) : p; };
  const T* p = at(step->row + x);
  for (int k = 0; k < vectors; ++k) best[k] = load(p + k * lanes);
  if (rows == 2)
    for (int k = 0; k < vectors; ++k) below[k] = load(p + lines.step + k * lanes);
  for (const Step<T>* end = step + count;;) {
    if (step->line != nullptr) {
      T* const line = at(step->line + lineX);
      for (int k = 0; k < vectors; ++k) store(line + k * lanes, best[k]);
      if (rows == 2)
        for (int k = 0; k < vectors; ++k) store(line + lines.outStep + k * lanes, below[k]);
    }
    if (++step == end) return;
    p = at(step->row + x);
    if (!nested && step->fresh) {
      for (int k = 0; k < vectors; ++k) best[k] = load(p + k * lanes);
      if (rows == 2)
        for (int k = 0; k < vectors; ++k) below[k] = load(p + lines.step + k * lanes);
    } else {
      for (int k = 0; k < vectors; ++k) best[k] = Op::pick(best[k], load(p + k * lanes));
      if (rows == 2)
        for (int k = 0; k < vectors; ++k) below[k] = Op::pick(below[k], load(p + lines.step + k * lanes));
    }
  }
}

// Several lines: of the rows, to the lines of the sets from element `to` on. Of short ones two rows at once.
template <class Op, bool nested, class T>
void setsRows(const Step<T>* steps, int count, ptrdiff_t n, ptrdiff_t to, const Lines& lines) {
  constexpr int lanes = Vec<T>::lanes;
  ptrdiff_t from = 0;
  int y = lines.count;
  if (n >= lanes && n < 6 * lanes)
    for (; y > 1; y -= 2, from += 2 * lines.step, to += 2 * lines.outStep) {
      ptrdiff_t x = 0;
      for (; x <= n - 2 * lanes; x += 2 * lanes) setsBlock<Op, 2, 2, nested>(steps, count, from + x, to + x, lines);
      for (; x < n; x += lanes) {
        const ptrdiff_t at = x < n - lanes ? x : n - lanes;
        setsBlock<Op, 1, 2, nested>(steps, count, from + at, to + at, lines);
      }
    }
  for (; y > 0; --y, from += lines.step, to += lines.outStep) {
    ptrdiff_t x = 0;
    for (; x <= n - 6 * lanes; x += 6 * lanes) setsBlock<Op, 6, 1, nested>(steps, count, from + x, to + x, lines);
    for (; x <= n - 2 * lanes; x += 2 * lanes) setsBlock<Op, 2, 1, nested>(steps, count, from + x, to + x, lines);
    for (; x < n && n >= lanes; x += lanes) {
      const ptrdiff_t at = x < n - lanes ? x : n - lanes;
      setsBlock<Op, 1, 1, nested>(steps, count, from + at, to + at, lines);
    }
    for (; x < n; ++x) {
      T best = steps[0].row[from + x];
      for (int i = 0; i < count; ++i) {
        best = steps[i].fresh ? steps[i].row[from + x] : Op::pick(best, steps[i].row[from + x]);
        if (steps[i].line != nullptr) steps[i].line[to + x] = best;
      }
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
  for (int y = output.firstRow, made; y < output.endRow; y += made) {
    made = output.endRow - y < together ? output.endRow - y : together;
    const bool even = y + above >= 0 && y + made - 1 + above + maskRows <= height;
    const int alike = even ? made : 1;
    for (int r = 0; r < made; r += alike) {
      source.rows(y + r + above, maskRows, range.kept, rows);
      for (int i = 0; i < plan.taps; ++i) steps[i].row = rows[plan.tapRow[i] - plan.top];
      (nested ? setsRows<Op, true, T> : setsRows<Op, false, T>)(steps, plan.taps, kept, r * stride,
                                                                {alike, step, stride});
    }
    for (int i = 0; i < plan.sets; ++i) source.completeLines(first + i * together * stride, range, made, stride);
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
