// Clocks: one case against memcpy and the bare loop, or one build against another.
#pragma once

#include <limits>
#include <vector>

#include "bench.h"
#include "library.h"

namespace bench {

// Best nanoseconds of one run of a case, one memcpy of as many bytes as the region has pixels, and one bare loop over
// the case's rows.
struct Times {
  double run, copy, bare;
};
// The three in turn until the time is up.
Times measure(const Work& work, const Scene& scene, double seconds);

// old time / new time over pairs of short slices: above 1, the new build is faster.
class Ratio {
 public:
  // The builds take turns slice by slice, the first one of a pair alternating. Each work was prepared with its build.
  // May be called again with works prepared anew: the pairs of all calls count alike.
  void measure(const Library& newer, const Work& newWork, const Library& older, const Work& oldWork, double seconds);

  double median() const { return quantile(0.5); }
  double quantile(double part) const;
  double ofBest() const { return oldBest_ / newBest_; }
  double newNanoseconds() const { return newBest_; }
  double oldNanoseconds() const { return oldBest_; }
  int pairs() const { return static_cast<int>(ratios_.size()); }

 private:
  std::vector<double> ratios_;
  double newBest_ = std::numeric_limits<double>::infinity(), oldBest_ = newBest_;
};

}  // namespace bench
