#include "target.h"

#include <signal.h>
#include <string.h>
#include <unistd.h>

#include <algorithm>

#include "support/zebcore_double.h"

namespace fuzz {
namespace {

std::vector<Target>& list() {
  static std::vector<Target> all;
  return all;
}

thread_local const char* running = "nothing";

uint32_t rank(const char* name, uint32_t key) {
  uint32_t hash = 0x811C9DC5u ^ key * 0x9E3779B1u;
  for (; *name; ++name) hash = (hash ^ static_cast<Zeb8u>(*name)) * 0x01000193u;
  return hash ^ hash >> 15;
}

void onSignal(int number) {
  const char text[] = "memory fault in the driver of ";
  if (write(STDERR_FILENO, text, sizeof(text) - 1) < 0 || write(STDERR_FILENO, running, strlen(running)) < 0 ||
      write(STDERR_FILENO, "\n", 1) < 0)
    _exit(1);
  signal(number, SIG_DFL);
  raise(number);
}

}  // namespace

Registration::Registration(const char* group, const char* name, Drive drive) {
  auto& all = list();
  const auto at = std::find_if(all.begin(), all.end(), [=](const Target& t) { return strcmp(t.name, name) > 0; });
  all.insert(at, {group, name, drive});
}

const std::vector<Target>& targets() {
  return list();
}

std::vector<std::string> groups() {
  std::set<std::string> names;
  for (const Target& t : targets()) names.insert(t.group);
  return {names.begin(), names.end()};
}

void require(bool good, const std::string& what) {
  if (!good) throw Failure{what};
}

void require(const testing::AssertionResult& result, const std::string& what) {
  if (!result) throw Failure{what + ": " + result.message()};
}

Watch& watch() {
  thread_local Watch w;
  return w;
}

std::string fault(const Target& target, Choice& choice) {
  running = target.name;
  auto& core = test::zebcore();
  // Small caches bring the stores past the cache within reach of small images.
  const int cacheSizes[] = {1 << 20, 1 << 20, 256, 1, 0, -1};
  core.cacheSize = choice.oneOf(cacheSizes);
  core.cacheStatus = choice.oneIn(8) ? zebStsErr : zebStsOk;
  const int live = core.liveBlocks;
  try {
    target.drive(choice);
    require(core.liveBlocks == live, std::to_string(core.liveBlocks - live) + " blocks were not released");
  } catch (const Failure& failure) {
    return std::string(target.name) + ": " + failure.text;
  }
  return {};
}

std::string fault(const std::string& group, const Zeb8u* bytes, size_t count) {
  Choice choice(bytes, count);
  const auto key = static_cast<uint32_t>(choice.within(0, 65535));
  const Target* chosen = nullptr;
  for (const Target& t : targets())
    if (group == t.group && (!chosen || rank(t.name, key) > rank(chosen->name, key))) chosen = &t;
  if (!chosen) return "no driver is in the group " + group;
  return fault(*chosen, choice);
}

void nameCaseOnSignals() {
  for (int number : {SIGSEGV, SIGBUS, SIGILL, SIGFPE, SIGABRT}) signal(number, onSignal);
}

}  // namespace fuzz
