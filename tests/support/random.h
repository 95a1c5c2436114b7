// Random numbers of the tests. Every test starts from the same seed, which is printed at the start and can be set with
// the environment variable ZEBCV_TEST_SEED.
#pragma once

#include <stdint.h>

namespace test {

uint64_t seed();

// xorshift64*: small, fast, good enough to scatter test data.
class Random {
 public:
  explicit Random(uint64_t stream = 0)
      : state_((seed() + 1) * 0x9E3779B97F4A7C15u ^ (stream + 1) * 0xD1B54A32D192ED03u) {
    if (state_ == 0) state_ = 1;
    bits();
    bits();
  }
  uint64_t bits() {
    state_ ^= state_ >> 12;
    state_ ^= state_ << 25;
    state_ ^= state_ >> 27;
    return state_ * 0x2545F4914F6CDD1Du;
  }
  // An integer in low..high, both included.
  int within(int low, int high) {
    const uint64_t span = static_cast<uint64_t>(static_cast<int64_t>(high) - low) + 1;
    return static_cast<int>(low + static_cast<int64_t>((bits() >> 16) % span));
  }
  float real(float low, float high) { return low + (high - low) * static_cast<float>((bits() >> 40) * 0x1p-24); }

 private:
  uint64_t state_;
};

}  // namespace test
