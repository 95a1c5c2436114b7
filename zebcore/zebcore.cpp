// Memory on cache lines, processor features with operating-system support, and the size of the largest data cache.
#include "zebcore.h"

#include <cpuid.h>
#include <stdlib.h>
#include <unistd.h>

#define ZEBCORE_EXPORT extern "C" __attribute__((visibility("default")))

namespace {

constexpr unsigned leafFeatures = 1;
constexpr unsigned leafCache = 4;
constexpr unsigned leafExtendedFeatures = 7;
constexpr unsigned leafCacheExtended = 0x8000001D;
constexpr int fallbackCacheBytes = 1 << 20;

// The state components that the operating system saves: 1 = 128-bit, 2 = upper halves of the 256-bit registers.
unsigned long long enabledState() {
  unsigned lo, hi;
  __asm__("xgetbv" : "=a"(lo), "=d"(hi) : "c"(0));
  return (static_cast<unsigned long long>(hi) << 32) | lo;
}

unsigned long long features(bool enabledOnly, unsigned* regs) {
  unsigned a = 0, b = 0, c = 0, d = 0;
  __get_cpuid(leafFeatures, &a, &b, &c, &d);
  if (regs) regs[0] = a, regs[1] = b, regs[2] = c, regs[3] = d;
  const bool osxsave = c & bit_OSXSAVE;
  const bool saved = osxsave && (enabledState() & 6) == 6;
  if (enabledOnly && !saved) return 0;
  unsigned long long mask = 0;
  if (c & bit_FMA) mask |= zebCpuFma;
  if (__get_cpuid_count(leafExtendedFeatures, 0, &a, &b, &c, &d) && (b & bit_AVX2)) mask |= zebCpuAvx2;
  return mask;
}

// Walks one of the two cache-description leaves, which share their layout: type in eax bits 0..4 (1 data, 3 unified),
// and ways, partitions, line size and sets, each less one.
long long largestDataCache(unsigned leaf) {
  long long largest = 0;
  for (unsigned i = 0; i < 16; ++i) {
    unsigned a, b, c, d;
    if (!__get_cpuid_count(leaf, i, &a, &b, &c, &d)) break;
    const unsigned type = a & 31;
    if (type == 0) break;
    if (type == 2) continue;
    const long long bytes = ((b >> 22) + 1LL) * (((b >> 12) & 0x3FF) + 1LL) * ((b & 0xFFF) + 1LL) * (c + 1LL);
    if (bytes > largest) largest = bytes;
  }
  return largest;
}

}  // namespace

ZEBCORE_EXPORT void* zebMalloc(int length) {
  if (length < 1) return nullptr;
  void* memory = nullptr;
  return posix_memalign(&memory, 64, static_cast<size_t>(length)) == 0 ? memory : nullptr;
}

ZEBCORE_EXPORT void zebFree(void* ptr) {
  free(ptr);
}

ZEBCORE_EXPORT ZebStatus zebGetMaxCacheSizeB(int* pSize) {
  if (!pSize) return zebStsErrNullPointer;
  long long bytes = largestDataCache(leafCache);
  if (bytes <= 0) bytes = largestDataCache(leafCacheExtended);
#ifdef _SC_LEVEL3_CACHE_SIZE
  if (bytes <= 0) bytes = sysconf(_SC_LEVEL3_CACHE_SIZE);
#endif
  if (bytes <= 0) bytes = fallbackCacheBytes;
  *pSize = bytes > 0x7FFFFFFF ? 0x7FFFFFFF : static_cast<int>(bytes);
  return zebStsOk;
}

ZEBCORE_EXPORT ZebStatus zebGetCpuFeatures(unsigned long long* pFeaturesMask, unsigned* pCpuidInfoRegs) {
  const unsigned long long mask = features(false, pCpuidInfoRegs);
  if (pFeaturesMask) *pFeaturesMask = mask;
  return zebStsOk;
}

ZEBCORE_EXPORT unsigned long long zebGetEnabledCpuFeatures(void) {
  return features(true, nullptr);
}
