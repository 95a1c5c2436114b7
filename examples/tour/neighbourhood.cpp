// Derivatives, Laplacian, low-pass and Gaussian filters.
#include <cmath>

#include "tour.h"

namespace tour {
namespace {

// Zero as middle grey; a slope of `full` is white.
Picture shaded(const Picture& like, const std::vector<Zeb16s>& values, int full) {
  Picture out(like.width, like.height, 1);
  for (size_t i = 0; i < out.pixels.size(); ++i)
    out.pixels[i] = static_cast<Zeb8u>(std::clamp(128 + values[i] * 127 / full, 0, 255));
  return out;
}

using Query = ZebStatus (*)(ZebiSize, int, int*);
using Derivative = ZebStatus (*)(const Zeb8u*, int, Zeb16s*, int, ZebiSize, int, ZebiBorderType, Zeb8u, Zeb8u*);

void derive(const Picture& gray, Gallery& gallery, Query query, Derivative filter, int mask, int full,
            const char* caption) {
  std::vector<Zeb16s> out(gray.pixels.size());
  int bytes = 0;
  requireOk(query(gray.size(), mask, &bytes));
  std::vector<Zeb8u> buffer(static_cast<size_t>(bytes));
  const double time = bestTime([&] {
    return filter(gray.pixels.data(), gray.step(), out.data(), gray.width * static_cast<int>(sizeof(Zeb16s)),
                  gray.size(), mask, zebBorderRepl, 0, buffer.data());
  });
  gallery.add(shaded(gray, out, full), caption, time);
}

void showLowpass(const Picture& gray, Gallery& gallery) {
  Picture out(gray.width, gray.height, 1);
  int bytes = 0;
  requireOk(zebiFilterLowpassGetBufferSize_8u_C1R(gray.size(), zebMskSize5x5, &bytes));
  std::vector<Zeb8u> buffer(static_cast<size_t>(bytes));
  const double time = bestTime([&] {
    return zebiFilterLowpassBorder_8u_C1R(gray.pixels.data(), gray.step(), out.pixels.data(), out.step(), gray.size(),
                                          zebMskSize5x5, zebBorderRepl, 0, buffer.data());
  });
  gallery.add(std::move(out), "Low-pass, 5 × 5 (FilterLowpassBorder): every pixel the mean of the 25 around it.", time);
}

void showGaussian(const Picture& color, Gallery& gallery, float sigma) {
  const int taps = 2 * static_cast<int>(std::ceil(3 * sigma)) + 1;
  int stateBytes = 0, bytes = 0;
  requireOk(zebiFilterGaussianGetBufferSize(color.size(), taps, zeb8u, 3, &stateBytes, &bytes));
  std::vector<Zeb8u> memory(static_cast<size_t>(stateBytes)), buffer(static_cast<size_t>(bytes));
  auto* const state = reinterpret_cast<ZebiFilterGaussianState*>(memory.data());
  requireOk(zebiFilterGaussianInit(taps, sigma, zeb8u, 3, state));
  Picture out(color.width, color.height, 3);
  const double time = bestTime([&] {
    return zebiFilterGaussianBorder_8u_C3R(color.pixels.data(), color.step(), out.pixels.data(), out.step(),
                                           color.size(), zebBorderRepl, nullptr, state, buffer.data());
  });
  gallery.add(std::move(out),
              format("Gaussian, sigma %g, %d taps in both directions (FilterGaussianBorder): what is smaller than the "
                     "bell is gone.",
                     static_cast<double>(sigma), taps),
              time);
}

void show(const Scene& scene, Gallery& gallery) {
  gallery.say(
      "Small fixed kernels find slopes and curvature; grey is none, bright grows to the right or downwards. The "
      "Gaussian smooths with a bell of any width, whose taps are computed once.");
  const Picture& gray = scene.gray;
  derive(gray, gallery, zebiFilterSobelHorizGetBufferSize_8u16s_C1R, zebiFilterSobelHorizBorder_8u16s_C1R,
         zebMskSize3x3, 300, "Sobel, 3 × 3, along x (FilterSobelHorizBorder): edges that stand upright.");
  derive(gray, gallery, zebiFilterSobelVertGetBufferSize_8u16s_C1R, zebiFilterSobelVertBorder_8u16s_C1R, zebMskSize3x3,
         300, "Sobel, 3 × 3, along y (FilterSobelVertBorder): edges that lie.");
  // Scharr kernels come in one size.
  derive(
      gray, gallery,
      [](ZebiSize size, int, int* bytes) { return zebiFilterScharrVertGetBufferSize_8u16s_C1R(size, bytes); },
      [](const Zeb8u* src, int srcStep, Zeb16s* dst, int dstStep, ZebiSize size, int, ZebiBorderType border,
         Zeb8u value, Zeb8u* buffer) {
        return zebiFilterScharrVertBorder_8u16s_C1R(src, srcStep, dst, dstStep, size, border, value, buffer);
      },
      zebMskSize3x3, 1200, "Scharr along y: the same edges, with directions that are truer.");
  derive(gray, gallery, zebiFilterSobelHorizSecondGetBufferSize_8u16s_C1R, zebiFilterSobelHorizSecondBorder_8u16s_C1R,
         zebMskSize3x3, 300, "Second derivative, 3 × 3, along x: thin upright lines.");
  derive(gray, gallery, zebiFilterSobelVertSecondGetBufferSize_8u16s_C1R, zebiFilterSobelVertSecondBorder_8u16s_C1R,
         zebMskSize3x3, 300, "Second derivative, 3 × 3, along y: thin lying lines.");
  derive(gray, gallery, zebiFilterSobelCrossGetBufferSize_8u16s_C1R, zebiFilterSobelCrossBorder_8u16s_C1R,
         zebMskSize5x5, 600, "Along x and y at once, 5 × 5: corners and slanting lines.");
  derive(gray, gallery, zebiFilterLaplacianGetBufferSize_8u16s_C1R, zebiFilterLaplacianBorder_8u16s_C1R, zebMskSize5x5,
         2000, "Laplacian, 5 × 5 (FilterLaplacianBorder): lines and spots against their surroundings.");
  showLowpass(gray, gallery);
  for (const float sigma : {1.0f, 3.0f, 8.0f}) showGaussian(scene.color, gallery, sigma);
}

const Section section(31, "Derivatives and smoothing", show);

}  // namespace
}  // namespace tour
