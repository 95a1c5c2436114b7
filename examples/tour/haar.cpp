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

void outline(Picture& p, const ZebiRect& box) {
  for (int t = 0; t < 3; ++t) {
    for (int k = -t; k < box.width + t; ++k) {
      for (const auto& [x, y] : {std::pair{box.x + k, box.y - t}, std::pair{box.x + k, box.y + box.height - 1 + t},
                                 std::pair{box.x - t, box.y + k}, std::pair{box.x + box.width - 1 + t, box.y + k}}) {
        if (x < 0 || y < 0 || x >= p.width || y >= p.height) continue;
        p.at(x, y)[0] = 255, p.at(x, y)[1] = 60, p.at(x, y)[2] = 60;
      }
    }
  }
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
  gallery.add(tablePicture(sums, w, h), "The table of sums, as the square root of its share of the total", tables);

  constexpr int side = 15;
  const ZebiSize windows = {w - side + 1, h - side + 1};
  std::vector<Zeb32f> deviation(static_cast<size_t>(windows.width) * windows.height);
  const double deviations = bestTime([&] {
    return zebiRectStdDev_32s32f_C1R(sums.data(), 4 * columns, squares.data(), 8 * columns, deviation.data(),
                                     4 * windows.width, windows, {0, 0, side, side});
  });
  Picture map(windows.width, windows.height, 1);
  for (size_t i = 0; i < map.pixels.size(); ++i) map.pixels[i] = static_cast<Zeb8u>(std::min(255.0f, 3 * deviation[i]));
  gallery.add(map, format("Deviation of every %d x %d window, three times as bright", side, side), deviations);

  Picture marked = gray;
  const float shorter = static_cast<float>(std::min(w, h));
  cascade::drawObject(marked, 0.08f * w, 0.1f * h, 0.14f * shorter, 0.8f);
  cascade::drawObject(marked, 0.7f * w, 0.08f * h, 0.2f * shorter, 0.8f);
  cascade::drawObject(marked, 0.12f * w, 0.75f * h, 0.09f * shorter, 0.8f);
  std::mt19937 engine(5);
  const cascade::Search search = cascade::Detector(cascade::train(engine, 8)).find(marked);
  Picture color = support::toned(marked);
  for (const auto& d : search.detections) outline(color, d.box);
  std::string left = format("%lld windows", search.left[0]);
  for (size_t i = 1; i < search.left.size(); ++i) left += format(", %lld", search.left[i]);
  gallery.add(color, "Rendered markers found by a cascade trained on rendered pictures; left by each stage: " + left,
              search.milliseconds);
}

const Section section(20, "Integral images and a cascade", show);

}  // namespace
}  // namespace tour
