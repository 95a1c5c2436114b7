// Morphological reconstruction by alternating downward and upward passes over the rows (L. Vincent, 1993).
//
// A visited row takes in one neighbouring row and is then closed along itself in both directions, so that it stays as
// it is until a row beside it changes. Along a row, taking in the pixel before and limiting by the mask is a clamp to
// [marker, mask]; clamps composed are clamps again, so a whole vector of integers is swept in logarithmically many
// steps.
#include <limits>
#include <type_traits>

#include "core/checks.h"
#include "core/entry.h"
#include "core/image.h"
#include "core/lanes.h"
#include "core/scratch.h"
#include "core/services.h"

namespace {

using namespace zeb;

// The two directions of growth. grown(p, q): p after taking in q; limited(p, m): p within the mask. p stays as it is
// where it equals the other value or one of them is not a number: so every change is a step towards the mask, and the
// passes come to an end. nothing is the value that never grows anything.
struct Dilation {
  template <class T>
  static constexpr T nothing = std::is_floating_point_v<T> ? -std::numeric_limits<T>::infinity()
                                                           : std::numeric_limits<T>::lowest();
  template <class V>
  static ZEB_INLINE V grown(V p, V q) {
    return max(q, p);
  }
  template <class V>
  static ZEB_INLINE V limited(V p, V m) {
    return min(m, p);
  }
};
struct Erosion {
  template <class T>
  static constexpr T nothing = std::is_floating_point_v<T> ? std::numeric_limits<T>::infinity()
                                                           : std::numeric_limits<T>::max();
  template <class V>
  static ZEB_INLINE V grown(V p, V q) {
    return min(q, p);
  }
  template <class V>
  static ZEB_INLINE V limited(V p, V m) {
    return max(m, p);
  }
};

// ---- One vector swept along the row ----

enum class Sweep { rightwards, leftwards };

template <Sweep sweep, int bytes, class V>
ZEB_INLINE V moved(V a, V beyond) {
  if constexpr (sweep == Sweep::rightwards)
    return movedUp<bytes>(a, beyond);
  else
    return movedDown<bytes>(a, beyond);
}

// One composition of the clamps [p, m] with those some bytes before them.
template <class Op, Sweep sweep, int bytes, class T>
ZEB_INLINE void compose(Vec<T>& p, Vec<T>& m) {
  // The clamp that changes nothing stands beyond the vector.
  const Vec<T> before = moved<sweep, bytes>(p, splat(Op::template nothing<T>));
  const Vec<T> limit = moved<sweep, bytes>(m, splat(static_cast<T>(~Op::template nothing<T>)));
  const Vec<T> grown = Op::limited(Op::grown(p, before), m);
  m = Op::limited(Op::grown(p, limit), m);
  p = grown;
}

// p after the values of the vector beyond (the one before in the direction of the sweep) and its own have travelled
// through it. p lies within the mask m.
template <class Op, Sweep sweep, class T>
ZEB_INLINE Vec<T> swept(Vec<T> p, Vec<T> m, Vec<T> beyond) {
  Vec<T> next = Op::limited(Op::grown(p, moved<sweep, sizeof(T)>(p, beyond)), m);
  if (identical(next, p)) return p;
  if constexpr (std::is_integral_v<T>) {
    // The value that enters: the one nearest to this vector, everywhere.
    alignas(32) T values[Vec<T>::lanes];
    store(values, beyond);
    const Vec<T> entering = splat(values[sweep == Sweep::rightwards ? Vec<T>::lanes - 1 : 0]);
    if constexpr (sizeof(T) == 1) compose<Op, sweep, 1>(p, m);
    compose<Op, sweep, 2>(p, m);
    compose<Op, sweep, 4>(p, m);
    compose<Op, sweep, 8>(p, m);
    compose<Op, sweep, 16>(p, m);
    return Op::limited(Op::grown(p, entering), m);
  } else {
    do {
      p = next;
      next = Op::limited(Op::grown(p, moved<sweep, sizeof(T)>(p, beyond)), m);
    } while (!identical(next, p));
    return p;
  }
}

// ---- One row ----

// A vector of a row with elements beyond its ends taken as nothing. x may start one before the row or end behind it.
template <class Op, class T>
Vec<T> loadPadded(const T* row, int x, int width) {
  constexpr int lanes = Vec<T>::lanes;
  alignas(32) T block[lanes];
  for (int i = 0; i < lanes; ++i) block[i] = x + i >= 0 && x + i < width ? row[x + i] : Op::template nothing<T>;
  return load(block);
}

// p after taking in the pixels beside it in the neighbouring row, one or three: one after the other, so that one that
// is not a number hides no other.
template <class Op, bool eight, class T>
ZEB_INLINE Vec<T> grownBy(Vec<T> p, const T* row, int x, int width) {
  constexpr int lanes = Vec<T>::lanes;
  if (x >= 1 && x <= width - lanes - 1) {
    p = Op::grown(p, load(row + x));
    return eight ? Op::grown(Op::grown(p, load(row + x - 1)), load(row + x + 1)) : p;
  }
  // The first or the last vector of the row.
  const Vec<T> nothing = splat(Op::template nothing<T>);
  const bool last = x >= width - lanes;
  const Vec<T> middle = x <= width - lanes ? load(row + x) : loadPadded<Op>(row, x, width);
  p = Op::grown(p, middle);
  if (!eight) return p;
  const Vec<T> left = movedUp<sizeof(T)>(middle, x > 0 ? load(row + x - lanes) : nothing);
  const Vec<T> right = last ? movedDown<sizeof(T)>(middle, nothing) : load(row + x + 1);
  return Op::grown(Op::grown(p, left), right);
}

// Takes in the neighbouring row (none for the first row of the first pass), then closes the row along itself. force:
// the row has not been closed before. Returns whether any pixel changed.
template <class Op, bool eight, class T>
bool visitRow(T* row, const T* mask, const T* neighbour, int width, bool force) {
  constexpr int lanes = Vec<T>::lanes;
  const Vec<T> nothing = splat(Op::template nothing<T>);
  int firstChanged = width, lastChanged = -1;
  Vec<T> before = nothing;
  bool beforeChanged = force;
  for (int x = 0; x < width; x += lanes) {
    const bool whole = x <= width - lanes;
    const Vec<T> old = whole ? load(row + x) : loadPadded<Op>(row, x, width);
    const Vec<T> m = whole ? load(mask + x) : loadPadded<Op>(mask, x, width);
    Vec<T> p = neighbour ? grownBy<Op, eight>(old, neighbour, x, width) : old;
    p = Op::limited(p, m);
    if (beforeChanged || !identical(p, old)) p = swept<Op, Sweep::rightwards>(p, m, before);
    beforeChanged = !identical(p, old);
    if (beforeChanged) {
      if (whole)
        store(row + x, p);
      else
        storeN(row + x, p, width - x);
      if (firstChanged > x) firstChanged = x;
      lastChanged = x;
    }
    before = p;
    beforeChanged |= force;
  }
  if (lastChanged < 0 && !force) return false;

  // Back from the last change to the vector before the first one, and on as far as something changes.
  int x = force ? (width - 1) / lanes * lanes : lastChanged;
  Vec<T> behind = loadPadded<Op>(row, x + lanes, width);
  bool moving = true;
  for (; x >= 0 && (moving || x >= firstChanged - lanes || force); x -= lanes) {
    const bool whole = x <= width - lanes;
    const Vec<T> old = whole ? load(row + x) : loadPadded<Op>(row, x, width);
    const Vec<T> m = whole ? load(mask + x) : loadPadded<Op>(mask, x, width);
    const Vec<T> p = swept<Op, Sweep::leftwards>(old, m, behind);
    moving = !identical(p, old);
    if (moving) {
      if (whole)
        store(row + x, p);
      else
        storeN(row + x, p, width - x);
      if (lastChanged < 0) lastChanged = x;
    }
    behind = p;
  }
  return lastChanged >= 0;
}

// ---- The image ----

// Flags of a row: the row above, or below, has changed since this row took it in.
constexpr Zeb8u aboveChanged = 1;
constexpr Zeb8u belowChanged = 2;

template <class Op, bool eight, class T>
void reconstruct(Rows<const T> mask, Rows<T> marker, ZebiSize size, Zeb8u* flags) {
  const int h = size.height;
  q7_zebsSet_8u(aboveChanged | belowChanged, flags, h);
  const auto spread = [&](int y) {
    if (y > 0) flags[y - 1] |= belowChanged;
    if (y < h - 1) flags[y + 1] |= aboveChanged;
  };
  for (int y = 0; y < h; ++y) {
    flags[y] &= static_cast<Zeb8u>(~aboveChanged);
    visitRow<Op, eight>(marker[y], mask[y], y > 0 ? marker[y - 1] : static_cast<T*>(nullptr), size.width, true);
  }
  flags[h - 1] = 0;
  for (bool down = false, changed = true; changed; down = !down) {
    changed = false;
    for (int k = 0; k < h; ++k) {
      const int y = down ? k : h - 1 - k;
      const Zeb8u flag = down ? aboveChanged : belowChanged;
      if (!(flags[y] & flag)) continue;
      flags[y] &= static_cast<Zeb8u>(~flag);
      if (visitRow<Op, eight>(marker[y], mask[y], marker[down ? y - 1 : y + 1], size.width, false)) {
        changed = true;
        spread(y);
      }
    }
  }
}

// ---- Sizes and checks ----

template <class T>
constexpr int64_t bufferSize(ZebiSize s) {
  const int64_t w = s.width, h = s.height;
  return sizeof(T) == 1   ? h + 4 * w + 161
         : sizeof(T) == 2 ? 2 * (h + 4 * w) + 322
         : sizeof(T) == 4 ? 16 * w + h + 164
                          : 32 * w + h + 168;
}

template <class T>
ZebStatus reportBufferSize(ZebiSize roi, int* pBufSize) {
  if (auto bad = firstFailure(present(pBufSize), hasArea(roi))) return bad;
  return reportSize(bufferSize<T>(roi), pBufSize);
}

template <class Op, class T>
ZebStatus reconstruction(const T* pSrc, int srcStep, T* pSrcDst, int srcDstStep, ZebiSize roi, Zeb8u* pBuf,
                         ZebiNorm norm) {
  if (auto bad = firstFailure(present(pSrc, pSrcDst, pBuf), hasArea(roi), holdsRow<T>(srcStep, roi.width),
                              holdsRow<T>(srcDstStep, roi.width),
                              require(norm == zebiNormInf || norm == zebiNormL1, zebStsErrBadArgument)))
    return bad;
  Scratch scratch(pBuf, bufferSize<T>(roi));
  Zeb8u* flags = scratch.take<Zeb8u>(roi.height);
  (norm == zebiNormInf ? reconstruct<Op, true, T> : reconstruct<Op, false, T>)(Rows(pSrc, srcStep),
                                                                               Rows(pSrcDst, srcDstStep), roi, flags);
  return zebStsOk;
}

}  // namespace

ZEB_ENTRY(zebiMorphReconstructGetBufferSize)
(ZebiSize roiSize, ZebDataType dataType, int numChannels, int* pBufSize) {
  if (auto bad =
          firstFailure(present(pBufSize), hasArea(roiSize),
                       require(dataType == zeb8u || dataType == zeb16u || dataType == zeb32f || dataType == zeb64f,
                               zebStsErrDataType),
                       require(numChannels == 1, zebStsErrNumChannels)))
    return bad;
  switch (dataType) {
    case zeb8u:
      return reportBufferSize<Zeb8u>(roiSize, pBufSize);
    case zeb16u:
      return reportBufferSize<Zeb16u>(roiSize, pBufSize);
    case zeb32f:
      return reportBufferSize<Zeb32f>(roiSize, pBufSize);
    default:
      return reportBufferSize<Zeb64f>(roiSize, pBufSize);
  }
}

#define BUFFER_SIZE(name, T)                         \
  ZEB_ENTRY(name)(ZebiSize roiSize, int* pBufSize) { \
    return reportBufferSize<T>(roiSize, pBufSize);   \
  }
BUFFER_SIZE(zebiMorphReconstructGetBufferSize_8u_C1, Zeb8u)
BUFFER_SIZE(zebiMorphReconstructGetBufferSize_16u_C1, Zeb16u)
BUFFER_SIZE(zebiMorphReconstructGetBufferSize_32f_C1, Zeb32f)
BUFFER_SIZE(zebiMorphReconstructGetBufferSize_64f_C1, Zeb64f)

#define RECONSTRUCT(name, Op, T)                                                                           \
  ZEB_ENTRY(name)                                                                                          \
  (const T* pSrc, int srcStep, T* pSrcDst, int srcDstStep, ZebiSize roiSize, Zeb8u* pBuf, ZebiNorm norm) { \
    return reconstruction<Op>(pSrc, srcStep, pSrcDst, srcDstStep, roiSize, pBuf, norm);                    \
  }
RECONSTRUCT(zebiMorphReconstructDilate_8u_C1IR, Dilation, Zeb8u)
RECONSTRUCT(zebiMorphReconstructDilate_16u_C1IR, Dilation, Zeb16u)
RECONSTRUCT(zebiMorphReconstructDilate_32f_C1IR, Dilation, Zeb32f)
RECONSTRUCT(zebiMorphReconstructDilate_64f_C1IR, Dilation, Zeb64f)
RECONSTRUCT(zebiMorphReconstructErode_8u_C1IR, Erosion, Zeb8u)
RECONSTRUCT(zebiMorphReconstructErode_16u_C1IR, Erosion, Zeb16u)
RECONSTRUCT(zebiMorphReconstructErode_32f_C1IR, Erosion, Zeb32f)
RECONSTRUCT(zebiMorphReconstructErode_64f_C1IR, Erosion, Zeb64f)
