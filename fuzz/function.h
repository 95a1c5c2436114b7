// A library function as the drivers call it.
//
//   const auto add = FUNCTION(zebiAdd_8u32f_C1IR);
//   add.ok(c, src.pixels(), src.step(), acc.pixels(), acc.step(), size);
//
// Before some of the valid calls the function is called with one argument spoiled: a null pointer, a size without an
// area or too wide for its steps, a step or count below 1, or what orElse() says. Such a call must return an error and
// leave every guarded byte and every output as it was. Valid calls are noted (see Watch) and, on demand, made again and
// again with one allocation after the other failing. Every call is made at its worst, see caller.h.
#pragma once

#include <tuple>
#include <type_traits>

#include "caller.h"
#include "support/compare.h"
#include "support/zebcore_double.h"
#include "target.h"

#define FUNCTION(name) ::fuzz::Function(#name, name)

namespace fuzz {

using test::agree;

// An argument that is not to be spoiled: any value is allowed, or no check is made.
template <class T>
struct Kept {
  T value;
};
template <class T>
Kept<T> keep(T value) {
  return {value};
}

// The order of the checks. Two faults at once are answered as the earlier one is alone; those that share a place, and
// those of no place, are not held against each other. inner: what the sizes lead to, kernels, anchors, lists of rows.
enum class Check { null, size, inner, step, evenStep, own, state, anywhere };

// An argument with a value that must be refused, with this status where one is given.
template <class T, class B>
struct Spoilable {
  T value;
  B bad;
  ZebStatus want;
  Check check;
};
template <class T>
constexpr ZebStatus usualStatus =
    std::is_floating_point_v<T> || std::is_same_v<T, ZebiPoint_32f> ? zebStsErrBadArgument : 0;
template <class T, class B>
Spoilable<T, B> orElse(T value, B bad, ZebStatus want = usualStatus<T>, Check check = Check::own) {
  return {value, bad, want, check};
}
// The step of an image whose rows have another length than the size and the function's name tell.
template <class T>
struct StepOf {
  int step, elements;
};
template <class T>
StepOf<T> stepOf(const Image<T>& image, int elements) {
  return {image.step(), elements};
}
// A pointer that is looked at after the sizes and steps.
template <class T>
struct Late {
  T* value;
};
template <class T>
Late<T> late(T* pointer) {
  return {pointer};
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
template <class T>
T* plain(Late<T> argument) {
  return argument.value;
}
template <class T>
int plain(StepOf<T> argument) {
  return argument.step;
}

// Records that tell what they are to every function that takes them.
template <class T, class... Records>
constexpr bool isOneOf = (... || std::is_same_v<std::remove_const_t<T>, Records>);
template <class T>
constexpr bool isState =
    isOneOf<T, ZebiFGGaussianState, ZebiFGHistogramState, ZebiFGMixtureState, ZebiFastNState, ZebiFilterGaussianState,
            ZebiHaarClassifier, ZebiHoughProbSpec, ZebiInpaintState, ZebiMorphAdvState, ZebiMorphGrayState,
            ZebiMorphState, ZebiOptFlowPyrLKState, ZebiPyramid, ZebiPyramidDownState, ZebiPyramidUpState>;

// One argument, and what spoils it: another value, or another identifier in the state that it points to.
struct Fault {
  const char* label;
  void* argument;
  size_t size;
  Zeb8u bad[sizeof(ZebiRect)];
  Check check;
  ZebStatus want;  // the error that it must give; 0: any
};

// Readable memory, of zeros or of 0xFF throughout, as large as any state.
const void* worthless(Zeb8u byte);

// The arguments of one call without their types: the faults that may be planted, the single values that it may write.
class Probe {
 public:
  template <class T>
  void fault(const char* label, T& argument, const T& bad, Check check, ZebStatus want) {
    static_assert(sizeof(T) <= sizeof(Fault::bad), "arguments are small");
    Fault f = {label, &argument, sizeof(T), {}, check, want};
    memcpy(f.bad, &bad, sizeof(T));
    faults_.push_back(f);
  }
  // A state that was never built, or one of another kind. A pyramid may be the caller's own but where it is released.
  template <class T>
  void faultOfState(T*& state, bool released) {
    for (const Zeb8u byte : {0x00, 0xFF})
      fault(byte ? "a state full of ones" : "a zeroed state", state,
            static_cast<T*>(const_cast<void*>(worthless(byte))), Check::state, zebStsErrContextMatch);
    if (std::is_same_v<T, ZebiPyramid> && !released) return;
    if (uint32_t* const word = identifier(state))
      fault("a state of another kind", *word, *word ^ 0x00010000, Check::state, zebStsErrContextMatch);
  }
  void output(const void* at, size_t size) {
    const auto* bytes = static_cast<const Zeb8u*>(at);
    outputs_.push_back({bytes, {bytes, bytes + size}});
  }

  // Plants one of the faults, often with a second one of another argument, which is chosen without drawing from the
  // input; false when there is none. Takes them out again.
  bool plant(const std::string& name, Choice& c);
  void repair();
  // What is planted, and the error that it must give; 0: any.
  std::string planted() const;
  ZebStatus want() const;
  // No guarded byte and no output has changed since the outputs were told.
  bool nothingWritten() const;

 private:
  // The word of a state that tells its kind; null when there is none.
  static uint32_t* identifier(const void* state);

  struct Output {
    const Zeb8u* at;
    std::vector<Zeb8u> before;
  };
  static void exchange(Fault& fault);

  std::vector<Fault> faults_;
  std::vector<Fault*> planted_;
  std::vector<Output> outputs_;
  const uint64_t digest_ = test::GuardedBytes::digestOfAll();
};

// What all functions have in common.
class Named {
 public:
  explicit Named(const char* name) : name_(name) {}
  const char* name() const { return name_; }

 protected:
  // As the name says; 0 where a row may be shorter than the region.
  int channels() const;
  // Makes a call and looks at what it left behind.
  ZebStatus call(const void* function, const std::vector<Argument>& arguments, size_t shift, bool ordinary) const;
  void expect(ZebStatus want, ZebStatus got, const char* what) const;
  void expectRefusal(const Probe& probe, ZebStatus status, const std::string& label, ZebStatus want = 0) const;
  // A valid call has ended well: notes it, showing the size of the region or not.
  void note(bool showsSize, int allocations) const;
  bool failsAllocations() const;
  // After a call whose k-th allocation was to fail: whether it did, and was answered as it must be.
  bool allocationRefused(const Probe& probe, ZebStatus status, int liveBefore) const;

 private:
  const char* name_;
};

template <class... A>
class Function : public Named {
 public:
  Function(const char* name, ZebStatus (*function)(A...)) : Named(name), function_(function) {}

  // A valid call, perhaps after a spoiled one.
  template <class... V>
  ZebStatus operator()(Choice& c, V... values) const {
    const std::tuple<A...> arguments(static_cast<A>(plain(values))...);
    if (c.oneIn(c.fixed() ? 3 : 8)) refuse(c, arguments, std::index_sequence_for<A...>(), values...);
    if (isQuery()) enlarge(c, arguments, std::index_sequence_for<A...>(), values...);
    return perform(c, arguments);
  }
  // The same, with a result of zebStsOk.
  template <class... V>
  void ok(Choice& c, V... values) const {
    expect(zebStsOk, (*this)(c, values...), "the valid call");
  }

  // The function as it is, for calls by the dozen.
  ZebStatus bare(A... a) const { return function_(a...); }

  // A call that nothing can make valid at its size: refused with this status, and noted all the same.
  template <class... V>
  void refused(ZebStatus want, V... values) const {
    const std::tuple<A...> arguments(static_cast<A>(plain(values))...);
    Probe probe;
    std::apply([&](const A&... a) { (addOutput(probe, a), ...); }, arguments);
    const ZebStatus status = invoke(arguments, 4);
    expectRefusal(probe, status, "its size");
    expect(want, status, "the call");
    if (watch().noting) note(std::apply([](const A&... a) { return showsSize(a...); }, arguments), 0);
  }

 private:
  using Arguments = std::tuple<A...>;

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

  // A step comes before the size of its image.
  template <size_t I>
  static constexpr bool sizeFollows() {
    if constexpr (I + 1 >= sizeof...(A)) {
      return false;
    } else {
      return std::is_same_v<std::tuple_element_t<I + 1, Arguments>, ZebiSize> || sizeFollows<I + 1>();
    }
  }

  // The elements in a row of the image whose step argument I is.
  template <size_t I>
  int rowOf(const Arguments& a) const {
    if constexpr (std::is_same_v<std::tuple_element_t<I, Arguments>, ZebiSize>) {
      return std::get<I>(a).width * channels();
    } else {
      return rowOf<I + 1>(a);
    }
  }

  static int belowOne(Choice& c) {
    const bool negative = c.coin();
    return negative ? -c.within(1, INT32_MAX) : 0;
  }
  template <size_t I, class T>
  void addFaults(Probe&, Choice&, bool, bool&, Arguments&, Kept<T>) const {}
  template <size_t I, class T, class B>
  void addFaults(Probe& probe, Choice&, bool, bool&, Arguments& a, Spoilable<T, B> v) const {
    using P = std::tuple_element_t<I, Arguments>;
    if constexpr (std::is_pointer_v<P>)
      probe.fault<P>("null", std::get<I>(a), nullptr, Check::null, zebStsErrNullPointer);
    probe.fault<P>("a selector", std::get<I>(a), static_cast<P>(v.bad), v.check, v.want);
  }
  template <size_t I, class T>
  void addFaults(Probe& probe, Choice&, bool, bool&, Arguments& a, Late<T>) const {
    using P = std::tuple_element_t<I, Arguments>;
    probe.fault<P>("null", std::get<I>(a), nullptr, Check::own, zebStsErrNullPointer);
  }
  template <size_t I, class T>
  void addFaults(Probe& probe, Choice& c, bool, bool& stepped, Arguments& a, StepOf<T> v) const {
    stepped = true;
    addStepFaults<sizeof(T)>(probe, c, std::get<I>(a), v.elements);
  }
  template <size_t bytes>
  static void addStepFaults(Probe& probe, Choice& c, int& step, int elements) {
    constexpr int element = bytes;
    probe.fault<int>("a step", step, belowOne(c), Check::step, zebStsErrStep);
    if (elements > 0)
      probe.fault<int>("a step too small by an element", step, (elements - 1) * element, Check::step, zebStsErrStep);
    if (element > 1) probe.fault<int>("an uneven step", step, step + 1, Check::evenStep, zebStsErrNotEvenStep);
  }
  template <size_t I, class V>
  void addFaults(Probe& probe, Choice& c, [[maybe_unused]] bool builds, bool& stepped, Arguments& a, V) const {
    using P = std::tuple_element_t<I, Arguments>;
    P& argument = std::get<I>(a);
    if constexpr (std::is_pointer_v<P>) {
      probe.fault<P>("null", argument, nullptr, Check::null, zebStsErrNullPointer);
      if constexpr (isState<std::remove_pointer_t<P>>)
        if (!builds) probe.faultOfState(argument, strstr(name(), "Free"));
    } else if constexpr (std::is_same_v<P, ZebiSize>) {
      const int bad = belowOne(c);
      probe.fault<P>("a width", argument, {bad, argument.height}, Check::size, zebStsErrSize);
      probe.fault<P>("a height", argument, {argument.width, bad}, Check::size, zebStsErrSize);
      // Some of these widths times an element of 4, 8 or 12 bytes wrap to less than a row.
      const int wrapping[] = {INT32_MAX, 0x40000001, 0x20000001, 0x15555556};
      const int any = stepped ? c.within(1 << 28, INT32_MAX) : 0;
      const int huge = any % 8 < 4 ? wrapping[any % 8] : any;
      if (stepped) probe.fault<P>("a huge width", argument, {huge, argument.height}, Check::step, zebStsErrStep);
    } else if constexpr (followsPixels<I>() && sizeFollows<I>()) {
      stepped = true;
      constexpr size_t element = sizeof(std::remove_pointer_t<std::tuple_element_t<I - 1, Arguments>>);
      // Where the step is not that of such rows, the rows are others.
      const int elements = rowOf<I>(a);
      addStepFaults<element>(probe, c, argument, argument == elements * static_cast<int>(element) ? elements : 0);
    } else if constexpr (followsPixels<I>() || (I == 0 && std::is_same_v<P, int>)) {
      probe.fault<P>("a count", argument, belowOne(c), Check::size, zebStsErrSize);
    }
  }

  template <size_t... I, class... V>
  void refuse(Choice& c, Arguments arguments, std::index_sequence<I...>, V... values) const {
    Probe probe;
    const bool builds = strstr(name(), "Init");
    bool stepped = false;
    (addOutput(probe, std::get<I>(arguments)), ...);
    (addFaults<I>(probe, c, builds, stepped, arguments, values), ...);
    if (!probe.plant(name(), c)) return;
    const ZebStatus status = invoke(arguments, c.shift());
    if (status < 0) probe.repair();
    expectRefusal(probe, status, probe.planted(), probe.want());
  }

  // ---- Queries of large sizes ----

  bool isQuery() const { return strstr(name(), "Size") && (... || std::is_same_v<A, int*>); }
  // Regions of up to the largest size are answered with no less than smaller ones, or do not fit and write nothing.
  // What is chosen here is not drawn from the input. Masks and kernels that the query reads stay as they are.
  template <size_t... I, class... V>
  void enlarge(Choice peek, Arguments arguments, std::index_sequence<I...>, V... values) const {
    if (invoke(arguments, peek.shift()) != zebStsOk) return;
    const int small[] = {answer(std::get<I>(arguments))...};
    constexpr bool reads = (... || (std::is_pointer_v<A> && std::is_const_v<std::remove_pointer_t<A>> &&
                                    !isState<std::remove_pointer_t<A>>));
    const auto grow = [&](int& extent) {
      extent = peek.coin() ? INT32_MAX : peek.within(std::max(extent, 1 << 14), INT32_MAX);
    };
    const auto look = [&](auto& argument, size_t index, const auto& value) {
      using P = std::decay_t<decltype(argument)>;
      constexpr bool plainly = std::is_same_v<P, std::decay_t<decltype(value)>>;
      if constexpr (plainly && std::is_same_v<P, ZebiSize> && !reads) {
        if (peek.coin()) grow(argument.width);
        if (peek.coin()) grow(argument.height);
      } else if constexpr (plainly && std::is_same_v<P, int>) {
        if (index == 0) grow(argument);
      }
    };
    (look(std::get<I>(arguments), I, values), ...);
    Probe probe;
    (addOutput(probe, std::get<I>(arguments)), ...);
    const ZebStatus status = invoke(arguments, peek.shift());
    if (status != zebStsOk) expectRefusal(probe, status, "a large size", zebStsErrOverflow);
    require((... && (small[I] <= answer(std::get<I>(arguments)))), std::string(name()) + ": less for a large size");
  }
  template <class T>
  static int answer(T argument) {
    if constexpr (std::is_same_v<T, int*>) {
      return *argument;
    } else {
      return 0;
    }
  }

  // The single value that an output argument points to.
  template <class T>
  static void addOutput(Probe& probe, T value) {
    using Pointee = std::remove_pointer_t<T>;
    if constexpr (std::is_same_v<T, int*> || std::is_same_v<T, ZebiSize*> ||
                  (std::is_pointer_v<T> && std::is_pointer_v<Pointee> && !std::is_const_v<Pointee>))
      probe.output(value, sizeof(Pointee));
    else
      (void)probe, (void)value;
  }

  // ---- Valid calls ----

  ZebStatus invoke(const Arguments& arguments, size_t shift, bool ordinary = false) const {
    const auto listed = std::apply([](const A&... a) { return std::vector<Argument>{Argument::of(a)...}; }, arguments);
    return call(reinterpret_cast<const void*>(function_), listed, shift, ordinary);
  }

  ZebStatus perform(const Choice& c, const Arguments& arguments) const {
    auto& core = test::zebcore();
    if (failsAllocations()) {
      for (int k = 0;; ++k) {
        Probe probe;
        std::apply([&](const A&... a) { (addOutput(probe, a), ...); }, arguments);
        const int live = core.liveBlocks;
        core.failMallocAt = k;
        const ZebStatus status = invoke(arguments, c.shift());
        if (!allocationRefused(probe, status, live)) return status;
      }
    }
    const int allocations = core.mallocCalls;
    const ZebStatus status = invoke(arguments, c.shift(), c.ordinary());
    test::digestOfResults().add(status);
    if (status >= 0) std::apply([this](const A&... a) { (digestOutput(a), ...); }, arguments);
    if (watch().noting && status >= 0)
      note(std::apply([](const A&... a) { return showsSize(a...); }, arguments), core.mallocCalls - allocations);
    return status;
  }

  // The first of what an argument may have been written to. Bytes are often scratch; sizes of states grow with
  // pointers.
  template <class T>
  void digestOutput(T argument) const {
    if constexpr (std::is_pointer_v<T>) {
      using Pointee = std::remove_pointer_t<T>;
      if constexpr (!std::is_const_v<Pointee> && isOneOf<Pointee, Zeb16u, Zeb16s, Zeb32s, Zeb32f, Zeb64f>) {
        if (!argument || strstr(name(), "Size")) return;
        Pointee value;
        memcpy(&value, argument, sizeof(value));
        test::digestOfResults().add(value);
      }
    } else {
      (void)argument;
    }
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

  ZebStatus (*function_)(A...);
};

}  // namespace fuzz
