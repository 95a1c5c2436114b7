// The builds of both widths side by side. A program holds one of them only: the other one's program runs as a child,
// which measures a cell of the table whenever it is asked to, so that the two take turns.
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <stdexcept>

#include "report.h"

namespace bench {
namespace {

constexpr double slowerAt = 0.95;

// The program of the other width.
class Other {
 public:
  Other(const std::string& program, const std::vector<std::string>& words) {
    int ends[2];
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0) throw std::runtime_error("no sockets");
    child_ = fork();
    if (child_ == 0) {
      dup2(ends[1], STDIN_FILENO);
      dup2(ends[1], STDOUT_FILENO);
      std::vector<char*> arguments{const_cast<char*>(program.c_str())};
      for (const std::string& word : words) arguments.push_back(const_cast<char*>(word.c_str()));
      arguments.push_back(nullptr);
      execv(program.c_str(), arguments.data());
      std::perror(program.c_str());
      _exit(127);
    }
    close(ends[1]);
    stream_ = fdopen(ends[0], "r");
    if (child_ < 0 || !stream_) throw std::runtime_error("cannot start " + program);
  }
  ~Other() {
    std::fclose(stream_);
    waitpid(child_, nullptr, 0);
  }
  Other(const Other&) = delete;
  Other& operator=(const Other&) = delete;

  // The next cell's time, 0 where its result is wrong.
  double next(const std::string& name) const {
    char answered[200];
    double time = 0;
    if (write(fileno(stream_), "\n", 1) != 1 || std::fscanf(stream_, "%lf %199[^\n]", &time, answered) != 2 ||
        name != answered)
      throw std::runtime_error("the other program did not answer for " + name);
    return time;
  }

 private:
  pid_t child_;
  std::FILE* stream_ = nullptr;
};

// Calls visit(case, place, scene) for every cell, the same ones in the same order in both programs.
template <class Visit>
void forEachCell(const Bench& bench, Visit visit) {
  const std::vector<Place> where = places(bench.options);
  std::vector<Scene> scenes;
  for (const Place& place : where) scenes.push_back(sceneAt(bench.photo, place));
  for (const Listed& c : bench.cases) {
    if (c.row.own) {
      const Scene own = ownScene(c.row, bench.options);
      visit(c, sizeName(own.size), own);
    } else {
      for (size_t i = 0; i < where.size(); ++i) visit(c, where[i].name, scenes[i]);
    }
  }
}

std::vector<std::string> wordsFor(const Options& options) {
  std::vector<std::string> words{"--in-turn", "--seconds", number(options.seconds, 4)};
  if (options.size) words.insert(words.end(), {"--size", sizeName(*options.size)});
  if (options.quick) words.push_back("--quick");
  if (!options.photo.empty()) words.insert(words.end(), {"--photo", options.photo});
  for (const std::string& text : options.filters) words.insert(words.end(), {"--filter", text});
  return words;
}

}  // namespace

void answerInTurn(Bench& bench) {
  bench.library.use();
  forEachCell(bench, [&](const Listed& c, const std::string&, const Scene& scene) {
    if (std::getchar() != '\n') return;
    const Result r = resultOf(c.row, scene, bench.options.seconds);
    std::printf("%.6f %s\n", r.fault.empty() ? r.nanoseconds : 0, c.row.name.c_str());
    std::fflush(stdout);
  });
}

bool runWidths(Bench& bench) {
  bench.library.use();
  const Other other(bench.options.beside, wordsFor(bench.options));
  constexpr int bits = 8 * static_cast<int>(sizeof(void*));
  constexpr int otherBits = 96 - bits;
  const std::string ownTime = "time" + std::to_string(bits), otherTime = "time" + std::to_string(otherBits);
  std::printf("%s\n%-*s", bench.source.c_str(), bench.nameWidth,
              "nanoseconds per pixel, of \"call overhead\" per call");
  for (const Place& place : places(bench.options)) std::printf(" | %-26s", place.name.c_str());
  std::printf("\n%-*s", bench.nameWidth,
              ("ratio: so many times as fast are " + std::to_string(bits) + " bits").c_str());
  for (size_t i = 0; i < places(bench.options).size(); ++i)
    std::printf(" | %4d bits %4d bits %5s ", bits, otherBits, "ratio");
  std::printf("\n");
  bool right = true;
  std::string row;
  std::vector<std::string> json, slower;
  double logarithms = 0;
  forEachCell(bench, [&](const Listed& c, const std::string& place, const Scene& scene) {
    if (row != c.row.name) std::printf("%s%-*s", row.empty() ? "" : "\n", bench.nameWidth, c.row.name.c_str());
    row = c.row.name;
    const Result own = resultOf(c.row, scene, bench.options.seconds);
    const double theirs = other.next(c.row.name);
    if (!own.fault.empty() || theirs <= 0) {
      std::printf(" | %s: WRONG %s", place.c_str(), own.fault.c_str());
      right = false;
      return;
    }
    const double ratio = theirs / own.nanoseconds;
    std::printf(" | %9.4f %9.4f %5.2f%s", own.nanoseconds, theirs, ratio, ratio < slowerAt ? "!" : " ");
    std::fflush(stdout);
    logarithms += std::log(ratio);
    if (ratio < slowerAt) slower.push_back(quoted(c.row.name + ", " + place));
    const bool perCall = c.row.target.unit == Target::nanosecondsPerCall;
    json.push_back("{\"family\": " + quoted(c.family) + ", \"case\": " + quoted(c.row.name) +
                   ", \"place\": " + quoted(place) + ", \"unit\": " + (perCall ? "\"ns/call\"" : "\"ns/pixel\"") +
                   ", " + quoted(ownTime) + ": " + number(own.nanoseconds, 5) + ", " + quoted(otherTime) + ": " +
                   number(theirs, 5) + ", \"ratio\": " + number(ratio, 3) + "}");
  });
  const double mean = json.empty() ? 0 : std::exp(logarithms / static_cast<double>(json.size()));
  std::printf("\ngeometric mean of the ratios %.3f over %zu times; more than 5 %% slower than in %d bits (!): %zu\n",
              mean, json.size(), otherBits, slower.size());
  Json file(bench.options.json);
  file.member("library", quoted(bench.library.path()));
  file.member("bits", number(bits, 0));
  file.member("other", quoted(bench.options.beside));
  file.member("secondsPerCase", number(bench.options.seconds, 3));
  file.member("photograph", quoted(bench.source));
  file.member("geometricMean", number(mean, 4));
  file.list("cases", json);
  file.list("slower", slower);
  file.close();
  return right;
}

}  // namespace bench
