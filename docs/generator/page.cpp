#include "page.h"

#include <algorithm>
#include <regex>
#include <stdexcept>

namespace docs {

namespace fs = std::filesystem;

bool matches(const std::string& name, const std::string& pattern) {
  const bool open = pattern.back() == '*';
  return open ? name.compare(0, pattern.size() - 1, pattern, 0, pattern.size() - 1) == 0 : name == pattern;
}

std::vector<std::string> words(const std::string& text) {
  std::vector<std::string> out;
  static const std::regex word(R"(\S+)");
  for (std::sregex_iterator i(text.begin(), text.end(), word), end; i != end; ++i) out.push_back(i->str());
  return out;
}

Page readPage(const fs::path& path) {
  Page page;
  page.id = path.stem().string();
  const std::string text = readFile(path.string());
  std::smatch m;
  if (!std::regex_search(text, m, std::regex("^# ([^\n]*)\n(functions: ([^\n]*)\n)?(summary: ([^\n]*)\n)?")))
    throw std::runtime_error(path.string() + " does not begin with its title");
  page.title = m[1];
  page.patterns = words(m[3]);
  page.summary = m[5];
  page.body = m.suffix();
  return page;
}

std::vector<fs::path> sorted(const std::string& folder, const std::string& extension) {
  std::vector<fs::path> out;
  for (const auto& entry : fs::directory_iterator(folder))
    if (entry.path().extension() == extension) out.push_back(entry.path());
  std::sort(out.begin(), out.end());
  return out;
}

Shape::Shape(const std::string& name) {
  static const std::regex typed(R"((.*)_(\d+[usf])((?:\d+[usf])*)(?:_(C\d\w*))?)");
  std::smatch m;
  if (!std::regex_match(name, m, typed)) {
    stem = name;
    return;
  }
  stem = m[1];
  source = m[2];
  others = m[3];
  descriptor = m[4];
}

}  // namespace docs
