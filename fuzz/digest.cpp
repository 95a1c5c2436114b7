// Prints one number for the results of every driver in a few cases. Builds of other widths, or by other compilers,
// print the same numbers.
#include <inttypes.h>
#include <stdio.h>
#include <stdlib.h>

#include "support/compare.h"
#include "support/memcheck.h"
#include "target.h"

int main(int argc, char** argv) {
  fuzz::nameCaseOnSignals();
  const ZebiSize sizes[] = {{1, 1}, {6, 5}, {17, 4}, {40, 13}, {131, 7}};
  const uint64_t casesPerSize = argc > 1 ? strtoull(argv[1], nullptr, 10) : 3;
  int faults = 0;
  for (const fuzz::Target& target : fuzz::targets()) {
    if (argc > 2 && !strstr(target.name, argv[2])) continue;
    test::digestOfResults() = {};
    for (const ZebiSize size : sizes)
      for (uint64_t i = 0; i < casesPerSize; ++i) {
        fuzz::Choice choice(i, size);
        const std::string text = fuzz::fault(target, choice);
        if (text.empty()) continue;
        fprintf(stderr, "%s\nat %d x %d, case %d\n", text.c_str(), size.width, size.height, static_cast<int>(i));
        ++faults;
      }
    const uint64_t value = test::digestOfResults().value();
    test::mayBeLookedAt(&value, sizeof(value));
    printf("%016" PRIx64 " %s %s\n", value, target.group, target.name);
  }
  return faults > 0;
}
