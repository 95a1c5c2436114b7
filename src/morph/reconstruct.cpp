// Morphological reconstruction by alternating downward and upward passes over the rows (L. Vincent, 1993), and where
// these find little to do, by following what changes.
//
// A visited row takes in a neighbouring row and is then closed along itself in both directions, so that it stays as it
// is until a row beside it changes. Along a row, taking in the pixel before and limiting by the mask is a clamp to
// [marker, mask]; clamps composed are clamps again, so a whole vector is swept in logarithmically many steps. The
// result is unique but for the signs of zeros, so the order of the visits decides about the work alone.
#include <limits>
#include <type_traits>

#include "core/checks.h"
#include "core/entry.h"
#include "core/image.h"
#include "core/scratch.h"
#include "core/services.h"
#include "core/shuffle.h"
#include "morph/fronts.h"

namespace {

using namespace zeb;

// ---- Vectors ----

// The elements moved up by some bytes (1..16), the first ones taken from the end of the vector before; and moved down,
// the last ones taken from the start of the vector behind.
template <int bytes, class T>
ZEB_INLINE Vec<T> movedUp(Vec<T> a, Vec<T> before) {
  const __m256i middle = _mm256_permute2x128_si256(bits(before.v), bits(a.v), 0x21);
  if constexpr (bytes == 16)
    return as<T>(V8u{middle});
  else
    return as<T>(V8u{_mm256_alignr_epi8(bits(a.v), middle, 16 - bytes)});
}
template <int bytes, class T>
ZEB_INLINE Vec<T> movedDown(Vec<T> a, Vec<T> behind) {
  const __m256i middle = _mm256_permute2x128_si256(bits(a.v), bits(behind.v), 0x21);
  if constexpr (bytes == 16)
    return as<T>(V8u{middle});
  else
    return as<T>(V8u{_mm256_alignr_epi8(middle, bits(a.v), bytes)});
}
// Whether all bits agree.
template <class T>
ZEB_INLINE bool identical(Vec<T> a, Vec<T> b) {
  const __m256i difference = _mm256_xor_si256(bits(a.v), bits(b.v));
  return _mm256_testz_si256(difference, difference);
}

// The two directions of growth. grown(p, q): p after taking in q; limited(p, m): p within the mask. p stays as it is
// where it equals the other value or one of them is not a number: so every change is a step towards the mask, and the
// passes come to an end. nothing is the value that never grows anything.
struct Dilation {
  template <class T>
  static constexpr T nothing = std::is_floating_point_v<T> ? -std::numeric_limits<T>::infinity()
                                                           : std::numeric_limits<T>::lowest();
  template <class T>
  static constexpr T everything = std::is_floating_point_v<T> ? std::numeric_limits<T>::infinity()
                                                              : std::numeric_limits<T>::max();
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
  template <class T>
  static constexpr T everything = std::is_floating_point_v<T> ? -std::numeric_limits<T>::infinity()
                                                              : std::numeric_limits<T>::lowest();
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

// The element that stands nearest to the vector beside this one, everywhere.
template <Sweep sweep, class T>
ZEB_INLINE Vec<T> nearest(Vec<T> a) {
  alignas(32) T values[Vec<T>::lanes];
  store(values, a);
  return splat(values[sweep == Sweep::rightwards ? Vec<T>::lanes - 1 : 0]);
}

// One composition of the clamps [p, m] with those some bytes before them.
template <class Op, Sweep sweep, int bytes, class T>
ZEB_INLINE void compose(Vec<T>& p, Vec<T>& m) {
  // The clamp that changes nothing stands beyond the vector.
  const Vec<T> before = moved<sweep, bytes>(p, splat(Op::template nothing<T>));
  const Vec<T> limit = moved<sweep, bytes>(m, splat(Op::template everything<T>));
  const Vec<T> grown = Op::limited(Op::grown(p, before), m);
  m = Op::limited(Op::grown(p, limit), m);
  p = grown;
}

// p after the values of the vector beyond (the one before in the direction of the sweep) and its own have travelled
// through it. p lies within the mask m. Only the last step waits for the vector beyond.
template <class Op, Sweep sweep, class T>
ZEB_INLINE Vec<T> swept(Vec<T> p, Vec<T> m, Vec<T> beyond) {
  const Vec<T> next = Op::limited(Op::grown(p, moved<sweep, sizeof(T)>(p, beyond)), m);
  if (identical(next, p)) return p;
  // A mask that is not a number limits nothing. A pixel that is not one gets a mask alike: they stay so and pass
  // nothing.
  if constexpr (std::is_floating_point_v<T>) m = Op::grown(p, Op::limited(splat(Op::template everything<T>), m));
  if constexpr (sizeof(T) == 1) compose<Op, sweep, 1>(p, m);
  if constexpr (sizeof(T) <= 2) compose<Op, sweep, 2>(p, m);
  if constexpr (sizeof(T) <= 4) compose<Op, sweep, 4>(p, m);
  compose<Op, sweep, 8>(p, m);
  compose<Op, sweep, 16>(p, m);
  return Op::limited(Op::grown(p, nearest<sweep>(beyond)), m);
}

// ---- One row ----

// A vector of a row with elements beyond its ends taken as nothing. x may start one before the row or end behind it.
// Apart, so that what it needs takes no registers from the loops over whole vectors.
template <class Op, class T>
__attribute__((noinline)) Vec<T> loadPadded(const T* row, int x, int width) {
  constexpr int lanes = Vec<T>::lanes;
  alignas(32) T block[lanes];
  for (int i = 0; i < lanes; ++i) block[i] = x + i >= 0 && x + i < width ? row[x + i] : Op::template nothing<T>;
  return load(block);
}

// p after taking in the pixels beside it in the neighbouring row, one or three: one after the other, so that one that
// is not a number hides no other.
template <class Op, class T>
ZEB_INLINE Vec<T> grownBy(Vec<T> p, const T* row, int x, int width, bool eight) {
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

// Vector x of a row and of its mask, and writing it.
template <class Op, class T>
ZEB_INLINE Vec<T> loadVector(const T* row, int x, int width) {
  return x <= width - Vec<T>::lanes ? load(row + x) : loadPadded<Op>(row, x, width);
}
template <class T>
ZEB_INLINE void storeVector(T* row, int x, int width, Vec<T> p) {
  if (x <= width - Vec<T>::lanes)
    store(row + x, p);
  else
    storeN(row + x, p, width - x);
}

// The first visit: takes in the row above (null for the first row), limits the row and closes it along itself.
template <class Op, class T>
void closeRow(T* row, const T* mask, const T* above, int width, bool eight) {
  constexpr int lanes = Vec<T>::lanes;
  Vec<T> beyond = splat(Op::template nothing<T>);
  for (int x = 0; x < width; x += lanes) {
    const Vec<T> m = loadVector<Op>(mask, x, width), old = loadVector<Op>(row, x, width);
    Vec<T> p = Op::limited(above ? grownBy<Op>(old, above, x, width, eight) : old, m);
    p = swept<Op, Sweep::rightwards>(p, m, beyond);
    if (!identical(p, old)) storeVector(row, x, width, p);
    beyond = p;
  }
  beyond = splat(Op::template nothing<T>);
  for (int x = (width - 1) / lanes * lanes; x >= 0; x -= lanes) {
    const Vec<T> m = loadVector<Op>(mask, x, width), old = loadVector<Op>(row, x, width);
    const Vec<T> p = swept<Op, Sweep::leftwards>(old, m, beyond);
    if (!identical(p, old)) storeVector(row, x, width, p);
    beyond = p;
  }
}

// The elements of p that differ from the old ones, nothing elsewhere.
template <class Op, class T>
ZEB_INLINE Vec<T> changes(Vec<T> p, Vec<T> old) {
  const Vec<T> nothing = splat(Op::template nothing<T>);
  if constexpr (std::is_integral_v<T>)
    return select(equal(p, old), nothing, p);
  else
    return select(greater(p, old) | less(p, old), p, nothing);
}

// The first vector of a closed row that its neighbour changes, of those from x to last, or the one behind them. All of
// them have a pixel on either side.
template <class Op, bool eight, class T>
__attribute__((noinline)) int firstToChange(const T* row, const T* mask, const T* neighbour, int x, int last) {
  for (; x <= last; x += Vec<T>::lanes) {
    const Vec<T> old = load(row + x);
    Vec<T> p = Op::grown(old, load(neighbour + x));
    if (eight) p = Op::grown(Op::grown(p, load(neighbour + x - 1)), load(neighbour + x + 1));
    if (!identical(Op::limited(p, load(mask + x)), old)) break;
  }
  return x;
}

// What a visit is about: few columns, or all of them, where most vectors may stay as they are.
enum class Columns { few, all };

// A later visit: a closed row takes in columns from..to of a neighbouring row and is closed again. changed(x, p) is
// told of every vector that did and of the elements of it that are new, twice where both sweeps changed it. Returns the
// vectors that were looked at.
template <class Op, Columns columns, class T, class Changed>
ZEB_INLINE int takeIn(T* row, const T* mask, const T* neighbour, int width, bool eight, int from, int to,
                      const Changed& changed) {
  constexpr int lanes = Vec<T>::lanes;
  const int start = from / lanes * lanes;
  int x = start;
  int last = -1;
  if constexpr (columns == Columns::all) last = to < width - lanes ? to : width - lanes - 1;
  for (; x <= to; x += lanes) {
    if constexpr (columns == Columns::all) {
      if (x > 0 && x <= last) {
        x = (eight ? firstToChange<Op, true, T> : firstToChange<Op, false, T>)(row, mask, neighbour, x, last);
        if (x > to) break;
      }
    }
    Vec<T> old = loadVector<Op>(row, x, width), m = loadVector<Op>(mask, x, width);
    Vec<T> p = Op::limited(grownBy<Op>(old, neighbour, x, width, eight), m);
    if (identical(p, old)) continue;
    const int first = x;
    // A closed row's pixels beyond the change have nothing new to give.
    Vec<T> beyond = splat(Op::template nothing<T>);
    for (;;) {
      p = swept<Op, Sweep::rightwards>(p, m, beyond);
      if (identical(p, old)) break;
      storeVector(row, x, width, p);
      changed(x, changes<Op>(p, old));
      beyond = p;
      x += lanes;
      if (x >= width) break;
      old = loadVector<Op>(row, x, width), m = loadVector<Op>(mask, x, width);
      p = x <= to ? Op::limited(grownBy<Op>(old, neighbour, x, width, eight), m) : old;
    }
    // Back over the change and on as far as it reaches.
    beyond = splat(Op::template nothing<T>);
    for (int back = x - lanes; back >= 0; back -= lanes) {
      const Vec<T> q = loadVector<Op>(row, back, width);
      p = swept<Op, Sweep::leftwards>(q, loadVector<Op>(mask, back, width), beyond);
      if (!identical(p, q)) {
        storeVector(row, back, width, p);
        changed(back, changes<Op>(p, q));
      } else if (back < first) {
        break;
      }
      beyond = p;
    }
  }
  return (x - start) / lanes;
}

// ---- The order of the fronts ----

// Larger for values that are farther in the direction of growth; the leading 32 bits of a double decide.
template <class Op, class T>
uint32_t rankOf(T value) {
  uint32_t order;
  if constexpr (std::is_integral_v<T>) {
    order = value;
  } else {
    memcpy(&order, reinterpret_cast<const char*>(&value) + sizeof(T) - sizeof order, sizeof order);
    order ^= order >> 31 ? ~0u : 1u << 31;
  }
  return Op::template nothing<Zeb8u> == 0 ? order : ~order;
}

// Of the element that is farthest in the direction of growth.
template <class Op, class T>
uint32_t rankOf(Vec<T> top) {
  const Vec<T> nothing = splat(Op::template nothing<T>);
  top = Op::grown(top, movedDown<16>(top, nothing));
  top = Op::grown(top, movedDown<8>(top, nothing));
  if constexpr (sizeof(T) <= 4) top = Op::grown(top, movedDown<4>(top, nothing));
  if constexpr (sizeof(T) <= 2) top = Op::grown(top, movedDown<2>(top, nothing));
  if constexpr (sizeof(T) == 1) top = Op::grown(top, movedDown<1>(top, nothing));
  alignas(32) T values[Vec<T>::lanes];
  store(values, top);
  return rankOf<Op>(values[0]);
}

// ---- The image ----

// Flags of a row: the row above, or below, has changed since this row took it in.
constexpr Zeb8u aboveChanged = 1;
constexpr Zeb8u belowChanged = 2;

// Passes over the flagged rows suit changes that are many; where they visit many vectors for each that changes, or have
// visited the whole image often, the remaining changes are followed one by one, those first that go farthest in value:
// what they reach then seldom changes again, so that corridors cost what they are long.
template <class Op, class T>
class Reconstruction {
 public:
  Reconstruction(Rows<const T> mask, Rows<T> marker, ZebiSize size, bool eight, Zeb8u* flags, Fronts fronts)
      : mask_(mask), marker_(marker), size_(size), eight_(eight), flags_(flags), fronts_(fronts) {}

  void run() {
    const int h = size_.height;
    zebsSet_8u(aboveChanged | belowChanged, flags_, h);
    for (int y = 0; y < h; ++y) {
      flags_[y] = belowChanged;
      closeRow<Op>(marker_[y], mask_[y], y > 0 ? marker_[y - 1] : static_cast<T*>(nullptr), size_.width, eight_);
    }
    flags_[h - 1] = 0;
    for (bool down = false; pass(down); down = !down) {
    }
    while (gather()) follow();
  }

 private:
  static constexpr int64_t vectorsForAChange = 16, visitsOfTheImage = 4;

  // Visits the rows whose row above (below) has changed; false when the rest is better followed.
  bool pass(bool down) {
    const int h = size_.height;
    int64_t changedVectors = 0, before = visited_;
    for (int k = 0; k < h; ++k) {
      const int y = down ? k : h - 1 - k;
      const Zeb8u flag = down ? aboveChanged : belowChanged;
      if (!(flags_[y] & flag)) continue;
      flags_[y] &= static_cast<Zeb8u>(~flag);
      bool any = false;
      visited_ += visit<Columns::all>(y, down ? y - 1 : y + 1, 0, size_.width - 1, [&](int, Vec<T>) {
        any = true;
        ++changedVectors;
      });
      if (any) spread(y);
    }
    const int64_t image = static_cast<int64_t>(h) * ((size_.width - 1) / Vec<T>::lanes + 1);
    return changedVectors > 0 && changedVectors * vectorsForAChange >= visited_ - before &&
           visited_ < visitsOfTheImage * image;
  }

  // Visits all flagged rows and keeps what changes there as fronts. False when no row was flagged.
  bool gather() {
    bool any = false;
    for (int y = 0; y < size_.height; ++y) {
      const Zeb8u flag = flags_[y];
      flags_[y] = 0;  // a front that finds no room sets flags again
      if (flag & aboveChanged) advance(y, y - 1, 0, size_.width - 1);
      if (flag & belowChanged) advance(y, y + 1, 0, size_.width - 1);
      any |= flag != 0;
    }
    return any;
  }
  void follow() {
    while (!fronts_.empty()) {
      const Front f = fronts_.pop();
      const int from = f.first - eight_ > 0 ? f.first - eight_ : 0;
      const int to = f.last + eight_ < size_.width ? f.last + eight_ : size_.width - 1;
      if (f.y > 0) advance(f.y - 1, f.y, from, to);
      if (f.y < size_.height - 1) advance(f.y + 1, f.y, from, to);
    }
  }

  // Row y takes in columns of a row beside it; what changes there are fronts, one for vectors in turn of the same rank.
  void advance(int y, int neighbour, int from, int to) {
    constexpr int lanes = Vec<T>::lanes;
    Front front{0, 0, y, 0, -1};
    visit<Columns::few>(y, neighbour, from, to, [&](int x, Vec<T> p) {
      const uint32_t rank = rankOf<Op>(p);
      if (rank != front.rank || x > front.last + 1 || x + lanes < front.first || front.last < 0) {
        add(front);
        front = {rank, 0, y, x, x + lanes - 1};
      } else if (x > front.last) {
        front.last = x + lanes - 1;
      } else if (x < front.first) {
        front.first = x;
      }
    });
    add(front);
    // A corridor that runs down the image meets new memory in every row.
    const int soon = y + 8 * (y - neighbour);
    if (front.last >= 0 && soon >= 0 && soon < size_.height) {
      __builtin_prefetch(marker_[soon] + front.first, 1);
      __builtin_prefetch(mask_[soon] + front.first);
    }
  }
  // Where there is no room for a front it flags its neighbours.
  ZEB_INLINE void add(Front front) {
    if (front.last < 0) return;
    if (const int lost = fronts_.push(front); lost >= 0) spread(lost);
  }
  template <Columns columns, class Changed>
  ZEB_INLINE int visit(int y, int neighbour, int from, int to, const Changed& changed) {
    return takeIn<Op, columns>(marker_[y], mask_[y], marker_[neighbour], size_.width, eight_, from, to, changed);
  }
  void spread(int y) {
    if (y > 0) flags_[y - 1] |= belowChanged;
    if (y < size_.height - 1) flags_[y + 1] |= aboveChanged;
  }

  Rows<const T> mask_;
  Rows<T> marker_;
  ZebiSize size_;
  bool eight_;
  Zeb8u* flags_;
  Fronts fronts_;
  int64_t visited_ = 0;
};

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
  if (auto bad = firstFailure(
          checked(roi, image(pSrc, srcStep).ofAnyStep(), image(pSrcDst, srcDstStep).ofAnyStep(), also(pBuf)),
          isNeighbourhood(norm, zebStsErrBadArgument), require(bufferSize<T>(roi) <= INT32_MAX, zebStsErrOverflow)))
    return bad;
  Scratch scratch(pBuf, bufferSize<T>(roi));
  Zeb8u* flags = scratch.take<Zeb8u>(roi.height, 1);
  const Fronts fronts(flags + roi.height, scratch.left());
  const Rows mask(pSrc, srcStep);
  const Rows marker(pSrcDst, srcDstStep);
  Reconstruction<Op, T>(mask, marker, roi, norm == zebiNormInf, flags, fronts).run();
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
