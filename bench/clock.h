// Time taken by runs of a function.
#pragma once

#include <time.h>

#include <algorithm>

namespace bench {

// Processor time of this thread, which passes over the times when others had the processor: in nanoseconds. Reading the
// clock costs some 300 ns.
inline double now() {
  timespec t;
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &t);
  return 1e9 * static_cast<double>(t.tv_sec) + static_cast<double>(t.tv_nsec);
}

// Nanoseconds of one execution, averaged over repeats in a row.
template <class F>
double timed(int repeats, F&& f) {
  const double start = now();
  for (int i = 0; i < repeats; ++i) f();
  return (now() - start) / repeats;
}

// As many executions as fill the slice.
template <class F>
int repeatsFor(double sliceNanoseconds, F&& f) {
  double once = timed(1, f);
  if (once < sliceNanoseconds) once = std::min(once, timed(1, f));
  return static_cast<int>(std::clamp(sliceNanoseconds / std::max(1.0, once), 1.0, 1e6));
}

constexpr double tableSlice = 100e3;
// Long beside what it takes to bring back the cache lines that the other build took away.
constexpr double pairedSlice = 300e3;

// A run that takes longer is not repeated for the sake of its last per cents.
constexpr double longRun = 3e8;

}  // namespace bench
