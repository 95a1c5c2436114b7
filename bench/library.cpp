#include "library.h"

#include <dlfcn.h>

#include <cstring>

// One slot for every exported function and, under the function's own name, a jump through it. The program is linked at
// a fixed address, so that a jump names its slot outright.
asm(".pushsection .data\n"
    ".p2align 6\n"
    ".globl bench_slots\n"
    "bench_slots:\n"
#define ENTRY(name) ".Lslot_" #name ": .dc.a 0\n"
#include "entries.inc"
#undef ENTRY
    ".popsection\n"
    ".pushsection .text\n"
#define ENTRY(name)                    \
  ".p2align 3\n"                       \
  ".globl " #name                      \
  "\n"                                 \
  ".type " #name ", @function\n" #name \
  ":\n"                                \
  "  jmp *.Lslot_" #name               \
  "\n"                                 \
  ".size " #name ", . - " #name "\n"
#include "entries.inc"
#undef ENTRY
    ".popsection\n");

extern "C" void* bench_slots[];

namespace bench {
namespace {

const char* const names[] = {
#define ENTRY(name) #name,
#include "entries.inc"
#undef ENTRY
};

[[noreturn]] void absent() {
  throw NoSuchFunction();
}

}  // namespace

// Both builds name their support library alike, so that the second one is given the first one's: they differ in
// nothing but themselves.
Library::Library(const std::string& path) : path_(path) {
  // A name without a slash would be searched for where libraries are installed.
  const std::string file = path.find('/') == std::string::npos ? "./" + path : path;
  void* handle = dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (!handle) throw std::runtime_error(dlerror());
  for (const char* name : names) {
    void* address = dlsym(handle, name);
    if (!address) {
      ++missing_;
      address = reinterpret_cast<void*>(&absent);
    }
    addresses_.push_back(address);
  }
}

void Library::use() const {
  std::memcpy(bench_slots, addresses_.data(), addresses_.size() * sizeof(void*));
}

}  // namespace bench
