// The least that a case costs: its bytes in its rows, and nothing done with them.
#pragma once

#include <vector>

#include "bench.h"

namespace bench {

// Reads, updates and writes as many bytes in as many rows as the case does: reads are folded into one register, writes
// are of a constant, an update adds to what it reads. The streams of a row advance together, by vectors; the last block
// of a row is a full one. Writes go through the cache or, where that is faster, past it.
class BareLoop {
 public:
  BareLoop(const Scene& scene, const Bytes& bytes);
  void operator()();

  using Loop = void (*)(BareLoop&);

 private:
  template <int reads, int writes, int updates, bool past>
  static void loop(BareLoop& self);
  template <bool past>
  static Loop chosen(int reads, int writes, int updates);

  struct Stream {
    int perBlock = 0;  // vectors
    int step = 0;      // vectors from row to row
    Pixels<Zeb8u> memory;
  };

  int rows_, blocks_;
  Stream read_, write_, update_;
  Loop loop_;
};

}  // namespace bench
