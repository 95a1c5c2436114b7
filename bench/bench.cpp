#include "bench.h"

#include <algorithm>
#include <cstdint>

namespace bench {
namespace {

constexpr size_t line = 64, page = 4096, linesPerPage = page / line, linesApart = 7;
size_t placed = 0;

struct Entry {
  int order;
  std::string title;
  std::vector<Case> cases;
};
std::vector<Entry>& registry() {
  static std::vector<Entry> entries;
  return entries;
}

}  // namespace

void restartPlacement() {
  placed = 0;
}

void* allocateLines(size_t bytes) {
  if (bytes < page) return ::operator new (bytes, std::align_val_t{line});
  auto* block = static_cast<char*>(::operator new (bytes + page, std::align_val_t{page}));
  return block + placed++ * linesApart % linesPerPage * line;
}

void releaseLines(void* block, size_t bytes) {
  if (bytes < page) return ::operator delete (block, std::align_val_t{line});
  const size_t within = reinterpret_cast<uintptr_t>(block) % page;
  ::operator delete (static_cast<char*>(block) - within, std::align_val_t{page});
}

Family::Family(int order, std::string title, std::vector<Case> cases) {
  registry().push_back({order, std::move(title), std::move(cases)});
}

std::vector<Listed> allCases() {
  std::vector<Entry> families = registry();
  std::stable_sort(families.begin(), families.end(), [](const Entry& a, const Entry& b) { return a.order < b.order; });
  std::vector<Listed> out;
  for (const Entry& family : families)
    for (const Case& c : family.cases) out.push_back({family.title, c});
  return out;
}

}  // namespace bench
