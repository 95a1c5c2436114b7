// Separable filters: smoothing, derivatives, and what the border rules put beside a row.
#include <cmath>

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
    gallery.add(out,
                format("Smoothed by a bell of %.0f pixels, %d x %d taps: rows (8u16s C3), then columns (16s8u C3).",
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
    gallery.add(out,
                across ? "Derivative to the right: -1 0 1 across, 1 2 1 down, a quarter of it as signed bytes (16s8s); "
                         "gray is none."
                       : "Derivative downwards: the same two kernels, exchanged.",
                time);
  }
}

// A single tap at one end of a kernel moves the row under the border: what comes out is the row with its border.
void showBorders(const Picture& picture, Gallery& gallery) {
  const int reach = picture.width / 6, taps = reach + 1;
  const ZebiSize size{picture.width - 2 * reach, picture.height / 4};
  constexpr int gap = 6;
  struct Rule {
    ZebiBorderType type;
    const char* name;
  };
  const Rule rules[] = {{zebBorderConst, "constant"}, {zebBorderRepl, "replicated"}, {zebBorderInMem, "in memory"}};
  Picture out(picture.width, 3 * size.height + 2 * gap, 1);
  std::fill(out.pixels.begin(), out.pixels.end(), Zeb8u(255));
  int bytes = 0;
  requireOk(zebiFilterRowBorderPipelineGetBufferSize_8u16s_C1R(size, taps, &bytes));
  std::vector<Zeb8u> scratch(static_cast<size_t>(bytes));
  std::vector<Zeb16s> rows(static_cast<size_t>(size.width) * size.height);
  std::vector<Zeb16s*> pointers;
  for (int y = 0; y < size.height; ++y) pointers.push_back(&rows[static_cast<size_t>(size.width) * y]);
  const int top = picture.height / 4;
  for (int band = 0; band < 3; ++band)
    for (int shift : {-reach, reach, 0}) {  // the middle last, over what the shifted rows put there
      std::vector<Zeb16s> kernel(static_cast<size_t>(taps));
      const int anchor = shift < 0 ? reach : 0;
      kernel[static_cast<size_t>(anchor + shift)] = 1;
      requireOk(zebiFilterRowBorderPipeline_8u16s_C1R(picture.at(reach, top), picture.step(), pointers.data(), size,
                                                      kernel.data(), taps, anchor, rules[band].type, 96, 1,
                                                      scratch.data()));
      for (int y = 0; y < size.height; ++y)
        for (int x = 0; x < size.width; ++x)
          *out.at(x + reach + shift, band * (size.height + gap) + y) =
              static_cast<Zeb8u>(rows[static_cast<size_t>(size.width) * y + x]);
    }
  for (int y = 0; y < out.height; ++y)
    if (y / 4 % 2)
      for (int x : {reach, reach + size.width - 1}) *out.at(x, y) = 255;
  gallery.add(out,
              format("What a filter reads beside a region (between the dashed lines) of %d columns: the constant 96, "
                     "the edge pixels replicated, and the pixels that lie there in memory.",
                     size.width));
}

void show(const Scene& scene, Gallery& gallery) {
  gallery.say(
      "A kernel that is a product of a row and a column is applied as two short filters instead of one wide one: rows "
      "into row buffers, then columns of row buffers into the picture. Beside the picture, border rules say what the "
      "row filter reads; above and below it, the caller chooses by the row pointers.");
  showSmoothing(scene, gallery);
  showDerivatives(scene, gallery);
  showBorders(scene.gray, gallery);
}

const Section section(30, "Separable filters and borders", show);

}  // namespace
}  // namespace tour
