// A double in place of the core support library: counts calls and fails on demand.
#pragma once

#include <stdint.h>

#include "zebcore.h"

namespace test {

struct ZebcoreDouble {
  int mallocCalls = 0;        // calls of zebMalloc
  int freeCalls = 0;          // calls of zebFree with a pointer
  int liveBlocks = 0;         // allocated and not yet released
  int failMallocAt = -1;      // this call of zebMalloc (0 is the next one) fails; negative: none does
  int64_t lastLength = 0;     // argument of the last zebMalloc
  ZebStatus cacheStatus = 0;  // what zebGetMaxCacheSizeB returns
  int cacheSize = 1 << 20;    // and writes
  int cacheCalls = 0;
  int featureCalls = 0;  // calls of zebGetCpuFeatures
  bool featureArgumentsNull = true;
  int featureCallsAtLoad = 0;  // before main
  // What zebGetEnabledCpuFeatures returns; ZEBCV_TEST_FEATURES in the environment sets it before the library is loaded.
  unsigned long long features = zebCpuAvx2 | zebCpuFma;

  void reset() {
    const int live = liveBlocks, atLoad = featureCallsAtLoad;
    *this = ZebcoreDouble();
    liveBlocks = live;
    featureCallsAtLoad = atLoad;
  }
};

// The thread's state of the double; reset it at the start of a test that looks at it.
ZebcoreDouble& zebcore();

// The length of a block that zebMalloc gave.
int bytesOfBlock(const void* block);

}  // namespace test
