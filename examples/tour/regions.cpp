// Segments, components and inpainting: what belongs together, and what stood where something covers the photograph.
#include <cmath>
#include <random>

#include "colours.h"
#include "draw.h"
#include "tour.h"

namespace tour {
namespace {

// Any image of T that has the photograph's size, rows without padding.
template <class T>
int stepOf(ZebiSize size) {
  return size.width * static_cast<int>(sizeof(T));
}

// A colour for every label, black for 0.
template <class T>
Picture painted(const std::vector<T>& labels, ZebiSize size) {
  Picture out(size.width, size.height, 3);
  for (size_t i = 0; i < labels.size(); ++i) {
    if (labels[i] == 0) continue;
    const float turn = std::fmod(static_cast<float>(labels[i]) * 0.61803f, 1.0f);
    const auto wave = [=](float shift) { return 0.55f + 0.45f * std::cos(6.2832f * (turn + shift)); };
    put(&out.pixels[3 * i], {wave(0), wave(0.33f), wave(0.67f)}, 1);
  }
  return out;
}

// The magnitude of the gradient.
std::vector<Zeb16u> gradient(const Picture& gray) {
  const auto at = [&](int x, int y) {
    return static_cast<int>(*gray.at(std::clamp(x, 0, gray.width - 1), std::clamp(y, 0, gray.height - 1)));
  };
  std::vector<Zeb16u> out(gray.pixels.size());
  for (int y = 0; y < gray.height; ++y)
    for (int x = 0; x < gray.width; ++x)
      out[static_cast<size_t>(y) * gray.width + x] =
          static_cast<Zeb16u>(8 * (std::abs(at(x + 1, y) - at(x - 1, y)) + std::abs(at(x, y + 1) - at(x, y - 1))));
  return out;
}

void showSegments(const Scene& scene, Gallery& gallery) {
  const ZebiSize size = scene.gray.size();
  const int step = stepOf<Zeb16u>(size);
  const std::vector<Zeb16u> relief = gradient(scene.gray);

  // Where the gradient is small, but for what is no larger than a few pixels.
  std::vector<Zeb16u> marker(relief.size());
  for (size_t i = 0; i < relief.size(); ++i) marker[i] = relief[i] <= 48;
  std::vector<Zeb8u> labelling = bytesFor(zebiLabelMarkersGetBufferSize_16u_C1IR, size);
  std::vector<Zeb8u> speckles(1);
  int bytes = 0, count = 0;
  requireOk(zebiMarkSpecklesGetBufferSize(size, zeb16u, &bytes));
  speckles.resize(bytes);
  requireOk(zebiMarkSpeckles_16u_C1IR(marker.data(), step, size, 0, 30, 0, zebiNormL1, speckles.data()));
  const double labelTime = timed([&] {
    return zebiLabelMarkers_16u_C1IR(marker.data(), step, size, 1, 65535, zebiNormL1, &count, labelling.data());
  });
  gallery.add(painted(marker, size),
              format("Markers: the %d connected components of more than 30 pixels in which the gradient is small "
                     "(MarkSpeckles, LabelMarkers), a colour each.",
                     count),
              labelTime);

  std::vector<Zeb16u> segments;
  std::vector<Zeb8u> flooding = bytesFor(zebiSegmentWatershedGetBufferSize_16u_C1IR, size);
  const double floodTime = timed([&] {
    segments = marker;
    return zebiSegmentWatershed_16u_C1IR(relief.data(), step, segments.data(), step, size, zebiNormL1, 0,
                                         flooding.data());
  });
  gallery.add(averaged(segments, scene.color),
              format("The photograph cut into these %d segments: the markers flooded the gradient (SegmentWatershed). "
                     "Every segment in its mean colour.",
                     count),
              floodTime);

  std::vector<Zeb16u> bounds = segments;
  const double boundTime = timed([&] { return zebiBoundSegments_16u_C1IR(bounds.data(), step, size, 0, zebiNormL1); });
  Picture outlined = scene.color;
  const Zeb8u yellow[] = {255, 230, 40};
  for (size_t i = 0; i < bounds.size(); ++i)
    if (bounds[i] == 0) std::copy_n(yellow, 3, &outlined.pixels[3 * i]);
  gallery.add(outlined, "Boundaries between the segments (BoundSegments), on the photograph.", boundTime);

  // A marker every 48 pixels, straight on the colours.
  std::vector<Zeb8u> grid(relief.size());
  int next = 0;
  for (int y = 24; y < size.height; y += 48)
    for (int x = 24; x < size.width; x += 48)
      grid[static_cast<size_t>(y) * size.width + x] = static_cast<Zeb8u>(1 + next++ % 254);
  std::vector<Zeb8u> links = bytesFor(zebiSegmentGradientGetBufferSize_8u_C3IR, size);
  const double gradientTime = timed([&] {
    return zebiSegmentGradient_8u_C3IR(scene.color.pixels.data(), scene.color.step(), grid.data(), size.width, size,
                                       zebiNormInf, zebSegmentBoundary, links.data());
  });
  Picture cells = painted(grid, size);
  for (size_t i = 0; i < grid.size(); ++i)
    for (int c = 0; c < 3; ++c) {
      Zeb8u& v = cells.pixels[3 * i + c];
      v = grid[i] == 255 ? 255 : static_cast<Zeb8u>((v + 3 * scene.color.pixels[3 * i + c]) / 4);
    }
  gallery.add(cells,
              "Segments grown over the smallest differences of colour from a marker every 48 pixels "
              "(SegmentGradient, three channels); where two meet they leave a boundary, in white.",
              gradientTime);
}

void showComponents(const Scene& scene, Gallery& gallery) {
  const ZebiSize size = scene.gray.size();
  std::vector<Zeb32s> labels(scene.gray.pixels.size());
  for (size_t i = 0; i < labels.size(); ++i) labels[i] = scene.gray.pixels[i] > 110;
  std::vector<Zeb8u> buffer = bytesFor(zebiLabelMarkersGetBufferSize_32s_C1IR, size);
  int count = 0;
  // What is labelled already is labelled again.
  const double time = bestTime([&] {
    return zebiLabelMarkers_32s_C1IR(labels.data(), stepOf<Zeb32s>(size), size, 1, 0x7FFFFFFF, zebiNormInf, &count,
                                     buffer.data());
  });
  gallery.add(
      painted(labels, size),
      format("The connected components of the bright pixels, %d of them (LabelMarkers, 8-connected), a colour each.",
             count),
      time);
}

// Slopes and balls seen by two cameras, with what a matcher gets wrong.
void showSpeckles(Gallery& gallery) {
  constexpr ZebiSize size = {480, 320};
  constexpr Zeb16s unknown = 0;
  std::mt19937 engine(7);
  const auto within = [&](int low, int high) { return low + static_cast<int>(engine() % (high - low + 1u)); };
  std::vector<Zeb16s> disparity(static_cast<size_t>(size.width) * size.height);
  const auto at = [&](int x, int y) -> Zeb16s& { return disparity[static_cast<size_t>(y) * size.width + x]; };
  for (int y = 0; y < size.height; ++y)
    for (int x = 0; x < size.width; ++x) at(x, y) = static_cast<Zeb16s>(200 + y * 2 + x / 4);
  for (int k = 0; k < 6; ++k) {
    const int cx = 50 + 75 * k, cy = within(80, 240), radius = within(30, 60);
    for (int y = std::max(0, cy - radius); y < std::min(size.height, cy + radius); ++y)
      for (int x = std::max(0, cx - radius); x < std::min(size.width, cx + radius); ++x) {
        const int square = radius * radius - (x - cx) * (x - cx) - (y - cy) * (y - cy);
        if (square > 0) at(x, y) = static_cast<Zeb16s>(850 + 3 * std::sqrt(static_cast<float>(square)));
      }
  }
  for (int k = 0; k < 700; ++k) {
    const int x0 = within(0, size.width - 8), y0 = within(0, size.height - 8), w = within(1, 7), h = within(1, 7);
    const auto wrong = static_cast<Zeb16s>(within(100, 1100));
    for (int y = y0; y < y0 + h; ++y)
      for (int x = x0; x < x0 + w; ++x) at(x, y) = wrong;
  }
  const auto shown = [&] {
    Picture out(size.width, size.height, 3);
    for (size_t i = 0; i < disparity.size(); ++i)
      if (disparity[i] != unknown) put(&out.pixels[3 * i], warmth(static_cast<float>(disparity[i]) / 1100), 1);
    return out;
  };
  gallery.add(shown(), "Disparities of a made scene, blue far and red near, with speckles of wrong matches.");
  int bytes = 0;
  requireOk(zebiMarkSpecklesGetBufferSize(size, zeb16s, &bytes));
  std::vector<Zeb8u> buffer(bytes);
  const double time = timed([&] {
    return zebiMarkSpeckles_16s_C1IR(disparity.data(), stepOf<Zeb16s>(size), size, unknown, 100, 16, zebiNormL1,
                                     buffer.data());
  });
  gallery.add(shown(),
              "The same freed of speckles (MarkSpeckles): regions of at most 100 pixels, neighbours linked when they "
              "differ by at most 16, are unknown now, in black.",
              time);
}

// Scratches and letters: not black where the photograph is covered.
Picture cover(ZebiSize size) {
  Picture mask(size.width, size.height, 3);
  std::mt19937 engine(5);
  const auto in = [&](float low, float high) {
    return low + (high - low) * static_cast<float>(engine() / 4294967296.0);
  };
  const support::Colour white = {255, 255, 255};
  const auto w = static_cast<float>(size.width), h = static_cast<float>(size.height);
  for (int k = 0; k < 9; ++k) {
    float x = in(0, w), y = in(0, h), angle = in(0, 6.3f);
    for (int s = 0; s < 12; ++s, angle += in(-0.3f, 0.3f)) {
      const float toX = x + 0.05f * w * std::cos(angle), toY = y + 0.05f * w * std::sin(angle);
      support::drawLine(mask, x, y, toX, toY, white, in(1.5f, 4));
      x = toX, y = toY;
    }
  }
  // Strokes of letters on a field of 4 x 6, and where each letter begins.
  const float strokes[][5] = {{0, 0, 0, 1, 6},  {0, 1, 6, 2, 2},  {0, 2, 2, 3, 6},  {0, 3, 6, 4, 0},  {5, 0, 6, 2, 0},
                              {5, 2, 0, 4, 6},  {5, 1, 4, 3, 4},  {10, 0, 0, 2, 6}, {10, 2, 6, 4, 0}, {15, 0, 0, 3, 0},
                              {15, 0, 0, 0, 6}, {15, 0, 3, 2, 3}, {15, 0, 6, 3, 6}};
  const float unit = 0.035f * w;
  for (int line = 0; line < 3; ++line)
    for (const auto& s : strokes) {
      const float left = 0.15f * w + s[0] * unit, top = (0.12f + 0.3f * static_cast<float>(line)) * h;
      support::drawLine(mask, left + s[1] * unit, top + s[2] * unit * 0.8f, left + s[3] * unit,
                        top + s[4] * unit * 0.8f, white, 0.16f * unit);
    }
  return mask;
}

void showInpainting(const Scene& scene, Gallery& gallery) {
  const ZebiSize size = scene.color.size();
  const Picture& photo = scene.color;
  Picture covered = photo;
  std::vector<Zeb8u> mask(static_cast<size_t>(size.width) * size.height);
  const Picture strokes = cover(size);
  double masked = 0;
  for (size_t i = 0; i < mask.size(); ++i)
    if (strokes.pixels[3 * i]) {
      mask[i] = 255, ++masked;
      const Zeb8u ink[] = {245, 245, 245};
      std::copy_n(ink, 3, &covered.pixels[3 * i]);
    }
  gallery.add(covered, format("The photograph with scratches and writing over %.1f per cent of it.",
                              100 * masked / static_cast<double>(mask.size())));
  for (const ZebiInpaintMethod method : {zebInpaintTelea, zebInpaintIsophote}) {
    ZebiInpaintState* state = nullptr;
    const double buildTime =
        timed([&] { return zebiInpaintInitAlloc_8u_C3R(&state, mask.data(), size.width, size, 5, method); });
    Picture filled(size.width, size.height, 3);
    const double time = bestTime(
        [&] {
          return zebiInpaint_8u_C3R(covered.pixels.data(), covered.step(), filled.pixels.data(), filled.step(), size,
                                    state);
        },
        3);
    requireOk(zebiInpaintFree_8u_C3R(state));
    double error = 0;
    for (size_t i = 0; i < filled.pixels.size(); ++i) error += std::abs(filled.pixels[i] - photo.pixels[i]);
    gallery.add(filled,
                format("Filled in %s (Inpaint, radius 5): under the mask it differs from the untouched photograph by "
                       "%.1f levels in the mean.",
                       method == zebInpaintTelea ? "by Telea's method" : "along the isophotes", error / (3 * masked)),
                time + buildTime);
  }
  gallery.add(photo, "The untouched photograph.");
}

void show(const Scene& scene, Gallery& gallery) {
  gallery.say(
      "Markers that grow over a relief, or over the differences between neighbours, cut a picture into segments; "
      "connected components are counted, coloured and, where they are small, removed; and what a mask covers is filled "
      "in from around it, in the order of its distance from the edge.");
  showSegments(scene, gallery);
  showComponents(scene, gallery);
  showSpeckles(gallery);
  showInpainting(scene, gallery);
}

const Section section(65, "Segments, components, inpainting", show);

}  // namespace
}  // namespace tour
