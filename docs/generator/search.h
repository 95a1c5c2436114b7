// The filter box on every page: one script with all names, which works from a file without a server.
#pragma once

#include <string>
#include <vector>

namespace docs {

struct Entry {
  std::string name, address;
  std::string kind;   // what it is, shown beside the name: a family's title, "type", "status", ...
  std::string words;  // what else finds it
};

extern const char searchBox[];    // goes into the head of a page
extern const char searchStyle[];  // goes into the style sheet

std::string searchScript(const std::vector<Entry>& entries);

}  // namespace docs
