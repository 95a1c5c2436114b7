// Connected components by runs: a row's pixels stand for runs of linked pixels, runs of two rows are joined where their
// pixels are linked. 32 pixels at a time, as bits.
//
// Runs are numbered in scan order over the whole image, and of two joined sets the one with the smaller first run
// leads, so that components are found in the scan order of their first pixels.
#pragma once

#include <stdint.h>

#include "core/scratch.h"
#include "core/vec.h"

namespace zeb {

// 32 pixels of a row, the leftmost in bit 0.
struct RunWord {
  uint32_t taking;  // pixels that belong to a run
  uint32_t linked;  // those of them that are linked to the pixel on their left
  int before;       // runs of the image that start before these pixels

  uint32_t starts() const { return taking & ~linked; }
  // The number of the run of pixel `bit`.
  ZEB_INLINE int run(int bit) const { return before + __builtin_popcount(starts() << (31 - bit)) - 1; }
};

// What links 32 pixels to those of the row above: right above, to the left of that, to the right of that.
struct LinksUp {
  uint32_t above, left, right;
};

inline int64_t wordsOf(int width) {
  return (int64_t{width} + 31) / 32;
}
// Bytes of two rows of words; they lie on a boundary of 4.
inline int64_t runRowsBytes(int width) {
  return 2 * wordsOf(width) * static_cast<int64_t>(sizeof(RunWord));
}

// Two rows of words, the current one and the one above it.
class RunRows {
 public:
  RunRows(Scratch& scratch, int width) : words_(static_cast<int>(wordsOf(width))) {
    row_[0] = scratch.take<RunWord>(words_, 4);
    row_[1] = scratch.take<RunWord>(words_, 4);
  }
  int words() const { return words_; }
  RunWord* row(int y) const { return row_[y & 1]; }

 private:
  int words_;
  RunWord* row_[2];
};

// Fills a row of words and returns the number of runs up to its end. at(i) yields word i with its bits.
template <class At>
ZEB_INLINE int findRuns(RunWord* row, int words, int runs, At at) {
  for (int i = 0; i < words; ++i) {
    RunWord word = at(i);
    word.before = runs;
    runs += __builtin_popcount(word.starts());
    row[i] = word;
  }
  return runs;
}

// Joins the runs of a row with those above. links(i) yields the links of the pixels of word i; of links that join the
// same two runs, or follow from other links, most are left out.
template <bool eight, class Links, class Join>
ZEB_INLINE void joinRows(const RunWord* above, const RunWord* row, int words, Links links, Join join) {
  uint32_t linkBefore = 0;  // the link right above of the pixel before the word
  for (int i = 0; i < words; ++i) {
    const RunWord word = row[i], up = above[i];
    const LinksUp link = links(i);
    const uint32_t shifted = link.above << 1 | linkBefore;
    linkBefore = link.above >> 31;
    for (uint32_t bits = link.above & ~(shifted & word.linked & up.linked); bits; bits &= bits - 1) {
      const int k = __builtin_ctz(bits);
      join(up.run(k), word.run(k));
    }
    if (!eight) continue;
    for (uint32_t bits = link.left & ~(link.above & up.linked) & ~(shifted & word.linked); bits; bits &= bits - 1) {
      const int k = __builtin_ctz(bits);
      join(k > 0 ? up.run(k - 1) : above[i - 1].run(31), word.run(k));
    }
    const uint32_t nextLinked = i + 1 < words ? above[i + 1].linked << 31 : 0;
    for (uint32_t bits =
             link.right & ~(link.above & (up.linked >> 1 | nextLinked)) & ~((link.above & word.linked) >> 1);
         bits; bits &= bits - 1) {
      const int k = __builtin_ctz(bits);
      join(k < 31 ? up.run(k + 1) : above[i + 1].run(0), word.run(k));
    }
  }
}

}  // namespace zeb
