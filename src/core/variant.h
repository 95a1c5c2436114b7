// What differs between the two builds of these sources; nothing else in the library asks for the word size.
//
// The layouts of records are a contract in the build for 32 bits. In the one for 64 bits the same members stand in the
// same order, pointers take two words, and the sizes that queries report grow where a record holds pointers.
#pragma once

#include <stdint.h>

#if UINTPTR_MAX == UINT32_MAX
#define ZEB_VARIANT q7
#else
#define ZEB_VARIANT x7
#endif

#define ZEB_TEXT_OF(x) #x
#define ZEB_TEXT(x) ZEB_TEXT_OF(x)
#define ZEB_JOIN_OF(a, b) a##_##b
#define ZEB_JOIN(a, b) ZEB_JOIN_OF(a, b)

// The name of an implementation: q7_zebiCanny_16s8u_C1R serves zebiCanny_16s8u_C1R.
#define ZEB_OWN(name) ZEB_JOIN(ZEB_VARIANT, name)

namespace zeb {

// Sizes and offsets of records with pointers are asserted where they are a contract.
constexpr bool widePointers = sizeof(void*) > sizeof(uint32_t);

}  // namespace zeb
