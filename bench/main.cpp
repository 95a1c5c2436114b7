// Times the cases of all families against memcpy and prints one table.
//
// Every case first has to give the reference's answer. Then one run of the case and one memcpy of width x height bytes
// take turns until the time is up; the best of each counts.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <fstream>
#include <limits>
#include <stdexcept>

#include "bench.h"
#include "picture.h"

namespace bench {
namespace {

struct Entry {
  int order;
  std::string title;
  std::vector<Case> cases;
};
std::vector<Entry>& registry() {
  static std::vector<Entry> entries;
  return entries;
}

constexpr ZebiSize fullSize{1920, 1080};  // the targets hold here

// The columns of the table by size. Per-pixel cost may grow by half from the second to the last where memory is not the
// limit.
constexpr ZebiSize columnSizes[] = {{64, 64}, {640, 480}, fullSize, {3840, 2160}};
constexpr int columnCount = 4;
constexpr double allowedGrowth = 1.5;

struct Options {
  std::vector<std::string> filters;
  std::string json;
  std::string photo;
  ZebiSize size = fullSize;
  double seconds = 0.3;
  bool sizes = false;
};

const char usage[] =
    "usage: zebcv_bench [options] [TEXT...]\n"
    "  TEXT, --filter TEXT  only the cases whose name contains TEXT (any of several)\n"
    "  --json FILE          also write the results as JSON\n"
    "  --size WxH           region in pixels (1920x1080; the targets hold for that size only)\n"
    "  --seconds S          time for each case (0.3)\n"
    "  --sizes              also the cost per pixel from 64x64 to 3840x2160 of the cases that have a target\n"
    "  --photo FILE         JPEG or PNG to scale to the region\n"
    "  --quick              smoke run: 320x240, 0.01 s each\n";

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
    } else if (word == "--photo") {
      options.photo = value();
    } else if (word == "--size") {
      char end = 0;
      const std::string text = value();
      if (std::sscanf(text.c_str(), "%dx%d%c", &options.size.width, &options.size.height, &end) != 2 ||
          options.size.width < 1 || options.size.height < 1 || options.size.width > 32768 ||
          options.size.height > 32768 || 1LL * options.size.width * options.size.height > (1 << 26))
        throw std::invalid_argument("--size wants WIDTHxHEIGHT of at most 64 million pixels, got " + text);
    } else if (word == "--seconds") {
      const std::string text = value();
      char* end = nullptr;
      options.seconds = std::strtod(text.c_str(), &end);
      if (end == text.c_str() || *end != 0 || !(options.seconds > 0))
        throw std::invalid_argument("--seconds wants a positive number, got " + text);
    } else if (word == "--sizes") {
      options.sizes = true;
    } else if (word == "--quick") {
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

bool wanted(const std::string& name, const std::vector<std::string>& filters) {
  return filters.empty() || std::any_of(filters.begin(), filters.end(),
                                        [&](const std::string& text) { return name.find(text) != std::string::npos; });
}

struct Result {
  std::string family;
  std::string name;
  Target target;
  double nanoseconds = 0;  // per pixel or per call
  double ratio = 0;        // to memcpy; 0 where the unit is the call
  double bytesPerPixel = 0;
  std::string verdict;
};

using Clock = std::chrono::steady_clock;

// Nanoseconds of one execution, averaged over repeats in a row.
template <class F>
double timed(int repeats, F&& f) {
  const auto start = Clock::now();
  for (int i = 0; i < repeats; ++i) f();
  return std::chrono::duration<double, std::nano>(Clock::now() - start).count() / repeats;
}

// Enough executions in a row that the clock's own cost (some 30 ns) stays below one part in a thousand.
template <class F>
int repeatsFor(F&& f) {
  const double once = std::max(1.0, std::min(timed(1, f), timed(1, f)));
  return static_cast<int>(std::clamp(30e3 / once, 1.0, 1e6));
}

class Memcpy {
 public:
  explicit Memcpy(int bytes) : source_(bytes, 1), destination_(bytes, 2) {
    repeats_ = repeatsFor([this] { copy(); });
  }
  double nanoseconds() {
    return timed(repeats_, [this] { copy(); });
  }

 private:
  void copy() {
    std::memcpy(destination_.data(), source_.data(), source_.size());
    asm volatile("" : : "r"(destination_.data()) : "memory");  // the copy is wanted, though nobody reads it
  }
  Pixels<Zeb8u> source_, destination_;
  int repeats_;
};

// Best times of one run of a case and of one memcpy, the two in turn until the time is up.
struct Times {
  double run, copy;
};
Times measure(const Work& work, double seconds, Memcpy& memcpyRun) {
  const auto run = [&] { work.run(); };
  const int repeats = repeatsFor(run);
  Times best{std::numeric_limits<double>::infinity(), std::numeric_limits<double>::infinity()};
  const auto end = Clock::now() + std::chrono::duration<double>(seconds);
  for (int round = 0; round < 5 || Clock::now() < end; ++round) {
    best.run = std::min(best.run, timed(repeats, run));
    best.copy = std::min(best.copy, memcpyRun.nanoseconds());
  }
  return best;
}

void judge(const Times& times, const Work& work, const Scene& scene, Result& result) {
  const bool perCall = result.target.unit == Target::nanosecondsPerCall;
  result.nanoseconds = times.run / (perCall ? work.callsPerRun : scene.count());
  result.ratio = perCall ? 0 : times.run / times.copy;
  const double reached = perCall ? result.nanoseconds : result.ratio;
  const bool judged = result.target.limit && scene.size.width == fullSize.width && scene.size.height == fullSize.height;
  result.verdict = !judged ? "-" : reached <= *result.target.limit ? "ok" : "over";
}

std::string number(double value, int decimals) {
  char text[40];
  std::snprintf(text, sizeof text, "%.*f", decimals, value);
  return text;
}

void printRow(const Result& r, int nameWidth) {
  const bool perCall = r.target.unit == Target::nanosecondsPerCall;
  const std::string ratio = perCall ? "-" : number(r.ratio, 2);
  const std::string limit = !r.target.limit ? "-"
                            : perCall       ? number(*r.target.limit, 0) + " ns"
                                            : number(*r.target.limit, 1);
  std::printf("%-*s %9s %-8s %8s %8s  %-5s %8s\n", nameWidth, r.name.c_str(),
              number(r.nanoseconds, perCall ? 1 : 4).c_str(), perCall ? "ns/call" : "ns/pixel", ratio.c_str(),
              limit.c_str(), r.verdict.c_str(), r.bytesPerPixel > 0 ? number(r.bytesPerPixel, 1).c_str() : "-");
  std::fflush(stdout);
}

std::string sizeName(ZebiSize size) {
  return std::to_string(size.width) + "x" + std::to_string(size.height);
}

std::string quoted(const std::string& text) {
  std::string out = "\"";
  for (char c : text) {
    if (c == '"' || c == '\\') out += '\\';
    out += static_cast<unsigned char>(c) < 0x20 ? ' ' : c;
  }
  return out + '"';
}

// Cost per pixel at each of the sizes.
struct SizeRow {
  std::string name;
  double nanoseconds[columnCount];
  bool memoryBound;  // the bytes of the largest size, moved as fast as memcpy moves them, take half of its time

  double growth() const { return nanoseconds[columnCount - 1] / nanoseconds[1]; }
  std::string verdict() const { return growth() <= allowedGrowth ? "ok" : memoryBound ? "memory" : "grows"; }
};

void writeJson(const std::string& path, const Options& options, const std::string& source,
               const std::vector<Result>& results, const std::vector<SizeRow>& rows) {
  std::ofstream file(path);
  file << "{\n  \"width\": " << options.size.width << ",\n  \"height\": " << options.size.height
       << ",\n  \"secondsPerCase\": " << options.seconds << ",\n  \"photograph\": " << quoted(source)
       << ",\n  \"cases\": [";
  const char* separator = "\n";
  for (const Result& r : results) {
    const bool perCall = r.target.unit == Target::nanosecondsPerCall, right = r.verdict != "WRONG";
    file << separator << "    {\"family\": " << quoted(r.family) << ", \"case\": " << quoted(r.name)
         << ", \"unit\": " << (perCall ? "\"ns/call\"" : "\"ns/pixel\"")
         << ", \"time\": " << (right ? number(r.nanoseconds, 5) : "null")
         << ", \"ratioToMemcpy\": " << (right && !perCall ? number(r.ratio, 4) : "null")
         << ", \"target\": " << (r.target.limit ? number(*r.target.limit, 2) : "null")
         << ", \"verdict\": " << quoted(r.verdict) << ", \"bytesPerPixel\": " << number(r.bytesPerPixel, 2) << "}";
    separator = ",\n";
  }
  file << "\n  ],\n  \"sizes\": [";
  separator = "\n";
  for (const SizeRow& r : rows) {
    file << separator << "    {\"case\": " << quoted(r.name) << ", \"nsPerPixel\": {";
    for (int i = 0; i < columnCount; ++i)
      file << (i ? ", " : "") << quoted(sizeName(columnSizes[i])) << ": " << number(r.nanoseconds[i], 5);
    file << "}, \"growth\": " << number(r.growth(), 3) << ", \"verdict\": " << quoted(r.verdict()) << "}";
    separator = ",\n";
  }
  file << "\n  ]\n}\n";
  file.close();
  if (!file) throw std::runtime_error("cannot write " + path);
}

Scene sceneOf(const support::Picture& photo, ZebiSize size) {
  const support::Picture level = support::scaled(photo, size.width, size.height);
  return {size, Pixels<Zeb8u>(level.pixels.begin(), level.pixels.end())};
}

// The cases as they stand in the table, with their families' names.
struct Listed {
  std::string family;
  Case row;
};
std::vector<Listed> listed(const std::vector<std::string>& filters) {
  std::vector<Entry> families = registry();
  std::stable_sort(families.begin(), families.end(), [](const Entry& a, const Entry& b) { return a.order < b.order; });
  std::vector<Listed> out;
  for (const Entry& family : families)
    for (const Case& c : family.cases)
      if (wanted(c.name, filters)) out.push_back({family.title, c});
  return out;
}

std::vector<Result> mainTable(const std::vector<Listed>& cases, const Scene& scene, double seconds, int nameWidth) {
  Memcpy memcpyRun(scene.count());
  std::printf("%-*s %9s %-8s %8s %8s  %-5s %8s\n", nameWidth, "case", "time", "unit", "x memcpy", "target", "",
              "bytes/px");
  std::vector<Result> results;
  for (const Listed& c : cases) {
    const Work work = c.row.prepare(scene);
    Result result{c.family, c.row.name, c.row.target, 0, 0, work.bytesPerPixel, ""};
    if (const auto fault = work.check()) {
      result.verdict = "WRONG";
      std::printf("%-*s WRONG: %s\n", nameWidth, c.row.name.c_str(), fault->c_str());
    } else {
      judge(measure(work, seconds, memcpyRun), work, scene, result);
      printRow(result, nameWidth);
    }
    results.push_back(result);
  }
  return results;
}

std::vector<SizeRow> sizeTable(const std::vector<Listed>& cases, const support::Picture& photo, double seconds,
                               int nameWidth) {
  std::vector<SizeRow> rows;
  for (const Listed& c : cases)
    if (c.row.target.limit && c.row.target.unit == Target::ratio) rows.push_back({c.row.name, {}, false});
  for (int i = 0; i < columnCount; ++i) {
    const Scene scene = sceneOf(photo, columnSizes[i]);
    Memcpy memcpyRun(scene.count());
    auto row = rows.begin();
    for (const Listed& c : cases) {
      if (!c.row.target.limit || c.row.target.unit != Target::ratio) continue;
      const Work work = c.row.prepare(scene);
      const Times times = measure(work, seconds / columnCount, memcpyRun);
      row->nanoseconds[i] = times.run / scene.count();
      if (i == columnCount - 1) row->memoryBound = work.bytesPerPixel / 2 * times.copy >= 0.5 * times.run;
      ++row;
    }
  }
  std::printf("\n%-*s", nameWidth, "nanoseconds per pixel");
  for (const ZebiSize& size : columnSizes) std::printf(" %10s", sizeName(size).c_str());
  std::printf(" %10s\n", "growth");
  for (const SizeRow& r : rows) {
    std::printf("%-*s", nameWidth, r.name.c_str());
    for (double ns : r.nanoseconds) std::printf(" %10.4f", ns);
    std::printf(" %10.2f  %s\n", r.growth(), r.verdict().c_str());
  }
  return rows;
}

int runAll(const Options& options) {
  const std::vector<Listed> cases = listed(options.filters);
  if (cases.empty()) {
    std::fprintf(stderr, "no case matches\n");
    return 2;
  }
  size_t nameWidth = 0;
  for (const Listed& c : cases) nameWidth = std::max(nameWidth, c.row.name.size());
  const support::Photograph photo = support::openPhotograph(options.photo);
  const support::Picture level = support::gray(photo.picture);

  std::printf("%s, %s\n", sizeName(options.size).c_str(), photo.source.c_str());
  const auto results = mainTable(cases, sceneOf(level, options.size), options.seconds, static_cast<int>(nameWidth));
  std::vector<SizeRow> rows;
  if (options.sizes) rows = sizeTable(cases, level, options.seconds, static_cast<int>(nameWidth));
  if (!options.json.empty()) writeJson(options.json, options, photo.source, results, rows);
  return std::any_of(results.begin(), results.end(), [](const Result& r) { return r.verdict == "WRONG"; });
}

}  // namespace

Family::Family(int order, std::string title, std::vector<Case> cases) {
  registry().push_back({order, std::move(title), std::move(cases)});
}

}  // namespace bench

int main(int count, char** words) {
  bench::Options options;
  try {
    options = bench::parse(count, words);
  } catch (const std::exception& e) {
    std::fprintf(stderr, "%s\n%s", e.what(), bench::usage);
    return 2;
  }
  try {
    return bench::runAll(options);
  } catch (const std::exception& e) {
    std::fprintf(stderr, "%s\n", e.what());
    return 2;
  }
}
