// Points followed through pictures: which points are worth following, where they went, and pictures moved in a way that
// is known exactly to compare with.
#pragma once

#include <vector>

#include "picture.h"
#include "zebcv.h"

namespace track {

using support::Picture;

// The picture turned by degrees (clockwise) and scaled by zoom about its middle, then shifted, in pixels.
struct Motion {
  float shiftX = 0;
  float shiftY = 0;
  float degrees = 0;
  float zoom = 1;

  // That many of it in turn, where the shift comes after all turning and zooming.
  Motion times(int count) const;
  // Where a point of the unmoved picture is in the moved one.
  ZebiPoint_32f moved(ZebiPoint_32f point, ZebiSize size) const;
  // Where a point of the moved picture came from.
  ZebiPoint_32f origin(ZebiPoint_32f point, ZebiSize size) const;
};

// The picture as the motion leaves it; edge pixels repeated where it comes from outside.
Picture moved(const Picture& gray, const Motion& motion);

// Up to `most` points whose surroundings change in every direction, the best first and at least `apart` pixels from
// each other: peaks of the smaller eigenvalue of the gradient products summed over a window (J. Shi and C. Tomasi,
// 1994).
std::vector<ZebiPoint_32f> goodPoints(const Picture& gray, int most, float apart);

// A gray picture with its halvings.
class Pyramid {
 public:
  Pyramid(const Picture& gray, int levels);
  Pyramid(const Pyramid&) = delete;
  ~Pyramid() { zebiPyramidFree(record_); }

  ZebiPyramid* record() const { return record_; }
  const std::vector<Picture>& images() const { return images_; }

 private:
  ZebiPyramid* record_ = nullptr;
  std::vector<Picture> images_;
};

struct Place {
  ZebiPoint_32f at;
  float difference;  // root mean square of the gray levels' difference between the two windows
  bool found;
};

// The places of the points of one picture in another. A point counts as found when the way back from there ends within
// half a pixel of where it started (Z. Kalal and others, 2010). milliseconds: of the library's tracking calls there and
// back, if wanted.
std::vector<Place> follow(const Pyramid& from, const Pyramid& to, const std::vector<ZebiPoint_32f>& points,
                          double* milliseconds = nullptr);

// Errors of found places against the truth, in pixels. Points that the motion takes out of the picture are left out.
struct Accuracy {
  int visible = 0;  // points that can be seen in both pictures
  int lost = 0;     // of these
  double median = 0, percentile90 = 0;
};
Accuracy compare(const std::vector<Place>& places, const std::vector<ZebiPoint_32f>& truth, ZebiSize size);

// The value that the given part of the values, 0 to 1, does not exceed; 0 of none.
double quantile(std::vector<double> values, double part);

}  // namespace track
