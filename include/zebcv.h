/**
 * zebCV: two-dimensional computer-vision primitives for 32-bit x86 with AVX2 and FMA.
 *
 * The one header to include, from C99 or C++, for all types and prototypes; zebcv/status.h names statuses in messages.
 */
#ifndef ZEBCV_H
#define ZEBCV_H

#include "zebcv/types.h"

#include "zebcv/arith.h"
#include "zebcv/background.h"
#include "zebcv/core.h"
#include "zebcv/corner.h"
#include "zebcv/fastn.h"
#include "zebcv/feature.h"
#include "zebcv/filter.h"
#include "zebcv/filter_fixed.h"
#include "zebcv/filter_gaussian.h"
#include "zebcv/filter_rank.h"
#include "zebcv/geometry.h"
#include "zebcv/gradient.h"
#include "zebcv/morph.h"
#include "zebcv/morph_compound.h"
#include "zebcv/motion.h"
#include "zebcv/regions.h"
#include "zebcv/segment.h"
#include "zebcv/statistics.h"

#endif
