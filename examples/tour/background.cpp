// What three models of a scene call foreground, and the background that one of them has learned.
#include "scene.h"
#include "tour.h"

namespace tour {
namespace {

void show(const Scene& photograph, Gallery& gallery) {
  constexpr int frames = 40, quiet = 25, shown = 33;
  const Picture& color = photograph.color;
  const Picture small = color.width > 480 ? support::scaled(color, 480, color.height * 480 / color.width) : color;
  const scene::Sequence sequence(small, frames, quiet);
  scene::Watcher watcher(sequence.frame(0), quiet);
  gallery.say(
      "A fixed camera looks at a scene with noise, flickering light and a swaying corner, the upper left. Three models "
      "learn what each pixel usually looks like; then somebody walks through.");
  for (int t = 1; t <= shown; ++t) {
    const auto maps = watcher.look(sequence.frame(t));
    if (t < shown) continue;
    const auto told = [&](const Picture& map, const char* name) {
      const scene::Score s = scene::score(map, sequence.walker(t));
      gallery.add(map,
                  format("%s: %.0f %% of the walker, %.1f %% of the rest.", name, 100 * s.hits, 100 * s.falseAlarms));
    };
    gallery.add(sequence.frame(t), "A frame of a made sequence: the walker in the green coat was not there before.");
    told(maps.histogram, "Histogram of colours");
    told(maps.gaussian, "One Gaussian a channel");
    told(maps.mixture, "Mixture of Gaussians");
    gallery.add(watcher.background(),
                "The background that the mixture has learned. The time is of all three models, one frame.",
                watcher.milliseconds());
  }
}

const Section section(75, "Foreground and background", show);

}  // namespace
}  // namespace tour
