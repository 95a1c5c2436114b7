// The table of times: every case at every place, against memcpy and against its bare loop; and the growth with the
// size.
#include <algorithm>
#include <cstdio>

#include "report.h"

namespace bench {
namespace {

// The columns of the growth table. From the second to the last a pixel's cost may grow as that of the bare loop does,
// within a fifth.
constexpr ZebiSize columnSizes[] = {{64, 64}, {480, 360}, fullSize, {3840, 2160}};
constexpr int columnCount = 4;
constexpr double allowedGrowth = 1.2;

bool perCall(const Case& row) {
  return row.target.unit == Target::nanosecondsPerCall;
}

std::string orDash(double value, int decimals) {
  return value > 0 ? number(value, decimals) : "-";
}

void printCell(const Case& row, const Result& r) {
  if (!r.fault.empty()) {
    std::printf(" | %26s", "WRONG");
  } else {
    std::printf(" | %9s %8s %7s", number(r.nanoseconds, perCall(row) ? 1 : 4).c_str(), orDash(r.ratio, 2).c_str(),
                orDash(r.bare, 2).c_str());
  }
  std::fflush(stdout);
}

std::string asJson(const Listed& c, const std::string& place, const Result& r) {
  const bool right = r.fault.empty();
  const auto value = [&](double v) { return right && v > 0 ? number(v, 5) : "null"; };
  return "{\"family\": " + quoted(c.family) + ", \"case\": " + quoted(c.row.name) + ", \"place\": " + quoted(place) +
         ", \"unit\": " + (perCall(c.row) ? "\"ns/call\"" : "\"ns/pixel\"") + ", \"time\": " + value(r.nanoseconds) +
         ", \"ratioToMemcpy\": " + value(r.ratio) + ", \"ratioToBareLoop\": " + value(r.bare) +
         ", \"bareLoop\": " + value(r.bareNanoseconds) +
         ", \"target\": " + (c.row.target.limit ? number(*c.row.target.limit, 2) : "null") +
         ", \"verdict\": " + quoted(r.verdict) + "}";
}

// Cost per pixel at each of the sizes.
struct SizeRow {
  std::string name;
  double nanoseconds[columnCount];
  double bare[columnCount];  // 0: there is none

  static double grown(const double* cost) { return cost[1] > 0 ? cost[columnCount - 1] / cost[1] : 1; }
  double growth() const { return grown(nanoseconds); }
  double bareGrowth() const { return grown(bare); }
  std::string verdict() const { return growth() <= allowedGrowth * std::max(1.0, bareGrowth()) ? "ok" : "grows"; }
  std::string asJson() const {
    std::string text = "{\"case\": " + quoted(name) + ", \"nsPerPixel\": {";
    for (int i = 0; i < columnCount; ++i)
      text += (i ? ", " : "") + quoted(sizeName(columnSizes[i])) + ": " + number(nanoseconds[i], 5);
    return text + "}, \"growth\": " + number(growth(), 3) + ", \"bareGrowth\": " + number(bareGrowth(), 3) +
           ", \"verdict\": " + quoted(verdict()) + "}";
  }
};

std::vector<SizeRow> sizeTable(const Bench& bench) {
  std::vector<SizeRow> rows;
  const auto grows = [](const Case& row) { return !perCall(row) && !row.own; };
  for (const Listed& c : bench.cases)
    if (grows(c.row)) rows.push_back({c.row.name, {}, {}});
  for (int i = 0; i < columnCount; ++i) {
    const Scene scene = sceneAt(bench.photo, {"", columnSizes[i], columnSizes[i].width});
    auto row = rows.begin();
    for (const Listed& c : bench.cases) {
      if (!grows(c.row)) continue;
      restartPlacement();
      const Work work = c.row.prepare(scene);
      const Times times = measure(work, scene, bench.options.seconds / columnCount);
      row->nanoseconds[i] = times.run / scene.count();
      row->bare[i] = work.bytes.total() > 0 ? times.bare / scene.count() : 0;
      ++row;
    }
  }
  std::printf("\n%-*s", bench.nameWidth, "nanoseconds per pixel");
  for (const ZebiSize& size : columnSizes) std::printf(" %10s", sizeName(size).c_str());
  std::printf(" %10s %10s\n", "growth", "bare loop");
  for (const SizeRow& r : rows) {
    std::printf("%-*s", bench.nameWidth, r.name.c_str());
    for (double ns : r.nanoseconds) std::printf(" %10.4f", ns);
    std::printf(" %10.2f %10.2f  %s\n", r.growth(), r.bareGrowth(), r.verdict().c_str());
  }
  return rows;
}

}  // namespace

Result resultOf(const Case& row, const Scene& scene, double seconds) {
  Result result;
  restartPlacement();
  const Work work = row.prepare(scene);
  if (const auto fault = work.check()) {
    result.verdict = "WRONG";
    result.fault = *fault;
    return result;
  }
  const Times times = measure(work, scene, seconds);
  const bool hasBare = work.bytes.total() > 0;
  result.nanoseconds = times.run / (perCall(row) ? work.callsPerRun : scene.count());
  result.ratio = perCall(row) ? 0 : times.run / times.copy;
  result.bare = hasBare ? times.run / times.bare : 0;
  result.bareNanoseconds = hasBare ? times.bare / scene.count() : 0;
  if (row.target.limit && same(scene.size, fullSize))
    result.verdict = (perCall(row) ? result.nanoseconds : result.ratio) <= *row.target.limit ? "ok" : "over";
  return result;
}

bool runTable(Bench& bench) {
  bench.library.use();
  const std::vector<Place> where = places(bench.options);
  std::vector<Scene> scenes;
  for (const Place& place : where) scenes.push_back(sceneAt(bench.photo, place));
  std::printf("%s\n%-*s", bench.source.c_str(), bench.nameWidth, "");
  for (const Place& place : where) std::printf(" | %26s", place.name.c_str());
  std::printf(" |\n%-*s", bench.nameWidth, "case");
  for (size_t i = 0; i < where.size(); ++i) std::printf(" | %9s %8s %7s", "ns/pixel", "x memcpy", "x bare");
  std::printf(" | %8s\n", "target");
  bool right = true;
  std::vector<std::string> json, sizes;
  for (const Listed& c : bench.cases) {
    std::printf("%-*s", bench.nameWidth, c.row.name.c_str());
    std::string fault, verdict;
    const auto put = [&](const Scene& scene, const std::string& place) {
      const Result r = resultOf(c.row, scene, bench.options.seconds);
      printCell(c.row, r);
      json.push_back(asJson(c, place, r));
      if (!r.fault.empty()) fault = place + ": " + r.fault;
      if (r.verdict != "-") verdict = r.verdict;
    };
    if (c.row.own) {
      const Scene own = ownScene(c.row, bench.options);
      put(own, sizeName(own.size));
    } else {
      for (size_t i = 0; i < where.size(); ++i) put(scenes[i], where[i].name);
    }
    const std::string limit = !c.row.target.limit ? "-" : number(*c.row.target.limit, 1);
    std::printf(" | %8s %s%s%s\n", limit.c_str(), verdict.c_str(), perCall(c.row) ? " (nanoseconds per call)" : "",
                fault.empty() ? "" : (" " + fault).c_str());
    right = right && fault.empty();
  }
  if (bench.options.sizes)
    for (const SizeRow& row : sizeTable(bench)) sizes.push_back(row.asJson());
  Json file(bench.options.json);
  file.member("library", quoted(bench.library.path()));
  file.member("secondsPerCase", number(bench.options.seconds, 3));
  file.member("photograph", quoted(bench.source));
  file.list("cases", json);
  file.list("sizes", sizes);
  file.close();
  return right;
}

}  // namespace bench
