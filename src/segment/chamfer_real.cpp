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
#include "core/lanes.h"
#include "segment/chamfer.h"

namespace {

using namespace zeb;

constexpr Zeb32f infinity = std::numeric_limits<Zeb32f>::infinity();
constexpr Zeb32f unreached = std::numeric_limits<Zeb32f>::max();

enum class Way { forward, backward };

template <int mask>
class Chamfer {
  static constexpr int rows = 8;
  static constexpr int skew = mask == 5 ? 4 : 3;
  static constexpr int steps = 64;                        // of a chunk
  static constexpr int past = mask == 5 ? 10 : skew + 1;  // vectors kept of the chunk before

 public:
  Chamfer(Rows<const Zeb8u> src, Rows<Zeb32f> dst, ZebiSize roi, const Zeb32f* w)
      : src_(src), dst_(dst), width_(roi.width), height_(roi.height) {
    straight_ = splat(w[0]);
    diagonal_ = splat(w[1]);
    knight_ = splat(mask == 5 ? w[2] : 0);
  }

  void transform() {
    for (int y = 0; y < height_; y += height_ - y < rows ? height_ - y : rows) strip<Way::forward>(y);
    for (int y = 0; y < height_; y += height_ - y < rows ? height_ - y : rows) strip<Way::backward>(y);
  }

 private:
  // Rows and columns in the order of the pass.
  template <Way way>
  int rowOf(int y) const {
    return way == Way::forward ? y : height_ - 1 - y;
  }
  template <Way way>
  int columnOf(int x) const {
    return way == Way::forward ? x : width_ - 1 - x;
  }

  template <Way way>
  void strip(int y) {
    placeSquares<way>(y);
    const V32f far = splat(infinity);
    V32f beside = far;
    for (int i = 0; i < past; ++i) above_[i] = twoAbove_[i] = far;
    // The first vectors of the rows above the strip stand before step 0.
    const Zeb32f* up1 = y >= 1 ? dst_[rowOf<way>(y - 1)] : nullptr;
    const Zeb32f* up2 = y >= 2 ? dst_[rowOf<way>(y - 2)] : nullptr;
    for (int i = 0; i < past; ++i) {
      Zeb32f* v = reinterpret_cast<Zeb32f*>(&above_[i]);
      Zeb32f* v2 = reinterpret_cast<Zeb32f*>(&twoAbove_[i]);
      v[0] = v2[1] = valueAt<way>(up1, i - past + int64_t{skew});
      v2[0] = valueAt<way>(up2, i - past + int64_t{2 * skew});
    }
    const int64_t end = int64_t{width_} + (rows - 1) * skew;
    for (int64_t t = 0; t < end; t += steps) {
      const int count = end - t < steps ? static_cast<int>(end - t) : steps;
      copyRow<way>(up1, t + skew, up1_);
      if (mask == 5) copyRow<way>(up2, t + 2 * skew, up2_);
      const bool edge = y > height_ - rows || t < (rows - 1) * skew || t + steps > width_;
      readChunk<way>(y, t, count, edge);
      if (edge) {
        run<true>(beside, count);
      } else {
        run<false>(beside, steps);
      }
      writeChunk<way>(y, t, count);
      for (int i = 0; i < past; ++i) {
        above_[i] = above_[steps + i];
        if (mask == 5) twoAbove_[i] = twoAbove_[steps + i];
      }
    }
  }

  template <Way way>
  Zeb32f valueAt(const Zeb32f* row, int64_t x) const {
    return row && x >= 0 && x < width_ ? row[columnOf<way>(static_cast<int>(x))] : infinity;
  }

  template <Way way>
  void copyRow(const Zeb32f* row, int64_t x, Zeb32f* out) const {
    if (!row || x + steps > width_) {
      for (int i = 0; i < steps; ++i) out[i] = valueAt<way>(row, x + i);
      return;
    }
    const Zeb32f* p = row + columnOf<way>(static_cast<int>(x));
    for (int i = 0; i < steps; ++i) out[i] = way == Way::forward ? p[i] : p[-i];
  }

  // The recurrence. cap_ is what a pixel's value may be at most; pixels outside the image have the floor infinity.
  template <bool edge>
  void run(V32f& beside, int count) {
    const V32f straight = straight_, diagonal = diagonal_, knight = knight_;
    V32f v = beside;
    for (int i = 0; i < count; ++i) {
      const V32f* a = above_ + past + i;
      V32f candidate = min(min(a[1 - skew], a[-1 - skew]) + diagonal, a[-skew] + straight);
      if (mask == 5) {
        const V32f* b = twoAbove_ + past + i;
        const V32f jumps = min(min(a[2 - skew], a[-2 - skew]), min(b[1 - 2 * skew], b[-1 - 2 * skew]));
        candidate = min(candidate, jumps + knight);
      }
      v = min(min(candidate, cap_[i]), v + straight);
      if (edge) v = max(v, floor_[i]);
      value_[i] = v;
      const V32f moved = moveUpOneLane(v, up1_ + i);
      above_[past + i] = moved;
      if (mask == 5) twoAbove_[past + i] = moveUpOneLane(moved, up2_ + i);
    }
    beside = v;
  }

  // Four steps of four rows and of the four rows below them are one square each in every half of four vectors.
  template <Way way>
  bool inside(int y, int64_t t) const {
    return y <= height_ - rows && t >= (rows - 1) * skew && t + 3 < width_;
  }

  template <Way way>
  void readChunk(int y, int64_t t, int count, bool edge) {
    for (int i = 0; i < count; i += 4) {
      if (inside<way>(y, t + i)) {
        readSquares<way>(static_cast<int>(t) + i, i);
        if (edge)
          for (int j = 0; j < 4; ++j) floor_[i + j] = splat(0.0f);
      } else {
        for (int j = i; j < i + 4 && j < count; ++j) readStep<way>(y, t + j, j);
      }
    }
    if (way == Way::forward && y == 0 && t == 0 && src_[0][0]) *reinterpret_cast<Zeb32f*>(&cap_[0]) = unreached;
  }
  // Where the four columns of a row start that step 0 and the three after it would reach; step t is t columns farther.
  template <Way way>
  void placeSquares(int y) {
    for (int r = 0; r < rows && y <= height_ - rows; ++r) {
      const int start = way == Way::forward ? -skew * r : width_ - 4 + skew * r;
      srcSquare_[r] = src_[rowOf<way>(y + r)] + start;
      dstSquare_[r] = dst_[rowOf<way>(y + r)] + start;
    }
  }
  template <Way way>
  void readSquares(int t, int i) {
    const ptrdiff_t at = way == Way::forward ? t : -static_cast<ptrdiff_t>(t);
    V32f v[4];
    for (int r = 0; r < 4; ++r) {
      if (way == Way::forward) {
        const V32s nonzero = greater(loadHalvesAs32s(srcSquare_[r] + at, srcSquare_[r + 4] + at), splat(0));
        v[r] = as<Zeb32f>(nonzero) & splat(infinity);
      } else {
        v[r] = loadHalves(dstSquare_[r] + at, dstSquare_[r + 4] + at);
      }
    }
    transposeHalves(v[0], v[1], v[2], v[3]);
    for (int j = 0; j < 4; ++j) cap_[i + (way == Way::forward ? j : 3 - j)] = v[j];
  }
  // The rows of the strip that have a pixel at step t: from first(t) to last(y, t).
  int firstRow(int64_t t) const { return t < width_ ? 0 : static_cast<int>((t - width_) / skew) + 1; }
  int lastRow(int y, int64_t t) const {
    const int reached = t < (rows - 1) * skew ? static_cast<int>(t) / skew : rows - 1;
    return reached < height_ - 1 - y ? reached : height_ - 1 - y;
  }
  template <Way way>
  void readStep(int y, int64_t t, int i) {
    cap_[i] = floor_[i] = splat(infinity);
    Zeb32f* cap = reinterpret_cast<Zeb32f*>(&cap_[i]);
    Zeb32f* low = reinterpret_cast<Zeb32f*>(&floor_[i]);
    for (int r = firstRow(t), last = lastRow(y, t); r <= last; ++r) {
      const int row = rowOf<way>(y + r), column = columnOf<way>(static_cast<int>(t - skew * r));
      low[r] = 0;
      cap[r] = way == Way::forward ? (src_[row][column] ? infinity : 0) : dst_[row][column];
    }
  }

  template <Way way>
  void writeChunk(int y, int64_t t, int count) {
    for (int i = 0; i < count; i += 4) {
      if (inside<way>(y, t + i)) {
        writeSquares<way>(static_cast<int>(t) + i, i);
      } else {
        for (int j = i; j < i + 4 && j < count; ++j) writeStep<way>(y, t + j, j);
      }
    }
  }
  template <Way way>
  void writeSquares(int t, int i) {
    const ptrdiff_t at = way == Way::forward ? t : -static_cast<ptrdiff_t>(t);
    V32f v[4];
    for (int j = 0; j < 4; ++j) v[j] = value_[i + (way == Way::forward ? j : 3 - j)];
    transposeHalves(v[0], v[1], v[2], v[3]);
    for (int r = 0; r < 4; ++r) storeHalves(dstSquare_[r] + at, dstSquare_[r + 4] + at, v[r]);
  }
  template <Way way>
  void writeStep(int y, int64_t t, int i) {
    for (int r = firstRow(t), last = lastRow(y, t); r <= last; ++r)
      dst_[rowOf<way>(y + r)][columnOf<way>(static_cast<int>(t - skew * r))] =
          reinterpret_cast<const Zeb32f*>(&value_[i])[r];
  }

  Rows<const Zeb8u> src_;
  Rows<Zeb32f> dst_;
  int width_, height_;
  const Zeb8u* srcSquare_[rows];
  Zeb32f* dstSquare_[rows];
  V32f straight_, diagonal_, knight_;
  V32f cap_[steps], floor_[steps], value_[steps];
  V32f above_[past + steps], twoAbove_[past + steps];  // by step: lane r holds the row above row r, or two above it
  Zeb32f up1_[steps], up2_[steps];                     // the rows above the strip, where lane 0 needs them
};

template <int mask>
ZebStatus transform(const Zeb8u* pSrc, int srcStep, Zeb32f* pDst, int dstStep, ZebiSize roi, const Zeb32f* pMetrics) {
  if (auto bad = chamferChecks<Zeb32f, mask>(pSrc, srcStep, pDst, dstStep, roi, pMetrics)) return bad;
  Chamfer<mask>(Rows(pSrc, srcStep), Rows(pDst, dstStep), roi, pMetrics).transform();
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
