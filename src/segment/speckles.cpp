// Small regions of similar values are overwritten: regions are joined from runs of linked pixels, their areas counted.
#include "core/checks.h"
#include "core/entry.h"
#include "core/loops.h"
#include "segment/pixel_bits.h"
#include "segment/runs.h"

namespace {

using namespace zeb;

int64_t bufferBytes(ZebiSize roi) {
  return 4 * boundedProduct(roi.width, roi.height) + runRowsBytes(roi.width) + 8;
}

// Which pixels are left alone, and when two are linked. Signed words are seen as unsigned ones, shifted by half the
// range.
template <class T>
class Rule {
 public:
  Rule(T newVal, T maxDiff, T shift) : newVal_(splat(newVal)), maxDiff_(splat(maxDiff)), shift_(splat(shift)) {}

  ZEB_INLINE uint32_t taking(const T* p, int n) const { return differing(p, n, newVal_); }
  // Bits of those of n pixels at p that are similar to the one at the same place of q, 0 <= n <= 32.
  ZEB_INLINE uint32_t similar(int n, const T* p, const T* q) const {
    return bitsWhere(
        n, [this](Vec<T> a, Vec<T> b) ZEB_BODY { return near(a, b); }, p, q);
  }

 private:
  ZEB_INLINE Vec<T> near(Vec<T> a, Vec<T> b) const {
    if constexpr (std::is_floating_point_v<T>) {
      return atMost(abs(a - b), maxDiff_);
    } else {
      a = a ^ shift_, b = b ^ shift_;
      return atMost(subSat(a, b) | subSat(b, a), maxDiff_);
    }
  }
  Vec<T> newVal_, maxDiff_, shift_;
};

// Regions as runs: a run holds the number of one that leads it, or, where it leads, minus the area.
class Regions {
 public:
  explicit Regions(int* memory) : run_(memory) {}

  // The runs of a row of words, as far as they lie in it.
  void count(const RunWord* row, int words) {
    for (int i = 0; i < words; ++i) {
      int run = row[i].before - 1;
      uint32_t starts = row[i].starts();
      // What comes before the first start goes on from the word before.
      if (const uint32_t more = row[i].taking & ((starts & -starts) - 1)) run_[run] -= __builtin_popcount(more);
      while (starts) {
        const uint32_t from = starts & -starts;
        starts &= starts - 1;
        run_[++run] = -__builtin_popcount(row[i].taking & ((starts & -starts) - from));
      }
    }
  }
  ZEB_INLINE void join(int a, int b) {
    a = leader(a), b = leader(b);
    if (a == b) return;
    const int first = a < b ? a : b, other = a < b ? b : a;
    run_[first] += run_[other];
    run_[other] = first;
  }
  // From now on every run holds minus its region's area.
  void close(int runs) {
    for (int run = 0; run < runs; ++run)
      if (run_[run] >= 0) run_[run] = run_[run_[run]];
  }
  // The pixels of a word that belong to regions of at most maxSize pixels; the regions are closed.
  uint32_t small(RunWord word, int maxSize) const {
    int run = word.before - 1;
    uint32_t starts = word.starts(), bits = 0;
    if (const uint32_t more = word.taking & ((starts & -starts) - 1))
      if (run_[run] >= -maxSize) bits = more;
    while (starts) {
      const uint32_t from = starts & -starts;
      starts &= starts - 1;
      if (run_[++run] >= -maxSize) bits |= word.taking & ((starts & -starts) - from);
    }
    return bits;
  }

 private:
  ZEB_INLINE int leader(int run) {
    for (;;) {
      const int next = run_[run];
      if (next < 0) return run;
      if (run_[next] < 0) return next;
      run = run_[run] = run_[next];
    }
  }
  int* run_;
};

template <class T>
int findRegionRuns(const T* row, int width, const Rule<T>& rule, RunWord* words, int count, int runs) {
  uint32_t before = 0;
  return findRuns(words, count, runs, [&](int i) ZEB_BODY {
    const T* const p = row + 32 * i;
    const int n = width - 32 * i < 32 ? width - 32 * i : 32;
    const uint32_t taking = rule.taking(p, n);
    // The first pixel of the row has none on its left.
    const uint32_t similar = i > 0 ? rule.similar(n, p, p - 1) : rule.similar(width > 32 ? 32 : n - 1, p + 1, p) << 1;
    const uint32_t linked = taking & (taking << 1 | before) & similar;
    before = taking >> 31;
    return RunWord{taking, linked, 0};
  });
}

template <class T, bool eight>
void joinRegions(const T* rowAbove, const T* row, int width, const Rule<T>& rule, const RunWord* above,
                 const RunWord* words, int count, Regions& regions) {
  const auto links = [&](int i) ZEB_BODY {
    const T *const p = row + 32 * i, *const q = rowAbove + 32 * i;
    const int left = width - 32 * i, n = left < 32 ? left : 32;
    const uint32_t taking = words[i].taking, up = above[i].taking;
    LinksUp link = {taking & up, 0, 0};
    if (link.above) link.above &= rule.similar(n, p, q);
    if (eight) {
      link.left = taking & (up << 1 | (i > 0 ? above[i - 1].taking >> 31 : 0));
      if (link.left)
        link.left &= i > 0 ? rule.similar(n, p, q - 1) : rule.similar(width > 32 ? 32 : n - 1, p + 1, q) << 1;
      link.right = taking & (up >> 1 | (i + 1 < count ? above[i + 1].taking << 31 : 0));
      if (link.right) link.right &= rule.similar(left > 32 ? 32 : left - 1, p, q + 1);
    }
    return link;
  };
  joinRows<eight>(above, words, count, links, [&](int a, int b) ZEB_BODY { regions.join(a, b); });
}

// Writes a value to those of 32 pixels whose bit is set.
template <class T>
ZEB_INLINE void write(T* p, uint32_t bits, T value) {
  constexpr int lanes = Vec<T>::lanes;
  if (bits == ~0u) {
    for (int k = 0; k < 32; k += lanes) store(p + k, splat(value));
    return;
  }
  for (; bits; bits &= bits - 1) p[__builtin_ctz(bits)] = value;
}

template <class T>
void markSpeckles(Rows<T> rows, ZebiSize roi, T newVal, int maxSize, const Rule<T>& rule, ZebiNorm norm,
                  Zeb8u* pBuffer) {
  Scratch scratch(pBuffer, bufferBytes(roi));
  const RunRows run(scratch, roi.width);
  const int words = run.words();
  Regions regions(scratch.take<int>(int64_t{roi.width} * roi.height, 4));
  int runs = 0;
  for (int y = 0; y < roi.height; ++y) {
    runs = findRegionRuns<T>(rows[y], roi.width, rule, run.row(y), words, runs);
    regions.count(run.row(y), words);
    if (y == 0) continue;
    (norm == zebiNormInf ? joinRegions<T, true> : joinRegions<T, false>)(rows[y - 1], rows[y], roi.width, rule,
                                                                         run.row(y - 1), run.row(y), words, regions);
  }
  regions.close(runs);
  runs = 0;
  for (int y = 0; y < roi.height; ++y) {
    // The whole row is looked at before anything in it changes.
    runs = findRegionRuns<T>(rows[y], roi.width, rule, run.row(y), words, runs);
    for (int i = 0; i < words; ++i)
      if (const uint32_t bits = regions.small(run.row(y)[i], maxSize)) write(rows[y] + 32 * i, bits, newVal);
  }
}

template <class T, class D>
ZebStatus speckleChecks(T* pSrcDst, int srcDstStep, ZebiSize roi, int maxSize, D maxDiff, ZebiNorm norm,
                        const Zeb8u* pBuffer) {
  return firstFailure(checked(roi, image(pSrcDst, srcDstStep), also(pBuffer)), atLeastOne(maxSize),
                      require(maxDiff >= 0, zebStsErrBadArgument), isNeighbourhood(norm),
                      require(bufferBytes(roi) <= INT32_MAX, zebStsErrOverflow));
}

template <class T>
T limited(int maxDiff) {
  constexpr int largest = static_cast<T>(~T(0));
  return static_cast<T>(maxDiff < largest ? maxDiff : largest);
}

}  // namespace

ZEB_ENTRY(zebiMarkSpecklesGetBufferSize)(ZebiSize roiSize, ZebDataType dataType, int* pBufferSize) {
  if (auto bad =
          firstFailure(present(pBufferSize), hasArea(roiSize),
                       require(dataType == zeb8u || dataType == zeb16u || dataType == zeb16s || dataType == zeb32f,
                               zebStsErrDataType)))
    return bad;
  return reportSize(bufferBytes(roiSize), pBufferSize);
}

ZEB_ENTRY(zebiMarkSpeckles_8u_C1IR)
(Zeb8u* pSrcDst, int srcDstStep, ZebiSize roiSize, Zeb8u newVal, int maxSize, int maxDiff, ZebiNorm norm,
 Zeb8u* pBuffer) {
  if (auto bad = speckleChecks(pSrcDst, srcDstStep, roiSize, maxSize, maxDiff, norm, pBuffer)) return bad;
  const Rule<Zeb8u> rule(newVal, limited<Zeb8u>(maxDiff), 0);
  markSpeckles(Rows(pSrcDst, srcDstStep), roiSize, newVal, maxSize, rule, norm, pBuffer);
  return zebStsOk;
}
ZEB_ENTRY(zebiMarkSpeckles_16u_C1IR)
(Zeb16u* pSrcDst, int srcDstStep, ZebiSize roiSize, Zeb16u newVal, int maxSize, int maxDiff, ZebiNorm norm,
 Zeb8u* pBuffer) {
  if (auto bad = speckleChecks(pSrcDst, srcDstStep, roiSize, maxSize, maxDiff, norm, pBuffer)) return bad;
  const Rule<Zeb16u> rule(newVal, limited<Zeb16u>(maxDiff), 0);
  markSpeckles(Rows(pSrcDst, srcDstStep), roiSize, newVal, maxSize, rule, norm, pBuffer);
  return zebStsOk;
}
ZEB_ENTRY(zebiMarkSpeckles_16s_C1IR)
(Zeb16s* pSrcDst, int srcDstStep, ZebiSize roiSize, Zeb16s newVal, int maxSize, int maxDiff, ZebiNorm norm,
 Zeb8u* pBuffer) {
  if (auto bad = speckleChecks(pSrcDst, srcDstStep, roiSize, maxSize, maxDiff, norm, pBuffer)) return bad;
  const auto value = static_cast<Zeb16u>(newVal);
  const Rule<Zeb16u> rule(value, limited<Zeb16u>(maxDiff), 0x8000);
  markSpeckles(Rows(reinterpret_cast<Zeb16u*>(pSrcDst), srcDstStep), roiSize, value, maxSize, rule, norm, pBuffer);
  return zebStsOk;
}
ZEB_ENTRY(zebiMarkSpeckles_32f_C1IR)
(Zeb32f* pSrcDst, int srcDstStep, ZebiSize roiSize, Zeb32f newVal, int maxSize, Zeb32f maxDiff, ZebiNorm norm,
 Zeb8u* pBuffer) {
  if (auto bad = speckleChecks(pSrcDst, srcDstStep, roiSize, maxSize, maxDiff, norm, pBuffer)) return bad;
  const Rule<Zeb32f> rule(newVal, maxDiff, 0);
  markSpeckles(Rows(pSrcDst, srcDstStep), roiSize, newVal, maxSize, rule, norm, pBuffer);
  return zebStsOk;
}
