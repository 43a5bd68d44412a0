#include "run.h"

#include <CLI/CLI.hpp>
#include <charconv>
#include <filesystem>
#include <iostream>
#include <regex>
#include <stdexcept>
#include <utility>

#include "report.h"

namespace prismo::bench {
namespace {

constexpr char kDefaultFilter[] = "^(mono|bilinear|adaptive)/.*/caller/";

constexpr Size kSizes[] = {{1920, 1080}, {2448, 2048}, {4096, 3000}, {5120, 5120}};
constexpr Size kSmallSizes[] = {{64, 64}, {320, 240}};

// Of even width and height, as mosaics need them; of fewer rows the pool's threads would not get one each.
Size ParseSize(const std::string& text) {
  Size size;
  const char* const end = text.data() + text.size();
  const auto width = std::from_chars(text.data(), end, size.width);
  const bool good = width.ec == std::errc() && width.ptr != end && *width.ptr == 'x';
  const auto height = good ? std::from_chars(width.ptr + 1, end, size.height) : width;
  constexpr uint32_t kLeast = 16, kMost = 32768;
  if (!good || height.ec != std::errc() || height.ptr != end || size.width < kLeast || size.height < kLeast ||
      size.width > kMost || size.height > kMost || size.width % 4 || size.height % 2) {
    throw std::invalid_argument(
        "--size '" + text +
        "': not WIDTHxHEIGHT of 16x16 to 32768x32768 with a width that is a multiple of 4 "
        "and an even height, for example 1920x1080");
  }
  return size;
}

std::vector<Row> RowsAtSizesOf(const Options& options) {
  if (!options.sizes.empty()) {
    std::vector<Size> sizes;
    for (const std::string& size : options.sizes) sizes.push_back(ParseSize(size));
    return RowsOf(sizes);
  }
  std::vector<Row> rows = RowsOf(kSizes);
  // What the pool costs shows in frames that take hardly more.
  for (const Row& row : RowsOf(kSmallSizes)) {
    if (row.workers > 0) rows.push_back(row);
  }
  return rows;
}

std::regex Filter(const Options& options) {
  try {
    return std::regex(!options.filter.empty() ? options.filter : options.all ? "" : kDefaultFilter);
  } catch (const std::regex_error& error) {
    throw std::invalid_argument("--filter '" + options.filter +
                                "': not a regular expression: " + error.what());
  }
}

}  // namespace

void AddOptions(CLI::App& app, Options& options) {
  options.folder = std::filesystem::temp_directory_path().string();
  app.add_option("--filter", options.filter, "Rows whose name matches this regular expression, of all rows");
  app.add_option("--size", options.sizes, "Frame size WxH; may be repeated")->allow_extra_args(false);
  app.add_flag("--all", options.all, "Every row, not the selection of a minute or two");
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
  app.add_option("--folder", options.folder, "Where to write files")
      ->check(CLI::ExistingDirectory)
      ->capture_default_str();
  app.add_option("--json", options.json, "Write the results to this file");
  app.add_option("--compare", options.baseline, "Name the rows that became slower since this --json file");
  app.add_flag("--list", options.list, "Only name the rows");
}

std::vector<Row> SelectedRows(const Options& options) {
  const std::regex filter = Filter(options);
  std::vector<Row> rows = RowsAtSizesOf(options);
  std::erase_if(rows, [&](const Row& row) { return !std::regex_search(row.Name(), filter); });
  if (rows.empty()) {
    throw std::invalid_argument("--filter '" + options.filter +
                                "': no row has such a name; --list --all names all rows");
  }
  return rows;
}

void PrintNames(const std::vector<Row>& rows) {
  for (const Row& row : rows) std::cout << row.Name() << '\n';
}

Report MeasureAll(const std::vector<Row>& rows, const Conditions& conditions,
                  std::vector<std::string> machine) {
  const Peers peers = conditions.peers.empty() ? Peers::kNone : Peers::kSome;
  Report report{std::move(machine), {}};
  for (const std::string& fact : report.machine) std::cout << fact << '\n';
  std::cout << '\n' << Method(conditions.plan.rounds, peers) << "\n\n";
  PrintHead(peers);
  for (const Row& row : rows) {
    try {
      report.results.push_back(Measure(row, conditions));
    } catch (const std::runtime_error& error) {
      std::cout << error.what() << '\n';
      continue;
    }
    PrintRow(report.results.back(), peers);
  }
  return report;
}

}  // namespace prismo::bench
