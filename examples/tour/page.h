// The page that shows the tour's pictures.
#pragma once

#include <string>
#include <vector>

#include "tour.h"

namespace tour {

struct PageSection {
  std::string id;
  std::string title;
  std::string paragraph;
  std::vector<Figure> figures;
};

struct Page {
  std::string source;  // where the photograph comes from
  Figure photograph;
  Figure hero;
  ZebiSize original;  // of the photograph before it was scaled
  std::vector<PageSection> sections;
};

// One file with its style inside; the pictures lie beside it. Throws when it cannot be written.
void writePage(const Page& page, const std::string& path);

}  // namespace tour
