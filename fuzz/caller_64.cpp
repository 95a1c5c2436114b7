// The call of 64-bit programs: six registers for integers and pointers, eight for floats, the rest on the stack.
#include "painted_stack.h"

namespace fuzz {
namespace {

constexpr uint64_t junkRbx = 0xB0B1B2B3B4B5B6B7, junkR12 = 0x1213141516171819, junkR13 = 0x1314151617181920,
                   junkR14 = 0x1415161718192021, junkR15 = 0x1516171819202122;

// Known to the assembly below by offsets.
struct Frame {
  const void* function;
  const uint64_t* words;  // what goes onto the stack
  size_t count;
  uint8_t* stack;  // and where
  uint64_t integers[6];
  uint32_t reals[8][8];
  int64_t result;
  uint64_t rbx, r12, r13, r14, r15, rbp, stackPointer, flags;
  void* own;  // the stack pointer of whoever calls
  Units units;

  bool keptRegisters() const {
    return rbx == junkRbx && r12 == junkR12 && r13 == junkR13 && r14 == junkR14 && r15 == junkR15 &&
           rbp == reinterpret_cast<uintptr_t>(this);
  }
};
static_assert(offsetof(Frame, integers) == 32 && offsetof(Frame, reals) == 80 && offsetof(Frame, result) == 336 &&
                  offsetof(Frame, own) == 408 && offsetof(Frame, units) == 416,
              "offsets in the assembly");

extern "C" void fuzzCallFrame(Frame*);
__asm__(R"(
    .text
    .globl fuzzCallFrame
    .hidden fuzzCallFrame
    .type fuzzCallFrame, @function
fuzzCallFrame:
    pushq %rbp
    pushq %rbx
    pushq %r12
    pushq %r13
    pushq %r14
    pushq %r15
    pushfq
    movq %rdi, %rbp
    movq %rsp, 408(%rbp)
    movq 24(%rbp), %rdi
    movq %rdi, %rax
    andq $-0x40000, %rax
    movq %rbp, (%rax)
    movq 8(%rbp), %rsi
    movq 16(%rbp), %rcx
    cld
    rep movsq
    stmxcsr 416(%rbp)
    andl $-64, 416(%rbp)
    ldmxcsr 416(%rbp)
    fnclex
    cmpl $0, 480(%rbp)
    je 1f
    vmovups 80(%rbp), %ymm0
    vmovups 112(%rbp), %ymm1
    vmovups 144(%rbp), %ymm2
    vmovups 176(%rbp), %ymm3
    vmovups 208(%rbp), %ymm4
    vmovups 240(%rbp), %ymm5
    vmovups 272(%rbp), %ymm6
    vmovups 304(%rbp), %ymm7
    vmovups 448(%rbp), %ymm8
    vmovups 448(%rbp), %ymm9
    vmovups 448(%rbp), %ymm10
    vmovups 448(%rbp), %ymm11
    vmovups 448(%rbp), %ymm12
    vmovups 448(%rbp), %ymm13
    vmovups 448(%rbp), %ymm14
    vmovups 448(%rbp), %ymm15
    jmp 2f
1:  movups 80(%rbp), %xmm0
    movups 112(%rbp), %xmm1
    movups 144(%rbp), %xmm2
    movups 176(%rbp), %xmm3
    movups 208(%rbp), %xmm4
    movups 240(%rbp), %xmm5
    movups 272(%rbp), %xmm6
    movups 304(%rbp), %xmm7
    movups 448(%rbp), %xmm8
    movups 448(%rbp), %xmm9
    movups 448(%rbp), %xmm10
    movups 448(%rbp), %xmm11
    movups 448(%rbp), %xmm12
    movups 448(%rbp), %xmm13
    movups 448(%rbp), %xmm14
    movups 448(%rbp), %xmm15
2:  movq 24(%rbp), %rsp
    movabsq $0xB0B1B2B3B4B5B6B7, %rbx
    movabsq $0x1213141516171819, %r12
    movabsq $0x1314151617181920, %r13
    movabsq $0x1415161718192021, %r14
    movabsq $0x1516171819202122, %r15
    movabsq $0xA0A1A2A3A4A5A6A7, %rax
    movabsq $0x8081828384858687, %r10
    movabsq $0x9091929394959697, %r11
    movq 32(%rbp), %rdi
    movq 40(%rbp), %rsi
    movq 48(%rbp), %rdx
    movq 56(%rbp), %rcx
    movq 64(%rbp), %r8
    movq 72(%rbp), %r9
    cmpq %r12, %rbx
    call *(%rbp)
    movq %rsp, %rcx
    andq $-0x40000, %rcx
    movq (%rcx), %rcx
    movq %rax, 336(%rcx)
    movq %rbx, 344(%rcx)
    movq %r12, 352(%rcx)
    movq %r13, 360(%rcx)
    movq %r14, 368(%rcx)
    movq %r15, 376(%rcx)
    movq %rbp, 384(%rcx)
    movq %rsp, 392(%rcx)
    pushfq
    popq 400(%rcx)
    stmxcsr 416(%rcx)
    fnstenv 420(%rcx)
    fninit
    fldcw 420(%rcx)
    movq 408(%rcx), %rsp
    cmpl $0, 480(%rcx)
    je 3f
    vzeroupper
3:  popfq
    popq %r15
    popq %r14
    popq %r13
    popq %r12
    popq %rbx
    popq %rbp
    ret
    .size fuzzCallFrame, . - fuzzCallFrame
)");

// Deals the arguments out. What a register or a word of the stack has beyond its argument is junk.
void place(const std::vector<Argument>& arguments, Frame* f, std::vector<uint64_t>* words) {
  uint64_t junk;
  memcpy(&junk, junkWords, sizeof(junk));
  for (uint64_t& integer : f->integers) integer = junk;
  for (auto& real : f->reals) memcpy(real, f->units.junk, sizeof(real));
  size_t integers = 0, reals = 0;
  for (const Argument& a : arguments) {
    uint64_t whole[2] = {junk, junk};
    memcpy(whole, a.words, a.bytes);
    const size_t count = (a.bytes + 7) / 8;
    if (a.real && reals < 8) {
      memcpy(f->reals[reals++], a.words, a.bytes);
    } else if (!a.real && integers + count <= 6) {
      for (size_t i = 0; i < count; ++i) f->integers[integers++] = whole[i];
    } else {
      words->insert(words->end(), whole, whole + count);
    }
  }
  f->words = words->data();
  f->count = words->size();
}

}  // namespace

Outcome callAtWorst(const void* function, const std::vector<Argument>& arguments, size_t shift) {
  thread_local PaintedStack stack;
  Frame f = {};
  f.function = function;
  f.stack = stack.top() + 4 * shift;
  f.units = unitsBefore();
  std::vector<uint64_t> words;
  place(arguments, &f, &words);
  return carryOut(f, stack, fuzzCallFrame);
}

}  // namespace fuzz
