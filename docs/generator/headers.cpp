#include "headers.h"

#include <filesystem>
#include <fstream>
#include <regex>
#include <sstream>
#include <stdexcept>

namespace docs {
namespace {

const std::regex comments(R"(/\*([^*]|\*+[^*/])*\*+/)");

std::string squeezed(const std::string& text) {
  const std::string one = std::regex_replace(std::regex_replace(text, comments, " "), std::regex(R"(\s+)"), " ");
  const size_t first = one.find_first_not_of(' ');
  return first == std::string::npos ? "" : one.substr(first, one.find_last_not_of(' ') - first + 1);
}

// "const Zeb8u newVal[3]" -> "const Zeb8u*", "newVal"
Parameter parameterOf(const std::string& text) {
  std::smatch m;
  if (!std::regex_match(text, m, std::regex(R"(((?:\w+ )*\w+)(?: | ?(\*+) ?)(\w+)(\[\d*\])?)"))) {
    if (text == "void") return {text, ""};
    throw std::runtime_error("not a parameter: " + text);
  }
  return {m[1].str() + m[2].str() + (m[4].length() ? "*" : ""), m[3]};
}

// Enumerators as "name = value" and records as their members; both are part of the binary interface.
Declaration declaration(const std::string& text) {
  static const std::regex function(R"((static inline )?((?:\w+ )*\w+)(?: | ?(\*+) ?)(zeb\w+) ?\((.*)\);)");
  static const std::regex opaque(R"(typedef struct (\w+) (\w+);)");
  static const std::regex record(R"(typedef struct (\w+) \{(.*)\} \w+;)");
  static const std::regex alias(R"(typedef ([\w ]+) (\w+);)");
  static const std::regex enumeration(R"(enum \{(.*)\};)");
  Declaration d;
  d.text = text;
  const std::string line = squeezed(text);
  std::smatch m;
  if (std::regex_match(line, m, function)) {
    d.function = true;
    d.exported = !m[1].matched;
    d.name = m[4];
    d.returnsStatus = m[2] == "ZebStatus";
    d.binary = m[2].str() + m[3].str() + " (";
    std::stringstream parameters(m[5]);
    for (std::string one; std::getline(parameters, one, ',');) {
      const Parameter parameter = parameterOf(squeezed(one));
      d.binary += (d.binary.back() == '(' ? "" : ", ") + parameter.type;
      if (!parameter.name.empty()) d.parameters.push_back(parameter);
    }
    d.binary += ")";
  } else if (std::regex_match(line, m, opaque)) {
    d.name = m[2];
    d.binary = "opaque";
  } else if (std::regex_match(line, m, record)) {
    d.name = m[1];
    d.binary = "{ " + squeezed(m[2]) + " }";
  } else if (std::regex_match(line, m, alias)) {
    d.name = m[2];
    d.binary = m[1];
  } else if (std::regex_match(line, m, enumeration)) {
    d.binary = squeezed(m[1]);
  } else {
    throw std::runtime_error("not a declaration: " + line);
  }
  return d;
}

// The text between the marks, without the stars at the beginning of its lines.
std::string commentText(const std::string& raw) {
  std::string out;
  for (const std::string& line : splitLines(raw.substr(3, raw.size() - 5))) {
    const size_t star = line.find_first_not_of(' ');
    std::string rest = star == std::string::npos ? "" : line[star] == '*' ? line.substr(star + 1) : line.substr(star);
    if (!rest.empty() && rest[0] == ' ') rest.erase(0, 1);
    while (!rest.empty() && rest.back() == ' ') rest.pop_back();
    out += rest + "\n";
  }
  return out;
}

class Reader {
 public:
  explicit Reader(const std::string& path) : lines_(splitLines(readFile(path))) {
    header_.file = std::filesystem::path(path).filename().string();
  }

  Header read() {
    while (at_ < lines_.size()) {
      const std::string& line = lines_[at_];
      if (line.rfind("/**", 0) == 0) {
        takeComment(commentText(upTo("*/")));
      } else if (line.rfind("/*", 0) == 0) {
        const std::string text = upTo("*/");
        std::smatch m;
        if (std::regex_match(text, m, std::regex(R"(/\* -+ (.*) -+ \*/)")))
          header_.pieces.push_back({Piece::heading, m[1], {}});
      } else if (line.empty()) {
        ++at_;
        if (!shared_) comment_.clear();  // a comment speaks for the lines right below it
      } else if (line[0] == '#') {
        while (lines_[at_++].back() == '\\') continue;
      } else if (line == "}" || line.rfind("extern \"C\"", 0) == 0) {
        ++at_;
      } else {
        takeDeclaration();
      }
    }
    if (header_.title.empty()) throw std::runtime_error(header_.file + " does not begin with what it holds");
    return header_;
  }

 private:
  std::string upTo(const std::string& end) {
    std::string text;
    do text += lines_[at_] + "\n";
    while (lines_[at_++].find(end) == std::string::npos && at_ < lines_.size());
    text.pop_back();
    return text;
  }

  void takeComment(std::string text) {
    const auto strip = [&text](const std::string& mark) {
      const size_t place = text.find(mark);
      if (place != std::string::npos) text.erase(place, mark.size());
      return place != std::string::npos;
    };
    const bool opens = strip("@{"), closes = strip("@}");
    std::smatch m;
    if (std::regex_search(text, m, std::regex("@defgroup \\w+ ([^\n]*)\n"))) {
      header_.pieces.push_back({Piece::heading, m[1], {}});
      text = m.suffix();
      group_ = text;
      shared_ = true;  // until a comment of its own tells a part of the group from the rest
    } else {
      shared_ = opens;
    }
    if (closes) group_.clear();
    comment_ = squeezed(text).empty() ? "" : text;
    if (comment_.empty()) {
      shared_ = false;
    } else if (header_.title.empty()) {
      const size_t end = text.find('\n');
      header_.title = text[0] == '\n' ? "" : text.substr(0, end);
      header_.about = text[0] == '\n' ? text : text.substr(end);
      if (header_.title.empty()) {
        const size_t next = text.find('\n', 1);
        header_.title = text.substr(1, next - 1);
        header_.about = text.substr(next);
      }
      comment_.clear();
    } else {
      header_.pieces.push_back({Piece::comment, text, {}});
    }
  }

  void takeDeclaration() {
    std::string text;
    int depth = 0;
    do {
      const std::string& line = lines_[at_++];
      text += line + "\n";
      for (char c : std::regex_replace(line, comments, "")) depth += (c == '{') - (c == '}');
    } while (at_ < lines_.size() && (depth > 0 || text.find(';') == std::string::npos));
    text.pop_back();
    if (text.rfind("static inline ", 0) == 0) text = text.substr(0, text.find(" {")) + ";";
    Declaration d = declaration(text);
    d.comment = comment_;
    d.group = group_;
    if (header_.pieces.empty() || header_.pieces.back().kind != Piece::declarations)
      header_.pieces.push_back({Piece::declarations, "", {}});
    header_.pieces.back().declared.push_back(std::move(d));
  }

  std::vector<std::string> lines_;
  size_t at_ = 0;
  Header header_;
  std::string comment_, group_;
  bool shared_ = false;
};

}  // namespace

std::string readFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) throw std::runtime_error("cannot read " + path);
  std::ostringstream text;
  text << file.rdbuf();
  return text.str();
}

std::vector<std::string> splitLines(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream in(text);
  for (std::string line; std::getline(in, line);) lines.push_back(line);
  return lines;
}

Header readHeader(const std::string& path) {
  return Reader(path).read();
}

std::map<std::string, std::string> binaryInterface(const std::vector<Header>& headers) {
  std::map<std::string, std::string> out;
  for (const Header& header : headers)
    for (const Piece& piece : header.pieces)
      for (const Declaration& d : piece.declared) {
        if (d.function && !d.exported) continue;
        if (!d.name.empty()) {
          out[d.name] = d.binary;
          continue;
        }
        std::stringstream enumerators(d.binary);
        for (std::string one; std::getline(enumerators, one, ',');) {
          const std::string pair = squeezed(one);
          const size_t equals = pair.find(" = ");
          if (equals == std::string::npos) throw std::runtime_error("an enumerator without its value: " + pair);
          out[pair.substr(0, equals)] = pair.substr(equals + 3);
        }
      }
  return out;
}

}  // namespace docs
