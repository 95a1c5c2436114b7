// The entry of libFuzzer for one group.
#include <stdio.h>
#include <stdlib.h>

#include "target.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t count) {
  const std::string fault = fuzz::fault(FUZZ_GROUP, bytes, count);
  if (!fault.empty()) {
    fprintf(stderr, "%s\n", fault.c_str());
    abort();
  }
  return 0;
}
