// Line segments by the progressive probabilistic Hough transform (J. Matas, C. Galambos and J. Kittler, 2000).
#include <string.h>

#include "core/entry.h"
#include "core/image.h"
#include "core/narrow.h"
#include "core/services.h"
#include "core/state_id.h"
#include "core/streaming.h"
#include "feature/hough.h"

// The record of tables: three words, a pair per angle, and the identifier. Its memory is the caller's, at any address.
struct ZebiHoughProbSpec {
  Zeb32f deltaRho, deltaTheta;
  Zeb32s hint;
};
static_assert(sizeof(ZebiHoughProbSpec) == 12, "three words");

namespace {

using namespace zeb;

// Cosine and sine over deltaRho.
struct Normal {
  Zeb32f c, s;
};

const Normal* normals(const ZebiHoughProbSpec* spec) {
  return reinterpret_cast<const Normal*>(spec + 1);
}
Normal* normals(ZebiHoughProbSpec* spec) {
  return reinterpret_cast<Normal*>(spec + 1);
}

// Bytes of the record with the pairs of angles 0 .. steps.
constexpr int64_t specSize(int64_t steps) {
  return steps * 8 + 24;
}
static_assert(specSize(0) == sizeof(ZebiHoughProbSpec) + sizeof(Normal) + sizeof(uint32_t));

constexpr uint32_t specId = stateId(StateKind::houghProbabilistic, zeb8u, 1);

// Where the identifier stands is told by the deltas; those that no record can have lead nowhere.
ZebStatus isSpec(const ZebiHoughProbSpec* spec) {
  if (positiveDeltas({spec->deltaRho, spec->deltaTheta}) != zebStsOk) return zebStsErrContextMatch;
  const int64_t steps = houghAngleSteps(spec->deltaTheta);
  if (specSize(steps) > INT32_MAX) return zebStsErrContextMatch;
  uint32_t id;
  memcpy(&id, normals(spec) + steps + 1, sizeof(id));
  return isState(id, specId);
}

// Scratch words may stand at odd addresses: the reported size leaves no room for alignment.
template <class T>
using Anywhere __attribute__((aligned(1))) = T;

int64_t maskStep(ZebiSize roi) {
  return (roi.width >> 3) + 1;
}
int64_t bufferSize(ZebiSize roi, int64_t cells, int64_t angles) {
  return maskStep(roi) * roi.height +
         boundedProduct(boundedProduct(cells, angles) + int64_t{roi.height} * roi.width, 4);
}

struct Settings {
  ZebiSize roi;
  int threshold, lineLength, lineGap;
  int angles, cells;
  const Normal* normals;
};

// Random numbers by multiply-with-carry, the same in every call.
class Draw {
 public:
  unsigned next(unsigned n) {
    const uint64_t t = 4164903690ull * x_ + carry_;
    carry_ = static_cast<unsigned>(t >> 32);
    x_ = static_cast<unsigned>(t);
    return x_ % n;
  }

 private:
  unsigned x_ = 0xFFFFFFFF, carry_ = 0xFFFFFFFF;
};

// Takes pixels off the list in random order. Which comes next does not depend on what becomes of it: some are drawn
// ahead, so that no load waits for a division.
class Drawing {
 public:
  Drawing(Anywhere<Zeb32s>* list, unsigned count, int width) : list_(list), count_(count), width_(width) {}

  bool next(ZebiPoint* p) {
    if (taken_ == drawn_) {
      drawn_ = count_ < ahead ? count_ : ahead, taken_ = 0;
      for (unsigned i = 0; i < drawn_; ++i) {
        const unsigned at = draw_.next(count_);
        const int pixel = list_[at];
        list_[at] = list_[--count_];
        points_[i] = {pixel % width_, pixel / width_};
      }
    }
    if (drawn_ == 0) return false;
    *p = points_[taken_++];
    return true;
  }

 private:
  static constexpr unsigned ahead = 16;
  Anywhere<Zeb32s>* list_;
  unsigned count_;
  int width_;
  Draw draw_;
  ZebiPoint points_[ahead];
  unsigned drawn_ = 0, taken_ = 0;
};

// One bit per pixel: edge pixels that no segment has taken.
class EdgeMask {
 public:
  EdgeMask(Zeb8u* bits, ZebiSize roi) : bits_(bits), step_(static_cast<int>(maskStep(roi))) {}
  bool has(int x, int y) const { return bits_[at(x, y)] >> (x & 7) & 1; }
  void set(int x, int y) { bits_[at(x, y)] |= static_cast<Zeb8u>(1 << (x & 7)); }
  void clear(int x, int y) { bits_[at(x, y)] &= static_cast<Zeb8u>(~(1 << (x & 7))); }

 private:
  size_t at(int x, int y) const { return static_cast<size_t>(y) * step_ + (x >> 3); }
  Zeb8u* bits_;
  int step_;
};

// Where the count of cell r of angle k stands. Neighbouring angles have a pixel in neighbouring cells, so four angles
// share cache lines, eight cells of each in one line, where there is room; else one angle follows the other.
struct Layout {
  int angles;      // side by side
  int64_t stride;  // counts for these
  static constexpr int cells = 8;

  static Layout sideBySide(int allCells) { return {4, (int64_t{allCells} + cells - 1) / cells * (4 * cells)}; }
  static Layout plain(int allCells) { return {1, allCells}; }
  int64_t counts(int allAngles) const { return stride * ((allAngles + angles - 1) / angles); }
  // Of angle k: cell r stands at start(k) + r, side by side 3 (r rounded down to whole groups of cells) further.
  int start(int k) const { return static_cast<int>(stride * (k / angles) + k % angles * cells); }
};

// Votes of single pixels over all angles. A count starts at -threshold, so that its sign tells whether it is strong.
// Runs under rounding toward zero, which the sums and products see as well as the conversion.
template <class T>
class Votes {
 public:
  Votes(Anywhere<T>* counts, const Layout& layout, const Settings& s) : counts_(counts), layout_(layout), s_(s) {
    fillRun<T>(counts, layout.counts(s.angles), static_cast<T>(-s.threshold), false);
    for (int i = 0; i < 8; ++i) starts_[i] = layout.start(i);
  }

  // Adds the votes of a pixel. The angle of the strongest of its cells, the smallest among equals, or -1 where all are
  // below the threshold.
  int add(int x, int y) {
    int best = -1, angle = -1;
    forEachGroup(x, y, [&](const Zeb32s* place, int first, int n) {
      if (!increment(counts_, place, place + n)) return;
      for (int i = 0; i < n; ++i)
        if (counts_[place[i]] > best) best = counts_[place[i]], angle = first + i;
    });
    return angle;
  }
  void remove(int x, int y) {
    forEachGroup(x, y, [counts = counts_](const Zeb32s* place, int, int n) {
#pragma GCC unroll 4
      for (int i = 0; i < n; ++i) --counts[place[i]];
    });
  }

 private:
  static constexpr int group = 192;  // angles whose places are found before any of their cells is touched

  template <class F>
  ZEB_INLINE void forEachGroup(int x, int y, F touch) {
    for (int k = 0; k < s_.angles; k += group) {
      const int n = s_.angles - k < group ? s_.angles - k : group;
      alignas(32) Zeb32s place[group];
      places(x, y, k, n, place);
      touch(place, k, n);
    }
  }

  // Whether any is strong then. A function of its own, whose few values all stay in registers.
  __attribute__((noinline)) static bool increment(Anywhere<T>* counts, const Zeb32s* place, const Zeb32s* end) {
    bool strong = false;
#pragma GCC unroll 4
    for (; place != end; ++place) {
      Anywhere<T>& count = counts[*place];
      count = static_cast<T>(count + 1);
      if (__builtin_expect(count >= 0, 0)) strong = true;
    }
    return strong;
  }

  __attribute__((noinline)) void places(int x, int y, int first, int n, Zeb32s* place) const {
    const V32f fx = splat(static_cast<Zeb32f>(x)), fy = splat(static_cast<Zeb32f>(y));
    const V32s origin = splat((s_.cells - 1) / 2), last = splat(s_.cells - 1), zero = splat(0);
    const V32s wholes = splat(layout_.angles == 1 ? 0 : -Layout::cells);
    const V32s eightAngles = splat(layout_.start(8));
    V32s start = load(starts_) + splat(layout_.start(first));
    const auto* normals = reinterpret_cast<const Zeb32f*>(s_.normals + first);
    const auto eight = [&](int k, V32f c, V32f s) {
      const V32s rho = truncateToInt(fx * c + fy * s) + origin, cell = min(max(rho, zero), last);
      const V32s before = cell & wholes;
      store(place + k, cell + before + before + before + start);
      start = start + eightAngles;
    };
    V32f c, s;
    int k = 0;
    for (; k <= n - 8; k += 8) {
      loadPairs(normals + 2 * k, c, s);
      eight(k, c, s);
    }
    if (k == n) return;
    loadPairs(normals + 2 * k, n - k, c, s);
    eight(k, c, s);
  }

  Anywhere<T>* counts_;
  const Layout layout_;
  const Settings& s_;
  alignas(32) Zeb32s starts_[8];
};

// Steps from a pixel along a line, one pixel of its longer extent at a time, the other coordinate in 16.16 fixed point.
class Walk {
 public:
  Walk(ZebiPoint from, Normal normal, bool forwards) {
    // The line runs along (-sin, cos).
    const Zeb32f dx = -normal.s, dy = normal.c;
    alongX_ = __builtin_fabsf(dx) > __builtin_fabsf(dy);
    const Zeb32f longer = alongX_ ? dx : dy, shorter = alongX_ ? dy : dx;
    unit_ = longer < 0 ? -1 : 1;
    slope_ = static_cast<int>(shorter / __builtin_fabsf(longer) * 65536.0f);
    if (!forwards) unit_ = -unit_, slope_ = -slope_;
    position_ = alongX_ ? from.x : from.y;
    fixed_ = (static_cast<int64_t>(alongX_ ? from.y : from.x) << 16) + 32768;
  }
  ZebiPoint at() const {
    const int other = static_cast<int>(fixed_ >> 16);
    return alongX_ ? ZebiPoint{position_, other} : ZebiPoint{other, position_};
  }
  void step() { position_ += unit_, fixed_ += slope_; }

 private:
  bool alongX_;
  int position_, unit_;
  int64_t fixed_, slope_;
};

bool inside(ZebiPoint p, ZebiSize roi) {
  return p.x >= 0 && p.y >= 0 && p.x < roi.width && p.y < roi.height;
}
bool same(ZebiPoint a, ZebiPoint b) {
  return a.x == b.x && a.y == b.y;
}
int distance(int a, int b) {
  return a < b ? b - a : a - b;
}

// The last edge pixel that a walk reaches over gaps of at most the allowed length.
ZebiPoint farthest(const EdgeMask& mask, const Settings& s, ZebiPoint from, Normal normal, bool forwards) {
  ZebiPoint end = from;
  int gap = 0;
  for (Walk walk(from, normal, forwards); inside(walk.at(), s.roi); walk.step()) {
    const ZebiPoint p = walk.at();
    if (mask.has(p.x, p.y)) {
      end = p, gap = 0;
    } else if (++gap > s.lineGap) {
      break;
    }
  }
  return end;
}

// Draws all pixels of the list, which shrinks by it, and stores the segments. Returns the status of the call.
template <class T>
ZebStatus findSegments(const Settings& s, EdgeMask& mask, Anywhere<Zeb32s>* list, unsigned count, Votes<T>& votes,
                       ZebiRect* out, int most, int* stored) {
  Drawing drawing(list, count, s.roi.width);
  *stored = 0;
  for (ZebiPoint p; drawing.next(&p);) {
    if (!mask.has(p.x, p.y)) continue;
    const int angle = votes.add(p.x, p.y);
    if (angle < 0) continue;

    const Normal normal = s.normals[angle];
    const ZebiPoint end[2] = {farthest(mask, s, p, normal, true), farthest(mask, s, p, normal, false)};
    const bool segment = distance(end[0].x, end[1].x) >= s.lineLength || distance(end[0].y, end[1].y) >= s.lineLength;
    for (int side = 0; side < 2; ++side) {
      for (Walk walk(p, normal, side == 0);; walk.step()) {
        const ZebiPoint q = walk.at();
        if (mask.has(q.x, q.y)) {
          if (segment) votes.remove(q.x, q.y);
          mask.clear(q.x, q.y);
        }
        if (same(q, end[side])) break;
      }
    }
    if (!segment) continue;
    if (*stored == most) return zebStsWarnLinesTruncated;
    out[(*stored)++] = {end[0].x, end[0].y, end[1].x, end[1].y};
  }
  return zebStsOk;
}

// The most pixels that one cell can hold: columns or rows, whichever the line crosses steeply, times the rows or
// columns of up to three cells' widths. (Truncation makes the cell at 0 twice as wide, the limits of rho add a part.)
double mostInCell(ZebiSize roi, Zeb32f deltaRho) {
  return (roi.width > roi.height ? roi.width : roi.height) * (4.3 * static_cast<double>(deltaRho) + 2);
}

// Fills mask and list from the image; the number of edge pixels.
unsigned collect(Rows<const Zeb8u> src, ZebiSize roi, EdgeMask& mask, Anywhere<Zeb32s>* list) {
  unsigned count = 0;
  for (int y = 0; y < roi.height; ++y) {
    const Zeb8u* row = src[y];
    const auto take = [&](int x) {
      mask.set(x, y);
      list[count++] = y * roi.width + x;
    };
    int x = 0;
    for (; x <= roi.width - 32; x += 32)
      for (unsigned set = ~topBits(equal(load(row + x), splat(Zeb8u(0)))); set; set &= set - 1)
        take(x + __builtin_ctz(set));
    for (; x < roi.width; ++x)
      if (row[x]) take(x);
  }
  return count;
}

struct Sizes {
  int64_t spec, buffer;

  Sizes(ZebiSize roi, ZebiPoint_32f delta)
      : spec(specSize(houghAngleSteps(delta.y))),
        buffer(bufferSize(roi, houghCells(roi, delta.x), houghAngleSteps(delta.y) + 1)) {}
  bool fit() const { return spec <= INT32_MAX && buffer <= INT32_MAX; }
};

template <class T>
ZebStatus run(const Settings& s, const Layout& layout, EdgeMask& mask, Anywhere<Zeb32s>* list, unsigned count,
              Zeb8u* counts, ZebiRect* out, int most, int* stored) {
  Votes<T> votes(reinterpret_cast<Anywhere<T>*>(counts), layout, s);
  const RoundTowardZero mode;
  return findSegments<T>(s, mask, list, count, votes, out, most, stored);
}

}  // namespace

ZEB_ENTRY(zebiHoughProbLineGetSize_8u_C1R)(ZebiSize roiSize, ZebiPoint_32f delta, int* pSpecSize, int* pBufSize) {
  if (auto bad = firstFailure(present(pSpecSize, pBufSize), hasArea(roiSize), positiveDeltas(delta))) return bad;
  const Sizes sizes(roiSize, delta);
  if (!sizes.fit()) return zebStsErrOverflow;
  *pSpecSize = static_cast<int>(sizes.spec);
  *pBufSize = static_cast<int>(sizes.buffer);
  return zebStsOk;
}

ZEB_ENTRY(zebiHoughProbLineInit_8u32f_C1R)(ZebiSize roiSize, ZebiPoint_32f delta, int hint, ZebiHoughProbSpec* pSpec) {
  if (auto bad = firstFailure(hasArea(roiSize), positiveDeltas(delta), present(pSpec))) return bad;
  if (!Sizes(roiSize, delta).fit()) return zebStsErrOverflow;
  const int64_t angles = houghAngleSteps(delta.y) + 1;
  *pSpec = {delta.x, delta.y, hint};
  Normal* out = normals(pSpec);
  Zeb32f theta = 0;
  for (int64_t k = 0; k < angles; ++k, theta += delta.y) {
    out[k] = {static_cast<Zeb32f>(cos(static_cast<double>(theta))) / delta.x,
              static_cast<Zeb32f>(sin(static_cast<double>(theta))) / delta.x};
  }
  memcpy(out + angles, &specId, sizeof(specId));
  return zebStsOk;
}

ZEB_ENTRY(zebiHoughProbLine_8u32f_C1R)
(const Zeb8u* pSrc, int srcStep, ZebiSize roiSize, int threshold, int lineLength, int lineGap, ZebiRect* pRect,
 int maxLineCount, int* pLineCount, Zeb8u* pBuffer, const ZebiHoughProbSpec* pSpec) {
  if (auto bad =
          firstFailure(present(pSrc, pRect, pLineCount, pBuffer, pSpec), hasArea(roiSize), atLeastOne(maxLineCount),
                       require(threshold >= 1 && lineLength >= 0 && lineGap >= 0, zebStsErrBadArgument)))
    return bad;
  if (auto bad = isSpec(pSpec)) return bad;
  const int64_t cells = houghCells(roiSize, pSpec->deltaRho), angles = houghAngleSteps(pSpec->deltaTheta) + 1;
  const int64_t size = bufferSize(roiSize, cells, angles);
  if (size > INT32_MAX) return zebStsErrOverflow;
  const int64_t maskBytes = maskStep(roiSize) * roiSize.height;
  Zeb8u* bits = pBuffer + (size - maskBytes);
  zebsZero_8u(bits, static_cast<int>(maskBytes));
  EdgeMask mask(bits, roiSize);
  auto* list = reinterpret_cast<Anywhere<Zeb32s>*>(bits - 4 * static_cast<int64_t>(roiSize.width) * roiSize.height);
  const unsigned count = collect(Rows(pSrc, srcStep), roiSize, mask, list);
  *pLineCount = 0;
  if (count == 0 || cells == 0) return zebStsOk;
  // A delta beyond the image leaves a single cell.
  Settings s = {roiSize,       threshold, lineLength, lineGap, static_cast<int>(angles), static_cast<int>(cells),
                normals(pSpec)};
  const double inCell = mostInCell(roiSize, pSpec->deltaRho), mostVotes = count < inCell ? count : inCell;
  if (threshold > mostVotes) s.threshold = static_cast<int>(mostVotes) + 1;
  const Layout plain = Layout::plain(s.cells), side = Layout::sideBySide(s.cells);
  if (mostVotes + s.threshold > INT16_MAX)
    return run<Zeb32s>(s, plain, mask, list, count, pBuffer, pRect, maxLineCount, pLineCount);
  // Half of the room for 32 bits is free.
  constexpr int line = 64;
  const bool room = side.counts(s.angles) * 2 + line <= cells * angles * 4;
  return run<Zeb16s>(s, room ? side : plain, mask, list, count,
                     pBuffer + (room ? -reinterpret_cast<uintptr_t>(pBuffer) % line : 0), pRect, maxLineCount,
                     pLineCount);
}
