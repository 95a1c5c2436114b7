// A call as the least obliging of callers makes it.
#pragma once

#include <stddef.h>
#include <stdint.h>

namespace fuzz {

// What a call left behind.
struct Outcome {
  int result;
  unsigned exceptions;  // floating-point exceptions that it raised in either unit
  size_t depth;         // bytes of stack that it took, its return address included
  const char* broken;   // what it owed to its caller and did not keep; null when it kept everything
};

enum : unsigned { invalidOperation = 1, denormalOperand = 2, divisionByZero = 4, overflow = 8, underflow = 16 };

// Calls function with the argument words on a stack of its own that stands shift bytes (0, 4, 8 or 12) past a multiple
// of 16. The stack below, all registers that carry no argument and the arithmetic flags hold junk: the stack and the
// vectors hold signalling values that are not numbers, so that no arithmetic on them goes unnoticed.
Outcome callAtWorst(const void* function, const uint32_t* words, size_t count, size_t shift);

}  // namespace fuzz
