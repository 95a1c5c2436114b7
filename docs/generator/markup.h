// Turns the text of header comments and of pages into HTML.
//
// Blocks: paragraphs, "## headings", "- lists", | tables |, indented or fenced text (```c, ```sh, ```text, ```formula)
// and pictures, ![words of the caption](section). Inside a line: `code`, **strong**, [text](address). The names of
// functions, types and constants become links by themselves.
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace docs {

struct Hooks {
  std::function<std::string(const std::string& name)> address;  // of a zeb... name; empty when it is no link
  std::function<std::string(const std::string& caption, const std::string& section)> figure;
};

std::string line(const std::string& text, const Hooks& hooks);
std::string block(const std::string& text, const Hooks& hooks);
std::string code(const std::string& text, const Hooks& hooks);

// The bodies of all fenced blocks of a language.
std::vector<std::string> fenced(const std::string& text, const std::string& language);

}  // namespace docs
