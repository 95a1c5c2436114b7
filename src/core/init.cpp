// Load-time initialiser: runs once, before any entry can be called.
#include "core/init.h"

#include "zebcore.h"

int zebJumpIndexForMergedDLL = 0;

namespace zeb {

void detectProcessor() {
  zebGetCpuFeatures(nullptr, nullptr);
  constexpr unsigned long long wanted = zebCpuAvx2 | zebCpuFma;
  zebJumpIndexForMergedDLL = (zebGetEnabledCpuFeatures() & wanted) == wanted ? 1 : 0;
}

}  // namespace zeb

extern "C" __attribute__((constructor)) void ZEB_OWN(ownInitialise)(void) {
  zeb::detectProcessor();
}
