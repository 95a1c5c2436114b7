#include "filter/small_windows.h"

namespace zeb {

namespace {

// ---- Loads beside an edge ----

// Places of 16 bytes, of pixels of 1, 2, 3 and 4 bytes: before them those of the first pixel again and again, behind
// them those of the last.
struct Places {
  Zeb8u before[16], own[16], behind[16];
};
constexpr Places placesOf(int px) {
  Places p{};
  for (int i = 0; i < 16; ++i) {
    p.before[i] = static_cast<Zeb8u>((i + 16 * px - 16) % px);
    p.own[i] = static_cast<Zeb8u>(i);
    p.behind[i] = static_cast<Zeb8u>(16 - px + i % px);
  }
  return p;
}
constexpr Places places[] = {placesOf(1), placesOf(2), placesOf(3), placesOf(4)};
constexpr int mostPixelBytes = 4;

ZEB_INLINE __m128i half(const void* p) {
  return _mm_loadu_si128(static_cast<const __m128i*>(p));
}

enum class At { left, middle, right };

// Elements of a pixel, and the 16 places of its own.
struct Shape {
  ptrdiff_t pixel;
  const Zeb8u* place;
};

// The vectors of a row so many pixels before and after the one at p: beside an edge no byte is read but those of that
// one.
template <class T, At at>
struct Reader {
  Shape shape;

  ZEB_INLINE Vec<T> before(const T* p, int pixels) const {
    const T* q = p - pixels * shape.pixel;
    if constexpr (at != At::left) return load(q);
    const __m128i low = _mm_shuffle_epi8(half(p), half(shape.place - pixels * bytes()));
    return as<T>(V8u{_mm256_inserti128_si256(_mm256_castsi128_si256(low), half(q + Vec<T>::lanes / 2), 1)});
  }
  ZEB_INLINE Vec<T> after(const T* p, int pixels) const {
    const T* q = p + pixels * shape.pixel;
    if constexpr (at != At::right) return load(q);
    const __m128i high = _mm_shuffle_epi8(half(p + Vec<T>::lanes / 2), half(shape.place + pixels * bytes()));
    return as<T>(V8u{_mm256_inserti128_si256(_mm256_castsi128_si256(half(q)), high, 1)});
  }

 private:
  ZEB_INLINE ptrdiff_t bytes() const { return shape.pixel * static_cast<ptrdiff_t>(sizeof(T)); }
};

// ---- Three rows, in registers ----

// The first of two rows to make, the row above it, and the two below, from the first on. Further pairs follow.
template <class T>
struct Three {
  const T *above, *own;
  ptrdiff_t next, second;  // elements from the first row to the other one and to the one below that
  T *out, *out1;           // of the result
  ptrdiff_t pairStep;
};

template <class Op, bool cross, int vectors, At at, class T>
void threeRows(const Three<T>& rows, int pairs, Shape shape) {
  using Numbers = typename Op::Numbers;  // of the source, which may hold others
  constexpr int lanes = Vec<T>::lanes;
  const Reader<T, at> reader{shape};
  const auto beside = [=](Vec<T> v, const T* p)
                          ZEB_BODY { return Numbers::pick(Numbers::pick(v, reader.before(p, 1)), reader.after(p, 1)); };
  const auto along = [=](const T* p) ZEB_BODY {
    const Vec<T> own = Numbers::begin(load(p));
    return cross ? own : beside(own, p);
  };
  const auto finished = [=](Vec<T> column, const T* p) ZEB_BODY { return cross ? beside(column, p) : column; };
  const T* p = rows.own;
  T *out = rows.out, *out1 = rows.out1;
  const ptrdiff_t next = rows.next, second = rows.second, pairStep = rows.pairStep;
  Vec<T> above[vectors], own[vectors];
  for (int k = 0; k < vectors; ++k) above[k] = along(rows.above + k * lanes), own[k] = along(p + k * lanes);
  do {
    const T *p1 = anew(p + next), *p2 = anew(p + second);
#pragma GCC unroll 2
    for (int k = 0; k < vectors; ++k) {
      const Vec<T> below = along(p1 + k * lanes), both = Op::pick(own[k], below);
      store(out + k * lanes, finished(Op::pick(above[k], both), p + k * lanes));
      above[k] = below, own[k] = along(p2 + k * lanes);
      store(out1 + k * lanes, finished(Op::pick(both, own[k]), p1 + k * lanes));
    }
    p = p2, out += pairStep, out1 += pairStep;
  } while (--pairs > 0);
}

// ---- More rows, through the stack ----

constexpr int mostReach = 3, rowsOfStrip = 32;

// The windows along `rows` rows.
template <class Op, int reach, At at, class T>
void alongRows(const T* p, ptrdiff_t step, int rows, Shape shape, T* out) {
  const Reader<T, at> reader{shape};
  do {
    Vec<T> best = Op::begin(load(p));
#pragma GCC unroll 3
    for (int i = 1; i <= reach; ++i) {
      best = Op::pick(best, reader.before(p, i));
      best = Op::pick(best, reader.after(p, i));
    }
    store(out, best);
    p += step, out += Vec<T>::lanes;
  } while (--rows > 0);
}

// Windows of h rows of one vector each.
template <class Op, int h, class T>
void downRows(const T* row, T* out, ptrdiff_t outStep, int rows) {
  constexpr ptrdiff_t lanes = Vec<T>::lanes;
  for (; rows > 0; rows -= 4, row += 4 * lanes, out += 4 * outStep) {
    const auto at = [=](int i) ZEB_BODY { return load(row + i * lanes); };
    Vec<T> common = at(3);
#pragma GCC unroll 4
    for (int i = 4; i < h; ++i) common = Op::pick(common, at(i));
    // What no row is wanted for goes beside the image.
    alignas(32) T spare[lanes];
    fourWindows<Op, h == 3>(
        at, [=](int i) ZEB_BODY { return at(h + i); }, common,
        [&](int i) ZEB_BODY { return i < rows ? out + i * outStep : spare; });
  }
}

// ---- Both ----

// The kernels of an operation: by left edge, middle, right edge and, where there is one for two vectors, that.
template <class T>
struct Kernels {
  using Three = void (*)(const zeb::Three<T>&, int, Shape);
  using Along = void (*)(const T*, ptrdiff_t, int, Shape, T*);
  using Down = void (*)(const T*, T*, ptrdiff_t, int);
  Three rectangle[4], cross[4];
  Along along[mostReach][3];  // by reach
  Down down[mostReach];
};
template <class Op, class T = typename Op::Type>
struct KernelsOf {
  using N = typename Op::Numbers;
  static constexpr At l = At::left, m = At::middle, r = At::right;
  static constexpr Kernels<T> all = {
      {threeRows<Op, false, 1, l>, threeRows<Op, false, 1, m>, threeRows<Op, false, 1, r>, threeRows<Op, false, 2, m>},
      {threeRows<Op, true, 1, l>, threeRows<Op, true, 1, m>, threeRows<Op, true, 1, r>, threeRows<Op, true, 2, m>},
      {{alongRows<N, 1, l>, alongRows<N, 1, m>, alongRows<N, 1, r>},
       {alongRows<N, 2, l>, alongRows<N, 2, m>, alongRows<N, 2, r>},
       {alongRows<N, 3, l>, alongRows<N, 3, m>, alongRows<N, 3, r>}},
      {downRows<Op, 3>, downRows<Op, 5>, downRows<Op, 7>}};
};

template <class T>
class SmallWindows {
  static constexpr int lanes = Vec<T>::lanes;

 public:
  // So many pixels to either side of a result's own, so many rows above and below.
  SmallWindows(const Kernels<T>& kernels, const BorderedImage& source, int across, int down, int channels,
               const RowOutput<T>& output)
      : kernels_(kernels),
        source_(source),
        output_(output),
        across_(across),
        down_(down),
        shape_{channels, places[source.pixelBytes() - 1].own},
        n_(static_cast<ptrdiff_t>(source.size().width) * channels),
        step_(source.step() / static_cast<ptrdiff_t>(sizeof(T))),
        first_(source.sides().top ? -down : 0),
        last_(source.size().height - 1 + (source.sides().bottom ? down : 0)) {}

  void run(bool cross) const {
    const int most = output_.together() < rowsOfStrip ? output_.together() : rowsOfStrip;
    for (int y = output_.firstRow; y < output_.endRow;) {
      const int rows = output_.endRow - y < most ? output_.endRow - y : most;
      if (across_ == 1 && down_ == 1) {
        three(y, rows, cross ? kernels_.cross : kernels_.rectangle);
      } else {
        more(y, rows);
      }
      for (int i = 0; i < rows; ++i) output_.end(y + i, 0, n_, i);
      y += rows;
    }
  }

 private:
  // 3 x 3 pixels: pairs of rows as long as there are other rows below.
  void three(int64_t y, int rows, const typename Kernels<T>::Three* kernels) const {
    T* out = output_.begin(static_cast<int>(y), 0);
    const ptrdiff_t outStep = output_.step();
    const int64_t below = last_ - y;
    const int pairs = static_cast<int>(below < rows ? below / 2 : rows / 2);
    for (int made = 0, count = pairs; made < rows; made += 2 * count, y += 2 * count, out += 2 * count * outStep) {
      if (made > 0 || pairs == 0) count = 1;
      const ptrdiff_t next = y + 1 <= last_ ? step_ : 0, second = y + 2 <= last_ ? next + step_ : next;
      const T *const above = row(y - 1), *const own = row(y);
      // What no row is there for goes beside the image.
      alignas(32) T spare[2 * lanes];
      vectors(true, [&](int kernel, ptrdiff_t x) {
        T* const out1 = rows - made > 1 ? out + outStep + x : spare;
        kernels[kernel]({above + x, own + x, next, second, out + x, out1, 2 * outStep}, count, shape_);
      });
    }
  }

  void more(int y, int rows) const {
    alignas(32) T windows[(rowsOfStrip + 2 * mostReach) * lanes];
    const int64_t from = int64_t(y) - down_, to = int64_t(y) + rows + down_;
    const int64_t first = from < first_ ? first_ : from, end = to > last_ ? last_ + 1 : to;
    const int above = static_cast<int>(first - from), made = static_cast<int>(end - first);
    const int needed = ((rows + 3) & ~3) + 2 * down_;
    T* const kept = windows + above * lanes;
    const T* const p = row(first);
    T* const out = output_.begin(y, 0);
    vectors(false, [&](int kernel, ptrdiff_t x) {
      kernels_.along[across_ - 1][kernel](p + x, step_, made, shape_, kept);
      for (int i = 0; i < above; ++i) store(windows + i * lanes, load(kept));
      for (int i = above + made; i < needed; ++i) store(windows + i * lanes, load(kept + (made - 1) * lanes));
      kernels_.down[down_ - 1](windows, out + x, output_.step(), rows);
    });
  }

  __attribute__((noinline)) const T* row(int64_t y) const { return reinterpret_cast<const T*>(source_.row(y)); }

  // Calls body(kernel, x) for the vectors of a row, some of them twice where that spares a shorter one.
  template <class Body>
  ZEB_INLINE void vectors(bool two, Body body) const {
    const Sides in = source_.sides();
    const ptrdiff_t from = in.left ? 0 : lanes, end = in.right ? n_ : n_ - lanes, wide = two ? 2 * lanes : lanes;
    for (ptrdiff_t x = 0; x < n_;) {
      int kernel = 1;
      ptrdiff_t at = x, next = x + lanes;
      if (x < from) {
        kernel = 0;
      } else if (x >= end) {
        kernel = 2, at = n_ - lanes;
      } else if (x <= end - wide) {
        if (two) kernel = 3;
        next = x + wide;
      } else if (next > end) {
        // Of less than a vector between two edges, that in the middle reads beyond neither.
        at = end - from >= lanes ? end - lanes : (n_ - lanes) / 2, next = end;
      }
      body(kernel, at);
      x = next;
    }
  }

  const Kernels<T>& kernels_;
  const BorderedImage& source_;
  const RowOutput<T>& output_;
  int across_, down_;
  Shape shape_;
  ptrdiff_t n_, step_;
  int64_t first_, last_;  // rows that there are
};

// Longer rows are made along their lines, as memory likes them; those of larger windows, because a window that stands
// between two rows serves both.
constexpr int64_t longRow = 1024;
template <class T>
constexpr int64_t shortRow = std::is_floating_point_v<T> ? 128 : 256;

}  // namespace

template <class Op>
bool trySmallWindows(const BorderedImage& source, Window window, bool cross, int channels,
                     const RowOutput<typename Op::Type>& output) {
  const bool centred = window.left == -window.right && window.top == -window.bottom;
  if (!centred || window.right < 1 || window.right > mostReach || window.bottom < 1 || window.bottom > mostReach)
    return false;
  const int across = static_cast<int>(window.right), down = static_cast<int>(window.bottom);
  const bool three = across == 1 && down == 1;
  const int64_t bytes = int64_t(source.size().width) * source.pixelBytes();
  if (source.pixelBytes() > mostPixelBytes || bytes < 64 || bytes > (three ? longRow : shortRow<typename Op::Type>))
    return false;
  using T = typename Op::Type;
  SmallWindows<T>(KernelsOf<Op>::all, source, across, down, channels, output).run(cross);
  return true;
}

#define SMALL(T)                                                                                          \
  template bool trySmallWindows<Lowest<T>>(const BorderedImage&, Window, bool, int, const RowOutput<T>&); \
  template bool trySmallWindows<Highest<T>>(const BorderedImage&, Window, bool, int, const RowOutput<T>&);
SMALL(Zeb8u)
SMALL(Zeb16u)
SMALL(Zeb16s)
SMALL(Zeb32f)

}  // namespace zeb
