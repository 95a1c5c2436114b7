// The core support library by itself.
#include "zebcore.h"

#include <gtest/gtest.h>
#include <stdint.h>
#include <string.h>

namespace {

TEST(Zebcore, AllocatesOnCacheLines) {
  for (int bytes : {1, 63, 64, 65, 4097, 1 << 20}) {
    auto* p = static_cast<unsigned char*>(zebMalloc(bytes));
    ASSERT_NE(p, nullptr);
    EXPECT_EQ(reinterpret_cast<uintptr_t>(p) % 64, 0u) << bytes;
    memset(p, 0x5A, static_cast<size_t>(bytes));
    zebFree(p);
  }
  EXPECT_EQ(zebMalloc(0), nullptr);
  EXPECT_EQ(zebMalloc(-1), nullptr);
  zebFree(nullptr);
}

TEST(Zebcore, FeaturesAgreeWithTheCompilersView) {
  unsigned long long mask = 0;
  unsigned regs[4] = {};
  EXPECT_EQ(zebGetCpuFeatures(nullptr, nullptr), zebStsOk);
  EXPECT_EQ(zebGetCpuFeatures(&mask, regs), zebStsOk);
  EXPECT_EQ((mask & zebCpuAvx2) != 0, __builtin_cpu_supports("avx2") != 0);
  EXPECT_EQ((mask & zebCpuFma) != 0, __builtin_cpu_supports("fma") != 0);
  EXPECT_EQ(zebGetEnabledCpuFeatures() & ~mask, 0u);
  EXPECT_NE(regs[0], 0u);
}

TEST(Zebcore, CacheSizeIsPlausible) {
  int bytes = 0;
  EXPECT_EQ(zebGetMaxCacheSizeB(nullptr), zebStsErrNullPointer);
  ASSERT_EQ(zebGetMaxCacheSizeB(&bytes), zebStsOk);
  EXPECT_GE(bytes, 16 << 10);
}

}  // namespace
