#include "support/guard.h"

#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/mman.h>

#include <algorithm>
#include <map>
#include <vector>

#include "support/memcheck.h"

namespace test {
namespace {

constexpr size_t page = 4096;
thread_local GuardedBytes* newest = nullptr;

// Blocks are reused by size: mapping memory anew for each of many thousands of cases would dominate the tests.
struct Pool {
  ~Pool() {
    for (const auto& [bytes, free] : blocks)
      for (Zeb8u* p : free) munmap(p - page, bytes + 2 * page);
  }
  std::map<size_t, std::vector<Zeb8u*>> blocks;
};
std::map<size_t, std::vector<Zeb8u*>>& pool() {
  thread_local Pool p;
  return p.blocks;
}

Zeb8u* acquire(size_t bytes) {
  auto& free = pool()[bytes];
  if (!free.empty()) {
    Zeb8u* p = free.back();
    free.pop_back();
    return p;
  }
  void* all = mmap(nullptr, bytes + 2 * page, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
  if (all == MAP_FAILED || mprotect(static_cast<Zeb8u*>(all) + page, bytes, PROT_READ | PROT_WRITE) != 0) {
    perror("guarded memory");
    abort();
  }
  return static_cast<Zeb8u*>(all) + page;
}

void release(Zeb8u* p, size_t bytes) {
  if (bytes > 64 * page) {
    munmap(p - page, bytes + 2 * page);
  } else {
    pool()[bytes].push_back(p);
  }
}

// One period of the junk, so that margins are filled and compared in bulk.
constexpr size_t junkPeriod = 0x10000;
const Zeb8u* junk() {
  static const std::vector<Zeb8u> pattern = [] {
    std::vector<Zeb8u> p(junkPeriod);
    for (size_t i = 0; i < junkPeriod; ++i) p[i] = junkByte(i);
    return p;
  }();
  return pattern.data();
}

// Calls visit(position, junk, bytes) for pieces of from..to-1 as long as it returns true.
template <class Visit>
bool forJunk(size_t from, size_t to, Visit visit) {
  while (from < to) {
    const size_t phase = from % junkPeriod, bytes = std::min(to - from, junkPeriod - phase);
    if (!visit(from, junk() + phase, bytes)) return false;
    from += bytes;
  }
  return true;
}

}  // namespace

Zeb8u junkByte(size_t position) {
  return static_cast<Zeb8u>(position * 167 + (position >> 8) * 31 + 0x6B);
}

void fillWithSignals(void* start, size_t bytes) {
  Zeb8u pattern[sizeof(signals)];
  memcpy(pattern, signals, sizeof(signals));
  auto* const p = static_cast<Zeb8u*>(start);
  const uintptr_t phase = reinterpret_cast<uintptr_t>(start);
  for (size_t i = 0; i < bytes && i < sizeof(signals); ++i) p[i] = pattern[(phase + i) % sizeof(signals)];
  for (size_t done = sizeof(signals), n; done < bytes; done += n) {
    n = std::min(done, bytes - done);
    memcpy(p + done, p, n);
  }
  holdsNothing(start, bytes);
}

GuardedBytes::GuardedBytes(size_t size, Place place, size_t offset) : size_(size), previous_(newest), next_(nullptr) {
  if (place != Place::odd) offset = place == Place::front ? 0 : offset;
  const size_t room = size + (place == Place::odd ? offset : 0);
  pageBytes_ = (room + page - 1) / page * page;
  if (pageBytes_ == 0) pageBytes_ = page;
  pages_ = acquire(pageBytes_);
  data_ = place == Place::front ? pages_ : place == Place::odd ? pages_ + offset : pages_ + (pageBytes_ - size);
  fillJunk(0, static_cast<size_t>(data_ - pages_));
  fillJunk(static_cast<size_t>(data_ - pages_) + size, pageBytes_);
  if (newest) newest->next_ = this;
  newest = this;
}

GuardedBytes::~GuardedBytes() {
  if (previous_) previous_->next_ = next_;
  if (next_) next_->previous_ = previous_;
  if (newest == this) newest = previous_;
  release(pages_, pageBytes_);
}

void GuardedBytes::fillJunk(size_t from, size_t to) {
  forJunk(from, to, [this](size_t at, const Zeb8u* bytes, size_t count) {
    memcpy(pages_ + at, bytes, count);
    return true;
  });
}

bool GuardedBytes::intactMargins() const {
  const auto equal = [this](size_t at, const Zeb8u* bytes, size_t count) {
    return memcmp(pages_ + at, bytes, count) == 0;
  };
  const size_t before = static_cast<size_t>(data_ - pages_);
  return forJunk(0, before, equal) && forJunk(before + size_, pageBytes_, equal);
}

void GuardedBytes::fillWithJunk() {
  const size_t before = static_cast<size_t>(data_ - pages_);
  fillJunk(before, before + size_);
  holdsNothing(data_, size_);
}

size_t GuardedBytes::bytesFrom(const void* at) {
  const auto* p = static_cast<const Zeb8u*>(at);
  for (const GuardedBytes* block = newest; block; block = block->previous_)
    if (p >= block->data_ && p < block->data_ + block->size_)
      return static_cast<size_t>(block->data_ + block->size_ - p);
  return 0;
}

uint64_t GuardedBytes::digestOfAll() {
  uint64_t digest = 0xCBF29CE484222325u;
  for (const GuardedBytes* block = newest; block; block = block->previous_) {
    for (size_t i = 0; i < block->pageBytes_; i += 8) {
      uint64_t word;
      memcpy(&word, block->pages_ + i, 8);
      digest = (digest ^ word) * 0x100000001B3u;
    }
  }
  mayBeLookedAt(&digest, sizeof(digest));
  return digest;
}

}  // namespace test
