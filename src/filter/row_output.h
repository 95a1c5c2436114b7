// Where a filter leaves its rows, and what happens to a row while it is still in the nearest cache.
#pragma once

#include "core/image.h"
#include "core/vec.h"

namespace zeb {

// Rows of short lines are made so many at a time, so that little is left to do for each.
constexpr int rowsTogether = 8;

// a - b, not below 0.
template <class T>
ZEB_INLINE Vec<T> excess(Vec<T> a, Vec<T> b) {
  if constexpr (std::is_same_v<T, Zeb32f>) {
    return max(splat(0.0f), a - b);
  } else if constexpr (std::is_same_v<T, Zeb16s>) {
    return max(subSat(a, b), splat(Zeb16s(0)));
  } else {
    return subSat(a, b);
  }
}

// One operand may be out.
template <class T>
inline void excessRow(const T* a, const T* b, T* out, ptrdiff_t n) {
  constexpr int lanes = Vec<T>::lanes;
  ptrdiff_t x = 0;
  for (; x <= n - lanes; x += lanes) store(out + x, excess(load(a + x), load(b + x)));
  const int rest = static_cast<int>(n - x);
  if (rest > 0) storeN(out + x, excess(loadN(a + x, rest), loadN(b + x, rest)), rest);
}

template <class T>
struct RowOutput {
  enum Finish {
    store,          // dst = result
    otherMinus,     // dst = other - result
    minusOther,     // dst = result - other
    dstMinusResult  // dst = dst - result
  };

  Rows<T> dst;
  int firstRow, endRow;  // the rows to make; images begin at the first of them
  Finish finish = store;
  Rows<const T> other{nullptr, 0};
  T* line = nullptr;  // room for as many rows as follow, for dstMinusResult
  int lines = 1;
  ptrdiff_t lineStep = 0;
  bool finite = false;  // infinite results become the largest finite values

  RowOutput(Rows<T> rows, int first, int end) : dst(rows), firstRow(first), endRow(end) {}

  // So many rows may be made together, those of a group so many elements apart.
  int together() const { return finish == dstMinusResult ? lines : INT32_MAX; }
  ptrdiff_t step() const {
    return finish == dstMinusResult ? lineStep : dst.step() / static_cast<ptrdiff_t>(sizeof(T));
  }
  // Where elements x.. of row y, the i-th of its group, are to be written, and what to do after they were.
  T* begin(int y, ptrdiff_t x, int i = 0) const {
    return finish == dstMinusResult ? line + i * lineStep : dst[y - firstRow] + x;
  }
  ZEB_INLINE void end(int y, ptrdiff_t x, ptrdiff_t n, int i = 0) const {
    if (finish != store || finite) finishRow(y, x, n, i);
  }

 private:
  void finishRow(int y, ptrdiff_t x, ptrdiff_t n, int i) const {
    if constexpr (std::is_same_v<T, Zeb32f>) {
      if (finite) clampToFinite(begin(y, x, i), n);
    }
    T* out = dst[y - firstRow] + x;
    if (finish == otherMinus) excessRow<T>(other[y - firstRow] + x, out, out, n);
    if (finish == minusOther) excessRow<T>(out, other[y - firstRow] + x, out, n);
    if (finish == dstMinusResult) excessRow<T>(out, begin(y, x, i), out, n);
  }

  static void clampToFinite(Zeb32f* p, ptrdiff_t n) {
    constexpr Zeb32f largest = 3.40282347e+38f;
    const auto clamped = [](V32f v) { return min(splat(largest), max(splat(-largest), v)); };
    ptrdiff_t x = 0;
    for (; x <= n - 8; x += 8) zeb::store(p + x, clamped(load(p + x)));
    const int rest = static_cast<int>(n - x);
    if (rest > 0) storeN(p + x, clamped(loadN(p + x, rest)), rest);
  }
};

}  // namespace zeb
