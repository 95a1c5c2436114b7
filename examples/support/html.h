// What the pages of the examples and of the documents share.
#pragma once

#include <string>

namespace support {

// Text as HTML shows it.
std::string escaped(const std::string& text);

// "Averages and differences" -> "averages-and-differences"
std::string slug(const std::string& title);

// Colours in light and dark, type and links. The pages add their own rules behind it.
extern const char baseStyle[];

}  // namespace support
