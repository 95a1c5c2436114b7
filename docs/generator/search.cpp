#include "search.h"

namespace docs {
namespace {

std::string quoted(const std::string& text) {
  std::string out = "\"";
  for (char c : text) {
    if (c == '"' || c == '\\') out += '\\';
    out += c;
  }
  return out + "\"";
}

// Every word of the question has to be found in an entry; names that begin with it come first, then names that hold it.
const char finder[] = R"js(
function zebFind(question) {
  var words = question.toLowerCase().split(/\s+/).filter(function (w) { return w; });
  if (!words.length) return [];
  var found = [];
  zebIndex.forEach(function (entry, place) {
    var name = entry[0].toLowerCase(), all = name + " " + (entry[2] + " " + entry[3]).toLowerCase();
    if (!words.every(function (w) { return all.indexOf(w) >= 0; })) return;
    var at = name.replace(/^zebi?/, "").indexOf(words[0]), rank = name === words[0] ? 0 : at === 0 || name.indexOf(words[0]) === 0 ? 1 : at > 0 ? 2 : 3;
    found.push([rank, place, entry]);
  });
  found.sort(function (a, b) { return a[0] - b[0] || a[1] - b[1]; });
  return found.map(function (f) { return f[2]; });
}
)js";

const char behaviour[] = R"js(
(function () {
  if (typeof document === "undefined") return;
  var box = document.getElementById("filter"), list = document.getElementById("found"), chosen = -1;
  function show() {
    var found = zebFind(box.value);
    chosen = -1;
    list.textContent = "";
    list.hidden = !box.value.trim();
    var note = document.createElement("li");
    note.className = "note";
    note.textContent = found.length ? found.length + " found" : "nothing is called that";
    list.appendChild(note);
    found.slice(0, 800).forEach(function (entry) {
      var item = document.createElement("li"), link = document.createElement("a"), kind = document.createElement("span");
      link.href = entry[1];
      link.textContent = entry[0];
      kind.textContent = entry[2];
      item.appendChild(link);
      item.appendChild(kind);
      list.appendChild(item);
    });
  }
  function choose(by) {
    var links = list.querySelectorAll("a");
    if (!links.length) return;
    if (links[chosen]) links[chosen].classList.remove("chosen");
    chosen = Math.max(0, Math.min(links.length - 1, chosen + by));
    links[chosen].classList.add("chosen");
    links[chosen].scrollIntoView({block: "nearest"});
  }
  box.addEventListener("input", show);
  box.addEventListener("keydown", function (event) {
    if (event.key === "ArrowDown" || event.key === "ArrowUp") {
      event.preventDefault();
      choose(event.key === "ArrowDown" ? 1 : -1);
    } else if (event.key === "Enter") {
      var links = list.querySelectorAll("a");
      if (links.length) { location.href = links[Math.max(0, chosen)].href; list.hidden = true; box.blur(); }
    } else if (event.key === "Escape") {
      box.value = "";
      show();
      box.blur();
    }
  });
  document.addEventListener("keydown", function (event) {
    if (event.key === "/" && document.activeElement !== box) {
      event.preventDefault();
      box.focus();
    }
  });
  document.addEventListener("click", function (event) {
    if (event.target !== box) list.hidden = true;
  });
  box.addEventListener("focus", show);
})();
)js";

}  // namespace

const char searchBox[] =
    "<div class=\"filter\"><input id=\"filter\" type=\"search\" autocomplete=\"off\" spellcheck=\"false\" "
    "placeholder=\"/ name, type, status\" aria-label=\"Filter functions, types and statuses\">"
    "<ol id=\"found\" hidden></ol></div>";

const char searchStyle[] = R"(
.filter { position: relative; flex: 0 1 22em; }
.filter input { width: 100%; font: inherit; font-size: .9em; padding: .3rem .7rem; border: 1px solid var(--line);
  border-radius: 8px; background: var(--paper); color: var(--ink); }
#found { position: absolute; right: 0; z-index: 2; width: min(38em, 92vw); max-height: 70vh; overflow-y: auto; margin: .3rem 0 0;
  padding: .4rem 0; list-style: none; background: var(--card); border: 1px solid var(--line); border-radius: 8px;
  box-shadow: 0 8px 30px rgba(0, 0, 0, .18); font-size: .85em; }
#found li { display: flex; justify-content: space-between; gap: 1rem; }
#found a { flex: 1; margin: 0; padding: .2rem .9rem; font-family: ui-monospace, "DejaVu Sans Mono", monospace; white-space: normal;
  overflow-wrap: anywhere; }
#found span, #found .note { color: var(--soft); padding: .2rem .9rem; }
#found a.chosen, #found a:hover { background: color-mix(in srgb, var(--accent) 18%, transparent); }
)";

std::string searchScript(const std::vector<Entry>& entries) {
  std::string out = "var zebIndex = [\n";
  for (const Entry& e : entries)
    out += "[" + quoted(e.name) + "," + quoted(e.address) + "," + quoted(e.kind) + "," + quoted(e.words) + "],\n";
  return out + "];\n" + finder + behaviour;
}

}  // namespace docs
