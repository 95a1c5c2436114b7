// A picture of a table of times: what a pixel costs in every family, beside the bare loops over the same bytes.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <optional>
#include <stdexcept>

#include "report.h"

namespace bench {
namespace {

// The text behind "name": in a line that asJson wrote, up to the next comma or brace; of a string what is quoted.
std::string member(const std::string& line, const std::string& name) {
  const std::string key = quoted(name) + ": ";
  const size_t at = line.find(key);
  if (at == std::string::npos) return {};
  const size_t start = at + key.size();
  if (line[start] == '"') return line.substr(start + 1, line.find('"', start + 1) - start - 1);
  return line.substr(start, line.find_first_of(",}", start) - start);
}

std::optional<double> time(const std::string& line, const std::string& name) {
  const std::string text = member(line, name);
  if (text.empty() || text == "null") return std::nullopt;
  return std::stod(text);
}

// The geometric means over a family's cases.
struct Bars {
  double logTime = 0, logBare = 0;
  int cases = 0;

  double ours() const { return std::exp(logTime / cases); }
  double bare() const { return std::exp(logBare / cases); }
};

struct Panel {
  std::string place, title;
  std::vector<std::pair<std::string, Bars>> families;

  Bars& of(const std::string& family) {
    for (auto& [name, bars] : families)
      if (name == family) return bars;
    return families.emplace_back(family, Bars()).second;
  }
};

void readInto(std::vector<Panel>& panels, const std::string& path) {
  std::ifstream file(path);
  if (!file) throw std::runtime_error("cannot read " + path);
  for (std::string line; std::getline(file, line);) {
    const auto ours = time(line, "time"), bare = time(line, "bareLoop");
    if (!ours || !bare) continue;
    for (Panel& panel : panels) {
      if (member(line, "place") != panel.place) continue;
      Bars& bars = panel.of(member(line, "family"));
      bars.logTime += std::log(*ours);
      bars.logBare += std::log(*bare);
      ++bars.cases;
    }
  }
}

// ---- The drawing ----

constexpr int left = 250, panelWidth = 300, gap = 50, top = 58, rowHeight = 26, barHeight = 9;
constexpr double least = 0.01, most = 1000;  // nanoseconds, on a logarithmic axis

double across(double nanoseconds) {
  const double part = std::log(nanoseconds / least) / std::log(most / least);
  return panelWidth * std::clamp(part, 0.0, 1.0);
}

std::string escaped(const std::string& text) {
  std::string out;
  for (char c : text) out += c == '&' ? "&amp;" : c == '<' ? "&lt;" : std::string(1, c);
  return out;
}

void text(double x, double y, const char* anchor, const std::string& words, const char* more = "") {
  std::printf("<text x=\"%.1f\" y=\"%.1f\" text-anchor=\"%s\"%s>%s</text>\n", x, y, anchor, more,
              escaped(words).c_str());
}

void bar(double x, double y, double nanoseconds, const char* colour) {
  std::printf("<rect x=\"%.1f\" y=\"%.1f\" width=\"%.1f\" height=\"%d\" fill=\"%s\"/>\n", x, y, across(nanoseconds),
              barHeight, colour);
}

void draw(const Panel& panel, double x, int bottom) {
  text(x, top - 28, "start", panel.title, " font-weight=\"bold\"");
  for (double tick = least; tick <= most; tick *= 10) {
    const double at = x + across(tick);
    std::printf("<line x1=\"%.1f\" y1=\"%d\" x2=\"%.1f\" y2=\"%d\" stroke=\"#ddd\"/>\n", at, top - 4, at, bottom);
    char label[20];
    std::snprintf(label, sizeof label, "%g", tick);
    text(at, top - 9, "middle", label, " fill=\"#666\"");
  }
  double y = top;
  for (const auto& [name, bars] : panel.families) {
    if (bars.cases > 0) {
      bar(x, y + 2, bars.bare(), "#b0b7bf");
      bar(x, y + 3 + barHeight, bars.ours(), "#2f6fb5");
      text(x + across(bars.ours()) + 5, y + 3 + 2 * barHeight, "start", number(bars.ours(), bars.ours() < 10 ? 2 : 0));
    }
    y += rowHeight;
  }
}

}  // namespace

void drawTimes(const std::string& path) {
  std::vector<Panel> panels{{"480x360", "480 x 360, in cache: ns per pixel", {}},
                            {"1920x1080", "1920 x 1080, in memory: ns per pixel", {}}};
  readInto(panels, path);
  const auto& families = panels[0].families;
  if (families.empty() || panels[1].families.empty()) throw std::runtime_error(path + " holds no times of both sizes");
  const int bottom = top + rowHeight * static_cast<int>(families.size());
  const int width = left + 2 * panelWidth + gap + 60, height = bottom + 34;
  std::printf(
      "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"%d\" height=\"%d\" viewBox=\"0 0 %d %d\" "
      "font-family=\"sans-serif\" font-size=\"12\">\n<rect width=\"100%%\" height=\"100%%\" fill=\"white\"/>\n",
      width, height, width, height);
  for (size_t i = 0; i < families.size(); ++i)
    text(left - 10, top + rowHeight * (static_cast<double>(i) + 0.6), "end", families[i].first);
  for (size_t i = 0; i < panels.size(); ++i)
    draw(panels[i], left + static_cast<double>(i) * (panelWidth + gap), bottom);
  bar(left, bottom + 14, 0.1, "#b0b7bf");
  text(left + across(0.1) + 6, bottom + 23, "start", "the bare loop over the same bytes");
  bar(left + panelWidth + gap, bottom + 14, 0.1, "#2f6fb5");
  text(left + panelWidth + gap + across(0.1) + 6, bottom + 23, "start", "this library, geometric mean of the cases");
  std::printf("</svg>\n");
}

}  // namespace bench
