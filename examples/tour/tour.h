// What a section of the tour needs. A family adds examples/tour/<family>.cpp with one namespace-scope Section:
//
//   void show(const Scene& scene, Gallery& gallery) { gallery.say("..."); gallery.add(picture, "caption", ms); }
//   const Section section(10, "Averages and differences", show);
#pragma once

#include <algorithm>
#include <chrono>
#include <limits>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "picture.h"
#include "status.h"
#include "zebcv.h"

namespace tour {

using support::Picture;

struct Scene {
  Picture color;  // the photograph, its longer side between 320 and 1280 pixels
  Picture gray;
};

struct Figure {
  std::string file;
  Picture picture;
  std::string caption;
  std::optional<double> milliseconds;
};

// Collects what one section shows.
class Gallery {
 public:
  // The paragraph above the figures; a second call continues it.
  void say(const std::string& text) { paragraph_ += (paragraph_.empty() ? "" : " ") + text; }

  // milliseconds: time of the library calls that made the picture.
  void add(Picture picture, std::string caption, std::optional<double> milliseconds = std::nullopt) {
    figures_.push_back({"", std::move(picture), std::move(caption), milliseconds});
  }

  // Says what takes longer than two seconds before it begins.
  void step(const std::string& what);

  const std::string& paragraph() const { return paragraph_; }
  std::vector<Figure>& figures() { return figures_; }

 private:
  std::string paragraph_;
  std::vector<Figure> figures_;
};

// Registers itself. Sections stand in the page by order.
struct Section {
  Section(int order, std::string title, void (*show)(const Scene&, Gallery&));
};

using support::requireOk;

// As many bytes as a query answers to these arguments.
template <class Query, class... Arguments>
std::vector<Zeb8u> bytesFor(Query query, Arguments... arguments) {
  int bytes = 0;
  requireOk(query(arguments..., &bytes));
  return std::vector<Zeb8u>(static_cast<size_t>(bytes));
}

// Runs the calls once and returns their milliseconds; the status must be zebStsOk.
template <class F>
double timed(F&& calls) {
  using Clock = std::chrono::steady_clock;
  const auto start = Clock::now();
  const ZebStatus status = calls();
  const double milliseconds = std::chrono::duration<double, std::milli>(Clock::now() - start).count();
  requireOk(status);
  return milliseconds;
}

// The best of several runs, for calls that give the same result each time.
template <class F>
double bestTime(F&& calls, int runs = 9) {
  double best = std::numeric_limits<double>::infinity();
  for (int i = 0; i < runs; ++i) best = std::min(best, timed(calls));
  return best;
}

// printf into a string.
std::string format(const char* pattern, ...) __attribute__((format(printf, 1, 2)));

}  // namespace tour
