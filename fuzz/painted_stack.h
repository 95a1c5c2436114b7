// The stack on which the calls of the drivers are made, for callers of either width.
#pragma once

#include <emmintrin.h>
#include <stddef.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/mman.h>

#include "caller.h"
#include "support/guard.h"
#include "support/memcheck.h"

namespace fuzz {

// The stack is aligned to its size, so that it is found from any stack pointer in it: its first word tells the frame.
// The page behind that word cannot be accessed.
constexpr size_t stackBytes = 1 << 18, page = 4096, lowest = 2 * page, roomForArguments = 512;

constexpr uint32_t junkWords[4] = {test::signals[0], test::signals[1], test::signals[0], test::signals[1]};

class PaintedStack {
 public:
  PaintedStack() {
    void* all = mmap(nullptr, 2 * stackBytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    mapped_ = static_cast<uint8_t*>(all);
    bytes_ = mapped_ + (stackBytes - reinterpret_cast<uintptr_t>(mapped_) % stackBytes);
    if (all == MAP_FAILED || mprotect(bytes_ + page, page, PROT_NONE) != 0) {
      perror("stack");
      abort();
    }
    paint(bytes_ + lowest);
  }
  ~PaintedStack() { munmap(mapped_, 2 * stackBytes); }
  PaintedStack(const PaintedStack&) = delete;
  PaintedStack& operator=(const PaintedStack&) = delete;

  uint8_t* top() const { return bytes_ + stackBytes - roomForArguments; }
  // The lowest byte that is not as it was painted, to 16 bytes.
  uint8_t* deepest() const {
    test::mayBeLookedAt(bytes_ + lowest, stackBytes - lowest);
    const __m128i paint = _mm_loadu_si128(reinterpret_cast<const __m128i*>(junkWords));
    const auto* at = reinterpret_cast<const __m128i*>(bytes_ + lowest);
    for (;; at += 4) {
      const __m128i a = _mm_and_si128(_mm_cmpeq_epi32(at[0], paint), _mm_cmpeq_epi32(at[1], paint));
      const __m128i b = _mm_and_si128(_mm_cmpeq_epi32(at[2], paint), _mm_cmpeq_epi32(at[3], paint));
      if (_mm_movemask_epi8(_mm_and_si128(a, b)) != 0xFFFF) break;
    }
    while (memcmp(at, junkWords, sizeof(junkWords)) == 0) ++at;
    return reinterpret_cast<uint8_t*>(const_cast<__m128i*>(at));
  }
  void paint(uint8_t* from) {
    for (; from < bytes_ + stackBytes; from += sizeof(junkWords)) memcpy(from, junkWords, sizeof(junkWords));
  }

 private:
  uint8_t *mapped_, *bytes_;
};

// The part of a frame that is the same in either width: what the arithmetic units held afterwards, and the junk that
// the vectors get.
struct Units {
  uint32_t mxcsr;
  uint32_t x87[7];
  uint32_t junk[8];
  uint32_t avx;
};
static_assert(offsetof(Units, junk) == 32 && offsetof(Units, avx) == 64, "offsets in the assembly");

inline Units unitsBefore() {
  Units units = {};
  memcpy(units.junk, junkWords, sizeof(junkWords));
  memcpy(units.junk + 4, junkWords, sizeof(junkWords));
  units.avx = __builtin_cpu_supports("avx") != 0;
  return units;
}

// Makes the call that a frame describes and looks at what it left behind.
template <class Frame>
Outcome carryOut(Frame& f, PaintedStack& stack, void (*call)(Frame*)) {
  const uint32_t mxcsr = _mm_getcsr();
  uint16_t control;
  __asm__ volatile("fnstcw %0" : "=m"(control));
  call(&f);
  _mm_setcsr(mxcsr);
  __asm__ volatile("fldcw %0" : : "m"(control));

  uint8_t* const deepest = stack.deepest();
  stack.paint(deepest);
  constexpr uint32_t exceptionFlags = 0x3F, directionFlag = 0x400;
  const Units& units = f.units;
  Outcome o = {static_cast<int>(f.result), (units.mxcsr | units.x87[1]) & exceptionFlags,
               static_cast<size_t>(f.stack - deepest), nullptr};
  if (!f.keptRegisters()) o.broken = "a register";
  if (f.stackPointer != reinterpret_cast<uintptr_t>(f.stack)) o.broken = "the stack pointer";
  if (f.flags & directionFlag) o.broken = "the direction flag";
  if ((units.mxcsr ^ mxcsr) & ~exceptionFlags) o.broken = "the modes of the vector unit";
  if ((units.x87[0] ^ control) & 0xFFFF) o.broken = "the modes of the stack of floating-point registers";
  if ((units.x87[2] & 0xFFFF) != 0xFFFF) o.broken = "an empty stack of floating-point registers";
  return o;
}

}  // namespace fuzz
