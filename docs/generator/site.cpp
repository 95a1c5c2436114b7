#include "site.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <regex>
#include <sstream>
#include <stdexcept>

#include "comment.h"
#include "group.h"
#include "html.h"
#include "page.h"
#include "search.h"

namespace docs {
namespace {

namespace fs = std::filesystem;
using support::escaped;

const char style[] = R"(
header { border-bottom: 1px solid var(--line); background: var(--card); }
header nav { display: flex; flex-wrap: wrap; gap: .4rem 1rem; justify-content: space-between; align-items: center; }
header nav, main, footer { max-width: 1080px; margin: auto; padding: .8rem clamp(1rem, 4vw, 2.5rem); }
header nav > div > a { margin-right: 1.1rem; white-space: nowrap; display: inline-block; }
header a.here { color: var(--ink); font-weight: 600; }
main { padding-top: 2rem; overflow-wrap: break-word; }
main > p, main > ul { max-width: 46em; }
h1 { font-size: clamp(1.8rem, 5vw, 2.6rem); }
h2 { margin: 2.4rem 0 .6rem; }
p.lead { color: var(--soft); font-size: 1.1em; margin-top: 0; }
pre, .formula { background: var(--card); border: 1px solid var(--line); border-radius: 8px; padding: .8rem 1rem;
  overflow-x: auto; font-size: .82em; line-height: 1.5; }
code, pre, .proto { font-family: ui-monospace, "DejaVu Sans Mono", monospace; }
code { font-size: .88em; }
.formula { font: 1.05em/1.7 math, "STIX Two Math", "Cambria Math", Georgia, serif; white-space: pre; }
pre.text { background: none; }
pre.c { border-left: 3px solid var(--accent); }
.proto { font-size: .8em; line-height: 1.45; padding: .25rem 0 .25rem 2em; text-indent: -2em; scroll-margin-top: 1rem; }
.signature { border-left: 3px solid var(--line); padding-left: 1rem; margin: .7rem 0; }
.signature p { margin: .1rem 0 0; line-height: 1.7; }
a.form { font: .78em ui-monospace, "DejaVu Sans Mono", monospace; border: 1px solid var(--line); border-radius: 6px;
  padding: .05rem .4rem; white-space: nowrap; scroll-margin-top: 5rem; }
h3 { font-size: 1em; margin: 1.6rem 0 .3rem; overflow-wrap: anywhere; }
details { background: var(--card); border: 1px solid var(--line); border-radius: 8px; padding: .4rem 1rem; margin: .6rem 0; }
summary { cursor: pointer; color: var(--soft); }
p.status { margin-bottom: .2rem; }
ol.status { margin-top: 0; font-size: .92em; }
.hero img { border-radius: 12px; }
.hero { max-width: 100%; margin: 0 0 1.5rem; }
.proto:target, pre:target, a.form:target { background: color-mix(in srgb, var(--accent) 18%, transparent); }
.protos { border-left: 3px solid var(--line); padding-left: 1rem; margin: .8rem 0 1.6rem; }
.wide { overflow-x: auto; margin: 1rem 0; }
table { border-collapse: collapse; font-size: .88em; }
th, td { text-align: left; vertical-align: top; padding: .35rem 1rem .35rem 0; border-bottom: 1px solid var(--line); }
td a { white-space: nowrap; }
.said td:first-child { font-weight: 600; min-width: 9em; }
@media (max-width: 720px) {
  .said thead { display: none; }
  .said code { overflow-wrap: anywhere; }
  .said table, .said tbody, .said td { display: block; }
  .said td { border: 0; padding: .15rem 0; }
  .said tr { display: block; border-bottom: 1px solid var(--line); padding: .5rem 0; } }
figure { margin: 1.2rem 0; display: inline-block; max-width: min(100%, 460px); margin-right: 1rem; vertical-align: top; }
figure img { border-radius: 8px; }
figcaption { color: var(--soft); font-size: .88em; padding-top: .4rem; }
.cards { display: grid; grid-template-columns: repeat(auto-fill, minmax(min(250px, 100%), 1fr)); gap: .6rem 1.6rem; }
.cards p { margin: .3rem 0; }
footer { color: var(--soft); font-size: .85em; padding: 2rem clamp(1rem, 4vw, 2.5rem); }
)";

class Site {
 public:
  explicit Site(const Sources& sources) : sources_(sources) {
    hooks_.address = [this](const std::string& name) { return address(name); };
    hooks_.figure = [this](const std::string& caption, const std::string& section) { return figure(caption, section); };
    for (const fs::path& path : sorted(sources.include + "/zebcv", ".h")) headers_.push_back(readHeader(path.string()));
    headers_.push_back(readHeader(sources.include + "/zebcore.h"));
    for (const fs::path& path : sorted(sources.docs + "/families", ".md")) families_.push_back(readPage(path));
    for (const fs::path& path : sorted(sources.docs + "/recipes", ".md")) recipes_.push_back(readPage(path));
    for (const fs::path& path : sorted(sources.docs + "/pages", ".md")) pages_.push_back(readPage(path));
    for (const Header& header : headers_) index(header);
    tourPage_ = readFile(sources.tour + "/index.html");
    fs::create_directories(sources.out);
  }

  std::vector<std::string> write() {
    readSentences();
    readParameters();
    assignFamilies();
    for (const Page& family : families_) writeFamily(family);
    for (const Header& header : headers_) writeReference(header);
    writeFunctions();
    for (const Page& recipe : recipes_) writeRecipe(recipe);
    for (const Page& page : pages_) writePlain(page);
    writeSearch();
    checkLinks();
    return problems_;
  }

 private:
  static std::string referencePage(const Header& header) {
    return "ref-" + fs::path(header.file).stem().string() + ".html";
  }

  void problem(const std::string& text) { problems_.push_back(place_.empty() ? text : place_ + ": " + text); }

  void index(const Header& header) {
    for (const Piece& piece : header.pieces)
      for (const Declaration& d : piece.declared) {
        if (!d.name.empty()) addresses_[d.name] = referencePage(header) + "#" + d.name;
        if (d.function) documented(d);
        if (!d.function && header.file != "types.h") lore_.types[d.name] = d.comment;
        if (d.exported && header.file != "zebcore.h") {
          functions_[d.name] = &d;
          order_.emplace(d.name, order_.size());
        }
      }
    // Enumerators, whose list stands in one piece.
    for (const auto& [name, meaning] : binaryInterface({header}))
      if (!addresses_.count(name)) addresses_[name] = referencePage(header) + "#" + name;
  }

  // The sentences that programs print are those of the reference.
  void readSentences() {
    const auto pairs = [this](const char* file, const char* pattern) {
      const std::string text = readFile(sources_.include + "/zebcv/" + file);
      const std::regex pair(pattern);
      std::map<std::string, std::string> out;
      for (std::sregex_iterator i(text.begin(), text.end(), pair), end; i != end; ++i) out[(*i)[1]] = (*i)[2];
      return out;
    };
    const auto stated = pairs("types.h", R"re((zebSts\w+) = -?\d+,? */\*\*< ([^*]*[^* ]) \*/)re");
    const auto printed = pairs("status.h", R"re(X\((zebSts\w+), "([^"]*)"\))re");
    if (stated.empty()) problem("types.h states no status");
    for (const auto& [name, sentence] : stated)
      if (!printed.count(name) || printed.at(name) != sentence) problem("status.h tells something else of " + name);
    if (printed.size() != stated.size()) problem("status.h and types.h do not list the same codes");
    lore_.statuses = stated;
  }

  void readParameters() {
    std::istringstream table(readFile(sources_.docs + "/parameters.md"));
    static const std::regex row(R"(\| ([\w/]+) \| (.*) \|)");
    std::smatch m;
    for (std::string one; std::getline(table, one);)
      if (std::regex_match(one, m, row)) lore_.parameters[m[1]] = m[2];
  }

  void documented(const Declaration& d) {
    if (d.comment.empty()) problem(d.name + " has no documentation");
    if (d.returnsStatus && (d.comment + d.group).find("zebSts") == std::string::npos)
      problem("the documentation of " + d.name + " does not tell its status codes");
  }

  // A name, or the part that the names of several functions begin with.
  std::string address(const std::string& name) {
    const auto exact = addresses_.find(name);
    if (exact != addresses_.end()) return exact->second == here_ + "#" + name ? "" : exact->second;
    static const std::set<std::string> others = {"zebCV", "zebcv", "zebcore"};
    if (others.count(name)) return "";
    const auto first = addresses_.lower_bound(name);
    if (first != addresses_.end() && first->first.compare(0, name.size(), name) == 0) return first->second;
    problem(name + " is no function, type or constant");
    return "";
  }

  // The picture of a section of the tour whose caption holds these words, with its whole caption.
  std::string figure(const std::string& caption, const std::string& section) {
    if (section == "hero") {
      fs::copy_file(fs::path(sources_.tour) / "hero.png", fs::path(sources_.out) / "hero.png",
                    fs::copy_options::overwrite_existing);
      return "<figure class=\"hero\"><img src=\"hero.png\" alt=\"" + escaped(caption) + "\"><figcaption>" +
             escaped(caption) + "</figcaption></figure>\n";
    }
    const std::string mark = "src=\"" + section + "-";
    for (size_t at = tourPage_.find(mark); at != std::string::npos; at = tourPage_.find(mark, at + 1)) {
      const std::string file = tourPage_.substr(at + 5, tourPage_.find('"', at + 5) - at - 5);
      std::string text = tourPage_.substr(at, tourPage_.find("</figcaption>", at) - at);
      text = text.substr(text.find("<figcaption>") + 12);
      if (text.rfind("<span", 0) == 0) text = text.substr(text.find("</span>") + 7);
      if (text.find(escaped(caption)) == std::string::npos) continue;
      fs::copy_file(fs::path(sources_.tour) / file, fs::path(sources_.out) / file,
                    fs::copy_options::overwrite_existing);
      return "<figure><img src=\"" + file + "\" alt=\"" + text + "\"><figcaption>" + text + "</figcaption></figure>\n";
    }
    problem("the tour's section \"" + section + "\" has no picture \"" + caption + "\"");
    return "";
  }

  // Every function is on exactly one page.
  void assignFamilies() {
    std::set<std::string> unused;
    for (const auto& list : {families_, pages_})
      for (const Page& page : list)
        for (const std::string& pattern : page.patterns) unused.insert(page.id + ".md: no function " + pattern);
    for (const auto& [name, d] : functions_) {
      std::string owners;
      for (std::vector<Page>* list : {&families_, &pages_})
        for (Page& page : *list)
          for (const std::string& pattern : page.patterns) {
            if (!matches(name, pattern)) continue;
            page.functions.push_back(d);
            owners += " " + page.id;
            unused.erase(page.id + ".md: no function " + pattern);
          }
      if (words(owners).size() != 1)
        problem(name + (owners.empty() ? " is on no page" : " is on several pages:" + owners));
    }
    for (const std::string& pattern : unused) problem(pattern);
    lore_.prototypes = addresses_;
    for (Page& family : families_) {
      std::stable_sort(
          family.functions.begin(), family.functions.end(),
          [this](const Declaration* a, const Declaration* b) { return order_[a->name] < order_[b->name]; });
      for (const Declaration* d : family.functions) addresses_[d->name] = "family-" + family.id + ".html#" + d->name;
    }
    // Pages in the order in which the headers declare their first functions.
    const auto place = [this](const Page& page) {
      size_t first = order_.size();
      for (const Declaration* d : page.functions) first = std::min(first, order_[d->name]);
      return first;
    };
    std::stable_sort(families_.begin(), families_.end(),
                     [&](const Page& a, const Page& b) { return place(a) < place(b); });
  }

  // A stem is a name itself where a function has no type.
  std::string linkedStem(const std::string& stem) {
    const auto found = functions_.find(stem);
    return found == functions_.end() ? stem : "<a href=\"" + addresses_[stem] + "\">" + stem + "</a>";
  }

  // Rows are the stems, columns the source types that the family has.
  std::string shapes(const Page& family) {
    static const std::vector<std::string> types = {"1u", "8u", "8s", "16u", "16s", "32s", "32f", "64f"};
    std::map<std::string, std::map<std::string, std::string>> rows;
    std::set<std::string> used;
    for (const Declaration* d : family.functions) {
      const Shape shape(d->name);
      if (shape.source.empty()) {
        rows[shape.stem];
        continue;
      }
      used.insert(shape.source);
      const std::string text = (shape.others.empty() ? "" : "→" + shape.others + " ") + shape.descriptor;
      rows[shape.stem][shape.source] += "<a href=\"" + addresses_[d->name] + "\" title=\"" + d->name + "\">" +
                                        (text.empty() ? "yes" : text) + "</a><br>";
    }
    std::string out = "<div class=\"wide\"><table><thead><tr><th>function</th>";
    for (const std::string& type : types)
      if (used.count(type)) out += "<th>" + type + "</th>";
    out += "</tr></thead>\n";
    for (auto& [stem, cells] : rows) {
      out += "<tr><td><code>" + linkedStem(stem) + "</code></td>";
      for (const std::string& type : types)
        if (used.count(type)) out += "<td>" + cells[type] + "</td>";
      out += "</tr>\n";
    }
    return out + "</table></div>\n";
  }

  void writeFamily(const Page& family) {
    place_ = family.id + ".md";
    for (const char* language : {"formula", "c"})
      if (fenced(family.body, language).empty()) problem("no block of " + std::string(language));
    here_ = "family-" + family.id + ".html";
    const std::string body = groupBody(family, lore_, hooks_, [this](const std::string& text) { problem(text); });
    if (body.find("<img ") == std::string::npos) problem("no picture");
    save(here_, "Families", family.title, "<p class=\"lead\">" + escaped(family.summary) + "</p>\n" + body);
    here_.clear();
  }

  // Declarations of functions as lines to link to, all others as they stand in the header.
  std::string declared(const std::vector<Declaration>& list) {
    std::string out, open;
    const auto kind = [&](const std::string& wanted) {
      if (open == wanted) return;
      out += open.empty() ? "" : "</div>\n";
      out += wanted.empty() ? "" : "<div class=\"" + wanted + "\">\n";
      open = wanted;
    };
    for (const Declaration& d : list) {
      kind(d.function ? "protos" : "types");
      const std::string id = d.name.empty() ? "" : " id=\"" + d.name + "\"";
      std::string text = code(d.function ? std::regex_replace(d.text, std::regex("\\s+"), " ") : d.text, hooks_);
      for (std::smatch m; d.name.empty() && std::regex_search(text, m, std::regex("([ ])(zeb\\w+) ="));)
        text = m.prefix().str() + "<b id=\"" + m[2].str() + "\">" + m[2].str() + "</b> =" + m.suffix().str();
      out += d.function ? "<div class=\"proto\"" + id + ">" + text + "</div>\n" : "<pre" + id + ">" + text + "</pre>\n";
    }
    kind("");
    return out;
  }

  void writeReference(const Header& header) {
    here_ = referencePage(header);
    place_ = header.file;
    std::string contents, body;
    for (const Piece& piece : header.pieces) {
      if (piece.kind == Piece::heading) {
        const std::string id = support::slug(piece.text);
        contents += "<p><a href=\"#" + id + "\">" + escaped(piece.text) + "</a></p>";
        body += "<h2 id=\"" + id + "\">" + escaped(piece.text) + "</h2>\n";
      }
      if (piece.kind == Piece::comment) body += folded(piece.text, hooks_);
      body += declared(piece.declared);
    }
    save(here_, "Reference", "<code>" + header.file + "</code>",
         "<p class=\"lead\">" + escaped(header.title) + "</p>\n" + block(header.about, hooks_) +
             (contents.empty() ? "" : "<div class=\"cards\">" + contents + "</div>\n") + body);
    here_.clear();
  }

  void writeFunctions() {
    place_ = "functions";
    std::string body =
        "<p class=\"lead\">" + std::to_string(functions_.size()) +
        " functions by the type of their source and the number of channels.</p>\n"
        "<p>C1, C3, C4: interleaved channels. R: on a region. I: in place. M: under a mask. Sfs: with a scale "
        "factor. An arrow leads to the types that differ from the source's.</p>\n";
    for (const Page& family : families_)
      body += "<h2><a href=\"family-" + family.id + ".html\">" + escaped(family.title) + "</a></h2>\n" + shapes(family);
    save("functions.html", "Functions", "Functions, types, channels", body);
  }

  std::string cards(const std::string& list) {
    std::string out = "<div class=\"cards\">\n";
    const bool recipes = list == "recipes";
    if (recipes || list == "families")
      for (const Page& one : recipes ? recipes_ : families_)
        out += std::string("<p><a href=\"") + (recipes ? "recipe-" : "family-") + one.id + ".html\">" +
               escaped(one.title) + "</a><br>" + escaped(one.summary) + "</p>\n";
    else
      for (const Header& one : headers_)
        out += "<p><a href=\"" + referencePage(one) + "\"><code>" + one.file + "</code></a><br>" + escaped(one.title) +
               "</p>\n";
    return out + "</div>\n";
  }

  void writeRecipe(const Page& page) {
    place_ = page.id + ".md";
    save("recipe-" + page.id + ".html", "Recipes", page.title,
         "<p class=\"lead\">" + escaped(page.summary) + "</p>\n" + block(page.body, hooks_));
  }

  void writeSearch() {
    for (const Page& family : families_) {
      entries_.push_back({family.title, "family-" + family.id + ".html", "family", family.summary});
      for (const Declaration* d : family.functions) {
        std::string codes;
        for (const std::string& one : statuses(d->comment.find("zebSts") == std::string::npos ? d->group : d->comment))
          codes += one + " ";
        entries_.push_back({d->name, addresses_[d->name], family.title, codes});
      }
    }
    for (const Page& one : recipes_)
      entries_.push_back({one.title, "recipe-" + one.id + ".html", "recipe", one.summary});
    for (const Page& one : pages_) entries_.push_back({one.title, one.id + ".html", "page", one.summary});
    for (const auto& [name, target] : addresses_) {
      if (functions_.count(name) && target.rfind("family-", 0) == 0) continue;
      const auto sentence = lore_.statuses.find(name);
      const bool status = sentence != lore_.statuses.end();
      const bool type = name.rfind("Zeb", 0) == 0;
      entries_.push_back({name, target,
                          status ? "status"
                          : type ? "type"
                                 : "constant or function",
                          status ? sentence->second : ""});
    }
    std::ofstream out(fs::path(sources_.out) / "search.js");
    out << searchScript(entries_);
    out.close();
    if (!out) throw std::runtime_error("cannot write search.js");
  }

  // Every link, picture and entry of the filter box leads somewhere.
  void checkLinks() {
    place_.clear();
    static const std::regex mark("(id|href|src)=\"([^\"]*)\"");
    std::map<std::string, std::set<std::string>> marks;
    std::vector<std::pair<std::string, std::string>> links;
    for (const auto& [file, text] : written_)
      for (std::sregex_iterator i(text.begin(), text.end(), mark), end; i != end; ++i) {
        if ((*i)[1] == "id" && !marks[file].insert((*i)[2]).second) problem(file + " has two places #" + (*i)[2].str());
        if ((*i)[1] != "id") links.emplace_back(file, (*i)[2]);
      }
    for (const Entry& entry : entries_) links.emplace_back("search.js", entry.address);
    for (const auto& [file, link] : links) {
      const size_t hash = link.find('#');
      const std::string target = hash == 0 ? file : link.substr(0, hash);
      const bool there = hash == std::string::npos ? fs::exists(fs::path(sources_.out) / target)
                                                   : marks[target].count(link.substr(hash + 1)) > 0;
      if (!there) problem(file + " leads to " + link + ", which is not there");
    }
    std::set<std::string> listed;
    for (const Entry& entry : entries_) listed.insert(entry.name);
    for (const auto& [name, d] : functions_)
      if (!listed.count(name)) problem("the filter box does not know " + name);
  }

  void writePlain(const Page& page) {
    place_ = page.id + ".md";
    if (page.id == "guarantees") checkTests(page.body);
    std::string body = block(page.body, hooks_);
    for (const char* list : {"families", "recipes", "headers"}) {
      const std::string mark = "<p>{{" + std::string(list) + "}}</p>";
      const size_t at = body.find(mark);
      if (at != std::string::npos) body.replace(at, mark.size(), cards(list));
    }
    save(page.id + ".html", page.title, page.title, "<p class=\"lead\">" + escaped(page.summary) + "</p>\n" + body);
  }

  // Every row of the table ends with the names of the tests that hold it.
  void checkTests(const std::string& text) {
    size_t rows = 0;
    for (const std::string& row : splitLines(text)) {
      if (row.empty() || row[0] != '|' || row[1] == '-' || row.rfind("| guarantee", 0) == 0) continue;
      ++rows;
      const std::string last = row.substr(row.rfind('|', row.size() - 2));
      static const std::regex quoted("`([^`]+)`");
      std::sregex_iterator name(last.begin(), last.end(), quoted), end;
      if (name == end) problem("no test holds: " + row);
      for (; name != end; ++name)
        if (sources_.tests && !sources_.tests->count((*name)[1])) problem("there is no test " + (*name)[1].str());
    }
    if (rows == 0) problem("no guarantees");
  }

  void save(const std::string& file, const std::string& section, const std::string& title, const std::string& body) {
    static const std::vector<std::pair<std::string, std::string>> places = {{"Start", "index.html"},
                                                                            {"Families", "families.html"},
                                                                            {"Functions", "functions.html"},
                                                                            {"Recipes", "recipes.html"},
                                                                            {"Reference", "reference.html"},
                                                                            {"Guarantees", "guarantees.html"},
                                                                            {"Compatibility", "compatibility.html"}};
    std::string nav;
    for (const auto& [name, target] : places) {
      const bool here = target == file || name == section;
      nav += std::string("<a") + (here ? " class=\"here\"" : "") + " href=\"" + target + "\">" + name + "</a>";
    }
    const std::string plain = std::regex_replace(title, std::regex("<[^>]*>"), "");
    std::string& text = written_[file];
    text =
        "<!doctype html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
        "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n<title>" +
        plain + " - zebCV</title>\n<link rel=\"stylesheet\" href=\"style.css\">\n</head>\n<body>\n<header><nav><div>" +
        nav + "</div>" + searchBox + "</nav></header>\n<main>\n<h1>" + title + "</h1>\n" + body +
        "</main>\n<footer>zebCV " ZEBCV_VERSION "</footer>\n<script src=\"search.js\"></script>\n</body>\n</html>\n";
    std::ofstream out(fs::path(sources_.out) / file);
    out << text;
    std::ofstream(fs::path(sources_.out) / "style.css") << support::baseStyle << style << searchStyle;
    out.close();
    if (!out) throw std::runtime_error("cannot write " + file);
  }

  const Sources& sources_;
  Hooks hooks_;
  std::vector<Header> headers_;
  std::vector<Page> families_, recipes_, pages_;
  std::map<std::string, const Declaration*> functions_;
  std::map<std::string, size_t> order_;
  std::map<std::string, std::string> addresses_;
  Lore lore_;
  std::vector<Entry> entries_;
  std::map<std::string, std::string> written_;  // pages by file
  std::string tourPage_, here_, place_;
  std::vector<std::string> problems_;
};

}  // namespace

std::vector<std::string> writeSite(const Sources& sources) {
  return Site(sources).write();
}

}  // namespace docs
