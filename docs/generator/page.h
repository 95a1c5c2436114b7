// The project's own pages: title, functions, summary and text.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "headers.h"

namespace docs {

struct Page {
  std::string id;  // its file is id + ".html"
  std::string title, summary, body;
  std::vector<std::string> patterns;  // "zebiAdd*" of its functions
  std::vector<const Declaration*> functions;
};

// "# Title", then "functions: pattern..." and "summary: text" where they stand, then the text.
Page readPage(const std::filesystem::path& path);

// Whether a name is the pattern, or begins with it where it ends in a star.
bool matches(const std::string& name, const std::string& pattern);

std::vector<std::string> words(const std::string& text);

// The files of a folder with this extension, by name.
std::vector<std::filesystem::path> sorted(const std::string& folder, const std::string& extension);

// Where a function belongs, from its name: zebiAdd_8u32f_C1IMR has the stem zebiAdd, the source type 8u, the other
// types 32f and the descriptor C1IMR. Functions without a type have a stem only.
struct Shape {
  explicit Shape(const std::string& name);
  std::string stem, source, others, descriptor;
};

}  // namespace docs
