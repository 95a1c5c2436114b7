#include "page.h"

#include <algorithm>
#include <fstream>
#include <stdexcept>

#include "html.h"

namespace tour {
namespace {

using support::escaped;

const char style[] = R"(
main, header { max-width: 1180px; margin: auto; padding: 0 clamp(1rem, 4vw, 2.5rem); }
header { padding-top: 2.5rem; }
.hero { margin-bottom: 1.6rem; }
.start { display: grid; grid-template-columns: minmax(0, 1fr) auto; gap: 2rem; align-items: start; }
.start > a { width: clamp(110px, 18vw, 200px); }
header p, .about { color: var(--soft); margin: 0 0 1rem; max-width: 46em; }
nav a { display: inline-block; margin: 0 1.1rem .3rem 0; }
section { border-top: 1px solid var(--line); margin-top: 2.5rem; padding-top: 2rem; }
.figures { display: grid; grid-template-columns: repeat(var(--columns), minmax(0, 1fr)); gap: 1.2rem; }
@media (max-width: 900px) {
  .figures { grid-template-columns: 1fr 1fr; gap: .7rem; }
  .figures figure:last-child:nth-child(odd) { grid-column: 1 / -1; } }
figure { margin: 0; background: var(--card); border: 1px solid var(--line); border-radius: 10px; overflow: hidden; }
img { border-radius: 8px; }
figure img { border-radius: 0; }
figcaption { padding: .7rem .9rem .9rem; font-size: .9rem; line-height: 1.4; }
.time { float: right; margin-left: .8rem; color: var(--accent); font-weight: 600; font-variant-numeric: tabular-nums; }
footer { color: var(--soft); font-size: .85rem; padding: 2.5rem 0; }
)";

std::string image(const Figure& figure, const std::string& alternative) {
  return format("<a href=\"%s\"><img src=\"%s\" width=\"%d\" height=\"%d\" alt=\"%s\"></a>", figure.file.c_str(),
                figure.file.c_str(), figure.picture.width, figure.picture.height, escaped(alternative).c_str());
}

// So many that no picture stands alone in the last row.
int columnsFor(size_t figures) {
  for (size_t columns : {4u, 3u, 5u})
    if (figures % columns != 1) return static_cast<int>(std::min(columns, figures));
  return 4;
}

std::string milliseconds(double value) {
  return format(value < 0.1 ? "%.3f ms" : "%.2f ms", value);
}

}  // namespace

void writePage(const Page& page, const std::string& path) {
  const ZebLibraryVersion* version = zebcvGetLibVersion();
  std::ofstream file(path);
  file << "<!doctype html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
       << "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n<title>zebCV tour</title>\n<style>"
       << support::baseStyle << style << "</style>\n</head>\n<body>\n<header>\n<h1>zebCV on a photograph</h1>\n"
       << "<div class=\"hero\">" << image(page.hero, "The photograph as six families of functions see it") << "</div>\n"
       << "<div class=\"start\"><div>\n"
       << format(
              "<p>The pictures below were made with the library's functions, nearly all of them from one photograph of "
              "%d &times; %d pixels",
              page.original.width, page.original.height)
       << (page.original.width == page.photograph.picture.width
               ? std::string(".")
               : format(", scaled to %d &times; %d.", page.photograph.picture.width, page.photograph.picture.height))
       << " Above, from left to right and over again: the photograph, opened, in segments, the direction of its "
          "gradients, "
          "the distance to its edges, the edges. The times are those of the library calls alone, on one "
          "thread.</p>\n<nav>";
  for (const PageSection& section : page.sections)
    file << "<a href=\"#" << section.id << "\">" << escaped(section.title) << "</a>";
  file << "</nav>\n</div>\n" << image(page.photograph, "The photograph") << "\n</div>\n</header>\n<main>\n";
  for (const PageSection& section : page.sections) {
    file << "<section id=\"" << section.id << "\">\n<h2>" << escaped(section.title) << "</h2>\n<p class=\"about\">"
         << escaped(section.paragraph)
         << "</p>\n<div class=\"figures\" style=\"--columns: " << columnsFor(section.figures.size()) << "\">\n";
    for (const Figure& figure : section.figures) {
      file << "<figure>" << image(figure, figure.caption) << "<figcaption>";
      if (figure.milliseconds) file << "<span class=\"time\">" << milliseconds(*figure.milliseconds) << "</span>";
      file << escaped(figure.caption) << "</figcaption></figure>\n";
    }
    file << "</div>\n</section>\n";
  }
  file << "<footer>"
       << escaped(format("%s %s, %s. Photograph: %s", version->Name, version->Version, version->BuildDate,
                         page.source.c_str()))
       << "</footer>\n</main>\n</body>\n</html>\n";
  file.close();
  if (!file) throw std::runtime_error("cannot write " + path);
}

}  // namespace tour
