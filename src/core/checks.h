// The vocabulary of argument checks: one predicate per rule, each yielding the status of the broken rule or zebStsOk.
//
// A binding states its images; the standard order of rules is one call, and the rules of the family's own follow:
//
//   if (auto bad = firstFailure(checked(roi, image(pSrc, srcStep), image<3>(pDst, dstStep), also(pBuffer)),
//                               require(maskSize == 3 || maskSize == 5, zebStsErrMaskSize)))
//     return bad;
#pragma once

#include <stdint.h>

#include "core/image.h"
#include "zebcv/types.h"

namespace zeb {

template <class... Pointer>
constexpr ZebStatus present(const Pointer*... pointers) {
  return (... && (pointers != nullptr)) ? zebStsOk : zebStsErrNullPointer;
}

constexpr ZebStatus atLeastOne(int count) {
  return count >= 1 ? zebStsOk : zebStsErrSize;
}

constexpr ZebStatus hasArea(ZebiSize size) {
  return size.width >= 1 && size.height >= 1 ? zebStsOk : zebStsErrSize;
}

template <class T>
constexpr ZebStatus wholeElements(int step) {
  return step % static_cast<int>(sizeof(T)) == 0 ? zebStsOk : zebStsErrNotEvenStep;
}

// Square kernels come in two sizes.
constexpr ZebStatus isMaskSize(int mask) {
  return mask == zebMskSize3x3 || mask == zebMskSize5x5 ? zebStsOk : zebStsErrMaskSize;
}

// Neighbours of a pixel: the eight of the chessboard metric or the four of the city block.
constexpr ZebStatus isNeighbourhood(ZebiNorm norm, ZebStatus otherwise = zebStsErrNorm) {
  return norm == zebiNormInf || norm == zebiNormL1 ? zebStsOk : otherwise;
}

// A rule of a family's own: its condition and the status of breaking it.
constexpr ZebStatus require(bool condition, ZebStatus otherwise) {
  return condition ? zebStsOk : otherwise;
}

template <class... Status>
constexpr ZebStatus firstFailure(Status... statuses) {
  ZebStatus first = zebStsOk;
  (void)(... || ((first = statuses) != zebStsOk));
  return first;
}

// Arguments that have to be there and have no other rule: scratch, states, tables.
struct Mandatory {
  bool all;
  bool isPresent() const { return all; }
  bool holdsRow(int) const { return true; }
  bool holdsWholeElements() const { return true; }
};
template <class... Pointer>
constexpr Mandatory also(const Pointer*... pointers) {
  return {(... && (pointers != nullptr))};
}

// An image that may be missing; its rules hold where it is there.
template <class T, int channels>
struct Optional {
  Image<T, channels> image;

  bool isPresent() const { return true; }
  bool holdsRow(int width) const { return !*this || image.holdsRow(width); }
  bool holdsWholeElements() const { return !*this || image.holdsWholeElements(); }

  explicit operator bool() const { return image.isPresent(); }
  // Null where there is no image.
  T* row(int y) const { return *this ? image.rows()[y] : nullptr; }
};
template <class T, int channels>
constexpr Optional<T, channels> optional(Image<T, channels> image) {
  return {image};
}

// The standard order: pointers, the region's area, the minimum of every step, whole elements in every step.
template <class... Subject>
inline ZebStatus checked(ZebiSize roi, const Subject&... subjects) {
  return firstFailure(require((... && subjects.isPresent()), zebStsErrNullPointer), hasArea(roi),
                      require((... && subjects.holdsRow(roi.width)), zebStsErrStep),
                      require((... && subjects.holdsWholeElements()), zebStsErrNotEvenStep));
}

// Products of counts of bytes that stop at 2^50 instead of wrapping, so that sums of some of them are safe too.
inline int64_t boundedProduct(int64_t a, int64_t b) {
  constexpr int64_t bound = int64_t(1) << 50;
  if (a > bound || b > bound) return bound;
  return b != 0 && a > bound / b ? bound : a * b;
}

// Writes a byte count that was formed in 64 bits, or reports that it does not fit.
inline ZebStatus reportSize(int64_t bytes, int* pSize) {
  if (bytes < 0 || bytes > INT32_MAX) return zebStsErrOverflow;
  *pSize = static_cast<int>(bytes);
  return zebStsOk;
}

}  // namespace zeb
