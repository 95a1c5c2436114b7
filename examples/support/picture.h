// 8-bit pictures in ordinary memory: what the examples and the benchmark read, scale and write.
#pragma once

#include <string>
#include <vector>

#include "zebcv/types.h"

namespace support {

// Rows follow each other without padding; channels (1 gray, 3 red green blue) are interleaved.
struct Picture {
  Picture() = default;
  Picture(int w, int h, int c) : width(w), height(h), channels(c), pixels(static_cast<size_t>(w) * h * c) {}

  Zeb8u* at(int x, int y) { return &pixels[(static_cast<size_t>(y) * width + x) * channels]; }
  const Zeb8u* at(int x, int y) const { return &pixels[(static_cast<size_t>(y) * width + x) * channels]; }
  ZebiSize size() const { return {width, height}; }
  int step() const { return width * channels; }

  int width = 0;
  int height = 0;
  int channels = 0;
  std::vector<Zeb8u> pixels;
};

// A one-channel float image, rows without padding.
struct Plane {
  Plane() = default;
  explicit Plane(ZebiSize s) : size(s), pixels(static_cast<size_t>(s.width) * s.height) {}
  Zeb32f* data() { return pixels.data(); }
  const Zeb32f* data() const { return pixels.data(); }
  int step() const { return size.width * static_cast<int>(sizeof(Zeb32f)); }

  ZebiSize size = {0, 0};
  std::vector<Zeb32f> pixels;
};

// To the nearest level, 0 to 255.
Zeb8u level(double value);

// A picture and a line that says where it comes from.
struct Photograph {
  Picture picture;  // three channels
  std::string source;
};

// Decodes a JPEG or PNG file. An empty path means the portrait that Debian's python-matplotlib-data installs, or, where
// that is missing, a computed texture. Throws std::runtime_error when a given file cannot be decoded.
Photograph openPhotograph(const std::string& path);

// Throws where a side is below least pixels, or more than times the other one.
void requireRoom(const Photograph& photo, int least, int times);

// Throws std::runtime_error when the file cannot be written.
void writePng(const Picture& picture, const std::string& path);

// Luma: (77 red + 150 green + 29 blue) / 256.
Picture gray(const Picture& picture);

// Bilinear, pixel centres mapped to pixel centres. A reduction below one half halves by averaging first.
Picture scaled(const Picture& picture, int width, int height);

// Gray value at a fractional position, bilinear, edge pixels repeated outside.
float sample(const Picture& picture, float x, float y, int channel = 0);

}  // namespace support
