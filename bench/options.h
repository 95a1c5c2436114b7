// What the command line asks for.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "zebcv.h"

namespace bench {

struct Options {
  std::vector<std::string> filters;
  std::string json;
  std::string draw;  // a file of times to draw; none if empty
  std::string photo;
  std::string library;  // the build that is measured
  std::string against;  // the build that it is compared with; none if empty
  std::string beside;   // this program for the other width; none if empty
  std::optional<ZebiSize> size;
  double seconds = 0.3;
  bool sizes = false;
  bool quick = false;
  bool failLosses = false;
  bool inTurn = false;
  bool help = false;

  bool wants(const std::string& name) const;
};

extern const char usage[];

// Throws std::invalid_argument.
Options parse(int count, char** words);

}  // namespace bench
