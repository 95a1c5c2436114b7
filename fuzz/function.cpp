#include "function.h"

#include <stdlib.h>
#include <sys/mman.h>

#include "support/memcheck.h"

namespace fuzz {
namespace {

bool startsWith(const std::string& name, const char* start) {
  return name.rfind(start, 0) == 0;
}

// Whether calls on ordinary data raise no more than inexact.
constexpr bool keepsExceptions =
#ifdef __clang__
    false;  // this compiler computes what a condition guards before it knows the condition
#else
    true;
#endif

// Functions whose checks stand in another order, and the order of their statuses; others of theirs have no place.
struct Departure {
  const char* names;
  std::vector<ZebStatus> order;
};
const std::vector<ZebStatus> masked = {zebStsErrNullPointer, zebStsErrSize,     zebStsErrStep,
                                       zebStsErrNotEvenStep, zebStsErrMaskSize, zebStsErrBorder};
const std::vector<ZebStatus> composed = {zebStsErrNullPointer, zebStsErrSize, zebStsErrStep, zebStsErrBorder,
                                         zebStsErrNotEvenStep};
const Departure departures[] = {
    {"zebiAdd_16u32f_C1IR", {zebStsErrNullPointer, zebStsErrSize, zebStsErrStep}},
    {"zebiCannyBorder_",
     {zebStsErrMaskSize, zebStsErrNullPointer, zebStsErrSize, zebStsErrBadArgument, zebStsErrBorder}},
    {"zebiFilterGaussianBorder_",
     {zebStsErrNullPointer, zebStsErrStep, zebStsErrNotEvenStep, zebStsErrSize, zebStsErrBorder,
      zebStsErrContextMatch}},
    {"zebiFilterGaussianGetBufferSize",
     {zebStsErrNullPointer, zebStsErrSize, zebStsErrBadArgument, zebStsErrDataType, zebStsErrNumChannels,
      zebStsErrChannelCount}},
    {"zebiFilterGaussianInit",
     {zebStsErrNullPointer, zebStsErrBadArgument, zebStsErrDataType, zebStsErrNumChannels, zebStsErrChannelCount}},
    {"zebiFindPeaks3x3_",
     {zebStsErrNullPointer, zebStsErrSize, zebStsErrStep, zebStsErrNotEvenStep, zebStsErrBadArgument}},
    {"zebiFilterS", masked},
    {"zebiFilterL", masked},
    {"zebiGradientVectorGetBufferSize",
     {zebStsErrNullPointer, zebStsErrSize, zebStsErrMaskSize, zebStsErrDataType, zebStsErrNumChannels,
      zebStsErrChannelCount}},
    {"zebiGradientVector",
     {zebStsErrNullPointer, zebStsErrSize, zebStsErrStep, zebStsErrNotEvenStep, zebStsErrMaskSize, zebStsErrNorm,
      zebStsErrBorder}},
    {"zebiGetDistanceTransformMask_", {zebStsErrNullPointer, zebStsErrSize, zebStsErrBadArgument}},
    {"zebiGetDistanceTransformMask", {zebStsErrBadArgument, zebStsErrNullPointer, zebStsErrSize}},
    {"zebiHoughProbLineInit_", {zebStsErrSize, zebStsErrBadArgument, zebStsErrNullPointer}},
    {"zebiMorphologyInit_", {zebStsErrSize, zebStsErrAnchor}},
    {"zebiMorphOpenBorder_", composed},
    {"zebiMorphCloseBorder_", composed},
    {"zebiMorphTophatBorder_", composed},
    {"zebiMorphBlackhatBorder_", composed},
    {"zebiMorphGradientBorder_", composed}};
// Functions that hold their arguments against what a state says before they look what it is.
const char* const readStateFirst[] = {"zebiErodeBorder",          "zebiDilateBorder",       "zebiMorphOpenBorder_",
                                      "zebiMorphCloseBorder_",    "zebiMorphTophatBorder_", "zebiMorphBlackhatBorder_",
                                      "zebiMorphGradientBorder_", "zebiGrayErodeBorder_",   "zebiGrayDilateBorder_",
                                      "zebiOpticalFlowPyrLK_",    "zebiPyramidLayerDown_",  "zebiPyramidLayerUp_",
                                      "zebiTiltHaarFeatures_"};
// Families that take steps of any bytes.
const char* const takeAnyStep[] = {"zebiGrayErode", "zebiGrayDilate", "zebiMorphReconstruct", "zebiPyramidLayer"};

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
  // Kinds, types and channels are few: no pointer is likely to look so.
  constexpr uint32_t mark = 0x5A000000, markBits = 0xFFE0E0F8;
  size_t bytes = test::GuardedBytes::bytesFrom(state);
  if (bytes == 0) bytes = static_cast<size_t>(test::bytesOfBlock(state));
  for (size_t at = 0; at + sizeof(uint32_t) <= bytes; at += sizeof(uint32_t)) {
    auto* word = reinterpret_cast<uint32_t*>(static_cast<Zeb8u*>(const_cast<void*>(state)) + at);
    const uint32_t value = *word;
    test::mayBeLookedAt(&value, sizeof(value));
    if ((value & markBits) == mark) return word;
    // Models of a scene begin with four letters.
    if (at == 0 && (value & 0xFFFF) == ('F' | 'G' << 8)) return word;
  }
  return nullptr;
}

bool Probe::plant(const std::string& name, Choice& c) {
  for (const char* family : takeAnyStep)
    if (startsWith(name, family))
      faults_.erase(
          std::remove_if(faults_.begin(), faults_.end(), [](const Fault& f) { return f.check == Check::evenStep; }),
          faults_.end());
  for (const char* family : readStateFirst)
    for (Fault& fault : faults_)
      if (startsWith(name, family) && fault.check == Check::state) fault.check = Check::anywhere, fault.want = 0;
  const auto* const departure = std::find_if(std::begin(departures), std::end(departures),
                                             [&](const Departure& d) { return startsWith(name, d.names); });
  if (departure != std::end(departures))
    for (Fault& fault : faults_) {
      const auto& order = departure->order;
      const auto at = std::find(order.begin(), order.end(), fault.want);
      fault.check = at == order.end() ? Check::anywhere : static_cast<Check>(at - order.begin());
    }
  if (faults_.empty()) return false;
  const auto any = [this](Choice& choice) {
    return &faults_[static_cast<size_t>(choice.within(0, static_cast<int>(faults_.size()) - 1))];
  };
  planted_ = {any(c)};
  Choice peek = c;
  Fault* const second = any(peek);
  if (peek.coin() && second->argument != planted_[0]->argument) planted_.push_back(second);
  for (Fault* fault : planted_) exchange(*fault);
  return true;
}

void Probe::repair() {
  for (Fault* fault : planted_) exchange(*fault);
}

std::string Probe::planted() const {
  return planted_[0]->label + (planted_.size() > 1 ? std::string(" and ") + planted_[1]->label : std::string());
}

ZebStatus Probe::want() const {
  const Fault& a = *planted_.front();
  const Fault& b = *planted_.back();
  if (a.check == Check::anywhere || b.check == Check::anywhere) return planted_.size() > 1 ? 0 : a.want;
  if (a.check == b.check) return a.want == b.want ? a.want : 0;
  return a.check < b.check ? a.want : b.want;
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

int Named::channels() const {
  const std::string name = name_;
  const char* const shorter[] = {"zebiAdd_16u32f_C1IR", "zebiPyrDown", "zebiHough"};
  for (const char* family : shorter)
    if (startsWith(name, family)) return 0;
  const auto says = [&](const char* part) { return name.find(part) != std::string::npos; };
  return says("_1u_") ? 0 : says("_C3") ? 3 : says("_C4") ? 4 : 1;
}

ZebStatus Named::call(const void* function, const std::vector<Argument>& arguments, size_t shift, bool ordinary) const {
  const Outcome outcome = callAtWorst(function, arguments, shift);
  require(!outcome.broken, std::string(name_) + " did not keep " + (outcome.broken ? outcome.broken : ""));
  // Small results may be denormal numbers, or vanish.
  constexpr unsigned silent = invalidOperation | divisionByZero | overflow;
  require(!keepsExceptions || !ordinary || !(outcome.exceptions & silent),
          std::string(name_) + " raised the floating-point exceptions " + std::to_string(outcome.exceptions));
#ifdef FUZZ_STACK_LIMIT
  static const bool limited = !getenv("ZEBCV_TEST_ANY_STACK");  // a library that is watched takes more
  require(!limited || outcome.depth < FUZZ_STACK_LIMIT,
          std::string(name_) + " took " + std::to_string(outcome.depth) + " bytes of stack");
#endif
  if (outcome.depth > watch().deepest.first) watch().deepest = {outcome.depth, name_};
  if (watch().noting) watch().calls[name_].shifts.insert(shift);
  return outcome.result;
}

void Named::expect(ZebStatus want, ZebStatus got, const char* what) const {
  require(got == want,
          std::string(name_) + ": " + what + " returned " + std::to_string(got) + ", not " + std::to_string(want));
}

void Named::expectRefusal(const Probe& probe, ZebStatus status, const std::string& label, ZebStatus want) const {
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
