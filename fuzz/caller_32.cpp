// The call of 32-bit programs: all arguments are words on the stack.
#include <vector>

#include "painted_stack.h"

namespace fuzz {
namespace {

constexpr uint32_t junkEbx = 0xB0B1B2B3, junkEsi = 0x51525354, junkEdi = 0xD0D1D2D3;

// Known to the assembly below by offsets.
struct Frame {
  const void* function;
  const uint32_t* words;
  size_t count;
  uint8_t* stack;  // where the first argument goes
  int result;
  uint32_t ebx, esi, edi, ebp, esp, flags;
  void* own;  // the stack pointer of whoever calls
  uint32_t mxcsr;
  uint32_t x87[7];
  uint32_t junk[8];
  uint32_t avx;
};
static_assert(offsetof(Frame, result) == 16 && offsetof(Frame, own) == 44 && offsetof(Frame, junk) == 80 &&
                  offsetof(Frame, avx) == 112,
              "offsets in the assembly");

extern "C" void fuzzCallFrame(Frame*);
__asm__(R"(
    .text
    .globl fuzzCallFrame
    .hidden fuzzCallFrame
    .type fuzzCallFrame, @function
fuzzCallFrame:
    pushl %ebp
    pushl %ebx
    pushl %esi
    pushl %edi
    pushfl
    movl 24(%esp), %ebp
    movl %esp, 44(%ebp)
    movl 12(%ebp), %edi
    movl %edi, %eax
    andl $-0x40000, %eax
    movl %ebp, (%eax)
    movl 4(%ebp), %esi
    movl 8(%ebp), %ecx
    cld
    rep movsl
    stmxcsr 48(%ebp)
    andl $-64, 48(%ebp)
    ldmxcsr 48(%ebp)
    fnclex
    cmpl $0, 112(%ebp)
    je 1f
    vmovups 80(%ebp), %ymm0
    vmovups 80(%ebp), %ymm1
    vmovups 80(%ebp), %ymm2
    vmovups 80(%ebp), %ymm3
    vmovups 80(%ebp), %ymm4
    vmovups 80(%ebp), %ymm5
    vmovups 80(%ebp), %ymm6
    vmovups 80(%ebp), %ymm7
    jmp 2f
1:  movups 80(%ebp), %xmm0
    movups 80(%ebp), %xmm1
    movups 80(%ebp), %xmm2
    movups 80(%ebp), %xmm3
    movups 80(%ebp), %xmm4
    movups 80(%ebp), %xmm5
    movups 80(%ebp), %xmm6
    movups 80(%ebp), %xmm7
2:  movl 12(%ebp), %esp
    movl $0xB0B1B2B3, %ebx
    movl $0x51525354, %esi
    movl $0xD0D1D2D3, %edi
    movl $0xA0A1A2A3, %eax
    movl $0xC0C1C2C3, %ecx
    movl $0x80818283, %edx
    cmpl %esi, %ebx
    call *(%ebp)
    movl %esp, %ecx
    andl $-0x40000, %ecx
    movl (%ecx), %ecx
    movl %eax, 16(%ecx)
    movl %ebx, 20(%ecx)
    movl %esi, 24(%ecx)
    movl %edi, 28(%ecx)
    movl %ebp, 32(%ecx)
    movl %esp, 36(%ecx)
    pushfl
    popl 40(%ecx)
    stmxcsr 48(%ecx)
    fnstenv 52(%ecx)
    fninit
    fldcw 52(%ecx)
    movl 44(%ecx), %esp
    cmpl $0, 112(%ecx)
    je 3f
    vzeroupper
3:  popfl
    popl %edi
    popl %esi
    popl %ebx
    popl %ebp
    ret
    .size fuzzCallFrame, . - fuzzCallFrame
)");

}  // namespace

Outcome callAtWorst(const void* function, const std::vector<Argument>& arguments, size_t shift) {
  std::vector<uint32_t> words;
  for (const Argument& a : arguments) {
    uint32_t halves[4];
    memcpy(halves, a.words, sizeof(halves));
    words.insert(words.end(), halves, halves + a.bytes / sizeof(uint32_t));
  }
  thread_local PaintedStack stack;
  Frame f = {};
  f.function = function;
  f.words = words.data();
  f.count = words.size();
  f.stack = stack.top() + shift;
  f.avx = __builtin_cpu_supports("avx") != 0;
  memcpy(f.junk, junkWords, sizeof(junkWords));
  memcpy(f.junk + 4, junkWords, sizeof(junkWords));
  const uint32_t mxcsr = _mm_getcsr();
  uint16_t control;
  __asm__ volatile("fnstcw %0" : "=m"(control));
  fuzzCallFrame(&f);
  _mm_setcsr(mxcsr);
  __asm__ volatile("fldcw %0" : : "m"(control));

  uint8_t* const deepest = stack.deepest();
  stack.paint(deepest);
  Outcome o = {f.result, (f.mxcsr | f.x87[1]) & 0x3F, static_cast<size_t>(f.stack - deepest), nullptr};
  constexpr uint32_t exceptionFlags = 0x3F, directionFlag = 0x400;
  if (f.ebx != junkEbx || f.esi != junkEsi || f.edi != junkEdi || f.ebp != reinterpret_cast<uintptr_t>(&f))
    o.broken = "a register";
  if (f.esp != reinterpret_cast<uintptr_t>(f.stack)) o.broken = "the stack pointer";
  if (f.flags & directionFlag) o.broken = "the direction flag";
  if ((f.mxcsr ^ mxcsr) & ~exceptionFlags) o.broken = "the modes of the vector unit";
  if ((f.x87[0] ^ control) & 0xFFFF) o.broken = "the modes of the stack of floating-point registers";
  if ((f.x87[2] & 0xFFFF) != 0xFFFF) o.broken = "an empty stack of floating-point registers";
  return o;
}

}  // namespace fuzz
