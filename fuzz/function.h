// A library function as the drivers call it.
//
//   const auto add = FUNCTION(zebiAdd_8u32f_C1IR);
//   add.ok(c, src.pixels(), src.step(), acc.pixels(), acc.step(), size);
//
// Before some of the valid calls the function is called with one argument spoiled: a null pointer, a size without an
// area or too wide for its steps, a step or count below 1, or what orElse() says. Such a call must return an error and
// leave every guarded byte and every output as it was. Valid calls are noted (see Watch), must leave the control words
// of the floating-point units as they were and, on demand, are made again and again with one allocation after the other
// failing.
#pragma once

#include <immintrin.h>

#include <functional>
#include <tuple>
#include <type_traits>

#include "support/compare.h"
#include "support/zebcore_double.h"
#include "target.h"

#define FUNCTION(name) ::fuzz::Function(#name, name)

namespace fuzz {

// An argument that is not to be spoiled: any value is allowed, or no check is made.
template <class T>
struct Kept {
  T value;
};
template <class T>
Kept<T> keep(T value) {
  return {value};
}

// An argument with a value that must be refused.
template <class T, class B>
struct Spoilable {
  T value;
  B bad;
};
template <class T, class B>
Spoilable<T, B> orElse(T value, B bad) {
  return {value, bad};
}

template <class T>
T plain(T value) {
  return value;
}
template <class T>
T plain(Kept<T> kept) {
  return kept.value;
}
template <class T, class B>
T plain(Spoilable<T, B> argument) {
  return argument.value;
}

// The modes of both floating-point units, without their exception flags.
inline uint32_t controlWords() {
  unsigned short x87;
  __asm__ volatile("fnstcw %0" : "=m"(x87));
  return (_mm_getcsr() & ~0x3Fu) << 16 | x87;
}

template <class... A>
class Function {
 public:
  Function(const char* name, ZebStatus (*function)(A...)) : name_(name), function_(function) {}

  // A valid call, perhaps after a spoiled one.
  template <class... V>
  ZebStatus operator()(Choice& c, V... values) const {
    const std::tuple<A...> arguments(static_cast<A>(plain(values))...);
    if (c.oneIn(8)) refuse(c, arguments, std::index_sequence_for<A...>(), values...);
    return perform(arguments);
  }
  // The same, with a result of zebStsOk.
  template <class... V>
  void ok(Choice& c, V... values) const {
    expect(zebStsOk, (*this)(c, values...), "the valid call");
  }

  const char* name() const { return name_; }

 private:
  using Arguments = std::tuple<A...>;
  struct Fault {
    const char* label;
    std::function<void(Arguments&)> plant;
  };

  void expect(ZebStatus want, ZebStatus got, const char* what) const {
    require(got == want,
            std::string(name_) + ": " + what + " returned " + std::to_string(got) + ", not " + std::to_string(want));
  }

  // ---- Spoiled calls ----

  template <size_t I>
  static constexpr bool followsPixels() {
    if constexpr (I == 0) {
      return false;
    } else {
      using Before = std::tuple_element_t<I - 1, Arguments>;
      return std::is_same_v<std::tuple_element_t<I, Arguments>, int> && std::is_pointer_v<Before> &&
             std::is_arithmetic_v<std::remove_pointer_t<Before>>;
    }
  }

  template <size_t I, class T>
  void addFaults(std::vector<Fault>&, Choice&, bool&, Kept<T>) const {}
  template <size_t I, class T, class B>
  void addFaults(std::vector<Fault>& faults, Choice&, bool&, Spoilable<T, B> v) const {
    using P = std::tuple_element_t<I, Arguments>;
    faults.push_back({"selector", [v](Arguments& a) { std::get<I>(a) = static_cast<P>(v.bad); }});
  }
  template <size_t I, class V>
  void addFaults(std::vector<Fault>& faults, Choice& c, bool& stepped, V) const {
    using P = std::tuple_element_t<I, Arguments>;
    if constexpr (std::is_pointer_v<P>) {
      faults.push_back({"null", [](Arguments& a) { std::get<I>(a) = nullptr; }});
    } else if constexpr (std::is_same_v<P, ZebiSize>) {
      const int bad = -c.within(0, 1) * c.within(1, INT32_MAX);
      faults.push_back({"width", [bad](Arguments& a) { std::get<I>(a).width = bad; }});
      faults.push_back({"height", [bad](Arguments& a) { std::get<I>(a).height = bad; }});
      if (stepped) {
        const int wide = c.within(1 << 28, INT32_MAX);
        faults.push_back({"huge width", [wide](Arguments& a) { std::get<I>(a).width = wide; }});
      }
    } else if constexpr (followsPixels<I>() || (I == 0 && std::is_same_v<P, int>)) {
      stepped = stepped || I > 0;
      const int bad = -c.within(0, 1) * c.within(1, INT32_MAX);
      faults.push_back({"step or count", [bad](Arguments& a) { std::get<I>(a) = bad; }});
    }
  }

  template <size_t... I, class... V>
  void refuse(Choice& c, const Arguments& valid, std::index_sequence<I...>, V... values) const {
    std::vector<Fault> faults;
    bool stepped = false;
    (addFaults<I>(faults, c, stepped, values), ...);
    if (faults.empty()) return;
    const Fault& fault = faults[static_cast<size_t>(c.within(0, static_cast<int>(faults.size()) - 1))];
    Arguments arguments = valid;
    fault.plant(arguments);
    const auto outputs = std::make_tuple(output(std::get<I>(valid))...);
    const uint64_t before = test::GuardedBytes::digestOfAll();
    const ZebStatus status = std::apply(function_, arguments);
    require(status < 0, std::string(name_) + ": spoiled by " + fault.label + ", status " + std::to_string(status));
    require(before == test::GuardedBytes::digestOfAll() && outputs == std::make_tuple(output(std::get<I>(valid))...),
            std::string(name_) + ": spoiled by " + fault.label + ", wrote something");
  }

  // The single value that an output argument points to; 0 for others.
  template <class T>
  static auto output(T value) {
    using Pointee = std::remove_pointer_t<T>;
    if constexpr (std::is_same_v<T, int*>) {
      return *value;
    } else if constexpr (std::is_pointer_v<T> && std::is_pointer_v<Pointee> && !std::is_const_v<Pointee>) {
      return static_cast<const void*>(*value);
    } else if constexpr (std::is_same_v<T, ZebiSize*>) {
      return std::make_pair(value->width, value->height);
    } else {
      return 0;
    }
  }

  // ---- Valid calls ----

  ZebStatus perform(const Arguments& arguments) const {
    auto& core = test::zebcore();
    if (watch().failAllocations && watch().calls[name_].mostAllocations > 0)
      return refuseAllocations(arguments, std::index_sequence_for<A...>());
    const uint32_t modes = controlWords();
    const int allocations = core.mallocCalls;
    const ZebStatus status = std::apply(function_, arguments);
    require(modes == controlWords(), std::string(name_) + " changed a floating-point mode");
    if (watch().noting && status >= 0) {
      Calls& calls = watch().calls[name_];
      if (std::apply([](const A&... a) { return showsSize(a...); }, arguments))
        calls.sizes.insert({watch().size.width, watch().size.height});
      calls.mostAllocations = std::max(calls.mostAllocations, core.mallocCalls - allocations);
    }
    return status;
  }

  // One of the sizes, or the width that stands first, is the region's; functions without a size have none to show.
  static bool showsSize(const A&... arguments) {
    bool any = false, matches = false;
    const auto look = [&](const auto& a) {
      if constexpr (std::is_same_v<std::decay_t<decltype(a)>, ZebiSize>) {
        any = true;
        matches = matches || (a.width == watch().size.width && a.height == watch().size.height);
      }
    };
    (look(arguments), ...);
    if constexpr (sizeof...(A) > 0) {
      const auto& first = std::get<0>(std::tie(arguments...));
      if constexpr (std::is_same_v<std::decay_t<decltype(first)>, int>)
        matches = matches || first == watch().size.width;
    }
    return matches || !any;
  }

  template <size_t... I>
  ZebStatus refuseAllocations(const Arguments& arguments, std::index_sequence<I...>) const {
    auto& core = test::zebcore();
    for (int k = 0;; ++k) {
      const auto outputs = std::make_tuple(output(std::get<I>(arguments))...);
      const uint64_t before = test::GuardedBytes::digestOfAll();
      const int live = core.liveBlocks;
      core.failMallocAt = k;
      const ZebStatus status = std::apply(function_, arguments);
      const bool failed = core.failMallocAt < 0;
      core.failMallocAt = -1;
      if (!failed) return status;
      ++watch().calls[name_].refusedAllocations;
      expect(zebStsErrMemAlloc, status, "a call without memory");
      require(core.liveBlocks == live, std::string(name_) + ": a failed call kept memory");
      require(
          before == test::GuardedBytes::digestOfAll() && outputs == std::make_tuple(output(std::get<I>(arguments))...),
          std::string(name_) + ": a failed call wrote something");
    }
  }

  const char* name_;
  ZebStatus (*function_)(A...);
};

}  // namespace fuzz
