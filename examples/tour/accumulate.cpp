// Averages and differences: a background from noisy frames, change against it, and the direction of the gradient.
#include <cmath>
#include <random>

#include "ball.h"
#include "tour.h"

namespace tour {
namespace {

using support::level;
using support::Plane;

Picture rounded(const Plane& plane) {
  Picture out(plane.size.width, plane.size.height, 1);
  for (size_t i = 0; i < out.pixels.size(); ++i) out.pixels[i] = level(plane.pixels[i]);
  return out;
}

// Peak signal-to-noise ratio in decibels.
double psnr(const Picture& picture, const Picture& truth) {
  double sum = 0;
  for (size_t i = 0; i < truth.pixels.size(); ++i) {
    const double d = picture.pixels[i] - truth.pixels[i];
    sum += d * d;
  }
  return 10 * std::log10(255.0 * 255.0 * truth.pixels.size() / std::max(sum, 1e-9));
}

// A hand-held camera in poor light: shifted by up to `shake` pixels, Gaussian noise of `sigma` levels.
class Camera {
 public:
  Camera(float shake, float sigma) : shift_(-shake, shake), noise_(0, sigma) {}
  Picture frame(const Picture& scene) {
    const float dx = shift_(engine_), dy = shift_(engine_);
    Picture out(scene.width, scene.height, 1);
    for (int y = 0; y < out.height; ++y)
      for (int x = 0; x < out.width; ++x)
        *out.at(x, y) = level(support::sample(scene, x + dx, y + dy) + noise_(engine_));
    return out;
  }

 private:
  std::mt19937 engine_{1};
  std::uniform_real_distribution<float> shift_;
  std::normal_distribution<float> noise_;
};

void showAverage(const Picture& truth, Gallery& gallery) {
  constexpr int frames = 48;
  Camera camera(0.6f, 25);
  const ZebiSize size = truth.size();
  Plane mean(size), sum(size), squares(size);
  Picture first;
  double averaging = 0, statistics = 0;
  for (int k = 0; k < frames; ++k) {
    const Picture frame = camera.frame(truth);
    if (k == 0) first = frame;
    averaging += timed([&] {
      return zebiAddWeighted_8u32f_C1IR(frame.pixels.data(), frame.step(), mean.data(), mean.step(), size,
                                        1.0f / (k + 1));
    });
    statistics += timed([&] {
      return zebiAdd_8u32f_C1IR(frame.pixels.data(), frame.step(), sum.data(), sum.step(), size) |
             zebiAddSquare_8u32f_C1IR(frame.pixels.data(), frame.step(), squares.data(), squares.step(), size);
    });
  }
  const Picture average = rounded(mean);
  Plane deviation(size);
  for (size_t i = 0; i < deviation.pixels.size(); ++i) {
    const double m = sum.pixels[i] / frames;
    deviation.pixels[i] = static_cast<float>(3 * std::sqrt(std::max(0.0, squares.pixels[i] / frames - m * m)));
  }
  gallery.add(first,
              format("One of %d frames: shaken by up to 0.6 pixels, noise of 25 levels. PSNR %.1f dB against the "
                     "photograph.",
                     frames, psnr(first, truth)));
  gallery.add(average,
              format("Running average of the %d frames (AddWeighted). PSNR %.1f dB. Time per frame.", frames,
                     psnr(average, truth)),
              averaging / frames);
  gallery.add(
      rounded(deviation),
      "Standard deviation of each pixel over the frames, three times as bright, from the "
      "sums of Add and AddSquare: even noise, and more along the edges, which the shaking moves. Time per frame.",
      statistics / frames);
}

void showDifference(const Picture& truth, Gallery& gallery) {
  constexpr int frames = 40, stopsAt = 15, threshold = 32;
  constexpr float alpha = 0.06f;
  Camera camera(0, 6);
  const ZebiSize size = truth.size();
  const float radius = 0.13f * std::min(size.width, size.height), centreY = 0.82f * size.height;
  Plane plain(size), masked(size);
  for (size_t i = 0; i < truth.pixels.size(); ++i) plain.pixels[i] = masked.pixels[i] = truth.pixels[i];
  Picture frame, difference(size.width, size.height, 1), still = difference;
  double differenceTime = 0, plainTime = 0, maskedTime = 0;
  for (int k = 0; k < frames; ++k) {
    const float way = std::min(k, stopsAt) / static_cast<float>(stopsAt);
    frame = camera.frame(withBall(truth, (-0.15f + 0.5f * way) * size.width, centreY, radius, 4 * way));
    const Picture background = rounded(masked);
    differenceTime += timed([&] {
      return zebiAbsDiff_8u_C1R(frame.pixels.data(), frame.step(), background.pixels.data(), background.step(),
                                difference.pixels.data(), difference.step(), size);
    });
    for (size_t i = 0; i < still.pixels.size(); ++i) still.pixels[i] = difference.pixels[i] <= threshold ? 255 : 0;
    plainTime += timed([&] {
      return zebiAddWeighted_8u32f_C1IR(frame.pixels.data(), frame.step(), plain.data(), plain.step(), size, alpha);
    });
    maskedTime += timed([&] {
      return zebiAddWeighted_8u32f_C1IMR(frame.pixels.data(), frame.step(), still.pixels.data(), still.step(),
                                         masked.data(), masked.step(), size, alpha);
    });
  }
  Picture moving = difference;
  for (Zeb8u& p : moving.pixels) p = level(2 * p);

  gallery.add(frame, format("The last of %d frames: a ball rolled in and has been lying still for %d frames.", frames,
                            frames - stopsAt));
  gallery.add(moving, "Difference of that frame from the background (AbsDiff), twice as bright.",
              differenceTime / frames);
  gallery.add(rounded(plain),
              format("Background updated everywhere (AddWeighted): the ball is burnt in. PSNR %.1f dB. "
                     "Time per frame.",
                     psnr(rounded(plain), truth)),
              plainTime / frames);
  gallery.add(rounded(masked),
              format("Background updated only where the difference is at most %d (AddWeighted with a "
                     "mask): what moves is kept out. PSNR %.1f dB. Time per frame.",
                     threshold, psnr(rounded(masked), truth)),
              maskedTime / frames);

  // The most frequent of the middle levels: with luck the backdrop.
  int histogram[256] = {}, tone = 64;
  for (Zeb8u p : truth.pixels) ++histogram[p];
  for (int v = 64; v < 192; ++v)
    if (histogram[v] > histogram[tone]) tone = v;
  Picture distance(size.width, size.height, 1);
  const double time = bestTime([&] {
    return zebiAbsDiffC_8u_C1R(truth.pixels.data(), truth.step(), distance.pixels.data(), distance.step(), size, tone);
  });
  gallery.add(distance,
              format("Distance of every pixel from the most frequent middle level, %d (AbsDiffC): dark where the "
                     "photograph has that tone.",
                     tone),
              time);
}

// Red at 0 degrees, green at 120, blue at 240; full saturation.
void paintHue(Zeb8u* rgb, float degrees, float value) {
  for (int c = 0; c < 3; ++c) {
    const float distance = std::fabs(std::remainder(degrees - 120 * c, 360.0f));
    rgb[c] = level(value * std::clamp(2 - distance / 60, 0.0f, 1.0f));
  }
}

void showOrientation(const Picture& truth, Gallery& gallery) {
  const ZebiSize size = truth.size();
  Plane dx(size), dy(size), angle(size);
  const auto at = [&](int x, int y) {
    return static_cast<float>(*truth.at(std::clamp(x, 0, size.width - 1), std::clamp(y, 0, size.height - 1)));
  };
  for (int y = 0; y < size.height; ++y)
    for (int x = 0; x < size.width; ++x) {
      const size_t i = static_cast<size_t>(y) * size.width + x;
      dx.pixels[i] =
          at(x + 1, y - 1) - at(x - 1, y - 1) + 2 * (at(x + 1, y) - at(x - 1, y)) + at(x + 1, y + 1) - at(x - 1, y + 1);
      dy.pixels[i] =
          at(x - 1, y + 1) - at(x - 1, y - 1) + 2 * (at(x, y + 1) - at(x, y - 1)) + at(x + 1, y + 1) - at(x + 1, y - 1);
    }
  const int length = size.width * size.height;
  const double fast = bestTime([&] { return zebibFastArctan_32f(dy.data(), dx.data(), angle.data(), length); });

  Plane exact(size);
  const double libm = bestTime(
      [&] {
        for (int i = 0; i < length; ++i) exact.pixels[i] = std::atan2(dy.pixels[i], dx.pixels[i]) * 57.29577951f;
        return zebStsOk;
      },
      3);
  double worst = 0;
  Picture map(size.width, size.height, 3);
  for (int i = 0; i < length; ++i) {
    const float x = dx.pixels[i], y = dy.pixels[i], magnitude = std::hypot(x, y);
    if (magnitude > 0)
      worst = std::max(worst, std::fabs(std::remainder(static_cast<double>(angle.pixels[i]) - exact.pixels[i], 360.0)));
    paintHue(&map.pixels[3 * static_cast<size_t>(i)], angle.pixels[i], 255 * std::min(1.0f, magnitude / 250));
  }

  // The key: every direction in its colour, the angle again from the library.
  constexpr int side = 320;
  Plane keyX({side, side}), keyY({side, side}), keyAngle({side, side});
  Picture key(side, side, 3);
  for (int i = 0; i < side * side; ++i) {
    keyX.pixels[i] = i % side - (side - 1) / 2.0f;
    keyY.pixels[i] = i / side - (side - 1) / 2.0f;
  }
  requireOk(zebibFastArctan_32f(keyY.data(), keyX.data(), keyAngle.data(), side * side));
  for (int i = 0; i < side * side; ++i) {
    const float radius = std::hypot(keyX.pixels[i], keyY.pixels[i]) / (side / 2.0f);
    const float edge = std::clamp((0.95f - radius) * side / 4, 0.0f, 1.0f);
    paintHue(&key.pixels[3 * static_cast<size_t>(i)], keyAngle.pixels[i], 255 * edge * std::min(1.0f, 1.6f * radius));
  }

  gallery.add(map,
              format("Direction of the gradient as hue, its strength as brightness (FastArctan on Sobel "
                     "derivatives). atan2 of the C library takes %.1f ms; the largest deviation from it is %.2f "
                     "degrees.",
                     libm, worst),
              fast);
  gallery.add(key,
              "The key to the colours: from the centre towards each colour the picture gets brighter. Red points "
              "right, green down to the left, blue up to the left.");
}

void show(const Scene& scene, Gallery& gallery) {
  gallery.say(
      "A float image that is updated in place by every frame learns what stays the same: its average loses the "
      "noise. What differs from it has moved. A mask keeps what moves from being learned. Last, the fast "
      "arctangent turns two derivative images into one image of directions.");
  showAverage(scene.gray, gallery);
  showDifference(scene.gray, gallery);
  showOrientation(scene.gray, gallery);
}

const Section section(10, "Averages, differences, directions", show);

}  // namespace
}  // namespace tour
