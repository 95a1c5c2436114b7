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
  uint32_t ebx, esi, edi, ebp, stackPointer, flags;
  void* own;  // the stack pointer of whoever calls
  Units units;

  bool keptRegisters() const {
    return ebx == junkEbx && esi == junkEsi && edi == junkEdi && ebp == reinterpret_cast<uintptr_t>(this);
  }
};
static_assert(offsetof(Frame, result) == 16 && offsetof(Frame, own) == 44 && offsetof(Frame, units) == 48,
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
  f.units = unitsBefore();
  return carryOut(f, stack, fuzzCallFrame);
}

}  // namespace fuzz
