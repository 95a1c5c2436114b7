// The page of a family of functions: signatures first, then what they compute, parameters, rules, a program, and all
// that the headers say.
#pragma once

#include <functional>
#include <map>
#include <string>

#include "markup.h"
#include "page.h"

namespace docs {

struct Lore {
  std::map<std::string, std::string> parameters;  // meaning by name, or by "family/name" where a family has its own
  std::map<std::string, std::string> statuses;    // sentence by code
  std::map<std::string, std::string> prototypes;  // address of the declaration by name
  std::map<std::string, std::string> types;       // comment by name
};

// Reports a parameter without a meaning as a problem.
std::string groupBody(const Page& family, const Lore& lore, const Hooks& hooks,
                      const std::function<void(const std::string&)>& problem);

}  // namespace docs
