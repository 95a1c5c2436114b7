/** Pyramids, optical flow and motion history. */
#ifndef ZEBCV_MOTION_H
#define ZEBCV_MOTION_H

#include "types.h"

#ifdef __cplusplus
extern "C" {
#endif

#ifdef __cplusplus
}
#endif

#endif
