// What is measured, printed and written as JSON.
#pragma once

#include <fstream>
#include <string>
#include <vector>

#include "bench.h"
#include "measure.h"
#include "options.h"
#include "picture.h"

namespace bench {

// Where a case is measured.
struct Place {
  std::string name;
  ZebiSize size;
  int stride;
};
std::vector<Place> places(const Options& options);
std::string sizeName(ZebiSize size);

constexpr ZebiSize fullSize{1920, 1080};  // the targets hold here
inline bool same(ZebiSize a, ZebiSize b) {
  return a.width == b.width && a.height == b.height;
}

// The photograph at one place.
Scene sceneAt(const support::Picture& photo, const Place& place);
// For a case that brings its own content: at its own size or, in a smoke run, within 64 x 64.
Scene ownScene(const Case& row, const Options& options);

// Everything that a run works on.
struct Bench {
  Options options;
  std::vector<Listed> cases;
  support::Picture photo;
  std::string source;
  Library library;
  int nameWidth = 0;
};

// What a case takes at a place.
struct Result {
  double nanoseconds = 0;  // per pixel or per call
  double ratio = 0;        // to memcpy; 0 where the unit is the call
  double bare = 0;         // to the bare loop; 0 where there is none
  double bareNanoseconds = 0;
  std::string verdict = "-";
  std::string fault;
};
Result resultOf(const Case& row, const Scene& scene, double seconds);

// The times of all cases, printed as they come, and the growth table. False when a result is wrong.
bool runTable(Bench& bench);
// The ratios to another build. False when a result is wrong or, if the options ask, a row is marked.
bool runAgainst(Bench& bench);
// The times of all cases beside those of the other width's program. False when a result is wrong.
bool runWidths(Bench& bench);
// Prints the bars of a file of times, an SVG picture. Throws std::runtime_error where it holds none.
void drawTimes(const std::string& path);
// What that program does: a cell's time for every line that it is sent.
void answerInTurn(Bench& bench);

std::string number(double value, int decimals);
std::string quoted(const std::string& text);

// A file of one object; its members are added one by one. Writes nothing if the path is empty.
class Json {
 public:
  explicit Json(const std::string& path);
  void member(const std::string& name, const std::string& value);
  void list(const std::string& name, const std::vector<std::string>& values);
  // Throws std::runtime_error when the file cannot be written.
  void close();

 private:
  std::string path_;
  std::ofstream file_;
  const char* separator_ = "{\n";
};

}  // namespace bench
