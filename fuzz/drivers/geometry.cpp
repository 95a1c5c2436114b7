// Windows between pixels, lenses, lines, gradient vectors, super-resolution.
#include "reference/geometry.h"

#include "bordered.h"
#include "function.h"
#include "sizes.h"
#include "support/memcheck.h"

namespace {

using namespace fuzz;
using ref::Plane;

// ---- Between pixels ----

Zeb32f fraction(Choice& c) {
  const Zeb32f any = c.real(0, 0.99999f), some[] = {0, 0, 0.5f, -0.0f, 0x1.fffffep-1f, 0x1p-30f, 0x1p-149f};
  const Zeb32f f = c.coin() ? c.oneOf(some) : any;
  c.look(f);
  return f;
}
// Above 0 or not: what is above asks for one more column, be it too large or not.
Zeb32f noFraction(Choice& c, bool above) {
  const Zeb32f large[] = {1, INFINITY, 1.5f}, refused[] = {-0x1p-149f, NAN, -1};
  return above ? c.oneOf(large) : c.oneOf(refused);
}

// scale...: the factor, for functions that take one.
template <class T, class D, class F, class... Scale>
void subpixel(Choice& c, const F& f, Scale... scale) {
  const ZebiSize size = c.size();
  const Zeb32f x = fraction(c), y = fraction(c);
  const Image<T> src = c.image<T>(size.width + (x != 0), size.height + (y != 0));
  const Image<D> dst = c.empty<D>(size);
  const Zeb32f noX = noFraction(c, x > 0), noY = noFraction(c, c.coin());
  const ZebiPoint_32f bad = c.coin() ? ZebiPoint_32f{noX, y} : ZebiPoint_32f{x, noY};
  f.ok(c, src.pixels(), stepOf(src, size.width + (x > 0)), dst.pixels(), dst.step(), size,
       orElse(ZebiPoint_32f{x, y}, bad, zebStsErrOutOfRange), scale...);
  Plane<D> want(size.width, size.height);
  for (int j = 0; j < size.height; ++j)
    for (int i = 0; i < size.width; ++i) want.at(i, j) = ref::subpixel<D>(src.plane(), i, j, x, y, (0 + ... + scale));
  require(agree(f.name(), dst, want), "at " + test::shown(x) + " " + test::shown(y) + ", " + src.describe());
  require(src.intact(), "wrote outside");
}

Zeb32f centre(Choice& c, int length) {
  const Zeb32f whole = static_cast<Zeb32f>(c.within(-3, length + 2)), any = whole + c.real(-1, 1);
  const Zeb32f odd[] = {-1e-20f, 1e20f, -1e20f, INFINITY, -INFINITY, NAN, 3e9f, -3e9f, static_cast<Zeb32f>(length - 1)};
  const Zeb32f some = c.oneOf(odd), half = whole + 0.5f;
  const int kind = c.within(0, 4);
  const Zeb32f v = kind == 0 ? whole : kind == 1 ? half : kind == 2 ? some : any;
  c.look(v);
  return v;
}

template <class T, class D, class F, class... Scale>
void window(Choice& c, const F& f, Scale... scale) {
  const ZebiSize size = c.size(40, 12);
  ZebiSize part = size;
  if (c.coin()) {
    part.width = c.within(1, 12);
    part.height = c.within(1, 12);
  }
  const Image<T> src = c.image<T>(size);
  const Image<D> dst = c.empty<D>(part);
  test::mayBeLookedAt(dst);  // what lies beyond the source stays
  const Scratch memory = c.scratch(sizeof(ZebiRect));
  const Zeb32f cx = centre(c, size.width), cy = centre(c, size.height);
  Plane<D> want = dst.plane();
  f.ok(c, src.pixels(), src.step(), size, dst.pixels(), dst.step(), part, ZebiPoint_32f{cx, cy},
       reinterpret_cast<ZebiRect*>(memory.get()), scale...);
  const ref::Stretch x(cx, part.width), y(cy, part.height);
  ZebiRect inside = {0, 0, 0, 0};
  int lastX = -1, lastY = -1;
  const Plane<T> pixels = src.plane();
  for (int j = 0; j < part.height; ++j)
    for (int i = 0; i < part.width; ++i) {
      if (!x.inside(i, size.width) || !y.inside(j, size.height)) continue;
      want.at(i, j) = ref::subpixel<D>(pixels, x.pixel(i), y.pixel(j), x.fraction, y.fraction, (0 + ... + scale));
      if (lastX < 0) inside.x = i, inside.y = j;
      lastX = i, lastY = j;
    }
  if (lastX >= 0) inside.width = lastX + 1 - inside.x, inside.height = lastY + 1 - inside.y;
  const std::string where = "around " + test::shown(cx) + " " + test::shown(cy) + ", " + src.describe();
  require(agree(f.name(), dst, want), where);
  require(memcmp(memory.get(), &inside, sizeof(inside)) == 0, "another part, " + where);
  require(src.intact() && memory.intact(), "wrote outside");
}

#define BETWEEN(form, T, D)                                                                        \
  DRIVER("geometry", "zebiCopySubpix_" #form, subpixel<T, D>(c, FUNCTION(zebiCopySubpix_##form))); \
  DRIVER("geometry", "zebiCopySubpixIntersect_" #form, window<T, D>(c, FUNCTION(zebiCopySubpixIntersect_##form)))
BETWEEN(8u_C1R, Zeb8u, Zeb8u);
BETWEEN(8u32f_C1R, Zeb8u, Zeb32f);
BETWEEN(16u_C1R, Zeb16u, Zeb16u);
BETWEEN(16u32f_C1R, Zeb16u, Zeb32f);
BETWEEN(32f_C1R, Zeb32f, Zeb32f);

int scaleFactor(Choice& c) {
  const int odd[] = {INT32_MIN, INT32_MAX, -32, -31, 31, 32}, some = c.oneOf(odd), usual = c.within(-12, 9);
  return c.oneIn(4) ? some : usual;
}
DRIVER("geometry", "zebiCopySubpix_8u16u_C1RSfs",
       subpixel<Zeb8u, Zeb16u>(c, FUNCTION(zebiCopySubpix_8u16u_C1RSfs), scaleFactor(c)));
DRIVER("geometry", "zebiCopySubpixIntersect_8u16u_C1RSfs",
       window<Zeb8u, Zeb16u>(c, FUNCTION(zebiCopySubpixIntersect_8u16u_C1RSfs), scaleFactor(c)));

// ---- Lenses ----

struct LensCase : ref::Lens {
  explicit LensCase(Choice& c, ZebiSize size) {
    focal.x = length(c);
    focal.y = length(c);
    centre.x = point(c, size.width);
    centre.y = point(c, size.height);
    for (Zeb32f* const k : {&k1, &k2, &p1, &p2}) *k = c.coin() ? 0 : c.real(-0.3f, 0.3f);
    for (const Zeb32f v : {focal.x, focal.y, centre.x, centre.y, k1, k2, p1, p2}) c.look(v);
    const Zeb32f none[] = {0, -1, -0.0f, NAN, INFINITY}, noNumbers[] = {NAN, INFINITY, -INFINITY};
    noFocal = focal;
    (c.coin() ? noFocal.x : noFocal.y) = c.oneOf(none);
    noCentre = centre;
    (c.coin() ? noCentre.x : noCentre.y) = noNumber = c.oneOf(noNumbers);
  }
  static Zeb32f length(Choice& c) {
    const Zeb32f usual = c.real(2, 60), odd[] = {1500, 1e-30f, 1e-40f, 1e30f, 1e-18f, 7e-20f};
    return c.oneIn(4) ? c.oneOf(odd) : usual;
  }
  static Zeb32f point(Choice& c, int n) {
    const Zeb32f whole = static_cast<Zeb32f>(c.within(0, n)), any = whole + c.real(-3, 3),
                 odd[] = {1e5f, -1e30f, 1e38f};
    const int kind = c.within(0, 6);
    return kind == 0 ? c.oneOf(odd) : kind < 4 ? whole : any;
  }
  auto focals() const { return orElse(focal, noFocal); }
  auto centres() const { return orElse(centre, noCentre); }
  auto number(Zeb32f k) const { return orElse(k, noNumber); }
  std::string describe() const {
    std::string text = "lens";
    for (const Zeb32f v : {focal.x, focal.y, centre.x, centre.y, k1, k2, p1, p2}) text += " " + test::shown(v);
    return text;
  }

  ZebiPoint_32f noFocal, noCentre;
  Zeb32f noNumber;
};
int64_t mostLensBytes(int64_t width) {
  return 8 * (width + 16) + 1024;
}
int lensBytes(Choice& c, ZebiSize size) {
  return bufferBytes(c, size, mostLensBytes(size.width), [&](ZebiSize of) {
    int told = 0;
    FUNCTION(zebiUndistortGetSize).ok(c, of, &told);
    return told;
  });
}
int64_t tooWideForLenses(const Choice& c) {
  return leastWidthRefused(c, FUNCTION(zebiUndistortGetSize), mostLensBytes);
}

template <class T, int channels, class F>
void undistort(Choice& c, const F& f) {
  const ZebiSize size = c.size();
  const LensCase lens(c, size);
  const Image<T> src = c.image<T>(size, channels), dst = c.empty<T>(size, channels);
  const Scratch buffer = c.scratch(lensBytes(c, size));
  constexpr int pixel = channels * sizeof(T);
  atLeastRefused(tooWideForLenses(c), pixel, [&](int wide) {
    f.refused(zebStsErrOverflow, src.pixels(), wide * pixel, dst.pixels(), wide * pixel, ZebiSize{wide, 1}, lens.focal,
              lens.centre, lens.k1, lens.k2, buffer.get());
  });
  f.ok(c, src.pixels(), src.step(), dst.pixels(), dst.step(), size, lens.focals(), lens.centres(), lens.number(lens.k1),
       lens.number(lens.k2), buffer.get());
  require(agree(f.name(), dst, ref::undistorted(src.plane(), lens)), lens.describe() + ", " + src.describe());
  require(src.intact() && buffer.intact(), "wrote outside");
}
#define UNDISTORT(form, T, channels) \
  DRIVER("geometry", "zebiUndistortRadial_" #form, undistort<T, channels>(c, FUNCTION(zebiUndistortRadial_##form)))
UNDISTORT(8u_C1R, Zeb8u, 1);
UNDISTORT(8u_C3R, Zeb8u, 3);
UNDISTORT(16u_C1R, Zeb16u, 1);
UNDISTORT(16u_C3R, Zeb16u, 3);
UNDISTORT(32f_C1R, Zeb32f, 1);
UNDISTORT(32f_C3R, Zeb32f, 3);

void lensMap(Choice& c) {
  const auto f = FUNCTION(zebiCreateMapCameraUndistort_32f_C1R);
  const ZebiSize size = c.size();
  const LensCase lens(c, size);
  const Image<Zeb32f> x = c.empty<Zeb32f>(size), y = c.empty<Zeb32f>(size);
  const Scratch buffer = c.scratch(lensBytes(c, size));
  atLeastRefused(tooWideForLenses(c), 4, [&](int wide) {
    f.refused(zebStsErrOverflow, x.pixels(), 4 * wide, y.pixels(), 4 * wide, ZebiSize{wide, 1}, lens.focal, lens.centre,
              lens.k1, lens.k2, lens.p1, lens.p2, buffer.get());
  });
  f.ok(c, x.pixels(), x.step(), y.pixels(), y.step(), size, lens.focals(), lens.centres(), lens.number(lens.k1),
       lens.number(lens.k2), lens.number(lens.p1), lens.number(lens.p2), buffer.get());
  Plane<Zeb32f> wantX(size.width, size.height), wantY = wantX;
  for (int j = 0; j < size.height; ++j)
    for (int i = 0; i < size.width; ++i) {
      const ZebiPoint_32f at = lens.position(i, j, true);
      wantX.at(i, j) = at.x, wantY.at(i, j) = at.y;
    }
  require(agree(f.name(), x, wantX), "x of " + lens.describe());
  require(agree(f.name(), y, wantY), "y of " + lens.describe());
  require(buffer.intact(), "wrote outside");
}
DRIVER("geometry", "zebiCreateMapCameraUndistort_32f_C1R", lensMap(c));

// ---- Lines ----

template <class T, int channels, class F>
void line(Choice& c, const F& f) {
  const ZebiSize size = c.size();
  const Image<T> src = c.image<T>(size, channels);
  const auto point = [&] {
    const int x = c.within(0, size.width - 1), y = c.within(0, size.height - 1);
    return ZebiPoint{x, y};
  };
  const auto outside = [&](ZebiPoint p) {
    const int far = c.coin() ? c.within(INT32_MIN, -1) : c.within(0, 3);
    (c.coin() ? p.x : p.y) = far;
    if (far >= 0) p.x = size.width + far;
    return p;
  };
  const ZebiPoint a = point(), b = c.oneIn(8) ? a : point(), noA = outside(a), noB = outside(b);
  const auto points = ref::line(a, b);
  const ZebiSize length = {static_cast<int>(points.size()), 1};
  const Image<T> dst = c.empty<T>(length, channels);
  f.ok(c, src.pixels(), src.step(), dst.pixels(), size, orElse(a, noA, zebStsErrOutOfRange),
       orElse(b, noB, zebStsErrOutOfRange));
  const Plane<T> pixels = src.plane();
  Plane<T> want(length.width, 1, channels);
  for (int k = 0; k < length.width; ++k)
    for (int e = 0; e < channels; ++e) want.at(k, 0, e) = pixels.at(points[k].x, points[k].y, e);
  require(agree(f.name(), dst, want), src.describe());
  require(src.intact(), "wrote outside");
}
#define LINE(form, T, channels) \
  DRIVER("geometry", "zebiSampleLine_" #form, line<T, channels>(c, FUNCTION(zebiSampleLine_##form)))
LINE(8u_C1R, Zeb8u, 1);
LINE(8u_C3R, Zeb8u, 3);
LINE(16u_C1R, Zeb16u, 1);
LINE(16u_C3R, Zeb16u, 3);
LINE(32f_C1R, Zeb32f, 1);
LINE(32f_C3R, Zeb32f, 3);

// ---- Gradients ----

const ZebNormType norms[] = {zebNormInf, zebNormL1, zebNormL2};
const ZebNormType noNorms[] = {0, 3, 5, -1, 8};

template <class D>
void checkAngle(ref::Vector<D> v, Zeb32f angle) {
  const double x = static_cast<double>(v.gx), y = static_cast<double>(v.gy), exact = std::atan2(y, x);
  if (!std::isfinite(x) || !std::isfinite(y) || std::fpclassify(exact) == FP_SUBNORMAL || x == 0 || y == 0) return;
  if (std::fabs(exact) < 1e-30) return;
  require(std::fabs(static_cast<double>(angle) - exact) <= std::fabs(exact) * 0x1p-22,
          "the angle of " + test::shown(v.gx) + " " + test::shown(v.gy));
}

template <class S, class D, int channels, class F>
void gradient(Choice& c, const F& f, ref::Taps smooth) {
  const ZebiSize size = c.size();
  const bool five = smooth == ref::Taps::smooth && c.coin();
  const ref::Derivative operation = {smooth, five ? 5 : 3};
  const int reach = operation.taps / 2, refused[] = {0, 3, 5, 34, 35, 53, -33};
  const int noMask = smooth == ref::Taps::smooth || c.coin() ? c.oneOf(refused) : zebMskSize5x5;
  const auto mask = orElse(five ? zebMskSize5x5 : zebMskSize3x3, noMask, zebStsErrMaskSize);
  const Source<S, channels> src(c, size, reach);
  const ZebNormType norm = c.oneOf(norms);
  const auto choice = orElse(norm, c.oneOf(noNorms), zebStsErrNorm);
  const Image<D> gx = c.empty<D>(size), gy = c.empty<D>(size), magnitude = c.empty<D>(size);
  const Image<Zeb32f> angle = c.empty<Zeb32f>(size);
  for (const auto* image : {&gx, &gy, &magnitude}) test::mayBeLookedAt(*image);  // those that are not asked for stay
  test::mayBeLookedAt(angle);
  const ZebDataType type = sizeof(S) == 1 ? zeb8u : zeb32f;
  const int element = sizeof(S) == 1 ? 2 : 4;
  const auto most = [&](int64_t width) {
    return (4 * reach + 8) * ((width + 2 * reach) * channels * element + 512) + 1024;
  };
  const auto query = FUNCTION(zebiGradientVectorGetBufferSize);
  const int bytes = bufferBytes(c, size, most(size.width), [&](ZebiSize of) {
    int told = 0;
    const int noChannels = type == zeb32f && c.coin() ? 3 : 2;
    query.ok(c, of, orElse(plain(mask), 35, zebStsErrMaskSize), orElse(type, c.coin() ? zeb16s : 0, zebStsErrDataType),
             orElse(channels, noChannels, noChannels == 3 ? zebStsErrChannelCount : zebStsErrNumChannels), &told);
    return told;
  });
  const Scratch buffer = c.scratch(bytes);

  // All of them with steps that may be spoiled, any of them, or one that may be missed.
  int wanted = c.within(1, 15);
  const int kind = c.within(0, 2);
  if (kind == 0) wanted = 15;
  if (kind == 2) wanted = 1;
  constexpr int pixel = channels * sizeof(S), result = sizeof(D);
  const auto call = [&](auto value, auto types) {
    atLeastRefused(
        leastWidthRefused(c, query, most, plain(mask), type, channels), std::max(pixel, result), [&](int wide) {
          f.refused(zebStsErrOverflow, src.pixels(), wide * pixel, gx.pixels(), wide * result, nullptr, 0, nullptr, 0,
                    nullptr, 0, ZebiSize{wide, 1}, mask, choice, src.border, value, buffer.get());
        });
    const auto with = [&](auto... outputs) {
      f.ok(c, src.pixels(), src.image.step(), outputs..., size, mask, choice, types, value, buffer.get());
    };
    const int w = size.width, none = c.within(-9, 9);
    if (kind == 0) {
      with(keep(gx.pixels()), stepOf(gx, w), keep(gy.pixels()), stepOf(gy, w), keep(magnitude.pixels()),
           stepOf(magnitude, w), keep(angle.pixels()), stepOf(angle, w));
    } else if (kind == 1) {
      const auto pixels = [&](int k, const auto& image) { return keep(wanted & k ? image.pixels() : nullptr); };
      const auto anyStep = [&](int k, const auto& image) { return keep(wanted & k ? image.step() : none); };
      with(pixels(1, gx), anyStep(1, gx), pixels(2, gy), anyStep(2, gy), pixels(4, magnitude), anyStep(4, magnitude),
           pixels(8, angle), anyStep(8, angle));
    } else {
      D* const nothing = nullptr;
      with(gx.pixels(), stepOf(gx, w), keep(nothing), keep(none), keep(nothing), keep(none),
           keep(static_cast<Zeb32f*>(nullptr)), keep(none));
    }
  };
  src.withValue(c, call);

  Plane<D> all[3] = {gx.plane(), gy.plane(), magnitude.plane()};
  Plane<Zeb32f> angles = angle.plane();
  src.withSamplers([&](const auto& samplers) {
    for (int y = 0; y < size.height; ++y)
      for (int x = 0; x < size.width; ++x) {
        auto v = ref::gradientAt<D>(samplers[0], x, y, operation);
        for (int k = 1; k < channels; ++k) {
          const auto other = ref::gradientAt<D>(samplers[k], x, y, operation);
          if (channels > 1 && other.strength(norm) > v.strength(norm)) v = other;
        }
        if (wanted & 1) all[0].at(x, y) = v.gx;
        if (wanted & 2) all[1].at(x, y) = v.gy;
        if (wanted & 4) all[2].at(x, y) = v.magnitude(norm);
        if (wanted & 8) angles.at(x, y) = v.angle(), checkAngle(v, v.angle());
      }
  });
  const std::string how = std::to_string(operation.taps) + " taps, norm " + std::to_string(norm) + ", border " +
                          std::to_string(src.border) + ", " + src.image.describe();
  require(agree(f.name(), gx, all[0]), "gx, " + how);
  require(agree(f.name(), gy, all[1]), "gy, " + how);
  require(agree(f.name(), magnitude, all[2]), "magnitude, " + how);
  require(agree(f.name(), angle, angles), "angle, " + how);
  require(src.image.intact() && buffer.intact(), "wrote outside");
}
#define GRADIENT(form, S, D, channels, smooth)   \
  DRIVER("geometry", "zebiGradientVector" #form, \
         gradient<S, D, channels>(c, FUNCTION(zebiGradientVector##form), ref::Taps::smooth))
GRADIENT(Sobel_8u16s_C1R, Zeb8u, Zeb16s, 1, smooth);
GRADIENT(Sobel_32f_C1R, Zeb32f, Zeb32f, 1, smooth);
GRADIENT(Sobel_8u16s_C3C1R, Zeb8u, Zeb16s, 3, smooth);
GRADIENT(Scharr_8u16s_C1R, Zeb8u, Zeb16s, 1, scharr);
GRADIENT(Scharr_32f_C1R, Zeb32f, Zeb32f, 1, scharr);
GRADIENT(Scharr_8u16s_C3C1R, Zeb8u, Zeb16s, 3, scharr);
GRADIENT(Prewitt_8u16s_C1R, Zeb8u, Zeb16s, 1, mean);
GRADIENT(Prewitt_32f_C1R, Zeb32f, Zeb32f, 1, mean);

template <class T, class F>
void toGray(Choice& c, const F& f) {
  const ZebiSize size = c.size();
  const Image<T> src = c.image<T>(size, 3), dst = c.empty<T>(size);
  const ZebNormType norm = c.oneOf(norms);
  f.ok(c, src.pixels(), src.step(), dst.pixels(), stepOf(dst, size.width), size,
       orElse(norm, c.oneOf(noNorms), zebStsErrNorm));
  Plane<T> want(size.width, size.height);
  const Plane<T> colours = src.plane();
  for (size_t i = 0; i < want.data.size(); ++i)
    want.data[i] = ref::colourToGray(colours.data[3 * i], colours.data[3 * i + 1], colours.data[3 * i + 2], norm);
  require(agree(f.name(), dst, want), "norm " + std::to_string(norm) + ", " + src.describe());
  require(src.intact(), "wrote outside");
}
#define TO_GRAY(form, T) \
  DRIVER("geometry", "zebiGradientColorToGray_" #form, toGray<T>(c, FUNCTION(zebiGradientColorToGray_##form)))
TO_GRAY(8u_C3C1R, Zeb8u);
TO_GRAY(16u_C3C1R, Zeb16u);
TO_GRAY(32f_C3C1R, Zeb32f);

// ---- Super-resolution ----

// A geometry and weights, at odd addresses now and then.
struct ObservationCase : ref::Observation {
  ObservationCase(Choice& c, int side, ZebiSize low, ZebiSize high)
      : places(c.scratch(sizeof(Zeb64f) * 6)),
        noPlaces(c.scratch(sizeof(Zeb64f) * 6)),
        weights(c.scratch(static_cast<int>(sizeof(Zeb32f)) * side * side)),
        noWeights(c.scratch(static_cast<int>(sizeof(Zeb32f)) * side * side)) {
    n = side;
    // A scale, a small turn, a shift; or anything.
    const double sx = high.width / static_cast<double>(low.width), sy = high.height / static_cast<double>(low.height);
    const double turn = c.coin() ? 0 : static_cast<double>(c.real(-0.4f, 0.4f));
    const double shift = static_cast<double>(c.real(-2, 2));
    at = {sx, turn, c.coin() ? 0 : shift, -turn, sy, 0};
    if (c.oneIn(4)) at = {1, 0, 0, 0, 1, 0};
    if (c.oneIn(8)) at[static_cast<size_t>(c.within(0, 5))] = c.coin() ? 1e300 : 1e308;
    if (c.oneIn(8)) at[2] = -0.5 * c.within(0, 4);
    if (c.oneIn(8)) at[2] = at[5] = 0x1.fffffffffffffp-2;  // 1/2 more is 1 by its rounding
    psf.resize(static_cast<size_t>(n * n));
    const bool usual = !c.oneIn(6);
    for (Zeb32f& w : psf) {
      w = usual ? c.real(-0.2f, 0.6f) : c.value<Zeb32f>();
      if (!std::isfinite(w)) w = 3e38f;
      c.look(w);
    }
    for (const Zeb64f v : at) c.look(v);
    memcpy(places.get(), at.data(), sizeof(at));
    memcpy(weights.get(), psf.data(), psf.size() * sizeof(Zeb32f));
    memcpy(noPlaces.get(), at.data(), sizeof(at));
    memcpy(noWeights.get(), psf.data(), psf.size() * sizeof(Zeb32f));
    const Zeb64f noNumbers[] = {NAN, INFINITY, -INFINITY}, v = c.oneOf(noNumbers);
    const auto w = static_cast<Zeb32f>(v);
    memcpy(noPlaces.get() + sizeof(v) * static_cast<size_t>(c.within(0, 5)), &v, sizeof(v));
    memcpy(noWeights.get() + sizeof(w) * static_cast<size_t>(c.within(0, n * n - 1)), &w, sizeof(w));
  }
  template <class T>
  static const T* pointer(const Scratch& s) {
    return reinterpret_cast<const T*>(s.get());
  }
  auto coefficients() const { return orElse(pointer<Zeb64f>(places), pointer<Zeb64f>(noPlaces), zebStsErrBadArgument); }
  auto spread() const { return orElse(pointer<Zeb32f>(weights), pointer<Zeb32f>(noWeights), zebStsErrBadArgument); }

  Scratch places, noPlaces, weights, noWeights;
};
ZebiSize estimateSize(Choice& c, ZebiSize low) {
  const int width = c.within(1, 2) * low.width + c.within(0, 2), height = c.within(1, 2) * low.height + c.within(0, 2);
  return {width, height};
}

template <int n, class F>
void residual(Choice& c, const F& f) {
  const ZebiSize low = c.size(), high = estimateSize(c, low);
  const Image<Zeb8u> estimate = c.image<Zeb8u>(high), observed = c.image<Zeb8u>(low);
  const Image<Zeb16s> out = c.empty<Zeb16s>(low);
  const ObservationCase o(c, n, low, high);
  f.ok(c, estimate.pixels(), estimate.step(), high, observed.pixels(), observed.step(), out.pixels(), out.step(), low,
       o.coefficients(), o.spread());
  require(agree(f.name(), out, ref::residual(estimate.plane(), observed.plane(), o)), observed.describe());
  require(estimate.intact() && observed.intact(), "wrote outside");
}
DRIVER("geometry", "zebiSRCalcResidual_PSF2x2_8u16s_C1R",
       residual<2>(c, FUNCTION(zebiSRCalcResidual_PSF2x2_8u16s_C1R)));
DRIVER("geometry", "zebiSRCalcResidual_PSF3x3_8u16s_C1R",
       residual<3>(c, FUNCTION(zebiSRCalcResidual_PSF3x3_8u16s_C1R)));

// What an observation sees of a picture h, against residuals r, is the picture against what r adds to it: <A h, r> and
// <h, A' r> with sums that are exact.
template <class F, class R>
void requireTransposed(Choice& c, const F& f, const R& residual, ObservationCase& o, ZebiSize low, ZebiSize high) {
  Random random = c.random();
  for (Zeb32f& w : o.psf) w = static_cast<Zeb32f>(random.within(-14, 14)) / 128;
  Plane<Zeb8u> picture(high.width, high.height), nothing(low.width, low.height);
  Plane<Zeb32f> res(low.width, low.height), grad(high.width, high.height);
  Plane<Zeb16s> seen(low.width, low.height);
  for (Zeb8u& v : picture.data) v = static_cast<Zeb8u>(random.within(0, 255));
  for (Zeb32f& v : res.data) v = static_cast<Zeb32f>(random.within(-99, 99));
  residual.ok(c, keep(picture.data.data()), high.width, high, keep(nothing.data.data()), low.width,
              keep(seen.data.data()), 2 * low.width, low, keep(o.at.data()), keep(o.psf.data()));
  f.ok(c, keep(res.data.data()), 4 * low.width, low, keep(grad.data.data()), 4 * high.width, high, keep(o.at.data()),
       keep(o.psf.data()));
  double forth = 0, back = 0;
  for (size_t i = 0; i < res.data.size(); ++i) forth -= seen.data[i] * static_cast<double>(res.data[i]);
  for (size_t i = 0; i < grad.data.size(); ++i) back += picture.data[i] * static_cast<double>(grad.data[i]);
  require(forth == 128 * back, "the update is not the transpose of the residual");
}

template <int n, class F, class R>
void update(Choice& c, const F& f, const R& residual) {
  const ZebiSize low = c.size(), high = estimateSize(c, low);
  const Image<Zeb32f> res = c.image<Zeb32f>(low), grad = c.image<Zeb32f>(high);
  ObservationCase o(c, n, low, high);
  Plane<Zeb32f> want = grad.plane();
  f.ok(c, res.pixels(), res.step(), low, grad.pixels(), grad.step(), high, o.coefficients(), o.spread());
  ref::addResiduals(res.plane(), want, o);
  require(agree(f.name(), grad, want), res.describe());
  require(res.intact(), "wrote outside");
  requireTransposed(c, f, residual, o, low, high);
}
#define UPDATE(n)                                                            \
  DRIVER("geometry", "zebiSRUpdateGradient_PSF" #n "x" #n "_32f_C1R",        \
         update<n>(c, FUNCTION(zebiSRUpdateGradient_PSF##n##x##n##_32f_C1R), \
                   FUNCTION(zebiSRCalcResidual_PSF##n##x##n##_8u16s_C1R)))
UPDATE(2);
UPDATE(3);

}  // namespace
