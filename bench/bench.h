// What a family's file needs to put its cases into the benchmark's one table.
//
// A family adds bench/<family>.cpp with one namespace-scope Family; nothing else changes:
//
//   const bench::Family family(10, "Accumulation", {{"Add 8u32f C1IR", bench::timesMemcpy(2.6), prepareAdd}, ...});
#pragma once

#include <algorithm>
#include <cstring>
#include <functional>
#include <new>
#include <optional>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "zebcv.h"

namespace bench {

// Cache-line aligned, as images from an image allocator are. Large blocks follow each other by 7 lines within a page,
// in the order in which a case asks for them: preparing a case again gives every image the same place in its page, and
// no two images of a case begin at the same one.
void* allocateLines(size_t bytes);
void releaseLines(void* block, size_t bytes);
void restartPlacement();

template <class T>
struct LineAllocator {
  using value_type = T;
  LineAllocator() = default;
  template <class U>
  LineAllocator(const LineAllocator<U>&) {}
  T* allocate(size_t n) { return static_cast<T*>(allocateLines(n * sizeof(T))); }
  void deallocate(T* p, size_t n) { releaseLines(p, n * sizeof(T)); }
  template <class U>
  bool operator==(const LineAllocator<U>&) const {
    return true;
  }
  template <class U>
  bool operator!=(const LineAllocator<U>&) const {
    return false;
  }
};
template <class T>
using Pixels = std::vector<T, LineAllocator<T>>;

// What a function is given: a region at the left of an image that is stride pixels wide.
template <class T>
class Image {
 public:
  Image() = default;
  Image(ZebiSize size, int stride, int channels = 1)
      : size_(size),
        channels_(channels),
        elements_(static_cast<ptrdiff_t>(stride) * channels),
        pixels_(static_cast<size_t>(elements_ * size.height)) {}

  T* data() { return pixels_.data(); }
  const T* data() const { return pixels_.data(); }
  int step() const { return static_cast<int>(elements_ * static_cast<ptrdiff_t>(sizeof(T))); }
  T* row(int y) { return pixels_.data() + y * elements_; }
  const T* row(int y) const { return pixels_.data() + y * elements_; }
  int rowElements() const { return size_.width * channels_; }

  // The region from rows without padding, and back.
  template <class Compact>
  void set(const Compact& compact) {
    auto from = compact.begin();
    for (int y = 0; y < size_.height; ++y, from += rowElements())
      std::transform(from, from + rowElements(), row(y), [](auto p) { return static_cast<T>(p); });
  }
  Pixels<T> compact() const {
    Pixels<T> out(static_cast<size_t>(rowElements()) * size_.height);
    for (int y = 0; y < size_.height; ++y)
      std::copy_n(row(y), rowElements(), out.begin() + static_cast<ptrdiff_t>(y) * rowElements());
    return out;
  }
  void fill(T value) {
    for (int y = 0; y < size_.height; ++y) std::fill_n(row(y), rowElements(), value);
  }

 private:
  ZebiSize size_ = {0, 0};
  int channels_ = 1;
  ptrdiff_t elements_ = 0;  // from row to row
  Pixels<T> pixels_;
};

// What a case is given: the region, the width of the images that it lies in and the photograph scaled to it.
struct Scene {
  ZebiSize size;
  int stride;
  Pixels<Zeb8u> photo;  // rows without padding, for the reference
  Image<Zeb8u> source;  // the same, for the library

  int count() const { return size.width * size.height; }
  template <class T>
  Image<T> image(int channels = 1) const {
    return Image<T>(size, stride, channels);
  }
  template <class T, class Compact>
  Image<T> imageOf(const Compact& compact, int channels = 1) const {
    Image<T> out(size, stride, channels);
    out.set(compact);
    return out;
  }
};

// What a case has to move per pixel when every image is touched once.
struct Bytes {
  double read = 0, write = 0;
  double update = 0;  // read and written back

  double total() const { return read + write + 2 * update; }
};

// A case made ready. Its buffers live in what the functions capture.
struct Work {
  std::function<ZebStatus()> run;
  // What is wrong with a result on fresh buffers, compared with the plain reference; nothing when it is right.
  std::function<std::optional<std::string>()> check;
  Bytes bytes;
  // How many library calls one run makes.
  int callsPerRun = 1;
};

// The limit of a case: times the memcpy of width x height bytes, or nanoseconds per call.
struct Target {
  enum Unit { ratio, nanosecondsPerCall } unit = ratio;
  std::optional<double> limit;
};
inline Target timesMemcpy(double limit) {
  return {Target::ratio, limit};
}
inline Target nanosecondsPerCall(double limit) {
  return {Target::nanosecondsPerCall, limit};
}
inline Target noTarget() {
  return {};
}

struct Case {
  std::string name;
  Target target;
  std::function<Work(const Scene&)> prepare;
  // Cases that bring their own content are measured at one size of their own; the photograph is then empty.
  std::optional<ZebiSize> own = std::nullopt;
};

// Registers its cases. Families stand in the table by order.
struct Family {
  Family(int order, std::string title, std::vector<Case> cases);
};

// A case as it stands in the table, with its family's name.
struct Listed {
  std::string family;
  Case row;
};
std::vector<Listed> allCases();

// Bit for bit; reports the first pixel that differs.
template <class A, class B>
std::optional<std::string> firstDifference(const A& expected, const B& actual, int width) {
  using T = typename A::value_type;
  static_assert(sizeof(T) == sizeof(typename B::value_type));
  if (expected.size() != actual.size()) return "sizes differ";
  if (std::memcmp(expected.data(), actual.data(), expected.size() * sizeof(T)) == 0) return std::nullopt;
  for (size_t i = 0; i < expected.size(); ++i)
    if (std::memcmp(&expected[i], &actual[i], sizeof(T)) != 0) {
      std::ostringstream text;
      text << "at (" << i % width << ", " << i / width << "): expected " << +expected[i] << ", got " << +actual[i];
      return text.str();
    }
  return std::nullopt;
}

// The status of a call, as a finding.
inline std::optional<std::string> failure(ZebStatus status) {
  if (status == zebStsOk) return std::nullopt;
  return "status " + std::to_string(status);
}

// Values from low to high, both included; the same at every run of the program.
template <class T>
Pixels<T> randomPixels(int count, int low, int high, unsigned seed) {
  std::mt19937 engine(seed);
  std::uniform_int_distribution<int> level(low, high);
  Pixels<T> out(count);
  for (T& p : out) p = static_cast<T>(level(engine));
  return out;
}

}  // namespace bench
