// zebcv_docs --include DIR --docs DIR --tour DIR --out DIR [--tests FILE]: writes the documents as HTML pages, and
// fails when they are not complete. FILE holds the names of all tests, one a line.
#include <cstdio>
#include <exception>

#include "site.h"

int main(int count, char** words) {
  docs::Sources sources;
  std::set<std::string> tests;
  const std::map<std::string, std::string*> options = {
      {"--include", &sources.include}, {"--docs", &sources.docs}, {"--tour", &sources.tour}, {"--out", &sources.out}};
  try {
    for (int i = 1; i + 1 < count; i += 2) {
      if (std::string(words[i]) == "--tests") {
        for (const std::string& name : docs::splitLines(docs::readFile(words[i + 1]))) tests.insert(name);
        sources.tests = &tests;
      } else {
        *options.at(words[i]) = words[i + 1];
      }
    }
    const std::vector<std::string> problems = docs::writeSite(sources);
    for (const std::string& problem : problems) std::fprintf(stderr, "%s\n", problem.c_str());
    if (!problems.empty()) return 1;
    std::printf("Look at %s/index.html\n", sources.out.c_str());
  } catch (const std::exception& e) {
    std::fprintf(stderr, "zebcv_docs: %s\n", e.what());
    return 1;
  }
}
