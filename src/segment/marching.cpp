// Signed distance to the boundary of an object: the Eikonal equation by upwind updates.
//
// Let s and t be the distances of the nearer neighbour in the row and in the column. The local update of a pixel is
//
//   f = 1 + min(s, t)  where |s - t| >= 1,  else  (s + t + sqrt(2 - (s - t)^2)) / 2,
//
// and a pixel keeps the smaller of its value and f. Inside and outside are separated by the boundary pixels, whose
// distance is 0, so one field of magnitudes serves both; outside a magnitude beyond the radius counts as unknown.
// Magnitudes only ever decrease, the updates end when none changes anything.
//
// The field is swept in the four diagonal directions, tile by tile, a tile as long as its values or its neighbours'
// change. In a tile all pixels of one diagonal depend on the diagonals before and after it only, so they are updated
// at once: the tile is stored by diagonals, row r of the tile as lane r.
//
// J. N. Tsitsiklis, Efficient algorithms for globally optimal trajectories (1995); H. Zhao, A fast sweeping method for
// Eikonal equations (2005).
#include <math.h>

#include "core/checks.h"
#include "core/entry.h"
#include "core/image.h"
#include "core/loops.h"
#include "core/scratch.h"
#include "segment/marching.h"

namespace {

using namespace zeb;

constexpr Zeb32f unknown = 1e30f;    // so large that adding a step changes nothing
constexpr Zeb32f farSeed = 1000000;  // of a first pixel that lies inside
constexpr Zeb32f besideObject = -1e-10f;

// What an update may lead to at most, as a byte for each pixel: nothing where there is no pixel, the radius outside,
// anything inside.
enum Limit : Zeb8u { nothing, theRadius, anything };

// A square tile by diagonals, in memory on a boundary of a vector. Lane r of diagonal t is the pixel of row r and
// column t - r; a frame of one pixel holds the neighbours' values.
template <int side>
class Tile {
  static constexpr int lanes = V32f::lanes;
  // Of a diagonal, so that rows -1 and side have their place; wide tiles keep vectors on their boundaries.
  static constexpr int lead = side < 64 ? lanes / 2 : lanes;
  static constexpr int pitch = side + 2 * lead;
  static constexpr int diagonals = 2 * side - 1;
  static constexpr int cells = (diagonals + 4) * pitch;

 public:
  static constexpr int next = pitch;  // from a value to the one in the next column
  static constexpr int bytes = cells * int{sizeof(Zeb32f) + sizeof(Limit)};  // values, then limits
  Tile(Zeb8u* memory, Zeb32f radius)
      : cells_(reinterpret_cast<Zeb32f*>(memory)), limits_(reinterpret_cast<Limit*>(cells_ + cells)), radius_(radius) {}

  Zeb32f* value(int x, int r) { return cells_ + at(x, r); }
  Limit* limit(int x, int r) { return limits_ + at(x, r); }

  // Diagonals without pixels on some lanes: those lanes are never updated.
  void clear() {
    fillRun(cells_, cells, unknown, false);
    memset(limits_, nothing, cells);
  }

  // Updates every pixel, diagonals in rising or falling order; tells whether anything changed.
  bool sweep(ZebiSize size, bool rising) {
    alignas(32) const Zeb32f most[lanes] = {-1, radius_, unknown};
    const V32f limits = load(most);
    V32s changed = splat(0);
    for (int i = 0, count = size.width + size.height - 1; i < count; ++i) {
      const int t = rising ? i : count - 1 - i;
      const int first = t < size.width ? 0 : t - size.width + 1, last = t < size.height ? t : size.height - 1;
      for (int r = first / lanes * lanes; r <= last; r += lanes) {
        Zeb32f* p = value(t - r, r);
        const V32f s = min(load(p - pitch), load(p + pitch));
        const V32f u = min(load(p - pitch - 1), load(p + pitch + 1));
        // Farther apart than a step they are not used: neither a square that is too large nor a negative root is
        // formed.
        const V32f d = min(abs(s - u), splat(1.0f));
        const V32f slanted = splat(0.5f) * (s + u + sqrt(splat(2.0f) - d * d));
        const V32f straight = splat(1.0f) + min(s, u);
        V32f f = select(less(d, splat(1.0f)), slanted, straight);
        const V32s limit = loadAs32s(reinterpret_cast<const Zeb8u*>(this->limit(t - r, r)));
        f = select(greater(f, V32f{_mm256_permutevar8x32_ps(limits.v, limit.v)}), splat(unknown), f);
        const V32f old = load(p);
        changed = changed | as<Zeb32s>(less(f, old));
        store(p, min(f, old));
      }
    }
    return anyBit(changed);
  }

 private:
  // Row above and column to the left both lie on the diagonal before: one pitch back, one lane back or the same lane.
  static int at(int x, int r) { return (x + r + 2) * pitch + r + lead; }

  Zeb32f* cells_;
  Limit* limits_;
  Zeb32f radius_;
};

// waiting: a byte per tile.
template <int side>
class Marching {
 public:
  static int64_t tiles(ZebiSize roi) {
    return (static_cast<int64_t>(roi.width - 1) / side + 1) * ((roi.height - 1) / side + 1);
  }

  Marching(Rows<const Zeb8u> src, Rows<Zeb32f> dst, ZebiSize roi, Zeb32f radius, Zeb8u* waiting, Zeb8u* tile)
      : src_(src),
        dst_(dst),
        roi_(roi),
        radius_(radius),
        across_((roi.width - 1) / side + 1),
        down_((roi.height - 1) / side + 1),
        waiting_(waiting),
        tile_(tile, radius) {}

  void run() {
    memset(waiting_, 0, static_cast<size_t>(across_) * static_cast<size_t>(down_));
    for (int y = 0; y < roi_.height; ++y) start(y);
    if (src_[0][0]) {
      dst_[0][0] = farSeed;
      waiting_[0] = 1;
    }
    tile_.clear();
    for (bool any = true; any;) {
      any = false;
      for (int way = 0; way < 4; ++way)
        for (int i = 0; i < down_; ++i)
          for (int j = 0; j < across_; ++j) {
            const int ty = way & 1 ? down_ - 1 - i : i, tx = (way == 1 || way == 2) ? across_ - 1 - j : j;
            Zeb8u& waits = waiting_[number(tx, ty)];
            if (!waits) continue;
            waits = 0;
            any = true;
            settle(tx, ty);
          }
    }
    for (int y = 0; y < roi_.height; ++y) sign(y);
  }

 private:
  size_t number(int tx, int ty) const {
    return static_cast<size_t>(ty) * static_cast<size_t>(across_) + static_cast<size_t>(tx);
  }
  void wake(int tx, int ty) {
    if (tx >= 0 && ty >= 0 && tx < across_ && ty < down_) waiting_[number(tx, ty)] = 1;
  }

  // Boundary pixels, zero with a neighbour that is not, get 0; all others are unknown.
  void start(int y) {
    const Zeb8u* s = src_[y];
    const Zeb8u* up = y > 0 ? src_[y - 1] : s;
    const Zeb8u* down = y + 1 < roi_.height ? src_[y + 1] : s;
    Zeb32f* d = dst_[y];
    for (int x0 = 0; x0 < roi_.width; x0 += roi_.width - x0 < side ? roi_.width - x0 : side) {
      const int end = roi_.width - x0 < side ? roi_.width : x0 + side;
      int boundary = 0;
      const auto pixel = [&](int x, int left, int right) {
        const int isBoundary = (s[x] == 0) & ((up[x] | down[x] | left | right) != 0);
        d[x] = isBoundary ? 0.0f : unknown;
        boundary |= isBoundary;
      };
      pixel(x0, x0 > 0 ? s[x0 - 1] : 0, x0 + 1 < roi_.width ? s[x0 + 1] : 0);
      V32s some = splat(0);
      forVectors<8>(x0 + 1, end - 1, [&](int x, auto part) ZEB_BODY {
        const V32s beside =
            part.selected(up + x) | part.selected(down + x) | part.selected(s + x - 1) | part.selected(s + x + 1);
        const V32s isBoundary = andNot(part.selected(s + x), beside);
        some = some | isBoundary;
        part.to(d + x, select(as<Zeb32f>(isBoundary), splat(0.0f), splat(unknown)));
      });
      boundary |= anyBit(some);
      if (end - 1 > x0) pixel(end - 1, s[end - 2], end < roi_.width ? s[end] : 0);
      if (!boundary) continue;
      const int tx = x0 / side, ty = y / side;
      wake(tx, ty);
      if (y % side == 0) wake(tx, ty - 1);
      if (y % side == side - 1) wake(tx, ty + 1);
      if (d[x0] == 0) wake(tx - 1, ty);
      if (d[end - 1] == 0) wake(tx + 1, ty);
    }
  }

  // Sweeps a tile until nothing changes in it, and wakes the neighbours that may change because of it.
  void settle(int tx, int ty) {
    const int x0 = tx * side, y0 = ty * side;
    const ZebiSize size = {roi_.width - x0 < side ? roi_.width - x0 : side,
                           roi_.height - y0 < side ? roi_.height - y0 : side};
    bool changed = true;
    for (int flip = 0; changed; flip ^= 1) {
      read(x0, y0, size, flip);
      const bool rising = tile_.sweep(size, true);
      changed = rising && tile_.sweep(size, false);
      if (rising) write(x0, y0, size, flip, tx, ty);
    }
  }

  // The rows of a flipped tile stand upside down: its diagonals are the other ones.
  int rowOf(int r, ZebiSize size, int flip) const { return flip ? size.height - 1 - r : r; }

  void read(int x0, int y0, ZebiSize size, int flip) {
    const bool whole = size.width == side && size.height == side;
    if (!whole || !wholeBefore_) tile_.clear();
    wholeBefore_ = whole;
    constexpr int next = Tile<side>::next;
    for (int r = -1; r <= size.height; ++r) {
      const int y = y0 + rowOf(r, size, flip);
      const bool inner = r >= 0 && r < size.height;
      const bool exists = y >= 0 && y < roi_.height;
      Zeb32f* v = tile_.value(0, r);
      if (!exists) {
        for (int x = 0; x < size.width; ++x) v[x * next] = unknown;
        continue;
      }
      const Zeb32f* d = dst_[y] + x0;
      for (int x = 0; x < size.width; ++x) v[x * next] = d[x];
      if (!inner) continue;
      v[-next] = x0 > 0 ? d[-1] : unknown;
      v[size.width * next] = x0 + size.width < roi_.width ? d[size.width] : unknown;
      const Zeb8u* s = src_[y] + x0;
      Limit* limit = tile_.limit(0, r);
      for (int x = 0; x < size.width; ++x) limit[x * next] = s[x] ? anything : theRadius;
    }
  }

  void write(int x0, int y0, ZebiSize size, int flip, int tx, int ty) {
    constexpr int next = Tile<side>::next;
    bool left = false, right = false;
    for (int r = 0; r < size.height; ++r) {
      const Zeb32f* v = tile_.value(0, r);
      Zeb32f* d = dst_[y0 + rowOf(r, size, flip)] + x0;
      const int last = size.width - 1;
      left |= v[0] < d[0] && v[0] < v[-next];
      right |= v[last * next] < d[last] && v[last * next] < v[size.width * next];
      if (r == 0 || r == size.height - 1) {
        // A flipped tile's first row is the lowest.
        for (int outer = r - 1; outer <= r + 1; outer += 2) {
          if (outer >= 0 && outer < size.height) continue;
          const Zeb32f* beyond = tile_.value(0, outer);
          bool lower = false;
          for (int x = 0; x < size.width; ++x) lower |= v[x * next] < d[x] && v[x * next] < beyond[x * next];
          if (lower) wake(tx, (outer < 0) != (flip != 0) ? ty - 1 : ty + 1);
        }
      }
      for (int x = 0; x < size.width; ++x) d[x] = v[x * next];
    }
    if (left) wake(tx - 1, ty);
    if (right) wake(tx + 1, ty);
  }

  // Magnitudes become signed distances.
  void sign(int y) {
    const Zeb8u* s = src_[y];
    Zeb32f* d = dst_[y];
    forVectors<8>(0, roi_.width, [&](int x, auto part) ZEB_BODY {
      const V32f m = part.from(d + x), none = splat(0.0f);
      const V32f near = (less(m, splat(radius_)) | equal(m, splat(radius_))) & less(m, splat(unknown));
      const V32f outside = select(equal(m, none), splat(besideObject), near & (m ^ splat(-0.0f)));
      part.to(d + x, select(as<Zeb32f>(part.selected(s + x)), m, outside));
    });
  }

  Rows<const Zeb8u> src_;
  Rows<Zeb32f> dst_;
  ZebiSize roi_;
  Zeb32f radius_;
  int across_, down_;  // tiles
  Zeb8u* waiting_;     // 1 where a tile must be swept
  bool wholeBefore_ = false;
  Tile<side> tile_;
};

// Wide enough that a diagonal's work covers the wait for the one before; the buffer of all but small images holds one.
// Small images have smaller tiles on the stack. What is computed is the same.
constexpr int wide = 64, narrow = 32;

__attribute__((noinline)) void marchSmall(Rows<const Zeb8u> src, Rows<Zeb32f> dst, ZebiSize roi, Zeb32f radius,
                                          Zeb8u* pBuffer) {
  alignas(32) Zeb8u tile[Tile<narrow>::bytes];
  Marching<narrow>(src, dst, roi, radius, pBuffer, tile).run();
}
// A function of its own, so that its variables are not on the stack beside the tile of a small image.
__attribute__((noinline)) void marchLarge(Rows<const Zeb8u> src, Rows<Zeb32f> dst, ZebiSize roi, Zeb32f radius,
                                          Scratch scratch) {
  Zeb8u* const tile = scratch.take<Zeb8u>(Tile<wide>::bytes);
  Marching<wide>(src, dst, roi, radius, scratch.take<Zeb8u>(Marching<wide>::tiles(roi), 1), tile).run();
}

}  // namespace

namespace zeb {

int64_t marchingBytes(ZebiSize roi) {
  return (static_cast<int64_t>(roi.height) + 34) * (((static_cast<int64_t>(roi.width) + 31) & ~int64_t{31}) | 5) + 40;
}

void march(Rows<const Zeb8u> src, Rows<Zeb32f> dst, ZebiSize roi, Zeb32f radius, Zeb8u* pBuffer) {
  const int64_t tiles = Marching<wide>::tiles(roi), bytes = marchingBytes(roi);
  if (bytes < tiles + 32 + Tile<wide>::bytes) return marchSmall(src, dst, roi, radius, pBuffer);
  marchLarge(src, dst, roi, radius, Scratch(pBuffer, bytes));
}

}  // namespace zeb

using namespace zeb;

ZEB_ENTRY(zebiFastMarchingGetBufferSize_8u32f_C1R)(ZebiSize roiSize, int* pBufferSize) {
  if (auto bad = firstFailure(present(pBufferSize), hasArea(roiSize))) return bad;
  return reportSize(marchingBytes(roiSize), pBufferSize);
}

ZEB_ENTRY(zebiFastMarching_8u32f_C1R)
(const Zeb8u* pSrc, int srcStep, Zeb32f* pDst, int dstStep, ZebiSize roiSize, Zeb32f radius, Zeb8u* pBuffer) {
  if (auto bad = firstFailure(checked(roiSize, image(pSrc, srcStep), image(pDst, dstStep), also(pBuffer)),
                              require(!(radius < 0), zebStsErrBadArgument),
                              require(marchingBytes(roiSize) <= INT32_MAX, zebStsErrOverflow)))
    return bad;
  march(Rows(pSrc, srcStep), Rows(pDst, dstStep), roiSize, radius, pBuffer);
  return zebStsOk;
}
