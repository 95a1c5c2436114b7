// What the comments of the headers hold: text, status codes in the order of the checks, counts of bytes and layouts.
#pragma once

#include <string>
#include <vector>

#include "markup.h"

namespace docs {

struct Passage {
  enum Kind { text, status, bytes } kind;
  std::string words;  // paragraphs, an empty line between them
};

std::vector<Passage> passages(const std::string& comment);

// As HTML: status codes as lists, counts of bytes and layouts folded away.
std::string folded(const std::string& comment, const Hooks& hooks);

// The sentences of the text that hold one of the words of a regular expression.
std::vector<std::string> sentences(const std::string& comment, const std::string& expression);

// The codes that a comment names, in its order.
std::vector<std::string> statuses(const std::string& comment);

}  // namespace docs
