// Sums over runs of pixels: accumulators in registers, what they come to, and how a kernel is made of them.
//
// An accumulator names the elements that it takes at a time and the times that it holds before it must be flushed; it
// begins with what the totals hold or with nothing, adds, and ends by putting its sums into the totals. Integer sums
// are exact; those of floats have 16 lanes, or 8, of doubles: the pixel in column x is added to lane x modulo 16 or 8.
#pragma once

#include <math.h>

#include "arith/selection.h"
#include "core/loops.h"
#include "core/reduce.h"

namespace zeb {

struct Totals {
  uint64_t sum[4];      // lanes modulo 2^64; or the largest elements of every lane of a vector
  uint64_t squares[4];  // the same of the squares
  Zeb64f lanes[16];
  Zeb64f shift = 0;  // what is taken from every pixel beforehand

  // By vectors: compilers choose an instruction that takes long to start.
  Totals() {
    store(sum, splat(uint64_t{0}));
    store(squares, splat(uint64_t{0}));
    for (int j = 0; j < 16; j += 4) store(lanes + j, splat(0.0));
  }
};

// ---- What is summed: the elements of one image, or their distances in two ----

template <class T>
struct Elements {
  const T* a;
  ZEB_INLINE Vec<T> operator()(int x) const { return load(a + x); }
  ZEB_INLINE V64u byteSums(int x) const { return byteDistances((*this)(x), splat(Zeb8u{0})); }
  // Four of them, their signs left as they are.
  ZEB_INLINE V64f doubles(int x) const { return loadAsDouble(a + x); }
};

template <class T>
struct Distances {
  const T *a, *b;
  ZEB_INLINE Vec<T> operator()(int x) const {
    const Vec<T> p = load(a + x), q = load(b + x);
    if constexpr (std::is_same_v<T, Zeb32f>) {
      return abs(p - q);
    } else {
      return subSat(p, q) | subSat(q, p);
    }
  }
  ZEB_INLINE V64u byteSums(int x) const { return byteDistances(load(a + x), load(b + x)); }
  ZEB_INLINE V64f doubles(int x) const {
    return {_mm256_cvtps_pd(_mm_sub_ps(_mm_loadu_ps(a + x), _mm_loadu_ps(b + x)))};
  }
};

// ---- Accumulators ----

// Bytes: no lane of 64 bits overflows.
struct ByteSum {
  static constexpr int elements = 32, times = 1 << 20;
  V64u s[2] = {};
  void begin(const Totals&) {}
  template <class Source>
  ZEB_INLINE void add(Source source, int x, int k) {
    s[k % 2] = s[k % 2] + source.byteSums(x);
  }
  void end(Totals& t, int) { store(t.sum, load(t.sum) + s[0] + s[1]); }
};

// Squares of bytes: a lane of 32 bits grows by at most 2 x 2 x 255^2, 2^14 times below 2^32. `flip` is 0x80 for signed
// bytes, which count from -128 on then.
template <Zeb8u flip = 0>
struct ByteSquares {
  static constexpr int elements = 32, times = 1 << 14;
  V32s s = splat(0);
  void begin(const Totals&) {}
  ZEB_INLINE void addVector(V8u v) {
    const V16s low = as<Zeb16s>(v) & splat(Zeb16s{255});
    const V16s high = as<Zeb16s>(shiftRight<8>(as<Zeb16u>(v)));
    s = s + (dotPairs(low, low) + dotPairs(high, high));
  }
  template <class Source>
  ZEB_INLINE void add(Source source, int x, int) {
    addVector(source(x));
  }
  void end(Totals& t, int) { store(t.squares, load(t.squares) + sumPairs(s)); }
};

// Bytes and their squares.
template <Zeb8u flip>
struct ByteMoments {
  static constexpr int elements = 32, times = 1 << 14;
  ByteSum sum;
  ByteSquares<flip> squares;
  void begin(const Totals&) {}
  template <class Source>
  ZEB_INLINE void add(Source source, int x, int k) {
    V8u v = as<Zeb8u>(source(x));
    if (flip != 0) v = v ^ splat(flip);
    sum.s[k % 2] = sum.s[k % 2] + byteDistances(v, splat(Zeb8u{0}));
    squares.addVector(v);
  }
  void end(Totals& t, int n) {
    sum.end(t, n);
    squares.end(t, n);
  }
};

// Words w as w' = w - 2^15, which the signed multiplications take: a lane of 32 bits moves by at most 2^16, 2^14 times;
// the sum of w is that of w' + 2^15, the sum of their squares that of w'^2 + 2^16 w' + 2^30.
ZEB_INLINE V16s centred(V16u v) {
  return as<Zeb16s>(v ^ splat(Zeb16u{0x8000}));
}
struct CentredSum {
  V32s s = splat(0);
  ZEB_INLINE void addVector(V16s v) { s = s + dotPairs(v, splat(Zeb16s{1})); }
  V64u wide() const { return widenLow(s) + widenHigh(s); }
};
struct WordSum {
  static constexpr int elements = 16, times = 1 << 14;
  CentredSum centre;
  void begin(const Totals&) {}
  template <class Source>
  ZEB_INLINE void add(Source source, int x, int) {
    centre.addVector(centred(source(x)));
  }
  void end(Totals& t, int n) { store(t.sum, load(t.sum) + centre.wide() + splat(static_cast<uint64_t>(n / 4) << 15)); }
};

// Pairs of squares are at most 2^31, a lane of 32 bits taken as unsigned. What the pairs of lanes add up to modulo
// 2^64, and the high lanes alone: together they tell the sum of both.
struct WordMoments {
  static constexpr int elements = 16, times = 1 << 14;
  WordSum sum;
  V64u pairs = splat(uint64_t{0}), high = pairs;
  void begin(const Totals&) {}
  template <class Source>
  ZEB_INLINE void add(Source source, int x, int) {
    const V16s v = centred(source(x));
    const V64u squares = as<uint64_t>(dotPairs(v, v));
    sum.centre.addVector(v);
    pairs = pairs + squares;
    high = high + shiftRight<32>(squares);
  }
  void end(Totals& t, int n) {
    const V64u squares = pairs + high - shiftLeft<32>(high);
    const V64u centre = shiftLeft<16>(sum.centre.wide()) + splat(static_cast<uint64_t>(n / 4) << 30);
    store(t.squares, load(t.squares) + squares + centre);
    sum.end(t, n);
  }
};

// Floats and their squares in 16 lanes; a square is exact in double.
template <bool squared>
struct FloatLanes {
  static constexpr int elements = 16, times = 1 << 20;
  V64f p[4];
  void begin(const Totals& t) {
    for (int j = 0; j < 4; ++j) p[j] = load(t.lanes + 4 * j);
  }
  template <class Source>
  ZEB_INLINE void add(Source source, int x, int) {
#pragma GCC unroll 4
    for (int j = 0; j < 4; ++j) {
      const V64f v = source.doubles(x + 4 * j);
      p[j] = squared ? fma(v, v, p[j]) : p[j] + andNot(splat(-0.0), v);
    }
  }
  void end(Totals& t, int) {
    for (int j = 0; j < 4; ++j) store(t.lanes + 4 * j, p[j]);
  }
};

// Floats less the shift, and their squares, in 8 lanes each.
struct FloatMoments {
  static constexpr int elements = 8, times = 1 << 20;
  V64f p[2], q[2], shift;
  void begin(const Totals& t) {
    for (int j = 0; j < 2; ++j) p[j] = load(t.lanes + 4 * j), q[j] = load(t.lanes + 8 + 4 * j);
    shift = splat(t.shift);
  }
  template <class Source>
  ZEB_INLINE void add(Source source, int x, int) {
#pragma GCC unroll 2
    for (int j = 0; j < 2; ++j) {
      const V64f d = source.doubles(x + 4 * j) - shift;
      p[j] = p[j] + d;
      q[j] = fma(d, d, q[j]);
    }
  }
  void end(Totals& t, int) {
    for (int j = 0; j < 2; ++j) store(t.lanes + 4 * j, p[j]), store(t.lanes + 8 + 4 * j, q[j]);
  }
};

// Largest elements, those of floats by their bits: without the sign these are in the order of the values, and beyond
// infinity where one is not a number.
template <class T>
struct Largest {
  using Ordered = std::conditional_t<std::is_same_v<T, Zeb32f>, Zeb32s, T>;
  static constexpr int elements = Vec<T>::lanes, times = 1 << 20;
  Vec<Ordered> m[2];
  void begin(const Totals& t) { m[0] = m[1] = as<Ordered>(load(t.sum)); }
  template <class Source>
  ZEB_INLINE void add(Source source, int x, int k) {
    Vec<T> v = source(x);
    if constexpr (std::is_same_v<T, Zeb32f>) v = abs(v);
    m[k % 2] = max(m[k % 2], as<Ordered>(v));
  }
  void end(Totals& t, int) { store(t.sum, as<uint64_t>(max(m[0], m[1]))); }
};

// ---- Kernels ----

// Adds a run, a multiple of the grain, to the totals. The second image is there where distances are summed.
using RunKernel = void (*)(Totals& totals, const void* first, const void* second, int n);

template <class Accumulator, class T, template <class> class Source, class... Image>
inline void addRun(Totals& totals, int n, const Image*... images) {
  constexpr int most = Accumulator::elements * Accumulator::times;
  for (int x = 0; x < n;) {
    const int part = n - x < most ? n - x : most;
    const Source<T> source = {static_cast<const T*>(images) + x...};
    Accumulator accumulator;
    accumulator.begin(totals);
    forWhole<Accumulator::elements, 4>(part, [&](int i, int k) ZEB_BODY { accumulator.add(source, i, k); });
    accumulator.end(totals, part);
    x += part;
  }
}
template <class Accumulator, class T>
void addElements(Totals& totals, const void* first, const void*, int n) {
  addRun<Accumulator, T, Elements>(totals, n, first);
}
template <class Accumulator, class T>
void addDistances(Totals& totals, const void* first, const void* second, int n) {
  addRun<Accumulator, T, Distances>(totals, n, first, second);
}

// ---- Results ----

inline uint64_t sumOfLanes(const uint64_t (&lanes)[4]) {
  return lanes[0] + lanes[1] + lanes[2] + lanes[3];
}
// Halves are folded until one lane is left.
template <int count>
inline Zeb64f foldedLanes(const Zeb64f* lanes) {
  Zeb64f p[count];
  memcpy(p, lanes, sizeof(p));
  for (int h = count / 2; h >= 1; h /= 2)
    for (int j = 0; j < h; ++j) p[j] += p[j + h];
  return p[0];
}
// What is not a number is stored with the same bits always.
inline Zeb64f canonical(Zeb64f value) {
  return value == value ? value : __builtin_nan("");
}

}  // namespace zeb
