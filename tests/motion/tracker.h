// The tracker of one image type.
#pragma once

#include "zebcv.h"

namespace test {

template <class T>
struct Tracker {
  ZebStatus (*make)(ZebiOptFlowPyrLKState**, ZebiSize, int, int);
  ZebStatus (*track)(ZebiPyramid*, ZebiPyramid*, const ZebiPoint_32f*, ZebiPoint_32f*, Zeb8s*, Zeb32f*, int, int, int,
                     int, Zeb32f, ZebiOptFlowPyrLKState*);
  ZebStatus (*release)(ZebiOptFlowPyrLKState*);
};
const Tracker<Zeb8u> bytes = {zebiOpticalFlowPyrLKInitAlloc_8u_C1R, zebiOpticalFlowPyrLK_8u_C1R,
                              zebiOpticalFlowPyrLKFree_8u_C1R};
const Tracker<Zeb16u> words = {zebiOpticalFlowPyrLKInitAlloc_16u_C1R, zebiOpticalFlowPyrLK_16u_C1R,
                               zebiOpticalFlowPyrLKFree_16u_C1R};
const Tracker<Zeb32f> floats = {zebiOpticalFlowPyrLKInitAlloc_32f_C1R, zebiOpticalFlowPyrLK_32f_C1R,
                                zebiOpticalFlowPyrLKFree_32f_C1R};

}  // namespace test
