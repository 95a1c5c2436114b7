// A detector for one object, a dark ring with a dot on a bright disc, as printed markers have it: rendering of the
// object and of backgrounds without it, training of a small cascade on them, and detection at several scales.
#pragma once

#include <memory>
#include <random>
#include <vector>

#include "picture.h"
#include "zebcv.h"

namespace cascade {

using support::Picture;

constexpr int window = 24;  // side of the detection window in pixels

// Draws the object with its square at (x, y) and of the given side into a gray picture. contrast 1 is black on white.
void drawObject(Picture& picture, float x, float y, float side, float contrast);

// One stage as the library takes it: classifiers of two rectangles, the whole window and a part of it.
struct Stage {
  std::vector<ZebiRect> features;
  std::vector<Zeb32f> weights, thresholds, values1, values2;
  std::vector<int> counts;
  Zeb32f threshold = 0;
};

// Trains stages by boosting (P. Viola and M. Jones, 2001; confidence-rated stumps after R. Schapire and Y. Singer,
// 1999) on objects and backgrounds that it renders itself. The same engine state gives the same cascade.
std::vector<Stage> train(std::mt19937& engine, int stages);

struct Detection {
  ZebiRect box;  // in pixels of the searched picture
  int windows;   // how many overlapping windows agreed
};

struct Search {
  std::vector<Detection> detections;
  std::vector<long long> left;  // windows looked at, then windows left by each stage
  double milliseconds = 0;      // of the library's calls
};

// Objects in a picture, each a square.
struct Placed {
  float x, y, side;
};

// Draws the object at four sizes, where the picture has room for it, and returns where.
std::vector<Placed> place(Picture& gray);

// Which of the objects was detected: index into placed, -1 for a false alarm.
int objectOf(const Detection& detection, const std::vector<Placed>& placed);

class Detector {
 public:
  explicit Detector(const std::vector<Stage>& stages);

  // Looks for the object in a gray picture, from one window's size up in steps of a factor.
  Search find(const Picture& gray, float factor = 1.1f) const;

  // The mask of one scale: 1 where a window passes every stage. Adds to the counts of left.
  std::vector<Zeb8u> passing(const Picture& gray, ZebiSize& positions, std::vector<long long>& left) const;

 private:
  struct Release {
    void operator()(ZebiHaarClassifier* state) const { zebiHaarClassifierFree_32f(state); }
  };
  std::vector<std::unique_ptr<ZebiHaarClassifier, Release>> states_;
  std::vector<Zeb32f> thresholds_;
};

}  // namespace cascade
