// Chamfer transforms with real weights, 32f.
//
// Single-precision sums must not be regrouped, so every pixel waits for its neighbour in the row: some four cycles. To
// keep the order and work on eight pixels at once, eight rows advance together, each some columns behind the one above
// it: at step t row r of the strip is at column t - skew r. The neighbours in the row above are then what the vector
// held some steps ago, moved by one lane.
//
// Rounding is monotone, so min(p + w, q + w) may be formed as min(p, q) + w.
//
// G. Borgefors, Distance transformations in digital images (1986).
#include <limits>

#include "core/entry.h"
#include "core/shuffle.h"
#include "segment/chamfer.h"

namespace {

using namespace zeb;

// ---- Vectors ----

ZEB_INLINE V32s loadHalvesAs32s(const Zeb8u* low, const Zeb8u* high) {
  int a, b;
  memcpy(&a, low, 4);
  memcpy(&b, high, 4);
  return {_mm256_cvtepu8_epi32(_mm_insert_epi32(_mm_cvtsi32_si128(a), b, 1))};
}

constexpr Zeb32f infinity = std::numeric_limits<Zeb32f>::infinity();
constexpr Zeb32f unreached = std::numeric_limits<Zeb32f>::max();

enum class Way { forward, backward };

// Rows advance together, `rows` of them, each `skew` columns behind the one above it: as many as keep the wait for the
// row above shorter than the wait within the row, and those that a square takes at once.
constexpr int rows = 8, skew = 4;

// What a strip knows of some steps, by lane: lane r belongs to row r.
constexpr int chunk = 64;
using Lanes = Zeb32f[rows];

// Rows and columns in the order of a pass.
template <Way way>
struct Order {
  ZebiSize size;
  int row(int y) const { return way == Way::forward ? y : size.height - 1 - y; }
  int column(int64_t x) const {
    return way == Way::forward ? static_cast<int>(x) : size.width - 1 - static_cast<int>(x);
  }
};

// The strip of rows that begins at row y.
struct StripShape {
  ZebiSize size;
  int y;

  int height() const { return size.height - y < rows ? size.height - y : rows; }
  int64_t steps() const { return int64_t{size.width} + (rows - 1) * skew; }
  // Of the steps t to t + chunk - 1, counted from t, those at which all rows have pixels.
  struct Full {
    int from, end;
    bool holds(int i, int count) const { return i >= from && i + count <= end; }
  };
  Full full(int64_t t) const {
    const auto within = [](int64_t v) { return static_cast<int>(v < 0 ? 0 : v > chunk ? chunk : v); };
    return {height() == rows ? within((rows - 1) * skew - t) : chunk, within(size.width - t)};
  }
  // Infinity for the rows that have no pixel at step t, 0 for the others.
  V32f outside(int64_t t) const {
    const V32s lane = {_mm256_setr_epi32(0, 1, 2, 3, 4, 5, 6, 7)};
    const V32s column = splat(static_cast<int>(static_cast<uint32_t>(t))) - lane * splat(skew);  // < 0: beyond 2^31
    const __m256i last = _mm256_set1_epi32(size.width - 1);
    const V32s along = {_mm256_cmpeq_epi32(_mm256_max_epu32(column.v, last), last)};
    return as<Zeb32f>(andNot(along & greater(splat(height()), lane), as<Zeb32s>(splat(infinity))));
  }
};

// Four steps of four rows and of the four rows below them are one square each in every half of four vectors. Rows start
// where step 0 and the three after it would reach; step t is t columns farther.
template <Way way, class T>
class Squares {
 public:
  void place(Rows<T> image, const StripShape& strip) {
    height_ = strip.height();
    width_ = strip.size.width;
    const Order<way> order{strip.size};
    for (int r = 0; r < height_; ++r)
      row_[r] = image[order.row(strip.y + r)] + (way == Way::forward ? -skew * r : width_ - 4 + skew * r);
  }

  // The values of step k of four in lane[k].
  void read(int64_t t, Lanes* lane) const {
    readFrom([this, t](int r) { return at(r, t); }, lane);
  }
  void write(int64_t t, const Lanes* lane) const {
    writeTo([this, t](int r) { return at(r, t); }, lane);
  }

  // The same where not every row has all four pixels; what lies outside is infinite.
  void readEdge(int64_t t, Lanes* lane) const {
    std::remove_const_t<T> square[rows][4];
    for (int r = 0; r < rows; ++r) {
      const Span within = span(r, t);
      if (within.whole()) {
        memcpy(square[r], at(r, t), sizeof square[r]);
        continue;
      }
      for (int i = 0; i < 4; ++i) square[r][i] = within.holds(i) ? at(r, t)[i] : outside;
    }
    readFrom([&](int r) { return square[r]; }, lane);
  }
  void writeEdge(int64_t t, const Lanes* lane) const {
    T square[rows][4];
    writeTo([&](int r) { return square[r]; }, lane);
    for (int r = 0; r < rows; ++r) {
      const Span within = span(r, t);
      if (within.whole()) {
        memcpy(at(r, t), square[r], sizeof square[r]);
        continue;
      }
      for (int i = within.from; i < within.end; ++i) at(r, t)[i] = square[r][i];
    }
  }

 private:
  static constexpr T outside = std::is_same_v<T, Zeb32f> ? static_cast<T>(infinity) : T{255};

  T* at(int r, int64_t t) const {
    return row_[r] + (way == Way::forward ? static_cast<ptrdiff_t>(t) : -static_cast<ptrdiff_t>(t));
  }
  // Of the four pixels at at(r, t), those inside the image.
  struct Span {
    int from, end;
    bool whole() const { return end - from == 4; }
    bool holds(int i) const { return i >= from && i < end; }
  };
  Span span(int r, int64_t t) const {
    if (r >= height_) return {0, 0};
    const int64_t column = way == Way::forward ? t - skew * r : width_ - 4 - t + skew * r;
    const auto within = [](int64_t v) { return static_cast<int>(v < 0 ? 0 : v > 4 ? 4 : v); };
    return {within(-column), within(width_ - column)};
  }

  template <class At>
  static void readFrom(At at, Lanes* lane) {
    V32f v[4];
    for (int r = 0; r < 4; ++r) v[r] = limit(at(r), at(r + 4));
    transposeHalves(v[0], v[1], v[2], v[3]);
    for (int k = 0; k < 4; ++k) store(lane[way == Way::forward ? k : 3 - k], v[k]);
  }
  template <class At>
  static void writeTo(At at, const Lanes* lane) {
    V32f v[4];
    for (int k = 0; k < 4; ++k) v[k] = load(lane[way == Way::forward ? k : 3 - k]);
    transposeHalves(v[0], v[1], v[2], v[3]);
    for (int r = 0; r < 4; ++r) storeHalves(at(r), at(r + 4), v[r]);
  }
  // What values may be at most: those of the pass before, or 0 at object pixels.
  static V32f limit(const Zeb32f* a, const Zeb32f* b) { return loadHalves(a, b); }
  static V32f limit(const Zeb8u* a, const Zeb8u* b) {
    return as<Zeb32f>(greater(loadHalvesAs32s(a, b), splat(0))) & splat(infinity);
  }

  T* row_[rows];
  int height_, width_;
};

template <int mask, Way way>
class Pass {
  static constexpr int past = mask == 5 ? 2 * skew + 2 : skew + 1;  // steps kept of the chunk before
  using Source = std::conditional_t<way == Way::forward, const Zeb8u, Zeb32f>;

 public:
  // source: the object on the way forward, the distances so far on the way back.
  Pass(Rows<Source> source, Rows<Zeb32f> dst, ZebiSize roi, const Zeb32f* w)
      : source_(source),
        dst_(dst),
        order_{roi},
        straight_(splat(w[0])),
        diagonal_(splat(w[1])),
        knight_(splat(mask == 5 ? w[2] : 0)) {}

  void run() {
    const int height = order_.size.height;
    for (int y = 0; y < height; y += height - y < rows ? height - y : rows) advance({order_.size, y});
  }

 private:
  void advance(const StripShape& strip) {
    sources_.place(source_, strip);
    results_.place(dst_, strip);
    const Zeb32f* up1 = strip.y >= 1 ? dst_[order_.row(strip.y - 1)] : nullptr;
    const Zeb32f* up2 = strip.y >= 2 ? dst_[order_.row(strip.y - 2)] : nullptr;
    // What the rows above the strip hold before step 0.
    for (int i = 0; i < past; ++i) {
      store(above_[i], splat(infinity));
      store(twoAbove_[i], splat(infinity));
      above_[i][0] = twoAbove_[i][1] = valueAt(up1, i - past + int64_t{skew});
      twoAbove_[i][0] = valueAt(up2, i - past + int64_t{2 * skew});
    }
    V32f beside = splat(infinity);
    for (int64_t t = 0, end = strip.steps(); t < end; t += chunk) {
      const int count = end - t < chunk ? static_cast<int>(end - t) : chunk;
      const auto full = strip.full(t);
      const bool edge = !full.holds(0, chunk);
      copyRow(up1, t + skew, up1_);
      if (mask == 5) copyRow(up2, t + 2 * skew, up2_);
      readLimits(strip, full, t, count, edge);
      beside = edge ? recur<true>(beside, count) : recur<false>(beside, chunk);
      writeResults(full, t, count);
      for (int i = 0; i < past; ++i) {
        store(above_[i], load(above_[chunk + i]));
        if (mask == 5) store(twoAbove_[i], load(twoAbove_[chunk + i]));
      }
    }
  }

  Zeb32f valueAt(const Zeb32f* row, int64_t x) const {
    return row && x >= 0 && x < order_.size.width ? row[order_.column(x)] : infinity;
  }
  void copyRow(const Zeb32f* row, int64_t x, Zeb32f* out) const {
    const int64_t left = row ? order_.size.width - x : 0;
    const int count = left < 0 ? 0 : left > chunk ? chunk : static_cast<int>(left);
    const Zeb32f* p = count > 0 ? row + order_.column(x) : nullptr;
    for (int i = 0; i < count; ++i) out[i] = way == Way::forward ? p[i] : p[-i];
    for (int i = count; i < chunk; ++i) out[i] = infinity;
  }

  // limit_ is what a pixel's value may be at most; pixels outside the image have the floor infinity.
  template <bool edge>
  V32f recur(V32f v, int count) {
    const V32f straight = straight_, diagonal = diagonal_, knight = knight_;
    for (int i = 0; i < count; ++i) {
      const auto above = [this, i](int steps) { return load(above_[past + i + steps]); };
      const auto twoAbove = [this, i](int steps) { return load(twoAbove_[past + i + steps]); };
      V32f candidate = min(min(above(1 - skew), above(-1 - skew)) + diagonal, above(-skew) + straight);
      if constexpr (mask == 5) {
        const V32f jumps =
            min(min(above(2 - skew), above(-2 - skew)), min(twoAbove(1 - 2 * skew), twoAbove(-1 - 2 * skew)));
        candidate = min(candidate, jumps + knight);
      }
      v = min(min(candidate, load(limit_[i])), v + straight);
      if (edge) v = max(v, load(floor_[i]));
      store(value_[i], v);
      const V32f moved = moveUpOneLane(v, up1_ + i);
      store(above_[past + i], moved);
      if (mask == 5) store(twoAbove_[past + i], moveUpOneLane(moved, up2_ + i));
    }
    return v;
  }

  void readLimits(const StripShape& strip, const StripShape::Full& full, int64_t t, int count, bool edge) {
    for (int i = 0; i < count; i += 4) {
      if (full.holds(i, 4)) {
        sources_.read(t + i, limit_ + i);
      } else {
        sources_.readEdge(t + i, limit_ + i);
      }
    }
    for (int i = 0; edge && i < count; ++i) store(floor_[i], strip.outside(t + i));
    if constexpr (way == Way::forward)
      if (strip.y == 0 && t == 0 && source_[0][0]) limit_[0][0] = unreached;
  }
  void writeResults(const StripShape::Full& full, int64_t t, int count) const {
    for (int i = 0; i < count; i += 4) {
      if (full.holds(i, 4)) {
        results_.write(t + i, value_ + i);
      } else {
        results_.writeEdge(t + i, value_ + i);
      }
    }
  }

  Rows<Source> source_;
  Rows<Zeb32f> dst_;
  Order<way> order_;
  V32f straight_, diagonal_, knight_;
  Squares<way, Source> sources_;
  Squares<way, Zeb32f> results_;
  alignas(32) Lanes limit_[chunk], floor_[chunk], value_[chunk];
  alignas(32) Lanes above_[past + chunk], twoAbove_[past + chunk];  // by step: of the row above, or two above
  Zeb32f up1_[chunk], up2_[chunk];                                  // the rows above the strip, for lane 0
};

template <int mask, Way way, class S>
__attribute__((noinline)) void runPass(Rows<S> source, Rows<Zeb32f> dst, ZebiSize roi, const Zeb32f* w) {
  Pass<mask, way>(source, dst, roi, w).run();
}

template <int mask>
ZebStatus transform(const Zeb8u* pSrc, int srcStep, Zeb32f* pDst, int dstStep, ZebiSize roi, const Zeb32f* pMetrics) {
  if (auto bad = chamferChecks<Zeb32f, mask>(pSrc, srcStep, pDst, dstStep, roi, pMetrics)) return bad;
  runPass<mask, Way::forward>(Rows(pSrc, srcStep), Rows(pDst, dstStep), roi, pMetrics);
  runPass<mask, Way::backward>(Rows(pDst, dstStep), Rows(pDst, dstStep), roi, pMetrics);
  return zebStsOk;
}

}  // namespace

ZEB_ENTRY(zebiDistanceTransform_3x3_8u32f_C1R)
(const Zeb8u* pSrc, int srcStep, Zeb32f* pDst, int dstStep, ZebiSize roiSize, const Zeb32f* pMetrics) {
  return transform<3>(pSrc, srcStep, pDst, dstStep, roiSize, pMetrics);
}
ZEB_ENTRY(zebiDistanceTransform_5x5_8u32f_C1R)
(const Zeb8u* pSrc, int srcStep, Zeb32f* pDst, int dstStep, ZebiSize roiSize, const Zeb32f* pMetrics) {
  return transform<5>(pSrc, srcStep, pDst, dstStep, roiSize, pMetrics);
}
