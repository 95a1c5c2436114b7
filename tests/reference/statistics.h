// Norms, mean and deviation, extremes, from their definitions.
#pragma once

#include <stdint.h>

#include <cmath>
#include <cstdlib>
#include <limits>

#include "reference/accumulate.h"
#include "reference/plane.h"

namespace ref {

// Of which pixels: those of a channel whose mask byte is not zero.
struct Selected {
  const Plane<Zeb8u>* mask = nullptr;
  int channel = 0;

  // visit(column, row) in scan order.
  template <class T, class Visit>
  void forEach(const Plane<T>& of, Visit visit) const {
    for (int y = 0; y < of.height; ++y)
      for (int x = 0; x < of.width; ++x)
        if (mask == nullptr || mask->at(x, y) != 0) visit(x, y);
  }
  template <class T>
  int64_t count(const Plane<T>& of) const {
    int64_t n = 0;
    forEach(of, [&](int, int) { ++n; });
    return n;
  }
};

// The sum of terms with a partial sum for every so many columns, folded by halves.
template <int lanes>
class LaneSum {
 public:
  // The partial sum that the pixel in column x is added to.
  Zeb64f& operator[](int x) { return partial_[x % lanes]; }
  Zeb64f folded() {
    for (int h = lanes / 2; h >= 1; h /= 2)
      for (int j = 0; j < h; ++j) partial_[j] = partial_[j] + partial_[j + h];
    return partial_[0];
  }

 private:
  Zeb64f partial_[lanes] = {};
};

enum class Norm { inf, l1, l2 };

// The largest, the sum or the root of the sum of squares of |value(x, y)|.
template <class T, class Value>
Zeb64f normOf(Norm norm, const Plane<T>& shape, const Selected& selected, Value value) {
  bool ordered = true;
  Zeb64f largest = 0;
  int64_t sum = 0, squares = 0;
  LaneSum<16> sums, sumsOfSquares;
  selected.forEach(shape, [&](int x, int y) {
    const Zeb64f v = value(x, y);
    if (std::isnan(v)) ordered = false;
    if (v > largest) largest = v;
    sums[x] += v;
    sumsOfSquares[x] += v * v;
    if constexpr (std::is_integral_v<T>) {
      const auto whole = static_cast<int64_t>(v);
      sum += whole;
      squares += whole * whole;
    }
  });
  if (norm == Norm::inf) return ordered ? largest : std::numeric_limits<Zeb64f>::quiet_NaN();
  if (std::is_integral_v<T>)
    return norm == Norm::l1 ? static_cast<Zeb64f>(sum) : std::sqrt(static_cast<Zeb64f>(squares));
  return norm == Norm::l1 ? sums.folded() : std::sqrt(sumsOfSquares.folded());
}

template <class T>
Zeb64f norm(Norm norm, const Plane<T>& a, const Selected& selected) {
  return normOf(norm, a, selected,
                [&](int x, int y) { return static_cast<Zeb64f>(absDiff(a.at(x, y, selected.channel), T(0))); });
}
template <class T>
Zeb64f normDiff(Norm norm, const Plane<T>& a, const Plane<T>& b, const Selected& selected) {
  return normOf(norm, a, selected, [&](int x, int y) {
    return static_cast<Zeb64f>(absDiff(a.at(x, y, selected.channel), b.at(x, y, selected.channel)));
  });
}
template <class T>
Zeb64f normRel(Norm kind, const Plane<T>& a, const Plane<T>& b, const Selected& selected) {
  const Zeb64f numerator = normDiff(kind, a, b, selected), denominator = norm(kind, b, selected);
  if (denominator != 0 || std::isnan(denominator)) return numerator / denominator;
  return numerator > 0 ? std::numeric_limits<Zeb64f>::infinity() : std::numeric_limits<Zeb64f>::quiet_NaN();
}

// a b - c d, not below 0, of numbers below 2^63: exact in 128 bits, then rounded once. What is shifted out at the end
// is told by the last bit.
inline Zeb64f differenceOfProducts(int64_t a, int64_t b, int64_t c, int64_t d) {
  struct Wide {
    uint64_t high, low;
  };
  const auto product = [](uint64_t x, uint64_t y) {
    const uint64_t x0 = x & 0xFFFFFFFF, x1 = x >> 32, y0 = y & 0xFFFFFFFF, y1 = y >> 32;
    const uint64_t middle = x1 * y0 + (x0 * y0 >> 32), other = x0 * y1 + (middle & 0xFFFFFFFF);
    return Wide{x1 * y1 + (middle >> 32) + (other >> 32), x * y};
  };
  const Wide p = product(static_cast<uint64_t>(a), static_cast<uint64_t>(b));
  const Wide q = product(static_cast<uint64_t>(c), static_cast<uint64_t>(d));
  const uint64_t low = p.low - q.low, high = p.high - q.high - (p.low < q.low);
  if (high == 0) return static_cast<Zeb64f>(low);
  const int shift = __builtin_clzll(high);
  uint64_t top = shift ? high << shift | low >> (64 - shift) : high;
  if (low << shift) top |= 1;
  return std::ldexp(static_cast<Zeb64f>(top), 64 - shift);
}

struct MeanAndDeviation {
  Zeb64f mean = 0, deviation = 0;
};

template <class T>
MeanAndDeviation meanAndDeviation(const Plane<T>& a, const Selected& selected) {
  const int64_t n = selected.count(a);
  if (n == 0) return {};
  int64_t s1 = 0, s2 = 0;
  selected.forEach(a, [&](int x, int y) {
    const int64_t v = a.at(x, y, selected.channel);
    s1 += v;
    s2 += v * v;
  });
  const Zeb64f variance = differenceOfProducts(n, s2, std::abs(s1), std::abs(s1));
  return {static_cast<Zeb64f>(s1) / static_cast<Zeb64f>(n), std::sqrt(variance) / static_cast<Zeb64f>(n)};
}

inline MeanAndDeviation meanAndDeviation(const Plane<Zeb32f>& a, const Selected& selected) {
  const int64_t n = selected.count(a);
  if (n == 0) return {};
  bool any = false;
  Zeb64f k = 0;
  LaneSum<8> d1, d2;
  selected.forEach(a, [&](int x, int y) {
    const Zeb64f v = static_cast<Zeb64f>(a.at(x, y, selected.channel));
    if (!any) k = std::isfinite(v) ? v : 0;
    any = true;
    const Zeb64f d = v - k;
    d1[x] += d;
    d2[x] = std::fma(d, d, d2[x]);
  });
  const Zeb64f sum = d1.folded(), m = sum / static_cast<Zeb64f>(n);
  Zeb64f v = std::fma(-m, sum, d2.folded());
  if (v < 0) v = 0;
  return {k + m, std::sqrt(v / static_cast<Zeb64f>(n))};
}

struct Extremes {
  Zeb32f smallest = 0, largest = 0;
  ZebiPoint smallestAt = {-1, -1}, largestAt = {-1, -1};
};

template <class T>
Extremes extremes(const Plane<T>& a, const Selected& selected) {
  Extremes e;
  selected.forEach(a, [&](int x, int y) {
    const Zeb32f v = static_cast<Zeb32f>(a.at(x, y, selected.channel));
    if (std::isnan(v)) return;
    if (e.smallestAt.x < 0 || v < e.smallest) e.smallest = v, e.smallestAt = {x, y};
    if (e.largestAt.x < 0 || v > e.largest) e.largest = v, e.largestAt = {x, y};
  });
  if (e.smallest == 0) e.smallest = 0;
  if (e.largest == 0) e.largest = 0;
  return e;
}

}  // namespace ref
