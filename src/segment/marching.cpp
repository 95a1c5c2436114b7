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
// at once: the tile is stored by diagonals, row r of the tile as lane r. Each diagonal waits for the one before, so
// rising and falling diagonals take turns.
//
// While the updates go on the sign bit of a pixel of dst tells that it lies outside.
//
// J. N. Tsitsiklis, Efficient algorithms for globally optimal trajectories (1995); H. Zhao, A fast sweeping method for
// Eikonal equations (2005).
#include <math.h>

#include "core/checks.h"
#include "core/entry.h"
#include "core/image.h"
#include "core/loops.h"
#include "core/scratch.h"
#include "core/shuffle.h"
#include "segment/marching.h"

namespace {

using namespace zeb;

constexpr Zeb32f unknown = 1e30f;    // so large that adding a step changes nothing
constexpr Zeb32f farSeed = 1000000;  // of a first pixel that lies inside
constexpr Zeb32f besideObject = -1e-10f;

// What an update may lead to at most: nothing where there is no pixel, the radius outside, anything inside.
enum Limit { nothing, theRadius, anything };

// A tile by diagonals. Lane r of diagonal t is the pixel of row r and column t - r; a frame of one pixel holds the
// neighbours' values. Limits are words of eight lanes, four bits each. It stands on the stack of the call.
class Tile {
 public:
  static constexpr int lanes = V32f::lanes;
  static constexpr int width = 64, height = 32;
  // A diagonal has its row -1 before it and its row `height` behind it, where the lead of the next one is.
  static constexpr int lead = 4, pitch = height + lead;
  static constexpr int diagonals = width + height + 1;
  static constexpr int cells = diagonals * pitch + lead;
  static constexpr int next = pitch;  // from a value to the one in the next column

  // Words for the limits of the tiles of a region.
  static int64_t limitWords(ZebiSize roi) {
    const int across = roi.width < width ? roi.width : width;
    const int down = roi.height < height ? (roi.height + lanes - 1) / lanes * lanes : height;
    return int64_t{across + down + 1} * (height / lanes);
  }

  Tile(uint32_t* limits, Zeb32f radius) : most_{-1, radius, unknown}, limits_(limits) {
    fillRun(cells_, cells, unknown, false);  // places that are no pixel's are read with their neighbours
  }

  Zeb32f* value(int x, int r) { return cells_ + at(x + r, r); }

  // Row r and the seven below it on diagonal t: magnitudes, and limits by their signs.
  void set(int t, int r, V32f v) {
    store(cells_ + at(t, r), abs(v));
    // The signs of a lane's four bytes are the bits of its limit: the second for anything, the first for the radius.
    const V32s code = splat(0x8000) ^ (shiftRight<31>(as<Zeb32s>(v)) & splat(0x8080));
    *limit(t, r) = static_cast<uint32_t>(_mm256_movemask_epi8(code.v));
  }
  // Those that are no pixels of the tile never change.
  void keepOutside(ZebiSize size, int t, int r) {
    const int first = t - r - size.width + 1, last = size.height - 1 < t ? size.height - 1 - r : t - r;
    uint32_t& limits = *limit(t, r);
    if (first > 0) limits &= first < lanes ? ~uint32_t{0} << (4 * first) : 0;
    if (last < lanes - 1) limits &= last >= 0 ? ~uint32_t{0} >> (4 * (lanes - 1 - last)) : 0;
  }

  // Updates every pixel twice, by rising and by falling diagonals; tells whether anything changed. Where that is
  // likely, the two go side by side, and neither waits for its own diagonals; else the falling ones may not be needed.
  bool sweep(ZebiSize size, bool likely) {
    const int last = size.width + size.height - 2;
    V32s changed = splat(0);
    for (int t = 0; t <= last; ++t) {
      update<-1>(size, t, changed);
      if (likely) update<1>(size, last - t, changed);
    }
    if (!anyBit(changed)) return false;
    for (int t = last; t >= 0 && !likely; --t) update<1>(size, t, changed);
    return true;
  }

 private:
  // Row above and column to the left both lie on the diagonal before: one pitch back, one lane back or the same lane.
  static int at(int t, int r) { return (t + 1) * pitch + r + lead; }
  uint32_t* limit(int t, int r) { return limits_ + (t + 1) * (height / lanes) + r / lanes; }

  // Diagonal t, after the one at t + before.
  template <int before>
  void update(ZebiSize size, int t, V32s& changed) {
    const V32f limits = load(most_);
    const V32s places = {_mm256_setr_epi32(0, 4, 8, 12, 16, 20, 24, 28)};
    const int first = t < size.width ? 0 : t - size.width + 1, last = t < size.height ? t : size.height - 1;
    for (int r = first / lanes * lanes; r <= last; r += lanes) {
      Zeb32f* p = cells_ + at(t, r);
      // A load across two vectors that have just been stored would wait until they are in memory.
      const Zeb32f* fresh = p + before * pitch;
      const Zeb32f* other = p - before * pitch;
      const V32f beside = load(fresh);
      const V32f s = min(beside, load(other));
      const V32f u = min(before < 0 ? moveUpOneLane(beside, fresh - 1) : moveDownOneLane(beside, fresh + lanes),
                         load(other - before));
      // Farther apart than a step they are not used: neither a square that is too large nor a negative root is formed.
      const V32f d = min(abs(s - u), splat(1.0f));
      const V32f slanted = splat(0.5f) * (s + u + sqrt(splat(2.0f) - d * d));
      // The larger one is that which does not hold.
      const V32f f = min(slanted, splat(1.0f) + min(s, u));
      const V32s code = {_mm256_srlv_epi32(_mm256_set1_epi32(static_cast<int>(*limit(t, r))), places.v)};
      const V32f old = load(p), now = select(greater(f, lanesAt(limits, code)), old, min(f, old));
      changed = changed | as<Zeb32s>(less(now, old));
      store(p, now);
    }
  }

  alignas(32) Zeb32f cells_[cells];
  alignas(32) Zeb32f most_[lanes];  // by limit
  uint32_t* limits_;
};

// Why a tile must be swept: a neighbour has changed, or it has itself and is likely to be done.
enum class Waiting : Zeb8u { no, forNeighbour, forItself };

class Marching {
 public:
  static int64_t tiles(ZebiSize roi) {
    return (static_cast<int64_t>(roi.width - 1) / Tile::width + 1) * ((roi.height - 1) / Tile::height + 1);
  }

  Marching(Rows<const Zeb8u> src, Rows<Zeb32f> dst, ZebiSize roi, Zeb32f radius, Scratch scratch)
      : src_(src),
        dst_(dst),
        roi_(roi),
        radius_(radius),
        across_((roi.width - 1) / Tile::width + 1),
        down_((roi.height - 1) / Tile::height + 1),
        tile_(scratch.take<uint32_t>(Tile::limitWords(roi), alignof(uint32_t)), radius),
        waiting_(scratch.take<Waiting>(tiles(roi), 1)) {}

  void run() {
    memset(waiting_, 0, static_cast<size_t>(across_) * static_cast<size_t>(down_));
    for (int y = 0; y < roi_.height; ++y) start(y);
    if (src_[0][0]) {
      dst_[0][0] = farSeed;
      waiting_[0] = Waiting::forNeighbour;
    }
    for (bool any = true; any;) {
      any = false;
      for (int way = 0; way < 4; ++way)
        for (int i = 0; i < down_; ++i)
          for (int j = 0; j < across_; ++j) {
            const int ty = way & 1 ? down_ - 1 - i : i, tx = (way == 1 || way == 2) ? across_ - 1 - j : j;
            const Waiting why = waiting_[number(tx, ty)];
            if (why == Waiting::no) continue;
            waiting_[number(tx, ty)] = Waiting::no;
            any = true;
            advance(tx, ty, why);
          }
    }
    for (int y = 0; y < roi_.height; ++y) sign(y);
  }

 private:
  size_t number(int tx, int ty) const {
    return static_cast<size_t>(ty) * static_cast<size_t>(across_) + static_cast<size_t>(tx);
  }
  void wake(int tx, int ty) {
    if (tx >= 0 && ty >= 0 && tx < across_ && ty < down_) waiting_[number(tx, ty)] = Waiting::forNeighbour;
  }

  // Boundary pixels, zero with a neighbour that is not, get 0; all others are unknown.
  void start(int y) {
    const Zeb8u* s = src_[y];
    const Zeb8u* up = y > 0 ? src_[y - 1] : s;
    const Zeb8u* down = y + 1 < roi_.height ? src_[y + 1] : s;
    Zeb32f* d = dst_[y];
    for (int x0 = 0; x0 < roi_.width; x0 += roi_.width - x0 < Tile::width ? roi_.width - x0 : Tile::width) {
      const int end = roi_.width - x0 < Tile::width ? roi_.width : x0 + Tile::width;
      int boundary = 0;
      const auto pixel = [&](int x, int left, int right) {
        const int isBoundary = (s[x] == 0) & ((up[x] | down[x] | left | right) != 0);
        d[x] = copysignf(isBoundary ? 0.0f : unknown, s[x] ? 1.0f : -1.0f);
        boundary |= isBoundary;
      };
      pixel(x0, x0 > 0 ? s[x0 - 1] : 0, x0 + 1 < roi_.width ? s[x0 + 1] : 0);
      V32s some = splat(0);
      forVectors<8>(x0 + 1, end - 1, [&](int x, auto part) ZEB_BODY {
        const V32s beside =
            part.selected(up + x) | part.selected(down + x) | part.selected(s + x - 1) | part.selected(s + x + 1);
        const V32s object = part.selected(s + x), isBoundary = andNot(object, beside);
        some = some | isBoundary;
        const V32f magnitude = as<Zeb32f>(andNot(isBoundary, as<Zeb32s>(splat(unknown))));
        part.to(d + x, magnitude | as<Zeb32f>(andNot(object, as<Zeb32s>(splat(-0.0f)))));
      });
      boundary |= anyBit(some);
      if (end - 1 > x0) pixel(end - 1, s[end - 2], end < roi_.width ? s[end] : 0);
      if (!boundary) continue;
      const int tx = x0 / Tile::width, ty = y / Tile::height;
      wake(tx, ty);
      if (y % Tile::height == 0) wake(tx, ty - 1);
      if (y % Tile::height == Tile::height - 1) wake(tx, ty + 1);
      if (d[x0] == 0) wake(tx - 1, ty);
      if (d[end - 1] == 0) wake(tx + 1, ty);
    }
  }

  // The part of the image that is in the tile, by the tile's rows; those of a flipped tile stand upside down: its
  // diagonals are the other ones.
  struct Place {
    int tx, ty, x0, y0;
    ZebiSize size;
    bool flipped;
    int y(int r) const { return y0 + (flipped ? size.height - 1 - r : r); }
  };

  // Sweeps a tile in all four directions and wakes the neighbours that may change because of it. One that still changes
  // waits for its turn like them: they may have better values for it by then.
  void advance(int tx, int ty, Waiting why) {
    const int x0 = tx * Tile::width, y0 = ty * Tile::height;
    const ZebiSize size = {roi_.width - x0 < Tile::width ? roi_.width - x0 : Tile::width,
                           roi_.height - y0 < Tile::height ? roi_.height - y0 : Tile::height};
    for (int flip = 0; flip < 2; ++flip) {
      const Place place = {tx, ty, x0, y0, size, flip != 0};
      read(place);
      if (!tile_.sweep(size, why == Waiting::forNeighbour)) return;
      wakeNeighbours(place);
      write(place);
    }
    waiting_[number(tx, ty)] = Waiting::forItself;
  }

  // Eight rows of a tile from row r on, four columns of each: those on the diagonals t to t + 3. The four rows below
  // the first four are in the upper halves.
  struct Square {
    Zeb32f* row[Tile::lanes];
    int r, t;
    ZebiSize size;  // of the tile

    bool inside() const { return t - r - (Tile::lanes - 1) >= 0 && t - r + 3 < size.width; }
    // Whether all of its pixels are the tile's own.
    bool whole() const { return inside() && r + Tile::lanes <= size.height; }
    Zeb32f* low(int k) const { return row[k] + (t - r - k); }
    Zeb32f* high(int k) const { return row[k + 4] + (t - r - k - 4); }
    // Which pixels of row k and of the one four below it are from column `first` to column `last`.
    V32s within(int k, int first, int last) const {
      const V32s column = splat(t - r - k) + V32s{_mm256_setr_epi32(0, 1, 2, 3, -4, -3, -2, -1)};
      return andNot(greater(splat(first), column) | greater(column, splat(last)), splat(-1));
    }
    V32f from(int k) const { return loadHalves(low(k), high(k)); }
    V32f from(int k, V32s mask) const {
      const __m128 a = _mm_maskload_ps(low(k), _mm256_castsi256_si128(mask.v));
      const __m128 b = _mm_maskload_ps(high(k), _mm256_extracti128_si256(mask.v, 1));
      return {_mm256_insertf128_ps(_mm256_castps128_ps256(a), b, 1)};
    }
    void to(int k, V32f v, V32s mask) const {
      _mm_maskstore_ps(low(k), _mm256_castsi256_si128(mask.v), _mm256_castps256_ps128(v.v));
      _mm_maskstore_ps(high(k), _mm256_extracti128_si256(mask.v, 1), _mm256_extractf128_ps(v.v, 1));
    }
  };
  // Rows that the tile does not have are its last one.
  Square squareAt(const Place& place, int r) const {
    Square square;
    for (int k = 0; k < Tile::lanes; ++k) {
      const int own = r + k < place.size.height ? r + k : place.size.height - 1;
      square.row[k] = dst_[place.y(own)] + place.x0;
    }
    square.r = r;
    square.size = place.size;
    return square;
  }

  void read(const Place& place) {
    const ZebiSize size = place.size;
    const int first = place.x0 > 0 ? -1 : 0, last = place.x0 + size.width < roi_.width ? size.width : size.width - 1;
    for (int r = 0; r < size.height; r += Tile::lanes) {
      Square square = squareAt(place, r);
      const int end = r + Tile::lanes + size.width;
      for (square.t = r - 1; square.t < end; square.t += 4) {
        V32f v[4];
        for (int k = 0; k < 4; ++k) {
          if (square.inside()) {
            v[k] = square.from(k);
          } else {
            const V32s mask = square.within(k, first, last);
            v[k] = select(mask, square.from(k, mask), splat(unknown));
          }
        }
        transposeHalves(v[0], v[1], v[2], v[3]);
        for (int k = 0; k < 4 && square.t + k < end; ++k) {
          tile_.set(square.t + k, r, v[k]);
          if (!square.whole()) tile_.keepOutside(size, square.t + k, r);
        }
      }
    }
    for (int r = -1; r <= size.height; r += size.height + 1) {
      const int y = place.y(r);
      const Zeb32f* d = y >= 0 && y < roi_.height ? dst_[y] + place.x0 : nullptr;
      Zeb32f* v = tile_.value(0, r);
      for (int x = 0; x < size.width; ++x) v[x * Tile::next] = d ? fabsf(d[x]) : unknown;
    }
  }

  void write(const Place& place) {
    for (int r = 0; r < place.size.height; r += Tile::lanes) {
      Square square = squareAt(place, r);
      const V32s upper = splat(place.size.height - r), row = {_mm256_setr_epi32(0, 0, 0, 0, 4, 4, 4, 4)};
      for (square.t = r; square.t < r + Tile::lanes - 1 + place.size.width; square.t += 4) {
        V32f v[4];
        for (int k = 0; k < 4; ++k) v[k] = load(tile_.value(square.t + k - r, r));
        transposeHalves(v[0], v[1], v[2], v[3]);
        for (int k = 0; k < 4; ++k) {
          if (square.whole()) {
            storeHalves(square.low(k), square.high(k), v[k] | (square.from(k) & splat(-0.0f)));
          } else {
            const V32s mask = square.within(k, 0, place.size.width - 1) & greater(upper, row + splat(k));
            square.to(k, v[k] | (square.from(k, mask) & splat(-0.0f)), mask);
          }
        }
      }
    }
  }

  // Those beside a pixel that has become lower and is lower than its neighbour there.
  void wakeNeighbours(const Place& place) {
    const int right = place.size.width - 1, bottom = place.size.height - 1;
    const auto lowers = [&](int x, int r, int beyondX, int beyondR) {
      const Zeb32f v = *tile_.value(x, r);
      return v < fabsf(dst_[place.y(r)][place.x0 + x]) && v < *tile_.value(beyondX, beyondR);
    };
    bool toLeft = false, toRight = false, toFirst = false, toLast = false;
    for (int r = 0; r <= bottom; ++r) {
      toLeft |= lowers(0, r, -1, r);
      toRight |= lowers(right, r, right + 1, r);
    }
    for (int x = 0; x <= right; ++x) {
      toFirst |= lowers(x, 0, x, -1);
      toLast |= lowers(x, bottom, x, bottom + 1);
    }
    if (toLeft) wake(place.tx - 1, place.ty);
    if (toRight) wake(place.tx + 1, place.ty);
    // A flipped tile's first row is the lowest.
    if (toFirst) wake(place.tx, place.flipped ? place.ty + 1 : place.ty - 1);
    if (toLast) wake(place.tx, place.flipped ? place.ty - 1 : place.ty + 1);
  }

  // Magnitudes become signed distances.
  void sign(int y) {
    Zeb32f* d = dst_[y];
    forVectors<8>(0, roi_.width, [&](int x, auto part) ZEB_BODY {
      const V32f v = part.from(d + x), m = abs(v);
      const V32f near = atMost(m, splat(radius_)) & less(m, splat(unknown));
      const V32f outside = select(equal(m, splat(0.0f)), splat(besideObject), near & v);
      part.to(d + x, {_mm256_blendv_ps(m.v, outside.v, v.v)});
    });
  }

  Rows<const Zeb8u> src_;
  Rows<Zeb32f> dst_;
  ZebiSize roi_;
  Zeb32f radius_;
  int across_, down_;  // tiles
  Tile tile_;
  Waiting* waiting_;  // by tile
};

}  // namespace

namespace zeb {

int64_t marchingBytes(ZebiSize roi) {
  return (static_cast<int64_t>(roi.height) + 34) * (((static_cast<int64_t>(roi.width) + 31) & ~int64_t{31}) | 5) + 40;
}

void march(Rows<const Zeb8u> src, Rows<Zeb32f> dst, ZebiSize roi, Zeb32f radius, Zeb8u* pBuffer) {
  Marching(src, dst, roi, radius, Scratch(pBuffer, marchingBytes(roi))).run();
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
