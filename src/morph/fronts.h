// Changed stretches of rows that wait for the rows above and below to take them in: a heap in the caller's memory.
#pragma once

#include <stdint.h>
#include <string.h>

#include "zebcv/types.h"

namespace zeb {

// Columns first..last of row y. Fronts of higher rank come first, of the same rank older ones.
struct Front {
  uint32_t rank;
  uint32_t age;
  int y;
  int first, last;
};

// The age counts pushes and may wrap: the order decides about the work alone, never about the result.
inline bool before(const Front& a, const Front& b) {
  return a.rank != b.rank ? a.rank > b.rank : a.age < b.age;
}

class Fronts {
 public:
  // Any address; room for one front at least.
  Fronts(Zeb8u* memory, int64_t bytes) : memory_(memory), room_(static_cast<int>(bytes / bytesOf(1))) {}

  bool empty() const { return count_ == 0; }

  // Returns the row of the front that found no room, the new one or one of little rank; -1 when there was room.
  int push(Front f) {
    f.age = ++pushes_;
    int i = count_, lost = -1;
    if (count_ < room_) {
      ++count_;
    } else {
      const Front last = at(--i);
      if (!before(f, last)) return f.y;
      lost = last.y;
    }
    while (i > 0) {
      const Front parent = at((i - 1) / 2);
      if (!before(f, parent)) break;
      put(i, parent);
      i = (i - 1) / 2;
    }
    put(i, f);
    return lost;
  }

  Front pop() {
    const Front top = at(0), moving = at(--count_);
    int i = 0;
    for (int child; (child = 2 * i + 1) < count_; i = child) {
      Front larger = at(child);
      if (child + 1 < count_) {
        const Front other = at(child + 1);
        if (before(other, larger)) larger = other, ++child;
      }
      if (!before(larger, moving)) break;
      put(i, larger);
    }
    put(i, moving);
    return top;
  }

 private:
  static constexpr size_t bytesOf(int count) { return static_cast<size_t>(count) * sizeof(Front); }
  Front at(int i) const {
    Front f;
    memcpy(&f, memory_ + bytesOf(i), sizeof f);
    return f;
  }
  void put(int i, const Front& f) { memcpy(memory_ + bytesOf(i), &f, sizeof f); }

  Zeb8u* memory_;
  int room_;
  int count_ = 0;
  uint32_t pushes_ = 0;
};

}  // namespace zeb
