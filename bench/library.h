// Builds of the library, loaded by path, and the one switch between them.
//
// The rows call the functions of the public headers by their names. Those names are defined here, as jumps through one
// table of addresses; a build that is put to use writes its own addresses into that table. A call costs the same
// indirect jump as one into a library that is linked.
#pragma once

#include <stdexcept>
#include <string>
#include <vector>

namespace bench {

class Library {
 public:
  // Throws std::runtime_error when the file cannot be loaded. It stays loaded until the program ends.
  explicit Library(const std::string& path);

  // Every call goes to this build from here on. What one build allocated or initialised is for that build alone.
  void use() const;

  const std::string& path() const { return path_; }
  // Functions of the headers that this build does not have.
  int missing() const { return missing_; }

 private:
  std::string path_;
  std::vector<void*> addresses_;
  int missing_ = 0;
};

// What a call throws when the build in use does not have the function.
struct NoSuchFunction : std::runtime_error {
  NoSuchFunction() : std::runtime_error("the library does not have the function") {}
};

}  // namespace bench
