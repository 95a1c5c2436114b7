/** Morphology. */
#ifndef ZEBCV_MORPH_H
#define ZEBCV_MORPH_H

#include "types.h"

#ifdef __cplusplus
extern "C" {
#endif

#ifdef __cplusplus
}
#endif

#endif
