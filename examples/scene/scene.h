// A scene before a fixed camera: sequences of it, made from one photograph so that the truth is known, and the three
// models that learn it.
#pragma once

#include <memory>
#include <vector>

#include "picture.h"
#include "zebcv.h"

namespace scene {

using support::Picture;

// Noise, flickering light, a part that sways to and fro, and after some frames a walker in front.
class Sequence {
 public:
  Sequence(const Picture& photograph, int frames, int quietFrames)
      : base_(photograph), frames_(frames), quiet_(quietFrames) {}

  int frames() const { return frames_; }
  Picture frame(int t) const;
  // 255 where the walker stands; one channel.
  Picture walker(int t) const;

 private:
  bool isWalker(int x, int y, int t) const;

  Picture base_;
  int frames_, quiet_;
};

// What each model calls foreground.
struct Maps {
  Picture histogram, gaussian, mixture;
};

// The three models side by side. The histogram and the Gaussian learn what they call background, and everything while
// the scene is new; the mixture tells for itself.
class Watcher {
 public:
  // Learns everything for so many frames.
  Watcher(const Picture& first, int newFrames);

  Maps look(const Picture& frame);
  // The heaviest colour of every pixel of the mixture.
  Picture background() const;
  double milliseconds() const { return milliseconds_; }  // of the library calls of the last look

 private:
  template <class State>
  using Record = std::unique_ptr<State, ZebStatus (*)(State*)>;
  ZebiFGMixtureState* mixture() const { return reinterpret_cast<ZebiFGMixtureState*>(memory_.data()); }

  ZebiSize size_;
  int left_;
  double milliseconds_ = 0;
  Record<ZebiFGHistogramState> histogram_{nullptr, zebiFGHistogramFree_8u_C3R};
  Record<ZebiFGGaussianState> gaussian_{nullptr, zebiFGGaussianFree_8u_C3R};
  mutable std::vector<Zeb8u> memory_;
};

// Parts of 1: of the walker that is marked, and of everything else.
struct Score {
  double hits = 0, falseAlarms = 0;
};
Score score(const Picture& map, const Picture& truth);

}  // namespace scene
