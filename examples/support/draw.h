// Lines, arrows and crosses over pictures of three channels.
#pragma once

#include <array>

#include "picture.h"

namespace support {

using Colour = std::array<Zeb8u, 3>;

// The gray levels in three channels, level x contrast + lift.
Picture toned(const Picture& gray, float contrast = 1, float lift = 0);

// A line of the given width in pixels, its edges blended with what lies beneath.
void drawLine(Picture& picture, float x0, float y0, float x1, float y1, const Colour& colour, float width = 1);

// A line with a head at its second end, the head as long as a third of the line, between 3 and 9 pixels.
void drawArrow(Picture& picture, float x0, float y0, float x1, float y1, const Colour& colour, float width = 1);

// An upright cross with arms of the given length.
void drawCross(Picture& picture, float x, float y, float arm, const Colour& colour, float width = 1);

// The outline of a rectangle, its inner edge along the outermost pixels of the rectangle.
void drawBox(Picture& picture, const ZebiRect& box, const Colour& colour, int width = 3);

}  // namespace support
