// Masks as few overlapping pieces. Since an extremum may count a pixel twice, a piece that fits into the mask in
// several places is made once for every pixel of the image and then taken, like a pixel, wherever it fits.
//
// A piece is two of an earlier piece some way apart, the first is the pixel itself. The displacement is always the one
// by which most taps pair up (the replacement of the most frequent pair, as in grammar compression); what is left over
// joins where the piece fits over what is covered already. A line of n pixels takes log n pieces and two taps, a disc
// little more, a random mask a half to a third of its elements.
#pragma once

#include "morph/state.h"

namespace zeb {

struct CoverPlan {
  static constexpr int mostSide = 32, mostPieces = 12, mostTaps = 200;

  struct Piece {
    signed char from, dx, dy;  // the earlier piece, and the way from its first place to its second one, down or right
  };
  struct Tap {
    unsigned char piece, x, y;
  };

  int pieces;  // the pixel included; 0 where there is no plan
  int taps;
  Piece piece[mostPieces];
  Tap tap[1];  // as many as there are

  static int64_t bytes(ZebiSize mask);
  void make(const Zeb8u* mask, ZebiSize size);
};

// The plan in a state of a mask that is no rectangle.
CoverPlan* coverOf(const ZebiMorphState& state);

// False where the scratch has no room for it.
template <class Op>
bool coverRegion(const CoverPlan& plan, ZebiPoint anchor, int channels, const BorderedImage& source,
                 const RowOutput<typename Op::Type>& output, Scratch scratch);

}  // namespace zeb
