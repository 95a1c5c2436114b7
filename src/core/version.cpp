// The version record. The numbers and the date come from the build.
#include <stddef.h>

#include "core/entry.h"

namespace {

const ZebLibraryVersion libraryVersion = {
    ZEBCV_MAJOR,
    ZEBCV_MINOR,
    ZEBCV_UPDATE,
    ZEBCV_REVISION,
    ZEB_TEXT(ZEB_VARIANT),
    "zebCV AVX2 (" ZEB_TEXT(ZEB_VARIANT) ")",
    ZEB_TEXT(ZEBCV_MAJOR) "." ZEB_TEXT(ZEBCV_MINOR) "." ZEB_TEXT(ZEBCV_UPDATE) " (r" ZEB_TEXT(ZEBCV_REVISION) ")",
    ZEBCV_BUILD_DATE,
};

static_assert(offsetof(ZebLibraryVersion, targetCpu) == 16 &&
                  (zeb::widePointers || (offsetof(ZebLibraryVersion, Name) == 20 && sizeof(ZebLibraryVersion) == 32)),
              "the version record is part of the binary contract");

}  // namespace

extern "C" {
extern decltype(zebcvGetLibVersion) ZEB_OWN(zebcvGetLibVersion);
}
extern "C" __attribute__((visibility("hidden"))) const ZebLibraryVersion* ZEB_OWN(zebcvGetLibVersion)(void) {
  return &libraryVersion;
}
