#include "picture.h"

#include <stb/stb_image.h>
#include <stb/stb_image_write.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <memory>
#include <stdexcept>

namespace support {
namespace {

constexpr char defaultPhotograph[] = "/usr/share/matplotlib/mpl-data/sample_data/grace_hopper.jpg";

using File = std::unique_ptr<std::FILE, int (*)(std::FILE*)>;

// Throws with the reason that the system, or the decoder, gives.
Picture decoded(const std::string& path) {
  const File file(std::fopen(path.c_str(), "rb"), std::fclose);
  if (!file) throw std::runtime_error("cannot open " + path + ": " + std::strerror(errno));
  if (std::fgetc(file.get()) == EOF)
    throw std::runtime_error(path + (std::ferror(file.get()) ? std::string(": ") + std::strerror(errno) : " is empty"));
  std::rewind(file.get());
  int width = 0, height = 0, stored = 0;
  const std::unique_ptr<stbi_uc, void (*)(void*)> data(stbi_load_from_file(file.get(), &width, &height, &stored, 3),
                                                       stbi_image_free);
  if (!data) throw std::runtime_error(path + " is no JPEG or PNG file that can be decoded: " + stbi_failure_reason());
  Picture picture(width, height, 3);
  std::copy_n(data.get(), picture.pixels.size(), picture.pixels.begin());
  return picture;
}

// Value noise of five octaves on a diagonal shade, with a few discs so that there are edges of every direction.
Picture texture(int width, int height) {
  const auto lattice = [](int x, int y, int octave) {
    unsigned h = static_cast<unsigned>(x) * 374761393u + static_cast<unsigned>(y) * 668265263u + octave * 2246822519u;
    h = (h ^ (h >> 13)) * 1274126177u;
    return ((h ^ (h >> 16)) & 0xffff) / 65535.0f;
  };
  const auto noise = [&](float x, float y, int octave) {
    const int column = static_cast<int>(x), row = static_cast<int>(y);
    const float fx = x - column, fy = y - row;
    const float u = fx * fx * (3 - 2 * fx), v = fy * fy * (3 - 2 * fy);
    const float top = lattice(column, row, octave) * (1 - u) + lattice(column + 1, row, octave) * u;
    const float bottom = lattice(column, row + 1, octave) * (1 - u) + lattice(column + 1, row + 1, octave) * u;
    return top * (1 - v) + bottom * v;
  };
  Picture out(width, height, 3);
  for (int y = 0; y < height; ++y)
    for (int x = 0; x < width; ++x) {
      float value = 40.0f + 60.0f * (x + y) / (width + height);
      for (int octave = 0; octave < 5; ++octave) {
        const float cell = 128.0f / (1 << octave);
        value += 70.0f / (1 << octave) * noise(x / cell, y / cell, octave);
      }
      for (int disc = 0; disc < 9; ++disc) {
        const float dx = x - lattice(disc, 1, 9) * width, dy = y - lattice(disc, 2, 9) * height;
        const float radius = (0.03f + 0.08f * lattice(disc, 3, 9)) * std::min(width, height);
        if (dx * dx + dy * dy < radius * radius) value = 0.4f * value + 150.0f * lattice(disc, 4, 9);
      }
      const Zeb8u level = static_cast<Zeb8u>(std::clamp(value, 0.0f, 255.0f));
      std::fill_n(out.at(x, y), 3, level);
    }
  return out;
}

Picture halved(const Picture& picture, bool across, bool down) {
  const int sx = across ? 2 : 1, sy = down ? 2 : 1, count = sx * sy;
  Picture out(picture.width / sx, picture.height / sy, picture.channels);
  for (int y = 0; y < out.height; ++y)
    for (int x = 0; x < out.width; ++x)
      for (int c = 0; c < out.channels; ++c) {
        int sum = count / 2;
        for (int j = 0; j < sy; ++j)
          for (int i = 0; i < sx; ++i) sum += picture.at(sx * x + i, sy * y + j)[c];
        out.at(x, y)[c] = static_cast<Zeb8u>(sum / count);
      }
  return out;
}

}  // namespace

Photograph openPhotograph(const std::string& path) {
  Photograph photo;
  photo.source = path.empty() ? defaultPhotograph : path;
  if (!path.empty() || std::filesystem::exists(defaultPhotograph)) {
    photo.picture = decoded(photo.source);
    return photo;
  }
  photo.picture = texture(600, 600);
  photo.source = std::string("a computed texture, NOT a photograph (") + defaultPhotograph + " is missing)";
  return photo;
}

void requireRoom(const Photograph& photo, int least, int times) {
  const int w = photo.picture.width, h = photo.picture.height, shorter = std::min(w, h), longer = std::max(w, h);
  if (shorter >= least && longer / times <= shorter) return;
  throw std::runtime_error(photo.source + " has " + std::to_string(w) + " x " + std::to_string(h) +
                           " pixels; needed are at least " + std::to_string(least) +
                           " each way and no side of more than " + std::to_string(times) + " times the other");
}

void writePng(const Picture& picture, const std::string& path) {
  std::vector<char> bytes;
  const auto keep = [](void* target, void* data, int size) {
    auto* const list = static_cast<std::vector<char>*>(target);
    list->insert(list->end(), static_cast<char*>(data), static_cast<char*>(data) + size);
  };
  if (!stbi_write_png_to_func(keep, &bytes, picture.width, picture.height, picture.channels, picture.pixels.data(),
                              picture.step()))
    throw std::runtime_error("no memory to encode " + path);
  File file(std::fopen(path.c_str(), "wb"), std::fclose);
  bool done = file && std::fwrite(bytes.data(), 1, bytes.size(), file.get()) == bytes.size();
  done = file && std::fclose(file.release()) == 0 && done;
  if (!done) throw std::runtime_error("cannot write " + path + ": " + std::strerror(errno));
}

Zeb8u level(double value) {
  return static_cast<Zeb8u>(std::clamp(value + 0.5, 0.0, 255.0));
}

Picture gray(const Picture& picture) {
  if (picture.channels == 1) return picture;
  Picture out(picture.width, picture.height, 1);
  const Zeb8u* p = picture.pixels.data();
  for (Zeb8u& level : out.pixels) {
    level = static_cast<Zeb8u>((77 * p[0] + 150 * p[1] + 29 * p[2] + 128) >> 8);
    p += picture.channels;
  }
  return out;
}

float sample(const Picture& picture, float x, float y, int channel) {
  x = std::clamp(x, 0.0f, picture.width - 1.0f);
  y = std::clamp(y, 0.0f, picture.height - 1.0f);
  const int left = static_cast<int>(x), top = static_cast<int>(y);
  const int right = std::min(left + 1, picture.width - 1), bottom = std::min(top + 1, picture.height - 1);
  const float u = x - left, v = y - top;
  const float upper = picture.at(left, top)[channel] * (1 - u) + picture.at(right, top)[channel] * u;
  const float lower = picture.at(left, bottom)[channel] * (1 - u) + picture.at(right, bottom)[channel] * u;
  return upper * (1 - v) + lower * v;
}

Picture scaled(const Picture& picture, int width, int height) {
  if (width == picture.width && height == picture.height) return picture;
  const bool across = picture.width / 2 >= width, down = picture.height / 2 >= height;
  if (across || down) return scaled(halved(picture, across, down), width, height);
  Picture out(width, height, picture.channels);
  const float sx = static_cast<float>(picture.width) / width, sy = static_cast<float>(picture.height) / height;
  for (int y = 0; y < height; ++y)
    for (int x = 0; x < width; ++x)
      for (int c = 0; c < out.channels; ++c)
        out.at(x, y)[c] = static_cast<Zeb8u>(sample(picture, (x + 0.5f) * sx - 0.5f, (y + 0.5f) * sy - 0.5f, c) + 0.5f);
  return out;
}

}  // namespace support
