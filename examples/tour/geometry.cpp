// A lens's distortion made and undone, gradients in colours, the profile of a line, super-resolution.
#include <cmath>

#include "colours.h"
#include "draw.h"
#include "superres.h"
#include "tour.h"

namespace tour {
namespace {

struct Lens {
  ZebiPoint_32f focal, centre;
  Zeb32f k1, k2;

  // Where a pixel of the picture without distortion lies in the distorted one.
  ZebiPoint_32f moved(float i, float j) const {
    const float x = (i - centre.x) / focal.x, y = (j - centre.y) / focal.y, r2 = x * x + y * y;
    const float d = r2 * (k1 + k2 * r2);
    return {i + (i - centre.x) * d, j + (j - centre.y) * d};
  }
};

Picture withGrid(const Picture& photo) {
  constexpr support::Colour yellow = {255, 225, 60};
  Picture out = photo;
  const float w = static_cast<float>(photo.width - 1), h = static_cast<float>(photo.height - 1);
  for (int k = 0; k <= 12; ++k) {
    const float part = static_cast<float>(k) / 12;
    support::drawLine(out, part * w, 0, part * w, h, yellow, 1.5f);
    support::drawLine(out, 0, part * h, w, part * h, yellow, 1.5f);
  }
  return out;
}

// The picture as the lens shows it: each pixel looks for the one that is moved to it.
Picture throughLens(const Picture& flat, const Lens& lens) {
  Picture out(flat.width, flat.height, 3);
  for (int y = 0; y < flat.height; ++y)
    for (int x = 0; x < flat.width; ++x) {
      const float u = static_cast<float>(x), v = static_cast<float>(y);
      float i = u, j = v;
      for (int k = 0; k < 30; ++k) {
        const ZebiPoint_32f at = lens.moved(i, j);
        i += u - at.x, j += v - at.y;
      }
      // The search may run away to what is not a number.
      const bool inside =
          i >= 0 && j >= 0 && i <= static_cast<float>(flat.width - 1) && j <= static_cast<float>(flat.height - 1);
      if (!inside) continue;
      for (int c = 0; c < 3; ++c) out.at(x, y)[c] = support::level(static_cast<double>(support::sample(flat, i, j, c)));
    }
  return out;
}

void showLens(const Picture& photo, Gallery& gallery) {
  const float w = static_cast<float>(photo.width), h = static_cast<float>(photo.height);
  const float focal = 0.8f * std::max(w, h);
  const Lens lens = {{focal, focal}, {0.5f * w, 0.5f * h}, -0.3f, 0.05f};
  const Picture bent = throughLens(withGrid(photo), lens);
  gallery.add(bent, "The photograph under a grid, as a lens with radial distortion shows it.");
  int bytes = 0;
  requireOk(zebiUndistortGetSize(photo.size(), &bytes));
  std::vector<Zeb8u> buffer(bytes);
  Picture freed(photo.width, photo.height, 3);
  const double time = bestTime([&] {
    return zebiUndistortRadial_8u_C3R(bent.pixels.data(), bent.step(), freed.pixels.data(), freed.step(), bent.size(),
                                      lens.focal, lens.centre, lens.k1, lens.k2, buffer.data());
  });
  gallery.add(freed, "Freed of it (UndistortRadial): the lines of the grid are straight again.", time);
}

void showGradients(const Picture& photo, Gallery& gallery) {
  const ZebiSize size = photo.size();
  int bytes = 0;
  requireOk(zebiGradientVectorGetBufferSize(size, zebMskSize3x3, zeb8u, 3, &bytes));
  std::vector<Zeb8u> buffer(bytes);
  std::vector<Zeb16s> magnitude(static_cast<size_t>(size.width) * static_cast<size_t>(size.height));
  support::Plane angle(size);
  const double time = bestTime([&] {
    return zebiGradientVectorScharr_8u16s_C3C1R(photo.pixels.data(), photo.step(), nullptr, 0, nullptr, 0,
                                                magnitude.data(), size.width * static_cast<int>(sizeof(Zeb16s)),
                                                angle.data(), angle.step(), size, zebMskSize3x3, zebNormL2,
                                                zebBorderRepl, nullptr, buffer.data());
  });
  gallery.add(directions(magnitude, angle.pixels, size),
              "Direction as hue and strength as light of the strongest gradient of the three channels "
              "(GradientVectorScharr).",
              time);
}

void showProfile(const Picture& photo, Gallery& gallery) {
  const ZebiPoint from = {0, photo.height / 4}, to = {photo.width - 1, 3 * photo.height / 4};
  const int n = std::max(to.x - from.x, to.y - from.y) + 1, high = 200;
  std::vector<Zeb8u> line(static_cast<size_t>(n) * 3);
  const double time = bestTime(
      [&] { return zebiSampleLine_8u_C3R(photo.pixels.data(), photo.step(), line.data(), photo.size(), from, to); });
  Picture out(photo.width, photo.height + high, 3);
  std::copy(photo.pixels.begin(), photo.pixels.end(), out.pixels.begin());
  constexpr support::Colour yellow = {255, 225, 60}, plot[] = {{255, 80, 80}, {90, 220, 90}, {110, 140, 255}};
  support::drawLine(out, static_cast<float>(from.x), static_cast<float>(from.y), static_cast<float>(to.x),
                    static_cast<float>(to.y), yellow, 1.5f);
  const float along = static_cast<float>(photo.width - 1) / static_cast<float>(n - 1);
  const auto height = [&](int k, int c) {
    return static_cast<float>(out.height - 6) -
           line[static_cast<size_t>(3 * k + c)] * static_cast<float>(high - 12) / 255;
  };
  for (int c = 0; c < 3; ++c)
    for (int k = 1; k < n; ++k)
      support::drawLine(out, static_cast<float>(k - 1) * along, height(k - 1, c), static_cast<float>(k) * along,
                        height(k, c), plot[c], 1.2f);
  gallery.add(out, "Red, green and blue along a line of the photograph (SampleLine).", time);
}

// Windows around points that lie between pixels, every pixel as a square.
void showWindows(const Picture& gray, Gallery& gallery) {
  constexpr int side = 24, cell = 10, gap = 8, panels = 4;
  // The window with the strongest corner of the photograph.
  int bytes = 0;
  requireOk(zebiMinEigenValGetBufferSize_8u32f_C1R(gray.size(), zebFilterSobel, zebMskSize3x3, 15, &bytes));
  std::vector<Zeb8u> buffer(bytes);
  support::Plane response(gray.size());
  requireOk(zebiMinEigenVal_8u32f_C1R(gray.pixels.data(), gray.step(), response.data(), response.step(), gray.size(),
                                      zebFilterSobel, zebMskSize3x3, 15, zebBorderRepl, 0, buffer.data()));
  ZebiPoint middle;
  requireOk(zebiMinMaxIndx_32f_C1R(response.data(), response.step(), gray.size(), nullptr, nullptr, nullptr, &middle));
  Picture out(2 * side * cell + gap, 2 * side * cell + gap, 3), window(side, side, 1);
  std::fill(out.pixels.begin(), out.pixels.end(), Zeb8u(255));
  ZebiRect part;
  double time = 0;
  for (int k = 0; k < panels; ++k) {
    const ZebiPoint_32f centre = {static_cast<float>(middle.x) + 0.5f + 0.25f * static_cast<float>(k),
                                  static_cast<float>(middle.y) + 0.5f};
    time = bestTime([&] {
      return zebiCopySubpixIntersect_8u_C1R(gray.pixels.data(), gray.step(), gray.size(), window.pixels.data(),
                                            window.step(), window.size(), centre, &part);
    });
    for (int y = 0; y < side * cell; ++y)
      for (int x = 0; x < side * cell; ++x)
        std::fill_n(out.at(k % 2 * (side * cell + gap) + x, k / 2 * (side * cell + gap) + y), 3,
                    *window.at(x / cell, y / cell));
  }
  gallery.add(out,
              format("Windows of %d x %d pixels about a corner, around four points, each a quarter of a pixel further "
                     "to the right "
                     "(CopySubpixIntersect): the picture glides, it does not jump. The time is for one.",
                     side, side),
              time);
}

void showSuperResolution(const Picture& gray, Gallery& gallery) {
  constexpr int side = 200, pictures = 16, steps = 20;
  Picture truth(std::min(side, gray.width / 2 * 2), std::min(side, gray.height / 2 * 2), 1);
  for (int y = 0; y < truth.height; ++y)
    std::copy_n(gray.at((gray.width - truth.width) / 2, (gray.height - truth.height) / 2 + y), truth.width,
                truth.at(0, y));
  const auto observations = superres::observe(truth, pictures);
  const Picture plain = superres::enlarged(observations[0].picture, truth.size());
  const auto result = superres::restored(observations, plain, steps);
  Picture out(3 * truth.width, truth.height, 1);
  for (int y = 0; y < truth.height; ++y) {
    std::copy_n(plain.at(0, y), truth.width, out.at(0, y));
    std::copy_n(result.picture.at(0, y), truth.width, out.at(truth.width, y));
    std::copy_n(truth.at(0, y), truth.width, out.at(2 * truth.width, y));
  }
  gallery.add(support::scaled(out, 2 * out.width, 2 * out.height),
              format("Left, one of %d small pictures enlarged; middle, all of them brought together in %d steps "
                     "(SRCalcResidual, SRUpdateGradient); right, the truth, from which they are %.1f and %.1f levels.",
                     pictures, steps, superres::difference(plain, truth), superres::difference(result.picture, truth)),
              result.milliseconds);
}

void show(const Scene& scene, Gallery& gallery) {
  gallery.say(
      "Between four pixels a picture is what they are, weighted by nearness: so it can be shifted by parts of a pixel, "
      "freed of the bending of a lens, or compared with pictures of another resolution. Along the gradient of a pixel "
      "the picture changes the most, and its length tells how much.");
  showLens(scene.color, gallery);
  showGradients(scene.color, gallery);
  showProfile(scene.color, gallery);
  showWindows(scene.gray, gallery);
  showSuperResolution(scene.gray, gallery);
}

const Section section(95, "Geometry and sampling", show);

}  // namespace
}  // namespace tour
