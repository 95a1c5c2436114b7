/**
 * The core support library that zebCV asks for memory, processor features and the cache size.
 */
#ifndef ZEBCORE_H
#define ZEBCORE_H

#include "zebcv/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/** Bits of the feature mask. A bit means: present in the processor and enabled by the operating system. */
enum {
  zebCpuFma = 1 << 4, /**< fused multiply-add */
  zebCpuAvx2 = 1 << 5 /**< 256-bit integer vectors */
};

/** Allocates length bytes on a 64-byte boundary. Null when length is below 1 or no memory is left. */
void* zebMalloc(int length);

/** Releases what zebMalloc returned; null is allowed. */
void zebFree(void* ptr);

/**
 * Writes the size in bytes of the largest data cache.
 * Returns zebStsOk, or zebStsErrNullPointer when pSize is null.
 */
ZebStatus zebGetMaxCacheSizeB(int* pSize);

/**
 * Detects the processor and writes its feature mask (before asking what the operating system enables) to
 * pFeaturesMask and the four registers of the basic feature leaf (eax, ebx, ecx, edx) to pCpuidInfoRegs.
 * Either pointer may be null. Returns zebStsOk.
 */
ZebStatus zebGetCpuFeatures(unsigned long long* pFeaturesMask, unsigned int* pCpuidInfoRegs);

/** The feature mask: see zebCpuFma and zebCpuAvx2. */
unsigned long long zebGetEnabledCpuFeatures(void);

#ifdef __cplusplus
}
#endif

#endif
