// The version record. The numbers and the date come from the build.
#include <stddef.h>

#include "core/entry.h"

#define ZEB_TEXT(x) #x
#define ZEB_NUMBER_TEXT(x) ZEB_TEXT(x)

namespace {

const ZebLibraryVersion libraryVersion = {
    ZEBCV_MAJOR,
    ZEBCV_MINOR,
    ZEBCV_UPDATE,
    ZEBCV_REVISION,
    {'q', '7', 0, 0},
    "zebCV AVX2 (q7)",
    ZEB_NUMBER_TEXT(ZEBCV_MAJOR) "." ZEB_NUMBER_TEXT(ZEBCV_MINOR) "." ZEB_NUMBER_TEXT(
        ZEBCV_UPDATE) " (r" ZEB_NUMBER_TEXT(ZEBCV_REVISION) ")",
    ZEBCV_BUILD_DATE,
};

static_assert(offsetof(ZebLibraryVersion, targetCpu) == 16 && offsetof(ZebLibraryVersion, Name) == 20 &&
                  sizeof(ZebLibraryVersion) == 20 + 3 * sizeof(void*),
              "the version record is part of the binary contract");

}  // namespace

extern "C" {
extern decltype(zebcvGetLibVersion) q7_zebcvGetLibVersion;
}
extern "C" __attribute__((visibility("hidden"))) const ZebLibraryVersion* q7_zebcvGetLibVersion(void) {
  return &libraryVersion;
}
