#include "support/zebcore_double.h"

#include <stdlib.h>
#include <string.h>

#include "support/guard.h"

test::ZebcoreDouble& test::zebcore() {
  thread_local ZebcoreDouble state = [] {
    ZebcoreDouble first;
    if (const char* features = getenv("ZEBCV_TEST_FEATURES")) first.features = strtoull(features, nullptr, 0);
    return first;
  }();
  return state;
}

// Memory comes at addresses that are 4 past a multiple of 16, its length in front: nothing may rely on more.
extern "C" void* zebMalloc(int length) {
  auto& state = test::zebcore();
  ++state.mallocCalls;
  state.lastLength = length;
  if (state.failMallocAt >= 0 && state.failMallocAt-- == 0) return nullptr;
  if (length < 1) return nullptr;
  char* block = static_cast<char*>(aligned_alloc(16, (static_cast<size_t>(length) + 4 + 15) & ~size_t(15)));
  if (!block) return nullptr;
  ++state.liveBlocks;
  memcpy(block, &length, sizeof(length));
  test::fillWithSignals(block + 4, static_cast<size_t>(length));
  return block + 4;
}

int test::bytesOfBlock(const void* block) {
  int length;
  memcpy(&length, static_cast<const char*>(block) - 4, sizeof(length));
  return length;
}

extern "C" void zebFree(void* ptr) {
  if (!ptr) return;
  ++test::zebcore().freeCalls;
  --test::zebcore().liveBlocks;
  free(static_cast<char*>(ptr) - 4);
}

extern "C" ZebStatus zebGetMaxCacheSizeB(int* pSize) {
  ++test::zebcore().cacheCalls;
  if (test::zebcore().cacheStatus == zebStsOk) *pSize = test::zebcore().cacheSize;
  return test::zebcore().cacheStatus;
}

extern "C" ZebStatus zebGetCpuFeatures(unsigned long long* pFeaturesMask, unsigned int* pCpuidInfoRegs) {
  ++test::zebcore().featureCalls;
  test::zebcore().featureArgumentsNull = !pFeaturesMask && !pCpuidInfoRegs;
  return zebStsErr;
}

extern "C" unsigned long long zebGetEnabledCpuFeatures(void) {
  return test::zebcore().features;
}
