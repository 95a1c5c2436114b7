// The tour: takes a photograph through the library, one section a family, and writes pictures and a page to look at.
#include <cstdarg>
#include <cstdio>
#include <exception>
#include <filesystem>

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
    "usage: tour [PHOTO] [--out DIR]\n  PHOTO      a JPEG or PNG file\n  --out DIR  where to write (out)\n";

// Keeps the shape; the longer side comes into 320..1280.
Picture fitted(const Picture& picture) {
  const int longer = std::max(picture.width, picture.height), wanted = std::clamp(longer, 320, 1280);
  const auto side = [=](int n) { return std::max(1, static_cast<int>(1.0 * n * wanted / longer + 0.5)); };
  return support::scaled(picture, side(picture.width), side(picture.height));
}

void run(const std::string& photoPath, const std::filesystem::path& out) {
  const support::Photograph photo = support::openPhotograph(photoPath);
  Scene scene;
  scene.color = fitted(photo.picture);
  scene.gray = support::gray(scene.color);
  std::printf("%s, %d x %d\n", photo.source.c_str(), scene.color.width, scene.color.height);

  std::filesystem::create_directories(out);
  support::writePng(scene.color, (out / "photograph.png").string());
  Page page{photo.source, {"photograph.png", scene.color, "", std::nullopt}, {}};

  std::vector<Entry> sections = registry();
  std::stable_sort(sections.begin(), sections.end(), [](const Entry& a, const Entry& b) { return a.order < b.order; });
  for (const Entry& entry : sections) {
    Gallery gallery;
    entry.show(scene, gallery);
    const std::string id = support::slug(entry.title);
    std::printf("\n%s\n", entry.title.c_str());
    int k = 0;
    for (Figure& figure : gallery.figures()) {
      figure.file = format("%s-%d.png", id.c_str(), ++k);
      support::writePng(figure.picture, (out / figure.file).string());
      std::printf("  %8s  %s: %s\n", figure.milliseconds ? format("%.3f ms", *figure.milliseconds).c_str() : "",
                  figure.file.c_str(), figure.caption.c_str());
    }
    page.sections.push_back({id, entry.title, gallery.paragraph(), std::move(gallery.figures())});
  }
  writePage(page, (out / "index.html").string());
  std::printf("\nLook at %s\n", (out / "index.html").c_str());
}

}  // namespace

Section::Section(int order, std::string title, void (*show)(const Scene&, Gallery&)) {
  registry().push_back({order, std::move(title), show});
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
  } catch (const std::exception& e) {
    std::fprintf(stderr, "tour: %s\n", e.what());
    return 1;
  }
}
