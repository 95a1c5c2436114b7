#include "function.h"

namespace fuzz {

const char* Probe::plant(Choice& c) const {
  if (faults_.empty()) return nullptr;
  const Fault& fault = faults_[static_cast<size_t>(c.within(0, static_cast<int>(faults_.size()) - 1))];
  memcpy(fault.argument, fault.bad, fault.size);
  return fault.label;
}

bool Probe::nothingWritten() const {
  for (const Output& output : outputs_)
    if (memcmp(output.at, output.before.data(), output.before.size()) != 0) return false;
  return digest_ == test::GuardedBytes::digestOfAll();
}

void Named::expect(ZebStatus want, ZebStatus got, const char* what) const {
  require(got == want,
          std::string(name_) + ": " + what + " returned " + std::to_string(got) + ", not " + std::to_string(want));
}

void Named::expectRefusal(const Probe& probe, ZebStatus status, const char* label) const {
  require(status < 0, std::string(name_) + ": spoiled by " + label + ", status " + std::to_string(status));
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
