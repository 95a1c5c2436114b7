// The pyramid layers of one type and direction.
#pragma once

#include "zebcv.h"

namespace test {

template <class T, class K, class S>
struct Layer {
  const char* name;
  ZebStatus (*make)(S**, ZebiSize, Zeb32f, const K*, int, int);
  ZebStatus (*call)(const T*, int, ZebiSize, T*, int, ZebiSize, S*);
  ZebStatus (*release)(S*);
  int channels;
  bool down;
};

#define LAYER(direction, type, T, K, channels)                                                                 \
  test::Layer<T, K, ZebiPyramid##direction##State> {                                                           \
#direction " " #type, zebiPyramidLayer##direction##InitAlloc_##type, zebiPyramidLayer##direction##_##type, \
        zebiPyramidLayer##direction##Free_##type, channels, #direction[0] == 'D'                               \
  }

}  // namespace test
