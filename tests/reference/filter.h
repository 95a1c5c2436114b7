// Borders and separable filters, from their definitions.
#pragma once

#include <stdint.h>

#include <cmath>
#include <limits>
#include <vector>

#include "reference/plane.h"

namespace ref {

// The place of position p of a line of n pixels under a base rule, one reflection or turn at a time; -1: the constant.
inline int borderSource(int rule, int p, int n) {
  while (p < 0 || p >= n) {
    switch (rule) {
      case zebBorderRepl:
        p += p < 0 ? 1 : -1;
        break;
      case zebBorderWrap:
        p += p < 0 ? n : -n;
        break;
      case zebBorderMirror:
        if (n == 1) return 0;
        p = p < 0 ? -p : 2 * (n - 1) - p;
        break;
      case zebBorderMirrorR:
        p = p < 0 ? -p - 1 : 2 * n - 1 - p;
        break;
      default:
        return -1;
    }
  }
  return p;
}

// A pixel's channel at column x of a region that starts at column originX of an image; columns beside the region follow
// the border type.
template <class T>
T bordered(const Plane<T>& image, int originX, int width, int x, int y, int c, ZebiBorderType type,
           const std::vector<T>& value) {
  const bool inMemory = (type & 15) == zebBorderInMem || (x < 0 && (type & zebBorderInMemLeft)) ||
                        (x >= width && (type & zebBorderInMemRight));
  if (inMemory) return image.at(originX + x, y, c);
  const int source = borderSource(type & 15, x, width);
  return source < 0 ? value[c] : image.at(originX + source, y, c);
}

// sum / divisor in single precision, clamped, to the nearest even or truncated.
template <class D>
D scaledSum(Zeb32f sum, int divisor, bool nearest) {
  Zeb32f v = sum * (1.0f / static_cast<Zeb32f>(divisor));
  v = std::fmax(v, static_cast<Zeb32f>(std::numeric_limits<D>::min()));
  v = std::fmin(v, static_cast<Zeb32f>(std::numeric_limits<D>::max()));
  return static_cast<D>(nearest ? std::nearbyint(v) : std::trunc(v));
}

inline Zeb16s fixedPointSum(int32_t sum, int divisor) {
  if (divisor == 1) return static_cast<Zeb16s>(sum);
  const auto f = static_cast<Zeb16s>(std::trunc(16384.0f / static_cast<Zeb32f>(divisor)));
  return static_cast<Zeb16s>((static_cast<int64_t>(sum) * f) >> 14);
}

// The sum of kernel[j] x read(j), modulo 2^32.
template <class K, class Read>
int64_t wholeSum(const std::vector<K>& kernel, Read read) {
  int64_t sum = 0;
  for (size_t j = 0; j < kernel.size(); ++j)
    sum += static_cast<int64_t>(kernel[j]) * static_cast<int64_t>(read(static_cast<int>(j)));
  return sum;
}

template <class Read>
Zeb32f floatSum(const std::vector<Zeb32f>& kernel, bool fromMiddle, Read read) {
  if (fromMiddle && kernel.size() == 3)
    return std::fma(kernel[2], read(2), std::fma(kernel[0], read(0), kernel[1] * read(1)));
  Zeb32f sum = kernel[0] * read(0);
  for (size_t j = 1; j < kernel.size(); ++j) sum = std::fma(kernel[j], read(static_cast<int>(j)), sum);
  return sum;
}

// One output of a filter: which arithmetic it uses follows from the types and from low.
template <class D, class S, class K, class Read>
D filtered(const std::vector<K>& kernel, int divisor, bool low, bool nearest, bool fromMiddle, Read read) {
  if constexpr (std::is_floating_point_v<S>) {
    return floatSum(kernel, fromMiddle, read);
  } else if constexpr (std::is_same_v<S, Zeb16u>) {
    const auto sum = static_cast<uint32_t>(wholeSum(kernel, read));
    return scaledSum<D>(static_cast<Zeb32f>(sum), divisor, nearest);
  } else {
    const auto sum = static_cast<int32_t>(static_cast<uint32_t>(wholeSum(kernel, read)));
    if (low) return static_cast<D>(fixedPointSum(sum, divisor));
    return scaledSum<D>(static_cast<Zeb32f>(sum), divisor, nearest);
  }
}

template <class D, class S, class K>
Plane<D> filterRows(const Plane<S>& image, int originX, int width, const std::vector<K>& kernel, int anchor,
                    ZebiBorderType type, const std::vector<S>& value, int divisor, bool low = false) {
  const int taps = static_cast<int>(kernel.size());
  Plane<D> out(width, image.height, image.channels);
  for (int y = 0; y < out.height; ++y)
    for (int x = 0; x < width; ++x)
      for (int c = 0; c < out.channels; ++c) {
        const bool inside = x >= anchor && x < width - (taps - 1 - anchor);
        const bool shortRow = taps == 3 && width <= 16;
        out.at(x, y, c) = filtered<D, S>(kernel, divisor, low, inside && !shortRow, false, [&](int j) {
          return bordered(image, originX, width, x - anchor + j, y, c, type, value);
        });
      }
  return out;
}

// image holds the row buffers, kernel.size() - 1 rows more than the result.
template <class D, class S, class K>
Plane<D> filterColumns(const Plane<S>& image, const std::vector<K>& kernel, int divisor, bool low = false) {
  const int elements = image.width * image.channels;
  Plane<D> out(image.width, image.height - static_cast<int>(kernel.size()) + 1, image.channels);
  for (int y = 0; y < out.height; ++y)
    for (int i = 0; i < elements; ++i) {
      const int x = i / image.channels, c = i % image.channels;
      const bool wholeBlock = i < elements - elements % 16;
      out.at(x, y, c) =
          filtered<D, S>(kernel, divisor, low, wholeBlock, true, [&](int j) { return image.at(x, y + j, c); });
    }
  return out;
}

}  // namespace ref
