// Images as the library sees them: a pointer to the first pixel, the distance in bytes from row to row, the element
// type and the channels of a pixel.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include <type_traits>

#include "zebcv/types.h"

namespace zeb {

// Rows of elements.
template <class T>
class Rows {
 public:
  Rows(T* first, int step) : first_(first), step_(step) {}

  // Row y; y may be negative where rows above the region are known to be in memory.
  T* operator[](int y) const { return row(y); }
  // The same for a number that may be no int.
  T* row(ptrdiff_t y) const {
    using Byte = std::conditional_t<std::is_const_v<T>, const char, char>;
    return reinterpret_cast<T*>(reinterpret_cast<Byte*>(first_) + y * step_);
  }

  // The same rows from a pixel further right and down.
  Rows from(int column, int row) const { return Rows((*this)[row] + column, step_); }

  int step() const { return step_; }

 private:
  T* first_;
  int step_;
};

template <class T>
Rows(T*, int) -> Rows<T>;

// An argument that is an image. What its step must hold and be a multiple of is part of it, so that a list of images
// states the rules of a call (core/checks.h).
template <class T, int channels_ = 1>
struct Image {
  using Element = T;
  static constexpr int channels = channels_;

  T* pixels;
  int step;
  int64_t extra = 0;     // elements that a row must hold beyond those of the region
  bool anyStep = false;  // the step need not be a multiple of the element size

  Rows<T> rows() const { return {pixels, step}; }
  operator Rows<T>() const { return rows(); }
  operator Image<const T, channels_>() const { return {pixels, step, extra, anyStep}; }

  // Departures: rows that hold more or fewer elements than the region is wide, steps of any number of bytes.
  Image wider(int64_t elements) const { return {pixels, step, elements, anyStep}; }
  Image ofAnyStep() const { return {pixels, step, extra, true}; }

  bool isPresent() const { return pixels != nullptr; }
  // In 64 bits, so that no width can wrap.
  bool holdsRow(int width) const {
    return step >= (static_cast<int64_t>(width) * channels + extra) * static_cast<int64_t>(sizeof(T));
  }
  bool holdsWholeElements() const { return anyStep || step % static_cast<int>(sizeof(T)) == 0; }
};

template <int channels = 1, class T>
constexpr Image<T, channels> image(T* pixels, int step) {
  return {pixels, step};
}

}  // namespace zeb
