// An image in plain memory, the form in which the references are written.
#pragma once

#include <vector>

#include "zebcv.h"

namespace ref {

template <class T>
struct Plane {
  int width = 0, height = 0, channels = 1;
  std::vector<T> data;

  Plane() = default;
  Plane(int w, int h, int c = 1, T value = T())
      : width(w), height(h), channels(c), data(static_cast<size_t>(w) * h * c, value) {}

  T& at(int x, int y, int c = 0) { return data[(static_cast<size_t>(y) * width + x) * channels + c]; }
  const T& at(int x, int y, int c = 0) const { return data[(static_cast<size_t>(y) * width + x) * channels + c]; }
};

}  // namespace ref
