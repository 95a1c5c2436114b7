#include "support/random.h"

#include <stdlib.h>

uint64_t test::seed() {
  static const uint64_t value = [] {
    const char* text = getenv("ZEBCV_TEST_SEED");
    return text ? strtoull(text, nullptr, 0) : 1ull;
  }();
  return value;
}
