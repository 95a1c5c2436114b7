// What the load-time initialiser leaves behind.
#pragma once

#include "core/entry.h"

// The index by which a build that merges several variants would pick one: 1 when the processor and the operating system
// offer this variant's instructions, else 0. Written once at load; nothing here reads it, since choosing the variant is
// the business of whoever loads the library.
extern "C" __attribute__((visibility("hidden"))) int zebJumpIndexForMergedDLL;

namespace zeb {

void detectProcessor();

}  // namespace zeb
