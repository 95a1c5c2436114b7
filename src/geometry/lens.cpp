// Images freed of the distortion of a lens, and the map of where their pixels come from.
//
// Models: D. Brown, Decentering distortion of lenses, 1966; Close-range camera calibration, 1971.
#include <math.h>
#include <string.h>

#include "core/checks.h"
#include "core/entry.h"
#include "core/image.h"
#include "core/sample.h"
#include "geometry/pixels.h"

namespace {

using namespace zeb;

struct Lens {
  ZebiPoint_32f focal, centre;
  Zeb32f k1, k2;
  Zeb32f p1 = 0, p2 = 0;

  ZebStatus flaw() const {
    const Zeb32f numbers[] = {focal.x, focal.y, centre.x, centre.y, k1, k2, p1, p2};
    bool finite = true;
    for (const Zeb32f v : numbers) finite = finite && v - v == 0;
    return require(finite && focal.x > 0 && focal.y > 0, zebStsErrBadArgument);
  }
};

// Columns are computed in whole vectors.
int64_t wholeVectors(int width) {
  return (int64_t{width} + 7) / 8 * 8;
}
int64_t bufferBytes(int width) {
  return 2 * wholeVectors(width) * static_cast<int64_t>(sizeof(Zeb32f)) + 32;
}

// What all rows have in common, and what the pixels of a row have.
class Positions {
 public:
  Positions(const Lens& lens, int width, Zeb8u* buffer) : lens_(lens), ifx_(1 / lens.focal.x), ify_(1 / lens.focal.y) {
    Scratch scratch(buffer, bufferBytes(width));
    const auto n = static_cast<int>(wholeVectors(width));
    offset_ = scratch.take<Zeb32f>(n);
    squares_ = scratch.take<Zeb32f>(n);
    for (int i = 0; i < n; i += 8) {
      const V32f dx = columns(i) - splat(lens.centre.x), x = dx * splat(ifx_);
      store(offset_ + i, dx);
      store(squares_ + i, x * x);
    }
  }

  void row(int j) {
    j_ = static_cast<Zeb32f>(j);
    dy_ = j_ - lens_.centre.y;
    y_ = dy_ * ify_;
    yy_ = y_ * y_;
  }

  struct Eight {
    V32f x, y;
  };
  ZEB_INLINE Eight radial(int i) const {
    const V32f r2 = radius(i), d = r2 * fma(splat(lens_.k2), r2, splat(lens_.k1));
    return {fma(load(offset_ + i), d, columns(i)), fma(splat(dy_), d, splat(j_))};
  }
  ZEB_INLINE Eight withTangential(int i) const {
    const Eight at = radial(i);
    const V32f r2 = radius(i);
    if (lens_.p1 == 0 && lens_.p2 == 0) {
      const V32f none = r2 - r2;  // 0 also where a product that counts for nothing leaves the floats
      return {at.x + none, at.y + none};
    }
    const V32f x = load(offset_ + i) * splat(ifx_), t = (x + x) * splat(y_);
    const V32f tx = fma(splat(lens_.p2), fma(splat(2.0f), load(squares_ + i), r2), splat(lens_.p1) * t);
    const V32f ty = fma(splat(lens_.p1), fma(splat(2.0f), splat(yy_), r2), splat(lens_.p2) * t);
    return {fma(splat(lens_.focal.x), tx, at.x), fma(splat(lens_.focal.y), ty, at.y)};
  }

 private:
  static ZEB_INLINE V32f columns(int i) {
    alignas(32) static constexpr Zeb32s numbers[8] = {0, 1, 2, 3, 4, 5, 6, 7};
    return toFloat(load(numbers) + splat(i));
  }
  ZEB_INLINE V32f radius(int i) const { return load(squares_ + i) + splat(yy_); }

  Lens lens_;
  Zeb32f ifx_, ify_;
  Zeb32f *offset_, *squares_;  // of the columns from the centre; the latter in units of the focal length
  Zeb32f j_ = 0, dy_ = 0, y_ = 0, yy_ = 0;
};

// The largest float that is not above n.
Zeb32f floatAtMost(int n) {
  const auto f = static_cast<Zeb32f>(n);
  return static_cast<double>(f) > n ? nextafterf(f, 0) : f;
}

// Pixels are taken one by one, so many of them before any is interpolated that they have left the registers.
constexpr int batch = 64;

template <class T, int channels>
class Sampler {
 public:
  Sampler(Rows<const T> src, ZebiSize size)
      : src_(src), lastX_(floatAtMost(size.width - 1)), lastY_(floatAtMost(size.height - 1)) {}

  // Pixels i..i + 7 of the batch stand at these places. Those outside are taken for the first pixel, and dropped.
  ZEB_INLINE void place(int i, const Positions::Eight& at) {
    const V32f zero = splat(0.0f);
    const V32f inside =
        atMost(zero, at.x) & atMost(at.x, splat(lastX_)) & atMost(zero, at.y) & atMost(at.y, splat(lastY_));
    const V32f px = at.x & inside, py = at.y & inside;
    const V32s x = truncateToInt(px), y = truncateToInt(py);
    const V32f fx = px - toFloat(x), fy = py - toFloat(y);
    const V32s pixel = splat(static_cast<Zeb32s>(sizeof(T)) * channels), step = splat(src_.step());
    store(offset_ + i, y * step + x * pixel);
    store(right_ + i, as<Zeb32s>(less(zero, fx)) & pixel);
    store(down_ + i, as<Zeb32s>(less(zero, fy)) & step);
    spread(fx, fx_ + i * channels);
    spread(fy, fy_ + i * channels);
    spread(inside, inside_ + i * channels);
  }

  // n pixels were placed, in whole vectors.
  void finish(int n, T* out) {
    const auto first = reinterpret_cast<uintptr_t>(src_[0]);
    constexpr size_t bytes = sizeof(T) * channels;
    for (int k = 0; k < (n + 7) / 8 * 8; ++k) {
      const uintptr_t p = first + static_cast<uintptr_t>(offset_[k]), right = static_cast<uintptr_t>(right_[k]);
      const uintptr_t below = p + static_cast<uintptr_t>(down_[k]);
      memcpy(pixels_[0] + k * channels, reinterpret_cast<const void*>(p), bytes);
      memcpy(pixels_[1] + k * channels, reinterpret_cast<const void*>(p + right), bytes);
      memcpy(pixels_[2] + k * channels, reinterpret_cast<const void*>(below), bytes);
      memcpy(pixels_[3] + k * channels, reinterpret_cast<const void*>(below + right), bytes);
    }
    forVectors<8>(0, n * channels, [&](int e, auto part) ZEB_BODY {
      const V32f fx = load(fx_ + e);
      const V32f above = between<T>(loadAsFloat(pixels_[0] + e), loadAsFloat(pixels_[1] + e), fx);
      const V32f below = between<T>(loadAsFloat(pixels_[2] + e), loadAsFloat(pixels_[3] + e), fx);
      storeRounded(out + e, between<T>(above, below, load(fy_ + e)) & load(inside_ + e), part);
    });
  }

 private:
  // A lane for each channel of each pixel.
  static ZEB_INLINE void spread(V32f a, Zeb32f* out) {
    if constexpr (channels == 1) {
      store(out, a);
    } else {
      alignas(32) static constexpr Zeb32s pixels[3][8] = {
          {0, 0, 0, 1, 1, 1, 2, 2}, {2, 3, 3, 3, 4, 4, 4, 5}, {5, 5, 6, 6, 6, 7, 7, 7}};
      for (int k = 0; k < 3; ++k) store(out + 8 * k, V32f{_mm256_permutevar8x32_ps(a.v, load(pixels[k]).v)});
    }
  }

  Rows<const T> src_;
  Zeb32f lastX_, lastY_;
  Zeb32s offset_[batch], right_[batch], down_[batch];  // in bytes
  Zeb32f fx_[batch * channels], fy_[batch * channels], inside_[batch * channels];
  T pixels_[4][batch * channels];  // upper left, upper right, lower left, lower right
};

template <class T, int channels>
ZebStatus undistorted(const T* pSrc, int srcStep, T* pDst, int dstStep, ZebiSize roi, const Lens& lens,
                      Zeb8u* pBuffer) {
  const auto src = image<channels>(pSrc, srcStep);
  const auto dst = image<channels>(pDst, dstStep);
  if (auto bad = firstFailure(checked(roi, src, dst, also(pBuffer)), lens.flaw(),
                              require(bufferBytes(roi.width) <= INT32_MAX, zebStsErrOverflow)))
    return bad;
  Positions positions(lens, roi.width, pBuffer);
  Sampler<T, channels> sampler(src.rows(), roi);
  for (int j = 0; j < roi.height; ++j) {
    positions.row(j);
    T* const out = dst.rows()[j];
    for (int from = 0, n; from < roi.width; from += n) {
      n = roi.width - from < batch ? roi.width - from : batch;
      for (int i = 0; i < n; i += 8) sampler.place(i, positions.radial(from + i));
      sampler.finish(n, out + static_cast<ptrdiff_t>(from) * channels);
    }
  }
  return zebStsOk;
}

}  // namespace

ZEB_ENTRY(zebiUndistortGetSize)(ZebiSize roiSize, int* pBufferSize) {
  if (auto bad = firstFailure(present(pBufferSize), hasArea(roiSize))) return bad;
  return reportSize(bufferBytes(roiSize.width), pBufferSize);
}

#define UNDISTORT(form, T, channels)                                                                              \
  ZEB_ENTRY(zebiUndistortRadial_##form)                                                                           \
  (const T* pSrc, int srcStep, T* pDst, int dstStep, ZebiSize roiSize, ZebiPoint_32f focal, ZebiPoint_32f centre, \
   Zeb32f k1, Zeb32f k2, Zeb8u* pBuffer) {                                                                        \
    return undistorted<T, channels>(pSrc, srcStep, pDst, dstStep, roiSize, {focal, centre, k1, k2}, pBuffer);     \
  }

UNDISTORT(8u_C1R, Zeb8u, 1)
UNDISTORT(8u_C3R, Zeb8u, 3)
UNDISTORT(16u_C1R, Zeb16u, 1)
UNDISTORT(16u_C3R, Zeb16u, 3)
UNDISTORT(32f_C1R, Zeb32f, 1)
UNDISTORT(32f_C3R, Zeb32f, 3)

ZEB_ENTRY(zebiCreateMapCameraUndistort_32f_C1R)
(Zeb32f* pMapX, int mapXStep, Zeb32f* pMapY, int mapYStep, ZebiSize roiSize, ZebiPoint_32f focal, ZebiPoint_32f centre,
 Zeb32f k1, Zeb32f k2, Zeb32f p1, Zeb32f p2, Zeb8u* pBuffer) {
  const auto mapX = image(pMapX, mapXStep), mapY = image(pMapY, mapYStep);
  const Lens lens = {focal, centre, k1, k2, p1, p2};
  if (auto bad = firstFailure(checked(roiSize, mapX, mapY, also(pBuffer)), lens.flaw(),
                              require(bufferBytes(roiSize.width) <= INT32_MAX, zebStsErrOverflow)))
    return bad;
  Positions positions(lens, roiSize.width, pBuffer);
  for (int j = 0; j < roiSize.height; ++j) {
    positions.row(j);
    Zeb32f *const x = mapX.rows()[j], *const y = mapY.rows()[j];
    forVectors<8>(0, roiSize.width, [&](int i, auto part) ZEB_BODY {
      const auto at = positions.withTangential(i);
      part.to(x + i, at.x);
      part.to(y + i, at.y);
    });
  }
  return zebStsOk;
}
