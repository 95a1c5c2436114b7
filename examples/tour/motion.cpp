// Pyramids, the flow between a photograph and the same photograph moved, and the history of a motion.
#include <cmath>

#include "ball.h"
#include "colours.h"
#include "draw.h"
#include "tour.h"
#include "track.h"

namespace tour {
namespace {

// Pictures on a gray ground, the first at full size, the others below each other at its right.
Picture beside(const std::vector<Picture>& levels) {
  constexpr int gap = 8;
  const Picture& base = levels[0];
  Picture out(base.width + gap + levels[1].width, base.height, base.channels);
  std::fill(out.pixels.begin(), out.pixels.end(), Zeb8u(128));
  int x = 0, y = 0;
  for (const Picture& level : levels) {
    for (int r = 0; r < level.height && y + r < out.height; ++r)
      std::copy_n(level.at(0, r), level.step(), out.at(x, y + r));
    if (x == 0) {
      x = base.width + gap;
    } else {
      y += level.height + gap;
    }
  }
  return out;
}

// Four levels, each made from the one before by below(from, to), and the time of these calls.
template <class SizeBelow, class Below>
std::vector<Picture> levelsOf(const Picture& photo, SizeBelow sizeBelow, Below below, double& milliseconds) {
  std::vector<Picture> levels = {photo};
  milliseconds = 0;
  for (int i = 0; i < 4; ++i) {
    const ZebiSize size = sizeBelow(levels.back().size());
    Picture to(size.width, size.height, 3);
    milliseconds += bestTime([&] { return below(levels.back(), to); });
    levels.push_back(std::move(to));
  }
  return levels;
}

void showPyramids(const Picture& photo, Gallery& gallery) {
  int bytes = 0;
  double time = 0;
  requireOk(zebiPyrDownGetBufSize_Gauss5x5(photo.width, zeb8u, 3, &bytes));
  std::vector<Zeb8u> scratch(bytes);
  const std::vector<Picture> halvings = levelsOf(
      photo,
      [](ZebiSize size) {
        return ZebiSize{(size.width + 1) / 2, (size.height + 1) / 2};
      },
      [&](const Picture& from, Picture& to) {
        return zebiPyrDown_Gauss5x5_8u_C3R(from.pixels.data(), from.step(), to.pixels.data(), to.step(), from.size(),
                                           scratch.data());
      },
      time);
  gallery.add(beside(halvings), "The photograph and four halvings (PyrDown).", time);

  // What a level has lost: up again, and compared.
  const Picture& half = halvings[1];
  requireOk(zebiPyrUpGetBufSize_Gauss5x5(half.width, zeb8u, 3, &bytes));
  scratch.resize(bytes);
  Picture up(2 * half.width, 2 * half.height, 3), detail(photo.width, photo.height, 3);
  const double doubling = bestTime([&] {
    return zebiPyrUp_Gauss5x5_8u_C3R(half.pixels.data(), half.step(), up.pixels.data(), up.step(), half.size(),
                                     scratch.data());
  });
  for (int y = 0; y < photo.height; ++y)
    for (int i = 0; i < photo.step(); ++i)
      detail.at(0, y)[i] = support::level(128 + 3 * (photo.at(0, y)[i] - up.at(0, y)[i]));
  gallery.add(detail,
              "What the first halving lost: the photograph less its half doubled again (PyrUp), three times as strong.",
              doubling);

  constexpr float rate = 1.6f;
  constexpr Zeb16s binomial[] = {1, 4, 6, 4, 1};
  ZebiPyramidDownState* state = nullptr;
  requireOk(zebiPyramidLayerDownInitAlloc_8u_C3R(&state, photo.size(), rate, binomial, 5, zebInterLinear));
  std::vector<Picture> levels = levelsOf(
      photo,
      [](ZebiSize size) {
        requireOk(zebiGetPyramidDownROI(size, &size, rate));
        return size;
      },
      [=](const Picture& from, Picture& to) {
        return zebiPyramidLayerDown_8u_C3R(from.pixels.data(), from.step(), from.size(), to.pixels.data(), to.step(),
                                           to.size(), state);
      },
      time);
  requireOk(zebiPyramidLayerDownFree_8u_C3R(state));
  levels.erase(levels.begin() + 1);  // too large to stand beside the photograph
  gallery.add(beside(levels),
              format("Levels of any rate, here %.1f (PyramidLayerDown); the second to the fourth of them.",
                     static_cast<double>(rate)),
              time);
}

void showFlow(const Picture& photo, Gallery& gallery) {
  constexpr support::Colour yellow = {255, 225, 60}, red = {255, 60, 60};
  const auto points = track::goodPoints(photo, 350, 12);
  const track::Pyramid still(photo, 3);
  struct Case {
    track::Motion motion;
    const char* text;
  };
  for (const Case& c : {Case{{14.3f, -8.6f, 0, 1}, "shifted by 14.3 and -8.6 pixels"},
                        Case{{0, 0, 5, 1}, "turned by 5 degrees"}, Case{{0, 0, 0, 1.06f}, "enlarged by 6 per cent"}}) {
    const Picture after = track::moved(photo, c.motion);
    const track::Pyramid moved(after, 3);
    double time = std::numeric_limits<double>::infinity();
    std::vector<track::Place> places;
    for (int run = 0; run < 5; ++run) {
      double milliseconds = 0;
      places = track::follow(still, moved, points, &milliseconds);
      time = std::min(time, milliseconds);
    }
    std::vector<ZebiPoint_32f> truth;
    for (const auto& p : points) truth.push_back(c.motion.moved(p, photo.size()));
    const track::Accuracy accuracy = track::compare(places, truth, photo.size());
    Picture drawn = support::toned(after, 0.55f, 20);
    for (size_t i = 0; i < points.size(); ++i) {
      if (places[i].found) {
        support::drawArrow(drawn, points[i].x, points[i].y, places[i].at.x, places[i].at.y, yellow, 1.2f);
      } else {
        support::drawCross(drawn, points[i].x, points[i].y, 3, red, 1.2f);
      }
    }
    gallery.add(
        drawn,
        format("The photograph %s and where %zu points of it went (OpticalFlowPyrLK, there and back): median "
               "error %.3f pixels, 90 per cent within %.3f. Crosses: %d of %d visible points lost, others out of the "
               "picture.",
               c.text, points.size(), accuracy.median, accuracy.percentile90, accuracy.lost, accuracy.visible),
        time);
  }
}

// A ball thrown through the picture: what changes from frame to frame is the silhouette.
void showHistory(const Picture& photo, Gallery& gallery) {
  constexpr int frames = 30;
  constexpr float duration = 18;
  const ZebiSize size = photo.size();
  const float radius = 0.09f * std::min(size.width, size.height);
  support::Plane history(size);
  Picture before = photo, frame, silhouette(size.width, size.height, 1);
  double time = 0;
  for (int k = 1; k <= frames; ++k) {
    const float way = static_cast<float>(k) / frames, height = 4 * way * (1 - way);
    frame = withBall(photo, (-0.1f + 1.0f * way) * size.width, (0.9f - 0.6f * height) * size.height, radius, 9 * way);
    requireOk(zebiAbsDiff_8u_C1R(frame.pixels.data(), frame.step(), before.pixels.data(), before.step(),
                                 silhouette.pixels.data(), silhouette.step(), size));
    for (Zeb8u& p : silhouette.pixels) p = p > 24 ? 255 : 0;
    time += timed([&] {
      return zebiUpdateMotionHistory_8u32f_C1IR(silhouette.pixels.data(), silhouette.step(), history.data(),
                                                history.step(), size, static_cast<float>(k), duration);
    });
    before = frame;
  }
  gallery.add(silhouette, "What changed between the last two of 30 frames of a thrown ball.");
  Picture out = support::toned(frame, 0.45f, 15);
  for (size_t i = 0; i < history.pixels.size(); ++i)
    if (history.pixels[i] > 0)
      put(&out.pixels[3 * i], warmth(0.9f - 0.8f * (frames - history.pixels[i]) / duration),
          0.6f + frame.pixels[i] / 640.0f);
  gallery.add(out,
              format("When something last moved (UpdateMotionHistory): red now, blue %.0f frames ago; what is older is "
                     "forgotten. Time per frame.",
                     static_cast<double>(duration)),
              time / frames);
}

void show(const Scene& scene, Gallery& gallery) {
  gallery.say(
      "Halved again and again, a picture shows the same scene at every scale. A point is found again from the coarsest "
      "level down: each level doubles the motion that can be followed and the finest one gives the fraction of a "
      "pixel. "
      "Where only the fact of motion counts, its history keeps the time at which each pixel last changed.");
  showPyramids(scene.color, gallery);
  showFlow(scene.gray, gallery);
  showHistory(scene.gray, gallery);
}

const Section section(70, "Pyramids, flow, motion history", show);

}  // namespace
}  // namespace tour
