// How an implementation is bound to its exported name.
#pragma once

#include "zebcv.h"

// Opens the definition of the implementation of an exported function. The compiler holds its signature against the
// public header: a name that is not declared there, or arguments that differ, do not compile.
#define ZEB_ENTRY(name)            \
  extern "C" {                     \
  extern decltype(name) q7_##name; \
  }                                \
  extern "C" __attribute__((visibility("hidden"))) ZebStatus q7_##name

// Internal functions with C names.
#define ZEB_INTERNAL extern "C" __attribute__((visibility("hidden")))
