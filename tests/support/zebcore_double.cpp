#include "support/zebcore_double.h"

#include <stdlib.h>

#include <mutex>

namespace {

std::mutex& gate() {
  static std::mutex m;
  return m;
}

}  // namespace

test::ZebcoreDouble& test::zebcore() {
  static ZebcoreDouble state = [] {
    ZebcoreDouble first;
    if (const char* features = getenv("ZEBCV_TEST_FEATURES")) first.features = strtoull(features, nullptr, 0);
    return first;
  }();
  return state;
}

// Memory comes at addresses that are 4 past a multiple of 16: nothing may rely on more.
extern "C" void* zebMalloc(int length) {
  std::lock_guard<std::mutex> lock(gate());
  auto& state = test::zebcore();
  ++state.mallocCalls;
  state.lastLength = length;
  if (state.failMallocAt >= 0 && state.failMallocAt-- == 0) return nullptr;
  if (length < 1) return nullptr;
  char* block = static_cast<char*>(aligned_alloc(16, (static_cast<size_t>(length) + 4 + 15) & ~size_t(15)));
  if (!block) return nullptr;
  ++state.liveBlocks;
  for (int i = 0; i < length; ++i) block[4 + i] = static_cast<char>(0xCD);
  return block + 4;
}

extern "C" void zebFree(void* ptr) {
  std::lock_guard<std::mutex> lock(gate());
  if (!ptr) return;
  ++test::zebcore().freeCalls;
  --test::zebcore().liveBlocks;
  free(static_cast<char*>(ptr) - 4);
}

extern "C" ZebStatus zebGetMaxCacheSizeB(int* pSize) {
  std::lock_guard<std::mutex> lock(gate());
  ++test::zebcore().cacheCalls;
  if (test::zebcore().cacheStatus == zebStsOk) *pSize = test::zebcore().cacheSize;
  return test::zebcore().cacheStatus;
}

extern "C" ZebStatus zebGetCpuFeatures(unsigned long long* pFeaturesMask, unsigned int* pCpuidInfoRegs) {
  std::lock_guard<std::mutex> lock(gate());
  ++test::zebcore().featureCalls;
  test::zebcore().featureArgumentsNull = !pFeaturesMask && !pCpuidInfoRegs;
  return zebStsErr;
}

extern "C" unsigned long long zebGetEnabledCpuFeatures(void) {
  return test::zebcore().features;
}
