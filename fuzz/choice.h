// The source of all decisions of a driver: sizes, layouts, selectors, content.
//
// It draws from the bytes of a fuzzing input as long as there are any, then from a generator that the first four bytes
// seed; or from a seeded generator alone, with the size of the region fixed.
#pragma once

#include <string.h>

#include <cmath>
#include <optional>

#include "support/image.h"

namespace fuzz {

using test::Content;
using test::Image;
using test::Layout;
using test::Place;
using test::Random;
using test::Scratch;

// Compilers evaluate the arguments of a call in orders of their own: two draws stand in braces or in two statements, so
// that an input means the same case in every build.
class Choice {
 public:
  Choice(const Zeb8u* bytes, size_t count);
  Choice(uint64_t seed, ZebiSize size) : random_(seed), size_(size) {}

  // An integer in low..high, both included.
  int within(int low, int high);
  bool oneIn(int n) { return within(1, n) == n; }
  bool coin() { return within(0, 1) == 1; }
  float real(float low, float high) { return low + (high - low) * static_cast<float>(within(0, 65535)) / 65535; }
  template <class V, size_t N>
  V oneOf(const V (&values)[N]) {
    return values[within(0, static_cast<int>(N) - 1)];
  }

  // The size of the region: fixed; or mostly small, and now and then four times as wide and flat, for the loops that
  // take several vectors at a time.
  ZebiSize size(int maxWidth = 70, int maxHeight = 20);
  bool fixed() const { return size_.has_value(); }
  // Something that a caller may make larger than the region needs: nothing where the size is fixed.
  int slack(int most) { return fixed() ? 0 : within(0, most); }

  template <class T>
  Layout layout() {
    Layout l;
    l.place = static_cast<Place>(within(0, 2));
    l.padding = coin() ? 0 : within(0, 40) * static_cast<int>(sizeof(T));
    l.offset = within(1, 37);
    return l;
  }

  // A value of any bits, or one at an end of its type.
  template <class T>
  T value() {
    T v;
    if (coin()) {
      Random r = random();
      v = test::extremeValue<T>(r);
    } else {
      v = raw<T>();
    }
    look(v);
    return v;
  }

  // All floats so far were 0 or of a magnitude whose products and sums neither overflow nor vanish; look() is for those
  // that were not made here.
  bool ordinary() const { return ordinary_; }
  template <class T>
  void look(T v) {
    if constexpr (std::is_floating_point_v<T>) {
      const double size = std::fabs(static_cast<double>(v));
      if (size != 0 && !(size > 1e-6 && size < 1e6)) ordinary_ = false;
    }
  }

  // How far past a multiple of 16 the stack of the next call stands. It takes nothing from the input.
  size_t shift() const { return 4 * static_cast<size_t>(Choice(*this).within(0, 3)); }

  // A generator of its own for bulk content.
  Random random() { return Random(static_cast<uint64_t>(within(0, 65535))); }

  // Content of any kind: the kinds of the tests, mostly zeros, or the bytes of the input as they are.
  template <class T>
  ref::Plane<T> plane(int width, int height, int channels = 1) {
    return looked(anything<T>(width, height, channels));
  }

  // The same with 1 in place of values that are not numbers, and of infinities where only finite ones are wanted.
  template <class T>
  ref::Plane<T> ordered(int width, int height, int channels = 1) {
    ref::Plane<T> p = anything<T>(width, height, channels);
    for (T& v : p.data)
      if (v != v) v = T(1);
    return looked(std::move(p));
  }
  template <class T>
  ref::Plane<T> finite(int width, int height, int channels = 1) {
    ref::Plane<T> p = anything<T>(width, height, channels);
    if constexpr (std::is_floating_point_v<T>)
      for (T& v : p.data)
        if (!std::isfinite(v)) v = T(1);
    return looked(std::move(p));
  }

  template <class T>
  Image<T> image(int width, int height, int channels = 1) {
    return Image<T>{plane<T>(width, height, channels), layout<T>()};
  }
  template <class T>
  Image<T> image(ZebiSize size, int channels = 1) {
    return image<T>(size.width, size.height, channels);
  }
  // An image that is written only: it holds junk.
  template <class T>
  Image<T> empty(ZebiSize size, int channels = 1) {
    return Image<T>(size.width, size.height, channels, layout<T>());
  }
  // A scratch buffer of exactly this size, its end at an inaccessible page or its first byte at an odd address.
  Scratch scratch(int bytes) { return Scratch(bytes, coin() ? Place::back : Place::odd); }

 private:
  template <class T>
  ref::Plane<T> anything(int width, int height, int channels) {
    ref::Plane<T> p(width, height, channels);
    const int kind = within(0, 10);
    Random r = random();
    if (kind < 8) {
      test::fillPlane(p, test::allContents[kind], r);
    } else if (kind == 8) {
      for (T& v : p.data)
        if (r.within(0, 9) == 0) v = test::noiseValue<T>(r);
    } else if (kind == 9) {
      for (T& v : p.data) v = static_cast<T>(r.within(0, 3));
    } else {
      for (T& v : p.data) v = raw<T>();
    }
    return p;
  }
  template <class T>
  ref::Plane<T> looked(ref::Plane<T> plane) {
    if constexpr (std::is_floating_point_v<T>)
      for (const T v : plane.data) look(v);
    return plane;
  }

  template <class T>
  T raw() {
    T v;
    Zeb8u bytes[sizeof(T)];
    for (Zeb8u& b : bytes) b = static_cast<Zeb8u>(draw(1));
    memcpy(&v, bytes, sizeof(T));
    return v;
  }
  uint32_t draw(int bytes);

  const Zeb8u* next_ = nullptr;
  size_t left_ = 0;
  Random random_;
  std::optional<ZebiSize> size_;
  bool ordinary_ = true;
};

}  // namespace fuzz
