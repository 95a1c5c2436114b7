// The list of drivers, what they call, and how a case fails.
#pragma once

#include <gtest/gtest.h>

#include <map>
#include <set>
#include <string>
#include <vector>

#include "choice.h"

namespace fuzz {

// A driver makes one case for a function, and for those that go with it, from choices.
using Drive = void (*)(Choice&);

struct Target {
  const char* group;
  const char* name;
  Drive drive;
};

// All drivers, in the order of their names.
const std::vector<Target>& targets();
std::vector<std::string> groups();

struct Registration {
  Registration(const char* group, const char* name, Drive drive);
};

#define FUZZ_JOIN(a, b) a##b
#define FUZZ_UNIQUE(line) FUZZ_JOIN(registration, line)
// DRIVER(group, name, body): the body is made of statements on a Choice& c.
#define DRIVER(group, name, ...) \
  const ::fuzz::Registration FUZZ_UNIQUE(__COUNTER__)(group, name, [](::fuzz::Choice& c) { __VA_ARGS__; })

// What is wrong with a case.
struct Failure {
  std::string text;
};

void require(bool good, const std::string& what);
void require(const testing::AssertionResult& result, const std::string& what);

// What the calls of a run have been; see Function.
struct Calls {
  std::set<std::pair<int, int>> sizes;  // of the regions
  int mostAllocations = 0;
  int refusedAllocations = 0;  // allocations that were made to fail
  std::set<size_t> shifts;     // of the stack
};

// How the calls of a thread are watched. Without a size nothing is noted.
struct Watch {
  bool noting = false;
  ZebiSize size = {0, 0};
  bool failAllocations = false;
  std::pair<size_t, const char*> deepest = {0, ""};  // stack taken by a call, and its function
  std::map<std::string, Calls> calls;
};
Watch& watch();

// Drives one case; its fault, or nothing.
std::string fault(const Target& target, Choice& choice);

// The case that an input of a group stands for; its fault, or nothing. The function is chosen by the name's rank under
// a hash, so that an input keeps its function when others are added.
std::string fault(const std::string& group, const Zeb8u* bytes, size_t count);

// From now on a memory fault names the case that is running.
void nameCaseOnSignals();

}  // namespace fuzz
