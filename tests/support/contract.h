// Tests of a function's argument checks as an order.
//
//   Contract(NAMED(zebiAdd_8u32f_C1IR), src.pixels(), src.step(), acc.pixels(), acc.step(), roi)
//       .nulls<0, 2>().sizes<4>().step<1>(w).step<3>(4 * w).multiple<3>(4).hostile<4>()
//       .check();
//
// Faults are listed in the order in which the function must find them. check() makes the valid call, then each fault
// alone, then every two faults of different arguments at once, which must report the earlier one. No failed call may
// change a byte of any guarded block that lives at the time.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <set>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "support/guard.h"

#define NAMED(function) #function, function

namespace test {

template <class... A>
class Contract {
 public:
  template <class... V>
  Contract(const char* name, ZebStatus (*function)(A...), V... valid)
      : name_(name), function_(function), valid_(static_cast<A>(valid)...) {}

  // The pointers at these positions are required.
  template <size_t... I>
  Contract& nulls() {
    (add(I, zebStsErrNullPointer, "null", [](auto& a) { std::get<I>(a) = nullptr; }), ...);
    return *this;
  }
  // The ZebiSize at this position must have an area.
  template <size_t I>
  Contract& sizes() {
    for (int bad : {0, -1}) {
      add(I, zebStsErrSize, "width", [=](auto& a) { std::get<I>(a).width = bad; });
      add(I, zebStsErrSize, "height", [=](auto& a) { std::get<I>(a).height = bad; });
    }
    return *this;
  }
  // The step at this position must be at least this many bytes, and a multiple of an element.
  template <size_t I>
  Contract& step(int least, int element = 1) {
    for (int bad : {least - element, 0, -least}) add(I, zebStsErrStep, "step", [=](auto& a) { std::get<I>(a) = bad; });
    return *this;
  }
  template <size_t I>
  Contract& multiple(int element) {
    const int valid = std::get<I>(valid_);
    return with<I>(valid / element * element + element + 1, zebStsErrNotEvenStep, "step multiple");
  }
  // This value at this position is refused with this status.
  template <size_t I, class V>
  Contract& with(V value, ZebStatus status, const char* label = "value") {
    add(I, status, label, [=](auto& a) { std::get<I>(a) = value; });
    return *this;
  }
  // Sizes whose products wrap in 32 bits: every step is too small for them.
  template <size_t I>
  Contract& hostile(ZebStatus status = zebStsErrStep) {
    for (int width : {0x7FFFFFFF, 0x40000001, 0x20000001, 0x15555556})
      add(I, status, "hostile width", [=](auto& a) { std::get<I>(a).width = width; });
    return *this;
  }

  void check() {
    ASSERT_EQ(std::apply(function_, valid_), zebStsOk) << name_ << ": the valid call";
    ASSERT_FALSE(faults_.empty());
    const uint64_t before = GuardedBytes::digestOfAll();
    for (size_t i = 0; i < faults_.size(); ++i) {
      call({&faults_[i]});
      for (size_t j = i + 1; j < faults_.size(); ++j)
        if (faults_[i].argument != faults_[j].argument) call({&faults_[i], &faults_[j]});
    }
    EXPECT_EQ(GuardedBytes::digestOfAll(), before) << name_ << ": a failed call wrote something";
  }

 private:
  using Arguments = std::tuple<A...>;
  struct Fault {
    size_t argument;
    ZebStatus status;
    std::string label;
    std::function<void(Arguments&)> plant;
  };

  void add(size_t argument, ZebStatus status, const char* label, std::function<void(Arguments&)> plant) {
    faults_.push_back({argument, status, label, std::move(plant)});
  }

  void call(std::vector<const Fault*> planted) {
    Arguments arguments = valid_;
    std::string what;
    for (const Fault* fault : planted) {
      fault->plant(arguments);
      what += " argument " + std::to_string(fault->argument) + " " + fault->label + ";";
    }
    EXPECT_EQ(std::apply(function_, arguments), planted.front()->status) << name_ << ":" << what;
  }

  const char* name_;
  ZebStatus (*function_)(A...);
  Arguments valid_;
  std::vector<Fault> faults_;
};

template <class... A, class... V>
Contract(const char*, ZebStatus (*)(A...), V...) -> Contract<A...>;

}  // namespace test
