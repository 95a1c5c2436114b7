#include "markup.h"

#include <cctype>
#include <regex>

#include "headers.h"
#include "html.h"

namespace docs {
namespace {

using support::escaped;
using support::slug;

bool isWord(char c) {
  return std::isalnum(static_cast<unsigned char>(c)) || c == '_';
}

bool startsWith(const std::string& text, const std::string& beginning) {
  return text.rfind(beginning, 0) == 0;
}

// Escapes text and links the names in it.
std::string linked(const std::string& text, const Hooks& hooks) {
  std::string out;
  for (size_t i = 0; i < text.size();) {
    size_t end = i;
    while (end < text.size() && isWord(text[end])) ++end;
    if (end == i) {
      out += escaped(text.substr(i++, 1));
      continue;
    }
    const std::string word = text.substr(i, end - i);
    const std::string address = startsWith(word, "zeb") || startsWith(word, "Zeb") ? hooks.address(word) : "";
    out += address.empty() ? escaped(word) : "<a href=\"" + address + "\">" + escaped(word) + "</a>";
    i = end;
  }
  return out;
}

}  // namespace

std::string line(const std::string& text, const Hooks& hooks) {
  static const std::regex mark(R"(`([^`]+)`|\*\*([^*]+)\*\*|\[([^\]]+)\]\(([^)]+)\))");
  std::string out;
  auto rest = text.cbegin();
  for (std::smatch m; std::regex_search(rest, text.cend(), m, mark); rest = m[0].second) {
    out += linked({rest, m[0].first}, hooks);
    if (m[1].matched) out += "<code>" + linked(m[1], hooks) + "</code>";
    if (m[2].matched) out += "<strong>" + linked(m[2], hooks) + "</strong>";
    if (m[3].matched) out += "<a href=\"" + escaped(m[4]) + "\">" + escaped(m[3]) + "</a>";
  }
  return out + linked({rest, text.cend()}, hooks);
}

namespace {

// x_i, x_{ij}, 2^n, 2^{n+1}
std::string formula(const std::string& text, const Hooks& hooks) {
  std::string out = linked(text, hooks);
  out = std::regex_replace(out, std::regex(R"(_\{([^}]*)\}|_(\w))"), "<sub>$1$2</sub>");
  return std::regex_replace(out, std::regex(R"(\^\{([^}]*)\}|\^(\w))"), "<sup>$1$2</sup>");
}

std::string tableRow(const std::string& text, const char* cell, const Hooks& hooks) {
  std::string out = "<tr>";
  size_t from = 1;
  for (size_t bar = text.find('|', from); bar != std::string::npos; bar = text.find('|', from = bar + 1))
    out += std::string("<") + cell + ">" + line(text.substr(from, bar - from), hooks) + "</" + cell + ">";
  return out + "</tr>\n";
}

class Blocks {
 public:
  Blocks(const std::string& text, const Hooks& hooks) : lines_(splitLines(text)), hooks_(hooks) {}

  std::string render() {
    while (at_ < lines_.size()) {
      const std::string& now = lines_[at_];
      if (now.empty()) {
        ++at_;
      } else if (startsWith(now, "```")) {
        fence();
      } else if (startsWith(now, "## ")) {
        const std::string title = lines_[at_++].substr(3);
        out_ += "<h2 id=\"" + slug(title) + "\">" + line(title, hooks_) + "</h2>\n";
      } else if (startsWith(now, "![")) {
        std::smatch m;
        std::regex_match(now, m, std::regex(R"(!\[(.*)\]\((.*)\))"));
        out_ += hooks_.figure(m[1], m[2]);
        ++at_;
      } else if (now[0] == '|' && at_ + 1 < lines_.size() && startsWith(lines_[at_ + 1], "|-")) {
        table();
      } else if (startsWith(now, "- ")) {
        list();
      } else if (now[0] == ' ') {
        indented();
      } else {
        paragraph();
      }
    }
    return out_;
  }

 private:
  void fence() {
    const std::string language = lines_[at_++].substr(3);
    std::string body;
    for (; at_ < lines_.size() && lines_[at_] != "```"; ++at_) body += lines_[at_] + "\n";
    ++at_;
    if (language == "formula")
      out_ += "<div class=\"formula\">" + formula(body, hooks_) + "</div>\n";
    else
      out_ += "<pre class=\"" + (language.empty() ? "text" : language) + "\">" + code(body, hooks_) + "</pre>\n";
  }

  void table() {
    out_ += "<div class=\"wide said\"><table>\n<thead>" + tableRow(lines_[at_], "th", hooks_) + "</thead>\n";
    for (at_ += 2; at_ < lines_.size() && startsWith(lines_[at_], "|"); ++at_)
      out_ += tableRow(lines_[at_], "td", hooks_);
    out_ += "</table></div>\n";
  }

  void list() {
    out_ += "<ul>\n";
    while (at_ < lines_.size() && startsWith(lines_[at_], "- ")) {
      std::string item = lines_[at_++].substr(2);
      for (; at_ < lines_.size() && !lines_[at_].empty() && !startsWith(lines_[at_], "- "); ++at_)
        item += " " + lines_[at_].substr(lines_[at_].find_first_not_of(' '));
      out_ += "<li>" + line(item, hooks_) + "</li>\n";
    }
    out_ += "</ul>\n";
  }

  void indented() {
    size_t margin = std::string::npos;
    std::string body;
    size_t end = at_;
    while (end < lines_.size() && (lines_[end].empty() || lines_[end][0] == ' ')) ++end;
    while (lines_[end - 1].empty()) --end;
    for (size_t i = at_; i < end; ++i)
      if (!lines_[i].empty()) margin = std::min(margin, lines_[i].find_first_not_of(' '));
    for (; at_ < end; ++at_) body += (lines_[at_].empty() ? "" : lines_[at_].substr(margin)) + "\n";
    out_ += "<pre class=\"text\">" + code(body, hooks_) + "</pre>\n";
  }

  void paragraph() {
    std::string text;
    for (; at_ < lines_.size() && !lines_[at_].empty() && lines_[at_][0] != ' ' && !startsWith(lines_[at_], "- ") &&
           !startsWith(lines_[at_], "```");
         ++at_)
      text += (text.empty() ? "" : " ") + lines_[at_];
    out_ += "<p>" + line(text, hooks_) + "</p>\n";
  }

  std::vector<std::string> lines_;
  size_t at_ = 0;
  const Hooks& hooks_;
  std::string out_;
};

}  // namespace

std::string block(const std::string& text, const Hooks& hooks) {
  return Blocks(text, hooks).render();
}

std::string code(const std::string& text, const Hooks& hooks) {
  return linked(text, hooks);
}

std::vector<std::string> fenced(const std::string& text, const std::string& language) {
  std::vector<std::string> out;
  bool inside = false, wanted = false;
  for (const std::string& one : splitLines(text)) {
    if (startsWith(one, "```")) {
      inside = !inside;
      wanted = inside && one == "```" + language;
      if (wanted) out.emplace_back();
    } else if (wanted) {
      out.back() += one + "\n";
    }
  }
  return out;
}

}  // namespace docs
