// Separable filters: smoothing, derivatives, and what the border rules put beside a row.
#include <cmath>

#include "draw.h"
#include "filter/border_rules.h"
#include "tour.h"

namespace tour {
namespace {

// Taps of a bell curve that sum up to `sum`, the middle one taking what rounding left.
std::vector<Zeb16s> bell(float sigma, int sum) {
  const int reach = static_cast<int>(std::ceil(3 * sigma));
  std::vector<double> weights;
  double total = 0;
  for (int i = -reach; i <= reach; ++i) {
    weights.push_back(std::exp(-0.5 * i * i / (sigma * sigma)));
    total += weights.back();
  }
  std::vector<Zeb16s> taps;
  int left = sum;
  for (double weight : weights) {
    taps.push_back(static_cast<Zeb16s>(std::lround(sum * weight / total)));
    left -= taps.back();
  }
  taps[reach] = static_cast<Zeb16s>(taps[reach] + left);
  return taps;
}

// 8-bit picture to 16-bit rows to a destination of type D. The rows above and below the picture are the first and the
// last one again: their pointers are simply repeated.
template <int channels, class D>
ZebStatus filter(const Picture& picture, const std::vector<Zeb16s>& across, int rowDivisor,
                 const std::vector<Zeb16s>& down, int columnDivisor, D* out) {
  constexpr bool color = channels == 3;
  const ZebiSize size = picture.size();
  const int taps = static_cast<int>(across.size()), rowsAtOnce = static_cast<int>(down.size());
  const int elements = size.width * channels, above = rowsAtOnce / 2;
  std::vector<Zeb16s> rows(static_cast<size_t>(elements) * size.height);
  std::vector<Zeb16s*> pointers;
  for (int y = 0; y < size.height; ++y) pointers.push_back(&rows[static_cast<size_t>(elements) * y]);

  int rowBytes = 0, columnBytes = 0;
  ZebStatus status = color ? zebiFilterRowBorderPipelineGetBufferSize_8u16s_C3R(size, taps, &rowBytes)
                           : zebiFilterRowBorderPipelineGetBufferSize_8u16s_C1R(size, taps, &rowBytes);
  status |= color ? zebiFilterColumnPipelineGetBufferSize_16s8u_C3R(size, rowsAtOnce, &columnBytes)
                  : zebiFilterColumnPipelineGetBufferSize_16s8u_C1R(size, rowsAtOnce, &columnBytes);
  std::vector<Zeb8u> scratch(static_cast<size_t>(std::max(rowBytes, columnBytes)));
  if constexpr (color) {
    status |= zebiFilterRowBorderPipeline_8u16s_C3R(picture.pixels.data(), picture.step(), pointers.data(), size,
                                                    across.data(), taps, taps / 2, zebBorderRepl, nullptr, rowDivisor,
                                                    scratch.data());
  } else {
    status |= zebiFilterRowBorderPipeline_8u16s_C1R(picture.pixels.data(), picture.step(), pointers.data(), size,
                                                    across.data(), taps, taps / 2, zebBorderRepl, 0, rowDivisor,
                                                    scratch.data());
  }

  std::vector<const Zeb16s*> stacked;
  for (int y = -above; y < size.height + rowsAtOnce - 1 - above; ++y)
    stacked.push_back(pointers[std::clamp(y, 0, size.height - 1)]);
  if constexpr (color) {
    status |= zebiFilterColumnPipeline_16s8u_C3R(stacked.data(), out, elements, size, down.data(), rowsAtOnce,
                                                 columnDivisor, scratch.data());
  } else if constexpr (std::is_same_v<D, Zeb8u>) {
    status |= zebiFilterColumnPipeline_16s8u_C1R(stacked.data(), out, elements, size, down.data(), rowsAtOnce,
                                                 columnDivisor, scratch.data());
  } else {
    status |= zebiFilterColumnPipeline_16s8s_C1R(stacked.data(), out, elements, size, down.data(), rowsAtOnce,
                                                 columnDivisor, scratch.data());
  }
  return status;
}

void showSmoothing(const Scene& scene, Gallery& gallery) {
  for (float sigma : {2.0f, 6.0f}) {
    const auto taps = bell(sigma, 128);
    Picture out(scene.color.width, scene.color.height, 3);
    // The rows keep all 15 bits of their sums; the column filter divides by both weights.
    const double time =
        bestTime([&] { return filter<3>(scene.color, taps, 1, taps, 128 * 128, out.pixels.data()); }, 5);
    gallery.add(
        out,
        format("Smoothed by a bell of %.0f pixels, %d x %d taps: rows (FilterRowBorderPipeline 8u16s C3), then columns "
               "(FilterColumnPipeline 16s8u C3): grain and small lines are gone, large shapes stay.",
               sigma, static_cast<int>(taps.size()), static_cast<int>(taps.size())),
        time);
  }
}

void showDerivatives(const Scene& scene, Gallery& gallery) {
  const std::vector<Zeb16s> difference{-1, 0, 1}, smoothing{1, 2, 1};
  std::vector<Zeb8s> derivative(scene.gray.pixels.size());
  for (bool across : {true, false}) {
    const double time = bestTime(
        [&] {
          return filter<1>(scene.gray, across ? difference : smoothing, 1, across ? smoothing : difference, 4,
                           derivative.data());
        },
        5);
    Picture out(scene.gray.width, scene.gray.height, 1);
    for (size_t i = 0; i < out.pixels.size(); ++i) out.pixels[i] = static_cast<Zeb8u>(derivative[i] + 128);
    gallery.add(
        out,
        across ? "Derivative to the right: -1 0 1 across, 1 2 1 down, a quarter of it as signed bytes (16s8s); "
                 "gray is none (FilterRowBorderPipeline, FilterColumnPipeline)."
               : "Derivative downwards: the same two kernels, exchanged. Edges that lie show, those that stand vanish.",
        time);
  }
}

// What each rule puts around a region of a color picture: six panels, a dashed line around the region.
void showBorders(const Picture& picture, Gallery& gallery) {
  constexpr int rules[] = {zebBorderConst, zebBorderRepl,    zebBorderInMem,
                           zebBorderWrap,  zebBorderMirrorR, zebBorderMirror};
  constexpr int across = 3, down = 2, gap = 6;
  const ZebiSize panel{(picture.width - (across - 1) * gap) / across, (picture.height - gap) / down};
  const int reach = panel.width / 5;
  const ZebiSize region{panel.width - 2 * reach, panel.height - 2 * reach};
  const int left = (picture.width - region.width) / 2, top = (picture.height - region.height) / 4;
  Picture out(across * panel.width + (across - 1) * gap, down * panel.height + gap, 3);
  std::fill(out.pixels.begin(), out.pixels.end(), Zeb8u(255));
  for (int i = 0; i < across * down; ++i)
    for (int y = -reach; y < region.height + reach; ++y)
      for (int x = -reach; x < region.width + reach; ++x) {
        Zeb8u* pixel =
            out.at(i % across * (panel.width + gap) + reach + x, i / across * (panel.height + gap) + reach + y);
        const int fromX = zeb::borderSource(rules[i], x, region.width);
        const int fromY = zeb::borderSource(rules[i], y, region.height);
        const bool edge = ((x == -1 || x == region.width) && y >= -1 && y <= region.height && y / 4 % 2) ||
                          ((y == -1 || y == region.height) && x >= -1 && x <= region.width && x / 4 % 2);
        for (int c = 0; c < 3; ++c)
          pixel[c] = edge ? Zeb8u(255)
                     : fromX == zeb::borderConstant || fromY == zeb::borderConstant
                         ? Zeb8u(96)
                         : picture.at(left + fromX, top + fromY)[c];
      }
  gallery.add(out,
              "What the border rules put around a region (dashed): a constant, the edge pixels replicated, the pixels "
              "that lie there in memory; below, the opposite edge wrapped around, the reflection with the edge pixel "
              "repeated, and the one without. Side flags choose the pixels in memory for single sides.");
}

// The two reflections on a region of a few pixels, so large that each can be followed.
void showReflections(Gallery& gallery) {
  constexpr int wide = 5, high = 3, reach = 3, cell = 36, gap = 24, frame = 4;
  constexpr int rows = high + 2 * reach, columns = wide + 2 * reach;
  Picture out(columns * cell, 2 * rows * cell + gap, 3);
  std::fill(out.pixels.begin(), out.pixels.end(), Zeb8u(255));
  // A hue for every column, a light for every row.
  const auto paint = [](Zeb8u* pixel, int x, int y) {
    const double turn = 6.2831853 * x / wide, light = 250 - 75 * y;
    for (int c = 0; c < 3; ++c) pixel[c] = support::level(light * (0.6 + 0.4 * std::cos(turn - c * 2.0943951)));
  };
  const int rules[] = {zebBorderMirrorR, zebBorderMirror};
  for (int i = 0; i < 2; ++i) {
    const int top = i * (rows * cell + gap);
    for (int y = 0; y < rows * cell; ++y)
      for (int x = 0; x < columns * cell; ++x)
        if (x % cell > 0 && y % cell > 0)
          paint(out.at(x, top + y), zeb::borderSource(rules[i], x / cell - reach, wide),
                zeb::borderSource(rules[i], y / cell - reach, high));
    support::drawBox(out, {reach * cell, top + reach * cell, wide * cell + 1, high * cell + 1}, {0, 0, 0}, frame);
  }
  gallery.add(
      out,
      "The two reflections around a region of 5 x 3 pixels, in the black frame: above, the edge pixel is repeated "
      "(zebBorderMirrorR); below, it is not (zebBorderMirror).");
}

void show(const Scene& scene, Gallery& gallery) {
  gallery.say(
      "A kernel that is a product of a row and a column is applied as two short filters instead of one wide one: rows "
      "into row buffers, then columns of row buffers into the picture. Beside the picture, border rules say what the "
      "row filter reads; above and below it, the caller chooses by the row pointers.");
  showSmoothing(scene, gallery);
  showDerivatives(scene, gallery);
  showBorders(scene.color, gallery);
  showReflections(gallery);
}

const Section section(30, "Separable filters and borders", show);

}  // namespace
}  // namespace tour
