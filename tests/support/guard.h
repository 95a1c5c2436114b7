// Memory between inaccessible pages.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include "zebcv.h"

namespace test {

// Where a block lies between its two inaccessible pages.
enum class Place {
  front,  // its first byte follows the page in front
  back,   // its last byte precedes the page behind
  odd     // some odd bytes after the page in front
};

// A block of bytes between inaccessible pages. Whatever of its pages it does not use itself is a margin, filled with a
// pattern that intactMargins() checks.
class GuardedBytes {
 public:
  GuardedBytes(size_t size, Place place, size_t offset = 0);
  ~GuardedBytes();
  GuardedBytes(const GuardedBytes&) = delete;
  GuardedBytes& operator=(const GuardedBytes&) = delete;

  Zeb8u* data() const { return data_; }
  size_t size() const { return size_; }
  bool intactMargins() const;
  // Fills the block itself with the margins' pattern.
  void fillWithJunk();

  // The bytes from an address in a block to its end; 0 when it is in none.
  static size_t bytesFrom(const void* at);
  // All blocks of the thread that live now, so that a test can see that a failed call wrote to none of them.
  static uint64_t digestOfAll();

 private:
  void fillJunk(size_t from, size_t to);

  Zeb8u* pages_;
  size_t pageBytes_;
  Zeb8u* data_;
  size_t size_;
  GuardedBytes* previous_;
  GuardedBytes* next_;
};

Zeb8u junkByte(size_t position);

// A float that signals, and the upper half of a double that does.
constexpr uint32_t signals[2] = {0x7FB5A5A5, 0x7FF5A5A5};
// Fills memory that holds nothing yet with both in turn, on their own boundaries.
void fillWithSignals(void* start, size_t bytes);

// A scratch buffer of exactly size bytes at an odd address, filled with signalling values.
class Scratch {
 public:
  explicit Scratch(int size, Place place = Place::back) : bytes_(size > 0 ? static_cast<size_t>(size) : 1, place, 1) {
    fillWithSignals(bytes_.data(), bytes_.size());
  }
  Zeb8u* get() const { return bytes_.data(); }
  bool intact() const { return bytes_.intactMargins(); }

 private:
  GuardedBytes bytes_;
};

}  // namespace test
