#include "bare_loop.h"

#include <immintrin.h>

#include <cmath>

#include "clock.h"

namespace bench {
namespace {

constexpr int lane = 32;  // bytes of a vector
constexpr int anyCount = -1;

__m256i* vectors(Pixels<Zeb8u>& memory) {
  return reinterpret_cast<__m256i*>(memory.data());
}

// Pixels after which every stream has moved by whole vectors.
int blockPixels(const Bytes& bytes) {
  for (int pixels = lane; pixels <= 16 * lane; pixels += lane) {
    const double per = static_cast<double>(pixels) / lane;
    const auto whole = [&](double b) { return std::fabs(b * per - std::round(b * per)) < 1e-9; };
    if (whole(bytes.read) && whole(bytes.write) && whole(bytes.update)) return pixels;
  }
  return 16 * lane;
}

}  // namespace

// The counts are of vectors in a block; those of the common cases are known to the compiler, which unrolls them.
template <int reads, int writes, int updates, bool past>
void BareLoop::loop(BareLoop& self) {
  const int rows = self.rows_, blocks = self.blocks_;
  const int r = reads == anyCount ? self.read_.perBlock : reads;
  const int w = writes == anyCount ? self.write_.perBlock : writes;
  const int u = updates == anyCount ? self.update_.perBlock : updates;
  const __m256i one = _mm256_set1_epi8(1);
  __m256i folded = _mm256_setzero_si256();
  for (int y = 0; y < rows; ++y) {
    const __m256i* read = vectors(self.read_.memory) + static_cast<ptrdiff_t>(y) * self.read_.step;
    __m256i* write = vectors(self.write_.memory) + static_cast<ptrdiff_t>(y) * self.write_.step;
    __m256i* update = vectors(self.update_.memory) + static_cast<ptrdiff_t>(y) * self.update_.step;
    for (int block = 0; block < blocks; ++block) {
#pragma GCC unroll 16
      for (int i = 0; i < r; ++i) folded = _mm256_or_si256(folded, _mm256_load_si256(read + i));
#pragma GCC unroll 16
      for (int i = 0; i < u; ++i) _mm256_store_si256(update + i, _mm256_add_epi8(_mm256_load_si256(update + i), one));
#pragma GCC unroll 16
      for (int i = 0; i < w; ++i) past ? _mm256_stream_si256(write + i, one) : _mm256_store_si256(write + i, one);
      read += r, write += w, update += u;
      asm volatile("" : : "r"(write) : "memory");  // neither left out nor made a call
    }
  }
  if (past) _mm_sfence();
  asm volatile("" : : "x"(folded) : "memory");
}

template <bool past>
BareLoop::Loop BareLoop::chosen(int reads, int writes, int updates) {
#define SHAPE(r, w, u) \
  if (reads == r && writes == w && updates == u) return loop<r, w, u, past>;
  SHAPE(1, 0, 0)
  SHAPE(1, 0, 1)
  SHAPE(1, 0, 4)
  SHAPE(2, 0, 4)
  SHAPE(4, 0, 4)
  SHAPE(0, 0, 1)
  SHAPE(1, 1, 0)
  SHAPE(1, 1, 1)
  SHAPE(1, 2, 0)
  SHAPE(1, 4, 0)
  SHAPE(1, 12, 0)
  SHAPE(2, 1, 0)
  SHAPE(2, 1, 1)
  SHAPE(2, 2, 0)
  SHAPE(3, 1, 0)
  SHAPE(3, 3, 0)
  SHAPE(4, 0, 0)
  SHAPE(4, 1, 0)
  SHAPE(4, 2, 0)
  SHAPE(4, 4, 0)
  SHAPE(4, 16, 0)
  SHAPE(8, 0, 1)
  SHAPE(8, 4, 0)
  SHAPE(12, 3, 0)
  SHAPE(12, 4, 0)
#undef SHAPE
  return loop<anyCount, anyCount, anyCount, past>;
}

BareLoop::BareLoop(const Scene& scene, const Bytes& bytes) : rows_(scene.size.height) {
  const int pixels = blockPixels(bytes);
  const auto blocksIn = [&](int width) { return (width + pixels - 1) / pixels; };
  const auto stream = [&](double bytesPerPixel) {
    Stream s;
    s.perBlock = static_cast<int>(std::lround(bytesPerPixel * pixels / lane));
    s.step = s.perBlock * blocksIn(scene.stride);
    s.memory.assign(static_cast<size_t>(s.step) * lane * static_cast<size_t>(rows_), 1);
    return s;
  };
  blocks_ = blocksIn(scene.size.width);
  read_ = stream(bytes.read);
  write_ = stream(bytes.write);
  update_ = stream(bytes.update);
  const Loop through = chosen<false>(read_.perBlock, write_.perBlock, update_.perBlock);
  const Loop past = chosen<true>(read_.perBlock, write_.perBlock, update_.perBlock);
  const auto timeOf = [&](Loop f) {
    const auto run = [&] { f(*this); };
    const int repeats = repeatsFor(tableSlice, run);
    return std::min(timed(repeats, run), timed(repeats, run));
  };
  loop_ = bytes.write > 0 && timeOf(past) < timeOf(through) ? past : through;
}

void BareLoop::operator()() {
  loop_(*this);
}

}  // namespace bench
