#include "html.h"

namespace support {

const char baseStyle[] = R"(
:root { color-scheme: light dark; --paper: #f6f5f1; --ink: #23262b; --soft: #676c75; --card: #fff; --line: #dedbd2;
        --accent: #0b6b63; }
@media (prefers-color-scheme: dark) {
  :root { --paper: #16181b; --ink: #e8e6e1; --soft: #9aa0a8; --card: #1f2226; --line: #33373d; --accent: #5cc7bb; } }
* { box-sizing: border-box; }
body { margin: 0; background: var(--paper); color: var(--ink); font: 17px/1.55 system-ui, sans-serif; }
h1 { font-size: clamp(2rem, 5vw, 3.2rem); line-height: 1.1; letter-spacing: -.02em; margin: 0 0 .6rem; }
h2 { font-size: 1.6rem; letter-spacing: -.01em; margin: 0 0 .4rem; }
a { color: var(--accent); text-decoration: none; }
a:hover { text-decoration: underline; }
img { display: block; width: 100%; height: auto; }
)";

std::string escaped(const std::string& text) {
  std::string out;
  for (char c : text) {
    switch (c) {
      case '&':
        out += "&amp;";
        break;
      case '<':
        out += "&lt;";
        break;
      case '>':
        out += "&gt;";
        break;
      case '"':
        out += "&quot;";
        break;
      default:
        out += c;
    }
  }
  return out;
}

std::string slug(const std::string& title) {
  std::string out;
  for (char c : title) {
    const bool letter = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
    if (letter) out += static_cast<char>(c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : c);
    if (!letter && !out.empty() && out.back() != '-') out += '-';
  }
  while (!out.empty() && out.back() == '-') out.pop_back();
  return out;
}

}  // namespace support
