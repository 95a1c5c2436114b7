/** Distances and fills. */
#ifndef ZEBCV_SEGMENT_H
#define ZEBCV_SEGMENT_H

#include "types.h"

#ifdef __cplusplus
extern "C" {
#endif

#ifdef __cplusplus
}
#endif

#endif
