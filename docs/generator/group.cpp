#include "group.h"

#include <algorithm>
#include <regex>
#include <set>

#include "comment.h"
#include "html.h"

namespace docs {
namespace {

using support::escaped;

std::string oneLine(const std::string& text) {
  return std::regex_replace(text, std::regex("\\s+"), " ");
}

// Functions that differ in types and channels only.
struct Signature {
  std::string stem, arguments;
  std::vector<const Declaration*> functions;
};

std::vector<Signature> signatures(const Page& family) {
  std::vector<Signature> out;
  for (const Declaration* d : family.functions) {
    std::string arguments;
    for (const Parameter& p : d->parameters) arguments += p.name + " ";
    const std::string stem = Shape(d->name).stem;
    const auto same = [&](const Signature& s) { return s.stem == stem && s.arguments == arguments; };
    auto found = std::find_if(out.begin(), out.end(), same);
    if (found == out.end()) found = out.insert(out.end(), {stem, arguments, {}});
    found->functions.push_back(d);
  }
  return out;
}

// Comments in the order of the headers, each once, then those of the types that are taken.
std::vector<std::string> comments(const Page& family, const Lore& lore) {
  std::vector<std::string> out;
  const auto add = [&out](const std::string& one) {
    if (!one.empty() && std::find(out.begin(), out.end(), one) == out.end()) out.push_back(one);
  };
  for (const Declaration* d : family.functions) add(d->group), add(d->comment);
  for (const Declaration* d : family.functions)
    for (const Parameter& p : d->parameters) {
      const auto type = lore.types.find(std::regex_replace(p.type, std::regex("const |\\*"), ""));
      if (type != lore.types.end()) add(type->second);
    }
  return out;
}

class Group {
 public:
  Group(const Page& family, const Lore& lore, const Hooks& hooks) : family_(family), lore_(lore), hooks_(hooks) {}

  // One prototype of each shape, the others as links.
  std::string prototypes() {
    std::string out = "<h2 id=\"functions\">Functions</h2>\n";
    for (const Signature& s : signatures(family_)) {
      const Declaration& first = *s.functions.front();
      out += "<div class=\"signature\"><div class=\"proto\">" + code(oneLine(first.text), hooks_) + "</div>\n<p>";
      for (const Declaration* d : s.functions) {
        const Shape shape(d->name);
        const std::string tag = shape.source.empty() ? d->name : d->name.substr(shape.stem.size() + 1);
        out += "<a class=\"form\" id=\"" + d->name + "\" href=\"" + lore_.prototypes.at(d->name) + "\" title=\"" +
               escaped(oneLine(d->text)) + "\">" + tag + "</a> ";
      }
      out += "</p></div>\n";
    }
    return out;
  }

  std::string parameters(const std::function<void(const std::string&)>& problem) {
    std::vector<std::string> names;
    std::map<std::string, std::set<std::string>> types;
    for (const Declaration* d : family_.functions)
      for (const Parameter& p : d->parameters) {
        if (!types.count(p.name)) names.push_back(p.name);
        types[p.name].insert(p.type);
      }
    std::string out = "<h2 id=\"parameters\">Parameters</h2>\n<div class=\"wide said\"><table>\n";
    for (const std::string& name : names) {
      auto meaning = lore_.parameters.find(family_.id + "/" + name);
      if (meaning == lore_.parameters.end()) meaning = lore_.parameters.find(name);
      if (meaning == lore_.parameters.end()) {
        problem("nothing tells what " + name + " is");
        continue;
      }
      std::string list;
      for (const std::string& type : types[name]) list += (list.empty() ? "" : ", ") + type;
      out += "<tr><td><code>" + name + "</code></td><td>" + line(meaning->second, hooks_) + "</td><td><code>" +
             code(list, hooks_) + "</code></td></tr>\n";
    }
    return out + "</table></div>\n";
  }

  std::string rules() {
    std::string queries;
    for (const Signature& s : signatures(family_))
      if (std::regex_search(s.stem, std::regex(R"(Get\w*(Buf|Buffer)?Size\w*$)")) &&
          s.stem.find("Haar") == std::string::npos)
        queries += (queries.empty() ? "Ask " : ", ") + line(s.functions.front()->name, hooks_);
    const bool scratch = takes("pBuffer") || takes("pBuf");
    std::string out = "<h2 id=\"rules\">Rules</h2>\n<div class=\"wide said\"><table>\n";
    out += row("Scratch", queries.empty() ? "" : queries + ".", R"(\bscratch\b|\bpBuf)",
               scratch ? "" : "None: there is no buffer to bring.");
    out += row("State", "", R"(\b(moved|copied|allocat\w+|[Rr]eleases?|released)\b)", "");
    out += row("Borders", "", R"(zebBorder|\b[Bb]orders?\b|outside (the|it)|beyond (a|the) (side|edge))", "");
    out += row("Overlap", "", R"(not overlap|may overlap|[Ii]n place(?! of)|same image|may be one of the sources)", "");
    out +=
        row("Threads", "", R"(thread|at once|one call at a time|two calls|same time|may share|number of calls)",
            std::string("Calls share nothing but their arguments: any number at once, each with its own destination") +
                (scratch ? " and scratch." : "."));
    return out + "<tr><td>Statuses</td><td>" + codes() + "</td></tr>\n</table></div>\n";
  }

  // What the headers say, function by function.
  std::string text() {
    std::string out = "<h2 id=\"text\">In full</h2>\n", shown;
    std::set<std::string> said;
    for (size_t i = 0; i < family_.functions.size();) {
      const Declaration& d = *family_.functions[i];
      if (!d.group.empty() && said.insert(d.group).second) out += folded(d.group, hooks_);
      std::vector<std::string> stems;
      for (; i < family_.functions.size() && family_.functions[i]->comment == d.comment; ++i) {
        const std::string stem = Shape(family_.functions[i]->name).stem;
        if (std::find(stems.begin(), stems.end(), stem) == stems.end()) stems.push_back(stem);
      }
      if (!said.insert(d.comment).second) continue;
      out += "<h3>";
      for (const std::string& stem : stems) out += "<code>" + stem + "</code> ";
      out += "</h3>\n" + folded(d.comment, hooks_);
    }
    return out;
  }

 private:
  bool takes(const std::string& name) const {
    for (const Declaration* d : family_.functions)
      for (const Parameter& p : d->parameters)
        if (p.name == name) return true;
    return false;
  }

  std::string row(const std::string& title, const std::string& first, const std::string& expression,
                  const std::string& otherwise) {
    std::string out = first;
    std::set<std::string> said;
    for (const std::string& comment : comments(family_, lore_))
      for (const std::string& one : sentences(comment, expression))
        if (said.insert(one).second) out += (out.empty() ? "" : " ") + line(one, hooks_);
    if (out.empty()) out = otherwise;
    return out.empty() ? "" : "<tr><td>" + title + "</td><td>" + out + "</td></tr>\n";
  }

  std::string codes() {
    std::vector<std::string> all;
    for (const std::string& comment : comments(family_, lore_))
      for (const std::string& one : statuses(comment))
        if (std::find(all.begin(), all.end(), one) == all.end()) all.push_back(one);
    std::string out;
    for (const std::string& one : all) {
      const auto sentence = lore_.statuses.find(one);
      if (sentence == lore_.statuses.end()) continue;
      out += "<code>" + line(one, hooks_) + "</code> " + escaped(sentence->second) + "<br>";
    }
    return out;
  }

  const Page& family_;
  const Lore& lore_;
  const Hooks& hooks_;
};

}  // namespace

std::string groupBody(const Page& family, const Lore& lore, const Hooks& hooks,
                      const std::function<void(const std::string&)>& problem) {
  Group group(family, lore, hooks);
  const size_t program = family.body.find("```c\n");
  const std::string computes = block(family.body.substr(0, program), hooks);
  const std::string example = program == std::string::npos ? "" : block(family.body.substr(program), hooks);
  return group.prototypes() + "<h2 id=\"computes\">What it computes</h2>\n" + computes + group.parameters(problem) +
         group.rules() + "<h2 id=\"example\">Example</h2>\n" + example + group.text();
}

}  // namespace docs
