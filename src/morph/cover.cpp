// Masks as few overlapping pieces.
#include "morph/cover.h"

#include "morph/columns.h"

namespace zeb {

namespace {

using Bits = uint32_t;
constexpr int side = CoverPlan::mostSide;

int count(Bits v) {
  return __builtin_popcount(v);
}
// Bit x of the result is bit x + d.
Bits moved(Bits v, int d) {
  return d >= 0 ? v >> d : v << -d;
}

// The taps of one piece by rows, and where the piece fits into the mask.
struct Places {
  Bits taps[side], fit[side];
  int most;  // pairs that there were at any displacement; later there are no more
};

// Taps that pair up at a displacement, each used once.
int pairs(const Bits* taps, int height, int dx, int dy) {
  Bits left[side];
  int n = 0;
  for (int y = 0; y < height; ++y) left[y] = taps[y];
  for (int y = 0; y + dy < height; ++y) {
    for (Bits both = left[y] & moved(left[y + dy], dx); both != 0; both = left[y] & moved(left[y + dy], dx)) {
      const Bits first = dy == 0 ? both & -both : both;
      n += dy == 0 ? 1 : count(first);
      left[y] &= ~first;
      left[y + dy] &= ~moved(first, -dx);
    }
  }
  return n;
}

int64_t costOfColumns(const Zeb8u* mask, ZebiSize size) {
  alignas(int) Zeb8u room[ColumnPlan::roomFor({side, side})];
  Scratch scratch(room, sizeof(room));
  ColumnPlan plan;
  plan.make(mask, size, &scratch);
  return plan.cost();
}

// A piece costs two taps and a store for each pixel, for which a displacement must save some more taps.
constexpr int leastPairs = 4;
// In halves of what a column's load costs: a piece is made from two loads, stored and moved.
int costOfPieces(int pieces, int taps) {
  return 11 * pieces + 3 * taps;
}
// How far displacements are looked for in masks of more than so many pixels.
constexpr int largeArea = 256, reachOfLarge = 8;

}  // namespace

int64_t CoverPlan::bytes(ZebiSize mask) {
  if (mask.width > side || mask.height > side) return sizeof(CoverPlan);
  const int area = mask.width * mask.height;
  return static_cast<int64_t>(sizeof(CoverPlan)) +
         static_cast<int64_t>(sizeof(Tap)) * (area < mostTaps ? area : mostTaps);
}

void CoverPlan::make(const Zeb8u* mask, ZebiSize size) {
  pieces = taps = 0;
  if (size.width > side || size.height > side) return;
  const int w = size.width, h = size.height;
  const int reach = w * h > largeArea ? reachOfLarge : side;
  const int acrossMost = w - 1 < reach ? w - 1 : reach, downMost = h - 1 < reach ? h - 1 : reach;
  Places places[mostPieces];
  for (int y = 0; y < h; ++y) {
    Bits row = 0;
    for (int x = 0; x < w; ++x) row |= static_cast<Bits>(mask[y * w + x] != 0) << x;
    places[0].taps[y] = places[0].fit[y] = row;
  }
  places[0].most = w * h;
  piece[0] = {0, 0, 0};
  const int64_t columns = costOfColumns(mask, size);
  int made = 1;
  for (; made < mostPieces; ++made) {
    int best = leastPairs - 1, from = 0, bestX = 0, bestY = 0;
    for (int i = made - 1; i >= 0; --i) {
      Places& p = places[i];
      if (p.most <= best) continue;
      p.most = 0;
      for (int dy = 0; dy <= downMost; ++dy)
        for (int dx = dy == 0 ? 1 : -acrossMost; dx <= acrossMost; ++dx) {
          int bound = 0;
          for (int y = 0; y + dy < h; ++y) bound += count(p.taps[y] & moved(p.taps[y + dy], dx));
          if (bound <= p.most) continue;
          const int n = pairs(p.taps, h, dx, dy);
          if (n > p.most) p.most = n;
          if (n > best) best = n, from = i, bestX = dx, bestY = dy;
        }
    }
    if (best < leastPairs) break;
    piece[made] = {static_cast<signed char>(from), static_cast<signed char>(bestX), static_cast<signed char>(bestY)};
    Places &p = places[from], &q = places[made];
    q.most = w * h;
    for (int y = 0; y < h; ++y) q.taps[y] = 0, q.fit[y] = y + bestY < h ? p.fit[y] & moved(p.fit[y + bestY], bestX) : 0;
    for (int y = 0; y + bestY < h; ++y)
      for (Bits both = p.taps[y] & moved(p.taps[y + bestY], bestX); both != 0;
           both = p.taps[y] & moved(p.taps[y + bestY], bestX)) {
        const Bits first = bestY == 0 ? both & -both : both;
        q.taps[y] |= first;
        p.taps[y] &= ~first;
        p.taps[y + bestY] &= ~moved(first, -bestX);
      }
    // What is left of the earlier piece, where the new one fits with either half over it.
    for (int y = 0; y < h; ++y) {
      const Bits first = p.taps[y] & q.fit[y];
      q.taps[y] |= first, p.taps[y] &= ~first;
      if (y < bestY) continue;
      const Bits second = p.taps[y] & moved(q.fit[y - bestY], -bestX);
      q.taps[y - bestY] |= moved(second, bestX), p.taps[y] &= ~second;
    }
  }
  int n = 0;
  for (int i = 0; i < made; ++i)
    for (int y = 0; y < h; ++y)
      for (int x = 0; x < w; ++x)
        if (places[i].taps[y] >> x & 1) {
          if (n == mostTaps) return;
          tap[n++] = {static_cast<unsigned char>(i), static_cast<unsigned char>(x), static_cast<unsigned char>(y)};
        }
  taps = n;
  if (costOfPieces(made, n) < 2 * columns) pieces = made;
}

CoverPlan* coverOf(const ZebiMorphState& state) {
  const int64_t mask = maskBytes({state.width, state.height});
  Zeb8u* behind = state.dilateTable != nullptr ? state.dilateTable + 16 * mask : state.mask + mask;
  return reinterpret_cast<CoverPlan*>(behind);
}

namespace {

// Rows of a piece that are kept: those that any of its users needs for the first of the rows that are made together,
// relative to that row; as many more follow as are made. And the columns that it cannot have at either end of a line.
struct Span {
  int first = INT32_MAX, last = INT32_MIN, left = 0, right = 0;

  int before() const { return last - first; }
  void needs(int from, int to) {
    if (from < first) first = from;
    if (to > last) last = to;
  }
};

// Lines for all pieces stay in the second cache: strips of columns are so narrow that many rows can be made together,
// since those that the next rows need, too, have to be moved to where they are expected; but no narrower than memory
// likes.
constexpr int64_t bytesOfLines = 400 << 10, leastBytes = 2048;
constexpr int64_t leastRows = 8, mostRows = 32;
// Rows of so many vectors or fewer of the result are made together.
constexpr ptrdiff_t shortResult = 16;

template <class Op>
class CoverStrip {
  using T = typename Op::Type;

 public:
  CoverStrip(const CoverPlan& plan, ZebiPoint anchor, int channels, const BorderedImage& source,
             const RowOutput<T>& output)
      : plan_(plan), anchor_(anchor), channels_(channels), source_(source), output_(output) {
    for (int i = 0; i < plan.taps; ++i) {
      const CoverPlan::Tap t = plan.tap[i];
      span_[t.piece].needs(t.y, t.y);
    }
    for (int i = plan.pieces - 1; i > 0; --i) {
      const CoverPlan::Piece p = plan.piece[i];
      span_[p.from].needs(span_[i].first, span_[i].last + p.dy);
    }
    for (int i = 0; i < plan.pieces; ++i) {
      const CoverPlan::Piece p = plan.piece[i];
      span_[i].left = span_[p.from].left - (p.dx < 0 ? p.dx : 0);
      span_[i].right = span_[p.from].right + (p.dx > 0 ? p.dx : 0);
      before_ += span_[i].before();
    }
    // Columns of the mask that are read.
    left_ = side, right_ = 0;
    for (int i = 0; i < plan.taps; ++i) {
      const CoverPlan::Tap t = plan.tap[i];
      const int from = t.x - span_[t.piece].left, to = t.x + span_[t.piece].right;
      if (from < left_) left_ = from;
      if (to > right_) right_ = to;
    }
  }

  bool run(Scratch scratch) {
    const int px = source_.pixelBytes(), all = source_.size().width, height = output_.endRow - output_.firstRow;
    const int64_t reach = int64_t(right_ - left_) * px, room = scratch.left() - 64;
    const auto strideOf = [=](int64_t bytes) { return (bytes + reach + 64 + 31) & ~int64_t(31); };
    const auto rowsIn = [&](int64_t space, int64_t bytes) {
      return (space / strideOf(bytes) - before_) / plan_.pieces;
    };
    const int64_t space = room < bytesOfLines ? room : bytesOfLines;
    int64_t bytes = int64_t(all) * px < leastBytes + reach ? int64_t(all) * px : leastBytes + reach;
    int64_t rows = rowsIn(space, bytes);
    if (rows < leastRows) rows = rowsIn(room, bytes) < leastRows ? rowsIn(room, bytes) : leastRows;
    if (2 * rows * plan_.pieces < before_) return false;
    if (rows > mostRows) rows = mostRows;
    if (rows > height) rows = height;
    while (bytes < int64_t(all) * px && rowsIn(space, bytes + 64) >= rows) bytes += 64;
    rows_ = static_cast<int>(rows);
    // Of equal width.
    const int64_t most = bytes / px;
    const int strips = static_cast<int>((all + most - 1) / most), even = (all + strips - 1) / strips;
    for (int x = 0; x < all; x += even) strip(x, even < all - x ? even : all - x, scratch);
    return true;
  }

 private:
  void strip(int x, int columns, Scratch scratch) {
    range_ = source_.columns(int64_t(x) + left_ - anchor_.x, int64_t(x) + columns + right_ - anchor_.x);
    const int64_t width = range_.to - range_.from;
    stride_ = static_cast<ptrdiff_t>(((width * source_.pixelBytes() + 64 + 31) & ~int64_t(31)) / int64_t(sizeof(T)));
    // A vector of room before the first line.
    T* line = scratch.take<T>(Vec<T>::lanes + (before_ + rows_ * plan_.pieces) * stride_) + Vec<T>::lanes;
    for (int i = 0; i < plan_.pieces; ++i) {
      line_[i] = line;
      line += (span_[i].before() + rows_) * stride_;
    }
    const T* taps[CoverPlan::mostTaps];
    for (int i = 0; i < plan_.taps; ++i) {
      const CoverPlan::Tap t = plan_.tap[i];
      taps[i] = at(t.piece, t.y) + static_cast<ptrdiff_t>(t.x - left_) * channels_;
    }
    const ptrdiff_t from = static_cast<ptrdiff_t>(x) * channels_, n = static_cast<ptrdiff_t>(columns) * channels_;
    const bool together = output_.together() >= rows_ && n <= shortResult * Vec<T>::lanes;
    for (int y = output_.firstRow, rows; y < output_.endRow; y += rows) {
      rows = output_.endRow - y < rows_ ? output_.endRow - y : rows_;
      advance(y, rows, y == output_.firstRow);
      if (together) combineLines<Op>(taps, plan_.taps, 0, output_.begin(y, from), n, {rows, stride_, output_.step()});
      for (int i = 0; i < rows; ++i) {
        if (!together) {
          fetchSoon(int64_t(y) + i + rows_ + span_[0].last - anchor_.y);
          combineLines<Op>(taps, plan_.taps, i * stride_, output_.begin(y + i, from), n, oneLine);
        }
        output_.end(y + i, from, n, together ? i : 0);
      }
    }
  }

  // A row that enters with the next ones: not all of them at once should wait for memory.
  void fetchSoon(int64_t row) const {
    if (row < 0 || row >= source_.size().height) return;
    fetchRun(reinterpret_cast<const T*>(source_.row(row)) + range_.kept * channels_, range_.keptCount() * channels_);
  }

  // Row `row` of a piece, from the first row that is made.
  T* at(int piece, int row) const { return line_[piece] + (row - span_[piece].first) * stride_; }

  // The pieces of the rows that output rows y.. need and that are not there yet.
  void advance(int y, int rows, bool first) {
    for (int i = 0; i < plan_.pieces; ++i) {
      const Span& s = span_[i];
      const int kept = s.before();
      if (!first && kept > 0)
        memmove(line_[i], line_[i] + rows_ * stride_,
                static_cast<size_t>(kept) * static_cast<size_t>(stride_) * sizeof(T));
      const int from = first ? s.first : s.last, count = s.last + rows - from;
      if (i == 0) {
        fetch(y, from, count);
        continue;
      }
      const CoverPlan::Piece p = plan_.piece[i];
      const ptrdiff_t across = static_cast<ptrdiff_t>(s.left) * channels_;
      const T* const halves[] = {at(p.from, from) + across,
                                 at(p.from, from + p.dy) + across + static_cast<ptrdiff_t>(p.dx) * channels_};
      const ptrdiff_t n = static_cast<ptrdiff_t>(range_.to - range_.from - s.left - s.right) * channels_;
      combinePadded<Op>(halves, 2, at(i, from) + across, n, {count, stride_, stride_});
    }
  }
  void fetch(int y, int from, int count) {
    const int64_t row = int64_t(y) + from - anchor_.y;
    T* line = at(0, from);
    const ptrdiff_t kept = range_.kept * channels_, n = range_.keptCount() * channels_,
                    before = range_.before * channels_;
    for (int i = 0; i < count; ++i, line += stride_) {
      const T* const p = reinterpret_cast<const T*>(source_.row(row + i)) + kept;
      combineRows<Op>(&p, 1, line + before, n);
      source_.completeLine(line, range_);
    }
  }

  const CoverPlan& plan_;
  ZebiPoint anchor_;
  int channels_;
  const BorderedImage& source_;
  const RowOutput<T>& output_;
  Span span_[CoverPlan::mostPieces];
  int before_ = 0, left_, right_, rows_;
  BorderedImage::Columns range_;
  ptrdiff_t stride_;
  T* line_[CoverPlan::mostPieces];
};

}  // namespace

template <class Op>
bool coverRegion(const CoverPlan& plan, ZebiPoint anchor, int channels, const BorderedImage& source,
                 const RowOutput<typename Op::Type>& output, Scratch scratch) {
  return plan.pieces > 0 && CoverStrip<Op>(plan, anchor, channels, source, output).run(scratch);
}

#define COVER(T)                                                                                                     \
  template bool coverRegion<Lowest<T>>(const CoverPlan&, ZebiPoint, int, const BorderedImage&, const RowOutput<T>&,  \
                                       Scratch);                                                                     \
  template bool coverRegion<Highest<T>>(const CoverPlan&, ZebiPoint, int, const BorderedImage&, const RowOutput<T>&, \
                                        Scratch);
COVER(Zeb8u)
COVER(Zeb16u)
COVER(Zeb16s)
COVER(Zeb32f)

}  // namespace zeb
