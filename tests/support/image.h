// Guarded images and their content.
#pragma once

#include <string.h>

#include <cmath>
#include <limits>
#include <sstream>
#include <string>
#include <type_traits>

#include "reference/plane.h"
#include "support/guard.h"
#include "support/random.h"

namespace test {

// How an image lies in memory: its place between the inaccessible pages, bytes between its rows, bytes before it.
struct Layout {
  Place place = Place::back;
  int padding = 0;
  int offset = 0;

  // Any place, any padding that the element type allows, any offset: pointers need no alignment.
  template <class T>
  static Layout random(Random& random) {
    Layout layout;
    layout.place = static_cast<Place>(random.within(0, 2));
    layout.padding = random.within(0, 2) == 0 ? 0 : random.within(0, 40) * static_cast<int>(sizeof(T));
    layout.offset = random.within(1, 37);
    return layout;
  }
};

// What is in an image.
enum class Content { noise, zeros, largest, smallest, alternating, runs, ramp, extremes };
constexpr Content allContents[] = {Content::noise,       Content::zeros, Content::largest, Content::smallest,
                                   Content::alternating, Content::runs,  Content::ramp,    Content::extremes};

// A value of any type: noise over the whole range of an integer type, over -1000..1000 for floats.
template <class T>
T noiseValue(Random& random) {
  if constexpr (std::is_floating_point_v<T>) {
    return static_cast<T>(random.real(-1000.0f, 1000.0f));
  } else {
    return static_cast<T>(random.bits() >> 20);
  }
}

// Values at the ends of a type and those floats that do not behave like numbers.
template <class T>
T extremeValue(Random& random) {
  using L = std::numeric_limits<T>;
  if constexpr (std::is_floating_point_v<T>) {
    const T values[] = {T(0),           T(-0.0),  L::max(),        L::lowest(), L::infinity(), -L::infinity(),
                        L::quiet_NaN(), L::min(), L::denorm_min(), T(1),        T(-1),         noiseValue<T>(random)};
    return values[random.within(0, 11)];
  } else {
    const T values[] = {L::max(), L::min(), T(0), T(1), T(L::max() - 1), T(L::min() + 1), noiseValue<T>(random)};
    return values[random.within(0, 6)];
  }
}

template <class T>
void fillPlane(ref::Plane<T>& plane, Content content, Random& random) {
  using L = std::numeric_limits<T>;
  const T low = std::is_floating_point_v<T> ? T(-1000) : L::lowest();
  const T high = std::is_floating_point_v<T> ? T(1000) : L::max();
  T run = low;
  int left = 0, i = 0;
  for (T& v : plane.data) {
    switch (content) {
      case Content::noise:
        v = noiseValue<T>(random);
        break;
      case Content::zeros:
        v = T(0);
        break;
      case Content::largest:
        v = high;
        break;
      case Content::smallest:
        v = low;
        break;
      case Content::alternating:
        v = i % 2 ? high : low;
        break;
      case Content::runs:
        if (left-- <= 0) run = noiseValue<T>(random), left = random.within(0, 12);
        v = run;
        break;
      case Content::ramp:
        v = static_cast<T>(i % 251);
        break;
      case Content::extremes:
        v = extremeValue<T>(random);
        break;
    }
    ++i;
  }
}

// A guarded image. Its padding and margins hold junk that intact() checks; its last row ends without padding.
template <class T>
class Image {
 public:
  Image(int width, int height, int channels, Layout layout)
      : width_(width),
        height_(height),
        channels_(channels),
        step_(width * channels * static_cast<int>(sizeof(T)) + layout.padding),
        layout_(layout),
        bytes_(static_cast<size_t>(step_) * (height - 1) + rowBytes(), layout.place,
               static_cast<size_t>(layout.offset)) {
    bytes_.fillWithJunk();
    junkAfterRow_.resize(static_cast<size_t>(layout.padding));
    for (size_t i = 0; i < junkAfterRow_.size(); ++i) junkAfterRow_[i] = junkByte(i);
    for (int y = 0; y + 1 < height && layout.padding > 0; ++y)
      memcpy(rowEnd(y), junkAfterRow_.data(), junkAfterRow_.size());
  }
  Image(const ref::Plane<T>& plane, Layout layout) : Image(plane.width, plane.height, plane.channels, layout) {
    set(plane);
  }
  // Random content of a kind.
  Image(int width, int height, int channels, Layout layout, Content content, Random& random)
      : Image(width, height, channels, layout) {
    ref::Plane<T> plane(width, height, channels);
    fillPlane(plane, content, random);
    set(plane);
  }

  // The first pixel, or the pixel in column x of row y. The address may be odd.
  T* pixels(int x = 0, int y = 0) const {
    return reinterpret_cast<T*>(bytes_.data() + static_cast<ptrdiff_t>(y) * step_ +
                                static_cast<ptrdiff_t>(x) * channels_ * static_cast<ptrdiff_t>(sizeof(T)));
  }
  int step() const { return step_; }
  ZebiSize size() const { return {width_, height_}; }

  void set(const ref::Plane<T>& plane) {
    for (int y = 0; y < height_; ++y)
      memcpy(bytes_.data() + static_cast<size_t>(y) * step_, &plane.data[static_cast<size_t>(y) * width_ * channels_],
             rowBytes());
  }
  ref::Plane<T> plane() const {
    ref::Plane<T> plane(width_, height_, channels_);
    for (int y = 0; y < height_; ++y)
      memcpy(&plane.data[static_cast<size_t>(y) * width_ * channels_], bytes_.data() + static_cast<size_t>(y) * step_,
             rowBytes());
    return plane;
  }

  // Nothing but pixels was written.
  bool intact() const {
    for (int y = 0; y + 1 < height_ && layout_.padding > 0; ++y)
      if (memcmp(rowEnd(y), junkAfterRow_.data(), junkAfterRow_.size()) != 0) return false;
    return bytes_.intactMargins();
  }

  std::string describe() const {
    std::ostringstream s;
    s << width_ << " x " << height_ << " x " << channels_ << ", step " << step_ << ", place "
      << (layout_.place == Place::front  ? "front"
          : layout_.place == Place::back ? "back"
                                         : "odd")
      << ", address % 32 = " << reinterpret_cast<uintptr_t>(bytes_.data()) % 32 << ", seed " << seed();
    return s.str();
  }

 private:
  size_t rowBytes() const { return static_cast<size_t>(width_) * channels_ * sizeof(T); }
  Zeb8u* rowEnd(int y) const { return bytes_.data() + static_cast<size_t>(y) * step_ + rowBytes(); }

  int width_, height_, channels_, step_;
  Layout layout_;
  GuardedBytes bytes_;
  std::vector<Zeb8u> junkAfterRow_;
};

}  // namespace test
