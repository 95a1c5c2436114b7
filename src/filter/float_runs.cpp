#include "filter/float_runs.h"

#include <utility>

#include "core/loops.h"
#include "filter/separable.h"

namespace zeb {

namespace {

constexpr int lanes = V32f::lanes;

// Taps of a float kernel, in every lane: in registers for a known count, read again from the kernel otherwise.
template <int taps>
class FloatTaps {
 public:
  FloatTaps(const Zeb32f* kernel, int) {
    for (int j = 0; j < taps; ++j) taps_[j] = splat(kernel[j]);
  }
  constexpr int count() const { return taps; }
  V32f operator[](int j) const { return taps_[j]; }

 private:
  V32f taps_[taps];
};
template <>
class FloatTaps<0> {
 public:
  FloatTaps(const Zeb32f* kernel, int count) : kernel_(kernel), count_(count) {}
  int count() const { return count_; }
  V32f operator[](int j) const { return splat(kernel_[j]); }

 private:
  const Zeb32f* kernel_;
  int count_;
};

// read(j) yields what is under tap j.
template <bool fromMiddle, class Taps, class Read>
ZEB_INLINE V32f sumOf(const Taps& kernel, Read read) {
  if constexpr (fromMiddle) {
    return fma(kernel[2], read(2), fma(kernel[0], read(0), kernel[1] * read(1)));
  } else {
    V32f acc = kernel[0] * read(0);
    for (int j = 1; j < kernel.count(); ++j) acc = fma(kernel[j], read(j), acc);
    return acc;
  }
}

// Elements of a row are asked for in time: so many further on in the row, and near its end at the beginning of the next
// one; of a shorter row those of the next one.
template <int distance>
class FetchedRow {
 public:
  FetchedRow(const Zeb32f* row, ptrdiff_t toNextRow, int n)
      : row_(row), turn_(n - distance), toNextRow_(turn_ > 0 ? toNextRow - ptrdiff_t{turn_} * bytes : toNextRow) {}

  // While element i is at work.
  ZEB_INLINE void fetch(int i) const { fetchAhead(row_ + i, i < turn_ ? ptrdiff_t{distance * bytes} : toNextRow_); }

 private:
  static constexpr int bytes = sizeof(Zeb32f);
  const Zeb32f* row_;
  int turn_;
  ptrdiff_t toNextRow_;
};

// Elements from `from` on, the last ones in a vector that overlaps the one before it where n reaches as far.
template <bool fromMiddle = false, class Source, class Taps>
ZEB_INLINE void restOfRun(const Source& source, const Taps& kernel, Zeb32f* dst, int from, int n) {
  const auto whole = [&](int at) ZEB_BODY {
    store(dst + at, sumOf<fromMiddle>(kernel, [&](int j) ZEB_BODY { return load(source.tap(j) + at); }));
  };
  for (; from <= n - lanes; from += lanes) whole(from);
  if (from == n) return;
  if (n >= lanes) return whole(n - lanes);
  storeN(dst, sumOf<fromMiddle>(kernel, [&](int j) ZEB_BODY { return loadN(source.tap(j), n); }), n);
}

// Any number of taps: each serves several vectors.
template <class Source>
ZEB_INLINE void manyTaps(const Source& source, const FloatTaps<0>& kernel, Zeb32f* dst, int n) {
  constexpr int vectors = 4;
  int i = 0;
  for (; i <= n - vectors * lanes; i += vectors * lanes) {
    V32f acc[vectors];
    for (int v = 0; v < vectors; ++v) acc[v] = kernel[0] * load(source.tap(0) + i + v * lanes);
    for (int j = 1; j < kernel.count(); ++j) {
      const V32f tap = kernel[j];
      const Zeb32f* p = source.tap(j) + i;
      for (int v = 0; v < vectors; ++v) acc[v] = fma(tap, load(p + v * lanes), acc[v]);
    }
    for (int v = 0; v < vectors; ++v) store(dst + i + v * lanes, acc[v]);
  }
  restOfRun(source, kernel, dst, i, n);
}

// Few taps along a row of one channel: vectors four elements apart hold what the taps between them read as well, and
// shuffles are cheaper than loads over the boundaries of lines.
template <int taps>
class FewTaps {
 public:
  ZEB_INLINE explicit FewTaps(const Zeb32f* p) {
    for (int b = 0; b <= fours; ++b) {
      four_[b] = load(p + 4 * b);
      settle(four_[b]);
    }
  }
  ZEB_INLINE V32f sum(const FloatTaps<taps>& kernel) const {
    return sum(kernel, std::make_integer_sequence<int, taps - 1>());
  }

 private:
  template <int... j>
  ZEB_INLINE V32f sum(const FloatTaps<taps>& kernel, std::integer_sequence<int, j...>) const {
    V32f acc = kernel[0] * four_[0];
    ((acc = fma(kernel[j + 1], under<j + 1>(), acc)), ...);
    return acc;
  }
  template <int j>
  ZEB_INLINE V32f under() const {
    if constexpr (j % 4 == 0)
      return four_[j / 4];
    else
      return fromByte<j % 4 * 4>(four_[j / 4], four_[j / 4 + 1]);
  }

  // The last of them may reach behind what the taps read, but no more than three elements.
  static constexpr int fours = (taps + 2) / 4;
  V32f four_[fours + 1];
};

template <int taps, int channels>
void alongRow(const Zeb32f* first, const Zeb32f* kernelTaps, int count, Zeb32f* dst, int n) {
  const FloatTaps<taps> kernel(kernelTaps, count);
  const Shifted<Zeb32f, channels> source = {first};
  if constexpr (taps == 0) {
    manyTaps(source, kernel, dst, n);
  } else {
    const auto sum = [&](int at) ZEB_BODY {
      return sumOf<false>(kernel, [&](int j) ZEB_BODY { return load(source.tap(j) + at); });
    };
    int i = 0;
    for (; i <= n - 2 * lanes; i += 2 * lanes) {
      fetchAhead(first + i);
      store(dst + i, sum(i));
      store(dst + i + lanes, sum(i + lanes));
    }
    restOfRun(source, kernel, dst, i, n);
  }
}

// Which lanes of the first and of the last vector of a row stand beside and beyond it: those of the edge, or none where
// the constant stands.
constexpr int vectorAt = 8;
constexpr Zeb32s repeated[24] = {0, 0, 0, 0, 0, 0, 0, 0, 0, 1, 2, 3, 4, 5, 6, 7, 7, 7, 7, 7, 7, 7, 7, 7};
constexpr Zeb32s replaced[24] = {-1, -1, -1, -1, -1, -1, -1, -1, 0,  1,  2,  3,
                                 4,  5,  6,  7,  -1, -1, -1, -1, -1, -1, -1, -1};

template <int taps>
__attribute__((noinline)) void alongRows(const FloatRows& rows, const Zeb32f* kernelTaps) {
  const FloatTaps<taps> kernel(kernelTaps, taps);
  const int width = rows.size.width, anchor = rows.anchor;
  const bool inMemory = rows.border == zebBorderInMem;
  const Zeb32s* const sources = (rows.border == zebBorderConst ? replaced : repeated) + vectorAt;
  // The vector at p, moved by some columns: what lies on the side of the border comes from the vector itself.
  const auto moved = [&](const Zeb32f* p, int columns, bool outwards) ZEB_BODY {
    const bool within = inMemory || !outwards;
    const V32s index = load(sources + (within ? 0 : columns));
    const V32f v = load(p + (within ? columns : 0));
    return selectNegative(as<Zeb32f>(index), splat(rows.value), lanesAt(v, index));
  };
  for (int y = 0; y < rows.size.height; ++y) {
    const Zeb32f* const row = rows.src[y];
    Zeb32f* const out = rows.dst[y];
    const FetchedRow<1024> fetched(row, rows.src.step(), width);
    store(out, sumOf<false>(kernel, [&](int j) ZEB_BODY { return moved(row, j - anchor, j < anchor); }));
    const Zeb32f* const end = row + width - lanes;
    store(out + width - lanes,
          sumOf<false>(kernel, [&](int j) ZEB_BODY { return moved(end, j - anchor, j > anchor); }));
    const auto inner = [&](int x) ZEB_BODY { store(out + x, FewTaps<taps>(row + x - anchor).sum(kernel)); };
    int x = lanes;
    for (; x <= width - 3 * lanes; x += 2 * lanes) {
      fetched.fetch(x);
      inner(x);
      inner(x + lanes);
    }
    if (x <= width - 2 * lanes) inner(x), x += lanes;
    if (x < width - lanes) inner(width - 2 * lanes);
  }
}

// Row by row: two rows at once would read less, but the lines of two results that take turns to be written cost more
// than that wherever the results do not stay in the nearest cache.
template <int taps>
__attribute__((noinline)) void downColumns(const Zeb32f* const* rows, const Zeb32f* kernelTaps, int count,
                                           Rows<Zeb32f> dst, int height, int n) {
  const FloatTaps<taps> kernel(kernelTaps, count);
  for (int y = 0; y < height; ++y) {
    const Stacked<Zeb32f, taps> source(rows + y);
    Zeb32f* const out = dst[y];
    if constexpr (taps == 0) {
      manyTaps(source, kernel, out, n);
    } else {
      const FetchedRow<256> fetched(out, dst.step(), n);
      const auto sum = [&](int at) ZEB_BODY {
        return sumOf<taps == 3>(kernel, [&](int j) ZEB_BODY { return load(source.tap(j) + at); });
      };
      int i = 0;
      for (; i <= n - 2 * lanes; i += 2 * lanes) {
        fetched.fetch(i);
        store(out + i, sum(i));
        store(out + i + lanes, sum(i + lanes));
      }
      restOfRun<taps == 3>(source, kernel, out, i, n);
    }
  }
}

}  // namespace

template <int channels>
void correlateRow(const Zeb32f* first, const Zeb32f* kernel, int count, Zeb32f* dst, int n) {
  withTaps<3, 5, 7>(count, [&](auto taps) { alongRow<decltype(taps)::value, channels>(first, kernel, count, dst, n); });
}
template void correlateRow<1>(const Zeb32f*, const Zeb32f*, int, Zeb32f*, int);
template void correlateRow<3>(const Zeb32f*, const Zeb32f*, int, Zeb32f*, int);

bool correlateRows(const FloatRows& rows, const Zeb32f* kernel, int count) {
  if (rows.size.width < 3 * lanes) return false;
  switch (count) {
    case 3:
      return alongRows<3>(rows, kernel), true;
    case 5:
      return alongRows<5>(rows, kernel), true;
    case 7:
      return alongRows<7>(rows, kernel), true;
    default:
      return false;
  }
}

void correlateColumns(const Zeb32f* const* rows, const Zeb32f* kernel, int count, Rows<Zeb32f> dst, int height, int n) {
  withTaps<3, 5, 7>(count, [&](auto taps) { downColumns<decltype(taps)::value>(rows, kernel, count, dst, height, n); });
}

}  // namespace zeb
