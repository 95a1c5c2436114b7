#include "options.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>

namespace bench {

const char usage[] =
    "usage: zebcv_bench [options] [TEXT...]\n"
    "  TEXT, --filter TEXT  only the cases whose name contains TEXT (any of several)\n"
    "  --library FILE       the build to measure (the one this program was built with)\n"
    "  --against FILE       another build; prints old time / new time instead of times\n"
    "  --beside PROGRAM     this program for the other width; prints its times beside the own ones\n"
    "  --in-turn            for that: measures the next case whenever a line comes in\n"
    "  --fail-losses        with --against: status 1 when a row is marked\n"
    "  --json FILE          also write the results as JSON\n"
    "  --draw FILE          only prints a picture (SVG) of the times in such a file\n"
    "  --size WxH           this size only (the targets hold for 1920x1080)\n"
    "  --seconds S          time for each case and size (0.3)\n"
    "  --sizes              also the cost per pixel from 64x64 to 3840x2160, and how it grows\n"
    "  --photo FILE         JPEG or PNG to scale to the region\n"
    "  --quick              smoke run: small, 0.01 s each\n";

namespace {

ZebiSize sizeFrom(const std::string& text) {
  ZebiSize size;
  char end = 0;
  if (std::sscanf(text.c_str(), "%dx%d%c", &size.width, &size.height, &end) != 2 || size.width < 1 || size.height < 1 ||
      size.width > 32768 || size.height > 32768 || 1LL * size.width * size.height > (1 << 26))
    throw std::invalid_argument("--size wants WIDTHxHEIGHT of at most 64 million pixels, got " + text);
  return size;
}

double secondsFrom(const std::string& text) {
  char* end = nullptr;
  const double seconds = std::strtod(text.c_str(), &end);
  if (end == text.c_str() || *end != 0 || !(seconds > 0))
    throw std::invalid_argument("--seconds wants a positive number, got " + text);
  return seconds;
}

}  // namespace

bool Options::wants(const std::string& name) const {
  return filters.empty() || std::any_of(filters.begin(), filters.end(),
                                        [&](const std::string& text) { return name.find(text) != std::string::npos; });
}

Options parse(int count, char** words) {
  Options options;
  int i = 1;
  const auto value = [&]() -> std::string {
    if (i + 1 >= count) throw std::invalid_argument(std::string(words[i]) + " needs a value");
    return words[++i];
  };
  for (; i < count; ++i) {
    const std::string word = words[i];
    if (word == "--filter") {
      options.filters.push_back(value());
    } else if (word == "--json") {
      options.json = value();
    } else if (word == "--draw") {
      options.draw = value();
    } else if (word == "--photo") {
      options.photo = value();
    } else if (word == "--library") {
      options.library = value();
    } else if (word == "--against") {
      options.against = value();
    } else if (word == "--beside") {
      options.beside = value();
    } else if (word == "--in-turn") {
      options.inTurn = true;
    } else if (word == "--fail-losses") {
      options.failLosses = true;
    } else if (word == "--size") {
      options.size = sizeFrom(value());
    } else if (word == "--seconds") {
      options.seconds = secondsFrom(value());
    } else if (word == "--sizes") {
      options.sizes = true;
    } else if (word == "--help") {
      options.help = true;
    } else if (word == "--quick") {
      options.quick = true;
      options.size = {320, 240};
      options.seconds = 0.01;
    } else if (!word.empty() && word[0] == '-') {
      throw std::invalid_argument("unknown option " + word);
    } else {
      options.filters.push_back(word);
    }
  }
  return options;
}

}  // namespace bench
