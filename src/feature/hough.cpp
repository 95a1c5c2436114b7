// Lines by the Hough transform over the whole accumulator or a part of it (P. Hough, 1962; R. Duda and P. Hart, 1972).
//
// One angle is accumulated at a time, so that its cells stay in the first-level cache. The edge pixels are listed once,
// a pair of 16-bit coordinates to a word, and one multiply-add gives eight of their cells at a time. Two accumulators
// take turns, because neighbouring pixels often vote for the same cell.
#include "feature/hough.h"

#include <string.h>

#include "core/entry.h"
#include "core/image.h"
#include "core/reduce.h"
#include "core/scratch.h"
#include "core/services.h"

namespace {

using namespace zeb;

struct Grid {
  ZebiSize roi;
  ZebiPoint_32f delta;
  int angles;  // A + 1
  int cells;   // nRho
  int origin() const { return (cells - 1) / 2; }
};

struct Line {
  int count, cell, angle, unused;
};

constexpr int fractionBits = 10, one = 1 << fractionBits;

// Cosine and sine with these fraction bits over deltaRho, rounded: beyond 32 bits for the least deltas.
struct Direction {
  int64_t c, s;
};

// The directions of one angle after the other.
class Directions {
 public:
  explicit Directions(ZebiPoint_32f delta) : scale_(one / static_cast<double>(delta.x)), step_(delta.y) {}

  Direction next() {
    const auto theta = static_cast<double>(theta_);
    theta_ += step_;
    return {rounded(cos(theta)), rounded(sin(theta))};
  }

 private:
  int64_t rounded(double v) const { return static_cast<int64_t>(__builtin_nearbyint(v * scale_)); }

  double scale_;
  Zeb32f step_, theta_ = 0;
};

// Where everything lies in the caller's buffer.
struct Workspace {
  Zeb32s* row[3];  // counts of the previous, current and next angle, with eight zero cells on either side
  Zeb32s* second;  // the other accumulator
  Line* lines;
  Zeb32s* pixels;
};

int64_t bufferSize(ZebiSize roi, ZebiPoint_32f delta, int64_t maxLineCount) {
  const int64_t pixels = boundedProduct(int64_t{4} * roi.width + 48, roi.height);
  return boundedProduct(houghCells(roi, delta.x), 16) + pixels + maxLineCount * 16 +
         boundedProduct(houghAngleSteps(delta.y), 8) + 264;
}

Workspace carve(Zeb8u* pBuffer, const Grid& grid, int maxLineCount) {
  Scratch scratch(pBuffer, bufferSize(grid.roi, grid.delta, maxLineCount));
  Workspace work;
  for (auto& row : work.row) {
    row = scratch.take<Zeb32s>(grid.cells + 16, 4) + 8;
    zebsZero_32s(row - 8, grid.cells + 16);
  }
  work.second = scratch.take<Zeb32s>(grid.cells, 4);
  zebsZero_32s(work.second, grid.cells);
  work.lines = scratch.take<Line>(maxLineCount, 4);
  work.pixels = scratch.take<Zeb32s>(int64_t{grid.roi.width} * grid.roi.height, 4);
  return work;
}

// ---- Votes ----

// The edge pixels as words (y << 16) | x; both below 2^15.
int listPixels(Rows<const Zeb8u> src, ZebiSize roi, Zeb32s* out) {
  int count = 0;
  for (int y = 0; y < roi.height; ++y) {
    const Zeb8u* row = src[y];
    int x = 0;
    for (; x <= roi.width - 32; x += 32) {
      for (unsigned set = ~topBits(equal(load(row + x), splat(Zeb8u(0)))); set; set &= set - 1)
        out[count++] = (y << 16) | (x + __builtin_ctz(set));
    }
    for (; x < roi.width; ++x)
      if (row[x]) out[count++] = (y << 16) | x;
  }
  return count;
}

// The cells of an angle that pixels of the image vote for, both ends included, and whether some of those votes have to
// be kept within the cells that there are.
struct Cells {
  int first, last;
  bool clamped;
};

int clampCell(int64_t cell, int cells) {
  return static_cast<int>(cell < 0 ? 0 : cell >= cells ? cells - 1 : cell);
}

Cells cellsOf(const Grid& grid, const Direction d) {
  const int64_t x = (grid.roi.width - 1) * d.c, y = (grid.roi.height - 1) * d.s;
  const auto cell = [&](int64_t rho) { return ((rho + one / 2) >> fractionBits) + grid.origin(); };
  const int64_t first = cell((x < 0 ? x : 0) + (y < 0 ? y : 0)), last = cell((x > 0 ? x : 0) + (y > 0 ? y : 0));
  return {clampCell(first, grid.cells), clampCell(last, grid.cells), first < 0 || last >= grid.cells};
}

// Adds one to each of `n` counts. A function of its own: the compiler would take the places out of vectors one by one.
__attribute__((noinline)) void increment(Zeb32s* counts, const Zeb32s* place, int n) {
#pragma GCC unroll 8
  for (int i = 0; i < n; ++i) ++counts[place[i]];
}

// One vote for each of the listed pixels; even and odd ones into different accumulators, `apart` counts from each
// other.
template <bool clamped>
void voteListed(const Zeb32s* pixels, int count, const Direction d, const Grid& grid, Zeb32s* row, int apart) {
  constexpr int most = 256;  // places that are found before any of their counts is touched
  const V16s factors = as<Zeb16s>(splat(static_cast<int>((d.s << 16) | (d.c & 0xFFFF))));
  const V32s half = splat(one / 2), last = splat(grid.cells - 1), zero = splat(0);
  const V32s origin = splat(grid.origin()),
             odd = as<Zeb32s>(splat(static_cast<uint64_t>(static_cast<uint32_t>(apart)) << 32));
  const V32s start = clamped ? origin : origin + odd;
  alignas(32) Zeb32s place[most];
  const auto places = [&](V32s words) {
    const V32s r = shiftRight<fractionBits>(dotPairs(as<Zeb16s>(words), factors) + half) + start;
    return clamped ? min(max(r, zero), last) + odd : r;
  };
  for (int i = 0; i < count; i += most) {
    const int n = count - i < most ? count - i : most;
    int k = 0;
    for (; k <= n - 8; k += 8) store(place + k, places(load(pixels + i + k)));
    if (k < n) store(place + k, places(loadN(pixels + i + k, n - k)));
    increment(row, place, n);
  }
}

// The same straight from the image, for coordinates or factors beyond 16 bits.
void voteImage(Rows<const Zeb8u> src, const Direction d, const Grid& grid, Zeb32s* row) {
  for (int y = 0; y < grid.roi.height; ++y) {
    const Zeb8u* pixels = src[y];
    for (int x = 0; x < grid.roi.width; ++x) {
      if (!pixels[x]) continue;
      const int64_t rho = static_cast<int64_t>(x) * d.c + static_cast<int64_t>(y) * d.s + one / 2;
      ++row[clampCell((rho >> fractionBits) + grid.origin(), grid.cells)];
    }
  }
}

// ---- Peaks ----

// The strongest lines so far: by count, the earlier found first among equals.
struct Strongest {
  Line* lines;
  int most;
  int count = 0;

  void add(const Line& line) {
    int low = 0, high = count;  // the first entry with a smaller count
    while (low < high) {
      const int middle = low + (high - low) / 2;
      if (lines[middle].count < line.count)
        high = middle;
      else
        low = middle + 1;
    }
    if (low == most) return;
    const int tail = (count < most ? count : most - 1) - low;
    memmove(lines + low + 1, lines + low, static_cast<size_t>(tail) * sizeof(Line));
    lines[low] = line;
    if (count < most) ++count;
  }
};

void searchRow(const Zeb32s* previous, const Zeb32s* row, const Zeb32s* next, Cells cells, int angle, int threshold,
               Strongest& strongest) {
  const V32s bound = splat(threshold);
  for (int r = cells.first; r <= cells.last; r += 8) {
    // Eight zero cells lie behind the last one.
    const V32s a = load(row + r);
    const V32s strong = greater(a, bound);
    if (!anyBit(strong)) continue;
    const int n = cells.last + 1 - r < 8 ? cells.last + 1 - r : 8;
    const V32s larger = greater(a, load(row + r - 1)) & greater(a, loadN(previous + r, n));
    const V32s smaller = greater(load(row + r + 1), a) | greater(loadN(next + r, n), a);
    for (unsigned found = topBits(andNot(smaller, strong & larger)); found; found &= found - 1) {
      const int k = r + __builtin_ctz(found);
      strongest.add({row[k], k, angle, 0});
    }
  }
}

// ---- The transform ----

// The cells and angles that take part, both ends included.
struct Window {
  int firstCell, lastCell, firstAngle, lastAngle;
};

// Counts the votes of one angle; which cells have any.
Cells accumulate(Rows<const Zeb8u> src, const Grid& grid, const Workspace& work, const Window& window, int listed,
                 int angle, const Direction d, Zeb32s* row) {
  zebsZero_32s(row, grid.cells);
  if (angle < window.firstAngle || angle > window.lastAngle) return {0, -1, false};
  const Cells cells = cellsOf(grid, d);
  if (listed >= 0) {
    (cells.clamped ? voteListed<true> : voteListed<false>)(work.pixels, listed, d, grid, row,
                                                           static_cast<int>(work.second - row));
    int r = cells.first;
    for (; r <= cells.last - 7; r += 8) {
      store(row + r, load(row + r) + load(work.second + r));
      store(work.second + r, splat(0));
    }
    for (; r <= cells.last; ++r) row[r] += work.second[r], work.second[r] = 0;
  } else {
    voteImage(src, d, grid, row);
  }
  zebsZero_32s(row, window.firstCell);
  if (window.lastCell < grid.cells - 1) zebsZero_32s(row + window.lastCell + 1, grid.cells - 1 - window.lastCell);
  return cells;
}

bool fits16(const Grid& grid) {
  // The largest factor is one / deltaRho.
  constexpr int longest = 1 << 15;
  constexpr Zeb32f largestFactor = 32000;
  return grid.roi.width <= longest && grid.roi.height <= longest && grid.delta.x >= one / largestFactor;
}

int transform(Rows<const Zeb8u> src, const Grid& grid, const Workspace& work, const Window& window, int threshold,
              int maxLineCount) {
  Directions directions(grid.delta);
  const int listed = fits16(grid) ? listPixels(src, grid.roi, work.pixels) : -1;
  Strongest strongest{work.lines, maxLineCount};
  Zeb32s *previous = work.row[0], *row = work.row[1], *next = work.row[2];
  Cells cells = accumulate(src, grid, work, window, listed, 0, directions.next(), row);
  for (int k = 0; k < grid.angles; ++k) {
    const Cells searched = cells;
    if (k + 1 < grid.angles)
      cells = accumulate(src, grid, work, window, listed, k + 1, directions.next(), next);
    else
      zebsZero_32s(next, grid.cells);
    searchRow(previous, row, next, searched, k, threshold, strongest);
    Zeb32s* oldest = previous;
    previous = row, row = next, next = oldest;
  }
  return strongest.count;
}

Zeb32f rhoOf(const Grid& grid, int cell) {
  return grid.delta.x * static_cast<Zeb32f>(cell - grid.origin());
}
Zeb32f thetaOf(const Grid& grid, int angle) {
  return grid.delta.y * static_cast<Zeb32f>(angle);
}

// The cells and angles inside a region of (rho, theta). An empty range ends before it starts.
Window windowOf(const Grid& grid, const ZebiPoint_32f* region) {
  Window w = {0, grid.cells - 1, 0, grid.angles - 1};
  while (w.firstCell < grid.cells && rhoOf(grid, w.firstCell) < region[0].x) ++w.firstCell;
  while (w.lastCell >= 0 && rhoOf(grid, w.lastCell) > region[1].x) --w.lastCell;
  while (w.firstAngle < grid.angles && thetaOf(grid, w.firstAngle) < region[0].y) ++w.firstAngle;
  while (w.lastAngle >= 0 && thetaOf(grid, w.lastAngle) > region[1].y) --w.lastAngle;
  return w;
}

ZebStatus checked(const Zeb8u* pSrc, int srcStep, ZebiSize roi, ZebiPoint_32f delta, int threshold,
                  const ZebiPoint_32f* pLine, int maxLineCount, const int* pLineCount, const Zeb8u* pBuffer) {
  return firstFailure(
      present(pSrc, pLine, pLineCount, pBuffer), require(srcStep >= 1, zebStsErrStep), hasArea(roi),
      atLeastOne(maxLineCount),
      require(delta.x > 0 && static_cast<double>(delta.x) <= static_cast<double>(roi.width) + roi.height && delta.y > 0,
              zebStsErrBadArgument),
      require(delta.y <= largestAngle && threshold >= 1, zebStsErrBadArgument));
}

ZebStatus lines(const Zeb8u* pSrc, int srcStep, ZebiSize roi, ZebiPoint_32f delta, int threshold, ZebiPoint_32f* pLine,
                int maxLineCount, int* pLineCount, Zeb8u* pBuffer, const ZebiPoint_32f* region) {
  if (bufferSize(roi, delta, maxLineCount) > INT32_MAX) return zebStsErrOverflow;
  const Grid grid = {roi, delta, static_cast<int>(houghAngleSteps(delta.y)) + 1,
                     static_cast<int>(houghCells(roi, delta.x))};
  const Workspace work = carve(pBuffer, grid, maxLineCount);
  const Window all = {0, grid.cells - 1, 0, grid.angles - 1};
  const int count =
      transform(Rows(pSrc, srcStep), grid, work, region ? windowOf(grid, region) : all, threshold, maxLineCount);
  for (int i = 0; i < count; ++i) pLine[i] = {rhoOf(grid, work.lines[i].cell), thetaOf(grid, work.lines[i].angle)};
  *pLineCount = count;
  return zebStsOk;
}

}  // namespace

ZEB_ENTRY(zebiHoughLineGetSize_8u_C1R)(ZebiSize roiSize, ZebiPoint_32f delta, int maxLineCount, int* pBufSize) {
  if (auto bad = firstFailure(present(pBufSize), hasArea(roiSize), positiveDeltas(delta))) return bad;
  return reportSize(bufferSize(roiSize, delta, maxLineCount), pBufSize);
}

ZEB_ENTRY(zebiHoughLine_8u32f_C1R)
(const Zeb8u* pSrc, int srcStep, ZebiSize roiSize, ZebiPoint_32f delta, int threshold, ZebiPoint_32f* pLine,
 int maxLineCount, int* pLineCount, Zeb8u* pBuffer) {
  if (auto bad = checked(pSrc, srcStep, roiSize, delta, threshold, pLine, maxLineCount, pLineCount, pBuffer))
    return bad;
  return lines(pSrc, srcStep, roiSize, delta, threshold, pLine, maxLineCount, pLineCount, pBuffer, nullptr);
}

ZEB_ENTRY(zebiHoughLine_Region_8u32f_C1R)
(const Zeb8u* pSrc, int srcStep, ZebiSize roiSize, ZebiPoint_32f* pLine, ZebiPoint_32f dstRoi[2], int maxLineCount,
 int* pLineCount, ZebiPoint_32f delta, int threshold, Zeb8u* pBuffer) {
  if (auto bad =
          firstFailure(present(pSrc, pLine, pLineCount, pBuffer, dstRoi),
                       checked(pSrc, srcStep, roiSize, delta, threshold, pLine, maxLineCount, pLineCount, pBuffer)))
    return bad;
  if (!(dstRoi[0].x <= dstRoi[1].x && dstRoi[0].y <= dstRoi[1].y)) return zebStsErrRange;
  return lines(pSrc, srcStep, roiSize, delta, threshold, pLine, maxLineCount, pLineCount, pBuffer, dstRoi);
}
