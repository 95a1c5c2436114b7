/** The library itself: version query. */
#ifndef ZEBCV_CORE_H
#define ZEBCV_CORE_H

#include "types.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * The version of the library.
 *
 * Returns the address of a constant record, the same at every call. It never fails, needs no preparation, and the
 * record must be neither freed nor changed.
 */
const ZebLibraryVersion* zebcvGetLibVersion(void);

#ifdef __cplusplus
}
#endif

#endif
