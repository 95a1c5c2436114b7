// A call as the least obliging of callers makes it.
#pragma once

#include <stddef.h>
#include <stdint.h>
#include <string.h>

#include <type_traits>
#include <vector>

#include "zebcv.h"

namespace fuzz {

// What a call left behind.
struct Outcome {
  int result;
  unsigned exceptions;  // floating-point exceptions that it raised in either unit
  size_t depth;         // bytes of stack that it took, its return address included
  const char* broken;   // what it owed to its caller and did not keep; null when it kept everything
};

enum : unsigned { invalidOperation = 1, denormalOperand = 2, divisionByZero = 4, overflow = 8, underflow = 16 };

// An argument, of at most two registers.
struct Argument {
  uint64_t words[2];
  size_t bytes;  // a multiple of 4: small ones are widened
  bool real;     // made of floats

  template <class T>
  static Argument of(T value) {
    if constexpr (sizeof(T) < sizeof(int32_t)) {
      return of(static_cast<int32_t>(value));
    } else {
      static_assert(sizeof(T) % sizeof(int32_t) == 0 && sizeof(T) <= sizeof(words), "whole words, at most four");
      Argument a = {{}, sizeof(T), isReal<T>};
      memcpy(a.words, &value, sizeof(T));
      return a;
    }
  }

 private:
  template <class T>
  static constexpr bool isReal = std::is_floating_point_v<T> || std::is_same_v<T, ZebiPoint_32f>;
};

// Calls function on a stack of its own. The stack below, all registers that carry no argument and the arithmetic flags
// hold junk: the stack and the vectors hold signalling values that are not numbers, so that no arithmetic on them goes
// unnoticed. shift is 0, 4, 8 or 12: in 32 bits, where callers need not align it further, the stack stands so many
// bytes past a multiple of 16, in 64 bits four times as many past a multiple of 64.
Outcome callAtWorst(const void* function, const std::vector<Argument>& arguments, size_t shift);

}  // namespace fuzz
