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
  // The number of the run of the last of some first pixels, or of the last one before the word where there are none.
  ZEB_INLINE int run(uint32_t pixels) const { return before + __builtin_popcount(starts() & pixels) - 1; }
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
    // All pixels up to the first one of the bits, and that one.
    const auto upTo = [](uint32_t bits) ZEB_BODY { return bits ^ (bits - 1); };
    for (uint32_t bits = link.above & ~(shifted & word.linked & up.linked); bits; bits &= bits - 1)
      join(up.run(upTo(bits)), word.run(upTo(bits)));
    if (!eight) continue;
    for (uint32_t bits = link.left & ~(link.above & up.linked) & ~(shifted & word.linked); bits; bits &= bits - 1)
      join(up.run(upTo(bits) >> 1), word.run(upTo(bits)));
    const RunWord next = i + 1 < words ? above[i + 1] : RunWord{0, 0, 0};
    const uint32_t startsNext = next.starts() & 1;
    for (uint32_t bits =
             link.right & ~(link.above & (up.linked >> 1 | next.linked << 31)) & ~((link.above & word.linked) >> 1);
         bits; bits &= bits - 1) {
      const uint32_t pixels = upTo(bits), last = pixels >> 31;
      join(up.run(pixels << 1 | 1) + static_cast<int>(last & startsNext), word.run(pixels));
    }
  }
}

}  // namespace zeb
