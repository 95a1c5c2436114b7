/** Edges, lines, peaks and cascades. */
#ifndef ZEBCV_FEATURE_H
#define ZEBCV_FEATURE_H

#include "types.h"

#ifdef __cplusplus
extern "C" {
#endif

#ifdef __cplusplus
}
#endif

#endif
