// Kernels, divisors and row pointers for the separable filters.
#pragma once

#include <algorithm>

#include "support/image.h"

namespace test {

// Small taps of either sign, smoothing taps, taps whose absolute sum is just at the limit of 16-bit sums of bytes or
// one beyond it, and taps at the ends of the type, which wrap.
template <class K>
std::vector<K> randomKernel(int taps, int kind, Random& random) {
  std::vector<K> kernel(taps);
  if constexpr (std::is_floating_point_v<K>) {
    for (auto& k : kernel) k = kind == 3 ? extremeValue<K>(random) : random.real(-1, 1);
  } else {
    for (auto& k : kernel) k = static_cast<K>(kind == 3 ? extremeValue<K>(random) : random.within(0, 2 + kind * 3));
    if (kind == 0 && std::is_signed_v<K>)
      for (auto& k : kernel) k = static_cast<K>(random.within(-2, 2));
    if (kind == 2) {
      std::fill(kernel.begin(), kernel.end(), K(1));
      kernel[random.within(0, taps - 1)] = static_cast<K>(128 - (taps - 1) + random.within(0, 1));
      if (std::is_signed_v<K> && random.within(0, 1))
        for (auto& k : kernel) k = static_cast<K>(-k);
    }
  }
  return kernel;
}

inline int randomDivisor(bool positive, Random& random) {
  constexpr int divisors[] = {1,     1,     2,     3,         4,  6,  9,  16,  25,   128,     256,      1000,
                              32768, 65536, 16385, INT32_MAX, -1, -2, -7, -16, -256, -100000, INT32_MIN};
  return divisors[random.within(0, positive ? 15 : 22)];
}

// Row pointers in an array that ends at an inaccessible page.
template <class T>
class RowPointers {
 public:
  explicit RowPointers(const Image<T>& rows)
      : bytes_(static_cast<size_t>(rows.size().height) * sizeof(T*), Place::back) {
    for (int y = 0; y < rows.size().height; ++y) get()[y] = rows.pixels(0, y);
  }
  T** get() const { return reinterpret_cast<T**>(bytes_.data()); }

 private:
  GuardedBytes bytes_;
};

}  // namespace test
