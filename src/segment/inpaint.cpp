// Inpainting: each masked pixel becomes the weighted mean of the known pixels about it, in the order of the state.
//
// Eight columns of a row of offsets go through one vector; column j of the offsets always meets lane j mod 8. Ranks not
// below that of the pixel mask the lanes. Where a vector, or the neighbours of its pixels, would lie beside the image,
// it is put together from what there is.
//
// A. Telea, An image inpainting technique based on the fast marching method (2004); M. Bertalmio, A. Bertozzi, G.
// Sapiro, Navier-Stokes, fluid dynamics, and image and video inpainting (2001).
#include "segment/inpaint.h"

#include <string.h>

#include "core/checks.h"
#include "core/entry.h"
#include "core/loops.h"
#include "core/narrow.h"

namespace {

using namespace zeb;

constexpr int lanes = V32f::lanes;
constexpr int mostReach = 100, mostSide = 2 * mostReach + 1, mostVectors = (mostSide + lanes - 1) / lanes;

// One channel of eight pixels at p.
template <int channels>
ZEB_INLINE V32f channelOf(const Zeb8u* p, int channel) {
  if constexpr (channels == 1) {
    return loadAsFloat(p);
  } else {
    // Pixels 0 to 3 begin in bytes 0 to 9; pixels 4 to 7 in bytes 4 to 13 of what begins 8 bytes later.
    const auto place = [channel](int byte) ZEB_BODY { return static_cast<int>(0x80808000u) + byte + channel; };
    const __m256i places =
        _mm256_setr_epi32(place(0), place(3), place(6), place(9), place(4), place(7), place(10), place(13));
    const __m256i bytes =
        _mm256_loadu2_m128i(reinterpret_cast<const __m128i*>(p + 8), reinterpret_cast<const __m128i*>(p));
    return toFloat(V32s{_mm256_shuffle_epi8(bytes, places)});
  }
}

// The sum of the lanes: j and j + 4, then 0 and 2, 1 and 3, then these two.
ZEB_INLINE Zeb32f total(V32f a) {
  const __m128 four = _mm_add_ps(_mm256_castps256_ps128(a.v), _mm256_extractf128_ps(a.v, 1));
  const __m128 two = _mm_add_ps(four, _mm_movehl_ps(four, four));
  return _mm_cvtss_f32(_mm_add_ss(two, _mm_movehdup_ps(two)));
}

// Eight pixels q: where their values, and those of the pixels around them, are read.
struct Pixels {
  const Zeb32f* t;
  const Zeb32s *rank, *rankAbove, *rankBelow;
  const Zeb8u *image, *imageAbove, *imageBelow;
};

// The same put together, with a pixel more on either side; what lies beside the image is unknown.
template <int channels>
struct Pieces {
  static constexpr int count = lanes + 2;
  Zeb32f t[lanes];
  Zeb32s rank[3][count];
  Zeb8u image[3][count * channels];
};

// What a pixel p is, in all lanes.
struct Target {
  V32s rank;
  V32f t, gx;
};

template <int channels>
struct Sums {
  V32f a[channels], b[channels];
};

template <int channels, bool isophote>
class Inpainting {
 public:
  Inpainting(const InpaintState& state, Rows<Zeb8u> image) : state_(state), image_(image) {
    const int side = state.side(), vectors = (side + lanes - 1) / lanes;
    for (int i = 0; i < vectors * lanes; ++i) rx_[i] = static_cast<Zeb32f>(state.reach - i);
    for (int i = 0; i < 2 * lanes; ++i) inTable_[i] = i < lanes || (vectors - 1) * lanes + i - lanes < side ? -1 : 0;
    last_ = vectors - 1;
    for (int row = 0; row < side; ++row) {
      int column = 0;
      while (state.c2[row * side + column] == 0) ++column;
      firstVector_[row] = static_cast<Zeb8u>(column / lanes);
      lastVector_[row] = static_cast<Zeb8u>((side - 1 - column) / lanes);
    }
    for (Zeb32s& rank : nowhere_) rank = INT32_MAX;
  }

  void fill() {
    for (int k = 0; k < state_.masked; ++k) {
      const int pixel = state_.order[k], y = pixel / state_.roi.width;
      fillPixel(pixel - y * state_.roi.width, y, k);
    }
  }

 private:
  void fillPixel(int x, int y, int k) {
    const int width = state_.roi.width, height = state_.roi.height, reach = state_.reach, side = state_.side();
    const Zeb32f* const t = state_.t + static_cast<ptrdiff_t>(y) * width + x;
    const Zeb32f gy = slope(t, width, y > 0, y + 1 < height);
    const Target target = {splat(k), splat(*t), splat(slope(t, 1, x > 0, x + 1 < width))};
    Sums<channels> sums;
    for (int c = 0; c < channels; ++c) sums.a[c] = sums.b[c] = splat(0.0f);
    const int top = y < reach ? -y : -reach, bottom = height - 1 - y < reach ? height - 1 - y : reach;
    for (int dy = top; dy <= bottom; ++dy) {
      const int row = dy + reach;
      const V32f ry = splat(static_cast<Zeb32f>(-dy)), gyry = splat(gy * static_cast<Zeb32f>(-dy));
      for (int v = firstVector_[row]; v <= lastVector_[row]; ++v) {
        const int column = x - reach + v * lanes, cell = row * side + v * lanes;
        if (column + lanes <= 0 || column >= width) continue;
        // The eight nearest pixels lie in columns reach - 1 to reach + 1 of the table.
        const bool nearest = dy >= -1 && dy <= 1 && v * lanes <= reach + 1 && v * lanes + lanes > reach - 1;
        Pieces<channels> pieces;
        if (isophote || nearest) {
          const bool whole = column >= 1 && column + lanes < width;
          const Pixels q = whole ? inImage(column, y + dy) : assembled(column, y + dy, pieces);
          add<true>(q, target, gyry, ry, cell, v, sums);
        } else {
          const bool whole = column >= 0 && column + lanes <= width;
          const Pixels q = whole ? inImage(column, y + dy) : assembled(column, y + dy, pieces);
          add<false>(q, target, gyry, ry, cell, v, sums);
        }
      }
    }
    Zeb8u* const out = image_[y] + x * channels;
    for (int c = 0; c < channels; ++c) {
      // No known pixel about it: only where the scan begins farther inside a mask than distances reach.
      const Zeb32f all = total(sums.b[isophote ? c : 0]);
      const int value = all > 0 ? roundToInt(total(sums.a[c]) / all) : 0;
      out[c] = static_cast<Zeb8u>(value < 0 ? 0 : value > 255 ? 255 : value);
    }
  }

  // Half the difference of the neighbours, one-sided at an edge.
  static Zeb32f slope(const Zeb32f* t, int step, bool before, bool after) {
    const Zeb32f difference = (after ? t[step] : *t) - (before ? t[-step] : *t);
    return before && after ? 0.5f * difference : difference;
  }

  ZEB_INLINE Pixels inImage(int x, int y) const {
    const int width = state_.roi.width;
    const ptrdiff_t at = static_cast<ptrdiff_t>(y) * width + x;
    const bool above = y > 0, below = y + 1 < state_.roi.height;
    const Zeb32s *const rank = state_.rank + at, *const nowhere = nowhere_ + 1;
    const Zeb8u* const image = image_[y] + x * channels;
    return {state_.t + at,
            rank,
            above ? rank - width : nowhere,
            below ? rank + width : nowhere,
            image,
            above ? image - image_.step() : image,
            below ? image + image_.step() : image};
  }

  __attribute__((noinline)) Pixels assembled(int x, int y, Pieces<channels>& pieces) const {
    const int width = state_.roi.width, height = state_.roi.height;
    for (int r = 0; r < 3; ++r)
      for (int i = 0; i < pieces.count; ++i) {
        const int column = x - 1 + i, row = y - 1 + r;
        const bool exists = column >= 0 && column < width && row >= 0 && row < height;
        pieces.rank[r][i] = exists ? state_.rank[static_cast<ptrdiff_t>(row) * width + column] : INT32_MAX;
        for (int c = 0; c < channels; ++c)
          pieces.image[r][i * channels + c] = exists ? image_[row][column * channels + c] : Zeb8u(0);
        if (r == 1 && i >= 1 && i <= lanes)
          pieces.t[i - 1] = exists ? state_.t[static_cast<ptrdiff_t>(row) * width + column] : 0;
      }
    return {pieces.t,
            pieces.rank[1] + 1,
            pieces.rank[0] + 1,
            pieces.rank[2] + 1,
            pieces.image[1] + channels,
            pieces.image[0] + channels,
            pieces.image[2] + channels};
  }

  // Adds eight pixels to the sums; slopes: with the gradient of the image about them.
  template <bool slopes>
  ZEB_INLINE void add(const Pixels& q, const Target& p, V32f gyry, V32f ry, int cell, int v,
                      Sums<channels>& sums) const {
    const V32f rx = load(rx_ + v * lanes), c1 = load(state_.c1 + cell), c2 = load(state_.c2 + cell);
    const V32s known = greater(p.rank, load(q.rank)) & load(inTable_ + (v == last_ ? lanes : 0));
    const V32f least = splat(1e-6f), zero = splat(0.0f), one = splat(1.0f), half = splat(0.5f);
    V32f weight = zero;
    if (!isophote) {
      const V32f u = max(abs(fma(p.gx, rx, gyry)) * c1, least);
      weight = (u * c2) / (one + abs(p.t - load(q.t))) & as<Zeb32f>(known);
      sums.b[0] = sums.b[0] + weight;
    }
    V32s left, right, above, below;
    V32f halfX, halfY;
    if (slopes) {
      left = greater(p.rank, load(q.rank - 1)), right = greater(p.rank, load(q.rank + 1));
      above = greater(p.rank, load(q.rankAbove)), below = greater(p.rank, load(q.rankBelow));
      halfX = select(left & right, half, one), halfY = select(above & below, half, one);
    }
#pragma GCC unroll 3
    for (int c = 0; c < channels; ++c) {
      const V32f here = channelOf<channels>(q.image, c);
      V32f value = here;
      if (slopes) {
        // Exact: multiples of one half below 256, and their products with offsets.
        const V32f hx = (select(right, channelOf<channels>(q.image + channels, c), here) -
                         select(left, channelOf<channels>(q.image - channels, c), here)) *
                        halfX;
        const V32f hy = (select(below, channelOf<channels>(q.imageBelow, c), here) -
                         select(above, channelOf<channels>(q.imageAbove, c), here)) *
                        halfY;
        if (isophote) {
          const V32f square = hx * hx + hy * hy;
          const V32f flat = equal(square, zero);
          const V32f u = max(abs(hy * rx - hx * ry) * c1 / sqrt(select(flat, one, square)), least);
          weight = c2 * select(flat, one, u) & as<Zeb32f>(known);
          sums.b[c] = sums.b[c] + weight;
        } else {
          value = here + ((hx * rx + hy * ry) & atMost(abs(rx), one));
        }
      }
      sums.a[c] = fma(weight, value, sums.a[c]);
    }
  }

  const InpaintState& state_;
  Rows<Zeb8u> image_;
  int last_;                                            // vector of a row of the tables
  Zeb8u firstVector_[mostSide], lastVector_[mostSide];  // with weights, of each row of the tables
  Zeb32s nowhere_[lanes + 2], inTable_[2 * lanes];      // unknown ranks; lanes within a row, of its last vector
  alignas(32) Zeb32f rx_[mostVectors * lanes];
};

template <int channels>
ZebStatus inpaint(const Zeb8u* pSrc, int srcStep, Zeb8u* pDst, int dstStep, ZebiSize roi,
                  const ZebiInpaintState* pState) {
  const auto src = image<channels>(pSrc, srcStep);
  const auto dst = image<channels>(pDst, dstStep);
  if (auto bad = checked(roi, src, dst, also(pState))) return bad;
  const InpaintState& state = *reinterpret_cast<const InpaintState*>(pState);
  if (auto bad = isState(state.id, inpaintId(channels))) return bad;
  if (auto bad = require(roi.width == state.roi.width && roi.height == state.roi.height, zebStsErrSize)) return bad;
  if (pSrc != pDst || srcStep != dstStep)
    for (int y = 0; y < roi.height; ++y)
      memmove(dst.rows()[y], src.rows()[y], static_cast<size_t>(roi.width) * channels);
  if (state.masked == int64_t{roi.width} * roi.height) return zebStsOk;
  if (state.method == zebInpaintTelea)
    Inpainting<channels, false>(state, dst.rows()).fill();
  else
    Inpainting<channels, true>(state, dst.rows()).fill();
  return zebStsOk;
}

}  // namespace

ZEB_ENTRY(zebiInpaint_8u_C1R)
(const Zeb8u* pSrc, int srcStep, Zeb8u* pDst, int dstStep, ZebiSize roiSize, const ZebiInpaintState* pState) {
  return inpaint<1>(pSrc, srcStep, pDst, dstStep, roiSize, pState);
}
ZEB_ENTRY(zebiInpaint_8u_C3R)
(const Zeb8u* pSrc, int srcStep, Zeb8u* pDst, int dstStep, ZebiSize roiSize, const ZebiInpaintState* pState) {
  return inpaint<3>(pSrc, srcStep, pDst, dstStep, roiSize, pState);
}
