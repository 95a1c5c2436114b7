// How an implementation is bound to its exported name.
#pragma once

#include "core/variant.h"
#include "zebcv.h"

// Opens the definition of the implementation of an exported function. The compiler holds its signature against the
// public header: a name that is not declared there, or arguments that differ, do not compile.
#define ZEB_ENTRY(name)                \
  extern "C" {                         \
  extern decltype(name) ZEB_OWN(name); \
  }                                    \
  extern "C" __attribute__((visibility("hidden"))) ZebStatus ZEB_OWN(name)

// Declares an internal function with a C name. It carries the variant's prefix as well: zebsFree stands as q7_zebsFree.
#define ZEB_INTERNAL(result, name, ...) \
  extern "C" __attribute__((visibility("hidden"))) result name(__VA_ARGS__) __asm__(ZEB_TEXT(ZEB_OWN(name)))
