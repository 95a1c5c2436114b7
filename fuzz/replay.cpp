// Runs the inputs of a group through its drivers: replay GROUP FILE-OR-DIRECTORY...
#include <stdio.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "target.h"

int main(int argc, char** argv) {
  if (argc < 3) {
    fprintf(stderr, "usage: %s GROUP FILE-OR-DIRECTORY...\n", argv[0]);
    return 2;
  }
  fuzz::nameCaseOnSignals();
  std::vector<std::filesystem::path> files;
  for (int i = 2; i < argc; ++i) {
    if (std::filesystem::is_directory(argv[i])) {
      for (const auto& entry : std::filesystem::directory_iterator(argv[i])) files.push_back(entry.path());
    } else {
      files.push_back(argv[i]);
    }
  }
  std::sort(files.begin(), files.end());
  int faults = 0;
  for (const auto& file : files) {
    std::ifstream in(file, std::ios::binary);
    const std::vector<char> bytes((std::istreambuf_iterator<char>(in)), {});
    const std::string fault = fuzz::fault(argv[1], reinterpret_cast<const Zeb8u*>(bytes.data()), bytes.size());
    if (!in || !fault.empty()) {
      printf("%s: %s\n", file.c_str(), in ? fault.c_str() : "cannot be read");
      ++faults;
    }
  }
  printf("%s: %zu inputs, %d faults\n", argv[1], files.size(), faults);
  return faults > 0 || files.empty() ? 1 : 0;
}
