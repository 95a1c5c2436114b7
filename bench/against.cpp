// One build against another: old time / new time of every case at every place.
#include <algorithm>
#include <cmath>
#include <cstdio>

#include "clock.h"
#include "report.h"

namespace bench {
namespace {

constexpr double lossAt = 0.95;
constexpr double gainAt = 1.05;
constexpr int preparations = 4;  // of a row that looks lost or won

// A case made ready for one build. What it holds is released by that build.
class Prepared {
 public:
  Prepared(const Library& library, const Case& row, const Scene& scene) : library_(library) {
    library_.use();
    restartPlacement();
    work = row.prepare(scene);
  }
  ~Prepared() {
    library_.use();
    work = {};
  }
  Prepared(const Prepared&) = delete;
  Prepared& operator=(const Prepared&) = delete;

  std::optional<std::string> fault() const {
    library_.use();
    return work.check();
  }

  Work work;

 private:
  const Library& library_;
};

struct Cell {
  enum Kind { measured, added, wrong } kind = measured;
  Ratio ratio;
  bool marked = false;
  bool differs = false;  // the old build's result is not the reference's
  std::string fault;
};

bool lost(const Ratio& r) {
  return r.median() < lossAt;
}
bool won(const Ratio& r) {
  return r.median() > gainAt;
}

// Prepares the case for both builds and measures; false when there is nothing to compare.
bool compareOnce(const Library& newer, const Library& older, const Case& row, const Scene& scene, double seconds,
                 Cell& cell) {
  const Prepared newPart(newer, row, scene);
  if (const auto fault = newPart.fault()) {
    cell.kind = Cell::wrong;
    cell.fault = *fault;
    return false;
  }
  try {
    const Prepared oldPart(older, row, scene);
    cell.differs = oldPart.fault().has_value();
    cell.ratio.measure(newer, newPart.work, older, oldPart.work, seconds);
  } catch (const NoSuchFunction&) {
    cell.kind = Cell::added;
    return false;
  }
  return true;
}

Cell compareAt(const Library& newer, const Library& older, const Case& row, const Scene& scene, double seconds) {
  Cell first;
  if (!compareOnce(newer, older, row, scene, seconds, first)) return first;
  if (!lost(first.ratio) && !won(first.ratio)) return first;
  if (first.ratio.newNanoseconds() > longRun) {
    first.marked = lost(first.ratio);
    return first;
  }
  // Anew, with fresh buffers each time: which pages they are given can cost more than what is being compared.
  Cell cell;
  for (int i = 0; i < preparations; ++i)
    if (!compareOnce(newer, older, row, scene, seconds, cell)) return cell;
  cell.marked = lost(cell.ratio);
  return cell;
}

std::string shown(const Cell& cell) {
  if (cell.kind == Cell::added) return "new";
  if (cell.kind == Cell::wrong) return "WRONG";
  char text[80];
  std::snprintf(text, sizeof text, "%5.2f (%4.2f-%4.2f, %4.2f)%s%s", cell.ratio.median(), cell.ratio.quantile(0.25),
                cell.ratio.quantile(0.75), cell.ratio.ofBest(), cell.marked ? " LOST" : "",
                cell.differs ? " differs" : "");
  return text;
}

std::string asJson(const Listed& c, const std::string& place, const Cell& cell) {
  std::string text = "{\"family\": " + quoted(c.family) + ", \"case\": " + quoted(c.row.name) +
                     ", \"place\": " + quoted(place) + ", \"verdict\": ";
  if (cell.kind != Cell::measured) return text + (cell.kind == Cell::added ? "\"new\"}" : "\"WRONG\"}");
  return text + (cell.marked ? "\"lost\"" : "\"-\"") + ", \"ratio\": " + number(cell.ratio.median(), 4) +
         ", \"lowerQuartile\": " + number(cell.ratio.quantile(0.25), 4) +
         ", \"upperQuartile\": " + number(cell.ratio.quantile(0.75), 4) +
         ", \"ratioOfBest\": " + number(cell.ratio.ofBest(), 4) +
         ", \"newNanoseconds\": " + number(cell.ratio.newNanoseconds(), 1) +
         ", \"oldNanoseconds\": " + number(cell.ratio.oldNanoseconds(), 1) +
         ", \"pairs\": " + std::to_string(cell.ratio.pairs()) +
         ", \"oldResultDiffers\": " + (cell.differs ? "true" : "false") + "}";
}

class Summary {
 public:
  void add(const std::string& row, const std::string& place, const Cell& cell) {
    if (cell.kind == Cell::wrong) ++wrong_;
    if (cell.kind == Cell::added) ++added_;
    if (cell.kind != Cell::measured) return;
    ++measured_;
    logarithms_ += std::log(cell.ratio.median());
    if (cell.marked) marked_.push_back(row + ", " + place + ": " + number(cell.ratio.median(), 2));
  }
  double mean() const { return measured_ ? std::exp(logarithms_ / measured_) : 1; }
  void print() const {
    std::printf("\n%d measurements, geometric mean %.3f, %d marked as lost, %d new, %d wrong\n", measured_, mean(),
                static_cast<int>(marked_.size()), added_, wrong_);
    for (const std::string& row : marked_) std::printf("  lost: %s\n", row.c_str());
  }
  bool anyWrong() const { return wrong_ > 0; }
  bool anyMarked() const { return !marked_.empty(); }

 private:
  int measured_ = 0, added_ = 0, wrong_ = 0;
  double logarithms_ = 0;
  std::vector<std::string> marked_;
};

}  // namespace

bool runAgainst(Bench& bench) {
  const Library &newer = bench.library, older(bench.options.against);
  std::printf("new: %s\nold: %s%s\nold time / new time: median (quartiles, ratio of the best times)\n\n%-*s",
              newer.path().c_str(), older.path().c_str(),
              older.missing() ? (", without " + std::to_string(older.missing()) + " functions").c_str() : "",
              bench.nameWidth, "case");
  const std::vector<Place> where = places(bench.options);
  std::vector<Scene> scenes;
  for (const Place& place : where) {
    scenes.push_back(sceneAt(bench.photo, place));
    std::printf("  %-32s", place.name.c_str());
  }
  std::printf("\n");
  Summary summary;
  std::vector<std::string> json;
  for (const Listed& c : bench.cases) {
    std::printf("%-*s", bench.nameWidth, c.row.name.c_str());
    const auto put = [&](const Scene& scene, const std::string& place) {
      const Cell cell = compareAt(newer, older, c.row, scene, bench.options.seconds);
      std::printf("  %-32s", shown(cell).c_str());
      std::fflush(stdout);
      summary.add(c.row.name, place, cell);
      json.push_back(asJson(c, place, cell));
      return cell.fault;
    };
    std::string fault;
    if (c.row.own) {
      const Scene own = ownScene(c.row, bench.options);
      fault = put(own, sizeName(own.size));
    } else {
      for (size_t i = 0; i < where.size(); ++i) {
        const std::string text = put(scenes[i], where[i].name);
        if (!text.empty()) fault = text;
      }
    }
    std::printf("%s\n", fault.empty() ? "" : ("WRONG: " + fault).c_str());
  }
  summary.print();
  Json file(bench.options.json);
  file.member("new", quoted(newer.path()));
  file.member("old", quoted(older.path()));
  file.member("secondsPerCase", number(bench.options.seconds, 3));
  file.member("photograph", quoted(bench.source));
  file.member("geometricMean", number(summary.mean(), 4));
  file.list("cases", json);
  file.close();
  return !summary.anyWrong() && !(bench.options.failLosses && summary.anyMarked());
}

}  // namespace bench
