#include "support/stack.h"

__attribute__((noinline)) int test::callOnStack(const void* function, const uint32_t* words, int count, int shift) {
  int result;
  // ebx keeps the caller's stack pointer over the call.
  __asm__ volatile(
      "movl %%esp, %%ebx\n\t"
      "leal 0(,%%ecx,4), %%eax\n\t"
      "subl %%eax, %%esp\n\t"
      "subl $64, %%esp\n\t"
      "andl $-16, %%esp\n\t"
      "addl %%edx, %%esp\n\t"
      "movl %%esp, %%edx\n\t"
      "pushl %%edi\n\t"
      "movl %%edx, %%edi\n\t"
      "cld\n\t"
      "rep movsl\n\t"
      "popl %%edi\n\t"
      "call *%%edi\n\t"
      "movl %%ebx, %%esp\n\t"
      : "=a"(result), "+c"(count), "+d"(shift), "+S"(words)
      : "D"(function)
      : "ebx", "memory", "cc");
  return result;
}
