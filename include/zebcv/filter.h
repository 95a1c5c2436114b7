/** Borders and separable filters. */
#ifndef ZEBCV_FILTER_H
#define ZEBCV_FILTER_H

#include "types.h"

#ifdef __cplusplus
extern "C" {
#endif

#ifdef __cplusplus
}
#endif

#endif
