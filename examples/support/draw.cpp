#include "draw.h"

#include <algorithm>
#include <cmath>

namespace support {

Picture toned(const Picture& gray, float contrast, float lift) {
  Picture out(gray.width, gray.height, 3);
  for (size_t i = 0; i < gray.pixels.size(); ++i)
    std::fill_n(&out.pixels[3 * i], 3, level(gray.pixels[i] * contrast + lift));
  return out;
}

void drawLine(Picture& picture, float x0, float y0, float x1, float y1, const Colour& colour, float width) {
  const float dx = x1 - x0, dy = y1 - y0, squared = dx * dx + dy * dy, reach = width / 2 + 0.5f;
  const auto from = [=](float a, float b) {
    return static_cast<int>(std::max(0.0f, std::floor(std::min(a, b) - reach)));
  };
  const auto to = [=](float a, float b, int n) {
    return static_cast<int>(std::min(n - 1.0f, std::ceil(std::max(a, b) + reach)));
  };
  for (int y = from(y0, y1); y <= to(y0, y1, picture.height); ++y)
    for (int x = from(x0, x1); x <= to(x0, x1, picture.width); ++x) {
      const float t = squared > 0 ? std::clamp(((x - x0) * dx + (y - y0) * dy) / squared, 0.0f, 1.0f) : 0;
      const float cover = std::clamp(reach - std::hypot(x0 + t * dx - x, y0 + t * dy - y), 0.0f, 1.0f);
      Zeb8u* const p = picture.at(x, y);
      for (int c = 0; c < 3; ++c) p[c] = level(p[c] + cover * (colour[c] - p[c]));
    }
}

void drawArrow(Picture& picture, float x0, float y0, float x1, float y1, const Colour& colour, float width) {
  drawLine(picture, x0, y0, x1, y1, colour, width);
  const float length = std::hypot(x1 - x0, y1 - y0);
  if (!(length > 0)) return;
  const float head = std::clamp(length / 3, 3.0f, 9.0f), along = head * (x1 - x0) / length,
              down = head * (y1 - y0) / length;
  for (float side : {-0.5f, 0.5f})
    drawLine(picture, x1, y1, x1 - along - side * down, y1 - down + side * along, colour, width);
}

void drawCross(Picture& picture, float x, float y, float arm, const Colour& colour, float width) {
  drawLine(picture, x - arm, y, x + arm, y, colour, width);
  drawLine(picture, x, y - arm, x, y + arm, colour, width);
}

void drawBox(Picture& picture, const ZebiRect& box, const Colour& colour, int width) {
  for (int y = std::max(0, box.y - width + 1); y < std::min(picture.height, box.y + box.height + width - 1); ++y)
    for (int x = std::max(0, box.x - width + 1); x < std::min(picture.width, box.x + box.width + width - 1); ++x)
      if (x <= box.x || y <= box.y || x >= box.x + box.width - 1 || y >= box.y + box.height - 1)
        std::copy_n(colour.begin(), 3, picture.at(x, y));
}

}  // namespace support
