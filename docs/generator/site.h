// The documents as a set of HTML pages, and the checks that they are complete.
#pragma once

#include <set>
#include <string>
#include <vector>

#include "headers.h"
#include "markup.h"

namespace docs {

struct Sources {
  std::string include;                           // folder of the public headers
  std::string docs;                              // folder of this project's pages
  std::string tour;                              // folder that the tour wrote
  std::string out;                               // folder to write
  const std::set<std::string>* tests = nullptr;  // the names of all tests, where they are known
};

// Writes the site and returns what is wrong with the documents, one line each.
std::vector<std::string> writeSite(const Sources& sources);

}  // namespace docs
