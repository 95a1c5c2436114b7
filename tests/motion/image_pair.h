// Two pyramids whose levels lie in guarded images, and the same levels for the reference.
#pragma once

#include <memory>
#include <vector>

#include "reference/flow.h"
#include "support/image.h"

namespace test {

template <class T>
struct ImagePair {
  ImagePair() = default;
  ImagePair(const ImagePair&) = delete;
  ImagePair& operator=(const ImagePair&) = delete;
  ~ImagePair() {
    for (ZebiPyramid* pyramid : pyramids) zebiPyramidFree(pyramid);
  }

  // Makes the plane level l of one pyramid. The levels have their number.
  void setLevel(int side, int l, const ref::Plane<T>& plane, Layout layout) {
    images.push_back(std::make_unique<Image<T>>(plane, layout));
    pyramids[side]->pImage[l] = reinterpret_cast<Zeb8u*>(images.back()->pixels());
    pyramids[side]->pStep[l] = images.back()->step();
    auto& level = levels[static_cast<size_t>(l)];
    auto& exact = side ? level.second : level.first;
    exact = ref::Plane<double>(plane.width, plane.height);
    for (size_t i = 0; i < plane.data.size(); ++i) exact.data[i] = static_cast<double>(plane.data[i]);
    level.scale = pyramids[side]->pRate[l];
  }

  ZebiPyramid* pyramids[2] = {};
  std::vector<std::unique_ptr<Image<T>>> images;
  std::vector<ref::FlowLevel> levels;
};

}  // namespace test
