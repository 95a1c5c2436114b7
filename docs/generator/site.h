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

// Where a function belongs, from its name: zebiAdd_8u32f_C1IMR has the stem zebiAdd, the source type 8u, the other
// types 32f and the descriptor C1IMR. Functions without a type have a stem only.
struct Shape {
  explicit Shape(const std::string& name);
  std::string stem, source, others, descriptor;
};

// Writes the site and returns what is wrong with the documents, one line each.
std::vector<std::string> writeSite(const Sources& sources);

}  // namespace docs
