// Compares the binary interface that the headers declare with the one that was published under a SONAME.
//
// zebcv_baseline [--update] FILE HEADER...
//
// What is in the file may neither go nor change; what is new has to be written into it, which --update does.
#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <stdexcept>

#include "headers.h"

namespace {

using Interface = std::map<std::string, std::string>;

Interface published(const std::string& path) {
  Interface out;
  if (!std::filesystem::exists(path)) return out;
  for (const std::string& line : docs::splitLines(docs::readFile(path))) {
    const size_t equals = line.find(" = ");
    if (equals == std::string::npos) throw std::runtime_error("not a line of a baseline: " + line);
    out[line.substr(0, equals)] = line.substr(equals + 3);
  }
  return out;
}

int compare(const std::string& path, const std::vector<std::string>& headerPaths, bool update) {
  std::vector<docs::Header> headers;
  for (const std::string& one : headerPaths) headers.push_back(docs::readHeader(one));
  const Interface was = published(path), is = docs::binaryInterface(headers);
  int broken = 0, added = 0;
  for (const auto& [name, meaning] : was) {
    const auto now = is.find(name);
    if (now != is.end() && now->second == meaning) continue;
    ++broken;
    std::fprintf(stderr, "%s: %s\n  was %s\n  is  %s\n", now == is.end() ? "removed" : "changed", name.c_str(),
                 meaning.c_str(), now == is.end() ? "gone" : now->second.c_str());
  }
  if (broken > 0) {
    std::fprintf(stderr, "%s: programs that are built already would break. A new major version starts a new file.\n",
                 path.c_str());
    return 1;
  }
  for (const auto& [name, meaning] : is) {
    if (was.count(name)) continue;
    ++added;
    std::fprintf(update ? stdout : stderr, "added: %s = %s\n", name.c_str(), meaning.c_str());
  }
  if (added > 0 && !update) {
    std::fprintf(stderr, "%s does not know them yet: make baseline\n", path.c_str());
    return 1;
  }
  if (added > 0) {
    std::ofstream file(path);
    for (const auto& [name, meaning] : is) file << name << " = " << meaning << '\n';
    file.close();
    if (!file) throw std::runtime_error("cannot write " + path);
  }
  std::printf("%s: %zu entries\n", path.c_str(), is.size());
  return 0;
}

}  // namespace

int main(int count, char** words) {
  std::vector<std::string> arguments(words + 1, words + count);
  const bool update = !arguments.empty() && arguments[0] == "--update";
  if (update) arguments.erase(arguments.begin());
  if (arguments.size() < 2) {
    std::fputs("usage: zebcv_baseline [--update] FILE HEADER...\n", stderr);
    return 2;
  }
  try {
    return compare(arguments[0], {arguments.begin() + 1, arguments.end()}, update);
  } catch (const std::exception& e) {
    std::fprintf(stderr, "zebcv_baseline: %s\n", e.what());
    return 1;
  }
}
