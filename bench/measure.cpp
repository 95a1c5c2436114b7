#include "measure.h"

#include <immintrin.h>
#include <time.h>

#include <algorithm>
#include <chrono>
#include <limits>

namespace bench {
namespace {

using Clock = std::chrono::steady_clock;

// Processor time of this thread, which passes over the times when others had the processor: in nanoseconds.
double now() {
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

// Reading the clock costs some 300 ns.
constexpr double slice = 100e3;
// Long beside the few lines of cache that the other build left in the way.
constexpr double pairedSlice = 300e3;

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

// Reads, updates and writes as many bytes in as many rows as the case does, and does nothing else: reads are folded
// into one register, writes are of a constant, an update adds to what it reads. The three streams of a row advance
// together.
class BareLoop {
 public:
  BareLoop(const Scene& scene, const Bytes& bytes)
      : size_(scene.size),
        bytes_(bytes),
        read_(stream(scene, bytes.read)),
        update_(stream(scene, bytes.update)),
        write_(stream(scene, bytes.write)) {}

  void operator()() {
    __m256i folded = _mm256_setzero_si256();
    const __m256i one = _mm256_set1_epi8(1);
    for (int y = 0; y < size_.height; ++y) {
      const Zeb8u* read = read_.row(y);
      Zeb8u *update = update_.row(y), *write = write_.row(y);
      int readTo = 0, updateTo = 0, writeTo = 0;
      for (int x = 0; x < size_.width;) {
        x = std::min(x + pixelsAtATime, size_.width);
        for (const int end = ends(x, bytes_.read); readTo < end; readTo += lane)
          folded = _mm256_or_si256(folded, load(read + readTo));
        for (const int end = ends(x, bytes_.update); updateTo < end; updateTo += lane)
          store(update + updateTo, _mm256_add_epi8(load(update + updateTo), one));
        for (const int end = ends(x, bytes_.write); writeTo < end; writeTo += lane) store(write + writeTo, one);
      }
    }
    asm volatile("" : : "x"(folded) : "memory");
  }

 private:
  static constexpr int lane = 32, pixelsAtATime = 128;

  struct Stream {
    Pixels<Zeb8u> memory;
    int step;
    Zeb8u* row(int y) { return memory.data() + static_cast<ptrdiff_t>(y) * step; }
  };
  static Stream stream(const Scene& scene, double bytes) {
    if (bytes == 0) return {{}, 0};
    const int step = static_cast<int>(scene.stride() * bytes);
    return {Pixels<Zeb8u>(static_cast<size_t>(step) * scene.size.height + lane, 1), step};
  }
  static int ends(int x, double bytes) { return static_cast<int>(x * bytes); }
  static __m256i load(const Zeb8u* p) { return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p)); }
  static void store(Zeb8u* p, __m256i v) { _mm256_storeu_si256(reinterpret_cast<__m256i*>(p), v); }

  ZebiSize size_;
  Bytes bytes_;
  Stream read_, update_, write_;
};

}  // namespace

Times measure(const Work& work, const Scene& scene, double seconds) {
  Memcpy copy(scene);
  BareLoop bare(scene, work.bytes);
  const auto run = [&] { work.run(); };
  const int repeats = repeatsFor(slice, run), copies = repeatsFor(slice, copy), loops = repeatsFor(slice, bare);
  constexpr double never = std::numeric_limits<double>::infinity();
  Times best{never, never, never};
  const auto start = Clock::now(),
             end = start + std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(seconds));
  for (int round = 0; round < 1 || (round < 5 && Clock::now() < start + 3 * (end - start)) || Clock::now() < end;
       ++round) {
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
  turn(older, runOld);
  const auto start = Clock::now();
  const auto spent = [&] { return std::chrono::duration<double>(Clock::now() - start).count(); };
  for (int pair = 0; pair < 2 || spent() < seconds || (pair < 7 && spent() < 4 * seconds); ++pair) {
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
