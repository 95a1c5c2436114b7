// The tour: takes a photograph through the library, one section a family, and writes pictures and a page to look at.
#include <cstdarg>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <stdexcept>

#include "hero.h"
#include "html.h"
#include "page.h"
#include "tour.h"

namespace tour {
namespace {

struct Entry {
  int order;
  std::string title;
  void (*show)(const Scene&, Gallery&);
};
std::vector<Entry>& registry() {
  static std::vector<Entry> entries;
  return entries;
}

const char usage[] =
    "usage: tour [PHOTO] [--out DIR]\n"
    "  PHOTO      a JPEG or PNG file of at least 64 x 64 pixels, no side more than 4 times the other. It is scaled so\n"
    "             that its longer side has 320 to 1280 pixels and the shorter one at least 240\n"
    "  --out DIR  where to write pictures and index.html (out)\n";

constexpr int leastSide = 64, mostTimes = 4;

// Keeps the shape; the longer side comes into 320..1280, the shorter one does not stay below 240.
Picture fitted(const Picture& picture) {
  const int longer = std::max(picture.width, picture.height), shorter = std::min(picture.width, picture.height);
  const double scale = std::max(1.0 * std::clamp(longer, 320, 1280) / longer, 240.0 / shorter);
  const auto side = [=](int n) { return static_cast<int>(n * scale + 0.5); };
  return support::scaled(picture, side(picture.width), side(picture.height));
}

namespace fs = std::filesystem;

// A folder beside the one that was asked for. What is in it takes its place when all has been written, or goes.
class Draft {
 public:
  explicit Draft(const fs::path& target) : target_(target), folder_(target.string() + ".draft") {
    fs::remove_all(folder_);
    fs::create_directories(folder_);
  }
  ~Draft() {
    std::error_code ignored;
    fs::remove_all(folder_, ignored);
  }
  Draft(const Draft&) = delete;
  Draft& operator=(const Draft&) = delete;

  std::string file(const std::string& name) const { return (folder_ / name).string(); }

  // The page comes last: it never shows what is not there yet.
  void publish() {
    fs::create_directories(target_);
    const fs::path page = "index.html";
    for (const auto& entry : fs::directory_iterator(folder_))
      if (entry.path().filename() != page) fs::rename(entry.path(), target_ / entry.path().filename());
    fs::rename(folder_ / page, target_ / page);
  }

 private:
  fs::path target_, folder_;
};

void run(const std::string& photoPath, fs::path out) {
  if (!out.has_filename()) out = out.parent_path();
  const support::Photograph photo = support::openPhotograph(photoPath);
  support::requireRoom(photo, leastSide, mostTimes);
  Scene scene;
  scene.color = fitted(photo.picture);
  scene.gray = support::gray(scene.color);
  std::printf("%s, %d x %d", photo.source.c_str(), photo.picture.width, photo.picture.height);
  if (scene.color.width != photo.picture.width)
    std::printf(", scaled to %d x %d", scene.color.width, scene.color.height);
  std::printf("\n");

  Draft draft(out);
  support::writePng(scene.color, draft.file("photograph.png"));
  Page page{photo.source,
            {"photograph.png", scene.color, "", std::nullopt},
            {"hero.png", hero(scene), "", std::nullopt},
            photo.picture.size(),
            {}};
  support::writePng(page.hero.picture, draft.file("hero.png"));

  std::vector<Entry> sections = registry();
  std::stable_sort(sections.begin(), sections.end(), [](const Entry& a, const Entry& b) { return a.order < b.order; });
  for (const Entry& entry : sections) {
    std::printf("\n%s\n", entry.title.c_str());
    std::fflush(stdout);
    Gallery gallery;
    entry.show(scene, gallery);
    const std::string id = support::slug(entry.title);
    int k = 0;
    for (Figure& figure : gallery.figures()) {
      figure.file = format("%s-%d.png", id.c_str(), ++k);
      support::writePng(figure.picture, draft.file(figure.file));
      std::printf("  %8s  %s: %s\n", figure.milliseconds ? format("%.3f ms", *figure.milliseconds).c_str() : "",
                  figure.file.c_str(), figure.caption.c_str());
    }
    page.sections.push_back({id, entry.title, gallery.paragraph(), std::move(gallery.figures())});
  }
  writePage(page, draft.file("index.html"));
  draft.publish();
  std::printf("\nLook at %s\n", (out / "index.html").c_str());
}

}  // namespace

Section::Section(int order, std::string title, void (*show)(const Scene&, Gallery&)) {
  registry().push_back({order, std::move(title), show});
}

void Gallery::step(const std::string& what) {
  std::printf("  %s ...\n", what.c_str());
  std::fflush(stdout);
}

std::string format(const char* pattern, ...) {
  va_list list;
  va_start(list, pattern);
  va_list again;
  va_copy(again, list);
  std::string text(std::vsnprintf(nullptr, 0, pattern, list), '\0');
  va_end(list);
  std::vsnprintf(text.data(), text.size() + 1, pattern, again);
  va_end(again);
  return text;
}

}  // namespace tour

int main(int count, char** words) {
  std::string photo, out = "out";
  for (int i = 1; i < count; ++i) {
    const std::string word = words[i];
    if (word == "--help" || word == "-h") {
      std::fputs(tour::usage, stdout);
      return 0;
    }
    if (word == "--out" && i + 1 < count) {
      out = words[++i];
    } else if (!word.empty() && word[0] != '-' && photo.empty()) {
      photo = word;
    } else {
      std::fputs(tour::usage, stderr);
      return 2;
    }
  }
  try {
    tour::run(photo, out);
  } catch (const std::filesystem::filesystem_error& e) {
    std::fprintf(stderr, "tour: cannot write %s: %s\n", out.c_str(), e.code().message().c_str());
    return 1;
  } catch (const std::exception& e) {
    std::fprintf(stderr, "tour: %s\n", e.what());
    return 1;
  }
}
