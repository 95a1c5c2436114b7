// Every exported function at every small size, without memory, and without a known cache.
#include <thread>

#include "function.h"
#include "support/zebcore_double.h"

namespace {

using namespace fuzz;

const char* const entries[] = {
#define ENTRY(name) #name,
#include "entries.inc"
#undef ENTRY
};

class EveryFunction : public testing::Test {
 protected:
  void SetUp() override {
    nameCaseOnSignals();
    watch() = {};
    test::zebcore().reset();
  }
  void TearDown() override { watch() = {}; }

  // One case of a driver at a size. The same number gives the same case.
  static void drive(const Target& target, ZebiSize size, uint64_t number) {
    watch().size = size;
    Choice choice(number * 1000 + static_cast<uint64_t>(size.height) * 10 + static_cast<uint64_t>(size.width), size);
    const std::string text = fault(target, choice);
    EXPECT_TRUE(text.empty()) << text << "\nat " << size.width << " x " << size.height << ", case " << number;
  }
};

constexpr int largest = 9;

// The call that took most of the stack so far; the text of types.h names it.
void tellDeepest() {
  printf("most stack: %zu bytes, %s\n", watch().deepest.first, watch().deepest.second);
}

// Every buffer lies between inaccessible pages, scratch has exactly the reported size, often at an odd address.
TEST_F(EveryFunction, AtAllSmallSizes) {
  constexpr int casesPerSize = 3;
  watch().noting = true;
  for (const Target& target : targets())
    for (int h = 1; h <= largest; ++h)
      for (int w = 1; w <= largest; ++w)
        for (int i = 0; i < casesPerSize; ++i) drive(target, {w, h}, static_cast<uint64_t>(i));
  std::string missing;
  for (const char* name : entries)
    if (watch().calls[name].sizes.size() != size_t(largest * largest)) missing += std::string(" ") + name;
  EXPECT_EQ(missing, "") << "not called at all sizes: write a driver, see fuzz/README.md";
  for (const char* name : entries)
    if (strcmp(name, "zebcvGetLibVersion") != 0) {
      EXPECT_EQ(watch().calls[name].shifts.size(), 4u) << name << " was not called on all stacks";
    }
  tellDeepest();
  for (const Target& target : targets()) EXPECT_EQ(watch().calls.count(target.name), 1u) << target.name;
}

// Every width of some vectors and rows of hundreds of pixels, which no loop takes in one way only; then regions of any
// size, several rows high.
class EveryFunctionOf : public EveryFunction, public testing::WithParamInterface<std::string> {};
TEST_P(EveryFunctionOf, AtEveryWidth) {
  std::vector<int> widths = {127, 128, 129, 192, 255, 256, 257, 301};
  for (int w = largest + 1; w <= 72; ++w) widths.push_back(w);
  constexpr int casesPerWidth = 2, regions = 100;
  for (const Target& target : targets()) {
    if (target.group != GetParam()) continue;
    for (const int w : widths)
      for (int i = 0; i < casesPerWidth; ++i) drive(target, {w, 1 + (w + i) % 4}, static_cast<uint64_t>(i));
    for (const ZebiSize size : {ZebiSize{230, 41}, ZebiSize{2500, 3}, ZebiSize{3, 400}}) drive(target, size, 0);
    for (int i = 0; i < regions; ++i) {
      const auto number = static_cast<Zeb8u>(i);
      const Zeb8u bytes[] = {number, 0, 0, 0};
      Choice choice(bytes, sizeof(bytes));
      EXPECT_EQ(fault(target, choice), "") << "region " << i;
    }
    if (HasFailure()) return;
  }
  tellDeepest();
}
INSTANTIATE_TEST_SUITE_P(, EveryFunctionOf, testing::ValuesIn(groups()), [](const auto& info) { return info.param; });

// Every function in several threads at once, each starting with another: what one thread finds right all must.
TEST_F(EveryFunction, FromSeveralThreads) {
  constexpr size_t threads = 4;
  const size_t count = targets().size();
  // What the drivers make once stands before the threads do, where the thread checker sees it.
  worthless(0);
  const test::GuardedBytes block(1, Place::odd);
  std::vector<std::thread> pool;
  for (size_t t = 0; t < threads; ++t)
    pool.emplace_back([=] {
      for (size_t k = 0; k < 2 * count; ++k)
        drive(targets()[(t * count / threads + k) % count], {static_cast<int>(20 + t), 13}, k);
    });
  for (auto& thread : pool) thread.join();
}

// Functions that allocate say so in their names, but for stages of cascades and layers up, whose texts say so.
bool mayAllocate(const std::string& name) {
  return name.find("Alloc") != std::string::npos || name.rfind("zebiApply", 0) == 0 ||
         name.rfind("zebiPyramidLayerUp_", 0) == 0;
}

// Each allocation of each call made to fail in turn. Which functions allocate is seen in a first run of the same case.
TEST_F(EveryFunction, WithoutMemory) {
  const ZebiSize sizes[] = {{1, 1}, {5, 4}, {9, 9}, {40, 13}};
  for (const Target& target : targets())
    for (const ZebiSize size : sizes)
      for (uint64_t i = 0; i < 4; ++i) {
        watch().noting = true;
        watch().failAllocations = false;
        drive(target, size, i);
        watch().failAllocations = true;
        drive(target, size, i);
      }
  for (const char* name : entries) {
    const Calls& calls = watch().calls[name];
    if (mayAllocate(name)) {
      EXPECT_GT(calls.mostAllocations, 0) << name << " does not allocate";
    } else {
      EXPECT_EQ(calls.mostAllocations, 0) << name << " allocates";
    }
    if (calls.mostAllocations > 0) {
      EXPECT_GE(calls.refusedAllocations, calls.mostAllocations) << name << " was not tried without memory";
    }
  }
}

}  // namespace
