// Times the cases of all families and prints one table; or compares two builds of the library, or its two widths.
//
// Every case first has to give the reference's answer.
#include <algorithm>
#include <cstdio>
#include <exception>

#include "report.h"

namespace {

// 0, or 1 when a result is wrong.
int run(bench::Options options) {
  if (options.help) return std::fputs(bench::usage, stdout), 0;
  if (!options.draw.empty()) return bench::drawTimes(options.draw), 0;
  if (options.library.empty()) options.library = ZEBCV_LIBRARY;
  bench::Bench bench{options, {}, {}, {}, bench::Library(options.library)};
  for (const bench::Listed& c : bench::allCases()) {
    if (!options.wants(c.row.name)) continue;
    bench.cases.push_back(c);
    bench.nameWidth = std::max(bench.nameWidth, static_cast<int>(c.row.name.size()));
  }
  if (bench.cases.empty()) {
    std::fprintf(stderr, "no case matches\n");
    return 2;
  }
  const support::Photograph photo = support::openPhotograph(options.photo);
  bench.photo = support::gray(photo.picture);
  bench.source = photo.source;
  if (options.inTurn) return answerInTurn(bench), 0;
  if (!options.beside.empty()) return !runWidths(bench);
  return options.against.empty() ? !runTable(bench) : !runAgainst(bench);
}

}  // namespace

int main(int count, char** words) {
  bench::Options options;
  try {
    options = bench::parse(count, words);
  } catch (const std::exception& e) {
    std::fprintf(stderr, "%s\n%s", e.what(), bench::usage);
    return 2;
  }
  try {
    return run(options);
  } catch (const std::exception& e) {
    std::fprintf(stderr, "%s\n", e.what());
    return 2;
  }
}
