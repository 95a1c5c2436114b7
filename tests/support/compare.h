// Comparison of results with references.
#pragma once

#include <gtest/gtest.h>
#include <string.h>

#include <iomanip>

#include "support/image.h"

namespace test {

// The same bits; two values that are not numbers count as the same whatever their payload.
template <class T>
bool same(T a, T b) {
  if constexpr (std::is_floating_point_v<T>) {
    if (std::isnan(a) && std::isnan(b)) return true;
  }
  return memcmp(&a, &b, sizeof(T)) == 0;
}

// The results that a thread has seen so far as one number, the same wherever the same is computed. All values that are
// not numbers count as one.
class Digest {
 public:
  template <class T>
  void add(T v) {
    if constexpr (std::is_floating_point_v<T>) {
      if (std::isnan(v)) v = std::numeric_limits<T>::quiet_NaN();
    }
    Zeb8u bytes[sizeof(T)];
    memcpy(bytes, &v, sizeof(T));
    for (const Zeb8u b : bytes) value_ = (value_ ^ b) * 0x100000001B3u;
  }
  uint64_t value() const { return value_; }

 private:
  uint64_t value_ = 0xCBF29CE484222325u;
};
inline Digest& digestOfResults() {
  thread_local Digest digest;
  return digest;
}

// Within an absolute tolerance; equal infinities pass, a value that is not a number meets only its like.
template <class T>
bool near(T a, T b, double tolerance) {
  const double x = static_cast<double>(a), y = static_cast<double>(b);
  if (std::isnan(x) || std::isnan(y)) return std::isnan(x) && std::isnan(y);
  if (std::isinf(x) || std::isinf(y)) return x == y;
  return std::fabs(x - y) <= tolerance;
}

template <class T>
std::string shown(T v) {
  std::ostringstream s;
  if constexpr (std::is_floating_point_v<T>) {
    s << std::setprecision(std::numeric_limits<T>::max_digits10) << v;
  } else {
    s << static_cast<long long>(v);
  }
  return s.str();
}

// Compares two planes pixel by pixel. On a difference the message names the first pixel, both values, how many differ,
// and draws a map of the pixels around it ('#' differs, '.' agrees).
template <class T, class Equal>
testing::AssertionResult agree(const ref::Plane<T>& got, const ref::Plane<T>& want, Equal equal) {
  if (got.width != want.width || got.height != want.height || got.channels != want.channels)
    return testing::AssertionFailure() << "shapes differ: " << got.width << " x " << got.height << " x " << got.channels
                                       << " and " << want.width << " x " << want.height << " x " << want.channels;
  for (const T v : got.data) digestOfResults().add(v);
  const auto differs = [&](int x, int y) {
    for (int c = 0; c < got.channels; ++c)
      if (!equal(got.at(x, y, c), want.at(x, y, c))) return true;
    return false;
  };
  int count = 0, firstX = -1, firstY = -1;
  for (int y = 0; y < got.height; ++y)
    for (int x = 0; x < got.width; ++x)
      if (differs(x, y) && count++ == 0) firstX = x, firstY = y;
  if (count == 0) return testing::AssertionSuccess();
  int c = 0;
  while (equal(got.at(firstX, firstY, c), want.at(firstX, firstY, c))) ++c;
  auto failure = testing::AssertionFailure();
  failure << count << " of " << got.width * got.height << " pixels differ, first (" << firstX << ", " << firstY
          << ") channel " << c << ": got " << shown(got.at(firstX, firstY, c)) << ", want "
          << shown(want.at(firstX, firstY, c)) << "\n";
  const int left = firstX > 8 ? firstX - 8 : 0;
  for (int y = firstY > 1 ? firstY - 1 : 0; y < got.height && y < firstY + 7; ++y) {
    for (int x = left; x < got.width && x < left + 64; ++x) failure << (differs(x, y) ? '#' : '.');
    failure << "\n";
  }
  return failure;
}

template <class T>
testing::AssertionResult agree(const ref::Plane<T>& got, const ref::Plane<T>& want) {
  return agree(got, want, same<T>);
}

// A result image against its reference: every pixel, and nothing written around them.
template <class T>
testing::AssertionResult agree(const char* function, const Image<T>& got, const ref::Plane<T>& want) {
  auto result = agree(got.plane(), want);
  if (!result) return result << function << ", destination " << got.describe();
  if (!got.intact()) return testing::AssertionFailure() << function << " wrote outside its rows, " << got.describe();
  return result;
}

}  // namespace test
