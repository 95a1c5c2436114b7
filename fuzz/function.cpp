#include "function.h"

#include <sys/mman.h>

namespace fuzz {
namespace {

// Functions that raise more than inexact on ordinary data.
bool mayRaise(const std::string& name) {
  // Infinity stands for pixels that have no distance yet.
  if (name.rfind("zebiFastMarching_", 0) == 0) return true;
  // Whole vectors are compared at the ends of lines of scratch that hold anything.
  if (name.find("Border") != std::string::npos && name.find("_32f_") != std::string::npos) return true;
  // A sum beyond the integers is converted before it is saturated.
  return name.rfind("zebiFilterColumnPipeline_16u_", 0) == 0;
}

}  // namespace

const void* worthless(Zeb8u byte) {
  constexpr size_t bytes = 1 << 20;
  static const auto filled = [](int with) {
    void* memory = mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED) abort();
    memset(memory, with, bytes);
    mprotect(memory, bytes, PROT_READ);
    return memory;
  };
  static const void *const zeros = filled(0), *const ones = filled(0xFF);
  return byte ? ones : zeros;
}

uint32_t* Probe::identifier(const void* state) {
  constexpr uint32_t mark = 0x5A000000, markBits = 0xFFE00000;  // kinds are few
  size_t bytes = test::GuardedBytes::bytesFrom(state);
  if (bytes == 0) bytes = static_cast<size_t>(test::bytesOfBlock(state));
  for (size_t at = 0; at + sizeof(uint32_t) <= bytes; at += sizeof(uint32_t)) {
    auto* word = reinterpret_cast<uint32_t*>(static_cast<Zeb8u*>(const_cast<void*>(state)) + at);
    if ((*word & markBits) == mark) return word;
  }
  return nullptr;
}

Fault* Probe::plant(Choice& c) {
  if (faults_.empty()) return nullptr;
  Fault& fault = faults_[static_cast<size_t>(c.within(0, static_cast<int>(faults_.size()) - 1))];
  exchange(fault);
  return &fault;
}

void Probe::exchange(Fault& fault) {
  Zeb8u before[sizeof(fault.bad)];
  memcpy(before, fault.argument, fault.size);
  memcpy(fault.argument, fault.bad, fault.size);
  memcpy(fault.bad, before, fault.size);
}

bool Probe::nothingWritten() const {
  for (const Output& output : outputs_)
    if (memcmp(output.at, output.before.data(), output.before.size()) != 0) return false;
  return digest_ == test::GuardedBytes::digestOfAll();
}

ZebStatus Named::call(const void* function, const std::vector<uint32_t>& words, size_t shift, bool ordinary) const {
  const Outcome outcome = callAtWorst(function, words.data(), words.size(), shift);
  require(!outcome.broken, std::string(name_) + " did not keep " + (outcome.broken ? outcome.broken : ""));
  // Small results may be denormal numbers, or vanish.
  constexpr unsigned silent = invalidOperation | divisionByZero | overflow;
  require(!ordinary || !(outcome.exceptions & silent) || mayRaise(name_),
          std::string(name_) + " raised the floating-point exceptions " + std::to_string(outcome.exceptions));
  if (outcome.depth > watch().deepest.first) watch().deepest = {outcome.depth, name_};
  if (watch().noting) watch().calls[name_].shifts.insert(shift);
  return outcome.result;
}

void Named::expect(ZebStatus want, ZebStatus got, const char* what) const {
  require(got == want,
          std::string(name_) + ": " + what + " returned " + std::to_string(got) + ", not " + std::to_string(want));
}

void Named::expectRefusal(const Probe& probe, ZebStatus status, const char* label, ZebStatus want) const {
  require(want ? status == want : status < 0,
          std::string(name_) + ": spoiled by " + label + ", status " + std::to_string(status));
  require(probe.nothingWritten(), std::string(name_) + ": spoiled by " + label + ", wrote something");
}

void Named::note(bool showsSize, int allocations) const {
  Calls& calls = watch().calls[name_];
  if (showsSize) calls.sizes.insert({watch().size.width, watch().size.height});
  calls.mostAllocations = std::max(calls.mostAllocations, allocations);
}

bool Named::failsAllocations() const {
  return watch().failAllocations && watch().calls[name_].mostAllocations > 0;
}

bool Named::allocationRefused(const Probe& probe, ZebStatus status, int liveBefore) const {
  auto& core = test::zebcore();
  const bool refused = core.failMallocAt < 0;
  core.failMallocAt = -1;
  if (!refused) return false;
  ++watch().calls[name_].refusedAllocations;
  expect(zebStsErrMemAlloc, status, "a call without memory");
  require(core.liveBlocks == liveBefore, std::string(name_) + ": a failed call kept memory");
  require(probe.nothingWritten(), std::string(name_) + ": a failed call wrote something");
  return true;
}

}  // namespace fuzz
