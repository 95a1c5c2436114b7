// The pixels that a statistic looks at: a region, or one channel of it, whole or under a mask, in one image or in two.
//
// They are handed out in scan order as runs. A run begins in a column that is a multiple of 32 and has a multiple of 32
// elements, so that kernels know neither masks nor channels nor ends of rows. Runs lie in the image where they can; the
// end of a row, a channel or what a mask selects is first gathered into a block, in which all that is not selected
// holds a filling: a value that leaves the statistic as it is.
#pragma once

#include <stdint.h>

#include "core/checks.h"
#include "core/image.h"

namespace zeb {

// The images of a call and the region in them.
class Selection {
 public:
  template <class T, int channels>
  Selection(ZebiSize roi, Image<const T, channels> image)
      : roi_(roi), elementBytes_(sizeof(T)), channels_(channels), first_(image.pixels), firstStep_(image.step) {}

  // A second image of the same kind.
  template <class T, int channels>
  Selection& against(Image<const T, channels> image) {
    second_ = image.pixels, secondStep_ = image.step, pair_ = true;
    return *this;
  }
  Selection& under(Image<const Zeb8u> mask) {
    mask_ = mask.pixels, maskStep_ = mask.step, masked_ = true;
    return *this;
  }
  // 1, 2 or 3.
  Selection& ofChannel(int coi) {
    coi_ = coi;
    return *this;
  }

  // The standard checks, then the channel.
  ZebStatus flaw(Mandatory outputs) const;

  bool isPair() const { return pair_; }
  bool isMasked() const { return masked_; }
  uint64_t pixels() const { return static_cast<uint64_t>(roi_.width) * static_cast<uint64_t>(roi_.height); }

 private:
  friend class Runs;

  ZebiSize roi_;
  int elementBytes_, channels_, coi_ = 1;
  bool pair_ = false, masked_ = false;
  const void* first_;
  const void* second_ = nullptr;
  const Zeb8u* mask_ = nullptr;
  int firstStep_, secondStep_ = 0, maskStep_ = 0;
};

struct Run {
  const void *first, *second;
  int n;              // elements, the filling included
  int column, row;    // of the first one
  int pixels;         // elements without the filling behind the row
  const Zeb8u* mask;  // of these pixels, or null
};

class Runs {
 public:
  static constexpr int grain = 32;

  // Runs of at most `longest` elements, a multiple of the grain. Rows that follow each other without a gap are one
  // long row where `joined` allows it. The filling is the bits of an element, repeated to 32.
  Runs(const Selection& selection, int longest, bool joined, uint32_t filling = 0);

  // The next run, or false behind the last.
  bool next(Run& run) {
    if (row_ == size_.height) return false;
    if (!direct_ || size_.width - column_ < grain) return gatherNext(run);
    const int whole = (size_.width - column_) & -grain;
    run = {at(selection_.first_, selection_.firstStep_),
           selection_.pair_ ? at(selection_.second_, selection_.secondStep_) : nullptr,
           whole < longest_ ? whole : longest_,
           column_,
           row_,
           whole < longest_ ? whole : longest_,
           nullptr};
    return goOn(run);
  }
  // next() goes on with the run that begins there.
  void seek(int column, int row) { column_ = column, row_ = row; }

  // Goes to the first selected pixel and tells its element; false when the mask is empty.
  bool seekFirst(void* element);
  void fillWith(uint32_t filling) { filling_ = filling; }

  // Pixels that were selected in the runs so far; those under a mask only.
  uint64_t selected() const { return selected_; }
  // Where a column and row of joined rows are in the region.
  ZebiPoint place(int column, int row) const;

 private:
  // Elements of a block: with two of them and the widest elements, half of what a function may take of the stack.
  static constexpr int blockElements = 1024;

  // The pixel that the next run begins with.
  const Zeb8u* at(const void* image, int step) const {
    return static_cast<const Zeb8u*>(image) + static_cast<ptrdiff_t>(row_) * step +
           static_cast<ptrdiff_t>(column_) * pixelBytes_;
  }
  bool goOn(const Run& run) {
    column_ += run.pixels;
    if (column_ == size_.width) column_ = 0, ++row_;
    return true;
  }
  bool gatherNext(Run& run);
  const void* gather(Zeb8u* block, const Zeb8u* from, const Zeb8u* mask, int pixels, bool counts);

  const Selection& selection_;
  ZebiSize size_;  // with joined rows
  int longest_, pixelBytes_;
  bool direct_;  // runs lie in the images but for the ends of rows
  uint32_t filling_;
  int column_ = 0, row_ = 0;
  uint64_t selected_ = 0;
  Zeb8u blocks_[2][4 * blockElements];
};

}  // namespace zeb
