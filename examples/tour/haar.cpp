// Integral images, local deviation, and a cascade that finds a rendered object.
#include <cmath>

#include "cascade.h"
#include "draw.h"
#include "tour.h"

namespace tour {
namespace {

// The summed-area table as a picture: dark where little has been summed, bright at the end.
Picture tablePicture(const std::vector<Zeb32s>& table, int width, int height) {
  Picture out(width, height, 1);
  const double largest = table.back();
  for (int y = 0; y < height; ++y)
    for (int x = 0; x < width; ++x)
      *out.at(x, y) = static_cast<Zeb8u>(
          255 * std::sqrt(table[static_cast<size_t>(y + 1) * (width + 1) + x + 1] / std::max(largest, 1.0)));
  return out;
}

// The mean over a square that stands on its corner, around every pixel: four reads of the tilted table.
void showTilted(const Picture& gray, Gallery& gallery) {
  constexpr int side = 12;  // the square covers 2 side side pixels
  const int w = gray.width, h = gray.height, columns = w + 2;
  std::vector<Zeb32s> table(static_cast<size_t>(columns) * (h + 2));
  const double time = bestTime([&] {
    return zebiTiltedIntegral_8u32s_C1R(gray.pixels.data(), gray.step(), table.data(), 4 * columns, gray.size(), 0);
  });
  Picture out = gray;
  for (int y = 0; y + 2 * side <= h; ++y)
    for (int x = side; x + side <= w; ++x) {
      const auto at = [&](int column, int row) { return table[static_cast<size_t>(row) * columns + column]; };
      const int sum = at(x, y) - at(x + side, y + side) - at(x - side, y + side) + at(x, y + 2 * side);
      if (x < w && y + side < h) *out.at(x, y + side) = support::level(1.0 * sum / (2 * side * side));
    }
  gallery.add(out,
              format("Mean over a square of %d diagonals that stands on its corner, four reads a pixel "
                     "(TiltedIntegral): small lights become diamonds; the frame is left as it was.",
                     side),
              time);
}

void show(const Scene& scene, Gallery& gallery) {
  gallery.say(
      "A summed-area table answers the sum over any rectangle with four reads. A second table of squares gives the "
      "deviation of every window, and weighted rectangles make the classifiers of a cascade, which throws away most "
      "windows after a few of them.");
  const Picture& gray = scene.gray;
  const int w = gray.width, h = gray.height, columns = w + 1;
  std::vector<Zeb32s> sums(static_cast<size_t>(columns) * (h + 1));
  std::vector<Zeb64f> squares(sums.size());
  const double tables = bestTime([&] {
    return zebiSqrIntegral_8u32s64f_C1R(gray.pixels.data(), gray.step(), sums.data(), 4 * columns, squares.data(),
                                        8 * columns, gray.size(), 0, 0.0);
  });
  gallery.add(tablePicture(sums, w, h),
              "The table of sums (SqrIntegral), as the square root of its share of the total.", tables);

  constexpr int side = 15;
  const ZebiSize windows = {w - side + 1, h - side + 1};
  std::vector<Zeb32f> deviation(static_cast<size_t>(windows.width) * windows.height);
  const double deviations = bestTime([&] {
    return zebiRectStdDev_32s32f_C1R(sums.data(), 4 * columns, squares.data(), 8 * columns, deviation.data(),
                                     4 * windows.width, windows, {0, 0, side, side});
  });
  Picture map(windows.width, windows.height, 1);
  for (size_t i = 0; i < map.pixels.size(); ++i) map.pixels[i] = static_cast<Zeb8u>(std::min(255.0f, 3 * deviation[i]));
  gallery.add(
      map,
      format("Deviation of every %d x %d window, three times as bright (RectStdDev): smooth is dark, detail bright.",
             side, side),
      deviations);

  showTilted(gray, gallery);

  Picture marked = gray;
  const std::vector<cascade::Placed> placed = cascade::place(marked);
  gallery.step("training a cascade on rendered pictures");
  std::mt19937 engine(5);
  const cascade::Search search = cascade::Detector(cascade::train(engine, 8)).find(marked);
  Picture color = support::toned(marked);
  int hits = 0, alarms = 0;
  for (const cascade::Detection& d : search.detections) {
    const bool hit = cascade::objectOf(d, placed) >= 0;
    ++(hit ? hits : alarms);
    support::drawBox(color, d.box, hit ? support::Colour{60, 220, 90} : support::Colour{255, 60, 60});
  }
  std::string left = format("%lld windows", search.left[0]);
  for (size_t i = 1; i < search.left.size(); ++i) left += format(", %lld", search.left[i]);
  gallery.add(
      color,
      format("Rendered markers found by a cascade trained on rendered pictures (ApplyHaarClassifier): %d of %d in "
             "green, %d false alarms in red. Left by each stage: %s.",
             hits, static_cast<int>(placed.size()), alarms, left.c_str()),
      search.milliseconds);
}

const Section section(20, "Integral images and a cascade", show);

}  // namespace
}  // namespace tour
