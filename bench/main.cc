// prismo_bench: how fast the conversions are, against what the memory allows and against other libraries.
#include <CLI/CLI.hpp>

#include <algorithm>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <regex>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "PrismoUtl.h"
#include "machine.h"
#include "measure.h"
#include "peers.h"
#include "report.h"
#include "results.h"

namespace prismo::bench {
namespace {

struct Options {
  std::string filter;
  std::vector<std::string> sizes;
  bool all = false;
  bool list = false;
  bool verify = false;
  std::vector<std::string> from;
  std::string json, baseline, markdown;
  Conditions conditions{{9, 0.002}, 0, std::filesystem::temp_directory_path().string()};
};

constexpr char kDefaultFilter[] = "^(mono|bilinear|adaptive)/.*/caller/";

// Of even width and height, as mosaics need them.
Size ParseSize(const std::string& text) {
  Size size;
  char behind = 0;
  if (std::sscanf(text.c_str(), "%ux%u%c", &size.width, &size.height, &behind) != 2 || size.width < 8 ||
      size.height < 8 || size.width > 32768 || size.height > 32768 || size.width % 4 || size.height % 2) {
    throw std::invalid_argument(
        "a size is WIDTHxHEIGHT, 8x8 to 32768x32768, the width a multiple of 4 and the height even: " + text);
  }
  return size;
}

std::vector<Size> SizesOf(const Options& options) {
  if (options.sizes.empty()) {
    std::vector<Size> sizes{{1920, 1080}, {2448, 2048}, {5120, 5120}};
    if (options.all) sizes.insert(sizes.end() - 1, {4096, 3000});
    return sizes;
  }
  std::vector<Size> sizes;
  for (const std::string& size : options.sizes) sizes.push_back(ParseSize(size));
  return sizes;
}

std::vector<Row> SelectedRows(const Options& options) {
  const std::regex filter(!options.filter.empty() ? options.filter : options.all ? "" : kDefaultFilter);
  std::vector<Row> rows = RowsOf(SizesOf(options));
  std::erase_if(rows, [&](const Row& row) { return !std::regex_search(row.Name(), filter); });
  return rows;
}

// A peer that does other work than ours shows here: rounding and video range make small differences.
int Verify(const std::vector<Row>& rows, const Conditions& conditions) {
  constexpr double kOtherWork = 12;
  int suspects = 0;
  for (const PeerLibrary& library : PeerLibraries()) {
    for (const std::string_view name : library.conversions) {
      if (std::ranges::any_of(Conversions(), [&](const Conversion& ours) { return ours.name == name; }))
        continue;
      ++suspects;
      std::printf("%s has %s, we have not\n", library.name, std::string(name).c_str());
    }
  }
  std::printf("Mean difference of a byte between the peers' results and ours, of 255:\n");
  for (const Row& row : rows) {
    if (row.workers > 0 || row.conversion->target.format == 0) continue;
    for (const Difference& difference : ComparePeers(row, conditions)) {
      const bool other_work = difference.mean > kOtherWork;
      suspects += other_work;
      std::printf("%-46s %-8s %6.2f%s\n", row.Name().c_str(), difference.peer.c_str(), difference.mean,
                  other_work ? "  NOT THE SAME WORK" : "");
    }
  }
  return suspects > 0 ? 1 : 0;
}

// Leaves out rows that fail, and says so.
std::vector<Result> MeasureAll(const std::vector<Row>& rows, const Conditions& conditions) {
  std::vector<Result> results;
  PrintHead();
  for (const Row& row : rows) {
    try {
      results.push_back(Measure(row, conditions));
    } catch (const std::runtime_error& error) {
      std::printf("%s\n", error.what());
      continue;
    }
    PrintRow(results.back());
  }
  return results;
}

Report ReadAll(const std::vector<std::string>& paths) {
  Report report;
  for (const std::string& path : paths) {
    Report part = ReadJson(path);
    report.machine = std::move(part.machine);
    for (Result& result : part.results) report.results.push_back(std::move(result));
  }
  PrintHead();
  for (const Result& result : report.results) PrintRow(result);
  return report;
}

int Run(const Options& options) {
  PrepareLUT();
  if (options.list || options.verify) {
    const std::vector<Row> rows = SelectedRows(options);
    if (options.verify) return Verify(rows, options.conditions);
    for (const Row& row : rows) std::printf("%s\n", row.Name().c_str());
    return 0;
  }

  Report report;
  bool failed = false;
  if (options.from.empty()) {
    report.machine = DescribeMachine();
    report.machine.push_back("peers: " + DescribePeers());
    for (const std::string& fact : report.machine) std::printf("%s\n", fact.c_str());
    std::printf("\n%s\n\n", Method(options.conditions.plan.rounds).c_str());
    const std::vector<Row> rows = SelectedRows(options);
    report.results = MeasureAll(rows, options.conditions);
    failed = report.results.size() < rows.size();
  } else {
    report = ReadAll(options.from);
  }
  if (!options.json.empty()) WriteJson(report, options.json);
  if (!options.markdown.empty()) WriteMarkdown(report, options.markdown);
  if (!options.baseline.empty()) failed |= CompareWith(ReadJson(options.baseline), report.results) > 0;
  return failed ? 1 : 0;
}

int Main(int argc, char** argv) {
  Options options;
  CLI::App app("Measures the conversions of PrismoUtl against the limits of the memory and other libraries.");
  app.add_option("--filter", options.filter, "Rows whose name matches this regular expression, of all rows");
  app.add_option("--size", options.sizes, "Frame size WxH; may be repeated")->allow_extra_args(false);
  app.add_flag("--all", options.all, "Every row at four sizes, not the selection of about a minute");
  app.add_option("--rounds", options.conditions.plan.rounds, "Rounds per row")
      ->check(CLI::Range(1, 1000))
      ->capture_default_str();
  app.add_option("--min-time", options.conditions.plan.sample_seconds, "Seconds that a sample lasts at least")
      ->check(CLI::Range(0.0, 10.0))
      ->capture_default_str();
  app.add_option("--misalign", options.conditions.misalignment,
                 "Offset of the buffers from a page, in bytes; 16 is what malloc gives")
      ->check(CLI::Range(0, 4095))
      ->capture_default_str();
  app.add_option("--folder", options.conditions.folder, "Where to write files")
      ->check(CLI::ExistingDirectory)
      ->capture_default_str();
  app.add_option("--json", options.json, "Write the results to this file");
  app.add_option("--compare", options.baseline, "Name the rows that became slower since this --json file");
  app.add_option("--markdown", options.markdown, "Put the results into this document, between its markers");
  app.add_option("--from", options.from, "Report the results of these --json files instead of measuring");
  app.add_flag("--list", options.list, "Only name the rows");
  app.add_flag("--verify", options.verify, "Only check that the peers do the same work");
  CLI11_PARSE(app, argc, argv);
  return Run(options);
}

}  // namespace
}  // namespace prismo::bench

int main(int argc, char** argv) {
  try {
    return prismo::bench::Main(argc, argv);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "prismo_bench: %s\n", error.what());
    return 2;
  }
}
