// Tells what moves before a fixed camera: three models watch a sequence of pictures, and a page shows what each of them
// calls foreground beside the background that the mixture has learned. Without pictures of its own it makes a sequence
// from one photograph, where the truth is known, and counts hits and false alarms.
#include <dirent.h>
#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>
#include <exception>
#include <fstream>
#include <stdexcept>
#include <string>

#include "html.h"
#include "scene.h"

namespace {

using scene::Maps;
using scene::Score;
using support::Picture;

const char usage[] =
    "usage: scene [PHOTO | FOLDER] [--out FOLDER] [--check]\n"
    "  PHOTO    a JPEG or PNG file; a sequence with noise, flicker, swaying leaves and a walker is made from it\n"
    "  FOLDER   of pictures of the same size, taken in the order of their names\n"
    "  --out    where to write index.html and its pictures (scene_out)\n"
    "  --check  fail when a model finds less than 9 tenths of the walker, or the mixture marks more than a 50th of "
    "the rest\n";

bool isFolder(const std::string& path) {
  struct stat about;
  return stat(path.c_str(), &about) == 0 && S_ISDIR(about.st_mode);
}

std::vector<std::string> picturesIn(const std::string& folder) {
  std::vector<std::string> names;
  DIR* const listing = opendir(folder.c_str());
  if (listing == nullptr) throw std::runtime_error("cannot read " + folder);
  while (const dirent* entry = readdir(listing))
    if (entry->d_name[0] != '.') names.push_back(folder + "/" + entry->d_name);
  closedir(listing);
  std::sort(names.begin(), names.end());
  return names;
}

// Rows of pictures with captions.
class Page {
 public:
  explicit Page(std::string folder) : folder_(std::move(folder)) {
    if (mkdir(folder_.c_str(), 0777) != 0 && !isFolder(folder_)) throw std::runtime_error("cannot make " + folder_);
  }
  void heading(const std::string& text) {
    body_ += "</div><h2>" + support::escaped(text) + "</h2><div class=\"row\">\n";
  }
  void add(const Picture& picture, const std::string& caption) {
    const std::string file = std::to_string(count_++) + ".png";
    support::writePng(picture, folder_ + "/" + file);
    body_ += "<figure><img src=\"" + file + "\" alt=\"" + support::escaped(caption) + "\"><figcaption>" +
             support::escaped(caption) + "</figcaption></figure>\n";
  }
  void write() const {
    std::ofstream file(folder_ + "/index.html");
    file << "<!doctype html>\n<html lang=\"en\">\n<head><meta charset=\"utf-8\"><title>Foreground and "
            "background</title>\n<style>"
         << support::baseStyle
         << "main { max-width: 1400px; margin: auto; padding: 1rem; } .row { display: grid; grid-template-columns: "
            "repeat(5, 1fr); gap: .6rem; } figure { margin: 0; } img { width: 100%; }</style></head>\n<body><main>\n"
            "<h1>Foreground and background</h1>\n<div>"
         << body_ << "</div></main></body></html>\n";
    if (!file) throw std::runtime_error("cannot write to " + folder_);
  }

 private:
  std::string folder_, body_;
  int count_ = 0;
};

std::string percent(double part) {
  char text[32];
  std::snprintf(text, sizeof text, "%.1f %%", 100 * part);
  return text;
}
std::string told(const char* name, const Score* score) {
  if (score == nullptr) return name;
  return std::string(name) + ": " + percent(score->hits) + " of the walker, " + percent(score->falseAlarms) +
         " of the rest";
}

struct Total {
  Score sum;
  int frames = 0;

  void add(const Score& s) { sum.hits += s.hits, sum.falseAlarms += s.falseAlarms, ++frames; }
  Score mean() const { return {sum.hits / std::max(frames, 1), sum.falseAlarms / std::max(frames, 1)}; }
};

int run(const std::string& input, const std::string& out, bool check) {
  constexpr int made = 60, quiet = 30, mostWide = 480;
  const bool folder = isFolder(input);
  const std::vector<std::string> files = folder ? picturesIn(input) : std::vector<std::string>{input};
  if (files.empty()) throw std::runtime_error("no pictures in " + input);
  const auto photograph = support::openPhotograph(files[0]);
  support::requireRoom(photograph, 32, 16);
  std::printf("%s\n", photograph.source.c_str());
  Picture first = photograph.picture;
  if (!folder && first.width > mostWide)
    first = support::scaled(first, mostWide, first.height * mostWide / first.width);
  const scene::Sequence sequence(first, made, quiet);
  const int frames = folder ? static_cast<int>(files.size()) : made;
  const auto frame = [&](int t) {
    return folder ? support::openPhotograph(files[static_cast<size_t>(t)]).picture : sequence.frame(t);
  };

  const Picture start = frame(0);
  scene::Watcher watcher(start, folder ? frames / 4 : quiet);
  Page page(out);
  Total histogram, gaussian, mixture;
  double milliseconds = 0;
  for (int t = 1; t < frames; ++t) {
    const Picture picture = frame(t);
    if (picture.width != start.width || picture.height != start.height)
      throw std::runtime_error(files[static_cast<size_t>(t)] + " has another size than the first picture");
    const Maps maps = watcher.look(picture);
    milliseconds += watcher.milliseconds();
    const bool known = !folder && t >= quiet;
    Score scores[3];
    if (known) {
      const Picture truth = sequence.walker(t);
      histogram.add(scores[0] = scene::score(maps.histogram, truth));
      gaussian.add(scores[1] = scene::score(maps.gaussian, truth));
      mixture.add(scores[2] = scene::score(maps.mixture, truth));
    }
    if (t % std::max(1, frames / 6) != 0 && t != frames - 1) continue;
    page.heading("Frame " + std::to_string(t));
    page.add(picture, "the frame");
    page.add(maps.histogram, told("histogram", known ? scores : nullptr));
    page.add(maps.gaussian, told("Gaussian", known ? scores + 1 : nullptr));
    page.add(maps.mixture, told("mixture", known ? scores + 2 : nullptr));
    page.add(watcher.background(), "the background that the mixture has learned");
  }
  page.write();
  std::printf("%d frames of %d x %d, %.2f ms a frame for the three models\n", frames, start.width, start.height,
              milliseconds / std::max(1, frames - 1));
  if (!folder) {
    std::printf("%s\n%s\n%s\n", told("histogram", std::array<Score, 1>{histogram.mean()}.data()).c_str(),
                told("Gaussian", std::array<Score, 1>{gaussian.mean()}.data()).c_str(),
                told("mixture", std::array<Score, 1>{mixture.mean()}.data()).c_str());
    const double least = std::min({histogram.mean().hits, gaussian.mean().hits, mixture.mean().hits});
    if (check && (least < 0.9 || mixture.mean().falseAlarms > 0.02))
      throw std::runtime_error("a model did not see enough");
  }
  std::printf("wrote %s/index.html\n", out.c_str());
  return 0;
}

}  // namespace

int main(int count, char** words) {
  std::string input, out = "scene_out";
  bool check = false;
  for (int i = 1; i < count; ++i) {
    if (std::strcmp(words[i], "--out") == 0 && i + 1 < count) {
      out = words[++i];
    } else if (std::strcmp(words[i], "--help") == 0) {
      std::fputs(usage, stdout);
      return 0;
    } else if (std::strcmp(words[i], "--check") == 0) {
      check = true;
    } else if (words[i][0] == '-' || !input.empty()) {
      std::fputs(usage, stderr);
      return 2;
    } else {
      input = words[i];
    }
  }
  try {
    return run(input, out, check);
  } catch (const std::exception& e) {
    std::fprintf(stderr, "scene: %s\n", e.what());
    return 1;
  }
}
