// Masks by their columns: every distinct set of rows that a column of the mask has is taken once along the columns of
// the image, straight from the source rows, and a result combines one shifted line for each column of the mask.
//
// Sets are taken from small to large; one that contains the one before goes on from its extremum. So a disc of n rows
// costs n taps along the columns and n along the row, where its elements are as many as its area.
#pragma once

#include "morph/state.h"

namespace zeb {

// What is to be done for a mask, in room that the caller provides.
struct ColumnPlan {
  struct Set {
    int column;   // of the mask, the first that has it
    int rows;     // how many rows of it the taps add
    bool onward;  // from the set before
  };

  int left, right, top, bottom;  // of all elements
  int sets, taps;
  Set* set;     // sets of them
  int* setOf;   // for each column from left on, or -1 where it has no element
  int* tapRow;  // mask rows, set after set
  int columns;  // with elements

  // Loads and stores for a vector of results.
  int64_t cost() const { return taps + 2 * int64_t(sets) + columns; }

  // Bytes that make() needs for a mask of a state; rows of its columns are told as bits.
  using Bits = uint32_t;
  static constexpr int rowsInWord = 32;
  static constexpr int64_t wordsOf(int rows) { return (int64_t(rows) + rowsInWord - 1) / rowsInWord; }
  static constexpr int64_t roomFor(ZebiSize mask) {
    return mask.width * (int64_t(sizeof(Set)) + 4 * (1 + wordsOf(mask.height) + mask.height)) + 32;
  }
  void make(const Zeb8u* mask, ZebiSize size, Scratch* scratch);
};

// Bytes of scratch for a region, the plan included.
int64_t columnScratchSize(const ColumnPlan& plan, int64_t width, int pixelBytes, ZebiSize mask);

template <class Op>
void columnRegion(const ColumnPlan& plan, ZebiPoint anchor, int channels, const BorderedImage& source,
                  const RowOutput<typename Op::Type>& output, Scratch scratch);

}  // namespace zeb
