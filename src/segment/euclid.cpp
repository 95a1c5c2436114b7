// Exact Euclidean distance transform.
//
// Columns: the number of rows to the nearest feature of the column, downwards, then upwards. Rows: the lower envelope
// of the parabolas (x - q)^2 + g(q)^2 over the columns q. Squares are integers throughout, so the result is the
// single-precision number nearest to the true distance, in an image of any size.
//
// Where features are near, the envelope costs more than looking k = 1, 2, ... columns to either side of a vector of
// pixels until k^2 exceeds every minimum; a row is tried that way and handed to the envelope when it takes too long.
//
// T. Hirata, A unified linear-time algorithm for computing distance maps (1996); A. Meijster, J. Roerdink, W.
// Hesselink, A general algorithm for computing distance transforms in linear time (2000); P. Felzenszwalb, D.
// Huttenlocher, Distance transforms of sampled functions (2012).
#include <math.h>

#include "core/checks.h"
#include "core/entry.h"
#include "core/rows.h"
#include "core/scratch.h"
#include "core/vec.h"

namespace {

using namespace zeb;

// What an image without features holds: the square root of the largest finite float.
constexpr Zeb32f noFeature = 0x1.fffffep+63f;

int64_t bufferBytes(ZebiSize roi) {
  const int64_t side = roi.width > roi.height ? roi.width : roi.height;
  return 24 * ((side + 3) & ~int64_t{3}) + 56;
}

// The counts of rows, in place of the distances: downwards from the nearest feature above, limited to far.
void countDown(const Zeb8u* __restrict src, const Zeb32s* __restrict above, Zeb32s* __restrict d, int n, Zeb32s far) {
  if (!above) {
    for (int x = 0; x < n; ++x) d[x] = src[x] ? far : 0;
    return;
  }
  for (int x = 0; x < n; ++x) {
    const Zeb32s next = above[x] < far ? above[x] + 1 : far;
    d[x] = src[x] ? next : 0;
  }
}
void countUp(const Zeb32s* __restrict down, Zeb32s* __restrict up, int n, Zeb32s far) {
  for (int x = 0; x < n; ++x) {
    const Zeb32s next = up[x] < far ? up[x] + 1 : far;
    up[x] = down[x] < next ? down[x] : next;
  }
}

int64_t floorDivide(int64_t a, int64_t b) {
  return a >= 0 ? a / b : -((b - 1 - a) / b);
}

// Images whose squared diagonal stays below 2^30: 32-bit squares.
class Narrow {
 public:
  static constexpr Zeb32s far = 1 << 15;  // its square exceeds every squared distance

  static bool serves(ZebiSize roi) {
    return static_cast<int64_t>(roi.width) * roi.width + static_cast<int64_t>(roi.height) * roi.height < 1 << 30;
  }

  Narrow(int width, int height, Zeb8u* pBuffer, int64_t bytes) : width_(width) {
    const int padded = (width + 7) & ~7;
    reach_ = width < 128 ? width : 128;
    exactInSingle_ = int64_t{width} * width + int64_t{height} * height <= 1 << 24;
    Scratch scratch(pBuffer, bytes);
    Zeb32s* block = scratch.take<Zeb32s>(2 * int64_t{padded} + 2 * reach_ + 2 * int64_t{width} + 1, 4);
    up = block;
    square_ = up + padded + reach_;
    apex_ = square_ + padded + reach_;
    bound_ = apex_ + width;
    for (int i = 0; i < reach_; ++i) square_[-1 - i] = far * far;
    for (int i = width; i < padded + reach_; ++i) square_[i] = far * far;
    for (int x = 0; x < width; ++x) up[x] = far;
  }

  // The distances of a row from its counts in up.
  void row(Zeb32f* d) {
    for (int x = 0; x < width_; ++x) square_[x] = up[x] * up[x];
    if (patience_ > 0) {
      --patience_;
    } else if (lookAround(d)) {
      return;
    } else {
      patience_ = 15;
    }
    envelope(reinterpret_cast<Zeb32s*>(d));
    for (int x = 0; x < width_; x += 8) {
      const int n = width_ - x < 8 ? width_ - x : 8;
      put(d + x, as<Zeb32s>(loadN(d + x, n)), n);
    }
  }

  Zeb32s* up;

 private:
  ZEB_INLINE void put(Zeb32f* d, V32s squares, int n) const {
    V32f root;
    if (exactInSingle_) {
      root = sqrt(toFloat(squares));
    } else {
      root = narrowToFloat(sqrt(lowToDouble(squares)), sqrt(highToDouble(squares)));
    }
    if (n == 8) {
      store(d, root);
    } else {
      storeN(d, root, n);
    }
  }

  // False, with part of the row written, when it takes more steps than the envelope would.
  bool lookAround(Zeb32f* d) const {
    const int limit = width_ - 1 < reach_ ? width_ - 1 : reach_;
    int64_t steps = 64 * (static_cast<int64_t>(width_) / 16 + 1);
    int x = 0;
    for (; x <= width_ - 16; x += 16) {
      V32s a = load(square_ + x), b = load(square_ + x + 8);
      V32s kk = splat(1), increment = splat(3);
      const Zeb32s *left = square_ + x - 1, *right = square_ + x + 1;
      int k = 1;
      while (anyBit(greater(max(a, b), kk))) {
        if (k > limit) break;
        a = min(a, min(load(left), load(right)) + kk);
        b = min(b, min(load(left + 8), load(right + 8)) + kk);
        kk = kk + increment;
        increment = increment + splat(2);
        --left;
        ++right;
        ++k;
      }
      steps -= k;
      if ((k > limit && limit < width_ - 1) || steps < 0) return false;
      put(d + x, a, 8);
      put(d + x + 8, b, 8);
    }
    for (; x < width_; x += 8) {
      V32s a = load(square_ + x);
      int k = 1;
      for (Zeb32s kk = 1; k <= limit && anyBit(greater(a, splat(kk))); ++k, kk = k * k)
        a = min(a, min(load(square_ + x - k), load(square_ + x + k)) + splat(kk));
      if (k > limit && limit < width_ - 1) return false;
      put(d + x, a, width_ - x < 8 ? width_ - x : 8);
    }
    return true;
  }

  // Parabola apex_[i] is the least one right of bound_[i], up to bound_[i + 1].
  void envelope(Zeb32s* out) {
    int count = 0;
    for (int q = 0; q < width_; ++q) {
      if (square_[q] == far * far) continue;
      const Zeb32s height = square_[q] + q * q;
      int bound = -1;
      while (count > 0) {
        const int p = apex_[count - 1];
        const Zeb32s rise = height - (square_[p] + p * p);
        // The quotient of integers below 2^31 is nowhere rounded up to an integer.
        bound = rise < 0 ? -1 : static_cast<int>(static_cast<double>(rise) / (2 * (q - p)));
        if (bound > bound_[count - 1]) break;
        --count;
      }
      if (count == 0) bound = -1;
      if (bound >= width_ - 1) continue;
      apex_[count] = q;
      bound_[count++] = bound;
    }
    bound_[count] = width_ - 1;
    for (int i = 0; i < count; ++i) {
      const int q = apex_[i];
      const Zeb32s g = square_[q];
      for (int x = bound_[i] + 1, end = bound_[i + 1]; x <= end; ++x) out[x] = (x - q) * (x - q) + g;
    }
  }

  int width_;
  int reach_;  // columns of infinity on either side of the squares
  bool exactInSingle_;
  int patience_ = 0;  // rows that go to the envelope at once
  Zeb32s *square_, *apex_, *bound_;
};

// Any image: 64-bit squares, roots rounded once from the 64 bits of the extended format.
class Wide {
 public:
  static constexpr Zeb32s far = 1 << 30;

  Wide(int width, Zeb8u* pBuffer, int64_t bytes) : width_(width) {
    Scratch scratch(pBuffer, bytes);
    up = scratch.take<Zeb32s>(width, 4);
    apex_ = scratch.take<Zeb32s>(width, 4);
    bound_ = scratch.take<Zeb32s>(int64_t{width} + 1, 4);
    for (int x = 0; x < width; ++x) up[x] = far;
  }

  void row(Zeb32f* d) {
    int count = 0;
    for (int q = 0; q < width_; ++q) {
      if (up[q] == far) continue;
      int bound = -1;
      while (count > 0) {
        const int p = apex_[count - 1];
        const int64_t rise = square(up[q]) - square(up[p]) + square(q) - square(p);
        const int64_t meeting = floorDivide(rise, 2 * (static_cast<int64_t>(q) - p));
        bound = static_cast<int>(meeting < -1 ? -1 : meeting > width_ ? width_ : meeting);
        if (bound > bound_[count - 1]) break;
        --count;
      }
      if (count == 0) bound = -1;
      if (bound >= width_ - 1) continue;
      apex_[count] = q;
      bound_[count++] = bound;
    }
    bound_[count] = width_ - 1;
    for (int i = 0; i < count; ++i)
      for (int x = bound_[i] + 1; x <= bound_[i + 1]; ++x) {
        const int64_t squares = square(static_cast<int64_t>(x) - apex_[i]) + square(up[apex_[i]]);
        d[x] = static_cast<Zeb32f>(__builtin_sqrtl(static_cast<long double>(squares)));
      }
  }

  Zeb32s* up;

 private:
  static int64_t square(int64_t v) { return v * v; }

  int width_;
  Zeb32s *apex_, *bound_;
};

template <class Size>
void transform(Rows<const Zeb8u> src, Rows<Zeb32f> dst, ZebiSize roi, Size& rows) {
  const auto counts = [dst](int y) { return reinterpret_cast<Zeb32s*>(dst[y]); };
  const int n = roi.width, last = roi.height - 1;
  for (int y = 0; y <= last; ++y) countDown(src[y], y ? counts(y - 1) : nullptr, counts(y), n, Size::far);
  // A feature anywhere leaves a count in the last row.
  bool any = false;
  for (int x = 0; x < n; ++x) any |= counts(last)[x] < Size::far;
  if (!any) {
    for (int y = 0; y <= last; ++y)
      for (int x = 0; x < n; ++x) dst[y][x] = noFeature;
    return;
  }
  for (int y = last; y >= 0; --y) {
    countUp(counts(y), rows.up, n, Size::far);
    rows.row(dst[y]);
  }
}

}  // namespace

ZEB_ENTRY(zebiTrueDistanceTransformGetBufferSize_8u32f_C1R)(ZebiSize roiSize, int* pBufferSize) {
  if (auto bad = firstFailure(present(pBufferSize), hasArea(roiSize))) return bad;
  return reportSize(bufferBytes(roiSize), pBufferSize);
}

ZEB_ENTRY(zebiTrueDistanceTransform_8u32f_C1R)
(const Zeb8u* pSrc, int srcStep, Zeb32f* pDst, int dstStep, ZebiSize roiSize, Zeb8u* pBuffer) {
  if (auto bad = firstFailure(present(pSrc, pDst, pBuffer), hasArea(roiSize), holdsRow<Zeb8u>(srcStep, roiSize.width),
                              holdsRow<Zeb32f>(dstStep, roiSize.width), wholeElements<Zeb32f>(dstStep)))
    return bad;
  const Rows src(pSrc, srcStep);
  const Rows dst(pDst, dstStep);
  if (Narrow::serves(roiSize)) {
    Narrow rows(roiSize.width, roiSize.height, pBuffer, bufferBytes(roiSize));
    transform(src, dst, roiSize, rows);
  } else {
    Wide rows(roiSize.width, pBuffer, bufferBytes(roiSize));
    transform(src, dst, roiSize, rows);
  }
  return zebStsOk;
}
