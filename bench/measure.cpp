#include "measure.h"

#include <algorithm>
#include <chrono>
#include <limits>

#include "bare_loop.h"
#include "clock.h"

namespace bench {
namespace {

using Clock = std::chrono::steady_clock;

class Memcpy {
 public:
  explicit Memcpy(const Scene& scene) : source_(scene.count(), 1), destination_(scene.count(), 2) {}
  void operator()() {
    std::memcpy(destination_.data(), source_.data(), source_.size());
    asm volatile("" : : "r"(destination_.data()) : "memory");  // the copy is wanted, though nobody reads it
  }

 private:
  Pixels<Zeb8u> source_, destination_;
};

}  // namespace

Times measure(const Work& work, const Scene& scene, double seconds) {
  Memcpy copy(scene);
  BareLoop bare(scene, work.bytes);
  const auto run = [&] { work.run(); };
  const int copies = repeatsFor(tableSlice, copy), loops = repeatsFor(tableSlice, bare);
  Times best{timed(1, run), timed(copies, copy), timed(loops, bare)};
  if (best.run > longRun) return best;
  const int repeats = repeatsFor(tableSlice, run);
  const double start = now(), nanoseconds = 1e9 * seconds;
  const auto spent = [&] { return now() - start; };
  for (int round = 0; spent() < nanoseconds || (round < 5 && spent() < 3 * nanoseconds); ++round) {
    best.run = std::min(best.run, timed(repeats, run));
    best.copy = std::min(best.copy, timed(copies, copy));
    if (work.bytes.total() > 0) best.bare = std::min(best.bare, timed(loops, bare));
  }
  return best;
}

void Ratio::measure(const Library& newer, const Work& newWork, const Library& older, const Work& oldWork,
                    double seconds) {
  const auto runNew = [&] { newWork.run(); };
  const auto runOld = [&] { oldWork.run(); };
  newer.use();
  const int repeats = repeatsFor(pairedSlice, runNew);
  // A slice of each; the first run of a short one only brings its images back into the cache.
  const auto turn = [&](const Library& library, const auto& run) {
    library.use();
    if (repeats > 1) run();
    return timed(repeats, run);
  };
  if (repeats > 1) turn(older, runOld);
  const auto start = Clock::now();
  const auto spent = [&] { return std::chrono::duration<double>(Clock::now() - start).count(); };
  for (int pair = 0; pair < 1 || spent() < seconds || (pair < 7 && spent() < 4 * seconds); ++pair) {
    double newTime, oldTime;
    if (pair % 2 == 0) {
      newTime = turn(newer, runNew);
      oldTime = turn(older, runOld);
    } else {
      oldTime = turn(older, runOld);
      newTime = turn(newer, runNew);
    }
    ratios_.push_back(oldTime / newTime);
    newBest_ = std::min(newBest_, newTime);
    oldBest_ = std::min(oldBest_, oldTime);
  }
  newer.use();
}

double Ratio::quantile(double part) const {
  std::vector<double> sorted = ratios_;
  std::sort(sorted.begin(), sorted.end());
  const double at = part * static_cast<double>(sorted.size() - 1);
  const size_t below = static_cast<size_t>(at);
  const size_t above = std::min(below + 1, sorted.size() - 1);
  return sorted[below] + (at - static_cast<double>(below)) * (sorted[above] - sorted[below]);
}

}  // namespace bench
