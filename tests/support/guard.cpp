#include "support/guard.h"

#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/mman.h>

#include <map>
#include <vector>

namespace test {
namespace {

constexpr size_t page = 4096;
GuardedBytes* newest = nullptr;

// Blocks are reused by size: mapping memory anew for each of many thousands of cases would dominate the tests.
std::map<size_t, std::vector<Zeb8u*>>& pool() {
  static std::map<size_t, std::vector<Zeb8u*>> blocks;
  return blocks;
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

}  // namespace

Zeb8u junkByte(size_t position) {
  return static_cast<Zeb8u>(position * 167 + (position >> 8) * 31 + 0x6B);
}

GuardedBytes::GuardedBytes(size_t size, Place place, size_t offset) : size_(size), previous_(newest), next_(nullptr) {
  if (place != Place::odd) offset = place == Place::front ? 0 : offset;
  const size_t room = size + (place == Place::odd ? offset : 0);
  pageBytes_ = (room + page - 1) / page * page;
  if (pageBytes_ == 0) pageBytes_ = page;
  pages_ = acquire(pageBytes_);
  data_ = place == Place::front ? pages_ : place == Place::odd ? pages_ + offset : pages_ + (pageBytes_ - size);
  for (size_t i = 0; i < static_cast<size_t>(data_ - pages_); ++i) pages_[i] = junkByte(i);
  for (size_t i = static_cast<size_t>(data_ - pages_) + size; i < pageBytes_; ++i) pages_[i] = junkByte(i);
  if (newest) newest->next_ = this;
  newest = this;
}

GuardedBytes::~GuardedBytes() {
  if (previous_) previous_->next_ = next_;
  if (next_) next_->previous_ = previous_;
  if (newest == this) newest = previous_;
  release(pages_, pageBytes_);
}

bool GuardedBytes::intactMargins() const {
  const size_t before = static_cast<size_t>(data_ - pages_);
  for (size_t i = 0; i < before; ++i)
    if (pages_[i] != junkByte(i)) return false;
  for (size_t i = before + size_; i < pageBytes_; ++i)
    if (pages_[i] != junkByte(i)) return false;
  return true;
}

void GuardedBytes::fillWithJunk() {
  const size_t before = static_cast<size_t>(data_ - pages_);
  for (size_t i = 0; i < size_; ++i) data_[i] = junkByte(before + i);
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
  return digest;
}

}  // namespace test
