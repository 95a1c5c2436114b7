#include "comment.h"

#include <algorithm>
#include <cctype>
#include <regex>

#include "headers.h"

namespace docs {
namespace {

std::vector<std::string> paragraphs(const std::string& text) {
  std::vector<std::string> out(1);
  for (const std::string& line : splitLines(text)) {
    if (!line.empty())
      out.back() += line + "\n";
    else if (!out.back().empty())
      out.emplace_back();
  }
  if (out.back().empty()) out.pop_back();
  return out;
}

std::string joined(std::string text) {
  std::replace(text.begin(), text.end(), '\n', ' ');
  text = std::regex_replace(text, std::regex(" +"), " ");
  while (!text.empty() && text.back() == ' ') text.pop_back();
  return text;
}

// Where the status codes of a paragraph begin.
size_t statusPlace(const std::string& paragraph) {
  static const std::regex begins(
      R"((^|[.] |[.]\n)(Status\b|zebSts|Free: zebSts|GetBufferSize: zebSts|[A-Z]\w+( calls)?, status in this order))");
  std::smatch m;
  return std::regex_search(paragraph, m, begins) ? static_cast<size_t>(m.position(2)) : std::string::npos;
}

// A formula of a size, or the words of a record.
bool countsBytes(const std::string& paragraph) {
  static const std::regex unit(R"(\b([Bb]ytes|[Ww]ords)\b)"),
      term(R"([-+x*/] ?\(?\d|\d\)? ?[-+x*/]|\d [(A-Za-z] ?\w* ?\+)");
  static const std::regex layout(R"(begins with \d+ words|state is \w+ words|stage takes)");
  if (std::regex_search(paragraph, layout)) return true;
  if (!std::regex_search(paragraph, unit)) return false;
  return std::distance(std::sregex_iterator(paragraph.begin(), paragraph.end(), term), std::sregex_iterator()) >= 3;
}

void append(std::vector<Passage>& list, Passage::Kind kind, const std::string& text) {
  if (text.find_first_not_of(" \n") == std::string::npos) return;
  if (list.empty() || list.back().kind != kind)
    list.push_back({kind, text});
  else
    list.back().words += "\n" + text;
}

// Cuts at a mark that stands in no parentheses.
std::vector<std::string> cut(const std::string& text, char mark) {
  std::vector<std::string> out(1);
  int depth = 0;
  for (char c : text) {
    depth += (c == '(') - (c == ')');
    if (c == mark && depth == 0)
      out.emplace_back();
    else
      out.back() += c;
  }
  return out;
}

// A full stop behind more than the initial of a name ends a sentence.
std::vector<std::string> sentencesOf(const std::string& text) {
  std::vector<std::string> out(1);
  int depth = 0;
  for (size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    out.back() += c;
    depth += (c == '(') - (c == ')');
    const bool initial = i >= 1 && std::isupper(static_cast<unsigned char>(text[i - 1])) &&
                         (i < 2 || !std::isalnum(static_cast<unsigned char>(text[i - 2])));
    if (c == '.' && depth <= 0 && i + 1 < text.size() && text[i + 1] == ' ' && !initial) {
      out.emplace_back();
      ++i;
    }
  }
  if (out.back().empty()) out.pop_back();
  return out;
}

std::string statusList(const std::string& words, const Hooks& hooks) {
  std::string out;
  for (const std::string& sentence : sentencesOf(joined(words))) {
    const size_t first = sentence.find("zebSts"), colon = sentence.rfind(':', first);
    const std::string intro = first != std::string::npos && colon != std::string::npos ? sentence.substr(0, colon) : "";
    std::string rest = intro.empty() ? sentence : sentence.substr(colon + 2);
    if (rest.empty() || first == std::string::npos) {
      out += block(sentence, hooks);
      continue;
    }
    if (rest.back() == '.') rest.pop_back();
    std::vector<std::string> items = cut(rest, ';');
    if (items.size() == 1) items = cut(rest, ',');
    out += "<p class=\"status\">" + line(intro.empty() ? "Status" : intro, hooks) + ":</p>\n<ol class=\"status\">\n";
    for (const std::string& item : items) out += "<li>" + line(item, hooks) + "</li>\n";
    out += "</ol>\n";
  }
  return out;
}

}  // namespace

std::vector<Passage> passages(const std::string& comment) {
  std::vector<Passage> out;
  for (const std::string& paragraph : paragraphs(comment)) {
    if (paragraph[0] == ' ' || paragraph[0] == '|') {
      append(out, out.empty() || out.back().kind == Passage::status ? Passage::text : out.back().kind, paragraph);
      continue;
    }
    const size_t place = statusPlace(paragraph);
    const std::string before = paragraph.substr(0, place);
    append(out, countsBytes(before) ? Passage::bytes : Passage::text, before);
    if (place != std::string::npos) append(out, Passage::status, paragraph.substr(place));
  }
  return out;
}

std::string folded(const std::string& comment, const Hooks& hooks) {
  std::string out;
  for (const Passage& passage : passages(comment)) {
    if (passage.kind == Passage::status) out += statusList(passage.words, hooks);
    if (passage.kind == Passage::text) out += block(passage.words, hooks);
    if (passage.kind != Passage::bytes) continue;
    const bool layout = std::regex_search(passage.words, std::regex(R"(\b[Ww]ords\b|begins with)"));
    out += std::string("<details><summary>") + (layout ? "Bytes and layout" : "How many bytes") + "</summary>\n" +
           block(passage.words, hooks) + "</details>\n";
  }
  return out;
}

std::vector<std::string> sentences(const std::string& comment, const std::string& expression) {
  const std::regex wanted(expression);
  std::vector<std::string> out;
  for (const Passage& passage : passages(comment)) {
    if (passage.kind == Passage::status) continue;
    for (const std::string& paragraph : paragraphs(passage.words)) {
      if (paragraph[0] == ' ' || paragraph.find("\n ") != std::string::npos) continue;
      for (const std::string& one : sentencesOf(joined(paragraph)))
        if (std::regex_search(one, wanted) && !countsBytes(one) && std::count(one.begin(), one.end(), ';') < 3)
          out.push_back(one.rfind("- ", 0) == 0 ? one.substr(2) : one);
    }
  }
  return out;
}

std::vector<std::string> statuses(const std::string& comment) {
  static const std::regex code(R"(zebSts\w+)");
  std::vector<std::string> out;
  for (std::sregex_iterator i(comment.begin(), comment.end(), code), end; i != end; ++i)
    if (std::find(out.begin(), out.end(), i->str()) == out.end()) out.push_back(i->str());
  return out;
}

}  // namespace docs
